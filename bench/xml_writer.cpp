// Writing a generated tree of about 10 MB (elements, attributes, namespaces,
// text that needs escaping) through CXmlTextWriter into a CTextStream, against
// appending the same final bytes, element by element, to a std::string: the
// limit for any writer. Prints MB/s of both and their ratio.
//
//   scripts/bench.sh xml_writer

#include "MxXmlLib.h"

#include <chrono>
#include <ctime>
#include <cstdio>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
struct Item
{
    std::string id;
    std::string text;    // raw, with characters that need escaping
    std::string escaped; // as the writer writes it
};

std::vector<Item> MakeItems(std::size_t count)
{
    std::vector<Item> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        std::string const n = std::to_string(i);
        items.push_back({n, "Widget <" + n + "> & \"friends\" no. " + n,
                         "Widget &lt;" + n + "&gt; &amp; \"friends\" no. " + n});
    }
    return items;
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

std::string WriteWithWriter(std::vector<Item> const &items, double &seconds)
{
    double const start = CpuClock::Now();
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.StartDocument();
    writer.SetFormatted(true);
    writer.AddNamespace("po", "urn:example:po");
    writer.StartElement("orders", "urn:example:po");
    for (Item const &item : items)
    {
        writer.StartElement("item", "urn:example:po");
        writer.WriteAttribute("id", "", item.id, ItemType_string);
        writer.WriteAttribute("code", "urn:example:codes", "A&B", ItemType_string);
        writer.StartElement("name", "urn:example:po");
        writer.WriteText(item.text, ItemType_string, false);
        writer.EndElement();
        writer.EndElement();
    }
    writer.EndElement();
    writer.EndDocument();
    std::string out = stream.TextAsString(); // as the ToXml frame returns it
    seconds = Seconds(start);
    return out;
}

std::string AppendFinalBytes(std::vector<Item> const &items, double &seconds)
{
    double const start = CpuClock::Now();
    std::string out = "<po:orders xmlns:po=\"urn:example:po\">\n";
    for (Item const &item : items)
    {
        out += "\t<po:item id=\"";
        out += item.id;
        out += "\" xmlns:AA=\"urn:example:codes\" AA:code=\"A&amp;B\">\n\t\t<po:name>";
        out += item.escaped;
        out += "</po:name>\n\t</po:item>\n";
    }
    out += "</po:orders>\n";
    seconds = Seconds(start);
    return out;
}
} // namespace

int main()
{
    std::vector<Item> const items = MakeItems(95000);
    double bestWriter = 1e9, bestString = 1e9;
    std::string written, appended;
    for (int round = 0; round < 5; ++round)
    {
        double s;
        written = WriteWithWriter(items, s);
        bestWriter = std::min(bestWriter, s);
        appended = AppendFinalBytes(items, s);
        bestString = std::min(bestString, s);
    }
    if (written != appended)
    {
        std::fprintf(stderr, "outputs differ (%zu and %zu bytes)\n", written.size(), appended.size());
        return 1;
    }
    double const mb = static_cast<double>(written.size()) / 1e6;
    std::printf("%8s %14s %16s %8s\n", "size MB", "writer MB/s", "std::string MB/s", "ratio");
    std::printf("%8.1f %14.1f %16.1f %8.2f\n", mb, mb / bestWriter, mb / bestString, bestString / bestWriter);
    return 0;
}
