#include "model/Model.h"

#include <initializer_list>

namespace MxTestModel
{

using namespace MxXmlLib;
using namespace MxXmlLibData;

namespace
{
using WS = CWhitespaceUtils::WhitespaceRule;

CParentElementInfo *Info(XmlElementGroupType group, XmlElementType type, char const *name, bool failIfUnknown,
                         bool hasBaseClasses = false, int valueIndex = -1, ItemType valueType = ItemType_None)
{
    return new CParentElementInfo(group, type, name, kNs, failIfUnknown, hasBaseClasses, valueIndex, valueType,
                                  nullptr, false);
}

CElementInfo **Rows(std::initializer_list<CElementInfo *> rows)
{
    auto **array = new CElementInfo *[rows.size() + 1];
    std::size_t i = 0;
    for (CElementInfo *row : rows)
        array[i++] = row;
    array[i] = nullptr;
    return array;
}

CAttributeInfo **Attributes(std::initializer_list<CAttributeInfo *> rows)
{
    auto **array = new CAttributeInfo *[rows.size() + 1];
    std::size_t i = 0;
    for (CAttributeInfo *row : rows)
        array[i++] = row;
    array[i] = nullptr;
    return array;
}

CPrimitiveRestrictions MaxLength(long length)
{
    return CPrimitiveRestrictions(nullptr, -1, length, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
}

CPrimitiveRestrictions Range(char const *minInclusive, char const *maxInclusive)
{
    return CPrimitiveRestrictions(nullptr, -1, -1, minInclusive, maxInclusive, nullptr, nullptr, -1, -1, -1);
}

CSmartPtr<CObjectCol> PartyCol(char const *name, int minOccurs)
{
    return new CObjectCol(name, kNs, minOccurs, -1, &CModelFactory::MakeByNumber, ClassId_Party, nullptr, false);
}

CSmartPtr<CObjectCol> PaymentCol(char const *name, int minOccurs)
{
    return new CObjectCol(name, kNs, minOccurs, -1, nullptr, 0, &CModelFactory::MakePayment, false);
}

template <typename T> CSmartPtr<T> Make(int classId, char const *name)
{
    return dynamic_cast<T *>(CModelFactory::MakeByNumber(classId, name).Get());
}

[[noreturn]] void NoSuchProperty(int index)
{
    throw CMxException(FormatString("No property %d", index));
}
} // namespace

// ---------------------------------------------------------------------------
// Small classes

void CParty::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "party", true);
    t.elements = Rows({
        new CElementInfoSeqPrimMnd("name", kNs, 0, false, ItemType_string, nullptr, WS::Preserve, MaxLength(10),
                                   nullptr),
        new CElementInfoSeqPrimOpt("phone", kNs, 1, false, ItemType_string, nullptr, WS::Preserve, NoFacets(),
                                   nullptr),
    });
    t.attributes = Attributes({
        new CAttributeInfoPrimitive("ref", "", 2, true, ItemType_i4, nullptr, WS::Collapse, NoFacets(), nullptr),
    });
}

void CParty::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, name);
    case 1: return AccessCell(read, value, phone);
    case 2: return AccessCell(read, value, ref);
    default: NoSuchProperty(index);
    }
}

void CParty::Init()
{
    name.Clear();
    phone.Clear();
    ref.Clear();
}

void CCard::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "card", true, true);
    t.elements = Rows({new CElementInfoSeqPrimMnd("number", kNs, 0, false, ItemType_string, nullptr, WS::Collapse,
                                                  NoFacets(), nullptr)});
    t.attributes = Attributes({});
}

void CCard::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        NoSuchProperty(index);
    AccessCell(read, value, number);
}

void CCard::Init() { number.Clear(); }

void CCash::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "cash", true, true);
    t.elements = Rows({new CElementInfoSeqPrimOpt("currency", kNs, 0, false, ItemType_string, nullptr, WS::Collapse,
                                                  NoFacets(), "EUR")});
    t.attributes = Attributes({});
}

void CCash::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        NoSuchProperty(index);
    AccessCell(read, value, currency);
}

void CCash::Init() { currency.Clear(); }

void CDimensions::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_PseudoElement, "dimensions", false);
    t.elements = Rows({
        new CElementInfoSeqPrimMnd("width", kNs, 0, false, ItemType_i4, nullptr, WS::Collapse, NoFacets(), nullptr),
        new CElementInfoSeqPrimMnd("height", kNs, 1, false, ItemType_i4, nullptr, WS::Collapse, NoFacets(), nullptr),
    });
    t.attributes = Attributes({
        new CAttributeInfoPrimitive("units", "", 2, true, ItemType_string, nullptr, WS::Preserve, NoFacets(), nullptr),
    });
}

void CDimensions::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, width);
    case 1: return AccessCell(read, value, height);
    case 2: return AccessCell(read, value, units);
    default: NoSuchProperty(index);
    }
}

void CDimensions::Init()
{
    width.Clear();
    height.Clear();
    units.Clear();
}

void CContact::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Choice, XmlElementType_PseudoGroup, "contact", false);
    t.elements = Rows({
        new CElementInfoChoicePrimOpt("email", kNs, 0, false, ItemType_string, nullptr, WS::Preserve, NoFacets(),
                                      nullptr),
        new CElementInfoChoicePrimOpt("fax", kNs, 1, false, ItemType_string, nullptr, WS::Preserve, NoFacets(),
                                      nullptr),
    });
    t.attributes = Attributes({});
}

void CContact::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, email);
    case 1: return AccessCell(read, value, fax);
    default: NoSuchProperty(index);
    }
}

void CContact::Init()
{
    email.Clear();
    fax.Clear();
}

void CPrice::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "price", true, false, 1, ItemType_i4);
    t.elements = Rows({});
    t.attributes = Attributes({
        new CAttributeInfoPrimitive("currency", "", 0, true, ItemType_string, nullptr, WS::Collapse, NoFacets(),
                                    "EUR"),
    });
}

void CPrice::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, currency);
    case 1: return AccessCell(read, value, amount);
    default: NoSuchProperty(index);
    }
}

void CPrice::Init()
{
    currency.Clear();
    amount.Clear();
}

void CMemo::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "memo", true);
    t.elements = Rows({new CElementInfoSeqPrimOpt("text", kNs, 0, false, ItemType_string, nullptr, WS::Preserve,
                                                  NoFacets(), nullptr)});
    t.attributes = Attributes({});
}

void CMemo::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        NoSuchProperty(index);
    AccessCell(read, value, text);
}

void CMemo::Init()
{
    text.Clear();
    nil = false;
}

void CCircle::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_PseudoGroup, "circle", false);
    t.elements = Rows({new CElementInfoSeqPrimMnd("radius", kNs, 0, false, ItemType_i4, nullptr, WS::Collapse,
                                                  NoFacets(), nullptr)});
    t.attributes = Attributes({});
}

void CCircle::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        NoSuchProperty(index);
    AccessCell(read, value, radius);
}

void CCircle::Init() { radius.Clear(); }

void CTile::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_PseudoGroup, "tile", false);
    t.elements = Rows({new CElementInfoSeqPrimMnd("side", kNs, 0, false, ItemType_i4, nullptr, WS::Collapse,
                                                  NoFacets(), nullptr)});
    t.attributes = Attributes({});
}

void CTile::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index != 0)
        NoSuchProperty(index);
    AccessCell(read, value, side);
}

void CTile::Init() { side.Clear(); }

// ---------------------------------------------------------------------------
// Sequences

void COrder::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "order", true);
    t.elements = Rows({
        new CElementInfoSeqPrimMnd("number", kNs, 0, false, ItemType_i4, nullptr, WS::Collapse, Range("1", nullptr),
                                   nullptr),
        new CElementInfoSeqPrimOpt("note", kNs, 1, true, ItemType_string, nullptr, WS::Preserve, MaxLength(8), "none"),
        new CElementInfoSeqEnumMnd("priority", kNs, 2, true, &PriorityToString, &StringToPriority, nullptr),
        new CElementInfoSeqEnumOpt("channel", kNs, 3, false, &PriorityToString, &StringToPriority, "normal"),
        new CElementInfoSeqClsMnd("customer", kNs, 4, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                  ClassId_Party, false),
        new CElementInfoSeqClsOpt("shipTo", kNs, 5, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                  ClassId_Party),
        new CElementInfoSeqClsOpt("total", kNs, 6, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                  ClassId_Price),
        new CElementInfoSeqAbsClsMnd("payment", kNs, 7, XmlElementType_Element, &CModelFactory::MakePayment),
        new CElementInfoSeqAbsClsOpt("deposit", kNs, 8, XmlElementType_Element, &CModelFactory::MakePayment),
        new CElementInfoSeqClsCol("line", kNs, 9, XmlElementType_Element),
        new CElementInfoSeqAbsClsCol("tender", kNs, 10, XmlElementType_Element),
        new CElementInfoSeqPrimCol("tag", kNs, 11),
        new CElementInfoSeqEnumCol("flag", kNs, 12),
        new CElementInfoSeqCol("code", kNs, 13),
    });
    t.attributes = Attributes({
        new CAttributeInfoPrimitive("id", "", 20, false, ItemType_i4, nullptr, WS::Collapse, NoFacets(), nullptr),
        new CAttributeInfoEnum("status", "", 21, true, &StatusToString, &StringToStatus, "open"),
        new CAttributeInfoAny("", "", 22, true, "##other", kNs, nullptr),
    });
}

void COrder::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, number);
    case 1: return AccessCell(read, value, note);
    case 2: return AccessCell(read, value, priority);
    case 3: return AccessCell(read, value, channel);
    case 4: return AccessObject(read, value, customer);
    case 5: return AccessObject(read, value, shipTo);
    case 6: return AccessObject(read, value, total);
    case 7: return AccessObject(read, value, payment);
    case 8: return AccessObject(read, value, deposit);
    case 9: return AccessObject(read, value, line);
    case 10: return AccessObject(read, value, tender);
    case 11: return AccessObject(read, value, tag);
    case 12: return AccessObject(read, value, flag);
    case 13: return AccessObject(read, value, code);
    case 20: return AccessCell(read, value, id);
    case 21: return AccessCell(read, value, status);
    case 22: return AccessObject(read, value, anyAttributes);
    default: NoSuchProperty(index);
    }
}

void COrder::Init()
{
    for (MxVariant *cell : {&number, &note, &priority, &channel, &id, &status})
        cell->Clear();
    customer = Make<CParty>(ClassId_Party, "customer");
    shipTo = nullptr;
    total = nullptr;
    payment = nullptr;
    deposit = nullptr;
    line = PartyCol("line", 0);
    tender = PaymentCol("tender", 0);
    tag = NewPrimitiveCol<CstringCol>("tag", 0, -1);
    flag = new CEnumCol("flag", kNs, 0, -1, &PriorityToString, &StringToPriority, MxXmlLib::CWhitespaceUtils::WhitespaceRule::Collapse);
    code = NewPrimitiveCol<Ci4Col>("code", 0, 3);
    anyAttributes = new CAttributeCol("", "##other", kNs);
}

void CPacket::BuildTables(CTables &t)
{
    // Not strict about attributes: the pseudo element child reads its own
    // from this element's start tag.
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "packet", false);
    t.elements = Rows({
        new CElementInfoSeqClsMnd("dimensions", kNs, 0, XmlElementType_PseudoElement, &CModelFactory::MakeByNumber,
                                  ClassId_Dimensions, true),
        new CElementInfoSeqClsOpt("contact", kNs, 1, XmlElementType_PseudoGroup, &CModelFactory::MakeByNumber,
                                  ClassId_Contact),
        new CElementInfoSeqClsOpt("memo", kNs, 2, XmlElementType_Element, &CModelFactory::MakeByNumber, ClassId_Memo),
        new CElementInfoSeqUntpdMnd("AnyElement", kNs, 3, "##other", kNs),
        new CElementInfoSeqUntpdOpt("remark", kNs, 4, "##any", kNs),
        new CElementInfoSeqUntpdCol("AnyElement", kNs, 5),
    });
    t.attributes = Attributes({});
}

void CPacket::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, dimensions);
    case 1: return AccessObject(read, value, contact);
    case 2: return AccessObject(read, value, memo);
    case 3: return AccessObject(read, value, foreign);
    case 4: return AccessObject(read, value, remark);
    case 5: return AccessObject(read, value, rest);
    default: NoSuchProperty(index);
    }
}

void CPacket::Init()
{
    dimensions = Make<CDimensions>(ClassId_Dimensions, "dimensions");
    contact = nullptr;
    memo = nullptr;
    foreign = new CElement("AnyElement", "", "##other", kNs);
    remark = nullptr;
    rest = new CElementCol("", "##any", kNs, 0, -1);
}

// ---------------------------------------------------------------------------
// Choices

void CPick::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Choice, XmlElementType_Element, "pick", true);
    t.elements = Rows({
        new CElementInfoChoiceClsOpt("party", kNs, 0, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                     ClassId_Party),
        new CElementInfoChoiceAbsClsOpt("payment", kNs, 1, XmlElementType_Element, &CModelFactory::MakePayment),
        new CElementInfoChoicePrimOpt("amount", kNs, 2, false, ItemType_i4, nullptr, WS::Collapse, Range(nullptr, "100"),
                                      nullptr),
        new CElementInfoChoiceEnumOpt("level", kNs, 3, false, &PriorityToString, &StringToPriority, nullptr),
        new CElementInfoChoiceClsOpt("contact", kNs, 4, XmlElementType_PseudoGroup, &CModelFactory::MakeByNumber,
                                     ClassId_Contact),
        new CElementInfoChoiceUntpdOpt("AnyElement", kNs, 5, "##other", kNs),
        new CElementInfoChoiceUntpdCol("extra", kNs, 6),
    });
    t.attributes = Attributes({});
}

void CPick::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, party);
    case 1: return AccessObject(read, value, payment);
    case 2: return AccessCell(read, value, amount);
    case 3: return AccessCell(read, value, level);
    case 4: return AccessObject(read, value, contact);
    case 5: return AccessObject(read, value, foreign);
    case 6: return AccessObject(read, value, extra);
    default: NoSuchProperty(index);
    }
}

void CPick::Init()
{
    party = nullptr;
    payment = nullptr;
    amount.Clear();
    level.Clear();
    contact = nullptr;
    foreign = nullptr;
    extra = new CElementCol(kNs, "##any", kNs, 0, -1);
}

void CLabels::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Choice, XmlElementType_PseudoGroup, "labels", false);
    t.elements = Rows({
        new CElementInfoChoicePrimCol("tag", kNs, 0),
        new CElementInfoChoicePrimCol("code", kNs, 1),
    });
    t.attributes = Attributes({});
}

void CLabels::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, tag);
    case 1: return AccessObject(read, value, code);
    default: NoSuchProperty(index);
    }
}

void CLabels::Init()
{
    tag = NewPrimitiveCol<CstringCol>("tag", 1, -1);
    code = NewPrimitiveCol<Ci4Col>("code", 1, 3);
}

void CLabelled::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Sequence, XmlElementType_Element, "labelled", true);
    t.elements = Rows({
        new CElementInfoSeqClsMnd("labels", kNs, 0, XmlElementType_PseudoGroup, &CModelFactory::MakeByNumber,
                                  ClassId_Labels, true),
        new CElementInfoSeqPrimOpt("note", kNs, 1, false, ItemType_string, nullptr, WS::Preserve, NoFacets(),
                                   nullptr),
    });
    t.attributes = Attributes({});
}

void CLabelled::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, labels);
    case 1: return AccessCell(read, value, note);
    default: NoSuchProperty(index);
    }
}

void CLabelled::Init()
{
    labels = Make<CLabels>(ClassId_Labels, "labels");
    note.Clear();
}

void CPicks::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_Choice, XmlElementType_Element, "picks", true);
    t.elements = Rows({
        new CElementInfoChoicePrimCol("code", kNs, 0),
        new CElementInfoChoiceEnumCol("mark", kNs, 1),
        new CElementInfoChoiceClsCol("line", kNs, 2, XmlElementType_Element),
        new CElementInfoChoiceAbsClsCol("tender", kNs, 3, XmlElementType_Element),
        new CElementInfoChoiceCol("num", kNs, 4),
    });
    t.attributes = Attributes({});
}

void CPicks::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, code);
    case 1: return AccessObject(read, value, mark);
    case 2: return AccessObject(read, value, line);
    case 3: return AccessObject(read, value, tender);
    case 4: return AccessObject(read, value, num);
    default: NoSuchProperty(index);
    }
}

void CPicks::Init()
{
    code = NewPrimitiveCol<CstringCol>("code", 1, -1);
    mark = new CEnumCol("mark", kNs, 1, -1, &PriorityToString, &StringToPriority, MxXmlLib::CWhitespaceUtils::WhitespaceRule::Collapse);
    line = PartyCol("line", 1);
    tender = PaymentCol("tender", 1);
    num = NewPrimitiveCol<Ci4Col>("num", 1, 2);
}

// ---------------------------------------------------------------------------
// All groups

void CSettings::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_All, XmlElementType_Element, "settings", true);
    t.elements = Rows({
        new CElementInfoAllPrimMnd("width", kNs, 0, false, ItemType_i4, nullptr, WS::Collapse, NoFacets(), nullptr),
        new CElementInfoAllPrimOpt("color", kNs, 1, false, ItemType_string, nullptr, WS::Preserve, NoFacets(),
                                   "black"),
        new CElementInfoAllEnumMnd("mode", kNs, 2, false, &PriorityToString, &StringToPriority, nullptr),
        new CElementInfoAllEnumOpt("level", kNs, 3, true, &PriorityToString, &StringToPriority, nullptr),
        new CElementInfoAllClsMnd("owner", kNs, 4, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                  ClassId_Party, false),
        new CElementInfoAllClsOpt("backup", kNs, 5, XmlElementType_Element, &CModelFactory::MakeByNumber,
                                  ClassId_Party),
        new CElementInfoAllAbsClsMnd("payment", kNs, 6, XmlElementType_Element, &CModelFactory::MakePayment, 0),
        new CElementInfoAllAbsClsOpt("refund", kNs, 7, XmlElementType_Element, &CModelFactory::MakePayment),
        new CElementInfoAllUntpdMnd("meta", kNs, 8, "##any", kNs),
        new CElementInfoAllUntpdOpt("AnyElement", kNs, 9, "##other", kNs),
    });
    t.attributes = Attributes({});
}

void CSettings::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessCell(read, value, width);
    case 1: return AccessCell(read, value, color);
    case 2: return AccessCell(read, value, mode);
    case 3: return AccessCell(read, value, level);
    case 4: return AccessObject(read, value, owner);
    case 5: return AccessObject(read, value, backup);
    case 6: return AccessObject(read, value, payment);
    case 7: return AccessObject(read, value, refund);
    case 8: return AccessObject(read, value, meta);
    case 9: return AccessObject(read, value, foreign);
    default: NoSuchProperty(index);
    }
}

void CSettings::Init()
{
    for (MxVariant *cell : {&width, &color, &mode, &level})
        cell->Clear();
    owner = Make<CParty>(ClassId_Party, "owner");
    backup = nullptr;
    payment = nullptr;
    refund = nullptr;
    meta = new CElement("meta", kNs);
    foreign = nullptr;
}

void CLayout::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_All, XmlElementType_Element, "layout", false);
    t.elements = Rows({
        new CElementInfoAllClsMnd("dimensions", kNs, 0, XmlElementType_PseudoElement, &CModelFactory::MakeByNumber,
                                  ClassId_Dimensions, false),
        new CElementInfoAllClsOpt("contact", kNs, 1, XmlElementType_PseudoGroup, &CModelFactory::MakeByNumber,
                                  ClassId_Contact),
        new CElementInfoAllAbsClsMnd("shape", kNs, 2, XmlElementType_PseudoGroup, &CModelFactory::MakeShape, 0),
        new CElementInfoAllAbsClsOpt("tile", kNs, 3, XmlElementType_PseudoGroup, &CModelFactory::MakeTile),
    });
    t.attributes = Attributes({});
}

void CLayout::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, dimensions);
    case 1: return AccessObject(read, value, contact);
    case 2: return AccessObject(read, value, shape);
    case 3: return AccessObject(read, value, tile);
    default: NoSuchProperty(index);
    }
}

void CLayout::Init()
{
    dimensions = Make<CDimensions>(ClassId_Dimensions, "dimensions");
    contact = nullptr;
    shape = nullptr;
    tile = nullptr;
}

void CBag::BuildTables(CTables &t)
{
    t.info = Info(XmlElementGroupType_All, XmlElementType_Element, "bag", false);
    t.elements = Rows({
        new CElementInfoAllClsCol("line", kNs, 0, XmlElementType_Element),
        new CElementInfoAllAbsClsCol("tender", kNs, 1, XmlElementType_Element),
        new CElementInfoAllPrimCol("tag", kNs, 2),
        new CElementInfoAllCol("code", kNs, 3),
        new CElementInfoAllClsCol("dims", kNs, 4, XmlElementType_PseudoElement),
        new CElementInfoAllUntpdCol("AnyElement", kNs, 5),
    });
    t.attributes = Attributes({});
}

void CBag::AccessProperty(int index, bool read, MxVariant &value)
{
    switch (index)
    {
    case 0: return AccessObject(read, value, line);
    case 1: return AccessObject(read, value, tender);
    case 2: return AccessObject(read, value, tag);
    case 3: return AccessObject(read, value, code);
    case 4: return AccessObject(read, value, dims);
    case 5: return AccessObject(read, value, rest);
    default: NoSuchProperty(index);
    }
}

void CBag::Init()
{
    line = PartyCol("line", 0);
    tender = PaymentCol("tender", 0);
    tag = NewPrimitiveCol<CstringCol>("tag", 0, 2);
    code = NewPrimitiveCol<Ci4Col>("code", 0, -1);
    dims = new CObjectCol("dims", kNs, 0, -1, &CModelFactory::MakeByNumber, ClassId_Dimensions, nullptr, true);
    rest = new CElementCol("", "##any", kNs, 0, -1);
}

} // namespace MxTestModel
