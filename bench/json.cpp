// JSON output and input of the purchase-order model of examples/, from a
// generated document of about 10 MB: MB/s of ToJson and FromJson, and their
// ratios to ToXml and FromXml of the same objects in the same run; then the
// strict mode against the default one (ToJson, goal at least 0.8 of its
// speed) and against FromXml (FromJson, goal at least 0.8 of its speed). The
// JSON of both modes read back must give the same XML as the original, or
// the run fails.
//
//   scripts/bench.sh json [size in MB]

#include "MxXmlLib.h"
#include "json/JsonContext.h"
#include "model/PurchaseOrder.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;
using Example::CPurchaseOrder;

namespace
{
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

// Best of `runs` timings of `call`, in seconds.
template <class F> double Best(int runs, F const &call)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i)
    {
        auto const start = std::chrono::steady_clock::now();
        call();
        double const s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (s < best)
            best = s;
    }
    return best;
}

double MBps(std::size_t bytes, double seconds)
{
    return static_cast<double>(bytes) / (1024.0 * 1024.0) / seconds;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::size_t const megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10;
    std::string const document = MakeDocument(megabytes * 1024 * 1024);
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    try
    {
        CSmartPtr<CPurchaseOrder> order(new CPurchaseOrder);
        order->FromXml(document.c_str(), context);
        std::string const xml = order->ToXml(false, true, LF, context);
        std::string const json = order->ToJson(true, LF, context);

        int const runs = 5;
        double const toXml = Best(runs, [&] { (void)order->ToXml(false, true, LF, context); });
        double const toJson = Best(runs, [&] { (void)order->ToJson(true, LF, context); });
        double const fromXml = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromXml(xml.c_str(), context);
        });
        double const fromJson = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromJson(json.c_str(), context);
        });

        // A copy would share the JSON options; the strict calls get their own.
        CSerializationContext strict;
        strict.GetNamespaceAliases().Add("po", Example::kPoNamespace);
        strict.GetJsonContext().SetStrict(true);
        std::string const strictJson = order->ToJson(true, LF, strict);
        double const toStrict = Best(runs, [&] { (void)order->ToJson(true, LF, strict); });
        double const fromStrict = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromJson(strictJson.c_str(), strict);
        });

        CSmartPtr<CPurchaseOrder> again(new CPurchaseOrder);
        again->FromJson(json.c_str(), context);
        bool same = again->ToXml(false, true, LF, context) == xml;
        CSmartPtr<CPurchaseOrder> strictAgain(new CPurchaseOrder);
        strictAgain->FromJson(strictJson.c_str(), strict);
        same = same && strictAgain->ToXml(false, true, LF, context) == xml;

        std::printf("purchase order: %d items, XML %.1f MB, JSON %.1f MB (best of %d)\n", order->items->items->GetCount(),
                    static_cast<double>(xml.size()) / 1048576.0, static_cast<double>(json.size()) / 1048576.0, runs);
        std::printf("%-10s %10s %10s %12s\n", "operation", "MB/s", "ms", "JSON / XML");
        std::printf("%-10s %10.1f %10.1f %12s\n", "ToXml", MBps(xml.size(), toXml), toXml * 1e3, "");
        std::printf("%-10s %10.1f %10.1f %11.2fx\n", "ToJson", MBps(json.size(), toJson), toJson * 1e3,
                    toJson / toXml);
        std::printf("%-10s %10.1f %10.1f %12s\n", "FromXml", MBps(xml.size(), fromXml), fromXml * 1e3, "");
        std::printf("%-10s %10.1f %10.1f %11.2fx\n", "FromJson", MBps(json.size(), fromJson), fromJson * 1e3,
                    fromJson / fromXml);
        std::printf("(JSON / XML: time of the JSON call over the XML call on the same objects)\n");
        std::printf("strict JSON %.1f MB\n", static_cast<double>(strictJson.size()) / 1048576.0);
        std::printf("%-16s %10.1f %10.1f   speed %.2f of default ToJson (goal >= 0.80)\n", "ToJson strict",
                    MBps(strictJson.size(), toStrict), toStrict * 1e3, toJson / toStrict);
        std::printf("%-16s %10.1f %10.1f   speed %.2f of FromXml (goal >= 0.80)\n", "FromJson strict",
                    MBps(strictJson.size(), fromStrict), fromStrict * 1e3, fromXml / fromStrict);
        std::printf("round trip through JSON (both modes) gives the same XML: %s\n", same ? "yes" : "NO");
        return same ? 0 : 1;
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
}
