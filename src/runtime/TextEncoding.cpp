#include "runtime/TextEncoding.h"

#include "runtime/Utf8Codec.h"
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

bool IsWellFormedUtf8(unsigned char const *p, std::size_t length)
{
    return Utf8::IsWellFormed(p, length);
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
