// Reading and writing the purchase-order model of examples/ from generated
// documents of about 10 MB and 100 MB (hundreds of thousands of items).
// Prints MB/s of raw Expat (namespace parser, counting handlers), of building
// the bare document tree, of reading into the model (FromXml) and of writing
// it (ToXml); the ratios of reading to Expat and to the tree; and the peak
// heap of a read as a multiple of the document size.
//
//   scripts/bench.sh binding [sizes in MB...]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <expat.h>
#include <malloc.h>
#include <new>
#include <string>
#include <vector>

using namespace MxXmlLib;

// Heap accounting through the global allocator: everything the library and
// the model allocate with new (Expat's own buffers are not counted).
namespace
{
std::size_t g_current = 0;
std::size_t g_peak = 0;
} // namespace

void *operator new(std::size_t size)
{
    void *p = std::malloc(size ? size : 1);
    if (p == nullptr)
        throw std::bad_alloc();
    g_current += malloc_usable_size(p);
    if (g_current > g_peak)
        g_peak = g_current;
    return p;
}

void operator delete(void *p) noexcept
{
    if (p)
    {
        g_current -= malloc_usable_size(p);
        std::free(p);
    }
}

void operator delete(void *p, std::size_t) noexcept
{
    operator delete(p);
}

namespace
{
double CpuNow()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void XMLCALL OnStart(void *user, XML_Char const *, XML_Char const **attributes)
{
    auto *count = static_cast<unsigned long *>(user);
    ++*count;
    for (; *attributes; attributes += 2)
        ++*count;
}
void XMLCALL OnEnd(void *, XML_Char const *) {}
void XMLCALL OnText(void *user, XML_Char const *, int length)
{
    *static_cast<unsigned long *>(user) += static_cast<unsigned long>(length);
}

double RawExpat(std::string const &xml)
{
    double const start = CpuNow();
    unsigned long count = 0;
    XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetUserData(parser, &count);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    if (XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_ERROR)
        std::abort();
    XML_ParserFree(parser);
    return CpuNow() - start;
}

double Tree(std::string const &xml)
{
    double const start = CpuNow();
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    return CpuNow() - start;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::vector<std::size_t> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {10, 100};

    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    std::printf("%7s %9s %9s %9s %9s %11s %10s %12s %11s\n", "size MB", "Expat", "tree", "read", "write",
                "read/Expat", "read/tree", "write/read", "peak/size");
    std::printf("%7s %9s %9s %9s %9s\n", "", "MB/s", "MB/s", "MB/s", "MB/s");
    for (std::size_t mb : sizes)
    {
        std::string const xml = MxBench::MakePurchaseOrder(mb * 1000 * 1000);
        double const size = static_cast<double>(xml.size()) / 1e6;
        double expat = 1e9, tree = 1e9, read = 1e9, write = 1e9;
        double peak = 0;
        int const rounds = mb >= 100 ? 2 : 4;
        std::string written;
        for (int r = 0; r < rounds; ++r)
        {
            expat = std::min(expat, RawExpat(xml));
            tree = std::min(tree, Tree(xml));
            CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
            std::size_t const base = g_current;
            g_peak = g_current;
            double start = CpuNow();
            order->FromXml(xml.c_str(), context);
            read = std::min(read, CpuNow() - start);
            peak = static_cast<double>(g_peak - base);
            start = CpuNow();
            written = order->ToXml(true, true, LF, context);
            write = std::min(write, CpuNow() - start);
        }
        if (written != xml)
            std::fprintf(stderr, "note: the written document differs from the input (%zu and %zu bytes)\n",
                         written.size(), xml.size());
        std::printf("%7.1f %9.1f %9.1f %9.1f %9.1f %11.2f %10.2f %12.2f %11.2f\n", size, size / expat, size / tree,
                    size / read, size / write, expat / read, tree / read, read / write,
                    peak / static_cast<double>(xml.size()));
    }
    Example::CleanAllMetaData();
    return 0;
}
