#include "metadata/ElementInfoKinds.h"

#include "binding/XmlGeneratedClass.h"
#include "collections/ElementCol.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "document/XmlWriter.h"
#include "metadata/ElementRowSteps.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;
using namespace RowSteps;

// ---------------------------------------------------------------------------
// Collections

CElementInfoCollection::CElementInfoCollection(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoCollection::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                          CXmlWriter *writer) const
{
    if (!context.GetIgnoreInvalidCollectionCounts())
    {
        MxVariant value;
        ReadProperty(object, value);
        HeldCollection(value, m_elementName)->ValidateCount(context);
    }
    return WriteItems(context, object, writer);
}

bool CElementInfoCollection::WriteItems(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                        CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    CSmartPtr<CXmlCollectionBase> collection = HeldCollection(value, m_elementName);
    if (collection->GetCount() <= 0)
        return false;
    using Context = CXmlWriter::CXmlWriterContext;
    if (Context *current = writer->GetCurrentContext())
        current->ArrayState = Context::ArrayPending;
    CXmlObjectBase::ToXml_Int(collection->GetBase(), writer, false, m_elementNamespace.c_str(), context, false);
    if (Context *current = writer->GetCurrentContext())
        current->ArrayState = Context::ArrayClosing;
    return true;
}

void CElementInfoCollection::ItemAttributesToXml(XmlElementType elementType, CSerializationContext const &context,
                                                 CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    if (elementType == XmlElementType_PseudoElement)
        WriteItemAttributes(ReadProperty(object), m_elementName, context, writer);
}

CSmartPtr<CXmlCollectionBase> CElementInfoCollection::HeldItems(CXmlGeneratedClass *object) const
{
    MxVariant value;
    InvokePropertyGet(object, value);
    return HeldCollection(value, m_elementName);
}

CXmlElement *CElementInfoCollection::ReadItems(CSerializationContext const &context, CXmlGeneratedClass *object,
                                               CXmlElement *parent, CXmlElement *at) const
{
    return FromXml_Int(HeldItems(object), parent, at, context, false);
}

CXmlElement *CElementInfoCollection::ReadUntypedItems(CSerializationContext const &context,
                                                      CXmlGeneratedClass *object, CXmlElement *parent,
                                                      CXmlElement *at) const
{
    CSmartPtr<CXmlCollectionBase> collection = HeldItems(object);
    if (m_elementName == "AnyElement")
        return FromXml_Int(collection, parent, at, context, false);
    // At the end of the children the namespace is that of no element.
    return AsElementCol(collection)->FromXmlLockElementName_Int(
        m_elementName, at ? at->GetNamespaceURI() : std::string(), parent, at, context);
}

// ---------------------------------------------------------------------------
// Objects

CElementInfoObject::CElementInfoObject(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

bool CElementInfoObject::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                      CXmlWriter *writer) const
{
    return WriteObject(context, object, writer, false);
}

bool CElementInfoObject::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

bool CElementInfoObject::WriteObject(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                     CXmlWriter *writer, bool optionalChoice) const
{
    MxVariant value;
    ReadProperty(object, value);
    CSmartPtr<CXmlObjectBase> child = value.GetXmlObject();
    if (child.IsNull())
        return false;
    CXmlObjectBase::ToXml_Int(child, writer, false, m_elementNamespace.c_str(), context, optionalChoice);
    return true;
}

CSmartPtr<CXmlObjectBase> CElementInfoObject::HeldChild(CXmlGeneratedClass *object) const
{
    MxVariant value;
    InvokePropertyGet(object, value);
    return HeldObject(value, m_elementName);
}

void CElementInfoObject::StoreChild(CXmlGeneratedClass *object, CXmlElement const &parent,
                                    CXmlObjectBase *child) const
{
    MxVariant cell = ObjectCell(child);
    InvokePropertySet(object, cell, parent);
}

CXmlElement *CElementInfoObject::ReadChild(CSerializationContext const &context, CXmlElement *parent,
                                           CXmlElement *at, CXmlObjectBase *child, bool ownElement,
                                           bool optionalChoice) const
{
    if (ownElement)
        return ReadOwnElement(child, at, context, optionalChoice);
    return FromXml_Int(child, parent, at, context, false);
}

bool CElementInfoObject::ReadAndStoreChild(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, CXmlObjectBase *child,
                                           bool ownElement) const
{
    CXmlElement *const at = *current;
    CXmlElement *const next = ReadChild(context, parent, at, child, ownElement);
    bool const took = ownElement || next != at;
    if (took)
        StoreChild(object, *parent, child);
    *current = next;
    return took;
}

CElementInfoChild::CElementInfoChild(char const *name, char const *elementNamespace, int propertyIndex,
                                     XmlElementType elementType)
    : CElementInfoObject(name, elementNamespace, propertyIndex), m_elementType(elementType)
{
}

void CElementInfoChild::PseudoChildAttributeToXml(CSerializationContext const &context,
                                                  CXmlGeneratedClass const *object, CXmlWriter *writer) const
{
    if (m_elementType == XmlElementType_PseudoElement)
        WriteChildAttributes(ReadProperty(object), context, writer);
}

bool CElementInfoChild::MayStartAt(CSerializationContext const &context, CXmlElement const *at) const
{
    return m_elementType == XmlElementType_Element ? IsThisElement(context, at) : at != nullptr;
}

CElementInfoClass::CElementInfoClass(char const *name, char const *elementNamespace, int propertyIndex,
                                     XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory,
                                     int classId)
    : CElementInfoChild(name, elementNamespace, propertyIndex, elementType), m_factory(factory), m_classId(classId)
{
}

CSmartPtr<CXmlObjectBase> CElementInfoClass::MakeChild() const
{
    return MadeObject(m_factory(m_classId, m_elementName.c_str()), m_elementName);
}

CElementInfoSubstitution::CElementInfoSubstitution(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory)
    : CElementInfoChild(name, elementNamespace, propertyIndex, elementType), m_factory(factory)
{
}

bool CElementInfoSubstitution::ReadAndStoreMade(CSerializationContext const &context, CXmlGeneratedClass *object,
                                                CXmlElement *parent, CXmlElement **current, bool ownElement) const
{
    CSmartPtr<CXmlObjectBase> child = m_factory(*current);
    return !child.IsNull() && ReadAndStoreChild(context, object, parent, current, child, ownElement);
}

CElementInfoAny::CElementInfoAny(char const *name, char const *elementNamespace, int propertyIndex,
                                 char const *namespaceRestriction, char const *targetNamespace)
    : CElementInfoObject(name, elementNamespace, propertyIndex),
      m_namespaceRestriction(namespaceRestriction ? namespaceRestriction : ""),
      m_targetNamespace(targetNamespace ? targetNamespace : "")
{
}

bool CElementInfoAny::ReadIntoHeld(CSerializationContext const &context, CXmlGeneratedClass *object,
                                   CXmlElement *parent, CXmlElement **current) const
{
    CXmlElement *const next = ReadAny(m_elementName, HeldChild(object), parent, *current, context);
    if (next == *current)
        return false;
    *current = next;
    return true;
}

bool CElementInfoAny::ReadAndStoreNew(CSerializationContext const &context, CXmlGeneratedClass *object,
                                      CXmlElement *parent, CXmlElement **current, char const *classNamespace) const
{
    CSmartPtr<CXmlObjectBase> any =
        NewAny(m_elementName,
               GetAnyDefaultNamespace(m_namespaceRestriction.c_str(), classNamespace, m_targetNamespace.c_str()),
               m_namespaceRestriction, m_targetNamespace);
    CXmlElement *const next = ReadAny(m_elementName, any, parent, *current, context);
    if (next == *current)
        return false;
    StoreChild(object, *parent, any);
    *current = next;
    return true;
}

// ---------------------------------------------------------------------------
// Simple values

CElementInfoSimple::CElementInfoSimple(char const *name, char const *elementNamespace, int propertyIndex,
                                       bool nillable, EnumToString enumToString, StringToEnum stringToEnum,
                                       char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, enumToString, stringToEnum, defaultValue)
{
}

CElementInfoSimple::CElementInfoSimple(char const *name, char const *elementNamespace, int propertyIndex,
                                       bool nillable, ItemType itemType, char const *format,
                                       CWhitespaceUtils::WhitespaceRule whitespaceRule,
                                       CPrimitiveRestrictions const &restrictions, char const *defaultValue)
    : CElementInfo(name, elementNamespace, propertyIndex, nillable, itemType, format, whitespaceRule, restrictions,
                   defaultValue)
{
}

bool CElementInfoSimple::ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                      CXmlWriter *writer) const
{
    MxVariant value;
    ReadProperty(object, value);
    if (value.IsNil())
    {
        writer->StartElement(m_elementName, m_elementNamespace);
        writer->WriteNilAttribute();
        writer->EndElement();
        return true;
    }
    if (value.GetTypeAsEnum() == ItemType_None)
        return false;
    if (m_isPrimitive)
    {
        // A string is its own text: written from the cell, not from a copy.
        if (value.GetTypeAsEnum() == ItemType_string)
            return WriteSimple(context, writer, value, value.GetStringRef(), ItemType_string, true);
        return WriteSimple(context, writer, value, value.ToString(m_format.c_str()), value.GetTypeAsEnum(), true);
    }
    char const *name = m_enumToString ? m_enumToString(value.GetI4()) : nullptr;
    return WriteSimple(context, writer, value, name ? name : "", ItemType_string, false);
}

bool CElementInfoSimple::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                        CXmlElement *, CXmlElement **current, char const *, XmlElementType)
{
    if (!IsThisElement(context, *current))
        return false;
    ReadValue(context, object, current);
    return true;
}

bool CElementInfoSimple::Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool, bool) const
{
    return true;
}

void CElementInfoSimple::ReadValue(CSerializationContext const &context, CXmlGeneratedClass *object,
                                   CXmlElement **current) const
{
    CXmlElement *e = *current;
    if (e == nullptr)
        return;
    if (std::string const *text = ReadSimpleText(context, *e))
    {
        MxVariant value;
        if (m_isPrimitive)
            value.FromString(*text, m_itemType, m_whitespaceRule);
        else
            value.SetI4(m_stringToEnum ? m_stringToEnum(text->c_str()) : 0);
        InvokePropertySet(object, value, *e);
    }
    *current = e->GetNextSiblingElement();
}

} // namespace MxXmlLibData
