#include "collections/XmlTypeCollection.h"

#include "document/XmlDocument.h"

namespace MxXmlLib
{

CXmlTypeCollection::CXmlTypeCollection(ItemType itemType, char const *elementName, char const *namespaceUri,
                                       int minOccurs, int maxOccurs, char const *pattern, long minLength,
                                       long maxLength, char const *minInclusive, char const *maxInclusive,
                                       char const *minExclusive, char const *maxExclusive, long length,
                                       long totalDigits, long fractionDigits,
                                       CWhitespaceUtils::WhitespaceRule whitespaceRule, char const *format)
    : CXmlCollectionBase(elementName, namespaceUri, minOccurs, maxOccurs),
      m_restrictions(pattern, minLength, maxLength, minInclusive, maxInclusive, minExclusive, maxExclusive, length,
                     totalDigits, fractionDigits),
      m_itemType(itemType), m_format(format ? format : ""), m_whitespaceRule(whitespaceRule)
{
}

CXmlElement *CXmlTypeCollection::FromXml_Int(CXmlElement *, CXmlElement *current,
                                             CSerializationContext const &context, bool)
{
    std::string const name = GetElementName();
    std::string const namespaceUri = GetNamespace();
    CXmlElement *e = current;
    while (e && DoesElementNameMatch(context, e, name.c_str(), namespaceUri.c_str()))
    {
        AddFromString(e->GetText());
        e = e->GetNextSiblingElement();
    }
    return e;
}

} // namespace MxXmlLib
