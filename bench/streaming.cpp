// Documents larger than memory. A purchase order of the size given in MB
// (default 200; the 2 GB run is `bench_streaming 2000`) is generated into a
// temporary file and
//
//   read:  through the element-end function of CXmlDocument, with the file
//          read in chunks (AsyncFromXmlFile): each item is bound into a CItem
//          as it ends, its figures summed, and dropped from the tree;
//   write: from a model built item by item, each item written through one
//          CXmlTextWriter into a CFileTextStream and released at once.
//
// Prints MB/s of raw Expat over the same file in the same chunks (the
// baseline), of both runs and their ratios to it, and the peak resident set
// of each run over the process's resident set before it: flat memory means a
// few MB whatever the size.
//
//   scripts/bench.sh streaming [size in MB]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <expat.h>
#include <string>
#include <unistd.h>

using namespace MxXmlLib;

namespace
{
using MxBench::CpuNow;

using MxBench::StatusBytes;

// The resident set now, after the high-water mark is reset to it.
std::size_t ResetPeak()
{
    if (FILE *reset = std::fopen("/proc/self/clear_refs", "w"))
    {
        std::fputs("5", reset);
        std::fclose(reset);
    }
    return StatusBytes("VmRSS");
}

double MB(std::size_t bytes)
{
    return static_cast<double>(bytes) / 1e6;
}

char const kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<po:purchaseOrder xmlns:po=\"urn:example:po\" orderDate=\"2026-11-22\" status=\"open\">\n"
                     "\t<po:shipTo country=\"US\">\n\t\t<po:name>Alice Smith</po:name>\n"
                     "\t\t<po:street>123 Maple Street</po:street>\n\t\t<po:city>Mill Valley</po:city>\n"
                     "\t\t<po:state>CA</po:state>\n\t\t<po:zip>90952</po:zip>\n\t</po:shipTo>\n"
                     "\t<po:comment>Generated &amp; large</po:comment>\n\t<po:items>\n";
char const kTail[] = "\t</po:items>\n</po:purchaseOrder>\n";

// The same items as the binding benchmark, written piece by piece.
std::size_t WriteDocument(char const *path, std::size_t targetBytes, unsigned &items)
{
    FILE *file = std::fopen(path, "wb");
    if (file == nullptr)
        std::abort();
    std::size_t size = std::fwrite(kHead, 1, sizeof kHead - 1, file);
    std::string item;
    for (items = 0; size + sizeof kTail < targetBytes; ++items)
    {
        unsigned const n = items;
        item = "\t\t<po:item partNum=\"" + std::to_string(100 + n % 900) + "-AA\">\n"
               "\t\t\t<po:productName>Lawnmower &amp; catcher " + std::to_string(n) + "</po:productName>\n"
               "\t\t\t<po:quantity>" + std::to_string(1 + n % 99) + "</po:quantity>\n"
               "\t\t\t<po:USPrice>148.95</po:USPrice>\n";
        if (n % 3 == 0)
            item += "\t\t\t<po:comment>Confirm this is electric</po:comment>\n";
        item += n % 2 ? "\t\t\t<po:shipDate>2026-12-01</po:shipDate>\n" : "\t\t\t<po:pickup>Store 12</po:pickup>\n";
        item += "\t\t</po:item>\n";
        size += std::fwrite(item.data(), 1, item.size(), file);
    }
    size += std::fwrite(kTail, 1, sizeof kTail - 1, file);
    std::fclose(file);
    return size;
}

void XMLCALL OnStart(void *user, XML_Char const *, XML_Char const **) { ++*static_cast<unsigned long *>(user); }
void XMLCALL OnEnd(void *, XML_Char const *) {}
void XMLCALL OnText(void *, XML_Char const *, int) {}

double RawExpat(char const *path)
{
    double const start = CpuNow();
    unsigned long count = 0;
    XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetUserData(parser, &count);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    FILE *file = std::fopen(path, "rb");
    static char chunk[0x20000];
    for (;;)
    {
        std::size_t const got = std::fread(chunk, 1, sizeof chunk, file);
        if (XML_Parse(parser, chunk, static_cast<int>(got), got == 0) == XML_STATUS_ERROR)
            std::abort();
        if (got == 0)
            break;
    }
    std::fclose(file);
    XML_ParserFree(parser);
    return CpuNow() - start;
}

// What the element-end function sees: the function has no user argument.
struct Consumer
{
    CSerializationContext const *context = nullptr;
    unsigned long items = 0;
    long long quantity = 0;
} g_consumer;

bool OnElementEnd(CXmlElement *element)
{
    if (element->GetLocalName() != "item")
        return false;
    CSmartPtr<Example::CItem> item(new Example::CItem);
    item->FromXmlElement(element, *g_consumer.context);
    ++g_consumer.items;
    g_consumer.quantity += item->quantity;
    return true;
}

double StreamedRead(char const *path, CSerializationContext const &context, std::size_t &peak)
{
    g_consumer = Consumer();
    g_consumer.context = &context;
    AsyncFromXmlFile(true);
    std::size_t const before = ResetPeak();
    double const start = CpuNow();
    {
        CXmlDocument document(&OnElementEnd, context);
        document.Load(path);
    }
    double const seconds = CpuNow() - start;
    peak = StatusBytes("VmHWM") - before;
    AsyncFromXmlFile(false);
    return seconds;
}

double StreamedWrite(char const *path, unsigned items, CSerializationContext const &context, std::size_t &peak)
{
    std::size_t const before = ResetPeak();
    double const start = CpuNow();
    {
        CFileTextStream stream(path, XmlEncoding_UTF8);
        CXmlTextWriter writer(&stream);
        writer.SetFormatted(true);
        writer.StartDocument();
        writer.WriteXmlDeclaration();
        writer.AddNamespace("po", Example::kPoNamespace);
        writer.StartElement("purchaseOrder", Example::kPoNamespace);
        writer.WriteAttribute("orderDate", "", "2026-11-22", ItemType_date);
        writer.WriteAttribute("status", "", "open", ItemType_string);
        CSmartPtr<Example::CUSAddress> shipTo(new Example::CUSAddress("shipTo"));
        shipTo->country = "US";
        shipTo->name = "Alice Smith";
        shipTo->street = "123 Maple Street";
        shipTo->city = "Mill Valley";
        shipTo->state = "CA";
        shipTo->zip = "90952";
        CXmlObjectBase::ToXml_Int(shipTo.Get(), &writer, false, Example::kPoNamespace, context, false);
        writer.StartElement("comment", Example::kPoNamespace);
        writer.WriteText("Generated & large", ItemType_string, false);
        writer.EndElement();
        writer.StartElement("items", Example::kPoNamespace);
        CDecimal const price("148.95");
        CDateTime const date = CConversions::dateFromString("2026-12-01", CWhitespaceUtils::WhitespaceRule::None);
        for (unsigned n = 0; n < items; ++n)
        {
            CSmartPtr<Example::CItem> item(new Example::CItem);
            item->partNum = std::to_string(100 + n % 900) + "-AA";
            item->productName = "Lawnmower & catcher " + std::to_string(n);
            item->quantity = static_cast<int>(1 + n % 99);
            item->usPrice = price;
            if (n % 3 == 0)
            {
                item->comment = "Confirm this is electric";
                item->hasComment = true;
            }
            item->delivery = new Example::CDelivery;
            if (n % 2)
            {
                item->delivery->shipDate = date;
                item->delivery->hasShipDate = true;
            }
            else
                item->delivery->pickup = "Store 12";
            CXmlObjectBase::ToXml_Int(item.Get(), &writer, false, Example::kPoNamespace, context, false);
        }
        writer.EndElement();
        writer.EndElement();
        writer.EndDocument();
    }
    double const seconds = CpuNow() - start;
    peak = StatusBytes("VmHWM") - before;
    return seconds;
}

bool SameFile(char const *a, char const *b)
{
    FILE *x = std::fopen(a, "rb"), *y = std::fopen(b, "rb");
    bool same = x && y;
    static char bx[1 << 16], by[1 << 16];
    while (same)
    {
        std::size_t const nx = std::fread(bx, 1, sizeof bx, x), ny = std::fread(by, 1, sizeof by, y);
        same = nx == ny && std::memcmp(bx, by, nx) == 0;
        if (nx == 0)
            break;
    }
    if (x)
        std::fclose(x);
    if (y)
        std::fclose(y);
    return same;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::size_t const mb = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 200;
    std::string const dir = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp";
    std::string const input = dir + "/mx-stream-in-" + std::to_string(getpid()) + ".xml";
    std::string const output = dir + "/mx-stream-out-" + std::to_string(getpid()) + ".xml";
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    try
    {
        unsigned items = 0;
        std::size_t const size = WriteDocument(input.c_str(), mb * 1000 * 1000, items);
        double const expat = RawExpat(input.c_str());
        std::size_t readPeak = 0, writePeak = 0;
        double const read = StreamedRead(input.c_str(), context, readPeak);
        bool const allRead = g_consumer.items == items;
        double const write = StreamedWrite(output.c_str(), items, context, writePeak);
        bool const same = SameFile(input.c_str(), output.c_str());
        if (!std::getenv("MX_KEEP"))
        {
            std::remove(input.c_str());
            std::remove(output.c_str());
        }

        std::printf("document %.1f MB, %u items; Expat over the file in 0x20000-byte chunks: %.1f MB/s\n", MB(size),
                    items, MB(size) / expat);
        std::printf("%-24s %9s %12s %15s\n", "run", "MB/s", "vs Expat", "peak RSS MB");
        std::printf("%-24s %9.1f %12.2f %15.1f\n", "read, item by item", MB(size) / read, expat / read,
                    MB(readPeak));
        std::printf("%-24s %9.1f %12.2f %15.1f\n", "write, item by item", MB(size) / write, expat / write,
                    MB(writePeak));
        std::printf("every item read: %s; the written file equals the input: %s\n", allRead ? "yes" : "NO",
                    same ? "yes" : "NO");
        Example::CleanAllMetaData();
        return allRead && same ? 0 : 1;
    }
    catch (CMxException const &e)
    {
        std::remove(input.c_str());
        std::remove(output.c_str());
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
}
