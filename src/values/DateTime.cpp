#include "values/DateTime.h"

#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/platform/Platform.h"
#include "values/DateTimeCalendar.h"
#include "values/DateTimeText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace MxXmlLib
{

namespace
{

// Which forms have which fields, one bit per DTType.
constexpr unsigned Bit(CDateTime::DTType t) { return 1u << t; }
constexpr unsigned kYearTypes =
    Bit(CDateTime::dateTime) | Bit(CDateTime::date) | Bit(CDateTime::gYearMonth) | Bit(CDateTime::gYear);
constexpr unsigned kMonthTypes = Bit(CDateTime::dateTime) | Bit(CDateTime::date) | Bit(CDateTime::gYearMonth) |
                                 Bit(CDateTime::gMonth) | Bit(CDateTime::gMonthDay);
constexpr unsigned kDayTypes =
    Bit(CDateTime::dateTime) | Bit(CDateTime::date) | Bit(CDateTime::gDay) | Bit(CDateTime::gMonthDay);
constexpr unsigned kTimeTypes = Bit(CDateTime::dateTime) | Bit(CDateTime::time);
constexpr unsigned kDayOfYearTypes = Bit(CDateTime::dateTime) | Bit(CDateTime::date);

bool Has(CDateTime::DTType t, unsigned mask) { return static_cast<unsigned>(t) <= 8 && (Bit(t) & mask) != 0; }

// February has 29 here; the leap test is made separately where it matters.
constexpr int kDaysInMonth[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr int kDaysBeforeMonth[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

constexpr int kMaxYear = 9999;
constexpr int kMinYear = -9999;

char const *TypeName(CDateTime::DTType t)
{
    static char const *const names[] = {"yearZero", "dateTime", "date",   "gYearMonth", "gYear",
                                        "time",     "gDay",     "gMonth", "gMonthDay"};
    unsigned n = static_cast<unsigned>(t);
    return n <= 8 ? names[n] : "";
}

bool IsLeap(long long y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }

int Digit(char c) { return c - '0'; }
int TwoDigits(char const *p) { return Digit(p[0]) * 10 + Digit(p[1]); }

long long FloorDiv(long long a, long long b) { return a / b - ((a % b != 0 && (a % b < 0) != (b < 0)) ? 1 : 0); }
long long FloorMod(long long a, long long b) // b > 0
{
    long long const r = a % b;
    return r < 0 ? r + b : r;
}

// Days from 1970-01-01 to y-m-d in the proleptic Gregorian calendar with a
// year 0 (so -1 is 2 BCE); valid for any y the 64-bit range can carry.
long long DaysFromCivil(long long y, unsigned m, unsigned d)
{
    y -= m <= 2;
    long long const era = FloorDiv(y, 400);
    long long const yoe = y - era * 400;                                   // [0, 399]
    long long const doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1; // [0, 365]
    long long const doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;           // [0, 146096]
    return era * 146097 + doe - 719468;
}

void CivilFromDays(long long z, long long &y, unsigned &m, unsigned &d)
{
    z += 719468;
    long long const era = FloorDiv(z, 146097);
    long long const doe = z - era * 146097;                              // [0, 146096]
    long long const yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365; // [0, 399]
    long long const doy = doe - (365 * yoe + yoe / 4 - yoe / 100);      // [0, 365]
    long long const mp = (5 * doy + 2) / 153;                           // [0, 11]
    d = static_cast<unsigned>(doy - (153 * mp + 2) / 5 + 1);            // [1, 31]
    m = static_cast<unsigned>(mp < 10 ? mp + 3 : mp - 9);               // [1, 12]
    y = yoe + era * 400 + (m <= 2);
}

// Arithmetic of span addition wraps like the fixed-width registers it was
// defined on; doing it through unsigned keeps every input defined.
long long WrapAdd(long long a, long long b)
{
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}
long long WrapMul(long long a, long long b)
{
    return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
}
long long Signed(int sign, unsigned long long magnitude)
{
    return static_cast<long long>(sign < 0 ? 0 - magnitude : magnitude);
}

// The carry of a field is taken in single precision on purpose: very large
// spans come out inexact, and callers have seen those results.
long long FloatCarry(long long value, float divisor)
{
    return static_cast<long long>(std::floor(static_cast<float>(value) / divisor));
}

// Splits `value` into a remainder, returned, and a carry for the next field.
long long SplitCarry(long long value, int divisor, long long &carry)
{
    carry = FloatCarry(value, static_cast<float>(divisor));
    return WrapAdd(value, -WrapMul(divisor, carry));
}

// Days of month m for the day walk of span addition; months outside
// [1, 12] (only from float-inexact carries or unchecked setters) are read
// modulo 12 so that the table is never left.
int DaysInMonthOf(long long m, short y)
{
    int const index = static_cast<int>(FloorMod(m - 1, 12)); // [0, 11]
    if (index == 1)
        return IsLeap(y) ? 29 : 28;
    return kDaysInMonth[index];
}

[[noreturn]] void ThrowBadDate(char const *text, std::size_t length)
{
    throw CMxInvalidValueException(FormatString("Invalid XSD Date [%s] expected CCYY-MM-DD[Z|[+|-]hh:mm]",
                                                std::string(text, length).c_str()));
}

[[noreturn]] void ThrowBadZone(char const *text, std::size_t length)
{
    throw CMxInvalidValueException(FormatString("Invalid XSD Time Zone [%s].", std::string(text, length).c_str()));
}

} // namespace

namespace DateTimeCalendar
{

namespace
{

// One month-crossing step of the walk, or the last step; returns the days left.
long long Step(DayWalk &w, long long d)
{
    if (d < 0)
    {
        if (w.day - 1 < -d)
        {
            --w.month;
            d += w.day;
            w.day = DaysInMonthOf(w.month, w.year);
        }
        else
        {
            w.day += d;
            d = 0;
        }
    }
    else
    {
        long long const dim = DaysInMonthOf(w.month, w.year);
        if (w.day + d > dim)
        {
            d = d - 1 + w.day - dim;
            w.day = 1;
            ++w.month;
        }
        else
        {
            w.day += d;
            d = 0;
        }
    }
    if (w.month == 0)
    {
        w.month = 12;
        w.year = static_cast<short>(w.year - 1);
    }
    else if (w.month == 13)
    {
        w.month = 1;
        w.year = static_cast<short>(w.year + 1);
    }
    return d;
}

// Skips what Step would repeat. At day 1 going forward (or the last day of
// the month going back) with at least a month's days left, 4800 steps over
// months in [1, 12] take 146097 days and 400 years, as long as the 16-bit
// year does not wrap (its leap rule is periodic only without the wrap).
// Months outside [1, 12] keep the year until they reach 0 or 13, so 12 steps
// take one year's days.
long long Skip(DayWalk &w, long long d)
{
    constexpr long long kMargin = 31; // every skipped step crosses a month
    constexpr long long kCycleDays = 146097;
    bool const inRange = w.month >= 1 && w.month <= 12;
    long long const yearDays = IsLeap(w.year) ? 366 : 365;
    if (d > kMargin && w.day == 1)
    {
        if (inRange)
        {
            long long const k = std::min((d - kMargin) / kCycleDays, (32767 - static_cast<long long>(w.year)) / 400);
            d -= k * kCycleDays;
            w.year = static_cast<short>(w.year + 400 * k);
        }
        else if (w.month >= 14 || w.month <= -13)
        {
            long long k = (d - kMargin) / yearDays;
            if (w.month < 0)
                k = std::min(k, (-1 - w.month) / 12); // stop short of 0
            d -= k * yearDays;
            w.month += 12 * k;
        }
    }
    else if (d < -kMargin && w.day == DaysInMonthOf(w.month, w.year))
    {
        if (inRange)
        {
            long long const k = std::min((-d - kMargin) / kCycleDays, (static_cast<long long>(w.year) + 32768) / 400);
            d += k * kCycleDays;
            w.year = static_cast<short>(w.year - 400 * k);
        }
        else if (w.month >= 26 || w.month <= -1)
        {
            long long k = (-d - kMargin) / yearDays;
            if (w.month > 0)
                k = std::min(k, (w.month - 14) / 12); // stop short of 13
            d += k * yearDays;
            w.month -= 12 * k;
        }
    }
    return d;
}

} // namespace

void WalkByMonths(DayWalk &walk, long long days)
{
    while (days != 0)
        days = Step(walk, days);
}

void Walk(DayWalk &walk, long long days)
{
    while (days != 0)
        days = Step(walk, Skip(walk, days));
}

} // namespace DateTimeCalendar

char const CDateTime::EmptyFormat[] = "";

// ---------------------------------------------------------------------------
// Construction and assignment

CDateTime::CDateTime()
{
    Clear();
}

CDateTime::CDateTime(DTType newType)
{
    Clear();
    type = newType;
}

CDateTime::CDateTime(char const *text)
{
    Clear();
    ParseXSDDateTime(text);
}

CDateTime::CDateTime(short y, unsigned char mo, unsigned char d)
{
    Clear();
    try
    {
        SetDate(y, mo, d);
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::CDateTime(short y, unsigned char mo, unsigned char d, unsigned char h, unsigned char mi,
                     unsigned char s)
{
    Clear();
    try
    {
        SetDateTime(y, mo, d, h, mi, s);
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::CDateTime(short y, unsigned char mo, unsigned char d, unsigned char h, unsigned char mi,
                     unsigned char s, unsigned short milli, unsigned short micro, unsigned short nano)
{
    Clear();
    try
    {
        SetDateTime(y, mo, d, h, mi, s, milli, micro, nano);
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::CDateTime(std::int64_t secondsSinceEpoch)
{
    Clear();
    try
    {
        *this = secondsSinceEpoch;
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::CDateTime(SystemTime const &t)
{
    Clear();
    try
    {
        *this = t;
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::CDateTime(FileTime const &t)
{
    Clear();
    try
    {
        *this = t;
    }
    catch (CMxInvalidValueException const &)
    {
        Clear();
    }
}

CDateTime::~CDateTime() = default;

void CDateTime::Clear()
{
    type = yearZero;
    reserved = 0;
    year = 0;
    month = day = hour = minute = second = 0;
    milliSecond = microSecond = nanoSecond = 0;
    isUTC = hasTimeZone = false;
    zoneHour = 0;
    zoneMinute = 0;
}

CDateTime &CDateTime::operator=(std::int64_t secondsSinceEpoch)
{
    long long const days = FloorDiv(secondsSinceEpoch, 86400);
    long long const secs = FloorMod(secondsSinceEpoch, 86400); // [0, 86399]
    long long y;
    unsigned m, d;
    CivilFromDays(days, y, m, d);
    if (y < kMinYear || y > kMaxYear)
        throw CMxInvalidValueException(
            FormatString("Invalid Year [%lld] (%d <= year <= %d && year != 0)", y, kMaxYear, kMinYear));
    CDateTime value;
    value.SetDateTime(dateTime, static_cast<short>(y), static_cast<unsigned char>(m), static_cast<unsigned char>(d),
                      static_cast<unsigned char>(secs / 3600), static_cast<unsigned char>(secs / 60 % 60),
                      static_cast<unsigned char>(secs % 60), 0, 0, 0);
    return *this = value;
}

CDateTime &CDateTime::operator=(SystemTime const &t)
{
    // Values the narrow fields cannot hold would wrap into valid ones.
    if (t.wYear > kMaxYear)
        throw CMxInvalidValueException(
            FormatString("Invalid Year [%d] (%d <= year <= %d && year != 0)", t.wYear, kMaxYear, kMinYear));
    if (t.wMonth > 255)
        throw CMxInvalidValueException(FormatString("Invalid Month [%d] (1 <= month <= 12)", t.wMonth));
    if (t.wDay > 255)
        throw CMxInvalidValueException(FormatString("Invalid Day [%d] (1 <= day <= days in month", t.wDay));
    if (t.wHour > 255)
        throw CMxInvalidValueException(FormatString("Invalid Hour [%d] (0 <= hour <= 23)", t.wHour));
    if (t.wMinute > 255)
        throw CMxInvalidValueException(FormatString("Invalid Minute [%d] (0 <= minute <= 59)", t.wMinute));
    if (t.wSecond > 255)
        throw CMxInvalidValueException(FormatString("Invalid Second [%d] (0 <= second <= 59)", t.wSecond));
    CDateTime value;
    value.SetDateTime(dateTime, static_cast<short>(t.wYear), static_cast<unsigned char>(t.wMonth),
                      static_cast<unsigned char>(t.wDay), static_cast<unsigned char>(t.wHour),
                      static_cast<unsigned char>(t.wMinute), static_cast<unsigned char>(t.wSecond),
                      t.wMilliseconds, 0, 0);
    return *this = value;
}

CDateTime &CDateTime::operator=(FileTime const &t)
{
    unsigned long long const ticks =
        (static_cast<unsigned long long>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
    // Ticks with the top bit set are negative times, which have no calendar form.
    if (ticks >> 63)
        throw CMxInvalidValueException("Failed to convert FILETIME to SYSTEMTIME");
    constexpr long long kTicksPerSecond = 10000000;
    constexpr long long kSeconds1601To1970 = 11644473600LL;
    long long const secs = static_cast<long long>(ticks / kTicksPerSecond) - kSeconds1601To1970;
    long long const days = FloorDiv(secs, 86400);
    long long const rest = secs - days * 86400; // [0, 86399]
    long long y;
    unsigned m, d;
    CivilFromDays(days, y, m, d); // y in [1601, 30828]
    SystemTime st{};
    st.wYear = static_cast<std::uint16_t>(y);
    st.wMonth = static_cast<std::uint16_t>(m);
    st.wDay = static_cast<std::uint16_t>(d);
    st.wDayOfWeek = static_cast<std::uint16_t>(FloorMod(days + 4, 7));
    st.wHour = static_cast<std::uint16_t>(rest / 3600);
    st.wMinute = static_cast<std::uint16_t>(rest / 60 % 60);
    st.wSecond = static_cast<std::uint16_t>(rest % 60);
    st.wMilliseconds = static_cast<std::uint16_t>(ticks % kTicksPerSecond / 10000);
    return *this = st;
}

CDateTime CDateTime::GetTickCount()
{
    Platform::LocalTime const now = Platform::LocalTimeNow();
    SystemTime st{};
    st.wYear = static_cast<std::uint16_t>(now.year);
    st.wMonth = static_cast<std::uint16_t>(now.month);
    st.wDayOfWeek = static_cast<std::uint16_t>(now.dayOfWeek);
    st.wDay = static_cast<std::uint16_t>(now.day);
    st.wHour = static_cast<std::uint16_t>(now.hour);
    st.wMinute = static_cast<std::uint16_t>(now.minute);
    st.wSecond = static_cast<std::uint16_t>(now.second);
    st.wMilliseconds = static_cast<std::uint16_t>(now.milliseconds);
    return CDateTime(st);
}

std::string CDateTime::GetTypeAsString() const
{
    return TypeName(type);
}

// ---------------------------------------------------------------------------
// Field access

short CDateTime::GetYear() const
{
    if (!Has(type, kYearTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetYear. Invalid Date Type: %s.", TypeName(type)));
    return year;
}

unsigned char CDateTime::GetMonth() const
{
    if (!Has(type, kMonthTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetMonth. Invalid Date Type: %s.", TypeName(type)));
    return month;
}

unsigned char CDateTime::GetDay() const
{
    if (!Has(type, kDayTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetDay. Invalid Date Type: %s.", TypeName(type)));
    return day;
}

unsigned char CDateTime::GetHour() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetHour. Invalid Date Type: %s.", TypeName(type)));
    return hour;
}

unsigned char CDateTime::GetMinute() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetMinute. Invalid Date Type: %s.", TypeName(type)));
    return minute;
}

unsigned char CDateTime::GetSecond() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetSecond. Invalid Date Type: %s.", TypeName(type)));
    return second;
}

double CDateTime::GetRealSecond() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetRealSecond. Invalid Date Type: %s.", TypeName(type)));
    return milliSecond / 1000.0 + second + microSecond / 1e6 + nanoSecond / 1e9;
}

unsigned short CDateTime::GetMilliSecond() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetMilliSecond. Invalid Date Type: %s.", TypeName(type)));
    return milliSecond;
}

unsigned short CDateTime::GetMicroSecond() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetMicroSecond. Invalid Date Type: %s.", TypeName(type)));
    return microSecond;
}

unsigned short CDateTime::GetNanoSecond() const
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetNanoSecond. Invalid Date Type: %s.", TypeName(type)));
    return nanoSecond;
}

// The setters share the getters' messages, "Get" included.
void CDateTime::SetYear(short value)
{
    if (!Has(type, kYearTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetYear. Invalid Date Type: %s.", TypeName(type)));
    year = value;
}

void CDateTime::SetMonth(unsigned char value)
{
    if (!Has(type, kMonthTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetMonth. Invalid Date Type: %s.", TypeName(type)));
    month = value;
}

void CDateTime::SetDay(unsigned char value)
{
    if (!Has(type, kDayTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetDay. Invalid Date Type: %s.", TypeName(type)));
    day = value;
}

void CDateTime::SetHour(unsigned char value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetHour. Invalid Date Type: %s.", TypeName(type)));
    hour = value;
}

void CDateTime::SetMinute(unsigned char value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetMinute. Invalid Date Type: %s.", TypeName(type)));
    minute = value;
}

void CDateTime::SetSecond(unsigned char value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(FormatString("Failed to GetSecond. Invalid Date Type: %s.", TypeName(type)));
    second = value;
}

void CDateTime::SetMilliSecond(unsigned short value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetMilliSecond. Invalid Date Type: %s.", TypeName(type)));
    milliSecond = value;
}

void CDateTime::SetMicroSecond(unsigned short value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetMicroSecond. Invalid Date Type: %s.", TypeName(type)));
    microSecond = value;
}

void CDateTime::SetNanoSecond(unsigned short value)
{
    if (!Has(type, kTimeTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetNanoSecond. Invalid Date Type: %s.", TypeName(type)));
    nanoSecond = value;
}

short CDateTime::GetZoneHour() const
{
    if (!hasTimeZone)
        throw CMxInvalidStateException("TimeZone is not been used");
    return zoneHour;
}

unsigned char CDateTime::GetZoneMinute() const
{
    if (!hasTimeZone)
        throw CMxInvalidStateException("TimeZone is not been used");
    return zoneMinute;
}

void CDateTime::SetTimeZone(short h, unsigned char m)
{
    if (h < -23 || h > 23 || m > 59)
        throw CMxInvalidValueException(FormatString("Invalid TimeZone [%d:%d]", h, m));
    isUTC = true;
    hasTimeZone = true;
    zoneHour = h;
    zoneMinute = m;
}

void CDateTime::SetUTC()
{
    isUTC = true;
    hasTimeZone = false;
    zoneHour = 0;
    zoneMinute = 0;
}

// ---------------------------------------------------------------------------
// Calendar queries

int CDateTime::GetDayOfWeek() const
{
    if (!Has(type, kDayOfYearTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetDayOfWeek. Invalid Date Type: %s.", TypeName(type)));
    long long const days = FloorDiv(GetTime(), 86400);
    return static_cast<int>(FloorMod(days + 4, 7)) + 1; // 1970-01-01 was a Thursday
}

int CDateTime::GetDayOfYear() const
{
    if (!Has(type, kDayOfYearTypes))
        throw CMxInvalidStateException(
            FormatString("Failed to GetDayOfYear. Invalid Date Type: %s.", TypeName(type)));
    if (month < 1 || month > 12)
        throw CMxInvalidValueException(FormatString("Invalid Month [%d] (1 <= month <= 12)", month));
    // The leap day is counted for months below March, as callers expect.
    return kDaysBeforeMonth[month - 1] + day + (IsLeap(year) && month < 3 ? 1 : 0);
}

std::int64_t CDateTime::GetTime() const
{
    CDateTime const n = GetNormalized();
    if (n.type != dateTime && n.type != date)
        throw CMxInvalidValueException(FormatString(
            "Failed to GetTime, Date Status must be dateTime or date. Invalid Date Type: %s.", TypeName(type)));
    // Fields out of range (from the unchecked setters) roll over as in timegm.
    long long const m0 = static_cast<long long>(n.month) - 1;
    long long const y = n.year + FloorDiv(m0, 12);
    long long const days =
        DaysFromCivil(y, static_cast<unsigned>(FloorMod(m0, 12) + 1), 1) + static_cast<long long>(n.day) - 1;
    long long secs = days * 86400;
    if (n.type == dateTime)
        secs += n.hour * 3600LL + n.minute * 60LL + n.second;
    return secs;
}

SystemTime CDateTime::GetAsSystemTime() const
{
    if (type != dateTime)
        throw CMxInvalidValueException(FormatString(
            "Failed to GetAsSystemTime, Date Status must be dateTime. Invalid Date Type: %s.", TypeName(type)));
    SystemTime st{};
    st.wYear = static_cast<std::uint16_t>(year);
    st.wMonth = month;
    st.wDayOfWeek = static_cast<std::uint16_t>(GetDayOfWeek() - 1);
    st.wDay = day;
    st.wHour = hour;
    st.wMinute = minute;
    st.wSecond = second;
    st.wMilliseconds = milliSecond;
    return st;
}

// ---------------------------------------------------------------------------
// Checked setters and validation

void CDateTime::SetDateTime(DTType newType, short newYear, unsigned char newMonth, unsigned char newDay,
                            unsigned char newHour, unsigned char newMinute, unsigned char newSecond,
                            unsigned short milli, unsigned short micro, unsigned short nano)
{
    if (type != yearZero && type != newType)
        throw CMxInvalidStateException(FormatString("Failed to copy CDateTime. Invalid Date Type: %s, expected: %s.",
                                                    TypeName(newType), TypeName(type)));
    isUTC = hasTimeZone = false;
    zoneHour = 0;
    zoneMinute = 0;
    reserved = 0;
    type = newType;
    year = newYear;
    month = newMonth;
    day = newDay;
    hour = newHour;
    minute = newMinute;
    second = newSecond;
    milliSecond = milli;
    microSecond = micro;
    nanoSecond = nano;
    Validate();
}

void CDateTime::SetDateTime(short y, unsigned char mo, unsigned char d, unsigned char h, unsigned char mi,
                            unsigned char s)
{
    SetDateTime(dateTime, y, mo, d, h, mi, s, 0, 0, 0);
}

void CDateTime::SetDateTime(short y, unsigned char mo, unsigned char d, unsigned char h, unsigned char mi,
                            unsigned char s, unsigned short milli, unsigned short micro, unsigned short nano)
{
    SetDateTime(dateTime, y, mo, d, h, mi, s, milli, micro, nano);
}

void CDateTime::SetDate(short y, unsigned char mo, unsigned char d)
{
    SetDateTime(date, y, mo, d, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetTime(unsigned char h, unsigned char mi, unsigned char s)
{
    SetDateTime(time, 0, 0, 0, h, mi, s, 0, 0, 0);
}

void CDateTime::SetTime(unsigned char h, unsigned char mi, unsigned char s, unsigned short milli,
                        unsigned short micro, unsigned short nano)
{
    SetDateTime(time, 0, 0, 0, h, mi, s, milli, micro, nano);
}

void CDateTime::SetGYear(short y)
{
    SetDateTime(gYear, y, 0, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGYearMonth(short y, unsigned char mo)
{
    SetDateTime(gYearMonth, y, mo, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGMonth(unsigned char mo)
{
    SetDateTime(gMonth, 0, mo, 0, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGMonthDay(unsigned char mo, unsigned char d)
{
    SetDateTime(gMonthDay, 0, mo, d, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetGDay(unsigned char d)
{
    SetDateTime(gDay, 0, 0, d, 0, 0, 0, 0, 0, 0);
}

void CDateTime::SetFracTime(unsigned short milli, unsigned short micro, unsigned short nano)
{
    SetDateTime(time, 0, 0, 0, 0, 0, 0, milli, micro, nano);
}

void CDateTime::SetDateTime(CDateTime const &source, DTType target)
{
    if (!CheckConversion(source.type, target))
        throw CMxInvalidValueException(
            FormatString("Attempting to set a CDateTime of type %s using an XmlDateTime of type %s. The source "
                         "CDateTime does not contian enough data to allow the conversion.",
                         TypeName(target), TypeName(source.type)));
    *this = source;
    type = target;
}

bool CDateTime::CheckConversion(DTType source, DTType target)
{
    if (source == target || target == yearZero)
        return true;
    switch (source)
    {
    case yearZero:
    case gYear:
    case time:
    case gDay:
    case gMonth:
        return false;
    case dateTime:
        return true;
    case date:
        return target == gYearMonth || target == gYear || target == gDay || target == gMonth || target == gMonthDay;
    case gYearMonth:
        return target == gMonth || target == gYear;
    case gMonthDay:
        return target == gDay || target == gMonth;
    }
    throw CMxInvalidValueException(FormatString("Unknown date type %d.", static_cast<int>(source)));
}

void CDateTime::Validate() const
{
    if (type == yearZero)
        throw CMxInvalidValueException("Invalid Year Zero");

    if (Has(type, kMonthTypes))
    {
        if (month < 1 || month > 12)
            throw CMxInvalidValueException(FormatString("Invalid Month [%d] (1 <= month <= 12)", month));
    }
    else if (month != 0)
        throw CMxInvalidValueException(FormatString("Invalid Month [%d] for type %s", month, TypeName(type)));

    if (Has(type, kYearTypes))
    {
        // The bounds are printed high first; that text is relied upon.
        if (year == 0 || year < kMinYear || year > kMaxYear)
            throw CMxInvalidValueException(
                FormatString("Invalid Year [%d] (%d <= year <= %d && year != 0)", year, kMaxYear, kMinYear));
    }
    else if (year != 0)
        throw CMxInvalidValueException(FormatString("Invalid Year [%d] for type %s", year, TypeName(type)));

    if (type == dateTime || type == date)
    {
        if (day < 1 || day > kDaysInMonth[month - 1] || (month == 2 && day == 29 && !IsLeap(year)))
            throw CMxInvalidValueException(FormatString("Invalid Day [%d] (1 <= day <= days in month", day));
    }
    else if (type == gMonthDay)
    {
        if (day < 1 || day > kDaysInMonth[month - 1])
            throw CMxInvalidValueException(FormatString("Invalid Day [%d] (1 <= day <= days in month)", day));
    }
    else if (type == gDay)
    {
        if (day < 1 || day > 31)
            throw CMxInvalidValueException(FormatString("Invalid Day [%d] (1 <= day <= 31)", day));
    }
    else if (day != 0)
        throw CMxInvalidValueException(FormatString("Invalid Day [%d] for type %s", day, TypeName(type)));

    if (!Has(type, kTimeTypes))
    {
        char const *name = TypeName(type);
        if (hour != 0)
            throw CMxInvalidValueException(FormatString("Invalid Hour [%d] for type %s", hour, name));
        if (minute != 0)
            throw CMxInvalidValueException(FormatString("Invalid Minute [%d] for type %s", minute, name));
        if (second != 0)
            throw CMxInvalidValueException(FormatString("Invalid Second [%d] for type %s", second, name));
        if (milliSecond != 0)
            throw CMxInvalidValueException(FormatString("Invalid Milli-Second [%d] for type %s", milliSecond, name));
        if (microSecond != 0)
            throw CMxInvalidValueException(FormatString("Invalid Micro-Second [%d] for type %s", microSecond, name));
        if (nanoSecond != 0)
            throw CMxInvalidValueException(FormatString("Invalid Nano-Second [%d] for type %s", nanoSecond, name));
    }

    if (hour > 23)
        throw CMxInvalidValueException(FormatString("Invalid Hour [%d] (0 <= hour <= 23)", hour));
    if (minute > 59)
        throw CMxInvalidValueException(FormatString("Invalid Minute [%d] (0 <= minute <= 59)", minute));
    if (second > 59)
        throw CMxInvalidValueException(FormatString("Invalid Second [%d] (0 <= second <= 59)", second));
    if (milliSecond > 999)
        throw CMxInvalidValueException(FormatString("Invalid Milli-Second [%d] (0 <= milli <= 999)", milliSecond));
    if (microSecond > 999)
        throw CMxInvalidValueException(FormatString("Invalid Micro-Second [%d] (0 <= micro <= 999)", microSecond));
    if (nanoSecond > 999)
        throw CMxInvalidValueException(FormatString("Invalid Nano-Second [%d] (0 <= nano <= 999)", nanoSecond));
}

// ---------------------------------------------------------------------------
// Parsing

void CDateTime::ParseXSDDateTime(char const *text)
{
    if (text == nullptr)
        throw CMxInvalidValueException("Invalid DateTime (Null String)");
    char const *t = std::strchr(text, 'T');
    if (t == nullptr)
        throw CMxInvalidValueException(FormatString("Invalid XSD DateTime [%s].", text));
    Clear();
    SetXSDDate(text, static_cast<std::size_t>(t - text));
    if (type != date)
        throw CMxInvalidValueException(
            FormatString("Invalid XSD DateTime [%s] expected CCYY-MM-DDThh:mm:ss[.ff]", text));
    SetXSDTime(t + 1);
    type = dateTime;
    Validate();
}

void CDateTime::ParseXSDDate(char const *text)
{
    Clear();
    SetXSDDate(text);
    Validate();
}

void CDateTime::ParseXSDTime(char const *text)
{
    Clear();
    SetXSDTime(text);
    Validate();
}

void CDateTime::SetXSDDate(char const *text)
{
    if (text == nullptr)
        throw CMxInvalidValueException("Invalid Date (Null String)");
    SetXSDDate(text, std::strlen(text));
}

// The form is chosen by the length left once a zone is taken off the end;
// the zone itself is checked by SetZone.
void CDateTime::SetXSDDate(char const *text, std::size_t length)
{
    if (length == 0)
        throw CMxInvalidValueException("Invalid Date (Empty String)");
    if (std::memchr(text, 'T', length) != nullptr)
        throw CMxInvalidValueException("Invalid Date ('T' not allowed)");
    bool const endsZ = text[length - 1] == 'Z';
    bool const hasColon = std::memchr(text, ':', length) != nullptr;
    if (endsZ && hasColon)
        throw CMxInvalidValueException("Invalid Date (Bad Zone value)");
    long dateLength = static_cast<long>(length) - (endsZ ? 1 : 0) - (hasColon ? 6 : 0);

    char const *p = text;
    DTType newType;
    int newMonth = 0, newDay = 0;
    long newYear = 0;
    if (length >= 2 && p[0] == '-' && p[1] == '-')
    {
        switch (dateLength)
        {
        case 4: // --MM
        case 6: // --MM and two characters nobody looks at
            if (!IsDigit(p[2]) || !IsDigit(p[3]))
                ThrowBadDate(text, length);
            newType = gMonth;
            newMonth = TwoDigits(p + 2);
            break;
        case 5: // ---DD
            if (p[2] != '-' || !IsDigit(p[3]) || !IsDigit(p[4]))
                ThrowBadDate(text, length);
            newType = gDay;
            newDay = TwoDigits(p + 3);
            break;
        case 7: // --MM-DD
            if (!IsDigit(p[2]) || !IsDigit(p[3]) || p[4] != '-' || !IsDigit(p[5]) || !IsDigit(p[6]))
                ThrowBadDate(text, length);
            newType = gMonthDay;
            newMonth = TwoDigits(p + 2);
            newDay = TwoDigits(p + 5);
            break;
        default:
            ThrowBadDate(text, length);
        }
    }
    else
    {
        bool const negative = p[0] == '-';
        if (negative)
        {
            ++p;
            --dateLength;
        }
        if (dateLength != 4 && dateLength != 7 && dateLength != 10)
            ThrowBadDate(text, length);
        for (int i = 0; i < 4; ++i)
        {
            if (!IsDigit(p[i]))
                ThrowBadDate(text, length);
            newYear = newYear * 10 + Digit(p[i]);
        }
        newType = gYear;
        if (dateLength >= 7)
        {
            if (p[4] != '-' || !IsDigit(p[5]) || !IsDigit(p[6]))
                ThrowBadDate(text, length);
            newMonth = TwoDigits(p + 5);
            newType = gYearMonth;
        }
        if (dateLength == 10)
        {
            if (p[7] != '-' || !IsDigit(p[8]) || !IsDigit(p[9]))
                ThrowBadDate(text, length);
            newDay = TwoDigits(p + 8);
            newType = date;
        }
        if (negative)
            newYear = -newYear;
    }
    type = newType;
    year = static_cast<short>(newYear);
    month = static_cast<unsigned char>(newMonth);
    day = static_cast<unsigned char>(newDay);
    if (endsZ || hasColon)
    {
        char const *zone = p + dateLength;
        SetZone(zone, length - static_cast<std::size_t>(zone - text));
    }
}

void CDateTime::SetXSDTime(char const *text)
{
    if (text == nullptr)
        throw CMxInvalidValueException("Invalid Time (Null String)");
    if (*text == '\0')
        throw CMxInvalidValueException("Invalid XSD Time (Empty String)");
    std::size_t const length = std::strlen(text);
    char const *p = text;
    if (length < 8 || !IsDigit(p[0]) || !IsDigit(p[1]) || p[2] != ':' || !IsDigit(p[3]) || !IsDigit(p[4]) ||
        p[5] != ':' || !IsDigit(p[6]) || !IsDigit(p[7]) || TwoDigits(p) > 23 || TwoDigits(p + 3) > 59 ||
        TwoDigits(p + 6) > 59)
        throw CMxInvalidValueException(FormatString("Invalid XSD Time [%s] expected hh:mm:ss[.ff]", text));
    hour = static_cast<unsigned char>(TwoDigits(p));
    minute = static_cast<unsigned char>(TwoDigits(p + 3));
    second = static_cast<unsigned char>(TwoDigits(p + 6));
    p += 8;
    if (*p == '.')
    {
        ++p;
        static constexpr unsigned short kWeight[3] = {100, 10, 1};
        unsigned short *const groups[3] = {&milliSecond, &microSecond, &nanoSecond};
        for (int count = 0; IsDigit(*p); ++count, ++p)
        {
            if (count == 9)
                throw CMxInvalidValueException(
                    FormatString("Invalid XSD Time [%s] Fraction part too long", text));
            *groups[count / 3] = static_cast<unsigned short>(*groups[count / 3] + Digit(*p) * kWeight[count % 3]);
        }
    }
    if (*p != '\0')
        SetZone(p, std::strlen(p));
    type = time;
}

// Accepts "Z" (the rest is not looked at) or exactly [+|-]hh:mm. The sign
// goes on the hour, so -00:30 and +00:30 are the same offset.
void CDateTime::SetZone(char const *text, std::size_t length)
{
    if (length >= 1 && text[0] == 'Z')
    {
        SetUTC();
        return;
    }
    if (length >= 1 && (text[0] == '+' || text[0] == '-'))
    {
        if (length != 6 || !IsDigit(text[1]) || !IsDigit(text[2]) || text[3] != ':' || !IsDigit(text[4]) ||
            !IsDigit(text[5]))
            ThrowBadZone(text, length);
        int h = TwoDigits(text + 1);
        if (h == 24)
            h = 0;
        if (text[0] == '-')
            h = -h;
        SetTimeZone(static_cast<short>(h), static_cast<unsigned char>(TwoDigits(text + 4)));
        return;
    }
    ThrowBadZone(text, length);
}

// ---------------------------------------------------------------------------
// Printing

std::string CDateTime::ToString() const
{
    return ToString("s");
}

std::string CDateTime::ToString(char const *format) const
{
    if (type == yearZero ||
        (type != time && year == 0 && month == 0 && day == 0 && hour == 0 && minute == 0 && second == 0 &&
         milliSecond == 0 && microSecond == 0 && nanoSecond == 0))
        return "Error: Date Not Set";
    if (format == nullptr || format == EmptyFormat || std::strcmp(format, "G") == 0)
        return std::string();
    if (std::strcmp(format, "s") != 0)
        return std::string("Unknown Format: ") + format;

    DateTimeText::Buffer out;
    auto putYear = [&] {
        if (year < 0)
            out.Put('-');
        out.PutPadded(static_cast<unsigned>(std::abs(static_cast<int>(year))), 4);
    };
    auto putClock = [&] {
        out.PutPadded(hour, 2);
        out.Put(':');
        out.PutPadded(minute, 2);
        out.Put(':');
        out.PutPadded(second, 2);
        out.PutFraction(milliSecond, microSecond, nanoSecond);
    };
    switch (type)
    {
    case dateTime:
    case date:
        putYear();
        out.Put('-');
        out.PutPadded(month, 2);
        out.Put('-');
        out.PutPadded(day, 2);
        if (type == dateTime)
        {
            out.Put('T');
            putClock();
        }
        break;
    case gYearMonth:
        putYear();
        out.Put('-');
        out.PutPadded(month, 2);
        break;
    case gYear:
        putYear();
        break;
    case time:
        putClock();
        break;
    case gDay:
        out.Put("---");
        out.PutPadded(day, 2);
        break;
    case gMonth:
        out.Put("--");
        out.PutPadded(month, 2);
        break;
    case gMonthDay:
        out.Put("--");
        out.PutPadded(month, 2);
        out.Put('-');
        out.PutPadded(day, 2);
        break;
    default:
        return std::string();
    }
    if (isUTC)
    {
        if (hasTimeZone)
        {
            out.Put(zoneHour < 0 ? '-' : '+');
            out.PutPadded(static_cast<unsigned>(std::abs(static_cast<int>(zoneHour))), 2);
            out.Put(':');
            out.PutPadded(zoneMinute, 2);
        }
        else
            out.Put('Z');
    }
    return out.Str();
}

// ---------------------------------------------------------------------------
// Arithmetic and comparison

// Field by field from the smallest unit up, with the carries of each step;
// the day is then walked month by month and never pinned to the month's
// length before the walk (Jan 31 + P1M is Feb 31).
void CDateTime::AddDateTimeSpan(CDateTimeSpan const &span)
{
    int const sign = span.IsNegative() ? -1 : 1;
    long long carry;

    long long const m = Signed(sign, span.GetMonths()) + (static_cast<long long>(month) - 1);
    month = static_cast<unsigned char>(SplitCarry(m, 12, carry) + 1);
    year = static_cast<short>(WrapAdd(year, WrapAdd(Signed(sign, span.GetYears()), carry)));

    long long v = Signed(sign, span.GetNanoSeconds()) + nanoSecond;
    nanoSecond = static_cast<unsigned short>(SplitCarry(v, 1000, carry));
    v = WrapAdd(microSecond + carry, Signed(sign, span.GetMicroSeconds()));
    microSecond = static_cast<unsigned short>(SplitCarry(v, 1000, carry));
    v = WrapAdd(milliSecond + carry, Signed(sign, span.GetMilliSeconds()));
    milliSecond = static_cast<unsigned short>(SplitCarry(v, 1000, carry));
    v = WrapAdd(second + carry, Signed(sign, span.GetSeconds()));
    second = static_cast<unsigned char>(SplitCarry(v, 60, carry));
    v = WrapAdd(WrapAdd(minute, carry), Signed(sign, span.GetMinutes()));
    minute = static_cast<unsigned char>(SplitCarry(v, 60, carry));
    v = WrapAdd(WrapAdd(hour, carry), Signed(sign, span.GetHours()));
    hour = static_cast<unsigned char>(SplitCarry(v, 24, carry));

    // The day count is a 32-bit quantity; later steps run in 64 bits so that
    // the walk cannot overflow.
    long long d = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<unsigned long long>(WrapAdd(Signed(sign, span.GetDays()), carry))));
    if (d == 0)
        return;
    DateTimeCalendar::DayWalk walk{month, day, year};
    DateTimeCalendar::Walk(walk, d);
    year = walk.year;
    month = static_cast<unsigned char>(walk.month);
    day = static_cast<unsigned char>(walk.day);
}

CDateTime CDateTime::GetNormalized() const
{
    CDateTime copy(*this);
    if (!hasTimeZone)
        return copy;
    try
    {
        CDateTimeSpan span(static_cast<std::uint32_t>(std::abs(static_cast<int>(zoneHour))), zoneMinute, 0);
        if (zoneHour >= 0)
            span = span.GetAsNegative();
        copy.AddDateTimeSpan(span);
        copy.SetTimeZone(0, 0);
    }
    catch (CMxInvalidValueException const &)
    {
    }
    return copy;
}

// A field the form lacks counts as -1: against a present field above 0 the
// pair is indeterminate, against 0 it simply sorts first.
CDateTime::DTCompareResult CDateTime::CompareFields(CDateTime const &a, CDateTime const &b)
{
    auto field = [](CDateTime const &x, unsigned mask, long long value) { return Has(x.type, mask) ? value : -1; };
    long long const pairs[5][2] = {
        {field(a, kYearTypes, a.year), field(b, kYearTypes, b.year)},
        {field(a, kMonthTypes, a.month), field(b, kMonthTypes, b.month)},
        {field(a, kDayTypes, a.day), field(b, kDayTypes, b.day)},
        {field(a, kTimeTypes, a.hour), field(b, kTimeTypes, b.hour)},
        {field(a, kTimeTypes, a.minute), field(b, kTimeTypes, b.minute)},
    };
    for (auto const &p : pairs)
    {
        if (p[0] * p[1] < 0)
            return DTIndeterminate;
        if (p[0] < p[1])
            return DTLessThan;
        if (p[0] > p[1])
            return DTGreaterThan;
    }
    double const sa = Has(a.type, kTimeTypes) ? a.GetRealSecond() : -1.0;
    double const sb = Has(b.type, kTimeTypes) ? b.GetRealSecond() : -1.0;
    if (sa * sb < 0)
        return DTIndeterminate;
    if (sa < sb)
        return DTLessThan;
    if (sa > sb)
        return DTGreaterThan;
    return DTEqual;
}

// A value without zone stands for any instant from -14:00 to +14:00 of its
// fields; against a zoned value it is ordered only if the whole window is.
CDateTime::DTCompareResult CDateTime::CompareTo(CDateTime const &other) const
{
    CDateTime a = GetNormalized();
    CDateTime b = other.GetNormalized();
    if (a.isUTC == b.isUTC)
        return CompareFields(a, b);
    try
    {
        if (a.isUTC)
        {
            b.SetTimeZone(14, 0);
            b = b.GetNormalized();
            if (CompareFields(a, b) == DTLessThan)
                return DTLessThan;
            // b has been moved by -14 hours; this moves it back.
            b.SetTimeZone(-14, 0);
            b = b.GetNormalized();
            return CompareFields(a, b) == DTGreaterThan ? DTGreaterThan : DTIndeterminate;
        }
        a.SetTimeZone(14, 0);
        a = a.GetNormalized();
        if (CompareFields(a, b) == DTGreaterThan)
            return DTGreaterThan;
        a.SetTimeZone(-14, 0);
        a = a.GetNormalized();
        return CompareFields(a, b) == DTLessThan ? DTLessThan : DTIndeterminate;
    }
    catch (CMxInvalidValueException const &)
    {
        return DTIndeterminate;
    }
}

bool CDateTime::operator<=(CDateTime const &other) const
{
    DTCompareResult const r = CompareTo(other);
    return r == DTEqual || r == DTLessThan;
}

bool CDateTime::operator>=(CDateTime const &other) const
{
    DTCompareResult const r = CompareTo(other);
    return r == DTEqual || r == DTGreaterThan;
}

CDateTime CDateTime::operator+(CDateTimeSpan const &span) const
{
    CDateTime result(*this);
    result.AddDateTimeSpan(span);
    return result;
}

CDateTime &CDateTime::operator+=(CDateTimeSpan const &span)
{
    AddDateTimeSpan(span);
    return *this;
}

CDateTime CDateTime::operator-(CDateTimeSpan const &span) const
{
    CDateTime result(*this);
    result.AddDateTimeSpan(span.GetAsNegative());
    return result;
}

CDateTime &CDateTime::operator-=(CDateTimeSpan const &span)
{
    AddDateTimeSpan(span.GetAsNegative());
    return *this;
}

CDateTimeSpan CDateTime::operator-(CDateTime const &) const
{
    return CDateTimeSpan();
}

} // namespace MxXmlLib
