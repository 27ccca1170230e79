#pragma once

#include "document/TextWriter.h"
#include "json/JsonContext.h"

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
class CJsonTextWriter : public CTextWriter
{
public:
    explicit CJsonTextWriter(CTextStream *stream);
    ~CJsonTextWriter() override;

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

    void SetRoundTrip(JsonRoundTrip value) { m_roundTrip = value; }

    // The document's braces, written by the frames around the root element.
    void WriteDocumentStart();
    void WriteDocumentEnd();

protected:
    using Context = CXmlWriterContext;

    void WriteSeparator(Context *context);
    // Text as it goes between quotation marks.
    void WriteEscaped(char const *text);
    void WriteValue(std::string const &value, ItemType type);
    // "@xmlns" (empty prefix) or "@xmlns:<prefix>" with its URI, as a member of `context`.
    void WriteDeclaration(Context *context, std::string const &prefix, std::string const &uri);

    JsonRoundTrip m_roundTrip;
    // The current element has its key and no member yet: whether its value is
    // bare or an object is still open.
    bool m_valuePending;
};

} // namespace MxXmlLib
