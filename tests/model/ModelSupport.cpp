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
