#pragma once

// The rows that describe the attributes of a generated class, in a
// null-terminated array beside the element rows. The driver offers each
// attribute of an element to the rows in array order (the first to answer
// true takes it), writes each row in the same order, and afterwards lets each
// row check that a required attribute was found.

#include "metadata/ElementInfo.h"

#include <string>

namespace MxXmlLib
{
class CXmlAttribute;
}

namespace MxXmlLibData
{

using MxXmlLib::CXmlAttribute;

class CAttributeInfo
{
public:
    CAttributeInfo(CAttributeInfo const &) = default;
    CAttributeInfo &operator=(CAttributeInfo const &) = default;
    virtual ~CAttributeInfo() = default;

    virtual void AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                CXmlWriter *writer) const = 0;
    // True when this row took the attribute.
    virtual bool AttributeFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                  CXmlAttribute *attribute) = 0;
    // Raises when a required attribute was not found.
    virtual void Validate(CSerializationContext const &context, bool found) const = 0;

    std::string const &GetAttributeName() const { return m_attributeName; }
    std::string const &GetAttributeNamespace() const { return m_attributeNamespace; }

protected:
    CAttributeInfo(char const *name, char const *attributeNamespace, int propertyIndex, bool optional,
                   char const *defaultValue);

    void InvokePropertyGet(CXmlGeneratedClass *object, MxVariant &value) const;
    void ReadProperty(CXmlGeneratedClass const *object, MxVariant &value) const;
    // Failures quote the attribute's value: "Failed to set the property value [%s]."
    void InvokePropertySet(CXmlGeneratedClass *object, MxVariant &value, CXmlAttribute const &attribute) const;
    bool IsThisAttribute(CSerializationContext const &context, CXmlAttribute *attribute) const;
    // Whether an optional attribute at its default is left out.
    bool IsSuppressedDefault(CSerializationContext const &context, std::string const &text) const;

    static void TestNamespace(std::string const &namespaceUri, std::string const &restriction,
                              std::string const &targetNamespace);
    static bool IsNamespaceValid(std::string const &namespaceUri, std::string const &restriction,
                                 std::string const &targetNamespace);
    static std::string GetTargetNamespace(CXmlObjectBase const *object);
    static void ToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                          CSerializationContext const &context);

    std::string m_attributeName;
    std::string m_attributeNamespace;
    int m_propertyIndex;
    bool m_optional;
    std::string m_defaultValue;
};

// An enumeration attribute, kept as an i4. Matches by local name alone when
// the context ignores namespaces.
class CAttributeInfoEnum : public CAttributeInfo
{
public:
    CAttributeInfoEnum(char const *name, char const *attributeNamespace, int propertyIndex, bool optional,
                       char const *(*enumToString)(int), int (*stringToEnum)(char const *), char const *defaultValue);

    void AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                        CXmlWriter *writer) const override;
    bool AttributeFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                          CXmlAttribute *attribute) override;
    void Validate(CSerializationContext const &context, bool found) const override;

private:
    int (*m_stringToEnum)(char const *);
    char const *(*m_enumToString)(int);
};

// A simple-type attribute. It matches name and namespace exactly, whatever
// the context says about namespaces, and checks the facets on the way out.
class CAttributeInfoPrimitive : public CAttributeInfoEnum
{
public:
    CAttributeInfoPrimitive(char const *name, char const *attributeNamespace, int propertyIndex, bool optional,
                            ItemType itemType, char const *format, CWhitespaceUtils::WhitespaceRule whitespaceRule,
                            CPrimitiveRestrictions const &restrictions, char const *defaultValue);

    void AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                        CXmlWriter *writer) const override;
    bool AttributeFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                          CXmlAttribute *attribute) override;

    void CheckRestriction(MxVariant value) const;

private:
    CPrimitiveRestrictions m_restrictions;
    // Kept only for contexts that reuse compiled patterns.
    CCompiledPatternSlot m_compiledPattern;
    ItemType m_itemType;
    std::string m_format;
    CWhitespaceUtils::WhitespaceRule m_whitespaceRule;
};

// xs:anyAttribute: takes every attribute whose namespace the restriction
// allows into a CAttributeCol property.
class CAttributeInfoAny : public CAttributeInfo
{
public:
    CAttributeInfoAny(char const *name, char const *attributeNamespace, int propertyIndex, bool optional,
                      char const *namespaceRestriction, char const *targetNamespace, char const *defaultValue);

    void AttributeToXml(CSerializationContext const &context, CXmlGeneratedClass const *object,
                        CXmlWriter *writer) const override;
    bool AttributeFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                          CXmlAttribute *attribute) override;
    void Validate(CSerializationContext const &context, bool found) const override;

private:
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
};

} // namespace MxXmlLibData
