#pragma once

// The element rows of an xs:all. Children come in any order, so the driver
// offers each one to every row not yet satisfied: a row answers true once
// it is satisfied and is left out after that, false while it is not. There
// is no skipping and no failure while reading; after the last child the
// driver asks each row's Validate whether the group is complete.

#include "metadata/ElementInfoKinds.h"

namespace MxXmlLibData
{

// All rule for collections. Takes: every matching element from the cursor
// on, and stays open (answers false) to take later runs. Writes: the items,
// after the count check. Validate keeps the base's failure, so a class with
// a collection in an xs:all cannot be read to the end.
class CElementInfoAllCol : public CElementInfoCollection
{
public:
    using CElementInfoCollection::CElementInfoCollection;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// The repeated kinds: inline items of a class (elementType 1) write their
// attributes on the parent's start tag; the collection converts and checks
// primitives; for xs:any its wildcard decides, whatever the name.
class CElementInfoAllAbsClsCol : public CElementInfoClassItems<CElementInfoAllCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoAllClsCol : public CElementInfoClassItems<CElementInfoAllCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoAllPrimCol : public CElementInfoAllCol
{
public:
    using CElementInfoAllCol::CElementInfoAllCol;
};
class CElementInfoAllUntpdCol : public CElementInfoAllCol
{
public:
    using CElementInfoAllCol::CElementInfoAllCol;
};

// A repeated enumeration. Deliberately outside the collection rule: it
// derives from CElementInfo alone and leaves reading and writing abstract,
// so no object of it can be made.
class CElementInfoAllEnumCol : public CElementInfo
{
public:
    CElementInfoAllEnumCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// A substitutable class, exactly once. Takes: the element of the row's name
// (real), or, inline, whatever the factory finds a class for at the cursor.
// Stores: the new object.
class CElementInfoAllAbsClsMnd : public CElementInfoMandatory<CElementInfoSubstitution>
{
public:
    CElementInfoAllAbsClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory, int unused);
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    int m_unused; // kept for the generated constructor; nothing reads it
};

// A substitutable class, at most once. As CElementInfoAllAbsClsMnd, but the
// inline form needs an element at the cursor.
class CElementInfoAllAbsClsOpt : public CElementInfoSubstitution
{
public:
    using CElementInfoSubstitution::CElementInfoSubstitution;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A concrete class, exactly once, read into the object the property holds.
// Takes: its element (real), or what the inline object reads. Validate: a
// missing real child passes unless it is a pseudo element or its content is
// required.
class CElementInfoAllClsMnd : public CElementInfoMandatory<CElementInfoClass>
{
public:
    CElementInfoAllClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId,
                          bool contentRequired)
        : CElementInfoMandatory(name, elementNamespace, propertyIndex, elementType, factory, classId),
          m_contentRequired(contentRequired)
    {
    }
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;

protected:
    bool m_contentRequired;
};

// A concrete class, at most once. Takes: its element, or what a new inline
// object reads. Stores: the new object when it took something.
class CElementInfoAllClsOpt : public CElementInfoClass
{
public:
    using CElementInfoClass::CElementInfoClass;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// Enumerations and primitives take their element at the cursor, as every
// simple row of xs:all and xs:choice does.
class CElementInfoAllEnumMnd : public CElementInfoMandatory<CElementInfoSimple>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
};
class CElementInfoAllEnumOpt : public CElementInfoSimple
{
public:
    using CElementInfoSimple::CElementInfoSimple;
};
class CElementInfoAllPrimMnd : public CElementInfoMandatory<CElementInfoSimple>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
};
class CElementInfoAllPrimOpt : public CElementInfoSimple
{
public:
    using CElementInfoSimple::CElementInfoSimple;
};

// xs:any, exactly once, into the CElement the property holds. Takes: the
// element at the cursor if its name fits and the wildcard allows it.
class CElementInfoAllUntpdMnd : public CElementInfoMandatory<CElementInfoAny>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// xs:any, at most once. Takes: as CElementInfoAllUntpdMnd. Stores: a new
// CElement when it took the element.
class CElementInfoAllUntpdOpt : public CElementInfoAny
{
public:
    using CElementInfoAny::CElementInfoAny;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

} // namespace MxXmlLibData
