#pragma once

#include "document/XmlWriter.h"
#include "json/JsonContext.h"
#include "runtime/OptionEnums.h"
#include "runtime/TextStream.h"

namespace MxXmlLib
{

// Writes the element stream of the object model as JSON, strictly forward:
// an element is a key; its value becomes an object when its first attribute
// or child arrives, and stays a bare value when only text comes. A collection
// announced through the parent context's ArrayState becomes an array once its
// first item turns out to be an object; items with text only repeat the key.
// Text is copied with few escapes (quotation marks and backslashes stand as
// they are), and elements without content leave their key without a value:
// the output is valid JSON only for documents that avoid these cases.
// CJsonStrictWriter, chosen by CJsonContext::SetStrict, writes valid JSON always.
class CJsonTextWriter : public CXmlWriter
{
public:
    explicit CJsonTextWriter(CTextStream *stream);
    ~CJsonTextWriter() override;

    void StartDocument() override;
    void EndDocument() override;
    // "/* text */" and a line end, formatted or not.
    void WriteComment(std::string const &text) override;
    void WriteProcessingInstruction(std::string const &text) override;
    void WriteInLineSchema(std::string const &text) override;
    // Raises "Unknown Namespace: <name>." (RoundTripFull) for a child element
    // whose namespace is neither the default nor mapped; the root gets a
    // generated prefix instead.
    void StartElement(std::string const &localName, std::string const &namespaceUri) override;
    // Written whatever the default-value flag says, an empty value included.
    void WriteText(std::string const &value, ItemType type, bool isDefaultValue) override;
    void EndElement() override;
    void WriteAttribute(std::string const &localName, std::string const &namespaceUri, std::string const &value,
                        ItemType type) override;
    // Only with RoundTripFull: "@<xsi prefix>:type", which needs the XSI
    // namespace mapped.
    void WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName, ItemType type) override;
    // A nil element is written as one without content.
    void WriteNilAttribute() override;

    // Raises "Invalid EOL type." for anything but CRLF and LF.
    void SetEolType(EOLType type);
    void SetIndentChars(std::string const &indent) { m_indentChars = indent; }
    void SetRoundTrip(JsonRoundTrip value) { m_roundTrip = value; }
    void SetFormatted(bool value) { m_formatted = value; }

    // The document's braces, written by the frames around the root element.
    void WriteDocumentStart();
    void WriteDocumentEnd();

protected:
    using Context = CXmlWriterContext;

    void Put(char c) { m_stream->Put(c); }
    void Write(std::string const &text) { m_stream->Write(text.data(), text.size()); }
    void Write(char const *text, std::size_t length) { m_stream->Write(text, length); }
    void WriteIndent(std::int32_t depth);
    void WriteSeparator(Context *context);
    // Text as it goes between quotation marks.
    void WriteEscaped(char const *text);
    void WriteValue(std::string const &value, ItemType type);
    // "@xmlns" (empty prefix) or "@xmlns:<prefix>" with its URI, as a member of `context`.
    void WriteDeclaration(Context *context, std::string const &prefix, std::string const &uri);
    void FlushCheck() { CXmlWriter::FlushCheck(*m_stream); }

    std::string m_indentChars;
    std::string m_eolString;
    EOLType m_eolMode;
    JsonRoundTrip m_roundTrip;
    bool m_formatted;
    CTextStream *m_stream;
    // The current element has its key and no member yet: whether its value is
    // bare or an object is still open.
    bool m_valuePending;
};

} // namespace MxXmlLib
