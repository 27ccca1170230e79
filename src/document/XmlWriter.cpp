#include "document/XmlWriter.h"

#include "runtime/MxException.h"

namespace MxXmlLib
{

using Context = CXmlWriter::CXmlWriterContext;

Context::CXmlWriterContext(std::string const &localName, std::string const &namespaceUri,
                           std::string const &defaultNamespace, NamespaceMap const &map)
    : NamespaceUri(namespaceUri), LocalName(localName), m_parent(nullptr), m_defaultNamespace(defaultNamespace),
      m_map(new NamespaceMap(map)), m_inherits(false), m_ownsMap(true)
{
}

Context::CXmlWriterContext(std::string const &localName, std::string const &namespaceUri, Context *parent)
    : Depth(parent->Depth + 1), NamespaceUri(namespaceUri), LocalName(localName), m_parent(parent),
      m_map(parent->m_map), m_inherits(true), m_ownsMap(false)
{
}

Context::~CXmlWriterContext()
{
    if (m_ownsMap)
        delete m_map;
    // The chain of open elements dies with its innermost context; walk it
    // instead of recursing through deep documents.
    Context *ancestor = m_parent;
    while (ancestor)
    {
        Context *next = ancestor->m_parent;
        ancestor->m_parent = nullptr;
        delete ancestor;
        ancestor = next;
    }
}

std::string const &Context::GetEffectiveDefaultNamespace() const
{
    Context const *c = this;
    while (c->m_inherits && c->m_parent)
        c = c->m_parent;
    return c->m_defaultNamespace;
}

void Context::MakeScopeOwn()
{
    if (!m_inherits)
        return;
    std::string const &inherited = GetEffectiveDefaultNamespace();
    m_map = new NamespaceMap(*m_map);
    m_ownsMap = true;
    m_inherits = false;
    m_defaultNamespace = inherited;
}

void Context::SetDefaultNamespace(std::string const &uri)
{
    MakeScopeOwn();
    m_defaultNamespace = uri;
}

void Context::AddNamespace(std::string const &prefix, std::string const &uri)
{
    MakeScopeOwn();
    (*m_map)[uri] = prefix;
}

std::string const *Context::FindPrefix(std::string const &uri) const
{
    auto found = m_map->find(uri);
    return found == m_map->end() ? nullptr : &found->second;
}

std::string Context::GeneratePrefix() const
{
    for (unsigned i = 0;; ++i)
    {
        std::string candidate;
        candidate += static_cast<char>('A' + i / 26);
        candidate += static_cast<char>('A' + i % 26);
        bool used = false;
        for (auto const &entry : *m_map)
            if (entry.second == candidate)
            {
                used = true;
                break;
            }
        if (!used)
            return candidate;
    }
}

Context *Context::DetachParent()
{
    Context *parent = m_parent;
    m_parent = nullptr;
    return parent;
}

// ---------------------------------------------------------------------------

CXmlWriter::CXmlWriter() : m_current(nullptr)
{
    m_namespaceMap["http://www.w3.org/XML/1998/namespace"] = "xml";
}

CXmlWriter::~CXmlWriter()
{
    delete m_current;
}

void CXmlWriter::StartDocument() {}

void CXmlWriter::EndDocument()
{
    if (m_current)
        throw CMxException("An Element has not been closed.");
}

void CXmlWriter::SetDefaultNamespace(std::string const &uri)
{
    if (m_current)
        m_current->SetDefaultNamespace(uri);
    else
        m_defaultNamespace = uri;
}

void CXmlWriter::AddNamespace(std::string const &prefix, std::string const &uri)
{
    if (m_current)
        m_current->AddNamespace(prefix, uri);
    else
        m_namespaceMap[uri] = prefix;
}

Context *CXmlWriter::CreateContext(std::string const &localName, std::string const &namespaceUri)
{
    if (m_current)
        return new Context(localName, namespaceUri, m_current);
    return new Context(localName, namespaceUri, m_defaultNamespace, m_namespaceMap);
}

void CXmlWriter::PopContext()
{
    Context *ended = m_current;
    m_current = ended->DetachParent();
    delete ended;
}

} // namespace MxXmlLib
