#include "dynamic/DynamicSchema.h"

#include "frontend/XsdFrontend.h"
#include "values/FacetCheck.h"

#include "collections/GeneratedCollections.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
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
std::array<std::atomic<Enumeration const *>, kThunkSlots> g_enums{};
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
    // The patterns of the string values, compiled once when the set loads,
    // with the rest of their facets: a value is checked as it is stored.
    struct Pattern
    {
        CPrimitiveRestrictions otherFacets;
        std::unique_ptr<CXsdPattern> compiled;
    };
    std::map<ValueType const *, Pattern> patterns;
    // Namespaces of types that no element or attribute name uses: an
    // xsi:type naming such a type needs a prefix that no name declares.
    std::set<std::string> typeOnlyNamespaces;

    ~SetData();
    CSmartPtr<CXmlObjectBase> Make(int classIndex, bool nillable, char const *elementName,
                                   std::string const &elementNs) const;
    CSmartPtr<CXmlObjectBase> MakeSubstitute(AbsSlot const &abs, CXmlElement *element) const;
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

// The two questions a factory may put to an element are protected members
// of the factory base.
class Factory : public CClassfactoryBase
{
public:
    using CClassfactoryBase::GetElementType;
    using CClassfactoryBase::GetElementTypeNamespaceUri;
};

// ---------------------------------------------------------------------------
// Values held as text (lists, unions, enumerations) are checked here: the
// rows convert atomic values, but only this code knows a list's items or a
// union's members.

int MatchEnumeration(std::vector<Enumeration> const *all, Enumeration const &e, std::string const &text);

std::vector<std::string> Items(std::string const &collapsed)
{
    std::vector<std::string> items;
    for (std::size_t start = 0; start < collapsed.size();)
    {
        std::size_t const end = std::min(collapsed.find(' ', start), collapsed.size());
        items.push_back(collapsed.substr(start, end - start));
        start = end + 1;
    }
    return items;
}

void CheckPattern(ValueType const &type, std::string const &text, char const *name)
{
    if (type.facets.pattern.empty())
        return;
    CPrimitiveRestrictions pattern(type.facets.pattern.c_str(), -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
    MxVariant v;
    v.SetString(text);
    CheckPrimitiveFacets(name, v, ItemType_string, pattern);
}

void CheckMember(std::vector<Enumeration> const *all, ValueType const &type, std::string const &text)
{
    if (type.enumeration < 0 || all == nullptr)
        return;
    Enumeration const &e = (*all)[static_cast<std::size_t>(type.enumeration)];
    if (MatchEnumeration(all, e, text) < 0)
        throw CMxInvalidValueException(
            FormatString("Invalid value [%s] for the enumeration %s", text.c_str(), e.name.c_str()));
}

// The canonical text of `text` as a value of `type`, after every facet
// check but enumerations of `type` itself; raises when the text is none.
std::string Canonical(std::vector<Enumeration> const *all, ValueType const &type, std::string const &text,
                      char const *name)
{
    switch (type.variety)
    {
    case ValueType::Variety::Atomic:
    {
        if (type.itemType == ItemType_string)
        {
            std::string const t = CWhitespaceUtils::ApplyRule(type.whitespace, text);
            MxVariant v;
            v.SetString(t);
            CheckPrimitiveFacets(name, v, ItemType_string, type.facets);
            return t;
        }
        MxVariant v;
        v.FromString(text, type.itemType, type.whitespace);
        CheckPrimitiveFacets(name, v, type.itemType, type.facets);
        std::string canonical = v.ToString();
        // A zero offset is UTC whichever way it is written.
        std::size_t const n = canonical.size();
        if (n > 6 && (canonical.compare(n - 6, 6, "+00:00") == 0 || canonical.compare(n - 6, 6, "-00:00") == 0))
            canonical.replace(n - 6, 6, "Z");
        return canonical;
    }
    case ValueType::Variety::List:
    {
        std::string const t = CWhitespaceUtils::ApplyRule(WhitespaceRule::Collapse, text);
        std::vector<std::string> const items = Items(t);
        int const n = static_cast<int>(items.size());
        if (type.listLength >= 0 && n != type.listLength)
            throw CMxInvalidValueException(FormatString("The list [%s] has %d items where %d are required", t.c_str(),
                                                        n, type.listLength));
        if (type.listMinLength >= 0 && n < type.listMinLength)
            throw CMxInvalidValueException(FormatString("The list [%s] has %d items, fewer than the %d required",
                                                        t.c_str(), n, type.listMinLength));
        if (type.listMaxLength >= 0 && n > type.listMaxLength)
            throw CMxInvalidValueException(FormatString("The list [%s] has %d items, more than the %d allowed",
                                                        t.c_str(), n, type.listMaxLength));
        CheckPattern(type, t, name);
        std::string canonical;
        for (std::string const &item : items)
        {
            if (type.items.empty())
            {
                canonical += (canonical.empty() ? "" : " ") + item;
                continue;
            }
            std::string const c = Canonical(all, type.items.front(), item, name);
            CheckMember(all, type.items.front(), item);
            canonical += (canonical.empty() ? "" : " ") + c;
        }
        return canonical;
    }
    case ValueType::Variety::Union:
    {
        std::string const t = CWhitespaceUtils::ApplyRule(type.whitespace, text);
        CheckPattern(type, t, name);
        for (ValueType const &member : type.items)
        {
            try
            {
                std::string const c = Canonical(all, member, text, name);
                CheckMember(all, member, text);
                return c;
            }
            catch (CMxException const &)
            {
            }
        }
        if (type.items.empty())
            return t;
        throw CMxInvalidValueException(
            FormatString("The value [%s] is valid for none of the member types of %s", t.c_str(), type.name.c_str()));
    }
    }
    return text;
}

// The index of the value that `text` stands for, or -1.
int MatchEnumeration(std::vector<Enumeration> const *all, Enumeration const &e, std::string const &text)
{
    for (std::size_t i = 0; i < e.values.size(); ++i)
        if (e.values[i] == text)
            return static_cast<int>(i);
    std::string canonical;
    try
    {
        canonical = Canonical(all, e.type, text, e.name.c_str());
    }
    catch (CMxException const &)
    {
        return -1;
    }
    for (std::size_t i = 0; i < e.values.size(); ++i)
    {
        try
        {
            if (Canonical(all, e.type, e.values[i], e.name.c_str()) == canonical)
                return static_cast<int>(i);
        }
        catch (CMxException const &)
        {
        }
    }
    return -1;
}

template <std::size_t I> char const *EnumToString(int value)
{
    Enumeration const *e = g_enums[I].load(std::memory_order_acquire);
    if (e == nullptr || value < 0 || static_cast<std::size_t>(value) >= e->values.size())
        return "";
    return e->values[static_cast<std::size_t>(value)].c_str();
}

template <std::size_t I> int EnumFromString(char const *text)
{
    Enumeration const *e = g_enums[I].load(std::memory_order_acquire);
    if (e != nullptr)
    {
        int const index = MatchEnumeration(nullptr, *e, text ? text : "");
        if (index >= 0)
            return index;
    }
    throw CMxInvalidValueException(
        FormatString("Invalid value [%s] for the enumeration %s", text, e ? e->name.c_str() : "?"));
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
    std::string const type = Factory::GetElementType(element);
    int chosen = -1;
    if (type.empty())
        chosen = abs.baseClass;
    else
    {
        std::string const typeNs = Factory::GetElementTypeNamespaceUri(element);
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
    std::set<std::string> named;
    for (RootElement const &r : m.roots)
        named.insert(r.ns);
    for (ClassDef const &c : m.classes)
    {
        for (ElementRow const &r : c.elements)
            named.insert(r.ns);
        for (AttributeRow const &a : c.attributes)
            named.insert(a.ns);
    }
    for (ClassDef const &c : m.classes)
        if (c.hasBaseClasses && !c.ns.empty() && named.count(c.ns) == 0)
            data->typeOnlyNamespaces.insert(c.ns);
    data->slot = SetSlots().Take();
    if (data->slot < 0)
        throw CSchemaError("too many schema sets are loaded at once");
    for (Enumeration const &e : m.enumerations)
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
            c.simpleContentProperty >= 0 ? c.simpleContent.itemType : ItemType_None, nullptr, false);
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
    auto compile = [&data](ValueType const &v) {
        if (v.variety != ValueType::Variety::Atomic || v.enumeration >= 0 || v.itemType != ItemType_string ||
            v.facets.pattern.empty())
            return;
        SetData::Pattern p{v.facets, nullptr};
        p.otherFacets.pattern.clear();
        std::string converted;
        p.compiled = std::make_unique<CXsdPattern>(std::string(LocalToUtf8View(v.facets.pattern, converted)));
        data->patterns.emplace(&v, std::move(p));
    };
    for (ClassDef const &c : m.classes)
    {
        for (ElementRow const &r : c.elements)
            compile(r.value);
        for (AttributeRow const &a : c.attributes)
            compile(a.value);
        compile(c.simpleContent);
    }
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

namespace
{
// The facet check of a string with a pattern, as the run-time's check makes
// it, but with the pattern compiled when the set loaded.
void CheckCompiledPattern(char const *name, MxVariant const &value, Dynamic::SetData::Pattern const &pattern)
{
    CheckPrimitiveFacets(name, value, ItemType_string, pattern.otherFacets);
    std::string const text = value.GetString();
    bool matches;
    try
    {
        matches = pattern.compiled->Matches(text);
    }
    catch (CMxException const &e)
    {
        throw CMxException(FormatString("%s\nInvalid Value for %s [%s].", e.GetMessage().c_str(), name, text.c_str()));
    }
    if (!matches)
        throw CMxException(FormatString("Invalid Value for %s [%s].", name, text.c_str()));
}
} // namespace

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
    if (ValueType const *type = FacetedValue(index); type != nullptr && value.GetTypeAsEnum() != ItemType_None &&
                                                      !value.IsNil())
    {
        char const *name = GetClass().properties[static_cast<std::size_t>(index)].name.c_str();
        auto const pattern = m_set->patterns.find(type);
        if (pattern != m_set->patterns.end())
            CheckCompiledPattern(name, value, pattern->second);
        else if (type->variety == ValueType::Variety::Atomic && type->enumeration < 0)
            CheckPrimitiveFacets(name, value, type->itemType, type->facets);
        else
        {
            std::string const text =
                value.GetTypeAsEnum() == ItemType_string ? value.GetString() : value.ToString();
            Dynamic::Canonical(&m_set->model.enumerations, *type, text, name);
            Dynamic::CheckMember(&m_set->model.enumerations, *type, text);
        }
    }
    m_cells[static_cast<std::size_t>(index)] = value;
}

ValueType const *CDynamicObject::FacetedValue(int index) const
{
    ClassDef const &c = GetClass();
    Property const &p = c.properties[static_cast<std::size_t>(index)];
    if (p.holds != Property::Holds::Value)
        return nullptr;
    // Enumeration rows store the number of a value their functions found.
    if (p.row >= 0)
    {
        ElementRow const &row = c.elements[static_cast<std::size_t>(p.row)];
        return row.kind == RowKind::Enum ? nullptr : &row.value;
    }
    if (p.attribute >= 0)
    {
        AttributeRow const &a = c.attributes[static_cast<std::size_t>(p.attribute)];
        return a.kind == AttributeRow::Kind::Enum ? nullptr : &a.value;
    }
    return index == c.simpleContentProperty ? &c.simpleContent : nullptr;
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

void CDynamicObject::InitTree(std::vector<int> &chain)
{
    Init();
    chain.push_back(m_class);
    for (MxVariant &cell : m_cells)
    {
        auto *child = cell.GetTypeAsEnum() == ItemType_XmlObject
                          ? dynamic_cast<CDynamicObject *>(cell.GetXmlObject().Get())
                          : nullptr;
        // A type that must contain itself gets one level: no document can fill more.
        if (child != nullptr && std::find(chain.begin(), chain.end(), child->m_class) == chain.end())
            child->InitTree(chain);
    }
    chain.pop_back();
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

namespace
{
std::vector<std::string> QNameItems(std::vector<std::string> const &texts)
{
    std::vector<std::string> items;
    for (std::string const &text : texts)
        for (std::string &item : Dynamic::Items(CWhitespaceUtils::ApplyRule(WhitespaceRule::Collapse, text)))
            items.push_back(std::move(item));
    return items;
}

bool HoldsQName(ValueType const &type)
{
    if (type.qname)
        return true;
    for (ValueType const &item : type.items)
        if (HoldsQName(item))
            return true;
    return false;
}
} // namespace

CXmlElement *CDynamicObject::FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                         CSerializationContext const &context, bool optionalChoice)
{
    CXmlElement *const next = CXmlGeneratedClass::FromXml_Int(element, cursor, context, optionalChoice);
    m_prefixes.clear();
    if (element == nullptr || element->GetDocument() == nullptr)
        return next;
    ClassDef const &c = GetClass();
    for (std::size_t i = 0; i < m_cells.size(); ++i)
    {
        // The texts of a QName cell, or of a repeated QName element.
        std::vector<std::string> texts;
        Property const &p = c.properties[i];
        ValueType const *type = FacetedValue(static_cast<int>(i));
        if (type != nullptr && HoldsQName(*type) && m_cells[i].GetTypeAsEnum() == ItemType_string)
            texts.push_back(m_cells[i].GetString());
        else if (p.holds == Property::Holds::ValueCol && HoldsQName(c.elements[static_cast<std::size_t>(p.row)].value) &&
                 m_cells[i].GetTypeAsEnum() == ItemType_XmlObject)
            if (auto const *col = dynamic_cast<CstringCol const *>(m_cells[i].GetXmlObject().Get()))
                texts.assign(col->begin(), col->end());
        for (std::string const &item : QNameItems(texts))
        {
            std::size_t const colon = item.find(':');
            if (colon == std::string::npos)
                continue;
            std::string const prefix = item.substr(0, colon);
            std::string const uri = element->GetDocument()->LookupNamespaceFromAlias(prefix.c_str());
            if (!uri.empty())
                m_prefixes.emplace_back(prefix, uri);
        }
    }
    return next;
}

void CDynamicObject::ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                               CSerializationContext const &context, bool optionalChoice) const
{
    if (isRoot)
    {
        // Depth first over the objects of the document, without recursion:
        // documents nest as deep as their readers allow.
        std::vector<std::pair<std::string, std::string>> declared;
        std::set<std::string> typeNamespaces;
        std::vector<CXmlObjectBase const *> pending{this};
        while (!pending.empty())
        {
            CXmlObjectBase const *object = pending.back();
            pending.pop_back();
            if (auto const *col = dynamic_cast<CObjectCol const *>(object))
            {
                for (int i = col->GetCount() - 1; i >= 0; --i)
                    pending.push_back(col->GetAt(i));
                continue;
            }
            auto const *dynamic = dynamic_cast<CDynamicObject const *>(object);
            if (dynamic == nullptr)
                continue;
            // A prefix bound to two namespaces in two places is declared
            // where the first stands; the other is declared on its element.
            ClassDef const &c = dynamic->GetClass();
            if (c.hasBaseClasses && m_set->typeOnlyNamespaces.count(c.ns) != 0)
                typeNamespaces.insert(c.ns);
            for (auto const &binding : dynamic->m_prefixes)
                if (std::none_of(declared.begin(), declared.end(),
                                 [&](auto const &d) { return d.first == binding.first; }))
                    declared.push_back(binding);
            for (auto cell = dynamic->m_cells.rbegin(); cell != dynamic->m_cells.rend(); ++cell)
                if (cell->GetTypeAsEnum() == ItemType_XmlObject && !cell->GetXmlObject().IsNull())
                    pending.push_back(cell->GetXmlObject().Get());
        }
        int n = 0;
        for (std::string const &uri : typeNamespaces)
        {
            std::string prefix;
            do
                prefix = "ns" + std::to_string(++n);
            while (std::any_of(declared.begin(), declared.end(), [&](auto const &d) { return d.first == prefix; }));
            declared.emplace_back(prefix, uri);
        }
        for (auto const &[prefix, uri] : declared)
            writer->AddNamespace(prefix, uri);
    }
    CXmlGeneratedClass::ToXml_Int(writer, isRoot, namespaceUri, context, optionalChoice);
}

void CDynamicObject::AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const
{
    // The writer declares a prefix only where a name uses it; a prefix in a
    // value that the root has not declared is declared here by hand, and
    // entered in the scope so that the writer does not take it for another
    // namespace. A Fast Infoset writer has no context yet while it holds
    // the root's start: the root's own prefixes were all declared.
    // Every decision is taken before the first declaration changes the scope.
    CXmlWriter::CXmlWriterContext const *scope = writer->GetCurrentContext();
    std::vector<std::pair<std::string, std::string>> undeclared;
    for (auto const &binding : m_prefixes)
    {
        std::string const *known = scope ? scope->FindPrefix(binding.second) : nullptr;
        if (scope == nullptr || (known != nullptr && *known == binding.first) ||
            std::any_of(undeclared.begin(), undeclared.end(), [&](auto const &u) { return u.first == binding.first; }))
            continue;
        undeclared.push_back(binding);
    }
    for (auto const &[prefix, uri] : undeclared)
    {
        writer->AddNamespace(prefix, uri);
        writer->WriteAttribute("xmlns:" + prefix, std::string(), uri, ItemType_string);
    }
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
        return new CElement(name.c_str(), ns.c_str(), "##any", ns.c_str());
    CSmartPtr<CXmlObjectBase> made = m_data->Make(root.classIndex, root.nillable, name.c_str(), ns);
    std::vector<int> chain;
    static_cast<CDynamicObject *>(made.Get())->InitTree(chain);
    return made;
}

CSmartPtr<CXmlObjectBase> CSchemaSet::CreateFor(CXmlElement *root) const
{
    std::string const name = root->GetLocalName();
    std::string const ns = root->GetNamespaceURI();
    int const r = m_data->model.FindRoot(name, ns);
    if (r >= 0 && !m_data->model.roots[static_cast<std::size_t>(r)].untyped &&
        !Dynamic::Factory::GetElementType(root).empty())
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
    return CreateRoot(name, ns);
}

namespace
{
// Parses XML text or Fast Infoset, maybe compressed, or JSON by its XML
// translation (strict or not as the document's context says), into `document`.
// Returns whether the document came from JSON.
bool LoadDocument(CXmlDocument &document, CBinaryData const &bytes)
{
    CBinaryData plain(bytes);
    Decompress(plain);
    bool const json = LooksLikeJson(plain);
    if (json)
    {
        CBinaryData xml = document.LoadJsonStream(plain.GetData(), plain.GetLength());
        document.LoadXmlStream(xml.GetData(), xml.GetLength());
    }
    else
        document.LoadXmlStream(plain.GetData(), plain.GetLength());
    if (document.GetDocumentElement() == nullptr)
        throw CMxException("The document has no root element");
    return json;
}

// JSON that is not a full round trip keeps no namespaces, so its elements
// match by local name alone, as FromJson does.
CSerializationContext ReadingContext(CSerializationContext const &context, bool json)
{
    CSerializationContext reading(context);
    if (json && context.GetJsonContext().GetSupportRoundtrip() != RoundTripFull)
        reading.SetIgnoreNamespaces(true);
    return reading;
}

CSmartPtr<CXmlObjectBase> ReadInto(CSmartPtr<CXmlObjectBase> made, CXmlElement *root,
                                   CSerializationContext const &context)
{
    if (dynamic_cast<CElement *>(made.Get()) != nullptr)
        // An untyped element reads the element at the cursor, not its children.
        CXmlObjectBase::FromXml_Int(made, root, root, context);
    else
        made->FromXmlElement(root, context);
    return made;
}
} // namespace

CSmartPtr<CXmlObjectBase> CSchemaSet::Read(CBinaryData const &bytes, CSerializationContext const &context) const
{
    CXmlDocument document(context);
    bool const json = LoadDocument(document, bytes);
    CXmlElement *root = document.GetDocumentElement();
    return ReadInto(CreateFor(root), root, ReadingContext(context, json));
}

CSmartPtr<CXmlObjectBase> ReadUntyped(CBinaryData const &bytes, CSerializationContext const &context)
{
    CXmlDocument document(context);
    bool const json = LoadDocument(document, bytes);
    CXmlElement *root = document.GetDocumentElement();
    return ReadInto(new CElement("document"), root, ReadingContext(context, json));
}

bool LooksLikeJson(CBinaryData const &bytes)
{
    unsigned char const *p = bytes.GetData();
    unsigned long const n = bytes.GetLength();
    unsigned long i = 0;
    // A UTF-8 byte order mark may stand first.
    if (n >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF)
        i = 3;
    for (; i < n; ++i)
        if (p[i] != ' ' && p[i] != '\t' && p[i] != '\r' && p[i] != '\n')
            return p[i] == '{';
    return false;
}

} // namespace MxCompiler
