#pragma once

#include "collections/XmlCollectionBase.h"
#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/WhitespaceUtils.h"

#include <string>

namespace MxXmlLib
{

// Base of the collections of primitive values. It keeps the item facets, type,
// output format and whitespace rule; each derived class stores its own items
// and turns an item's text into a value in AddFromString.
class CXmlTypeCollection : public CXmlCollectionBase
{
public:
    CXmlTypeCollection(CXmlTypeCollection const &other) = default;
    CXmlTypeCollection &operator=(CXmlTypeCollection const &other) = default;

    CPrimitiveRestrictions const &GetRestrictions() const { return m_restrictions; }
    ItemType GetItemType() const { return m_itemType; }
    std::string GetFormat() const { return m_format; }
    CWhitespaceUtils::WhitespaceRule GetWhitespaceRule() const { return m_whitespaceRule; }

protected:
    // A null string among the facets, or a null format, is stored as empty.
    CXmlTypeCollection(ItemType itemType, char const *elementName, char const *namespaceUri, int minOccurs,
                       int maxOccurs, char const *pattern, long minLength, long maxLength, char const *minInclusive,
                       char const *maxInclusive, char const *minExclusive, char const *maxExclusive, long length,
                       long totalDigits, long fractionDigits, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                       char const *format);
    ~CXmlTypeCollection() override = default;

    // Takes the run of siblings from `current` on that match the element name
    // and namespace, one item each, and returns the first one it left. The
    // count is not checked here.
    CXmlElement *FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;
    // Converts one item's text and appends the item.
    virtual void AddFromString(std::string text) = 0;

private:
    CPrimitiveRestrictions m_restrictions;
    ItemType m_itemType;
    std::string m_format;
    CWhitespaceUtils::WhitespaceRule m_whitespaceRule;
};

} // namespace MxXmlLib
