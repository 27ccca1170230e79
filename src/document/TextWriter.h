#pragma once

#include "document/XmlWriter.h"
#include "runtime/OptionEnums.h"
#include "runtime/TextStream.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

// One flag for each byte value, set at compile time by `marks`: the bytes that
// a writer's escaping scan stops at, the rest being copied in runs.
class CByteSet
{
public:
    template <class Marks> constexpr explicit CByteSet(Marks const &marks) : m_marked{}
    {
        for (unsigned c = 0; c < 256; ++c)
            m_marked[c] = marks(c);
    }
    constexpr bool operator[](unsigned char c) const { return m_marked[c]; }

private:
    bool m_marked[256];
};

// What the XML and JSON text writers share: the stream they borrow, the line
// end, the indentation, the layout switch and the flush of a full stream.
class CTextWriter : public CXmlWriter
{
public:
    explicit CTextWriter(CTextStream *stream);

    void StartDocument() override;
    // Ends the stream, then the base's check for an element left open.
    void EndDocument() override;

    // Raises "Invalid EOL type." for anything but CRLF and LF.
    void SetEolType(EOLType type);
    // The text of one level of indentation ("\t" unless set).
    void SetIndent(std::string const &indent);
    void SetFormatted(bool value) { m_formatted = value; }

    EOLType GetEolType() const { return m_eolType; }
    bool GetFormatted() const { return m_formatted; }
    std::string const &GetEndOfLine() const { return m_endOfLine; }
    CTextStream *GetStream() const { return m_stream; }

protected:
    void Put(char c) { m_stream->Put(c); }
    void Write(std::string const &text) { m_stream->Write(text.data(), text.size()); }
    void Write(char const *text, std::size_t length) { m_stream->Write(text, length); }
    void WriteEndOfLine() { Write(m_endOfLine); }
    // `depth` levels of indentation (none for 0 or less), as one piece cut
    // from a run that is built once and grows with the deepest level seen.
    void WriteIndent(std::int32_t depth);
    void FlushCheck() { CXmlWriter::FlushCheck(*m_stream); }
    // Writes [text, end): the runs between the bytes of `stops` as they
    // stand, and each of those bytes through `escape(byte)`.
    template <class Escape>
    void WriteEscapedRuns(char const *text, char const *end, CByteSet const &stops, Escape const &escape)
    {
        char const *run = text;
        for (char const *p = text; p != end; ++p)
        {
            if (!stops[static_cast<unsigned char>(*p)])
                continue;
            if (p > run)
                Write(run, static_cast<std::size_t>(p - run));
            run = p + 1;
            escape(static_cast<unsigned char>(*p));
        }
        if (end > run)
            Write(run, static_cast<std::size_t>(end - run));
    }

    CTextStream *m_stream;
    bool m_formatted;

private:
    std::string m_endOfLine;
    EOLType m_eolType;
    std::string m_indent;
    std::string m_indentRun; // whole copies of m_indent
};

} // namespace MxXmlLib
