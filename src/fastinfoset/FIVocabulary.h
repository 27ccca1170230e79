#pragma once

// The string and name tables of a Fast Infoset document. One object has two
// sides that a run keeps apart: the writer looks strings up in the maps
// (text to index), the reader indexes the lists (index to text). Indexes are
// 1-based in both, handed out in order of first use, so that a writer and a
// reader that start from the same seeds agree on every number.

#include <cstdint>
#include <unordered_map>
#include <string>
#include <vector>

namespace MxXmlLib
{

class CFastInfosetWriter;
class CFastInfosetReader;
class CFastInfosetContext;

class CFIVocabulary
{
public:
    // A qualified name as three 1-based indexes into the prefix, namespace
    // and local name lists; 0 means absent.
    class CQNameParts
    {
    public:
        CQNameParts(std::uint32_t prefix = 0, std::uint32_t namespaceName = 0, std::uint32_t localName = 0)
            : Prefix(prefix), Namespace(namespaceName), LocalName(localName)
        {
        }
        std::uint32_t Prefix;
        std::uint32_t Namespace;
        std::uint32_t LocalName;
    };

    class CFIStringTable
    {
    public:
        using const_iterator = std::vector<std::string>::const_iterator;
        virtual ~CFIStringTable() = default;
        const_iterator begin() const { return m_items.begin(); }
        const_iterator end() const { return m_items.end(); }
        std::size_t size() const { return m_items.size(); }
        // Index 1 is element 0.
        std::string const &operator[](std::size_t position) const { return m_items[position]; }

    private:
        friend class CFIVocabulary;
        std::vector<std::string> m_items;
    };

    class CFIQNameTable
    {
    public:
        using const_iterator = std::vector<CQNameParts>::const_iterator;
        virtual ~CFIQNameTable() = default;
        const_iterator begin() const { return m_items.begin(); }
        const_iterator end() const { return m_items.end(); }
        std::size_t size() const { return m_items.size(); }
        CQNameParts const &operator[](std::size_t position) const { return m_items[position]; }

    private:
        friend class CFIVocabulary;
        std::vector<CQNameParts> m_items;
    };

    // Only looked up and added to, never walked: the order of the keys is no
    // concern, and a document's thousands of character chunks want hashing.
    using IndexMap = std::unordered_map<std::string, std::uint32_t>;

    // The largest index a document can carry: a full table takes nothing
    // more, silently.
    static constexpr std::uint32_t kMaxEntries = 0x100000;

    // The seeds: prefix "xml" and the XML namespace at index 1 of their
    // tables, and the two built-in restricted alphabets.
    CFIVocabulary();
    CFIVocabulary &operator=(CFIVocabulary const &other) = default;
    virtual ~CFIVocabulary() = default;

    CFIQNameTable const &GetAttributeNamesTable() const { return AttributeNamesTable; }
    CFIStringTable const &GetAttributeValuesTable() const { return AttributeValuesTable; }
    CFIQNameTable const &GetElementNamesTable() const { return ElementNamesTable; }
    CFIStringTable const &GetCharacterChunksTable() const { return CharacterChunksTable; }
    CFIStringTable const &GetLocalNamesTable() const { return LocalNamesTable; }
    CFIStringTable const &GetNamespaceNamesTable() const { return NamespaceNamesTable; }
    CFIStringTable const &GetPrefixNamesTable() const { return PrefixNamesTable; }

    // Names enter both sides, with their prefix, namespace and local name;
    // a name already known is not added again.
    void AddAttribute(std::string prefix, std::string namespaceName, std::string localName);
    void AddElement(std::string prefix, std::string namespaceName, std::string localName);
    // Strings enter both sides. The map keeps the first index of a string;
    // the list takes every call (AddPrefixName("xml") makes a second entry).
    void AddAttributeValue(std::string text);
    void AddElementValue(std::string text);
    void AddPrefixName(std::string text);
    void AddNamespaceName(std::string text);
    void AddLocalName(std::string text);

    // The map key of a qualified name: local name, 0x01, namespace, 0x01, prefix.
    static std::string QNameKey(std::string const &prefix, std::string const &namespaceName,
                                std::string const &localName);
    // The same into `key`, whose storage a writer reuses from name to name.
    static void QNameKey(std::string &key, std::string const &prefix, std::string const &namespaceName,
                         std::string const &localName);

private:
    friend class CFastInfosetWriter;
    friend class CFastInfosetReader;
    friend class CFastInfosetContext;

    CFIVocabulary(CFIVocabulary const &other) = default;

    static bool FindIndex(IndexMap const &map, std::string const &key, std::uint32_t &index);
    bool FindPrefixNameIndex(std::string const &key, std::uint32_t &index) const;
    bool FindNamespaceNameIndex(std::string const &key, std::uint32_t &index) const;
    bool FindLocalNameIndex(std::string const &key, std::uint32_t &index) const;
    // The new index is the map's size plus 1; a known key keeps its index.
    static void AddValueToMap(std::string const &key, IndexMap &map);
    static void AddValueToVector(std::string const &text, CFIStringTable &table);
    static void AddString(std::string const &text, IndexMap &map, CFIStringTable &table);
    static void AddQNameToVector(std::uint32_t prefix, std::uint32_t namespaceName, std::uint32_t localName,
                                 CFIQNameTable &table);
    void AddQName(std::string const &prefix, std::string const &namespaceName, std::string const &localName,
                  IndexMap &names, CFIQNameTable &table);

    std::vector<std::string> RestrictedAlphabets;
    IndexMap AttributeNamesMap;
    IndexMap AttributeValuesMap;
    IndexMap ElementNamesMap;
    IndexMap CharacterChunksMap;
    IndexMap LocalNamesMap;
    IndexMap NamespaceNamesMap;
    IndexMap PrefixNamesMap;
    CFIQNameTable AttributeNamesTable;
    CFIStringTable AttributeValuesTable;
    CFIQNameTable ElementNamesTable;
    CFIStringTable CharacterChunksTable;
    CFIStringTable LocalNamesTable;
    CFIStringTable NamespaceNamesTable;
    CFIStringTable PrefixNamesTable;
};

} // namespace MxXmlLib
