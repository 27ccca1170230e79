#include "document/XmlDocument.h"

#include "document/ExpatReader.h"
#include "runtime/MxException.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace MxXmlLib
{

namespace
{
char const kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";
char const kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";

bool IsDescriptiveNamespace(std::string const &uri)
{
    return uri == kXsiNamespace || uri == kXmlnsNamespace;
}
} // namespace

// ---------------------------------------------------------------------------
// CXmlAttribute

CXmlAttribute::CXmlAttribute(CXmlElement const *element, std::string const &localName, std::string const &value,
                             std::string const &namespaceUri)
    : m_element(element), m_localName(localName), m_value(value), m_namespaceUri(namespaceUri)
{
}

std::string CXmlAttribute::GetXPath() const
{
    if (m_element == nullptr)
        return "@" + m_localName;
    std::string path = m_element->GetXPath();
    path += '/';
    if (!m_namespaceUri.empty() && m_element->GetDocument())
    {
        std::string prefix = m_element->GetDocument()->LookupAliasFromNamespace(m_namespaceUri.c_str());
        if (!prefix.empty())
        {
            path += prefix;
            path += ':';
        }
    }
    path += '@';
    path += m_localName;
    return path;
}

bool CXmlAttribute::IsNamespaceAttribute() const
{
    return IsDescriptiveNamespace(m_namespaceUri) &&
           (m_localName == "xmlns" || m_localName == "type" || m_localName == "schemaLocation" ||
            m_localName == "noNamespaceSchemaLocation");
}

bool CXmlAttribute::IsNilAttribute() const
{
    return IsDescriptiveNamespace(m_namespaceUri) && m_localName == "nil";
}

// ---------------------------------------------------------------------------
// CXmlElement

CXmlElement::CXmlElement(CXmlDocument *document, CXmlElement *parent)
    : m_document(document), m_parent(parent), m_nextSibling(nullptr), m_firstChild(nullptr), m_lastChild(nullptr)
{
}

CXmlElement::~CXmlElement()
{
    // Iterative over siblings so that a long child list does not recurse.
    CXmlElement *child = m_firstChild;
    while (child)
    {
        CXmlElement *next = child->m_nextSibling;
        delete child;
        child = next;
    }
    for (CXmlAttribute *attribute : m_attributes)
        delete attribute;
}

std::string const &CXmlElement::GetAttribute(std::string const &localName, std::string const &namespaceUri) const
{
    for (CXmlAttribute const *attribute : m_attributes)
        if (attribute->m_localName == localName && attribute->m_namespaceUri == namespaceUri)
            return attribute->m_value;
    static std::string const empty;
    return empty;
}

void CXmlElement::AppendText(char const *text)
{
    AppendText(text, static_cast<int>(std::strlen(text)));
}

void CXmlElement::AppendText(char const *text, int length)
{
    if (length <= 0)
        return;
    std::size_t const needed = m_text.size() + static_cast<std::size_t>(length);
    if (!m_text.empty() && needed > m_text.capacity())
        m_text.reserve(std::max(2 * m_text.capacity(), needed));
    m_text.append(text, static_cast<std::size_t>(length));
}

CXmlElement *CXmlElement::CreateNewChildElement()
{
    auto *child = new CXmlElement(m_document, this);
    if (m_lastChild)
        m_lastChild->m_nextSibling = child;
    else
        m_firstChild = child;
    m_lastChild = child;
    return child;
}

void CXmlElement::AddAttribute(std::string const &localName, std::string const &value,
                               std::string const &namespaceUri)
{
    m_attributes.push_back(new CXmlAttribute(this, localName, value, namespaceUri));
}

CXmlElement *CXmlElement::RemoveLastChildElement()
{
    CXmlElement *removed = m_lastChild;
    if (removed == nullptr)
        return nullptr;
    if (m_firstChild == removed)
    {
        m_firstChild = m_lastChild = nullptr;
        return removed;
    }
    CXmlElement *before = m_firstChild;
    while (before->m_nextSibling != removed)
        before = before->m_nextSibling;
    before->m_nextSibling = nullptr;
    m_lastChild = before;
    return removed;
}

std::string CXmlElement::GetQName() const
{
    if (m_document && !m_namespaceUri.empty())
    {
        std::string prefix = m_document->LookupAliasFromNamespace(m_namespaceUri.c_str());
        if (!prefix.empty())
            return prefix + ":" + m_localName;
    }
    return m_localName;
}

std::string CXmlElement::GetNameWithPredicate() const
{
    std::string const qname = GetQName();
    if (m_parent == nullptr)
        return qname;
    int position = 0;
    int same = 0;
    for (CXmlElement const *sibling = m_parent->m_firstChild; sibling; sibling = sibling->m_nextSibling)
    {
        if (sibling->GetQName() != qname)
            continue;
        ++same;
        if (sibling == this)
            position = same;
    }
    if (same < 2)
        return qname;
    return qname + "[" + std::to_string(position) + "]";
}

std::string CXmlElement::GetXPath() const
{
    std::string path = m_parent ? m_parent->GetXPath() : std::string();
    path += '/';
    path += GetNameWithPredicate();
    return path;
}

// ---------------------------------------------------------------------------
// CXmlDocument

CXmlDocument::CXmlDocument() : CXmlDocument(nullptr, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(CSerializationContext const &context) : CXmlDocument(nullptr, context) {}

CXmlDocument::CXmlDocument(ElementEndFunction onElementEnd)
    : CXmlDocument(onElementEnd, CSerializationContext::GetDefaultContext())
{
}

CXmlDocument::CXmlDocument(ElementEndFunction onElementEnd, CSerializationContext const &context)
    : m_documentElement(nullptr), m_buffer(nullptr), m_bufferLength(0), m_schemaType(context.GetSchemaType()),
      m_elementEndFunction(onElementEnd), m_context(context)
{
}

CXmlDocument::~CXmlDocument()
{
    CleanupThis();
}

void CXmlDocument::Cleanup()
{
    CleanupThis();
}

void CXmlDocument::CleanupThis()
{
    delete m_documentElement;
    m_documentElement = nullptr;
    std::free(m_buffer);
    m_buffer = nullptr;
    m_bufferLength = 0;
    m_elementStack.clear();
    m_namespaceMap.clear();
}

void CXmlDocument::Init()
{
    m_buffer = nullptr;
    m_bufferLength = 0;
    m_documentElement = nullptr;
    m_schemaType = m_context.GetSchemaType();
}

void CXmlDocument::SetBuffer(void const *data, unsigned long length)
{
    std::free(m_buffer);
    m_buffer = static_cast<unsigned char *>(std::malloc(length ? length : 1));
    if (m_buffer == nullptr)
        throw std::bad_alloc();
    if (length)
        std::memcpy(m_buffer, data, length);
    m_bufferLength = length;
}

void CXmlDocument::LoadXml(char const *text)
{
    Cleanup();
    if (text == nullptr || *text == '\0')
        throw CMxException("XML String is empty!");
    Init();
    SetBuffer(text, std::strlen(text));
    ParseText();
}

void CXmlDocument::LoadXml(wchar_t const *text)
{
    Cleanup();
    Init();
    // wchar_t holds UTF-32 here; the parser is given UTF-16LE behind FF FE,
    // so that a byte order mark always announces the encoding.
    std::string bytes("\xFF\xFE", 2);
    for (wchar_t const *p = text ? text : L""; *p; ++p)
    {
        auto c = static_cast<unsigned long>(*p);
        if (c > 0x10FFFF)
            c = 0xFFFD;
        auto put = [&bytes](unsigned long unit) {
            bytes.push_back(static_cast<char>(unit & 0xFF));
            bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
        };
        if (c >= 0x10000)
        {
            c -= 0x10000;
            put(0xD800 | (c >> 10));
            put(0xDC00 | (c & 0x3FF));
        }
        else
            put(c);
    }
    SetBuffer(bytes.data(), bytes.size());
    ParseText();
}

void CXmlDocument::ParseText()
{
    CExpatReader reader(this);
    reader.Init();
    reader.Parse(true);
}

std::string CXmlDocument::LookupNamespaceFromAlias(char const *prefix) const
{
    auto found = m_namespaceMap.find(prefix ? prefix : "");
    return found == m_namespaceMap.end() ? std::string() : found->second;
}

std::string CXmlDocument::LookupAliasFromNamespace(char const *uri) const
{
    std::string const wanted = uri ? uri : "";
    for (auto const &entry : m_namespaceMap)
        if (entry.second == wanted)
            return entry.first;
    return std::string();
}

CXmlElement *CXmlDocument::AddDocElement(char const *namespaceUri, char const *localName)
{
    // A second document element cannot come from a parser; keep the first.
    delete m_documentElement;
    m_documentElement = new CXmlElement(this, nullptr);
    m_documentElement->m_namespaceUri = namespaceUri;
    m_documentElement->m_localName = localName;
    m_elementStack.push_back(m_documentElement);
    return m_documentElement;
}

CXmlElement *CXmlDocument::AddChildElement(char const *namespaceUri, char const *localName)
{
    CXmlElement *child = m_elementStack.back()->CreateNewChildElement();
    child->m_namespaceUri = namespaceUri;
    child->m_localName = localName;
    m_elementStack.push_back(child);
    return child;
}

void CXmlDocument::EndElement()
{
    if (m_elementStack.empty())
        return;
    CXmlElement *ended = m_elementStack.back();
    m_elementStack.pop_back();
    if (m_elementEndFunction && m_elementEndFunction(ended) && !m_elementStack.empty())
        delete m_elementStack.back()->RemoveLastChildElement();
}

void CXmlDocument::AddElementAttribute(CXmlElement *element, std::string const &localName,
                                       std::string const &value, std::string const &namespaceUri)
{
    element->AddAttribute(localName, value, namespaceUri);
}

void CXmlDocument::AppendTextExcludingCR(CXmlElement *element, char const *text, unsigned long length)
{
    char const *end = text;
    char const *const limit = text + length;
    while (end < limit && *end)
        ++end;
    char const *run = text;
    while (run < end)
    {
        auto const *cr = static_cast<char const *>(std::memchr(run, '\r', static_cast<std::size_t>(end - run)));
        char const *stop = cr ? cr : end;
        element->AppendText(run, static_cast<int>(stop - run));
        run = cr ? cr + 1 : end;
    }
}

void CXmlDocument::AppendTextExcludingCR(CXmlElement *element, char const *text)
{
    AppendTextExcludingCR(element, text, std::strlen(text));
}

} // namespace MxXmlLib
