#include "values/DateTimeSpan.h"

#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;

namespace
{

struct ParseCase
{
    char const *text;
    char const *printed;
    unsigned long long years, months, days, hours, minutes, seconds, milli, micro, nano;
    bool negative;
};

constexpr ParseCase kValid[] = {
    {"P1Y", "P1Y", 1, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"PY", "P", 0, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"P1Y2M3DT4H5M6.007S", "P1Y2M3DT4H5M6.007S", 1, 2, 3, 4, 5, 6, 7, 0, 0, false},
    {"-P1D", "-P1D", 0, 0, 1, 0, 0, 0, 0, 0, 0, true},
    {"P1D1Y", "P1Y1D", 1, 0, 1, 0, 0, 0, 0, 0, 0, false},
    {"PT1S1Y", "P1YT1S", 1, 0, 0, 0, 0, 1, 0, 0, 0, false},
    {"P1M1Y", "P1Y1M", 1, 1, 0, 0, 0, 0, 0, 0, 0, false},
    {"PT1.", "PT1S", 0, 0, 0, 0, 0, 1, 0, 0, 0, false},
    {"PT1.5S", "PT1.5S", 0, 0, 0, 0, 0, 1, 500, 0, 0, false},
    {"PT1.12S", "PT1.12S", 0, 0, 0, 0, 0, 1, 120, 0, 0, false},
    {"PT1.000001S", "PT1.000001S", 0, 0, 0, 0, 0, 1, 0, 1, 0, false},
    {"PT1.123456789S", "PT1.123456009S", 0, 0, 0, 0, 0, 1, 123, 456, 9, false},
    {"PT1.0000001S", "PT1.000000001S", 0, 0, 0, 0, 0, 1, 0, 0, 1, false},
    {"PT.5S", "PT0.5S", 0, 0, 0, 0, 0, 0, 500, 0, 0, false},
    {"PT1.5S1Y", "P1YT1.5S", 1, 0, 0, 0, 0, 1, 500, 0, 0, false},
    {"P70000Y", "P4464Y", 4464, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"PT90M", "PT90M", 0, 0, 0, 0, 90, 0, 0, 0, 0, false},
    {"PT1M", "PT1M", 0, 0, 0, 0, 1, 0, 0, 0, 0, false},
    {"P1M", "P1M", 0, 1, 0, 0, 0, 0, 0, 0, 0, false},
    {"PT0S", "P", 0, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"-P0Y", "-P", 0, 0, 0, 0, 0, 0, 0, 0, 0, true},
    {"PT1H0S", "PT1H", 0, 0, 0, 1, 0, 0, 0, 0, 0, false},
    {"P4294967295D", "P4294967295D", 0, 0, 4294967295ULL, 0, 0, 0, 0, 0, 0, false},
    {"P4294967296D", "P", 0, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"PT3000000000S", "PT18446744072414584320S", 0, 0, 0, 0, 0, 18446744072414584320ULL, 0, 0, 0, false},
    {"PT2147483648M", "PT18446744071562067968M", 0, 0, 0, 0, 18446744071562067968ULL, 0, 0, 0, 0, false},
};

TEST(DateTimeSpanParse, ReadsUnitsAndPrintsThem)
{
    for (auto const &c : kValid)
    {
        SCOPED_TRACE(c.text);
        CDateTimeSpan s(1, 2, 3); // parsing starts from zero
        s.Negate();
        ASSERT_NO_THROW(s.ParseXSDDuration(c.text));
        EXPECT_EQ(c.years, s.GetYears());
        EXPECT_EQ(c.months, s.GetMonths());
        EXPECT_EQ(c.days, s.GetDays());
        EXPECT_EQ(c.hours, s.GetHours());
        EXPECT_EQ(c.minutes, s.GetMinutes());
        EXPECT_EQ(c.seconds, s.GetSeconds());
        EXPECT_EQ(c.milli, s.GetMilliSeconds());
        EXPECT_EQ(c.micro, s.GetMicroSeconds());
        EXPECT_EQ(c.nano, s.GetNanoSeconds());
        EXPECT_EQ(c.negative, s.IsNegative());
        EXPECT_EQ(c.printed, s.ToString());
    }
}

TEST(DateTimeSpanParse, RejectsBadTexts)
{
    std::string const expected = " expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]";
    char const *const kInvalid[] = {"P",     "PT",   "P1",    "1Y",      "-",         "--P1D", "P-1D",   "P1S",
                                    "PT1D",  "P1H",  "PT1H1H", "P1M1M",  "P1D1M",     "PT1.5", "PT1.5X", "PT1S.",
                                    "P1DT",  " P1D", "P1D ",  "PT1M1H",  "P1DT1H1S1M", "Px",   "PT1.5S1M", "p1D"};
    for (char const *text : kInvalid)
    {
        SCOPED_TRACE(text);
        CDateTimeSpan s;
        std::string message = "<no exception>";
        try
        {
            s.ParseXSDDuration(text);
        }
        catch (CMxInvalidValueException const &e)
        {
            message = e.GetMessage();
        }
        EXPECT_EQ("Invalid XSD Duration [" + std::string(text) + "]" + expected, message);
    }
    struct Fixed
    {
        char const *text;
        char const *message;
    };
    constexpr Fixed kFixed[] = {
        {nullptr, "Invalid XSD Duration (Null String)"},
        {"", "Invalid XSD Duration (Empty String)"},
        {"PT1.1234567890S", "Invalid XSD Duration [PT1.1234567890S] Fraction part too long"},
    };
    for (auto const &c : kFixed)
    {
        SCOPED_TRACE(c.message);
        CDateTimeSpan s;
        std::string message = "<no exception>";
        try
        {
            s.ParseXSDDuration(c.text);
        }
        catch (CMxInvalidValueException const &e)
        {
            message = e.GetMessage();
        }
        EXPECT_EQ(c.message, message);
    }
}

TEST(DateTimeSpanCompare, FourReferenceDates)
{
    struct Case
    {
        char const *left;
        char const *right;
        CDateTime::DTCompareResult expected;
    };
    using R = CDateTime;
    constexpr Case kCases[] = {
        {"P1M", "P30D", R::DTIndeterminate},  {"P1Y", "P365D", R::DTIndeterminate},
        {"P1Y", "P367D", R::DTLessThan},      {"P1M", "P31D", R::DTIndeterminate},
        {"P1M", "P32D", R::DTLessThan},       {"P1M", "P27D", R::DTGreaterThan},
        {"PT0S", "PT1S", R::DTEqual},         {"PT1H", "PT2H", R::DTEqual},
        {"P1D", "PT24H", R::DTEqual},         {"PT23H", "P1D", R::DTLessThan},
        {"P2D", "P1D", R::DTGreaterThan},     {"-P1D", "P1D", R::DTLessThan},
        {"P1Y", "P12M", R::DTEqual},          {"PT1440M", "P1D", R::DTEqual},
        {"PT86399S", "P1D", R::DTLessThan},   {"-P1M", "-P27D", R::DTLessThan},
    };
    for (auto const &c : kCases)
    {
        SCOPED_TRACE(std::string(c.left) + " vs " + c.right);
        CDateTimeSpan a, b;
        a.ParseXSDDuration(c.left);
        b.ParseXSDDuration(c.right);
        EXPECT_EQ(c.expected, a.CompareTo(b));
        EXPECT_EQ(c.expected == R::DTEqual, a == b);
        EXPECT_EQ(c.expected != R::DTEqual, a != b);
        EXPECT_EQ(c.expected == R::DTLessThan, a < b);
        EXPECT_EQ(c.expected == R::DTGreaterThan, a > b);
    }
}

TEST(DateTimeSpan, SignAndSetters)
{
    CDateTimeSpan s;
    s.ParseXSDDuration("-P1D");
    EXPECT_TRUE(s.GetAsNegative().IsNegative()); // stays negative, no flip
    s.Negate();
    EXPECT_FALSE(s.IsNegative());
    EXPECT_TRUE(s.GetAsNegative().IsNegative());
    EXPECT_FALSE(s.IsNegative());

    s.Negate();
    s.SetDateTimeSpan(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_FALSE(s.IsNegative());
    EXPECT_EQ("P1Y2M3DT4H5M6.007008009S", s.ToString());
    s.SetDateTimeSpan(1, 2, 3, 4, 5, 0);
    EXPECT_EQ("P1Y2M3DT4H5M", s.ToString());
    s.SetDateTimeSpan(25, 61, 0);
    EXPECT_EQ("PT25H61M", s.ToString());
    EXPECT_EQ("PT25H61M", CDateTimeSpan(25, 61, 0).ToString());
    s.SetSeconds(0);
    s.SetNanoSeconds(1000); // stored unchecked, printed as held
    EXPECT_EQ("PT25H61M0.0000001S", s.ToString());
    CDateTimeSpan big(65535, 4294967295u, 4294967295u, 4294967295u, ~0ULL, ~0ULL, 65535, 65535, 65535);
    big.Negate();
    EXPECT_EQ("-P65535Y4294967295M4294967295DT4294967295H18446744073709551615M18446744073709551615.65535655356553"
              "5S",
              big.ToString());
}

} // namespace
