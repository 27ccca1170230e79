#include "dynamic/DynamicSchema.h"

#include "frontend/XsdFrontend.h"
#include "values/FacetCheck.h"
#include "binding/SchemaValues.h"

#include "collections/GeneratedCollections.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <type_traits>
#include <utility>

namespace MxCompiler
{

using namespace MxXmlLib;
using namespace MxXmlLibData;

namespace Dynamic
{

// ---------------------------------------------------------------------------
// The registry: numbered slots for sets, enumerations and substitution
// factories. A row's function pointer is a thunk bound to one slot.

constexpr std::size_t kSetSlots = 32767;  // the set's number stands in bits 16-30 of a class number
constexpr int kMaxClasses = 32767;        // bits 1-15; bit 0 says nillable
constexpr std::size_t kThunkSlots = 4096; // enumerations, and substitution factories, of all live sets

struct EnumSlot
{
    Enumeration const *values = nullptr;
};

struct AbsSlot
{
    SetData const *set = nullptr;
    int baseClass = -1;
    bool nillable = false;
};

class SlotTable
{
public:
    explicit SlotTable(std::size_t size) : m_used(size, false) {}
    // The first free slot, or -1 when all are taken.
    int Take()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        for (std::size_t i = m_next; i < m_used.size() + m_next; ++i)
        {
            std::size_t const slot = i % m_used.size();
            if (!m_used[slot])
            {
                m_used[slot] = true;
                m_next = slot + 1;
                return static_cast<int>(slot);
            }
        }
        return -1;
    }
    void Give(int slot)
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_used[static_cast<std::size_t>(slot)] = false;
    }

private:
    std::mutex m_lock;
    std::vector<bool> m_used;
    std::size_t m_next = 0;
};

SlotTable &SetSlots()
{
    static SlotTable table(kSetSlots);
    return table;
}
SlotTable &EnumSlots()
{
    static SlotTable table(kThunkSlots);
    return table;
}
SlotTable &AbsSlots()
{
    static SlotTable table(kThunkSlots);
    return table;
}

std::array<std::atomic<SetData const *>, kSetSlots> g_sets{};
std::array<std::atomic<CSchemaEnumeration const *>, kThunkSlots> g_enums{};
std::array<std::atomic<AbsSlot const *>, kThunkSlots> g_abs{};

struct SetData : std::enable_shared_from_this<SetData>
{
    struct Tables
    {
        CParentElementInfo *info = nullptr;
        std::vector<CElementInfo *> elements; // null-terminated
        std::vector<CAttributeInfo *> attributes;
    };

    Model model;
    int slot = -1;
    std::vector<Tables> tables;
    std::vector<int> enumSlots;             // per enumeration
    std::vector<std::unique_ptr<AbsSlot>> absSlots;
    std::vector<int> absSlotNumbers;
    // The value types and enumerations as the run-time's checks take them,
    // with the patterns of string values compiled once when the set loads:
    // a value is checked as it is stored. Per class, per property: the
    // index of its value type, or -1 for a property that is no value.
    CSchemaEnumerations enumerations;
    std::vector<CSchemaValueType> valueTypes;
    std::vector<std::vector<int>> propertyValueTypes;
    // Per class: the properties whose prefixes it notes, and how (most
    // classes have none, and their reads skip the question).
    std::vector<std::vector<std::pair<std::size_t, PrefixSource>>> prefixSources;

    ~SetData();
    CSmartPtr<CXmlObjectBase> Make(int classIndex, bool nillable, char const *elementName,
                                   std::string const &elementNs) const;
    CSmartPtr<CXmlObjectBase> MakeSubstitute(AbsSlot const &abs, CXmlElement *element) const;
    // For a document element that no global element declares: the class of
    // the type its xsi:type names, or null.
    CSmartPtr<CXmlObjectBase> MakeTypeRoot(CXmlElement *element) const;
};

int ClassNumber(int setSlot, int classIndex, bool nillable)
{
    return (setSlot << 16) | (classIndex << 1) | (nillable ? 1 : 0);
}

CSmartPtr<CXmlObjectBase> MakeByNumber(int classId, char const *elementName)
{
    auto const slot = static_cast<std::size_t>(classId >> 16);
    if (classId < 0 || slot >= kSetSlots)
        return nullptr;
    SetData const *set = g_sets[slot].load(std::memory_order_acquire);
    if (set == nullptr)
        return nullptr;
    int const index = (classId >> 1) & 0x7FFF;
    if (index >= static_cast<int>(set->model.classes.size()))
        return nullptr;
    ClassDef const &c = set->model.classes[static_cast<std::size_t>(index)];
    return set->Make(index, (classId & 1) != 0, elementName, c.ns);
}

template <std::size_t I> char const *EnumToString(int value)
{
    CSchemaEnumeration const *e = g_enums[I].load(std::memory_order_acquire);
    return e == nullptr ? "" : SchemaEnumerationToString(*e, value);
}

template <std::size_t I> int EnumFromString(char const *text)
{
    CSchemaEnumeration const *e = g_enums[I].load(std::memory_order_acquire);
    if (e == nullptr)
        throw CMxInvalidValueException(FormatString("Invalid value [%s] for the enumeration ?", text));
    return SchemaEnumerationFromString(*e, text);
}

template <std::size_t I> CSmartPtr<CXmlObjectBase> MakeByElement(CXmlElement *element)
{
    AbsSlot const *abs = g_abs[I].load(std::memory_order_acquire);
    if (abs == nullptr || element == nullptr)
        return nullptr;
    return abs->set->MakeSubstitute(*abs, element);
}

template <std::size_t... I> constexpr auto EnumToStringTable(std::index_sequence<I...>)
{
    return std::array<CElementInfo::EnumToString, sizeof...(I)>{&EnumToString<I>...};
}
template <std::size_t... I> constexpr auto EnumFromStringTable(std::index_sequence<I...>)
{
    return std::array<CElementInfo::StringToEnum, sizeof...(I)>{&EnumFromString<I>...};
}
template <std::size_t... I> constexpr auto MakeByElementTable(std::index_sequence<I...>)
{
    return std::array<CClassfactoryBase::FactoryByElement, sizeof...(I)>{&MakeByElement<I>...};
}

constexpr auto kEnumToString = EnumToStringTable(std::make_index_sequence<kThunkSlots>());
constexpr auto kEnumFromString = EnumFromStringTable(std::make_index_sequence<kThunkSlots>());
constexpr auto kMakeByElement = MakeByElementTable(std::make_index_sequence<kThunkSlots>());

// ---------------------------------------------------------------------------
// Collections of the loaded classes

template <typename Col> CXmlObjectBase *NewValueCol(ElementRow const &row)
{
    CPrimitiveRestrictions const &f = row.value.facets;
    auto text = [](std::string const &s) { return s.empty() ? nullptr : s.c_str(); };
    return new Col(row.name.c_str(), row.ns.c_str(), row.minOccurs, row.maxOccurs, text(f.pattern), f.minLength,
                   f.maxLength, text(f.minInclusive), text(f.maxInclusive), text(f.minExclusive), text(f.maxExclusive),
                   f.length, f.totalDigits, f.fractionDigits, row.value.whitespace);
}

CXmlObjectBase *NewValueCol(ElementRow const &row)
{
    switch (row.value.itemType)
    {
    case ItemType_hexBinary:
        return NewValueCol<ChexBinaryCol>(row);
    case ItemType_base64Binary:
        return NewValueCol<Cbase64BinaryCol>(row);
    case ItemType_i1:
        return NewValueCol<Ci1Col>(row);
    case ItemType_i2:
        return NewValueCol<Ci2Col>(row);
    case ItemType_i4:
        return NewValueCol<Ci4Col>(row);
    case ItemType_i8:
        return NewValueCol<Ci8Col>(row);
    case ItemType_ui1:
        return NewValueCol<Cui1Col>(row);
    case ItemType_ui2:
        return NewValueCol<Cui2Col>(row);
    case ItemType_ui4:
        return NewValueCol<Cui4Col>(row);
    case ItemType_ui8:
        return NewValueCol<Cui8Col>(row);
    case ItemType_r4:
        return NewValueCol<Cr4Col>(row);
    case ItemType_r8:
        return NewValueCol<Cr8Col>(row);
    case ItemType_duration:
        return NewValueCol<CdurationCol>(row);
    case ItemType_yearMonth:
        return NewValueCol<CyearMonthCol>(row);
    case ItemType_monthDay:
        return NewValueCol<CmonthDayCol>(row);
    case ItemType_year:
        return NewValueCol<CyearCol>(row);
    case ItemType_month:
        return NewValueCol<CmonthCol>(row);
    case ItemType_day:
        return NewValueCol<CdayCol>(row);
    case ItemType_date:
        return NewValueCol<CdateCol>(row);
    case ItemType_datetime:
        return NewValueCol<CdatetimeCol>(row);
    case ItemType_time:
        return NewValueCol<CtimeCol>(row);
    case ItemType_boolean:
        return NewValueCol<CbooleanCol>(row);
    case ItemType_decimal:
        return NewValueCol<CdecimalCol>(row);
    case ItemType_integer:
        return NewValueCol<CintegerCol>(row);
    default:
        return NewValueCol<CstringCol>(row);
    }
}

// The namespace an untyped element or collection starts with: one that its
// own wildcard admits.
std::string WildcardNamespace(std::string const &restriction, std::string const &targetNs)
{
    if (restriction == "##targetNamespace")
        return targetNs;
    if (restriction.rfind("##", 0) == 0)
        return std::string();
    return restriction;
}

// ---------------------------------------------------------------------------
// Building the rows

char const *Text(std::string const &s)
{
    return s.c_str();
}
char const *Default(bool has, std::string const &value)
{
    return has ? value.c_str() : nullptr;
}

// The constructors of the three groups differ only in the class names, and
// a choice has no Mnd rows: one template builds any row of one group.
template <typename ClsMnd, typename ClsOpt, typename ClsCol, typename AbsMnd, typename AbsOpt, typename AbsCol,
          typename EnumMnd, typename EnumOpt, typename EnumCol, typename PrimMnd, typename PrimOpt, typename PrimCol,
          typename UntpdMnd, typename UntpdOpt, typename UntpdCol>
struct RowMaker
{
    static CElementInfo *Make(ElementRow const &r, int classId, CClassfactoryBase::FactoryByElement byElement,
                              CElementInfo::EnumToString toString, CElementInfo::StringToEnum fromString)
    {
        char const *n = Text(r.name);
        char const *ns = Text(r.ns);
        int const p = r.property;
        XmlElementType const type =
            r.childShape == ClassShape::Element ? XmlElementType_Element : XmlElementType_PseudoGroup;
        switch (r.kind)
        {
        case RowKind::Cls:
            if (r.occurs == Occurs::Col)
                return new ClsCol(n, ns, p, type);
            if (r.occurs == Occurs::Opt)
                return new ClsOpt(n, ns, p, type, &MakeByNumber, classId);
            if constexpr (!std::is_void_v<ClsMnd>)
                return new ClsMnd(n, ns, p, type, &MakeByNumber, classId, r.contentRequired);
            break;
        case RowKind::AbsCls:
            if (r.occurs == Occurs::Col)
                return new AbsCol(n, ns, p, type);
            if (r.occurs == Occurs::Opt)
                return new AbsOpt(n, ns, p, type, byElement);
            if constexpr (std::is_constructible_v<AbsMnd, char const *, char const *, int, XmlElementType,
                                                  CClassfactoryBase::FactoryByElement, int>)
                return new AbsMnd(n, ns, p, type, byElement, 0);
            else if constexpr (!std::is_void_v<AbsMnd>)
                return new AbsMnd(n, ns, p, type, byElement);
            break;
        case RowKind::Enum:
            if (r.occurs == Occurs::Col)
                return new EnumCol(n, ns, p);
            if (r.occurs == Occurs::Opt)
                return new EnumOpt(n, ns, p, r.nillable, toString, fromString, Default(r.hasDefault, r.defaultValue));
            if constexpr (!std::is_void_v<EnumMnd>)
                return new EnumMnd(n, ns, p, r.nillable, toString, fromString, Default(r.hasDefault, r.defaultValue));
            break;
        case RowKind::Prim:
            if (r.occurs == Occurs::Col)
                return new PrimCol(n, ns, p);
            if (r.occurs == Occurs::Opt)
                return new PrimOpt(n, ns, p, r.nillable, r.value.itemType, nullptr, r.value.whitespace, r.value.facets,
                                   Default(r.hasDefault, r.defaultValue));
            if constexpr (!std::is_void_v<PrimMnd>)
                return new PrimMnd(n, ns, p, r.nillable, r.value.itemType, nullptr, r.value.whitespace, r.value.facets,
                                   Default(r.hasDefault, r.defaultValue));
            break;
        case RowKind::Untpd:
            if (r.occurs == Occurs::Col)
                return new UntpdCol(n, ns, p);
            if (r.occurs == Occurs::Opt)
                return new UntpdOpt(n, ns, p, Text(r.namespaceRestriction), Text(r.targetNamespace));
            if constexpr (!std::is_void_v<UntpdMnd>)
                return new UntpdMnd(n, ns, p, Text(r.namespaceRestriction), Text(r.targetNamespace));
            break;
        }
        throw CSchemaError("no row class for " + RowClassName(r) + " (" + r.origin + ")");
    }
};

using SeqRows = RowMaker<CElementInfoSeqClsMnd, CElementInfoSeqClsOpt, CElementInfoSeqClsCol, CElementInfoSeqAbsClsMnd,
                         CElementInfoSeqAbsClsOpt, CElementInfoSeqAbsClsCol, CElementInfoSeqEnumMnd,
                         CElementInfoSeqEnumOpt, CElementInfoSeqEnumCol, CElementInfoSeqPrimMnd, CElementInfoSeqPrimOpt,
                         CElementInfoSeqPrimCol, CElementInfoSeqUntpdMnd, CElementInfoSeqUntpdOpt,
                         CElementInfoSeqUntpdCol>;
using AllRows = RowMaker<CElementInfoAllClsMnd, CElementInfoAllClsOpt, CElementInfoAllClsCol, CElementInfoAllAbsClsMnd,
                         CElementInfoAllAbsClsOpt, CElementInfoAllAbsClsCol, CElementInfoAllEnumMnd,
                         CElementInfoAllEnumOpt, CElementInfoAllPrimCol, CElementInfoAllPrimMnd, CElementInfoAllPrimOpt,
                         CElementInfoAllPrimCol, CElementInfoAllUntpdMnd, CElementInfoAllUntpdOpt,
                         CElementInfoAllUntpdCol>;
using ChoiceRows =
    RowMaker<void, CElementInfoChoiceClsOpt, CElementInfoChoiceClsCol, void, CElementInfoChoiceAbsClsOpt,
             CElementInfoChoiceAbsClsCol, void, CElementInfoChoiceEnumOpt, CElementInfoChoiceEnumCol, void,
             CElementInfoChoicePrimOpt, CElementInfoChoicePrimCol, void, CElementInfoChoiceUntpdOpt,
             CElementInfoChoiceUntpdCol>;

CAttributeInfo *MakeAttribute(AttributeRow const &a, CElementInfo::EnumToString toString,
                              CElementInfo::StringToEnum fromString)
{
    switch (a.kind)
    {
    case AttributeRow::Kind::Any:
        return new CAttributeInfoAny("", "", a.property, true, Text(a.namespaceRestriction), Text(a.targetNamespace),
                                     nullptr);
    case AttributeRow::Kind::Enum:
        return new CAttributeInfoEnum(Text(a.name), Text(a.ns), a.property, a.optional, toString, fromString,
                                      Default(a.hasDefault, a.defaultValue));
    case AttributeRow::Kind::Prim:
        break;
    }
    return new CAttributeInfoPrimitive(Text(a.name), Text(a.ns), a.property, a.optional, a.value.itemType, nullptr,
                                       a.value.whitespace, a.value.facets, Default(a.hasDefault, a.defaultValue));
}

struct Slots
{
    std::vector<int> enums;
    std::vector<int> abs;
    int set = -1;
    void Release()
    {
        for (int s : enums)
        {
            g_enums[static_cast<std::size_t>(s)].store(nullptr, std::memory_order_release);
            EnumSlots().Give(s);
        }
        for (int s : abs)
        {
            g_abs[static_cast<std::size_t>(s)].store(nullptr, std::memory_order_release);
            AbsSlots().Give(s);
        }
        if (set >= 0)
        {
            g_sets[static_cast<std::size_t>(set)].store(nullptr, std::memory_order_release);
            SetSlots().Give(set);
        }
        enums.clear();
        abs.clear();
        set = -1;
    }
};

SetData::~SetData()
{
    Slots slots{enumSlots, absSlotNumbers, slot};
    slots.Release();
    for (Tables &t : tables)
    {
        delete t.info;
        for (CElementInfo *row : t.elements)
            delete row;
        for (CAttributeInfo *row : t.attributes)
            delete row;
    }
}

CSmartPtr<CXmlObjectBase> SetData::Make(int classIndex, bool nillable, char const *elementName,
                                        std::string const &elementNs) const
{
    std::shared_ptr<SetData const> self = shared_from_this();
    if (nillable)
    {
        class CNillable : public CDynamicObject, public INillable
        {
        public:
            using CDynamicObject::CDynamicObject;
            bool IsNil() override { return m_nil; }
            void SetNil(bool nil) override { m_nil = nil; }
            void Init() override
            {
                m_nil = false;
                CDynamicObject::Init();
            }

        private:
            bool m_nil = false;
        };
        return new CNillable(self, classIndex, elementName, elementNs);
    }
    return new CDynamicObject(self, classIndex, elementName, elementNs);
}

CSmartPtr<CXmlObjectBase> SetData::MakeSubstitute(AbsSlot const &abs, CXmlElement *element) const
{
    std::string const type = SchemaElementType(element);
    int chosen = -1;
    if (type.empty())
        chosen = abs.baseClass;
    else
    {
        std::string const typeNs = SchemaElementTypeNamespaceUri(element);
        for (int candidate : model.Substitutes(abs.baseClass))
        {
            ClassDef const &c = model.classes[static_cast<std::size_t>(candidate)];
            if (!c.anonymous && c.name == type && c.ns == typeNs)
                chosen = candidate;
        }
    }
    if (chosen < 0 || model.classes[static_cast<std::size_t>(chosen)].abstract)
        return nullptr;
    return Make(chosen, abs.nillable, element->GetLocalName().c_str(), element->GetNamespaceURI());
}

CSmartPtr<CXmlObjectBase> SetData::MakeTypeRoot(CXmlElement *element) const
{
    std::string const type = SchemaElementType(element);
    int const c = type.empty() ? -1 : model.FindTypeClass(type, SchemaElementTypeNamespaceUri(element));
    if (c < 0 || model.classes[static_cast<std::size_t>(c)].abstract)
        return nullptr;
    return new CSchemaTypeRoot<CDynamicObject>(shared_from_this(), c, element->GetLocalName().c_str(),
                                               element->GetNamespaceURI());
}

CSchemaValueType RuntimeValueType(ValueType const &v)
{
    CSchemaValueType t(v.variety == ValueType::Variety::List    ? CSchemaValueType::Variety::List
                       : v.variety == ValueType::Variety::Union ? CSchemaValueType::Variety::Union
                                                                : CSchemaValueType::Variety::Atomic,
                       v.name.c_str(), v.itemType, v.whitespace, v.facets, v.enumeration, v.qname, v.listLength,
                       v.listMinLength, v.listMaxLength);
    for (ValueType const &item : v.items)
        t.items.push_back(RuntimeValueType(item));
    return t;
}

std::shared_ptr<SetData> Build(Model model)
{
    // The classes of a loaded set are generated code of this library's own version.
    Register(16, 1);
    auto data = std::make_shared<SetData>();
    data->model = std::move(model);
    Model const &m = data->model;
    if (m.classes.size() > static_cast<std::size_t>(kMaxClasses))
        throw CSchemaError("the schema set has " + std::to_string(m.classes.size()) + " classes; at most " +
                           std::to_string(kMaxClasses) + " can be loaded as one set");
    data->slot = SetSlots().Take();
    if (data->slot < 0)
        throw CSchemaError("too many schema sets are loaded at once");
    for (Enumeration const &e : m.enumerations)
        data->enumerations.push_back(CSchemaEnumeration{e.name, e.values, RuntimeValueType(e.type)});
    for (CSchemaEnumeration const &e : data->enumerations)
    {
        int const s = EnumSlots().Take();
        if (s < 0)
            throw CSchemaError("too many enumerations are loaded at once (at most " + std::to_string(kThunkSlots) + ")");
        data->enumSlots.push_back(s);
        g_enums[static_cast<std::size_t>(s)].store(&e, std::memory_order_release);
    }
    auto absFactory = [&data](int baseClass, bool nillable) {
        for (std::size_t i = 0; i < data->absSlots.size(); ++i)
            if (data->absSlots[i]->baseClass == baseClass && data->absSlots[i]->nillable == nillable)
                return kMakeByElement[static_cast<std::size_t>(data->absSlotNumbers[i])];
        int const s = AbsSlots().Take();
        if (s < 0)
            throw CSchemaError("too many substitutable types are loaded at once (at most " +
                               std::to_string(kThunkSlots) + ")");
        data->absSlots.push_back(std::make_unique<AbsSlot>(AbsSlot{data.get(), baseClass, nillable}));
        data->absSlotNumbers.push_back(s);
        g_abs[static_cast<std::size_t>(s)].store(data->absSlots.back().get(), std::memory_order_release);
        return kMakeByElement[static_cast<std::size_t>(s)];
    };
    auto enumPair = [&data](ValueType const &v) {
        if (v.enumeration < 0)
            return std::make_pair(CElementInfo::EnumToString(nullptr), CElementInfo::StringToEnum(nullptr));
        auto const s = static_cast<std::size_t>(data->enumSlots[static_cast<std::size_t>(v.enumeration)]);
        return std::make_pair(kEnumToString[s], kEnumFromString[s]);
    };
    data->tables.resize(m.classes.size());
    for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
    {
        ClassDef const &c = m.classes[ci];
        SetData::Tables &t = data->tables[ci];
        t.info = new CParentElementInfo(
            c.group == Group::Sequence ? XmlElementGroupType_Sequence
            : c.group == Group::Choice ? XmlElementGroupType_Choice
                                       : XmlElementGroupType_All,
            c.shape == ClassShape::Element ? XmlElementType_Element : XmlElementType_PseudoGroup, Text(c.name),
            Text(c.ns), c.failIfAttributeUnknown, c.hasBaseClasses, c.simpleContentProperty,
            c.simpleContentProperty >= 0 ? c.simpleContent.itemType : ItemType_None, nullptr,
            c.simpleContentProperty >= 0 && ReadsSchemaText(c.simpleContent.itemType));
        for (ElementRow const &r : c.elements)
        {
            int const classId = r.classIndex >= 0 ? ClassNumber(data->slot, r.classIndex, r.nillable) : 0;
            CClassfactoryBase::FactoryByElement byElement =
                r.kind == RowKind::AbsCls ? absFactory(r.classIndex, r.nillable) : nullptr;
            auto const [toString, fromString] = enumPair(r.value);
            CElementInfo *row = r.group == Group::Sequence ? SeqRows::Make(r, classId, byElement, toString, fromString)
                                : r.group == Group::All    ? AllRows::Make(r, classId, byElement, toString, fromString)
                                                           : ChoiceRows::Make(r, classId, byElement, toString, fromString);
            t.elements.push_back(row);
        }
        t.elements.push_back(nullptr);
        for (AttributeRow const &a : c.attributes)
        {
            auto const [toString, fromString] = enumPair(a.value);
            t.attributes.push_back(MakeAttribute(a, toString, fromString));
        }
        t.attributes.push_back(nullptr);
    }
    data->propertyValueTypes.resize(m.classes.size());
    for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
    {
        ClassDef const &c = m.classes[ci];
        std::vector<int> &types = data->propertyValueTypes[ci];
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            ValueType const *v = FacetedValue(c, pi);
            types.push_back(v == nullptr ? -1 : static_cast<int>(data->valueTypes.size()));
            if (v == nullptr)
                continue;
            data->valueTypes.push_back(RuntimeValueType(*v));
            data->valueTypes.back().PreparePattern();
        }
    }
    data->prefixSources.resize(m.classes.size());
    for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
        for (std::size_t pi = 0; pi < m.classes[ci].properties.size(); ++pi)
            if (PrefixSource const source = m.PrefixSourceOf(ci, pi); source != PrefixSource::None)
                data->prefixSources[ci].emplace_back(pi, source);
    // Published last: a factory that finds the set finds it whole.
    g_sets[static_cast<std::size_t>(data->slot)].store(data.get(), std::memory_order_release);
    return data;
}

} // namespace Dynamic

// ---------------------------------------------------------------------------
// Objects

CDynamicObject::CDynamicObject(std::shared_ptr<Dynamic::SetData const> set, int classIndex, char const *elementName,
                               std::string elementNamespace)
    : m_set(std::move(set)), m_class(classIndex), m_elementNamespace(std::move(elementNamespace))
{
    SetElementName(elementName);
    m_cells.resize(GetClass().properties.size());
    Reset(false);
}

CDynamicObject::~CDynamicObject() = default;

ClassDef const &CDynamicObject::GetClass() const
{
    return m_set->model.classes[static_cast<std::size_t>(m_class)];
}

void CDynamicObject::AccessProperty(int index, bool read, MxVariant &value)
{
    if (index < 0 || static_cast<std::size_t>(index) >= m_cells.size())
        throw CMxException(FormatString("Unknown property %d of %s", index, GetClass().identifier.c_str()));
    if (read)
    {
        value = m_cells[static_cast<std::size_t>(index)];
        return;
    }
    // The rows convert without checking facets; a value that breaks them is
    // refused here, when it is stored, so that reading an invalid document
    // fails at the element or attribute that holds it.
    int const type = m_set->propertyValueTypes[static_cast<std::size_t>(m_class)][static_cast<std::size_t>(index)];
    if (GetClass().hasContentDefault && index == GetClass().simpleContentProperty)
        ApplyContentDefault(GetClass().contentDefault.c_str(), value);
    if (type >= 0 && index == GetClass().simpleContentProperty)
        ConvertSchemaText(m_set->valueTypes[static_cast<std::size_t>(type)], value);
    if (type >= 0)
        CheckStoredSchemaValue(&m_set->enumerations, m_set->valueTypes[static_cast<std::size_t>(type)],
                               GetClass().properties[static_cast<std::size_t>(index)].name.c_str(), value);
    // The value is taken, not copied: the caller has no more use for it.
    m_cells[static_cast<std::size_t>(index)] = std::move(value);
}

CParentElementInfo *CDynamicObject::GetParentElementInfo()
{
    return m_set->tables[static_cast<std::size_t>(m_class)].info;
}

CElementInfo **CDynamicObject::GetClassElementInfo()
{
    return const_cast<CElementInfo **>(m_set->tables[static_cast<std::size_t>(m_class)].elements.data());
}

CAttributeInfo **CDynamicObject::GetClassAttributeInfo()
{
    return const_cast<CAttributeInfo **>(m_set->tables[static_cast<std::size_t>(m_class)].attributes.data());
}

std::string CDynamicObject::GetNamespace() const
{
    return GetClass().ns;
}

namespace
{
// A fixed attribute can hold one value only: a new object holds it already.
void InitFixed(AttributeRow const &a, MxVariant &cell)
{
    if (!a.fixed || a.kind != AttributeRow::Kind::Prim)
        return;
    cell.FromString(a.defaultValue.c_str(), a.value.itemType, a.value.whitespace);
}
} // namespace

void CDynamicObject::Init()
{
    Reset(true);
}

void CDynamicObject::Reset(bool makeMandatoryChildren)
{
    ClassDef const &c = GetClass();
    int const setSlot = m_set->slot;
    for (std::size_t i = 0; i < c.properties.size(); ++i)
    {
        Property const &p = c.properties[i];
        MxVariant &cell = m_cells[i];
        ElementRow const *row = p.row >= 0 ? &c.elements[static_cast<std::size_t>(p.row)] : nullptr;
        switch (p.holds)
        {
        case Property::Holds::Value:
            cell = MxVariant();
            if (p.attribute >= 0)
                InitFixed(c.attributes[static_cast<std::size_t>(p.attribute)], cell);
            break;
        case Property::Holds::Object:
        case Property::Holds::Element:
            cell.SetXmlObject(nullptr);
            break;
        case Property::Holds::MandatoryObject:
            // Not initialised here: the object's own read starts with Init.
            cell.SetXmlObject(makeMandatoryChildren
                                  ? m_set->Make(row->classIndex, row->nillable, row->name.c_str(), row->ns).Get()
                                  : nullptr);
            break;
        case Property::Holds::ObjectCol:
        {
            CClassfactoryBase::FactoryByElement byElement = nullptr;
            if (row->kind == RowKind::AbsCls)
                for (std::size_t s = 0; s < m_set->absSlots.size(); ++s)
                    if (m_set->absSlots[s]->baseClass == row->classIndex &&
                        m_set->absSlots[s]->nillable == row->nillable)
                        byElement = Dynamic::kMakeByElement[static_cast<std::size_t>(m_set->absSlotNumbers[s])];
            cell.SetXmlObject(new CObjectCol(row->name.c_str(), row->ns.c_str(), row->minOccurs, row->maxOccurs,
                                             &Dynamic::MakeByNumber,
                                             Dynamic::ClassNumber(setSlot, row->classIndex, row->nillable), byElement,
                                             row->childShape == ClassShape::PseudoGroup));
            break;
        }
        case Property::Holds::ValueCol:
            cell.SetXmlObject(Dynamic::NewValueCol(*row));
            break;
        case Property::Holds::EnumCol:
        {
            auto const s = static_cast<std::size_t>(m_set->enumSlots[static_cast<std::size_t>(row->value.enumeration)]);
            cell.SetXmlObject(new CEnumCol(row->name.c_str(), row->ns.c_str(), row->minOccurs, row->maxOccurs,
                                                    Dynamic::kEnumToString[s], Dynamic::kEnumFromString[s],
                                                    row->value.whitespace));
            break;
        }
        case Property::Holds::MandatoryElement:
            cell.SetXmlObject(new CElement(
                row->name.c_str(), Dynamic::WildcardNamespace(row->namespaceRestriction, row->targetNamespace).c_str(),
                row->namespaceRestriction.c_str(), row->targetNamespace.c_str()));
            break;
        case Property::Holds::ElementCol:
            cell.SetXmlObject(new CElementCol(
                Dynamic::WildcardNamespace(row->namespaceRestriction, row->targetNamespace).c_str(),
                row->namespaceRestriction.c_str(), row->targetNamespace.c_str(), row->minOccurs, row->maxOccurs));
            break;
        case Property::Holds::AttributeCol:
        {
            AttributeRow const &a = c.attributes[static_cast<std::size_t>(p.attribute)];
            cell.SetXmlObject(new CAttributeCol(Dynamic::WildcardNamespace(a.namespaceRestriction, a.targetNamespace).c_str(),
                                                a.namespaceRestriction.c_str(), a.targetNamespace.c_str()));
            break;
        }
        }
    }
}

CXmlElement *CDynamicObject::FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                         CSerializationContext const &context, bool optionalChoice)
{
    CXmlElement *const next = CXmlGeneratedClass::FromXml_Int(element, cursor, context, optionalChoice);
    m_prefixes.clear();
    std::vector<int> const &types = m_set->propertyValueTypes[static_cast<std::size_t>(m_class)];
    for (auto const &[i, source] : m_set->prefixSources[static_cast<std::size_t>(m_class)])
        switch (source)
        {
        case PrefixSource::Value:
            CollectSchemaValuePrefixes(element, m_set->valueTypes[static_cast<std::size_t>(types[i])], m_cells[i],
                                       m_prefixes);
            break;
        case PrefixSource::Collection:
            CollectQNameCollectionPrefixes(element, m_cells[i], m_prefixes);
            break;
        case PrefixSource::Untyped:
            CollectUntypedTypePrefixes(element, m_cells[i], m_prefixes);
            break;
        case PrefixSource::InlineGroup:
            CollectInlinePrefixes(m_cells[i], m_prefixes);
            break;
        case PrefixSource::None:
            break;
        }
    return next;
}

void CDynamicObject::AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const
{
    DeclareSchemaValuePrefixes(writer, m_prefixes);
    CXmlGeneratedClass::AttributesToXml_Int(writer, context);
}

int CDynamicObject::PropertyIndex(std::string const &name) const
{
    ClassDef const &c = GetClass();
    for (std::size_t i = 0; i < c.properties.size(); ++i)
        if (c.properties[i].name == name)
            return static_cast<int>(i);
    throw CMxException(FormatString("Unknown property [%s] of class [%s]", name.c_str(), c.identifier.c_str()));
}

MxVariant CDynamicObject::Get(std::string const &property) const
{
    return m_cells[static_cast<std::size_t>(PropertyIndex(property))];
}

void CDynamicObject::Set(std::string const &property, MxVariant const &value)
{
    m_cells[static_cast<std::size_t>(PropertyIndex(property))] = value;
}

CXmlObjectBase *CDynamicObject::GetObject(std::string const &property) const
{
    MxVariant const &cell = m_cells[static_cast<std::size_t>(PropertyIndex(property))];
    return cell.GetTypeAsEnum() == ItemType_XmlObject ? cell.GetXmlObject().Get() : nullptr;
}

// ---------------------------------------------------------------------------
// Sets

CSchemaSet CSchemaSet::Load(std::vector<std::string> const &files, SchemaLocations const &locations)
{
    return FromModel(LoadSchemaModel(files, locations));
}

CSchemaSet CSchemaSet::FromModel(Model model)
{
    return CSchemaSet(Dynamic::Build(std::move(model)));
}

Model const &CSchemaSet::GetModel() const
{
    return m_data->model;
}

CSmartPtr<CXmlObjectBase> CSchemaSet::CreateRoot(std::string const &name, std::string const &ns) const
{
    int const r = m_data->model.FindRoot(name, ns);
    if (r < 0)
    {
        std::string const qualified = ns.empty() ? name : "{" + ns + "}" + name;
        throw CMxException(FormatString("The element [%s] is not declared by the schema", qualified.c_str()));
    }
    RootElement const &root = m_data->model.roots[static_cast<std::size_t>(r)];
    if (root.untyped)
        return new CSchemaUntypedRoot(name.c_str(), ns.c_str());
    CSmartPtr<CXmlObjectBase> made = m_data->Make(root.classIndex, root.nillable, name.c_str(), ns);
    InitSchemaTree(*static_cast<CDynamicObject *>(made.Get()));
    return made;
}

CSmartPtr<CXmlObjectBase> CSchemaSet::CreateFor(CXmlElement *root) const
{
    std::string const name = root->GetLocalName();
    std::string const ns = root->GetNamespaceURI();
    int const r = m_data->model.FindRoot(name, ns);
    if (r >= 0 && !m_data->model.roots[static_cast<std::size_t>(r)].untyped &&
        !SchemaElementType(root).empty())
    {
        RootElement const &decl = m_data->model.roots[static_cast<std::size_t>(r)];
        Dynamic::AbsSlot const abs{m_data.get(), decl.classIndex, decl.nillable};
        CSmartPtr<CXmlObjectBase> made = m_data->MakeSubstitute(abs, root);
        if (made.IsNull())
            throw CMxValidationException(
                FormatString("Failed to find a suitable substitution element for [%s].", name.c_str()),
                root->GetXPath());
        return made;
    }
    if (r < 0)
        if (CSmartPtr<CXmlObjectBase> made = m_data->MakeTypeRoot(root); !made.IsNull())
            return made;
    return CreateRoot(name, ns);
}

CSmartPtr<CXmlObjectBase> CSchemaSet::Read(CBinaryData const &bytes, CSerializationContext const &context) const
{
    return ReadSchemaDocument(bytes, context, [this](CXmlElement *root) { return CreateFor(root); });
}

CSmartPtr<CXmlObjectBase> ReadUntyped(CBinaryData const &bytes, CSerializationContext const &context)
{
    return ReadSchemaDocument(bytes, context, [](CXmlElement *) { return new CElement("document"); });
}

bool LooksLikeJson(CBinaryData const &bytes)
{
    return LooksLikeJsonDocument(bytes);
}

} // namespace MxCompiler
