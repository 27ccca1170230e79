#include "model/SimpleOrder.h"

#include "support/FileTestSupport.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;
using namespace MxTestSupport;
using MxTestModel::CSimpleOrder;

namespace
{
class StreamFrames : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
    void TearDown() override
    {
        AsyncToXmlFile(false);
        AsyncFromXmlFile(false);
        Register(16, 1);
    }

    static CSmartPtr<CSimpleOrder> Order(int items)
    {
        CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
        order->id = "A7";
        order->customer = "Zo\xC3\xAB & \xF0\x9F\x98\x80";
        for (int i = 0; i < items; ++i)
            order->items.push_back("item " + std::to_string(i));
        return order;
    }

    TempDir m_dir;
};

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

// UTF-8 to UTF-16LE, an oracle apart from the library's conversions.
std::string Utf16(std::string const &utf8)
{
    std::string out;
    auto put = [&out](unsigned unit) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    };
    for (std::size_t i = 0; i < utf8.size();)
    {
        auto const c = static_cast<unsigned char>(utf8[i]);
        int const extra = c < 0x80 ? 0 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
        unsigned code = extra == 0 ? c : c & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k)
            code = (code << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        i += 1 + extra;
        if (code >= 0x10000)
        {
            put(0xD800 + ((code - 0x10000) >> 10));
            put(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
        else
            put(code);
    }
    return out;
}

std::string const kBody = "<AA:order xmlns:AA=\"urn:orders\" id=\"A7\">\n"
                          "\t<AA:customer>Zo\xC3\xAB &amp; \xF0\x9F\x98\x80</AA:customer>\n"
                          "\t<AA:item>item 0</AA:item>\n"
                          "</AA:order>\n";
} // namespace

TEST_F(StreamFrames, EachEncodingIsExactWithItsDeclaration)
{
    auto order = Order(1);
    struct Case
    {
        XmlEncoding encoding;
        std::string expected;
    };
    Case const cases[] = {
        {XmlEncoding_UTF8, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + kBody},
        {XmlEncoding_UTF16, Utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n" + kBody)},
        {XmlEncoding_UTF16NoDeclaration, Utf16("<?xml version=\"1.0\"?>\n" + kBody)},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.encoding);
        EXPECT_EQ(c.expected, Bytes(order->ToXmlStream(true, true, c.encoding, LF)));
        // Files: UTF-16 starts with FF FE, by either branch.
        std::string const prefix = c.encoding == XmlEncoding_UTF8 ? "" : "\xFF\xFE";
        for (bool direct : {false, true})
        {
            SCOPED_TRACE(direct ? "direct" : "buffered");
            AsyncToXmlFile(direct);
            std::string const path = m_dir.Path("order.xml");
            order->ToXmlFile(path.c_str(), true, true, c.encoding, LF);
            EXPECT_EQ(prefix + c.expected, ReadFileBytes(path));
        }
    }
    EXPECT_EQ("<AA:order xmlns:AA=\"urn:orders\" id=\"A7\">\r\n",
              Bytes(order->ToXmlStream(false, true, XmlEncoding_UTF8, CRLF)).substr(0, 42));
}

TEST_F(StreamFrames, UnknownEncodingFailsOnlyAtTheEnd)
{
    auto order = Order(1);
    for (int encoding : {0, 4})
    {
        SCOPED_TRACE(encoding);
        EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
                  ErrorOf([&] { order->ToXmlStream(true, true, static_cast<XmlEncoding>(encoding), LF); }));
        std::string const path = m_dir.Path("bad.xml");
        EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
                  ErrorOf([&] { order->ToXmlFile(path.c_str(), true, true, static_cast<XmlEncoding>(encoding)); }));
        // The direct branch has made the file before its first flush fails.
        AsyncToXmlFile(true);
        std::filesystem::remove(path);
        EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
                  ErrorOf([&] { order->ToXmlFile(path.c_str(), true, true, static_cast<XmlEncoding>(encoding)); }));
        EXPECT_EQ("", ReadFileBytes(path));
        EXPECT_TRUE(std::filesystem::exists(path));
        AsyncToXmlFile(false);
    }
}

TEST_F(StreamFrames, CompressedOutputIsReadByIndependentReaders)
{
    auto order = Order(400);
    for (XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16})
    {
        SCOPED_TRACE(encoding);
        std::string const plain = Bytes(order->ToXmlStream(true, false, encoding, LF));
        EXPECT_EQ(plain, Inflate(Bytes(order->ToXmlStream(true, false, encoding, LF, CSerializationContext::GetDefaultContext(),
                                                          CompressionGZip)),
                                 31));
        EXPECT_EQ(plain, Inflate(Bytes(order->ToXmlStream(true, false, encoding, LF, CSerializationContext::GetDefaultContext(),
                                                          CompressionZLib)),
                                 15));
        // The gzip file: FF FE in front of the gzip data for UTF-16, which the
        // gzip program then refuses; without it, the program reads it back.
        for (bool asyncFlag : {false, true})
        {
            AsyncToXmlFile(asyncFlag); // compression always takes the buffered branch
            std::string const path = m_dir.Path("order.xml.gz");
            order->ToXmlFile(path.c_str(), true, false, encoding, LF, CSerializationContext::GetDefaultContext(),
                             CompressionGZip);
            std::string const file = ReadFileBytes(path);
            if (encoding == XmlEncoding_UTF16)
            {
                ASSERT_EQ("\xFF\xFE", file.substr(0, 2));
                EXPECT_EQ(plain, Inflate(file.substr(2), 31));
                CSmartPtr<CSimpleOrder> back(new CSimpleOrder);
                EXPECT_EQ("not well-formed (invalid token) at line 1",
                          ErrorOf([&] { back->FromXmlFile(path.c_str()); }));
            }
            else
                EXPECT_EQ(plain, GunzipWithTool(path));
        }
        AsyncToXmlFile(false);
    }
}

TEST_F(StreamFrames, ZlibIsRefusedForFilesBeforeAnythingElse)
{
    auto order = Order(1);
    std::string const path = m_dir.Path("never.xml");
    Register(1, 0);
    testing::internal::CaptureStderr();
    for (bool direct : {false, true})
    {
        AsyncToXmlFile(direct);
        EXPECT_EQ("ZLIB Compression only available for To Stream methods.",
                  ErrorOf([&] {
                      order->ToXmlFile(path.c_str(), true, true, XmlEncoding_UTF8, LF,
                                       CSerializationContext::GetDefaultContext(), CompressionZLib);
                  }));
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr()) << "no version warning either";
    EXPECT_FALSE(std::filesystem::exists(path));
    // The other frames check the version first.
    testing::internal::CaptureStderr();
    std::string const wrong = "Wrong Version (Velmar Runtime: v16.1, Generator: v1.0)";
    EXPECT_EQ(wrong, ErrorOf([&] { order->ToXmlFile(path.c_str()); }));
    AsyncToXmlFile(false);
    EXPECT_EQ(wrong, ErrorOf([&] { order->ToXmlFile(path.c_str()); }));
    EXPECT_EQ(wrong, ErrorOf([&] { order->ToXmlStream(); }));
    EXPECT_EQ(wrong, ErrorOf([&] { order->FromXmlFile(path.c_str()); }));
    EXPECT_EQ(wrong, ErrorOf([&] { order->FromXmlStream(CBinaryData("<order/>")); }));
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(std::filesystem::exists(path));
}

// Every way out and back in: stream and file, plain and compressed, whole and
// chunked reading, each encoding.
TEST_F(StreamFrames, RoundTrips)
{
    auto order = Order(3000); // larger than one chunk of the chunked read
    std::string const path = m_dir.Path("round.xml");
    for (XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16, XmlEncoding_UTF16NoDeclaration})
        for (CompressionType compression : {CompressionNone, CompressionGZip, CompressionZLib})
        {
            SCOPED_TRACE(std::to_string(encoding) + "/" + std::to_string(compression));
            CBinaryData const bytes = order->ToXmlStream(true, true, encoding, LF,
                                                         CSerializationContext::GetDefaultContext(), compression);
            CSmartPtr<CSimpleOrder> back(new CSimpleOrder);
            back->FromXmlStream(bytes);
            EXPECT_EQ(order->customer, back->customer);
            EXPECT_EQ(order->items, back->items);
            if (compression != CompressionNone || encoding != XmlEncoding_UTF8)
                continue;
            for (bool direct : {false, true})
                for (bool chunked : {false, true})
                {
                    SCOPED_TRACE(std::string(direct ? "direct" : "buffered") + (chunked ? " chunked" : " whole"));
                    AsyncToXmlFile(direct);
                    AsyncFromXmlFile(chunked);
                    order->ToXmlFile(path.c_str(), true, true, encoding, LF);
                    CSmartPtr<CSimpleOrder> fromFile(new CSimpleOrder);
                    fromFile->FromXmlFile(path.c_str());
                    EXPECT_EQ(order->items, fromFile->items);
                }
        }
    // UTF-16 files carry their byte order mark, so both loads read them too.
    for (bool chunked : {false, true})
    {
        AsyncFromXmlFile(chunked);
        order->ToXmlFile(path.c_str(), true, true, XmlEncoding_UTF16, LF);
        CSmartPtr<CSimpleOrder> fromFile(new CSimpleOrder);
        fromFile->FromXmlFile(path.c_str());
        EXPECT_EQ(order->customer, fromFile->customer);
    }
}

TEST_F(StreamFrames, StreamInputEdgeCases)
{
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    EXPECT_EQ("XML Stream is empty!", ErrorOf([&] { order->FromXmlStream(CBinaryData()); }));
    EXPECT_EQ("XML Stream is empty!", ErrorOf([&] { order->FromXmlStream(nullptr, 0); }));
    // gzip data comes in as a stream; as a string it cannot.
    std::string const xml = "<order xmlns='urn:orders' id='Z'><item>gz</item></order>";
    TempDir dir;
    std::string const gz = GzipWithTool(dir, xml);
    order->FromXmlStream(Data(gz));
    EXPECT_EQ("Z", order->id);
    EXPECT_NE(std::string::npos, ErrorOf([&] { order->FromXml(gz.c_str()); }).find(" at line 1"));
}

// Writes that stop after N bytes, for both file branches: every failure is
// the file message with EFBIG. The buffered branch replaces the file only
// once all is written, so the earlier file stays whole; the direct branch
// writes in place and the file keeps what was written.
TEST_F(StreamFrames, FileWritesThatStopAfterNBytes)
{
    auto order = Order(300); // several flushes of the direct branch
    std::string const path = m_dir.Path("limited.xml");
    order->ToXmlFile(path.c_str(), true, true, XmlEncoding_UTF16, LF);
    std::size_t const total = ReadFileBytes(path).size();
    for (bool direct : {false, true})
    {
        std::vector<std::string> errors;
        std::vector<std::size_t> sizes;
        std::vector<rlim_t> limits;
        for (rlim_t n = 0; n <= total; n += (n < 64 || total - n < 64) ? 1 : 509)
            limits.push_back(n);
        limits.push_back(total);
        for (rlim_t n : limits)
        {
            AsyncToXmlFile(direct);
            {
                FileSizeLimit limit(n);
                errors.push_back(ErrorOf([&] { order->ToXmlFile(path.c_str(), true, true, XmlEncoding_UTF16, LF); }));
            }
            AsyncToXmlFile(false);
            sizes.push_back(ReadFileBytes(path).size());
        }
        for (std::size_t i = 0; i < limits.size(); ++i)
        {
            SCOPED_TRACE(std::string(direct ? "direct " : "buffered ") + std::to_string(limits[i]));
            if (limits[i] < total)
                EXPECT_EQ(direct ? "Failed to write data to the file. Error [0x0000001B]"
                                 : "Failed to write data to the file [" + path + "] error [0x0000001B]",
                          errors[i]);
            else
                EXPECT_EQ("no error", errors[i]);
            EXPECT_EQ(direct ? limits[i] : total, sizes[i]);
        }
    }
    // The other buffered writers keep the earlier file the same way.
    std::string const earlier = ReadFileBytes(path);
    std::function<void()> const writers[] = {
        [&] { order->ToJsonFile(path.c_str()); },
        [&] { order->ToFastInfosetFile(path.c_str()); },
        [&] { order->ToXmlFile(path.c_str(), true, true, XmlEncoding_UTF8, LF, CSerializationContext::GetDefaultContext(),
                               CompressionGZip); },
    };
    for (auto const &write : writers)
        for (rlim_t n : {0, 1, 20})
        {
            SCOPED_TRACE(n);
            std::string error;
            {
                FileSizeLimit limit(n);
                error = ErrorOf(write);
            }
            EXPECT_EQ("Failed to write data to the file [" + path + "] error [0x0000001B]", error);
            EXPECT_EQ(earlier, ReadFileBytes(path));
        }
    std::string const missing = m_dir.Path("no/folder.xml");
    AsyncToXmlFile(true);
    EXPECT_EQ("Failed to write data to the file [" + missing + "] error [0x00000002]",
              ErrorOf([&] { order->ToXmlFile(missing.c_str()); }));
}
