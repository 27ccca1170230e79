#include "document/TextWriter.h"

#include "runtime/MxException.h"

namespace MxXmlLib
{

CTextWriter::CTextWriter(CTextStream *stream)
    : m_stream(stream), m_formatted(true), m_endOfLine("\n"), m_eolType(LF), m_indent("\t")
{
}

void CTextWriter::StartDocument()
{
    m_stream->Start();
}

void CTextWriter::EndDocument()
{
    m_stream->End();
    CXmlWriter::EndDocument();
}

void CTextWriter::SetEolType(EOLType type)
{
    if (type == CRLF)
        m_endOfLine = "\r\n";
    else if (type == LF)
        m_endOfLine = "\n";
    else
        throw CMxException("Invalid EOL type.");
    m_eolType = type;
}

void CTextWriter::SetIndent(std::string const &indent)
{
    m_indent = indent;
    m_indentRun.clear();
}

void CTextWriter::WriteIndent(std::int32_t depth)
{
    if (depth <= 0 || m_indent.empty())
        return;
    std::size_t const length = m_indent.size() * static_cast<std::size_t>(depth);
    while (m_indentRun.size() < length)
        m_indentRun += m_indent;
    Write(m_indentRun.data(), length);
}

} // namespace MxXmlLib
