#pragma once

#include "collections/Element.h"
#include "collections/XmlCollection.h"

#include <string>

namespace MxXmlLib
{

// Untyped child elements (xs:any). The wildcard given to the constructor is
// tested once, against the given namespace; after that the collection takes
// elements of any namespace. Elements added by name alone get the item
// namespace: the given one, or, when that is empty, a wildcard that begins
// with "##" taken as text.
class CElementCol : public CXmlCollection, private CInstanceMonitor
{
public:
    // The two bounds are not used: a collection of this class has no limits.
    CElementCol(char const *namespaceUri, char const *namespaceRestriction, char const *targetNamespace,
                int minOccurs, int maxOccurs);
    CElementCol(CElementCol const &other) = default;
    CElementCol &operator=(CElementCol const &other) = default;

    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    // Tests the namespace against the wildcard, then appends a new element.
    CSmartPtr<CElement> Add(char const *name, char const *namespaceUri);
    // A new element in the item namespace; raises CMxInvalidStateException
    // "A Namespace has not been set for this Collection" when there is none.
    CSmartPtr<CElement> Add(char const *name);
    // Tests the element's namespace against the wildcard, then appends it.
    void Add(CElement *element);
    void AddAfter(CElement const *existing, CElement *element);
    void AddBefore(CElement const *existing, CElement *element);
    CSmartPtr<CElement> Item(int index) const;

    CMxIterator<CElement> begin() const { return CMxIterator<CElement>(GetFirstNode()); }
    CMxIterator<CElement> end() const { return CMxIterator<CElement>(); }

    // A new collection with the same namespaces and a clone of each item.
    CSmartPtr<CElementCol> Clone() const;

    std::string GetNamespace() const override { return m_targetNamespace; }
    std::string GetTargetNamespace() const override { return m_targetNamespace; }
    std::string GetNamespaceRestriction() const { return m_namespaceRestriction; }
    std::string GetItemNamespace() const { return m_itemNamespace; }

    // Reads the run of siblings from `current` on whose local name and
    // namespace equal `name` and `namespaceUri`; returns the first one left.
    virtual CXmlElement *FromXmlLockElementName_Int(std::string name, std::string namespaceUri, CXmlElement *parent,
                                                    CXmlElement *current, CSerializationContext const &context);

protected:
    ~CElementCol() override;

    // Checks the count, then writes each element.
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    // Reads siblings from `current` on while they meet the wildcard; returns
    // the first one it did not take.
    CXmlElement *FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;

private:
    // Lets `item` read `at` and adds it when it took something, moving `at`
    // past what it took; false when it took nothing.
    bool ReadItem(CElement *item, CXmlElement *parent, CXmlElement *&at, CSerializationContext const &context);

    std::string m_namespaceRestriction;
    std::string m_itemNamespace;
    std::string m_targetNamespace;
};

} // namespace MxXmlLib
