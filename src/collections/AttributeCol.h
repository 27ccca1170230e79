#pragma once

#include "collections/Attribute.h"
#include "collections/XmlCollection.h"

#include <string>

namespace MxXmlLib
{

// The untyped attributes of one element (xs:anyAttribute). Each attribute
// added by name is tested against the wildcard; reading refuses an attribute
// whose namespace fails it. Its own namespace is the given one or, when that
// is empty, a literal URI that the wildcard begins with.
class CAttributeCol : public CXmlCollection, private CInstanceMonitor
{
public:
    CAttributeCol(char const *namespaceUri, char const *namespaceRestriction, char const *targetNamespace);
    CAttributeCol(CAttributeCol const &other) = default;
    CAttributeCol &operator=(CAttributeCol const &other) = default;

    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    // Each raises the wildcard's CMxInvalidNamespaceException before adding.
    CSmartPtr<CAttribute> Add(char const *name, char const *value, char const *namespaceUri);
    CSmartPtr<CAttribute> Add(char const *name, char const *value);
    CSmartPtr<CAttribute> Add(char const *name);
    // Appended as it is, untested.
    void Add(CAttribute *attribute);
    void AddAfter(CAttribute const *existing, CAttribute *attribute);
    void AddBefore(CAttribute const *existing, CAttribute *attribute);
    CSmartPtr<CAttribute> Item(int index) const;

    CMxIterator<CAttribute> begin() const { return CMxIterator<CAttribute>(GetFirstNode()); }
    CMxIterator<CAttribute> end() const { return CMxIterator<CAttribute>(); }

    // A new collection with the same namespaces and a clone of each item.
    CSmartPtr<CAttributeCol> Clone() const;

    std::string GetNamespaceRestriction() const { return m_namespaceRestriction; }
    std::string GetTargetNamespace() const override { return GetNamespace(); }

protected:
    ~CAttributeCol() override;

    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    // Adds every attribute of `element`, and gives `current` back untouched.
    // Raises "Invalid Attribute [...]..." with the element's path for one whose
    // namespace fails the wildcard; the attributes before it stay.
    CXmlElement *FromXml_Int(CXmlElement *element, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;

private:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

} // namespace MxXmlLib
