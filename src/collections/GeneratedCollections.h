#pragma once

// The collections that generated code holds for repeated class elements and
// repeated enumeration values. Both the C++ source a schema compiles to and
// the classes a schema set builds at run time use them, so that the two
// read and write a document the same way.

#include "collections/XmlCollection.h"
#include "collections/XmlTypeCollection.h"
#include "metadata/ClassFactory.h"

#include <string>
#include <vector>

namespace MxXmlLib
{

// Repeated class elements. Items of a real element are the run of siblings
// with the collection's name, each made by the factory by number or, for a
// substitutable class, by the factory by element (which must not give null:
// "Failed to find a suitable substitution element for [%s]."). Inline items
// (a repeated group) read on from the cursor while each takes something.
class CObjectCol : public CXmlCollection
{
public:
    CObjectCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs,
               CClassfactoryBase::FactoryByNumber byNumber, int classId,
               CClassfactoryBase::FactoryByElement byElement, bool inlineItems);
    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    void Add(CXmlObjectBase *item) { AppendItem(item); }
    CXmlObjectBase *GetAt(int index) const { return GetNodeAtIndex(index)->item.Get(); }

protected:
    ~CObjectCol() override = default;
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    CXmlElement *FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;

private:
    CClassfactoryBase::FactoryByNumber m_byNumber;
    int m_classId;
    CClassfactoryBase::FactoryByElement m_byElement;
    bool m_inlineItems;
};

// Repeated enumeration values, kept as their numbers and named by the
// enumeration's function pair; text is whitespace-processed by the rule
// before it is looked up.
class CEnumCol : public CXmlTypeCollection
{
public:
    using EnumToString = char const *(*)(int);
    using StringToEnum = int (*)(char const *);

    CEnumCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs, EnumToString toString,
             StringToEnum fromString, CWhitespaceUtils::WhitespaceRule rule);
    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    int GetCount() const override { return static_cast<int>(m_items.size()); }
    void Clear() override { m_items.clear(); }
    void Remove(int index) override { m_items.erase(m_items.begin() + index); }
    void Add(int value) { m_items.push_back(value); }
    int GetAt(int index) const { return m_items.at(static_cast<std::size_t>(index)); }
    std::vector<int> const &Items() const { return m_items; }

protected:
    ~CEnumCol() override = default;
    void AddFromString(std::string text) override;
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;

private:
    EnumToString m_toString;
    StringToEnum m_fromString;
    std::vector<int> m_items;
};

} // namespace MxXmlLib
