#!/usr/bin/env python3
"""Writes the oracle vectors of the value-class tests, from Python's own int,
fractions, base64 and binascii:

  bigint_vectors.txt   a b a+b a-b a*b a/b a%b cmp(a,b) isqrt(|a|)
  decimal_vectors.txt  arithmetic on pairs, parsing and printing
  base64_vectors.txt   hex and base64 of random buffers of 0 to 300 bytes

Run from this folder: python3 gen_numeric_vectors.py. The seed is fixed, so
the files only change when this script does.
"""

import base64
import binascii
import math
import random
from fractions import Fraction

MAX_PLACES = 30  # the default limit of decimal places
random.seed(20240611)


def trunc_div(a, b):
    """Quotient truncated toward zero, as the library divides."""
    q = abs(a) // abs(b)
    return q if (a < 0) == (b < 0) else -q


def trunc_rem(a, b):
    return a - trunc_div(a, b) * b


def random_digits(max_len):
    n = random.choice([random.randint(1, 12), random.randint(1, 40), random.randint(1, max_len)])
    s = str(random.randint(1, 9)) + "".join(random.choice("0123456789") for _ in range(n - 1))
    return s


def random_int(max_len=120):
    r = random.random()
    if r < 0.05:
        return 0
    if r < 0.15:
        return random.choice([1, -1, 9, 10, -10, 99, 100, 2**31 - 1, -(2**31), 2**63 - 1, -(2**63)])
    v = int(random_digits(max_len))
    if r < 0.25:  # runs of nines and zeros stress carries and borrows
        v = int("9" * random.randint(1, 60)) if r < 0.2 else 10 ** random.randint(1, 60)
    return -v if random.random() < 0.5 else v


def write_bigint(path, count):
    with open(path, "w") as f:
        f.write("# a b a+b a-b a*b a/b a%b(or -) cmp isqrt(|a|)\n")
        for _ in range(count):
            a = random_int()
            b = random_int()
            if random.random() < 0.1:
                b = a  # equal operands
            if random.random() < 0.1 and b != 0:
                a = b * random_int(30) + trunc_rem(random_int(30), b)  # exact-ish quotients
            quotient = str(trunc_div(a, b)) if b != 0 else "-"
            remainder = str(trunc_rem(a, b)) if b > 0 else "-"
            cmp = (a > b) - (a < b)
            f.write(f"{a} {b} {a + b} {a - b} {a * b} {quotient} {remainder} {cmp} {math.isqrt(abs(a))}\n")


# --- decimals --------------------------------------------------------------------
# A decimal is (I, F, fd): integer part, fraction part (both signed, same sign),
# fraction places. The library rounds a fraction that is too long half toward
# zero and does not carry a fraction that reaches 10^places; the model below
# does the same on exact Python integers.


def split(value, places):
    """Exact Fraction with a finite expansion of `places` digits -> (I, F)."""
    scaled = value * 10**places
    assert scaled.denominator == 1
    n = scaled.numerator
    return trunc_div(n, 10**places), trunc_rem(n, 10**places)


def rationalise(I, F, fd):
    while fd > 1 and F % 10 == 0:
        F = trunc_div(F, 10)
        fd -= 1
    return I, F, fd


def round_places(I, F, fd, places):
    if fd <= places:
        return I, F * 10 ** (places - fd), places
    P = 10 ** (fd - places)
    r = trunc_rem(F, P)
    F = trunc_div(F, P)
    adjust = 1 if r > P // 2 else -1 if r < -(P // 2) else 0
    if adjust:
        if places == 0:
            I += adjust
        else:
            F += adjust
    return I, F, places


def cap(I, F, fd):
    return round_places(I, F, fd, MAX_PLACES) if fd > MAX_PLACES else (I, F, fd)


def text_of(I, F, fd, negative):
    if F == 0:
        return str(I)
    digits = str(abs(F)).rjust(fd, "0")
    return ("-" if negative else "") + str(abs(I)) + "." + digits


def exact_text(value):
    """The library's text of an exact value with at most MAX_PLACES places."""
    fd = 1
    while (value * 10**fd).denominator != 1:
        fd += 1
    I, F = split(value, fd)
    I, F, fd = rationalise(I, F, fd)
    return text_of(I, F, fd, value < 0)


def product_parts(a, b):
    p = a * b
    fd = 1
    while (p * 10**fd).denominator != 1:
        fd += 1
    I, F = split(p, fd)
    return cap(*rationalise(I, F, fd)) + (p < 0,)


def product_text(a, b):
    return text_of(*product_parts(a, b))


def quotient_parts(a, b):
    guarded = MAX_PLACES + 2
    S = 10**guarded
    q = a * S / b
    q = trunc_div(q.numerator, q.denominator)
    I, F = trunc_div(q, S), trunc_rem(q, S)
    return cap(*rationalise(I, F, guarded)) + (q < 0,)


def quotient_text(a, b):
    return text_of(*quotient_parts(a, b))


def places_text(value, places):
    """ToString(places): add half a unit with the value's sign, cut."""
    half = Fraction(5, 10 ** (places + 1)) if places + 1 <= MAX_PLACES else Fraction(0)
    s = value + (half if value >= 0 else -half)
    fd = 1
    while (s * 10**fd).denominator != 1:
        fd += 1
    I, F = split(s, fd)
    I, F, fd = rationalise(I, F, fd)
    digits = str(abs(F)).rjust(fd, "0")[:places]
    return ("-" if s < 0 else "") + str(abs(I)) + "." + digits


def random_decimal_text():
    ip = random_digits(40) if random.random() < 0.8 else "0"
    fp = "".join(random.choice("0123456789") for _ in range(random.randint(0, 25)))
    if fp and fp.strip("0") == "" and ip.strip("0") == "":
        fp = fp[:-1] + "3"
    text = ip + ("." + fp if fp else "")
    return ("-" + text) if random.random() < 0.5 and text.strip("0.") else text


def decorate(text):
    """The same number written with the blanks, signs and exponents the
    parser accepts."""
    r = random.random()
    if r < 0.3:
        return text
    if r < 0.5:  # blanks anywhere in the digits
        out = []
        for ch in text:
            out.append(ch)
            if random.random() < 0.2:
                out.append(random.choice(" \t\n\r"))
        return " " + "".join(out)
    if r < 0.65:  # leading zeros and trailing fraction zeros
        body = text.lstrip("-")
        body = "000" + body + ("" if "." in body else ".") + "000"
        return ("-" if text.startswith("-") else "") + body
    if r < 0.8:  # a sign moved to the end of the integer digits
        negative = text.startswith("-")
        body = text.lstrip("-")
        ip, _, fp = body.partition(".")
        return ip + ("-" if negative else "+") + ("." + fp if fp else "")
    return None  # an exponent form; see below


def write_decimal(path, count):
    with open(path, "w") as f:
        f.write("# arith a b a+b a-b a*b a/b(or -) cmp\n")
        f.write("# parse text expected   (the text is a Python string literal)\n")
        f.write("# places value places expected\n")
        for _ in range(count):
            ta, tb = random_decimal_text(), random_decimal_text()
            if random.random() < 0.1:
                tb = ta
            a, b = Fraction(ta), Fraction(tb)
            quotient = quotient_text(a, b) if b != 0 else "-"
            cmp = (a > b) - (a < b)
            f.write(f"arith {ta} {tb} {exact_text(a + b)} {exact_text(a - b)} {product_text(a, b)} {quotient} {cmp}\n")
        for _ in range(count):
            t = random_decimal_text()
            v = Fraction(t)
            text = decorate(t)
            if text is None:
                # mantissa with a point and an exponent
                mantissa = random_digits(20)
                point = random.randint(0, len(mantissa))
                m = mantissa[:point] + "." + mantissa[point:]
                e = random.randint(0, 45)
                negative_exp = random.random() < 0.5
                text = ("-" if t.startswith("-") else "") + m + random.choice("eE") + ("-" if negative_exp else random.choice(["", "+"])) + str(e)
                v = Fraction(m if m != "." else "0") * (Fraction(1, 10**e) if negative_exp else 10**e)
                if t.startswith("-"):
                    v = -v
                if negative_exp:
                    # division by 10^e: truncated to two guard digits, then rounded
                    I, F, fd, negative = quotient_parts(v * 10**e, Fraction(10**e))
                else:
                    I, F, fd, negative = product_parts(v, Fraction(1))
                # the parser drops the zeros that rounding left at the end
                expected = text_of(*rationalise(I, F, fd), negative)
            else:
                fd = 1
                while (v * 10**fd).denominator != 1:
                    fd += 1
                I, F = split(v, fd)
                I, F, fd = cap(*rationalise(I, F, fd))
                expected = text_of(I, F, fd, v < 0)
            f.write(f"parse {text!r} {expected}\n")
        for _ in range(count):
            t = random_decimal_text()
            places = random.randint(0, 35)
            f.write(f"places {t} {places} {places_text(Fraction(t), places)}\n")


def write_base64(path):
    with open(path, "w") as f:
        f.write("# hex base64, one random buffer of each length from 0 to 300 bytes\n")
        for n in range(301):
            data = bytes(random.getrandbits(8) for _ in range(n))
            hex_text = binascii.hexlify(data).decode().upper() or "-"
            b64 = base64.b64encode(data).decode() or "-"
            f.write(f"{hex_text} {b64}\n")


if __name__ == "__main__":
    write_bigint("bigint_vectors.txt", 1500)
    write_decimal("decimal_vectors.txt", 800)
    write_base64("base64_vectors.txt")
