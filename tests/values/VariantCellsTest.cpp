#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/Variant.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

// The message of the CMxException that `f` raises, "" when it returns.
std::string Failure(std::function<void()> const &f)
{
    try
    {
        f();
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "";
}

struct CellCase
{
    ItemType type;
    char const *text;
    Rule rule;
    char const *format;
    char const *printed;
};

// One or more rows for every primitive: text in, canonical text out.
CellCase const kCells[] = {
    {ItemType_hexBinary, "0aff", Rule::None, nullptr, "0AFF"},
    {ItemType_hexBinary, " 00 ", Rule::Collapse, nullptr, "00"},
    {ItemType_hexBinary, "", Rule::None, nullptr, ""},
    {ItemType_base64Binary, "Zm9v", Rule::None, nullptr, "Zm9v"},
    {ItemType_base64Binary, "Zm 9v\n", Rule::None, nullptr, "Zm9v"},
    {ItemType_base64Binary, "Zg", Rule::None, nullptr, "Zg=="},
    {ItemType_base64Binary, "Zm9v!", Rule::None, nullptr, ""}, // a stray byte: no error, no data
    {ItemType_i1, "-128", Rule::None, nullptr, "-128"},
    {ItemType_i2, " +0300 ", Rule::Collapse, nullptr, "300"},
    {ItemType_i4, "-2147483648", Rule::None, nullptr, "-2147483648"},
    {ItemType_i8, "9223372036854775807", Rule::None, nullptr, "9223372036854775807"},
    {ItemType_ui1, "255", Rule::None, nullptr, "255"},
    {ItemType_ui2, "65535", Rule::None, nullptr, "65535"},
    {ItemType_ui4, "-1", Rule::None, nullptr, "4294967295"},
    {ItemType_ui8, "18446744073709551615", Rule::None, nullptr, "18446744073709551615"},
    {ItemType_r4, "0.1", Rule::None, nullptr, "0.1"},
    {ItemType_r8, "-INF", Rule::None, nullptr, "-INF"},
    {ItemType_duration, "P1Y2M3DT4H5M6.5S", Rule::None, nullptr, "P1Y2M3DT4H5M6.5S"},
    {ItemType_duration, "-P0Y1DT90M", Rule::Collapse, nullptr, "-P1DT90M"},
    {ItemType_duration, "P0Y", Rule::None, nullptr, "P"},
    {ItemType_yearMonth, "2001-02", Rule::None, nullptr, "2001-02"},
    {ItemType_yearMonth, "-0044-03Z", Rule::None, nullptr, "-0044-03Z"},
    {ItemType_yearMonth, "2001-02-03", Rule::None, nullptr, "2001-02-03"}, // the form the text has
    {ItemType_monthDay, "--02-29", Rule::None, nullptr, "--02-29"},
    {ItemType_monthDay, "--12", Rule::None, nullptr, "--12"},
    {ItemType_year, "2001", Rule::None, nullptr, "2001"},
    {ItemType_year, "-0001", Rule::None, nullptr, "65535"},
    {ItemType_year, " 2001-02-03 ", Rule::Collapse, nullptr, "2001"},
    {ItemType_month, "--05", Rule::None, nullptr, "--05"},
    {ItemType_month, "--11-30", Rule::None, nullptr, "--11"},
    {ItemType_day, "---09", Rule::None, nullptr, "---09"},
    {ItemType_day, "1999-12-31", Rule::None, nullptr, "---31"},
    {ItemType_date, "2001-02-03Z", Rule::None, nullptr, "2001-02-03Z"},
    {ItemType_date, "-2001-02-03+05:30", Rule::None, nullptr, "-2001-02-03+05:30"},
    {ItemType_date, "2001", Rule::None, nullptr, "2001"},
    {ItemType_datetime, "2001-02-03T04:05:06.5Z", Rule::None, nullptr, "2001-02-03T04:05:06.5Z"},
    {ItemType_datetime, "2001-02-03T04:05:06.123456-01:00", Rule::None, nullptr,
     "2001-02-03T04:05:06.123456-01:00"},
    {ItemType_time, "13:20:00.000+01:00", Rule::None, nullptr, "13:20:00+01:00"},
    {ItemType_time, "00:00:00.000000001", Rule::None, nullptr, "00:00:00.000000001"},
    {ItemType_char, "x", Rule::None, nullptr, "x"},
    {ItemType_string, "a\r\nb", Rule::Preserve, nullptr, "a\nb"},
    {ItemType_boolean, "False", Rule::None, nullptr, "false"},
    {ItemType_decimal, "1.50", Rule::None, nullptr, "1.5"},
    {ItemType_decimal, "-0.5", Rule::None, nullptr, "-0.5"},
    {ItemType_decimal, "1 2 . 5", Rule::None, nullptr, "12.5"},
    {ItemType_decimal, "1e3", Rule::None, nullptr, "1000"},
    {ItemType_decimal, "0.125", Rule::None, "2", "0.13"},
    {ItemType_decimal, "0.995", Rule::None, "2", "1.0"},
    {ItemType_decimal, "1.2", Rule::None, "0", "1."},
    {ItemType_decimal, "1.25", Rule::None, "%.3f", "1."}, // atoi of the format is 0
    {ItemType_decimal, "", Rule::None, nullptr, "0"},
    {ItemType_integer, "+0012", Rule::None, nullptr, "12"},
    {ItemType_integer, "1.5e3", Rule::None, nullptr, "1500"},
    {ItemType_integer, "-123456789012345678901234567890", Rule::None, nullptr, "-123456789012345678901234567890"},
};

TEST(VariantCells, EveryPrimitiveReadsAndPrints)
{
    bool seen[ItemType_integer + 1] = {};
    for (CellCase const &c : kCells)
    {
        SCOPED_TRACE(std::to_string(c.type) + " [" + c.text + "]");
        seen[c.type] = true;
        MxVariant v;
        v.FromString(c.text, c.type, c.rule);
        EXPECT_EQ(c.type, v.GetTypeAsEnum());
        EXPECT_EQ(c.printed, v.ToString(c.format));
        // Copies are deep and print alike; the original is untouched.
        MxVariant copy(v);
        EXPECT_EQ(c.printed, copy.ToString(c.format));
        MxVariant assigned;
        assigned.SetString("old");
        assigned = v;
        v.Clear();
        EXPECT_EQ(c.printed, assigned.ToString(c.format));
    }
    for (int type = ItemType_hexBinary; type <= ItemType_integer; ++type)
        EXPECT_TRUE(seen[type]) << "no row for type " << type;
}

// The canonical text reads back to itself. Two texts are refused by their own
// parser: "P", the zero duration, and the year -1 printed as 65535.
TEST(VariantCells, CanonicalTextIsStable)
{
    for (CellCase const &c : kCells)
    {
        std::string const printed = c.printed;
        if (c.format != nullptr || printed == "P" || printed == "65535")
            continue;
        SCOPED_TRACE(std::to_string(c.type) + " [" + c.printed + "]");
        MxVariant v;
        v.FromString(c.printed, c.type, Rule::None);
        EXPECT_EQ(c.printed, v.ToString());
    }
    MxVariant v;
    EXPECT_EQ("Invalid XSD Date [65535] expected CCYY-MM-DD[Z|[+|-]hh:mm]",
              Failure([&] { v.FromString("65535", ItemType_year, Rule::None); }));
}

// Every day of a wide range of years through the date cell, against text
// built here; the year, month and day cells read the same texts.
TEST(VariantCells, DatesOfManyYears)
{
    static int const kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int year = -9999; year <= 9999; year += year < -1000 || year > 2100 ? 997 : 7)
    {
        if (year == 0)
            continue;
        bool const leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        for (int month = 1; month <= 12; ++month)
        {
            int const last = kDays[month - 1] + (month == 2 && leap ? 1 : 0);
            for (int day = 1; day <= last; day += day == 1 ? last - 2 : 1)
            {
                char text[32];
                std::snprintf(text, sizeof(text), "%s%04d-%02d-%02d", year < 0 ? "-" : "", year < 0 ? -year : year,
                              month, day);
                SCOPED_TRACE(text);
                MxVariant v;
                v.FromString(text, ItemType_date, Rule::None);
                ASSERT_EQ(text, v.ToString());
                v.FromString(text, ItemType_year, Rule::None);
                ASSERT_EQ(static_cast<std::uint16_t>(year), v.GetYear());
                v.FromString(text, ItemType_month, Rule::None);
                ASSERT_EQ(month, v.GetMonth());
                v.FromString(text, ItemType_day, Rule::None);
                ASSERT_EQ(day, v.GetDay());
            }
        }
    }
}

struct BadCase
{
    ItemType type;
    char const *text;
    char const *message;
};

// The value classes' own errors pass through, and the cell keeps its value.
TEST(VariantCells, BadTextRaisesTheClassErrorAndKeepsTheCell)
{
    BadCase const cases[] = {
        {ItemType_hexBinary, "abc", "Invalid length in hex string"},
        {ItemType_duration, "P", "Invalid XSD Duration [P] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]"},
        {ItemType_duration, "", "Invalid XSD Duration (Empty String)"},
        {ItemType_yearMonth, "2001-13", "Invalid Month [13] (1 <= month <= 12)"},
        {ItemType_monthDay, "--02-30", "Invalid Day [30] (1 <= day <= days in month)"},
        {ItemType_year, "--05", "Failed to GetYear. Invalid Date Type: gMonth."},
        {ItemType_month, "2000", "Failed to GetMonth. Invalid Date Type: gYear."},
        {ItemType_day, "2001-02", "Failed to GetDay. Invalid Date Type: gYearMonth."},
        {ItemType_date, "", "Invalid Date (Empty String)"},
        {ItemType_date, "2001-02-03T00:00:00", "Invalid Date ('T' not allowed)"},
        {ItemType_datetime, "2001-02-03", "Invalid XSD DateTime [2001-02-03]."},
        {ItemType_time, "24:00:00", "Invalid XSD Time [24:00:00] expected hh:mm:ss[.ff]"},
        {ItemType_decimal, "1.2.3",
         "The string representing a Decimal, contained an invalid char at position 3 [1.2.3]."},
        {ItemType_integer, "abc", "The string representing a Decimal, contained an invalid char at position 0 [abc]."},
    };
    for (BadCase const &c : cases)
    {
        SCOPED_TRACE(std::to_string(c.type) + " [" + c.text + "]");
        MxVariant v;
        v.SetString("keep");
        EXPECT_EQ(c.message, Failure([&] { v.FromString(c.text, c.type, Rule::None); }));
        EXPECT_EQ(ItemType_string, v.GetTypeAsEnum());
        EXPECT_EQ("keep", v.GetString());
    }
}

TEST(VariantCells, DecimalFormatOutOfRange)
{
    MxVariant v;
    v.FromString("1.5", ItemType_decimal, Rule::None);
    EXPECT_THROW(v.ToString("2000"), CMxInvalidParamException);
    EXPECT_THROW(v.ToString("-1"), CMxInvalidParamException);
    EXPECT_THROW(v.ToString("99999999999999999999"), CMxInvalidParamException);
    EXPECT_EQ("1.50", v.ToString(" +2x"));
}

TEST(VariantCells, SettersKeepTheGivenValue)
{
    CDateTime gYear;
    gYear.ParseXSDDate("1999");
    MxVariant v;
    // The date family keeps the value's own form; only the cell type differs.
    v.SetTime(gYear);
    EXPECT_EQ(ItemType_time, v.GetTypeAsEnum());
    EXPECT_EQ("time", v.GetType());
    EXPECT_EQ(CDateTime::gYear, v.GetDateTime().GetType());
    EXPECT_EQ("1999", v.ToString());
    v.SetYearMonth(gYear);
    EXPECT_EQ(1999, v.GetMonthDay().GetYear()); // one getter body for the family

    unsigned char bytes[] = {1, 2, 0xFE};
    CBinaryData data(bytes, 3, false);
    v.SetBase64Binary(data);
    EXPECT_EQ("AQL+", v.ToString());
    EXPECT_EQ("0102FE", CConversions::hexBinaryToString(v.GetHexBinary()));
    // The cell shares the counted block with the value it was given.
    EXPECT_EQ(data.GetData(), v.GetBase64Binary().GetData());
    v.SetHexBinary(v.GetBase64Binary());
    EXPECT_EQ("0102FE", v.ToString());

    v.SetDuration(CDateTimeSpan(1, 2, 3));
    EXPECT_EQ("PT1H2M3S", v.ToString());
    v.SetDecimal(CDecimal("-12.340"));
    EXPECT_EQ("-12.34", v.ToString());
    EXPECT_EQ("-12.3", v.ToString("1"));
    v.SetInteger(CBigInteger(-42));
    EXPECT_EQ("-42", v.ToString());
    EXPECT_EQ("integer", v.GetType());
}

TEST(VariantCells, HeapGettersOfAnotherTypeAreEmpty)
{
    MxVariant v;
    v.SetI8(0x1234567812345678);
    EXPECT_EQ(0u, v.GetHexBinary().GetLength());
    EXPECT_EQ(CDateTime::yearZero, v.GetDate().GetType());
    EXPECT_EQ("P", v.GetDuration().ToString());
    EXPECT_EQ("0", v.GetDecimal().ToString());
    EXPECT_EQ("0", v.GetInteger().ToString());
    v.SetDecimal(CDecimal("1.5"));
    EXPECT_EQ("0", v.GetInteger().ToString());
    EXPECT_EQ(CDateTime::yearZero, v.GetTime().GetType());
}

TEST(VariantCells, NilHeapCellsKeepTheirType)
{
    ItemType const heapTypes[] = {ItemType_hexBinary, ItemType_base64Binary, ItemType_duration,
                                  ItemType_yearMonth, ItemType_monthDay,     ItemType_date,
                                  ItemType_datetime,  ItemType_time,         ItemType_decimal,
                                  ItemType_integer};
    char const *const texts[] = {"00", "AA==", "P1D", "2001-02", "--02-03", "2001-02-03", "2001-02-03T00:00:00",
                                 "00:00:01", "1.5", "7"};
    for (std::size_t i = 0; i < sizeof(heapTypes) / sizeof(heapTypes[0]); ++i)
    {
        SCOPED_TRACE(texts[i]);
        MxVariant v;
        v.FromString(texts[i], heapTypes[i], Rule::None);
        v.SetNil();
        EXPECT_TRUE(v.IsNil());
        EXPECT_TRUE(v.IsValid());
        EXPECT_EQ(heapTypes[i], v.GetTypeAsEnum());
        MxVariant copy;
        copy.SetDecimal(CDecimal("2"));
        copy = v;
        EXPECT_TRUE(copy.IsNil());
        EXPECT_EQ(heapTypes[i], copy.GetTypeAsEnum());
        // No value is held: the nil cell prints the empty value of its class.
        EXPECT_EQ(MxVariant(copy).ToString(), copy.ToString());
        copy = copy; // cleared, nothing leaks
        EXPECT_FALSE(copy.IsValid());
    }
}

} // namespace
