// Arbitrary text into the cell of every primitive, 1 to 26, under the rule
// named by the first byte. Then:
//  - a text that reads prints, and the printed text of the types whose
//    canonical form is stable reads back to itself;
//  - the same text serves as every bound and as the pattern of a facet check
//    of the value just read, which must raise only CMxException;
//  - an i4 bound that its parser accepts is read by the facet check the same
//    way (the check has a shortcut for plain digits).
#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/FacetCheck.h"
#include "values/Variant.h"

#include <cstdint>
#include <limits>
#include <string>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

template <typename F> bool Succeeds(F f)
{
    try
    {
        f();
        return true;
    }
    catch (CMxException const &)
    {
        return false;
    }
}

// Types whose printed text reads back to the same text. Left out: r4 and r8
// (the default precision rounds), decimal (a capped fraction prints wider
// than it reads), and the cases caught below.
bool HasStableText(int type)
{
    switch (type)
    {
    case ItemType_hexBinary:
    case ItemType_base64Binary:
    case ItemType_i1:
    case ItemType_i2:
    case ItemType_i4:
    case ItemType_i8:
    case ItemType_ui1:
    case ItemType_ui2:
    case ItemType_ui4:
    case ItemType_ui8:
    case ItemType_duration:
    case ItemType_yearMonth:
    case ItemType_monthDay:
    case ItemType_month:
    case ItemType_day:
    case ItemType_date:
    case ItemType_datetime:
    case ItemType_time:
    case ItemType_boolean:
    case ItemType_integer:
        return true;
    default:
        return false;
    }
}

void RoundTrip(int type, Rule rule, std::string const &text)
{
    MxVariant cell;
    if (!Succeeds([&] { cell.FromString(text, static_cast<ItemType>(type), rule); }))
        return;
    Check(cell.GetTypeAsEnum() == type);
    std::string printed;
    Check(Succeeds([&] { printed = cell.ToString(); }));
    MxVariant copy(cell);
    Check(copy.ToString() == printed);

    // The zero duration prints "P" or "-P", which its parser refuses.
    if (HasStableText(type) && printed != "P" && printed != "-P")
    {
        MxVariant again;
        Check(Succeeds([&] { again.FromString(printed, static_cast<ItemType>(type), Rule::None); }));
        Check(again.ToString() == printed);
    }

    // The text as every bound, and as a pattern when it is a string.
    std::string const bound = text.substr(0, text.find('\0'));
    CPrimitiveRestrictions const facets(bound.c_str(), 0, 1 << 20, bound.c_str(), bound.c_str(), bound.c_str(),
                                        bound.c_str(), -1, 40, 20);
    Succeeds([&] { CheckPrimitiveFacets("e", cell, static_cast<ItemType>(type), facets); });
}

// The facet check's reading of an i4 bound against i4FromString's.
void CompareIntegerBound(std::string const &text)
{
    std::int32_t bound = 0;
    if (!Succeeds([&] { bound = CConversions::i4FromString(text, Rule::Collapse); }))
        return;
    CPrimitiveRestrictions const inclusive(nullptr, -1, -1, text.c_str(), text.c_str(), nullptr, nullptr, -1, -1, -1);
    CPrimitiveRestrictions const exclusive(nullptr, -1, -1, nullptr, nullptr, text.c_str(), nullptr, -1, -1, -1);
    MxVariant cell;
    cell.SetI4(bound);
    Check(Succeeds([&] { CheckPrimitiveFacets("e", cell, ItemType_i4, inclusive); }));
    Check(!Succeeds([&] { CheckPrimitiveFacets("e", cell, ItemType_i4, exclusive); }));
    if (bound < std::numeric_limits<std::int32_t>::max())
    {
        cell.SetI4(bound + 1);
        Check(Succeeds([&] { CheckPrimitiveFacets("e", cell, ItemType_i4, exclusive); }));
        Check(!Succeeds([&] { CheckPrimitiveFacets("e", cell, ItemType_i4, inclusive); }));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0 || size > 4096)
        return 0;
    Rule const rule = static_cast<Rule>(data[0] % 4);
    std::string const text(reinterpret_cast<char const *>(data + 1), size - 1);
    for (int type = ItemType_hexBinary; type <= ItemType_integer; ++type)
        RoundTrip(type, rule, text);
    CompareIntegerBound(text.substr(0, text.find('\0')));
    return 0;
}
