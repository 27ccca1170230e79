#include "values/Decimal.h"

#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace MxXmlLib
{

int CDecimal::m_maxDivider = 30;

namespace
{

// Capacities of the digit buffers of the text form, without their terminator.
constexpr std::size_t kIntegerDigits = 511;
constexpr std::size_t kFractionDigits = 511;
constexpr std::size_t kExponentDigits = 31;
// 10^100000 already has 100,001 digits; larger powers are not numbers a
// document means.
constexpr long long kMaxExponent = 100000;

CBigInteger Pow10(int n)
{
    return CBigInteger::Pow10(static_cast<unsigned int>(n));
}

// The bounds of the machine types, kept as CBigInteger for the range tests.
struct Limits
{
    CBigInteger longMax, longMin, longLongMax, longLongMin, doubleMax, doubleMin;
};

Limits const &GetLimits()
{
    static Limits const limits = {
        CDecimal("2147483647").GetIntegerPart(),           CDecimal("-2147483648").GetIntegerPart(),
        CDecimal("9223372036854775807").GetIntegerPart(),  CDecimal("-9223372036854775808").GetIntegerPart(),
        CDecimal("1.7E+308").GetIntegerPart(),             CDecimal("-1.7E+308").GetIntegerPart(),
    };
    return limits;
}

std::string PadLeft(std::string text, int width)
{
    if (width > 0 && text.size() < static_cast<std::size_t>(width))
        text.insert(0, static_cast<std::size_t>(width) - text.size(), '0');
    return text;
}

} // namespace

// --- construction --------------------------------------------------------------

CDecimal::CDecimal() : fractionDivider(1)
{
}

CDecimal::CDecimal(int value) : integerPart(value), fractionDivider(1)
{
}

CDecimal::CDecimal(long value) : integerPart(value), fractionDivider(1)
{
}

CDecimal::CDecimal(long long value) : integerPart(value), fractionDivider(1)
{
}

CDecimal::CDecimal(CBigInteger const &value) : integerPart(value), fractionDivider(1)
{
}

CDecimal::CDecimal(char const *text) : fractionDivider(1)
{
    Parse(text);
}

CDecimal::CDecimal(double value) : fractionDivider(1)
{
    // Fixed notation with 13 places, without the C locale's decimal point.
    char buffer[1024];
    auto result = std::to_chars(buffer, buffer + sizeof(buffer) - 1, value, std::chars_format::fixed, 13);
    *result.ptr = '\0';
    Parse(buffer);
}

CDecimal::CDecimal(CBigInteger const &integer, CBigInteger const &fraction, int divider)
    : integerPart(integer), fractionPart(fraction), fractionDivider(divider)
{
}

CDecimal::~CDecimal() = default;

// --- text form ------------------------------------------------------------------

void CDecimal::Parse(char const *text)
{
    // Read in place: the text is copied only into a message.
    char const *const s = text ? text : "";
    auto invalid = [s](std::size_t position) {
        return CMxInvalidValueException(
            FormatString("The string representing a Decimal, contained an invalid char at position %d [%s].",
                         static_cast<int>(position), s));
    };
    std::string integerDigits, fractionDigits, exponentDigits;
    bool negative = false;
    std::size_t i = 0;
    std::size_t const n = std::strlen(s);

    for (; i < n; ++i)
    {
        char const c = s[i];
        if (IsDigit(c))
        {
            if (integerDigits.size() == kIntegerDigits)
                throw invalid(i);
            integerDigits.push_back(c);
        }
        else if (c == '-' || c == '+')
            negative = c == '-';
        else if (c == '.' || c == 'e' || c == 'E')
            break;
        else if (!IsBlank(c))
            throw invalid(i);
    }
    if (i < n && s[i] == '.')
    {
        for (++i; i < n; ++i)
        {
            char const c = s[i];
            if (IsDigit(c))
            {
                if (fractionDigits.size() == kFractionDigits)
                    throw invalid(i);
                fractionDigits.push_back(c);
            }
            else if (!IsBlank(c))
                break;
        }
    }
    bool hasExponent = false, exponentNegative = false;
    std::size_t exponentStart = 0;
    if (i < n && (s[i] == 'e' || s[i] == 'E'))
    {
        hasExponent = true;
        for (++i; i < n; ++i)
        {
            char const c = s[i];
            if (c == '-' || c == '+')
                exponentNegative = c == '-';
            else if (!IsBlank(c))
                break;
        }
        exponentStart = i;
        // Blanks between the digits are as bad as any other character.
        for (; i < n && IsDigit(s[i]); ++i)
        {
            if (exponentDigits.size() == kExponentDigits)
                throw invalid(i);
            exponentDigits.push_back(s[i]);
        }
    }
    if (i < n)
        throw invalid(i);

    // Plain digits: what CBigInteger::Parse would make of them, without its
    // scan for signs and blanks and its copies of the text.
    integerPart.sign = 1;
    CBigInteger::Build(integerDigits, integerPart.digits);
    fractionPart.sign = 1;
    CBigInteger::Build(fractionDigits, fractionPart.digits);
    fractionDivider = fractionDigits.empty() ? 1 : static_cast<int>(fractionDigits.size());
    if (negative)
    {
        integerPart.Negate();
        fractionPart.Negate();
    }
    if (hasExponent)
    {
        long long exponent = 0; // saturates far above any accepted exponent
        for (char c : exponentDigits)
            exponent = exponent > 1000000000 ? exponent : exponent * 10 + (c - '0');
        if (exponentNegative)
        {
            // From 10^(digits + places + 2) on, the quotient is 0 whatever the
            // exponent, so a larger one changes nothing and is not built.
            long long const vanishing =
                static_cast<long long>(std::max<std::size_t>(integerDigits.size(), 1)) + m_maxDivider + 3;
            if (exponent > vanishing)
                exponent = vanishing;
            *this = *this / CDecimal(Pow10(static_cast<int>(exponent)));
        }
        else
        {
            if (exponent > kMaxExponent)
                throw CMxOverFlowException(
                    FormatString("The exponent of the Decimal is out of range at position %d [%s].",
                                 static_cast<int>(exponentStart), s));
            *this = *this * CDecimal(Pow10(static_cast<int>(exponent)));
        }
    }
    Rationalise();
    LimitPlaces();
}

std::string CDecimal::ToString() const
{
    if (fractionPart.IsZero()) // never empty, no high zeros: zero is the one digit 0
        return integerPart.ToString();
    // Both magnitudes written straight from their digits into one string, as
    // GetAbs().ToString() would give them: a value written out is the common
    // case of every document, and copies of the parts would cost allocations.
    auto magnitudeLength = [](CBigInteger const &part) {
        return part.digits.empty() || part.IsZero() ? std::size_t(1) : part.digits.size();
    };
    auto appendMagnitude = [](std::string &text, CBigInteger const &part) {
        if (part.digits.empty() || part.IsZero())
            text += '0';
        else
            for (std::size_t i = part.digits.size(); i-- > 0;)
                text += static_cast<char>('0' + part.digits[i]);
    };
    std::size_t const fractionLength = magnitudeLength(fractionPart);
    std::size_t const padding = fractionDivider > 0 && fractionLength < static_cast<std::size_t>(fractionDivider)
                                    ? static_cast<std::size_t>(fractionDivider) - fractionLength
                                    : 0;
    std::string text;
    text.reserve(2 + magnitudeLength(integerPart) + padding + fractionLength);
    if (integerPart.sign < 0)
        text += '-';
    appendMagnitude(text, integerPart);
    text += '.';
    text.append(padding, '0');
    appendMagnitude(text, fractionPart);
    return text;
}

std::string CDecimal::ToString(int places) const
{
    if (places < 0 || places > 1023)
        throw CMxInvalidParamException(
            FormatString("The number of decimal places must lie between 0 and 1023 [%d].", places));
    // Half a unit of the last kept place, with the value's sign, as the text
    // "0.005" (for 2 places) would parse.
    int const sign = integerPart.sign;
    CDecimal half(CBigInteger(0) * CBigInteger(sign), CBigInteger(5 * sign), places + 1);
    half.LimitPlaces();
    CDecimal const sum = half + *this;
    std::string digits = PadLeft(sum.fractionPart.GetAbs().ToString(), sum.fractionDivider);
    if (digits.size() > static_cast<std::size_t>(places))
        digits.resize(static_cast<std::size_t>(places));
    std::string text = sum.integerPart.sign < 0 ? "-" : "";
    text += sum.integerPart.GetAbs().ToString();
    text += '.';
    text += digits;
    return text;
}

// --- scale ------------------------------------------------------------------------

void CDecimal::Rationalise()
{
    // Nothing to strip with one place, or when the last digit is not a zero:
    // the common case, decided without writing the fraction out.
    if (fractionDivider <= 1 ||
        (!fractionPart.digits.empty() && !fractionPart.IsZero() && fractionPart.digits[0] != 0))
        return;
    // Trailing zeros of the fraction, written with fractionDivider places;
    // the first place always stays.
    std::string const digits = PadLeft(fractionPart.GetAbs().ToString(), fractionDivider);
    int strip = 0;
    for (std::size_t i = digits.size() - 1; i >= 1 && digits[i] == '0' && fractionDivider - strip > 1; --i)
        ++strip;
    if (strip == 0)
        return;
    // Dropping k zero digits is a division by 10^k, done as a cut.
    if (fractionPart.IsZero())
        fractionPart = CBigInteger(); // a zero dividend divides to a plain zero
    else
        fractionPart.digits.erase(fractionPart.digits.begin(), fractionPart.digits.begin() + strip);
    fractionDivider -= strip;
}

void CDecimal::ChangeFractionalDivider(int places)
{
    if (fractionDivider <= places)
    {
        fractionPart *= Pow10(places - fractionDivider);
        fractionDivider = places;
        return;
    }
    CBigInteger const p = Pow10(fractionDivider - places);
    CBigInteger const r = fractionPart % p;
    fractionPart /= p;
    fractionDivider = places;

    CBigInteger const halfP = p / CBigInteger(2);
    CBigInteger const zero;
    int adjust = 0; // a tie goes toward zero
    if (r > halfP)
        adjust = 1;
    else if (r < halfP.GetNegative())
        adjust = -1;
    if (adjust == 0)
        return;
    if (places == 0)
    {
        integerPart += CBigInteger(adjust);
        return;
    }
    fractionPart += CBigInteger(adjust);
    // No carry when the fraction reaches 10^places: see the class invariants.
    CBigInteger const q = Pow10(places);
    if (integerPart > zero && fractionPart < zero)
    {
        fractionPart += q;
        integerPart -= CBigInteger(1);
    }
    else if (integerPart < zero && fractionPart > zero)
    {
        fractionPart -= q;
        integerPart += CBigInteger(1);
    }
    if (integerPart == zero)
        integerPart.sign = fractionPart.sign;
}

void CDecimal::LimitPlaces()
{
    if (fractionDivider > m_maxDivider)
        ChangeFractionalDivider(m_maxDivider);
}

int CDecimal::Normalize(CDecimal &a, CDecimal &b)
{
    int const places = std::max(a.fractionDivider, b.fractionDivider);
    a.ChangeFractionalDivider(places);
    b.ChangeFractionalDivider(places);
    return places;
}

// --- sign and conversion -------------------------------------------------------

CDecimal CDecimal::GetNegative() const
{
    CDecimal copy(*this);
    copy.Negate();
    return copy;
}

void CDecimal::Negate()
{
    integerPart.Negate();
    fractionPart.Negate();
}

CBigInteger CDecimal::ToBigInteger() const
{
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(0);
    return copy.integerPart;
}

// --- arithmetic -------------------------------------------------------------------

CDecimal CDecimal::operator+(CDecimal const &other) const
{
    CDecimal a(*this), b(other);
    int const places = Normalize(a, b);
    CBigInteger const p = Pow10(places);
    CBigInteger const minusP = p.GetNegative();
    CBigInteger const zero;
    CBigInteger f = a.fractionPart + b.fractionPart;
    CBigInteger i = a.integerPart + b.integerPart;
    // |f| < 3p: each fraction is below p, or exactly p after a rounding.
    while (f >= p)
    {
        f -= p;
        i += CBigInteger(1);
    }
    while (f <= minusP)
    {
        f += p;
        i -= CBigInteger(1);
    }
    if (i > zero && f < zero)
    {
        f += p;
        i -= CBigInteger(1);
    }
    else if (i < zero && f > zero)
    {
        f -= p;
        i += CBigInteger(1);
    }
    if (i == zero)
        i.sign = f.sign;
    CDecimal sum(i, f, places);
    sum.Rationalise();
    return sum;
}

CDecimal CDecimal::operator-(CDecimal const &other) const
{
    return *this + other.GetNegative();
}

CDecimal CDecimal::operator*(CDecimal const &other) const
{
    CDecimal a(*this), b(other);
    int const places = Normalize(a, b);
    CBigInteger const p = Pow10(places);
    CBigInteger const q = Pow10(2 * places);
    CBigInteger const s = a.integerPart * b.integerPart * q + a.integerPart * b.fractionPart * p +
                          a.fractionPart * b.integerPart * p + a.fractionPart * b.fractionPart;
    CDecimal product(s / q, s % q, 2 * places);
    product.Rationalise();
    product.LimitPlaces();
    return product;
}

CDecimal CDecimal::operator/(CDecimal const &other) const
{
    CDecimal a(*this), b(other);
    int const places = Normalize(a, b);
    CBigInteger const p = Pow10(places);
    // Two guard digits beyond the limit, rounded off by LimitPlaces.
    int const guarded = m_maxDivider + 2;
    CBigInteger const s = Pow10(guarded);
    CBigInteger const numerator = (a.integerPart * p + a.fractionPart) * s;
    CBigInteger const denominator = b.integerPart * p + b.fractionPart;
    CBigInteger const quotient = numerator / denominator;
    CDecimal result(quotient / s, quotient % s, guarded);
    result.Rationalise();
    result.LimitPlaces();
    return result;
}

CDecimal &CDecimal::operator+=(CDecimal const &other)
{
    return *this = *this + other;
}

CDecimal &CDecimal::operator-=(CDecimal const &other)
{
    return *this = *this - other;
}

CDecimal &CDecimal::operator*=(CDecimal const &other)
{
    return *this = *this * other;
}

CDecimal &CDecimal::operator/=(CDecimal const &other)
{
    return *this = *this / other;
}

CDecimal &CDecimal::operator++()
{
    return *this = *this + CDecimal(1);
}

CDecimal &CDecimal::operator--()
{
    return *this = *this - CDecimal(1);
}

CDecimal CDecimal::operator++(int) const
{
    CDecimal result(*this);
    ++result;
    return result;
}

CDecimal CDecimal::operator--(int) const
{
    CDecimal result(*this);
    --result;
    return result;
}

// --- comparison -------------------------------------------------------------------

// Normalising only scales the fraction parts: the integer parts compare as
// they stand, and copies are made only when they are equal.
template <typename Compare> bool CDecimal::CompareFractions(CDecimal const &other, Compare compare) const
{
    if (fractionDivider == other.fractionDivider)
        return compare(fractionPart, other.fractionPart);
    CDecimal a(*this), b(other);
    Normalize(a, b);
    return compare(a.fractionPart, b.fractionPart);
}

bool CDecimal::operator==(CDecimal const &other) const
{
    return integerPart == other.integerPart &&
           CompareFractions(other, [](CBigInteger const &x, CBigInteger const &y) { return x == y; });
}

bool CDecimal::operator!=(CDecimal const &other) const
{
    return !(*this == other);
}

bool CDecimal::operator<(CDecimal const &other) const
{
    return integerPart < other.integerPart ||
           (integerPart == other.integerPart &&
            CompareFractions(other, [](CBigInteger const &x, CBigInteger const &y) { return x < y; }));
}

bool CDecimal::operator>(CDecimal const &other) const
{
    return integerPart > other.integerPart ||
           (integerPart == other.integerPart &&
            CompareFractions(other, [](CBigInteger const &x, CBigInteger const &y) { return x > y; }));
}

bool CDecimal::operator<=(CDecimal const &other) const
{
    return integerPart < other.integerPart ||
           (integerPart == other.integerPart &&
            CompareFractions(other, [](CBigInteger const &x, CBigInteger const &y) { return x <= y; }));
}

bool CDecimal::operator>=(CDecimal const &other) const
{
    return integerPart > other.integerPart ||
           (integerPart == other.integerPart &&
            CompareFractions(other, [](CBigInteger const &x, CBigInteger const &y) { return x >= y; }));
}

// --- machine numbers ------------------------------------------------------------

long long CDecimal::ToLongLong() const
{
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(1);
    Limits const &limits = GetLimits();
    if (copy.integerPart < limits.longLongMin || copy.integerPart > limits.longLongMax)
        throw CMxOverFlowException(FormatString("The Decimal value if to large to fit into a LONGLONG"));
    // The digits before the point, as a base-10 reader stops at the point.
    std::string const text = copy.ToString();
    long long value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

long CDecimal::ToLong() const
{
    CDecimal copy(*this);
    copy.ChangeFractionalDivider(0);
    Limits const &limits = GetLimits();
    if (copy.integerPart < limits.longMin || copy.integerPart > limits.longMax)
        throw CMxOverFlowException(FormatString("The Decimal value if to large to fit into a LONG"));
    std::string const text = copy.ToString();
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

double CDecimal::ToDouble() const
{
    Limits const &limits = GetLimits();
    if (integerPart < limits.doubleMin || integerPart > limits.doubleMax)
        throw CMxOverFlowException(FormatString("The Decimal value if to large to fit into a Double"));
    std::string const text = ToString();
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

int CDecimal::GetMaxDecimalPlaces()
{
    return m_maxDivider;
}

void CDecimal::SetMaxDecimalPlaces(int places)
{
    if (places < 0 || places > 10000)
        throw CMxInvalidParamException(
            FormatString("The maximum of decimal places must lie between 0 and 10000 [%d].", places));
    m_maxDivider = places;
}

} // namespace MxXmlLib
