#pragma once

// The element rows of an xs:choice. Every row is one alternative and answers
// for the element at the cursor: true when it took it (the choice is then
// made), false when the element is not for it. There is no mandatory row;
// whether a choice may stay empty is the driver's question. Class rows
// store a new object before it reads.

#include "metadata/ClassFactory.h"
#include "metadata/ElementInfo.h"

namespace MxXmlLibData
{

using MxXmlLib::CClassfactoryBase;

// Choice rule for collections. Takes: every matching element from the cursor
// on. Answers false when it took none, or, inline, when the count is bad
// (the cursor then stays). Throws: the count failure for a real owner.
// Writes: the items, without a count check.
class CElementInfoChoiceCol : public CElementInfo
{
public:
    CElementInfoChoiceCol(char const *name, char const *elementNamespace, int propertyIndex);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;

protected:
    // The count rule after the collection has read up to `next`.
    bool FinishRead(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement **current,
                    CXmlElement *next, XmlElementType ownerType) const;
};

// A repeated substitutable class. As CElementInfoChoiceCol; inline items
// (elementType 1) write their attributes on the parent's start tag.
class CElementInfoChoiceAbsClsCol : public CElementInfoChoiceCol
{
public:
    CElementInfoChoiceAbsClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                                XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated concrete class. As CElementInfoChoiceAbsClsCol.
class CElementInfoChoiceClsCol : public CElementInfoChoiceCol
{
public:
    CElementInfoChoiceClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated enumeration: the collection converts the items.
class CElementInfoChoiceEnumCol : public CElementInfoChoiceCol
{
public:
    CElementInfoChoiceEnumCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// A repeated primitive: the collection converts and checks the items.
class CElementInfoChoicePrimCol : public CElementInfoChoiceCol
{
public:
    CElementInfoChoicePrimCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// Repeated xs:any into a CElementCol. Takes: under "AnyElement", what the
// wildcard allows; under any other name, the run of elements of that name
// in the namespace of the first one.
class CElementInfoChoiceUntpdCol : public CElementInfoChoiceCol
{
public:
    CElementInfoChoiceUntpdCol(char const *name, char const *elementNamespace, int propertyIndex);
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A substitutable class. Takes: the element of the row's name. Stores: what
// the factory makes for it, even null (which answers false). Writes: the
// object when set.
class CElementInfoChoiceAbsClsOpt : public CElementInfo
{
public:
    CElementInfoChoiceAbsClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
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

// A concrete class. Takes: its element, or, inline, what a new object reads
// from the cursor on. Stores: the new object first; an inline one that took
// nothing is cleared again. Writes: the object when set, letting a child
// choice stay empty.
class CElementInfoChoiceClsOpt : public CElementInfo
{
public:
    CElementInfoChoiceClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
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

// An enumeration. Takes: its element at the cursor. Stores: the value as
// i4. Writes: the name when set.
class CElementInfoChoiceEnumOpt : public CElementInfo
{
public:
    CElementInfoChoiceEnumOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                              EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A primitive. Takes: its element at the cursor. Stores: the converted
// text. Writes: the text when set, after the facets.
class CElementInfoChoicePrimOpt : public CElementInfo
{
public:
    CElementInfoChoicePrimOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                              ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                              CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// xs:any. Takes: the element at the cursor if its name fits and the
// wildcard allows it. Stores: a new CElement; when it took nothing, the
// property is cleared. Writes: the element when set.
class CElementInfoChoiceUntpdOpt : public CElementInfo
{
public:
    CElementInfoChoiceUntpdOpt(char const *name, char const *elementNamespace, int propertyIndex,
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
