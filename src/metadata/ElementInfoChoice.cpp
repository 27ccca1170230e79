#include "metadata/ElementInfoChoice.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;

// ---------------------------------------------------------------------------
// Collections

bool CElementInfoChoiceCol::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return WriteItems(context, object, writer);
}

bool CElementInfoChoiceCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *,
                                           XmlElementType ownerType)
{
    return FinishRead(context, object, current, ReadItems(context, object, parent, *current), ownerType);
}

// Taking nothing is no error: the next alternative is asked.
bool CElementInfoChoiceCol::FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                                       CXmlElement **current, CXmlElement *next, XmlElementType ownerType) const
{
    if (next == *current)
        return false;
    CSmartPtr<CXmlCollectionBase> collection = HeldItems(object);
    if (ownerType != XmlElementType_Element)
    {
        if (!collection->IsValidCount(context))
            return false;
        *current = next;
        return true;
    }
    *current = next;
    collection->ValidateCount(context);
    return true;
}

bool CElementInfoChoiceUntpdCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                CXmlElement *parent, CXmlElement **current, char const *,
                                                XmlElementType ownerType)
{
    return FinishRead(context, object, current, ReadUntypedItems(context, object, parent, *current), ownerType);
}

// ---------------------------------------------------------------------------
// Classes

// The element type plays no part in reading: the element carries the
// row's name, and the factory picks the class.
bool CElementInfoChoiceAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                 CXmlElement *parent, CXmlElement **current, char const *,
                                                 XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    CSmartPtr<CXmlObjectBase> child = m_factory(*current);
    StoreChild(object, *parent, child);
    if (child.IsNull())
        return false;
    *current = ReadChild(context, parent, *current, child, true);
    return true;
}

bool CElementInfoChoiceClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return WriteObject(context, object, writer, true);
}

// A real child is told that it may stay empty if it is itself a choice; an
// inline one decides by trying, and is cleared when it took nothing.
bool CElementInfoChoiceClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    CXmlElement *const at = *current;
    if (!MayStartAt(context, at))
        return false;
    CSmartPtr<CXmlObjectBase> child = MakeChild();
    StoreChild(object, *parent, child);
    bool const own = m_elementType == XmlElementType_Element;
    CXmlElement *const next = ReadChild(context, parent, at, child, own, true);
    if (!own && next == at)
    {
        StoreChild(object, *parent, nullptr);
        return false;
    }
    *current = next;
    return true;
}

// ---------------------------------------------------------------------------
// xs:any

bool CElementInfoChoiceUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                CXmlElement *parent, CXmlElement **current,
                                                char const *classNamespace, XmlElementType)
{
    if (*current == nullptr)
        return false;
    if (ReadAndStoreNew(context, object, parent, current, classNamespace))
        return true;
    StoreChild(object, *parent, nullptr);
    return false;
}

} // namespace MxXmlLibData
