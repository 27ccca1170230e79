#pragma once

// Internal to the date and duration classes: a fixed buffer that their
// printers fill digit by digit, so no locale and no allocation but the
// result's. Not part of the public interface.

#include <cstddef>
#include <string>

namespace MxXmlLib
{
namespace DateTimeText
{

class Buffer
{
public:
    void Put(char c) { m_data[m_size++] = c; }
    void Put(char const *s)
    {
        while (*s)
            m_data[m_size++] = *s++;
    }
    // Decimal, zero-padded on the left to at least `width` digits; wider
    // values are printed whole, never cut.
    void PutPadded(unsigned long long value, int width)
    {
        char digits[20];
        int n = 0;
        do
        {
            digits[n++] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        for (int i = n; i < width; ++i)
            m_data[m_size++] = '0';
        while (n > 0)
            m_data[m_size++] = digits[--n];
    }
    // ".mmm", ".mmmuuu" or ".mmmuuunnn" as far as the fraction needs, the
    // trailing zeros of the last group dropped; nothing for a zero fraction.
    void PutFraction(unsigned milli, unsigned micro, unsigned nano)
    {
        if (milli == 0 && micro == 0 && nano == 0)
            return;
        Put('.');
        PutPadded(milli, 3);
        if (micro != 0 || nano != 0)
            PutPadded(micro, 3);
        if (nano != 0)
            PutPadded(nano, 3);
        // The last group is not zero, so this stops inside it.
        while (m_data[m_size - 1] == '0')
            --m_size;
    }
    std::string Str() const { return std::string(m_data, m_size); }

private:
    // Longest text: a duration with every count at its maximum, about 110.
    char m_data[160];
    std::size_t m_size = 0;
};

} // namespace DateTimeText
} // namespace MxXmlLib
