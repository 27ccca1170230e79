#include "metadata/ElementInfo.h"

#include "binding/XmlGeneratedClass.h"
#include "document/XmlDocument.h"
#include "document/XmlWriter.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "metadata/ElementRowSteps.h"
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

bool EqualsIgnoringCase(std::string const &a, char const *b)
{
    std::size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
    {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = static_cast<char>(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return i == a.size() && b[i] == '\0';
}
} // namespace

// ---------------------------------------------------------------------------
// CParentElementInfo

CParentElementInfo::CParentElementInfo(XmlElementGroupType groupType, XmlElementType elementType, char const *name,
                                       char const *elementNamespace, bool failIfAttributeUnknown,
                                       bool hasBaseClasses, int primitiveValuePropertyIndex,
                                       ItemType primitiveDataType, char const *primitiveFormatOverride,
                                       bool outputPrimitiveClassAsTextProperty)
    : m_groupType(groupType), m_elementType(elementType), m_elementName(Text(name)),
      m_elementNamespace(Text(elementNamespace)), m_failIfAttributeUnknown(failIfAttributeUnknown),
      m_hasBaseClasses(hasBaseClasses), m_primitiveValuePropertyIndex(primitiveValuePropertyIndex),
      m_primitiveDataType(primitiveDataType), m_primitiveFormatOverride(Text(primitiveFormatOverride)),
      m_outputPrimitiveClassAsTextProperty(outputPrimitiveClassAsTextProperty)
{
}

// ---------------------------------------------------------------------------
// CElementInfo: construction

CElementInfo::CElementInfo(char const *name, char const *elementNamespace, int propertyIndex)
    : m_elementName(Text(name)), m_elementNamespace(Text(elementNamespace)), m_propertyIndex(propertyIndex),
      m_itemType(ItemType_None), m_whitespaceRule(CWhitespaceUtils::WhitespaceRule::None), m_nillable(false),
      m_enumToString(nullptr), m_stringToEnum(nullptr), m_isPrimitive(false)
{
}

CElementInfo::CElementInfo(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
    m_nillable = nillable;
    m_enumToString = enumToString;
    m_stringToEnum = stringToEnum;
    m_defaultValue = Text(defaultValue);
}

CElementInfo::CElementInfo(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                           CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
    m_nillable = nillable;
    m_itemType = itemType;
    m_format = Text(format);
    m_whitespaceRule = whitespaceRule;
    m_restrictions = restrictions;
    m_defaultValue = Text(defaultValue);
    m_isPrimitive = true;
}

bool CElementInfo::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    throw CMxException("Not implemented, should never be called");
}

void CElementInfo::PseudoChildAttributeToXml(CSerializationContext const &, CXmlGeneratedClass const *,
                                             CXmlWriter *) const
{
}

void CElementInfo::CheckRestriction(MxVariant const &value) const
{
    if (!m_isPrimitive)
        throw CMxException("Cannot CheckRestriction for type: " + value.GetType());
    CheckPrimitiveFacets(m_elementName.c_str(), value, m_itemType, m_restrictions);
}

// ---------------------------------------------------------------------------
// Property access

void CElementInfo::InvokePropertyGet(CXmlGeneratedClass *object, MxVariant &value) const
{
    RowSteps::GetProperty(object, m_propertyIndex, m_elementName, value);
}

void CElementInfo::InvokePropertySet(CXmlGeneratedClass *object, MxVariant &value, CXmlElement const &element) const
{
    try
    {
        object->AccessProperty(m_propertyIndex, false, value);
    }
    catch (CMxException const &e)
    {
        throw CMxValidationException("Failed to set the property value.", element.GetXPath(), e);
    }
}

void CElementInfo::ReadProperty(CXmlGeneratedClass const *object, MxVariant &value) const
{
    // Reading a property does not change the object; the property function
    // serves both directions, hence one non-const entry.
    InvokePropertyGet(const_cast<CXmlGeneratedClass *>(object), value);
}

MxVariant CElementInfo::ReadProperty(CXmlGeneratedClass const *object) const
{
    MxVariant value;
    ReadProperty(object, value);
    return value;
}

// ---------------------------------------------------------------------------
// Matching

bool CElementInfo::IsThisElement(CSerializationContext const &context, CXmlElement const *element) const
{
    if (element == nullptr || element->GetLocalName() != m_elementName)
        return false;
    return context.GetIgnoreNamespaces() || element->GetNamespaceURI() == m_elementNamespace;
}

bool CElementInfo::MandatoryWritten(bool written) const
{
    return RowSteps::RequireWritten(written, m_elementName);
}

bool CElementInfo::MandatoryFound(bool found, bool isRealElement) const
{
    return RowSteps::ValidateMandatory(found, isRealElement, m_elementName);
}

std::string CElementInfo::GetAnyDefaultNamespace(char const *restriction, char const *classNamespace,
                                                 char const *targetNamespace)
{
    std::string const r = Text(restriction);
    if (r == "##any")
        return Text(classNamespace);
    if (r == "##other")
        return Text(classNamespace).empty() ? "DefaultNamespace" : "";
    if (r == "##local")
        return "";
    if (r == "##targetNamespace")
        return Text(targetNamespace);
    std::size_t const space = r.find(' ');
    if (space != std::string::npos && r.size() >= 3 && r.compare(0, 2, "##") == 0)
        return GetAnyDefaultNamespace(r.substr(0, space).c_str(), classNamespace, targetNamespace);
    return "";
}

// ---------------------------------------------------------------------------
// Writing

bool CElementInfo::WriteSimple(CSerializationContext const &context, CXmlWriter *writer, MxVariant const &value,
                               std::string const &text, ItemType type, bool checkFacets) const
{
    // A default value is written unchecked and marked, so that the writer may
    // leave it to the reader's default.
    bool const isDefault = !m_defaultValue.empty() && text == m_defaultValue;
    if (!isDefault && checkFacets)
    {
        if (!m_isPrimitive)
            throw CMxException("Cannot CheckRestriction for type: " + value.GetType());
        CheckPrimitiveFacets(m_elementName.c_str(), value, m_itemType, m_restrictions,
                             context.GetReuseCompiledPatterns() ? &m_compiledPattern : nullptr);
    }
    writer->StartElement(m_elementName, m_elementNamespace);
    writer->WriteText(text, type, isDefault);
    writer->EndElement();
    return true;
}

// ---------------------------------------------------------------------------
// Reading

std::string const *CElementInfo::ReadSimpleText(CSerializationContext const &context,
                                                CXmlElement const &element) const
{
    bool nilSeen = false;
    for (CXmlAttribute const *attribute : element.GetAttributes())
    {
        if (attribute->IsNilAttribute())
        {
            std::string const &v = attribute->GetValue();
            if (EqualsIgnoringCase(v, "false") || EqualsIgnoringCase(v, "0"))
            {
                nilSeen = false;
                continue;
            }
            nilSeen = true;
            if (!m_nillable)
                throw CMxValidationException("Invalid use of 'nil' attribute in non-nillable element.",
                                             element.GetXPath());
            if (!EqualsIgnoringCase(v, "true") && !EqualsIgnoringCase(v, "1"))
                throw CMxValidationException(
                    FormatString("Unexpected Value [%s] for 'nil' Attribute found.", v.c_str()),
                    attribute->GetXPath());
        }
        else if (!context.GetIgnoreUnknownAttributes())
            throw CMxValidationException("Unexpected Attribute found.", attribute->GetXPath());
    }
    if (nilSeen)
        return nullptr;
    std::string const &text = element.GetText();
    return text.empty() && !m_defaultValue.empty() ? &m_defaultValue : &text;
}

CXmlElement *CElementInfo::FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                       CSerializationContext const &context, bool optionalChoice) const
{
    return CXmlObjectBase::FromXml_Int(object, element, cursor, context, optionalChoice);
}

} // namespace MxXmlLibData
