#include "collections/PrimitiveCollections.h"

#include "document/XmlWriter.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/FacetCheck.h"

#include <cassert>

namespace MxXmlLib
{

CPrimitiveColBase::CPrimitiveColBase(ItemType itemType, char const *elementName, char const *namespaceUri,
                                     int minOccurs, int maxOccurs, char const *pattern, long minLength,
                                     long maxLength, char const *minInclusive, char const *maxInclusive,
                                     char const *minExclusive, char const *maxExclusive, long length,
                                     long totalDigits, long fractionDigits,
                                     CWhitespaceUtils::WhitespaceRule whitespaceRule)
    : CXmlTypeCollection(itemType, elementName, namespaceUri, minOccurs, maxOccurs, pattern, minLength, maxLength,
                         minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits, fractionDigits,
                         whitespaceRule, nullptr)
{
}

CPrimitiveColBase::~CPrimitiveColBase() = default;

void CPrimitiveColBase::Clear()
{
    while (GetCount() > 0)
        Remove(0);
}

void CPrimitiveColBase::BeginAdd(int index, void *item)
{
    FireOnCollectionAdd(item);
    if (index < 0 || index > GetCount())
        throw CMxInvalidParamException("Index out of range");
}

void CPrimitiveColBase::EndAdd(void *item)
{
    FireOnCollectionAddComplete(item);
    FireOnCollectionChange();
}

void CPrimitiveColBase::CheckFacets(MxVariant const &cell) const
{
    CheckPrimitiveFacets(GetElementName().c_str(), cell, GetItemType(), GetRestrictions());
}

void CPrimitiveColBase::WriteItem(CXmlWriter *writer, std::string const &name, std::string const &namespaceUri,
                                  std::string const &text, ItemType type)
{
    writer->StartElement(name, namespaceUri);
    writer->WriteText(text, type, false);
    writer->EndElement();
}

void CPrimitiveColBase::BeginRemove(int index)
{
    FireOnCollectionRemove(index);
    CheckIndex(index);
}

void CPrimitiveColBase::EndRemove()
{
    // Listeners learn that an item went, never which one.
    FireOnCollectionRemoveComplete(0);
    FireOnCollectionChange();
}

void CPrimitiveColBase::CheckIndex(int index) const
{
    if (index < 0 || index > GetCount() - 1)
        throw CMxInvalidParamException(FormatString("Index %d is out of range, use 0 - %d", index, GetCount()));
}

CdatetimeBaseCol::CdatetimeBaseCol(ItemType itemType, char const *elementName, char const *namespaceUri,
                                   int minOccurs, int maxOccurs, char const *pattern, long minLength, long maxLength,
                                   char const *minInclusive, char const *maxInclusive, char const *minExclusive,
                                   char const *maxExclusive, long length, long totalDigits, long fractionDigits,
                                   CWhitespaceUtils::WhitespaceRule whitespaceRule)
    : CPrimitiveColBase(itemType, elementName, namespaceUri, minOccurs, maxOccurs, pattern, minLength, maxLength,
                        minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits, fractionDigits,
                        whitespaceRule)
{
}

CdatetimeBaseCol::~CdatetimeBaseCol() = default;

void CdatetimeBaseCol::Add(CDateTime const &value)
{
    AddAt(GetCount(), value);
}

CDateTime CdatetimeBaseCol::Item(int index) const
{
    CheckIndex(index);
    return Items[static_cast<std::size_t>(index)];
}

void CdatetimeBaseCol::Remove(int index)
{
    BeginRemove(index);
    Items.erase(Items.begin() + index);
    EndRemove();
}

void CdatetimeBaseCol::ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &context,
                                 bool) const
{
    // The writers know one text form for the whole family: that of dateTime.
    WriteItems(writer, context, Items, [this](CDateTime const &item) { return ItemToString(item); },
               ItemType_datetime);
}

void CdatetimeBaseCol::BaseAddAt(int index, CDateTime const &value)
{
    void *const item = const_cast<CDateTime *>(&value);
    BeginAdd(index, item);
    Items.insert(Items.begin() + index, value);
    EndAdd(item);
}

void CdatetimeBaseCol::AddAtOfForm(int index, CDateTime const &value, CDateTime::DTType form)
{
    if (value.GetType() != form)
    {
        switch (form)
        {
        case CDateTime::date:
            throw CMxInvalidParamException("Dates added to this collection must be of type dt_date");
        case CDateTime::dateTime:
            throw CMxInvalidParamException("Dates added to this collection must be of type dt_dateTime");
        case CDateTime::time:
            throw CMxInvalidParamException("Dates added to this collection must be of type dt_time");
        case CDateTime::gYearMonth:
            throw CMxInvalidParamException("Dates added to this collection must be of type dt_gYearMonth");
        case CDateTime::gMonthDay:
            throw CMxInvalidParamException("Dates added to this collection must be of type dt_gMonthDay");
        default:
            assert(false && "only the five forms above have a collection");
        }
    }
    MxVariant cell;
    cell.SetDateTime(value);
    CheckFacets(cell);
    BaseAddAt(index, value);
}

} // namespace MxXmlLib
