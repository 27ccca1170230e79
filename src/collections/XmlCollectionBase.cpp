#include "collections/XmlCollectionBase.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <algorithm>

namespace MxXmlLib
{

CXmlCollectionBase::CXmlCollectionBase() : m_minOccurs(0), m_maxOccurs(-1) {}

CXmlCollectionBase::CXmlCollectionBase(char const *elementName, char const *namespaceUri, int minOccurs,
                                       int maxOccurs)
    : m_namespace(namespaceUri ? namespaceUri : ""), m_minOccurs(minOccurs), m_maxOccurs(maxOccurs)
{
    SetElementName(elementName);
}

CXmlCollectionBase::CXmlCollectionBase(CXmlCollectionBase const &) = default;
CXmlCollectionBase &CXmlCollectionBase::operator=(CXmlCollectionBase const &) = default;
CXmlCollectionBase::~CXmlCollectionBase() = default;

std::string CXmlCollectionBase::GetTargetNamespace() const
{
    throw CMxException("CXmlCollectionBase::GetTargetNamespace Should not be used from within a Collection "
                       "(program logic error)");
}

void CXmlCollectionBase::ValidateCount(CSerializationContext const &context) const
{
    if (context.GetIgnoreInvalidCollectionCounts())
        return;
    int const count = GetCount();
    if (m_maxOccurs != -1 && count > m_maxOccurs)
        throw CMxValidationException(FormatString("The Maximum number of [%s] elements allowed in this collection is %d",
                                                  GetElementName().c_str(), m_maxOccurs),
                                     "");
    if (count < m_minOccurs)
        throw CMxValidationException(FormatString("The Minimum number of [%s] elements allowed in this collection is %d",
                                                  GetElementName().c_str(), m_minOccurs),
                                     "");
}

bool CXmlCollectionBase::IsValidCount(CSerializationContext const &context) const
{
    if (context.GetIgnoreInvalidCollectionCounts())
        return true;
    int const count = GetCount();
    if (m_maxOccurs != -1 && count > m_maxOccurs)
        return false;
    return count >= m_minOccurs;
}

void CXmlCollectionBase::AddEventListener(IEventSink *listener)
{
    m_listeners.push_back(listener);
}

void CXmlCollectionBase::RemoveEventListener(IEventSink *listener)
{
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener), m_listeners.end());
}

template <typename Call> void CXmlCollectionBase::ForEachListener(Call call)
{
    if (m_listeners.empty())
        return;
    // A listener may add or remove listeners while it is told: walk a copy,
    // so that the walk itself stays valid.
    std::vector<IEventSink *> const listeners = m_listeners;
    for (IEventSink *listener : listeners)
        call(listener);
}

void CXmlCollectionBase::FireOnCollectionChange()
{
    ForEachListener([this](IEventSink *sink) { FireOnCollectionChangeEvent(sink, this); });
}

void CXmlCollectionBase::FireOnCollectionAdd(void *item)
{
    ForEachListener([this, item](IEventSink *sink) { FireOnCollectionAddEvent(sink, this, item); });
}

void CXmlCollectionBase::FireOnCollectionAddComplete(void *item)
{
    ForEachListener([this, item](IEventSink *sink) { FireOnCollectionAddCompleteEvent(sink, this, item); });
}

void CXmlCollectionBase::FireOnCollectionRemove(int index)
{
    ForEachListener([this, index](IEventSink *sink) { FireOnCollectionRemoveEvent(sink, this, index); });
}

void CXmlCollectionBase::FireOnCollectionRemoveComplete(int index)
{
    ForEachListener([this, index](IEventSink *sink) { FireOnCollectionRemoveCompleteEvent(sink, this, index); });
}

} // namespace MxXmlLib
