#include "metadata/ElementInfo.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/XmlCollectionBase.h"
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
    try
    {
        object->AccessProperty(m_propertyIndex, true, value);
    }
    catch (CMxException const &e)
    {
        throw CMxValidationException(
            FormatString("Failed to get the property value for [%s].", m_elementName.c_str()), "", e);
    }
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

// ---------------------------------------------------------------------------
// Matching

bool CElementInfo::IsThisElement(CSerializationContext const &context, CXmlElement const *element) const
{
    if (element == nullptr || element->GetLocalName() != m_elementName)
        return false;
    return context.GetIgnoreNamespaces() || element->GetNamespaceURI() == m_elementNamespace;
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

bool CElementInfo::ElementToXmlCls(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer, bool optionalChoice) const
{
    MxVariant value;
    ReadProperty(object, value);
    CSmartPtr<CXmlObjectBase> child = value.GetXmlObject();
    if (child.IsNull())
        return false;
    CXmlObjectBase::ToXml_Int(child, writer, false, m_elementNamespace.c_str(), context, optionalChoice);
    return true;
}

bool CElementInfo::ElementToXmlCol(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    CSmartPtr<CXmlCollectionBase> collection = value.GetXmlCollection();
    if (collection.IsNull())
        throw CMxException(FormatString("The collection property [%s] is not set.", m_elementName.c_str()));
    if (collection->GetCount() <= 0)
        return false;
    using Context = CXmlWriter::CXmlWriterContext;
    if (Context *current = writer->GetCurrentContext())
        current->ArrayState = Context::ArrayPending;
    CXmlObjectBase::ToXml_Int(collection->GetBase(), writer, false, m_elementNamespace.c_str(), context, false);
    if (Context *current = writer->GetCurrentContext())
        current->ArrayState = Context::ArrayClosing;
    return true;
}

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

bool CElementInfo::ElementToXmlPrim(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                    CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    if (value.IsNil())
    {
        writer->StartElement(m_elementName, m_elementNamespace);
        writer->WriteNilAttribute();
        writer->EndElement();
        return true;
    }
    if (value.GetTypeAsEnum() == ItemType_None)
        return false;
    return WriteSimple(context, writer, value, value.ToString(m_format.c_str()), value.GetTypeAsEnum(), true);
}

bool CElementInfo::ElementToXmlEnum(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                    CXmlWriter *writer, EnumToString enumToString) const
{
    MxVariant value;
    ReadProperty(object, value);
    if (value.IsNil())
    {
        writer->StartElement(m_elementName, m_elementNamespace);
        writer->WriteNilAttribute();
        writer->EndElement();
        return true;
    }
    if (value.GetTypeAsEnum() == ItemType_None)
        return false;
    char const *name = enumToString ? enumToString(value.GetI4()) : nullptr;
    return WriteSimple(context, writer, value, Text(name), ItemType_string, false);
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

void CElementInfo::ElementFromXmlPrim(CSerializationContext const &context, CXmlGeneratedClass *object,
                                      CXmlElement **current)
{
    CXmlElement *e = *current;
    if (e == nullptr)
        return;
    if (std::string const *text = ReadSimpleText(context, *e))
    {
        MxVariant value;
        value.FromString(*text, m_itemType, m_whitespaceRule);
        InvokePropertySet(object, value, *e);
    }
    *current = e->GetNextSiblingElement();
}

void CElementInfo::ElementFromXmlEnum(CSerializationContext const &context, CXmlGeneratedClass *object,
                                      CXmlElement **current)
{
    CXmlElement *e = *current;
    if (e == nullptr)
        return;
    if (std::string const *text = ReadSimpleText(context, *e))
    {
        MxVariant value;
        value.SetI4(m_stringToEnum ? m_stringToEnum(text->c_str()) : 0);
        InvokePropertySet(object, value, *e);
    }
    *current = e->GetNextSiblingElement();
}

void CElementInfo::CollectionAttributesToXml(XmlElementType elementType, CSerializationContext const &context,
                                             CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    if (elementType != XmlElementType_PseudoElement)
        return;
    MxVariant value;
    ReadProperty(object, value);
    RowSteps::WriteItemAttributes(value, m_elementName, context, writer);
}

void CElementInfo::ChildAttributesToXml(XmlElementType elementType, CSerializationContext const &context,
                                        CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    if (elementType != XmlElementType_PseudoElement)
        return;
    MxVariant value;
    ReadProperty(object, value);
    RowSteps::WriteChildAttributes(value, context, writer);
}

CXmlElement *CElementInfo::FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                       CSerializationContext const &context, bool optionalChoice) const
{
    return CXmlObjectBase::FromXml_Int(object, element, cursor, context, optionalChoice);
}

bool CElementInfo::ReadAndStoreChild(CSerializationContext const &context, CXmlGeneratedClass *object,
                                     CXmlElement *parent, CXmlElement **current, CXmlObjectBase *child,
                                     bool ownElement) const
{
    CXmlElement *const at = *current;
    CXmlElement *const next = ownElement ? RowSteps::ReadOwnElement(child, at, context, false)
                                         : FromXml_Int(child, parent, at, context, false);
    bool const took = ownElement || next != at;
    if (took)
    {
        MxVariant cell = RowSteps::ObjectCell(child);
        InvokePropertySet(object, cell, *parent);
    }
    *current = next;
    return took;
}

void CElementInfo::AttributesToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer,
                                       CSerializationContext const &context) const
{
    CXmlObjectBase::AttributesToXml_Int(object, writer, context);
}

} // namespace MxXmlLibData
