#include "runtime/MxException.h"
#include "values/FacetCheck.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

CPrimitiveRestrictions None() { return CPrimitiveRestrictions(nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1); }

CPrimitiveRestrictions Bounds(char const *minInclusive, char const *maxInclusive, char const *minExclusive,
                              char const *maxExclusive)
{
    return CPrimitiveRestrictions(nullptr, -1, -1, minInclusive, maxInclusive, minExclusive, maxExclusive, -1, -1, -1);
}

CPrimitiveRestrictions Lengths(long minLength, long maxLength, long length, char const *pattern = nullptr)
{
    return CPrimitiveRestrictions(pattern, minLength, maxLength, nullptr, nullptr, nullptr, nullptr, length, -1, -1);
}

CPrimitiveRestrictions Digits(long totalDigits, long fractionDigits)
{
    return CPrimitiveRestrictions(nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, totalDigits,
                                  fractionDigits);
}

CPrimitiveRestrictions Pattern(char const *pattern) { return Lengths(-1, -1, -1, pattern); }

// What the check did: "" when it passed, else the message, prefixed with
// "value: " when the exception was a CMxInvalidValueException (the errors of
// the bound parsers and the unknown type) rather than a plain CMxException.
// With a slot, the pattern is taken compiled from it.
std::string Outcome(ItemType type, char const *text, CPrimitiveRestrictions const &facets,
                    CCompiledPatternSlot const *pattern = nullptr)
{
    MxVariant value;
    value.FromString(text, type, Rule::None);
    try
    {
        CheckPrimitiveFacets("e", value, type, facets, pattern);
    }
    catch (CMxInvalidValueException const &e)
    {
        return "value: " + e.GetMessage();
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "";
}

struct FacetCase
{
    ItemType type;
    char const *value;
    CPrimitiveRestrictions facets;
    char const *outcome;
};

void RunTable(FacetCase const *cases, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        FacetCase const &c = cases[i];
        SCOPED_TRACE("row " + std::to_string(i) + ": type " + std::to_string(c.type) + " [" + c.value + "]");
        EXPECT_EQ(c.outcome, Outcome(c.type, c.value, c.facets, nullptr));
        // A kept compiled pattern answers the same, when it is made and when
        // it is used again; one that did not compile keeps failing the same way.
        CCompiledPatternSlot const slot;
        for (int use = 0; use < 2; ++use)
            EXPECT_EQ(c.outcome, Outcome(c.type, c.value, c.facets, &slot));
    }
}

#define RUN_TABLE(cases) RunTable(cases, sizeof(cases) / sizeof(cases[0]))

TEST(FacetCheck, IntegerBoundsAndDigits)
{
    FacetCase const cases[] = {
        {ItemType_i1, "5", Bounds("5", "5", nullptr, nullptr), ""},
        {ItemType_i1, "5", Bounds("6", nullptr, nullptr, nullptr), "Invalid Value for e [5]"},
        {ItemType_i1, "5", Bounds(nullptr, "4", nullptr, nullptr), "Invalid Value for e [5]"},
        {ItemType_i1, "5", Bounds(nullptr, nullptr, "5", nullptr), "Invalid Value for e [5]"},
        {ItemType_i1, "5", Bounds(nullptr, nullptr, nullptr, "5"), "Invalid Value for e [5]"},
        {ItemType_i1, "5", Bounds(" +4 ", "\t6\n", "-128", "127"), ""},
        // Bounds go through the type's own parser, with its messages.
        {ItemType_i1, "5", Bounds("200", nullptr, nullptr, nullptr), "value: The value [200] is to large to fit in a i1"},
        {ItemType_i1, "5", Bounds("x", nullptr, nullptr, nullptr), "value: The value [x] can not be converted to a i4"},
        {ItemType_i1, "5", Bounds(nullptr, "+-5", nullptr, nullptr),
         "value: The value [+-5] can not be converted to a i4"},
        // The tests run in order: minInclusive's failure comes before the bad maxInclusive.
        {ItemType_i1, "5", Bounds("9", "x", nullptr, nullptr), "Invalid Value for e [5]"},
        {ItemType_i1, "-1", Digits(1, -1), "Invalid Value for e [-1]"},
        {ItemType_i1, "-128", Digits(3, -1), "Invalid Value for e [-128]"},
        {ItemType_i1, "-128", Digits(4, 0), ""}, // fractionDigits is not a facet of i1
        {ItemType_i2, "-32768", Bounds("-32768", "-32768", "-32769", nullptr),
         "value: The value [-32769] is to large to fit in a i2"},
        {ItemType_i2, "300", Bounds(nullptr, nullptr, "299", "301"), ""},
        {ItemType_i4, "2147483647", Bounds(nullptr, "2147483646", nullptr, nullptr), "Invalid Value for e [2147483647]"},
        {ItemType_i4, "100", Digits(3, -1), ""},
        {ItemType_i4, "1000", Digits(3, -1), "Invalid Value for e [1000]"},
        {ItemType_i4, "1", Bounds("2147483648", nullptr, nullptr, nullptr),
         "value: The value [2147483648] is to large to fit in a i4"},
        {ItemType_i8, "-9223372036854775808", Bounds(nullptr, nullptr, "-9223372036854775808", nullptr),
         "Invalid Value for e [-9223372036854775808]."},
        {ItemType_i8, "123", Digits(2, -1), "Invalid Value for e [123]."},
        {ItemType_ui1, "200", Bounds(nullptr, "199", nullptr, nullptr), "Invalid Value for e [200]"},
        {ItemType_ui1, "200", Bounds("-1", nullptr, nullptr, nullptr), "value: The value [-1] is to large to fit in a ui1"},
        {ItemType_ui2, "65535", Bounds("00065535", nullptr, nullptr, nullptr), ""},
        // A bound of -1 wraps, as the unsigned parse does; the message prints "%d".
        {ItemType_ui4, "4294967295", Bounds("-1", "-1", nullptr, nullptr), ""},
        {ItemType_ui4, "4294967295", Bounds(nullptr, nullptr, nullptr, "4294967295"), "Invalid Value for e [-1]"},
        {ItemType_ui4, "4294967295", Digits(9, -1), "Invalid Value for e [-1]"},
        {ItemType_ui8, "18446744073709551615", Bounds(nullptr, "18446744073709551614", nullptr, nullptr),
         "Invalid Value for e [18446744073709551615]."},
        {ItemType_ui8, "1", Bounds("18446744073709551616", nullptr, nullptr, nullptr),
         "value: The value [18446744073709551616] is to large to fit in a ui8"},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, RealBounds)
{
    FacetCase const cases[] = {
        {ItemType_r4, "1.5", Bounds("1.5", "1.5", "1.25", "1.75"), ""},
        {ItemType_r4, "1.5", Bounds(nullptr, "1.25", nullptr, nullptr), "Invalid Value for e [1.500000]"},
        {ItemType_r4, "0.1", Bounds(nullptr, nullptr, "0.1", nullptr), "Invalid Value for e [0.100000]"},
        {ItemType_r4, "1", Digits(0, 0), ""}, // no digit facets on reals
        {ItemType_r8, "-INF", Bounds(nullptr, nullptr, "-INF", nullptr), "Invalid Value for e [-inf]"},
        {ItemType_r8, "1e300", Bounds(nullptr, "INF", nullptr, "1e299"),
         "Invalid Value for e ["
         "1000000000000000052504760255204420248704468581108159154915854115511802457988908195786371375080447864"
         "0437044438328838781769425232353604305756447921847867069828483872009265758037378302337947880900593689"
         "53234970799945081119038967640880074652742780142494579258788820056842838115669472196386865459400540160.000000]"},
        // A NaN fails every bound that is present, and only those.
        {ItemType_r8, "NaN", Bounds("-INF", nullptr, nullptr, nullptr), "Invalid Value for e [nan]"},
        {ItemType_r8, "NaN", Bounds(nullptr, nullptr, nullptr, "INF"), "Invalid Value for e [nan]"},
        {ItemType_r8, "NaN", None(), ""},
        {ItemType_r8, "1", Bounds("1x", nullptr, nullptr, nullptr), "value: The value [1x] can not be converted to a r8"},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, DateAndDurationBounds)
{
    FacetCase const cases[] = {
        {ItemType_duration, "P1D", Bounds("P1D", "P1D", "PT23H", "P1M"), ""},
        {ItemType_duration, "P1D", Bounds(nullptr, nullptr, "P1D", nullptr), "Invalid Value for e [P1D]."},
        {ItemType_duration, "P32D", Bounds(nullptr, "P1M", nullptr, nullptr), "Invalid Value for e [P32D]."},
        // P30D against P1M depends on the month: indeterminate, so every bound passes.
        {ItemType_duration, "P30D", Bounds("P1M", "P1M", "P1M", "P1M"), ""},
        {ItemType_duration, "P1D", Bounds("P1D", "x", nullptr, nullptr),
         "value: Invalid XSD Duration [x] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]"},
        {ItemType_yearMonth, "2001-02", Bounds("2001-03", nullptr, nullptr, nullptr), "Invalid Value for e [2001-02]."},
        // The bound parser takes any date form, as the value's does.
        {ItemType_yearMonth, "2001-02", Bounds("2001-02", "2001-02", nullptr, "2001-03-01"), ""},
        {ItemType_monthDay, "--02-29", Bounds(nullptr, nullptr, nullptr, "--02-29"), "Invalid Value for e [--02-29]."},
        {ItemType_date, "2001-02-03Z", Bounds("2001-02-05", nullptr, nullptr, nullptr), "Invalid Value for e [2001-02-03Z]."},
        // With a zone against a bound without: the bound is moved by +14 hours
        // and then back, and whatever is not "greater" then is indeterminate.
        {ItemType_date, "2001-02-03Z", Bounds("2001-02-04", nullptr, "2001-02-03", "2001-02-03"), ""},
        {ItemType_date, "2001-02-03Z", Bounds(nullptr, "2001-02-02", nullptr, nullptr), "Invalid Value for e [2001-02-03Z]."},
        {ItemType_datetime, "2001-02-03T04:05:06", Bounds(nullptr, "2001-02-03T04:05:05.999", nullptr, nullptr),
         "Invalid Value for e [2001-02-03T04:05:06]."},
        {ItemType_datetime, "2001-02-03T04:05:06", Bounds("2001-02-03", nullptr, nullptr, nullptr),
         "value: Invalid XSD DateTime [2001-02-03]."},
        {ItemType_time, "13:20:00", Bounds(nullptr, nullptr, "13:20:00", nullptr), "Invalid Value for e [13:20:00]."},
        {ItemType_time, "13:20:00+01:00", Bounds(nullptr, nullptr, nullptr, "12:20:01Z"), ""},
        {ItemType_time, "13:20:00+01:00", Bounds(nullptr, nullptr, nullptr, "12:20:00Z"),
         "Invalid Value for e [13:20:00+01:00]."},
        {ItemType_year, "2001", Bounds(nullptr, "2000", nullptr, nullptr), "Invalid Value for e [2001]"},
        {ItemType_year, "2001", Bounds("2001-12-31", "2001", nullptr, nullptr), ""},
        {ItemType_year, "-0001", Bounds("2001", nullptr, nullptr, nullptr), ""}, // 65535
        {ItemType_month, "--05", Bounds("--06", nullptr, nullptr, nullptr), "Invalid Value for e [5]"},
        {ItemType_month, "--05", Bounds("2000", nullptr, nullptr, nullptr),
         "Failed to GetMonth. Invalid Date Type: gYear."},
        {ItemType_day, "---09", Bounds(nullptr, nullptr, nullptr, "---09"), "Invalid Value for e [9]"},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, BinaryAndStringLengths)
{
    FacetCase const cases[] = {
        {ItemType_hexBinary, "0AFF", Lengths(2, 2, 2), ""},
        {ItemType_hexBinary, "0aff", Lengths(3, -1, -1), "Invalid Value for e [0AFF]."},
        {ItemType_hexBinary, "0AFF", Lengths(-1, 1, -1), "Invalid Value for e [0AFF]."},
        {ItemType_hexBinary, "0AFF", Lengths(-1, -1, 3), "Invalid Value for e [0AFF]."},
        {ItemType_hexBinary, "", Lengths(1, -1, -1), "Invalid Value for e []."},
        {ItemType_hexBinary, "0AFF", Digits(1, 1), ""},
        {ItemType_base64Binary, "Zm9v", Lengths(-1, 2, -1), "Invalid Value for e [Zm9v]."},
        {ItemType_base64Binary, "Zm 9v", Lengths(3, 3, 3), ""},
        {ItemType_string, "abc", Lengths(3, 3, 3), ""},
        {ItemType_string, "abc", Lengths(4, -1, -1), "Invalid Value for e [abc]."},
        {ItemType_string, "abc", Lengths(-1, 2, -1), "Invalid Value for e [abc]."},
        {ItemType_string, "abc", Lengths(-1, -1, 2), "Invalid Value for e [abc]."},
        {ItemType_string, "", Lengths(0, 0, 0), ""},
        // Bytes, not characters: U+00E9 in UTF-8 is two.
        {ItemType_string, "\xC3\xA9", Lengths(-1, 1, -1), "Invalid Value for e [\xC3\xA9]."},
        {ItemType_string, "\xC3\xA9", Lengths(2, 2, 2), ""},
        {ItemType_string, "abc", Bounds("z", "a", "z", "a"), ""}, // no bounds on strings
        {ItemType_string, "abc", Digits(1, 1), ""},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, StringPatterns)
{
    FacetCase const cases[] = {
        {ItemType_string, "a", Pattern("a"), ""},
        {ItemType_string, "ab", Pattern("a"), "Invalid Value for e [ab]."},
        {ItemType_string, "ab", Pattern("a|ab"), ""},
        {ItemType_string, "", Pattern(""), ""},
        {ItemType_string, "x", Pattern(""), ""}, // an empty pattern is no pattern
        {ItemType_string, "abc-1", Pattern("\\i\\c*"), ""},
        {ItemType_string, "1abc", Pattern("\\i\\c*"), "Invalid Value for e [1abc]."},
        {ItemType_string, "\\i", Pattern("\\\\i"), ""},
        {ItemType_string, "A1", Pattern("[A-Z]\\d"), ""},
        {ItemType_string, "a\nb", Pattern("a.b"), "Invalid Value for e [a\nb]."},
        // A pattern that does not compile: PCRE's reason, then the usual line.
        {ItemType_string, "abc", Pattern("("),
         "Invalid Regular Expression: abc Error: 'missing )'\nInvalid Value for e [abc]."},
        {ItemType_string, "x", Pattern("\\p{IsLatinExtended-B}"),
         "Invalid Regular Expression: x Error: 'range out of order in character class'\nInvalid Value for e [x]."},
        // The length comes before the pattern.
        {ItemType_string, "abc", Lengths(4, -1, -1, "("), "Invalid Value for e [abc]."},
        {ItemType_string, "abc", Lengths(3, -1, -1, "("),
         "Invalid Regular Expression: abc Error: 'missing )'\nInvalid Value for e [abc]."},
        // Patterns reach no type but string.
        {ItemType_i4, "5", Pattern("("), ""},
        {ItemType_decimal, "5", Pattern("x"), ""},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, DecimalAndInteger)
{
    FacetCase const cases[] = {
        {ItemType_decimal, "1.5", Bounds("1.50", "1.5", "1.4999", "1.5001"), ""},
        {ItemType_decimal, "1.5", Bounds(nullptr, nullptr, "1.5", nullptr), "Invalid Value for e [1.5]."},
        {ItemType_decimal, "-0.5", Bounds(nullptr, "-1", nullptr, nullptr), "Invalid Value for e [-0.5]."},
        {ItemType_decimal, "1", Bounds(" 1 e 0", nullptr, nullptr, nullptr), ""},
        {ItemType_decimal, "1", Bounds("1.2.3", nullptr, nullptr, nullptr),
         "value: The string representing a Decimal, contained an invalid char at position 3 [1.2.3]."},
        {ItemType_decimal, "0.50", Digits(-1, 1), ""}, // rationalised to one place
        {ItemType_decimal, "1.25", Digits(-1, 1), "Invalid Value for e [1.25]."},
        {ItemType_decimal, "123.45", Digits(5, 2), ""},
        {ItemType_decimal, "123.45", Digits(4, -1), "Invalid Value for e [123.45]."},
        {ItemType_decimal, "-12", Digits(2, 0), ""}, // the sign is no digit here
        {ItemType_decimal, "0.001", Digits(3, 3), ""},
        {ItemType_decimal, "0.001", Digits(2, -1), "Invalid Value for e [0.001]."},
        {ItemType_decimal, "100", Digits(3, 0), ""},
        {ItemType_decimal, "0", Digits(0, 0), ""},
        // totalDigits is tested before fractionDigits; both fail here, one message.
        {ItemType_decimal, "1.25", Digits(2, 1), "Invalid Value for e [1.25]."},
        {ItemType_integer, "1000", Bounds(nullptr, nullptr, nullptr, "1e3"), "Invalid Value for e [1000]."},
        {ItemType_integer, "-123", Digits(3, -1), "Invalid Value for e [-123]."},
        {ItemType_integer, "-123", Digits(4, 0), ""},
        {ItemType_integer, "123456789012345678901234567890",
         Bounds("123456789012345678901234567890", "123456789012345678901234567891", nullptr, nullptr), ""},
        {ItemType_integer, "5", Bounds("abc", nullptr, nullptr, nullptr),
         "value: The string representing a Decimal, contained an invalid char at position 0 [abc]."},
    };
    RUN_TABLE(cases);
}

TEST(FacetCheck, TypesWithoutFacets)
{
    CPrimitiveRestrictions const all("(", 5, 0, "x", "x", "x", "x", 9, 0, 0);
    EXPECT_EQ("", Outcome(ItemType_boolean, "true", all));
    EXPECT_EQ("value: Unknown type [char].", Outcome(ItemType_char, "c", None()));
    // The name comes from the cell; a cell without a type has none.
    MxVariant empty;
    try
    {
        CheckPrimitiveFacets("e", empty, ItemType_XmlObject, None());
        ADD_FAILURE() << "no exception";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("Invalid Type 0", e.GetMessage());
    }
}

} // namespace
