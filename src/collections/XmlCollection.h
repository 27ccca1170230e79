#pragma once

#include "collections/XmlCollectionBase.h"
#include "runtime/SmartPtr.h"

#include <cstddef>
#include <iterator>

namespace MxXmlLib
{

// A collection of counted objects in a doubly linked list. Access by index
// walks from the head; walk in order with the nodes (or CMxIterator) instead.
// Every add goes: add event, link, count, add-complete event, change event.
// Copies share one chain of nodes: a change through one shows in the other,
// and the last of them to go releases the items. Clone gives a real copy.
class CXmlCollection : public CXmlCollectionBase
{
public:
    class CNode
    {
    public:
        CSmartPtr<CXmlObjectBase> item;
        CNode *next = nullptr;
        CNode *previous = nullptr;
    };

    int GetCount() const override { return m_chain->count; }
    // Removes from the front, one set of remove events per item.
    void Clear() override;
    void Remove(int index) override;

protected:
    CXmlCollection();
    CXmlCollection(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs);
    CXmlCollection(CXmlCollection const &other);
    CXmlCollection &operator=(CXmlCollection const &other);
    ~CXmlCollection() override;

    // The attributes of inline items go to the parent's start tag.
    void AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const override;

    void AppendItem(CXmlObjectBase *item);
    void PrependItem(CXmlObjectBase *item);
    // A null `existing` prepends; a missing one raises after the add event.
    void AddAfterItem(CXmlObjectBase const *existing, CXmlObjectBase *item);
    // A null `existing` appends; a missing one raises after the add event.
    void AddBeforeItem(CXmlObjectBase const *existing, CXmlObjectBase *item);
    // 0 to GetCount(); the count appends. Raises "Index out of range".
    void AddItemAt(int index, CXmlObjectBase *item);
    // Listeners hear a remove without an index: null data.
    void RemoveNode(CNode *node);
    // Raises "Index %d is out of range, use 0 - %d" (the count, not the last index).
    CNode *GetNodeAtIndex(int index) const;
    // By identity of GetBase(); raises "The object was not found in the collection".
    CNode *GetNodeForItem(CXmlObjectBase const *item) const;

public:
    CNode *GetFirstNode() const { return m_chain->first; }
    CNode *GetLastNode() const { return m_chain->last; }

private:
    struct CChain
    {
        CNode *first = nullptr;
        CNode *last = nullptr;
        int count = 0;
        int holders = 1;
    };

    // Links a new node for `item` in front of `at` (null: at the end) and
    // sends the events that follow the add event.
    void Link(CNode *at, CXmlObjectBase *item);
    // Lets go of the chain; the last holder removes the items.
    void LeaveChain();

    CChain *m_chain;
};

// Forward iterator over the items of a CXmlCollection, seen as T. `end` is a
// null node.
template <typename T> class CMxIterator
{
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T *;
    using difference_type = std::ptrdiff_t;
    using pointer = T **;
    using reference = T *;

    explicit CMxIterator(CXmlCollection::CNode *node = nullptr) : m_node(node) {}

    T *operator*() const { return static_cast<T *>(m_node->item.Get()); }
    T *operator->() const { return static_cast<T *>(m_node->item.Get()); }
    CMxIterator &operator++()
    {
        m_node = m_node->next;
        return *this;
    }
    CMxIterator operator++(int)
    {
        CMxIterator before = *this;
        m_node = m_node->next;
        return before;
    }
    bool operator==(CMxIterator const &other) const { return m_node == other.m_node; }
    bool operator!=(CMxIterator const &other) const { return m_node != other.m_node; }
    CXmlCollection::CNode *GetNode() const { return m_node; }

private:
    CXmlCollection::CNode *m_node;
};

} // namespace MxXmlLib
