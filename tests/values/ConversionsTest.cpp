#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/PrimitiveRestrictions.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

enum class Kind { i1, i2, i4, i8, ui1, ui2, ui4, ui8 };

// "=value" for a result, "!message" for a CMxInvalidValueException.
template <typename F> std::string Outcome(F parse)
{
    try
    {
        return "=" + parse();
    }
    catch (CMxInvalidValueException const &e)
    {
        return "!" + e.GetMessage();
    }
}

std::string ParseInteger(Kind kind, std::string const &text, Rule rule)
{
    return Outcome([&] {
        switch (kind)
        {
        case Kind::i1: return std::to_string(CConversions::i1FromString(text, rule));
        case Kind::i2: return std::to_string(CConversions::i2FromString(text, rule));
        case Kind::i4: return std::to_string(CConversions::i4FromString(text, rule));
        case Kind::i8: return std::to_string(CConversions::i8FromString(text, rule));
        case Kind::ui1: return std::to_string(CConversions::ui1FromString(text, rule));
        case Kind::ui2: return std::to_string(CConversions::ui2FromString(text, rule));
        case Kind::ui4: return std::to_string(CConversions::ui4FromString(text, rule));
        case Kind::ui8: return std::to_string(CConversions::ui8FromString(text, rule));
        }
        return std::string();
    });
}

struct IntegerCase
{
    Kind kind;
    char const *text;
    Rule rule;
    char const *expected;
};

constexpr Rule N = Rule::None;
constexpr Rule C = Rule::Collapse;

IntegerCase const kIntegerCases[] = {
    // boundaries and one beyond
    {Kind::i1, "-128", N, "=-128"},
    {Kind::i1, "127", N, "=127"},
    {Kind::i1, "128", N, "!The value [128] is to large to fit in a i1"},
    {Kind::i1, "-129", N, "!The value [-129] is to large to fit in a i1"},
    {Kind::i1, "99999999999", N, "!The value [99999999999] is to large to fit in a i4"},
    {Kind::i1, "abc", N, "!The value [abc] can not be converted to a i4"},
    {Kind::i1, " 200 ", C, "!The value [ 200 ] is to large to fit in a i1"},
    {Kind::i2, "-32768", N, "=-32768"},
    {Kind::i2, "32767", N, "=32767"},
    {Kind::i2, "32768", N, "!The value [32768] is to large to fit in a i2"},
    {Kind::i2, "-32769", N, "!The value [-32769] is to large to fit in a i2"},
    {Kind::i4, "-2147483648", N, "=-2147483648"},
    {Kind::i4, "2147483647", N, "=2147483647"},
    {Kind::i4, "2147483648", N, "!The value [2147483648] is to large to fit in a i4"},
    {Kind::i4, "-2147483649", N, "!The value [-2147483649] is to large to fit in a i4"},
    {Kind::i4, "12abc", N, "!The value [12abc] can not be converted to a i4"},
    {Kind::i4, "", N, "!The value [] can not be converted to a i4"},
    {Kind::i4, "   ", C, "!The value [] can not be converted to a i4"},
    {Kind::i4, "   ", N, "!The value [   ] can not be converted to a i4"},
    {Kind::i4, " 12", N, "=12"},
    {Kind::i4, "\t\v\f\r\n12", N, "=12"},
    {Kind::i4, "12 ", N, "!The value [12 ] can not be converted to a i4"},
    {Kind::i4, " 12 ", C, "=12"},
    {Kind::i4, "+7", N, "=7"},
    {Kind::i4, "-0", N, "=0"},
    {Kind::i4, "0007", N, "=7"},
    {Kind::i4, "+", N, "!The value [+] can not be converted to a i4"},
    {Kind::i4, "-", N, "!The value [-] can not be converted to a i4"},
    {Kind::i4, "--1", N, "!The value [--1] can not be converted to a i4"},
    {Kind::i4, "- 1", N, "!The value [- 1] can not be converted to a i4"},
    {Kind::i4, "1.0", N, "!The value [1.0] can not be converted to a i4"},
    {Kind::i4, "0x10", N, "!The value [0x10] can not be converted to a i4"},
    {Kind::i4, "99999999999x", N, "!The value [99999999999x] is to large to fit in a i4"},
    {Kind::i4, "1 2", C, "!The value [1 2] can not be converted to a i4"},
    {Kind::i8, "-9223372036854775808", N, "=-9223372036854775808"},
    {Kind::i8, "9223372036854775807", N, "=9223372036854775807"},
    {Kind::i8, "9223372036854775808", N, "!The value [9223372036854775808] is to large to fit in a i8"},
    {Kind::i8, "-9223372036854775809", N, "!The value [-9223372036854775809] is to large to fit in a i8"},
    {Kind::i8, "00000000000000000000000000042", N, "=42"},
    {Kind::i8, "x", N, "!The value [x] can not be converted to a i8"},
    {Kind::ui1, "255", N, "=255"},
    {Kind::ui1, "256", N, "!The value [256] is to large to fit in a ui1"},
    {Kind::ui1, "-1", N, "!The value [-1] is to large to fit in a ui1"},
    {Kind::ui1, "x", N, "!The value [x] can not be converted to a ui4"},
    {Kind::ui2, "65535", N, "=65535"},
    {Kind::ui2, "65536", N, "!The value [65536] is to large to fit in a ui2"},
    {Kind::ui4, "4294967295", N, "=4294967295"},
    {Kind::ui4, "4294967296", N, "!The value [4294967296] is to large to fit in a ui4"},
    {Kind::ui4, "-1", N, "=4294967295"},
    {Kind::ui4, "-4294967295", N, "=1"},
    {Kind::ui4, "-4294967296", N, "!The value [-4294967296] is to large to fit in a ui4"},
    {Kind::ui4, "1e3", N, "!The value [1e3] can not be converted to a ui4"},
    {Kind::ui8, "18446744073709551615", N, "=18446744073709551615"},
    {Kind::ui8, "18446744073709551616", N, "!The value [18446744073709551616] is to large to fit in a ui8"},
    {Kind::ui8, "-1", N, "=18446744073709551615"},
    {Kind::ui8, "", N, "!The value [] can not be converted to a ui8"},
};

TEST(Conversions, IntegersFromText)
{
    for (IntegerCase const &c : kIntegerCases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, ParseInteger(c.kind, c.text, c.rule));
    }
}

// An embedded NUL ends the number, as for the C runtime.
TEST(Conversions, IntegerTextEndsAtNul)
{
    EXPECT_EQ("=12", ParseInteger(Kind::i4, std::string("12\0zz", 5), N));
    EXPECT_EQ("=0", ParseInteger(Kind::i4, std::string("\0zz", 3), N));
}

TEST(Conversions, IntegersToText)
{
    EXPECT_EQ("-128", CConversions::i1ToString(-128));
    EXPECT_EQ("127", CConversions::i1ToString(127));
    EXPECT_EQ("-32768", CConversions::i2ToString(-32768));
    EXPECT_EQ("-2147483648", CConversions::i4ToString(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ("-9223372036854775808", CConversions::i8ToString(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("9223372036854775807", CConversions::i8ToString(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ("255", CConversions::ui1ToString(255));
    EXPECT_EQ("65535", CConversions::ui2ToString(65535));
    EXPECT_EQ("4294967295", CConversions::ui4ToString(4294967295u));
    EXPECT_EQ("18446744073709551615", CConversions::ui8ToString(18446744073709551615u));
    EXPECT_EQ("0", CConversions::ui8ToString(0));
}

// Random 64-bit values, printf as oracle, and back again.
TEST(Conversions, IntegersRoundTripAgainstPrintf)
{
    std::mt19937_64 random(7);
    char buf[32];
    for (int i = 0; i < 20000; ++i)
    {
        std::uint64_t bits = random() >> (random() % 64);
        std::int64_t s = static_cast<std::int64_t>(i % 2 ? bits : 0 - bits);
        std::snprintf(buf, sizeof(buf), "%lld", static_cast<long long>(s));
        ASSERT_EQ(buf, CConversions::i8ToString(s));
        ASSERT_EQ(s, CConversions::i8FromString(buf, N));
        std::snprintf(buf, sizeof(buf), "%llu", static_cast<unsigned long long>(bits));
        ASSERT_EQ(buf, CConversions::ui8ToString(bits));
        ASSERT_EQ(bits, CConversions::ui8FromString(buf, N));
        std::int32_t s4 = static_cast<std::int32_t>(s);
        std::snprintf(buf, sizeof(buf), "%d", s4);
        ASSERT_EQ(buf, CConversions::i4ToString(s4));
        ASSERT_EQ(s4, CConversions::i4FromString(buf, N));
        std::uint32_t u4 = static_cast<std::uint32_t>(bits);
        std::snprintf(buf, sizeof(buf), "%u", u4);
        ASSERT_EQ(buf, CConversions::ui4ToString(u4));
        ASSERT_EQ(u4, CConversions::ui4FromString(buf, N));
    }
}

TEST(Conversions, SmallIntegersRoundTripWholeRange)
{
    for (int v = -128; v <= 127; ++v)
        ASSERT_EQ(v, CConversions::i1FromString(CConversions::i1ToString(static_cast<std::int8_t>(v)), N));
    for (int v = -32768; v <= 32767; ++v)
        ASSERT_EQ(v, CConversions::i2FromString(CConversions::i2ToString(static_cast<std::int16_t>(v)), N));
    for (unsigned v = 0; v <= 65535; ++v)
        ASSERT_EQ(v, CConversions::ui2FromString(CConversions::ui2ToString(static_cast<std::uint16_t>(v)), N));
}

// ---------------------------------------------------------------------------
// Floating point

double const kDoubles[] = {0.0, -0.0, 1.0, -1.0, 0.1, 0.5, 1.5, 2.5, 1.0 / 3, 3.14159265358979, 123456789.0,
                           1e-5, 1.25e-7, 1e15, 1e16, 1e20, 1e300, -2.5e-300, 5e-324, DBL_MAX, 9.9999995,
                           999999.5, 0.000123456, FLT_MAX};

char const *const kFormats[] = {"%.7g", "%.16g", "%g", "%#g", "%#.3g", "%.0g", "%f", "%.2f", "%.0f", "%#.0f",
                                "%e", "%.3E", "%#.0e", "%+.3f", "% .2e", "%10.3f", "%-10.3f|", "%010.3f",
                                "%+012.4e", "%G", "%a", "%.3a", "%A", "%-8a|", "%08.2a", "value=%.2f units",
                                "%5.1f%%", "%lf", "%.40f", "%60.3f", "%.25e", "%%"};

// printf in the "C" locale is the oracle for every format.
TEST(Conversions, FloatsToTextMatchPrintf)
{
    for (double v : kDoubles)
        for (char const *format : kFormats)
        {
            SCOPED_TRACE(std::string(format) + " of " + std::to_string(v));
            char expected8[48];
            std::snprintf(expected8, sizeof(expected8), format, v);
            // glibc drops the zeros of "%#g" when rounding carries into a new
            // exponent; C requires them.
            if (v == 999999.5 && std::strcmp(format, "%#g") == 0)
            {
                EXPECT_EQ("1.00000e+06", CConversions::r8ToString(v, format));
                continue;
            }
            EXPECT_EQ(expected8, CConversions::r8ToString(v, format));
            if (std::fabs(v) > FLT_MAX)
                continue;
            float f = static_cast<float>(v);
            char expected4[32];
            std::snprintf(expected4, sizeof(expected4), format, static_cast<double>(f));
            EXPECT_EQ(expected4, CConversions::r4ToString(f, format));
        }
}

TEST(Conversions, FloatsDefaultFormats)
{
    for (double v : kDoubles)
    {
        SCOPED_TRACE(v);
        char buf[48];
        std::snprintf(buf, sizeof(buf), "%.16g", v);
        EXPECT_EQ(buf, CConversions::r8ToString(v));
        EXPECT_EQ(buf, CConversions::r8ToString(v, ""));
        EXPECT_EQ(buf, CConversions::r8ToString(v, nullptr));
        if (std::fabs(v) > FLT_MAX)
            continue;
        std::snprintf(buf, sizeof(buf), "%.7g", static_cast<double>(static_cast<float>(v)));
        EXPECT_EQ(buf, CConversions::r4ToString(static_cast<float>(v)));
    }
    EXPECT_EQ("0.1", CConversions::r4ToString(0.1f));
    EXPECT_EQ("0.1000000014901161", CConversions::r8ToString(static_cast<double>(0.1f)));
    EXPECT_EQ("1e+20", CConversions::r8ToString(1e20));
}

TEST(Conversions, FloatSpecialsToText)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    for (char const *format : {"", "%.2f", "%e"})
    {
        SCOPED_TRACE(format);
        EXPECT_EQ("NaN", CConversions::r8ToString(nan, format));
        EXPECT_EQ("NaN", CConversions::r8ToString(-nan, format));
        EXPECT_EQ("INF", CConversions::r8ToString(inf, format));
        EXPECT_EQ("-INF", CConversions::r8ToString(-inf, format));
        EXPECT_EQ("NaN", CConversions::r4ToString(static_cast<float>(nan), format));
        EXPECT_EQ("-INF", CConversions::r4ToString(static_cast<float>(-inf), format));
    }
}

// Conversions that have no argument of their kind are copied.
TEST(Conversions, FloatFormatWithForeignConversions)
{
    EXPECT_EQ("%d 1.50", CConversions::r8ToString(1.5, "%d %.2f"));
    EXPECT_EQ("%s", CConversions::r8ToString(1.5, "%s"));
    EXPECT_EQ("%*f", CConversions::r8ToString(1.5, "%*f"));
    EXPECT_EQ("1.5%", CConversions::r8ToString(1.5, "%g%"));
    EXPECT_EQ("no conversion", CConversions::r8ToString(1.5, "no conversion"));
    // Widths and precisions too large for the buffer are cut, not allocated.
    EXPECT_EQ(std::string(47, ' '), CConversions::r8ToString(1.5, "%999999999999.3f"));
    EXPECT_EQ("1." + std::string(45, '0'), CConversions::r8ToString(1.0, "%.999999999999f"));
}

// strtod in the "C" locale is the oracle: same value, and an error exactly
// where its end pointer stops short of the terminator.
char const *const kFloatTexts[] = {
    "1", "-1.5", " 12", "\t\n\v\f\r7", "+3", "1e999", "-1e999", "1e-999", "0x1p3", "-0X1.8P1", "0x", "0x.",
    "0xg", "0x-1", "0x1p", "1.5x", "inf", "-infinity", "Infinity", "infin", "nan", "NAN(123)", "nan(", ".5",
    "5.", ".", "e5", "1e", "1e+", "1E-2", "4.9e-324", "2e-324", "2.2250738585072011e-308",
    "1.7976931348623157e308", "1.7976931348623159e308", "0x1.fffffffffffffp1023", "0x1p-1080", "0x1p-1074",
    "--1", "+-1", "-+1", "- 1", "00012.5000", "12 ", "1,5", "0.000000000000000000000000000001e-300",
    "123456789012345678901234567890e-10", "0x0.0000000000001p-1022", "+.e1", "-"};

TEST(Conversions, FloatsFromTextMatchStrtod)
{
    for (char const *text : kFloatTexts)
    {
        SCOPED_TRACE(text);
        char *end = nullptr;
        double expected = std::strtod(text, &end);
        if (*end != '\0')
        {
            EXPECT_EQ(std::string("!The value [") + text + "] can not be converted to a r8",
                      Outcome([&] { return std::to_string(CConversions::r8FromString(text, N)); }));
            continue;
        }
        double got = CConversions::r8FromString(text, N);
        if (std::isnan(expected))
            EXPECT_TRUE(std::isnan(got));
        else
            EXPECT_EQ(0, std::memcmp(&expected, &got, sizeof(got))) << got << " vs " << expected;
    }
}

struct FloatSpecialCase
{
    char const *text;
    Rule rule;
    double expected; // NaN: a NaN
};

TEST(Conversions, FloatSpecialsFromText)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    FloatSpecialCase const cases[] = {
        {"NaN", N, nan}, {"1.#QNAN", N, nan}, {"-NAN", N, nan}, {"-INF", N, -inf}, {"INF", N, inf},
        {" INF ", C, inf}, {"1.#QNAN ", C, nan}, {"1e999", N, inf}, {"-1e999", N, -inf},
    };
    for (FloatSpecialCase const &c : cases)
    {
        SCOPED_TRACE(c.text);
        double got = CConversions::r8FromString(c.text, c.rule);
        float got4 = CConversions::r4FromString(c.text, c.rule);
        if (std::isnan(c.expected))
        {
            EXPECT_TRUE(std::isnan(got));
            EXPECT_TRUE(std::isnan(got4));
        }
        else
        {
            EXPECT_EQ(c.expected, got);
            EXPECT_EQ(static_cast<float>(c.expected), got4);
        }
    }
    EXPECT_EQ("NaN", CConversions::r4ToString(CConversions::r4FromString("1.#QNAN", N)));
    EXPECT_EQ("NaN", CConversions::r8ToString(CConversions::r8FromString("NaN", N)));
}

TEST(Conversions, FloatErrors)
{
    struct Case
    {
        char const *text;
        Rule rule;
        char const *r8, *r4;
    } const cases[] = {
        {"", N, "!The value [] can not be converted to a r8", "!The value [] can not be converted to a r4"},
        {"1.5x", N, "!The value [1.5x] can not be converted to a r8",
         "!The value [1.5x] can not be converted to a r4"},
        {"1.#QNAN ", N, "!The value [1.#QNAN ] can not be converted to a r8",
         "!The value [1.#QNAN ] can not be converted to a r4"},
        {" 1 x ", C, "!The value [1 x] can not be converted to a r8", "!The value [1 x] can not be converted to a r4"},
        {"\r\n", C, "!The value [] can not be converted to a r8", "!The value [] can not be converted to a r4"},
    };
    for (Case const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.r8, Outcome([&] { return std::to_string(CConversions::r8FromString(c.text, c.rule)); }));
        EXPECT_EQ(c.r4, Outcome([&] { return std::to_string(CConversions::r4FromString(c.text, c.rule)); }));
    }
}

// r4 narrows the double that strtod gives; beyond the float range it rounds
// to infinity, half an ulp above FLT_MAX being the limit.
TEST(Conversions, FloatNarrowing)
{
    float const inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(FLT_MAX, CConversions::r4FromString("3.4028234663852886e38", N));
    EXPECT_EQ(FLT_MAX, CConversions::r4FromString("3.40282356779733e38", N));
    EXPECT_EQ(inf, CConversions::r4FromString("3.4028235677973366e38", N));
    EXPECT_EQ(inf, CConversions::r4FromString("1e39", N));
    EXPECT_EQ(-inf, CConversions::r4FromString("-1e39", N));
    EXPECT_EQ(0.1f, CConversions::r4FromString("0.1", N));
    EXPECT_EQ(0.0f, CConversions::r4FromString("1e-50", N));
}

// ---------------------------------------------------------------------------
// The others

TEST(Conversions, DateParts)
{
    EXPECT_EQ("2001", CConversions::yearToString(2001));
    EXPECT_EQ("65535", CConversions::yearToString(65535));
    EXPECT_EQ("--05", CConversions::monthToString(5));
    EXPECT_EQ("--12", CConversions::monthToString(12));
    EXPECT_EQ("--123", CConversions::monthToString(123));
    EXPECT_EQ("--00", CConversions::monthToString(0));
    EXPECT_EQ("---07", CConversions::dayToString(7));
    EXPECT_EQ("---31", CConversions::dayToString(31));
    EXPECT_EQ("---255", CConversions::dayToString(255));
}

TEST(Conversions, Booleans)
{
    struct Case
    {
        char const *text;
        Rule rule;
        char const *expected;
    } const cases[] = {
        {"true", N, "=1"},
        {"TRUE", N, "=1"},
        {"False", N, "=0"},
        {"1", N, "=1"},
        {"0", N, "=0"},
        {" true ", C, "=1"},
        {"\ttrue\r\n", C, "=1"},
        {" true ", N,
         "!A Boolean Value read from an XML document was invalid [ true ]. Valid values are 'true', 'false', '1', "
         "or '0'"},
        {"yes", N,
         "!A Boolean Value read from an XML document was invalid [yes]. Valid values are 'true', 'false', '1', or "
         "'0'"},
        {"", N,
         "!A Boolean Value read from an XML document was invalid []. Valid values are 'true', 'false', '1', or '0'"},
        {"01", N,
         "!A Boolean Value read from an XML document was invalid [01]. Valid values are 'true', 'false', '1', or "
         "'0'"},
        {"truex", N,
         "!A Boolean Value read from an XML document was invalid [truex]. Valid values are 'true', 'false', '1', or "
         "'0'"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected,
                  Outcome([&] { return std::to_string(CConversions::booleanFromString(c.text, c.rule)); }));
    }
    EXPECT_EQ("true", CConversions::booleanToString(true));
    EXPECT_EQ("false", CConversions::booleanToString(false));
}

TEST(Conversions, CharsAndStrings)
{
    struct Case
    {
        std::string text;
        Rule rule;
        char const *expected;
    } const cases[] = {
        {"a", N, "=a"},
        {" a ", C, "=a"},
        {"\t", Rule::Replace, "= "},
        {"", N, "!The value [] can not be a char as it is either empty of greater than 1 char long"},
        {"ab", N, "!The value [ab] can not be a char as it is either empty of greater than 1 char long"},
        {" a b ", C, "!The value [a b] can not be a char as it is either empty of greater than 1 char long"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected,
                  Outcome([&] { return std::string(1, CConversions::charFromString(c.text, c.rule)); }));
    }
    EXPECT_EQ('\0', CConversions::charFromString(std::string(1, '\0'), N));
    EXPECT_EQ("", CConversions::charToString('\0'));
    EXPECT_EQ("x", CConversions::charToString('x'));
    EXPECT_EQ("a b", CConversions::stringFromString("  a \n b ", C));
    EXPECT_EQ("a\nb", CConversions::stringFromString("a\r\nb", Rule::Preserve));
    EXPECT_EQ(std::string("a\0b", 3), CConversions::stringToString(std::string("a\0b", 3)));
}

TEST(Conversions, UnknownRuleFails)
{
    Rule const bad = static_cast<Rule>(4);
    EXPECT_EQ("!Unknown WhitespaceRule", Outcome([&] { return std::to_string(CConversions::i4FromString("1", bad)); }));
    EXPECT_EQ("!Unknown WhitespaceRule", Outcome([&] { return CConversions::stringFromString("1", bad); }));
}

TEST(PrimitiveRestrictions, HoldsTheFacetsAsGiven)
{
    CPrimitiveRestrictions r("[a-z]+", 1, 10, "a", nullptr, "", "z", -1, 5, 2);
    CPrimitiveRestrictions copy;
    copy = r;
    for (CPrimitiveRestrictions const *p : {&r, &copy})
    {
        EXPECT_EQ("[a-z]+", p->pattern);
        EXPECT_EQ(1, p->minLength);
        EXPECT_EQ(10, p->maxLength);
        EXPECT_EQ("a", p->minInclusive);
        EXPECT_EQ("", p->maxInclusive);
        EXPECT_EQ("", p->minExclusive);
        EXPECT_EQ("z", p->maxExclusive);
        EXPECT_EQ(-1, p->length);
        EXPECT_EQ(5, p->totalDigits);
        EXPECT_EQ(2, p->fractionDigits);
    }
}

} // namespace
