#pragma once

// The purchase-order schema of the demonstration (examples/data), bound by
// hand the way the code generator binds it: the reference that the generated
// classes are held to in tests and benchmarks. Each
// complex type is a CXmlGeneratedClass with a static description (rows built
// once under m_csInit), a numbered property function, factories, and an
// enumeration function pair. The schema:
//
//   <purchaseOrder orderDate(date) status?> PurchaseOrderType, root, urn:example:po
//     shipTo   USAddress                   mandatory
//     billTo   USAddress                   optional
//     comment  string                      optional
//     items    Items                       mandatory
//   USAddress @country(fixed "US"): name street city state zip
//   Items: item*  (Item)
//   Item @partNum (pattern \d{3}-[A-Z]{2}):
//     productName, quantity (1..99), USPrice (decimal, 2 places), comment?,
//     a choice of shipDate (date) | pickup (at most one)

#include "MxXmlLib.h"

#include <string>

namespace Example
{

using MxXmlLib::CSmartPtr;

constexpr char const *kPoNamespace = "urn:example:po";

enum class OrderStatus
{
    Open = 0,
    Shipped = 1,
    Closed = 2,
};
char const *OrderStatusToString(int value);
int OrderStatusFromString(char const *text);

// Class numbers of the factory by number.
enum ClassId
{
    ClassId_USAddress = 1,
    ClassId_Items = 2,
    ClassId_Item = 3,
    ClassId_Delivery = 4,
};
CSmartPtr<MxXmlLib::CXmlObjectBase> CreateByClassId(int classId, char const *elementName);

class CUSAddress : public MxXmlLib::CXmlGeneratedClass
{
public:
    explicit CUSAddress(char const *elementName = "shipTo");
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kPoNamespace; }

    std::string country, name, street, city, state, zip;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    void Init() override;
    static void CleanMetaData();

protected:
    std::string GetTargetNamespace() const override { return kPoNamespace; }
};

// The choice of delivery inside an item: a pseudo element, so its content
// stands inline among the item's children.
class CDelivery : public MxXmlLib::CXmlGeneratedClass
{
public:
    CDelivery() { SetElementName("Delivery"); }
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kPoNamespace; }

    // At most one of the two is set.
    MxXmlLib::CDateTime shipDate;
    bool hasShipDate = false;
    std::string pickup;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    void Init() override;
    static void CleanMetaData();

protected:
    std::string GetTargetNamespace() const override { return kPoNamespace; }
};

class CItem : public MxXmlLib::CXmlGeneratedClass
{
public:
    CItem();
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kPoNamespace; }

    std::string partNum, productName, comment;
    int quantity = 0;
    MxXmlLib::CDecimal usPrice;
    bool hasComment = false;
    CSmartPtr<CDelivery> delivery;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    void Init() override;
    static void CleanMetaData();

protected:
    std::string GetTargetNamespace() const override { return kPoNamespace; }
};

// The repeated item elements: a generated collection reads the run of
// matching siblings and writes each item.
class CItemCol : public MxXmlLib::CXmlCollection
{
public:
    CItemCol() : CXmlCollection("item", kPoNamespace, 0, -1) {}
    CXmlObjectBase *GetBase() override { return this; }

    void Add(CItem *item) { AppendItem(item); }
    CItem *GetAt(int index) const { return static_cast<CItem *>(GetNodeAtIndex(index)->item.Get()); }
    MxXmlLib::CMxIterator<CItem> begin() const { return MxXmlLib::CMxIterator<CItem>(GetFirstNode()); }
    MxXmlLib::CMxIterator<CItem> end() const { return MxXmlLib::CMxIterator<CItem>(); }

protected:
    void ToXml_Int(MxXmlLib::CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                   MxXmlLib::CSerializationContext const &context, bool optionalChoice) const override;
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *element, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &context, bool optionalChoice) override;
};

class CItems : public MxXmlLib::CXmlGeneratedClass
{
public:
    CItems();
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kPoNamespace; }

    CSmartPtr<CItemCol> items;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    void Init() override;
    static void CleanMetaData();

protected:
    std::string GetTargetNamespace() const override { return kPoNamespace; }
};

class CPurchaseOrder : public MxXmlLib::CXmlGeneratedClass
{
public:
    CPurchaseOrder();
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kPoNamespace; }

    MxXmlLib::CDateTime orderDate;
    std::string comment;
    bool hasStatus = false, hasComment = false;
    OrderStatus status = OrderStatus::Open;
    CSmartPtr<CUSAddress> shipTo, billTo;
    CSmartPtr<CItems> items;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    void Init() override;
    static void CleanMetaData();

protected:
    std::string GetTargetNamespace() const override { return kPoNamespace; }
};

// Releases the tables of every class; generated code calls it at unload.
void CleanAllMetaData();

} // namespace Example
