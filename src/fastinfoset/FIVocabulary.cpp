#include "fastinfoset/FIVocabulary.h"

namespace MxXmlLib
{

namespace
{
char const kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
}

CFIVocabulary::CFIVocabulary()
{
    RestrictedAlphabets.push_back("0123456789-+.e ");
    RestrictedAlphabets.push_back("0123456789-:TZ ");
    AddPrefixName("xml");
    AddNamespaceName(kXmlNamespace);
}

std::string CFIVocabulary::QNameKey(std::string const &prefix, std::string const &namespaceName,
                                    std::string const &localName)
{
    std::string key;
    QNameKey(key, prefix, namespaceName, localName);
    return key;
}

void CFIVocabulary::QNameKey(std::string &key, std::string const &prefix, std::string const &namespaceName,
                             std::string const &localName)
{
    key.clear();
    key.reserve(localName.size() + namespaceName.size() + prefix.size() + 2);
    key += localName;
    key += '\x01';
    key += namespaceName;
    key += '\x01';
    key += prefix;
}

bool CFIVocabulary::FindIndex(IndexMap const &map, std::string const &key, std::uint32_t &index)
{
    auto found = map.find(key);
    if (found == map.end())
        return false;
    index = found->second;
    return true;
}

bool CFIVocabulary::FindPrefixNameIndex(std::string const &key, std::uint32_t &index) const
{
    return FindIndex(PrefixNamesMap, key, index);
}

bool CFIVocabulary::FindNamespaceNameIndex(std::string const &key, std::uint32_t &index) const
{
    return FindIndex(NamespaceNamesMap, key, index);
}

bool CFIVocabulary::FindLocalNameIndex(std::string const &key, std::uint32_t &index) const
{
    return FindIndex(LocalNamesMap, key, index);
}

void CFIVocabulary::AddValueToMap(std::string const &key, IndexMap &map)
{
    if (map.size() >= kMaxEntries)
        return;
    map.emplace(key, static_cast<std::uint32_t>(map.size() + 1));
}

void CFIVocabulary::AddValueToVector(std::string const &text, CFIStringTable &table)
{
    if (table.m_items.size() >= kMaxEntries)
        return;
    table.m_items.push_back(text);
}

void CFIVocabulary::AddQNameToVector(std::uint32_t prefix, std::uint32_t namespaceName, std::uint32_t localName,
                                     CFIQNameTable &table)
{
    if (table.m_items.size() >= kMaxEntries)
        return;
    table.m_items.emplace_back(prefix, namespaceName, localName);
}

void CFIVocabulary::AddQName(std::string const &prefix, std::string const &namespaceName,
                             std::string const &localName, IndexMap &names, CFIQNameTable &table)
{
    std::string const key = QNameKey(prefix, namespaceName, localName);
    std::uint32_t found;
    if (FindIndex(names, key, found))
        return;
    std::uint32_t prefixIndex = 0;
    if (!prefix.empty() && !FindPrefixNameIndex(prefix, prefixIndex))
    {
        AddPrefixName(prefix);
        prefixIndex = static_cast<std::uint32_t>(PrefixNamesTable.size());
    }
    std::uint32_t namespaceIndex = 0;
    if (!namespaceName.empty() && !FindNamespaceNameIndex(namespaceName, namespaceIndex))
    {
        AddNamespaceName(namespaceName);
        namespaceIndex = static_cast<std::uint32_t>(NamespaceNamesTable.size());
    }
    std::uint32_t localIndex = 0;
    if (!FindLocalNameIndex(localName, localIndex))
    {
        AddLocalName(localName);
        localIndex = static_cast<std::uint32_t>(LocalNamesTable.size());
    }
    AddValueToMap(key, names);
    AddQNameToVector(prefixIndex, namespaceIndex, localIndex, table);
}

void CFIVocabulary::AddAttribute(std::string prefix, std::string namespaceName, std::string localName)
{
    AddQName(prefix, namespaceName, localName, AttributeNamesMap, AttributeNamesTable);
}

void CFIVocabulary::AddElement(std::string prefix, std::string namespaceName, std::string localName)
{
    AddQName(prefix, namespaceName, localName, ElementNamesMap, ElementNamesTable);
}

void CFIVocabulary::AddString(std::string const &text, IndexMap &map, CFIStringTable &table)
{
    AddValueToMap(text, map);
    AddValueToVector(text, table);
}

void CFIVocabulary::AddAttributeValue(std::string text)
{
    AddString(text, AttributeValuesMap, AttributeValuesTable);
}

void CFIVocabulary::AddElementValue(std::string text)
{
    AddString(text, CharacterChunksMap, CharacterChunksTable);
}

void CFIVocabulary::AddPrefixName(std::string text)
{
    AddString(text, PrefixNamesMap, PrefixNamesTable);
}

void CFIVocabulary::AddNamespaceName(std::string text)
{
    AddString(text, NamespaceNamesMap, NamespaceNamesTable);
}

void CFIVocabulary::AddLocalName(std::string text)
{
    AddString(text, LocalNamesMap, LocalNamesTable);
}

} // namespace MxXmlLib
