// The byte and file forms of JSON: encodings, compression both ways, byte
// order marks, and the refusals they share with XML.

#include "model/Model.h"
#include "support/FileTestSupport.h"

#include "json/JsonContext.h"
#include "runtime/Compression.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using namespace MxTestModel;
using namespace MxTestSupport;

namespace
{
class JsonStreams : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Register(16, 1);
        // Big enough to shrink when compressed.
        context.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
        std::string xml = "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='7'>"
                          "<number>3</number><priority>high</priority><customer><name>Ann</name></customer>"
                          "<payment xsi:type='card'><number>42</number></payment>";
        for (int i = 0; i < 30; ++i)
            xml += "<line ref='" + std::to_string(i) + "'><name>Zo\xC3\xAB</name></line>";
        order = new COrder;
        std::string const error = ErrorOf([&] {
            order->FromXml((xml + "</order>").c_str(), context);
            json = order->ToJson(true, LF, context);
        });
        ASSERT_EQ("no error", error);
    }
    void TearDown() override { AsyncToXmlFile(false); }

    std::string Bytes(CBinaryData const &data)
    {
        return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
    }
    std::string ReadBack(std::function<void(COrder &)> const &read)
    {
        CSmartPtr<COrder> again(new COrder);
        read(*again);
        return again->ToXml(false, false, LF, context);
    }

    CSerializationContext context;
    CSmartPtr<COrder> order;
    std::string json;
    TempDir dir;
};

std::string Utf16(std::string const &ascii)
{
    std::string out;
    for (char c : ascii)
    {
        out += c;
        out += '\0';
    }
    return out;
}

TEST_F(JsonStreams, StreamBytesAreEncodedAndCompressedAsAsked)
{
    EXPECT_EQ(json, Bytes(order->ToJsonStream(true, XmlEncoding_UTF8, LF, context)));
    std::string const ascii = order->ToJson(false, LF, context);
    CSmartPtr<CParty> plain(new CParty);
    plain->FromXml("<party xmlns='urn:m'><name>Zo</name></party>");
    EXPECT_EQ(Utf16(plain->ToJson(false, LF, context)),
              Bytes(plain->ToJsonStream(false, XmlEncoding_UTF16, LF, context)));
    EXPECT_EQ(json, Inflate(Bytes(order->ToJsonStream(true, XmlEncoding_UTF8, LF, context, CompressionGZip)), 31));
    EXPECT_EQ(json, Inflate(Bytes(order->ToJsonStream(true, XmlEncoding_UTF8, LF, context, CompressionZLib)), 15));
    EXPECT_EQ("Unknown Encoding, select UTF-8 (contact our support team)",
              ErrorOf([&] { order->ToJsonStream(true, XmlEncoding_None, LF, context); }));
}

TEST_F(JsonStreams, BytesAreReadCompressedOrNotWithOrWithoutByteOrderMark)
{
    std::string const expected = order->ToXml(false, false, LF, context);
    std::string const inputs[] = {json, "\xEF\xBB\xBF" + json, ZlibCompress(json),
                                  Bytes(order->ToJsonStream(true, XmlEncoding_UTF8, LF, context, CompressionGZip))};
    for (auto const &input : inputs)
    {
        SCOPED_TRACE(input.substr(0, 8));
        CBinaryData const data(reinterpret_cast<unsigned char *>(const_cast<char *>(input.data())),
                               static_cast<unsigned long>(input.size()), false);
        EXPECT_EQ(expected, ReadBack([&](COrder &p) { p.FromJsonStream(data, context); }));
    }
    EXPECT_EQ("Error converting JSON to XML:\n\nXML Stream is empty!",
              ErrorOf([&] { order->FromJsonStream(CBinaryData(), context); }));
}

TEST_F(JsonStreams, FilesAreWrittenByBothBranchesAndReadBack)
{
    std::string const expected = order->ToXml(false, false, LF, context);
    std::string const path = dir.Path("order.json");

    // Buffered: never a byte order mark, whatever the encoding.
    order->ToJsonFile(path.c_str(), true, XmlEncoding_UTF16, LF, context);
    EXPECT_EQ(Bytes(order->ToJsonStream(true, XmlEncoding_UTF16, LF, context)), ReadFileBytes(path));
    order->ToJsonFile(path.c_str(), true, XmlEncoding_UTF8, LF, context, CompressionGZip);
    EXPECT_EQ(json, GunzipWithTool(path));
    EXPECT_EQ(expected, ReadBack([&](COrder &p) { p.FromJsonFile(path.c_str(), context); }));

    // Direct: the file stream writes FF FE for UTF-16.
    AsyncToXmlFile(true);
    order->ToJsonFile(path.c_str(), true, XmlEncoding_UTF16, LF, context);
    EXPECT_EQ("\xFF\xFE", ReadFileBytes(path).substr(0, 2));
    order->ToJsonFile(path.c_str(), true, XmlEncoding_UTF8, LF, context);
    EXPECT_EQ(json, ReadFileBytes(path));
    EXPECT_EQ(expected, ReadBack([&](COrder &p) { p.FromJsonFile(path.c_str(), context); }));
}

TEST_F(JsonStreams, FileFormsRefuseZlibAndMissingFiles)
{
    Register(0, 0);
    EXPECT_EQ("ZLIB Compression only available for To Stream methods.",
              ErrorOf([&] { order->ToJsonFile(dir.Path("x").c_str(), true, XmlEncoding_UTF8, LF, context,
                                              CompressionZLib); }));
    Register(16, 1);
    std::string const missing = dir.Path("missing.json");
    EXPECT_EQ("Failed to open the file [" + missing + "] Error [0x00000002]",
              ErrorOf([&] { order->FromJsonFile(missing.c_str(), context); }));
}

} // namespace
