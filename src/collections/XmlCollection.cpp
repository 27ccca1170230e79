#include "collections/XmlCollection.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

CXmlCollection::CXmlCollection() : m_chain(new CChain) {}

CXmlCollection::CXmlCollection(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs)
    : CXmlCollectionBase(elementName, namespaceUri, minOccurs, maxOccurs), m_chain(new CChain)
{
}

CXmlCollection::CXmlCollection(CXmlCollection const &other) : CXmlCollectionBase(other), m_chain(other.m_chain)
{
    ++m_chain->holders;
}

CXmlCollection &CXmlCollection::operator=(CXmlCollection const &other)
{
    if (this == &other || m_chain == other.m_chain)
    {
        CXmlCollectionBase::operator=(other);
        return *this;
    }
    LeaveChain();
    CXmlCollectionBase::operator=(other);
    m_chain = other.m_chain;
    ++m_chain->holders;
    return *this;
}

CXmlCollection::~CXmlCollection()
{
    LeaveChain();
}

void CXmlCollection::LeaveChain()
{
    if (--m_chain->holders == 0)
    {
        // One by one, so that listeners hear of every item, as from Clear.
        while (m_chain->count > 0)
            CXmlCollection::Remove(0);
        delete m_chain;
    }
    m_chain = nullptr;
}

void CXmlCollection::Clear()
{
    while (GetCount() > 0)
        Remove(0);
}

void CXmlCollection::Remove(int index)
{
    RemoveNode(GetNodeAtIndex(index));
}

void CXmlCollection::AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const
{
    for (CNode const *node = m_chain->first; node; node = node->next)
        CXmlObjectBase::AttributesToXml_Int(node->item->GetBase(), writer, context);
}

void CXmlCollection::Link(CNode *at, CXmlObjectBase *item)
{
    CNode *node = new CNode;
    node->next = at;
    node->previous = at ? at->previous : m_chain->last;
    (node->previous ? node->previous->next : m_chain->first) = node;
    (at ? at->previous : m_chain->last) = node;
    node->item = item;
    ++m_chain->count;
    FireOnCollectionAddComplete(item);
    FireOnCollectionChange();
}

void CXmlCollection::AppendItem(CXmlObjectBase *item)
{
    FireOnCollectionAdd(item);
    Link(nullptr, item);
}

void CXmlCollection::PrependItem(CXmlObjectBase *item)
{
    FireOnCollectionAdd(item);
    Link(m_chain->first, item);
}

void CXmlCollection::AddAfterItem(CXmlObjectBase const *existing, CXmlObjectBase *item)
{
    FireOnCollectionAdd(item);
    Link(existing ? GetNodeForItem(existing)->next : m_chain->first, item);
}

void CXmlCollection::AddBeforeItem(CXmlObjectBase const *existing, CXmlObjectBase *item)
{
    FireOnCollectionAdd(item);
    Link(existing ? GetNodeForItem(existing) : nullptr, item);
}

void CXmlCollection::AddItemAt(int index, CXmlObjectBase *item)
{
    if (index < 0 || index > GetCount())
        throw CMxInvalidParamException("Index out of range");
    if (index == GetCount())
    {
        AppendItem(item);
        return;
    }
    FireOnCollectionAdd(item);
    Link(GetNodeAtIndex(index), item);
}

void CXmlCollection::RemoveNode(CNode *node)
{
    FireOnCollectionRemove(-1);
    (node->previous ? node->previous->next : m_chain->first) = node->next;
    (node->next ? node->next->previous : m_chain->last) = node->previous;
    delete node; // releases the item
    --m_chain->count;
    FireOnCollectionRemoveComplete(-1);
    FireOnCollectionChange();
}

CXmlCollection::CNode *CXmlCollection::GetNodeAtIndex(int index) const
{
    if (index > GetCount() - 1 || index < 0)
        throw CMxInvalidParamException(
            FormatString("Index %d is out of range, use 0 - %d", index, GetCount()));
    CNode *node = m_chain->first;
    for (int i = 0; i < index; ++i)
        node = node->next;
    return node;
}

CXmlCollection::CNode *CXmlCollection::GetNodeForItem(CXmlObjectBase const *item) const
{
    CXmlObjectBase const *wanted = item->GetBase();
    for (CNode *node = m_chain->first; node; node = node->next)
        if (static_cast<CXmlObjectBase const *>(node->item.Get())->GetBase() == wanted)
            return node;
    throw CMxInvalidParamException("The object was not found in the collection");
}

} // namespace MxXmlLib
