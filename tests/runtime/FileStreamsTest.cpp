#include "runtime/BinaryStream.h"
#include "runtime/FileBinaryStream.h"
#include "runtime/FileTextStream.h"
#include "runtime/TextEncoding.h"

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

std::string BytesOf(char const *text, int encoding)
{
    CTextStream stream(encoding);
    stream.Start();
    stream.Write(text);
    return Bytes(stream.GetBytes());
}

// "a", e acute, the euro sign and U+1F600 in UTF-8 local text.
char const kMixed[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
std::string const kMixedUtf16("a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE", 10);
} // namespace

TEST(TextStreamBytes, EachEncodingIsExact)
{
    struct Case
    {
        int encoding;
        std::string expected;
    };
    Case const cases[] = {{1, kMixed}, {2, kMixedUtf16}, {3, kMixedUtf16}};
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.encoding);
        EXPECT_EQ(c.expected, BytesOf(kMixed, c.encoding));
    }
    for (int encoding : {0, 4, -1})
    {
        SCOPED_TRACE(encoding);
        CTextStream stream(encoding);
        stream.Start();
        stream.Write("<a/>");
        EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
                  ErrorOf([&] { stream.GetBytes(); }));
        EXPECT_STREQ("<a/>", stream.Text()) << "the text itself stays available";
    }
}

// UTF-8 local text that is well formed is passed through as it stands; the
// rest goes the long way. Both must agree with LocalToUtf8 byte for byte.
TEST(TextStreamBytes, Utf8AgreesWithTheGeneralConversion)
{
    char const *const texts[] = {
        "",          "plain ascii <a b='c'/>", kMixed,         "\xC0\xAF",     "\xED\xA0\x80",
        "\xF4\x90\x80\x80", "\xE2\x82",  "x\x80y",        "\xF0\x9F\x98", "\xEF\xBF\xBF\xF4\x8F\xBF\xBF",
        "12345678\xC3\xA9" "12345678",
    };
    for (char const *text : texts)
    {
        SCOPED_TRACE(CBinaryData::GetAsHexString(reinterpret_cast<unsigned char const *>(text),
                                                 static_cast<unsigned long>(std::strlen(text))));
        EXPECT_EQ(Bytes(LocalToUtf8(text)), BytesOf(text, 1));
        EXPECT_EQ(Bytes(LocalToUtf16(text)), BytesOf(text, 2));
    }
    // A single-byte local code page converts too.
    SetLocalCharEncoding(1252);
    EXPECT_EQ("\xC3\xA9\xE2\x82\xAC", BytesOf("\xE9\x80", 1));
    EXPECT_EQ(std::string("\xE9\0\xAC\x20", 4), BytesOf("\xE9\x80", 2));
    SetLocalCharEncoding(65001);
}

TEST(BinaryStream, GathersOctets)
{
    CBinaryStream stream;
    stream.Put(0);
    stream.Put(0xFF);
    unsigned char const more[] = {1, 2, 3};
    stream.Write(more, 3);
    EXPECT_EQ(std::string("\0\xFF\x01\x02\x03", 5), Bytes(stream.GetData()));
    EXPECT_EQ(5u, stream.GetLength());
}

TEST(FileBinaryStream, WritesTheBufferWithAByteOrderMarkForUtf16)
{
    TempDir dir;
    struct Case
    {
        int encoding;
        std::string prefix;
    };
    Case const cases[] = {{0, ""}, {1, ""}, {2, "\xFF\xFE"}, {3, "\xFF\xFE"}};
    std::string const payload("\x1F\x8B\0data", 7);
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.encoding);
        std::string const path = dir.Path("out.bin");
        WriteFileBytes(path, "an older and longer content");
        CBinaryData data;
        data.SetBuffer(reinterpret_cast<unsigned char const *>(payload.data()), 7);
        CFileBinaryStream stream(path.c_str(), c.encoding, data);
        stream.WriteFile();
        EXPECT_EQ(c.prefix + payload, ReadFileBytes(path));
        // An empty buffer still makes (or empties) the file.
        CFileBinaryStream empty(path.c_str(), c.encoding);
        empty.WriteFile();
        EXPECT_EQ(c.prefix, ReadFileBytes(path));
    }
}

TEST(FileBinaryStream, FailuresNameTheFileAndTheSystemError)
{
    TempDir dir;
    std::string const missing = dir.Path("no/such/folder.bin");
    CFileBinaryStream nowhere(missing.c_str(), 1, CBinaryData("x"));
    EXPECT_EQ("Failed to write data to the file [" + missing + "] error [0x00000002]",
              ErrorOf([&] { nowhere.WriteFile(); }));
    CFileBinaryStream full("/dev/full", 2, CBinaryData("x"));
    EXPECT_EQ("Failed to write data to the file [/dev/full] error [0x0000001C]", ErrorOf([&] { full.WriteFile(); }));
}

namespace
{
// Writes `pieces` through a file text stream, flushing after each.
void WritePieces(CFileTextStream &stream, std::vector<std::string> const &pieces)
{
    stream.Start();
    for (auto const &piece : pieces)
    {
        stream.Write(piece.c_str());
        stream.Flush();
    }
    stream.End();
}
} // namespace

TEST(FileTextStream, WritesEachEncodingExactly)
{
    TempDir dir;
    std::string const path = dir.Path("out.xml");
    struct Case
    {
        int encoding;
        std::string expected;
    };
    Case const cases[] = {{1, std::string(kMixed) + kMixed}, {2, "\xFF\xFE" + kMixedUtf16 + kMixedUtf16},
                          {3, "\xFF\xFE" + kMixedUtf16 + kMixedUtf16}};
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.encoding);
        CFileTextStream stream(path.c_str(), c.encoding);
        WritePieces(stream, {kMixed, "", kMixed});
        EXPECT_EQ(c.expected, ReadFileBytes(path));
        EXPECT_EQ(c.expected.size(), stream.GetFileOffset());
    }
}

TEST(FileTextStream, OneWriteInFlightAtATime)
{
    TempDir dir;
    std::string const path = dir.Path("out.xml");
    CFileTextStream stream(path.c_str(), 1);
    stream.Start();
    EXPECT_FALSE(stream.HasWriteInFlight());
    stream.Write("<a>");
    EXPECT_FALSE(stream.HasWriteInFlight()) << "nothing goes out before a flush";
    stream.Flush();
    EXPECT_TRUE(stream.HasWriteInFlight());
    EXPECT_EQ(0u, stream.GetLength()) << "the text buffer is free for the next piece";
    stream.Flush(); // no text: nothing happens, the write stays in flight
    EXPECT_TRUE(stream.HasWriteInFlight());
    EXPECT_EQ(0u, stream.GetFileOffset());
    stream.Write("</a>");
    stream.Flush();
    EXPECT_EQ(3u, stream.GetFileOffset()) << "the first write has ended";
    stream.End();
    EXPECT_FALSE(stream.HasWriteInFlight());
    EXPECT_EQ(7u, stream.GetFileOffset());
    EXPECT_EQ("<a></a>", ReadFileBytes(path));

    // UTF-16 starts with the byte order mark in flight.
    CFileTextStream utf16(path.c_str(), 2);
    utf16.Start();
    EXPECT_TRUE(utf16.HasWriteInFlight());
}

TEST(FileTextStream, EncodingZeroFailsAtTheFirstFlush)
{
    TempDir dir;
    std::string const path = dir.Path("out.xml");
    CFileTextStream stream(path.c_str(), 0);
    stream.Start();
    stream.Write("<a/>");
    EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)", ErrorOf([&] { stream.Flush(); }));
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(FileTextStream, FailuresCloseTheFileAndNameTheError)
{
    TempDir dir;
    std::string const missing = dir.Path("none/out.xml");
    CFileTextStream nowhere(missing.c_str(), 1);
    EXPECT_EQ("Failed to write data to the file [" + missing + "] error [0x00000002]",
              ErrorOf([&] { nowhere.Start(); }));

    // The device takes nothing: the error of a write comes at the next flush or at the end.
    CFileTextStream full("/dev/full", 1);
    full.Start();
    full.Write("<a>");
    full.Flush();
    full.Write("</a>");
    EXPECT_EQ("Failed to write data to the file. Error [0x0000001C]", ErrorOf([&] { full.Flush(); }));
    EXPECT_FALSE(full.HasWriteInFlight());
    CFileTextStream fullAtEnd("/dev/full", 2);
    fullAtEnd.Start();
    EXPECT_EQ("Failed to write data to the file. Error [0x0000001C]", ErrorOf([&] { fullAtEnd.End(); }));
}

TEST(FileTextStream, WritesThatStopAfterNBytes)
{
    TempDir dir;
    std::string const path = dir.Path("limited.xml");
    std::vector<std::string> const pieces = {"<root>", std::string(20, 'x'), "</root>"};
    std::size_t const total = 2 + 2 * (6 + 20 + 7);
    for (rlim_t n = 0; n <= total; ++n)
    {
        std::string error;
        {
            FileSizeLimit limit(n);
            CFileTextStream stream(path.c_str(), 2);
            error = ErrorOf([&] { WritePieces(stream, pieces); });
        }
        SCOPED_TRACE(n);
        if (n < total)
            EXPECT_EQ("Failed to write data to the file. Error [0x0000001B]", error);
        else
            EXPECT_EQ("no error", error);
        EXPECT_EQ(n, ReadFileBytes(path).size());
    }
}
