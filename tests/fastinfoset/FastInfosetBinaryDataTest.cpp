#include "FiTestSupport.h"

#include "fastinfoset/FastInfosetBinaryData.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using namespace MxFiTest;

namespace
{
std::string Encoded(unsigned long algorithm, char const *text)
{
    CFastInfosetBinaryData data;
    data.SetAsEncodedString(algorithm, text);
    return Hex(Bytes(data));
}

std::string Decoded(unsigned long algorithm, char const *hex)
{
    CFastInfosetBinaryData data(Data(Unhex(hex)));
    return data.GetAsString(algorithm);
}
} // namespace

struct EncodingCase
{
    unsigned long algorithm;
    char const *text;
    char const *hex;
};

TEST(FastInfosetBinaryData, EncodesOneValue)
{
    EncodingCase const cases[] = {
        {1, "DEADbeef", "DE AD BE EF\n"},
        {2, "AAF/gP7/SGk=", "00 01 7F 80 FE FF 48 69\n"},
        {3, "-2", "FF FE\n"},
        {3, "32767", "7F FF\n"},
        {4, "123456789", "07 5B CD 15\n"},
        {5, "-9223372036854775808", "80 00 00 00 00 00 00 00\n"},
        {6, "true", "38\n"},
        {6, "0", "30\n"},
        {7, "1.5", "3F C0 00 00\n"},
        {8, "0.1", "3F B9 99 99 99 99 99 9A\n"},
        {9, "123E4567E89B12D3A456426614174000", "12 3E 45 67 E8 9B 12 D3 A4 56 42 66 14 17 40 00\n"},
        {10, "a<b", "61 3C 62\n"},
    };
    for (EncodingCase const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.hex, Encoded(c.algorithm, c.text));
    }
    EXPECT_EQ("Unknown byte encoding.", ErrorOf([] { Encoded(0, "1"); }));
    EXPECT_EQ("Unknown byte encoding.", ErrorOf([] { Encoded(11, "1"); }));
    EXPECT_NE("no error", ErrorOf([] { Encoded(3, "40000"); }));          // out of range for short
    EXPECT_NE("no error", ErrorOf([] { Encoded(9, "123e4567-e89b"); })); // hyphens are no hex digits
}

TEST(FastInfosetBinaryData, DecodesGroupsOfValues)
{
    EncodingCase const cases[] = {
        {1, "DEAD", "de ad"},
        {2, "AAF/gP7/SGk=", "00 01 7F 80 FE FF 48 69"},
        {3, "0 1 -1 32767 -32768", "0000 0001 FFFF 7FFF 8000"},
        {4, "0 -1 2147483647 -2147483648", "00000000 FFFFFFFF 7FFFFFFF 80000000"},
        {5, "-1 1234567890123", "FFFFFFFFFFFFFFFF 0000011F71FB04CB"},
        {6, "true", "38"},
        {6, "false", "30"},
        // Bits 3..0 of the first octet, 7..0 of the next, stopping above the
        // seven unused bits: octets are separated, bits are not.
        {6, "truefalsetruetrue false", "7B 00"},
        {8, "0 3.5 -0.125 0.1 1e+300", "0000000000000000 400C000000000000 BFC0000000000000 3FB999999999999A "
                                       "7E37E43C8800759C"},
        {9, "123E4567E89B12D3A456426614174000 00000000000000000000000000000001",
         "123E4567E89B12D3A456426614174000 00000000000000000000000000000001"},
    };
    for (EncodingCase const &c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.text, Decoded(c.algorithm, c.hex));
    }
    // A float is rebuilt from the first octet of its group alone: 3F 80 00 00
    // reads as the pattern 3F 3F 3F 3F.
    EXPECT_EQ("0.7470588", Decoded(7, "3F 80 00 00"));
    EXPECT_EQ("0 0.7470588", Decoded(7, "00000000 3FC00000"));
}

TEST(FastInfosetBinaryData, RaisesOnUnevenSizesAndUnknownNumbers)
{
    struct ErrorCase
    {
        unsigned long algorithm;
        char const *hex;
        char const *message;
    };
    ErrorCase const cases[] = {
        {3, "00 01 02", "Invalid value for SHORT byte encoding."},
        {4, "00 01", "Invalid value for INT byte encoding."},
        {5, "00 01 02 03", "Invalid value for LONG byte encoding."},
        {7, "00 01 02", "Invalid value for FLOAT byte encoding."},
        {8, "00", "Invalid value for DOUBLE byte encoding."},
        {9, "00 01", "Invalid value for UUID byte encoding."},
        {10, "41", "Unknown byte encoding."},
        {0, "41", "Unknown byte encoding."},
        {11, "41", "Unknown byte encoding."},
    };
    for (ErrorCase const &c : cases)
    {
        SCOPED_TRACE(c.algorithm);
        EXPECT_EQ(c.message, ErrorOf([&] { Decoded(c.algorithm, c.hex); }));
    }
    // An empty object reads as "" whatever the number.
    for (unsigned long algorithm : {0ul, 3ul, 10ul, 99ul})
        EXPECT_EQ("", CFastInfosetBinaryData().GetAsString(algorithm));
}
