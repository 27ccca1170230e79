#pragma once

// The element rows of an xs:choice. Every row is one alternative and answers
// for the element at the cursor: true when it took it (the choice is then
// made), false when the element is not for it. There is no mandatory row;
// whether a choice may stay empty is the driver's question. Class rows
// store a new object before it reads.

#include "metadata/ElementInfoKinds.h"

namespace MxXmlLibData
{

// Choice rule for collections. Takes: every matching element from the cursor
// on. Answers false when it took none, or, inline, when the count is bad
// (the cursor then stays). Throws: the count failure for a real owner.
// Writes: the items, without a count check.
class CElementInfoChoiceCol : public CElementInfoCollection
{
public:
    using CElementInfoCollection::CElementInfoCollection;
    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    // The count rule after the collection has read up to `next`.
    bool FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement **current,
                    CXmlElement *next, XmlElementType ownerType) const;
};

// The repeated kinds. Inline items of a class (elementType 1) write their
// attributes on the parent's start tag; enumerations and primitives are
// converted (and checked) by the collection.
class CElementInfoChoiceAbsClsCol : public CElementInfoClassItems<CElementInfoChoiceCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoChoiceClsCol : public CElementInfoClassItems<CElementInfoChoiceCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoChoiceEnumCol : public CElementInfoChoiceCol
{
public:
    using CElementInfoChoiceCol::CElementInfoChoiceCol;
};
class CElementInfoChoicePrimCol : public CElementInfoChoiceCol
{
public:
    using CElementInfoChoiceCol::CElementInfoChoiceCol;
};

// Repeated xs:any into a CElementCol. Takes: under "AnyElement", what the
// wildcard allows; under any other name, the run of elements of that name
// in the namespace of the first one.
class CElementInfoChoiceUntpdCol : public CElementInfoChoiceCol
{
public:
    using CElementInfoChoiceCol::CElementInfoChoiceCol;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A substitutable class. Takes: the element of the row's name. Stores: what
// the factory makes for it, even null (which answers false).
class CElementInfoChoiceAbsClsOpt : public CElementInfoSubstitution
{
public:
    using CElementInfoSubstitution::CElementInfoSubstitution;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A concrete class. Takes: its element, or, inline, what a new object reads
// from the cursor on. Stores: the new object first; an inline one that took
// nothing is cleared again. Writes: the object when set, letting a child
// choice stay empty.
class CElementInfoChoiceClsOpt : public CElementInfoClass
{
public:
    using CElementInfoClass::CElementInfoClass;
    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// Enumerations and primitives take their element at the cursor.
class CElementInfoChoiceEnumOpt : public CElementInfoSimple
{
public:
    using CElementInfoSimple::CElementInfoSimple;
};
class CElementInfoChoicePrimOpt : public CElementInfoSimple
{
public:
    using CElementInfoSimple::CElementInfoSimple;
};

// xs:any. Takes: the element at the cursor if its name fits and the
// wildcard allows it. Stores: a new CElement; when it took nothing, the
// property is cleared.
class CElementInfoChoiceUntpdOpt : public CElementInfoAny
{
public:
    using CElementInfoAny::CElementInfoAny;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

} // namespace MxXmlLibData
