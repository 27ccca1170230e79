#include "document/XmlDocument.h"

#include "document/ExpatReader.h"
#include "document/NameTable.h"
#include "document/NodePool.h"
#include "runtime/Compression.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"
#include "runtime/platform/NativeFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace MxXmlLib
{

namespace
{
char const kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";
char const kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";

bool IsDescriptiveNamespace(std::string const &uri)
{
    // Most attributes have no namespace: no comparison for them.
    return !uri.empty() && (uri == kXsiNamespace || uri == kXmlnsNamespace);
}

std::string const &EmptyString()
{
    static std::string const empty;
    return empty;
}

std::vector<CXmlAttribute *> const &NoAttributes()
{
    static std::vector<CXmlAttribute *> const none;
    return none;
}
} // namespace

// ---------------------------------------------------------------------------
// CXmlAttribute

CXmlAttribute::CXmlAttribute(CXmlElement const *element, std::string const &localName, std::string const &value,
                             std::string const &namespaceUri)
    : m_element(element), m_localName(&EmptyString()), m_value(value), m_namespaceUri(&EmptyString())
{
    if (element && element->GetDocument())
    {
        m_localName = element->GetDocument()->Intern(localName);
        m_namespaceUri = element->GetDocument()->Intern(namespaceUri);
    }
}

CXmlAttribute::CXmlAttribute(CXmlElement const *element, std::string const *localName,
                             std::string const *namespaceUri)
    : m_element(element), m_localName(localName), m_namespaceUri(namespaceUri)
{
}

std::string CXmlAttribute::GetXPath() const
{
    if (m_element == nullptr)
        return "@" + *m_localName;
    std::string path = m_element->GetXPath();
    path += '/';
    if (!m_namespaceUri->empty() && m_element->GetDocument())
    {
        std::string prefix = m_element->GetDocument()->LookupAliasFromNamespace(m_namespaceUri->c_str());
        if (!prefix.empty())
        {
            path += prefix;
            path += ':';
        }
    }
    path += '@';
    path += *m_localName;
    return path;
}

bool CXmlAttribute::IsNamespaceAttribute() const
{
    std::string const &name = *m_localName;
    return IsDescriptiveNamespace(*m_namespaceUri) &&
           (name == "xmlns" || name == "type" || name == "schemaLocation" || name == "noNamespaceSchemaLocation");
}

bool CXmlAttribute::IsNilAttribute() const
{
    return IsDescriptiveNamespace(*m_namespaceUri) && *m_localName == "nil";
}

// ---------------------------------------------------------------------------
// CXmlElement

CXmlElement::CXmlElement(CXmlDocument *document, CXmlElement *parent)
    : m_document(document), m_parent(parent), m_nextSibling(nullptr), m_firstChild(nullptr), m_lastChild(nullptr),
      m_localName(&EmptyString()), m_namespaceUri(&EmptyString())
{
}

CXmlElement::~CXmlElement()
{
    DropContent();
}

void CXmlElement::DropContent()
{
    // Without recursion, since a document may nest deeper than the stack
    // allows, and without allocating, since a destructor must not fail: the
    // walk follows the parent links. Each element is unlinked from its
    // children before it is left for them, so it is a leaf when the walk
    // comes back up to it, and its own destructor has no children to walk.
    CXmlElement *e = m_firstChild;
    m_firstChild = m_lastChild = nullptr;
    while (e != nullptr && e != this)
    {
        if (CXmlElement *child = e->m_firstChild)
        {
            e->m_firstChild = e->m_lastChild = nullptr;
            e = child;
            continue;
        }
        CXmlElement *const next = e->m_nextSibling ? e->m_nextSibling : e->m_parent;
        m_document->DestroyElement(e);
        e = next;
    }
    if (m_attributes)
    {
        for (CXmlAttribute *attribute : *m_attributes)
            m_document->DestroyAttribute(attribute);
        m_document->DestroyAttributeList(m_attributes);
        m_attributes = nullptr;
    }
    if (m_text)
    {
        m_document->DestroyText(m_text);
        m_text = nullptr;
    }
}

CXmlElement *CXmlElement::AwaitNextSibling() const
{
    while (m_nextSibling == nullptr && m_parent->m_open && m_document->ParseMore())
    {
    }
    return m_nextSibling;
}

CXmlElement *CXmlElement::AwaitFirstChild() const
{
    while (m_firstChild == nullptr && m_open && m_document->ParseMore())
    {
    }
    return m_firstChild;
}

void CXmlElement::AwaitEnd() const
{
    while (m_open && m_document->ParseMore())
    {
    }
}

std::string const &CXmlElement::NoText()
{
    return EmptyString();
}

std::vector<CXmlAttribute *> const &CXmlElement::GetAttributes() const
{
    return m_attributes ? *m_attributes : NoAttributes();
}

std::string const &CXmlElement::GetAttribute(std::string const &localName, std::string const &namespaceUri) const
{
    for (CXmlAttribute const *attribute : GetAttributes())
        if (*attribute->m_localName == localName && *attribute->m_namespaceUri == namespaceUri)
            return attribute->m_value;
    return EmptyString();
}

void CXmlElement::SetElementName(std::string const &localName)
{
    if (m_document)
        m_localName = m_document->Intern(localName);
}

void CXmlElement::SetNamespace(std::string const &namespaceUri)
{
    if (m_document)
        m_namespaceUri = m_document->Intern(namespaceUri);
}

void CXmlElement::AppendText(char const *text)
{
    AppendText(text, static_cast<int>(std::strlen(text)));
}

void CXmlElement::AppendText(char const *text, int length)
{
    if (length <= 0)
        return;
    if (m_text == nullptr)
        m_text = m_document->NewText();
    std::string &own = *m_text;
    std::size_t const needed = own.size() + static_cast<std::size_t>(length);
    if (!own.empty() && needed > own.capacity())
        own.reserve(std::max(2 * own.capacity(), needed));
    own.append(text, static_cast<std::size_t>(length));
}

CXmlElement *CXmlElement::CreateNewChildElement()
{
    CXmlElement *child = m_document->NewElement(this);
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
    if (!m_attributes)
        m_attributes = m_document->NewAttributeList();
    m_attributes->push_back(nullptr);
    CXmlAttribute *attribute = m_document->NewAttribute(this, m_document->Intern(localName),
                                                        m_document->Intern(namespaceUri));
    m_attributes->back() = attribute;
    attribute->m_value = value;
}

CXmlAttribute *CXmlElement::AddAttribute(std::string const *localName, std::string const *namespaceUri,
                                         std::size_t expectedCount)
{
    if (!m_attributes)
    {
        m_attributes = m_document->NewAttributeList();
        m_attributes->reserve(expectedCount);
    }
    m_attributes->push_back(nullptr);
    return m_attributes->back() = m_document->NewAttribute(this, localName, namespaceUri);
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
    if (m_document && !m_namespaceUri->empty())
    {
        std::string prefix = m_document->LookupAliasFromNamespace(m_namespaceUri->c_str());
        if (!prefix.empty())
            return prefix + ":" + *m_localName;
    }
    return *m_localName;
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
    // Positions count the siblings that follow, and prefixes are those of
    // the whole document.
    if (m_document)
        m_document->ParseToEnd();
    std::vector<CXmlElement const *> chain;
    for (CXmlElement const *e = this; e; e = e->m_parent)
        chain.push_back(e);
    std::string path;
    for (auto e = chain.rbegin(); e != chain.rend(); ++e)
    {
        path += '/';
        path += (*e)->GetNameWithPredicate();
    }
    return path;
}

// ---------------------------------------------------------------------------
// CXmlDocument

static_assert(alignof(CXmlElement) <= alignof(void *) && alignof(CXmlAttribute) <= alignof(void *),
              "the node pool aligns to pointers");

CXmlElement *CXmlDocument::NewElement(CXmlElement *parent)
{
    return new (m_pool->Allocate(sizeof(CXmlElement))) CXmlElement(this, parent);
}

void CXmlDocument::DestroyElement(CXmlElement *element)
{
    if (element == nullptr)
        return;
    element->~CXmlElement();
    m_pool->Free(element, sizeof(CXmlElement));
}

CXmlAttribute *CXmlDocument::NewAttribute(CXmlElement const *element, std::string const *localName,
                                          std::string const *namespaceUri)
{
    return new (m_pool->Allocate(sizeof(CXmlAttribute))) CXmlAttribute(element, localName, namespaceUri);
}

std::string *CXmlDocument::NewText()
{
    return new (m_pool->Allocate(sizeof(std::string))) std::string();
}

void CXmlDocument::DestroyText(std::string *text)
{
    using String = std::string;
    text->~String();
    m_pool->Free(text, sizeof(std::string));
}

std::vector<CXmlAttribute *> *CXmlDocument::NewAttributeList()
{
    return new (m_pool->Allocate(sizeof(std::vector<CXmlAttribute *>))) std::vector<CXmlAttribute *>();
}

void CXmlDocument::DestroyAttributeList(std::vector<CXmlAttribute *> *list)
{
    using List = std::vector<CXmlAttribute *>;
    list->~List();
    m_pool->Free(list, sizeof(List));
}

void CXmlDocument::DestroyAttribute(CXmlAttribute *attribute)
{
    // An element's list holds null for an attribute whose allocation failed.
    if (attribute == nullptr)
        return;
    attribute->~CXmlAttribute();
    m_pool->Free(attribute, sizeof(CXmlAttribute));
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
    m_lazyReader.reset();
    m_lazyFailure = nullptr;
    m_lazyOffset = 0;
    m_undoableReads = 0;
    m_ownReads.clear();
    DestroyElement(m_documentElement);
    m_documentElement = nullptr;
    if (m_bufferOwned)
        std::free(m_buffer);
    m_buffer = nullptr;
    m_bufferLength = 0;
    m_bufferOwned = false;
    m_elementStack.clear();
    m_namespaceMap.clear();
    m_names->Clear();
    m_pool->Clear();
    m_inflated.Clear();
}

std::string const *CXmlDocument::Intern(std::string_view name)
{
    return m_names->Intern(name);
}

void CXmlDocument::SetBuffer(void const *data, unsigned long length)
{
    if (m_bufferOwned)
        std::free(m_buffer);
    m_buffer = static_cast<unsigned char *>(std::malloc(length ? length : 1));
    if (m_buffer == nullptr)
        throw std::bad_alloc();
    if (length)
        std::memcpy(m_buffer, data, length);
    m_bufferLength = length;
    m_bufferOwned = true;
}

void CXmlDocument::SetBorrowedBuffer(void const *data, unsigned long length)
{
    if (m_bufferOwned)
        std::free(m_buffer);
    m_buffer = static_cast<unsigned char *>(const_cast<void *>(data));
    m_bufferLength = length;
    m_bufferOwned = false;
}

std::string CXmlDocument::LookupNamespaceFromAlias(char const *prefix) const
{
    ParseToEnd();
    auto found = m_namespaceMap.find(prefix ? prefix : "");
    return found == m_namespaceMap.end() ? std::string() : found->second;
}

std::string CXmlDocument::LookupAliasFromNamespace(char const *uri) const
{
    ParseToEnd();
    std::string const wanted = uri ? uri : "";
    for (auto const &entry : m_namespaceMap)
        if (entry.second == wanted)
            return entry.first;
    return std::string();
}

CXmlElement *CXmlDocument::AddDocElement(char const *namespaceUri, char const *localName)
{
    DestroyElement(m_documentElement);
    m_documentElement = nullptr;
    m_elementStack.clear();
    return AddElement(Intern(namespaceUri), Intern(localName));
}

CXmlElement *CXmlDocument::AddChildElement(char const *namespaceUri, char const *localName)
{
    return AddElement(Intern(namespaceUri), Intern(localName));
}

CXmlElement *CXmlDocument::AddElement(std::string const *namespaceUri, std::string const *localName)
{
    // Everything that reads a tree into objects recurses once per level, so
    // depth is bounded here, where all input passes, rather than by the stack.
    if (m_elementStack.size() >= kMaxElementDepth)
        throw CMxException(
            FormatString("The document nests elements deeper than %d levels.", static_cast<int>(kMaxElementDepth)));
    CXmlElement *element;
    if (m_documentElement == nullptr)
        element = m_documentElement = NewElement(nullptr);
    else if (m_elementStack.empty())
        throw CMxException("Invalid or empty XML document"); // a second document element
    else
        element = m_elementStack.back()->CreateNewChildElement();
    element->m_namespaceUri = namespaceUri;
    element->m_localName = localName;
    element->m_open = m_lazyReader != nullptr;
    m_elementStack.push_back(element);
    return element;
}

void CXmlDocument::EndElement()
{
    if (m_elementStack.empty())
        return;
    CXmlElement *ended = m_elementStack.back();
    ended->m_open = false;
    m_elementStack.pop_back();
    if (m_elementEndFunction && m_elementEndFunction(ended) && !m_elementStack.empty())
        DestroyElement(m_elementStack.back()->RemoveLastChildElement());
}

namespace
{
// Input parsed at a time when a document is read while it is parsed: small
// enough that the tree ahead of the reading stays small, large enough that
// slicing costs nothing measurable.
constexpr unsigned long kLazySlice = 16 * 1024;
} // namespace

bool CXmlDocument::ParseMore()
{
    if (!m_lazyReader)
        return false;
    unsigned long const left = m_bufferLength - m_lazyOffset;
    unsigned long const piece = left > kLazySlice ? kLazySlice : left;
    bool end = piece == left;
    try
    {
        m_lazyReader->Parse(reinterpret_cast<char const *>(m_buffer) + m_lazyOffset, piece, end);
    }
    catch (...)
    {
        m_lazyFailure = std::current_exception();
        end = true;
    }
    m_lazyOffset += piece;
    if (end)
    {
        // What is still open after a failure stays as far as it got.
        m_lazyReader.reset();
        for (CXmlElement *open : m_elementStack)
            open->m_open = false;
    }
    return true;
}

void CXmlDocument::ParseToEnd() const
{
    auto *self = const_cast<CXmlDocument *>(this);
    while (self->ParseMore())
    {
    }
}

void CXmlDocument::FinishParse()
{
    ParseToEnd();
    if (!m_bufferOwned)
        SetBorrowedBuffer(nullptr, 0);
    if (m_lazyFailure)
    {
        std::exception_ptr const failure = m_lazyFailure;
        m_lazyFailure = nullptr;
        std::rethrow_exception(failure);
    }
}

void CXmlDocument::ElementRead(CXmlElement *element)
{
    if (m_undoableReads != 0 || element == nullptr)
        return;
    // The reading may have stopped before the end tag; the parse goes there
    // before the children can go.
    element->AwaitEnd();
    if (!element->m_open)
        element->DropContent();
}

void CXmlDocument::AddElementAttribute(CXmlElement *element, std::string const &localName,
                                       std::string const &value, std::string const &namespaceUri)
{
    element->AddAttribute(localName, value, namespaceUri);
}

void CXmlDocument::AppendTextExcludingCR(CXmlElement *element, char const *text, unsigned long length)
{
    auto const *zero = static_cast<char const *>(std::memchr(text, 0, length));
    char const *const end = zero ? zero : text + length;
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
