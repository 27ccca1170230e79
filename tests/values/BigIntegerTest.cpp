#include "runtime/MxException.h"
#include "values/BigInteger.h"
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

std::vector<std::vector<std::string>> ReadRows(char const *name)
{
    std::ifstream in(std::string(MX_TEST_DATA_DIR) + "/" + name);
    EXPECT_TRUE(in.good()) << name;
    std::vector<std::vector<std::string>> rows;
    std::string line;
    while (std::getline(in, line))
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        std::vector<std::string> row;
        for (std::string field; fields >> field;)
            row.push_back(field);
        rows.push_back(row);
    }
    return rows;
}

// The message of the exception `f` throws as E, or "no exception".
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

} // namespace

// Python's int as the oracle over random operands of 1 to 120 digits, with
// runs of nines and powers of ten for the carries and borrows.
TEST(BigIntegerOracle, MatchesExactArithmetic)
{
    auto const rows = ReadRows("bigint_vectors.txt");
    ASSERT_GE(rows.size(), 1000u);
    for (auto const &r : rows)
    {
        ASSERT_EQ(9u, r.size());
        SCOPED_TRACE(r[0] + " " + r[1]);
        CBigInteger const a(r[0].c_str()), b(r[1].c_str());
        EXPECT_EQ(r[0], a.ToString());
        EXPECT_EQ(r[2], (a + b).ToString());
        EXPECT_EQ(r[3], (a - b).ToString());
        EXPECT_EQ(r[4], (a * b).ToString());
        if (r[5] != "-")
            EXPECT_EQ(r[5], (a / b).ToString());
        if (r[6] != "-")
        {
            EXPECT_EQ(r[6], (a % b).ToString());
            CBigInteger q = a, m = a;
            q /= b;
            m %= b;
            EXPECT_EQ(r[5], q.ToString());
            EXPECT_EQ(r[6], m.ToString());
        }
        int const cmp = std::stoi(r[7]);
        EXPECT_EQ(cmp == 0, a == b);
        EXPECT_EQ(cmp != 0, a != b);
        EXPECT_EQ(cmp < 0, a < b);
        EXPECT_EQ(cmp > 0, a > b);
        EXPECT_EQ(cmp <= 0, a <= b);
        EXPECT_EQ(cmp >= 0, a >= b);
        if (r[0] != "0") // the root of 0 stops on a zero divisor
            EXPECT_EQ(r[8], a.GetAbs().SquareRoot().ToString()) << "isqrt";
    }
}

TEST(BigIntegerParse, TextForms)
{
    struct Case
    {
        char const *text;
        char const *expected;
    };
    Case const cases[] = {
        {"0", "0"},         {"-0", "0"},          {"00123", "123"},  {"  -42\t\r\n", "-42"},
        {"", "0"},          {"   ", "0"},         {"-", "0"},        {"+5", "5"},
        {"12 34", "34"},    {"1-2", "2"},         {"5-", "0"},       {"1.5e3", "1500"},
        {"2.7", "3"},       {"1.5", "1"},         {"-2.5", "-2"},    {"2.51", "3"},
        {"1E2", "100"},     {"-0.4", "0"},        {"123456789012345678901234567890", "123456789012345678901234567890"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, CBigInteger(c.text).ToString());
    }
    EXPECT_EQ(CBigInteger(), CBigInteger("-0"));
    EXPECT_EQ("The string representing a Decimal, contained an invalid char at position 1 [1x].",
              MessageOf<CMxInvalidValueException>([] { CBigInteger("1x"); }));
}

TEST(BigIntegerConstruct, FromMachineNumbers)
{
    struct Case
    {
        CBigInteger value;
        char const *expected;
    };
    Case const cases[] = {
        {CBigInteger(0), "0"},
        {CBigInteger(INT_MIN), "-2147483648"},
        {CBigInteger(INT_MAX), "2147483647"},
        {CBigInteger(4294967295u), "4294967295"},
        {CBigInteger(LLONG_MIN), "-9223372036854775808"},
        {CBigInteger(ULLONG_MAX), "18446744073709551615"},
        {CBigInteger(ULONG_MAX), "18446744073709551615"},
        {CBigInteger(2.5), "2"},
        {CBigInteger(2.6), "3"},
        {CBigInteger(-2.5), "-2"},
        {CBigInteger(-2.6), "-3"},
        {CBigInteger(0.4), "0"},
        {CBigInteger(1e15), "1000000000000000"},
        {CBigInteger(CDecimal("7.5")), "7"},
        {CBigInteger::Pow10(0), "1"},
        {CBigInteger::Pow10(20), "100000000000000000000"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(c.expected, c.value.ToString());
    }
    EXPECT_EQ("ERROR: Value is not a finite number.",
              MessageOf<CMxInvalidValueException>([] { CBigInteger(1.0 / 0.0); }));
}

TEST(BigIntegerSign, NegativeZeroAndInPlaceNegation)
{
    CBigInteger negativeZero("0");
    -negativeZero; // negates in place
    EXPECT_EQ("0", negativeZero.ToString());
    EXPECT_TRUE(negativeZero == CBigInteger(0));
    EXPECT_TRUE(negativeZero < CBigInteger(0)); // the sign still orders

    CBigInteger a(5);
    CBigInteger &same = -a;
    EXPECT_EQ(&a, &same);
    EXPECT_EQ("-5", a.ToString());
    EXPECT_EQ("5", a.GetNegative().ToString());
    EXPECT_EQ("5", a.GetAbs().ToString());
    EXPECT_EQ("-5", a.ToString());
    a.Abs();
    EXPECT_EQ("5", a.ToString());
    a.Negate();
    EXPECT_EQ("-5", a.ToString());
}

TEST(BigIntegerDivision, GuardsAndSigns)
{
    CBigInteger const seven(7), minusSeven(-7), two(2), minusTwo(-2), zero(0);
    EXPECT_EQ("-3", (seven / minusTwo).ToString());
    EXPECT_EQ("3", (minusSeven / minusTwo).ToString());
    EXPECT_EQ("-1", (minusSeven % two).ToString());
    EXPECT_EQ("0", (zero / seven).ToString());
    EXPECT_EQ("0", (zero % seven).ToString());

    struct Case
    {
        char const *name;
        void (*run)();
        char const *message;
    };
    Case const cases[] = {
        {"a / 0", [] { CBigInteger(7) / CBigInteger(0); }, "ERROR: Overflow in operator/."},
        {"0 / 0", [] { CBigInteger(0) / CBigInteger(0); }, "ERROR: Overflow in operator/."},
        {"a % -2", [] { CBigInteger(7) % CBigInteger(-2); }, "ERROR: Overflow in operator%."},
        {"a % 0", [] { CBigInteger(7) % CBigInteger(0); }, "ERROR: Overflow in operator%."},
        {"a /= -2", [] { CBigInteger a(7); a /= CBigInteger(-2); }, "ERROR: Overflow in operator /=."},
        {"a /= 0", [] { CBigInteger a(7); a /= CBigInteger(0); }, "ERROR: Overflow in operator /=."},
        {"a %= -2", [] { CBigInteger a(7); a %= CBigInteger(-2); }, "ERROR: Overflow in operator%=."},
        {"a %= 0", [] { CBigInteger a(7); a %= CBigInteger(0); }, "ERROR: Overflow in operator%=."},
        {"sqrt -1", [] { CBigInteger(-1).SquareRoot(); }, "ERROR: Negative Number in function SquareRoot()."},
        {"sqrt 0", [] { CBigInteger(0).SquareRoot(); }, "ERROR: Overflow in operator/."},
        {"int max+1", [] { (void)static_cast<int>(CBigInteger(2147483648LL)); }, "ERROR: Value out of bound of int."},
        {"int min-1", [] { (void)static_cast<int>(CBigInteger(-2147483649LL)); }, "ERROR: Value out of bound of int."},
        {"ll max+1", [] { (void)static_cast<long long>(CBigInteger("9223372036854775808")); },
         "ERROR: Value out of bound of LONGLONG."},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.message, MessageOf<CMxInvalidValueException>(c.run));
    }
}

TEST(BigIntegerConvert, MachineBounds)
{
    EXPECT_EQ(INT_MAX, static_cast<int>(CBigInteger("2147483647")));
    EXPECT_EQ(INT_MIN, static_cast<int>(CBigInteger("-2147483648")));
    EXPECT_EQ(0, static_cast<int>(CBigInteger("-0")));
    EXPECT_EQ(LLONG_MAX, static_cast<long long>(CBigInteger("9223372036854775807")));
    EXPECT_EQ(LLONG_MIN, static_cast<long long>(CBigInteger("-9223372036854775808")));
    EXPECT_EQ(-1234567890123LL, static_cast<long long>(CBigInteger("-1234567890123")));
}

TEST(BigIntegerSquareRoot, SmallValuesAgainstDefinition)
{
    EXPECT_EQ("3", CBigInteger(15).SquareRoot().ToString());
    EXPECT_EQ("4", CBigInteger(16).SquareRoot().ToString());
    for (long long v = 1; v < 2000; ++v)
    {
        long long const root = static_cast<long long>(CBigInteger(v).SquareRoot());
        ASSERT_TRUE(root * root <= v && (root + 1) * (root + 1) > v) << v;
    }
}
