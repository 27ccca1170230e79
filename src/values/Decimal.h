#pragma once

// Exact decimal number: an integer part and a fraction part, both CBigInteger,
// and the count of places the fraction stands for. Arithmetic is exact up to
// one process-wide limit of decimal places (30 unless set).

#include "values/BigInteger.h"

#include <string>

namespace MxXmlLib
{

// Invariants: value = integerPart + fractionPart / 10^fractionDivider; both
// parts carry the value's sign (-0.5 is integerPart -0, fractionPart -5);
// fractionDivider >= 1, except 0 after rounding to 0 places. The fraction is
// not carried into the integer when rounding reaches 10^places: 1.96 to one
// place is fractionPart 10, which prints as 1.10.
class CDecimal
{
public:
    CDecimal();
    CDecimal(int value);
    CDecimal(long value);
    CDecimal(long long value);
    CDecimal(CBigInteger const &value);
    // Blanks, TAB, LF and CR are skipped anywhere before the exponent's
    // digits; '+' and '-' may stand anywhere in the integer digits, the last
    // one winning. "" and "-" are zero, "1e" is 1. A bad character raises
    // CMxInvalidValueException naming its position. More than 511 integer or
    // fraction digits, or 31 exponent digits, count as a bad character at the
    // first digit that does not fit; an exponent above 100000 raises
    // CMxOverFlowException (a smaller negative one is exact: the value is 0).
    CDecimal(char const *text);
    // Through the text of the value with 13 places.
    CDecimal(double value);
    CDecimal(CDecimal const &other) = default;
    CDecimal &operator=(CDecimal const &other) = default;
    virtual ~CDecimal();

    CBigInteger GetIntegerPart() const { return integerPart; }
    CBigInteger GetFractionPart() const { return fractionPart; }
    int GetFractionDivider() const { return fractionDivider; }
    CDecimal GetNegative() const;
    void Negate();
    // Rounded to 0 places, a tie toward zero.
    CBigInteger ToBigInteger() const;

    // + and - are exact; * and / round to GetMaxDecimalPlaces(), a tie toward
    // zero; / carries two guard digits before it rounds and raises
    // "ERROR: Overflow in operator/." for a zero divisor.
    CDecimal operator+(CDecimal const &other) const;
    CDecimal operator-(CDecimal const &other) const;
    CDecimal operator*(CDecimal const &other) const;
    CDecimal operator/(CDecimal const &other) const;
    CDecimal &operator+=(CDecimal const &other);
    CDecimal &operator-=(CDecimal const &other);
    CDecimal &operator*=(CDecimal const &other);
    CDecimal &operator/=(CDecimal const &other);
    CDecimal &operator++();
    CDecimal &operator--();
    // Unlike the built-in meaning, these return the stepped value and leave
    // this object as it was.
    CDecimal operator++(int) const;
    CDecimal operator--(int) const;

    bool operator==(CDecimal const &other) const;
    bool operator!=(CDecimal const &other) const;
    bool operator<(CDecimal const &other) const;
    bool operator>(CDecimal const &other) const;
    bool operator<=(CDecimal const &other) const;
    bool operator>=(CDecimal const &other) const;

    // All places held: "-0.5", "12", "1.10" (see the invariants).
    std::string ToString() const;
    // Rounded half away from zero, then cut to `places` digits; the point is
    // always written ("1." for 0 places), and fewer digits can come out when
    // the rounded value has fewer ("1.0" for 0.995 at 2). `places` must lie
    // in [0, 1023], else CMxInvalidParamException.
    std::string ToString(int places) const;
    // Out of range raises CMxOverFlowException. ToLong rounds to 0 places
    // first; ToLongLong rounds to 1 place and drops it.
    long long ToLongLong() const;
    long ToLong() const;
    double ToDouble() const;

    static int GetMaxDecimalPlaces();
    // In [0, 10000], else CMxInvalidParamException. One value for the whole
    // process, unguarded: set it at start-up.
    static void SetMaxDecimalPlaces(int places);

private:
    CDecimal(CBigInteger const &integer, CBigInteger const &fraction, int divider);

    void Parse(char const *text);
    void Rationalise();
    void ChangeFractionalDivider(int places);
    void LimitPlaces();
    static int Normalize(CDecimal &a, CDecimal &b);
    template <typename Compare> bool CompareFractions(CDecimal const &other, Compare compare) const;

    CBigInteger integerPart;
    CBigInteger fractionPart;
    int fractionDivider;

    static int m_maxDivider;
};

} // namespace MxXmlLib
