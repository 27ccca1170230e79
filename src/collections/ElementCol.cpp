#include "collections/ElementCol.h"

#include "document/XmlDocument.h"
#include "json/JsonStrictWriter.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

namespace
{
std::string Str(char const *s)
{
    return s ? std::string(s) : std::string();
}

// Without a namespace of its own, a collection built for a keyword wildcard
// keeps the keyword as the namespace of elements added by name.
std::string ItemNamespace(char const *namespaceUri, char const *restriction)
{
    std::string const uri = Str(namespaceUri);
    if (!uri.empty())
        return uri;
    std::string const text = Str(restriction);
    if (text.size() >= 2 && text[0] == '#' && text[1] == '#')
        return text;
    return uri;
}

char const kAny[] = "##any";
} // namespace

CElementCol::CElementCol(char const *namespaceUri, char const *namespaceRestriction, char const *targetNamespace,
                         int, int)
{
    TestNamespace(namespaceUri, namespaceRestriction, targetNamespace);
    m_itemNamespace = ItemNamespace(namespaceUri, namespaceRestriction);
    m_namespaceRestriction = kAny;
    m_targetNamespace = Str(targetNamespace);
}

CElementCol::~CElementCol() = default;

CSmartPtr<CElement> CElementCol::Add(char const *name, char const *namespaceUri)
{
    TestNamespace(namespaceUri, m_namespaceRestriction.c_str(), m_targetNamespace.c_str());
    CSmartPtr<CElement> element(
        new CElement(name, namespaceUri ? namespaceUri : "", m_namespaceRestriction.c_str(), m_targetNamespace.c_str()));
    AppendItem(element);
    return element;
}

CSmartPtr<CElement> CElementCol::Add(char const *name)
{
    if (m_itemNamespace.empty())
        throw CMxInvalidStateException("A Namespace has not been set for this Collection");
    CSmartPtr<CElement> element(new CElement(name, m_itemNamespace.c_str(), m_namespaceRestriction.c_str(),
                                             m_targetNamespace.c_str()));
    AppendItem(element);
    return element;
}

void CElementCol::Add(CElement *element)
{
    std::string const namespaceUri = element->GetNamespace();
    TestNamespace(namespaceUri.c_str(), m_namespaceRestriction.c_str(), m_targetNamespace.c_str());
    AppendItem(element);
}

void CElementCol::AddAfter(CElement const *existing, CElement *element)
{
    AddAfterItem(existing, element);
}

void CElementCol::AddBefore(CElement const *existing, CElement *element)
{
    AddBeforeItem(existing, element);
}

CSmartPtr<CElement> CElementCol::Item(int index) const
{
    return CSmartPtr<CElement>(static_cast<CElement *>(GetNodeAtIndex(index)->item.Get()));
}

CSmartPtr<CElementCol> CElementCol::Clone() const
{
    CSmartPtr<CElementCol> copy(new CElementCol(m_itemNamespace.c_str(), m_namespaceRestriction.c_str(),
                                                m_targetNamespace.c_str(), 0, -1));
    for (CElement const *element : *this)
        copy->Add(element->Clone());
    return copy;
}

void CElementCol::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri,
                            CSerializationContext const &context, bool) const
{
    ValidateCount(context);
    // Strict JSON groups repeated elements into an array only where a run of
    // them is announced, as the element rows announce their collections. Here
    // runs of one name are announced to that writer alone, and only when the
    // collection as a whole is not: other writers see the items as always.
    using Context = CXmlWriter::CXmlWriterContext;
    Context *announce = dynamic_cast<CJsonStrictWriter *>(writer) ? writer->GetCurrentContext() : nullptr;
    if (announce && announce->ArrayState != Context::ArrayNone)
        announce = nullptr;
    for (CNode const *node = GetFirstNode(); node;)
    {
        CNode const *end = node->next;
        if (announce)
        {
            auto const *first = static_cast<CElement const *>(node->item.Get());
            while (end && static_cast<CElement const *>(end->item.Get())->GetName() == first->GetName() &&
                   end->item->GetNamespace() == first->GetNamespace())
                end = end->next;
        }
        bool const run = announce && end != node->next;
        if (run)
            announce->ArrayState = Context::ArrayPending;
        for (; node != end; node = node->next)
            CXmlObjectBase::ToXml_Int(node->item, writer, false, namespaceUri, context, false);
        if (run)
            announce->ArrayState = Context::ArrayClosing;
    }
}

bool CElementCol::ReadItem(CElement *item, CXmlElement *parent, CXmlElement *&at,
                           CSerializationContext const &context)
{
    CXmlElement *const next = CXmlObjectBase::FromXml_Int(item, parent, at, context);
    if (next == at)
        return false;
    Add(item);
    at = next;
    return true;
}

CXmlElement *CElementCol::FromXml_Int(CXmlElement *parent, CXmlElement *current,
                                      CSerializationContext const &context, bool)
{
    CXmlElement *e = current;
    while (e)
    {
        std::string const &namespaceUri = e->GetNamespaceURI();
        if (!IsNamespaceValid(namespaceUri.c_str(), m_namespaceRestriction.c_str(), m_targetNamespace.c_str()))
            return e;
        CSmartPtr<CElement> item(new CElement(e->GetLocalName().c_str(), namespaceUri.c_str(),
                                              m_namespaceRestriction.c_str(), m_targetNamespace.c_str()));
        if (!ReadItem(item, parent, e, context))
            return e;
    }
    return e;
}

CXmlElement *CElementCol::FromXmlLockElementName_Int(std::string name, std::string namespaceUri, CXmlElement *parent,
                                                     CXmlElement *current, CSerializationContext const &context)
{
    CXmlElement *e = current;
    while (e && e->GetLocalName() == name && e->GetNamespaceURI() == namespaceUri)
    {
        CSmartPtr<CElement> item(
            new CElement(e->GetLocalName().c_str(), e->GetNamespaceURI().c_str(), kAny, m_targetNamespace.c_str()));
        if (!ReadItem(item, parent, e, context))
            return e;
    }
    return e;
}

} // namespace MxXmlLib
