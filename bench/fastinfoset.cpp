// Fast Infoset against XML text for the purchase-order model of examples/,
// from a generated document of about 10 MB (or the sizes given, in MB):
// MB/s of ToFastInfosetStream and of FromXmlStream of those bytes, and of
// ToXmlStream and FromXmlStream of the XML text of the same objects in the
// same run; sizes of both forms and the ratios binary / text. MB/s count the
// bytes of the XML text in both columns, so that they compare work done.
//
//   scripts/bench.sh fastinfoset [sizes in MB...]

#include "MxXmlLib.h"
#include "fastinfoset/FastInfosetContext.h"
#include "model/PurchaseOrder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
double CpuNow()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

std::string MakeDocument(std::size_t targetBytes)
{
    std::string xml = "<?xml version=\"1.0\"?>\n"
                      "<po:purchaseOrder xmlns:po=\"urn:example:po\" orderDate=\"2026-11-22\" status=\"open\">\n"
                      "\t<po:shipTo country=\"US\">\n\t\t<po:name>Alice Smith</po:name>\n"
                      "\t\t<po:street>123 Maple Street</po:street>\n\t\t<po:city>Mill Valley</po:city>\n"
                      "\t\t<po:state>CA</po:state>\n\t\t<po:zip>90952</po:zip>\n\t</po:shipTo>\n"
                      "\t<po:comment>Generated &amp; large</po:comment>\n\t<po:items>\n";
    for (unsigned n = 0; xml.size() < targetBytes; ++n)
    {
        std::string const id = std::to_string(n);
        xml += "\t\t<po:item partNum=\"" + std::to_string(100 + n % 900) + "-AA\">\n"
               "\t\t\t<po:productName>Lawnmower &amp; catcher " + id + "</po:productName>\n"
               "\t\t\t<po:quantity>" + std::to_string(1 + n % 99) + "</po:quantity>\n"
               "\t\t\t<po:USPrice>148.95</po:USPrice>\n";
        if (n % 3 == 0)
            xml += "\t\t\t<po:comment>Confirm this is electric</po:comment>\n";
        xml += n % 2 ? "\t\t\t<po:shipDate>2026-12-01</po:shipDate>\n" : "\t\t\t<po:pickup>Store 12</po:pickup>\n";
        xml += "\t\t</po:item>\n";
    }
    xml += "\t</po:items>\n</po:purchaseOrder>\n";
    return xml;
}

struct Figures
{
    double write = 1e9;
    double read = 1e9;
    unsigned long bytes = 0;
};

template <typename Write>
Figures Measure(Example::CPurchaseOrder const &source, CSerializationContext const &context, int rounds,
                Write write)
{
    Figures f;
    for (int r = 0; r < rounds; ++r)
    {
        double start = CpuNow();
        CBinaryData const bytes = write(source);
        f.write = std::min(f.write, CpuNow() - start);
        f.bytes = bytes.GetLength();
        CSmartPtr<Example::CPurchaseOrder> copy(new Example::CPurchaseOrder);
        start = CpuNow();
        copy->FromXmlStream(bytes, context);
        f.read = std::min(f.read, CpuNow() - start);
    }
    return f;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::vector<std::size_t> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {10};

    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    CSerializationContext typed(context);
    typed.GetFIContext().SetSuggestedValues();

    std::printf("%7s %-14s %9s %9s %9s %11s %11s %10s\n", "XML MB", "form", "size MB", "write", "read",
                "size/XML", "write/XML", "read/XML");
    std::printf("%7s %-14s %9s %9s %9s %11s %11s %10s\n", "", "", "", "MB/s", "MB/s", "", "speed", "speed");
    for (std::size_t mb : sizes)
    {
        CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
        order->FromXml(MakeDocument(mb * 1000 * 1000).c_str(), context);
        int const rounds = mb >= 100 ? 2 : 4;
        Figures const xml = Measure(*order, context, rounds, [&](Example::CPurchaseOrder const &o) {
            return o.ToXmlStream(true, true, XmlEncoding_UTF8, LF, context);
        });
        Figures const plain = Measure(*order, context, rounds, [&](Example::CPurchaseOrder const &o) {
            return o.ToFastInfosetStream(FInfoDecl_None, context);
        });
        Figures const suggested = Measure(*order, typed, rounds, [&](Example::CPurchaseOrder const &o) {
            return o.ToFastInfosetStream(FInfoDecl_None, typed);
        });
        double const text = static_cast<double>(xml.bytes) / 1e6;
        auto row = [&](char const *form, Figures const &f) {
            double const size = static_cast<double>(f.bytes) / 1e6;
            std::printf("%7.1f %-14s %9.2f %9.1f %9.1f %11.3f %11.2f %10.2f\n", text, form, size, text / f.write,
                        text / f.read, size / text, xml.write / f.write, xml.read / f.read);
        };
        row("XML UTF-8", xml);
        row("FI strings", plain);
        row("FI typed", suggested);
    }
    Example::CleanAllMetaData();
    return 0;
}
