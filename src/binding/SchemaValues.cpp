#include "binding/SchemaValues.h"

#include "collections/Attribute.h"
#include "collections/AttributeCol.h"
#include "collections/Element.h"
#include "collections/ElementCol.h"
#include "collections/PrimitiveCollections.h"
#include "document/XmlDocument.h"
#include "metadata/ElementInfo.h"
#include "document/XmlWriter.h"
#include "fastinfoset/FastInfosetWriter.h"
#include "json/JsonContext.h"
#include "runtime/Compression.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/Conversions.h"
#include "values/FacetCheck.h"

#include <algorithm>

namespace MxXmlLib
{

using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;

CSchemaValueType::CSchemaValueType(Variety variety_, char const *name_, ItemType itemType_, WhitespaceRule whitespace_,
                                   CPrimitiveRestrictions const &facets_, int enumeration_, bool qname_,
                                   int listLength_, int listMinLength_, int listMaxLength_,
                                   std::vector<CSchemaValueType> items_)
    : name(name_ ? name_ : ""), variety(variety_), itemType(itemType_), whitespace(whitespace_), facets(facets_),
      enumeration(enumeration_), qname(qname_), listLength(listLength_), listMinLength(listMinLength_),
      listMaxLength(listMaxLength_), items(std::move(items_))
{
}

namespace
{

bool HasFacet(int facet)
{
    return facet >= 0;
}

std::string const &Bound(CPrimitiveRestrictions const &facets, int i)
{
    std::string const *const bounds[4] = {&facets.minInclusive, &facets.maxInclusive, &facets.minExclusive,
                                          &facets.maxExclusive};
    return *bounds[i];
}

bool HasBounds(CPrimitiveRestrictions const &facets)
{
    for (int i = 0; i < 4; ++i)
        if (!Bound(facets, i).empty())
            return true;
    return false;
}

// The types whose facet check has a case of its own; any other (char) is
// refused by it whatever its facets.
bool HasFacetCheck(ItemType type)
{
    return type >= ItemType_hexBinary && type <= ItemType_integer && type != ItemType_char;
}

// The integer types whose values a long long holds.
bool IsWidenedInteger(ItemType type)
{
    return type >= ItemType_i1 && type <= ItemType_ui4;
}

// The bound as the facet check reads it (collapsed, then parsed as the
// value's own type), widened; false when it does not parse, which the
// general check reports.
bool ReadIntegerBound(ItemType type, std::string const &text, long long &bound)
{
    using C = CConversions;
    WhitespaceRule const rule = WhitespaceRule::Collapse;
    try
    {
        switch (type)
        {
        case ItemType_i1:
            bound = C::i1FromString(text, rule);
            return true;
        case ItemType_i2:
            bound = C::i2FromString(text, rule);
            return true;
        case ItemType_i4:
            bound = C::i4FromString(text, rule);
            return true;
        case ItemType_i8:
            bound = C::i8FromString(text, rule);
            return true;
        case ItemType_ui1:
            bound = C::ui1FromString(text, rule);
            return true;
        case ItemType_ui2:
            bound = C::ui2FromString(text, rule);
            return true;
        case ItemType_ui4:
            bound = C::ui4FromString(text, rule);
            return true;
        default:
            return false;
        }
    }
    catch (CMxException const &)
    {
        return false;
    }
}

// The value of an integer cell of `type`, widened; false for a cell of
// another type.
bool ReadInteger(MxVariant const &cell, ItemType type, long long &value)
{
    if (cell.GetTypeAsEnum() != type)
        return false;
    switch (type)
    {
    case ItemType_i1:
        value = cell.GetI1();
        return true;
    case ItemType_i2:
        value = cell.GetI2();
        return true;
    case ItemType_i4:
        value = cell.GetI4();
        return true;
    case ItemType_i8:
        value = cell.GetI8();
        return true;
    case ItemType_ui1:
        value = cell.GetUI1();
        return true;
    case ItemType_ui2:
        value = cell.GetUI2();
        return true;
    case ItemType_ui4:
        value = cell.GetUI4();
        return true;
    default:
        return false;
    }
}

template <typename T, typename Bounds> bool WithinBounds(T const &value, Bounds const &bounds)
{
    return (!bounds.present[0] || value >= bounds.value[0]) && (!bounds.present[1] || value <= bounds.value[1]) &&
           (!bounds.present[2] || value > bounds.value[2]) && (!bounds.present[3] || value < bounds.value[3]);
}

} // namespace

void CSchemaValueType::PreparePattern()
{
    m_prepared = Prepared::None;
    m_pattern.reset();
    m_decimalBounds.reset();
    if (variety != Variety::Atomic || enumeration >= 0)
        return;
    if (AcceptsEveryValue())
    {
        m_prepared = Prepared::Nothing;
        return;
    }
    if (itemType == ItemType_string && !facets.pattern.empty())
    {
        std::string converted;
        m_pattern = std::make_shared<CXsdPattern const>(std::string(LocalToUtf8View(facets.pattern, converted)), true);
        m_prepared = Prepared::Pattern;
        return;
    }
    if (HasFacet(facets.totalDigits))
        return;
    if (itemType == ItemType_decimal)
    {
        auto bounds = std::make_shared<Bounds<CDecimal>>();
        for (int i = 0; i < 4; ++i)
        {
            std::string const &text = Bound(facets, i);
            if (text.empty())
                continue;
            try
            {
                bounds->value[i] = CConversions::decimalFromString(text, WhitespaceRule::Collapse);
            }
            catch (CMxException const &)
            {
                return;
            }
            bounds->present[i] = true;
        }
        m_decimalBounds = std::move(bounds);
        m_prepared = Prepared::Decimal;
        return;
    }
    if (!IsWidenedInteger(itemType))
        return;
    Bounds<long long> bounds;
    for (int i = 0; i < 4; ++i)
    {
        std::string const &text = Bound(facets, i);
        if (text.empty())
            continue;
        if (!ReadIntegerBound(itemType, text, bounds.value[i]))
            return;
        bounds.present[i] = true;
    }
    m_bounds = bounds;
    m_prepared = Prepared::Integer;
}

bool CSchemaValueType::AcceptsEveryValue() const
{
    return variety == Variety::Atomic && enumeration < 0 && HasFacetCheck(itemType) && facets.pattern.empty() &&
           !HasBounds(facets) && !HasFacet(facets.minLength) && !HasFacet(facets.maxLength) &&
           !HasFacet(facets.length) && !HasFacet(facets.totalDigits) && !HasFacet(facets.fractionDigits);
}

bool CSchemaValueType::PassesPrepared(MxVariant const &value) const
{
    switch (m_prepared)
    {
    case Prepared::None:
        return false;
    case Prepared::Nothing:
        return true;
    case Prepared::Pattern:
    {
        std::string const &text = value.GetStringRef();
        std::size_t const size = text.size();
        if ((HasFacet(facets.minLength) && size < static_cast<std::size_t>(facets.minLength)) ||
            (HasFacet(facets.maxLength) && size > static_cast<std::size_t>(facets.maxLength)) ||
            (HasFacet(facets.length) && size != static_cast<std::size_t>(facets.length)))
            return false;
        try
        {
            return m_pattern->Matches(text);
        }
        catch (CMxException const &)
        {
            return false;
        }
    }
    case Prepared::Integer:
    {
        long long v = 0;
        return ReadInteger(value, itemType, v) && WithinBounds(v, m_bounds);
    }
    case Prepared::Decimal:
    {
        CDecimal const *v = value.GetTypeAsEnum() == ItemType_decimal ? value.PeekDecimal() : nullptr;
        // Fewer places held than allowed means fewer significant ones.
        if (v == nullptr || (HasFacet(facets.fractionDigits) && v->GetFractionDivider() > facets.fractionDigits))
            return false;
        return WithinBounds(*v, *m_decimalBounds);
    }
    }
    return false;
}

bool CSchemaValueType::HoldsQName() const
{
    if (qname)
        return true;
    for (CSchemaValueType const &item : items)
        if (item.HoldsQName())
            return true;
    return false;
}

namespace
{

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

void CheckPattern(CSchemaValueType const &type, std::string const &text, char const *name)
{
    if (type.facets.pattern.empty())
        return;
    CPrimitiveRestrictions pattern(type.facets.pattern.c_str(), -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
    MxVariant v;
    v.SetString(text);
    CheckPrimitiveFacets(name, v, ItemType_string, pattern);
}

// The facet check of a string with a pattern, as CheckPrimitiveFacets makes
// it, but with the pattern compiled once.
void CheckPreparedPattern(char const *name, MxVariant const &value, CSchemaValueType const &type)
{
    CPrimitiveRestrictions others = type.facets;
    others.pattern.clear();
    CheckPrimitiveFacets(name, value, ItemType_string, others);
    std::string const text = value.GetString();
    bool matches;
    try
    {
        matches = type.GetPreparedPattern()->Matches(text);
    }
    catch (CMxException const &e)
    {
        throw CMxException(FormatString("%s\nInvalid Value for %s [%s].", e.GetMessage().c_str(), name, text.c_str()));
    }
    if (!matches)
        throw CMxException(FormatString("Invalid Value for %s [%s].", name, text.c_str()));
}

} // namespace

void CheckSchemaEnumeration(CSchemaEnumerations const *all, CSchemaValueType const &type, std::string const &text)
{
    if (type.enumeration < 0 || all == nullptr)
        return;
    CSchemaEnumeration const &e = (*all)[static_cast<std::size_t>(type.enumeration)];
    if (MatchSchemaEnumeration(all, e, text) < 0)
        throw CMxInvalidValueException(
            FormatString("Invalid value [%s] for the enumeration %s", text.c_str(), e.name.c_str()));
}

std::string CanonicalSchemaValue(CSchemaEnumerations const *all, CSchemaValueType const &type,
                                 std::string const &text, char const *name)
{
    switch (type.variety)
    {
    case CSchemaValueType::Variety::Atomic:
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
    case CSchemaValueType::Variety::List:
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
            std::string const c = CanonicalSchemaValue(all, type.items.front(), item, name);
            CheckSchemaEnumeration(all, type.items.front(), item);
            canonical += (canonical.empty() ? "" : " ") + c;
        }
        return canonical;
    }
    case CSchemaValueType::Variety::Union:
    {
        std::string const t = CWhitespaceUtils::ApplyRule(type.whitespace, text);
        CheckPattern(type, t, name);
        for (CSchemaValueType const &member : type.items)
        {
            try
            {
                std::string const c = CanonicalSchemaValue(all, member, text, name);
                CheckSchemaEnumeration(all, member, text);
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

int MatchSchemaEnumeration(CSchemaEnumerations const *all, CSchemaEnumeration const &e, std::string const &text)
{
    for (std::size_t i = 0; i < e.values.size(); ++i)
        if (e.values[i] == text)
            return static_cast<int>(i);
    std::string canonical;
    try
    {
        canonical = CanonicalSchemaValue(all, e.type, text, e.name.c_str());
    }
    catch (CMxException const &)
    {
        return -1;
    }
    for (std::size_t i = 0; i < e.values.size(); ++i)
    {
        try
        {
            if (CanonicalSchemaValue(all, e.type, e.values[i], e.name.c_str()) == canonical)
                return static_cast<int>(i);
        }
        catch (CMxException const &)
        {
        }
    }
    return -1;
}

char const *SchemaEnumerationToString(CSchemaEnumeration const &e, int value)
{
    if (value < 0 || static_cast<std::size_t>(value) >= e.values.size())
        return "";
    return e.values[static_cast<std::size_t>(value)].c_str();
}

int SchemaEnumerationFromString(CSchemaEnumeration const &e, char const *text)
{
    int const index = MatchSchemaEnumeration(nullptr, e, text ? text : "");
    if (index >= 0)
        return index;
    throw CMxInvalidValueException(FormatString("Invalid value [%s] for the enumeration %s", text, e.name.c_str()));
}

void CheckStoredSchemaValue(CSchemaEnumerations const *all, CSchemaValueType const &type, char const *name,
                            MxVariant const &value)
{
    if (value.GetTypeAsEnum() == ItemType_None || value.IsNil() || type.PassesPrepared(value))
        return;
    if (type.GetPreparedPattern() != nullptr)
        CheckPreparedPattern(name, value, type);
    else if (type.variety == CSchemaValueType::Variety::Atomic && type.enumeration < 0)
        CheckPrimitiveFacets(name, value, type.itemType, type.facets);
    else
    {
        std::string const text = value.GetTypeAsEnum() == ItemType_string ? value.GetString() : value.ToString();
        CanonicalSchemaValue(all, type, text, name);
        CheckSchemaEnumeration(all, type, text);
    }
}

bool ReadsSchemaText(ItemType itemType)
{
    return itemType != ItemType_None && itemType != ItemType_string;
}

void ApplyContentDefault(char const *defaultText, MxVariant &value)
{
    if (value.GetTypeAsEnum() == ItemType_string && value.GetString().empty())
        value.SetString(defaultText);
}

void ConvertSchemaText(CSchemaValueType const &type, MxVariant &value)
{
    if (value.GetTypeAsEnum() != ItemType_string)
        return;
    if (type.variety != CSchemaValueType::Variety::Atomic || !ReadsSchemaText(type.itemType))
    {
        // Held as text: stored as the schema normalises it, as a value row
        // of the type stores it.
        if (type.whitespace != WhitespaceRule::Preserve)
            value.SetString(CWhitespaceUtils::ApplyRule(type.whitespace, value.GetString()));
        return;
    }
    MxVariant typed;
    typed.FromString(value.GetString(), type.itemType, type.whitespace);
    value = std::move(typed);
}

namespace
{
void CollectValuePrefixes(CXmlElement const *element, std::string const &value, bool &defaultNoted,
                          SchemaValuePrefixes &prefixes)
{
    std::string const text = CWhitespaceUtils::ApplyRule(WhitespaceRule::Collapse, value);
    for (std::string const &item : Items(text))
    {
        std::size_t const colon = item.find(':');
        if (colon == std::string::npos)
        {
            // An unprefixed name is in the default namespace, noted once. It
            // is declared again only where no element child could fall under it.
            if (!defaultNoted && element->GetFirstElement() == nullptr)
            {
                std::string const uri = element->GetDocument()->LookupNamespaceFromAlias("");
                if (!uri.empty())
                    prefixes.emplace_back(std::string(), uri);
            }
            defaultNoted = true;
            continue;
        }
        std::string const prefix = item.substr(0, colon);
        std::string const uri = element->GetDocument()->LookupNamespaceFromAlias(prefix.c_str());
        if (!uri.empty())
            prefixes.emplace_back(prefix, uri);
    }
}
} // namespace

void CollectSchemaValuePrefixes(CXmlElement const *element, CSchemaValueType const &type, MxVariant const &cell,
                                SchemaValuePrefixes &prefixes)
{
    if (element == nullptr || element->GetDocument() == nullptr || !type.HoldsQName() ||
        cell.GetTypeAsEnum() != ItemType_string)
        return;
    bool defaultNoted = false;
    CollectValuePrefixes(element, cell.GetString(), defaultNoted, prefixes);
}

void CollectQNameCollectionPrefixes(CXmlElement const *element, MxVariant const &cell, SchemaValuePrefixes &prefixes)
{
    if (element == nullptr || element->GetDocument() == nullptr || cell.GetTypeAsEnum() != ItemType_XmlObject)
        return;
    bool defaultNoted = false;
    if (auto const *items = dynamic_cast<CstringCol const *>(cell.GetXmlObject().Get()))
        for (std::string const &item : *items)
            CollectValuePrefixes(element, item, defaultNoted, prefixes);
}

namespace
{
char const kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

void CollectTypePrefixes(CXmlDocument const &document, CElement const &untyped, SchemaValuePrefixes &prefixes)
{
    for (CAttribute const *attribute : *untyped.GetAttributes())
    {
        if (attribute->GetName() != "type" || attribute->GetNamespace() != kXsiNamespace)
            continue;
        std::string const value = CWhitespaceUtils::ApplyRule(WhitespaceRule::Collapse, attribute->GetValue());
        std::size_t const colon = value.find(':');
        if (colon == std::string::npos)
            continue;
        std::string const prefix = value.substr(0, colon);
        std::string const uri = document.LookupNamespaceFromAlias(prefix.c_str());
        if (!uri.empty())
            prefixes.emplace_back(prefix, uri);
    }
    for (CElement const *child : *untyped.GetChildElements())
        CollectTypePrefixes(document, *child, prefixes);
}
} // namespace

void CollectInlinePrefixes(MxVariant const &cell, SchemaValuePrefixes &prefixes)
{
    if (cell.GetTypeAsEnum() != ItemType_XmlObject)
        return;
    auto const add = [&prefixes](CXmlObjectBase const *object) {
        if (auto const *holder = dynamic_cast<CSchemaPrefixHolder const *>(object))
            prefixes.insert(prefixes.end(), holder->GetValuePrefixes().begin(), holder->GetValuePrefixes().end());
    };
    CSmartPtr<CXmlObjectBase> const object = cell.GetXmlObject();
    if (auto const *collection = dynamic_cast<CXmlCollection const *>(object.Get()))
    {
        for (CXmlCollection::CNode const *node = collection->GetFirstNode(); node != nullptr; node = node->next)
            add(node->item.Get());
    }
    else
        add(object.Get());
}

void CollectUntypedTypePrefixes(CXmlElement const *element, MxVariant const &cell, SchemaValuePrefixes &prefixes)
{
    if (element == nullptr || element->GetDocument() == nullptr || cell.GetTypeAsEnum() != ItemType_XmlObject)
        return;
    CSmartPtr<CXmlObjectBase> const object = cell.GetXmlObject();
    if (auto const *untyped = dynamic_cast<CElement const *>(object.Get()))
        CollectTypePrefixes(*element->GetDocument(), *untyped, prefixes);
    else if (auto const *collection = dynamic_cast<CElementCol const *>(object.Get()))
        for (CElement const *item : *collection)
            CollectTypePrefixes(*element->GetDocument(), *item, prefixes);
}

namespace
{
std::string TypeAttributeValue(CXmlElement *element)
{
    return CWhitespaceUtils::ApplyRule(WhitespaceRule::Collapse,
                                       element->GetAttribute("type", kXsiNamespace));
}
} // namespace

std::string SchemaElementType(CXmlElement *element)
{
    std::string const value = TypeAttributeValue(element);
    std::size_t const colon = value.find(':');
    return colon == std::string::npos ? value : value.substr(colon + 1);
}

std::string SchemaElementTypeNamespaceUri(CXmlElement *element)
{
    std::string const value = TypeAttributeValue(element);
    std::size_t const colon = value.find(':');
    if (element->GetDocument() == nullptr)
        return element->GetNamespaceURI();
    // As a QName: an unprefixed name is in the default namespace, or in
    // none; a prefix nobody declared names no namespace of the set.
    std::string const prefix = colon == std::string::npos ? std::string() : value.substr(0, colon);
    std::string const uri = element->GetDocument()->LookupNamespaceFromAlias(prefix.c_str());
    return uri.empty() && !prefix.empty() ? std::string(1, ':') + prefix : uri;
}

CSchemaUntypedRoot::CSchemaUntypedRoot(char const *name, char const *namespaceUri)
    : CElement(name, namespaceUri, "##any", namespaceUri)
{
}

CSchemaUntypedRoot::~CSchemaUntypedRoot() = default;

CXmlElement *CSchemaUntypedRoot::FromXml_Int(CXmlElement *parent, CXmlElement *current,
                                             CSerializationContext const &context, bool optionalChoice)
{
    CXmlElement *const next = CElement::FromXml_Int(parent, current, context, optionalChoice);
    m_prefixes.clear();
    if (current != nullptr && current->GetDocument() != nullptr)
        CollectTypePrefixes(*current->GetDocument(), *this, m_prefixes);
    return next;
}

void CSchemaUntypedRoot::ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                                   CSerializationContext const &context, bool optionalChoice) const
{
    if (m_prefixes.empty() || !GetDefaultNamespace().empty())
    {
        CElement::ToXml_Int(writer, isRoot, namespaceUri, context, optionalChoice);
        return;
    }
    // As CElement writes itself, with the prefixes declared first.
    writer->StartElement(GetName(), GetNamespace());
    DeclareSchemaValuePrefixes(writer, m_prefixes);
    CXmlObjectBase::ToXml_Int(GetAttributes().Get(), writer, false, namespaceUri, context, false);
    CXmlObjectBase::ToXml_Int(GetChildElements().Get(), writer, false, namespaceUri, context, optionalChoice);
    writer->WriteText(GetText(), ItemType_string, false);
    writer->EndElement();
}

void DeclareSchemaValuePrefixes(CXmlWriter *writer, SchemaValuePrefixes const &prefixes)
{
    // The writer declares a prefix only where a name uses it; a prefix in a
    // value is declared by hand, once, unless an enclosing element declared
    // it already, and entered in the scope so that the writer does not take
    // it for another namespace. Every decision is taken before the first
    // declaration changes the scope.
    CXmlWriter::CXmlWriterContext const *scope = writer->GetCurrentContext();
    auto const *fastInfoset = dynamic_cast<CFastInfosetWriter const *>(writer);
    bool const namespaceBlock = fastInfoset != nullptr && fastInfoset->TakesNamespaces();
    CXmlWriter::CXmlWriterContext const *element = namespaceBlock ? fastInfoset->GetPendingElement() : scope;
    SchemaValuePrefixes undeclared;
    for (auto const &binding : prefixes)
    {
        if (binding.first.empty())
        {
            // The element's own name must keep its namespace: one in no
            // namespace, or written without a prefix, cannot take a default.
            if (element == nullptr || element->GetEffectiveDefaultNamespace() == binding.second ||
                element->NamespaceUri.empty() ||
                (!namespaceBlock && element->NamespaceUri == element->GetEffectiveDefaultNamespace()))
                continue;
        }
        std::string const *known = scope ? scope->FindPrefix(binding.second) : nullptr;
        if ((known != nullptr && *known == binding.first) ||
            std::any_of(undeclared.begin(), undeclared.end(), [&](auto const &u) { return u.first == binding.first; }))
            continue;
        undeclared.push_back(binding);
    }
    // A Fast Infoset writer asked to read back as XML takes the mappings of
    // the element whose start it holds into that element's namespace block,
    // where an attribute could not mark them as declarations.
    for (auto const &[prefix, uri] : undeclared)
    {
        if (prefix.empty())
            writer->SetDefaultNamespace(uri);
        else
            writer->AddNamespace(prefix, uri);
        if (!namespaceBlock)
            writer->WriteAttribute(prefix.empty() ? "xmlns" : "xmlns:" + prefix, std::string(), uri, ItemType_string);
    }
}

namespace
{
void InitSchemaTree(CXmlGeneratedClass &object, std::vector<MxXmlLibData::CParentElementInfo const *> &chain)
{
    object.Init();
    chain.push_back(object.GetParentElementInfo());
    for (MxXmlLibData::CElementInfo **row = object.GetClassElementInfo(); row != nullptr && *row != nullptr; ++row)
    {
        int const property = (*row)->GetPropertyIndex();
        if (property < 0)
            continue;
        MxVariant cell;
        object.AccessProperty(property, true, cell);
        auto *child = cell.GetTypeAsEnum() == ItemType_XmlObject
                          ? dynamic_cast<CXmlGeneratedClass *>(cell.GetXmlObject().Get())
                          : nullptr;
        if (child != nullptr && std::find(chain.begin(), chain.end(), child->GetParentElementInfo()) == chain.end())
            InitSchemaTree(*child, chain);
    }
    chain.pop_back();
}
} // namespace

void InitSchemaTree(CXmlGeneratedClass &object)
{
    std::vector<MxXmlLibData::CParentElementInfo const *> chain;
    InitSchemaTree(object, chain);
}

bool LooksLikeJsonDocument(CBinaryData const &bytes)
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

CSmartPtr<CXmlObjectBase> ReadSchemaDocument(CBinaryData const &bytes, CSerializationContext const &context,
                                             SchemaRootFactory const &createFor)
{
    CXmlDocument document(context);
    CBinaryData plain(bytes);
    Decompress(plain);
    bool const json = LooksLikeJsonDocument(plain);
    if (json)
    {
        CBinaryData xml = document.LoadJsonStream(plain.GetData(), plain.GetLength());
        document.LoadXmlStream(xml.GetData(), xml.GetLength());
    }
    else
        document.LoadXmlStream(plain.GetData(), plain.GetLength());
    CXmlElement *root = document.GetDocumentElement();
    if (root == nullptr)
        throw CMxException("The document has no root element");
    CSerializationContext reading(context);
    if (json && context.GetJsonContext().GetSupportRoundtrip() != RoundTripFull)
        reading.SetIgnoreNamespaces(true);
    CSmartPtr<CXmlObjectBase> made = createFor(root);
    if (dynamic_cast<CElement *>(made.Get()) != nullptr)
        // An untyped element reads the element at the cursor, not its children.
        CXmlObjectBase::FromXml_Int(made, root, root, reading);
    else
        made->FromXmlElement(root, reading);
    return made;
}

} // namespace MxXmlLib
