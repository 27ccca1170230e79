// The facet check, in checks per second, against baselines of the same run:
//  - a pattern facet on a 20-character string (compiled anew for every check,
//    as the library keeps no cache) against std::regex built and run the same
//    way, and against the length facets alone;
//  - the bounds of an i4 (minInclusive and maxInclusive) against the parse of
//    the same value from text with i4FromString, which must cost more.
#include "values/Conversions.h"
#include "values/FacetCheck.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <regex>
#include <string>
#include <vector>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

volatile std::uint64_t g_sink;

// Best of five rounds, nanoseconds per item.
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

void Report(char const *what, double ns, char const *baselineName, double baselineNs)
{
    std::printf("%-34s %10.1f ns %12.0f /s   vs %-30s %10.1f ns   ratio %6.2f\n", what, ns, 1e9 / ns, baselineName,
                baselineNs, ns / baselineNs);
}

void Patterns()
{
    std::size_t const n = 20000;
    std::string const pattern = "[A-Z]{3}-\\d{4}-[a-z]{11}";
    std::string const value = "ABC-1234-abcdefghijk"; // 20 characters
    CPrimitiveRestrictions const withPattern(pattern.c_str(), -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
    CPrimitiveRestrictions const lengthsOnly(nullptr, 1, 40, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
    MxVariant cell;
    cell.SetString(value);

    double const ours = NanosecondsPerItem(n, [&] {
        for (std::size_t i = 0; i < n; ++i)
            CheckPrimitiveFacets("e", cell, ItemType_string, withPattern);
        g_sink = n;
    });
    double const regex = NanosecondsPerItem(n, [&] {
        std::uint64_t matches = 0;
        for (std::size_t i = 0; i < n; ++i)
            matches += std::regex_match(value, std::regex(pattern, std::regex::ECMAScript)) ? 1 : 0;
        g_sink = matches;
    });
    double const lengths = NanosecondsPerItem(n * 10, [&] {
        for (std::size_t i = 0; i < n * 10; ++i)
            CheckPrimitiveFacets("e", cell, ItemType_string, lengthsOnly);
        g_sink = n;
    });
    Report("string pattern check (20 chars)", ours, "std::regex built + matched", regex);
    Report("string pattern check (20 chars)", ours, "string length facets only", lengths);
}

void Integers()
{
    std::size_t const n = 1000000;
    std::vector<std::string> texts;
    std::vector<MxVariant> cells(n);
    std::uint32_t x = 12345;
    for (std::size_t i = 0; i < n; ++i)
    {
        x = x * 1103515245u + 12345u;
        std::int32_t v = static_cast<std::int32_t>(x % 2000001u) - 1000000;
        texts.push_back(CConversions::i4ToString(v));
        cells[i].SetI4(v);
    }
    CPrimitiveRestrictions const bounds(nullptr, -1, -1, "-1000000", "1000000", nullptr, nullptr, -1, -1, -1);

    double const check = NanosecondsPerItem(n, [&] {
        for (MxVariant const &c : cells)
            CheckPrimitiveFacets("e", c, ItemType_i4, bounds);
        g_sink = n;
    });
    double const collapse = NanosecondsPerItem(n, [&] {
        std::int64_t sum = 0;
        for (std::string const &t : texts)
            sum += CConversions::i4FromString(t, Rule::Collapse);
        g_sink = static_cast<std::uint64_t>(sum);
    });
    double const none = NanosecondsPerItem(n, [&] {
        std::int64_t sum = 0;
        for (std::string const &t : texts)
            sum += CConversions::i4FromString(t, Rule::None);
        g_sink = static_cast<std::uint64_t>(sum);
    });
    Report("i4 facet check (min/maxInclusive)", check, "i4FromString, rule Collapse", collapse);
    Report("i4 facet check (min/maxInclusive)", check, "i4FromString, rule None", none);
}

} // namespace

int main()
{
    Patterns();
    Integers();
    return 0;
}
