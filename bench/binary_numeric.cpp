// Base64 of 100 MB against a plain table-driven codec written here, and the
// cost of the decimal arithmetic at growing sizes (time at 2n over time at n
// stays near 4 for quadratic work).

#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/Decimal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>

using namespace MxXmlLib;

namespace
{

using Clock = std::chrono::steady_clock;

template <typename F> double BestSeconds(int rounds, F f)
{
    double best = 1e30;
    for (int i = 0; i < rounds; ++i)
    {
        auto const start = Clock::now();
        f();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return best;
}

// --- the baseline codec ---------------------------------------------------------

char const kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string PlainEncode(unsigned char const *in, std::size_t n)
{
    std::string out((n + 2) / 3 * 4, '=');
    char *o = &out[0];
    std::size_t i = 0;
    for (; i + 3 <= n; i += 3, o += 4)
    {
        unsigned v = in[i] << 16 | in[i + 1] << 8 | in[i + 2];
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
        o[2] = kAlphabet[(v >> 6) & 63];
        o[3] = kAlphabet[v & 63];
    }
    if (i < n)
    {
        unsigned v = in[i] << 16 | (i + 1 < n ? in[i + 1] << 8 : 0);
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
        if (i + 1 < n)
            o[2] = kAlphabet[(v >> 6) & 63];
    }
    return out;
}

// Strict: groups of four, '=' only at the end, nothing else.
std::size_t PlainDecode(std::string const &text, unsigned char *out)
{
    static signed char table[256];
    static bool ready = false;
    if (!ready)
    {
        std::memset(table, -1, sizeof(table));
        for (int v = 0; v < 64; ++v)
            table[static_cast<unsigned char>(kAlphabet[v])] = static_cast<signed char>(v);
        ready = true;
    }
    auto const *in = reinterpret_cast<unsigned char const *>(text.data());
    std::size_t n = text.size();
    while (n > 0 && in[n - 1] == '=')
        --n;
    unsigned char *o = out;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4)
    {
        unsigned v = table[in[i]] << 18 | table[in[i + 1]] << 12 | table[in[i + 2]] << 6 | table[in[i + 3]];
        o[0] = static_cast<unsigned char>(v >> 16);
        o[1] = static_cast<unsigned char>(v >> 8);
        o[2] = static_cast<unsigned char>(v);
        o += 3;
    }
    if (n - i >= 2)
    {
        unsigned v = table[in[i]] << 18 | table[in[i + 1]] << 12 | (n - i == 3 ? table[in[i + 2]] << 6 : 0);
        *o++ = static_cast<unsigned char>(v >> 16);
        if (n - i == 3)
            *o++ = static_cast<unsigned char>(v >> 8);
    }
    return static_cast<std::size_t>(o - out);
}

std::string RandomDigits(std::mt19937_64 &rng, std::size_t n)
{
    std::string s(n, '0');
    for (auto &c : s)
        c = static_cast<char>('0' + rng() % 10);
    s[0] = static_cast<char>('1' + rng() % 9);
    return s;
}

void Base64Figures()
{
    std::size_t const size = 100u << 20;
    std::mt19937_64 rng(42);
    std::unique_ptr<unsigned char[]> raw(new unsigned char[size]);
    for (std::size_t i = 0; i < size; i += 8)
    {
        unsigned long long v = rng();
        std::memcpy(raw.get() + i, &v, std::min<std::size_t>(8, size - i));
    }
    CBinaryData data(raw.get(), static_cast<unsigned long>(size), false);
    double const mb = static_cast<double>(size) / (1 << 20);

    std::string ours, plain;
    double const encodeOurs = BestSeconds(3, [&] { ours = data.GetAsBase64(); });
    double const encodePlain = BestSeconds(3, [&] { plain = PlainEncode(raw.get(), size); });
    if (ours != plain)
        std::printf("MISMATCH in encode\n");

    CBinaryData decoded;
    std::unique_ptr<unsigned char[]> out(new unsigned char[plain.size()]);
    std::size_t plainCount = 0;
    double const decodeOurs = BestSeconds(3, [&] { decoded.SetAsBase64(ours); });
    double const decodePlain = BestSeconds(3, [&] {
        out.reset(new unsigned char[plain.size() + 1]); // the same allocation as the library makes
        plainCount = PlainDecode(plain, out.get());
    });
    if (decoded.GetLength() != size || plainCount != size || std::memcmp(decoded.GetData(), raw.get(), size) != 0)
        std::printf("MISMATCH in decode\n");

    std::printf("base64 encode 100 MB: %8.1f MB/s   plain codec %8.1f MB/s   ratio %.2f\n", mb / encodeOurs,
                mb / encodePlain, encodePlain / encodeOurs);
    std::printf("base64 decode 100 MB: %8.1f MB/s   plain codec %8.1f MB/s   ratio %.2f\n", mb / decodeOurs,
                mb / decodePlain, decodePlain / decodeOurs);
}

void NumericFigures()
{
    std::mt19937_64 rng(7);
    double previousMultiply = 0, previousDivide = 0, previousDecimal = 0;
    for (std::size_t digits : {500, 1000, 2000})
    {
        CBigInteger const a(RandomDigits(rng, digits).c_str());
        CBigInteger const b(RandomDigits(rng, digits).c_str());
        CBigInteger const product = a * b;
        CBigInteger const half(RandomDigits(rng, digits / 2).c_str());
        int const rounds = 20;
        CBigInteger sink;
        double const multiply = BestSeconds(rounds, [&] { sink = a * b; });
        double const divide = BestSeconds(rounds, [&] { sink = product / half; });

        std::string const da = RandomDigits(rng, digits / 4) + "." + RandomDigits(rng, 30);
        std::string const db = RandomDigits(rng, digits / 8) + "." + RandomDigits(rng, 30);
        CDecimal const x(da.c_str()), y(db.c_str());
        CDecimal quotient;
        double const decimal = BestSeconds(rounds, [&] { quotient = x / y; });

        std::printf("%4zu digits: CBigInteger a*b %8.3f ms", digits, multiply * 1e3);
        if (previousMultiply > 0)
            std::printf(" (x%.1f)", multiply / previousMultiply);
        std::printf("   2n-digit / n/2-digit %8.3f ms", divide * 1e3);
        if (previousDivide > 0)
            std::printf(" (x%.1f)", divide / previousDivide);
        std::printf("   CDecimal %zu.30 / %zu.30 digits to %d places %8.3f ms", digits / 4, digits / 8,
                    CDecimal::GetMaxDecimalPlaces(), decimal * 1e3);
        if (previousDecimal > 0)
            std::printf(" (x%.1f)", decimal / previousDecimal);
        std::printf("\n");
        previousMultiply = multiply;
        previousDivide = divide;
        previousDecimal = decimal;
    }
    CDecimal third;
    double const small = BestSeconds(1000, [&] { third = CDecimal(1) / CDecimal(3); });
    std::printf("CDecimal 1/3 to %d places: %.1f us\n", CDecimal::GetMaxDecimalPlaces(), small * 1e6);
}

} // namespace

int main()
{
    Base64Figures();
    NumericFigures();
    return 0;
}
