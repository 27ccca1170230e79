#pragma once

// A generated-shape model over the namespace urn:m. Together its classes use
// every concrete element row: sequence (order, packet), choice (pick, picks)
// and all (settings, layout, bag); real and pseudo elements; nillable
// elements and a nillable class; substitution through xsi:type; xs:any and
// xs:anyAttribute; enumerations; simple content with an attribute; defaults.
//
// Primitive properties are held as cells; a property that is not set is a
// cell of type 0. Child objects and collections are counted pointers.

#include "model/ModelSupport.h"

namespace MxTestModel
{

using MxXmlLib::CSmartPtr;
using MxXmlLib::MxVariant;

// <party ref="i4?"><name>string, at most 10</name><phone>string</phone>?</party>
class CParty : public CGenerated<CParty>
{
public:
    CParty() { SetElementName("party"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant name, phone, ref;
};

// Substitutes of the abstract `payment`, chosen by xsi:type.
// card: <number>string</number>
class CCard : public CGenerated<CCard>
{
public:
    CCard() { SetElementName("card"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant number;
};

// cash: <currency>string, default EUR</currency>?
class CCash : public CGenerated<CCash>
{
public:
    CCash() { SetElementName("cash"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant currency;
};

// Pseudo element: <width>i4</width><height>i4</height> inline in the
// parent, and the attribute `units` on the parent's start tag.
class CDimensions : public CGenerated<CDimensions>
{
public:
    CDimensions() { SetElementName("dimensions"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant width, height, units;
};

// Pseudo group, a choice: <email/> or <fax/>, both optional.
class CContact : public CGenerated<CContact>
{
public:
    CContact() { SetElementName("contact"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant email, fax;
};

// Simple content with an attribute: <price currency="string, default EUR">i4</price>
class CPrice : public CGenerated<CPrice>
{
public:
    CPrice() { SetElementName("price"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant currency, amount;
};

// A nillable class: <memo><text>string</text>?</memo> or <memo xsi:nil="true"/>.
class CMemo : public CGenerated<CMemo>, public MxXmlLib::INillable
{
public:
    CMemo() { SetElementName("memo"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    bool IsNil() override { return nil; }
    void SetNil(bool value) override { nil = value; }
    MxVariant text;
    bool nil = false;
};

// Inline shapes made by the factory from the element at the cursor.
class CCircle : public CGenerated<CCircle>
{
public:
    CCircle() { SetElementName("circle"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant radius;
};

class CTile : public CGenerated<CTile>
{
public:
    CTile() { SetElementName("tile"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant side;
};

// The sequence of every kind of real element, with attributes id (i4,
// required), status (enumeration, default open) and xs:anyAttribute ##other.
class COrder : public CGenerated<COrder>
{
public:
    COrder() { SetElementName("order"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant number, note, priority, channel, id, status;
    CSmartPtr<CParty> customer, shipTo;
    CSmartPtr<CPrice> total;
    CSmartPtr<MxXmlLib::CXmlObjectBase> payment, deposit;
    CSmartPtr<CObjectCol> line, tender;
    CSmartPtr<MxXmlLib::CstringCol> tag;
    CSmartPtr<MxXmlLib::Ci4Col> code;
    CSmartPtr<CEnumCol> flag;
    CSmartPtr<MxXmlLib::CAttributeCol> anyAttributes;
};

// The sequence of inline children and xs:any.
class CPacket : public CGenerated<CPacket>
{
public:
    CPacket() { SetElementName("packet"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<CDimensions> dimensions;
    CSmartPtr<CContact> contact;
    CSmartPtr<CMemo> memo;
    CSmartPtr<MxXmlLib::CElement> foreign, remark;
    CSmartPtr<MxXmlLib::CElementCol> rest;
};

// Pseudo group, a choice of repeated alternatives: <tag>string</tag>+ or
// <code>i4</code>{1,3}.
class CLabels : public CGenerated<CLabels>
{
public:
    CLabels() { SetElementName("labels"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<MxXmlLib::CstringCol> tag;
    CSmartPtr<MxXmlLib::Ci4Col> code;
};

// <labelled> the labels inline, then <note>string</note>? </labelled>
class CLabelled : public CGenerated<CLabelled>
{
public:
    CLabelled() { SetElementName("labelled"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<CLabels> labels;
    MxVariant note;
};

// A choice of single alternatives; it may stay empty.
class CPick : public CGenerated<CPick>
{
public:
    CPick() { SetElementName("pick"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<CParty> party;
    CSmartPtr<MxXmlLib::CXmlObjectBase> payment;
    MxVariant amount, level;
    CSmartPtr<CContact> contact;
    CSmartPtr<MxXmlLib::CElement> foreign;
    CSmartPtr<MxXmlLib::CElementCol> extra;
};

// A choice of collections, each at least once: it may not stay empty.
class CPicks : public CGenerated<CPicks>
{
public:
    CPicks() { SetElementName("picks"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<MxXmlLib::CstringCol> code;
    CSmartPtr<MxXmlLib::Ci4Col> num;
    CSmartPtr<CEnumCol> mark;
    CSmartPtr<CObjectCol> line, tender;
};

// An xs:all of single real elements.
class CSettings : public CGenerated<CSettings>
{
public:
    CSettings() { SetElementName("settings"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    MxVariant width, color, mode, level;
    CSmartPtr<CParty> owner, backup;
    CSmartPtr<MxXmlLib::CXmlObjectBase> payment, refund;
    CSmartPtr<MxXmlLib::CElement> meta, foreign;
};

// An xs:all of inline children: dimensions, contact, a shape, a tile.
class CLayout : public CGenerated<CLayout>
{
public:
    CLayout() { SetElementName("layout"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<CDimensions> dimensions;
    CSmartPtr<CContact> contact;
    CSmartPtr<MxXmlLib::CXmlObjectBase> shape, tile;
};

// An xs:all of collections: it writes, but can never be read to the end.
class CBag : public CGenerated<CBag>
{
public:
    CBag() { SetElementName("bag"); Init(); }
    void AccessProperty(int index, bool read, MxVariant &value) override;
    void Init() override;
    static void BuildTables(CTables &tables);
    CSmartPtr<CObjectCol> line, tender, dims;
    CSmartPtr<MxXmlLib::CstringCol> tag;
    CSmartPtr<MxXmlLib::Ci4Col> code;
    CSmartPtr<MxXmlLib::CElementCol> rest;
};

} // namespace MxTestModel
