#include "runtime/Compression.h"

#include "support/FileTestSupport.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;
using namespace MxTestSupport;

namespace
{
std::string Bytes(CBinaryData const &data)
{
    return data.GetLength() ? std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength())
                            : std::string();
}

CBinaryData Data(std::string const &bytes)
{
    CBinaryData data;
    data.SetBuffer(reinterpret_cast<unsigned char const *>(bytes.data()), static_cast<unsigned long>(bytes.size()));
    return data;
}

std::string Document(int items)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<order id=\"A7\">\n";
    for (int i = 0; i < items; ++i)
        text += "\t<item>Widget no. " + std::to_string(i) + " \xC3\xA9</item>\n";
    return text + "</order>\n";
}

// Bytes that no compressor shrinks.
std::string Noise(std::size_t size)
{
    std::string bytes;
    unsigned state = 12345;
    for (std::size_t i = 0; i < size; ++i)
    {
        state = state * 1103515245u + 12345u;
        bytes.push_back(static_cast<char>(state >> 24));
    }
    return bytes;
}
} // namespace

TEST(Compression, OutputIsReadByZlibItself)
{
    struct Case
    {
        int type;
        int windowBits; // what an independent reader expects
        unsigned char first, second;
    };
    // Level 1: gzip says "fastest" in its flags byte, zlib's header is 78 01.
    Case const cases[] = {{1, 31, 0x1F, 0x8B}, {2, 15, 0x78, 0x01}};
    for (int items : {8, 100, 5000})
        for (auto const &c : cases)
        {
            SCOPED_TRACE("type " + std::to_string(c.type) + ", items " + std::to_string(items));
            std::string const plain = Document(items);
            CBinaryData data = Data(plain);
            Compress(data, c.type);
            std::string const packed = Bytes(data);
            ASSERT_GE(packed.size(), 2u);
            EXPECT_EQ(c.first, static_cast<unsigned char>(packed[0]));
            EXPECT_EQ(c.second, static_cast<unsigned char>(packed[1]));
            EXPECT_LT(packed.size(), plain.size());
            EXPECT_EQ(plain, Inflate(packed, c.windowBits));
        }
}

TEST(Compression, GzipOutputIsReadByTheGzipProgram)
{
    TempDir dir;
    std::string const plain = Document(300);
    CBinaryData data = Data(plain);
    Compress(data, 1);
    WriteFileBytes(dir.Path("out.gz"), Bytes(data));
    EXPECT_EQ(plain, GunzipWithTool(dir.Path("out.gz")));
}

TEST(Compression, OtherTypesLeaveTheDataAlone)
{
    for (int type : {0, 3, -1, 100})
    {
        SCOPED_TRACE(type);
        CBinaryData data = Data("<a/>");
        Compress(data, type);
        EXPECT_EQ("<a/>", Bytes(data));
    }
}

// The output buffer is the input's size and never grows: whatever does not
// shrink fails, with the code of the finishing call (Z_OK when it ran out of
// room during that call, Z_BUF_ERROR when there was none left to begin with).
TEST(Compression, InputThatDoesNotShrinkFails)
{
    for (int type : {1, 2})
        for (std::size_t size = 0; size <= 300; ++size)
        {
            SCOPED_TRACE("type " + std::to_string(type) + ", size " + std::to_string(size));
            std::string const plain = Noise(size);
            CBinaryData data = Data(plain);
            std::string const error = ErrorOf([&] { Compress(data, type); });
            EXPECT_TRUE(error == "Failed to compress data. [Error Code: 0]" ||
                        error == "Failed to compress data. [Error Code: -5]")
                << error;
            EXPECT_EQ(plain, Bytes(data)) << "a failure keeps the input";
        }
    CBinaryData tiny = Data("<a/>");
    EXPECT_EQ("Failed to compress data. [Error Code: -5]", ErrorOf([&] { Compress(tiny, 1); }));
}

TEST(Compression, SmallestCompressibleInputsRoundTrip)
{
    // Around the break-even size, every outcome is either a failure or exact.
    for (int type : {1, 2})
        for (std::size_t size = 1; size <= 200; ++size)
        {
            SCOPED_TRACE("type " + std::to_string(type) + ", size " + std::to_string(size));
            std::string const plain(size, 'x');
            CBinaryData data = Data(plain);
            std::string const error = ErrorOf([&] { Compress(data, type); });
            if (error == "no error")
                EXPECT_EQ(plain, Inflate(Bytes(data), type == 1 ? 31 : 15));
            else
                EXPECT_EQ(plain, Bytes(data));
        }
}

TEST(Decompression, ReadsStreamsOfIndependentProducers)
{
    TempDir dir;
    std::string const plain = Document(2000);
    struct Case
    {
        char const *producer;
        std::string packed;
    };
    Case const cases[] = {{"zlib compress2", ZlibCompress(plain)}, {"gzip program", GzipWithTool(dir, plain)}};
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.producer);
        CBinaryData result;
        ASSERT_TRUE(Decompress(reinterpret_cast<unsigned char const *>(c.packed.data()),
                               static_cast<unsigned long>(c.packed.size()), result));
        EXPECT_EQ(plain, Bytes(result));
        CBinaryData inPlace = Data(c.packed);
        EXPECT_TRUE(Decompress(inPlace));
        EXPECT_EQ(plain, Bytes(inPlace));
    }
}

TEST(Decompression, AnythingButACompleteStreamIsLeftAsItIs)
{
    TempDir dir;
    std::string const plain = Document(50);
    std::string const packed = ZlibCompress(plain);
    std::string broken = packed;
    broken[broken.size() / 2] ^= 0x55;
    // The gzip trailer's size is only a hint for the first allocation.
    std::string const gz = GzipWithTool(dir, plain);
    std::string hugeSize = gz, smallSize = gz;
    hugeSize.replace(hugeSize.size() - 4, 4, "\xFF\xFF\xFF\xFF");
    smallSize.replace(smallSize.size() - 4, 4, std::string("\x01\0\0\0", 4));
    struct Case
    {
        char const *name;
        std::string bytes;
    };
    Case const cases[] = {
        {"empty", ""},
        {"plain XML", plain},
        {"zlib header, then text", std::string("\x78\x9C", 2) + "<a/>"},
        {"gzip magic alone", "\x1F\x8B"},
        {"corrupted middle", broken},
        {"UTF-16 byte order mark", std::string("\xFF\xFE<\0a\0/\0>\0", 10)},
        {"gzip claiming 4 GiB", hugeSize},
        {"gzip claiming 1 byte", smallSize},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        CBinaryData result = Data("stale");
        EXPECT_FALSE(Decompress(reinterpret_cast<unsigned char const *>(c.bytes.data()),
                                static_cast<unsigned long>(c.bytes.size()), result));
        EXPECT_EQ(0u, result.GetLength());
        CBinaryData inPlace = Data(c.bytes);
        EXPECT_FALSE(Decompress(inPlace));
        EXPECT_EQ(c.bytes, Bytes(inPlace));
    }
    // Every truncation of a valid stream, including the empty one.
    for (std::size_t n = 0; n < packed.size(); ++n)
    {
        SCOPED_TRACE(n);
        CBinaryData result;
        EXPECT_FALSE(Decompress(reinterpret_cast<unsigned char const *>(packed.data()),
                                static_cast<unsigned long>(n), result));
    }
}

TEST(Decompression, OutputBeyondTheLimitRaises)
{
    std::string const zeros(1 << 20, '\0');
    std::string const packed = ZlibCompress(zeros); // about a thousandth of the size
    auto const *bytes = reinterpret_cast<unsigned char const *>(packed.data());
    auto const length = static_cast<unsigned long>(packed.size());
    CBinaryData result;
    EXPECT_EQ("Decompressed data exceeds the limit of 65536 bytes",
              ErrorOf([&] { Decompress(bytes, length, result, 65536); }));
    EXPECT_EQ("Decompressed data exceeds the limit of 1048575 bytes",
              ErrorOf([&] { Decompress(bytes, length, result, (1 << 20) - 1); }));
    ASSERT_TRUE(Decompress(bytes, length, result, 1 << 20));
    EXPECT_EQ(zeros.size(), result.GetLength());
    // An empty text compressed is a complete stream of nothing.
    std::string const nothing = ZlibCompress("");
    CBinaryData stale = CBinaryData("stale");
    EXPECT_TRUE(Decompress(reinterpret_cast<unsigned char const *>(nothing.data()),
                           static_cast<unsigned long>(nothing.size()), stale));
    EXPECT_EQ(0u, stale.GetLength());
}
