#pragma once

// The element rows of an xs:all. Children come in any order, so the driver
// offers each one to every row not yet satisfied: a row answers true once
// it is satisfied and is left out after that, false while it is not. There
// is no skipping and no failure while reading; after the last child the
// driver asks each row's Validate whether the group is complete.

#include "metadata/ClassFactory.h"
#include "metadata/ElementInfo.h"

namespace MxXmlLibData
{

using MxXmlLib::CClassfactoryBase;

// All rule for collections. Takes: every matching element from the cursor
// on, and stays open (answers false) to take later runs. Writes: the items,
// after the count check. Validate keeps the base's failure, so a class with
// a collection in an xs:all cannot be read to the end.
class CElementInfoAllCol : public CElementInfo
{
public:
    CElementInfoAllCol(char const *name, char const *elementNamespace, int propertyIndex);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
};

// A repeated substitutable class. As CElementInfoAllCol; inline items
// (elementType 1) write their attributes on the parent's start tag.
class CElementInfoAllAbsClsCol : public CElementInfoAllCol
{
public:
    CElementInfoAllAbsClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated concrete class. As CElementInfoAllAbsClsCol.
class CElementInfoAllClsCol : public CElementInfoAllCol
{
public:
    CElementInfoAllClsCol(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType);
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
};

// A repeated enumeration. Deliberately outside the collection rule: it
// derives from CElementInfo alone and leaves reading and writing abstract,
// so no object of it can be made.
class CElementInfoAllEnumCol : public CElementInfo
{
public:
    CElementInfoAllEnumCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// A repeated primitive: the collection converts and checks the items.
class CElementInfoAllPrimCol : public CElementInfoAllCol
{
public:
    CElementInfoAllPrimCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// Repeated xs:any: the collection's wildcard decides, whatever the name.
class CElementInfoAllUntpdCol : public CElementInfoAllCol
{
public:
    CElementInfoAllUntpdCol(char const *name, char const *elementNamespace, int propertyIndex);
};

// A substitutable class, exactly once. Takes: the element of the row's name
// (real), or, inline, whatever the factory finds a class for at the cursor.
// Stores: the new object. Writes: the object, never null. Validate: raises
// "Failed to find the mandatory element" for a real owner.
class CElementInfoAllAbsClsMnd : public CElementInfo
{
public:
    CElementInfoAllAbsClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory, int unused);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByElement m_factory;
    int m_unused; // kept for the generated constructor; nothing reads it
};

// A substitutable class, at most once. As CElementInfoAllAbsClsMnd, but the
// inline form needs an element at the cursor, and Validate always passes.
class CElementInfoAllAbsClsOpt : public CElementInfo
{
public:
    CElementInfoAllAbsClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                             XmlElementType elementType, CClassfactoryBase::FactoryByElement factory);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByElement m_factory;
};

// A concrete class, exactly once, read into the object the property holds.
// Takes: its element (real), or what the inline object reads. Writes: the
// object, never null. Validate: a missing real child passes unless it is a
// pseudo element or its content is required.
class CElementInfoAllClsMnd : public CElementInfo
{
public:
    CElementInfoAllClsMnd(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId,
                          bool contentRequired);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByNumber m_factory;
    int m_classId;
    bool m_contentRequired;
};

// A concrete class, at most once. Takes: its element, or what a new inline
// object reads. Stores: the new object when it took something. Writes: the
// object when set. Validate: always passes.
class CElementInfoAllClsOpt : public CElementInfo
{
public:
    CElementInfoAllClsOpt(char const *name, char const *elementNamespace, int propertyIndex,
                          XmlElementType elementType, CClassfactoryBase::FactoryByNumber factory, int classId);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
    void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                   CXmlWriter *writer) const override;

protected:
    XmlElementType m_elementType;
    CClassfactoryBase::FactoryByNumber m_factory;
    int m_classId;
};

// An enumeration, exactly once. Takes: its element at the cursor. Stores:
// the value as i4. Writes: the name, never unset. Validate: mandatory.
class CElementInfoAllEnumMnd : public CElementInfo
{
public:
    CElementInfoAllEnumMnd(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
};

// An enumeration, at most once. As CElementInfoAllEnumMnd; writes only when
// set and always validates.
class CElementInfoAllEnumOpt : public CElementInfo
{
public:
    CElementInfoAllEnumOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
};

// A primitive, exactly once. Takes: its element at the cursor. Stores: the
// converted text. Writes: the text after the facets, never unset.
// Validate: mandatory.
class CElementInfoAllPrimMnd : public CElementInfo
{
public:
    CElementInfoAllPrimMnd(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                           CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
};

// A primitive, at most once. As CElementInfoAllPrimMnd; writes only when set
// and always validates.
class CElementInfoAllPrimOpt : public CElementInfo
{
public:
    CElementInfoAllPrimOpt(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                           ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                           CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;
};

// xs:any, exactly once, into the CElement the property holds. Takes: the
// element at the cursor if its name fits and the wildcard allows it.
// Writes: the element, never null. Validate: mandatory.
class CElementInfoAllUntpdMnd : public CElementInfo
{
public:
    CElementInfoAllUntpdMnd(char const *name, char const *elementNamespace, int propertyIndex,
                            char const *namespaceRestriction, char const *targetNamespace);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;

protected:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

// xs:any, at most once. Takes: as CElementInfoAllUntpdMnd. Stores: a new
// CElement when it took the element. Writes: the element when set.
class CElementInfoAllUntpdOpt : public CElementInfo
{
public:
    CElementInfoAllUntpdOpt(char const *name, char const *elementNamespace, int propertyIndex,
                            char const *namespaceRestriction, char const *targetNamespace);

    bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                      CXmlWriter *writer) const override;
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object, CXmlElement *parent,
                        CXmlElement **current, char const *classNamespace, XmlElementType ownerType) override;
    bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                  bool isRealElement) const override;

protected:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

} // namespace MxXmlLibData
