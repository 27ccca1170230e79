// Building the document tree from generated documents of about 10 MB and
// 100 MB, against raw Expat over the same bytes (namespace parser, handlers
// that only count). Prints MB/s, the ratio to Expat, and the heap the tree and
// its input copy hold, as a multiple of the document size.
//
//   scripts/bench.sh document_tree [sizes in MB...]

#include "MxXmlLib.h"

#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <malloc.h>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
// Purchase orders in the shape of the classic XSD primer sample: two
// addresses, a comment, and items with product name, quantity, price,
// comment and ship date; a part number attribute on each item.
std::string MakeDocument(std::size_t targetBytes)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<po:orders xmlns:po=\"http://www.example.com/PO1\">\n";
    auto address = [](char const *tag, std::string const &id) {
        return std::string("    <po:") + tag + " country=\"US\">\n"
               "      <po:name>Alice Smith " + id + "</po:name>\n"
               "      <po:street>123 Maple Street</po:street>\n"
               "      <po:city>Mill Valley</po:city>\n"
               "      <po:state>CA</po:state>\n"
               "      <po:zip>90952</po:zip>\n"
               "    </po:" + tag + ">\n";
    };
    for (unsigned n = 0; xml.size() < targetBytes; ++n)
    {
        std::string const id = std::to_string(n);
        xml += "  <po:purchaseOrder orderDate=\"1999-10-20\" id=\"" + id + "\">\n";
        xml += address("shipTo", id) + address("billTo", id);
        xml += "    <po:comment>Hurry, my lawn is going &quot;wild&quot;!</po:comment>\n"
               "    <po:items>\n";
        for (int i = 0; i < 3; ++i)
            xml += "      <po:item partNum=\"872-A" + std::to_string(i) + "\">\n"
                   "        <po:productName>Lawnmower &amp; catcher</po:productName>\n"
                   "        <po:quantity>" + std::to_string(i + 1) + "</po:quantity>\n"
                   "        <po:USPrice>148.95</po:USPrice>\n"
                   "        <po:comment>Confirm this is electric</po:comment>\n"
                   "        <po:shipDate>1999-05-21</po:shipDate>\n"
                   "      </po:item>\n";
        xml += "    </po:items>\n  </po:purchaseOrder>\n";
    }
    xml += "</po:orders>\n";
    return xml;
}

struct Counts
{
    unsigned long elements = 0, attributes = 0, characters = 0;
};

void XMLCALL OnStart(void *user, XML_Char const *, XML_Char const **attributes)
{
    auto *c = static_cast<Counts *>(user);
    ++c->elements;
    for (; *attributes; attributes += 2)
        ++c->attributes;
}
void XMLCALL OnEnd(void *, XML_Char const *) {}
void XMLCALL OnText(void *user, XML_Char const *, int length)
{
    static_cast<Counts *>(user)->characters += static_cast<unsigned long>(length);
}

// CPU time of this thread: other processes on a shared machine slow the
// wall clock, not this.
struct CpuClock
{
    static double Now()
    {
        timespec ts{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
        return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
    }
};

double Seconds(double since)
{
    return CpuClock::Now() - since;
}

double RawExpat(std::string const &xml)
{
    double const start = CpuClock::Now();
    Counts counts;
    XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetUserData(parser, &counts);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    if (XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_ERROR)
        std::abort();
    XML_ParserFree(parser);
    return Seconds(start);
}

double BuildTree(std::string const &xml, std::size_t &heapBytes)
{
    std::size_t const before = mallinfo2().uordblks;
    double const start = CpuClock::Now();
    double seconds;
    {
        CXmlDocument document;
        document.LoadXml(xml.c_str());
        seconds = Seconds(start);
        heapBytes = mallinfo2().uordblks - before;
    }
    return seconds;
}
} // namespace

int main(int argc, char **argv)
{
    std::vector<std::size_t> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {10, 100};

    std::printf("%8s %12s %12s %10s %14s\n", "size MB", "Expat MB/s", "tree MB/s", "ratio", "heap / size");
    for (std::size_t mb : sizes)
    {
        std::string const xml = MakeDocument(mb * 1000 * 1000);
        double const megabytes = static_cast<double>(xml.size()) / 1e6;
        double bestExpat = 1e9, bestTree = 1e9;
        std::size_t heap = 0;
        int const rounds = mb >= 100 ? 3 : 5;
        for (int r = 0; r < rounds; ++r)
        {
            bestExpat = std::min(bestExpat, RawExpat(xml));
            bestTree = std::min(bestTree, BuildTree(xml, heap));
        }
        std::printf("%8.1f %12.1f %12.1f %10.2f %14.2f\n", megabytes, megabytes / bestExpat, megabytes / bestTree,
                    bestExpat / bestTree, static_cast<double>(heap) / static_cast<double>(xml.size()));
    }
    return 0;
}
