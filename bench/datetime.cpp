// Parses and prints one million dateTime values, and the same texts with the
// C library's strptime and strftime as the baseline, in the same run.
//
// The baseline texts have no fraction and no zone (strptime has no portable
// form for either); our parser is also timed on texts with nine fraction
// digits and an offset. Both printers produce a std::string per value.

#include "values/DateTime.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{

constexpr int kCount = 1000000;

std::vector<std::string> MakeTexts(bool withFractionAndZone)
{
    std::vector<std::string> texts;
    texts.reserve(kCount);
    unsigned long long state = 0x9E3779B97F4A7C15ULL;
    auto next = [&state](unsigned range) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned>((state >> 33) % range);
    };
    char buf[64];
    for (int i = 0; i < kCount; ++i)
    {
        int n = std::snprintf(buf, sizeof buf, "%04u-%02u-%02uT%02u:%02u:%02u", 1900 + next(200), 1 + next(12),
                              1 + next(28), next(24), next(60), next(60));
        if (withFractionAndZone)
            std::snprintf(buf + n, sizeof buf - n, ".%09u%c%02u:%02u", next(1000000000), next(2) ? '+' : '-', next(15),
                          next(4) * 15);
        texts.emplace_back(buf);
    }
    return texts;
}

template <typename F> double NanosecondsPerValue(F &&body)
{
    auto const start = std::chrono::steady_clock::now();
    body();
    auto const stop = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::nano>(stop - start).count() / kCount;
}

} // namespace

int main()
{
    std::vector<std::string> const plain = MakeTexts(false);
    std::vector<std::string> const full = MakeTexts(true);
    std::vector<CDateTime> values(kCount);
    std::vector<std::tm> parts(kCount);
    unsigned long long sink = 0;

    double const ours = NanosecondsPerValue([&] {
        for (int i = 0; i < kCount; ++i)
            values[i].ParseXSDDateTime(plain[i].c_str());
    });
    double const libc = NanosecondsPerValue([&] {
        for (int i = 0; i < kCount; ++i)
        {
            parts[i] = std::tm{};
            if (strptime(plain[i].c_str(), "%Y-%m-%dT%H:%M:%S", &parts[i]) == nullptr)
                ++sink;
        }
    });
    double const oursPrint = NanosecondsPerValue([&] {
        for (int i = 0; i < kCount; ++i)
            sink += values[i].ToString().size();
    });
    double const libcPrint = NanosecondsPerValue([&] {
        char buf[64];
        for (int i = 0; i < kCount; ++i)
        {
            std::size_t n = std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%S", &parts[i]);
            sink += std::string(buf, n).size();
        }
    });
    double const oursFull = NanosecondsPerValue([&] {
        for (int i = 0; i < kCount; ++i)
            values[i].ParseXSDDateTime(full[i].c_str());
    });
    double const oursFullPrint = NanosecondsPerValue([&] {
        for (int i = 0; i < kCount; ++i)
            sink += values[i].ToString().size();
    });

    std::printf("dateTime, %d values (ns per value; ratio = ours / C library)\n", kCount);
    std::printf("  parse  CDateTime::ParseXSDDateTime %7.1f   strptime %7.1f   ratio %.2f\n", ours, libc, ours / libc);
    std::printf("  print  CDateTime::ToString         %7.1f   strftime %7.1f   ratio %.2f\n", oursPrint, libcPrint,
                oursPrint / libcPrint);
    std::printf("  with 9 fraction digits and an offset (no baseline): parse %.1f, print %.1f\n", oursFull,
                oursFullPrint);
    std::printf("  (checksum %llu)\n", sink);
    return 0;
}
