#include "collections/Element.h"

#include "document/XmlDocument.h"
#include "document/XmlTextWriter.h"
#include "json/JsonContext.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
char const kAny[] = "##any";

std::string Str(char const *s)
{
    return s ? std::string(s) : std::string();
}

bool IsWildcardKeyword(char const *text)
{
    return text && (std::strcmp(text, "##any") == 0 || std::strcmp(text, "##other") == 0 ||
                    std::strcmp(text, "##local") == 0 || std::strcmp(text, "##targetNamespace") == 0);
}
} // namespace

CElement::CElement(char const *name)
{
    Init(name, "", kAny, "");
}

CElement::CElement(char const *name, char const *namespaceUri)
{
    if (IsWildcardKeyword(namespaceUri))
        throw CMxInvalidNamespaceException(FormatString("Invalid Namespace [%s].", namespaceUri), "");
    Init(name, namespaceUri, namespaceUri, "");
}

CElement::CElement(char const *name, char const *namespaceUri, char const *namespaceRestriction,
                   char const *targetNamespace)
{
    Init(name, namespaceUri, namespaceRestriction, targetNamespace);
}

CElement::CElement(CXmlObjectBase *object, char const *defaultNamespace)
{
    Init("", "", kAny, "");
    if (defaultNamespace)
        m_defaultNamespace = defaultNamespace;
    if (object == nullptr)
        throw CMxInvalidParamException("The object to convert is NULL");
    CSerializationContext context;
    context.SetDefaultNamespaceURI(m_defaultNamespace.c_str());
    // The object's own XML text, parsed back under the same context.
    std::string const text = object->ToXml(false, false, LF, context);
    CXmlDocument document(context);
    document.LoadXml(text.c_str());
    CopyXmlElement(document.GetDocumentElement());
}

// Copies share the attribute and child collections.
CElement::CElement(CElement const &) = default;
CElement &CElement::operator=(CElement const &) = default;
CElement::~CElement() = default;

void CElement::Init(char const *name, char const *namespaceUri, char const *namespaceRestriction,
                    char const *targetNamespace)
{
    if (name == nullptr)
        throw CMxInvalidNamespaceException("Element Name must have a value", "");
    if (namespaceRestriction == nullptr)
        throw CMxInvalidNamespaceException("Namespace Restriction must have a value", "");
    if (targetNamespace == nullptr)
        throw CMxInvalidNamespaceException("Target Namespace must have a value", "");
    TestNamespace(namespaceUri, namespaceRestriction, targetNamespace);
    m_name = name;
    m_namespace = Str(namespaceUri);
    m_namespaceRestriction = namespaceRestriction;
    m_targetNamespace = targetNamespace;
    m_attributes = new CAttributeCol(m_namespace.c_str(), kAny, targetNamespace);
    m_childElements = new CElementCol(m_namespace.c_str(), kAny, targetNamespace, 0, -1);
}

CSmartPtr<CElement> CElement::Clone() const
{
    CSmartPtr<CElement> copy(new CElement(m_name.c_str(), m_namespace.c_str(), m_namespaceRestriction.c_str(),
                                          m_targetNamespace.c_str()));
    copy->m_attributes = m_attributes->Clone();
    copy->m_childElements = m_childElements->Clone();
    copy->m_text = m_text;
    return copy;
}

void CElement::SetName(char const *name)
{
    m_name = Str(name);
    FireOnChangeName();
}

void CElement::SetText(char const *text)
{
    m_text = Str(text);
    FireOnChangeText();
}

void CElement::SetNamespace(char const *namespaceUri)
{
    m_namespace = Str(namespaceUri);
    FireOnChangeNamespace();
}

CSmartPtr<CAttributeCol> CElement::GetAttributes() const
{
    return m_attributes;
}

CSmartPtr<CElementCol> CElement::GetChildElements() const
{
    return m_childElements;
}

void CElement::FromXml(char const *xml)
{
    FromXmlDocument(xml, CSerializationContext::GetDefaultContext());
}

void CElement::FromXmlDocument(char const *xml, CSerializationContext const &context)
{
    CXmlDocument document(context);
    document.LoadXml(xml);
    CXmlElement *root = document.GetDocumentElement();
    FromXml_Int(root, root, context, false);
}

void CElement::FromStrictJsonTranslation(CBinaryData const &xml, CSerializationContext const &context)
{
    CXmlDocument document(context);
    document.LoadXmlStream(const_cast<unsigned char *>(xml.GetData()), xml.GetLength());
    CXmlElement *root = document.GetDocumentElement();
    FromXml_Int(root, root, context, false);
}

template <typename Load> void CElement::FromStrictJson(Load load, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument translation(context);
    FromStrictJsonTranslation(load(translation), context);
}

void CElement::FromJson(char const *text, CSerializationContext const &context)
{
    if (context.GetJsonContext().IsStrict())
        FromStrictJson([text](CXmlDocument &document) { return document.LoadJson(text); }, context);
    else
        CXmlObjectBase::FromJson(text, context);
}

void CElement::FromJsonStream(unsigned char *const bytes, unsigned long length, CSerializationContext const &context)
{
    if (context.GetJsonContext().IsStrict())
        FromStrictJson([bytes, length](CXmlDocument &document) { return document.LoadJsonStream(bytes, length); },
                       context);
    else
        CXmlObjectBase::FromJsonStream(bytes, length, context);
}

void CElement::FromJsonFile(char const *fileName, CSerializationContext const &context)
{
    if (context.GetJsonContext().IsStrict())
        FromStrictJson([fileName](CXmlDocument &document) { return document.LoadJsonFile(fileName); }, context);
    else
        CXmlObjectBase::FromJsonFile(fileName, context);
}

void CElement::CopyXmlElement(CXmlElement *source)
{
    m_name = source->GetLocalName();
    m_namespace = source->GetNamespaceURI();
    m_text = source->GetText();
    m_attributes->Clear();
    m_childElements->Clear();
    for (CXmlAttribute const *attribute : source->GetAttributes())
    {
        m_attributes->Add(attribute->GetLocalName().c_str(), attribute->GetValue().c_str(),
                          attribute->GetNamespaceURI().c_str());
        // Only an unprefixed declaration counts, and only when the parser
        // left declarations among the attributes.
        if (attribute->GetLocalName() == "xmlns")
            m_defaultNamespace = attribute->GetValue();
    }
    for (CXmlElement *child = source->GetFirstElement(); child; child = child->GetNextSiblingElement())
    {
        CSmartPtr<CElement> element(new CElement(child->GetLocalName().c_str()));
        element->CopyXmlElement(child);
        m_childElements->Add(element);
    }
}

void CElement::SetNamespaceRestrictions(char const *restriction, char const *targetNamespace)
{
    try
    {
        TestNamespace(m_namespace.c_str(), restriction, targetNamespace);
    }
    catch (CMxException const &e)
    {
        // Thrown as a pointer: callers of this operation catch it that way.
        throw new CMxInvalidNamespaceException(
            FormatString("The namespace %s in the class %s is invalid against restriction %s", m_name.c_str(),
                         m_namespace.c_str(), Str(restriction).c_str()),
            "", e);
    }
    for (CAttribute const *attribute : *m_attributes)
    {
        std::string const namespaceUri = attribute->GetNamespace();
        TestNamespace(namespaceUri.c_str(), restriction, targetNamespace);
    }
    for (CElement *child : *m_childElements)
        child->SetNamespaceRestrictions(restriction, targetNamespace);
}

CXmlElement *CElement::FromXml_Int(CXmlElement *, CXmlElement *current, CSerializationContext const &context, bool)
{
    if (current == nullptr)
        return nullptr;
    if (!IsNamespaceValid(current->GetNamespaceURI().c_str(), m_namespaceRestriction.c_str(),
                          m_targetNamespace.c_str()))
        return current;
    CXmlObjectBase::FromXml_Int(m_attributes, current, nullptr, context);
    if (CXmlObjectBase::FromXml_Int(m_childElements, current, current->GetFirstElement(), context) != nullptr)
        throw CMxValidationException(
            FormatString("Invalid Element [%s] found.", current->GetLocalName().c_str()), current->GetXPath());
    m_text = current->GetText();
    m_name = current->GetLocalName();
    m_namespace = current->GetNamespaceURI();
    return current->GetNextSiblingElement();
}

void CElement::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &context,
                         bool optionalChoice) const
{
    if (!m_defaultNamespace.empty())
    {
        ToXmlWithDefaultNamespace(writer, context, optionalChoice);
        return;
    }
    writer->StartElement(m_name, m_namespace);
    CXmlObjectBase::ToXml_Int(m_attributes, writer, false, namespaceUri, context, false);
    CXmlObjectBase::ToXml_Int(m_childElements, writer, false, namespaceUri, context, optionalChoice);
    writer->WriteText(m_text, ItemType_string, false);
    writer->EndElement();
}

void CElement::ToXmlWithDefaultNamespace(CXmlWriter *writer, CSerializationContext const &,
                                         bool optionalChoice) const
{
    auto *target = dynamic_cast<CXmlTextWriter *>(writer);
    if (target == nullptr)
        throw CMxException("An element with a default namespace can only be written as XML text");
    // The element is written on its own, so that its default namespace is
    // declared on it and inherited by its children, and then copied in.
    CTextStream stream;
    CXmlTextWriter inner(&stream);
    stream.Start();
    inner.SetEolType(target->GetEolType());
    inner.SetFormatted(target->GetFormatted());
    inner.SetDefaultNamespace(m_defaultNamespace);
    inner.StartElement(m_name, m_namespace);
    CSerializationContext innerContext;
    innerContext.SetDefaultNamespaceURI(m_defaultNamespace.c_str());
    CXmlObjectBase::ToXml_Int(m_childElements, &inner, false, m_namespace.c_str(), innerContext, optionalChoice);
    inner.WriteText(m_text, ItemType_string, false);
    inner.EndElement();
    stream.End();
    target->CloseStartTag();
    CTextStream *output = target->GetStream();
    output->Write(stream.Text());
    if (target->GetFormatted())
        output->Write(target->GetEndOfLine().data(), target->GetEndOfLine().size());
}

} // namespace MxXmlLib
