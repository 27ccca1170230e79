#!/usr/bin/env python3
"""Writes datetime_vectors.txt: calendar facts computed by Python's datetime
(proleptic Gregorian), for the cases where CDateTime's rules agree with it.

  A <start> <duration> <expected>    start + duration, printed
  C <left> <right> <op>              instant order of two zoned values: < = >
  T <value> <seconds> <wday> <yday> <leap>
                                     GetTime (for a date the UTC day of its
                                     midnight, at 00:00), weekday (1 = Sunday, in UTC after
                                     the zone), true day of the year, leap year

Agreement needs: day of month <= 28 when the span has years or months (no
pinning of the day happens in either), and zones other than -00:mm (the sign
of a zone below one hour is not kept). Counts stay far below 2^20 so that
single-precision carries are exact.

Run: python3 gen_datetime_vectors.py > datetime_vectors.txt
"""
import calendar
import datetime as dt
import random

rng = random.Random(20240611)
UTC = dt.timezone.utc
EPOCH = dt.datetime(1970, 1, 1, tzinfo=UTC)


def frac(us):
    if us == 0:
        return ""
    return "." + ("%06d" % us).rstrip("0")


def zone_text(minutes):
    if minutes is None:
        return ""
    sign = "-" if minutes < 0 else "+"
    m = abs(minutes)
    return "%s%02d:%02d" % (sign, m // 60, m % 60)


def dt_text(v, zone=None):
    return "%04d-%02d-%02dT%02d:%02d:%02d%s%s" % (
        v.year, v.month, v.day, v.hour, v.minute, v.second, frac(v.microsecond), zone_text(zone))


def random_zone():
    while True:
        m = rng.randint(-14 * 60, 14 * 60)
        if rng.random() < 0.5:
            m -= m % 60 if m >= 0 else -((-m) % 60)  # whole hours often
        if -60 < m < 0:
            continue  # -00:mm keeps no sign
        return m


def random_datetime(y0, y1, max_day=None):
    y = rng.randint(y0, y1)
    mo = rng.randint(1, 12)
    last = (dt.date(y + (mo == 12), mo % 12 + 1, 1) - dt.timedelta(days=1)).day
    d = rng.randint(1, min(last, max_day or last))
    us = rng.choice([0, 0, rng.randint(0, 999) * 1000, rng.randint(0, 999999)])
    return dt.datetime(y, mo, d, rng.randint(0, 23), rng.randint(0, 59), rng.randint(0, 59), us)


def duration_text(neg, y, mo, d, h, mi, s, ms, us):
    t = ("-" if neg else "") + "P"
    t += "%dY" % y if y else ""
    t += "%dM" % mo if mo else ""
    t += "%dD" % d if d else ""
    t += "T%dH%dM%d" % (h, mi, s)
    if ms or us:
        t += ".%03d%03d" % (ms, us)
    return t + "S"


def add_case(with_months):
    start = random_datetime(3000, 7000, 28 if with_months else None)
    neg = rng.random() < 0.5
    y = rng.randint(0, 400) if with_months else 0
    mo = rng.randint(0, 2000) if with_months else 0
    big = rng.random() < 0.3
    d = rng.randint(0, 900000 if big else 400)
    h = rng.randint(0, 90000 if big else 50)
    mi = rng.randint(0, 900000 if big else 200)
    s = rng.randint(0, 900000 if big else 200)
    ms = rng.randint(0, 999)
    us = rng.randint(0, 999)
    sign = -1 if neg else 1
    total_months = start.year * 12 + (start.month - 1) + sign * (y * 12 + mo)
    moved = start.replace(year=total_months // 12, month=total_months % 12 + 1)
    delta = dt.timedelta(days=d, hours=h, minutes=mi, seconds=s, milliseconds=ms, microseconds=us)
    result = moved + delta if not neg else moved - delta
    return "A %s %s %s" % (dt_text(start), duration_text(neg, y, mo, d, h, mi, s, ms, us), dt_text(result))


def compare_case():
    a = random_datetime(2, 9998)
    za, zb = random_zone(), random_zone()
    ia = a.replace(tzinfo=dt.timezone(dt.timedelta(minutes=za)))
    kind = rng.random()
    if kind < 0.4:
        ib = ia + dt.timedelta(seconds=rng.randint(-86400 * 3, 86400 * 3))
    elif kind < 0.7:
        ib = ia
    else:
        ib = ia + dt.timedelta(microseconds=rng.choice([-1000, -1, 1, 1000]))
    b = ib.astimezone(dt.timezone(dt.timedelta(minutes=zb))).replace(tzinfo=None)
    op = "<" if ia < ib else ("=" if ia == ib else ">")
    return "C %s %s %s" % (dt_text(a, za), dt_text(b, zb), op)


def time_case():
    v = random_datetime(2, 9998)
    z = random_zone() if rng.random() < 0.6 else None
    is_date = rng.random() < 0.3
    if is_date:
        v = v.replace(hour=0, minute=0, second=0, microsecond=0)
        text = "%04d-%02d-%02d%s" % (v.year, v.month, v.day, zone_text(z))
    else:
        text = dt_text(v, z)
    aware = v.replace(tzinfo=dt.timezone(dt.timedelta(minutes=z or 0)))
    seconds = (aware - EPOCH) // dt.timedelta(seconds=1)
    if is_date:
        # A date keeps no clock: the UTC day of its midnight, at 00:00.
        seconds -= seconds % 86400
    wday = aware.astimezone(UTC).isoweekday() % 7 + 1
    yday = v.timetuple().tm_yday
    return "T %s %d %d %d %d" % (text, seconds, wday, yday, calendar.isleap(v.year))


def main():
    lines = []
    lines += [add_case(False) for _ in range(1000)]
    lines += [add_case(True) for _ in range(1500)]
    lines += [compare_case() for _ in range(1800)]
    lines += [time_case() for _ in range(1800)]
    print("\n".join(lines))


if __name__ == "__main__":
    main()
