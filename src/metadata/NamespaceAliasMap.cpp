#include "metadata/NamespaceAliasMap.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <iterator>

namespace MxXmlLib
{

namespace
{
std::string Str(char const *s)
{
    return s ? std::string(s) : std::string();
}
} // namespace

void CNamespaceAliasMap::Add(char const *alias, char const *namespaceUri)
{
    m_map[Str(namespaceUri)] = Str(alias);
}

void CNamespaceAliasMap::RemoveNamespace(char const *namespaceUri)
{
    m_map.erase(Str(namespaceUri));
}

std::string CNamespaceAliasMap::GetNamespaceFromAlias(char const *alias)
{
    std::string const wanted = Str(alias);
    for (auto const &entry : m_map)
        if (entry.second == wanted)
            return entry.first;
    throw CMxException(FormatString("Namespace alias [%s] not found", wanted.c_str()));
}

std::string CNamespaceAliasMap::GetAliasFromNamespace(char const *namespaceUri)
{
    return m_map[Str(namespaceUri)];
}

bool CNamespaceAliasMap::DoesNamespaceExist(char const *namespaceUri) const
{
    return m_map.find(Str(namespaceUri)) != m_map.end();
}

bool CNamespaceAliasMap::DoesAliasExist(char const *alias) const
{
    std::string const wanted = Str(alias);
    for (auto const &entry : m_map)
        if (entry.second == wanted)
            return true;
    return false;
}

std::string CNamespaceAliasMap::GetNamespaceAt(int index)
{
    if (index < 1)
        index = 0;
    // Past the end is the caller's error; answer empty rather than read past it.
    if (index >= GetNamespaceCount())
        return std::string();
    return std::next(m_map.begin(), index)->first;
}

} // namespace MxXmlLib
