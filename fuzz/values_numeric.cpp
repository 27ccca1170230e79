// Text forms of the numeric and binary values on arbitrary bytes: every input
// ends in a value or in CMxException, and what parses prints and re-parses to
// an equal value.

#include "runtime/MxException.h"
#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/Decimal.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;

namespace
{

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

void FuzzBigInteger(std::string const &text)
{
    try
    {
        CBigInteger const value(text.c_str());
        Check(CBigInteger(value.ToString().c_str()) == value);
        CBigInteger const other(static_cast<long long>(text.size()) - 7);
        Check((value + other) - other == value);
        if (other != CBigInteger(0))
        {
            CBigInteger const q = value / other;
            Check(q * other + (value - q * other) == value);
        }
    }
    catch (CMxException const &)
    {
    }
}

void FuzzDecimal(std::string const &text)
{
    try
    {
        CDecimal const value(text.c_str());
        std::string const printed = value.ToString();
        // Rounding may leave a fraction of 10^places uncarried ("1.10" for
        // 1.96 at one place), which reads back as another value.
        bool const carried = value.GetFractionPart().GetAbs() < CBigInteger::Pow10(value.GetFractionDivider());
        if (carried && printed.size() < 500) // the parser takes 511 integer digits
            Check(CDecimal(printed.c_str()) == value);
        (void)value.ToString(static_cast<int>(text.size() % 40));
        (void)(value * CDecimal("1.5"));
        (void)(value / CDecimal("-7.25"));
    }
    catch (CMxException const &)
    {
    }
}

void FuzzBinary(std::string const &text)
{
    CBinaryData data;
    data.SetAsBase64(text);
    CBinaryData again;
    again.SetAsBase64(data.GetAsBase64());
    Check(again == data);
    try
    {
        data.SetAsHexString(text);
        again.SetAsHexString(data.GetAsHexString());
        Check(again == data);
    }
    catch (CMxException const &)
    {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *bytes, size_t size)
{
    if (size == 0)
        return 0;
    // The first byte picks the reader; the rest, cut at a zero, is the text.
    std::string text(reinterpret_cast<char const *>(bytes) + 1, size - 1);
    std::string const untilZero(text.c_str());
    switch (bytes[0] % 3)
    {
    case 0:
        FuzzBigInteger(untilZero);
        break;
    case 1:
        FuzzDecimal(untilZero);
        break;
    default:
        FuzzBinary(text);
        break;
    }
    return 0;
}
