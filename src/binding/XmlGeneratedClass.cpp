#include "binding/XmlGeneratedClass.h"

#include "collections/AttributeCol.h"
#include "document/XmlDocument.h"
#include "document/XmlWriter.h"
#include "metadata/AttributeInfo.h"
#include "metadata/ElementInfoChoice.h"
#include "collections/XmlCollectionBase.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <cstring>
#include <memory>
#include <vector>

namespace MxXmlLib
{

using namespace MxXmlLibData;

CMXCriticalSection CXmlGeneratedClass::m_csInit;

namespace
{

// What a reading pass asks of its class once per element rather than once
// per row and pass: the rows, their count and the class's namespace.
struct ClassRows
{
    CElementInfo **rows;
    int count;
    std::string classNamespace;
};
ClassRows RowsToRead(CXmlGeneratedClass &owner)
{
    CElementInfo **rows = owner.GetClassElementInfo();
    int count = 0;
    while (rows && rows[count])
        ++count;
    return {rows, count, owner.GetNamespace()};
}

bool EqualsIgnoringCase(std::string const &a, char const *b)
{
    if (a.size() != std::strlen(b))
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = static_cast<char>(x - 'A' + 'a');
        if (x != y)
            return false;
    }
    return true;
}
} // namespace

// ---------------------------------------------------------------------------
// Writing

void CXmlGeneratedClass::ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                                   CSerializationContext const &context, bool optionalChoice) const
{
    try
    {
        CParentElementInfo const *info = Self()->GetParentElementInfo();
        bool const isElement = info->GetElementType() == XmlElementType_Element;
        if (isElement)
        {
            if (isRoot)
            {
                for (std::string const &instruction : context.GetProcessingInstructions())
                    writer->WriteProcessingInstruction(instruction);
                // The alias lookup may add to the map; the map is the caller's
                // to share, so work on the context it belongs to.
                auto &aliases = const_cast<CSerializationContext &>(context).GetNamespaceAliases();
                for (int i = 0; i < aliases.GetNamespaceCount(); ++i)
                {
                    std::string const uri = aliases.GetNamespaceAt(i);
                    writer->AddNamespace(aliases.GetAliasFromNamespace(uri.c_str()), uri);
                }
                if (!context.GetDefaultNamespaceURI().empty())
                    writer->SetDefaultNamespace(context.GetDefaultNamespaceURI());
            }
            writer->StartElement(GetElementName(), namespaceUri ? namespaceUri : "");
            if (isRoot)
                WriteAdditionalRootAttributes(writer, namespaceUri, context, optionalChoice);
            AttributesToXml_Int(writer, context);
            if (isRoot && !context.GetInLineSchema().empty())
                writer->WriteInLineSchema(context.GetInLineSchema());
        }

        auto *nillable = dynamic_cast<INillable *>(Self());
        if (nillable && nillable->IsNil())
            writer->WriteNilAttribute();
        else
        {
            CElementInfo **rows = Self()->GetClassElementInfo();
            switch (info->GetElementGroupType())
            {
            case XmlElementGroupType_Sequence:
                ProcessElementSeqToXml(context, rows, writer);
                break;
            case XmlElementGroupType_Choice:
                ProcessElementChoiceToXml(context, rows, writer, optionalChoice);
                break;
            case XmlElementGroupType_All:
                ProcessElementAllToXml(context, rows, writer);
                break;
            default:
                throw CMxException("Unknown XML Group Type");
            }
            int const index = info->GetPrimitiveValuePropertyIndex();
            if (index != -1 && info->GetPrimitiveDataType() != ItemType_None)
            {
                MxVariant value;
                ReadProperty(index, value);
                if (value.IsNil())
                    writer->WriteNilAttribute();
                else
                    writer->WriteText(value.ToString(info->GetPrimitiveFormatOverride().c_str()),
                                      value.GetTypeAsEnum(), false);
            }
        }
        if (isElement)
            writer->EndElement();
    }
    catch (CMxException const &e)
    {
        throw CMxValidationException(
            FormatString("Failed to convert the element [%s] to XML", GetElementName().c_str()), "", e);
    }
}

void CXmlGeneratedClass::AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const
{
    try
    {
        CParentElementInfo const *info = Self()->GetParentElementInfo();
        if (context.GetWriteTypeAttribute() && info->GetHasBaseClasses() &&
            GetElementName() != info->GetElementName())
            writer->WriteTypeAttribute(info->GetElementNamespace(), info->GetElementName(), ItemType_string);
        ProcessAttributesToXml(context, Self()->GetClassElementInfo(), Self()->GetClassAttributeInfo(), writer);
    }
    catch (CMxException const &e)
    {
        throw CMxException("Failed to convert attributes to XML", e);
    }
}

void CXmlGeneratedClass::ProcessAttributesToXml(CSerializationContext const &context, CElementInfo **elements,
                                                CAttributeInfo **attributes, CXmlWriter *writer) const
{
    for (CAttributeInfo **row = attributes; row && *row; ++row)
        (*row)->AttributeToXml(context, this, writer);
    for (CElementInfo **row = elements; row && *row; ++row)
        (*row)->PseudoChildAttributeToXml(context, this, writer);
}

void CXmlGeneratedClass::ProcessElementSeqToXml(CSerializationContext const &context, CElementInfo **elements,
                                                CXmlWriter *writer) const
{
    for (CElementInfo **row = elements; row && *row; ++row)
        (*row)->ElementToXml(context, this, writer);
}

void CXmlGeneratedClass::ProcessElementAllToXml(CSerializationContext const &context, CElementInfo **elements,
                                                CXmlWriter *writer) const
{
    ProcessElementSeqToXml(context, elements, writer);
}

// A choice writes its first alternative that is set; none set is an error
// unless the choice may be empty.
void CXmlGeneratedClass::ProcessElementChoiceToXml(CSerializationContext const &context, CElementInfo **elements,
                                                   CXmlWriter *writer, bool optionalChoice) const
{
    for (CElementInfo **row = elements; row && *row; ++row)
        if ((*row)->ElementToXml(context, this, writer))
            return;
    if (DoesElementContainOptionalElements() || optionalChoice || context.GetIgnoreMissingChoice())
        return;
    throw CMxValidationException("This element is a choice, and as such must have at one (and only one) valid "
                                 "item, currently there are none set",
                                 "");
}

// ---------------------------------------------------------------------------
// Reading

CXmlElement *CXmlGeneratedClass::FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                             CSerializationContext const &context, bool optionalChoice)
{
    try
    {
        Init();
        CParentElementInfo const *info = GetParentElementInfo();
        XmlElementType const type = info->GetElementType();
        if (type == XmlElementType_Element)
            SetElementName(element->GetLocalName().c_str());
        ProcessAttributesFromXml(context, element, info->GetFromXmlFailIfAttributeUnknown());
        auto *nillable = dynamic_cast<INillable *>(this);
        if (nillable && nillable->IsNil())
            return cursor;
        CXmlElement *result;
        switch (info->GetElementGroupType())
        {
        case XmlElementGroupType_Sequence:
            result = ProcessElementSeqFromXml(context, element, cursor, type);
            break;
        case XmlElementGroupType_Choice:
            result = ProcessElementChoiceFromXml(context, element, cursor, type, optionalChoice);
            break;
        case XmlElementGroupType_All:
            result = ProcessElementAllFromXml(context, element, cursor, type);
            break;
        default:
            throw CMxException("Unknown Group Type");
        }
        int const index = info->GetPrimitiveValuePropertyIndex();
        if (index != -1 && info->GetPrimitiveDataType() != ItemType_None)
        {
            MxVariant value;
            if (info->GetOutputPrimitiveClassAsTextProperty())
                value.SetString(element->GetText());
            else
                value.FromString(element->GetText(), info->GetPrimitiveDataType(),
                                 CWhitespaceUtils::WhitespaceRule::None);
            AccessProperty(index, false, value);
        }
        return result;
    }
    catch (CMxException const &e)
    {
        // The innermost element that fails names the place; the layers above
        // pass its exception on.
        if (e.GetPath().empty())
            throw CMxValidationException("Failed to process the element.", element->GetXPath(), e);
        throw CMxException(e);
    }
}

void CXmlGeneratedClass::ProcessAttributesFromXml(CSerializationContext const &context, CXmlElement *element,
                                                  bool failIfUnknown)
{
    CAttributeInfo **rows = GetClassAttributeInfo();
    std::size_t count = 0;
    while (rows && rows[count])
        ++count;
    // Classes rarely have more rows than fit on the stack.
    bool local[32] = {};
    std::unique_ptr<bool[]> heap(count > 32 ? new bool[count]() : nullptr);
    bool *const found = heap ? heap.get() : local;
    for (CXmlAttribute *attribute : element->GetAttributes())
    {
        if (attribute->IsNamespaceAttribute())
            continue;
        if (attribute->IsNilAttribute())
        {
            auto *nillable = dynamic_cast<INillable *>(this);
            if (nillable == nullptr)
                throw CMxValidationException("Invalid use of 'nil' attribute in non-nillable element.",
                                             element->GetXPath());
            std::string const &value = attribute->GetValue();
            if (EqualsIgnoringCase(value, "true") || value == "1")
                nillable->SetNil(true);
            else if (EqualsIgnoringCase(value, "false") || value == "0")
                nillable->SetNil(false);
            else
                throw CMxValidationException(
                    FormatString("Unexpected Value [%s] for 'nil' Attribute found.", value.c_str()),
                    attribute->GetXPath());
            continue;
        }
        bool taken = false;
        for (std::size_t i = 0; i < count && !taken; ++i)
            if (rows[i]->AttributeFromXml(context, this, attribute))
                taken = found[i] = true;
        if (!taken && failIfUnknown && !context.GetIgnoreUnknownAttributes())
            throw CMxValidationException("Unexpected Attribute found.", attribute->GetXPath());
    }
    for (std::size_t i = 0; i < count; ++i)
        rows[i]->Validate(context, found[i]);
}

void CXmlGeneratedClass::ThrowLeftOver(CXmlElement *element, CXmlElement *cursor)
{
    throw CMxValidationException(FormatString("Failed read all the elements held within the element [%s]. The "
                                              "unexpected element [%s] remains un processed",
                                              element->GetLocalName().c_str(), cursor->GetLocalName().c_str()),
                                 element->GetXPath());
}

// Sequence: rows in order. A row that cannot be satisfied ends the class's
// reading at its start, unless unknown elements are skipped; what remains at
// the end is an error for a real element and the parent's for a pseudo one.
CXmlElement *CXmlGeneratedClass::ProcessElementSeqFromXml(CSerializationContext const &context,
                                                          CXmlElement *element, CXmlElement *cursor,
                                                          XmlElementType type)
{
    auto const [rows, count, classNamespace] = RowsToRead(*this);
    CXmlElement *const start = cursor;
    int i = 0;
    int lastTaken = 0;
    for (;;)
    {
        while (i < count)
        {
            if (rows[i]->ElementFromXml(context, this, element, &cursor, classNamespace.c_str(), type))
            {
                lastTaken = i;
                ++i;
                continue;
            }
            if (!context.GetIgnoreUnknownElements() || cursor == nullptr)
                return start;
            cursor = cursor->GetNextSiblingElement();
        }
        if (type != XmlElementType_Element || cursor == nullptr)
            return cursor;
        if (!context.GetIgnoreUnknownElements())
            ThrowLeftOver(element, cursor);
        cursor = cursor->GetNextSiblingElement();
        if (cursor == nullptr)
            return cursor;
        // What follows a skipped element is offered to the last row that took something.
        i = lastTaken;
    }
}

// Choice: the first row that takes the element at the cursor is the choice.
CXmlElement *CXmlGeneratedClass::ProcessElementChoiceFromXml(CSerializationContext const &context,
                                                             CXmlElement *element, CXmlElement *cursor,
                                                             XmlElementType type, bool optionalChoice)
{
    auto const [rows, count, classNamespace] = RowsToRead(*this);
    CXmlElement *const start = cursor;
    bool matched = false;
    bool const ignoreUnknown = context.GetIgnoreUnknownElements();
    for (;;)
    {
        for (int i = 0; i < count; ++i)
        {
            matched = rows[i]->ElementFromXml(context, this, element, &cursor, classNamespace.c_str(), type);
            if (matched)
                break;
        }
        if (cursor != nullptr && !ignoreUnknown)
            break;
        if (cursor != nullptr && !matched && type == XmlElementType_Element)
            cursor = cursor->GetNextSiblingElement();
        if (ignoreUnknown && !matched && cursor != nullptr && type == XmlElementType_Element)
            continue;
        break;
    }
    if (!matched && !optionalChoice)
    {
        if (type == XmlElementType_PseudoElement)
            return ignoreUnknown ? start : cursor;
        if (type == XmlElementType_PseudoGroup)
            return cursor;
        if (type == XmlElementType_Element && !DoesElementContainOptionalElements() &&
            !context.GetIgnoreMissingChoice())
            throw CMxValidationException(
                FormatString("No child elements within the element [%s] were populated. The element represents a "
                             "choice, so one and only one element should be populated. The element contained no "
                             "sutable child elements",
                             element->GetLocalName().c_str()),
                element->GetXPath());
    }
    if ((matched || optionalChoice) && type != XmlElementType_Element)
        return cursor;
    if (cursor == nullptr || ignoreUnknown)
        return cursor;
    ThrowLeftOver(element, cursor);
}

// All: each pass offers the cursor to every row not yet satisfied, until the
// cursor stops moving; then every row says whether it is content.
CXmlElement *CXmlGeneratedClass::ProcessElementAllFromXml(CSerializationContext const &context,
                                                          CXmlElement *element, CXmlElement *cursor,
                                                          XmlElementType type)
{
    auto const [rows, count, classNamespace] = RowsToRead(*this);
    CXmlElement *const start = cursor;
    bool local[32] = {};
    std::unique_ptr<bool[]> heap(count > 32 ? new bool[count]() : nullptr);
    bool *const done = heap ? heap.get() : local;
    // The first pass runs even at the end of the list: inline rows may be
    // satisfied by nothing.
    CXmlElement *before;
    do
    {
        before = cursor;
        for (int i = 0; i < count; ++i)
            if (!done[i])
                done[i] = rows[i]->ElementFromXml(context, this, element, &cursor, classNamespace.c_str(), type);
    } while (cursor != nullptr && cursor != before);
    for (int i = 0; i < count; ++i)
        if (!rows[i]->Validate(context, this, done[i], type == XmlElementType_Element))
            return start;
    if (type != XmlElementType_Element || cursor == nullptr || context.GetIgnoreUnknownElements())
        return cursor;
    ThrowLeftOver(element, cursor);
}

// ---------------------------------------------------------------------------
// Helpers

// One optional alternative, or one collection that may be empty, makes the
// whole choice optional.
bool CXmlGeneratedClass::DoesElementContainOptionalElements() const
{
    for (CElementInfo **row = Self()->GetClassElementInfo(); row && *row; ++row)
    {
        CElementInfo *const r = *row;
        if (dynamic_cast<CElementInfoChoicePrimOpt *>(r) || dynamic_cast<CElementInfoChoiceClsOpt *>(r) ||
            dynamic_cast<CElementInfoChoiceAbsClsOpt *>(r) || dynamic_cast<CElementInfoChoiceEnumOpt *>(r) ||
            dynamic_cast<CElementInfoChoiceUntpdOpt *>(r))
            return true;
        if (dynamic_cast<CElementInfoChoicePrimCol *>(r) || dynamic_cast<CElementInfoChoiceClsCol *>(r) ||
            dynamic_cast<CElementInfoChoiceAbsClsCol *>(r) || dynamic_cast<CElementInfoChoiceEnumCol *>(r) ||
            dynamic_cast<CElementInfoChoiceUntpdCol *>(r))
        {
            MxVariant value;
            ReadProperty(r->GetPropertyIndex(), value);
            CSmartPtr<CXmlCollectionBase> collection = value.GetXmlCollection();
            if (!collection.IsNull() && collection->GetMinOccurs() == 0)
                return true;
        }
    }
    return false;
}

bool CXmlGeneratedClass::IsElementInList(CSerializationContext const &context, CXmlElement *element) const
{
    for (CElementInfo **row = Self()->GetClassElementInfo(); row && *row; ++row)
        if (element && element->GetLocalName() == (*row)->GetElementName() &&
            (context.GetIgnoreNamespaces() || element->GetNamespaceURI() == (*row)->GetElementNamespace()))
            return true;
    return false;
}

void CXmlGeneratedClass::WriteAdditionalRootAttributes(CXmlWriter *writer, char const *namespaceUri,
                                                      CSerializationContext const &context,
                                                      bool optionalChoice) const
{
    CSmartPtr<CAttributeCol> attributes = context.GetAdditionalRootAttributes();
    CXmlObjectBase::ToXml_Int(attributes.Get(), writer, false, namespaceUri, context, optionalChoice);
}

void CXmlGeneratedClass::ReadProperty(int index, MxVariant &value) const
{
    Self()->AccessProperty(index, true, value);
}

void CXmlGeneratedClass::CleanMetaData(CParentElementInfo *&info, CElementInfo **&elements,
                                       CAttributeInfo **&attributes)
{
    delete info;
    info = nullptr;
    if (elements)
    {
        for (CElementInfo **row = elements; *row; ++row)
        {
            delete *row;
            *row = nullptr;
        }
        delete[] elements;
        elements = nullptr;
    }
    if (attributes)
    {
        for (CAttributeInfo **row = attributes; *row; ++row)
        {
            delete *row;
            *row = nullptr;
        }
        delete[] attributes;
        attributes = nullptr;
    }
}

} // namespace MxXmlLib
