#pragma once

// What the classes of the generated-shape model share, as generated code
// would have it in its common file: the enumeration function pairs, the
// class factory, and the collections of classes, texts and enumerations.
// Everything lives in the namespace urn:m.

#include "MxXmlLib.h"
#include "collections/Element.h"
#include "collections/PrimitiveCollections.h"
#include "collections/XmlCollection.h"
#include "collections/XmlTypeCollection.h"
#include "metadata/ElementInfoAll.h"
#include "metadata/ElementInfoChoice.h"
#include "metadata/ElementInfoSeq.h"

#include <string>
#include <vector>

namespace MxTestModel
{

constexpr char const *kNs = "urn:m";

// Priority: "low" 0, "normal" 1, "high" 2; an unknown text gives -1.
char const *PriorityToString(int value);
int StringToPriority(char const *text);
// Status: "open" 0, "closed" 1.
char const *StatusToString(int value);
int StringToStatus(char const *text);

// Class numbers of the factory by number.
enum ClassId
{
    ClassId_Party = 1,
    ClassId_Dimensions = 2,
    ClassId_Contact = 3,
    ClassId_Price = 4,
    ClassId_Memo = 5,
    ClassId_Labels = 6,
};

class CModelFactory : public MxXmlLib::CClassfactoryBase
{
public:
    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakeByNumber(int classId, char const *elementName);
    // xsi:type "card" or "cash" in urn:m; anything else has no class.
    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakePayment(MxXmlLib::CXmlElement *element);
    // Inline shapes, judged by the element at the cursor: a `radius` is a
    // circle, a `side` a tile.
    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakeShape(MxXmlLib::CXmlElement *element);
    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakeTile(MxXmlLib::CXmlElement *element);
};

// The library's collections of class elements and enumeration values,
// which generated code holds for repeated elements.
using MxXmlLib::CEnumCol;
using MxXmlLib::CObjectCol;

// A collection of the library's primitives in urn:m, without facets, items
// collapsed as generated code has it for tokens and numbers.
template <typename Col> Col *NewPrimitiveCol(char const *elementName, int minOccurs, int maxOccurs)
{
    return new Col(elementName, kNs, minOccurs, maxOccurs, nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1,
                   -1, -1, MxXmlLib::CWhitespaceUtils::WhitespaceRule::Collapse);
}

// Helpers of the property functions: a primitive property is held as the
// cell itself; an object property as a counted pointer.
void AccessCell(bool read, MxXmlLib::MxVariant &value, MxXmlLib::MxVariant &property);
template <typename T>
void AccessObject(bool read, MxXmlLib::MxVariant &value, MxXmlLib::CSmartPtr<T> &property)
{
    if (read)
        value.SetXmlObject(property.Get());
    else
        property = dynamic_cast<T *>(value.GetXmlObject().Get());
}

// The static tables of one generated class.
using CTables = MxXmlLib::CClassTables::Rows;

// What every generated class of the model writes the same way: its tables,
// built by `Derived::BuildTables` on first use and shared by all its objects
// (CClassTables), and released by CleanMetaData.
template <typename Derived> class CGenerated : public MxXmlLib::CXmlGeneratedClass
{
public:
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    using MxXmlLib::CXmlObjectBase::GetBase;
    std::string GetNamespace() const override { return kNs; }
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override { return Tables().info; }
    MxXmlLibData::CElementInfo **GetClassElementInfo() override { return Tables().elements; }
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override { return Tables().attributes; }

    static void CleanMetaData() { s_tables.Clean(); }
    static bool TablesBuilt() { return s_tables.IsBuilt(); }

protected:
    ~CGenerated() override = default;
    std::string GetTargetNamespace() const override { return kNs; }

private:
    static CTables const &Tables() { return s_tables.Get(&Derived::BuildTables); }
    static inline MxXmlLib::CClassTables s_tables;
};

// No facets at all.
MxXmlLib::CPrimitiveRestrictions NoFacets();

// Releases the tables of every class of the model; the next use builds them again.
void UnloadModel();

} // namespace MxTestModel
