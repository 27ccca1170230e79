#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"
#include "values/Base64.h"
#include "values/BinaryData.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

using namespace MxXmlLib;

namespace
{

std::string MessageOf(void (*f)())
{
    try
    {
        f();
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "no exception";
}

std::string Hex(CBinaryData const &data)
{
    return data.GetAsHexString();
}

CBinaryData FromHex(char const *hex)
{
    CBinaryData data;
    data.SetAsHexString(hex);
    return data;
}

// Restores the process-wide text settings a test changes.
struct EncodingGuard
{
    unsigned codePage = GetLocalCharEncoding();
    bool asciiOnly = IsASCIIOnly();
    ~EncodingGuard()
    {
        SetLocalCharEncoding(codePage);
        ASCIIOnly(asciiOnly);
    }
};

} // namespace

// Python's base64 and binascii on one random buffer of every length from 0 to
// 300 bytes; decoding also with line breaks and blanks in the text.
TEST(BinaryDataOracle, HexAndBase64MatchPython)
{
    std::ifstream in(std::string(MX_TEST_DATA_DIR) + "/base64_vectors.txt");
    ASSERT_TRUE(in.good());
    std::string line;
    int rows = 0;
    while (std::getline(in, line))
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        std::string hex, b64;
        fields >> hex >> b64;
        if (hex == "-")
            hex.clear();
        if (b64 == "-")
            b64.clear();
        SCOPED_TRACE(hex);
        CBinaryData data;
        data.SetAsHexString(hex);
        EXPECT_EQ(hex, data.GetAsHexString());
        EXPECT_EQ(b64, data.GetAsBase64());
        EXPECT_EQ(hex, CBinaryData::GetAsHexString(data.GetData(), data.GetLength()));

        CBinaryData decoded;
        decoded.SetAsBase64(b64);
        EXPECT_EQ(hex, decoded.GetAsHexString());
        std::string broken;
        for (std::size_t i = 0; i < b64.size(); ++i)
            broken += (i % 19 == 7 ? "\r\n" : i % 23 == 5 ? " \t" : "") + std::string(1, b64[i]);
        decoded.SetAsBase64(broken);
        EXPECT_EQ(hex, decoded.GetAsHexString());
        ++rows;
    }
    EXPECT_EQ(301, rows);
}

TEST(BinaryDataBase64, LenientDecoding)
{
    struct Case
    {
        char const *text;
        char const *hex;
    };
    Case const cases[] = {
        {"Zm9v", "666F6F"},         {"Zg==", "66"},         {"Zm8=", "666F"},
        {"Zm\n9v", "666F6F"},       {"Zg==Zg==", "660660"}, {"\xDAm9v", "666F6F"}, // high bit masked off
        {"Zm9v*", ""},              {"Z", ""},              {"QQ", "41"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text);
        CBinaryData data;
        data.SetAsBase64(c.text);
        EXPECT_EQ(c.hex, Hex(data));
        EXPECT_NE(nullptr, data.GetData());
    }
    CBinaryData stray;
    stray.SetAsBase64("ab*c");
    EXPECT_EQ(0u, stray.GetLength());
    EXPECT_NE(CBinaryData(), stray); // a block of length 0 is not an empty handle

    EXPECT_EQ("AAEC", FromHex("000102").GetAsBase64());
    EXPECT_EQ("AA==", FromHex("00").GetAsBase64());
    EXPECT_EQ("", CBinaryData().GetAsBase64());

    std::string const bytes(100, 'x');
    EXPECT_EQ(std::string::npos, CBase64(bytes.data(), bytes.size()).Encode().find('\n'));
}

TEST(BinaryDataHex, ParseAndErrors)
{
    EXPECT_EQ("ABC1", FromHex("abC1").GetAsHexString());
    EXPECT_EQ(2u, FromHex("abC1").GetLength());
    EXPECT_EQ(CBinaryData(), FromHex(""));
    EXPECT_EQ("", CBinaryData::GetAsHexString(nullptr, 4));

    struct Case
    {
        char const *name;
        void (*run)();
        char const *message;
    };
    Case const cases[] = {
        {"odd", [] { FromHex("ABC"); }, "Invalid length in hex string"},
        {"high", [] { FromHex("G0"); }, "Invalid char in hex string [G]"},
        {"low", [] { FromHex("0g"); }, "Invalid char in hex string [g]"},
        {"blank", [] { FromHex("00 1"); }, "Invalid char in hex string [ ]"},
        {"index empty", [] { CBinaryData const d; d[0]; }, "Index Out of range [0]"},
        {"index past", [] { CBinaryData const d("abc"); d[4]; }, "Index Out of range [4]"},
        {"index negative", [] { CBinaryData d("abc"); d[-1]; }, "Index Out of range [-1]"},
        {"index behind adopted", [] { CBinaryData const d(new unsigned char[2](), 2, true); d[2]; },
         "Index Out of range [2]"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.message, MessageOf(c.run));
    }
    CBinaryData const own("abc");
    EXPECT_EQ(0, own[3]); // the byte behind the data
    EXPECT_EQ('c', own[2]);
}

TEST(BinaryDataSharing, CopyOnWrite)
{
    CBinaryData a("hello");
    CBinaryData b(a);
    EXPECT_EQ(a.GetData(), b.GetData());
    b.Append(" world");
    EXPECT_EQ("hello", std::string(reinterpret_cast<char const *>(a.GetData()), a.GetLength()));
    EXPECT_EQ(11u, b.GetLength());
    EXPECT_NE(a, b);

    CBinaryData c = a;
    c[0] = 'J'; // the writable index un-shares
    EXPECT_EQ('h', a[0]);
    EXPECT_EQ('J', c[0]);

    CBinaryData d(a);
    unsigned char *released = d.ReleaseData();
    EXPECT_NE(released, a.GetData());
    EXPECT_EQ(0, std::memcmp(released, "hello", 5));
    EXPECT_EQ(CBinaryData(), d);
    EXPECT_EQ(5u, a.GetLength());
    delete[] released;
    EXPECT_EQ(nullptr, CBinaryData().ReleaseData());

    CBinaryData &self = a;
    a = self; // Clear runs before the source is read
    EXPECT_EQ(nullptr, a.GetData());
    EXPECT_EQ(CBinaryData(), a);
}

TEST(BinaryDataBuffer, AppendGrowthAndAliasing)
{
    CBinaryData adopted(new unsigned char[4]{1, 2, 3, 4}, 4, true);
    unsigned char const *first = adopted.GetData();
    adopted.Append(reinterpret_cast<unsigned char const *>("\x05\x06"), 2); // 6 bytes: capacity becomes 12
    unsigned char const *grown = adopted.GetData();
    EXPECT_NE(first, grown);
    adopted.Append("abcdef"); // 12 bytes: still inside
    EXPECT_EQ(grown, adopted.GetData());
    adopted.Append('g'); // 13: grows again
    EXPECT_NE(grown, adopted.GetData());
    EXPECT_EQ("01020304050661626364656667", Hex(adopted));

    CBinaryData self("ab");
    self.Append(self);
    self.Append(self.GetData() + 1, 2);
    EXPECT_EQ("abab" "ba", std::string(reinterpret_cast<char const *>(self.GetData()), self.GetLength()));
    self.SetBuffer(self.GetData() + 2, 3);
    EXPECT_EQ("abb", std::string(reinterpret_cast<char const *>(self.GetData()), self.GetLength()));

    CBinaryData empty;
    empty.Append(static_cast<unsigned char const *>(nullptr), 0);
    empty.SetBuffer("");
    EXPECT_EQ(CBinaryData(), empty);
    EXPECT_EQ(CBinaryData(), CBinaryData(""));
    EXPECT_EQ(CBinaryData(), CBinaryData(new unsigned char[1], 0, true));
    EXPECT_EQ(CBinaryData("xy"), CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>("xy")), 2, false));
    empty.Append(std::string("z"));
    EXPECT_EQ(CBinaryData("z"), empty);
}

TEST(BinaryDataText, WideAndLocal)
{
    struct Case
    {
        std::wstring text;
        char const *hex;
    };
    Case const wide[] = {
        {L"abc", "616263"},
        {L"h\u00e9\u20ac\U0001F600", "68C3A9E282ACF09F9880"},
        {{wchar_t(0xD83D), wchar_t(0xDE00)}, "F09F9880"}, // a surrogate pair joins
        {{L'a', wchar_t(0xD83D)}, ""},                    // lone high surrogate
        {{L'a', wchar_t(0xDE00), L'b'}, ""},              // lone low surrogate
        {{wchar_t(0x110000)}, ""},
        {L"", ""},
    };
    for (auto const &c : wide)
    {
        SCOPED_TRACE(c.hex);
        CBinaryData const data(c.text.c_str());
        EXPECT_EQ(c.hex, Hex(data));
        if (!*c.hex)
            EXPECT_EQ(CBinaryData(), data);
    }

    EncodingGuard guard;
    EXPECT_EQ("68C3A9", Hex(LocalToUtf8("h\xC3\xA9")));
    EXPECT_EQ("4100E9003DD800DE", Hex(LocalToUtf16("A\xC3\xA9\xF0\x9F\x98\x80")));
    EXPECT_EQ(CBinaryData(), LocalToUtf16(""));
    SetLocalCharEncoding(1252);
    EXPECT_EQ("C3A9E282AC", Hex(LocalToUtf8("\xE9\x80")));
    EXPECT_EQ("E900AC20", Hex(LocalToUtf16("\xE9\x80")));
    ASCIIOnly(true);
    EXPECT_EQ("E980", Hex(LocalToUtf8("\xE9\x80")));
    EXPECT_EQ("E900AC20", Hex(LocalToUtf16("\xE9\x80"))); // UTF-16 ignores ASCIIOnly
}
