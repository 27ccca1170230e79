#include "binding/SerializationContext.h"

#include "collections/AttributeCol.h"
#include "fastinfoset/FastInfosetContext.h"
#include "json/JsonContext.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

namespace
{
// Sets one of two ignore flags that exclude each other; `message` when the
// other one is set already.
void SetExclusiveIgnore(bool &flag, bool value, bool other, char const *message)
{
    if (value && other)
        throw CMxInvalidStateException(message);
    flag = value;
}
} // namespace

CSerializationContext CSerializationContext::m_defaultContext;

CSerializationContext::CSerializationContext()
    : m_writeTypeAttribute(true),
      m_ignoreInvalidCollectionCounts(false), m_ignoreMissingChoice(false),
      m_ignoreMissingMandatoryElements(false), m_ignoreUnknownElements(false), m_ignoreUnknownAttributes(false),
      m_ignoreNamespaces(false), m_schemaType(SchemaType_Default), m_noOptionalAttributeDefaultOutput(false),
      m_writeDefaultElementValues(false), m_stripCDATA(true), m_indentChars("\t")
{
}

// The sub-contexts are shared, not cloned: a change through one context
// shows in the other. The two ignore flags that exclude each other are
// copied as a pair, not through their setters.
CSerializationContext::CSerializationContext(CSerializationContext const &) = default;
CSerializationContext &CSerializationContext::operator=(CSerializationContext const &) = default;
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
    SetExclusiveIgnore(m_ignoreMissingMandatoryElements, value, m_ignoreUnknownElements,
                       "The parser can only ignore additional elements, or ignore the fact that some required ones "
                       "are missing, you can not ignore both\nSet IgnoreUnknownElements to false before setting "
                       "IgnoreMissingMandatoryElements to true");
}

void CSerializationContext::SetIgnoreUnknownElements(bool value)
{
    SetExclusiveIgnore(m_ignoreUnknownElements, value, m_ignoreMissingMandatoryElements,
                       "The parser can only ignore additional elements, or ignore the fact that some required ones "
                       "are missing, you can not ignore both\nSet IgnoreMissingMandatoryElements to false before "
                       "setting IgnoreUnknownElements to true");
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
