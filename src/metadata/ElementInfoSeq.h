#pragma once

// The element rows of an xs:sequence. The driver offers the cursor to the
// rows in order; a row answers true when it is finished (an optional row
// always is), false when it cannot be satisfied at the cursor. Mandatory rows
// of a real element (ownerType 0) raise where a pseudo element's rows answer
// false and leave the decision to the parent.

#include "metadata/ElementInfoKinds.h"

namespace MxXmlLibData
{

// Sequence rule for collections. Takes: every matching element from the
// cursor on, read by the collection. Stores: nothing (the collection is the
// property). Throws: the collection's count failure for a real element; an
// inline one answers IsValidCount. Writes: the items, after the count check.
class CElementInfoSeqCol : public CElementInfoCollection
{
public:
    using CElementInfoCollection::CElementInfoCollection;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    // The count rule after the collection has read: raise or answer.
    bool FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                    XmlElementType ownerType) const;
};

// The repeated kinds. Inline items of a class (elementType 1) write their
// attributes on the parent's start tag; enumerations and primitives are
// converted (and checked) by the collection.
class CElementInfoSeqAbsClsCol : public CElementInfoClassItems<CElementInfoSeqCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoSeqClsCol : public CElementInfoClassItems<CElementInfoSeqCol>
{
public:
    using CElementInfoClassItems::CElementInfoClassItems;
};
class CElementInfoSeqEnumCol : public CElementInfoSeqCol
{
public:
    using CElementInfoSeqCol::CElementInfoSeqCol;
};
class CElementInfoSeqPrimCol : public CElementInfoSeqCol
{
public:
    using CElementInfoSeqCol::CElementInfoSeqCol;
};

// Repeated xs:any into a CElementCol. Takes: under the name "AnyElement",
// every element the collection's wildcard allows; under any other name, the
// run of elements of that name in the namespace of the first one.
class CElementInfoSeqUntpdCol : public CElementInfoSeqCol
{
public:
    using CElementInfoSeqCol::CElementInfoSeqCol;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A substitutable class, exactly once. Takes: the element of the row's name;
// the factory picks the class from it. Stores: the new object. Throws:
// "Failed to find a suitable substitution element" in a real element, when
// the element is absent or no class fits.
class CElementInfoSeqAbsClsMnd : public CElementInfoMandatory<CElementInfoSubstitution>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A substitutable class, at most once. Takes: the element of the row's name
// when the factory finds a class for it. Stores: the new object.
class CElementInfoSeqAbsClsOpt : public CElementInfoSubstitution
{
public:
    using CElementInfoSubstitution::CElementInfoSubstitution;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A concrete class, exactly once, read into the object the property already
// holds. Takes: its element (real), or what the inline object reads from
// the parent's children; `contentRequired` says that it must take
// something. Throws: the missing-child failure in a real element.
class CElementInfoSeqClsMnd : public CElementInfoMandatory<CElementInfoClass>
{
public:
    CElementInfoSeqClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId,
                          bool contentRequired)
        : CElementInfoMandatory(name, elementNamespace, propertyIndex, elementType, factory, classId),
          m_contentRequired(contentRequired)
    {
    }
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    bool m_contentRequired;

private:
    // The inline child the property already holds reads from the parent's children.
    bool ReadHeldInline(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, XmlElementType ownerType);
};

// A concrete class, at most once. Takes: its element, or what a new inline
// object reads. Stores: a new object from the factory, only when it took
// something.
class CElementInfoSeqClsOpt : public CElementInfoClass
{
public:
    using CElementInfoClass::CElementInfoClass;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// Sequence rule for a mandatory enumeration or primitive. Takes: its
// element, skipping unknown ones in a real element when allowed; inline, it
// looks once unless the row skips unknown elements in front too. Throws: the
// missing-child failure in a real element.
class CElementInfoSeqSimpleMnd : public CElementInfoMandatory<CElementInfoSimple>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    // Whether an inline owner's row skips unknown elements in front of its
    // own, when the context allows it.
    virtual bool SkipsUnknownInline() const;
};

// Sequence rule for an optional enumeration or primitive. Takes: its
// element when it stands at the cursor.
class CElementInfoSeqSimpleOpt : public CElementInfoSimple
{
public:
    using CElementInfoSimple::CElementInfoSimple;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// An enumeration looks once.
class CElementInfoSeqEnumMnd : public CElementInfoSeqSimpleMnd
{
public:
    using CElementInfoSeqSimpleMnd::CElementInfoSeqSimpleMnd;
};

// A primitive skips unknown elements in front of its own, inline too.
class CElementInfoSeqPrimMnd : public CElementInfoSeqSimpleMnd
{
public:
    using CElementInfoSeqSimpleMnd::CElementInfoSeqSimpleMnd;

protected:
    bool SkipsUnknownInline() const override;
};

class CElementInfoSeqEnumOpt : public CElementInfoSeqSimpleOpt
{
public:
    using CElementInfoSeqSimpleOpt::CElementInfoSeqSimpleOpt;
};
class CElementInfoSeqPrimOpt : public CElementInfoSeqSimpleOpt
{
public:
    using CElementInfoSeqSimpleOpt::CElementInfoSeqSimpleOpt;
};

// xs:any, exactly once, read into the CElement the property holds. Takes:
// the element at the cursor if its name fits and its namespace meets the
// wildcard. Throws: the missing-child failure at the end of the children
// (inline too), and "Failed to find the required element from namespace"
// for a refused element in a real element.
class CElementInfoSeqUntpdMnd : public CElementInfoMandatory<CElementInfoAny>
{
public:
    using CElementInfoMandatory::CElementInfoMandatory;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// xs:any, at most once. Takes: as CElementInfoSeqUntpdMnd. Stores: a new
// CElement when it took the element.
class CElementInfoSeqUntpdOpt : public CElementInfoAny
{
public:
    using CElementInfoAny::CElementInfoAny;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

} // namespace MxXmlLibData
