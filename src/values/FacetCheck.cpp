#include "values/FacetCheck.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/XsdPattern.h"

#include <charconv>
#include <limits>
#include <type_traits>
#include <cstdint>
#include <string>

namespace MxXmlLib
{

namespace
{

using Rule = CWhitespaceUtils::WhitespaceRule;

// Bounds are read as a schema states them: collapsed, then parsed as the
// value's own type. A bound that does not parse raises that parser's error.
template <typename T> T ParseBound(T (*parse)(std::string const &, Rule), std::string const &bound)
{
    return parse(bound, Rule::Collapse);
}

// Most integer bounds are plain digits with an optional sign. For those the
// collapse is the identity and the strtol-style parse gives the plain value,
// so they are read in one pass without a copy; anything else (blanks, a
// minus before an unsigned bound, more than 18 digits, out of range) takes
// the full parser with its wrap-around and its messages.
template <typename T> T ParseIntegerBound(T (*parse)(std::string const &, Rule), std::string const &bound)
{
    char const *p = bound.data();
    char const *const end = p + bound.size();
    bool negative = false;
    if (p != end && (*p == '+' || *p == '-'))
        negative = *p++ == '-';
    std::size_t const digits = static_cast<std::size_t>(end - p);
    if (digits == 0 || digits > 18 || (negative && !std::is_signed<T>::value))
        return parse(bound, Rule::Collapse);
    std::int64_t magnitude = 0; // [0, 10^18)
    for (; p != end; ++p)
    {
        unsigned const d = static_cast<unsigned>(*p - '0');
        if (d > 9)
            return parse(bound, Rule::Collapse);
        magnitude = magnitude * 10 + d;
    }
    std::int64_t const value = negative ? -magnitude : magnitude;
    if (value < static_cast<std::int64_t>(std::numeric_limits<T>::min()) ||
        (value > 0 && static_cast<std::uint64_t>(value) > static_cast<std::uint64_t>(std::numeric_limits<T>::max())))
        return parse(bound, Rule::Collapse);
    return static_cast<T>(value);
}

// The four bound tests in their fixed order. Each test is written so that a
// NaN value, whose comparisons are all false, fails every bound present.
template <typename T, typename ReadBound, typename Fail>
void CheckOrderedBounds(CPrimitiveRestrictions const &facets, T const &value, ReadBound readBound, Fail fail)
{
    if (!facets.minInclusive.empty() && !(value >= readBound(facets.minInclusive)))
        fail();
    if (!facets.maxInclusive.empty() && !(value <= readBound(facets.maxInclusive)))
        fail();
    if (!facets.minExclusive.empty() && !(value > readBound(facets.minExclusive)))
        fail();
    if (!facets.maxExclusive.empty() && !(value < readBound(facets.maxExclusive)))
        fail();
}

// Dates and durations are only partially ordered: a pair that compares
// indeterminate passes every bound.
template <typename T, typename Fail>
void CheckPartialBounds(CPrimitiveRestrictions const &facets, T const &value,
                        T (*parse)(std::string const &, Rule), Fail fail)
{
    if (!facets.minInclusive.empty() &&
        value.CompareTo(ParseBound(parse, facets.minInclusive)) == CDateTime::DTLessThan)
        fail();
    if (!facets.maxInclusive.empty() &&
        value.CompareTo(ParseBound(parse, facets.maxInclusive)) == CDateTime::DTGreaterThan)
        fail();
    if (!facets.minExclusive.empty())
    {
        CDateTime::DTCompareResult const r = value.CompareTo(ParseBound(parse, facets.minExclusive));
        if (r != CDateTime::DTGreaterThan && r != CDateTime::DTIndeterminate)
            fail();
    }
    if (!facets.maxExclusive.empty())
    {
        CDateTime::DTCompareResult const r = value.CompareTo(ParseBound(parse, facets.maxExclusive));
        if (r != CDateTime::DTLessThan && r != CDateTime::DTIndeterminate)
            fail();
    }
}

bool HasFacet(int facet) { return facet >= 0; }

// minLength, maxLength and length against a size in bytes.
template <typename Fail> void CheckLengths(CPrimitiveRestrictions const &facets, std::size_t size, Fail fail)
{
    if (HasFacet(facets.minLength) && size < static_cast<std::size_t>(facets.minLength))
        fail();
    if (HasFacet(facets.maxLength) && size > static_cast<std::size_t>(facets.maxLength))
        fail();
    if (HasFacet(facets.length) && size != static_cast<std::size_t>(facets.length))
        fail();
}

// The digits of an integer are the characters of its text, a minus sign
// included: -128 has four.
template <typename Fail> void CheckTotalDigits(CPrimitiveRestrictions const &facets, std::string const &text, Fail fail)
{
    if (HasFacet(facets.totalDigits) && text.size() > static_cast<std::size_t>(facets.totalDigits))
        fail();
}

[[noreturn]] void ThrowText(char const *name, std::string const &shown)
{
    throw CMxException(FormatString("Invalid Value for %s [%s].", name, shown.c_str()));
}

[[noreturn]] void ThrowNumber(char const *name, int shown)
{
    throw CMxException(FormatString("Invalid Value for %s [%d]", name, shown));
}

// "%f" of the C runtime in the "C" locale, whatever locale the caller set.
[[noreturn]] void ThrowReal(char const *name, double shown)
{
    char buffer[400]; // %f of DBL_MAX has 309 integer digits
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), shown, std::chars_format::fixed, 6);
    throw CMxException(FormatString("Invalid Value for %s [%s]", name, std::string(buffer, r.ptr).c_str()));
}

// An integer type that fits "%d" in the message: i1, i2, i4, ui1, ui2, ui4.
// A ui4 beyond the signed range is printed as "%d" prints it.
template <typename T>
void CheckSmallInteger(char const *name, T value, CPrimitiveRestrictions const &facets,
                       T (*parse)(std::string const &, Rule), std::string (*print)(T))
{
    auto fail = [&] { ThrowNumber(name, static_cast<int>(value)); };
    CheckOrderedBounds(facets, value, [&](std::string const &b) { return ParseIntegerBound(parse, b); }, fail);
    if (HasFacet(facets.totalDigits))
        CheckTotalDigits(facets, print(value), fail);
}

// i8 and ui8: printed by their own text.
template <typename T>
void CheckWideInteger(char const *name, T value, CPrimitiveRestrictions const &facets,
                      T (*parse)(std::string const &, Rule), std::string (*print)(T))
{
    auto fail = [&] { ThrowText(name, print(value)); };
    CheckOrderedBounds(facets, value, [&](std::string const &b) { return ParseIntegerBound(parse, b); }, fail);
    if (HasFacet(facets.totalDigits))
        CheckTotalDigits(facets, print(value), fail);
}

template <typename T>
void CheckReal(char const *name, T value, CPrimitiveRestrictions const &facets, T (*parse)(std::string const &, Rule))
{
    CheckOrderedBounds(facets, value, [&](std::string const &b) { return ParseBound(parse, b); },
                       [&] { ThrowReal(name, static_cast<double>(value)); });
}

// year, month and day: numbers, read from a bound of any date form.
template <typename T>
void CheckCalendarField(char const *name, T value, CPrimitiveRestrictions const &facets,
                        T (*parse)(std::string const &, Rule))
{
    CheckOrderedBounds(facets, value, [&](std::string const &b) { return ParseBound(parse, b); },
                       [&] { ThrowNumber(name, static_cast<int>(value)); });
}

void CheckDate(char const *name, MxVariant const &cell, CPrimitiveRestrictions const &facets,
               CDateTime (*parse)(std::string const &, Rule))
{
    CDateTime const value = cell.GetDate();
    CheckPartialBounds(facets, value, parse, [&] { ThrowText(name, value.ToString()); });
}

void CheckBinary(char const *name, CBinaryData const &value, CPrimitiveRestrictions const &facets, bool asHex)
{
    CheckLengths(facets, value.GetLength(),
                 [&] { ThrowText(name, asHex ? value.GetAsHexString() : value.GetAsBase64()); });
}

void CheckString(char const *name, std::string const &value, CPrimitiveRestrictions const &facets,
                 CCompiledPatternSlot const *compiled)
{
    auto fail = [&] { ThrowText(name, value); };
    CheckLengths(facets, value.size(), fail);
    if (facets.pattern.empty())
        return;
    bool matches;
    try
    {
        if (compiled)
            matches = compiled->Get(facets.pattern).Matches(value);
        else
        {
            // A pattern that is its own UTF-8 form is passed as it is, not copied.
            std::string converted;
            std::string_view const utf8 = LocalToUtf8View(facets.pattern, converted);
            matches = utf8.data() == facets.pattern.data() && utf8.size() == facets.pattern.size()
                          ? MatchesXsdPattern(facets.pattern, value)
                          : MatchesXsdPattern(std::string(utf8), value);
        }
    }
    catch (CMxException const &e)
    {
        throw CMxException(FormatString("%s\nInvalid Value for %s [%s].", e.GetMessage().c_str(), name,
                                        value.c_str()));
    }
    if (!matches)
        fail();
}

// Places before the point (0 for a zero integer part) and after it (0 for a
// zero fraction), as the schema's digit facets count them.
// A bound of at most 18 plain digits is the integer it spells; the full
// parser gives the same value with the same (positive) sign, at far more cost.
CDecimal ParseDecimalBound(std::string const &bound)
{
    if (bound.empty() || bound.size() > 18)
        return ParseBound(CConversions::decimalFromString, bound);
    long long digits = 0; // [0, 10^18)
    for (char c : bound)
    {
        if (c < '0' || c > '9')
            return ParseBound(CConversions::decimalFromString, bound);
        digits = digits * 10 + (c - '0');
    }
    return CDecimal(digits);
}

void CheckDecimal(char const *name, CDecimal const &value, CPrimitiveRestrictions const &facets)
{
    auto fail = [&] { ThrowText(name, value.ToString()); };
    CheckOrderedBounds(facets, value, ParseDecimalBound, fail);
    if (!HasFacet(facets.totalDigits) && !HasFacet(facets.fractionDigits))
        return;
    CBigInteger const zero;
    CBigInteger const integerPart = value.GetIntegerPart();
    long long const integerDigits =
        integerPart == zero ? 0 : static_cast<long long>(integerPart.GetAbs().ToString().size());
    long long const fractionalDigits = value.GetFractionPart() == zero ? 0 : value.GetFractionDivider();
    if (HasFacet(facets.totalDigits) && integerDigits + fractionalDigits > facets.totalDigits)
        fail();
    if (HasFacet(facets.fractionDigits) && fractionalDigits > facets.fractionDigits)
        fail();
}

void CheckInteger(char const *name, CBigInteger const &value, CPrimitiveRestrictions const &facets)
{
    auto fail = [&] { ThrowText(name, value.ToString()); };
    CheckOrderedBounds(facets, value,
                       [&](std::string const &b) { return ParseBound(CConversions::integerFromString, b); }, fail);
    if (HasFacet(facets.totalDigits))
        CheckTotalDigits(facets, value.ToString(), fail);
}

} // namespace

void CheckPrimitiveFacets(char const *name, MxVariant const &value, ItemType type,
                          CPrimitiveRestrictions const &facets)
{
    CheckPrimitiveFacets(name, value, type, facets, nullptr);
}

void CheckPrimitiveFacets(char const *name, MxVariant const &value, ItemType type,
                          CPrimitiveRestrictions const &facets, CCompiledPatternSlot const *pattern)
{
    using C = CConversions;
    switch (type)
    {
    case ItemType_hexBinary:
        return CheckBinary(name, value.GetHexBinary(), facets, true);
    case ItemType_base64Binary:
        return CheckBinary(name, value.GetBase64Binary(), facets, false);
    case ItemType_i1:
        return CheckSmallInteger(name, value.GetI1(), facets, C::i1FromString, C::i1ToString);
    case ItemType_i2:
        return CheckSmallInteger(name, value.GetI2(), facets, C::i2FromString, C::i2ToString);
    case ItemType_i4:
        return CheckSmallInteger(name, value.GetI4(), facets, C::i4FromString, C::i4ToString);
    case ItemType_i8:
        return CheckWideInteger(name, value.GetI8(), facets, C::i8FromString, C::i8ToString);
    case ItemType_ui1:
        return CheckSmallInteger(name, value.GetUI1(), facets, C::ui1FromString, C::ui1ToString);
    case ItemType_ui2:
        return CheckSmallInteger(name, value.GetUI2(), facets, C::ui2FromString, C::ui2ToString);
    case ItemType_ui4:
        return CheckSmallInteger(name, value.GetUI4(), facets, C::ui4FromString, C::ui4ToString);
    case ItemType_ui8:
        return CheckWideInteger(name, value.GetUI8(), facets, C::ui8FromString, C::ui8ToString);
    case ItemType_r4:
        return CheckReal(name, value.GetR4(), facets, C::r4FromString);
    case ItemType_r8:
        return CheckReal(name, value.GetR8(), facets, C::r8FromString);
    case ItemType_duration:
    {
        CDateTimeSpan const span = value.GetDuration();
        return CheckPartialBounds(facets, span, C::durationFromString, [&] { ThrowText(name, span.ToString()); });
    }
    case ItemType_yearMonth:
        return CheckDate(name, value, facets, C::yearMonthFromString);
    case ItemType_monthDay:
        return CheckDate(name, value, facets, C::monthDayFromString);
    case ItemType_year:
        return CheckCalendarField(name, value.GetYear(), facets, C::yearFromString);
    case ItemType_month:
        return CheckCalendarField(name, value.GetMonth(), facets, C::monthFromString);
    case ItemType_day:
        return CheckCalendarField(name, value.GetDay(), facets, C::dayFromString);
    case ItemType_date:
        return CheckDate(name, value, facets, C::dateFromString);
    case ItemType_datetime:
        return CheckDate(name, value, facets, C::datetimeFromString);
    case ItemType_time:
        return CheckDate(name, value, facets, C::timeFromString);
    case ItemType_string:
        return CheckString(name, value.GetStringRef(), facets, pattern);
    case ItemType_boolean:
        return;
    case ItemType_decimal:
        return CheckDecimal(name, value.GetDecimal(), facets);
    case ItemType_integer:
        return CheckInteger(name, value.GetInteger(), facets);
    default:
        // char has no facets of its own, deliberately.
        throw CMxInvalidValueException(FormatString("Unknown type [%s].", value.GetType().c_str()));
    }
}

} // namespace MxXmlLib
