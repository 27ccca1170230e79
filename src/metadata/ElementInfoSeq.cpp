#include "metadata/ElementInfoSeq.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "metadata/ElementRowSteps.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;
using namespace RowSteps;

// ---------------------------------------------------------------------------
// Collections

bool CElementInfoSeqCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                        CXmlElement *parent, CXmlElement **current, char const *,
                                        XmlElementType ownerType)
{
    *current = ReadItems(context, object, parent, *current);
    return FinishRead(context, object, ownerType);
}

// The cursor stays where the collection left it, even when the count is bad.
bool CElementInfoSeqCol::FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                                    XmlElementType ownerType) const
{
    CSmartPtr<CXmlCollectionBase> collection = HeldItems(object);
    if (ownerType != XmlElementType_Element)
        return collection->IsValidCount(context);
    collection->ValidateCount(context);
    return true;
}

bool CElementInfoSeqUntpdCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType ownerType)
{
    *current = ReadUntypedItems(context, object, parent, *current);
    return FinishRead(context, object, ownerType);
}

// ---------------------------------------------------------------------------
// Substitutable classes

// The row's name decides first; the factory only picks the class. There is
// no skip loop: a real element without it fails even when missing
// mandatory elements are ignored.
bool CElementInfoSeqAbsClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType ownerType)
{
    CSmartPtr<CXmlObjectBase> child;
    if (IsThisElement(context, *current))
        child = m_factory(*current);
    if (child.IsNull())
    {
        if (ownerType != XmlElementType_Element)
            return false;
        ThrowNoSubstitution(m_elementName, parent);
    }
    return ReadAndStoreChild(context, object, parent, current, child, true);
}

// With no class for the element, the element stays where it is.
bool CElementInfoSeqAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    if (IsThisElement(context, *current))
        ReadAndStoreMade(context, object, parent, current, true);
    return true;
}

// ---------------------------------------------------------------------------
// Concrete classes

// The property holds its object already: the factory is for writers of
// new objects, not for reading.
bool CElementInfoSeqClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *,
                                           XmlElementType ownerType)
{
    if (m_elementType != XmlElementType_Element)
        return ReadHeldInline(context, object, parent, current, ownerType);
    if (ownerType != XmlElementType_Element)
    {
        if (!IsThisElement(context, *current))
            return false;
    }
    else if (!SkipToElement(context, m_elementName, parent, current,
                            [&](CXmlElement const *e) { return IsThisElement(context, e); }))
        return true;
    *current = ReadChild(context, parent, *current, HeldChild(object), true);
    return true;
}

// An inline child reads from the parent's children. Without content
// required, taking nothing is fine, except that a real element which skips
// unknown elements answers false so the driver skips one and asks again.
bool CElementInfoSeqClsMnd::ReadHeldInline(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, XmlElementType ownerType)
{
    bool const real = ownerType == XmlElementType_Element;
    CXmlElement *const at = *current;
    if (m_contentRequired && at == nullptr)
    {
        if (!real)
            return false;
        ThrowMissingChild(m_elementName, parent);
    }
    CXmlElement *const next = ReadChild(context, parent, at, HeldChild(object), false);
    bool const progress = next != at;
    if (!m_contentRequired)
    {
        if (at != nullptr && !progress && context.GetIgnoreUnknownElements() && real)
            return false;
        *current = next;
        return true;
    }
    if (!progress)
    {
        if (!real)
            return false;
        ThrowMissingChild(m_elementName, parent);
    }
    *current = next;
    return true;
}

// A new object each time; an inline one that takes nothing is not stored.
bool CElementInfoSeqClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    if (MayStartAt(context, *current))
        ReadAndStoreChild(context, object, parent, current, MakeChild(), m_elementType == XmlElementType_Element);
    return true;
}

// ---------------------------------------------------------------------------
// Enumerations and primitives

// Inline, a miss is left to the parent.
bool CElementInfoSeqSimpleMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType ownerType)
{
    auto const isThis = [&](CXmlElement const *e) { return IsThisElement(context, e); };
    if (ownerType == XmlElementType_Element)
    {
        if (SkipToElement(context, m_elementName, parent, current, isThis))
            ReadValue(context, object, current);
        return true;
    }
    while (!isThis(*current))
    {
        if (!SkipsUnknownInline() || !context.GetIgnoreUnknownElements() || *current == nullptr)
            return false;
        *current = (*current)->GetNextSiblingElement();
    }
    ReadValue(context, object, current);
    return true;
}

bool CElementInfoSeqSimpleMnd::SkipsUnknownInline() const
{
    return false;
}

bool CElementInfoSeqPrimMnd::SkipsUnknownInline() const
{
    return true;
}

bool CElementInfoSeqSimpleOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (IsThisElement(context, *current))
        ReadValue(context, object, current);
    return true;
}

// ---------------------------------------------------------------------------
// xs:any

// The end of the children fails whatever the owner is: unlike the class
// rows, an inline owner does not get the chance to answer false.
bool CElementInfoSeqUntpdMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType ownerType)
{
    if (*current == nullptr)
        ThrowMissingChild(m_elementName, parent);
    if (ReadIntoHeld(context, object, parent, current))
        return true;
    if (ownerType != XmlElementType_Element)
        return false;
    throw CMxValidationException(
        FormatString("Failed to find the required element from namespace [%s].", m_elementNamespace.c_str()),
        parent->GetXPath());
}

bool CElementInfoSeqUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current,
                                             char const *classNamespace, XmlElementType)
{
    if (*current != nullptr)
        ReadAndStoreNew(context, object, parent, current, classNamespace);
    return true;
}

} // namespace MxXmlLibData
