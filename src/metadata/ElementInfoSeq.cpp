#include "metadata/ElementInfoSeq.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/Element.h"
#include "collections/ElementCol.h"
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

CElementInfoSeqCol::CElementInfoSeqCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoSeqCol::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                      CXmlWriter *writer) const
{
    if (!context.GetIgnoreInvalidCollectionCounts())
    {
        MxVariant value;
        ReadProperty(object, value);
        HeldCollection(value, m_elementName)->ValidateCount(context);
    }
    return ElementToXmlCol(context, object, writer);
}

bool CElementInfoSeqCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                        CXmlElement *parent, CXmlElement **current, char const *,
                                        XmlElementType ownerType)
{
    MxVariant value;
    InvokePropertyGet(object, value);
    *current = FromXml_Int(HeldCollection(value, m_elementName), parent, *current, context, false);
    return FinishRead(context, object, ownerType);
}

// The cursor stays where the collection left it, even when the count is bad.
bool CElementInfoSeqCol::FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                                    XmlElementType ownerType) const
{
    MxVariant value;
    InvokePropertyGet(object, value);
    CSmartPtr<CXmlCollectionBase> collection = HeldCollection(value, m_elementName);
    if (ownerType != XmlElementType_Element)
        return collection->IsValidCount(context);
    collection->ValidateCount(context);
    return true;
}

CElementInfoSeqAbsClsCol::CElementInfoSeqAbsClsCol(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType)
    : CElementInfoSeqCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoSeqAbsClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoSeqClsCol::CElementInfoSeqClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType)
    : CElementInfoSeqCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoSeqClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoSeqEnumCol::CElementInfoSeqEnumCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfoSeqCol(name, elementNamespace, propertyIndex)
{
}

CElementInfoSeqPrimCol::CElementInfoSeqPrimCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfoSeqCol(name, elementNamespace, propertyIndex)
{
}

CElementInfoSeqUntpdCol::CElementInfoSeqUntpdCol(char const *name, char const *elementNamespace,
                                                 int propertyIndex)
    : CElementInfoSeqCol(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoSeqUntpdCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType ownerType)
{
    MxVariant value;
    InvokePropertyGet(object, value);
    CSmartPtr<CXmlCollectionBase> collection = HeldCollection(value, m_elementName);
    if (m_elementName == "AnyElement")
        *current = FromXml_Int(collection, parent, *current, context, false);
    else
        *current = AsElementCol(collection)->FromXmlLockElementName_Int(
            m_elementName, *current ? (*current)->GetNamespaceURI() : std::string(), parent, *current, context);
    return FinishRead(context, object, ownerType);
}

// ---------------------------------------------------------------------------
// Substitutable classes

CElementInfoSeqAbsClsMnd::CElementInfoSeqAbsClsMnd(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory)
{
}

bool CElementInfoSeqAbsClsMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

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

void CElementInfoSeqAbsClsMnd::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoSeqAbsClsOpt::CElementInfoSeqAbsClsOpt(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory)
{
}

bool CElementInfoSeqAbsClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

// With no class for the element, the element stays where it is.
bool CElementInfoSeqAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    if (!IsThisElement(context, *current))
        return true;
    CSmartPtr<CXmlObjectBase> child = m_factory(*current);
    if (child.IsNull())
        return true;
    return ReadAndStoreChild(context, object, parent, current, child, true);
}

void CElementInfoSeqAbsClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

// ---------------------------------------------------------------------------
// Concrete classes

CElementInfoSeqClsMnd::CElementInfoSeqClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory,
                                             int classId, bool contentRequired)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_classId(classId), m_contentRequired(contentRequired)
{
}

bool CElementInfoSeqClsMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

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
    MxVariant value;
    InvokePropertyGet(object, value);
    *current = ReadOwnElement(HeldObject(value, m_elementName), *current, context, false);
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
    MxVariant value;
    InvokePropertyGet(object, value);
    CXmlElement *const next = FromXml_Int(HeldObject(value, m_elementName), parent, at, context, false);
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

void CElementInfoSeqClsMnd::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoSeqClsOpt::CElementInfoSeqClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory,
                                             int classId)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_classId(classId)
{
}

bool CElementInfoSeqClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

// A new object each time; an inline one that takes nothing is not stored.
bool CElementInfoSeqClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    if (m_elementType == XmlElementType_Element ? !IsThisElement(context, *current) : *current == nullptr)
        return true;
    CSmartPtr<CXmlObjectBase> child = MadeObject(m_factory(m_classId, m_elementName.c_str()), m_elementName);
    ReadAndStoreChild(context, object, parent, current, child, m_elementType == XmlElementType_Element);
    return true;
}

void CElementInfoSeqClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

// ---------------------------------------------------------------------------
// Enumerations and primitives

CElementInfoSeqEnumMnd::CElementInfoSeqEnumMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, EnumToString enumToString, StringToEnum stringToEnum,
                                               char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

bool CElementInfoSeqEnumMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlEnum(context, object, writer, m_enumToString), m_elementName);
}

// Inline, one look and no skipping (unlike the primitive row).
bool CElementInfoSeqEnumMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *parent, CXmlElement **current, char const *,
                                            XmlElementType ownerType)
{
    auto const isThis = [&](CXmlElement const *e) { return IsThisElement(context, e); };
    if (ownerType == XmlElementType_Element)
    {
        if (SkipToElement(context, m_elementName, parent, current, isThis))
            ElementFromXmlEnum(context, object, current);
        return true;
    }
    if (!isThis(*current))
        return false;
    ElementFromXmlEnum(context, object, current);
    return true;
}

CElementInfoSeqEnumOpt::CElementInfoSeqEnumOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, EnumToString enumToString, StringToEnum stringToEnum,
                                               char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

bool CElementInfoSeqEnumOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return ElementToXmlEnum(context, object, writer, m_enumToString);
}

bool CElementInfoSeqEnumOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (IsThisElement(context, *current))
        ElementFromXmlEnum(context, object, current);
    return true;
}

CElementInfoSeqPrimMnd::CElementInfoSeqPrimMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, ItemType itemType, char const *format,
                                               CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                               CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoSeqPrimMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlPrim(context, object, writer), m_elementName);
}

// Inline, unknown elements in front are skipped when allowed, and a miss is
// left to the parent.
bool CElementInfoSeqPrimMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *parent, CXmlElement **current, char const *,
                                            XmlElementType ownerType)
{
    auto const isThis = [&](CXmlElement const *e) { return IsThisElement(context, e); };
    if (ownerType == XmlElementType_Element)
    {
        if (SkipToElement(context, m_elementName, parent, current, isThis))
            ElementFromXmlPrim(context, object, current);
        return true;
    }
    while (!isThis(*current))
    {
        if (!context.GetIgnoreUnknownElements() || *current == nullptr)
            return false;
        *current = (*current)->GetNextSiblingElement();
    }
    ElementFromXmlPrim(context, object, current);
    return true;
}

CElementInfoSeqPrimOpt::CElementInfoSeqPrimOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, ItemType itemType, char const *format,
                                               CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                               CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoSeqPrimOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return ElementToXmlPrim(context, object, writer);
}

bool CElementInfoSeqPrimOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (IsThisElement(context, *current))
        ElementFromXmlPrim(context, object, current);
    return true;
}

// ---------------------------------------------------------------------------
// xs:any

CElementInfoSeqUntpdMnd::CElementInfoSeqUntpdMnd(char const *name, char const *elementNamespace,
                                                 int propertyIndex, char const *namespaceRestriction,
                                                 char const *targetNamespace)
    : CElementInfo(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoSeqUntpdMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                           CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

// The end of the children fails whatever the owner is: unlike the class
// rows, an inline owner does not get the chance to answer false.
bool CElementInfoSeqUntpdMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType ownerType)
{
    if (*current == nullptr)
        ThrowMissingChild(m_elementName, parent);
    MxVariant value;
    InvokePropertyGet(object, value);
    CXmlElement *const next = ReadAny(m_elementName, HeldObject(value, m_elementName), parent, *current, context);
    if (next != *current)
    {
        *current = next;
        return true;
    }
    if (ownerType != XmlElementType_Element)
        return false;
    throw CMxValidationException(
        FormatString("Failed to find the required element from namespace [%s].", m_elementNamespace.c_str()),
        parent->GetXPath());
}

CElementInfoSeqUntpdOpt::CElementInfoSeqUntpdOpt(char const *name, char const *elementNamespace,
                                                 int propertyIndex, char const *namespaceRestriction,
                                                 char const *targetNamespace)
    : CElementInfo(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoSeqUntpdOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                           CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

bool CElementInfoSeqUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current,
                                             char const *classNamespace, XmlElementType)
{
    if (*current == nullptr)
        return true;
    CSmartPtr<CElement> any =
        NewAny(m_elementName,
               GetAnyDefaultNamespace(m_namespaceRestriction.c_str(), classNamespace, m_targetNamespace.c_str()),
               m_namespaceRestriction, m_targetNamespace);
    CXmlElement *const next = ReadAny(m_elementName, any, parent, *current, context);
    if (next != *current)
    {
        MxVariant cell = ObjectCell(any);
        InvokePropertySet(object, cell, *parent);
        *current = next;
    }
    return true;
}

} // namespace MxXmlLibData
