#pragma once

#include "document/TextWriter.h"

namespace MxXmlLib
{

// Writes XML text to a stream that it borrows. Namespaces get generated
// prefixes (AA, AB, ...) where none is mapped; formatted output puts each
// element on its own line, indented by its depth.
class CXmlTextWriter : public CTextWriter
{
public:
    explicit CXmlTextWriter(CTextStream *stream);

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

    void WriteXmlDeclaration();
    void WriteEscaped(char const *text, bool isAttribute);

    void SetWriteDefaultValues(bool value) { m_writeDefaultValues = value; }
    // Before text written straight to the stream as a child element: closes
    // an open start tag as StartElement would, counting the child.
    void CloseStartTag();

private:
    void WriteDeclaration(std::string const &prefix, std::string const &uri);
    // The open element, whose start tag must still be open: raises "Attributes
    // must be added before elements" after its first child or text.
    CXmlWriterContext &TagOfAttributes();

    bool m_writeDefaultValues;
};

} // namespace MxXmlLib
