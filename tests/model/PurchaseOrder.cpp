#include "model/PurchaseOrder.h"

#include "metadata/ElementInfoChoice.h"
#include "metadata/ElementInfoSeq.h"

#include <cstring>

namespace Example
{

using namespace MxXmlLib;
using namespace MxXmlLibData;

namespace
{
using Rule = CWhitespaceUtils::WhitespaceRule;

CPrimitiveRestrictions NoFacets()
{
    return CPrimitiveRestrictions(nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
}

// The tables of each class: built once under the class lock, published
// whole, shared by all its objects, released by CleanMetaData.
using Tables = CClassTables::Rows;
CClassTables g_address, g_delivery, g_item, g_items, g_order;

// Property functions: an unset optional value leaves the cell at type 0.
void StringProperty(bool read, MxVariant &value, std::string &field)
{
    if (read)
        value.SetString(field);
    else
        field = value.GetString();
}

void OptionalStringProperty(bool read, MxVariant &value, std::string &field, bool &isSet)
{
    if (read)
    {
        if (isSet)
            value.SetString(field);
    }
    else
    {
        field = value.GetString();
        isSet = true;
    }
}

template <typename T> void ObjectProperty(bool read, MxVariant &value, CSmartPtr<T> &field)
{
    if (read)
        value.SetXmlObject(field.Get());
    else
        field = dynamic_cast<T *>(value.GetXmlObject().Get());
}
} // namespace

// ---------------------------------------------------------------------------
// Enumeration and factory

char const *OrderStatusToString(int value)
{
    switch (value)
    {
    case 0:
        return "open";
    case 1:
        return "shipped";
    case 2:
        return "closed";
    default:
        return "";
    }
}

int OrderStatusFromString(char const *text)
{
    if (std::strcmp(text, "shipped") == 0)
        return 1;
    if (std::strcmp(text, "closed") == 0)
        return 2;
    if (std::strcmp(text, "open") == 0)
        return 0;
    throw CMxInvalidValueException(FormatString("Invalid value [%s] for the enumeration OrderStatus", text));
}

CSmartPtr<CXmlObjectBase> CreateByClassId(int classId, char const *elementName)
{
    switch (classId)
    {
    case ClassId_USAddress:
        return new CUSAddress(elementName);
    case ClassId_Items:
        return new CItems();
    case ClassId_Item:
        return new CItem();
    case ClassId_Delivery:
        return new CDelivery();
    default:
        return nullptr;
    }
}

// ---------------------------------------------------------------------------
// USAddress

CUSAddress::CUSAddress(char const *elementName)
{
    SetElementName(elementName);
}

void CUSAddress::Init()
{
    country = "US";
    name.clear();
    street.clear();
    city.clear();
    state.clear();
    zip.clear();
}

void CUSAddress::AccessProperty(int index, bool read, MxVariant &value)
{
    std::string *fields[] = {&country, &name, &street, &city, &state, &zip};
    if (index < 0 || index > 5)
        throw CMxException(FormatString("Unknown property %d of USAddress", index));
    StringProperty(read, value, *fields[index]);
}

static void BuildAddress(Tables &t)
{
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "USAddress",
                                    kPoNamespace, true, false, -1, ItemType_None, nullptr, false);
    t.elements = new CElementInfo *[6]{
        new CElementInfoSeqPrimMnd("name", kPoNamespace, 1, false, ItemType_string, nullptr, Rule::None, NoFacets(),
                                   nullptr),
        new CElementInfoSeqPrimMnd("street", kPoNamespace, 2, false, ItemType_string, nullptr, Rule::None,
                                   NoFacets(), nullptr),
        new CElementInfoSeqPrimMnd("city", kPoNamespace, 3, false, ItemType_string, nullptr, Rule::None, NoFacets(),
                                   nullptr),
        new CElementInfoSeqPrimMnd("state", kPoNamespace, 4, false, ItemType_string, nullptr, Rule::None,
                                   NoFacets(), nullptr),
        new CElementInfoSeqPrimMnd("zip", kPoNamespace, 5, false, ItemType_string, nullptr, Rule::Collapse,
                                   CPrimitiveRestrictions("\\p{Nd}{5}(?:-\\p{Nd}{4})?", -1, -1, nullptr, nullptr, nullptr,
                                                          nullptr, -1, -1, -1),
                                   nullptr),
        nullptr};
    t.attributes = new CAttributeInfo *[2]{new CAttributeInfoPrimitive("country", "", 0, true, ItemType_string,
                                                                       nullptr, Rule::Collapse, NoFacets(), "US"),
                                           nullptr};
}

CParentElementInfo *CUSAddress::GetParentElementInfo()
{
    return g_address.Get(BuildAddress).info;
}
CElementInfo **CUSAddress::GetClassElementInfo()
{
    return g_address.Get(BuildAddress).elements;
}
CAttributeInfo **CUSAddress::GetClassAttributeInfo()
{
    return g_address.Get(BuildAddress).attributes;
}
void CUSAddress::CleanMetaData()
{
    g_address.Clean();
}

// ---------------------------------------------------------------------------
// Delivery (pseudo element holding a choice)

void CDelivery::Init()
{
    shipDate = CDateTime();
    hasShipDate = false;
    pickup.clear();
}

void CDelivery::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index == 0)
    {
        if (read)
        {
            if (hasShipDate)
                value.SetDate(shipDate);
        }
        else
        {
            shipDate = value.GetDate();
            hasShipDate = true;
        }
    }
    else if (read)
    {
        if (!pickup.empty())
            value.SetString(pickup);
    }
    else
        pickup = value.GetString();
}

static void BuildDelivery(Tables &t)
{
    // Inline content sees its parent's attributes: they are not its to refuse.
    t.info = new CParentElementInfo(XmlElementGroupType_Choice, XmlElementType_PseudoGroup, "Delivery",
                                    kPoNamespace, false, false, -1, ItemType_None, nullptr, false);
    t.elements = new CElementInfo *[3]{
        new CElementInfoChoicePrimOpt("shipDate", kPoNamespace, 0, false, ItemType_date, nullptr, Rule::Collapse,
                                      NoFacets(), nullptr),
        new CElementInfoChoicePrimOpt("pickup", kPoNamespace, 1, false, ItemType_string, nullptr, Rule::None,
                                      NoFacets(), nullptr),
        nullptr};
    t.attributes = new CAttributeInfo *[1]{nullptr};
}

CParentElementInfo *CDelivery::GetParentElementInfo()
{
    return g_delivery.Get(BuildDelivery).info;
}
CElementInfo **CDelivery::GetClassElementInfo()
{
    return g_delivery.Get(BuildDelivery).elements;
}
CAttributeInfo **CDelivery::GetClassAttributeInfo()
{
    return g_delivery.Get(BuildDelivery).attributes;
}
void CDelivery::CleanMetaData()
{
    g_delivery.Clean();
}

// ---------------------------------------------------------------------------
// Item

CItem::CItem()
{
    SetElementName("item");
}

void CItem::Init()
{
    partNum.clear();
    productName.clear();
    comment.clear();
    hasComment = false;
    quantity = 0;
    usPrice = CDecimal();
    delivery = nullptr;
}

void CItem::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0:
        StringProperty(read, value, partNum);
        break;
    case 1:
        StringProperty(read, value, productName);
        break;
    case 2:
        if (read)
            value.SetI4(quantity);
        else
            quantity = value.GetI4();
        break;
    case 3:
        if (read)
            value.SetDecimal(usPrice);
        else
            usPrice = value.GetDecimal();
        break;
    case 4:
        OptionalStringProperty(read, value, comment, hasComment);
        break;
    case 5:
        ObjectProperty(read, value, delivery);
        break;
    default:
        throw CMxException(FormatString("Unknown property %d of Item", index));
    }
}

static void BuildItem(Tables &t)
{
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "item", kPoNamespace,
                                    true, false, -1, ItemType_None, nullptr, false);
    t.elements = new CElementInfo *[6]{
        new CElementInfoSeqPrimMnd("productName", kPoNamespace, 1, false, ItemType_string, nullptr, Rule::None,
                                   NoFacets(), nullptr),
        new CElementInfoSeqPrimMnd("quantity", kPoNamespace, 2, false, ItemType_i4, nullptr, Rule::Collapse,
                                   CPrimitiveRestrictions(nullptr, -1, -1, "1", nullptr, nullptr, "100", -1, -1, -1),
                                   nullptr),
        new CElementInfoSeqPrimMnd("USPrice", kPoNamespace, 3, false, ItemType_decimal, nullptr, Rule::Collapse,
                                   CPrimitiveRestrictions(nullptr, -1, -1, "0", nullptr, nullptr, nullptr, -1, -1, 2),
                                   nullptr),
        new CElementInfoSeqPrimOpt("comment", kPoNamespace, 4, false, ItemType_string, nullptr, Rule::None,
                                   NoFacets(), nullptr),
        new CElementInfoSeqClsOpt("Delivery", kPoNamespace, 5, XmlElementType_PseudoGroup, &CreateByClassId,
                                  ClassId_Delivery),
        nullptr};
    t.attributes = new CAttributeInfo *[2]{
        new CAttributeInfoPrimitive("partNum", "", 0, false, ItemType_string, nullptr, Rule::Collapse,
                                    CPrimitiveRestrictions("\\p{Nd}{3}-[A-Z]{2}", -1, -1, nullptr, nullptr, nullptr,
                                                           nullptr, -1, -1, -1),
                                    nullptr),
        nullptr};
}

CParentElementInfo *CItem::GetParentElementInfo()
{
    return g_item.Get(BuildItem).info;
}
CElementInfo **CItem::GetClassElementInfo()
{
    return g_item.Get(BuildItem).elements;
}
CAttributeInfo **CItem::GetClassAttributeInfo()
{
    return g_item.Get(BuildItem).attributes;
}
void CItem::CleanMetaData()
{
    g_item.Clean();
}

// ---------------------------------------------------------------------------
// Item collection

void CItemCol::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &context,
                         bool) const
{
    for (CNode *node = GetFirstNode(); node; node = node->next)
        CXmlObjectBase::ToXml_Int(node->item.Get(), writer, false, namespaceUri, context, false);
}

CXmlElement *CItemCol::FromXml_Int(CXmlElement *, CXmlElement *cursor, CSerializationContext const &context, bool)
{
    Clear();
    while (cursor && DoesElementNameMatch(context, cursor, "item", kPoNamespace))
    {
        CSmartPtr<CItem> item(new CItem);
        CXmlObjectBase::FromXml_Int(item.Get(), cursor, cursor->GetFirstElement(), context);
        Add(item);
        cursor = cursor->GetNextSiblingElement();
    }
    return cursor;
}

// ---------------------------------------------------------------------------
// Items

CItems::CItems()
{
    SetElementName("items");
    items = new CItemCol;
}

void CItems::Init()
{
    items->Clear();
}

void CItems::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        throw CMxException(FormatString("Unknown property %d of Items", index));
    if (read)
        value.SetXmlObject(items.Get());
}

static void BuildItems(Tables &t)
{
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "items", kPoNamespace,
                                    true, false, -1, ItemType_None, nullptr, false);
    t.elements = new CElementInfo *[2]{
        new CElementInfoSeqClsCol("item", kPoNamespace, 0, XmlElementType_Element), nullptr};
    t.attributes = new CAttributeInfo *[1]{nullptr};
}

CParentElementInfo *CItems::GetParentElementInfo()
{
    return g_items.Get(BuildItems).info;
}
CElementInfo **CItems::GetClassElementInfo()
{
    return g_items.Get(BuildItems).elements;
}
CAttributeInfo **CItems::GetClassAttributeInfo()
{
    return g_items.Get(BuildItems).attributes;
}
void CItems::CleanMetaData()
{
    g_items.Clean();
}

// ---------------------------------------------------------------------------
// PurchaseOrder

CPurchaseOrder::CPurchaseOrder()
{
    SetElementName("purchaseOrder");
    Init();
}

void CPurchaseOrder::Init()
{
    orderDate = CDateTime();
    comment.clear();
    hasComment = hasStatus = false;
    status = OrderStatus::Open;
    shipTo = new CUSAddress("shipTo");
    billTo = nullptr;
    items = new CItems;
}

void CPurchaseOrder::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0:
        if (read)
            value.SetDate(orderDate);
        else
            orderDate = value.GetDate();
        break;
    case 1:
        if (read)
        {
            if (hasStatus)
                value.SetI4(static_cast<int>(status));
        }
        else
        {
            status = static_cast<OrderStatus>(value.GetI4());
            hasStatus = true;
        }
        break;
    case 2:
        ObjectProperty(read, value, shipTo);
        break;
    case 3:
        ObjectProperty(read, value, billTo);
        break;
    case 4:
        OptionalStringProperty(read, value, comment, hasComment);
        break;
    case 5:
        ObjectProperty(read, value, items);
        break;
    default:
        throw CMxException(FormatString("Unknown property %d of PurchaseOrder", index));
    }
}

static void BuildOrder(Tables &t)
{
    t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "purchaseOrder",
                                    kPoNamespace, true, false, -1, ItemType_None, nullptr, false);
    t.elements = new CElementInfo *[5]{
        new CElementInfoSeqClsMnd("shipTo", kPoNamespace, 2, XmlElementType_Element, &CreateByClassId,
                                  ClassId_USAddress, true),
        new CElementInfoSeqClsOpt("billTo", kPoNamespace, 3, XmlElementType_Element, &CreateByClassId,
                                  ClassId_USAddress),
        new CElementInfoSeqPrimOpt("comment", kPoNamespace, 4, false, ItemType_string, nullptr, Rule::None,
                                   NoFacets(), nullptr),
        new CElementInfoSeqClsMnd("items", kPoNamespace, 5, XmlElementType_Element, &CreateByClassId,
                                  ClassId_Items, true),
        nullptr};
    t.attributes = new CAttributeInfo *[3]{
        new CAttributeInfoPrimitive("orderDate", "", 0, false, ItemType_date, nullptr, Rule::Collapse,
                                    NoFacets(), nullptr),
        new CAttributeInfoEnum("status", "", 1, true, &OrderStatusToString, &OrderStatusFromString, "open"),
        nullptr};
}

CParentElementInfo *CPurchaseOrder::GetParentElementInfo()
{
    return g_order.Get(BuildOrder).info;
}
CElementInfo **CPurchaseOrder::GetClassElementInfo()
{
    return g_order.Get(BuildOrder).elements;
}
CAttributeInfo **CPurchaseOrder::GetClassAttributeInfo()
{
    return g_order.Get(BuildOrder).attributes;
}
void CPurchaseOrder::CleanMetaData()
{
    g_order.Clean();
}

void CleanAllMetaData()
{
    CPurchaseOrder::CleanMetaData();
    CItems::CleanMetaData();
    CItem::CleanMetaData();
    CDelivery::CleanMetaData();
    CUSAddress::CleanMetaData();
}

} // namespace Example
