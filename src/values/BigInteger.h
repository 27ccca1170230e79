#pragma once

// Arbitrary-precision integer, one decimal digit a byte. Simple rather than
// fast: values are the integers of a document, short in practice.

#include <string>
#include <vector>

namespace MxXmlLib
{

class CDecimal;

// Invariants: `digits` holds digit values 0..9 (not ASCII), least significant
// first, without high zeros and never empty; zero is the single digit 0. A
// zero may carry sign -1: `==` ignores it, `ToString` prints "0", but `<`
// ranks it below a zero of sign 1.
class CBigInteger
{
public:
    CBigInteger();
    CBigInteger(int value);
    CBigInteger(unsigned int value);
    CBigInteger(long value);
    CBigInteger(unsigned long value);
    CBigInteger(long long value);
    CBigInteger(unsigned long long value);
    // Rounds the magnitude by ceil(|value| - 0.5), so 2.5 gives 2 and -2.5
    // gives -2. An infinity or NaN raises CMxInvalidValueException.
    CBigInteger(double value);
    // Rounds to 0 places as CDecimal::ToBigInteger does (ties toward zero).
    explicit CBigInteger(CDecimal const &value);
    CBigInteger(char const *text);
    CBigInteger(CBigInteger const &other) = default;
    CBigInteger &operator=(CBigInteger const &other) = default;
    virtual ~CBigInteger();

    // Digits with blanks, TAB, LF, CR and signs are read directly: blanks
    // around are dropped, a leading '-' negates, and only the digits after the
    // last non-digit count ("12 34" is 34, "+5" is 5, "" is 0). Any other
    // character sends the text through CDecimal, rounded to 0 places, so
    // "1.5e3" is 1500; CDecimal's error is raised for bad text.
    void Parse(char const *text);
    std::string ToString() const;

    CBigInteger GetAbs() const;
    CBigInteger &Abs();
    CBigInteger GetNegative() const;
    CBigInteger &Negate();
    // Negates this object itself and returns it: `-a` changes `a`.
    CBigInteger &operator-();

    bool operator==(CBigInteger const &other) const;
    bool operator!=(CBigInteger const &other) const;
    bool operator<(CBigInteger const &other) const;
    bool operator>(CBigInteger const &other) const;
    bool operator<=(CBigInteger const &other) const;
    bool operator>=(CBigInteger const &other) const;

    CBigInteger operator+(CBigInteger const &other) const;
    CBigInteger operator-(CBigInteger const &other) const;
    CBigInteger operator*(CBigInteger const &other) const;
    // Quotient truncated toward zero; the remainder takes the dividend's sign.
    // `/` refuses a zero divisor, `%`, `/=` and `%=` a negative or zero one,
    // each with its own CMxInvalidValueException.
    CBigInteger operator/(CBigInteger const &other) const;
    CBigInteger operator%(CBigInteger const &other) const;
    CBigInteger &operator+=(CBigInteger const &other);
    CBigInteger &operator-=(CBigInteger const &other);
    CBigInteger &operator*=(CBigInteger const &other);
    CBigInteger &operator/=(CBigInteger const &other);
    CBigInteger &operator%=(CBigInteger const &other);

    // Outside the type's range raises CMxInvalidValueException. Explicit, so
    // that `a + 1` is not ambiguous with built-in arithmetic.
    explicit operator int() const;
    explicit operator long long() const;

    // Integer square root (Newton). Negative raises; zero raises the zero
    // divisor error of operator/ on the way.
    CBigInteger SquareRoot() const;
    static CBigInteger Pow10(unsigned int n);

protected:
    // A string, for its inline buffer: the digits of most values fit there,
    // so that making, copying and dropping them allocates nothing.
    typedef std::string Digits;

    CBigInteger(int sign, Digits const &digits);

    static void Build(unsigned int value, Digits &digits);
    static void BuildDWORDLONG(unsigned long long value, Digits &digits);
    static void BuildDouble(double value, Digits &digits);
    static void Build(std::string const &text, Digits &digits);
    static void Clean(Digits &digits);
    static int Compare(Digits const &a, Digits const &b);
    static void Add(Digits const &a, Digits const &b, Digits &result);
    static void Subtract(Digits const &a, Digits const &b, Digits &result); // requires a >= b
    static void Multiply(Digits const &a, char d, Digits &result);
    static void ShiftLeft(Digits &digits, int n);
    static void Multiply(Digits const &a, Digits const &b, Digits &result);
    static int Position(Digits const &digits);
    static void Pow10(unsigned int n, Digits &digits);
    // Requires b != 0.
    static void Divide(Digits const &a, Digits const &b, Digits &quotient, Digits &remainder);

private:
    friend class CDecimal;

    bool IsZero() const { return digits.size() == 1 && digits[0] == 0; }
    // Truncating division of the magnitudes with the signs of the operators.
    void DivideSigned(CBigInteger const &divisor, CBigInteger *quotient, CBigInteger *remainder) const;

    int sign;      // 1 or -1
    Digits digits; // see the invariants above
};

} // namespace MxXmlLib
