#pragma once

// The rows that describe a generated class. A class hands the driver one
// CParentElementInfo and a null-terminated array of element rows in schema
// order. A row's class name is a grid reference:
//
//   CElementInfo <group> <kind> <occurrence>
//
//   group       Seq     xs:sequence - the driver offers rows in order; a row
//                       answers true when it is finished, false when it could
//                       not be satisfied at the cursor
//               All     xs:all - every child is offered to every row not yet
//                       satisfied; Validate says at the end whether one is missing
//               Choice  xs:choice - the first row to answer true is the choice
//   kind        Cls     a concrete class: the property holds the child object
//               AbsCls  a substitutable class, made by a factory from xsi:type
//               Prim    a primitive value, converted by MxVariant and checked
//                       against the facets on the way out
//               Enum    an enumeration, kept as an i4 and named by two functions
//               Untpd   xs:any: the child is kept as an untyped CElement
//   occurrence  Mnd     exactly once: absence is an error (unless ignored)
//               Opt     at most once: absence is no error
//               Col     repeated: the property is a collection that has its
//                       own bounds and reads all matching siblings at once
//
// The cursor convention: a row is given `current`, a pointer to the driver's
// cursor into the child list of `parent`. It leaves it alone, or moves it past
// every element it took. Rows reach the object only through the numbered
// property function AccessProperty. Rows are shared by all objects of a class
// and never change after they are built.

#include "binding/SerializationContext.h"
#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/XsdPattern.h"

#include <string>

namespace MxXmlLib
{
class CXmlElement;
class CXmlGeneratedClass;
class CXmlObjectBase;
class CXmlWriter;
} // namespace MxXmlLib

namespace MxXmlLibData
{

using MxXmlLib::CPrimitiveRestrictions;
using MxXmlLib::CCompiledPatternSlot;
using MxXmlLib::CSerializationContext;
using MxXmlLib::CWhitespaceUtils;
using MxXmlLib::CXmlElement;
using MxXmlLib::CXmlGeneratedClass;
using MxXmlLib::CXmlObjectBase;
using MxXmlLib::CXmlWriter;
using MxXmlLib::ItemType;
using MxXmlLib::MxVariant;

enum XmlElementGroupType
{
    XmlElementGroupType_Sequence = 0,
    XmlElementGroupType_Choice = 1,
    XmlElementGroupType_All = 2,
};

enum XmlElementType
{
    XmlElementType_Element = 0,       // start and end tag of its own
    XmlElementType_PseudoElement = 1, // children inline in the parent; attributes forwarded to it
    XmlElementType_PseudoGroup = 2,   // children inline in the parent
};

// The description of one generated class.
class CParentElementInfo
{
public:
    CParentElementInfo(XmlElementGroupType groupType, XmlElementType elementType, char const *name,
                       char const *elementNamespace, bool failIfAttributeUnknown, bool hasBaseClasses,
                       int primitiveValuePropertyIndex, ItemType primitiveDataType,
                       char const *primitiveFormatOverride, bool outputPrimitiveClassAsTextProperty);
    CParentElementInfo(CParentElementInfo const &) = default;
    CParentElementInfo &operator=(CParentElementInfo const &) = default;
    virtual ~CParentElementInfo() = default;

    XmlElementGroupType GetElementGroupType() const { return m_groupType; }
    XmlElementType GetElementType() const { return m_elementType; }
    std::string GetElementName() const { return m_elementName; }
    std::string GetElementNamespace() const { return m_elementNamespace; }
    bool GetFromXmlFailIfAttributeUnknown() const { return m_failIfAttributeUnknown; }
    bool GetHasBaseClasses() const { return m_hasBaseClasses; }
    // -1 when the class has no simple content.
    int GetPrimitiveValuePropertyIndex() const { return m_primitiveValuePropertyIndex; }
    ItemType GetPrimitiveDataType() const { return m_primitiveDataType; }
    std::string GetPrimitiveFormatOverride() const { return m_primitiveFormatOverride; }
    bool GetOutputPrimitiveClassAsTextProperty() const { return m_outputPrimitiveClassAsTextProperty; }

private:
    XmlElementGroupType m_groupType;
    XmlElementType m_elementType;
    std::string m_elementName;
    std::string m_elementNamespace;
    bool m_failIfAttributeUnknown;
    bool m_hasBaseClasses;
    int m_primitiveValuePropertyIndex;
    ItemType m_primitiveDataType;
    std::string m_primitiveFormatOverride;
    bool m_outputPrimitiveClassAsTextProperty;
};

// The base of all element rows: the steps every kind shares (property
// access, name match, simple text, the facet check). The kinds in
// ElementInfoKinds.h add what their property holds; each row class adds only
// its own decision of where the element may stand.
class CElementInfo
{
public:
    using EnumToString = char const *(*)(int);
    using StringToEnum = int (*)(char const *);

    CElementInfo(CElementInfo const &) = default;
    CElementInfo &operator=(CElementInfo const &) = default;
    virtual ~CElementInfo() = default;

    // Writes this row's part of the object; true when anything was written.
    virtual bool ElementToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                              CXmlWriter *writer) const = 0;
    // Offers `*current`, a child of `parent`; see the grid above for the answer.
    virtual bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                CXmlElement *parent, CXmlElement **current, char const *classNamespace,
                                XmlElementType ownerType) = 0;
    // xs:all rows only: false ends the group's reading quietly.
    virtual bool Validate(CSerializationContext const &context, CXmlGeneratedClass const *object, bool found,
                          bool isRealElement) const;
    // Lets a pseudo element child write its attributes on the parent's element.
    virtual void PseudoChildAttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                           CXmlWriter *writer) const;

    // The facets of a primitive row; other rows raise.
    void CheckRestriction(MxVariant const &value) const;

    std::string const &GetElementName() const { return m_elementName; }
    std::string const &GetElementNamespace() const { return m_elementNamespace; }
    int GetPropertyIndex() const { return m_propertyIndex; }

protected:
    // Class, abstract class, untyped and collection rows.
    CElementInfo(char const *name, char const *elementNamespace, int propertyIndex);
    // Enumeration rows.
    CElementInfo(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                 EnumToString enumToString, StringToEnum stringToEnum, char const *defaultValue);
    // Primitive rows.
    CElementInfo(char const *name, char const *elementNamespace, int propertyIndex, bool nillable,
                 ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                 CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    // AccessProperty, with failures wrapped as "Failed to get ..." / "Failed to set ...".
    void InvokePropertyGet(CXmlGeneratedClass *object, MxVariant &value) const;
    void InvokePropertySet(CXmlGeneratedClass *object, MxVariant &value, CXmlElement const &element) const;
    void ReadProperty(CXmlGeneratedClass const *object, MxVariant &value) const;
    MxVariant ReadProperty(CXmlGeneratedClass const *object) const;

    bool IsThisElement(CSerializationContext const &context, CXmlElement const *element) const;
    // A mandatory row's answers: `written`, or the failure of an unset
    // property; `found`, or the end of an inline owner's group (false), or
    // the failure of a missing element of a real owner.
    bool MandatoryWritten(bool written) const;
    bool MandatoryFound(bool found, bool isRealElement) const;
    CXmlElement *FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                             CSerializationContext const &context, bool optionalChoice) const;
    // The text of a simple element after its attributes are checked, or the
    // default for an empty one; null when the element is nil (the property is
    // then left alone). It points into the tree or this row: no copy.
    std::string const *ReadSimpleText(CSerializationContext const &context, CXmlElement const &element) const;
    // Writes a simple element of `text`, checking the value's facets first
    // when `checkFacets` is set.
    bool WriteSimple(CSerializationContext const &context, CXmlWriter *writer, MxVariant const &value,
                     std::string const &text, ItemType type, bool checkFacets) const;
    // The namespace a new untyped element starts with, from an xs:any restriction.
    static std::string GetAnyDefaultNamespace(char const *restriction, char const *classNamespace,
                                              char const *targetNamespace);

    std::string m_elementName;
    std::string m_elementNamespace;
    int m_propertyIndex;
    CPrimitiveRestrictions m_restrictions;
    // Kept only for contexts that reuse compiled patterns.
    CCompiledPatternSlot m_compiledPattern;
    ItemType m_itemType;
    std::string m_format;
    CWhitespaceUtils::WhitespaceRule m_whitespaceRule;
    std::string m_defaultValue;
    bool m_nillable;
    EnumToString m_enumToString;
    StringToEnum m_stringToEnum;
    bool m_isPrimitive;
};

} // namespace MxXmlLibData
