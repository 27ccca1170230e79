// Text <-> number of CConversions against std::to_chars / std::from_chars,
// and appending to CTextStream against std::string, in the same run. Each
// figure is nanoseconds per operation and the ratio to its baseline.
#include "runtime/TextStream.h"
#include "values/Conversions.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

volatile std::uint64_t g_sink;

template <typename F> double NanosecondsPerItem(std::size_t items, F body)
{
    double best = 1e300;
    for (int round = 0; round < 5; ++round)
    {
        auto start = std::chrono::steady_clock::now();
        body();
        std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
        best = std::min(best, elapsed.count() / static_cast<double>(items));
    }
    return best;
}

void Report(char const *what, double ours, double baseline, char const *baselineName)
{
    std::printf("%-26s %8.1f ns  %-26s %8.1f ns  ratio %5.2f\n", what, ours, baselineName, baseline, ours / baseline);
}

template <typename T, typename ToText, typename FromText>
void CompareBothWays(char const *name, std::vector<T> const &values, ToText toText, FromText fromText)
{
    std::vector<std::string> texts;
    for (T v : values)
        texts.push_back(toText(v));

    double ours = NanosecondsPerItem(values.size(), [&] {
        std::uint64_t sum = 0;
        for (T v : values)
            sum += toText(v).size();
        g_sink = sum;
    });
    double base = NanosecondsPerItem(values.size(), [&] {
        std::uint64_t sum = 0;
        char buf[64];
        for (T v : values)
        {
            std::to_chars_result r;
            if constexpr (std::is_floating_point_v<T>)
                r = std::to_chars(buf, buf + sizeof(buf), v, std::chars_format::general, 16);
            else
                r = std::to_chars(buf, buf + sizeof(buf), v);
            sum += static_cast<std::uint64_t>(r.ptr - buf);
        }
        g_sink = sum;
    });
    Report((std::string(name) + "ToString").c_str(), ours, base, "std::to_chars");

    ours = NanosecondsPerItem(texts.size(), [&] {
        std::uint64_t sum = 0;
        for (std::string const &t : texts)
            sum += static_cast<std::uint64_t>(fromText(t));
        g_sink = sum;
    });
    base = NanosecondsPerItem(texts.size(), [&] {
        std::uint64_t sum = 0;
        for (std::string const &t : texts)
        {
            T v{};
            std::from_chars(t.data(), t.data() + t.size(), v);
            sum += static_cast<std::uint64_t>(v);
        }
        g_sink = sum;
    });
    Report((std::string(name) + "FromString").c_str(), ours, base, "std::from_chars");
}

void CompareStreams()
{
    std::vector<std::string> pieces;
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i)
        pieces.push_back(std::string(1 + random() % 24, static_cast<char>('a' + i % 26)));
    constexpr int kRepeat = 200;
    std::size_t items = 0;
    for (std::string const &p : pieces)
        items += p.size() + 2;
    items *= kRepeat;

    // The writers' pattern: a character, a piece, a character.
    double ours = NanosecondsPerItem(items, [&] {
        CTextStream stream;
        stream.Start();
        for (int r = 0; r < kRepeat; ++r)
            for (std::string const &p : pieces)
            {
                stream.Put('<');
                stream.Write(p.c_str());
                stream.Put('>');
            }
        g_sink = std::char_traits<char>::length(stream.Text());
    });
    double base = NanosecondsPerItem(items, [&] {
        std::string out;
        for (int r = 0; r < kRepeat; ++r)
            for (std::string const &p : pieces)
            {
                out.push_back('<');
                out.append(p.c_str());
                out.push_back('>');
            }
        g_sink = out.size();
    });
    std::printf("(per character appended, %zu characters, text taken at the end)\n", items);
    Report("CTextStream Put/Write", ours, base, "std::string");
}

} // namespace

int main()
{
    std::mt19937_64 random(42);
    constexpr std::size_t kCount = 200000;
    std::vector<std::int32_t> i4;
    std::vector<std::int64_t> i8;
    std::vector<double> r8;
    for (std::size_t i = 0; i < kCount; ++i)
    {
        std::uint64_t bits = random();
        i4.push_back(static_cast<std::int32_t>(bits >> (bits % 32)));
        i8.push_back(static_cast<std::int64_t>(bits >> (bits % 64)));
        r8.push_back(static_cast<double>(static_cast<std::int64_t>(bits >> 12)) * 1e-6 *
                     ((bits & 1) ? 1.0 : -1.0));
    }
    std::printf("%zu values each, best of 5 rounds\n", kCount);
    CompareBothWays(
        "i4", i4, [](std::int32_t v) { return CConversions::i4ToString(v); },
        [](std::string const &t) { return CConversions::i4FromString(t, Rule::None); });
    CompareBothWays(
        "i8", i8, [](std::int64_t v) { return CConversions::i8ToString(v); },
        [](std::string const &t) { return CConversions::i8FromString(t, Rule::None); });
    CompareBothWays(
        "r8", r8, [](double v) { return CConversions::r8ToString(v); },
        [](std::string const &t) { return CConversions::r8FromString(t, Rule::None); });
    CompareStreams();
    return 0;
}
