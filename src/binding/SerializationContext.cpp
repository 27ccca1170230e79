#include "binding/SerializationContext.h"

#include "collections/AttributeCol.h"
#include "fastinfoset/FastInfosetContext.h"
#include "json/JsonContext.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

CSerializationContext CSerializationContext::m_defaultContext;

CSerializationContext::CSerializationContext()
    : m_writeTypeAttribute(true),
      m_ignoreInvalidCollectionCounts(false), m_ignoreMissingChoice(false),
      m_ignoreMissingMandatoryElements(false), m_ignoreUnknownElements(false), m_ignoreUnknownAttributes(false),
      m_ignoreNamespaces(false), m_schemaType(SchemaType_Default), m_noOptionalAttributeDefaultOutput(false),
      m_writeDefaultElementValues(false), m_stripCDATA(true), m_indentChars("\t")
{
}

CSerializationContext::CSerializationContext(CSerializationContext const &other) : CSerializationContext()
{
    *this = other;
}

CSerializationContext &CSerializationContext::operator=(CSerializationContext const &other)
{
    // The sub-contexts are shared, not cloned: a change through one context
    // shows in the other. Sharing is counted, so either may go first.
    m_fiContext = other.m_fiContext;
    m_jsonContext = other.m_jsonContext;
    if (this == &other)
        return *this;
    m_defaultNamespaceUri = other.m_defaultNamespaceUri;
    m_writeTypeAttribute = other.m_writeTypeAttribute;
    m_namespaceAliases = other.m_namespaceAliases;
    m_additionalRootAttributes = other.m_additionalRootAttributes;
    m_processingInstructions = other.m_processingInstructions;
    m_inLineSchema = other.m_inLineSchema;
    // The two ignore flags that exclude each other are copied as a pair, not
    // through their setters.
    m_ignoreInvalidCollectionCounts = other.m_ignoreInvalidCollectionCounts;
    m_ignoreMissingChoice = other.m_ignoreMissingChoice;
    m_ignoreMissingMandatoryElements = other.m_ignoreMissingMandatoryElements;
    m_ignoreUnknownElements = other.m_ignoreUnknownElements;
    m_ignoreUnknownAttributes = other.m_ignoreUnknownAttributes;
    m_ignoreNamespaces = other.m_ignoreNamespaces;
    m_schemaType = other.m_schemaType;
    m_noOptionalAttributeDefaultOutput = other.m_noOptionalAttributeDefaultOutput;
    m_writeDefaultElementValues = other.m_writeDefaultElementValues;
    m_stripCDATA = other.m_stripCDATA;
    m_indentChars = other.m_indentChars;
    m_reuseCompiledPatterns = other.m_reuseCompiledPatterns;
    return *this;
}

CSerializationContext::~CSerializationContext() = default;

CFastInfosetContext &CSerializationContext::GetFIContext() const
{
    if (m_fiContext == nullptr)
        m_fiContext = std::make_shared<CFastInfosetContext>();
    return *m_fiContext;
}

CJsonContext &CSerializationContext::GetJsonContext() const
{
    if (m_jsonContext == nullptr)
        m_jsonContext = std::make_shared<CJsonContext>();
    return *m_jsonContext;
}

CSmartPtr<CAttributeCol> CSerializationContext::GetAdditionalRootAttributes() const
{
    if (m_additionalRootAttributes.IsNull())
        m_additionalRootAttributes = new CAttributeCol("", "##any", "");
    return m_additionalRootAttributes;
}

CSerializationContext &CSerializationContext::GetDefaultContext()
{
    return m_defaultContext;
}

void CSerializationContext::SetDefaultNamespaceURI(char const *uri)
{
    m_defaultNamespaceUri = uri ? uri : "";
}

void CSerializationContext::SetInLineSchema(char const *text)
{
    m_inLineSchema = text ? text : "";
}

void CSerializationContext::SetIgnoreMissingMandatoryElements(bool value)
{
    if (value && m_ignoreUnknownElements)
        throw CMxInvalidStateException(
            "The parser can only ignore additional elements, or ignore the fact that some required ones are "
            "missing, you can not ignore both\nSet IgnoreUnknownElements to false before setting "
            "IgnoreMissingMandatoryElements to true");
    m_ignoreMissingMandatoryElements = value;
}

void CSerializationContext::SetIgnoreUnknownElements(bool value)
{
    if (value && m_ignoreMissingMandatoryElements)
        throw CMxInvalidStateException(
            "The parser can only ignore additional elements, or ignore the fact that some required ones are "
            "missing, you can not ignore both\nSet IgnoreMissingMandatoryElements to false before setting "
            "IgnoreUnknownElements to true");
    m_ignoreUnknownElements = value;
}

void CSerializationContext::SetIndentChars(char const *text)
{
    if (text == nullptr)
    {
        m_indentChars.clear();
        return;
    }
    for (char const *p = text; *p; ++p)
        if (*p != ' ' && *p != '\t')
            throw CMxInvalidParamException("IndentChars can only contain Whitespace characters, i.e. \\t or spaces");
    m_indentChars = text;
}

} // namespace MxXmlLib
