// Reads a purchase order into the classes that mx_generate made from
// data/purchase-order.xsd at build time, changes it through the typed
// accessors, prints what it holds, writes it in every format, compressed and
// not, reads each back, and shows what a broken order looks like.

#include "purchase_order.h" // generated from data/purchase-order.xsd

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>

using namespace MxXmlLib;

namespace
{
double MicrosecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

CSmartPtr<po::CPurchaseOrderType> NewOrder()
{
    CSmartPtr<CXmlObjectBase> root = po::CreateRoot("purchaseOrder", "urn:example:po");
    return dynamic_cast<po::CPurchaseOrderType *>(root.Get());
}

void Print(po::CPurchaseOrderType const &order)
{
    CSmartPtr<po::CUSAddress> const shipTo = order.GetShipTo();
    std::printf("Purchase order of %s (%s), ship to %s, %s\n", order.GetOrderDate().ToString().c_str(),
                order.HasStatus() ? po::OrderStatusToString(static_cast<int>(order.GetStatus())) : "open",
                shipTo->GetName().c_str(), shipTo->GetCity().c_str());
    if (CSmartPtr<po::CUSAddress> const billTo = order.GetBillTo(); !billTo.IsNull())
        std::printf("Bill to %s, %s\n", billTo->GetName().c_str(), billTo->GetCity().c_str());
    if (order.HasComment())
        std::printf("Comment: %s\n", order.GetComment().c_str());
    std::printf("\n%-8s %-14s %8s %10s  %s\n", "part", "product", "quantity", "price", "delivery");
    CSmartPtr<po::CItems> const items = order.GetItems();
    for (int i = 0; i < items->GetItemCount(); ++i)
    {
        po::CItem const *item = items->GetItemAt(i);
        CSmartPtr<po::CItem_Choice> const delivery = item->GetItem_Choice();
        std::string how;
        if (!delivery.IsNull() && delivery->HasShipDate())
            how = "ship " + delivery->GetShipDate().ToString();
        else if (!delivery.IsNull() && delivery->HasPickup())
            how = "pick up at " + delivery->GetPickup();
        std::printf("%-8s %-14s %8d %10s  %s\n", item->GetPartNum().c_str(), item->GetProductName().c_str(),
                    item->GetQuantity(), item->GetUSPrice().ToString().c_str(), how.c_str());
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
        // [walk]
        CSmartPtr<CXmlObjectBase> root = po::CreateRoot("purchaseOrder", "urn:example:po");
        root->FromXml(xml.c_str());
        auto *order = dynamic_cast<po::CPurchaseOrderType *>(root.Get());

        order->SetStatus(po::OrderStatus::closed);
        CSmartPtr<po::CItem> spade(new po::CItem("item"));
        spade->SetPartNum("455-SP");
        spade->SetProductName("Spade");
        spade->SetQuantity(3);
        spade->SetUSPrice(CDecimal("12.50"));
        order->GetItems()->AddItem(spade);

        CSerializationContext context;
        context.GetNamespaceAliases().Add("po", "urn:example:po");
        context.GetJsonContext().SetStrict(true); // JSON that reads back to the same document
        std::string const reference = order->ToXml(true, true, LF, context);
        std::string const json = order->ToJson(true, LF, context);
        CBinaryData const fastInfoset = order->ToFastInfosetStream(FInfoDecl_None, context);
        // [/walk]
        Print(*order);
        std::printf("\nWritten as XML:\n%s\n", reference.c_str());
        std::printf("as JSON:\n%s\n", json.c_str());
        std::printf("and as Fast Infoset, %lu bytes.\n\n", static_cast<unsigned long>(fastInfoset.GetLength()));

        // Every format, compressed and not: write, read back into a new
        // object, and compare that object's XML with the reference.
        struct Format
        {
            char const *name;
            std::function<CBinaryData()> write;
            std::function<void(po::CPurchaseOrderType &, CBinaryData const &)> read;
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
        auto readXml = [&](po::CPurchaseOrderType &target, CBinaryData const &bytes) {
            target.FromXmlStream(bytes, context);
        };
        auto readJson = [&](po::CPurchaseOrderType &target, CBinaryData const &bytes) {
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
            auto start = std::chrono::steady_clock::now();
            CBinaryData const bytes = format.write();
            double const writeTime = MicrosecondsSince(start);
            CSmartPtr<po::CPurchaseOrderType> again = NewOrder();
            start = std::chrono::steady_clock::now();
            format.read(*again, bytes);
            double const readBackTime = MicrosecondsSince(start);
            bool const same = again->ToXml(true, true, LF, context) == reference;
            std::printf("%-10s %10lu %12.1f %12.1f %10s\n", format.name, static_cast<unsigned long>(bytes.GetLength()),
                        writeTime, readBackTime, same ? "same" : "DIFFERS");
            if (!same)
                status = 1;
        }

        // What a reader of a broken order is told: the innermost element's
        // path, and the chain of causes.
        // Reading converts values but leaves facets to writing.
        std::string broken = xml;
        broken.replace(broken.find("<po:quantity>2<"), 15, "<po:quantity>two<");
        try
        {
            NewOrder()->FromXml(broken.c_str());
            std::printf("\nA broken quantity was accepted\n");
            status = 1;
        }
        catch (CMxException const &e)
        {
            std::printf("\nA quantity that is no number, on reading:\n%s\n", e.GetFullMessage().c_str());
        }
        try
        {
            order->GetItems()->GetItemAt(0)->SetPartNum("872-A");
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
    po::CleanAllMetaData();
    return status;
}
