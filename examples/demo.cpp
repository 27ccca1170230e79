// Reads a purchase order into classes of the generated shape, prints what it
// holds, writes it back as XML and reads that again.

#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"

#include <chrono>
#include <functional>
#include <cstdio>
#include <fstream>
#include <sstream>

using namespace MxXmlLib;
using Example::CPurchaseOrder;

namespace
{
double MicrosecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

void Print(CPurchaseOrder const &order)
{
    std::printf("Purchase order of %s (%s), ship to %s, %s\n", order.orderDate.ToString().c_str(),
                Example::OrderStatusToString(static_cast<int>(order.status)), order.shipTo->name.c_str(),
                order.shipTo->city.c_str());
    if (order.billTo)
        std::printf("Bill to %s, %s\n", order.billTo->name.c_str(), order.billTo->city.c_str());
    if (order.hasComment)
        std::printf("Comment: %s\n", order.comment.c_str());
    std::printf("\n%-8s %-14s %8s %10s  %s\n", "part", "product", "quantity", "price", "delivery");
    for (Example::CItem const *item : *order.items->items)
    {
        std::string delivery;
        if (item->delivery && item->delivery->hasShipDate)
            delivery = "ship " + item->delivery->shipDate.ToString();
        else if (item->delivery && !item->delivery->pickup.empty())
            delivery = "pick up at " + item->delivery->pickup;
        std::printf("%-8s %-14s %8d %10s  %s\n", item->partNum.c_str(), item->productName.c_str(),
                    item->quantity, item->usPrice.ToString().c_str(), delivery.c_str());
    }
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::string const path = argc > 1 ? argv[1] : MX_EXAMPLE_DATA_DIR "/purchase-order.xml";
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return 1;
    }
    std::stringstream text;
    text << in.rdbuf();
    std::string const xml = text.str();

    int status = 0;
    try
    {
        CSmartPtr<CPurchaseOrder> order(new CPurchaseOrder);
        auto start = std::chrono::steady_clock::now();
        order->FromXml(xml.c_str());
        double const readTime = MicrosecondsSince(start);
        Print(*order);

        CSerializationContext context;
        context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
        std::string const reference = order->ToXml(true, true, LF, context);
        std::printf("\nWritten back as XML:\n%s\n", reference.c_str());

        // Every format, compressed and not: write, read back into a new
        // object, and compare that object's XML with the reference.
        struct Format
        {
            char const *name;
            std::function<CBinaryData()> write;
            std::function<void(CPurchaseOrder &, CBinaryData const &)> read;
        };
        auto xmlAs = [&](CompressionType compression) {
            return [&, compression] {
                return order->ToXmlStream(true, true, XmlEncoding_UTF8, LF, context, compression);
            };
        };
        auto jsonAs = [&](CompressionType compression) {
            return [&, compression] {
                return order->ToJsonStream(true, XmlEncoding_UTF8, LF, context, compression);
            };
        };
        auto fastInfosetAs = [&](CompressionType compression) {
            return [&, compression] { return order->ToFastInfosetStream(FInfoDecl_None, context, compression); };
        };
        // Byte input is detected: compressed or not, XML text or Fast Infoset.
        auto readXml = [&](CPurchaseOrder &target, CBinaryData const &bytes) { target.FromXmlStream(bytes, context); };
        auto readJson = [&](CPurchaseOrder &target, CBinaryData const &bytes) {
            target.FromJsonStream(bytes, context);
        };
        Format const formats[] = {
            {"XML", xmlAs(CompressionNone), readXml},
            {"XML gzip", xmlAs(CompressionGZip), readXml},
            {"XML zlib", xmlAs(CompressionZLib), readXml},
            {"JSON", jsonAs(CompressionNone), readJson},
            {"JSON gzip", jsonAs(CompressionGZip), readJson},
            {"FI", fastInfosetAs(CompressionNone), readXml},
            {"FI gzip", fastInfosetAs(CompressionGZip), readXml},
        };
        std::printf("%-10s %10s %12s %12s %10s\n", "format", "bytes", "write (us)", "read (us)", "round trip");
        for (Format const &format : formats)
        {
            start = std::chrono::steady_clock::now();
            CBinaryData const bytes = format.write();
            double const writeTime = MicrosecondsSince(start);
            CSmartPtr<CPurchaseOrder> again(new CPurchaseOrder);
            start = std::chrono::steady_clock::now();
            format.read(*again, bytes);
            double const readBackTime = MicrosecondsSince(start);
            bool const same = again->ToXml(true, true, LF, context) == reference;
            std::printf("%-10s %10lu %12.1f %12.1f %10s\n", format.name, static_cast<unsigned long>(bytes.GetLength()),
                        writeTime, readBackTime, same ? "same" : "DIFFERS");
            if (!same)
                status = 1;
        }
        std::printf("(the first read of the sample text took %.1f us)\n", readTime);

        // What a reader of a broken order is told: the innermost element's
        // path, and the chain of causes.
        // Reading converts values but leaves facets to writing.
        std::string broken = xml;
        broken.replace(broken.find("<po:quantity>2<"), 15, "<po:quantity>two<");
        try
        {
            CSmartPtr<CPurchaseOrder> bad(new CPurchaseOrder);
            bad->FromXml(broken.c_str());
            std::printf("\nA broken quantity was accepted\n");
            status = 1;
        }
        catch (CMxException const &e)
        {
            std::printf("\nA quantity that is no number, on reading:\n%s\n", e.GetFullMessage().c_str());
        }
        try
        {
            order->items->items->GetAt(0)->partNum = "872-A";
            order->ToXml(false, false, LF, context);
            std::printf("\nA broken part number was written\n");
            status = 1;
        }
        catch (CMxException const &e)
        {
            std::printf("\nA part number that breaks its pattern, on writing:\n%s\n", e.GetFullMessage().c_str());
        }
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        status = 1;
    }
    Example::CleanAllMetaData();
    return status;
}
