#pragma once

// The kind and occurrence columns of the row grid (see ElementInfo.h), shared
// by the three groups. What a row's property holds decides how the row writes,
// which attributes it forwards to an inline parent and the steps it reads
// with; occurrence decides whether an unset property may be left out. The
// group headers derive their rows from these and add where the element may
// stand. The bases add no fields beyond those of the rows that use them, and
// each row class keeps the constructor generated code calls.

#include "metadata/ClassFactory.h"
#include "metadata/ElementInfo.h"

#include <string>

namespace MxXmlLib
{
class CXmlCollectionBase;
} // namespace MxXmlLib

namespace MxXmlLibData
{

using MxXmlLib::CClassfactoryBase;
using MxXmlLib::CSmartPtr;

// Col rows: the property is a collection that has its own bounds and reads
// all matching siblings at once. Writes: the items, after the count check
// unless the context ignores counts.
class CElementInfoCollection : public CElementInfo
{
public:
    CElementInfoCollection(char const *name, char const *elementNamespace, int propertyIndex);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;

protected:
    // The items without the count check.
    bool WriteItems(CSerializationContext const &context, CXmlGeneratedClass const *object,
                    CXmlWriter *writer) const;
    // The attributes of pseudo element items (elementType 1), on the parent's start tag.
    void ItemAttributesToXml(XmlElementType elementType, CSerializationContext const &context,
                             CXmlGeneratedClass const *object, CXmlWriter *writer) const;
    // The collection the property holds; raises when it is unset.
    CSmartPtr<MxXmlLib::CXmlCollectionBase> HeldItems(CXmlGeneratedClass *object) const;
    // Lets the collection read from `at`; gives the first element it did not take.
    CXmlElement *ReadItems(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                           CXmlElement *at) const;
    // The same for xs:any items of a sequence or choice: under a name other
    // than "AnyElement" they take the run of elements of that name in the
    // namespace of the first one.
    CXmlElement *ReadUntypedItems(CSerializationContext const &context, CXmlGeneratedClass *object,
                                  CXmlElement *parent, CXmlElement *at) const;
};

// AbsClsCol and ClsCol rows of the group whose collection rule is `GroupCol`:
// they keep the items' elementType, and pseudo element items write their
// attributes on the parent's start tag.
template <typename GroupCol>
class CElementInfoClassItems : public GroupCol
{
public:
    CElementInfoClassItems(char const *name, char const *elementNamespace, int propertyIndex,
                           XmlElementType elementType)
        : GroupCol(name, elementNamespace, propertyIndex), m_elementType(elementType)
    {
    }

    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override
    {
        this->ItemAttributesToXml(m_elementType, context, object, writer);
    }

protected:
    XmlElementType m_elementType;
};

// Cls, AbsCls and Untpd rows: the property holds one object, of a generated
// class or, for xs:any, a CElement. Writes: the object when it is set.
// Validate (xs:all): an optional row always passes.
class CElementInfoObject : public CElementInfo
{
public:
    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;

protected:
    CElementInfoObject(char const *name, char const *elementNamespace, int propertyIndex);

    // `optionalChoice` lets a child that is itself a choice stay empty.
    bool WriteObject(CSerializationContext const &context, CXmlGeneratedClass const *object, CXmlWriter *writer,
                     bool optionalChoice) const;
    // The object the property holds; raises when it is unset.
    CSmartPtr<CXmlObjectBase> HeldChild(CXmlGeneratedClass *object) const;
    void StoreChild(CXmlGeneratedClass *object, CXmlElement const &parent, CXmlObjectBase *child) const;
    // Reads `child` at `at`, as an element of its own (`ownElement`: its
    // attributes and children, never the parent's) or inline from the
    // parent's children. Gives the first element it did not take; an own
    // element always takes itself.
    CXmlElement *ReadChild(CSerializationContext const &context, CXmlElement *parent, CXmlElement *at,
                           CXmlObjectBase *child, bool ownElement, bool optionalChoice = false) const;
    // ReadChild at the cursor, then stores the child when it took something.
    // Moves the cursor past what it took and says whether it took anything.
    bool ReadAndStoreChild(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                           CXmlElement **current, CXmlObjectBase *child, bool ownElement) const;
};

// Cls and AbsCls rows: the child is an element of its own (elementType 0)
// or stands inline in the parent; a pseudo element child (elementType 1)
// writes its attributes on the parent's start tag.
class CElementInfoChild : public CElementInfoObject
{
public:
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    CElementInfoChild(char const *name, char const *elementNamespace, int propertyIndex,
                      XmlElementType elementType);

    // Whether a new child may start at `at`: an element of its own must carry
    // the row's name, an inline child needs an element to read from.
    bool MayStartAt(CSerializationContext const &context, CXmlElement const *at) const;

    XmlElementType m_elementType;
};

// Cls rows: a concrete class that the factory makes by number.
class CElementInfoClass : public CElementInfoChild
{
public:
    CElementInfoClass(char const *name, char const *elementNamespace, int propertyIndex, XmlElementType elementType,
                      CClassfactoryBase::FactoryByNumber factory, int classId);

protected:
    // A new object of the row's class; a factory that makes none raises.
    CSmartPtr<CXmlObjectBase> MakeChild() const;

    CClassfactoryBase::FactoryByNumber m_factory;
    int m_classId;
};

// AbsCls rows: a substitutable class that the factory picks from the element
// (its xsi:type); null when no class fits.
class CElementInfoSubstitution : public CElementInfoChild
{
public:
    CElementInfoSubstitution(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory);

protected:
    // ReadAndStoreChild of what the factory makes for the element at the
    // cursor; false, with the cursor left alone, when no class fits.
    bool ReadAndStoreMade(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                          CXmlElement **current, bool ownElement) const;

    CClassfactoryBase::FactoryByElement m_factory;
};

// Untpd rows: xs:any, kept as an untyped CElement whose wildcard decides
// which namespaces it takes.
class CElementInfoAny : public CElementInfoObject
{
public:
    CElementInfoAny(char const *name, char const *elementNamespace, int propertyIndex,
                    char const *namespaceRestriction, char const *targetNamespace);

protected:
    // The steps of the xs:any rows: the element at the cursor is read when the
    // row's name fits it and the wildcard allows its namespace. Both move the
    // cursor past what they took and say whether they took anything.
    // Into the CElement the property holds.
    bool ReadIntoHeld(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                      CXmlElement **current) const;
    // Into a new CElement, in the namespace the wildcard starts it in; stored
    // when it took the element.
    bool ReadAndStoreNew(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                         CXmlElement **current, char const *classNamespace) const;

    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

// Enum and Prim rows: a simple element, converted to and from the property's
// value. Takes: the element at the cursor when it is the row's, and answers
// whether it did; that is the rule of xs:all and xs:choice, which the
// sequence rows replace. Stores: the value (a nil element stores nothing).
// Writes: nil, or the text (a primitive's after the facets) when set.
class CElementInfoSimple : public CElementInfo
{
public:
    // Enumerations, kept as an i4 and named by the two functions.
    CElementInfoSimple(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                       EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);
    // Primitives, converted by MxVariant.
    CElementInfoSimple(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                       ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                       CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;

protected:
    // Reads the element at the cursor, which is the row's, into the property
    // and moves past it; nothing at the end of the children.
    void ReadValue(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement **current) const;
};

// Mnd rows of any kind: writing an unset property raises "The Property [%s]
// is mandatory, it may not be NULL"; Validate (xs:all) raises "Failed to
// find the mandatory element" for a missing element of a real owner, and
// ends an inline owner's group quietly.
template <typename Kind>
class CElementInfoMandatory : public Kind
{
public:
    using Kind::Kind;

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override
    {
        return this->MandatoryWritten(Kind::ElementToXml(context, object, writer));
    }
    bool Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found,
                  bool isRealElement) const override
    {
        return this->MandatoryFound(found, isRealElement);
    }
};

} // namespace MxXmlLibData
