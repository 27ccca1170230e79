#pragma once

#include <map>
#include <string>

namespace MxXmlLib
{

// Namespace URI -> prefix, in byte order of the URI, for the root element of
// an output document.
class CNamespaceAliasMap
{
public:
    CNamespaceAliasMap() = default;
    CNamespaceAliasMap(CNamespaceAliasMap const &) = default;
    CNamespaceAliasMap &operator=(CNamespaceAliasMap const &) = default;
    virtual ~CNamespaceAliasMap() = default;

    // A second Add of a namespace replaces its alias.
    void Add(char const *alias, char const *namespaceUri);
    void RemoveNamespace(char const *namespaceUri);
    // The first URI in key order with this alias; raises if there is none.
    std::string GetNamespaceFromAlias(char const *alias);
    // An unknown URI gives "" and stays in the map with an empty alias.
    std::string GetAliasFromNamespace(char const *namespaceUri);
    bool DoesNamespaceExist(char const *namespaceUri) const;
    bool DoesAliasExist(char const *alias) const;
    int GetNamespaceCount() const { return static_cast<int>(m_map.size()); }
    // An index below 1 gives the first; the index must be below the count.
    std::string GetNamespaceAt(int index);

private:
    std::map<std::string, std::string> m_map;
};

} // namespace MxXmlLib
