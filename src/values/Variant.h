#pragma once

#include "runtime/SmartPtr.h"
#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"
#include "values/Decimal.h"
#include "values/WhitespaceUtils.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

class CXmlObjectBase;
class CXmlCollectionBase;

// The XSD primitives of the library. Generated tables hold these numbers, so
// they never change; names given by MxVariant::GetType are in the comments.
enum ItemType
{
    ItemType_None = 0,
    ItemType_hexBinary = 1,     // "hexBinary"
    ItemType_base64Binary = 2,  // "base64Binary"
    ItemType_i1 = 3,            // "i1"
    ItemType_i2 = 4,            // "i2"
    ItemType_i4 = 5,            // "i4"
    ItemType_i8 = 6,            // "i8"
    ItemType_ui1 = 7,           // "ui1"
    ItemType_ui2 = 8,           // "ui2"
    ItemType_ui4 = 9,           // "ui4"
    ItemType_ui8 = 10,          // "ui8"
    ItemType_r4 = 11,           // "r4"
    ItemType_r8 = 12,           // "r8"
    ItemType_duration = 13,     // "duration"
    ItemType_yearMonth = 14,    // "yearMonth"
    ItemType_monthDay = 15,     // "monthDay"
    ItemType_year = 16,         // "year"
    ItemType_month = 17,        // "month"
    ItemType_day = 18,          // "day"
    ItemType_date = 19,         // "date"
    ItemType_datetime = 20,     // "datetime"
    ItemType_time = 21,         // "time"
    ItemType_char = 22,         // "char"
    ItemType_string = 23,       // "string"
    ItemType_boolean = 24,      // "boolean"
    ItemType_decimal = 25,      // "decimal"
    ItemType_integer = 26,      // "integer"
    ItemType_XmlObject = 27,    // a counted CXmlObjectBase
    ItemType_XmlCollection = 28 // a counted CXmlCollectionBase
};

// The value cell between the metadata rows and the properties of a generated
// class. Invariants: `m_type` names what `m_value` holds; the pointer of a heap
// form is owned (or counted, for 27 and 28) and may be null, as after SetNil,
// which keeps the type. An inline value outlives Clear, as nothing zeroes it.
//
// A getter reads the stored form without asking the type: ask for what the
// cell holds. Asking a heap getter of a cell of another type gives an empty
// value rather than a stray pointer.
class MxVariant
{
public:
    MxVariant();
    MxVariant(MxVariant const &other);
    // Clears the target first, so a cell assigned to itself ends up cleared.
    // A type outside 0 to 28 raises CMxException "Unknown Type".
    MxVariant &operator=(MxVariant const &other);
    // Takes the other cell's value, heap block and all, and leaves that
    // cell unset: storing a value read from a document needs no copy.
    MxVariant(MxVariant &&other) noexcept;
    MxVariant &operator=(MxVariant &&other) noexcept;
    virtual ~MxVariant();

    ItemType GetTypeAsEnum() const { return m_type; }
    // The XSD name of types 1 to 26; others raise CMxException "Invalid Type %d".
    std::string GetType() const;

    bool IsValid() const { return m_type != ItemType_None || m_isNil; }
    void SetInvalid();
    bool IsNil() const { return m_isNil; }
    // Keeps the type and drops the value.
    void SetNil();
    // Nothing on type 0, the nil flag included; else drops the value, the nil
    // flag and the type.
    void Clear();

    void SetI1(std::int8_t value);
    void SetI2(std::int16_t value);
    void SetI4(std::int32_t value);
    void SetI8(std::int64_t value);
    void SetUI1(std::uint8_t value);
    void SetUI2(std::uint16_t value);
    void SetUI4(std::uint32_t value);
    void SetUI8(std::uint64_t value);
    void SetR4(float value);
    void SetR8(double value);
    void SetYear(std::uint16_t value);
    void SetMonth(std::uint8_t value);
    void SetDay(std::uint8_t value);
    void SetChar(char value);
    void SetString(std::string const &value);
    // Takes the text over: reading a document moves each value into its cell.
    void TakeString(std::string &&value);
    void SetBoolean(bool value);
    // The heap forms hold a copy; a CBinaryData copy shares the counted block.
    void SetHexBinary(CBinaryData const &value);
    void SetBase64Binary(CBinaryData const &value);
    void SetDuration(CDateTimeSpan const &value);
    void SetDecimal(CDecimal const &value);
    void SetInteger(CBigInteger const &value);
    // The date family stores the value as given, whatever its own form: only
    // the cell's type differs between these five.
    void SetYearMonth(CDateTime const &value);
    void SetMonthDay(CDateTime const &value);
    void SetDate(CDateTime const &value);
    void SetDateTime(CDateTime const &value);
    void SetTime(CDateTime const &value);
    // The pointer may be null; a non-null one gains a counted reference.
    void SetXmlObject(CXmlObjectBase *value);
    void SetXmlCollection(CXmlCollectionBase *value);

    // Getters of equal width read the same bytes.
    std::int8_t GetI1() const { return static_cast<std::int8_t>(Read8()); }
    std::int16_t GetI2() const { return static_cast<std::int16_t>(Read16()); }
    std::int32_t GetI4() const { return static_cast<std::int32_t>(Read32()); }
    std::int64_t GetI8() const { return static_cast<std::int64_t>(Read64()); }
    std::uint8_t GetUI1() const { return Read8(); }
    std::uint16_t GetUI2() const { return Read16(); }
    std::uint32_t GetUI4() const { return Read32(); }
    std::uint64_t GetUI8() const { return Read64(); }
    float GetR4() const;
    double GetR8() const;
    std::uint16_t GetYear() const { return Read16(); }
    std::uint8_t GetMonth() const { return Read8(); }
    std::uint8_t GetDay() const { return Read8(); }
    char GetChar() const { return static_cast<char>(Read8()); }
    bool GetBoolean() const { return Read8() != 0; }
    std::string GetString() const;
    // The held text without a copy; an empty string for a cell of another type.
    std::string const &GetStringRef() const;
    // One body for each value class: GetHexBinary and GetBase64Binary read
    // either binary type, the five date getters any type of the date family.
    CBinaryData GetHexBinary() const;
    CBinaryData GetBase64Binary() const { return GetHexBinary(); }
    CDateTimeSpan GetDuration() const;
    CDateTime GetDate() const;
    CDateTime GetDateTime() const { return GetDate(); }
    CDateTime GetTime() const { return GetDate(); }
    CDateTime GetMonthDay() const { return GetDate(); }
    CDateTime GetYearMonth() const { return GetDate(); }
    CDecimal GetDecimal() const;
    // The decimal held, without a copy, or null for a cell that holds none.
    CDecimal const *PeekDecimal() const;
    CBigInteger GetInteger() const;
    CSmartPtr<CXmlObjectBase> GetXmlObject() const;
    // Null when the cell holds an object that is not a collection.
    CSmartPtr<CXmlCollectionBase> GetXmlCollection() const;

    // The text of types 1 to 26; `format` (null counts as empty) reaches only
    // r4, r8 and decimal. The nil flag is not looked at. Other types raise
    // CMxException "Invalid Type %d to convert to string".
    std::string ToString(char const *format = nullptr) const;
    // Parses `text` as `type` and stores it; a bad text leaves the cell as it
    // was. A `type` outside 1 to 26 raises "Invalid Type %d to convert to
    // string" with the type the cell held before.
    void FromString(std::string const &text, ItemType type, CWhitespaceUtils::WhitespaceRule rule);

private:
    // Inline forms from offset 0, or one pointer: a std::string, a counted
    // CXmlObjectBase, or one of the value classes. Read and written through
    // the bytes only, so that no member is read that was not written.
    union Value
    {
        std::uint8_t bytes[8];
        void *pointer;
    };
    static_assert(sizeof(void *) <= 8, "the pointer shares the inline bytes");

    template <typename T> T *Pointer() const;
    void SetPointer(void const *pointer);
    template <typename T> void SetHeap(ItemType type, T const &value);
    template <typename T> T GetHeap() const;
    // The stored value itself, or null when the cell holds no T.
    template <typename T> T const *HeapPointer() const;
    // ToString of a value class, read in place: no copy for the text.
    template <typename T, typename F> std::string HeapToString(F const &toString) const;

    std::uint8_t Read8() const;
    std::uint16_t Read16() const;
    std::uint32_t Read32() const;
    std::uint64_t Read64() const;
    void WriteInline(void const *value, std::size_t width);
    void SetInline(ItemType type, void const *value, std::size_t width);
    void ReleaseValue();

    bool m_isNil;
    ItemType m_type;
    Value m_value;
};

} // namespace MxXmlLib
