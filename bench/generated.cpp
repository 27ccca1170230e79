// The classes that mx_generate makes from examples/data/purchase-order.xsd
// against the hand-written model of the same schema (tests/model), reading
// and writing one purchase order of about 10 MB (or the sizes given, in MB)
// as XML, JSON and Fast Infoset. The two take turns in each of 8 rounds, and
// the best CPU time of each counts; the ratio is generated time over
// hand-written time, so 1.05 means 5% slower. One more row writes XML with
// the rows' compiled patterns kept, in both models.
//
//   scripts/bench.sh generated [MB...]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "model/PurchaseOrder.h"
#include "purchase_order.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

using namespace MxXmlLib;

namespace
{
using MxBench::CpuNow;

struct Best
{
    double hand = 1e9;
    double generated = 1e9;
};

double Time(std::function<void()> const &work)
{
    double const start = CpuNow();
    work();
    return CpuNow() - start;
}

CSmartPtr<CXmlObjectBase> NewGenerated()
{
    return Generated::CreateRoot("purchaseOrder", "urn:example:po");
}

void Run(std::size_t bytes)
{
    std::string const xml = MxBench::MakePurchaseOrder(bytes);
    double const mb = static_cast<double>(xml.size()) / 1e6;
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    CSerializationContext strict;
    strict.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    strict.GetJsonContext().SetStrict(true);
    // The rows compile each pattern afresh for every value they write unless
    // told to keep it; the schema's patterns (\p{Nd}, any decimal digit)
    // cost more to compile than the hand-written model's \d (ASCII digits).
    // With the patterns kept, writing compares the rest of the work.
    CSerializationContext reusing(context);
    reusing.SetReuseCompiledPatterns(true);

    // The documents each model writes, read back by both in the JSON and
    // Fast Infoset rounds.
    CSmartPtr<Example::CPurchaseOrder> hand(new Example::CPurchaseOrder);
    hand->FromXml(xml.c_str(), context);
    CSmartPtr<CXmlObjectBase> generated = NewGenerated();
    generated->FromXml(xml.c_str(), context);
    std::string const json = hand->ToJson(true, LF, strict);
    CBinaryData const fastInfoset = hand->ToFastInfosetStream(FInfoDecl_None, context);
    bool const sameXml = hand->ToXml(true, true, LF, context) == generated->ToXml(true, true, LF, context);
    bool const sameJson = json == generated->ToJson(true, LF, strict);

    Best xmlRead, xmlWrite, xmlWriteReusing, jsonRead, jsonWrite, fiRead, fiWrite;
    // Each step times one model, then the other; the order swaps every
    // round, so that neither always meets the heap the other left.
    auto both = [](int round, Best &best, std::function<void()> const &hand,
                   std::function<void()> const &generated) {
        if (round % 2 == 0)
            best.hand = std::min(best.hand, Time(hand));
        best.generated = std::min(best.generated, Time(generated));
        if (round % 2 == 1)
            best.hand = std::min(best.hand, Time(hand));
    };
    for (int round = 0; round < 8; ++round)
    {
        CSmartPtr<Example::CPurchaseOrder> h(new Example::CPurchaseOrder);
        CSmartPtr<CXmlObjectBase> g = NewGenerated();
        both(round, xmlRead, [&] { h->FromXml(xml.c_str(), context); }, [&] { g->FromXml(xml.c_str(), context); });
        both(round, xmlWrite, [&] { h->ToXml(true, true, LF, context); },
             [&] { g->ToXml(true, true, LF, context); });
        both(round, xmlWriteReusing, [&] { h->ToXml(true, true, LF, reusing); },
             [&] { g->ToXml(true, true, LF, reusing); });
        both(round, jsonWrite, [&] { h->ToJson(true, LF, strict); }, [&] { g->ToJson(true, LF, strict); });
        both(round, fiWrite, [&] { h->ToFastInfosetStream(FInfoDecl_None, context); },
             [&] { g->ToFastInfosetStream(FInfoDecl_None, context); });

        CSmartPtr<Example::CPurchaseOrder> hj(new Example::CPurchaseOrder);
        CSmartPtr<CXmlObjectBase> gj = NewGenerated();
        both(round, jsonRead, [&] { hj->FromJson(json.c_str(), strict); },
             [&] { gj->FromJson(json.c_str(), strict); });
        CSmartPtr<Example::CPurchaseOrder> hf(new Example::CPurchaseOrder);
        CSmartPtr<CXmlObjectBase> gf = NewGenerated();
        both(round, fiRead, [&] { hf->FromXmlStream(fastInfoset, context); },
             [&] { gf->FromXmlStream(fastInfoset, context); });
    }

    std::printf("\n%.1f MB purchase order (XML)     %12s %14s %18s\n", mb, "hand MB/s", "generated MB/s",
                "generated/hand");
    auto row = [mb](char const *name, Best const &best) {
        std::printf("%-32s %12.1f %14.1f %18.3f\n", name, mb / best.hand, mb / best.generated,
                    best.generated / best.hand);
    };
    row("read XML (FromXml)", xmlRead);
    row("write XML (ToXml)", xmlWrite);
    row("write XML, patterns kept", xmlWriteReusing);
    row("read JSON (FromJson, strict)", jsonRead);
    row("write JSON (ToJson, strict)", jsonWrite);
    row("read Fast Infoset", fiRead);
    row("write Fast Infoset", fiWrite);
    if (!sameXml || !sameJson)
        std::printf("note: the two models wrote different documents\n");
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    try
    {
        if (argc == 1)
            Run(10 * 1000 * 1000);
        for (int i = 1; i < argc; ++i)
            Run(static_cast<std::size_t>(std::atof(argv[i]) * 1e6));
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
    Example::CleanAllMetaData();
    Generated::CleanAllMetaData();
    return 0;
}
