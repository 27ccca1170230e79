#pragma once

#include "binding/XmlObjectBase.h"
#include "metadata/ElementInfo.h"
#include "runtime/CriticalSection.h"
#include "values/Variant.h"

namespace MxXmlLibData
{
class CAttributeInfo;
}

namespace MxXmlLib
{

// Implemented by generated classes of nillable elements; the driver finds it
// by a run-time cast.
class INillable
{
public:
    INillable() = default;
    virtual bool IsNil() = 0;
    virtual void SetNil(bool nil) = 0;

protected:
    virtual ~INillable() = default;
};

// The base of every generated class: a table-driven reader and writer. The
// class supplies its description (one CParentElementInfo, element rows and
// attribute rows) and one numbered property function; the driver walks the
// rows by the rules of sequence, choice or all.
class CXmlGeneratedClass : public CXmlObjectBase
{
public:
    CXmlGeneratedClass() = default;
    CXmlGeneratedClass(CXmlGeneratedClass const &) = default;
    CXmlGeneratedClass &operator=(CXmlGeneratedClass const &) = default;

    // Reads (read true) or stores the property with this number.
    virtual void AccessProperty(int index, bool read, MxVariant &value) = 0;
    virtual MxXmlLibData::CParentElementInfo *GetParentElementInfo() = 0;
    // Null-terminated, in schema order.
    virtual MxXmlLibData::CElementInfo **GetClassElementInfo() = 0;
    // Null-terminated.
    virtual MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() = 0;
    // Brings the object to its empty state; every read starts with it.
    virtual void Init() = 0;

    // Held while a class's tables are built on first use; generated code
    // takes it through CClassTables (binding/ClassTables.h).
    static CMXCriticalSection m_csInit;

protected:
    ~CXmlGeneratedClass() override = default;

    void AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const override;
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    CXmlElement *FromXml_Int(CXmlElement *element, CXmlElement *cursor, CSerializationContext const &context,
                             bool optionalChoice) override;

    void ProcessAttributesFromXml(CSerializationContext const &context, CXmlElement *element, bool failIfUnknown);
    // Whether any element row claims the name of this element.
    bool IsElementInList(CSerializationContext const &context, CXmlElement *element) const;
    // Whether a choice may stay empty: one optional row, or a collection row
    // whose collection has a minimum of 0.
    bool DoesElementContainOptionalElements() const;
    void ReadProperty(int index, MxVariant &value) const;
    static void CleanMetaData(MxXmlLibData::CParentElementInfo *&info, MxXmlLibData::CElementInfo **&elements,
                              MxXmlLibData::CAttributeInfo **&attributes);

private:
    friend class CClassTables; // releases a failed or finished build

    // The table functions are not const in the generated interface; the
    // tables themselves never change once built.
    CXmlGeneratedClass *Self() const { return const_cast<CXmlGeneratedClass *>(this); }
    CXmlElement *ProcessElementSeqFromXml(CSerializationContext const &context, CXmlElement *element,
                                          CXmlElement *cursor, MxXmlLibData::XmlElementType type);
    CXmlElement *ProcessElementChoiceFromXml(CSerializationContext const &context, CXmlElement *element,
                                             CXmlElement *cursor, MxXmlLibData::XmlElementType type,
                                             bool optionalChoice);
    CXmlElement *ProcessElementAllFromXml(CSerializationContext const &context, CXmlElement *element,
                                          CXmlElement *cursor, MxXmlLibData::XmlElementType type);
    void ProcessAttributesToXml(CSerializationContext const &context, MxXmlLibData::CElementInfo **elements,
                                MxXmlLibData::CAttributeInfo **attributes, CXmlWriter *writer) const;
    void ProcessElementChoiceToXml(CSerializationContext const &context, MxXmlLibData::CElementInfo **elements,
                                   CXmlWriter *writer, bool optionalChoice) const;
    void ProcessElementSeqToXml(CSerializationContext const &context, MxXmlLibData::CElementInfo **elements,
                                CXmlWriter *writer) const;
    void ProcessElementAllToXml(CSerializationContext const &context, MxXmlLibData::CElementInfo **elements,
                                CXmlWriter *writer) const;
    void WriteAdditionalRootAttributes(CXmlWriter *writer, char const *namespaceUri,
                                       CSerializationContext const &context, bool optionalChoice) const;
    [[noreturn]] static void ThrowLeftOver(CXmlElement *element, CXmlElement *cursor);
};

} // namespace MxXmlLib
