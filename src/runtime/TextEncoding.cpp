#include "runtime/TextEncoding.h"

#include "runtime/platform/Platform.h"

#include <cstdint>
#include <cstring>

namespace MxXmlLib
{

namespace
{
bool g_asciiOnly = false;
unsigned int g_localCodePage = Platform::DefaultLocalCodePage;

void AssignUpToZero(std::string &result, char const *text, std::size_t length)
{
    auto const *zero = static_cast<char const *>(std::memchr(text, 0, length));
    result.assign(text, zero ? static_cast<std::size_t>(zero - text) : length);
}

bool IsUtf8Local(unsigned codePage)
{
    return codePage == Platform::CodePageUtf8 || codePage <= Platform::CodePageThreadAcp;
}

} // namespace

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF,
// which is what the code-page decoder accepts without replacing anything.
bool IsWellFormedUtf8(unsigned char const *p, std::size_t length)
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
        unsigned char low = 0x80, high = 0xBF; // bounds of the second byte
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

void ASCIIOnly(bool asciiOnly)
{
    g_asciiOnly = asciiOnly;
}

bool IsASCIIOnly()
{
    return g_asciiOnly;
}

void SetLocalCharEncoding(unsigned int codePage)
{
    g_localCodePage = codePage;
}

unsigned int GetLocalCharEncoding()
{
    return g_localCodePage;
}

bool IsUtf8PassThrough()
{
    return g_asciiOnly || IsUtf8Local(g_localCodePage);
}

void Utf8ToLocal(std::string &result, unsigned char const *utf8, unsigned length, wchar_t *, unsigned, char *,
                 unsigned)
{
    Utf8ToLocal(result, utf8, length);
}

void Utf8ToLocal(std::string &result, unsigned char const *utf8, unsigned length)
{
    if (g_asciiOnly)
    {
        result.assign(reinterpret_cast<char const *>(utf8), length);
        return;
    }
    if (length == 0 || utf8 == nullptr)
    {
        result.clear();
        return;
    }
    auto const *text = reinterpret_cast<char const *>(utf8);
    bool ascii = true;
    for (unsigned i = 0; i < length; ++i)
        if (utf8[i] >= 0x80)
        {
            ascii = false;
            break;
        }
    unsigned const codePage = g_localCodePage;
    // ASCII widens and narrows to itself in every code page we map.
    if (ascii || (IsUtf8Local(codePage) && IsWellFormedUtf8(utf8, length)))
    {
        AssignUpToZero(result, text, length);
        return;
    }
    std::wstring wide;
    Platform::DecodeToWide(Platform::CodePageUtf8, text, length, wide);
    std::string narrow;
    if (!Platform::EncodeFromWide(codePage, wide.data(), wide.size(), narrow))
    {
        result.clear();
        return;
    }
    AssignUpToZero(result, narrow.data(), narrow.size());
}

void Utf8ToLocal(std::string &result, char const *utf8)
{
    if (utf8 == nullptr)
    {
        result.clear();
        return;
    }
    Utf8ToLocal(result, reinterpret_cast<unsigned char const *>(utf8), static_cast<unsigned>(std::strlen(utf8)));
}

std::string Utf8ToLocal(char const *utf8, unsigned length)
{
    std::string result;
    Utf8ToLocal(result, reinterpret_cast<unsigned char const *>(utf8), length);
    return result;
}

std::string Utf16ToLocal(wchar_t const *text, unsigned length)
{
    if (text == nullptr || length == 0)
        return std::string();
    std::string narrow;
    if (!Platform::EncodeFromWide(g_localCodePage, text, length, narrow))
        return std::string();
    std::string result;
    AssignUpToZero(result, narrow.data(), narrow.size());
    return result;
}

} // namespace MxXmlLib
