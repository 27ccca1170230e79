#include "runtime/Utf8Codec.h"

#include <cstdint>
#include <cstring>

namespace MxXmlLib
{
namespace Utf8
{

namespace
{
// What a lead byte announces: the count of continuation bytes and the bounds
// of the first of them, which rule out overlong forms (E0, F0), surrogates
// (ED) and values above U+10FFFF (F4). False for a byte that cannot lead.
bool ReadLead(unsigned c, std::size_t &need, unsigned &low, unsigned &high)
{
    low = 0x80;
    high = 0xBF;
    if (c >= 0xC2 && c <= 0xDF)
        need = 1;
    else if (c >= 0xE0 && c <= 0xEF)
    {
        need = 2;
        if (c == 0xE0)
            low = 0xA0;
        else if (c == 0xED)
            high = 0x9F;
    }
    else if (c >= 0xF0 && c <= 0xF4)
    {
        need = 3;
        if (c == 0xF0)
            low = 0x90;
        else if (c == 0xF4)
            high = 0x8F;
    }
    else
        return false;
    return true;
}
} // namespace

std::size_t Encode(unsigned long codePoint, unsigned char *out)
{
    switch (EncodedSize(codePoint))
    {
    case 1:
        out[0] = static_cast<unsigned char>(codePoint);
        return 1;
    case 2:
        out[0] = static_cast<unsigned char>(0xC0 | (codePoint >> 6));
        out[1] = static_cast<unsigned char>(0x80 | (codePoint & 0x3F));
        return 2;
    case 3:
        out[0] = static_cast<unsigned char>(0xE0 | (codePoint >> 12));
        out[1] = static_cast<unsigned char>(0x80 | ((codePoint >> 6) & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | (codePoint & 0x3F));
        return 3;
    default:
        out[0] = static_cast<unsigned char>(0xF0 | (codePoint >> 18));
        out[1] = static_cast<unsigned char>(0x80 | ((codePoint >> 12) & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | ((codePoint >> 6) & 0x3F));
        out[3] = static_cast<unsigned char>(0x80 | (codePoint & 0x3F));
        return 4;
    }
}

bool IsWellFormed(unsigned char const *p, std::size_t length)
{
    unsigned char const *const end = p + length;
    while (p < end)
    {
        // Runs of ASCII go eight bytes at a time.
        while (end - p >= 8)
        {
            std::uint64_t word;
            std::memcpy(&word, p, 8);
            if (word & 0x8080808080808080ULL)
                break;
            p += 8;
        }
        if (p == end)
            break;
        unsigned char const c = *p;
        if (c < 0x80)
        {
            ++p;
            continue;
        }
        std::size_t need;
        unsigned low, high;
        if (!ReadLead(c, need, low, high))
            return false;
        if (static_cast<std::size_t>(end - p) <= need)
            return false;
        if (p[1] < low || p[1] > high)
            return false;
        for (std::size_t i = 2; i <= need; ++i)
            if ((p[i] & 0xC0) != 0x80)
                return false;
        p += need + 1;
    }
    return true;
}

void DecodeToWide(unsigned char const *p, std::size_t length, std::wstring &out)
{
    out.clear();
    out.reserve(length);
    std::size_t i = 0;
    while (i < length)
    {
        unsigned const c = p[i];
        if (c < 0x80)
        {
            out.push_back(static_cast<wchar_t>(c));
            ++i;
            continue;
        }
        std::size_t need;
        unsigned low, high;
        if (!ReadLead(c, need, low, high))
        {
            out.push_back(kReplacement);
            ++i;
            continue;
        }
        // The lead byte's payload: 5, 4 or 3 bits for 1, 2 or 3 continuations.
        unsigned cp = c & (0x3F >> need);
        std::size_t j = 1;
        for (; j <= need && i + j < length; ++j)
        {
            unsigned const cc = p[i + j];
            bool const ok = j == 1 ? (cc >= low && cc <= high) : (cc & 0xC0) == 0x80;
            if (!ok)
                break;
            cp = (cp << 6) | (cc & 0x3F);
        }
        if (j <= need)
        {
            out.push_back(kReplacement);
            i += j;
            continue;
        }
        out.push_back(static_cast<wchar_t>(cp));
        i += need + 1;
    }
}

void EncodeFromWide(wchar_t const *text, std::size_t length, std::string &out)
{
    out.clear();
    out.reserve(length);
    unsigned char bytes[4];
    for (std::size_t i = 0; i < length; ++i)
    {
        unsigned long cp = static_cast<std::uint32_t>(text[i]);
        if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            cp = kReplacement;
        if (cp < 0x80)
            out.push_back(static_cast<char>(cp));
        else
            out.append(reinterpret_cast<char const *>(bytes), Encode(cp, bytes));
    }
}

} // namespace Utf8
} // namespace MxXmlLib
