#include "values/DateTime.h"
#include "values/DateTimeCalendar.h"
#include "values/DateTimeSpan.h"

#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>

using namespace MxXmlLib;

namespace
{

using DT = CDateTime;

// The message of the exception of class E that `f` throws, or a marker.
template <typename E> std::string MessageOf(std::function<void()> const &f)
{
    try
    {
        f();
    }
    catch (E const &e)
    {
        return e.GetMessage();
    }
    catch (CMxException const &e)
    {
        return "<other exception class> " + e.GetMessage();
    }
    return "<no exception>";
}

enum Parser
{
    kDateTime,
    kDate,
    kTime
};

CDateTime Parse(Parser parser, char const *text)
{
    CDateTime v;
    if (parser == kDateTime)
        v.ParseXSDDateTime(text);
    else if (parser == kDate)
        v.ParseXSDDate(text);
    else
        v.ParseXSDTime(text);
    return v;
}

struct ValidCase
{
    Parser parser;
    char const *text;
    char const *type;
    char const *printed;
};

constexpr ValidCase kValid[] = {
    {kDateTime, "2000-01-01T00:00:00", "dateTime", "2000-01-01T00:00:00"},
    {kDateTime, "2000-02-29T23:59:59.999999999Z", "dateTime", "2000-02-29T23:59:59.999999999Z"},
    {kDateTime, "-0044-03-15T12:00:00+01:00", "dateTime", "-0044-03-15T12:00:00+01:00"},
    {kDateTime, "9999-12-31T23:59:59-14:00", "dateTime", "9999-12-31T23:59:59-14:00"},
    {kDateTime, "2000-01-01T12:00:00.5", "dateTime", "2000-01-01T12:00:00.5"},
    {kDateTime, "2000-01-01T12:00:00.120", "dateTime", "2000-01-01T12:00:00.12"},
    {kDateTime, "2000-01-01T12:00:00.000001", "dateTime", "2000-01-01T12:00:00.000001"},
    {kDateTime, "2000-01-01T12:00:00.0000001", "dateTime", "2000-01-01T12:00:00.0000001"},
    {kDateTime, "2000-01-01T12:00:00.123456780", "dateTime", "2000-01-01T12:00:00.12345678"},
    {kDateTime, "2000-01-01T12:00:00.", "dateTime", "2000-01-01T12:00:00"},
    {kDateTime, "2000-01-01T12:00:00-00:30", "dateTime", "2000-01-01T12:00:00+00:30"},
    {kDateTime, "2000-01-01T12:00:00+24:00", "dateTime", "2000-01-01T12:00:00+00:00"},
    {kDateTime, "2000-01-01T12:00:00-15:00", "dateTime", "2000-01-01T12:00:00-15:00"},
    {kDateTime, "2000-01-01T12:00:00Zjunk", "dateTime", "2000-01-01T12:00:00Z"},
    {kDateTime, "2000-01-01ZT12:00:00", "dateTime", "2000-01-01T12:00:00Z"},
    {kDate, "2000-01-01", "date", "2000-01-01"},
    {kDate, "2000-02-29Z", "date", "2000-02-29Z"},
    {kDate, "-2000-01-01-05:00", "date", "-2000-01-01-05:00"},
    {kDate, "2000-02", "gYearMonth", "2000-02"},
    {kDate, "-0001-12+13:45", "gYearMonth", "-0001-12+13:45"},
    {kDate, "2000", "gYear", "2000"},
    {kDate, "-0001", "gYear", "-0001"},
    {kDate, "2000Z", "gYear", "2000Z"},
    {kDate, "--05", "gMonth", "--05"},
    {kDate, "--05--", "gMonth", "--05"},
    {kDate, "--05ab", "gMonth", "--05"},
    {kDate, "--05Z", "gMonth", "--05Z"},
    {kDate, "--05+01:00", "gMonth", "--05+01:00"},
    {kDate, "---15", "gDay", "---15"},
    {kDate, "---31-02:00", "gDay", "---31-02:00"},
    {kDate, "--02-29", "gMonthDay", "--02-29"},
    {kDate, "--12-31Z", "gMonthDay", "--12-31Z"},
    {kTime, "00:00:00", "time", "00:00:00"},
    {kTime, "23:59:59.123456789-23:59", "time", "23:59:59.123456789-23:59"},
    {kTime, "12:00:00Z", "time", "12:00:00Z"},
    {kTime, "12:00:00.1", "time", "12:00:00.1"},
    {kTime, "12:00:00.000000001", "time", "12:00:00.000000001"},
};

TEST(DateTimeParse, AcceptsEveryFormAndPrintsIt)
{
    for (auto const &c : kValid)
    {
        SCOPED_TRACE(c.text);
        CDateTime v;
        ASSERT_NO_THROW(v = Parse(c.parser, c.text));
        EXPECT_EQ(c.type, v.GetTypeAsString());
        EXPECT_EQ(c.printed, v.ToString());
        // What is printed reads back as the same value.
        CDateTime again = Parse(c.parser, c.printed);
        EXPECT_EQ(c.printed, again.ToString());
        EXPECT_EQ(CDateTime::DTEqual, again.CompareTo(v));
    }
}

struct InvalidCase
{
    Parser parser;
    char const *text;
    char const *message;
};

constexpr InvalidCase kInvalid[] = {
    {kDateTime, nullptr, "Invalid DateTime (Null String)"},
    {kDateTime, "", "Invalid XSD DateTime []."},
    {kDateTime, "2000-01-01", "Invalid XSD DateTime [2000-01-01]."},
    {kDateTime, "T12:00:00", "Invalid Date (Empty String)"},
    {kDateTime, "2000-01T12:00:00", "Invalid XSD DateTime [2000-01T12:00:00] expected CCYY-MM-DDThh:mm:ss[.ff]"},
    {kDateTime, "--01-01T12:00:00", "Invalid XSD DateTime [--01-01T12:00:00] expected CCYY-MM-DDThh:mm:ss[.ff]"},
    {kDateTime, "2000-1-01T00:00:00", "Invalid XSD Date [2000-1-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDateTime, "20a0-01-01T00:00:00", "Invalid XSD Date [20a0-01-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDateTime, "+2000-01-01T00:00:00", "Invalid XSD Date [+2000-01-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDateTime, "2000-01-01T", "Invalid XSD Time (Empty String)"},
    {kDateTime, "2000-01-01TT00:00:00", "Invalid XSD Time [T00:00:00] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-01-01T24:00:00", "Invalid XSD Time [24:00:00] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-01-01T12:60:00", "Invalid XSD Time [12:60:00] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-01-01T12:00:60", "Invalid XSD Time [12:00:60] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-01-01T12:00", "Invalid XSD Time [12:00] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-01-01T1:00:00", "Invalid XSD Time [1:00:00] expected hh:mm:ss[.ff]"},
    {kDateTime, "2000-13-01T00:00:00", "Invalid Month [13] (1 <= month <= 12)"},
    {kDateTime, "2000-00-01T00:00:00", "Invalid Month [0] (1 <= month <= 12)"},
    {kDateTime, "0000-01-01T00:00:00", "Invalid Year [0] (9999 <= year <= -9999 && year != 0)"},
    {kDateTime, "1900-02-29T00:00:00", "Invalid Day [29] (1 <= day <= days in month"},
    {kDateTime, "2000-04-31T00:00:00", "Invalid Day [31] (1 <= day <= days in month"},
    {kDateTime, "2000-01-00T00:00:00", "Invalid Day [0] (1 <= day <= days in month"},
    {kDateTime, "2000-01-01T00:00:00.1234567890", "Invalid XSD Time [00:00:00.1234567890] Fraction part too long"},
    {kDateTime, "2000-01-01T00:00:00+25:00", "Invalid TimeZone [25:0]"},
    {kDateTime, "2000-01-01T00:00:00+05:60", "Invalid TimeZone [5:60]"},
    {kDateTime, "2000-01-01T00:00:00+0500", "Invalid XSD Time Zone [+0500]."},
    {kDateTime, "2000-01-01T00:00:00+05:00:00", "Invalid XSD Time Zone [+05:00:00]."},
    {kDateTime, "2000-01-01T00:00:00-5:00", "Invalid XSD Time Zone [-5:00]."},
    {kDateTime, "2000-01-01T00:00:00+0a:00", "Invalid XSD Time Zone [+0a:00]."},
    {kDateTime, "2000-01-01T00:00:00 ", "Invalid XSD Time Zone [ ]."},
    {kDate, nullptr, "Invalid Date (Null String)"},
    {kDate, "", "Invalid Date (Empty String)"},
    {kDate, "2000-01-01T", "Invalid Date ('T' not allowed)"},
    {kDate, "12:00Z", "Invalid Date (Bad Zone value)"},
    {kDate, "200-01-01", "Invalid XSD Date [200-01-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "2000/01/01", "Invalid XSD Date [2000/01/01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "2000-01-01X", "Invalid XSD Date [2000-01-01X] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "2000-01-01+1:00", "Invalid XSD Date [2000-01-01+1:00] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "2000-01-01+05:00x", "Invalid XSD Date [2000-01-01+05:00x] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "-", "Invalid XSD Date [-] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, ":", "Invalid XSD Date [:] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "--5", "Invalid XSD Date [--5] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "---5", "Invalid XSD Date [---5] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "--0a-01", "Invalid XSD Date [--0a-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "--01/01", "Invalid XSD Date [--01/01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
    {kDate, "2000-01-01*05:00", "Invalid XSD Time Zone [*05:00]."},
    {kDate, "--13", "Invalid Month [13] (1 <= month <= 12)"},
    {kDate, "--00-01", "Invalid Month [0] (1 <= month <= 12)"},
    {kDate, "---32", "Invalid Day [32] (1 <= day <= 31)"},
    {kDate, "---00", "Invalid Day [0] (1 <= day <= 31)"},
    {kDate, "--02-30", "Invalid Day [30] (1 <= day <= days in month)"},
    {kDate, "--04-31", "Invalid Day [31] (1 <= day <= days in month)"},
    {kDate, "2000-13", "Invalid Month [13] (1 <= month <= 12)"},
    {kDate, "0000", "Invalid Year [0] (9999 <= year <= -9999 && year != 0)"},
    {kDate, "-0000-01-01", "Invalid Year [0] (9999 <= year <= -9999 && year != 0)"},
    {kDate, "2001-02-29", "Invalid Day [29] (1 <= day <= days in month"},
    {kTime, nullptr, "Invalid Time (Null String)"},
    {kTime, "", "Invalid XSD Time (Empty String)"},
    {kTime, "12-00-00", "Invalid XSD Time [12-00-00] expected hh:mm:ss[.ff]"},
    {kTime, "12:00:0a", "Invalid XSD Time [12:00:0a] expected hh:mm:ss[.ff]"},
    {kTime, "99:00:00", "Invalid XSD Time [99:00:00] expected hh:mm:ss[.ff]"},
    {kTime, "12:00:00.1234567890", "Invalid XSD Time [12:00:00.1234567890] Fraction part too long"},
    {kTime, "12:00:00x", "Invalid XSD Time Zone [x]."},
    {kTime, "12:00:00.5+01", "Invalid XSD Time Zone [+01]."},
};

TEST(DateTimeParse, RejectsEachBadShapeWithItsMessage)
{
    for (auto const &c : kInvalid)
    {
        SCOPED_TRACE(c.text ? c.text : "(null)");
        EXPECT_EQ(c.message, MessageOf<CMxInvalidValueException>([&] { Parse(c.parser, c.text); }));
    }
    // The text constructor lets the failure through.
    EXPECT_EQ("Invalid XSD DateTime [x].", MessageOf<CMxInvalidValueException>([] { CDateTime v("x"); }));
}

TEST(DateTimeParse, KeepsEveryZoneFromMinus14To14)
{
    for (int h = -14; h <= 14; ++h)
        for (int m : {0, 15, 30, 45, 59})
        {
            if (h == 0 && m != 0)
                continue; // the sign of such a zone is on the hour, covered below
            char text[32];
            std::snprintf(text, sizeof text, "12:00:00%c%02d:%02d", h < 0 ? '-' : '+', h < 0 ? -h : h, m);
            SCOPED_TRACE(text);
            CDateTime v = Parse(kTime, text);
            EXPECT_TRUE(v.IsUTC());
            EXPECT_TRUE(v.HasTimeZone());
            EXPECT_EQ(h, v.GetZoneHour());
            EXPECT_EQ(m, v.GetZoneMinute());
            EXPECT_EQ(text, v.ToString());
        }
    CDateTime minusHalf = Parse(kTime, "12:00:00-00:30");
    EXPECT_EQ(0, minusHalf.GetZoneHour());
    EXPECT_EQ(30, minusHalf.GetZoneMinute());
    EXPECT_EQ("12:00:00+00:30", minusHalf.ToString());

    CDateTime z = Parse(kTime, "12:00:00Z");
    EXPECT_TRUE(z.IsUTC());
    EXPECT_FALSE(z.HasTimeZone());
    EXPECT_EQ("TimeZone is not been used", MessageOf<CMxInvalidStateException>([&] { z.GetZoneHour(); }));
    EXPECT_EQ("TimeZone is not been used", MessageOf<CMxInvalidStateException>([&] { z.GetZoneMinute(); }));

    CDateTime v(2000, 1, 1);
    EXPECT_EQ("Invalid TimeZone [24:0]", MessageOf<CMxInvalidValueException>([&] { v.SetTimeZone(24, 0); }));
    EXPECT_EQ("Invalid TimeZone [-24:0]", MessageOf<CMxInvalidValueException>([&] { v.SetTimeZone(-24, 0); }));
    EXPECT_EQ("Invalid TimeZone [0:60]", MessageOf<CMxInvalidValueException>([&] { v.SetTimeZone(0, 60); }));
    v.SetTimeZone(-23, 59);
    EXPECT_EQ("2000-01-01-23:59", v.ToString());
    v.SetUTC();
    EXPECT_EQ("2000-01-01Z", v.ToString());
}

TEST(DateTimeParse, ReadsFractionDigitsByPosition)
{
    struct Case
    {
        char const *text;
        unsigned milli, micro, nano;
        double real;
    };
    constexpr Case kCases[] = {
        {"00:00:01", 0, 0, 0, 1.0},
        {"00:00:01.", 0, 0, 0, 1.0},
        {"00:00:01.5", 500, 0, 0, 1.5},
        {"00:00:01.05", 50, 0, 0, 1.05},
        {"00:00:01.123", 123, 0, 0, 1.123},
        {"00:00:01.1234", 123, 400, 0, 1.1234},
        {"00:00:01.123456", 123, 456, 0, 1.123456},
        {"00:00:01.1234567", 123, 456, 700, 1.1234567},
        {"00:00:59.999999999", 999, 999, 999, 59.999999999},
        {"00:00:00.000000001", 0, 0, 1, 1e-9},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(c.text);
        CDateTime v = Parse(kTime, c.text);
        EXPECT_EQ(c.milli, v.GetMilliSecond());
        EXPECT_EQ(c.micro, v.GetMicroSecond());
        EXPECT_EQ(c.nano, v.GetNanoSecond());
        EXPECT_DOUBLE_EQ(c.real, v.GetRealSecond());
    }
}

// ---------------------------------------------------------------------------

TEST(DateTimeValidate, NamedSettersReportTheFirstBadField)
{
    struct Case
    {
        char const *name;
        std::function<void(CDateTime &)> set;
        char const *message;
    };
    Case const kCases[] = {
        {"date Feb 30", [](DT &v) { v.SetDate(2000, 2, 30); }, "Invalid Day [30] (1 <= day <= days in month"},
        {"date Feb 29 2100", [](DT &v) { v.SetDate(2100, 2, 29); }, "Invalid Day [29] (1 <= day <= days in month"},
        {"date month 0", [](DT &v) { v.SetDate(2000, 0, 1); }, "Invalid Month [0] (1 <= month <= 12)"},
        {"dateTime hour", [](DT &v) { v.SetDateTime(2000, 1, 1, 24, 0, 0); }, "Invalid Hour [24] (0 <= hour <= 23)"},
        {"dateTime minute", [](DT &v) { v.SetDateTime(2000, 1, 1, 0, 60, 0); },
         "Invalid Minute [60] (0 <= minute <= 59)"},
        {"dateTime second", [](DT &v) { v.SetDateTime(2000, 1, 1, 0, 0, 60); },
         "Invalid Second [60] (0 <= second <= 59)"},
        {"dateTime milli", [](DT &v) { v.SetDateTime(2000, 1, 1, 0, 0, 0, 1000, 0, 0); },
         "Invalid Milli-Second [1000] (0 <= milli <= 999)"},
        {"time micro", [](DT &v) { v.SetTime(0, 0, 0, 0, 1000, 0); },
         "Invalid Micro-Second [1000] (0 <= micro <= 999)"},
        {"frac nano", [](DT &v) { v.SetFracTime(0, 0, 65535); }, "Invalid Nano-Second [65535] (0 <= nano <= 999)"},
        {"gYear high", [](DT &v) { v.SetGYear(10000); }, "Invalid Year [10000] (9999 <= year <= -9999 && year != 0)"},
        {"gYear low", [](DT &v) { v.SetGYear(-10000); },
         "Invalid Year [-10000] (9999 <= year <= -9999 && year != 0)"},
        {"gYearMonth", [](DT &v) { v.SetGYearMonth(2000, 13); }, "Invalid Month [13] (1 <= month <= 12)"},
        {"gMonth", [](DT &v) { v.SetGMonth(0); }, "Invalid Month [0] (1 <= month <= 12)"},
        {"gDay", [](DT &v) { v.SetGDay(32); }, "Invalid Day [32] (1 <= day <= 31)"},
        {"gMonthDay", [](DT &v) { v.SetGMonthDay(6, 31); }, "Invalid Day [31] (1 <= day <= days in month)"},
        {"unset", [](DT &v) { v.Validate(); }, "Invalid Year Zero"},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(c.name);
        CDateTime v;
        EXPECT_EQ(c.message, MessageOf<CMxInvalidValueException>([&] { c.set(v); }));
    }
    CDateTime ok;
    ok.SetGMonthDay(2, 29);
    EXPECT_EQ("--02-29", ok.ToString());
}

TEST(DateTimeValidate, FieldsAFormDoesNotHaveMustBeZero)
{
    // Conversions keep the fields the target has no use for, so Validate sees them.
    struct Case
    {
        char const *source;
        CDateTime::DTType target;
        char const *message;
    };
    constexpr Case kCases[] = {
        {"2000-01-02T03:04:05", CDateTime::date, "Invalid Hour [3] for type date"},
        {"2000-01-02T00:04:05", CDateTime::date, "Invalid Minute [4] for type date"},
        {"2000-01-02T00:00:05", CDateTime::date, "Invalid Second [5] for type date"},
        {"2000-01-02T00:00:00.006", CDateTime::date, "Invalid Milli-Second [6] for type date"},
        {"2000-01-02T00:00:00.000007", CDateTime::date, "Invalid Micro-Second [7] for type date"},
        {"2000-01-02T00:00:00.000000008", CDateTime::date, "Invalid Nano-Second [8] for type date"},
        {"2000-01-02T00:00:00", CDateTime::gYear, "Invalid Month [1] for type gYear"},
        {"2000-01-02T00:00:00", CDateTime::gYearMonth, "Invalid Day [2] for type gYearMonth"},
        {"2000-01-02T00:00:00", CDateTime::gMonthDay, "Invalid Year [2000] for type gMonthDay"},
        {"2000-01-02T00:00:00", CDateTime::time, "Invalid Month [1] for type time"},
        {"2000-01-02T00:00:00", CDateTime::gDay, "Invalid Month [1] for type gDay"},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(c.message);
        CDateTime v;
        v.SetDateTime(CDateTime(c.source), c.target);
        EXPECT_EQ(c.message, MessageOf<CMxInvalidValueException>([&] { v.Validate(); }));
    }
}

TEST(DateTimeValidate, CheckedSetterRefusesAnotherForm)
{
    CDateTime v(2000, 1, 1);
    EXPECT_EQ("Failed to copy CDateTime. Invalid Date Type: time, expected: date.",
              MessageOf<CMxInvalidStateException>([&] { v.SetTime(1, 2, 3); }));
    v.SetTimeZone(5, 0);
    v.SetDate(2001, 2, 3); // same form: the zone is cleared
    EXPECT_EQ("2001-02-03", v.ToString());
    CDateTime t;
    t.SetTime(1, 2, 3, 4, 5, 6);
    t.SetFracTime(7, 0, 0); // wipes the clock
    EXPECT_EQ("00:00:00.007", t.ToString());
}

// Every getter and setter against every form: allowed, or the fixed message.
TEST(DateTimeFields, GettersAndSettersCheckTheForm)
{
    struct Accessor
    {
        char const *name;
        char const *allowed; // one character per form 0..8
        std::function<void(CDateTime &)> call;
    };
    Accessor const kAccessors[] = {
        {"Year", "011110000", [](DT &v) { v.SetYear(v.GetYear()); }},
        {"Month", "011100011", [](DT &v) { v.SetMonth(v.GetMonth()); }},
        {"Day", "011000101", [](DT &v) { v.SetDay(v.GetDay()); }},
        {"Hour", "010001000", [](DT &v) { v.SetHour(v.GetHour()); }},
        {"Minute", "010001000", [](DT &v) { v.SetMinute(v.GetMinute()); }},
        {"Second", "010001000", [](DT &v) { v.SetSecond(v.GetSecond()); }},
        {"RealSecond", "010001000", [](DT &v) { v.GetRealSecond(); }},
        {"MilliSecond", "010001000", [](DT &v) { v.SetMilliSecond(v.GetMilliSecond()); }},
        {"MicroSecond", "010001000", [](DT &v) { v.SetMicroSecond(v.GetMicroSecond()); }},
        {"NanoSecond", "010001000", [](DT &v) { v.SetNanoSecond(v.GetNanoSecond()); }},
    };
    char const *const names[] = {"yearZero", "dateTime", "date",   "gYearMonth", "gYear",
                                 "time",     "gDay",     "gMonth", "gMonthDay"};
    for (auto const &a : kAccessors)
        for (int t = 0; t <= 8; ++t)
        {
            SCOPED_TRACE(std::string(a.name) + " on " + names[t]);
            CDateTime v(static_cast<CDateTime::DTType>(t));
            EXPECT_EQ(names[t], v.GetTypeAsString());
            std::string const expected = a.allowed[t] == '1' ? "<no exception>"
                                                               : std::string("Failed to Get") + a.name +
                                                                     ". Invalid Date Type: " + names[t] + ".";
            EXPECT_EQ(expected, MessageOf<CMxInvalidStateException>([&] { a.call(v); }));
        }
    // Setters store without validation.
    CDateTime v(2000, 1, 1);
    v.SetMonth(13);
    v.SetDay(200);
    EXPECT_EQ(13, v.GetMonth());
    EXPECT_EQ("2000-13-200", v.ToString());
    EXPECT_EQ("", CDateTime(static_cast<CDateTime::DTType>(9)).GetTypeAsString());
}

TEST(DateTimeFields, ConversionsBetweenForms)
{
    // Row: source form; column: target form; '1' when allowed.
    char const *const kAllowed[] = {"100000000", "111111111", "101110111", "100110010", "100010000",
                                    "100001000", "100000100", "100000010", "100000111"};
    for (int s = 0; s <= 8; ++s)
        for (int t = 0; t <= 8; ++t)
        {
            SCOPED_TRACE(std::to_string(s) + " -> " + std::to_string(t));
            EXPECT_EQ(kAllowed[s][t] == '1', CDateTime::CheckConversion(static_cast<CDateTime::DTType>(s),
                                                                        static_cast<CDateTime::DTType>(t)));
        }
    auto const unknown = static_cast<CDateTime::DTType>(9);
    EXPECT_EQ("Unknown date type 9.",
              MessageOf<CMxInvalidValueException>([&] { CDateTime::CheckConversion(unknown, CDateTime::date); }));
    EXPECT_TRUE(CDateTime::CheckConversion(unknown, unknown));

    CDateTime d(2000, 5, 6);
    d.SetTimeZone(-3, 0);
    CDateTime m;
    m.SetDateTime(d, CDateTime::gMonthDay);
    EXPECT_EQ("--05-06-03:00", m.ToString());
    EXPECT_EQ("Attempting to set a CDateTime of type time using an XmlDateTime of type date. The source CDateTime "
              "does not contian enough data to allow the conversion.",
              MessageOf<CMxInvalidValueException>([&] { m.SetDateTime(d, CDateTime::time); }));
}

// ---------------------------------------------------------------------------

TEST(DateTimePrint, FormatsAndUnsetValues)
{
    CDateTime v(2000, 1, 1);
    std::string const otherEmpty; // an empty format that is not the library's own
    EXPECT_EQ("2000-01-01", v.ToString("s"));
    EXPECT_EQ("", v.ToString(nullptr));
    EXPECT_EQ("", v.ToString(CDateTime::EmptyFormat));
    EXPECT_EQ("", v.ToString("G"));
    EXPECT_EQ("Unknown Format: ", v.ToString(otherEmpty.c_str()));
    EXPECT_EQ("Unknown Format: yyyy", v.ToString("yyyy"));
    EXPECT_EQ("Error: Date Not Set", CDateTime().ToString());
    EXPECT_EQ("Error: Date Not Set", CDateTime().ToString("G"));
    EXPECT_EQ("Error: Date Not Set", CDateTime(CDateTime::gYear).ToString());
    EXPECT_EQ("Error: Date Not Set", CDateTime(CDateTime::dateTime).ToString());
    EXPECT_EQ("00:00:00", CDateTime(CDateTime::time).ToString());
}

TEST(DateTimeConstruct, FieldAndClockSources)
{
    // Field constructors swallow bad values and leave the unset value.
    EXPECT_EQ("Error: Date Not Set", CDateTime(2000, 2, 30).ToString());
    EXPECT_EQ(CDateTime::yearZero, CDateTime(1900, 2, 29, 0, 0, 0).GetType());
    EXPECT_EQ(CDateTime::yearZero, CDateTime(2000, 1, 1, 0, 0, 0, 0, 0, 1000).GetType());
    EXPECT_EQ("2000-01-01T01:02:03.004005006", CDateTime(2000, 1, 1, 1, 2, 3, 4, 5, 6).ToString());

    struct Seconds
    {
        long long value;
        char const *text;
    };
    constexpr Seconds kSeconds[] = {
        {0, "1970-01-01T00:00:00"},
        {-1, "1969-12-31T23:59:59"},
        {951782400, "2000-02-29T00:00:00"},
        {-62135596800LL, "0001-01-01T00:00:00"},
        {-62198755200LL, "-0001-01-01T00:00:00"},
        {253402300799LL, "9999-12-31T23:59:59"},
        {-377705116800LL, "-9999-01-01T00:00:00"},
    };
    for (auto const &c : kSeconds)
    {
        SCOPED_TRACE(c.text);
        CDateTime v;
        v = static_cast<std::int64_t>(c.value);
        EXPECT_EQ(c.text, v.ToString());
        EXPECT_EQ(c.value, v.GetTime());
        EXPECT_EQ(c.text, CDateTime(static_cast<std::int64_t>(c.value)).ToString());
    }
    CDateTime v(2000, 1, 1);
    EXPECT_EQ("Invalid Year [10000] (9999 <= year <= -9999 && year != 0)",
              MessageOf<CMxInvalidValueException>([&] { v = static_cast<std::int64_t>(253402300800LL); }));
    EXPECT_EQ("Invalid Year [0] (9999 <= year <= -9999 && year != 0)",
              MessageOf<CMxInvalidValueException>([&] { v = static_cast<std::int64_t>(-62135596801LL); }));
    EXPECT_EQ("2000-01-01", v.ToString()); // unchanged after a failed assignment
    EXPECT_EQ(CDateTime::yearZero, CDateTime(static_cast<std::int64_t>(INT64_MIN)).GetType());

    SystemTime st{2024, 2, 4, 29, 13, 14, 15, 16};
    v = st;
    EXPECT_EQ("2024-02-29T13:14:15.016", v.ToString());
    SystemTime back = v.GetAsSystemTime();
    EXPECT_EQ(4, back.wDayOfWeek); // a Thursday
    EXPECT_EQ(16, back.wMilliseconds);
    st.wYear = 2023;
    EXPECT_EQ("Invalid Day [29] (1 <= day <= days in month",
              MessageOf<CMxInvalidValueException>([&] { v = st; }));
    EXPECT_EQ(CDateTime::yearZero, CDateTime(st).GetType());
    st.wYear = 65535; // would be -1 in a 16-bit signed year
    EXPECT_EQ("Invalid Year [65535] (9999 <= year <= -9999 && year != 0)",
              MessageOf<CMxInvalidValueException>([&] { v = st; }));
    EXPECT_EQ("Failed to GetAsSystemTime, Date Status must be dateTime. Invalid Date Type: date.",
              MessageOf<CMxInvalidValueException>([] { CDateTime(2000, 1, 1).GetAsSystemTime(); }));

    struct File
    {
        unsigned long long ticks;
        char const *text;
    };
    constexpr File kFiles[] = {
        {0, "1601-01-01T00:00:00"},
        {116444736000000000ULL, "1970-01-01T00:00:00"},
        {116444736012345678ULL, "1970-01-01T00:00:01.234"},
        {125911584000000000ULL, "2000-01-01T00:00:00"},
    };
    for (auto const &c : kFiles)
    {
        SCOPED_TRACE(c.text);
        FileTime ft{static_cast<std::uint32_t>(c.ticks), static_cast<std::uint32_t>(c.ticks >> 32)};
        CDateTime f;
        f = ft;
        EXPECT_EQ(c.text, f.ToString());
    }
    EXPECT_EQ("Failed to convert FILETIME to SYSTEMTIME",
              MessageOf<CMxInvalidValueException>([&] { v = FileTime{0, 0x80000000u}; }));
    EXPECT_EQ("Invalid Year [30828] (9999 <= year <= -9999 && year != 0)",
              MessageOf<CMxInvalidValueException>([&] { v = FileTime{0xFFFFFFFFu, 0x7FFFFFFFu}; }));
    EXPECT_EQ(CDateTime::yearZero, CDateTime(FileTime{0, 0x80000000u}).GetType());

    CDateTime now = CDateTime::GetTickCount();
    EXPECT_EQ(CDateTime::dateTime, now.GetType());
    EXPECT_FALSE(now.IsUTC());
    EXPECT_NO_THROW(now.Validate());
}

// ---------------------------------------------------------------------------

TEST(DateTimeCalendar, DayOfYearAndWeekAndTime)
{
    struct Case
    {
        char const *text;
        int dayOfYear; // one extra in Jan/Feb of a leap year, one short after
        int dayOfWeek; // 1 is Sunday
    };
    constexpr Case kCases[] = {
        {"2000-01-01", 2, 7},  {"2000-02-29", 61, 3}, {"2000-03-01", 60, 4},  {"2001-03-01", 60, 5},
        {"2000-12-31", 365, 1}, {"2001-12-31", 365, 2}, {"1900-03-01", 60, 5}, {"1066-10-14", 287, 1},
        {"0001-01-01", 1, 2},  {"-0001-12-31", 365, 6}, {"-0004-03-01", 60, 6},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(c.text);
        CDateTime v = Parse(kDate, c.text);
        EXPECT_EQ(c.dayOfYear, v.GetDayOfYear());
        EXPECT_EQ(c.dayOfWeek, v.GetDayOfWeek());
    }
    CDateTime y = Parse(kDate, "2000");
    EXPECT_EQ("Failed to GetDayOfWeek. Invalid Date Type: gYear.",
              MessageOf<CMxInvalidStateException>([&] { y.GetDayOfWeek(); }));
    EXPECT_EQ("Failed to GetDayOfYear. Invalid Date Type: gYear.",
              MessageOf<CMxInvalidStateException>([&] { y.GetDayOfYear(); }));
    EXPECT_EQ("Failed to GetTime, Date Status must be dateTime or date. Invalid Date Type: gYear.",
              MessageOf<CMxInvalidValueException>([&] { y.GetTime(); }));
    // Across the zone: 00:30 at +01:00 is the evening before in UTC.
    EXPECT_EQ(-1800, CDateTime("1970-01-01T00:30:00+01:00").GetTime());
    EXPECT_EQ(4, CDateTime("1970-01-01T00:30:00+01:00").GetDayOfWeek()); // a Wednesday
}

// Every day from -1000 to 3000: the seconds of consecutive days differ by one
// day, the text reads back, and the year lengths agree with Validate's leap rule.
TEST(DateTimeCalendar, EveryDayFromMinus1000To3000)
{
    std::int64_t t = CDateTime(-1000, 1, 1).GetTime();
    int previousWeekday = (CDateTime(-1000, 1, 1).GetDayOfWeek() + 5) % 7 + 1; // the day before
    int previousYear = -1000;
    int daysInYear = 0;
    for (;; t += 86400)
    {
        CDateTime v;
        try
        {
            v = t;
        }
        catch (CMxInvalidValueException const &e)
        {
            // Year 0 has no text form but still counts its 366 days.
            ASSERT_EQ("Invalid Year [0] (9999 <= year <= -9999 && year != 0)", e.GetMessage());
            previousWeekday = previousWeekday % 7 + 1;
            continue;
        }
        CDateTime d;
        d.SetDateTime(v, CDateTime::date);
        int const year = d.GetYear();
        if (year != previousYear)
        {
            if (previousYear != -1 && previousYear != 0) // year 0 left no trace here
            {
                bool const leap = CDateTime(static_cast<short>(previousYear), 2, 29).GetType() == CDateTime::date;
                ASSERT_EQ(leap ? 366 : 365, daysInYear) << previousYear;
            }
            previousYear = year;
            daysInYear = 0;
        }
        ++daysInYear;
        ASSERT_EQ(t, v.GetTime());
        int const weekday = d.GetDayOfWeek();
        ASSERT_EQ(previousWeekday % 7 + 1, weekday) << d.ToString();
        previousWeekday = weekday;
        std::string const text = d.ToString();
        ASSERT_EQ(t, Parse(kDate, text.c_str()).GetTime()) << text;
        if (year == 3000 && d.GetMonth() == 12 && d.GetDay() == 31)
            break;
    }
}

// ---------------------------------------------------------------------------

TEST(DateTimeArithmetic, AddsFieldByFieldWithoutPinningTheDay)
{
    struct Case
    {
        Parser parser;
        char const *start;
        char const *span;
        bool subtract;
        char const *result;
    };
    constexpr Case kCases[] = {
        {kDate, "2000-01-31", "P1M", false, "2000-02-31"},
        {kDate, "2000-03-01", "P1D", true, "2000-02-29"},
        {kDate, "2001-03-01", "P1D", true, "2001-02-28"},
        {kDate, "2000-12-31", "P1D", false, "2001-01-01"},
        {kDate, "2000-01-01", "P1D", true, "1999-12-31"},
        {kDate, "2000-01-01", "-P1D", false, "1999-12-31"},
        {kDate, "2000-01-02", "-P1D", true, "2000-01-01"}, // minus keeps a negative span negative
        {kDate, "0001-01-01", "P1D", true, "0000-12-31"},  // year 0 is not skipped
        {kDate, "2000-02-28", "P1Y", false, "2001-02-28"},
        {kDate, "2000-02-29", "P4Y", false, "2004-02-29"},
        {kDate, "1999-11-15", "P14M", false, "2001-01-15"},
        {kDate, "1999-11-15", "P23M", true, "1997-12-15"},
        {kDate, "2000-01-01", "P366D", false, "2001-01-01"},
        {kDate, "2000-02", "P1M", false, "2000-03"},
        {kDateTime, "2000-01-01T23:59:59.999999999", "PT0.000000001S", false, "2000-01-02T00:00:00"},
        {kDateTime, "2000-01-31T12:00:00", "PT36H", false, "2000-02-02T00:00:00"},
        {kDateTime, "2000-03-01T00:00:00", "PT1S", true, "2000-02-29T23:59:59"},
        {kDateTime, "2000-01-01T00:00:00", "PT90M", false, "2000-01-01T01:30:00"},
        {kTime, "23:00:00", "PT2H", false, "01:00:00"},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(std::string(c.start) + (c.subtract ? " - " : " + ") + c.span);
        CDateTime v = Parse(c.parser, c.start);
        CDateTimeSpan s;
        s.ParseXSDDuration(c.span);
        CDateTime r = c.subtract ? v - s : v + s;
        EXPECT_EQ(c.result, r.ToString());
        CDateTime inPlace = v;
        if (c.subtract)
            inPlace -= s;
        else
            inPlace += s;
        EXPECT_EQ(c.result, inPlace.ToString());
    }
    // A zero span still moves a gYear: its month of 0 borrows a year.
    EXPECT_EQ("1999", (Parse(kDate, "2000") + CDateTimeSpan()).ToString());
    EXPECT_EQ("P", (CDateTime(2000, 1, 1) - CDateTime(1990, 1, 1)).ToString());
}

// The walk that skips whole cycles must land where the month-by-month walk
// does, across the 16-bit year wrap and for months outside [1, 12].
TEST(DateTimeArithmetic, FastDayWalkEqualsMonthByMonthWalk)
{
    std::mt19937_64 rng(7);
    auto pick = [&](long long lo, long long hi) { return std::uniform_int_distribution<long long>(lo, hi)(rng); };
    for (int i = 0; i < 300; ++i)
    {
        DateTimeCalendar::DayWalk start{};
        switch (i % 4)
        {
        case 0: start.month = pick(1, 12); break;
        case 1: start.month = pick(-300, 300); break;
        default: start.month = pick(0, 13); break;
        }
        start.day = pick(0, i % 5 == 0 ? 255 : 31);
        start.year = static_cast<short>(i % 3 == 0 ? pick(-32768, 32767) : pick(32000, 32767) * (i % 2 ? 1 : -1));
        long long const days = pick(-2000000, 2000000);
        SCOPED_TRACE(std::to_string(start.year) + "/" + std::to_string(start.month) + "/" +
                     std::to_string(start.day) + " + " + std::to_string(days));
        DateTimeCalendar::DayWalk slow = start, fast = start;
        DateTimeCalendar::WalkByMonths(slow, days);
        DateTimeCalendar::Walk(fast, days);
        ASSERT_EQ(slow.year, fast.year);
        ASSERT_EQ(slow.month, fast.month);
        ASSERT_EQ(slow.day, fast.day);
    }
    // The largest day counts a span can give finish at once.
    CDateTime v = Parse(kDate, "2000-01-01");
    CDateTimeSpan big;
    big.ParseXSDDuration("P2147483647D");
    DateTimeCalendar::DayWalk slow{1, 1, 2000};
    DateTimeCalendar::WalkByMonths(slow, 2147483647LL); // 5.9 million years: the year wraps 89 times
    CDateTime expected = v;
    expected.SetYear(slow.year);
    expected.SetMonth(static_cast<unsigned char>(slow.month));
    expected.SetDay(static_cast<unsigned char>(slow.day));
    EXPECT_EQ(expected.ToString(), (v + big).ToString());
    EXPECT_EQ(v.ToString(), (v + big - big).ToString());
}

TEST(DateTimeCompare, FieldsZonesAndIndeterminacy)
{
    struct Case
    {
        Parser lp;
        char const *left;
        Parser rp;
        char const *right;
        CDateTime::DTCompareResult expected;
    };
    using R = CDateTime;
    constexpr Case kCases[] = {
        {kDate, "2000-01-01", kDateTime, "2000-01-01T00:00:00", R::DTLessThan},
        {kDate, "2000-01-01", kDateTime, "2000-01-01T01:00:00", R::DTIndeterminate},
        {kDateTime, "2000-01-01T00:00:00+01:00", kDateTime, "1999-12-31T23:00:00Z", R::DTEqual},
        {kDateTime, "2000-01-01T00:00:00-05:30", kDateTime, "2000-01-01T05:30:00+00:00", R::DTEqual},
        {kDateTime, "2000-01-01T00:00:00.5", kDateTime, "2000-01-01T00:00:00.25", R::DTGreaterThan},
        {kDateTime, "2000-01-01T12:00:00Z", kDateTime, "2000-01-01T12:00:00", R::DTIndeterminate},
        {kDateTime, "2000-01-01T12:00:00Z", kDateTime, "2000-01-02T03:00:00", R::DTLessThan},
        {kDateTime, "2000-01-02T03:00:00Z", kDateTime, "2000-01-01T12:00:00", R::DTGreaterThan},
        {kDateTime, "2000-01-01T13:00:00Z", kDateTime, "2000-01-01T12:00:00", R::DTGreaterThan},
        {kDateTime, "2000-01-01T12:00:00", kDateTime, "2000-01-01T11:00:00Z", R::DTIndeterminate},
        {kDateTime, "2000-01-01T12:00:00", kDateTime, "2000-01-01T13:00:00Z", R::DTLessThan},
        {kDateTime, "2000-01-02T03:00:00", kDateTime, "2000-01-01T12:00:00Z", R::DTGreaterThan},
        {kDate, "-0001-01-01", kDate, "0001-01-01", R::DTIndeterminate},
        {kDate, "-0002-01-01", kDate, "-0001-01-01", R::DTLessThan},
        {kDate, "2000", kDate, "2001", R::DTLessThan},
        {kDate, "--05", kDate, "--05-01", R::DTIndeterminate},
        {kDate, "--05", kDate, "2000-05-01", R::DTIndeterminate},
        {kTime, "12:00:00", kTime, "12:00:00.000000001", R::DTLessThan},
        {kTime, "01:00:00+05:00", kTime, "19:00:00Z", R::DTGreaterThan},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(std::string(c.left) + " vs " + c.right);
        CDateTime const a = Parse(c.lp, c.left);
        CDateTime const b = Parse(c.rp, c.right);
        EXPECT_EQ(c.expected, a.CompareTo(b));
        EXPECT_EQ(c.expected == R::DTEqual, a == b);
        EXPECT_EQ(c.expected != R::DTEqual, a != b);
        EXPECT_EQ(c.expected == R::DTLessThan, a < b);
        EXPECT_EQ(c.expected == R::DTLessThan || c.expected == R::DTEqual, a <= b);
        EXPECT_EQ(c.expected == R::DTGreaterThan, a > b);
        EXPECT_EQ(c.expected == R::DTGreaterThan || c.expected == R::DTEqual, a >= b);
    }
    CDateTime n = CDateTime("2000-01-01T01:00:00+02:00").GetNormalized();
    EXPECT_EQ("1999-12-31T23:00:00+00:00", n.ToString());
    EXPECT_EQ("2000-01-01T01:00:00", CDateTime("2000-01-01T01:00:00").GetNormalized().ToString());
}

// ---------------------------------------------------------------------------
// Vectors from Python's datetime (data/gen_datetime_vectors.py).

TEST(DateTimeOracle, MatchesPythonDatetime)
{
    std::ifstream in(MX_TEST_DATA_DIR "/datetime_vectors.txt");
    ASSERT_TRUE(in) << "missing datetime_vectors.txt";
    std::string line;
    int counts[3] = {0, 0, 0};
    while (std::getline(in, line))
    {
        SCOPED_TRACE(line);
        std::istringstream fields(line);
        std::string kind, a, b, c;
        fields >> kind >> a >> b;
        if (kind == "A")
        {
            fields >> c;
            CDateTimeSpan span;
            span.ParseXSDDuration(b.c_str());
            ASSERT_EQ(c, (CDateTime(a.c_str()) + span).ToString());
            ++counts[0];
        }
        else if (kind == "C")
        {
            fields >> c;
            CDateTime const l(a.c_str()), r(b.c_str());
            CDateTime::DTCompareResult const expected = c == "<"   ? CDateTime::DTLessThan
                                                        : c == "=" ? CDateTime::DTEqual
                                                                   : CDateTime::DTGreaterThan;
            CDateTime::DTCompareResult const mirrored = c == "<"   ? CDateTime::DTGreaterThan
                                                        : c == "=" ? CDateTime::DTEqual
                                                                   : CDateTime::DTLessThan;
            ASSERT_EQ(expected, l.CompareTo(r));
            ASSERT_EQ(mirrored, r.CompareTo(l));
            ++counts[1];
        }
        else if (kind == "T")
        {
            long long seconds;
            int weekday, yday, leap;
            seconds = std::stoll(b);
            fields >> weekday >> yday >> leap;
            CDateTime v = Parse(a.find('T') != std::string::npos ? kDateTime : kDate, a.c_str());
            ASSERT_EQ(seconds, v.GetTime());
            ASSERT_EQ(weekday, v.GetDayOfWeek());
            int const month = v.GetMonth();
            ASSERT_EQ(yday + (leap ? (month < 3 ? 1 : -1) : 0), v.GetDayOfYear());
            ++counts[2];
        }
    }
    EXPECT_GT(counts[0], 1000);
    EXPECT_GT(counts[1], 1000);
    EXPECT_GT(counts[2], 1000);
}

} // namespace
