// Output and input of a ~10 MB document, plain and compressed.
//   ToXmlStream with CompressionNone and with CompressionGZip, in MB/s of the
//   XML text, and the compression step set against zlib's deflate alone
//   (same level, same wrapper, same bytes) measured in this run.
//   LoadXmlStream of the gzip bytes against the plain bytes, with zlib's
//   inflate alone as the floor of the difference.
// Best of several runs, thread CPU time.
//
//   scripts/bench.sh compression

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "runtime/Compression.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
// A flat document: a root with many items of text and one attribute each.
class CCatalog : public CXmlObjectBase
{
public:
    CCatalog() { SetElementName("catalog"); }
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return "urn:catalog"; }

    std::vector<std::string> items;

protected:
    std::string GetTargetNamespace() const override { return "urn:catalog"; }
    void ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &,
                   bool) const override
    {
        writer->StartElement(GetElementName(), namespaceUri);
        for (std::size_t i = 0; i < items.size(); ++i)
        {
            writer->StartElement("item", namespaceUri);
            writer->WriteAttribute("n", "", std::to_string(i), ItemType_string);
            writer->WriteText(items[i], ItemType_string, false);
            writer->EndElement();
        }
        writer->EndElement();
    }
    CXmlElement *FromXml_Int(CXmlElement *, CXmlElement *, CSerializationContext const &, bool) override
    {
        return nullptr;
    }
};

using MxBench::CpuNow;

double Best(int runs, std::function<void()> const &work)
{
    double best = 1e30;
    for (int i = 0; i < runs; ++i)
    {
        double const start = CpuNow();
        work();
        best = std::min(best, CpuNow() - start);
    }
    return best;
}

// What the library's gzip step amounts to, done with zlib directly.
unsigned long DeflateAlone(unsigned char const *data, unsigned long size, unsigned char *out)
{
    z_stream z{};
    deflateInit2(&z, 1, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY);
    z.next_in = const_cast<unsigned char *>(data);
    z.avail_in = static_cast<uInt>(size);
    z.next_out = out;
    z.avail_out = static_cast<uInt>(size);
    deflate(&z, Z_FINISH);
    unsigned long const produced = z.total_out;
    deflateEnd(&z);
    return produced;
}

unsigned long InflateAlone(unsigned char const *data, unsigned long size, unsigned char *out, unsigned long room)
{
    z_stream z{};
    inflateInit2(&z, 47);
    z.next_in = const_cast<unsigned char *>(data);
    z.avail_in = static_cast<uInt>(size);
    z.next_out = out;
    z.avail_out = static_cast<uInt>(room);
    inflate(&z, Z_FINISH);
    unsigned long const produced = z.total_out;
    inflateEnd(&z);
    return produced;
}
} // namespace

int main()
{
    Register(16, 1);
    CSmartPtr<CCatalog> catalog(new CCatalog);
    for (int i = 0; catalog->items.size() < 140000; ++i)
        catalog->items.push_back("Widget no. " + std::to_string(i) + ", colour " + std::to_string(i % 17) +
                                 " & size " + std::to_string(i % 5));
    int const runs = 5;

    CBinaryData plain, packed;
    double const tPlain = Best(runs, [&] { plain = catalog->ToXmlStream(true, true, XmlEncoding_UTF8, LF); });
    double const tGzip = Best(runs, [&] {
        packed = catalog->ToXmlStream(true, true, XmlEncoding_UTF8, LF, CSerializationContext::GetDefaultContext(),
                                      CompressionGZip);
    });
    unsigned long const size = plain.GetLength();
    std::unique_ptr<unsigned char[]> scratch(new unsigned char[size]);
    unsigned long deflated = 0;
    double const tDeflate = Best(runs, [&] { deflated = DeflateAlone(plain.GetData(), size, scratch.get()); });

    double const mb = static_cast<double>(size) / 1e6;
    std::printf("document: %.2f MB of XML, gzip %.2f MB (zlib alone %.2f MB)\n", mb, packed.GetLength() / 1e6,
                deflated / 1e6);
    std::printf("ToXmlStream, CompressionNone: %8.1f MB/s\n", mb / tPlain);
    std::printf("ToXmlStream, CompressionGZip: %8.1f MB/s  (%.2fx the time of CompressionNone)\n", mb / tGzip,
                tGzip / tPlain);
    std::printf("zlib deflate alone:           %8.1f MB/s\n", mb / tDeflate);
    std::printf("compression step (GZip - None) / deflate alone: %.2f\n", (tGzip - tPlain) / tDeflate);
    std::printf("GZip path / (None path + deflate alone):        %.2f\n", tGzip / (tPlain + tDeflate));

    double const tLoadPlain = Best(runs, [&] {
        CXmlDocument document;
        document.LoadXmlStream(plain.GetData(), plain.GetLength());
    });
    double const tLoadGzip = Best(runs, [&] {
        CXmlDocument document;
        document.LoadXmlStream(packed.GetData(), packed.GetLength());
    });
    double const tInflate =
        Best(runs, [&] { InflateAlone(packed.GetData(), packed.GetLength(), scratch.get(), size); });
    std::printf("LoadXmlStream, plain bytes:   %8.1f MB/s of XML\n", mb / tLoadPlain);
    std::printf("LoadXmlStream, gzip bytes:    %8.1f MB/s of XML  (%.2fx the time of plain)\n", mb / tLoadGzip,
                tLoadGzip / tLoadPlain);
    std::printf("zlib inflate alone:           %8.1f MB/s of XML\n", mb / tInflate);
    std::printf("decompression step (gzip - plain) / inflate alone: %.2f\n", (tLoadGzip - tLoadPlain) / tInflate);
    return 0;
}
