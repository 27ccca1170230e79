// Fast Infoset against XML text for the hand-written purchase-order model (tests/model),
// from a generated document of about 10 MB (or the sizes given, in MB):
// MB/s of ToFastInfosetStream and of FromXmlStream of those bytes, and of
// ToXmlStream and FromXmlStream of the XML text of the same objects in the
// same run; sizes of both forms and the ratios binary / text. MB/s count the
// bytes of the XML text in both columns, so that they compare work done.
//
//   scripts/bench.sh fastinfoset [sizes in MB...]

#include "BenchSupport.h"
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
using MxBench::CpuNow;

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
        order->FromXml(MxBench::MakePurchaseOrder(mb * 1000 * 1000).c_str(), context);
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
