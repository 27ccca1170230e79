#include "runtime/FormatString.h"
#include "runtime/TextEncoding.h"
#include "runtime/platform/Platform.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

using namespace MxXmlLib;

namespace
{
// Restores the process-wide settings that a test changes.
class EncodingSettings : public ::testing::Test
{
protected:
    void TearDown() override
    {
        ASCIIOnly(false);
        SetLocalCharEncoding(Platform::DefaultLocalCodePage);
    }
};

std::string FromUtf8(std::string const &utf8)
{
    std::string out;
    Utf8ToLocal(out, reinterpret_cast<unsigned char const *>(utf8.data()), static_cast<unsigned>(utf8.size()));
    return out;
}
} // namespace

TEST_F(EncodingSettings, Utf8ToLocalPerCodePage)
{
    struct Case
    {
        unsigned codePage;
        char const *utf8;
        std::string local;
    };
    Case const cases[] = {
        {65001, "plain", "plain"},
        {65001, "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {65001, "bad \xC3 end", "bad \xEF\xBF\xBD end"},       // truncated sequence
        {65001, "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"}, // encoded surrogate
        {0, "caf\xC3\xA9", "caf\xC3\xA9"},                       // the system code page is UTF-8
        {1252, "caf\xC3\xA9 \xE2\x82\xAC \xE2\x80\x9C", "caf\xE9 \x80 \x93"},
        {1252, "\xE4\xB8\xAD", "?"},                             // not in the code page
        {28591, "caf\xC3\xA9 \xE2\x82\xAC", "caf\xE9 ?"},
        {20127, "caf\xC3\xA9", "caf?"},
        {28592, "\xC5\x82", "\xB3"},                             // through iconv: ISO-8859-2
        {1251, "\xD0\x96", "\xC6"},                              // through iconv: CP1251
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(std::to_string(c.codePage) + " " + c.utf8);
        SetLocalCharEncoding(c.codePage);
        EXPECT_EQ(c.local, FromUtf8(c.utf8));
    }
}

TEST_F(EncodingSettings, UnknownCodePageGivesEmptyText)
{
    SetLocalCharEncoding(424242);
    EXPECT_EQ("", FromUtf8("caf\xC3\xA9"));
    EXPECT_EQ("ascii", FromUtf8("ascii")); // ASCII never reaches the system
}

TEST_F(EncodingSettings, TextEndsAtAnEmbeddedZero)
{
    EXPECT_EQ("ab", FromUtf8(std::string("ab\0cd", 5)));
    EXPECT_EQ("\xC3\xA9", FromUtf8(std::string("\xC3\xA9\0cd", 5)));
    SetLocalCharEncoding(1252);
    EXPECT_EQ("\xE9", FromUtf8(std::string("\xC3\xA9\0cd", 5)));
    EXPECT_EQ("", FromUtf8(""));
}

TEST_F(EncodingSettings, AsciiOnlyPassesBytesThrough)
{
    ASCIIOnly(true);
    SetLocalCharEncoding(1252);
    EXPECT_EQ("caf\xC3\xA9", FromUtf8("caf\xC3\xA9"));
    EXPECT_EQ(std::string("a\0b", 3), FromUtf8(std::string("a\0b", 3)));
}

TEST_F(EncodingSettings, WideToLocal)
{
    EXPECT_EQ("", Utf16ToLocal(L"", 0));
    EXPECT_EQ("caf\xC3\xA9 \xF0\x9F\x98\x80", Utf16ToLocal(L"caf\u00E9 \U0001F600", 6));
    EXPECT_EQ("ab", Utf16ToLocal(L"ab\0c", 4));
    SetLocalCharEncoding(1252);
    EXPECT_EQ("caf\xE9 \x80?", Utf16ToLocal(L"caf\u00E9 \u20AC\u4E2D", 7));
}

TEST(FormatString, MatchesPrintf)
{
    struct Case
    {
        std::string actual;
        char const *expected;
    };
    Case const cases[] = {
        {FormatString("%s at line %d", "syntax error", 3), "syntax error at line 3"},
        {FormatString("%%d %s", "x"), "%d x"},
        {FormatString("[%5s|%-5s|%.2s]", "ab", "ab", "abcd"), "[   ab|ab   |ab]"},
        {FormatString("%08x %08X", 0xBEEFu, 0xBEEFu), "0000beef 0000BEEF"},
        {FormatString("%02u:%u", 7u, 4294967295u), "07:4294967295"},
        {FormatString("%I64d %lld", -9223372036854775807LL - 1, 42LL), "-9223372036854775808 42"},
        {FormatString("%.7g %.16g", 1.0 / 3, 2.0 / 3), "0.3333333 0.6666666666666666"},
        {FormatString("%*.*f", 8, 3, 3.14159), "   3.142"},
        {FormatString("%.13f", 1.0 / 3), "0.3333333333333"},
        {FormatString("%c%c", 'o', 'k'), "ok"},
        {FormatString("%S|%ls", L"wide", L"caf\u00E9"), "wide|caf\xC3\xA9"},
        {FormatString("%s", static_cast<char const *>(nullptr)), "(null)"},
        {FormatString("%d %i", INT_MIN, INT_MAX), "-2147483648 2147483647"},
        {FormatString("trailing %"), "trailing %"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(c.expected, c.actual);
    }
}

TEST(FormatString, LongArgumentsAreNeverTruncated)
{
    std::string const big(100000, 'x');
    std::string const out = FormatString("<%s>", big.c_str());
    EXPECT_EQ(big.size() + 2, out.size());
    EXPECT_EQ('>', out.back());
    EXPECT_EQ(400, FormatString("%400d", 1).size());
}
