// JSON output and input of the hand-written purchase-order model (tests/model), from a
// generated document of about 10 MB: MB/s of ToJson and FromJson, against
// RapidJSON writing the same JSON (its Writer over a DOM of our output, so
// that the content is the same to the byte but for the layout) and parsing it
// (its Reader, SAX, no DOM), and against ToXml and FromXml of the same
// objects, all in the same run; then the strict mode against the default one
// (ToJson, goal at least 0.8 of its speed) and against FromXml (FromJson,
// goal at least 0.8 of its speed). The JSON of both modes read back must
// give the same XML as the original, or the run fails.
//
//   scripts/bench.sh json [size in MB]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "json/JsonContext.h"
#include "model/PurchaseOrder.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;
using Example::CPurchaseOrder;

namespace
{
using MxBench::CpuNow;

// Best of `runs` timings of `call`, in seconds of this thread's CPU time.
template <class F> double Best(int runs, F const &call)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i)
    {
        double const start = CpuNow();
        call();
        double const s = CpuNow() - start;
        if (s < best)
            best = s;
    }
    return best;
}

double MBps(std::size_t bytes, double seconds)
{
    return static_cast<double>(bytes) / (1024.0 * 1024.0) / seconds;
}
} // namespace

int main(int argc, char **argv)
{
    Register(16, 1);
    std::size_t const megabytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10;
    std::string const document = MxBench::MakePurchaseOrder(megabytes * 1024 * 1024);
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    try
    {
        CSmartPtr<CPurchaseOrder> order(new CPurchaseOrder);
        order->FromXml(document.c_str(), context);
        std::string const xml = order->ToXml(false, true, LF, context);
        std::string const json = order->ToJson(true, LF, context);

        int const runs = 5;
        double const toXml = Best(runs, [&] { (void)order->ToXml(false, true, LF, context); });
        double const toJson = Best(runs, [&] { (void)order->ToJson(true, LF, context); });
        double const fromXml = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromXml(xml.c_str(), context);
        });
        double const fromJson = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromJson(json.c_str(), context);
        });

        // A copy would share the JSON options; the strict calls get their own.
        CSerializationContext strict;
        strict.GetNamespaceAliases().Add("po", Example::kPoNamespace);
        strict.GetJsonContext().SetStrict(true);
        std::string const strictJson = order->ToJson(true, LF, strict);
        double const toStrict = Best(runs, [&] { (void)order->ToJson(true, LF, strict); });
        double const fromStrict = Best(runs, [&] {
            CSmartPtr<CPurchaseOrder> read(new CPurchaseOrder);
            read->FromJson(strictJson.c_str(), strict);
        });
        rapidjson::Document dom;
        dom.Parse(json.c_str(), json.size());
        if (dom.HasParseError())
        {
            std::fprintf(stderr, "RapidJSON does not read our JSON\n");
            return 1;
        }
        std::size_t rapidBytes = 0;
        double const rapidWrite = Best(runs, [&] {
            rapidjson::StringBuffer buffer;
            rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
            writer.SetIndent('\t', 1);
            dom.Accept(writer);
            rapidBytes = buffer.GetSize();
        });
        double const rapidRead = Best(runs, [&] {
            rapidjson::Reader reader;
            rapidjson::BaseReaderHandler<> handler;
            rapidjson::StringStream stream(json.c_str());
            reader.Parse(stream, handler);
        });

        CSmartPtr<CPurchaseOrder> again(new CPurchaseOrder);
        again->FromJson(json.c_str(), context);
        bool same = again->ToXml(false, true, LF, context) == xml;
        CSmartPtr<CPurchaseOrder> strictAgain(new CPurchaseOrder);
        strictAgain->FromJson(strictJson.c_str(), strict);
        same = same && strictAgain->ToXml(false, true, LF, context) == xml;

        std::printf("purchase order: %d items, XML %.1f MB, JSON %.1f MB (best of %d)\n", order->items->items->GetCount(),
                    static_cast<double>(xml.size()) / 1048576.0, static_cast<double>(json.size()) / 1048576.0, runs);
        std::printf("%-10s %10s %10s %12s\n", "operation", "MB/s", "ms", "JSON / XML");
        std::printf("%-10s %10.1f %10.1f %12s\n", "ToXml", MBps(xml.size(), toXml), toXml * 1e3, "");
        std::printf("%-10s %10.1f %10.1f %11.2fx\n", "ToJson", MBps(json.size(), toJson), toJson * 1e3,
                    toJson / toXml);
        std::printf("%-10s %10.1f %10.1f %12s\n", "FromXml", MBps(xml.size(), fromXml), fromXml * 1e3, "");
        std::printf("%-10s %10.1f %10.1f %11.2fx\n", "FromJson", MBps(json.size(), fromJson), fromJson * 1e3,
                    fromJson / fromXml);
        std::printf("(JSON / XML: time of the JSON call over the XML call on the same objects)\n");
        std::printf("RapidJSON PrettyWriter %.1f MB/s (%.1f MB), Reader %.1f MB/s\n", MBps(rapidBytes, rapidWrite),
                    static_cast<double>(rapidBytes) / 1048576.0, MBps(json.size(), rapidRead));
        std::printf("ToJson / RapidJSON Writer: %.2f (throughput; goal >= 0.5)\n",
                    MBps(json.size(), toJson) / MBps(rapidBytes, rapidWrite));
        std::printf("FromJson / RapidJSON Reader: %.2f (throughput)\n", rapidRead / fromJson);
        std::printf("FromJson / FromXml: %.2f (throughput on the same content, XML bytes; goal >= 0.6)\n",
                    fromXml / fromJson);
        std::printf("strict JSON %.1f MB\n", static_cast<double>(strictJson.size()) / 1048576.0);
        std::printf("%-16s %10.1f %10.1f   speed %.2f of default ToJson (goal >= 0.80)\n", "ToJson strict",
                    MBps(strictJson.size(), toStrict), toStrict * 1e3, toJson / toStrict);
        std::printf("%-16s %10.1f %10.1f   speed %.2f of FromXml (goal >= 0.80)\n", "FromJson strict",
                    MBps(strictJson.size(), fromStrict), fromStrict * 1e3, fromXml / fromStrict);
        std::printf("round trip through JSON (both modes) gives the same XML: %s\n", same ? "yes" : "NO");
        return same ? 0 : 1;
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        return 1;
    }
}
