#pragma once

// Collections of the XSD primitives: one class per primitive, named after
// the XSD word (Ci4Col, CstringCol, CdateCol, ...). They differ only in the
// value type and its conversions, so the classes are thin: CPrimitiveCol
// holds the items and CPrimitiveColBase the steps they all share.
//
// Every collection writes one element per item, named after the collection,
// and reads the run of matching siblings, one item each. Positions are
// checked on every call, and facets on every add; the bounds only when the
// collection is written (ValidateCount).

#include "collections/XmlTypeCollection.h"
#include "values/Conversions.h"

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace MxXmlLib
{

// The steps every primitive collection shares, in the order the add and
// remove operations run them; the items themselves live in the derived class.
class CPrimitiveColBase : public CXmlTypeCollection
{
public:
    // Removes item 0 until none is left, through the virtual Remove, so each
    // item sends its own remove events; an empty collection sends nothing.
    void Clear() override;

protected:
    CPrimitiveColBase(ItemType itemType, char const *elementName, char const *namespaceUri, int minOccurs,
                      int maxOccurs, char const *pattern, long minLength, long maxLength, char const *minInclusive,
                      char const *maxInclusive, char const *minExclusive, char const *maxExclusive, long length,
                      long totalDigits, long fractionDigits, CWhitespaceUtils::WhitespaceRule whitespaceRule);
    CPrimitiveColBase(CPrimitiveColBase const &other) = default;
    CPrimitiveColBase &operator=(CPrimitiveColBase const &other) = default;
    ~CPrimitiveColBase() override;

    // Sends the add event, then raises CMxInvalidParamException "Index out of
    // range" unless 0 <= index <= GetCount(): the event goes out either way.
    void BeginAdd(int index, void *item);
    // The add-complete and change events.
    void EndAdd(void *item);
    // Raises the facets' own exception when `cell` breaks a facet of the
    // collection's item type.
    void CheckFacets(MxVariant const &cell) const;
    // Sends the remove event, then checks the index as CheckIndex does.
    void BeginRemove(int index);
    // The remove-complete event, with index 0 whichever item went, and change.
    void EndRemove();
    // Raises CMxInvalidParamException "Index %d is out of range, use 0 - %d"
    // with the count, not the last index, as the second number.
    void CheckIndex(int index) const;

    // Checks the bounds, then writes each item as one element of the
    // collection's name and namespace, with `type` for the writer.
    template <typename Items, typename ToText>
    void WriteItems(CXmlWriter *writer, CSerializationContext const &context, Items const &items, ToText toText,
                    ItemType type) const
    {
        ValidateCount(context);
        std::string const name = GetElementName();
        std::string const namespaceUri = GetNamespace();
        for (auto const &item : items)
            WriteItem(writer, name, namespaceUri, toText(item), type);
    }
    // One item's element: start tag, text, end tag.
    static void WriteItem(CXmlWriter *writer, std::string const &name, std::string const &namespaceUri,
                          std::string const &text, ItemType type);
};

// The collection of one primitive: `T` is the stored value, `ToText` and
// `FromText` its CConversions pair, `SetCell` the MxVariant setter through
// which the facets see an item (null: the type has no facet test).
template <typename T, ItemType Type, auto ToText, auto FromText, auto SetCell>
class CPrimitiveCol : public CPrimitiveColBase
{
public:
    using const_iterator = typename std::vector<T>::const_iterator;

    CPrimitiveCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs,
                  char const *pattern, long minLength, long maxLength, char const *minInclusive,
                  char const *maxInclusive, char const *minExclusive, char const *maxExclusive, long length,
                  long totalDigits, long fractionDigits, CWhitespaceUtils::WhitespaceRule whitespaceRule)
        : CPrimitiveColBase(Type, elementName, namespaceUri, minOccurs, maxOccurs, pattern, minLength, maxLength,
                            minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits,
                            fractionDigits, whitespaceRule)
    {
    }
    CPrimitiveCol(CPrimitiveCol const &other) = default;
    CPrimitiveCol &operator=(CPrimitiveCol const &other) = default;

    void Add(T value) { AddAt(GetCount(), std::move(value)); }
    // The add event, the position test, the facet test, then the insert and
    // the complete and change events. A failure leaves the items as they were.
    void AddAt(int index, T value)
    {
        BeginAdd(index, &value);
        if constexpr (!std::is_same_v<decltype(SetCell), std::nullptr_t>)
        {
            MxVariant cell;
            (cell.*SetCell)(value);
            CheckFacets(cell);
        }
        // A copy: the complete event still points at `value`.
        Items.insert(Items.begin() + index, value);
        EndAdd(&value);
    }
    T Item(int index) const
    {
        CheckIndex(index);
        return Items[static_cast<std::size_t>(index)];
    }
    int GetCount() const override { return static_cast<int>(Items.size()); }
    void Remove(int index) override
    {
        BeginRemove(index);
        Items.erase(Items.begin() + index);
        EndRemove();
    }

    const_iterator begin() const { return Items.begin(); }
    const_iterator end() const { return Items.end(); }

protected:
    ~CPrimitiveCol() override = default;

    void ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &context,
                   bool) const override
    {
        WriteItems(writer, context, Items, [](T const &item) { return ToText(item); }, Type);
    }
    void AddFromString(std::string text) override { AddAt(GetCount(), FromText(text, GetWhitespaceRule())); }

    std::vector<T> Items; // a packed vector of bits for bool
};

// The overloaded conversions, each taken in its one-argument form: the
// collections write with the default format.
namespace PrimitiveColText
{
inline constexpr std::string (*R4)(float) = &CConversions::r4ToString;
inline constexpr std::string (*R8)(double) = &CConversions::r8ToString;
inline constexpr std::string (*Decimal)(CDecimal const &) = &CConversions::decimalToString;
} // namespace PrimitiveColText

class Ci1Col : public CPrimitiveCol<char, ItemType_i1, &CConversions::i1ToString, &CConversions::i1FromString,
                                    &MxVariant::SetI1>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Ci1Col() override = default;
};

class Ci2Col : public CPrimitiveCol<std::int16_t, ItemType_i2, &CConversions::i2ToString,
                                    &CConversions::i2FromString, &MxVariant::SetI2>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Ci2Col() override = default;
};

class Ci4Col : public CPrimitiveCol<std::int32_t, ItemType_i4, &CConversions::i4ToString,
                                    &CConversions::i4FromString, &MxVariant::SetI4>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Ci4Col() override = default;
};

class Ci8Col : public CPrimitiveCol<std::int64_t, ItemType_i8, &CConversions::i8ToString,
                                    &CConversions::i8FromString, &MxVariant::SetI8>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Ci8Col() override = default;
};

class Cui1Col : public CPrimitiveCol<unsigned char, ItemType_ui1, &CConversions::ui1ToString,
                                     &CConversions::ui1FromString, &MxVariant::SetUI1>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cui1Col() override = default;
};

class Cui2Col : public CPrimitiveCol<std::uint16_t, ItemType_ui2, &CConversions::ui2ToString,
                                     &CConversions::ui2FromString, &MxVariant::SetUI2>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cui2Col() override = default;
};

class Cui4Col : public CPrimitiveCol<std::uint32_t, ItemType_ui4, &CConversions::ui4ToString,
                                     &CConversions::ui4FromString, &MxVariant::SetUI4>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cui4Col() override = default;
};

class Cui8Col : public CPrimitiveCol<std::uint64_t, ItemType_ui8, &CConversions::ui8ToString,
                                     &CConversions::ui8FromString, &MxVariant::SetUI8>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cui8Col() override = default;
};

// Written with the default format, "%.7g".
class Cr4Col
    : public CPrimitiveCol<float, ItemType_r4, PrimitiveColText::R4, &CConversions::r4FromString, &MxVariant::SetR4>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cr4Col() override = default;
};

// Written with the default format, "%.16g".
class Cr8Col
    : public CPrimitiveCol<double, ItemType_r8, PrimitiveColText::R8, &CConversions::r8FromString, &MxVariant::SetR8>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cr8Col() override = default;
};

class CstringCol : public CPrimitiveCol<std::string, ItemType_string, &CConversions::stringToString,
                                        &CConversions::stringFromString, &MxVariant::SetString>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CstringCol() override = default;
};

// No facet is ever tested: any bool is accepted.
class CbooleanCol : public CPrimitiveCol<bool, ItemType_boolean, &CConversions::booleanToString,
                                         &CConversions::booleanFromString, nullptr>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CbooleanCol() override = default;
};

// Written with all places held.
class CdecimalCol : public CPrimitiveCol<CDecimal, ItemType_decimal, PrimitiveColText::Decimal,
                                         &CConversions::decimalFromString, &MxVariant::SetDecimal>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CdecimalCol() override = default;
};

class CintegerCol : public CPrimitiveCol<CBigInteger, ItemType_integer, &CConversions::integerToString,
                                         &CConversions::integerFromString, &MxVariant::SetInteger>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CintegerCol() override = default;
};

class CdurationCol : public CPrimitiveCol<CDateTimeSpan, ItemType_duration, &CConversions::durationToString,
                                          &CConversions::durationFromString, &MxVariant::SetDuration>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CdurationCol() override = default;
};

class Cbase64BinaryCol : public CPrimitiveCol<CBinaryData, ItemType_base64Binary, &CConversions::base64BinaryToString,
                                              &CConversions::base64BinaryFromString, &MxVariant::SetBase64Binary>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~Cbase64BinaryCol() override = default;
};

class ChexBinaryCol : public CPrimitiveCol<CBinaryData, ItemType_hexBinary, &CConversions::hexBinaryToString,
                                           &CConversions::hexBinaryFromString, &MxVariant::SetHexBinary>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~ChexBinaryCol() override = default;
};

// The year, month and day are plain numbers, not CDateTime values.
class CyearCol : public CPrimitiveCol<std::uint16_t, ItemType_year, &CConversions::yearToString,
                                      &CConversions::yearFromString, &MxVariant::SetYear>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CyearCol() override = default;
};

class CmonthCol : public CPrimitiveCol<unsigned char, ItemType_month, &CConversions::monthToString,
                                       &CConversions::monthFromString, &MxVariant::SetMonth>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CmonthCol() override = default;
};

class CdayCol : public CPrimitiveCol<unsigned char, ItemType_day, &CConversions::dayToString,
                                     &CConversions::dayFromString, &MxVariant::SetDay>
{
public:
    using CPrimitiveCol::CPrimitiveCol;

protected:
    ~CdayCol() override = default;
};

// Base of the date and time collections. Each derived class takes values of
// one form only (DTType); its AddAt tests the form and the facets before the
// add event goes out. All of them write their items with ItemType 20.
class CdatetimeBaseCol : public CPrimitiveColBase
{
public:
    using const_iterator = std::vector<CDateTime>::const_iterator;

    CdatetimeBaseCol(CdatetimeBaseCol const &other) = default;
    CdatetimeBaseCol &operator=(CdatetimeBaseCol const &other) = default;

    // AddAt(GetCount(), value), through the virtual table.
    virtual void Add(CDateTime const &value);
    virtual void AddAt(int index, CDateTime const &value) = 0;
    virtual CDateTime Item(int index) const;
    virtual std::string ItemToString(CDateTime const &value) const = 0;

    int GetCount() const override { return static_cast<int>(Items.size()); }
    void Remove(int index) override;

    const_iterator begin() const { return Items.begin(); }
    const_iterator end() const { return Items.end(); }

protected:
    CdatetimeBaseCol(ItemType itemType, char const *elementName, char const *namespaceUri, int minOccurs,
                     int maxOccurs, char const *pattern, long minLength, long maxLength, char const *minInclusive,
                     char const *maxInclusive, char const *minExclusive, char const *maxExclusive, long length,
                     long totalDigits, long fractionDigits, CWhitespaceUtils::WhitespaceRule whitespaceRule);
    ~CdatetimeBaseCol() override;

    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;

    // The add event, the position test, the insert, the complete events.
    void BaseAddAt(int index, CDateTime const &value);
    // What each derived AddAt does: raises CMxInvalidParamException "Dates
    // added to this collection must be of type dt_..." unless `value` has
    // `form`, then tests the facets, then BaseAddAt.
    void AddAtOfForm(int index, CDateTime const &value, CDateTime::DTType form);

    std::vector<CDateTime> Items;
};

// One date or time collection: `Form` is the only DTType it takes, and
// `FromText` reads an item's text.
template <ItemType Type, CDateTime::DTType Form, auto FromText> class CDateFamilyCol : public CdatetimeBaseCol
{
public:
    CDateFamilyCol(char const *elementName, char const *namespaceUri, int minOccurs, int maxOccurs,
                   char const *pattern, long minLength, long maxLength, char const *minInclusive,
                   char const *maxInclusive, char const *minExclusive, char const *maxExclusive, long length,
                   long totalDigits, long fractionDigits, CWhitespaceUtils::WhitespaceRule whitespaceRule)
        : CdatetimeBaseCol(Type, elementName, namespaceUri, minOccurs, maxOccurs, pattern, minLength, maxLength,
                           minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits,
                           fractionDigits, whitespaceRule)
    {
    }
    CDateFamilyCol(CDateFamilyCol const &other) = default;
    CDateFamilyCol &operator=(CDateFamilyCol const &other) = default;

    void AddAt(int index, CDateTime const &value) override { AddAtOfForm(index, value, Form); }
    std::string ItemToString(CDateTime const &value) const override { return CConversions::dateToString(value); }

protected:
    ~CDateFamilyCol() override = default;
    // The form is the one the text has, so a text of another form is refused
    // by AddAt.
    void AddFromString(std::string text) override { Add(FromText(text, GetWhitespaceRule())); }
};

class CdateCol : public CDateFamilyCol<ItemType_date, CDateTime::date, &CConversions::dateFromString>
{
public:
    using CDateFamilyCol::CDateFamilyCol;

protected:
    ~CdateCol() override = default;
};

class CdatetimeCol : public CDateFamilyCol<ItemType_datetime, CDateTime::dateTime, &CConversions::datetimeFromString>
{
public:
    using CDateFamilyCol::CDateFamilyCol;

protected:
    ~CdatetimeCol() override = default;
};

class CtimeCol : public CDateFamilyCol<ItemType_time, CDateTime::time, &CConversions::timeFromString>
{
public:
    using CDateFamilyCol::CDateFamilyCol;

protected:
    ~CtimeCol() override = default;
};

class CyearMonthCol
    : public CDateFamilyCol<ItemType_yearMonth, CDateTime::gYearMonth, &CConversions::yearMonthFromString>
{
public:
    using CDateFamilyCol::CDateFamilyCol;

protected:
    ~CyearMonthCol() override = default;
};

class CmonthDayCol : public CDateFamilyCol<ItemType_monthDay, CDateTime::gMonthDay, &CConversions::monthDayFromString>
{
public:
    using CDateFamilyCol::CDateFamilyCol;

protected:
    ~CmonthDayCol() override = default;
};

} // namespace MxXmlLib
