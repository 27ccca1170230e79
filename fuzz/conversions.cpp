// Arbitrary text through every text-to-value conversion of the plain types,
// under the rule named by the first byte, with the C runtime as the oracle of
// the integer and floating-point parses; then the same text as a format of the
// floating-point output.
#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/Variant.h"

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

template <typename F> bool Parses(F parse)
{
    try
    {
        parse();
        return true;
    }
    catch (CMxInvalidValueException const &)
    {
        return false;
    }
}

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// The result of the rule, checked against the C runtime's strtoll, strtoull
// and strtod, which read the same forms in the "C" locale.
void CompareWithRuntime(std::string const &text)
{
    char const *s = text.c_str();
    char *end;
    bool const nonEmpty = !text.empty();

    errno = 0;
    long long i8 = std::strtoll(s, &end, 10);
    bool ok = nonEmpty && errno != ERANGE && *end == '\0';
    std::int64_t mine = 0;
    Check(ok == Parses([&] { mine = CConversions::i8FromString(text, Rule::None); }));
    Check(!ok || mine == i8);
    if (ok)
    {
        bool fits = i8 >= INT32_MIN && i8 <= INT32_MAX;
        std::int32_t mine4 = 0;
        Check(fits == Parses([&] { mine4 = CConversions::i4FromString(text, Rule::None); }));
        Check(!fits || mine4 == i8);
    }

    errno = 0;
    unsigned long long ui8 = std::strtoull(s, &end, 10);
    ok = nonEmpty && errno != ERANGE && *end == '\0';
    std::uint64_t mineU = 0;
    Check(ok == Parses([&] { mineU = CConversions::ui8FromString(text, Rule::None); }));
    Check(!ok || mineU == ui8);

    if (text == "NaN" || text == "1.#QNAN" || text == "-NAN" || text == "INF" || text == "-INF")
        return;
    double r8 = std::strtod(s, &end);
    ok = nonEmpty && *end == '\0';
    double mineR = 0;
    Check(ok == Parses([&] { mineR = CConversions::r8FromString(text, Rule::None); }));
    Check(!ok || (std::isnan(r8) ? std::isnan(mineR) : std::memcmp(&r8, &mineR, sizeof(r8)) == 0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    Rule const rule = static_cast<Rule>(data[0] % 5); // 4 is an unknown rule
    std::string const text(reinterpret_cast<char const *>(data + 1), size - 1);

    Parses([&] { CConversions::i1FromString(text, rule); });
    Parses([&] { CConversions::i2FromString(text, rule); });
    Parses([&] { CConversions::i4FromString(text, rule); });
    Parses([&] { CConversions::i8FromString(text, rule); });
    Parses([&] { CConversions::ui1FromString(text, rule); });
    Parses([&] { CConversions::ui2FromString(text, rule); });
    Parses([&] { CConversions::ui4FromString(text, rule); });
    Parses([&] { CConversions::ui8FromString(text, rule); });
    float r4 = 0;
    double r8 = 0;
    Parses([&] { r4 = CConversions::r4FromString(text, rule); });
    Parses([&] { r8 = CConversions::r8FromString(text, rule); });
    Parses([&] { CConversions::charFromString(text, rule); });
    Parses([&] { CConversions::stringFromString(text, rule); });
    Parses([&] { CConversions::booleanFromString(text, rule); });

    if (data[0] % 5 != 4)
        CompareWithRuntime(CWhitespaceUtils::ApplyRule(rule, text));

    // The text as an output format: cut at the buffer, never beyond.
    std::string const format = text.substr(0, text.find('\0'));
    Check(CConversions::r8ToString(r8, format.c_str()).size() <= 47);
    Check(CConversions::r4ToString(r4, format.c_str()).size() <= 31);
    Check(CConversions::r8ToString(-1.5e-300, format.c_str()).size() <= 47);

    MxVariant cell;
    for (int type = 0; type <= 28; ++type)
        try
        {
            cell.FromString(text, static_cast<ItemType>(type), rule);
            MxVariant copy(cell);
            copy.ToString(format.c_str());
        }
        catch (CMxException const &)
        {
        }
    return 0;
}
