#include "values/DateTimeSpan.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/DateTimeText.h"

namespace MxXmlLib
{

namespace
{

[[noreturn]] void ThrowInvalid(char const *text)
{
    throw CMxInvalidValueException(
        FormatString("Invalid XSD Duration [%s] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]", text));
}

// Minutes and seconds take the 32-bit count as signed, so a count above
// 2^31 becomes a huge 64-bit value rather than an error.
std::uint64_t SignExtended(std::uint32_t number)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<std::int32_t>(number)));
}

} // namespace

CDateTimeSpan::CDateTimeSpan()
{
    SetDateTimeSpan(0, 0, 0, 0, 0, 0, 0, 0, 0);
}

CDateTimeSpan::CDateTimeSpan(std::uint32_t h, std::uint64_t mi, std::uint64_t s)
{
    SetDateTimeSpan(0, 0, 0, h, mi, s, 0, 0, 0);
}

CDateTimeSpan::CDateTimeSpan(std::uint16_t y, std::uint32_t mo, std::uint32_t d, std::uint32_t h, std::uint64_t mi,
                             std::uint64_t s)
{
    SetDateTimeSpan(y, mo, d, h, mi, s, 0, 0, 0);
}

CDateTimeSpan::CDateTimeSpan(std::uint16_t y, std::uint32_t mo, std::uint32_t d, std::uint32_t h, std::uint64_t mi,
                             std::uint64_t s, std::uint16_t milli, std::uint16_t micro, std::uint16_t nano)
{
    SetDateTimeSpan(y, mo, d, h, mi, s, milli, micro, nano);
}

CDateTimeSpan::~CDateTimeSpan() = default;

void CDateTimeSpan::SetDateTimeSpan(std::uint32_t h, std::uint64_t mi, std::uint64_t s)
{
    SetDateTimeSpan(0, 0, 0, h, mi, s, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(std::uint16_t y, std::uint32_t mo, std::uint32_t d, std::uint32_t h,
                                    std::uint64_t mi, std::uint64_t s)
{
    SetDateTimeSpan(y, mo, d, h, mi, s, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(std::uint16_t y, std::uint32_t mo, std::uint32_t d, std::uint32_t h,
                                    std::uint64_t mi, std::uint64_t s, std::uint16_t milli, std::uint16_t micro,
                                    std::uint16_t nano)
{
    years = y;
    months = mo;
    days = d;
    hours = h;
    minutes = mi;
    seconds = s;
    milliSeconds = milli;
    microSeconds = micro;
    nanoSeconds = nano;
    negative = false;
}

CDateTimeSpan CDateTimeSpan::GetAsNegative() const
{
    CDateTimeSpan copy(*this);
    copy.negative = true;
    return copy;
}

std::string CDateTimeSpan::ToString() const
{
    DateTimeText::Buffer out;
    out.Put(negative ? "-P" : "P");
    auto unit = [&out](std::uint64_t value, char designator) {
        if (value != 0)
        {
            out.PutPadded(value, 1);
            out.Put(designator);
        }
    };
    unit(years, 'Y');
    unit(months, 'M');
    unit(days, 'D');
    bool const noFraction = milliSeconds == 0 && microSeconds == 0 && nanoSeconds == 0;
    if (hours == 0 && minutes == 0 && seconds == 0 && noFraction)
        return out.Str();
    out.Put('T');
    unit(hours, 'H');
    unit(minutes, 'M');
    if (seconds == 0 && noFraction)
        return out.Str();
    out.PutPadded(seconds, 1);
    out.PutFraction(milliSeconds, microSeconds, nanoSeconds);
    out.Put('S');
    return out.Str();
}

// A small state machine over designators; `state` records the last one
// taken (0 start, 1 Y, 2 M, 3 D, 4 T, 5 H, 6 minutes, 7 S, 8 fraction).
// 'Y' is taken in any state, so P1D1Y and PT1S1Y pass.
void CDateTimeSpan::ParseXSDDuration(char const *text)
{
    SetDateTimeSpan(0, 0, 0, 0, 0, 0, 0, 0, 0);
    if (text == nullptr)
        throw CMxInvalidValueException("Invalid XSD Duration (Null String)");
    if (*text == '\0')
        throw CMxInvalidValueException("Invalid XSD Duration (Empty String)");
    char const *p = text;
    if (*p == '-')
    {
        negative = true;
        ++p;
    }
    if (*p != 'P')
        ThrowInvalid(text);
    ++p;
    int state = 0;
    while (true)
    {
        if (*p == '\0')
        {
            if (state == 0 || state == 4)
                ThrowInvalid(text);
            return;
        }
        std::uint32_t number = 0; // wraps silently, as callers have seen
        while (*p >= '0' && *p <= '9')
            number = number * 10u + static_cast<std::uint32_t>(*p++ - '0');
        char const designator = *p;
        if (designator != '\0')
            ++p;
        switch (designator)
        {
        case 'Y':
            years = static_cast<std::uint16_t>(number);
            state = 1;
            break;
        case 'M':
            if (state == 0 || state == 1)
            {
                months = number;
                state = 2;
            }
            else if (state == 4 || state == 5)
            {
                minutes = SignExtended(number);
                state = 6;
            }
            else
                ThrowInvalid(text);
            break;
        case 'D':
            if (state > 2)
                ThrowInvalid(text);
            days = number;
            state = 3;
            break;
        case 'T':
            if (state > 3)
                ThrowInvalid(text);
            state = 4;
            break;
        case 'H':
            if (state != 4)
                ThrowInvalid(text);
            hours = number;
            state = 5;
            break;
        case 'S':
        case '.':
            if (state < 4 || state > 6)
                ThrowInvalid(text);
            seconds = SignExtended(number);
            state = 7;
            if (designator == '.')
            {
                // A point with nothing after it ends the text validly.
                if (*p == '\0')
                    return;
                // Only the last digit of the third group is kept.
                std::uint16_t weight = 100;
                for (int count = 0; *p >= '0' && *p <= '9'; ++count, ++p)
                {
                    if (count == 9)
                        throw CMxInvalidValueException(
                            FormatString("Invalid XSD Duration [%s] Fraction part too long", text));
                    if (count == 3 || count == 6)
                        weight = 100;
                    std::uint16_t const digit = static_cast<std::uint16_t>(*p - '0');
                    if (count < 3)
                        milliSeconds = static_cast<std::uint16_t>(milliSeconds + digit * weight);
                    else if (count < 6)
                        microSeconds = static_cast<std::uint16_t>(microSeconds + digit * weight);
                    else
                        nanoSeconds = digit;
                    weight = static_cast<std::uint16_t>(weight / 10);
                }
                state = 8;
                if (*p != 'S')
                    ThrowInvalid(text);
                ++p;
            }
            break;
        default:
            ThrowInvalid(text);
        }
    }
}

CDateTime::DTCompareResult CDateTimeSpan::CompareTo(CDateTimeSpan const &other) const
{
    // The four dates cover the month lengths that decide the XSD order.
    static constexpr short kReference[4][3] = {{1696, 9, 1}, {1697, 2, 1}, {1903, 3, 1}, {1903, 7, 1}};
    try
    {
        CDateTime::DTCompareResult first = CDateTime::DTEqual;
        for (int i = 0; i < 4; ++i)
        {
            CDateTime base(kReference[i][0], static_cast<unsigned char>(kReference[i][1]),
                           static_cast<unsigned char>(kReference[i][2]));
            base.SetUTC();
            CDateTime const withOther = base + other;
            CDateTime const withThis = base + *this;
            CDateTime::DTCompareResult const r = withThis.CompareTo(withOther);
            if (r == CDateTime::DTIndeterminate || (i > 0 && r != first))
                return CDateTime::DTIndeterminate;
            first = r;
        }
        return first;
    }
    catch (CMxInvalidValueException const &)
    {
        return CDateTime::DTIndeterminate;
    }
}

} // namespace MxXmlLib
