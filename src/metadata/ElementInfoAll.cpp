#include "metadata/ElementInfoAll.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/Element.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "metadata/ElementRowSteps.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;
using namespace RowSteps;

// ---------------------------------------------------------------------------
// Collections

CElementInfoAllCol::CElementInfoAllCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoAllCol::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
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

// Never satisfied, so it keeps seeing the elements; no count is checked.
bool CElementInfoAllCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                        CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    MxVariant value;
    InvokePropertyGet(object, value);
    *current = FromXml_Int(HeldCollection(value, m_elementName), parent, *current, context, false);
    return false;
}

CElementInfoAllAbsClsCol::CElementInfoAllAbsClsCol(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType)
    : CElementInfoAllCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoAllAbsClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoAllClsCol::CElementInfoAllClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType)
    : CElementInfoAllCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoAllClsCol::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    CollectionAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoAllEnumCol::CElementInfoAllEnumCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

CElementInfoAllPrimCol::CElementInfoAllPrimCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfoAllCol(name, elementNamespace, propertyIndex)
{
}

CElementInfoAllUntpdCol::CElementInfoAllUntpdCol(char const *name, char const *elementNamespace,
                                                 int propertyIndex)
    : CElementInfoAllCol(name, elementNamespace, propertyIndex)
{
}

// ---------------------------------------------------------------------------
// Substitutable classes

CElementInfoAllAbsClsMnd::CElementInfoAllAbsClsMnd(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory, int unused)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_unused(unused)
{
}

bool CElementInfoAllAbsClsMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

// A real child must carry the row's name before the factory is asked; an
// inline one is the factory's to judge, whatever stands at the cursor (null
// included). A factory that finds no class leaves the row unsatisfied.
bool CElementInfoAllAbsClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    CXmlElement *const at = *current;
    if (m_elementType == XmlElementType_Element && !IsThisElement(context, at))
        return false;
    CSmartPtr<CXmlObjectBase> child = m_factory(at);
    if (child.IsNull())
        return false;
    return ReadAndStoreChild(context, object, parent, current, child, m_elementType == XmlElementType_Element);
}

bool CElementInfoAllAbsClsMnd::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                                        bool isRealElement) const
{
    return ValidateMandatory(found, isRealElement, m_elementName);
}

void CElementInfoAllAbsClsMnd::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoAllAbsClsOpt::CElementInfoAllAbsClsOpt(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory)
{
}

bool CElementInfoAllAbsClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                            CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

// As the mandatory row, except that an inline form needs an element.
bool CElementInfoAllAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    CXmlElement *const at = *current;
    if (m_elementType == XmlElementType_Element ? !IsThisElement(context, at) : at == nullptr)
        return false;
    CSmartPtr<CXmlObjectBase> child = m_factory(at);
    if (child.IsNull())
        return false;
    return ReadAndStoreChild(context, object, parent, current, child, m_elementType == XmlElementType_Element);
}

bool CElementInfoAllAbsClsOpt::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

void CElementInfoAllAbsClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                         CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

// ---------------------------------------------------------------------------
// Concrete classes

CElementInfoAllClsMnd::CElementInfoAllClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory,
                                             int classId, bool contentRequired)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_classId(classId), m_contentRequired(contentRequired)
{
}

bool CElementInfoAllClsMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

bool CElementInfoAllClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    if (m_elementType == XmlElementType_Element && !IsThisElement(context, *current))
        return false;
    MxVariant value;
    InvokePropertyGet(object, value);
    CSmartPtr<CXmlObjectBase> child = HeldObject(value, m_elementName);
    if (m_elementType == XmlElementType_Element)
    {
        *current = ReadOwnElement(child, *current, context, false);
        return true;
    }
    CXmlElement *const at = *current;
    *current = FromXml_Int(child, parent, at, context, false);
    return *current != at;
}

// The child object exists from the start, so a missing real child is no
// loss unless it is a pseudo element or its content is required.
bool CElementInfoAllClsMnd::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                                     bool isRealElement) const
{
    if (!found && isRealElement && m_elementType != XmlElementType_PseudoElement && !m_contentRequired)
        return true;
    return ValidateMandatory(found, isRealElement, m_elementName);
}

void CElementInfoAllClsMnd::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

CElementInfoAllClsOpt::CElementInfoAllClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                             XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory,
                                             int classId)
    : CElementInfo(name, elementNamespace, propertyIndex), m_elementType(elementType), m_factory(factory),
      m_classId(classId)
{
}

bool CElementInfoAllClsOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                         CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

bool CElementInfoAllClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    CXmlElement *const at = *current;
    if (m_elementType == XmlElementType_Element ? !IsThisElement(context, at) : at == nullptr)
        return false;
    CSmartPtr<CXmlObjectBase> child = MadeObject(m_factory(m_classId, m_elementName.c_str()), m_elementName);
    return ReadAndStoreChild(context, object, parent, current, child, m_elementType == XmlElementType_Element);
}

bool CElementInfoAllClsOpt::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

void CElementInfoAllClsOpt::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                      CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    ChildAttributesToXml(m_elementType, context, object, writer);
}

// ---------------------------------------------------------------------------
// Enumerations and primitives

CElementInfoAllEnumMnd::CElementInfoAllEnumMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, EnumToString enumToString, StringToEnum stringToEnum,
                                               char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

bool CElementInfoAllEnumMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlEnum(context, object, writer, m_enumToString), m_elementName);
}

bool CElementInfoAllEnumMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlEnum(context, object, current);
    return true;
}

bool CElementInfoAllEnumMnd::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                                      bool isRealElement) const
{
    return ValidateMandatory(found, isRealElement, m_elementName);
}

CElementInfoAllEnumOpt::CElementInfoAllEnumOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, EnumToString enumToString, StringToEnum stringToEnum,
                                               char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

bool CElementInfoAllEnumOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return ElementToXmlEnum(context, object, writer, m_enumToString);
}

bool CElementInfoAllEnumOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlEnum(context, object, current);
    return true;
}

bool CElementInfoAllEnumOpt::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

CElementInfoAllPrimMnd::CElementInfoAllPrimMnd(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, ItemType itemType, char const *format,
                                               CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                               CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoAllPrimMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlPrim(context, object, writer), m_elementName);
}

bool CElementInfoAllPrimMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlPrim(context, object, current);
    return true;
}

bool CElementInfoAllPrimMnd::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                                      bool isRealElement) const
{
    return ValidateMandatory(found, isRealElement, m_elementName);
}

CElementInfoAllPrimOpt::CElementInfoAllPrimOpt(char const *name, char const *elementNamespace, int propertyIndex,
                                               bool nillable, ItemType itemType, char const *format,
                                               CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                               CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoAllPrimOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    return ElementToXmlPrim(context, object, writer);
}

bool CElementInfoAllPrimOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                            CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ElementFromXmlPrim(context, object, current);
    return true;
}

bool CElementInfoAllPrimOpt::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

// ---------------------------------------------------------------------------
// xs:any

CElementInfoAllUntpdMnd::CElementInfoAllUntpdMnd(char const *name, char const *elementNamespace,
                                                 int propertyIndex, char const *namespaceRestriction,
                                                 char const *targetNamespace)
    : CElementInfo(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoAllUntpdMnd::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                           CXmlWriter *writer) const
{
    return RequireWritten(ElementToXmlCls(context, object, writer, false), m_elementName);
}

bool CElementInfoAllUntpdMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType)
{
    if (*current == nullptr)
        return false;
    MxVariant value;
    InvokePropertyGet(object, value);
    CXmlElement *const next = ReadAny(m_elementName, HeldObject(value, m_elementName), parent, *current, context);
    if (next == *current)
        return false;
    *current = next;
    return true;
}

bool CElementInfoAllUntpdMnd::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                                       bool isRealElement) const
{
    return ValidateMandatory(found, isRealElement, m_elementName);
}

CElementInfoAllUntpdOpt::CElementInfoAllUntpdOpt(char const *name, char const *elementNamespace,
                                                 int propertyIndex, char const *namespaceRestriction,
                                                 char const *targetNamespace)
    : CElementInfo(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoAllUntpdOpt::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                           CXmlWriter *writer) const
{
    return ElementToXmlCls(context, object, writer, false);
}

bool CElementInfoAllUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
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
    if (next == *current)
        return false;
    MxVariant cell = ObjectCell(any);
    InvokePropertySet(object, cell, *parent);
    *current = next;
    return true;
}

bool CElementInfoAllUntpdOpt::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

} // namespace MxXmlLibData
