#pragma once

#include "binding/XmlObjectBase.h"

#include <string>
#include <vector>

namespace MxXmlLib
{

// Root of all collections of the model: repeated content of a parent element,
// read from the parent's children and watched through listeners. It holds the
// items' element name and namespace, the occurrence bounds (maximum -1: no
// upper bound) and the listeners, which it does not own.
class CXmlCollectionBase : public CXmlObjectBase
{
public:
    CXmlCollectionBase(CXmlCollectionBase const &other);
    // Copies the names, the listener list and the bounds.
    CXmlCollectionBase &operator=(CXmlCollectionBase const &other);

    virtual int GetCount() const = 0;
    virtual void Clear() = 0;
    virtual void Remove(int index) = 0;
    // Raises CMxValidationException when the count is above the maximum or
    // below the minimum, unless the context ignores collection counts.
    virtual void ValidateCount(CSerializationContext const &context) const;
    virtual bool IsValidCount(CSerializationContext const &context) const;

    // Derived classes are the collection itself; defined here so that events
    // sent while a collection is destroyed still name it.
    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;
    std::string GetNamespace() const override { return m_namespace; }
    int GetMinOccurs() const { return m_minOccurs; }
    int GetMaxOccurs() const { return m_maxOccurs; }

    // A listener may stand in the list more than once and then hears each
    // event once per entry; removing drops every entry of it.
    void AddEventListener(IEventSink *listener);
    void RemoveEventListener(IEventSink *listener);

protected:
    CXmlCollectionBase();
    CXmlCollectionBase(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs);
    ~CXmlCollectionBase() override;

    // A plain collection has no namespace of its own to write as a root.
    std::string GetTargetNamespace() const override;

    // Each calls OnEvent(GetBase(), type, data) on the listeners in order. An
    // index of -1 goes out as null data.
    void FireOnCollectionChange();
    void FireOnCollectionAdd(void *item);
    void FireOnCollectionAddComplete(void *item);
    void FireOnCollectionRemove(int index);
    void FireOnCollectionRemoveComplete(int index);

private:
    template <typename Call> void ForEachListener(Call call);

    std::string m_namespace;
    std::vector<IEventSink *> m_listeners;
    int m_minOccurs;
    int m_maxOccurs;
};

} // namespace MxXmlLib
