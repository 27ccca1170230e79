#include "runtime/TextStream.h"

namespace MxXmlLib
{

CTextStream::CTextStream(int encoding) : m_buffer(4095), m_encoding(encoding) {}

CTextStream::~CTextStream() {}

void CTextStream::Start() { m_buffer.Empty(); }

// A memory stream holds all its text until the caller takes it.
void CTextStream::End() {}

void CTextStream::Flush() {}

} // namespace MxXmlLib
