#pragma once

// CDateTime: one value class for the nine XSD date and time forms. `type`
// says which form a value has and therefore which fields mean anything.
//
// Invariants after a successful parse or checked setter (`Validate` passes):
//   type != yearZero; fields the form has no use for are 0;
//   year in [-9999, 9999] and != 0 (years before the era are negative, the
//   year numbering is astronomical, so -4 is a leap year);
//   month [1, 12]; day [1, days in month]; hour [0, 23]; minute, second
//   [0, 59]; milliSecond, microSecond, nanoSecond [0, 999] (nine digits).
// The plain field setters store without checking, so other values can exist.
// Zones: isUTC says the value carries a zone at all ("Z" or an offset);
// hasTimeZone says that zone is a numeric offset zoneHour:zoneMinute.

#include <cstddef>
#include <cstdint>
#include <string>

namespace MxXmlLib
{

class CDateTimeSpan;

// Broken-down time with the field names of the Windows record of that name.
struct SystemTime
{
    std::uint16_t wYear;
    std::uint16_t wMonth;     // [1, 12]
    std::uint16_t wDayOfWeek; // [0, 6], 0 is Sunday
    std::uint16_t wDay;
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};

// 100-nanosecond ticks since 1601-01-01T00:00:00 UTC, split in two halves.
struct FileTime
{
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};

class CDateTime
{
public:
    enum DTType
    {
        yearZero = 0, // not set
        dateTime = 1,
        date = 2,
        gYearMonth = 3,
        gYear = 4,
        time = 5,
        gDay = 6,
        gMonth = 7,
        gMonthDay = 8
    };

    enum DTCompareResult
    {
        DTEqual = 0,
        DTLessThan = 1,
        DTGreaterThan = 2,
        DTIndeterminate = 3
    };

    // The format whose address means "no format" to ToString(format).
    static char const EmptyFormat[];

    CDateTime();
    explicit CDateTime(DTType type);
    // Parses a dateTime; a bad text throws CMxInvalidValueException.
    explicit CDateTime(char const *text);
    // The field and clock constructors never throw for bad values: they leave
    // a zero value of type yearZero instead.
    CDateTime(short year, unsigned char month, unsigned char day);
    CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
              unsigned char second);
    CDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
              unsigned char second, unsigned short milli, unsigned short micro, unsigned short nano);
    explicit CDateTime(std::int64_t secondsSinceEpoch);
    explicit CDateTime(SystemTime const &time);
    explicit CDateTime(FileTime const &time);
    CDateTime(CDateTime const &other) = default;
    virtual ~CDateTime();

    CDateTime &operator=(CDateTime const &other) = default;
    // These replace the whole value with a dateTime, and throw
    // CMxInvalidValueException (value unchanged) when it cannot be one.
    CDateTime &operator=(std::int64_t secondsSinceEpoch); // read as UTC, any sign
    CDateTime &operator=(SystemTime const &time);
    CDateTime &operator=(FileTime const &time);

    // The local wall clock now, as a dateTime without zone.
    static CDateTime GetTickCount();

    DTType GetType() const { return type; }
    std::string GetTypeAsString() const; // empty for an unknown number

    // Each getter and setter checks that the form has the field, and throws
    // CMxInvalidStateException otherwise. Setters store without validation.
    short GetYear() const;
    unsigned char GetMonth() const;
    unsigned char GetDay() const;
    unsigned char GetHour() const;
    unsigned char GetMinute() const;
    unsigned char GetSecond() const;
    double GetRealSecond() const; // second plus the fraction
    unsigned short GetMilliSecond() const;
    unsigned short GetMicroSecond() const;
    unsigned short GetNanoSecond() const;
    void SetYear(short value);
    void SetMonth(unsigned char value);
    void SetDay(unsigned char value);
    void SetHour(unsigned char value);
    void SetMinute(unsigned char value);
    void SetSecond(unsigned char value);
    void SetMilliSecond(unsigned short value);
    void SetMicroSecond(unsigned short value);
    void SetNanoSecond(unsigned short value);

    // 1 is Sunday. Proleptic Gregorian in UTC (zones normalised first), so the
    // answer does not depend on the machine's zone and holds for any year.
    int GetDayOfWeek() const;
    // Counts one day extra in January and February of a leap year and one day
    // short from March on: callers rely on that numbering.
    int GetDayOfYear() const;
    // Seconds since 1970-01-01T00:00:00Z of a dateTime or date (fields read
    // as UTC after zone normalisation); negative before 1970.
    std::int64_t GetTime() const;
    SystemTime GetAsSystemTime() const;

    bool IsUTC() const { return isUTC; }
    bool HasTimeZone() const { return hasTimeZone; }
    short GetZoneHour() const;
    unsigned char GetZoneMinute() const;
    // hour [-23, 23], minute [0, 59]; sets both zone flags.
    void SetTimeZone(short hour, unsigned char minute);
    // The "Z" zone: carries a zone, but not as an offset.
    void SetUTC();

    // Checked setters: the value must be of the same form or yearZero; they
    // clear the zone and validate the result.
    void SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
                     unsigned char second);
    void SetDateTime(short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
                     unsigned char second, unsigned short milli, unsigned short micro, unsigned short nano);
    void SetDate(short year, unsigned char month, unsigned char day);
    void SetTime(unsigned char hour, unsigned char minute, unsigned char second);
    void SetTime(unsigned char hour, unsigned char minute, unsigned char second, unsigned short milli,
                 unsigned short micro, unsigned short nano);
    void SetGYear(short year);
    void SetGYearMonth(short year, unsigned char month);
    void SetGMonth(unsigned char month);
    void SetGMonthDay(unsigned char month, unsigned char day);
    void SetGDay(unsigned char day);
    // A time of 00:00:00 with this fraction; the clock fields are wiped.
    void SetFracTime(unsigned short milli, unsigned short micro, unsigned short nano);

    // Converts between forms when `source` has the fields `target` needs;
    // unused fields are carried along.
    void SetDateTime(CDateTime const &source, DTType target);
    static bool CheckConversion(DTType source, DTType target);

    // Throws CMxInvalidValueException naming the first bad field.
    void Validate() const;

    // The value moved to offset +00:00 when it has a numeric offset.
    CDateTime GetNormalized() const;
    // Partial order of XSD: values with and without zone compare through a
    // +/-14:00 window and may be DTIndeterminate.
    DTCompareResult CompareTo(CDateTime const &other) const;

    // Lexical forms. Null, EmptyFormat and "G" give "", "s" the XSD form.
    std::string ToString() const;
    std::string ToString(char const *format) const;
    void ParseXSDDateTime(char const *text);
    // Every form without a time part; the form comes from the text's shape.
    void ParseXSDDate(char const *text);
    void ParseXSDTime(char const *text);

    bool operator==(CDateTime const &other) const { return CompareTo(other) == DTEqual; }
    bool operator!=(CDateTime const &other) const { return CompareTo(other) != DTEqual; }
    bool operator<(CDateTime const &other) const { return CompareTo(other) == DTLessThan; }
    bool operator<=(CDateTime const &other) const;
    bool operator>(CDateTime const &other) const { return CompareTo(other) == DTGreaterThan; }
    bool operator>=(CDateTime const &other) const;

    // Field-wise addition without day pinning (Jan 31 + P1M is Feb 31); a
    // negative span subtracts. Minus adds the span made negative.
    CDateTime operator+(CDateTimeSpan const &span) const;
    CDateTime &operator+=(CDateTimeSpan const &span);
    CDateTime operator-(CDateTimeSpan const &span) const;
    CDateTime &operator-=(CDateTimeSpan const &span);
    // No difference of dates is offered: always the zero span.
    CDateTimeSpan operator-(CDateTime const &other) const;

private:
    void SetDateTime(DTType newType, short newYear, unsigned char newMonth, unsigned char newDay,
                     unsigned char newHour, unsigned char newMinute, unsigned char newSecond, unsigned short milli,
                     unsigned short micro, unsigned short nano);
    void Clear();
    void SetXSDDate(char const *text);
    void SetXSDDate(char const *text, std::size_t length);
    void SetXSDTime(char const *text);
    void SetZone(char const *text, std::size_t length);
    void AddDateTimeSpan(CDateTimeSpan const &span);
    static DTCompareResult CompareFields(CDateTime const &a, CDateTime const &b);

    DTType type;
    unsigned char reserved;
    short year;
    unsigned char month;
    unsigned char day;
    unsigned char hour;
    unsigned char minute;
    unsigned char second;
    unsigned short milliSecond;
    unsigned short microSecond;
    unsigned short nanoSecond;
    bool isUTC;
    bool hasTimeZone;
    short zoneHour;
    unsigned char zoneMinute;
};

} // namespace MxXmlLib

// The span is needed by every caller of the arithmetic operators.
#include "values/DateTimeSpan.h"
