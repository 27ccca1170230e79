// Reads a purchase order into a bound class and prints what it holds.

#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>

using namespace MxXmlLib;

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

    try
    {
        CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
        auto const start = std::chrono::steady_clock::now();
        order->FromXml(xml.c_str());
        auto const elapsed = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start);

        std::printf("Purchase order of %s for %s, %s\n", order->orderDate.c_str(), order->shipToName.c_str(),
                    order->shipToCity.c_str());
        std::printf("%-8s %-16s %8s %10s\n", "part", "product", "quantity", "price");
        for (auto const &item : order->items)
            std::printf("%-8s %-16s %8s %10s\n", item.partNum.c_str(), item.productName.c_str(),
                        item.quantity.c_str(), item.price.c_str());
        std::printf("\n%-10s %10s %12s\n", "format", "bytes", "read (us)");
        std::printf("%-10s %10zu %12.1f\n", "XML", xml.size(), elapsed.count());
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
    return 0;
}
