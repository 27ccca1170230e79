#include "runtime/MxException.h"
#include "values/Decimal.h"

#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{

template <typename E, typename F> std::string MessageOf(F f)
{
    try
    {
        f();
    }
    catch (E const &e)
    {
        return e.GetMessage();
    }
    return "no exception";
}

// Reads a Python string literal ('...' with \n, \t, \r, \\ and \' escapes)
// from the front of `in`.
std::string ReadPythonString(std::istream &in)
{
    char quote = 0;
    in >> quote;
    std::string text;
    for (char c; in.get(c) && c != quote;)
    {
        if (c != '\\')
        {
            text.push_back(c);
            continue;
        }
        in.get(c);
        text.push_back(c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c);
    }
    return text;
}

// Keeps the process-wide limit of places as the test found it.
struct PlacesGuard
{
    int saved = CDecimal::GetMaxDecimalPlaces();
    ~PlacesGuard() { CDecimal::SetMaxDecimalPlaces(saved); }
};

} // namespace

// Python's Fraction as the oracle: sums and differences are exact, products
// and quotients rounded to 30 places a tie toward zero (quotients after
// truncating to two guard digits), parsing of texts with blanks, moved signs,
// padding zeros and exponents, and ToString(places) rounding half away.
TEST(DecimalOracle, MatchesFractionArithmetic)
{
    std::ifstream in(std::string(MX_TEST_DATA_DIR) + "/decimal_vectors.txt");
    ASSERT_TRUE(in.good());
    int arith = 0, parse = 0, places = 0;
    std::string line;
    while (std::getline(in, line))
    {
        if (line.empty() || line[0] == '#')
            continue;
        SCOPED_TRACE(line);
        std::istringstream fields(line);
        std::string kind;
        fields >> kind;
        if (kind == "arith")
        {
            std::string ta, tb, sum, difference, product, quotient;
            int cmp;
            fields >> ta >> tb >> sum >> difference >> product >> quotient >> cmp;
            CDecimal const a(ta.c_str()), b(tb.c_str());
            EXPECT_EQ(sum, (a + b).ToString());
            EXPECT_EQ(difference, (a - b).ToString());
            EXPECT_EQ(product, (a * b).ToString());
            if (quotient != "-")
                EXPECT_EQ(quotient, (a / b).ToString());
            EXPECT_EQ(cmp == 0, a == b);
            EXPECT_EQ(cmp != 0, a != b);
            EXPECT_EQ(cmp < 0, a < b);
            EXPECT_EQ(cmp > 0, a > b);
            EXPECT_EQ(cmp <= 0, a <= b);
            EXPECT_EQ(cmp >= 0, a >= b);
            ++arith;
        }
        else if (kind == "parse")
        {
            std::string const text = ReadPythonString(fields);
            std::string expected;
            fields >> expected;
            EXPECT_EQ(expected, CDecimal(text.c_str()).ToString());
            ++parse;
        }
        else if (kind == "places")
        {
            std::string value, expected;
            int n;
            fields >> value >> n >> expected;
            EXPECT_EQ(expected, CDecimal(value.c_str()).ToString(n));
            ++places;
        }
    }
    EXPECT_GE(arith, 500);
    EXPECT_GE(parse, 500);
    EXPECT_GE(places, 500);
}

TEST(DecimalParse, PartsAndTolerance)
{
    struct Case
    {
        char const *text;
        char const *integer;
        char const *fraction;
        int divider;
        char const *printed;
    };
    Case const cases[] = {
        {"1.50", "1", "5", 1, "1.5"},
        {"1.0", "1", "0", 1, "1"},
        {"-0.5", "0", "-5", 1, "-0.5"},
        {"1 2 . 5", "12", "5", 1, "12.5"},
        {"1-2", "-12", "0", 1, "-12"},
        {"", "0", "0", 1, "0"},
        {".", "0", "0", 1, "0"},
        {"-", "0", "0", 1, "0"},
        {"1e", "1", "0", 1, "1"},
        {"1e+", "1", "0", 1, "1"},
        {"1e3", "1000", "0", 1, "1000"},
        {"1e-3", "0", "1", 3, "0.001"},
        {"1e 3", "1000", "0", 1, "1000"},
        {"1.05", "1", "5", 2, "1.05"},
        {"1.2e-1", "0", "12", 2, "0.12"},
        {"-1e-99999999999999", "0", "0", 1, "0"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        CDecimal const d(c.text);
        EXPECT_EQ(c.integer, d.GetIntegerPart().ToString());
        EXPECT_EQ(c.fraction, d.GetFractionPart().ToString());
        EXPECT_EQ(c.divider, d.GetFractionDivider());
        EXPECT_EQ(c.printed, d.ToString());
    }
    EXPECT_EQ("17" + std::string(307, '0'), CDecimal("1.7E+308").ToString());
}

TEST(DecimalParse, InvalidCharacterPositions)
{
    std::string const longInteger(512, '1');
    std::string const longFraction = "0." + std::string(512, '2');
    std::string const longExponent = "1e" + std::string(32, '0');
    struct Case
    {
        std::string text;
        int position;
    };
    Case const cases[] = {
        {"1e3 ", 3},        {"12x", 2},         {"1.5-", 3},       {"1.5.3", 3},  {"1e3-", 3},
        {"1e 3 4", 4},      {"1ex", 2},         {"abc", 0},        {"inf", 0},    {"--1,0", 3},
        {longInteger, 511}, {longFraction, 513}, {longExponent, 33},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        std::string const expected =
            "The string representing a Decimal, contained an invalid char at position " + std::to_string(c.position) +
            " [" + c.text + "].";
        EXPECT_EQ(expected, MessageOf<CMxInvalidValueException>([&] { CDecimal d(c.text.c_str()); }));
    }
    EXPECT_EQ("The exponent of the Decimal is out of range at position 2 [1e100001].",
              MessageOf<CMxOverFlowException>([] { CDecimal d("1e100001"); }));
    EXPECT_EQ(std::string(511, '9'), CDecimal(std::string(511, '9').c_str()).ToString());
}

TEST(DecimalDivide, LimitOfPlaces)
{
    PlacesGuard guard;
    EXPECT_EQ(30, CDecimal::GetMaxDecimalPlaces());
    EXPECT_EQ("0." + std::string(30, '3'), (CDecimal(1) / CDecimal(3)).ToString());
    EXPECT_EQ("0." + std::string(29, '6') + "7", (CDecimal(2) / CDecimal(3)).ToString());
    EXPECT_EQ("ERROR: Overflow in operator/.", MessageOf<CMxInvalidValueException>([] { CDecimal(1) / CDecimal(0); }));

    CDecimal::SetMaxDecimalPlaces(5);
    EXPECT_EQ("0.66667", (CDecimal(2) / CDecimal(3)).ToString());
    EXPECT_EQ("0.12346", CDecimal("0.123456").ToString());
    CDecimal::SetMaxDecimalPlaces(0);
    EXPECT_EQ("1", (CDecimal(2) / CDecimal(3)).ToString());
    EXPECT_EQ("The maximum of decimal places must lie between 0 and 10000 [-1].",
              MessageOf<CMxInvalidParamException>([] { CDecimal::SetMaxDecimalPlaces(-1); }));
}

TEST(DecimalRound, CutsAndPlaces)
{
    struct Case
    {
        char const *value;
        int places;
        char const *expected;
    };
    Case const toString[] = {
        {"0.125", 2, "0.13"}, {"0.995", 2, "1.0"}, {"1.2", 0, "1."},   {"-0.125", 2, "-0.13"},
        {"0", 2, "0.00"},     {"2.5", 0, "3."},    {"-2.5", 0, "-3."}, {"7", 3, "7.000"},
    };
    for (auto const &c : toString)
    {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(c.expected, CDecimal(c.value).ToString(c.places));
    }
    EXPECT_EQ("The number of decimal places must lie between 0 and 1023 [1024].",
              MessageOf<CMxInvalidParamException>([] { CDecimal(1).ToString(1024); }));
    // From the limit of places on, half a unit rounds away to nothing.
    EXPECT_EQ("1.5", CDecimal("1.5").ToString(998));
    EXPECT_EQ("0.3333333333", (CDecimal(1) / CDecimal(3)).ToString(10));

    // Rounding to 0 places goes a tie toward zero; no carry out of the fraction.
    EXPECT_EQ("0", CDecimal("0.5").ToBigInteger().ToString());
    EXPECT_EQ("1", CDecimal("0.51").ToBigInteger().ToString());
    EXPECT_EQ("-1", CDecimal("-0.51").ToBigInteger().ToString());
    EXPECT_EQ(1, CDecimal("1.96").ToLongLong());
    EXPECT_EQ(-1, CDecimal("-1.96").ToLongLong());
}

TEST(DecimalConvert, MachineNumbersAndBounds)
{
    EXPECT_EQ(2147483647L, CDecimal("2147483647.4").ToLong());
    EXPECT_EQ(-2147483648L, CDecimal("-2147483648").ToLong());
    EXPECT_EQ(3L, CDecimal("2.6").ToLong());
    EXPECT_EQ(LLONG_MAX, CDecimal("9223372036854775807").ToLongLong());
    EXPECT_EQ(LLONG_MIN, CDecimal("-9223372036854775808.4").ToLongLong());
    EXPECT_DOUBLE_EQ(-12.25, CDecimal("-12.25").ToDouble());
    EXPECT_DOUBLE_EQ(1.7e308, CDecimal("1.7E+308").ToDouble());

    struct Case
    {
        char const *text;
        int which; // 0 ToLong, 1 ToLongLong, 2 ToDouble
        char const *message;
    };
    Case const cases[] = {
        {"2147483647.6", 0, "The Decimal value if to large to fit into a LONG"},
        {"-2147483649", 0, "The Decimal value if to large to fit into a LONG"},
        {"9223372036854775808", 1, "The Decimal value if to large to fit into a LONGLONG"},
        {"-9223372036854775809", 1, "The Decimal value if to large to fit into a LONGLONG"},
        {"1.8E+308", 2, "The Decimal value if to large to fit into a Double"},
        {"-1.8E+308", 2, "The Decimal value if to large to fit into a Double"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        CDecimal const d(c.text);
        EXPECT_EQ(c.message, MessageOf<CMxOverFlowException>([&] {
                      if (c.which == 0)
                          d.ToLong();
                      else if (c.which == 1)
                          d.ToLongLong();
                      else
                          d.ToDouble();
                  }));
    }
}

TEST(DecimalConstruct, MachineNumbersAndSteps)
{
    EXPECT_EQ("-7", CDecimal(-7).ToString());
    EXPECT_EQ("-9223372036854775808", CDecimal(LLONG_MIN).ToString());
    EXPECT_EQ("0.1", CDecimal(0.1).ToString());
    EXPECT_EQ("-2.5", CDecimal(-2.5).ToString());
    EXPECT_EQ("0.3333333333333", CDecimal(1.0 / 3.0).ToString());
    EXPECT_EQ("The string representing a Decimal, contained an invalid char at position 0 [inf].",
              MessageOf<CMxInvalidValueException>([] { CDecimal d(1.0 / 0.0); }));
    EXPECT_EQ("123", CDecimal(CBigInteger("123")).ToString());

    CDecimal d("1.5");
    EXPECT_EQ("2.5", (++d).ToString());
    EXPECT_EQ("1.5", (--d).ToString());
    EXPECT_EQ("2.5", (d++).ToString()); // returns the stepped value ...
    EXPECT_EQ("0.5", (d--).ToString());
    EXPECT_EQ("1.5", d.ToString()); // ... and leaves the object alone
    d += CDecimal("0.25");
    d -= CDecimal(1);
    d *= CDecimal(4);
    d /= CDecimal(-2);
    EXPECT_EQ("-1.5", d.ToString());
    EXPECT_EQ("1.5", d.GetNegative().ToString());
    d.Negate();
    EXPECT_EQ("1.5", d.ToString());
    EXPECT_TRUE(CDecimal("-0.5") < CDecimal("0.5"));
    EXPECT_TRUE(CDecimal("1.10") == CDecimal("1.1"));
}
