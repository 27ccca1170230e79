#include "runtime/TextStream.h"

#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{

// Output text is mostly ASCII in a UTF-8 process: then the bytes already are
// the answer, and the round trip through wide text is skipped.
CBinaryData ToUtf8(char const *text)
{
    std::size_t const length = std::strlen(text);
    if (IsASCIIOnly() ||
        (IsUtf8PassThrough() && IsWellFormedUtf8(reinterpret_cast<unsigned char const *>(text), length)))
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
