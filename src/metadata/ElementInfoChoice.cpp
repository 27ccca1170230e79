#include "metadata/ElementInfoChoice.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/Element.h"
#include "collections/ElementCol.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "metadata/ElementRowSteps.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;
using namespace RowSteps;

// ---------------------------------------------------------------------------
// Collections

CElementInfoChoiceCol::CElementInfoChoiceCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoChoiceCol::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return ElementToXmlCol(context, object, writer);
}

bool CElementInfoChoiceCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *,
                                           XmlElementType ownerType)
{
    MxVariant value;
    InvokePropertyGet(object, value);
    CXmlElement *const next = FromXml_Int(HeldCollection(value, m_elementName), parent, *current, context, false);
    return FinishRead(context, object, current, next, ownerType);
}

// Taking nothing is no error: the next alternative is asked.
bool CElementInfoChoiceCol::FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                                       CXmlElement **current, CXmlElement *next, XmlElementType ownerType) const
{
    if (next == *current)
        return false;
    MxVariant value;
    InvokePropertyGet(object, value);
    CSmartPtr<CXmlCollectionBase> collection = HeldCollection(value, m_elementName);
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

CElementInfoChoiceAbsClsCol::CElementInfoChoiceAbsClsCol(char const *name, char const *elementNamespace,
                                                         int propertyIndex, XmlElementType elementType)
    : CElementInfoChoiceCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoChoiceAbsClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                            CXmlGeneratedClass const *object,
                                                            CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoChoiceClsCol::CElementInfoChoiceClsCol(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType)
    : CElementInfoChoiceCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoChoiceClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoChoiceEnumCol::CElementInfoChoiceEnumCol(char const *name, char const *elementNamespace,
                                                     int propertyIndex)
    : CElementInfoChoiceCol(name, elementNamespace, propertyIndex)
{
}

CElementInfoChoicePrimCol::CElementInfoChoicePrimCol(char const *name, char const *elementNamespace,
                                                     int propertyIndex)
    : CElementInfoChoiceCol(name, elementNamespace, propertyIndex)
{
}

CElementInfoChoiceUntpdCol::CElementInfoChoiceUntpdCol(char const *name, char const *elementNamespace,
                                                       int propertyIndex)
    : CElementInfoChoiceCol(name, elementNamespace, propertyIndex)
{
}

// A named row at the end of the children takes nothing: its namespace is
// that of no element.
bool CElementInfoChoiceUntpdCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                CXmlElement *parent, CXmlElement **current, char const *,
                                                XmlElementType ownerType)
{
    MxVariant value;
    InvokePropertyGet(object, value);
    CSmartPtr<CXmlCollectionBase> collection = HeldCollection(value, m_elementName);
    CXmlElement *next;
    if (m_elementName == "AnyElement")
        next = FromXml_Int(collection, parent, *current, context, false);
    else
        next = AsElementCol(collection)->FromXmlLockElementName_Int(
            m_elementName, *current ? (*current)->GetNamespaceURI() : std::string(), parent, *current, context);
    return FinishRead(context, object, current, next, ownerType);
}

// ---------------------------------------------------------------------------
// Classes

CElementInfoChoiceAbsClsOpt::CElementInfoChoiceAbsClsOpt(char const *name, char const *elementNamespace,
                                                         int propertyIndex, XmlElementType elementType,
                                                         CClassfactoryBase::FactoryByElement factory)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory)
{
}

bool CElementInfoChoiceAbsClsOpt::ElementToXml(CSerializationContext const &context,
                                               CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

// The element type plays no part in reading: the element carries the
// row's name, and the factory picks the class.
bool CElementInfoChoiceAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                 CXmlElement *parent, CXmlElement **current, char const *,
                                                 XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    CSmartPtr<CXmlObjectBase> child = m_factory(*current);
    MxVariant cell = ObjectCell(child);
    InvokePropertySet(object, cell, *parent);
    if (child.IsNull())
        return false;
    *current = ReadOwnElement(child, *current, context, false);
    return true;
}

void CElementInfoChoiceAbsClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                            CXmlGeneratedClass const *object,
                                                            CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoChoiceClsOpt::CElementInfoChoiceClsOpt(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByNumber factory, int classId)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_classId(classId)
{
}

bool CElementInfoChoiceClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, true);
}

// A real child is told that it may stay empty if it is itself a choice; an
// inline one decides by trying, and is cleared when it took nothing.
bool CElementInfoChoiceClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    CXmlElement *const at = *current;
    if (m_elementType == XmlElementType_Element ? !IsThisElement(context, at) : at == nullptr)
        return false;
    CSmartPtr<CXmlObjectBase> child = MadeObject(m_factory(m_classId, m_elementName.c_str()), m_elementName);
    MxVariant cell = ObjectCell(child);
    InvokePropertySet(object, cell, *parent);
    if (m_elementType == XmlElementType_Element)
    {
        *current = ReadOwnElement(child, at, context, true);
        return true;
    }
    CXmlElement *const next = FromXml_Int(child, parent, at, context, false);
    if (next == at)
    {
        MxVariant cleared = ObjectCell(nullptr);
        InvokePropertySet(object, cleared, *parent);
        return false;
    }
    *current = next;
    return true;
}

void CElementInfoChoiceClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

// ---------------------------------------------------------------------------
// Enumerations and primitives

CElementInfoChoiceEnumOpt::CElementInfoChoiceEnumOpt(char const *name, char const *elementNamespace,
                                                     int propertyIndex, bool nillable, EnumToString enumToString,
                                                     StringToEnum stringToEnum, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

bool CElementInfoChoiceEnumOpt::ElementToXml(CSerializationContext const &context,
                                             CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    return ElementToXmlEnum(context, object, writer, m_enumToString);
}

bool CElementInfoChoiceEnumOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                               CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlEnum(context, object, current);
    return true;
}

CElementInfoChoicePrimOpt::CElementInfoChoicePrimOpt(char const *name, char const *elementNamespace,
                                                     int propertyIndex, bool nillable, ItemType itemType,
                                                     char const *format,
                                                     CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                                     CPrimitiveRestrictions const &restrictions,
                                                     char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoChoicePrimOpt::ElementToXml(CSerializationContext const &context,
                                             CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    return ElementToXmlPrim(context, object, writer);
}

bool CElementInfoChoicePrimOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                               CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlPrim(context, object, current);
    return true;
}

// ---------------------------------------------------------------------------
// xs:any

CElementInfoChoiceUntpdOpt::CElementInfoChoiceUntpdOpt(char const *name, char const *elementNamespace,
                                                       int propertyIndex, char const *namespaceRestriction,
                                                       char const *targetNamespace)
    : CElementInfo(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoChoiceUntpdOpt::ElementToXml(CSerializationContext const &context,
                                              CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

bool CElementInfoChoiceUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                CXmlElement *parent, CXmlElement **current,
                                                char const *classNamespace, XmlElementType)
{
    if (*current == nullptr)
        return false;
    CSmartPtr<CElement> any =
        NewAny(m_elementName,
               GetAnyDefaultNamespace(m_namespaceRestriction.c_str(), classNamespace, m_targetNamespace.c_str()),
               m_namespaceRestriction, m_targetNamespace);
    CXmlElement *const next = ReadAny(m_elementName, any, parent, *current, context);
    MxVariant cell = ObjectCell(next == *current ? nullptr : any.Get());
    InvokePropertySet(object, cell, *parent);
    if (next == *current)
        return false;
    *current = next;
    return true;
}

} // namespace MxXmlLibData
