#include "model/ModelSupport.h"

#include "model/Model.h"

#include <cstring>

namespace MxTestModel
{

using namespace MxXmlLib;

namespace
{
char const *const kPriorities[] = {"low", "normal", "high"};
char const *const kStatuses[] = {"open", "closed"};

template <std::size_t N> char const *NameOf(char const *const (&names)[N], int value)
{
    return value >= 0 && static_cast<std::size_t>(value) < N ? names[value] : "";
}

template <std::size_t N> int ValueOf(char const *const (&names)[N], char const *text)
{
    for (std::size_t i = 0; i < N; ++i)
        if (std::strcmp(names[i], text) == 0)
            return static_cast<int>(i);
    return -1;
}
} // namespace

char const *PriorityToString(int value) { return NameOf(kPriorities, value); }
int StringToPriority(char const *text) { return ValueOf(kPriorities, text); }
char const *StatusToString(int value) { return NameOf(kStatuses, value); }
int StringToStatus(char const *text) { return ValueOf(kStatuses, text); }

CPrimitiveRestrictions NoFacets()
{
    return CPrimitiveRestrictions(nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
}

// ---------------------------------------------------------------------------
// Factory

CSmartPtr<CXmlObjectBase> CModelFactory::MakeByNumber(int classId, char const *elementName)
{
    CSmartPtr<CXmlObjectBase> made;
    switch (classId)
    {
    case ClassId_Party:
        made = new CParty;
        break;
    case ClassId_Dimensions:
        made = new CDimensions;
        break;
    case ClassId_Contact:
        made = new CContact;
        break;
    case ClassId_Price:
        made = new CPrice;
        break;
    case ClassId_Memo:
        made = new CMemo;
        break;
    case ClassId_Labels:
        made = new CLabels;
        break;
    default:
        return nullptr;
    }
    made->SetElementName(elementName);
    return made;
}

CSmartPtr<CXmlObjectBase> CModelFactory::MakePayment(CXmlElement *element)
{
    if (element == nullptr || GetElementTypeNamespaceUri(element) != kNs)
        return nullptr;
    std::string const type = GetElementType(element);
    CSmartPtr<CXmlObjectBase> made;
    if (type == "card")
        made = new CCard;
    else if (type == "cash")
        made = new CCash;
    else
        return nullptr;
    made->SetElementName(element->GetLocalName().c_str());
    return made;
}

CSmartPtr<CXmlObjectBase> CModelFactory::MakeShape(CXmlElement *element)
{
    if (element == nullptr || element->GetLocalName() != "radius")
        return nullptr;
    return new CCircle;
}

CSmartPtr<CXmlObjectBase> CModelFactory::MakeTile(CXmlElement *element)
{
    if (element == nullptr || element->GetLocalName() != "side")
        return nullptr;
    return new CTile;
}

// ---------------------------------------------------------------------------
// Collections

CObjectCol::CObjectCol(char const *elementName, int minOccurs, int maxOccurs,
                       CClassfactoryBase::FactoryByNumber byNumber, int classId,
                       CClassfactoryBase::FactoryByElement byElement, bool inlineItems)
    : CXmlCollection(elementName, kNs, minOccurs, maxOccurs), m_byNumber(byNumber), m_classId(classId),
      m_byElement(byElement), m_inlineItems(inlineItems)
{
}

void CObjectCol::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &context,
                           bool) const
{
    ValidateCount(context);
    for (CNode *node = GetFirstNode(); node; node = node->next)
        CXmlObjectBase::ToXml_Int(node->item, writer, false, namespaceUri, context, false);
}

CXmlElement *CObjectCol::FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                                     bool)
{
    std::string const name = GetElementName();
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
        if (!DoesElementNameMatch(context, current, name.c_str(), kNs))
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


CEnumCol::CEnumCol(char const *elementName, int minOccurs, int maxOccurs, char const *(*toString)(int),
                   int (*fromString)(char const *))
    : CXmlTypeCollection(ItemType_string, elementName, kNs, minOccurs, maxOccurs, nullptr, -1, -1, nullptr, nullptr,
                         nullptr, nullptr, -1, -1, -1, CWhitespaceUtils::WhitespaceRule::Collapse, nullptr),
      m_toString(toString), m_fromString(fromString)
{
}

void CEnumCol::AddFromString(std::string text)
{
    m_items.push_back(m_fromString(text.c_str()));
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

void AccessCell(bool read, MxVariant &value, MxVariant &property)
{
    if (read)
        value = property;
    else
        property = value;
}

void UnloadModel()
{
    CParty::CleanMetaData();
    CCard::CleanMetaData();
    CCash::CleanMetaData();
    CDimensions::CleanMetaData();
    CContact::CleanMetaData();
    CPrice::CleanMetaData();
    CMemo::CleanMetaData();
    CCircle::CleanMetaData();
    CTile::CleanMetaData();
    COrder::CleanMetaData();
    CPacket::CleanMetaData();
    CPick::CleanMetaData();
    CPicks::CleanMetaData();
    CSettings::CleanMetaData();
    CLayout::CleanMetaData();
    CBag::CleanMetaData();
    CLabels::CleanMetaData();
    CLabelled::CleanMetaData();
}

} // namespace MxTestModel
