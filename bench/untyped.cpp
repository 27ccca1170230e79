// Reading a document of about 10 MB into an untyped element tree and writing
// it back, against building the bare document tree (CXmlDocument::LoadXml)
// over the same bytes in the same run. A second part reads and writes a root
// with N and 4N children, so that any cost above linear in the siblings shows
// as a growing time per child.
//
//   scripts/bench.sh untyped [size in MB]

#include "MxXmlLib.h"
#include "collections/Element.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;

namespace
{
// Orders with addresses, items and comments, spread over two namespaces,
// with attributes in a third and some mixed content.
std::string MakeDocument(std::size_t targetBytes)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<po:orders xmlns:po=\"http://www.example.com/PO1\" xmlns:x=\"urn:extra\" "
                      "xmlns:m=\"urn:meta\">\n";
    for (unsigned n = 0; xml.size() < targetBytes; ++n)
    {
        std::string const id = std::to_string(n);
        xml += "  <po:purchaseOrder orderDate=\"1999-10-20\" m:id=\"" + id + "\">\n";
        for (char const *tag : {"shipTo", "billTo"})
            xml += std::string("    <po:") + tag + " country=\"US\">\n"
                   "      <po:name>Alice Smith " + id + "</po:name>\n"
                   "      <po:street>123 Maple Street</po:street>\n"
                   "      <po:city>Mill Valley</po:city>\n"
                   "      <po:zip>90952</po:zip>\n"
                   "    </po:" + tag + ">\n";
        xml += "    <x:note m:lang=\"en\">Hurry, <x:b>my lawn</x:b> is going &quot;wild&quot;!</x:note>\n"
               "    <po:items>\n";
        for (int i = 0; i < 3; ++i)
            xml += "      <po:item partNum=\"872-A" + std::to_string(i) + "\">\n"
                   "        <po:productName>Lawnmower &amp; catcher</po:productName>\n"
                   "        <po:quantity>" + std::to_string(i + 1) + "</po:quantity>\n"
                   "        <po:USPrice>148.95</po:USPrice>\n"
                   "        <po:shipDate>1999-05-21</po:shipDate>\n"
                   "      </po:item>\n";
        xml += "    </po:items>\n  </po:purchaseOrder>\n";
    }
    xml += "</po:orders>\n";
    return xml;
}

std::string MakeWide(unsigned children)
{
    std::string xml = "<r xmlns=\"urn:wide\">";
    for (unsigned i = 0; i < children; ++i)
        xml += "<c n=\"" + std::to_string(i) + "\">v</c>";
    return xml + "</r>";
}

double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Best of `runs`: the figure least disturbed by other work on the machine.
template <typename F> double Best(int runs, F f)
{
    double best = 1e100;
    for (int i = 0; i < runs; ++i)
    {
        auto const start = std::chrono::steady_clock::now();
        f();
        best = std::min(best, Seconds(start));
    }
    return best;
}

struct Times
{
    double tree, read, write;
    std::size_t outputBytes;
};

Times Measure(std::string const &xml, int runs)
{
    Times t{};
    t.tree = Best(runs, [&] {
        CXmlDocument document;
        document.LoadXml(xml.c_str());
    });
    CSmartPtr<CElement> kept;
    t.read = Best(runs, [&] {
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromXml(xml.c_str());
        kept = element;
    });
    std::string output;
    t.write = Best(runs, [&] { output = kept->ToXml(false, false, LF, CSerializationContext::GetDefaultContext()); });
    t.outputBytes = output.size();
    return t;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    double const megabytes = argc > 1 ? std::atof(argv[1]) : 10.0;
    std::string const xml = MakeDocument(static_cast<std::size_t>(megabytes * 1024 * 1024));
    double const mb = xml.size() / (1024.0 * 1024.0);
    Times const t = Measure(xml, 5);
    std::printf("document %.1f MB (written back: %.1f MB)\n", mb, t.outputBytes / (1024.0 * 1024.0));
    std::printf("  bare tree (LoadXml)     %8.1f MB/s\n", mb / t.tree);
    std::printf("  read into CElement      %8.1f MB/s   %.2fx the time of the bare tree\n", mb / t.read,
                t.read / t.tree);
    std::printf("  write CElement as XML   %8.1f MB/s   %.2fx the time of the bare tree\n", mb / t.write,
                t.write / t.tree);

    // Siblings: time per child at N and 4N should stay about the same.
    unsigned const n = 50000;
    std::printf("siblings under one root (ns per child; 4N over N near 1 means linear)\n");
    Times const small = Measure(MakeWide(n), 3);
    Times const large = Measure(MakeWide(4 * n), 3);
    auto perChild = [](double seconds, unsigned count) { return seconds * 1e9 / count; };
    std::printf("  read   N=%u %7.0f   4N %7.0f   ratio %.2f\n", n, perChild(small.read, n),
                perChild(large.read, 4 * n), perChild(large.read, 4 * n) / perChild(small.read, n));
    std::printf("  write  N=%u %7.0f   4N %7.0f   ratio %.2f\n", n, perChild(small.write, n),
                perChild(large.write, 4 * n), perChild(large.write, 4 * n) / perChild(small.write, n));
    return 0;
}
