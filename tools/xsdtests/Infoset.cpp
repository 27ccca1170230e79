#include "Infoset.h"

#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/framework/psvi/PSVIAttributeList.hpp>
#include <xercesc/framework/psvi/PSVIElement.hpp>
#include <xercesc/framework/psvi/PSVIHandler.hpp>
#include <xercesc/framework/psvi/XSComplexTypeDefinition.hpp>
#include <xercesc/framework/psvi/XSModelGroup.hpp>
#include <xercesc/framework/psvi/XSParticle.hpp>
#include <xercesc/framework/psvi/XSSimpleTypeDefinition.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/common/Grammar.hpp>
#include <xercesc/validators/datatype/DatatypeValidator.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <tuple>

namespace XsdTests
{

namespace
{
using namespace xercesc;

constexpr char const *kXsiNs = "http://www.w3.org/2001/XMLSchema-instance";
constexpr char const *kXmlnsNs = "http://www.w3.org/2000/xmlns/";

std::string Utf8(XMLCh const *text)
{
    if (text == nullptr)
        return std::string();
    TranscodeToStr bytes(text, "UTF-8");
    return std::string(reinterpret_cast<char const *>(bytes.str()), bytes.length());
}

std::string Collapse(std::string const &text)
{
    std::string out;
    bool space = false;
    for (char c : text)
    {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            space = !out.empty();
        else
        {
            if (space)
                out += ' ';
            space = false;
            out += c;
        }
    }
    return out;
}

std::string ValueOf(PSVIItem *item, std::string const &raw)
{
    if (item != nullptr && item->getValidity() == PSVIItem::VALIDITY_VALID)
    {
        if (XMLCh const *c = item->getCanonicalRepresentation())
            return Utf8(c);
        if (XMLCh const *n = item->getSchemaNormalizedValue())
        {
            // Xerces gives an element's default in its lexical form: an
            // empty element with default "1.0e-2" and one that holds 0.01
            // have one value, so the default is put in canonical form too.
            XSTypeDefinition *type =
                item->getMemberTypeDefinition() ? item->getMemberTypeDefinition() : item->getTypeDefinition();
            if (type != nullptr && type->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE)
                if (DatatypeValidator *v = static_cast<XSSimpleTypeDefinition *>(type)->getDatatypeValidator())
                    if (XMLCh const *c = v->getCanonicalRepresentation(n, XMLPlatformUtils::fgMemoryManager))
                    {
                        std::string const canonical = Utf8(c);
                        XMLPlatformUtils::fgMemoryManager->deallocate(const_cast<XMLCh *>(c));
                        return canonical;
                    }
            return Utf8(n);
        }
    }
    return raw;
}

// XSD 1.0 first wrote a gMonth as --MM--, and Xerces keeps that form; the
// value is the one --MM names.
std::string CanonicalGMonth(std::string text)
{
    if (text.size() >= 6 && text.compare(0, 2, "--") == 0 && text.compare(4, 2, "--") == 0)
        text.erase(4, 2);
    return text;
}

// Xerces gives hexBinary and duration in their lexical forms; these are
// their canonical ones (upper-case digits; no zero fields or leading zeros).
std::string CanonicalHex(std::string text)
{
    for (char &c : text)
        if (c >= 'a' && c <= 'f')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string CanonicalDuration(std::string const &text)
{
    std::string out, date, time;
    std::size_t i = 0;
    if (i < text.size() && text[i] == '-')
        out += text[i++];
    bool inTime = false;
    for (++i; i < text.size();)
    {
        if (text[i] == 'T')
        {
            inTime = true;
            ++i;
            continue;
        }
        std::size_t j = i;
        while (j < text.size() && ((text[j] >= '0' && text[j] <= '9') || text[j] == '.'))
            ++j;
        if (j >= text.size())
            return text;
        std::string number = text.substr(i, j - i);
        if (number.find('.') != std::string::npos)
        {
            while (!number.empty() && number.back() == '0')
                number.pop_back();
            if (!number.empty() && number.back() == '.')
                number.pop_back();
        }
        std::size_t const first = number.find_first_not_of('0');
        number = first == std::string::npos || number[first] == '.' ? "0" + number.substr(first == std::string::npos ? number.size() : first)
                                                                    : number.substr(first);
        if (number != "0")
            (inTime ? time : date) += number + text[j];
        i = j + 1;
    }
    if (date.empty() && time.empty())
        return "PT0S";
    if (out == "-" && date.empty() && time.empty())
        out.clear();
    return out + "P" + date + (time.empty() ? "" : "T" + time);
}

std::string PrimitiveOf(XSTypeDefinition *type)
{
    if (type == nullptr || type->getTypeCategory() != XSTypeDefinition::SIMPLE_TYPE)
        return "simple";
    auto *simple = static_cast<XSSimpleTypeDefinition *>(type);
    if (simple->getVariety() == XSSimpleTypeDefinition::VARIETY_LIST)
        return "list";
    if (simple->getVariety() == XSSimpleTypeDefinition::VARIETY_UNION)
        return "union";
    XSSimpleTypeDefinition *p = simple->getPrimitiveType();
    return p ? Utf8(p->getName()) : "simple";
}

// Whether a simple type's values are QNames, or lists of them.
bool HoldsQNames(XSTypeDefinition *type)
{
    if (type == nullptr || type->getTypeCategory() != XSTypeDefinition::SIMPLE_TYPE)
        return false;
    auto *simple = static_cast<XSSimpleTypeDefinition *>(type);
    if (simple->getVariety() == XSSimpleTypeDefinition::VARIETY_LIST)
        return HoldsQNames(simple->getItemType());
    return PrimitiveOf(type) == "QName";
}

// In-scope prefixes: the namespace each one is bound to, innermost last.
using PrefixScope = std::map<std::string, std::vector<std::string>>;

// A QName's value is its namespace and local name, not the prefix that
// the text happens to use: "{uri}local" for each item.
std::string ResolveQNames(std::string const &text, PrefixScope const &scope)
{
    std::string out;
    std::string const items = Collapse(text);
    std::size_t start = 0;
    while (start < items.size())
    {
        std::size_t end = items.find(' ', start);
        if (end == std::string::npos)
            end = items.size();
        std::string const item = items.substr(start, end - start);
        std::size_t const colon = item.find(':');
        std::string const prefix = colon == std::string::npos ? std::string() : item.substr(0, colon);
        auto const bound = scope.find(prefix);
        std::string const uri = bound == scope.end() || bound->second.empty() ? std::string() : bound->second.back();
        out += (out.empty() ? "{" : " {") + uri + "}" + item.substr(colon == std::string::npos ? 0 : colon + 1);
        start = end + 1;
    }
    return out;
}

class Collector : public DefaultHandler, public PSVIHandler
{
public:
    std::unique_ptr<Node> root;
    std::string firstError;

    void startElement(XMLCh const *uri, XMLCh const *localname, XMLCh const *, Attributes const &attrs) override
    {
        auto node = std::make_unique<Node>();
        node->ns = Utf8(uri);
        node->local = Utf8(localname);
        m_scopes[node.get()] = Scope();
        for (XMLSize_t i = 0; i < attrs.getLength(); ++i)
        {
            std::string const ans = Utf8(attrs.getURI(i));
            std::string const alocal = Utf8(attrs.getLocalName(i));
            std::string const value = Utf8(attrs.getValue(i));
            if (ans == kXsiNs)
            {
                if (alocal == "nil")
                    node->nil = Collapse(value) == "true" || Collapse(value) == "1";
                continue;
            }
            if (ans == kXmlnsNs || alocal == "xmlns" || Utf8(attrs.getQName(i)).rfind("xmlns:", 0) == 0)
                continue;
            node->attributes[{ans, alocal}] = value;
        }
        Node *raw = node.get();
        if (m_stack.empty())
            root = std::move(node);
        else
            m_stack.back()->children.push_back(std::move(node));
        m_stack.push_back(raw);
        m_attrsDone.push_back(false);
        if (m_pendingAttributes)
        {
            Apply(*raw, *m_pendingAttributes);
            m_pendingAttributes.reset();
            m_attrsDone.back() = true;
        }
    }

    void startPrefixMapping(XMLCh const *prefix, XMLCh const *uri) override
    {
        m_prefixes[Utf8(prefix)].push_back(Utf8(uri));
        m_scope.reset();
    }

    void endPrefixMapping(XMLCh const *prefix) override
    {
        auto found = m_prefixes.find(Utf8(prefix));
        if (found != m_prefixes.end() && !found->second.empty())
            found->second.pop_back();
        m_scope.reset();
    }

    void endElement(XMLCh const *, XMLCh const *, XMLCh const *) override
    {
        m_stack.pop_back();
        m_attrsDone.pop_back();
    }

    void characters(XMLCh const *chars, XMLSize_t length) override
    {
        if (!m_stack.empty())
            m_stack.back()->text += Utf8(std::basic_string<XMLCh>(chars, length).c_str());
    }

    void handleAttributesPSVI(XMLCh const *, XMLCh const *, PSVIAttributeList *list) override
    {
        std::map<std::pair<std::string, std::string>, std::string> values;
        for (XMLSize_t i = 0; list && i < list->getLength(); ++i)
        {
            PSVIAttribute *a = list->getAttributePSVIAtIndex(i);
            std::string const ns = Utf8(list->getAttributeNamespaceAtIndex(i));
            std::string const local = Utf8(list->getAttributeNameAtIndex(i));
            if (a != nullptr && a->getValidity() == PSVIItem::VALIDITY_VALID)
            {
                values[{ns, local}] = ValueOf(a, "");
                if (HoldsQNames(a->getMemberTypeDefinition() ? a->getMemberTypeDefinition() : a->getTypeDefinition()))
                    values[{ns, local}] = ResolveQNames(values[{ns, local}], *Scope());
            }
        }
        if (!m_stack.empty() && !m_attrsDone.back())
        {
            Apply(*m_stack.back(), values);
            m_attrsDone.back() = true;
        }
        else
            m_pendingAttributes = std::make_unique<decltype(values)>(std::move(values));
    }

    void handleElementPSVI(XMLCh const *, XMLCh const *, PSVIElement *info) override
    {
        // Xerces hands an element's infoset before its end tag's event.
        Node *node = m_stack.empty() ? nullptr : m_stack.back();
        if (node == nullptr || info == nullptr)
            return;
        XSTypeDefinition *type = info->getTypeDefinition();
        if (type == nullptr)
            return;
        if (!type->getAnonymous())
            node->type = "{" + Utf8(type->getNamespace()) + "}" + Utf8(type->getName());
        bool simple = type->getTypeCategory() == XSTypeDefinition::SIMPLE_TYPE;
        XSTypeDefinition *valueType = type;
        if (!simple)
        {
            auto *complex = static_cast<XSComplexTypeDefinition *>(type);
            switch (complex->getContentType())
            {
            case XSComplexTypeDefinition::CONTENTTYPE_SIMPLE:
                simple = true;
                valueType = complex->getSimpleType();
                break;
            case XSComplexTypeDefinition::CONTENTTYPE_ELEMENT:
            case XSComplexTypeDefinition::CONTENTTYPE_EMPTY:
                node->elementOnly = true;
                break;
            default:
                break;
            }
            XSParticle *particle = complex->getParticle();
            node->unordered = particle != nullptr && particle->getTermType() == XSParticle::TERM_MODELGROUP &&
                              particle->getModelGroupTerm()->getCompositor() == XSModelGroup::COMPOSITOR_ALL;
        }
        if (simple && !node->nil)
        {
            node->hasValue = true;
            node->value = ValueOf(info, node->text);
            node->primitive = PrimitiveOf(info->getMemberTypeDefinition() ? info->getMemberTypeDefinition() : valueType);
            XSTypeDefinition *member = info->getMemberTypeDefinition() ? info->getMemberTypeDefinition() : valueType;
            auto const scope = m_scopes.find(node);
            if (HoldsQNames(member) && scope != m_scopes.end())
                node->value = ResolveQNames(node->value, *scope->second);
            if (node->primitive == "hexBinary")
                node->value = CanonicalHex(node->value);
            else if (node->primitive == "duration")
                node->value = CanonicalDuration(node->value);
            else if (node->primitive == "gMonth")
                node->value = CanonicalGMonth(node->value);
        }
    }

    void error(SAXParseException const &e) override { Keep(e); }
    void fatalError(SAXParseException const &e) override { Keep(e); }
    void warning(SAXParseException const &) override {}

    void Reset()
    {
        root.reset();
        firstError.clear();
        m_stack.clear();
        m_attrsDone.clear();
        m_pendingAttributes.reset();
        m_prefixes.clear();
        m_scope.reset();
        m_scopes.clear();
    }

private:
    // The prefixes in scope now, shared by the elements that see the same.
    std::shared_ptr<PrefixScope const> Scope()
    {
        if (!m_scope)
            m_scope = std::make_shared<PrefixScope const>(m_prefixes);
        return m_scope;
    }

    static void Apply(Node &node, std::map<std::pair<std::string, std::string>, std::string> const &values)
    {
        for (auto const &[key, value] : values)
        {
            auto found = node.attributes.find(key);
            if (found != node.attributes.end())
                found->second = value;
        }
    }

    void Keep(SAXParseException const &e)
    {
        if (firstError.empty())
            firstError = std::to_string(e.getLineNumber()) + ":" + std::to_string(e.getColumnNumber()) + ": " +
                    Utf8(e.getMessage());
    }

    std::vector<Node *> m_stack;
    std::vector<bool> m_attrsDone;
    std::unique_ptr<std::map<std::pair<std::string, std::string>, std::string>> m_pendingAttributes;
    PrefixScope m_prefixes;
    std::shared_ptr<PrefixScope const> m_scope;
    std::map<Node const *, std::shared_ptr<PrefixScope const>> m_scopes;
};

std::string Where(Node const &node, std::string const &path)
{
    return path + "/" + node.local;
}

// A decimal's digits without a sign, leading or trailing zeros or a
// needless point: "+0.50" and ".5" give "0.5".
std::string DecimalDigits(std::string text)
{
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-'))
    {
        negative = text[0] == '-';
        text.erase(0, 1);
    }
    if (text.find('.') != std::string::npos)
    {
        text.erase(text.find_last_not_of('0') + 1);
        if (!text.empty() && text.back() == '.')
            text.pop_back();
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    if (text.empty() || text[0] == '.')
        text.insert(0, "0");
    return negative && text != "0" ? "-" + text : text;
}

// Xerces' canonical float and double keep the digits of the lexical form
// ("0.01" gives 0.1E-1, "1.0e-2" gives 1.0E-2): these compare as numbers.
// Its canonical decimal may keep a leading point.
bool SameValue(std::string const &primitive, std::string const &x, std::string const &y)
{
    if (x == y)
        return true;
    if (primitive == "decimal")
        return x.find_first_not_of("+-.0123456789") == std::string::npos &&
               y.find_first_not_of("+-.0123456789") == std::string::npos && DecimalDigits(x) == DecimalDigits(y);
    if (primitive != "float" && primitive != "double")
        return false;
    char *endX = nullptr, *endY = nullptr;
    double const a = std::strtod(x.c_str(), &endX), b = std::strtod(y.c_str(), &endY);
    if (*endX != '\0' || *endY != '\0' || endX == x.c_str() || endY == y.c_str())
        return false;
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b);
    return primitive == "float" ? static_cast<float>(a) == static_cast<float>(b) : a == b;
}

std::string CompareAt(Node const &e, Node const &a, std::string const &path)
{
    std::string const here = Where(e, path);
    if (e.local != a.local || e.ns != a.ns)
        return "element name differs (" + here + " became " + a.local + ")";
    if (e.nil != a.nil)
        return "nil differs (" + here + ")";
    if (e.type != a.type)
        return "element type differs (" + here + ") [" + e.type + "] [" + a.type + "]";
    if (e.attributes != a.attributes)
    {
        for (auto const &[key, value] : e.attributes)
        {
            auto found = a.attributes.find(key);
            if (found == a.attributes.end())
                return "attribute lost (" + here + "/@" + key.second + ")";
            if (found->second != value)
                return "attribute value differs (" + here + "/@" + key.second + ")";
        }
        for (auto const &entry : a.attributes)
            if (e.attributes.count(entry.first) == 0)
                return "attribute added (" + here + "/@" + entry.first.second + ")";
    }
    if (e.hasValue != a.hasValue)
        return "simple content differs (" + here + ")";
    if (e.hasValue && !SameValue(e.primitive, e.value, a.value))
        return e.primitive + " value differs (" + here + ") [" + e.value + "] [" + a.value + "]";
    if (!e.hasValue && !e.elementOnly && Collapse(e.text) != Collapse(a.text))
        return "text differs (" + here + ")";
    std::vector<Node const *> expected, actual;
    for (auto const &child : e.children)
        expected.push_back(child.get());
    for (auto const &child : a.children)
        actual.push_back(child.get());
    if (e.unordered)
    {
        // Each element of an all group stands once at most.
        auto const byName = [](Node const *x, Node const *y) { return std::tie(x->ns, x->local) < std::tie(y->ns, y->local); };
        std::stable_sort(expected.begin(), expected.end(), byName);
        std::stable_sort(actual.begin(), actual.end(), byName);
    }
    std::size_t const n = std::min(expected.size(), actual.size());
    for (std::size_t i = 0; i < n; ++i)
    {
        std::string const d = CompareAt(*expected[i], *actual[i], here);
        if (!d.empty())
            return d;
    }
    if (expected.size() > n)
        return "element lost (" + Where(*expected[n], here) + ")";
    if (actual.size() > n)
        return "element added (" + Where(*actual[n], here) + ")";
    return std::string();
}
} // namespace

// Imports from the network come from their local copies; any other is
// left to Xerces, which reads local files.
class MappedResolver : public EntityResolver
{
public:
    explicit MappedResolver(std::map<std::string, std::string> locations) : m_locations(std::move(locations)) {}
    InputSource *resolveEntity(XMLCh const *, XMLCh const *systemId) override
    {
        auto const local = m_locations.find(Utf8(systemId));
        if (local == m_locations.end())
            return nullptr;
        XMLCh *path = XMLString::transcode(local->second.c_str());
        auto *source = new LocalFileInputSource(path);
        XMLString::release(&path);
        return source;
    }

private:
    std::map<std::string, std::string> m_locations;
};

struct Validator::Impl
{
    explicit Impl(std::map<std::string, std::string> const &locations) : resolver(locations) {}
    MappedResolver resolver;
    std::unique_ptr<XMLGrammarPool> pool;
    std::unique_ptr<SAX2XMLReaderImpl> reader;
    Collector collector;
};

Validator::Validator(std::vector<std::string> const &schemas, std::map<std::string, std::string> const &locations)
    : m_impl(std::make_unique<Impl>(locations))
{
    MemoryManager *memory = XMLPlatformUtils::fgMemoryManager;
    m_impl->pool = std::make_unique<XMLGrammarPoolImpl>(memory);
    m_impl->reader = std::make_unique<SAX2XMLReaderImpl>(memory, m_impl->pool.get());
    SAX2XMLReaderImpl &r = *m_impl->reader;
    r.setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    r.setFeature(XMLUni::fgSAX2CoreValidation, true);
    r.setFeature(XMLUni::fgXercesDynamic, false);
    r.setFeature(XMLUni::fgXercesSchema, true);
    r.setFeature(XMLUni::fgXercesSchemaFullChecking, true);
    r.setFeature(XMLUni::fgXercesHandleMultipleImports, true);
    r.setFeature(XMLUni::fgXercesCacheGrammarFromParse, false);
    r.setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    r.setFeature(XMLUni::fgXercesLoadSchema, false);
    r.setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    r.setEntityResolver(&m_impl->resolver);
    r.setContentHandler(&m_impl->collector);
    r.setErrorHandler(&m_impl->collector);
    r.setPSVIHandler(&m_impl->collector);
    for (std::string const &schema : schemas)
    {
        m_impl->collector.Reset();
        Grammar *g = r.loadGrammar(schema.c_str(), Grammar::SchemaGrammarType, true);
        if (!m_impl->collector.firstError.empty() || g == nullptr)
            throw std::runtime_error(schema + ":" + m_impl->collector.firstError);
    }
}

Validator::~Validator()
{
    m_impl->reader.reset();
}

std::unique_ptr<Node> Validator::Parse(std::string const &bytes, std::string &error)
{
    m_impl->collector.Reset();
    MemBufInputSource source(reinterpret_cast<XMLByte const *>(bytes.data()), bytes.size(), "document", false);
    try
    {
        m_impl->reader->parse(source);
    }
    catch (XMLException const &e)
    {
        m_impl->collector.firstError = Utf8(e.getMessage());
    }
    catch (SAXException const &e)
    {
        m_impl->collector.firstError = Utf8(e.getMessage());
    }
    error = m_impl->collector.firstError;
    return std::move(m_impl->collector.root);
}

std::string Compare(Node const &expected, Node const &actual)
{
    return CompareAt(expected, actual, "");
}

} // namespace XsdTests
