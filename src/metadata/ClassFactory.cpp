#include "metadata/ClassFactory.h"

#include "document/XmlDocument.h"

namespace MxXmlLib
{

namespace
{
std::string const &TypeAttribute(CXmlElement *element)
{
    return element->GetAttribute("type", "http://www.w3.org/2001/XMLSchema-instance");
}
} // namespace

std::string CClassfactoryBase::GetElementType(CXmlElement *element)
{
    std::string const &value = TypeAttribute(element);
    std::size_t const colon = value.find(':');
    return colon == std::string::npos ? value : value.substr(colon + 1);
}

std::string CClassfactoryBase::GetElementTypeNamespaceUri(CXmlElement *element)
{
    std::string const &value = TypeAttribute(element);
    std::size_t const colon = value.find(':');
    if (colon == std::string::npos)
        return element->GetNamespaceURI();
    std::string const uri = element->GetDocument()
                                ? element->GetDocument()->LookupNamespaceFromAlias(value.substr(0, colon).c_str())
                                : std::string();
    return uri.empty() ? element->GetNamespaceURI() : uri;
}

} // namespace MxXmlLib
