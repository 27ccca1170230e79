#pragma once

#include "runtime/InstanceMonitor.h"
#include "runtime/StringBuffer.h"
#include "values/BinaryData.h"

#include <cstdint>

namespace MxXmlLib
{

// The sink of all text output: text gathers in memory until the end. The
// writers flush it whenever GetLength() reaches 4096; a memory stream ignores
// that, and the file stream derived from it writes the piece out.
class CTextStream : private CInstanceMonitor
{
public:
    // `encoding` is an XmlEncoding number: what the bytes of the text become
    // on the way out (0 keeps the local encoding).
    explicit CTextStream(int encoding = 0);
    ~CTextStream() override;

    virtual void Start();
    virtual void End();
    virtual void Flush();

    // The writers' hot path: inline, no call through the interface.
    void Put(char c) { m_buffer.AppendChar(c); }
    void Write(char const *text) { m_buffer.Append(text); }
    void Write(char const *text, std::size_t length) { m_buffer.Append(text, length); }
    // The text so far, owned by the stream and valid until its next change.
    char const *Text() { return m_buffer.GetText(); }
    // The same text as a string, without joining the chunks first.
    std::string TextAsString() const { return m_buffer.ToString(); }

    // Characters since the last clearing of the buffer.
    std::uint32_t GetLength() const { return m_buffer.GetLength(); }
    int GetEncoding() const { return m_encoding; }

    // The text as bytes of the stream's encoding: 1 UTF-8, 2 and 3 UTF-16
    // little-endian without a byte order mark. Any other value, 0 included,
    // raises CMxException "Unknown Encoding, select UTF-8 (contact our
    // support team)". Joins the buffer's chunks (see Text).
    CBinaryData GetBytes();

protected:
    CStringBuffer m_buffer;
    std::int32_t m_encoding;
};

} // namespace MxXmlLib
