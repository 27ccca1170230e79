#include "frontend/XsdFrontend.h"
#include "frontend/XsdRegex.h"

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/framework/psvi/XSAttributeDeclaration.hpp>
#include <xercesc/framework/psvi/XSAttributeUse.hpp>
#include <xercesc/framework/psvi/XSComplexTypeDefinition.hpp>
#include <xercesc/framework/psvi/XSElementDeclaration.hpp>
#include <xercesc/framework/psvi/XSModel.hpp>
#include <xercesc/framework/psvi/XSModelGroup.hpp>
#include <xercesc/framework/psvi/XSNamedMap.hpp>
#include <xercesc/framework/psvi/XSParticle.hpp>
#include <xercesc/framework/psvi/XSSimpleTypeDefinition.hpp>
#include <xercesc/framework/psvi/XSWildcard.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace MxCompiler
{

namespace
{
using namespace xercesc;

constexpr char const *kXsdNamespace = "http://www.w3.org/2001/XMLSchema";
// Nesting of groups and anonymous types that the model follows; deeper
// schemas are refused rather than risking the stack.
constexpr int kMaxNesting = 200;
// The declared elements a strict wildcard may bind as alternatives.
constexpr std::size_t kMaxStrictAlternatives = 256;

std::string Utf8(XMLCh const *text)
{
    if (text == nullptr)
        return std::string();
    TranscodeToStr bytes(text, "UTF-8");
    return std::string(reinterpret_cast<char const *>(bytes.str()), bytes.length());
}

// Xerces is initialised once per process and never terminated: other code
// in the process may use it too, and terminating under it would break it.
void InitialiseXerces()
{
    static std::once_flag once;
    std::call_once(once, [] { XMLPlatformUtils::Initialize(); });
}

// Keeps the first error, with file, line and column.
class CollectingErrorHandler : public ErrorHandler
{
public:
    void warning(SAXParseException const &) override {}
    void error(SAXParseException const &e) override { Keep(e); }
    void fatalError(SAXParseException const &e) override { Keep(e); }
    void resetErrors() override {}
    std::string const &First() const { return m_first; }

private:
    void Keep(SAXParseException const &e)
    {
        if (!m_first.empty())
            return;
        m_first = Utf8(e.getSystemId()) + ":" + std::to_string(e.getLineNumber()) + ":" +
                  std::to_string(e.getColumnNumber()) + ": " + Utf8(e.getMessage());
    }
    std::string m_first;
};

// Schemas are local files: a location on the network is refused instead of
// fetched, so that loading never waits on a remote host, unless the caller
// names a local copy for it.
class LocalOnlyResolver : public EntityResolver
{
public:
    explicit LocalOnlyResolver(SchemaLocations const &locations) : m_locations(locations) {}

    InputSource *resolveEntity(XMLCh const *, XMLCh const *systemId) override
    {
        std::string const system = Utf8(systemId);
        auto const local = m_locations.find(system);
        if (local != m_locations.end())
        {
            if (!std::ifstream(local->second).good())
                throw CSchemaError(local->second + " (the local copy of " + system + "): " + std::strerror(errno));
            XMLCh *path = XMLString::transcode(local->second.c_str());
            auto *source = new LocalFileInputSource(path);
            XMLString::release(&path);
            return source;
        }
        if (system.rfind("http:", 0) == 0 || system.rfind("https:", 0) == 0 || system.rfind("ftp:", 0) == 0)
            throw CSchemaError("the schema location " + system + " is on the network; only local files are read");
        return nullptr;
    }

private:
    SchemaLocations const &m_locations;
};

struct Builtin
{
    char const *name;
    ItemType type;
    WhitespaceRule whitespace;
};

constexpr Builtin kBuiltins[] = {
    {"string", MxXmlLib::ItemType_string, WhitespaceRule::Preserve},
    {"normalizedString", MxXmlLib::ItemType_string, WhitespaceRule::Replace},
    {"token", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"language", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"Name", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"NCName", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"NMTOKEN", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"ID", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"IDREF", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"ENTITY", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"anyURI", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"QName", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"NOTATION", MxXmlLib::ItemType_string, WhitespaceRule::Collapse},
    {"boolean", MxXmlLib::ItemType_boolean, WhitespaceRule::Collapse},
    {"decimal", MxXmlLib::ItemType_decimal, WhitespaceRule::Collapse},
    {"integer", MxXmlLib::ItemType_integer, WhitespaceRule::Collapse},
    {"nonPositiveInteger", MxXmlLib::ItemType_integer, WhitespaceRule::Collapse},
    {"negativeInteger", MxXmlLib::ItemType_integer, WhitespaceRule::Collapse},
    {"nonNegativeInteger", MxXmlLib::ItemType_integer, WhitespaceRule::Collapse},
    {"positiveInteger", MxXmlLib::ItemType_integer, WhitespaceRule::Collapse},
    {"long", MxXmlLib::ItemType_i8, WhitespaceRule::Collapse},
    {"int", MxXmlLib::ItemType_i4, WhitespaceRule::Collapse},
    {"short", MxXmlLib::ItemType_i2, WhitespaceRule::Collapse},
    {"byte", MxXmlLib::ItemType_i1, WhitespaceRule::Collapse},
    {"unsignedLong", MxXmlLib::ItemType_ui8, WhitespaceRule::Collapse},
    {"unsignedInt", MxXmlLib::ItemType_ui4, WhitespaceRule::Collapse},
    {"unsignedShort", MxXmlLib::ItemType_ui2, WhitespaceRule::Collapse},
    {"unsignedByte", MxXmlLib::ItemType_ui1, WhitespaceRule::Collapse},
    {"float", MxXmlLib::ItemType_r4, WhitespaceRule::Collapse},
    {"double", MxXmlLib::ItemType_r8, WhitespaceRule::Collapse},
    {"duration", MxXmlLib::ItemType_duration, WhitespaceRule::Collapse},
    {"dateTime", MxXmlLib::ItemType_datetime, WhitespaceRule::Collapse},
    {"date", MxXmlLib::ItemType_date, WhitespaceRule::Collapse},
    {"time", MxXmlLib::ItemType_time, WhitespaceRule::Collapse},
    {"gYearMonth", MxXmlLib::ItemType_yearMonth, WhitespaceRule::Collapse},
    {"gYear", MxXmlLib::ItemType_year, WhitespaceRule::Collapse},
    {"gMonthDay", MxXmlLib::ItemType_monthDay, WhitespaceRule::Collapse},
    {"gDay", MxXmlLib::ItemType_day, WhitespaceRule::Collapse},
    {"gMonth", MxXmlLib::ItemType_month, WhitespaceRule::Collapse},
    {"hexBinary", MxXmlLib::ItemType_hexBinary, WhitespaceRule::Collapse},
    {"base64Binary", MxXmlLib::ItemType_base64Binary, WhitespaceRule::Collapse},
    {"anySimpleType", MxXmlLib::ItemType_string, WhitespaceRule::Preserve},
};

Builtin const *FindBuiltin(std::string const &name)
{
    for (Builtin const &b : kBuiltins)
        if (name == b.name)
            return &b;
    return nullptr;
}

bool IsXsd(XSTypeDefinition *type, char const *name)
{
    return Utf8(type->getNamespace()) == kXsdNamespace && Utf8(type->getName()) == name;
}

bool IsBuiltIn(XSTypeDefinition *type)
{
    return Utf8(type->getNamespace()) == kXsdNamespace;
}

std::string Identifier(std::string const &text)
{
    std::string id;
    for (char c : text)
    {
        bool const ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        id += ok ? c : '_';
    }
    if (id.empty() || (id[0] >= '0' && id[0] <= '9'))
        id.insert(0, "T");
    return id;
}

int Bound(XMLSize_t n)
{
    return n > static_cast<XMLSize_t>(INT_MAX) ? -1 : static_cast<int>(n);
}

// Whether a particle can match nothing at all.
bool Emptiable(XSParticle *p)
{
    if (p->getMinOccurs() == 0)
        return true;
    if (p->getTermType() != XSParticle::TERM_MODELGROUP)
        return false;
    XSModelGroup *g = p->getModelGroupTerm();
    XSParticleList *list = g->getParticles();
    std::size_t const n = list ? list->size() : 0;
    if (n == 0)
        return true;
    bool const choice = g->getCompositor() == XSModelGroup::COMPOSITOR_CHOICE;
    for (std::size_t i = 0; i < n; ++i)
    {
        bool const e = Emptiable(list->elementAt(i));
        if (choice && e)
            return true;
        if (!choice && !e)
            return false;
    }
    return !choice;
}

class Builder
{
public:
    explicit Builder(XSModel *xs) : m_xs(xs) {}

    Model Build(std::vector<std::string> const &files)
    {
        m_model.schemaFiles = files;
        CollectSubstitutionGroups();
        // Every named complex type gets its class first, so that derivations
        // are known before any row decides between Cls and AbsCls.
        XSNamedMap<XSObject> *types = m_xs->getComponents(XSConstants::TYPE_DEFINITION);
        for (XMLSize_t i = 0; types && i < types->getLength(); ++i)
        {
            auto *t = static_cast<XSTypeDefinition *>(types->item(i));
            if (t->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE && Utf8(t->getNamespace()) != kXsdNamespace)
                ClassFor(static_cast<XSComplexTypeDefinition *>(t), "");
            else if (t->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE && t->getBaseType() != nullptr &&
                     t->getBaseType() != t && t->getBaseType()->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE)
                m_simpleDerived[static_cast<XSSimpleTypeDefinition *>(t->getBaseType())].push_back(
                    static_cast<XSSimpleTypeDefinition *>(t));
        }
        XSNamedMap<XSObject> *elements = m_xs->getComponents(XSConstants::ELEMENT_DECLARATION);
        for (XMLSize_t i = 0; elements && i < elements->getLength(); ++i)
            AddRoot(static_cast<XSElementDeclaration *>(elements->item(i)));
        // A set of types alone binds documents only through xsi:type on a
        // document element that nothing declares, which may name one of its
        // simple types: each gets a class then. (Complex types always have
        // theirs; a class per simple type of every set would grow generated
        // code by a tenth or more for documents that are rare.)
        bool const typesOnly = elements == nullptr || elements->getLength() == 0;
        for (XMLSize_t i = 0; typesOnly && types && i < types->getLength(); ++i)
        {
            auto *t = static_cast<XSTypeDefinition *>(types->item(i));
            if (t->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE && Utf8(t->getNamespace()) != kXsdNamespace)
                TypedSimpleClass(static_cast<XSSimpleTypeDefinition *>(t));
        }
        while (!m_pending.empty())
        {
            auto const [index, type] = m_pending.front();
            m_pending.erase(m_pending.begin());
            Fill(index, type);
        }
        return std::move(m_model);
    }

private:
    void CollectSubstitutionGroups()
    {
        XSNamedMap<XSObject> *elements = m_xs->getComponents(XSConstants::ELEMENT_DECLARATION);
        for (XMLSize_t i = 0; elements && i < elements->getLength(); ++i)
        {
            auto *e = static_cast<XSElementDeclaration *>(elements->item(i));
            // Members of members belong to the head too.
            for (XSElementDeclaration *head = e->getSubstitutionGroupAffiliation(); head != nullptr;
                 head = head->getSubstitutionGroupAffiliation())
            {
                m_members[head].push_back(e);
                if (m_members[head].size() > 100000)
                    throw CSchemaError("substitution group of " + Utf8(head->getName()) + " is cyclic");
            }
        }
    }

    ClassDef &Class(int index) { return m_model.classes[static_cast<std::size_t>(index)]; }

    std::string UniqueIdentifier(std::string const &wanted)
    {
        std::string id = Identifier(wanted);
        std::string candidate = id;
        for (int n = 2; !m_identifiers.insert(candidate).second; ++n)
            candidate = id + "_" + std::to_string(n);
        return candidate;
    }

    // The class of a complex type; an anonymous type is named after its element.
    int ClassFor(XSComplexTypeDefinition *type, std::string const &elementName, std::string const &elementNs = "")
    {
        auto const found = m_classes.find(type);
        if (found != m_classes.end())
            return found->second;
        int const index = static_cast<int>(m_model.classes.size());
        m_classes[type] = index;
        ClassDef c;
        bool const anonymous = type->getAnonymous();
        c.name = anonymous ? elementName : Utf8(type->getName());
        c.ns = anonymous ? elementNs : Utf8(type->getNamespace());
        c.identifier = UniqueIdentifier(c.name);
        c.defaultElementName = c.name;
        c.abstract = type->getAbstract();
        c.anonymous = anonymous;
        c.origin = anonymous ? "the anonymous type of element " + elementName : "complex type " + c.name;
        m_model.classes.push_back(c);
        XSTypeDefinition *base = type->getBaseType();
        if (base != nullptr && base != type && base->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE &&
            !IsXsd(base, "anyType"))
        {
            int const b = ClassFor(static_cast<XSComplexTypeDefinition *>(base), "");
            Class(index).baseClass = b;
            Class(index).hasBaseClasses = true;
            Class(b).derived.push_back(index);
        }
        m_pending.emplace_back(index, type);
        return index;
    }

    // Mixed content and anyType keep their content as untyped elements: the
    // rows have no place for text between child elements.
    static bool Untyped(XSTypeDefinition *type)
    {
        if (IsXsd(type, "anyType"))
            return true;
        return type->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE &&
               static_cast<XSComplexTypeDefinition *>(type)->getContentType() ==
                   XSComplexTypeDefinition::CONTENTTYPE_MIXED;
    }

    // A class with no rows that holds a simple value as its text; `constraint`
    // is the element's default or fixed value, if it has one.
    int SimpleClass(XSSimpleTypeDefinition *type, std::string const &name, std::string const &ns,
                    std::string const *constraint = nullptr)
    {
        int const index = static_cast<int>(m_model.classes.size());
        ClassDef c;
        c.name = name;
        c.ns = ns;
        c.identifier = UniqueIdentifier(name + "_Value");
        c.anonymous = true;
        c.defaultElementName = name;
        c.simpleContent = ValueFor(type, name);
        c.simpleContentProperty = 0;
        c.properties.push_back({"value", Property::Holds::Value, -1, -1});
        c.origin = "element " + name;
        if (constraint != nullptr)
        {
            c.hasContentDefault = true;
            c.contentDefault = *constraint;
        }
        m_model.classes.push_back(c);
        return index;
    }

    // Whether xsi:type may name a type other than `type` itself: a named
    // simple type of the schema set from which others derive, or
    // xs:anySimpleType, whose elements say by xsi:type which type their
    // value has. (Other built-in types keep their value rows: xsi:type
    // naming a restriction of xs:string would otherwise turn every string
    // of a schema into a class.)
    //
    // A document element is a class whatever its type, so there a built-in
    // type from which types of the set derive is substitutable too.
    bool Substitutable(XSSimpleTypeDefinition *type, bool documentElement = false) const
    {
        if (IsXsd(type, "anySimpleType"))
            return true;
        return !type->getAnonymous() && (documentElement || Utf8(type->getNamespace()) != kXsdNamespace) &&
               m_simpleDerived.count(type) != 0;
    }

    // The class of a named simple type whose derivations xsi:type may pick:
    // the value as its text, one class per derived type below it. An element
    // with a default or fixed value gets classes of its own that know it.
    int TypedSimpleClass(XSSimpleTypeDefinition *type, std::string const *constraint = nullptr)
    {
        auto const key = std::make_pair(type, constraint ? std::optional<std::string>(*constraint) : std::nullopt);
        auto const found = m_simpleClasses.find(key);
        if (found != m_simpleClasses.end())
            return found->second;
        std::string const name = Utf8(type->getName());
        int const index = SimpleClass(type, name, Utf8(type->getNamespace()), constraint);
        m_simpleClasses[key] = index;
        Class(index).anonymous = false;
        Class(index).origin = "simple type " + name;
        auto const derived = m_simpleDerived.find(type);
        if (derived == m_simpleDerived.end())
            return index;
        for (XSSimpleTypeDefinition *d : derived->second)
        {
            int const child = TypedSimpleClass(d, constraint);
            Class(child).baseClass = index;
            Class(child).hasBaseClasses = true;
            Class(index).derived.push_back(child);
        }
        return index;
    }

    void AddRoot(XSElementDeclaration *e)
    {
        RootElement root;
        root.name = Utf8(e->getName());
        root.ns = Utf8(e->getNamespace());
        root.nillable = e->getNillable();
        root.abstract = e->getAbstract();
        XSTypeDefinition *type = e->getTypeDefinition();
        if (Untyped(type))
            root.untyped = true;
        else if (type->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE)
            root.classIndex = ClassFor(static_cast<XSComplexTypeDefinition *>(type), root.name, root.ns);
        else
        {
            auto *simple = static_cast<XSSimpleTypeDefinition *>(type);
            root.value = ValueFor(simple, root.name);
            std::optional<std::string> constraint;
            if (e->getConstraintType() != XSConstants::VALUE_CONSTRAINT_NONE)
                constraint = Utf8(e->getConstraintValue());
            std::string const *given = constraint ? &*constraint : nullptr;
            root.classIndex = Substitutable(simple, true) ? TypedSimpleClass(simple, given)
                                                    : SimpleClass(simple, root.name, root.ns, given);
        }
        m_model.roots.push_back(root);
    }

    void Fill(int index, XSComplexTypeDefinition *type)
    {
        std::string const ns = Class(index).ns;
        switch (type->getContentType())
        {
        case XSComplexTypeDefinition::CONTENTTYPE_EMPTY:
            break;
        case XSComplexTypeDefinition::CONTENTTYPE_SIMPLE:
        {
            ValueType v = ValueFor(type->getSimpleType(), Class(index).name);
            Class(index).simpleContent = v;
            Class(index).simpleContentProperty = AddProperty(index, "value", Property::Holds::Value);
            break;
        }
        case XSComplexTypeDefinition::CONTENTTYPE_MIXED:
        case XSComplexTypeDefinition::CONTENTTYPE_ELEMENT:
        {
            XSParticle *p = type->getParticle();
            if (p == nullptr)
                break;
            if (p->getTermType() == XSParticle::TERM_MODELGROUP && p->getMinOccurs() == 1 && p->getMaxOccurs() == 1 &&
                !p->getMaxOccursUnbounded())
            {
                XSModelGroup *g = p->getModelGroupTerm();
                Class(index).group = GroupOf(g);
                AddGroupContent(index, g, 0);
            }
            else
            {
                m_followed = false;
                AddParticle(index, Group::Sequence, p, 0);
            }
            break;
        }
        }
        AddAttributes(index, type);
    }

    static Group GroupOf(XSModelGroup *g)
    {
        switch (g->getCompositor())
        {
        case XSModelGroup::COMPOSITOR_CHOICE:
            return Group::Choice;
        case XSModelGroup::COMPOSITOR_ALL:
            return Group::All;
        default:
            return Group::Sequence;
        }
    }

    void AddGroupContent(int index, XSModelGroup *g, int depth)
    {
        Group const group = Class(index).group;
        XSParticleList *list = g->getParticles();
        for (XMLSize_t i = 0; list && i < list->size(); ++i)
        {
            m_followed = group == Group::Sequence && i + 1 < list->size();
            AddParticle(index, group, list->elementAt(i), depth);
        }
    }

    int AddProperty(int index, std::string const &wanted, Property::Holds holds)
    {
        ClassDef &c = Class(index);
        std::string name = Identifier(wanted);
        std::string candidate = name;
        for (int n = 2;; ++n)
        {
            bool taken = false;
            for (Property const &p : c.properties)
                taken = taken || p.name == candidate;
            if (!taken)
                break;
            candidate = name + "_" + std::to_string(n);
        }
        c.properties.push_back({candidate, holds, -1, -1});
        return static_cast<int>(c.properties.size()) - 1;
    }

    static Occurs OccursOf(Group group, int min, int max)
    {
        if (max == 1)
            return min == 1 && group != Group::Choice ? Occurs::Mnd : Occurs::Opt;
        return Occurs::Col;
    }

    void AddRow(int index, ElementRow row, Property::Holds holds)
    {
        int const property = AddProperty(index, row.name == "AnyElement" ? "any" : row.name, holds);
        ClassDef &c = Class(index);
        row.property = property;
        c.properties[static_cast<std::size_t>(property)].row = static_cast<int>(c.elements.size());
        c.elements.push_back(std::move(row));
    }

    void AddParticle(int index, Group group, XSParticle *p, int depth)
    {
        if (depth > kMaxNesting)
            throw CSchemaError("content of " + Class(index).origin + " nests groups deeper than " +
                               std::to_string(kMaxNesting) + " levels");
        int const min = Bound(p->getMinOccurs());
        int const max = p->getMaxOccursUnbounded() ? -1 : Bound(p->getMaxOccurs());
        if (max == 0)
            return; // maxOccurs="0": the particle can never occur
        switch (p->getTermType())
        {
        case XSParticle::TERM_ELEMENT:
            AddElement(index, group, p->getElementTerm(), min, max, depth);
            return;
        case XSParticle::TERM_WILDCARD:
            AddWildcard(index, group, p->getWildcardTerm(), min, max, depth);
            return;
        case XSParticle::TERM_MODELGROUP:
        {
            XSModelGroup *g = p->getModelGroupTerm();
            XSParticleList *list = g->getParticles();
            if (list == nullptr || list->size() == 0)
                return;
            Group const inner = GroupOf(g);
            // A group of the same kind that occurs once adds nothing: its
            // particles stand in the parent as they are.
            if (min == 1 && max == 1 && inner == group && group != Group::All)
            {
                bool const outer = m_followed;
                for (XMLSize_t i = 0; i < list->size(); ++i)
                {
                    m_followed = (group == Group::Sequence && i + 1 < list->size()) || outer;
                    AddParticle(index, group, list->elementAt(i), depth + 1);
                }
                return;
            }
            if (list->size() == 1 && group != Group::All && FlattenRepeatedGroup(index, group, list->elementAt(0), min, max, depth))
                return;
            int const pseudo = PseudoClass(index, inner, inner == Group::Choice ? "Choice" : "Group");
            bool const outer = m_followed;
            for (XMLSize_t i = 0; i < list->size(); ++i)
            {
                m_followed = (inner == Group::Sequence && i + 1 < list->size()) || outer;
                AddParticle(pseudo, inner, list->elementAt(i), depth + 1);
            }
            AddInlineRow(index, group, pseudo, min, max, !Emptiable(p), "group in " + Class(index).origin);
            return;
        }
        default:
            return;
        }
    }

    // A group of one element, the group occurring min..max times and the
    // element a..b times each: the element alone, occurring min*a..max*b
    // times, where those counts are all that the two allow (a of 0 or 1, or
    // b unbounded). The rows read greedily, so the group would take every
    // element in its first round and miss its minimum. Not for wildcards,
    // nor for xs:anySimpleType, whose elements carry xsi:type, which a value
    // row refuses but a collection of values would pass over. A collection
    // of untyped elements checks no bounds: such an element is taken alone
    // only where it repeats itself, where the group's row could never read
    // a document with enough of them (a document with too many passes then).
    bool FlattenRepeatedGroup(int index, Group group, XSParticle *only, int min, int max, int depth)
    {
        if (only->getTermType() != XSParticle::TERM_ELEMENT)
            return false;
        XSTypeDefinition *type = only->getElementTerm()->getTypeDefinition();
        long long const a = only->getMinOccurs();
        bool const unboundedInner = only->getMaxOccursUnbounded();
        long long const b = unboundedInner ? -1 : static_cast<long long>(only->getMaxOccurs());
        if (IsXsd(type, "anySimpleType") || (Untyped(type) && b == 1))
            return false;
        if ((min == 1 && max == 1) || b == 0 || (a > 1 && !unboundedInner) || min < 0)
            return false;
        long long const total = static_cast<long long>(min) * a;
        long long const most = max < 0 || unboundedInner ? -1 : static_cast<long long>(max) * b;
        if (total > INT_MAX || most > INT_MAX)
            return false;
        AddElement(index, group, only->getElementTerm(), static_cast<int>(total), static_cast<int>(most), depth + 1);
        return true;
    }

    int PseudoClass(int parent, Group group, char const *word)
    {
        ClassDef c;
        c.name = Class(parent).identifier + "_" + word;
        c.ns = Class(parent).ns;
        c.identifier = UniqueIdentifier(c.name);
        c.name = c.identifier;
        c.defaultElementName = c.identifier;
        c.shape = ClassShape::PseudoGroup;
        c.anonymous = true;
        c.group = group;
        // Inline content sees its parent's attributes: they are not its to refuse.
        c.failIfAttributeUnknown = false;
        // Nested groups name the class they stand in, not each other.
        c.origin = Class(parent).shape == ClassShape::PseudoGroup ? Class(parent).origin
                                                                  : "a group inside " + Class(parent).origin;
        m_model.classes.push_back(c);
        return static_cast<int>(m_model.classes.size()) - 1;
    }

    void AddInlineRow(int index, Group group, int pseudo, int min, int max, bool contentRequired,
                      std::string const &origin)
    {
        ElementRow row;
        row.name = Class(pseudo).identifier;
        row.ns = Class(index).ns;
        row.group = group;
        row.kind = RowKind::Cls;
        row.occurs = OccursOf(group, min, max);
        if (group == Group::All && row.occurs == Occurs::Col)
            throw CSchemaError("a repeated group inside xs:all in " + Class(index).origin +
                               " has no row form in the run-time");
        row.classIndex = pseudo;
        row.childShape = ClassShape::PseudoGroup;
        row.contentRequired = contentRequired;
        row.minOccurs = min;
        row.maxOccurs = max;
        row.origin = origin;
        Property::Holds holds = row.occurs == Occurs::Col   ? Property::Holds::ObjectCol
                                : row.occurs == Occurs::Mnd ? Property::Holds::MandatoryObject
                                                            : Property::Holds::Object;
        AddRow(index, row, holds);
    }

    void AddElement(int index, Group group, XSElementDeclaration *e, int min, int max, int depth)
    {
        auto const members = m_members.find(e);
        if (members != m_members.end() && !members->second.empty())
        {
            // The head and its members are alternatives at this place: an
            // inline choice with one row per element name.
            int const pseudo = PseudoClass(index, Group::Choice, ("Subst_" + Utf8(e->getName())).c_str());
            if (!e->getAbstract())
                AddSingleElement(pseudo, Group::Choice, e, 0, 1, depth + 1);
            for (XSElementDeclaration *m : members->second)
                if (!m->getAbstract())
                    AddSingleElement(pseudo, Group::Choice, m, 0, 1, depth + 1);
            AddInlineRow(index, group, pseudo, min, max, min > 0,
                         "substitution group of " + Utf8(e->getName()));
            return;
        }
        AddSingleElement(index, group, e, min, max, depth);
    }

    void AddSingleElement(int index, Group group, XSElementDeclaration *e, int min, int max, int depth)
    {
        if (depth > kMaxNesting)
            throw CSchemaError("element " + Utf8(e->getName()) + " nests deeper than " + std::to_string(kMaxNesting) +
                               " levels");
        ElementRow row;
        row.name = Utf8(e->getName());
        row.ns = Utf8(e->getNamespace());
        row.group = group;
        row.occurs = OccursOf(group, min, max);
        row.minOccurs = min;
        row.maxOccurs = max;
        row.nillable = e->getNillable();
        row.origin = "element " + row.name + " in " + Class(index).origin;
        if (group == Group::All && row.occurs == Occurs::Col)
            throw CSchemaError("repeated " + row.origin + " inside xs:all has no row form in the run-time");
        if (e->getConstraintType() != XSConstants::VALUE_CONSTRAINT_NONE)
        {
            row.hasDefault = true;
            row.defaultValue = Utf8(e->getConstraintValue());
        }
        XSTypeDefinition *type = e->getTypeDefinition();
        if (Untyped(type))
        {
            row.kind = RowKind::Untpd;
            row.namespaceRestriction = row.ns.empty() ? "##local" : row.ns;
            row.targetNamespace = row.ns;
            AddRow(index, row,
                   row.occurs == Occurs::Col   ? Property::Holds::ElementCol
                   : row.occurs == Occurs::Mnd ? Property::Holds::MandatoryElement
                                               : Property::Holds::Element);
            return;
        }
        if (type->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE)
        {
            int const cls = ClassFor(static_cast<XSComplexTypeDefinition *>(type), row.name, row.ns);
            row.classIndex = cls;
            bool const substitutable = !Class(cls).derived.empty() || Class(cls).abstract;
            row.kind = substitutable ? RowKind::AbsCls : RowKind::Cls;
            // A mandatory class row reads into the object Init made; only a
            // class that xsi:type cannot change can be made in advance.
            AddRow(index, row,
                   row.occurs == Occurs::Col                       ? Property::Holds::ObjectCol
                   : row.occurs == Occurs::Mnd && !substitutable ? Property::Holds::MandatoryObject
                                                                   : Property::Holds::Object);
            return;
        }
        auto *simple = static_cast<XSSimpleTypeDefinition *>(type);
        row.value = ValueFor(simple, row.name);
        // A QName keeps its text, whose prefix is declared again where it is
        // written, so an enumerated one is no enumeration number.
        row.kind = row.value.enumeration >= 0 && !row.value.qname ? RowKind::Enum : RowKind::Prim;
        std::string const *constraint = row.hasDefault ? &row.defaultValue : nullptr;
        if (Substitutable(simple))
        {
            // xsi:type may name a derived simple type: the value becomes an
            // object whose class the factory picks, as for complex types.
            row.kind = RowKind::AbsCls;
            row.classIndex = TypedSimpleClass(simple, constraint);
            AddRow(index, row, row.occurs == Occurs::Col ? Property::Holds::ObjectCol : Property::Holds::Object);
            return;
        }
        if (row.nillable)
        {
            // A value row reads xsi:nil by storing nothing, which would lose
            // the element: a nillable value becomes an object with the value
            // as its text, and the object keeps the nil.
            int const cls = SimpleClass(simple, row.name, row.ns, constraint);
            row.kind = RowKind::Cls;
            row.classIndex = cls;
            AddRow(index, row,
                   row.occurs == Occurs::Col   ? Property::Holds::ObjectCol
                   : row.occurs == Occurs::Mnd ? Property::Holds::MandatoryObject
                                               : Property::Holds::Object);
            return;
        }
        AddRow(index, row,
               row.occurs == Occurs::Col ? (row.kind == RowKind::Enum ? Property::Holds::EnumCol
                                                                       : Property::Holds::ValueCol)
                                         : Property::Holds::Value);
    }

    // One token per wildcard row: the run-time tests a list of namespaces
    // only by its first token.
    std::vector<std::string> WildcardTokens(XSWildcard *w, std::string const &targetNs)
    {
        switch (w->getConstraintType())
        {
        case XSWildcard::NSCONSTRAINT_ANY:
            return {"##any"};
        case XSWildcard::NSCONSTRAINT_NOT:
            return {"##other"};
        default:
        {
            std::vector<std::string> tokens;
            StringList *list = w->getNsConstraintList();
            for (XMLSize_t i = 0; list && i < list->size(); ++i)
            {
                std::string const ns = Utf8(list->elementAt(i));
                tokens.push_back(ns.empty() ? "##local" : ns == targetNs ? "##targetNamespace" : ns);
            }
            return tokens;
        }
        }
    }

    // The global elements of the set that a wildcard admits.
    std::vector<XSElementDeclaration *> AdmittedElements(XSWildcard *w) const
    {
        std::set<std::string> listed;
        StringList *list = w->getNsConstraintList();
        for (XMLSize_t i = 0; list && i < list->size(); ++i)
            listed.insert(Utf8(list->elementAt(i)));
        std::vector<XSElementDeclaration *> admitted;
        XSNamedMap<XSObject> *elements = m_xs->getComponents(XSConstants::ELEMENT_DECLARATION);
        for (XMLSize_t i = 0; elements && i < elements->getLength(); ++i)
        {
            auto *e = static_cast<XSElementDeclaration *>(elements->item(i));
            std::string const ns = Utf8(e->getNamespace());
            bool const allowed =
                w->getConstraintType() == XSWildcard::NSCONSTRAINT_ANY ||
                (w->getConstraintType() == XSWildcard::NSCONSTRAINT_NOT ? !ns.empty() && listed.count(ns) == 0
                                                                        : listed.count(ns) != 0);
            if (allowed && !e->getAbstract() && ns != kXsdNamespace)
                admitted.push_back(e);
        }
        return admitted;
    }

    void AddWildcard(int index, Group group, XSWildcard *w, int min, int max, int depth)
    {
        std::string const targetNs = Class(index).ns;
        std::vector<std::string> const tokens = WildcardTokens(w, targetNs);
        if (tokens.empty())
            return;
        // A strict wildcard (XSD's default) admits only elements that are
        // declared, and validates each as its declaration says: where the set
        // declares some that it admits, they are the alternatives, bound as
        // any other element. (Where it declares none, the elements come from
        // schemas outside the set, and stay untyped; so do they where it
        // declares more than kMaxStrictAlternatives, which would make every
        // such wildcard a class of that many rows.)
        if (w->getProcessContents() == XSWildcard::PC_STRICT)
        {
            std::vector<XSElementDeclaration *> const admitted = AdmittedElements(w);
            if (!admitted.empty() && admitted.size() <= kMaxStrictAlternatives)
            {
                int const pseudo = PseudoClass(index, Group::Choice, "Any");
                for (XSElementDeclaration *e : admitted)
                    AddSingleElement(pseudo, Group::Choice, e, 0, 1, depth + 1);
                AddInlineRow(index, group, pseudo, min, max, min > 0, "strict wildcard in " + Class(index).origin);
                return;
            }
        }
        // A repeated wildcard is read into a collection that takes elements
        // of every namespace: where other particles follow it, it would take
        // theirs too, so it becomes a repeated inline choice whose one row
        // checks the namespace of each element.
        bool const guarded = tokens[0] != "##any" && max != 1 && group != Group::All && m_followed;
        if (tokens.size() > 1 || guarded)
        {
            // Several namespaces: an inline choice of one wildcard row each.
            int const pseudo = PseudoClass(index, Group::Choice, "Any");
            for (std::string const &token : tokens)
                AddWildcardRow(pseudo, Group::Choice, token, targetNs, 0, 1);
            AddInlineRow(index, group, pseudo, min, max, min > 0, "wildcard in " + Class(index).origin);
            return;
        }
        (void)depth;
        AddWildcardRow(index, group, tokens[0], targetNs, min, max);
    }

    // The run-time's test lets the empty namespace pass a restriction that
    // names one namespace; "##targetNamespace" with that namespace as the
    // target lets it alone pass.
    template <typename Row> static void SetRestriction(Row &row, std::string const &token, std::string const &targetNs)
    {
        bool const literal = !token.empty() && token.rfind("##", 0) != 0;
        row.namespaceRestriction = literal ? "##targetNamespace" : token;
        row.targetNamespace = literal ? token : targetNs;
    }

    void AddWildcardRow(int index, Group group, std::string const &token, std::string const &targetNs, int min,
                        int max)
    {
        ElementRow row;
        row.name = "AnyElement";
        row.ns = targetNs;
        row.group = group;
        row.kind = RowKind::Untpd;
        row.occurs = OccursOf(group, min, max);
        row.minOccurs = min;
        row.maxOccurs = max;
        SetRestriction(row, token, targetNs);
        row.origin = "wildcard in " + Class(index).origin;
        if (group == Group::All && row.occurs == Occurs::Col)
            throw CSchemaError("a repeated " + row.origin + " inside xs:all has no row form in the run-time");
        AddRow(index, row,
               row.occurs == Occurs::Col   ? Property::Holds::ElementCol
               : row.occurs == Occurs::Mnd ? Property::Holds::MandatoryElement
                                           : Property::Holds::Element);
    }

    void AddAttributes(int index, XSComplexTypeDefinition *type)
    {
        XSAttributeUseList *uses = type->getAttributeUses();
        for (XMLSize_t i = 0; uses && i < uses->size(); ++i)
        {
            XSAttributeUse *use = uses->elementAt(i);
            XSAttributeDeclaration *decl = use->getAttrDeclaration();
            AttributeRow row;
            row.name = Utf8(decl->getName());
            row.ns = Utf8(decl->getNamespace());
            row.optional = !use->getRequired();
            row.value = ValueFor(decl->getTypeDefinition(), row.name);
            row.kind = row.value.enumeration >= 0 && !row.value.qname ? AttributeRow::Kind::Enum
                                                                      : AttributeRow::Kind::Prim;
            if (use->getConstraintType() != XSConstants::VALUE_CONSTRAINT_NONE)
            {
                row.hasDefault = true;
                row.defaultValue = Utf8(use->getConstraintValue());
                row.fixed = use->getConstraintType() == XSConstants::VALUE_CONSTRAINT_FIXED;
            }
            else if (decl->getConstraintType() != XSConstants::VALUE_CONSTRAINT_NONE)
            {
                row.hasDefault = true;
                row.defaultValue = Utf8(decl->getConstraintValue());
                row.fixed = decl->getConstraintType() == XSConstants::VALUE_CONSTRAINT_FIXED;
            }
            AddAttributeRow(index, row, Property::Holds::Value);
        }
        if (XSWildcard *w = type->getAttributeWildcard())
        {
            // After the named rows, which would otherwise lose their attributes to it.
            for (std::string const &token : WildcardTokens(w, Class(index).ns))
            {
                AttributeRow row;
                row.name = "AnyAttribute";
                row.kind = AttributeRow::Kind::Any;
                SetRestriction(row, token, Class(index).ns);
                AddAttributeRow(index, row, Property::Holds::AttributeCol);
            }
        }
    }

    void AddAttributeRow(int index, AttributeRow row, Property::Holds holds)
    {
        int const property = AddProperty(index, row.kind == AttributeRow::Kind::Any ? "anyAttribute" : row.name, holds);
        ClassDef &c = Class(index);
        row.property = property;
        c.properties[static_cast<std::size_t>(property)].attribute = static_cast<int>(c.attributes.size());
        c.attributes.push_back(std::move(row));
    }

    ValueType ValueFor(XSSimpleTypeDefinition *type, std::string const &owner)
    {
        ValueType v;
        v.name = type->getAnonymous() ? "anonymous type of " + owner : Utf8(type->getName());
        switch (type->getVariety())
        {
        case XSSimpleTypeDefinition::VARIETY_LIST:
        {
            v.itemType = MxXmlLib::ItemType_string;
            v.whitespace = WhitespaceRule::Collapse;
            v.variety = ValueType::Variety::List;
            if (++m_valueDepth > kMaxNesting)
                throw CSchemaError("simple type " + v.name + " nests lists and unions too deeply");
            if (XSSimpleTypeDefinition *item = ListItemType(type))
                v.items.push_back(ValueFor(item, owner));
            --m_valueDepth;
            // Only a restriction of a list has facets of its own; Xerces shows
            // the item type's facets on the list that xs:list makes.
            XSTypeDefinition *base = type->getBaseType();
            if (base != nullptr && base != type && base->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE &&
                static_cast<XSSimpleTypeDefinition *>(base)->getVariety() == XSSimpleTypeDefinition::VARIETY_LIST)
                AddListFacets(v, type);
            v.notes.push_back("list: kept as its text, items checked when stored");
            break;
        }
        case XSSimpleTypeDefinition::VARIETY_UNION:
        {
            v.itemType = MxXmlLib::ItemType_string;
            v.whitespace = UnionWhitespace(type);
            v.variety = ValueType::Variety::Union;
            if (++m_valueDepth > kMaxNesting)
                throw CSchemaError("simple type " + v.name + " nests lists and unions too deeply");
            XSSimpleTypeDefinitionList *members = type->getMemberTypes();
            for (XMLSize_t i = 0; members && i < members->size(); ++i)
                v.items.push_back(ValueFor(members->elementAt(i), owner));
            --m_valueDepth;
            AddListFacets(v, type);
            v.notes.push_back("union: kept as its text, checked against its members when stored");
            break;
        }
        default:
        {
            XSTypeDefinition *t = type;
            Builtin const *builtin = nullptr;
            for (int guard = 0; t != nullptr && builtin == nullptr && guard < 10000; ++guard)
            {
                if (Utf8(t->getNamespace()) == kXsdNamespace)
                    builtin = FindBuiltin(Utf8(t->getName()));
                XSTypeDefinition *base = t->getBaseType();
                if (base == t)
                    break;
                t = base;
            }
            if (builtin == nullptr)
                throw CSchemaError("simple type " + v.name + " derives from no built-in type the run-time knows");
            v.itemType = builtin->type;
            v.whitespace = builtin->whitespace;
            if (Utf8(type->getNamespace()) != kXsdNamespace)
                AddFacets(v, type);
            // Length facets on QName and NOTATION constrain nothing (XSD 1.0
            // errata): the prefix is no part of the value.
            if (std::strcmp(builtin->name, "QName") == 0 || std::strcmp(builtin->name, "NOTATION") == 0)
            {
                v.facets.length = v.facets.minLength = v.facets.maxLength = -1;
                v.qname = true;
            }
            break;
        }
        }
        if (XMLCh const *ws = type->getLexicalFacetValue(XSSimpleTypeDefinition::FACET_WHITESPACE))
        {
            std::string const w = Utf8(ws);
            v.whitespace = w == "collapse" ? WhitespaceRule::Collapse
                           : w == "replace" ? WhitespaceRule::Replace
                                            : WhitespaceRule::Preserve;
        }
        StringList *enumeration = type->getLexicalEnumeration();
        if (enumeration != nullptr && enumeration->size() > 0 &&
            (type->getDefinedFacets() & XSSimpleTypeDefinition::FACET_ENUMERATION))
            v.enumeration = EnumerationFor(type, v.name, enumeration, v);
        // A pattern constrains the lexical form, which the value cell of a
        // number, date or boolean does not keep, and an enumerated value is
        // written best as the schema or the document spelled it: such values
        // are held as their text, checked as the typed value when stored.
        if (v.variety == ValueType::Variety::Atomic && v.itemType != MxXmlLib::ItemType_string &&
            (!v.facets.pattern.empty() || v.enumeration >= 0))
        {
            ValueType member = v;
            member.enumeration = -1;
            v.variety = ValueType::Variety::Union;
            v.whitespace = WhitespaceRule::Collapse;
            v.facets = ValueType().facets;
            v.facets.pattern = member.facets.pattern;
            v.notes.push_back(std::string("a ") + ItemTypeName(v.itemType) +
                              (member.facets.pattern.empty() ? " enumeration" : " with a pattern") +
                              ": kept as its text, checked as the typed value");
            v.itemType = MxXmlLib::ItemType_string;
            v.items.push_back(std::move(member));
        }
        return v;
    }

    // The item type of a list, also of a list restricted further.
    static XSSimpleTypeDefinition *ListItemType(XSSimpleTypeDefinition *type)
    {
        for (XSSimpleTypeDefinition *t = type; t != nullptr;)
        {
            if (XSSimpleTypeDefinition *item = t->getItemType())
                return item;
            XSTypeDefinition *base = t->getBaseType();
            if (base == nullptr || base == t || base->getTypeCategory() != XSTypeDefinition::SIMPLE_TYPE)
                return nullptr;
            t = static_cast<XSSimpleTypeDefinition *>(base);
        }
        return nullptr;
    }

    // A list's length facets count items, and a pattern applies to the whole
    // text; a union has only pattern and enumeration.
    static void AddListFacets(ValueType &v, XSSimpleTypeDefinition *type)
    {
        ValueType scratch;
        AddFacets(scratch, type);
        v.listLength = scratch.facets.length;
        v.listMinLength = scratch.facets.minLength;
        v.listMaxLength = scratch.facets.maxLength;
        v.facets.pattern = scratch.facets.pattern;
        v.notes.insert(v.notes.end(), scratch.notes.begin(), scratch.notes.end());
    }

    static WhitespaceRule UnionWhitespace(XSSimpleTypeDefinition *type)
    {
        XSSimpleTypeDefinitionList *members = type->getMemberTypes();
        for (XMLSize_t i = 0; members && i < members->size(); ++i)
        {
            XMLCh const *ws = members->elementAt(i)->getLexicalFacetValue(XSSimpleTypeDefinition::FACET_WHITESPACE);
            if (ws == nullptr || Utf8(ws) != "collapse")
                return WhitespaceRule::Preserve;
        }
        return WhitespaceRule::Collapse;
    }

    // Every step of a derivation chain that has patterns adds one that the
    // value must match as well; the steps of a chain become one PCRE pattern.
    // Xerces hands a step's pattern cut at every '|' (also inside a
    // character class or after a backslash); joined again, the pieces are
    // the schema's own text, or alternatives of one step, which XSD joins
    // with '|' as well. A type that adds no pattern of its own repeats its
    // base's, which is taken once.
    static std::string PatternOf(ValueType const &v, XSSimpleTypeDefinition *type)
    {
        std::vector<std::string> steps;
        // The built-in types' own patterns (integer's, for one) restate what
        // their value parsers check, so the walk stops at them.
        for (XSSimpleTypeDefinition *t = type; t != nullptr && !IsBuiltIn(t);)
        {
            StringList *patterns = t->getLexicalPattern();
            if ((t->getDefinedFacets() & XSSimpleTypeDefinition::FACET_PATTERN) && patterns != nullptr &&
                patterns->size() > 0)
            {
                std::string step;
                for (XMLSize_t i = 0; i < patterns->size(); ++i)
                    step += (i ? "|" : "") + Utf8(patterns->elementAt(i));
                if (steps.empty() || steps.back() != step)
                    steps.push_back(step);
            }
            XSTypeDefinition *base = t->getBaseType();
            if (base == nullptr || base == t || base->getTypeCategory() != XSTypeDefinition::SIMPLE_TYPE)
                break;
            t = static_cast<XSSimpleTypeDefinition *>(base);
        }
        std::vector<std::string> pcre;
        for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        {
            try
            {
                pcre.push_back(XsdRegexToPcre(*step));
            }
            catch (std::invalid_argument const &e)
            {
                throw CSchemaError("the pattern " + *step + " of simple type " + v.name + " cannot be read: " +
                                   e.what());
            }
        }
        return AllOfPcre(pcre);
    }

    // The run-time counts a minus sign among the digits of a signed integer,
    // so -99 would break totalDigits 2. For these types the facet is
    // written as the bounds it amounts to, which leave the sign alone; where
    // those bounds lie outside the type's range, the range is the tighter
    // limit and the facet says nothing more.
    static void TotalDigitsAsBounds(ValueType &v)
    {
        MxXmlLib::CPrimitiveRestrictions &f = v.facets;
        int maxDigits;
        switch (v.itemType)
        {
        case MxXmlLib::ItemType_i1:
            maxDigits = 2;
            break;
        case MxXmlLib::ItemType_i2:
            maxDigits = 4;
            break;
        case MxXmlLib::ItemType_i4:
            maxDigits = 9;
            break;
        case MxXmlLib::ItemType_i8:
            maxDigits = 18;
            break;
        case MxXmlLib::ItemType_integer:
            maxDigits = INT_MAX;
            break;
        default:
            return;
        }
        int const digits = f.totalDigits;
        if (digits <= 0)
            return;
        f.totalDigits = -1;
        if (digits > maxDigits)
            return;
        std::string const nines(static_cast<std::size_t>(digits), '9');
        if (f.maxInclusive.empty() || CompareIntegers(nines, f.maxInclusive) < 0)
            f.maxInclusive = nines;
        if (f.minInclusive.empty() || CompareIntegers("-" + nines, f.minInclusive) > 0)
            f.minInclusive = "-" + nines;
    }

    // Orders two integers in XSD's lexical form (sign, leading zeros).
    static int CompareIntegers(std::string a, std::string b)
    {
        auto split = [](std::string &t) {
            std::size_t from = t.find_first_not_of(" \t\r\n");
            std::size_t const to = t.find_last_not_of(" \t\r\n");
            t = from == std::string::npos ? std::string() : t.substr(from, to - from + 1);
            bool negative = !t.empty() && t[0] == '-';
            if (!t.empty() && (t[0] == '-' || t[0] == '+'))
                t.erase(0, 1);
            t.erase(0, std::min(t.find_first_not_of('0'), t.size()));
            return negative && !t.empty();
        };
        bool const negativeA = split(a), negativeB = split(b);
        if (negativeA != negativeB)
            return negativeA ? -1 : 1;
        int magnitude = a.size() != b.size() ? (a.size() < b.size() ? -1 : 1) : a.compare(b) < 0 ? -1 : a == b ? 0 : 1;
        return negativeA ? -magnitude : magnitude;
    }

    static void AddFacets(ValueType &v, XSSimpleTypeDefinition *type)
    {
        auto text = [type](XSSimpleTypeDefinition::FACET f) {
            return (type->getDefinedFacets() & f) ? Utf8(type->getLexicalFacetValue(f)) : std::string();
        };
        auto number = [&text, &v](XSSimpleTypeDefinition::FACET f) {
            std::string const t = text(f);
            if (t.empty())
                return -1;
            long long n = 0;
            for (char c : t)
            {
                if (c < '0' || c > '9' || n > INT_MAX / 10)
                {
                    v.notes.push_back("facet value " + t + " is out of the run-time's range, not checked");
                    return -1;
                }
                n = n * 10 + (c - '0');
            }
            return n > INT_MAX ? -1 : static_cast<int>(n);
        };
        MxXmlLib::CPrimitiveRestrictions &f = v.facets;
        f.length = number(XSSimpleTypeDefinition::FACET_LENGTH);
        f.minLength = number(XSSimpleTypeDefinition::FACET_MINLENGTH);
        f.maxLength = number(XSSimpleTypeDefinition::FACET_MAXLENGTH);
        f.totalDigits = number(XSSimpleTypeDefinition::FACET_TOTALDIGITS);
        f.fractionDigits = number(XSSimpleTypeDefinition::FACET_FRACTIONDIGITS);
        f.minInclusive = text(XSSimpleTypeDefinition::FACET_MININCLUSIVE);
        f.maxInclusive = text(XSSimpleTypeDefinition::FACET_MAXINCLUSIVE);
        f.minExclusive = text(XSSimpleTypeDefinition::FACET_MINEXCLUSIVE);
        f.maxExclusive = text(XSSimpleTypeDefinition::FACET_MAXEXCLUSIVE);
        f.pattern = PatternOf(v, type);
        TotalDigitsAsBounds(v);
    }

    int EnumerationFor(XSSimpleTypeDefinition *type, std::string const &name, StringList *values,
                       ValueType const &valueType)
    {
        auto const found = m_enumerations.find(type);
        if (found != m_enumerations.end())
            return found->second;
        Enumeration e;
        std::string wanted = type->getAnonymous() ? name + "Values" : Utf8(type->getName());
        e.name = Identifier(wanted);
        std::string candidate = e.name;
        for (int n = 2; !m_enumerationNames.insert(candidate).second; ++n)
            candidate = e.name + "_" + std::to_string(n);
        e.name = candidate;
        for (XMLSize_t i = 0; i < values->size(); ++i)
            e.values.push_back(Utf8(values->elementAt(i)));
        e.type = valueType;
        m_model.enumerations.push_back(e);
        int const index = static_cast<int>(m_model.enumerations.size()) - 1;
        m_enumerations[type] = index;
        return index;
    }

    XSModel *m_xs;
    Model m_model;
    std::map<XSComplexTypeDefinition *, int> m_classes;
    std::map<XSSimpleTypeDefinition *, int> m_enumerations;
    std::map<XSSimpleTypeDefinition *, std::vector<XSSimpleTypeDefinition *>> m_simpleDerived;
    std::map<std::pair<XSSimpleTypeDefinition *, std::optional<std::string>>, int> m_simpleClasses;
    // Whether other particles follow the one being added, in its sequence or
    // in the groups around it.
    bool m_followed = false;
    std::map<XSElementDeclaration *, std::vector<XSElementDeclaration *>> m_members;
    std::vector<std::pair<int, XSComplexTypeDefinition *>> m_pending;
    std::set<std::string> m_identifiers;
    std::set<std::string> m_enumerationNames;
    int m_valueDepth = 0;
};

void CheckReadable(std::string const &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw CSchemaError(file + ": " + std::strerror(errno));
}
} // namespace

Model LoadSchemaModel(std::vector<std::string> const &files, SchemaLocations const &locations)
{
    if (files.empty())
        throw CSchemaError("no schema file given");
    for (std::string const &file : files)
        CheckReadable(file);
    InitialiseXerces();
    MemoryManager *memory = XMLPlatformUtils::fgMemoryManager;
    std::unique_ptr<XMLGrammarPool> pool(new XMLGrammarPoolImpl(memory));
    std::unique_ptr<SAX2XMLReader> parser(XMLReaderFactory::createXMLReader(memory, pool.get()));
    parser->setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    parser->setFeature(XMLUni::fgXercesSchema, true);
    parser->setFeature(XMLUni::fgXercesSchemaFullChecking, true);
    parser->setFeature(XMLUni::fgXercesHandleMultipleImports, true);
    parser->setFeature(XMLUni::fgXercesCacheGrammarFromParse, true);
    CollectingErrorHandler errors;
    LocalOnlyResolver resolver(locations);
    parser->setErrorHandler(&errors);
    parser->setEntityResolver(&resolver);
    for (std::string const &file : files)
    {
        try
        {
            Grammar *grammar = parser->loadGrammar(file.c_str(), Grammar::SchemaGrammarType, true);
            if (!errors.First().empty())
                throw CSchemaError(errors.First());
            if (grammar == nullptr)
                throw CSchemaError(file + ": not a schema");
        }
        catch (XMLException const &e)
        {
            throw CSchemaError(file + ": " + Utf8(e.getMessage()));
        }
        catch (SAXException const &e)
        {
            throw CSchemaError(file + ": " + Utf8(e.getMessage()));
        }
        catch (DOMException const &e)
        {
            // Xerces raises this one from its schema reader for a bad XML declaration.
            throw CSchemaError(file + ": " + Utf8(e.getMessage()));
        }
    }
    bool changed = false;
    XSModel *xs = pool->getXSModel(changed);
    if (xs == nullptr)
        throw CSchemaError("the schema set has no components");
    Builder builder(xs);
    return builder.Build(files);
}

} // namespace MxCompiler
