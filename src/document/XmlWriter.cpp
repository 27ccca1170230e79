#include "document/XmlWriter.h"

#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <algorithm>

namespace MxXmlLib
{

using Context = CXmlWriter::CXmlWriterContext;

void Context::InitCommon(std::string const &localName, std::string const &namespaceUri)
{
    ChildCount = 0;
    TagOpen = 1;
    ArrayState = 0;
    HasAttributes = 0;
    LocalName = localName;
    NamespaceUri = namespaceUri;
    NamePrefix.clear();
    m_declared.clear();
    m_remapped.clear();
}

void Context::InitRoot(std::string const &localName, std::string const &namespaceUri,
                       std::string const &defaultNamespace, NamespaceMap const &map)
{
    InitCommon(localName, namespaceUri);
    Depth = 0;
    m_parent = nullptr;
    m_scope = this;
    m_outerScope = nullptr;
    m_inherits = false;
    m_defaultNamespace = defaultNamespace;
    m_declared.assign(map.begin(), map.end());
}

void Context::InitChild(std::string const &localName, std::string const &namespaceUri, Context *parent)
{
    InitCommon(localName, namespaceUri);
    Depth = parent->Depth + 1;
    m_parent = parent;
    m_scope = parent->m_scope;
    m_outerScope = nullptr;
    m_inherits = true;
    m_defaultNamespace.clear();
}

void Context::MakeScopeOwn()
{
    if (!m_inherits)
        return;
    m_defaultNamespace = m_scope->m_defaultNamespace;
    m_outerScope = m_scope;
    m_scope = this;
    m_inherits = false;
}

void Context::SetDefaultNamespace(std::string const &uri)
{
    MakeScopeOwn();
    m_defaultNamespace = uri;
}

void Context::AddNamespace(std::string const &prefix, std::string const &uri)
{
    MakeScopeOwn();
    for (auto &entry : m_declared)
        if (entry.first == uri)
        {
            if (entry.second != prefix)
                m_remapped.push_back(entry.second);
            entry.second = prefix;
            return;
        }
    m_declared.emplace_back(uri, prefix);
}

std::string const *Context::FindPrefix(std::string const &uri) const
{
    for (Context const *scope = m_scope; scope; scope = scope->m_outerScope)
        for (auto const &entry : scope->m_declared)
            if (entry.first == uri)
                return &entry.second;
    return nullptr;
}

bool Context::IsPrefixInUse(std::string const &prefix) const
{
    for (Context const *scope = m_scope; scope; scope = scope->m_outerScope)
        for (auto const &entry : scope->m_declared)
            // A mapping overridden by a nearer scope is no longer in force.
            if (entry.second == prefix && FindPrefix(entry.first) == &entry.second)
                return true;
    for (Context const *scope = m_scope; scope; scope = scope->m_outerScope)
        if (std::find(scope->m_remapped.begin(), scope->m_remapped.end(), prefix) != scope->m_remapped.end())
            return true;
    return false;
}

std::string Context::GeneratePrefix() const
{
    std::string candidate(2, 'A');
    for (unsigned i = 0;; ++i)
    {
        candidate[0] = static_cast<char>('A' + i / 26);
        candidate[1] = static_cast<char>('A' + i % 26);
        if (!IsPrefixInUse(candidate))
            return candidate;
    }
}

CXmlWriter::NamespaceMap Context::GetEffectiveMap() const
{
    NamespaceMap map;
    for (Context const *scope = m_scope; scope; scope = scope->m_outerScope)
        for (auto const &entry : scope->m_declared)
            map.emplace(entry.first, entry.second); // the nearest scope wins
    return map;
}

// ---------------------------------------------------------------------------

CXmlWriter::CXmlWriter() : m_current(nullptr)
{
    m_namespaceMap["http://www.w3.org/XML/1998/namespace"] = "xml";
}

CXmlWriter::~CXmlWriter() = default;

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
    Context *context;
    if (m_free.empty())
    {
        m_contexts.push_back(std::make_unique<Context>());
        context = m_contexts.back().get();
    }
    else
    {
        context = m_free.back();
        m_free.pop_back();
    }
    if (m_current)
        context->InitChild(localName, namespaceUri, m_current);
    else
        context->InitRoot(localName, namespaceUri, m_defaultNamespace, m_namespaceMap);
    return context;
}

void CXmlWriter::ReleaseContext(Context *context)
{
    context->m_parent = nullptr;
    m_free.push_back(context);
}

void CXmlWriter::PopContext()
{
    Context *ended = m_current;
    m_current = ended->m_parent;
    ReleaseContext(ended);
}

CXmlWriter::CXmlWriterContext &CXmlWriter::Current()
{
    if (m_current == nullptr)
        throw CMxInvalidStateException("No element is open.");
    return *m_current;
}

bool CXmlWriter::IsUnderXmlNamespace(std::string const &uri)
{
    static char const kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
    return uri.compare(0, sizeof(kXmlNamespace) - 1, kXmlNamespace) == 0;
}

void CXmlWriter::FlushCheck(CTextStream &stream)
{
    constexpr std::uint32_t kFlushThreshold = 4096;
    if (stream.GetLength() >= kFlushThreshold)
        stream.Flush();
}

} // namespace MxXmlLib
