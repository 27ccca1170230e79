#include "values/Conversions.h"

#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <climits>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace MxXmlLib
{

namespace
{

template <typename T> std::string IntegerText(T value)
{
    char buf[24];
    std::to_chars_result r = std::to_chars(buf, buf + sizeof(buf), value);
    return std::string(buf, r.ptr);
}

// What the C runtime's isspace accepts in the "C" locale; strtol and strtod
// skip these before the number.
bool IsCSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// ---------------------------------------------------------------------------
// Integers

// One of i4, i8, ui4, ui8: its name in the messages and the largest magnitude
// that each sign may reach. The unsigned forms accept a minus sign and wrap.
struct IntegerForm
{
    char const *name;
    std::uint64_t maxPositive;
    std::uint64_t maxNegative;
};

constexpr IntegerForm kI4 = {"i4", 0x7FFFFFFFu, 0x80000000u};
constexpr IntegerForm kI8 = {"i8", 0x7FFFFFFFFFFFFFFFu, 0x8000000000000000u};
constexpr IntegerForm kUI4 = {"ui4", 0xFFFFFFFFu, 0xFFFFFFFFu};
constexpr IntegerForm kUI8 = {"ui8", 0xFFFFFFFFFFFFFFFFu, 0xFFFFFFFFFFFFFFFFu};

[[noreturn]] void ThrowNotConverted(std::string const &text, char const *name)
{
    throw CMxInvalidValueException(FormatString("The value [%s] can not be converted to a %s", text.c_str(), name));
}

[[noreturn]] void ThrowTooLarge(std::string const &text, char const *name)
{
    throw CMxInvalidValueException(FormatString("The value [%s] is to large to fit in a %s", text.c_str(), name));
}

// The strtol family in base 10 on the text as a C string, and the checks that
// follow it. An overflow is reported before trailing garbage, because the
// runtime consumes all digits before it stops. The result is the value modulo
// 2^64; the caller narrows it to its width.
std::uint64_t ParseInteger(std::string const &text, IntegerForm const &form)
{
    if (text.empty())
        ThrowNotConverted(text, form.name);
    char const *start = text.c_str();
    char const *p = start;
    while (IsCSpace(*p))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-')
        negative = *p++ == '-';
    if (!IsDigit(*p))
    {
        // No conversion leaves the end pointer at the start, which passes only
        // when the text begins with a NUL.
        if (*start != '\0')
            ThrowNotConverted(text, form.name);
        return 0;
    }
    std::uint64_t const limit = negative ? form.maxNegative : form.maxPositive;
    std::uint64_t magnitude = 0;
    bool overflow = false;
    for (; IsDigit(*p); ++p)
    {
        unsigned digit = static_cast<unsigned>(*p - '0');
        if (overflow || magnitude > (limit - digit) / 10)
            overflow = true;
        else
            magnitude = magnitude * 10 + digit; // <= limit
    }
    if (overflow)
        ThrowTooLarge(text, form.name);
    if (*p != '\0')
        ThrowNotConverted(text, form.name);
    return negative ? 0 - magnitude : magnitude;
}

// ---------------------------------------------------------------------------
// Floating point to text

// A conversion of a printf format: flags, width and precision (-1: none).
struct FloatSpec
{
    bool left = false, plus = false, space = false, alternate = false, zero = false;
    int width = 0;
    int precision = -1;
};

// Width and precision beyond this change nothing that survives the cut of the
// result, and a double has no more than 1074 exact fractional digits.
constexpr int kMaxFieldDigits = 4096;

int ReadField(char const *&p)
{
    int value = 0;
    while (IsDigit(*p))
    {
        value = value * 10 + (*p++ - '0');
        if (value > kMaxFieldDigits)
            value = kMaxFieldDigits;
    }
    return value;
}

std::string ToChars(double value, std::chars_format format, int precision)
{
    std::string buf(static_cast<std::size_t>(precision) + 400, '\0');
    std::to_chars_result r = precision < 0 ? std::to_chars(&buf[0], &buf[0] + buf.size(), value, format)
                                           : std::to_chars(&buf[0], &buf[0] + buf.size(), value, format, precision);
    buf.resize(r.ec == std::errc() ? static_cast<std::size_t>(r.ptr - buf.data()) : 0);
    return buf;
}

// "%#.Pg": the style of %e or %f chosen as %g does, with its trailing zeros.
std::string GeneralKeepingZeros(double value, int precision)
{
    std::string text = ToChars(value, std::chars_format::scientific, precision - 1);
    std::size_t e = text.find('e');
    int exponent = e == std::string::npos ? 0 : std::atoi(text.c_str() + e + 1);
    if (exponent < precision && exponent >= -4)
        text = ToChars(value, std::chars_format::fixed, precision - 1 - exponent);
    if (text.find('.') == std::string::npos)
    {
        e = text.find('e');
        text.insert(e == std::string::npos ? text.size() : e, ".");
    }
    return text;
}

// One floating conversion of a finite value, as printf does it in the "C"
// locale.
std::string FormatFloatConversion(double value, FloatSpec const &spec, char conversion)
{
    double const magnitude = std::fabs(value);
    char const lower = static_cast<char>(conversion | 0x20);
    int precision = spec.precision;
    std::string body;
    switch (lower)
    {
    case 'f':
        body = ToChars(magnitude, std::chars_format::fixed, precision < 0 ? 6 : precision);
        if (spec.alternate && precision == 0)
            body += '.';
        break;
    case 'e':
        body = ToChars(magnitude, std::chars_format::scientific, precision < 0 ? 6 : precision);
        if (spec.alternate && precision == 0)
            body.insert(1, ".");
        break;
    case 'g':
        precision = precision < 0 ? 6 : precision == 0 ? 1 : precision;
        body = spec.alternate ? GeneralKeepingZeros(magnitude, precision)
                              : ToChars(magnitude, std::chars_format::general, precision);
        break;
    default: // 'a'
        body = "0x" + ToChars(magnitude, std::chars_format::hex, precision);
        if (spec.alternate && body.find('.') == std::string::npos)
            body.insert(body.find('p'), ".");
        break;
    }
    if (conversion != lower)
        for (char &c : body)
            if (c >= 'a' && c <= 'z')
                c = static_cast<char>(c - 'a' + 'A');

    std::string sign = std::signbit(value) ? "-" : spec.plus ? "+" : spec.space ? " " : "";
    std::size_t const length = sign.size() + body.size();
    if (static_cast<std::size_t>(spec.width) > length)
    {
        std::size_t const pad = static_cast<std::size_t>(spec.width) - length;
        if (spec.left)
            body.append(pad, ' ');
        else if (spec.zero)
            body.insert(lower == 'a' ? 2 : 0, pad, '0');
        else
            sign.insert(0, pad, ' ');
    }
    return sign + body;
}

// printf with `format` and the one value, into a buffer of `bufferSize`
// characters. Conversions that would need an argument of another kind have
// none, and are copied as they stand.
std::string FormatFloat(char const *format, double value, std::size_t bufferSize)
{
    std::size_t const limit = bufferSize - 1;
    std::string out;
    char const *p = format;
    while (*p && out.size() < limit)
    {
        if (*p != '%')
        {
            out.push_back(*p++);
            continue;
        }
        char const *start = p++;
        if (*p == '%')
        {
            out.push_back('%');
            ++p;
            continue;
        }
        FloatSpec spec;
        for (;; ++p)
        {
            if (*p == '-')
                spec.left = true;
            else if (*p == '+')
                spec.plus = true;
            else if (*p == ' ')
                spec.space = true;
            else if (*p == '#')
                spec.alternate = true;
            else if (*p == '0')
                spec.zero = true;
            else
                break;
        }
        spec.width = ReadField(p);
        if (*p == '.')
        {
            ++p;
            spec.precision = ReadField(p);
        }
        while (*p && std::strchr("hlLqjzt", *p))
            ++p;
        if (*p && std::strchr("eEfFgGaA", *p))
        {
            out += FormatFloatConversion(value, spec, *p++);
            continue;
        }
        if (*p)
            ++p;
        out.append(start, p);
    }
    if (out.size() > limit)
        out.resize(limit);
    return out;
}

std::string FloatText(double value, char const *format, int defaultPrecision, std::size_t bufferSize)
{
    if (std::isnan(value))
        return "NaN";
    if (std::isinf(value))
        return value < 0 ? "-INF" : "INF";
    if (format == nullptr || *format == '\0')
    {
        // The default "%.7g" or "%.16g", without reading a format.
        char buf[64];
        std::to_chars_result r = std::to_chars(buf, buf + sizeof(buf), value, std::chars_format::general,
                                               defaultPrecision);
        return std::string(buf, r.ptr);
    }
    return FormatFloat(format, value, bufferSize);
}

// ---------------------------------------------------------------------------
// Text to floating point

// A number that from_chars finds out of range: true when it is too large,
// false when too small. Its order of magnitude is far from 1 either way, so
// the count of significant integer digits (or of leading fraction zeros) and
// the exponent settle it.
bool IsOverflow(char const *first, char const *last, bool hex)
{
    char const *p = first;
    long order = 0;
    while (p < last && *p == '0')
        ++p;
    for (; p < last && (hex ? IsHexDigit(*p) : IsDigit(*p)); ++p)
        ++order;
    if (p < last && *p == '.')
    {
        ++p;
        if (order == 0)
            for (; p < last && *p == '0'; ++p)
                --order;
        while (p < last && (hex ? IsHexDigit(*p) : IsDigit(*p)))
            ++p;
    }
    if (hex)
        order *= 4;
    long exponent = 0;
    if (p < last && (*p == 'e' || *p == 'E' || *p == 'p' || *p == 'P'))
    {
        ++p;
        bool negative = p < last && *p == '-';
        if (p < last && (*p == '-' || *p == '+'))
            ++p;
        for (; p < last && IsDigit(*p); ++p)
            if (exponent < 100000000)
                exponent = exponent * 10 + (*p - '0');
        if (negative)
            exponent = -exponent;
    }
    return order + exponent > 0;
}

// from_chars with strtod's answer out of range: infinity or zero. Returns the
// end of the number, or null when nothing was read.
char const *ReadMagnitude(char const *first, char const *last, double &value, std::chars_format format)
{
    std::from_chars_result r = std::from_chars(first, last, value, format);
    if (r.ec == std::errc::invalid_argument)
        return nullptr;
    if (r.ec == std::errc::result_out_of_range)
        value = IsOverflow(first, r.ptr, format == std::chars_format::hex) ? HUGE_VAL : 0.0;
    return r.ptr;
}

// strtod on the text as a C string; false when the end pointer does not reach
// its terminator.
bool ParseDouble(std::string const &text, double &value)
{
    char const *const start = text.c_str();
    char const *const end = start + std::strlen(start);
    char const *p = start;
    while (IsCSpace(*p))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-')
        negative = *p++ == '-';
    // from_chars would take a second sign; strtod does not.
    char const *stop = nullptr;
    double magnitude = 0;
    if (*p != '-' && *p != '+')
    {
        if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && (IsHexDigit(p[2]) || p[2] == '.'))
            stop = ReadMagnitude(p + 2, end, magnitude, std::chars_format::hex);
        if (stop == nullptr)
            stop = ReadMagnitude(p, end, magnitude, std::chars_format::general);
    }
    if (stop == nullptr)
    {
        value = 0;
        return *start == '\0';
    }
    value = negative ? -magnitude : magnitude;
    return stop == end;
}

double ParseFloatText(std::string const &text, char const *name)
{
    if (text.empty())
        ThrowNotConverted(text, name);
    if (text == "NaN" || text == "1.#QNAN" || text == "-NAN")
        return std::numeric_limits<double>::quiet_NaN();
    if (text == "-INF")
        return -std::numeric_limits<double>::infinity();
    if (text == "INF")
        return std::numeric_limits<double>::infinity();
    double value;
    if (!ParseDouble(text, value))
        ThrowNotConverted(text, name);
    return value;
}

// double to float with IEEE rounding, spelt out: a finite double beyond the
// float range has no defined conversion in C++.
float NarrowToFloat(double value)
{
    double const magnitude = std::fabs(value);
    if (std::isfinite(value) && magnitude > FLT_MAX)
    {
        // Half an ulp above FLT_MAX rounds to infinity (ties to even, and
        // FLT_MAX has an odd significand).
        double const threshold = static_cast<double>(FLT_MAX) + std::ldexp(1.0, 103);
        float const rounded = magnitude >= threshold ? std::numeric_limits<float>::infinity() : FLT_MAX;
        return value < 0 ? -rounded : rounded;
    }
    return static_cast<float>(value);
}

// _mbsicmp against a lower-case ASCII word, on the text as a C string.
bool EqualsIgnoringCase(std::string const &text, char const *word)
{
    char const *p = text.c_str();
    for (; *p && *word; ++p, ++word)
    {
        char c = *p;
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != *word)
            return false;
    }
    return *p == '\0' && *word == '\0';
}

// The parse of the text after `rule`. Rule 0 would give a copy of the text;
// the parse reads the text itself instead.
template <typename F> auto AfterRule(CWhitespaceUtils::WhitespaceRule rule, std::string const &text, F parse)
{
    if (rule == CWhitespaceUtils::WhitespaceRule::None)
        return parse(text);
    return parse(CWhitespaceUtils::ApplyRule(rule, text));
}

// atoi's reading of a format: blanks, a sign, then digits up to the first
// other character. Beyond the range of int it saturates, where atoi has no
// defined answer; the printer then refuses the count.
int LeadingInteger(std::string const &text)
{
    char const *p = text.c_str();
    while (IsCSpace(*p))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-')
        negative = *p++ == '-';
    long long value = 0; // [0, INT_MAX + 1]
    for (; IsDigit(*p); ++p)
    {
        value = value * 10 + (*p - '0');
        if (value > static_cast<long long>(INT_MAX) + 1)
            value = static_cast<long long>(INT_MAX) + 1;
    }
    if (negative)
        return static_cast<int>(-value);
    return value > INT_MAX ? INT_MAX : static_cast<int>(value);
}

// The date forms without a time part, whichever the text has.
CDateTime ParseDateForm(std::string const &text, CWhitespaceUtils::WhitespaceRule rule)
{
    CDateTime value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.ParseXSDDate(t.c_str());
        return 0;
    });
    return value;
}

} // namespace

// ---------------------------------------------------------------------------

std::string CConversions::i1ToString(std::int8_t value) { return IntegerText(static_cast<int>(value)); }
std::string CConversions::i2ToString(std::int16_t value) { return IntegerText(static_cast<int>(value)); }
std::string CConversions::i4ToString(std::int32_t value) { return IntegerText(value); }
std::string CConversions::i8ToString(std::int64_t value) { return IntegerText(value); }
std::string CConversions::ui1ToString(std::uint8_t value) { return IntegerText(static_cast<unsigned>(value)); }
std::string CConversions::ui2ToString(std::uint16_t value) { return IntegerText(static_cast<unsigned>(value)); }
std::string CConversions::ui4ToString(std::uint32_t value) { return IntegerText(value); }
std::string CConversions::ui8ToString(std::uint64_t value) { return IntegerText(value); }

std::string CConversions::r4ToString(float value) { return r4ToString(value, nullptr); }

std::string CConversions::r4ToString(float value, char const *format)
{
    return FloatText(static_cast<double>(value), format, 7, 32);
}

std::string CConversions::r8ToString(double value) { return r8ToString(value, nullptr); }

std::string CConversions::r8ToString(double value, char const *format) { return FloatText(value, format, 16, 48); }

std::string CConversions::yearToString(std::uint16_t value) { return IntegerText(static_cast<unsigned>(value)); }

std::string CConversions::monthToString(std::uint8_t value)
{
    return (value < 10 ? "--0" : "--") + IntegerText(static_cast<unsigned>(value));
}

std::string CConversions::dayToString(std::uint8_t value)
{
    return (value < 10 ? "---0" : "---") + IntegerText(static_cast<unsigned>(value));
}

std::string CConversions::charToString(char value) { return value == '\0' ? std::string() : std::string(1, value); }

std::string CConversions::stringToString(std::string const &value) { return value; }

std::string CConversions::booleanToString(bool value) { return value ? "true" : "false"; }

std::int8_t CConversions::i1FromString(std::string const &text, WhitespaceRule rule)
{
    std::int32_t value = i4FromString(text, rule);
    if (value < -128 || value > 127)
        ThrowTooLarge(text, "i1");
    return static_cast<std::int8_t>(value);
}

std::int16_t CConversions::i2FromString(std::string const &text, WhitespaceRule rule)
{
    std::int32_t value = i4FromString(text, rule);
    if (value < -32768 || value > 32767)
        ThrowTooLarge(text, "i2");
    return static_cast<std::int16_t>(value);
}

std::int32_t CConversions::i4FromString(std::string const &text, WhitespaceRule rule)
{
    return static_cast<std::int32_t>(AfterRule(rule, text, [](std::string const &t) { return ParseInteger(t, kI4); }));
}

std::int64_t CConversions::i8FromString(std::string const &text, WhitespaceRule rule)
{
    return static_cast<std::int64_t>(AfterRule(rule, text, [](std::string const &t) { return ParseInteger(t, kI8); }));
}

std::uint8_t CConversions::ui1FromString(std::string const &text, WhitespaceRule rule)
{
    std::uint32_t value = ui4FromString(text, rule);
    if (value > 255)
        ThrowTooLarge(text, "ui1");
    return static_cast<std::uint8_t>(value);
}

std::uint16_t CConversions::ui2FromString(std::string const &text, WhitespaceRule rule)
{
    std::uint32_t value = ui4FromString(text, rule);
    if (value > 65535)
        ThrowTooLarge(text, "ui2");
    return static_cast<std::uint16_t>(value);
}

std::uint32_t CConversions::ui4FromString(std::string const &text, WhitespaceRule rule)
{
    return static_cast<std::uint32_t>(AfterRule(rule, text, [](std::string const &t) { return ParseInteger(t, kUI4); }));
}

std::uint64_t CConversions::ui8FromString(std::string const &text, WhitespaceRule rule)
{
    return AfterRule(rule, text, [](std::string const &t) { return ParseInteger(t, kUI8); });
}

float CConversions::r4FromString(std::string const &text, WhitespaceRule rule)
{
    return NarrowToFloat(AfterRule(rule, text, [](std::string const &t) { return ParseFloatText(t, "r4"); }));
}

double CConversions::r8FromString(std::string const &text, WhitespaceRule rule)
{
    return AfterRule(rule, text, [](std::string const &t) { return ParseFloatText(t, "r8"); });
}

char CConversions::charFromString(std::string const &text, WhitespaceRule rule)
{
    std::string value = CWhitespaceUtils::ApplyRule(rule, text);
    if (value.size() != 1)
        throw CMxInvalidValueException(FormatString(
            "The value [%s] can not be a char as it is either empty of greater than 1 char long", value.c_str()));
    return value[0];
}

std::string CConversions::stringFromString(std::string const &text, WhitespaceRule rule)
{
    return CWhitespaceUtils::ApplyRule(rule, text);
}

bool CConversions::booleanFromString(std::string const &text, WhitespaceRule rule)
{
    std::string value = CWhitespaceUtils::ApplyRule(rule, text);
    if (EqualsIgnoringCase(value, "true"))
        return true;
    if (EqualsIgnoringCase(value, "false"))
        return false;
    if (EqualsIgnoringCase(value, "1"))
        return true;
    if (EqualsIgnoringCase(value, "0"))
        return false;
    throw CMxInvalidValueException(FormatString("A Boolean Value read from an XML document was invalid [%s]. Valid "
                                                "values are 'true', 'false', '1', or '0'",
                                                text.c_str()));
}

// ---------------------------------------------------------------------------
// The value classes

std::string CConversions::hexBinaryToString(CBinaryData const &value) { return value.GetAsHexString(); }

std::string CConversions::base64BinaryToString(CBinaryData const &value) { return value.GetAsBase64(); }

std::string CConversions::durationToString(CDateTimeSpan const &value) { return value.ToString(); }

std::string CConversions::dateToString(CDateTime const &value) { return value.ToString("s"); }

std::string CConversions::decimalToString(CDecimal const &value) { return value.ToString(); }

std::string CConversions::decimalToString(CDecimal const &value, std::string const &format)
{
    if (format.empty())
        return value.ToString();
    return value.ToString(LeadingInteger(format));
}

std::string CConversions::integerToString(CBigInteger const &value) { return value.ToString(); }

CBinaryData CConversions::hexBinaryFromString(std::string const &text, WhitespaceRule rule)
{
    CBinaryData value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.SetAsHexString(t);
        return 0;
    });
    return value;
}

CBinaryData CConversions::base64BinaryFromString(std::string const &text, WhitespaceRule rule)
{
    CBinaryData value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.SetAsBase64(t);
        return 0;
    });
    return value;
}

CDateTimeSpan CConversions::durationFromString(std::string const &text, WhitespaceRule rule)
{
    CDateTimeSpan value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.ParseXSDDuration(t.c_str());
        return 0;
    });
    return value;
}

CDateTime CConversions::datetimeFromString(std::string const &text, WhitespaceRule rule)
{
    CDateTime value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.ParseXSDDateTime(t.c_str());
        return 0;
    });
    return value;
}

CDateTime CConversions::timeFromString(std::string const &text, WhitespaceRule rule)
{
    CDateTime value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.ParseXSDTime(t.c_str());
        return 0;
    });
    return value;
}

CDateTime CConversions::dateFromString(std::string const &text, WhitespaceRule rule)
{
    return ParseDateForm(text, rule);
}

CDateTime CConversions::yearMonthFromString(std::string const &text, WhitespaceRule rule)
{
    return ParseDateForm(text, rule);
}

CDateTime CConversions::monthDayFromString(std::string const &text, WhitespaceRule rule)
{
    return ParseDateForm(text, rule);
}

std::uint16_t CConversions::yearFromString(std::string const &text, WhitespaceRule rule)
{
    return static_cast<std::uint16_t>(ParseDateForm(text, rule).GetYear());
}

std::uint8_t CConversions::monthFromString(std::string const &text, WhitespaceRule rule)
{
    return ParseDateForm(text, rule).GetMonth();
}

std::uint8_t CConversions::dayFromString(std::string const &text, WhitespaceRule rule)
{
    return ParseDateForm(text, rule).GetDay();
}

CDecimal CConversions::decimalFromString(std::string const &text, WhitespaceRule rule)
{
    return AfterRule(rule, text, [](std::string const &t) { return CDecimal(t.c_str()); });
}

CBigInteger CConversions::integerFromString(std::string const &text, WhitespaceRule rule)
{
    CBigInteger value;
    AfterRule(rule, text, [&value](std::string const &t) {
        value.Parse(t.c_str());
        return 0;
    });
    return value;
}

} // namespace MxXmlLib
