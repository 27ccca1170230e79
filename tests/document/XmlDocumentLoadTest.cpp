#include "binding/XmlObjectBase.h"
#include "document/XmlDocument.h"

#include "support/FileTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

using namespace MxXmlLib;
using namespace MxTestSupport;

namespace
{
std::string const kDataDir = MX_TEST_DATA_DIR;

// Both ways of reading a file, the chunked one switched on for the test only.
class FileLoad : public ::testing::Test
{
protected:
    void TearDown() override { AsyncFromXmlFile(false); }

    static std::string LoadError(char const *path, bool chunked)
    {
        AsyncFromXmlFile(chunked);
        CXmlDocument document;
        std::string const error = ErrorOf([&] { document.Load(path); });
        AsyncFromXmlFile(false);
        return error;
    }

    TempDir m_dir;
};

// A summary of the tree that tells documents apart: names, text and
// attributes, depth first.
std::string Summary(CXmlElement const *e)
{
    if (e == nullptr)
        return "(none)";
    std::string s = "{" + e->GetNamespaceURI() + "}" + e->GetLocalName() + "[" + e->GetText() + "]";
    for (CXmlAttribute const *a : e->GetAttributes())
        s += "@" + a->GetLocalName() + "=" + a->GetValue();
    for (CXmlElement const *c = e->GetFirstElement(); c; c = c->GetNextSiblingElement())
        s += Summary(c);
    return s + "/";
}

std::string Expected()
{
    CXmlDocument document;
    std::string const text = ReadFileBytes(kDataDir + "/order.xml");
    document.LoadXml(text.c_str());
    return Summary(document.GetDocumentElement());
}

// A document of exactly `size` bytes whose parse checks every byte: the text
// of the root is all 'x' but for one e acute at `accentAt`.
std::string SizedDocument(std::size_t size, std::size_t accentAt)
{
    std::string text = "<r>";
    while (text.size() + 4 + 16 < size / 2)
        text += "<i>abcdefghi</i>";
    while (text.size() + 4 < size)
        text += text.size() == accentAt ? "\xC3\xA9" : "x";
    text.resize(size - 4, 'x');
    return text + "</r>";
}
} // namespace

TEST_F(FileLoad, StreamsAreTriedForCompressionFirst)
{
    std::string const expected = Expected();
    EXPECT_NE(std::string::npos, expected.find("[Widget 3 \xC3\xA9\xE2\x82\xAC]")) << "carriage returns dropped";
    for (char const *name : {"order.xml", "order.xml.gz", "order.xml.zz"})
    {
        SCOPED_TRACE(name);
        std::string bytes = ReadFileBytes(kDataDir + "/" + name);
        CXmlDocument document;
        document.LoadXmlStream(reinterpret_cast<unsigned char *>(&bytes[0]), static_cast<unsigned long>(bytes.size()));
        EXPECT_EQ(expected, Summary(document.GetDocumentElement()));
        std::string const path = kDataDir + "/" + name;
        CXmlDocument fromFile;
        fromFile.Load(path.c_str());
        EXPECT_EQ(expected, Summary(fromFile.GetDocumentElement()));
    }
}

TEST_F(FileLoad, ChunkedLoadTakesPlainTextOnly)
{
    AsyncFromXmlFile(true);
    std::string const plain = kDataDir + "/order.xml";
    CXmlDocument document;
    document.Load(plain.c_str());
    EXPECT_EQ(Expected(), Summary(document.GetDocumentElement()));
    for (char const *name : {"order.xml.gz", "order.xml.zz"})
    {
        SCOPED_TRACE(name);
        std::string const path = kDataDir + "/" + name;
        EXPECT_NE(std::string::npos, ErrorOf([&] { document.Load(path.c_str()); }).find(" at line 1"));
        EXPECT_EQ(nullptr, document.GetDocumentElement());
    }
    // Compressed bytes given as a string do not get through either.
    std::string const gz = ReadFileBytes(kDataDir + "/order.xml.gz");
    EXPECT_NE(std::string::npos, ErrorOf([&] { document.LoadXml(gz.c_str()); }).find(" at line 1"));
}

// Files around the chunk size of 0x20000, with a two-byte character across
// the chunk boundary: both ways give the tree of the text itself.
TEST_F(FileLoad, ChunkBoundaries)
{
    std::string const path = m_dir.Path("sized.xml");
    for (std::size_t size : {0x20000 - 1, 0x20000, 0x20000 + 1, 0x40000, 0x40000 + 5, 100})
    {
        std::string const text = SizedDocument(size, std::min<std::size_t>(0x20000 - 1, size - 10));
        ASSERT_EQ(size, text.size());
        WriteFileBytes(path, text);
        CXmlDocument reference;
        reference.LoadXml(text.c_str());
        std::string const expected = Summary(reference.GetDocumentElement());
        ASSERT_NE(std::string::npos, expected.find("\xC3\xA9"));
        for (bool chunked : {false, true})
        {
            SCOPED_TRACE(std::to_string(size) + (chunked ? " chunked" : " whole"));
            AsyncFromXmlFile(chunked);
            CXmlDocument document;
            document.Load(path.c_str());
            EXPECT_EQ(expected, Summary(document.GetDocumentElement()));
        }
    }
}

TEST_F(FileLoad, FileErrorsNameTheFileAndTheSystemError)
{
    std::string const missing = m_dir.Path("missing.xml");
    std::string const empty = m_dir.Path("empty.xml");
    WriteFileBytes(empty, "");
    std::string const folder = m_dir.Path("folder");
    std::filesystem::create_directory(folder);
    struct Case
    {
        std::string path;
        bool chunked;
        std::string message;
    };
    Case const cases[] = {
        {missing, false, "Failed to open the file [" + missing + "] Error [0x00000002]"},
        {missing, true, "Failed to open the file [" + missing + "] Error [0x00000002]"},
        {empty, false, "no element found at line 1"},
        {empty, true, "Failed to read the contents of the file [" + empty + "] Error [0x00000026]"},
        {folder, false, "Failed to read the contents of the file [" + folder + "] Error [0x00000015]"},
        {folder, true, "Failed to read the contents of the file. Error [0x00000015]"},
        {"", false, "Failed to open the file [] Error [0x00000002]"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.path + (c.chunked ? " chunked" : " whole"));
        EXPECT_EQ(c.message, LoadError(c.path.c_str(), c.chunked));
    }
    EXPECT_EQ("Failed to open the file [] Error [0x00000002]", LoadError(nullptr, true));
}

TEST_F(FileLoad, ParseErrorsInLaterChunksAndReloading)
{
    std::string const path = m_dir.Path("bad.xml");
    std::string text = "<r>\n";
    while (text.size() < 0x30000)
        text += "<i>line</i>\n";
    text += "<i>broken</j>\n</r>";
    WriteFileBytes(path, text);
    std::string const whole = LoadError(path.c_str(), false);
    EXPECT_EQ("mismatched tag at line 16386", whole);
    EXPECT_EQ(whole, LoadError(path.c_str(), true));

    // A document that failed loads again.
    AsyncFromXmlFile(true);
    CXmlDocument document;
    EXPECT_EQ(whole, ErrorOf([&] { document.Load(path.c_str()); }));
    EXPECT_EQ(nullptr, document.GetDocumentElement()) << "the chunked load cleans up";
    std::string const good = kDataDir + "/order.xml";
    document.Load(good.c_str());
    EXPECT_EQ(Expected(), Summary(document.GetDocumentElement()));
}

namespace
{
bool Refuse(CXmlElement *element)
{
    if (element->GetLocalName() == "stop")
        throw CMxInvalidValueException("refused by the reader");
    return false;
}
} // namespace

// The chunked load hands every failure on as a plain CMxException.
TEST_F(FileLoad, ChunkedLoadRaisesPlainExceptions)
{
    std::string const path = m_dir.Path("stop.xml");
    WriteFileBytes(path, "<r><stop/></r>");
    for (bool chunked : {false, true})
    {
        SCOPED_TRACE(chunked);
        AsyncFromXmlFile(chunked);
        CXmlDocument document(Refuse);
        try
        {
            document.Load(path.c_str());
            ADD_FAILURE() << "no exception";
        }
        catch (CMxException const &e)
        {
            EXPECT_EQ("refused by the reader", e.GetMessage());
            EXPECT_EQ(chunked, typeid(e) == typeid(CMxException));
        }
    }
}

TEST_F(FileLoad, StreamInputEdgeCases)
{
    CXmlDocument document;
    unsigned char text[] = "<a/>";
    EXPECT_EQ("XML Stream is empty!", ErrorOf([&] { document.LoadXmlStream(text, 0); }));
    EXPECT_EQ("XML Stream is empty!", ErrorOf([&] { document.LoadXmlStream(nullptr, 4); }));
    document.LoadXmlStream(text, 4);
    EXPECT_EQ("a", document.GetDocumentElement()->GetLocalName());
    EXPECT_STREQ("<a/>", reinterpret_cast<char *>(text)) << "the caller's bytes are only read";

    // A stream that is not whole is not compressed input: it reaches the parser as it stands.
    std::string gz = ReadFileBytes(kDataDir + "/order.xml.gz");
    gz.resize(gz.size() - 1);
    EXPECT_EQ("not well-formed (invalid token) at line 1",
              ErrorOf([&] { document.LoadXmlStream(reinterpret_cast<unsigned char *>(&gz[0]),
                                                   static_cast<unsigned long>(gz.size())); }));
    // zlib-looking bytes in front of XML.
    std::string zlibLike = std::string("\x78\x9C", 2) + "<a/>";
    EXPECT_EQ("not well-formed (invalid token) at line 1",
              ErrorOf([&] { document.LoadXmlStream(reinterpret_cast<unsigned char *>(&zlibLike[0]),
                                                   static_cast<unsigned long>(zlibLike.size())); }));
    // UTF-16 behind a byte order mark, plain and compressed.
    std::string utf16("\xFF\xFE<\0b\0/\0>\0", 10);
    for (std::string bytes : {utf16, ZlibCompress(utf16)})
    {
        CXmlDocument doc;
        doc.LoadXmlStream(reinterpret_cast<unsigned char *>(&bytes[0]), static_cast<unsigned long>(bytes.size()));
        EXPECT_EQ("b", doc.GetDocumentElement()->GetLocalName());
    }
    // A compressed empty text inflates to nothing, and the parser says so.
    std::string nothing = ZlibCompress("");
    EXPECT_EQ("no element found at line 1",
              ErrorOf([&] { document.LoadXmlStream(reinterpret_cast<unsigned char *>(&nothing[0]),
                                                   static_cast<unsigned long>(nothing.size())); }));
}

// Every chunk size from 1 to 5 bytes in front of the stream reader: gzip
// split over many reads is still one stream once gathered.
TEST_F(FileLoad, StreamFromSmallPieces)
{
    std::string const gz = ReadFileBytes(kDataDir + "/order.xml.gz");
    std::string const expected = Expected();
    for (std::size_t piece = 1; piece <= 5; ++piece)
    {
        SCOPED_TRACE(piece);
        CBinaryData gathered;
        for (std::size_t at = 0; at < gz.size(); at += piece)
            gathered.Append(reinterpret_cast<unsigned char const *>(gz.data() + at),
                            static_cast<unsigned long>(std::min(piece, gz.size() - at)));
        CXmlDocument document;
        document.LoadXmlStream(gathered.GetData(), gathered.GetLength());
        EXPECT_EQ(expected, Summary(document.GetDocumentElement()));
    }
}
