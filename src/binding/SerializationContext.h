#pragma once

#include "metadata/NamespaceAliasMap.h"
#include "runtime/OptionEnums.h"
#include "runtime/SmartPtr.h"

#include <memory>
#include <string>
#include <vector>

namespace MxXmlLib
{

class CAttributeCol;
class CFastInfosetContext;
class CJsonContext;

// The options of one read or write. It belongs to the caller and must outlive
// the call; it is written to during calls, so concurrent calls need their own.
class CSerializationContext
{
public:
    CSerializationContext();
    CSerializationContext(CSerializationContext const &);
    CSerializationContext &operator=(CSerializationContext const &);
    virtual ~CSerializationContext();

    // The process-wide default, for callers without options of their own.
    static CSerializationContext &GetDefaultContext();

    // The Fast Infoset options, made with their defaults on first use. Copies
    // of a context share it.
    CFastInfosetContext &GetFIContext() const;
    // The JSON options, made with their defaults on first use. Copies of a
    // context share it.
    CJsonContext &GetJsonContext() const;

    std::string GetDefaultNamespaceURI() const { return m_defaultNamespaceUri; }
    void SetDefaultNamespaceURI(char const *uri);

    bool GetWriteTypeAttribute() const { return m_writeTypeAttribute; }
    void SetWriteTypeAttribute(bool value) { m_writeTypeAttribute = value; }

    CNamespaceAliasMap &GetNamespaceAliases() { return m_namespaceAliases; }
    CNamespaceAliasMap const &GetNamespaceAliases() const { return m_namespaceAliases; }

    // Written right after the root's start tag; made empty on first use and
    // shared by copies of the context.
    CSmartPtr<CAttributeCol> GetAdditionalRootAttributes() const;

    std::vector<std::string> &GetProcessingInstructions() { return m_processingInstructions; }
    std::vector<std::string> const &GetProcessingInstructions() const { return m_processingInstructions; }

    std::string GetInLineSchema() const { return m_inLineSchema; }
    void SetInLineSchema(char const *text);

    bool GetIgnoreInvalidCollectionCounts() const { return m_ignoreInvalidCollectionCounts; }
    void SetIgnoreInvalidCollectionCounts(bool value) { m_ignoreInvalidCollectionCounts = value; }
    bool GetIgnoreMissingChoice() const { return m_ignoreMissingChoice; }
    void SetIgnoreMissingChoice(bool value) { m_ignoreMissingChoice = value; }
    bool GetIgnoreMissingMandatoryElements() const { return m_ignoreMissingMandatoryElements; }
    // Raises CMxInvalidStateException when unknown elements are ignored too.
    void SetIgnoreMissingMandatoryElements(bool value);
    bool GetIgnoreUnknownElements() const { return m_ignoreUnknownElements; }
    // Raises CMxInvalidStateException when missing mandatory elements are ignored too.
    void SetIgnoreUnknownElements(bool value);
    bool GetIgnoreUnknownAttributes() const { return m_ignoreUnknownAttributes; }
    void SetIgnoreUnknownAttributes(bool value) { m_ignoreUnknownAttributes = value; }
    // True when the flag is set or the schema type turns namespaces off.
    bool GetIgnoreNamespaces() const { return m_ignoreNamespaces || m_schemaType == SchemaType_NoNamespaces; }
    void SetIgnoreNamespaces(bool value) { m_ignoreNamespaces = value; }
    // The flag alone, without the schema type.
    bool GetIgnoreNamespacesFlag() const { return m_ignoreNamespaces; }

    SchemaType GetSchemaType() const { return m_schemaType; }
    void SetSchemaType(SchemaType value) { m_schemaType = value; }

    bool GetNoOptionalAttributeDefaultOutput() const { return m_noOptionalAttributeDefaultOutput; }
    void SetNoOptionalAttributeDefaultOutput(bool value) { m_noOptionalAttributeDefaultOutput = value; }
    bool GetWriteDefaultElementValues() const { return m_writeDefaultElementValues; }
    void SetWriteDefaultElementValues(bool value) { m_writeDefaultElementValues = value; }
    bool GetStripCDATA() const { return m_stripCDATA; }
    void SetStripCDATA(bool value) { m_stripCDATA = value; }
    // Off unless set: each pattern facet is compiled for every value it
    // checks, and nothing compiled is kept. Set, the element and attribute
    // rows keep their pattern compiled after its first use (for the life of
    // the loaded classes), which takes most of the cost out of writing values
    // with patterns. Checks and messages stay the same either way.
    bool GetReuseCompiledPatterns() const { return m_reuseCompiledPatterns; }
    void SetReuseCompiledPatterns(bool value) { m_reuseCompiledPatterns = value; }

    std::string GetIndentChars() const { return m_indentChars; }
    // Only spaces and tabs; null empties it. Raises CMxInvalidParamException.
    void SetIndentChars(char const *text);

private:
    // Built by the const getter on first use; owned.
    // Built on first use by the const getters, hence mutable.
    mutable std::shared_ptr<CFastInfosetContext> m_fiContext;
    mutable std::shared_ptr<CJsonContext> m_jsonContext;
    std::string m_defaultNamespaceUri;
    bool m_writeTypeAttribute;
    CNamespaceAliasMap m_namespaceAliases;
    // Built by the const getter on first use.
    mutable CSmartPtr<CAttributeCol> m_additionalRootAttributes;
    std::vector<std::string> m_processingInstructions;
    std::string m_inLineSchema;
    bool m_ignoreInvalidCollectionCounts;
    bool m_ignoreMissingChoice;
    bool m_ignoreMissingMandatoryElements;
    bool m_ignoreUnknownElements;
    bool m_ignoreUnknownAttributes;
    bool m_ignoreNamespaces;
    SchemaType m_schemaType;
    bool m_noOptionalAttributeDefaultOutput;
    bool m_writeDefaultElementValues;
    bool m_stripCDATA;
    std::string m_indentChars;
    bool m_reuseCompiledPatterns = false;

    static CSerializationContext m_defaultContext;
};

} // namespace MxXmlLib
