// Reading and writing the hand-written purchase-order model (tests/model) from generated
// documents (1, 10 and 100 MB unless sizes in MB are given), every figure
// against raw Expat parsing the same bytes in the same run (namespace parser,
// handlers that only count):
//
//   FromXml/Expat  throughput of FromXml over Expat's (goal >= 0.5)
//   tree/Expat     the bare document tree (LoadXml) over Expat's
//   ToXml/Expat    throughput of ToXml, bytes written, over Expat's parse of
//                  those bytes (goal >= 1.0)
//   ToXml reuse    the same with the context's opt-in reuse of compiled
//                  pattern facets (SetReuseCompiledPatterns)
//   ms/MB vs first FromXml time per MB over that of the first size (flat: 1.0)
//   peak RSS/size  resident set at the peak of one FromXml, the input text
//                  included, over the document size; measured in a fresh
//                  process so that no earlier heap is reused (goal <= 4)
//
// Times are this thread's CPU time, best of several rounds.
//
//   scripts/bench.sh binding [sizes in MB...]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <expat.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace MxXmlLib;

namespace
{
using MxBench::CpuNow;

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

using MxBench::StatusBytes;

// The child of PeakRss: one read in a fresh heap. Prints the peak over the
// document size, the text counted once.
int RssChild(std::size_t mb, CSerializationContext const &context)
{
    std::string const xml = MxBench::MakePurchaseOrder(mb * 1000 * 1000);
    CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
    std::size_t const before = StatusBytes("VmRSS");
    // Writing 5 resets the high-water mark to the present resident set.
    if (FILE *reset = std::fopen("/proc/self/clear_refs", "w"))
    {
        std::fputs("5", reset);
        std::fclose(reset);
    }
    order->FromXml(xml.c_str(), context);
    std::size_t const peak = StatusBytes("VmHWM");
    std::printf("%.3f\n", static_cast<double>(peak - before + xml.size()) / static_cast<double>(xml.size()));
    return 0;
}

double PeakRss(char const *self, std::size_t mb)
{
    int fds[2];
    if (pipe(fds) != 0)
        return 0;
    pid_t const child = fork();
    if (child == 0)
    {
        dup2(fds[1], 1);
        close(fds[0]);
        std::string const size = std::to_string(mb);
        execl("/proc/self/exe", self, "--rss", size.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    char text[64] = {};
    ssize_t const got = read(fds[0], text, sizeof text - 1);
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return got > 0 ? std::strtod(text, nullptr) : 0;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    CSerializationContext reusing;
    reusing = context;
    reusing.SetReuseCompiledPatterns(true);
    if (argc == 3 && std::strcmp(argv[1], "--rss") == 0)
        return RssChild(std::strtoul(argv[2], nullptr, 10), context);

    std::vector<std::size_t> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {1, 10, 100};

    std::printf("%7s %10s %14s %11s %12s %12s %13s %14s\n", "size MB", "Expat MB/s", "FromXml/Expat", "tree/Expat",
                "ToXml/Expat", "ToXml reuse", "ms/MB vs 1st", "peak RSS/size");
    double firstPerMB = 0;
    for (std::size_t mb : sizes)
    {
        std::string const xml = MxBench::MakePurchaseOrder(mb * 1000 * 1000);
        double const size = static_cast<double>(xml.size()) / 1e6;
        double expat = 1e9, tree = 1e9, read = 1e9, write = 1e9, reuse = 1e9;
        int const rounds = mb >= 100 ? 3 : 5;
        std::string written;
        for (int r = 0; r < rounds; ++r)
        {
            expat = std::min(expat, RawExpat(xml));
            tree = std::min(tree, Tree(xml));
            CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
            double start = CpuNow();
            order->FromXml(xml.c_str(), context);
            read = std::min(read, CpuNow() - start);
            written.clear();
            written.shrink_to_fit();
            start = CpuNow();
            written = order->ToXml(true, true, LF, context);
            write = std::min(write, CpuNow() - start);
            start = CpuNow();
            std::string const again = order->ToXml(true, true, LF, reusing);
            reuse = std::min(reuse, CpuNow() - start);
            if (again != written)
            {
                std::fprintf(stderr, "reusing compiled patterns changed the output\n");
                return 1;
            }
        }
        if (written != xml)
        {
            std::fprintf(stderr, "the written document differs from the input (%zu and %zu bytes)\n",
                         written.size(), xml.size());
            return 1;
        }
        double const perMB = read / size;
        if (firstPerMB == 0)
            firstPerMB = perMB;
        std::printf("%7.1f %10.1f %14.2f %11.2f %12.2f %12.2f %13.2f %14.2f\n", size, size / expat, expat / read,
                    expat / tree, expat / write, expat / reuse, perMB / firstPerMB, PeakRss(argv[0], mb));
    }
    Example::CleanAllMetaData();
    return 0;
}
