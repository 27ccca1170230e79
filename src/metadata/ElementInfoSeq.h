#pragma once

// The element rows of an xs:sequence. The driver offers the cursor to the
// rows in order; a row answers true when it is finished (an optional row
// always is), false when it cannot be satisfied at the cursor. Mandatory rows
// of a real element (ownerType 0) raise where a pseudo element's rows answer
// false and leave the decision to the parent.

#include "metadata/ClassFactory.h"
#include "metadata/ElementInfo.h"

namespace MxXmlLibData
{

using MxXmlLib::CClassfactoryBase;

// Sequence rule for collections. Takes: every matching element from the
// cursor on, read by the collection. Stores: nothing (the collection is the
// property). Throws: the collection's count failure for a real element; an
// inline one answers IsValidCount. Writes: the items, after the count check.
class CElementInfoSeqCol : public CElementInfo
{
public:
    CElementInfoSeqCol(char const *name, char const *elementNamespace, int propertyIndex);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    // The count rule after the collection has read: raise or answer.
    bool FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object,
                    XmlElementType ownerType) const;
};

// A repeated substitutable class. As CElementInfoSeqCol; inline items
// (elementType 1) write their attributes on the parent's start tag.
class CElementInfoSeqAbsClsCol : public CElementInfoSeqCol
{
public:
    CElementInfoSeqAbsClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated concrete class. As CElementInfoSeqAbsClsCol.
class CElementInfoSeqClsCol : public CElementInfoSeqCol
{
public:
    CElementInfoSeqClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated enumeration: the collection converts the items.
class CElementInfoSeqEnumCol : public CElementInfoSeqCol
{
public:
    CElementInfoSeqEnumCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// A repeated primitive: the collection converts and checks the items.
class CElementInfoSeqPrimCol : public CElementInfoSeqCol
{
public:
    CElementInfoSeqPrimCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// Repeated xs:any into a CElementCol. Takes: under the name "AnyElement",
// every element the collection's wildcard allows; under any other name, the
// run of elements of that name in the namespace of the first one.
class CElementInfoSeqUntpdCol : public CElementInfoSeqCol
{
public:
    CElementInfoSeqUntpdCol(char const *name, char const *elementNamespace, int propertyIndex);
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A substitutable class, exactly once. Takes: the element of the row's name;
// the factory picks the class from it. Stores: the new object. Throws:
// "Failed to find a suitable substitution element" in a real element, when
// the element is absent or no class fits. Writes: the object, never null.
class CElementInfoSeqAbsClsMnd : public CElementInfo
{
public:
    CElementInfoSeqAbsClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByElement m_factory;
};

// A substitutable class, at most once. Takes: the element of the row's name
// when the factory finds a class for it. Stores: the new object. Writes: the
// object when set.
class CElementInfoSeqAbsClsOpt : public CElementInfo
{
public:
    CElementInfoSeqAbsClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByElement m_factory;
};

// A concrete class, exactly once, read into the object the property already
// holds. Takes: its element (real), or what the inline object reads from
// the parent's children. Throws: the missing-child failure in a real element.
// Writes: the object, never null.
class CElementInfoSeqClsMnd : public CElementInfo
{
public:
    CElementInfoSeqClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId,
                          bool contentRequired);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByNumber m_factory;
    int m_classId;
    bool m_contentRequired;

private:
    // The inline child the property already holds reads from the parent's children.
    bool ReadHeldInline(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                    CXmlElement **current, XmlElementType ownerType);
};

// A concrete class, at most once. Takes: its element, or what a new inline
// object reads. Stores: a new object from the factory, only when it took
// something. Writes: the object when set.
class CElementInfoSeqClsOpt : public CElementInfo
{
public:
    CElementInfoSeqClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByNumber m_factory;
    int m_classId;
};

// An enumeration, exactly once. Takes: its element, skipping unknown ones in
// a real element when allowed. Stores: the value as i4 (a nil element stores
// nothing). Throws: the missing-child failure. Writes: the name, never unset.
class CElementInfoSeqEnumMnd : public CElementInfo
{
public:
    CElementInfoSeqEnumMnd(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// An enumeration, at most once. Takes: its element when it stands at the
// cursor. Stores: the value as i4. Writes: the name when set.
class CElementInfoSeqEnumOpt : public CElementInfo
{
public:
    CElementInfoSeqEnumOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A primitive, exactly once. Takes: its element, skipping unknown ones when
// allowed (inline rows too). Stores: the converted text. Throws: the
// missing-child failure in a real element. Writes: the text after the facets.
class CElementInfoSeqPrimMnd : public CElementInfo
{
public:
    CElementInfoSeqPrimMnd(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                           CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A primitive, at most once. Takes: its element when it stands at the
// cursor. Stores: the converted text. Writes: the text when set.
class CElementInfoSeqPrimOpt : public CElementInfo
{
public:
    CElementInfoSeqPrimOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                           CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// xs:any, exactly once, read into the CElement the property holds. Takes:
// the element at the cursor if its name fits and its namespace meets the
// wildcard. Throws: the missing-child failure at the end of the children
// (inline too), and "Failed to find the required element from namespace"
// for a refused element in a real element. Writes: the element, never null.
class CElementInfoSeqUntpdMnd : public CElementInfo
{
public:
    CElementInfoSeqUntpdMnd(char const *name, char const *elementNamespace, int propertyIndex,
                            char const *namespaceRestriction, char const *targetNamespace);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

// xs:any, at most once. Takes: as CElementInfoSeqUntpdMnd. Stores: a new
// CElement when it took the element. Writes: the element when set.
class CElementInfoSeqUntpdOpt : public CElementInfo
{
public:
    CElementInfoSeqUntpdOpt(char const *name, char const *elementNamespace, int propertyIndex,
                            char const *namespaceRestriction, char const *targetNamespace);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

} // namespace MxXmlLibData
