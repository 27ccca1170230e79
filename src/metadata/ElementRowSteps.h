#pragma once

// Steps that rows of more than one group share and that need nothing of a
// row but its name: turning a property's cell into the object it holds,
// reading a child as an element of its own, the untyped reads and the row
// failures. Internal to the element rows (and the attribute rows' property
// read); generated code never sees it.

#include "document/XmlDocument.h"
#include "metadata/ElementInfo.h"
#include "runtime/SmartPtr.h"

#include <string>

namespace MxXmlLib
{
class CXmlCollectionBase;
class CElement;
class CElementCol;
} // namespace MxXmlLib

namespace MxXmlLibData
{
namespace RowSteps
{

// AccessProperty's read of the property `index`, a failure wrapped as
// "Failed to get the property value for [name]."; for attribute rows too.
void GetProperty(CXmlGeneratedClass *object, int index, std::string const &name, MxVariant &value);

// The object a class row reads into; a null one means the generated class
// did not make it, and raises CMxException.
MxXmlLib::CSmartPtr<CXmlObjectBase> HeldObject(MxVariant const &value, std::string const &name);
// What a factory by number made; it must make an object.
MxXmlLib::CSmartPtr<CXmlObjectBase> MadeObject(MxXmlLib::CSmartPtr<CXmlObjectBase> const &made,
                                               std::string const &name);
// The collection of a collection row; never null.
MxXmlLib::CSmartPtr<MxXmlLib::CXmlCollectionBase> HeldCollection(MxVariant const &value, std::string const &name);
// The collection of a named untyped collection row, which must be a CElementCol.
MxXmlLib::CElementCol *AsElementCol(MxXmlLib::CXmlCollectionBase *collection);

// Reads `element` into `object` as an element of its own (its attributes and
// children, not the parent's); gives its next sibling.
CXmlElement *ReadOwnElement(CXmlObjectBase *object, CXmlElement *element, CSerializationContext const &context,
                      bool optionalChoice);
// A cell of type 27 for storing through AccessProperty.
MxVariant ObjectCell(CXmlObjectBase *object);

// "AnyElement" takes every name; any other row name takes only its own.
bool NameFits(std::string const &rowName, CXmlElement const *element);
// Lets `element` read the element at `current` when the name fits; gives
// the first element it did not take (`current`: nothing taken).
CXmlElement *ReadAny(std::string const &rowName, CXmlObjectBase *element, CXmlElement *parent,
                     CXmlElement *current, CSerializationContext const &context);
// A fresh untyped element for an optional xs:any row.
MxXmlLib::CSmartPtr<MxXmlLib::CElement> NewAny(std::string const &rowName, std::string const &defaultNamespace,
                                               std::string const &namespaceRestriction,
                                               std::string const &targetNamespace);

// The attributes of a pseudo element child, written on the parent's start
// tag: those of the object when set, or of every item of a collection.
void WriteChildAttributes(MxVariant const &value, CSerializationContext const &context, CXmlWriter *writer);
void WriteItemAttributes(MxVariant const &value, std::string const &name, CSerializationContext const &context,
                         CXmlWriter *writer);

[[noreturn]] void ThrowMissingChild(std::string const &name, CXmlElement const *parent);
[[noreturn]] void ThrowNoSubstitution(std::string const &name, CXmlElement const *parent);
// Validate of a mandatory xs:all row: found passes, a missing child of an
// inline owner ends the group quietly, of a real owner raises.
bool ValidateMandatory(bool found, bool isRealElement, std::string const &name);
// Gives `written`; false raises the mandatory-property failure of writing.
bool RequireWritten(bool written, std::string const &name);

// The skip loop of the mandatory sequence rows of a real element. Gives true
// with the cursor on the row's element; false when missing mandatory
// elements are ignored (the cursor stays). Raises the missing-child failure
// when the element is absent and may not be skipped to.
template <typename IsThis>
bool SkipToElement(CSerializationContext const &context, std::string const &name, CXmlElement const *parent,
                   CXmlElement **current, IsThis isThis)
{
    for (;;)
    {
        if (isThis(*current))
            return true;
        if (context.GetIgnoreMissingMandatoryElements())
            return false;
        if (!context.GetIgnoreUnknownElements() || *current == nullptr)
            ThrowMissingChild(name, parent);
        *current = (*current)->GetNextSiblingElement();
    }
}

} // namespace RowSteps
} // namespace MxXmlLibData
