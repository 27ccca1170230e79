#include "runtime/TextStream.h"

#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF,
// which is what the code-page decoder accepts without replacing anything.
bool IsValidUtf8(unsigned char const *p, std::size_t length)
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

// Output text is mostly ASCII in a UTF-8 process: then the bytes already are
// the answer, and the round trip through wide text is skipped.
CBinaryData ToUtf8(char const *text)
{
    std::size_t const length = std::strlen(text);
    if (IsASCIIOnly() ||
        (IsUtf8PassThrough() && IsValidUtf8(reinterpret_cast<unsigned char const *>(text), length)))
        return CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>(text)),
                           static_cast<unsigned long>(length), false);
    return LocalToUtf8(text);
}
} // namespace

CTextStream::CTextStream(int encoding) : m_buffer(4095), m_encoding(encoding) {}

CTextStream::~CTextStream() {}

void CTextStream::Start() { m_buffer.Empty(); }

// A memory stream holds all its text until the caller takes it.
void CTextStream::End() {}

void CTextStream::Flush() {}

CBinaryData CTextStream::GetBytes()
{
    switch (m_encoding)
    {
    case 1:
        return ToUtf8(Text());
    case 2:
    case 3:
        return LocalToUtf16(Text());
    default:
        throw CMxException("Unknown Encoding, select UTF-8 (contact our support team)");
    }
}

} // namespace MxXmlLib
