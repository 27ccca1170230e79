#include "metadata/ElementRowSteps.h"

#include "binding/XmlGeneratedClass.h"
#include "binding/XmlObjectBase.h"
#include "collections/Element.h"
#include "collections/ElementCol.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

namespace MxXmlLibData
{
namespace RowSteps
{

using namespace MxXmlLib;

void GetProperty(CXmlGeneratedClass *object, int index, std::string const &name, MxVariant &value)
{
    try
    {
        object->AccessProperty(index, true, value);
    }
    catch (CMxException const &e)
    {
        throw CMxValidationException(FormatString("Failed to get the property value for [%s].", name.c_str()), "",
                                     e);
    }
}

CSmartPtr<CXmlObjectBase> HeldObject(MxVariant const &value, std::string const &name)
{
    CSmartPtr<CXmlObjectBase> object = value.GetXmlObject();
    if (object.IsNull())
        throw CMxException(FormatString("The property [%s] is not set.", name.c_str()));
    return object;
}

CSmartPtr<CXmlObjectBase> MadeObject(CSmartPtr<CXmlObjectBase> const &made, std::string const &name)
{
    if (made.IsNull())
        throw CMxException(FormatString("The factory made no object for [%s].", name.c_str()));
    return made;
}

CSmartPtr<CXmlCollectionBase> HeldCollection(MxVariant const &value, std::string const &name)
{
    CSmartPtr<CXmlCollectionBase> collection = value.GetXmlCollection();
    if (collection.IsNull())
        throw CMxException(FormatString("The collection property [%s] is not set.", name.c_str()));
    return collection;
}

CElementCol *AsElementCol(CXmlCollectionBase *collection)
{
    auto *elements = dynamic_cast<CElementCol *>(collection);
    if (elements == nullptr)
        throw CMxException("Serialization Data Error : The collection should be a CElementCol, it was not!");
    return elements;
}

CXmlElement *ReadOwnElement(CXmlObjectBase *object, CXmlElement *element, CSerializationContext const &context,
                      bool optionalChoice)
{
    CXmlObjectBase::FromXml_Int(object, element, element->GetFirstElement(), context, optionalChoice);
    return element->GetNextSiblingElement();
}

MxVariant ObjectCell(CXmlObjectBase *object)
{
    MxVariant value;
    value.SetXmlObject(object);
    return value;
}

bool NameFits(std::string const &rowName, CXmlElement const *element)
{
    return rowName == "AnyElement" || (element != nullptr && element->GetLocalName() == rowName);
}

CXmlElement *ReadAny(std::string const &rowName, CXmlObjectBase *element, CXmlElement *parent,
                     CXmlElement *current, CSerializationContext const &context)
{
    if (!NameFits(rowName, current))
        return current;
    return CXmlObjectBase::FromXml_Int(element, parent, current, context, false);
}

CSmartPtr<CElement> NewAny(std::string const &rowName, std::string const &defaultNamespace,
                           std::string const &namespaceRestriction, std::string const &targetNamespace)
{
    return new CElement(rowName.c_str(), defaultNamespace.c_str(), namespaceRestriction.c_str(),
                        targetNamespace.c_str());
}

void WriteChildAttributes(MxVariant const &value, CSerializationContext const &context, CXmlWriter *writer)
{
    CSmartPtr<CXmlObjectBase> child = value.GetXmlObject();
    if (!child.IsNull())
        CXmlObjectBase::AttributesToXml_Int(child, writer, context);
}

void WriteItemAttributes(MxVariant const &value, std::string const &name, CSerializationContext const &context,
                         CXmlWriter *writer)
{
    CXmlObjectBase::AttributesToXml_Int(HeldCollection(value, name).Get(), writer, context);
}

void ThrowMissingChild(std::string const &name, CXmlElement const *parent)
{
    throw CMxValidationException(FormatString("Failed to find the required child element [%s].", name.c_str()),
                                 parent->GetXPath());
}

void ThrowNoSubstitution(std::string const &name, CXmlElement const *parent)
{
    throw CMxValidationException(
        FormatString("Failed to find a suitable substitution element for [%s].", name.c_str()), parent->GetXPath());
}

bool ValidateMandatory(bool found, bool isRealElement, std::string const &name)
{
    if (found)
        return true;
    if (!isRealElement)
        return false;
    throw CMxValidationException(FormatString("Failed to find the mandatory element [%s].", name.c_str()), "");
}

bool RequireWritten(bool written, std::string const &name)
{
    if (!written)
        throw CMxInvalidParamException(
            FormatString("The Property [%s] is mandatory, it may not be NULL", name.c_str()));
    return true;
}

} // namespace RowSteps
} // namespace MxXmlLibData
