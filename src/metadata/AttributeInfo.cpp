#include "metadata/AttributeInfo.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/AttributeCol.h"
#include "metadata/ElementRowSteps.h"
#include "metadata/NamespaceRules.h"
#include "document/XmlDocument.h"
#include "document/XmlWriter.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/FacetCheck.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;

namespace
{
std::string Text(char const *s)
{
    return s ? std::string(s) : std::string();
}
} // namespace

// ---------------------------------------------------------------------------
// CAttributeInfo

CAttributeInfo::CAttributeInfo(char const *name, char const *attributeNamespace, int propertyIndex, bool optional,
                               char const *defaultValue)
    : m_attributeName(Text(name)), m_attributeNamespace(Text(attributeNamespace)), m_propertyIndex(propertyIndex),
      m_optional(optional), m_defaultValue(Text(defaultValue))
{
}

void CAttributeInfo::InvokePropertyGet(CXmlGeneratedClass *object, MxVariant &value) const
{
    RowSteps::GetProperty(object, m_propertyIndex, m_attributeName, value);
}

void CAttributeInfo::ReadProperty(CXmlGeneratedClass const *object, MxVariant &value) const
{
    InvokePropertyGet(const_cast<CXmlGeneratedClass *>(object), value);
}

void CAttributeInfo::InvokePropertySet(CXmlGeneratedClass *object, MxVariant &value,
                                       CXmlAttribute const &attribute) const
{
    try
    {
        object->AccessProperty(m_propertyIndex, false, value);
    }
    catch (CMxException const &e)
    {
        throw CMxValidationException(
            FormatString("Failed to set the property value [%s].", attribute.GetValue().c_str()),
            attribute.GetXPath(), e);
    }
}

bool CAttributeInfo::IsThisAttribute(CSerializationContext const &context, CXmlAttribute *attribute) const
{
    if (attribute == nullptr || attribute->GetLocalName() != m_attributeName)
        return false;
    return context.GetIgnoreNamespaces() || attribute->GetNamespaceURI() == m_attributeNamespace;
}

bool CAttributeInfo::IsSuppressedDefault(CSerializationContext const &context, std::string const &text) const
{
    return m_optional && !m_defaultValue.empty() && context.GetNoOptionalAttributeDefaultOutput() &&
           text == m_defaultValue;
}

void CAttributeInfo::TestNamespace(std::string const &namespaceUri, std::string const &restriction,
                                   std::string const &targetNamespace)
{
    CNamespaceRules::TestNamespace(namespaceUri, restriction, targetNamespace);
}

bool CAttributeInfo::IsNamespaceValid(std::string const &namespaceUri, std::string const &restriction,
                                      std::string const &targetNamespace)
{
    return CNamespaceRules::IsNamespaceValid(namespaceUri, restriction, targetNamespace);
}

std::string CAttributeInfo::GetTargetNamespace(CXmlObjectBase const *object)
{
    return CXmlObjectBase::GetTargetNamespace(object);
}

void CAttributeInfo::ToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer, bool isRoot,
                               char const *namespaceUri, CSerializationContext const &context)
{
    CXmlObjectBase::ToXml_Int(object, writer, isRoot, namespaceUri, context, false);
}

// ---------------------------------------------------------------------------
// CAttributeInfoEnum

CAttributeInfoEnum::CAttributeInfoEnum(char const *name, char const *attributeNamespace, int propertyIndex,
                                       bool optional, char const *(*enumToString)(int),
                                       int (*stringToEnum)(char const *), char const *defaultValue)
    : CAttributeInfo(name, attributeNamespace, propertyIndex, optional, defaultValue), m_stringToEnum(stringToEnum),
      m_enumToString(enumToString)
{
}

void CAttributeInfoEnum::AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                        CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    if (m_optional && value.GetTypeAsEnum() == ItemType_None && !value.IsNil())
        return;
    std::string const text = Text(m_enumToString ? m_enumToString(value.GetI4()) : nullptr);
    if (IsSuppressedDefault(context, text))
        return;
    writer->WriteAttribute(m_attributeName, m_attributeNamespace, text, ItemType_string);
}

bool CAttributeInfoEnum::AttributeFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                          CXmlAttribute *attribute)
{
    if (!IsThisAttribute(context, attribute))
        return false;
    MxVariant value;
    value.SetI4(m_stringToEnum ? m_stringToEnum(attribute->GetValue().c_str()) : 0);
    InvokePropertySet(object, value, *attribute);
    return true;
}

void CAttributeInfoEnum::Validate(CSerializationContext const &, bool found) const
{
    if (!m_optional && !found)
        throw CMxValidationException(
            FormatString("Failed to find the required Attribute [%s].", m_attributeName.c_str()), "");
}

// ---------------------------------------------------------------------------
// CAttributeInfoPrimitive

CAttributeInfoPrimitive::CAttributeInfoPrimitive(char const *name, char const *attributeNamespace,
                                                 int propertyIndex, bool optional, ItemType itemType,
                                                 char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                                 CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CAttributeInfoEnum(name, attributeNamespace, propertyIndex, optional, nullptr, nullptr, defaultValue),
      m_restrictions(restrictions), m_itemType(itemType), m_format(Text(format)), m_whitespaceRule(whitespaceRule)
{
}

void CAttributeInfoPrimitive::CheckRestriction(MxVariant value) const
{
    CheckPrimitiveFacets(m_attributeName.c_str(), value, m_itemType, m_restrictions);
}

void CAttributeInfoPrimitive::AttributeToXml(CSerializationContext const &context,
                                             CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    if (m_optional && value.GetTypeAsEnum() == ItemType_None && !value.IsNil())
        return;
    // A string is its own text: written from the cell, not from a copy.
    std::string converted;
    if (value.GetTypeAsEnum() != ItemType_string)
        converted = value.ToString(m_format.c_str());
    std::string const &text = value.GetTypeAsEnum() == ItemType_string ? value.GetStringRef() : converted;
    if (IsSuppressedDefault(context, text))
        return;
    CheckPrimitiveFacets(m_attributeName.c_str(), value, m_itemType, m_restrictions,
                         context.GetReuseCompiledPatterns() ? &m_compiledPattern : nullptr);
    writer->WriteAttribute(m_attributeName, m_attributeNamespace, text, value.GetTypeAsEnum());
}

bool CAttributeInfoPrimitive::AttributeFromXml(CSerializationContext const &, CXmlGeneratedClass *object,
                                               CXmlAttribute *attribute)
{
    // Exact names only: this row does not follow the context's choice to
    // ignore namespaces.
    if (attribute == nullptr || attribute->GetLocalName() != m_attributeName ||
        attribute->GetNamespaceURI() != m_attributeNamespace)
        return false;
    MxVariant value;
    value.FromString(attribute->GetValue(), m_itemType, m_whitespaceRule);
    InvokePropertySet(object, value, *attribute);
    return true;
}

// ---------------------------------------------------------------------------
// CAttributeInfoAny

CAttributeInfoAny::CAttributeInfoAny(char const *name, char const *attributeNamespace, int propertyIndex,
                                     bool optional, char const *namespaceRestriction, char const *targetNamespace,
                                     char const *defaultValue)
    : CAttributeInfo(name, attributeNamespace, propertyIndex, optional, defaultValue),
      m_namespaceRestriction(Text(namespaceRestriction)), m_targetNamespace(Text(targetNamespace))
{
}

namespace
{
CSmartPtr<CAttributeCol> AttributeCollectionOf(MxVariant const &value)
{
    CSmartPtr<CXmlObjectBase> object = value.GetXmlObject();
    auto *collection = dynamic_cast<CAttributeCol *>(object.Get());
    if (collection == nullptr)
        throw CMxException("Serialization Data Error : The collection should be a CAttributeCol, it was not!");
    return collection;
}
} // namespace

void CAttributeInfoAny::AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                       CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    CSmartPtr<CXmlObjectBase> collection = value.GetXmlObject();
    if (collection.IsNull())
        return;
    std::string const targetNamespace = GetTargetNamespace(object);
    ToXml_Int(collection, writer, false, targetNamespace.c_str(), context);
}

bool CAttributeInfoAny::AttributeFromXml(CSerializationContext const &, CXmlGeneratedClass *object,
                                         CXmlAttribute *attribute)
{
    if (!IsNamespaceValid(attribute->GetNamespaceURI(), m_namespaceRestriction, m_targetNamespace))
        return false;
    MxVariant value;
    InvokePropertyGet(object, value);
    AttributeCollectionOf(value)->Add(attribute->GetLocalName().c_str(), attribute->GetValue().c_str(),
                                      attribute->GetNamespaceURI().c_str());
    return true;
}

void CAttributeInfoAny::Validate(CSerializationContext const &, bool) const {}

} // namespace MxXmlLibData
