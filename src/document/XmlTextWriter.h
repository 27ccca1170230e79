#pragma once

#include "document/XmlWriter.h"
#include "runtime/OptionEnums.h"
#include "runtime/TextStream.h"

namespace MxXmlLib
{

// Writes XML text to a stream that it borrows. Namespaces get generated
// prefixes (AA, AB, ...) where none is mapped; formatted output puts each
// element on its own line, indented by its depth.
class CXmlTextWriter : public CXmlWriter
{
public:
    explicit CXmlTextWriter(CTextStream *stream);

    void StartDocument() override;
    void EndDocument() override;
    void WriteComment(std::string const &text) override;
    void WriteProcessingInstruction(std::string const &text) override;
    // Attribute text copied into the open start tag, between line ends.
    void WriteInLineSchema(std::string const &text) override;
    void StartElement(std::string const &localName, std::string const &namespaceUri) override;
    // Text that starts with "<![CDATA[" is written as it stands.
    void WriteText(std::string const &value, ItemType type, bool isDefaultValue) override;
    void EndElement() override;
    void WriteAttribute(std::string const &localName, std::string const &namespaceUri, std::string const &value,
                        ItemType type) override;
    void WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName, ItemType type) override;
    void WriteNilAttribute() override;

    // Raises "Invalid EOL type." for anything but CRLF and LF.
    void SetEolType(EOLType type);
    void WriteXmlDeclaration();
    void WriteEscaped(char const *text, bool isAttribute);

    void SetWriteDefaultValues(bool value) { m_writeDefaultValues = value; }
    void SetIndent(std::string const &indent) { m_indent = indent; }
    void SetFormatted(bool value) { m_formatted = value; }

    EOLType GetEolType() const { return m_eolType; }
    bool GetFormatted() const { return m_formatted; }
    std::string const &GetEndOfLine() const { return m_endOfLine; }
    CTextStream *GetStream() const { return m_stream; }
    // Before text written straight to the stream as a child element: closes
    // an open start tag as StartElement would, counting the child.
    void CloseStartTag();

private:
    void Put(char c) { m_stream->Put(c); }
    void Write(std::string const &text) { m_stream->Write(text.data(), text.size()); }
    void Write(char const *text, std::size_t length) { m_stream->Write(text, length); }
    void WriteIndent(std::int32_t depth);
    void WriteDeclaration(std::string const &prefix, std::string const &uri);
    void FlushCheck() { CXmlWriter::FlushCheck(*m_stream); }

    bool m_writeDefaultValues;
    std::string m_indent;
    std::string m_endOfLine;
    EOLType m_eolType;
    bool m_formatted;
    CTextStream *m_stream;
};

} // namespace MxXmlLib
