#include "values/BigInteger.h"

#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/Decimal.h"

#include <cassert>
#include <climits>
#include <cmath>
#include <cstdint>

namespace MxXmlLib
{

namespace
{

// a -= b in place, a >= b; leaves high zeros for the caller to clean.
void SubtractInPlace(std::string &a, std::string const &b)
{
    int borrow = 0;
    std::size_t i = 0;
    for (; i < b.size(); ++i)
    {
        int d = a[i] - b[i] - borrow; // [-10, 9]
        borrow = d < 0;
        a[i] = static_cast<char>(d + (borrow ? 10 : 0));
    }
    for (; borrow && i < a.size(); ++i)
    {
        int d = a[i] - 1; // [-1, 8]
        borrow = d < 0;
        a[i] = static_cast<char>(d + (borrow ? 10 : 0));
    }
    assert(!borrow && "SubtractInPlace requires a >= b");
}

bool IsPowerOfTen(std::string const &digits)
{
    if (digits.back() != 1)
        return false;
    for (std::size_t i = 0; i + 1 < digits.size(); ++i)
        if (digits[i] != 0)
            return false;
    return true;
}

} // namespace

// --- construction --------------------------------------------------------------

CBigInteger::CBigInteger() : sign(1), digits(1, 0)
{
}

CBigInteger::CBigInteger(int value) : sign(value < 0 ? -1 : 1)
{
    // The magnitude in unsigned arithmetic, so that INT_MIN does not overflow.
    unsigned int magnitude = value < 0 ? 0u - static_cast<unsigned int>(value) : static_cast<unsigned int>(value);
    Build(magnitude, digits);
}

CBigInteger::CBigInteger(unsigned int value) : sign(1)
{
    Build(value, digits);
}

CBigInteger::CBigInteger(long value) : CBigInteger(static_cast<long long>(value))
{
}

CBigInteger::CBigInteger(unsigned long value) : sign(1)
{
    BuildDWORDLONG(value, digits);
}

CBigInteger::CBigInteger(long long value) : sign(value < 0 ? -1 : 1)
{
    unsigned long long magnitude =
        value < 0 ? 0ull - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    BuildDWORDLONG(magnitude, digits);
}

CBigInteger::CBigInteger(unsigned long long value) : sign(1)
{
    BuildDWORDLONG(value, digits);
}

CBigInteger::CBigInteger(double value) : sign(value < 0 ? -1 : 1)
{
    if (!std::isfinite(value))
        throw CMxInvalidValueException(FormatString("ERROR: Value is not a finite number."));
    BuildDouble(std::fabs(value), digits);
}

CBigInteger::CBigInteger(CDecimal const &value) : CBigInteger(value.ToBigInteger())
{
}

CBigInteger::CBigInteger(char const *text) : sign(1), digits(1, 0)
{
    Parse(text);
}

CBigInteger::CBigInteger(int sign_, Digits const &digits_) : sign(sign_ < 0 ? -1 : 1), digits(digits_)
{
    Clean(digits);
}

CBigInteger::~CBigInteger() = default;

// --- digit vectors ---------------------------------------------------------------

void CBigInteger::Build(unsigned int value, Digits &digits)
{
    BuildDWORDLONG(value, digits);
}

void CBigInteger::BuildDWORDLONG(unsigned long long value, Digits &digits)
{
    digits.clear();
    do
    {
        digits.push_back(static_cast<char>(value % 10));
        value /= 10;
    } while (value != 0);
}

void CBigInteger::BuildDouble(double value, Digits &digits)
{
    digits.clear();
    double whole = std::ceil(value - 0.5);
    // The loop needs a finite start; the constructor refuses the others.
    if (!(whole > 0) || !std::isfinite(whole))
    {
        digits.push_back(0);
        return;
    }
    while (whole > 0) // at most 309 rounds for the largest double
    {
        digits.push_back(static_cast<char>(std::fmod(whole, 10.0)));
        std::modf(whole / 10.0, &whole);
    }
}

void CBigInteger::Build(std::string const &text, Digits &digits)
{
    digits.clear();
    for (std::size_t i = text.size(); i-- > 0 && IsDigit(text[i]);)
        digits.push_back(static_cast<char>(text[i] - '0'));
    Clean(digits);
}

void CBigInteger::Clean(Digits &digits)
{
    std::size_t n = digits.size();
    while (n > 1 && digits[n - 1] == 0)
        --n;
    digits.resize(n == 0 ? 1 : n); // an empty vector becomes the digit 0
}

int CBigInteger::Compare(Digits const &a, Digits const &b)
{
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    for (std::size_t i = a.size(); i-- > 0;)
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    return 0;
}

void CBigInteger::Add(Digits const &a, Digits const &b, Digits &result)
{
    Digits const &longer = a.size() >= b.size() ? a : b;
    Digits const &shorter = a.size() >= b.size() ? b : a;
    Digits sum(longer.size() + 1, 0);
    int carry = 0;
    for (std::size_t i = 0; i < longer.size(); ++i)
    {
        int d = longer[i] + (i < shorter.size() ? shorter[i] : 0) + carry; // [0, 19]
        carry = d > 9;
        sum[i] = static_cast<char>(carry ? d - 10 : d);
    }
    sum[longer.size()] = static_cast<char>(carry);
    Clean(sum);
    result.swap(sum);
}

void CBigInteger::Subtract(Digits const &a, Digits const &b, Digits &result)
{
    Digits difference(a);
    SubtractInPlace(difference, b);
    Clean(difference);
    result.swap(difference);
}

void CBigInteger::Multiply(Digits const &a, char d, Digits &result)
{
    if (d == 0)
    {
        result.assign(1, 0);
        return;
    }
    Digits product;
    product.reserve(a.size() + 1);
    int carry = 0;
    for (char digit : a)
    {
        int p = digit * d + carry; // [0, 89]
        product.push_back(static_cast<char>(p % 10));
        carry = p / 10;
    }
    if (carry)
        product.push_back(static_cast<char>(carry));
    Clean(product);
    result.swap(product);
}

void CBigInteger::ShiftLeft(Digits &digits, int n)
{
    if (n < 1 || (digits.size() == 1 && digits[0] == 0))
        return; // zero stays one digit
    digits.insert(digits.begin(), static_cast<std::size_t>(n), 0);
}

void CBigInteger::Multiply(Digits const &a, Digits const &b, Digits &result)
{
    if ((a.size() == 1 && a[0] == 0) || (b.size() == 1 && b[0] == 0))
    {
        result.assign(1, 0);
        return;
    }
    // Column sums first, carries once at the end: each column holds at most
    // 81 * min(|a|, |b|), far inside 32 bits for any vector that fits in memory.
    std::vector<std::uint32_t> columns(a.size() + b.size(), 0);
    for (std::size_t j = 0; j < b.size(); ++j)
    {
        unsigned const d = static_cast<unsigned>(b[j]);
        if (d == 0)
            continue; // powers of ten cost one pass over a
        std::uint32_t *column = &columns[j];
        for (std::size_t i = 0; i < a.size(); ++i)
            column[i] += d * static_cast<unsigned>(a[i]);
    }
    Digits product(columns.size(), 0);
    std::uint64_t carry = 0;
    for (std::size_t k = 0; k < columns.size(); ++k)
    {
        std::uint64_t v = columns[k] + carry;
        product[k] = static_cast<char>(v % 10);
        carry = v / 10;
    }
    assert(carry == 0 && "the product has at most |a| + |b| digits");
    Clean(product);
    result.swap(product);
}

int CBigInteger::Position(Digits const &digits)
{
    return digits.empty() ? 1 : static_cast<int>(digits.size());
}

void CBigInteger::Pow10(unsigned int n, Digits &digits)
{
    digits.assign(static_cast<std::size_t>(n) + 1, 0);
    digits[n] = 1;
}

void CBigInteger::Divide(Digits const &a, Digits const &b, Digits &quotient, Digits &remainder)
{
    assert(!(b.size() == 1 && b[0] == 0) && "callers refuse a zero divisor");
    if (Compare(a, b) < 0)
    {
        quotient.assign(1, 0);
        remainder = a;
        return;
    }
    if (IsPowerOfTen(b))
    {
        // A shift: scaling by powers of ten is what CDecimal does most.
        std::size_t const k = b.size() - 1;
        Digits low(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(k));
        Digits high(a.begin() + static_cast<std::ptrdiff_t>(k), a.end());
        Clean(low);
        Clean(high);
        quotient.swap(high);
        remainder.swap(low);
        return;
    }
    // Long division from the top digit down; each quotient digit costs at
    // most nine subtractions of b, so the whole is O(|a| * |b|).
    Digits q(a.size(), 0);
    Digits rest(1, 0);
    for (std::size_t i = a.size(); i-- > 0;)
    {
        if (rest.size() == 1 && rest[0] == 0)
            rest[0] = a[i];
        else
            rest.insert(rest.begin(), a[i]);
        char count = 0;
        while (Compare(rest, b) >= 0)
        {
            SubtractInPlace(rest, b);
            Clean(rest);
            ++count;
        }
        q[i] = count;
    }
    Clean(q);
    quotient.swap(q);
    remainder.swap(rest);
}

// --- text ---------------------------------------------------------------------------

void CBigInteger::Parse(char const *text)
{
    std::string const s = text ? text : "";
    for (char c : s)
    {
        if (!IsDigit(c) && !IsBlank(c) && c != '+' && c != '-')
        {
            // A point, an exponent or a bad character: CDecimal knows them all.
            *this = CDecimal(text).ToBigInteger();
            return;
        }
    }
    std::size_t end = s.size();
    while (end > 0 && IsBlank(s[end - 1]))
        --end;
    std::size_t begin = 0;
    while (begin < end && IsBlank(s[begin]))
        ++begin;
    sign = 1;
    if (begin < end && s[begin] == '-')
    {
        sign = -1;
        ++begin;
    }
    Build(s.substr(begin, end - begin), digits);
}

std::string CBigInteger::ToString() const
{
    if (digits.empty() || IsZero())
        return "0";
    std::string text;
    text.reserve(digits.size() + 1);
    if (sign < 0)
        text.push_back('-');
    for (std::size_t i = digits.size(); i-- > 0;)
        text.push_back(static_cast<char>('0' + digits[i]));
    return text;
}

// --- sign -------------------------------------------------------------------------

CBigInteger CBigInteger::GetAbs() const
{
    CBigInteger copy(*this);
    copy.sign = 1;
    return copy;
}

CBigInteger &CBigInteger::Abs()
{
    sign = 1;
    return *this;
}

CBigInteger CBigInteger::GetNegative() const
{
    CBigInteger copy(*this);
    copy.sign = -sign;
    return copy;
}

CBigInteger &CBigInteger::Negate()
{
    sign = -sign;
    return *this;
}

CBigInteger &CBigInteger::operator-()
{
    return Negate();
}

// --- comparison --------------------------------------------------------------------

bool CBigInteger::operator==(CBigInteger const &other) const
{
    if (Compare(digits, other.digits) != 0)
        return false;
    return sign == other.sign || IsZero();
}

bool CBigInteger::operator!=(CBigInteger const &other) const
{
    return !(*this == other);
}

bool CBigInteger::operator<(CBigInteger const &other) const
{
    if (sign != other.sign)
        return sign < other.sign; // even for two zeros
    int c = Compare(digits, other.digits);
    return sign > 0 ? c < 0 : c > 0;
}

bool CBigInteger::operator>(CBigInteger const &other) const
{
    return other < *this;
}

bool CBigInteger::operator<=(CBigInteger const &other) const
{
    return !(other < *this);
}

bool CBigInteger::operator>=(CBigInteger const &other) const
{
    return !(*this < other);
}

// --- arithmetic ---------------------------------------------------------------------

CBigInteger CBigInteger::operator+(CBigInteger const &other) const
{
    if (sign == other.sign)
    {
        CBigInteger sum;
        sum.sign = sign;
        Add(digits, other.digits, sum.digits);
        return sum;
    }
    int c = Compare(digits, other.digits);
    if (c == 0)
        return CBigInteger();
    CBigInteger difference;
    if (c > 0)
    {
        difference.sign = sign;
        Subtract(digits, other.digits, difference.digits);
    }
    else
    {
        difference.sign = other.sign;
        Subtract(other.digits, digits, difference.digits);
    }
    return difference;
}

CBigInteger CBigInteger::operator-(CBigInteger const &other) const
{
    return *this + other.GetNegative();
}

CBigInteger CBigInteger::operator*(CBigInteger const &other) const
{
    CBigInteger product;
    product.sign = sign * other.sign;
    Multiply(digits, other.digits, product.digits);
    return product;
}

void CBigInteger::DivideSigned(CBigInteger const &divisor, CBigInteger *quotient, CBigInteger *remainder) const
{
    if (IsZero())
    {
        *quotient = CBigInteger();
        *remainder = CBigInteger();
        return;
    }
    Divide(digits, divisor.digits, quotient->digits, remainder->digits);
    quotient->sign = sign == divisor.sign ? 1 : -1;
    remainder->sign = sign;
}

CBigInteger CBigInteger::operator/(CBigInteger const &other) const
{
    if (other.IsZero())
        throw CMxInvalidValueException(FormatString("ERROR: Overflow in operator/."));
    CBigInteger quotient, remainder;
    DivideSigned(other, &quotient, &remainder);
    return quotient;
}

CBigInteger CBigInteger::operator%(CBigInteger const &other) const
{
    // A zero divisor would never end the division; it shares the message.
    if (other.sign < 0 || other.IsZero())
        throw CMxInvalidValueException(FormatString("ERROR: Overflow in operator%%."));
    CBigInteger quotient, remainder;
    DivideSigned(other, &quotient, &remainder);
    return remainder;
}

CBigInteger &CBigInteger::operator+=(CBigInteger const &other)
{
    return *this = *this + other;
}

CBigInteger &CBigInteger::operator-=(CBigInteger const &other)
{
    return *this = *this - other;
}

CBigInteger &CBigInteger::operator*=(CBigInteger const &other)
{
    return *this = *this * other;
}

CBigInteger &CBigInteger::operator/=(CBigInteger const &other)
{
    if (other.sign < 0 || other.IsZero())
        throw CMxInvalidValueException(FormatString("ERROR: Overflow in operator /=."));
    CBigInteger quotient, remainder;
    DivideSigned(other, &quotient, &remainder);
    return *this = quotient;
}

CBigInteger &CBigInteger::operator%=(CBigInteger const &other)
{
    if (other.sign < 0 || other.IsZero())
        throw CMxInvalidValueException(FormatString("ERROR: Overflow in operator%%=."));
    CBigInteger quotient, remainder;
    DivideSigned(other, &quotient, &remainder);
    return *this = remainder;
}

// --- conversions -------------------------------------------------------------------

namespace
{
// Sums the digits into the magnitude; the caller has checked the range.
unsigned long long Magnitude(std::string const &digits)
{
    unsigned long long value = 0;
    unsigned long long factor = 1;
    for (std::size_t i = 0; i < digits.size(); ++i)
    {
        value += static_cast<unsigned long long>(digits[i]) * factor;
        if (i + 1 < digits.size())
            factor *= 10;
    }
    return value;
}
} // namespace

CBigInteger::operator int() const
{
    if (*this < CBigInteger(INT_MIN) || *this > CBigInteger(INT_MAX))
        throw CMxInvalidValueException(FormatString("ERROR: Value out of bound of int."));
    unsigned int magnitude = static_cast<unsigned int>(Magnitude(digits));
    return sign > 0 ? static_cast<int>(magnitude) : static_cast<int>(0u - magnitude);
}

CBigInteger::operator long long() const
{
    if (*this < CBigInteger(LLONG_MIN) || *this > CBigInteger(LLONG_MAX))
        throw CMxInvalidValueException(FormatString("ERROR: Value out of bound of LONGLONG."));
    unsigned long long magnitude = Magnitude(digits);
    return sign > 0 ? static_cast<long long>(magnitude) : static_cast<long long>(0ull - magnitude);
}

CBigInteger CBigInteger::SquareRoot() const
{
    CBigInteger const zero;
    if (*this < zero)
        throw CMxInvalidValueException(FormatString("ERROR: Negative Number in function SquareRoot()."));
    // Start at a power of ten above the root, so that Newton falls toward it.
    CBigInteger y(10);
    CBigInteger rest = *this / CBigInteger(100);
    while (rest > zero)
    {
        y *= CBigInteger(10);
        rest = rest / CBigInteger(100);
    }
    CBigInteger old;
    do
    {
        old = y;
        y = (old + *this / old) / CBigInteger(2);
    } while (y < old);
    return old;
}

CBigInteger CBigInteger::Pow10(unsigned int n)
{
    CBigInteger power;
    Pow10(n, power.digits);
    return power;
}

} // namespace MxXmlLib
