#include "collections/AttributeCol.h"

#include "document/XmlDocument.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

namespace
{
std::string Str(char const *s)
{
    return s ? std::string(s) : std::string();
}

// The namespace of a collection built without one: the first token of the
// wildcard when it is a literal URI of two bytes or more, else empty.
std::string CollectionNamespace(char const *namespaceUri, char const *restriction)
{
    std::string const uri = Str(namespaceUri);
    if (!uri.empty())
        return uri;
    std::string const text = Str(restriction);
    std::string const token = text.substr(0, text.find(' '));
    if (token.size() >= 2 && token[0] != '#' && token[1] != '#')
        return token;
    return uri;
}
} // namespace

CAttributeCol::CAttributeCol(char const *namespaceUri, char const *namespaceRestriction, char const *targetNamespace)
    : CXmlCollection("", CollectionNamespace(namespaceUri, namespaceRestriction).c_str(), 0, -1),
      m_namespaceRestriction(Str(namespaceRestriction)), m_targetNamespace(Str(targetNamespace))
{
}

CAttributeCol::~CAttributeCol() = default;

CSmartPtr<CAttribute> CAttributeCol::Add(char const *name, char const *value, char const *namespaceUri)
{
    TestNamespace(namespaceUri, m_namespaceRestriction.c_str(), m_targetNamespace.c_str());
    CSmartPtr<CAttribute> attribute(new CAttribute(name, value, namespaceUri));
    AppendItem(attribute);
    return attribute;
}

CSmartPtr<CAttribute> CAttributeCol::Add(char const *name, char const *value)
{
    std::string const namespaceUri = GetNamespace();
    return Add(name, value, namespaceUri.c_str());
}

CSmartPtr<CAttribute> CAttributeCol::Add(char const *name)
{
    return Add(name, "");
}

void CAttributeCol::Add(CAttribute *attribute)
{
    AppendItem(attribute);
}

void CAttributeCol::AddAfter(CAttribute const *existing, CAttribute *attribute)
{
    AddAfterItem(existing, attribute);
}

void CAttributeCol::AddBefore(CAttribute const *existing, CAttribute *attribute)
{
    AddBeforeItem(existing, attribute);
}

CSmartPtr<CAttribute> CAttributeCol::Item(int index) const
{
    return CSmartPtr<CAttribute>(static_cast<CAttribute *>(GetNodeAtIndex(index)->item.Get()));
}

CSmartPtr<CAttributeCol> CAttributeCol::Clone() const
{
    std::string const namespaceUri = GetNamespace();
    CSmartPtr<CAttributeCol> copy(
        new CAttributeCol(namespaceUri.c_str(), m_namespaceRestriction.c_str(), m_targetNamespace.c_str()));
    for (CAttribute const *attribute : *this)
        copy->Add(attribute->Clone());
    return copy;
}

void CAttributeCol::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri,
                              CSerializationContext const &context, bool) const
{
    for (CNode const *node = GetFirstNode(); node; node = node->next)
        CXmlObjectBase::ToXml_Int(node->item, writer, false, namespaceUri, context, false);
}

CXmlElement *CAttributeCol::FromXml_Int(CXmlElement *element, CXmlElement *current, CSerializationContext const &,
                                        bool)
{
    for (CXmlAttribute const *attribute : element->GetAttributes())
    {
        std::string const &namespaceUri = attribute->GetNamespaceURI();
        if (!IsNamespaceValid(namespaceUri.c_str(), m_namespaceRestriction.c_str(), m_targetNamespace.c_str()))
            throw CMxInvalidNamespaceException(
                FormatString("Invalid Attribute [%s]. The attributes namespace is Inappropriate.",
                             attribute->GetLocalName().c_str()),
                element->GetXPath());
        Add(attribute->GetLocalName().c_str(), attribute->GetValue().c_str(), namespaceUri.c_str());
    }
    return current;
}

} // namespace MxXmlLib
