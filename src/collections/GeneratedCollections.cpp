#include "collections/GeneratedCollections.h"

#include "binding/XmlObjectBase.h"
#include "document/XmlDocument.h"
#include "document/XmlWriter.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

CObjectCol::CObjectCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs,
                       CClassfactoryBase::FactoryByNumber byNumber, int classId,
                       CClassfactoryBase::FactoryByElement byElement, bool inlineItems)
    : CXmlCollection(elementName, namespaceUri, minOccurs, maxOccurs), m_byNumber(byNumber), m_classId(classId),
      m_byElement(byElement), m_inlineItems(inlineItems)
{
}

void CObjectCol::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &context,
                           bool) const
{
    for (CNode *node = GetFirstNode(); node; node = node->next)
        CXmlObjectBase::ToXml_Int(node->item, writer, false, namespaceUri, context, false);
}

CXmlElement *CObjectCol::FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                                     bool)
{
    std::string const name = GetElementName();
    std::string const ns = GetNamespace();
    while (current != nullptr)
    {
        if (m_inlineItems)
        {
            CSmartPtr<CXmlObjectBase> item = m_byNumber(m_classId, name.c_str());
            CXmlElement *const next = CXmlObjectBase::FromXml_Int(item, parent, current, context, false);
            if (next == current)
                break;
            AppendItem(item);
            current = next;
            continue;
        }
        if (!DoesElementNameMatch(context, current, name.c_str(), ns.c_str()))
            break;
        CSmartPtr<CXmlObjectBase> item = m_byElement ? m_byElement(current) : m_byNumber(m_classId, name.c_str());
        if (item.IsNull())
            throw CMxValidationException(
                FormatString("Failed to find a suitable substitution element for [%s].", name.c_str()),
                current->GetXPath());
        CXmlObjectBase::FromXml_Int(item, current, current->GetFirstElement(), context, false);
        AppendItem(item);
        current = current->GetNextSiblingElement();
    }
    return current;
}

CEnumCol::CEnumCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs,
                   EnumToString toString, StringToEnum fromString, CWhitespaceUtils::WhitespaceRule rule)
    : CXmlTypeCollection(ItemType_string, elementName, namespaceUri, minOccurs, maxOccurs, nullptr, -1, -1, nullptr,
                         nullptr, nullptr, nullptr, -1, -1, -1, rule, nullptr),
      m_toString(toString), m_fromString(fromString)
{
}

void CEnumCol::AddFromString(std::string text)
{
    m_items.push_back(m_fromString(CWhitespaceUtils::ApplyRule(GetWhitespaceRule(), text).c_str()));
}

void CEnumCol::ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &context, bool) const
{
    ValidateCount(context);
    for (int item : m_items)
    {
        writer->StartElement(GetElementName(), GetNamespace());
        writer->WriteText(m_toString(item), ItemType_string, false);
        writer->EndElement();
    }
}

} // namespace MxXmlLib
