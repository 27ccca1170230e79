#include "values/Variant.h"

#include "binding/XmlObjectBase.h"
#include "collections/XmlCollectionBase.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/Conversions.h"

#include <cstring>
#include <new>

namespace MxXmlLib
{

namespace
{

// How a type is held; this decides clearing and copying.
enum class Storage
{
    None,
    Inline,   // `width` bytes from offset 0
    String,   // owned std::string
    Binary,   // owned CBinaryData
    Span,     // owned CDateTimeSpan
    Date,     // owned CDateTime
    Decimal,  // owned CDecimal
    Integer,  // owned CBigInteger
    Object    // counted CXmlObjectBase
};

struct TypeRow
{
    char const *name;
    Storage storage;
    unsigned width;
};

constexpr int kLastType = ItemType_XmlCollection;

constexpr TypeRow kTypes[kLastType + 1] = {
    {nullptr, Storage::None, 0},         {"hexBinary", Storage::Binary, 0},  {"base64Binary", Storage::Binary, 0},
    {"i1", Storage::Inline, 1},          {"i2", Storage::Inline, 2},         {"i4", Storage::Inline, 4},
    {"i8", Storage::Inline, 8},          {"ui1", Storage::Inline, 1},        {"ui2", Storage::Inline, 2},
    {"ui4", Storage::Inline, 4},         {"ui8", Storage::Inline, 8},        {"r4", Storage::Inline, 4},
    {"r8", Storage::Inline, 8},          {"duration", Storage::Span, 0},     {"yearMonth", Storage::Date, 0},
    {"monthDay", Storage::Date, 0},      {"year", Storage::Inline, 2},       {"month", Storage::Inline, 1},
    {"day", Storage::Inline, 1},         {"date", Storage::Date, 0},         {"datetime", Storage::Date, 0},
    {"time", Storage::Date, 0},          {"char", Storage::Inline, 1},       {"string", Storage::String, 0},
    {"boolean", Storage::Inline, 1},     {"decimal", Storage::Decimal, 0},   {"integer", Storage::Integer, 0},
    {nullptr, Storage::Object, 0},       {nullptr, Storage::Object, 0},
};

bool IsKnownType(int type) { return type >= 0 && type <= kLastType; }

Storage StorageOf(int type) { return IsKnownType(type) ? kTypes[type].storage : Storage::None; }

bool IsPointerStorage(Storage s) { return s != Storage::None && s != Storage::Inline; }

// The storage that holds each class; a getter reads a pointer only when the
// cell's type has this storage.
template <typename T> constexpr Storage StorageFor();
template <> constexpr Storage StorageFor<std::string>() { return Storage::String; }
template <> constexpr Storage StorageFor<CBinaryData>() { return Storage::Binary; }
template <> constexpr Storage StorageFor<CDateTimeSpan>() { return Storage::Span; }
template <> constexpr Storage StorageFor<CDateTime>() { return Storage::Date; }
template <> constexpr Storage StorageFor<CDecimal>() { return Storage::Decimal; }
template <> constexpr Storage StorageFor<CBigInteger>() { return Storage::Integer; }

[[noreturn]] void ThrowNoTextForm(int type)
{
    throw CMxException(FormatString("Invalid Type %d to convert to string", type));
}

// A copy on the heap, or null when the allocation yields none.
template <typename T> void *HeapCopy(void const *source)
{
    return source ? new (std::nothrow) T(*static_cast<T const *>(source)) : nullptr;
}

} // namespace

template <typename T> T *MxVariant::Pointer() const
{
    void *p;
    std::memcpy(&p, m_value.bytes, sizeof(p));
    return static_cast<T *>(p);
}

void MxVariant::SetPointer(void const *pointer)
{
    void *p = const_cast<void *>(pointer);
    std::memcpy(m_value.bytes, &p, sizeof(p));
}

MxVariant::MxVariant() : m_isNil(false), m_type(ItemType_None)
{
    std::memset(m_value.bytes, 0, sizeof(m_value.bytes));
}

MxVariant::MxVariant(MxVariant const &other) : MxVariant() { *this = other; }

MxVariant::MxVariant(MxVariant &&other) noexcept : m_isNil(other.m_isNil), m_type(other.m_type), m_value(other.m_value)
{
    other.m_isNil = false;
    other.m_type = ItemType_None;
    std::memset(other.m_value.bytes, 0, sizeof(other.m_value.bytes));
}

MxVariant &MxVariant::operator=(MxVariant &&other) noexcept
{
    if (this == &other)
        return *this;
    ReleaseValue();
    m_isNil = other.m_isNil;
    m_type = other.m_type;
    m_value = other.m_value;
    other.m_isNil = false;
    other.m_type = ItemType_None;
    std::memset(other.m_value.bytes, 0, sizeof(other.m_value.bytes));
    return *this;
}

MxVariant::~MxVariant() { ReleaseValue(); }

MxVariant &MxVariant::operator=(MxVariant const &other)
{
    Clear();
    m_type = other.m_type;
    m_isNil = other.m_isNil;
    Storage const storage = StorageOf(m_type);
    if (IsPointerStorage(storage))
        SetPointer(nullptr);
    if (m_isNil)
        return *this;
    if (!IsKnownType(m_type))
        throw CMxException(FormatString("Unknown Type"));
    switch (storage)
    {
    case Storage::None:
        break;
    case Storage::Inline:
        std::memcpy(m_value.bytes, other.m_value.bytes, kTypes[m_type].width);
        break;
    case Storage::String:
        SetPointer(HeapCopy<std::string>(other.Pointer<void>()));
        break;
    case Storage::Binary:
        SetPointer(HeapCopy<CBinaryData>(other.Pointer<void>()));
        break;
    case Storage::Span:
        SetPointer(HeapCopy<CDateTimeSpan>(other.Pointer<void>()));
        break;
    case Storage::Date:
        SetPointer(HeapCopy<CDateTime>(other.Pointer<void>()));
        break;
    case Storage::Decimal:
        SetPointer(HeapCopy<CDecimal>(other.Pointer<void>()));
        break;
    case Storage::Integer:
        SetPointer(HeapCopy<CBigInteger>(other.Pointer<void>()));
        break;
    case Storage::Object:
        if (CXmlObjectBase *object = other.Pointer<CXmlObjectBase>())
        {
            object->AddRef();
            SetPointer(object);
        }
        break;
    }
    return *this;
}

std::string MxVariant::GetType() const
{
    if (m_type < ItemType_hexBinary || m_type > ItemType_integer)
        throw CMxException(FormatString("Invalid Type %d", static_cast<int>(m_type)));
    return kTypes[m_type].name;
}

void MxVariant::ReleaseValue()
{
    switch (StorageOf(m_type))
    {
    case Storage::String:
        delete Pointer<std::string>();
        SetPointer(nullptr);
        break;
    case Storage::Binary:
        delete Pointer<CBinaryData>();
        SetPointer(nullptr);
        break;
    case Storage::Span:
        delete Pointer<CDateTimeSpan>();
        SetPointer(nullptr);
        break;
    case Storage::Date:
        delete Pointer<CDateTime>();
        SetPointer(nullptr);
        break;
    case Storage::Decimal:
        delete Pointer<CDecimal>();
        SetPointer(nullptr);
        break;
    case Storage::Integer:
        delete Pointer<CBigInteger>();
        SetPointer(nullptr);
        break;
    case Storage::Object:
        if (CXmlObjectBase *object = Pointer<CXmlObjectBase>())
        {
            SetPointer(nullptr);
            object->Release();
        }
        break;
    case Storage::None:
    case Storage::Inline:
        break;
    }
}

void MxVariant::Clear()
{
    if (m_type == ItemType_None)
        return;
    m_isNil = false;
    ReleaseValue();
    m_type = ItemType_None;
}

void MxVariant::SetInvalid()
{
    Clear();
    m_type = ItemType_None;
}

void MxVariant::SetNil()
{
    ReleaseValue();
    m_isNil = true;
}

std::uint8_t MxVariant::Read8() const { return m_value.bytes[0]; }

std::uint16_t MxVariant::Read16() const
{
    std::uint16_t v;
    std::memcpy(&v, m_value.bytes, sizeof(v));
    return v;
}

std::uint32_t MxVariant::Read32() const
{
    std::uint32_t v;
    std::memcpy(&v, m_value.bytes, sizeof(v));
    return v;
}

std::uint64_t MxVariant::Read64() const
{
    std::uint64_t v;
    std::memcpy(&v, m_value.bytes, sizeof(v));
    return v;
}

float MxVariant::GetR4() const
{
    float v;
    std::memcpy(&v, m_value.bytes, sizeof(v));
    return v;
}

double MxVariant::GetR8() const
{
    double v;
    std::memcpy(&v, m_value.bytes, sizeof(v));
    return v;
}

void MxVariant::SetInline(ItemType type, void const *value, std::size_t width)
{
    Clear();
    m_type = type;
    std::memcpy(m_value.bytes, value, width);
}

void MxVariant::SetI1(std::int8_t value) { SetInline(ItemType_i1, &value, sizeof(value)); }
void MxVariant::SetI2(std::int16_t value) { SetInline(ItemType_i2, &value, sizeof(value)); }
void MxVariant::SetI4(std::int32_t value) { SetInline(ItemType_i4, &value, sizeof(value)); }
void MxVariant::SetI8(std::int64_t value) { SetInline(ItemType_i8, &value, sizeof(value)); }
void MxVariant::SetUI1(std::uint8_t value) { SetInline(ItemType_ui1, &value, sizeof(value)); }
void MxVariant::SetUI2(std::uint16_t value) { SetInline(ItemType_ui2, &value, sizeof(value)); }
void MxVariant::SetUI4(std::uint32_t value) { SetInline(ItemType_ui4, &value, sizeof(value)); }
void MxVariant::SetUI8(std::uint64_t value) { SetInline(ItemType_ui8, &value, sizeof(value)); }
void MxVariant::SetR4(float value) { SetInline(ItemType_r4, &value, sizeof(value)); }
void MxVariant::SetR8(double value) { SetInline(ItemType_r8, &value, sizeof(value)); }
void MxVariant::SetYear(std::uint16_t value) { SetInline(ItemType_year, &value, sizeof(value)); }
void MxVariant::SetMonth(std::uint8_t value) { SetInline(ItemType_month, &value, sizeof(value)); }
void MxVariant::SetDay(std::uint8_t value) { SetInline(ItemType_day, &value, sizeof(value)); }
void MxVariant::SetChar(char value) { SetInline(ItemType_char, &value, sizeof(value)); }

void MxVariant::SetBoolean(bool value)
{
    std::uint8_t byte = value ? 1 : 0;
    SetInline(ItemType_boolean, &byte, sizeof(byte));
}

template <typename T> void MxVariant::SetHeap(ItemType type, T const &value)
{
    // The copy is made before Clear, as `value` may be this cell's own.
    void *copy = HeapCopy<T>(&value);
    Clear();
    m_type = type;
    SetPointer(copy);
}

template <typename T> T const *MxVariant::HeapPointer() const
{
    return StorageOf(m_type) == StorageFor<T>() ? Pointer<T>() : nullptr;
}

template <typename T> T MxVariant::GetHeap() const
{
    T const *p = HeapPointer<T>();
    return p ? *p : T();
}

template <typename T, typename F> std::string MxVariant::HeapToString(F const &toString) const
{
    if (T const *p = HeapPointer<T>())
        return toString(*p);
    return toString(T());
}

void MxVariant::SetString(std::string const &value) { SetHeap(ItemType_string, value); }

void MxVariant::TakeString(std::string &&value)
{
    // The new cell is made before Clear, as `value` may be this cell's own.
    void *moved = new (std::nothrow) std::string(std::move(value));
    Clear();
    m_type = ItemType_string;
    SetPointer(moved);
}
void MxVariant::SetHexBinary(CBinaryData const &value) { SetHeap(ItemType_hexBinary, value); }
void MxVariant::SetBase64Binary(CBinaryData const &value) { SetHeap(ItemType_base64Binary, value); }
void MxVariant::SetDuration(CDateTimeSpan const &value) { SetHeap(ItemType_duration, value); }
void MxVariant::SetYearMonth(CDateTime const &value) { SetHeap(ItemType_yearMonth, value); }
void MxVariant::SetMonthDay(CDateTime const &value) { SetHeap(ItemType_monthDay, value); }
void MxVariant::SetDate(CDateTime const &value) { SetHeap(ItemType_date, value); }
void MxVariant::SetDateTime(CDateTime const &value) { SetHeap(ItemType_datetime, value); }
void MxVariant::SetTime(CDateTime const &value) { SetHeap(ItemType_time, value); }
void MxVariant::SetDecimal(CDecimal const &value) { SetHeap(ItemType_decimal, value); }
void MxVariant::SetInteger(CBigInteger const &value) { SetHeap(ItemType_integer, value); }

void MxVariant::SetXmlObject(CXmlObjectBase *value)
{
    Clear();
    m_type = ItemType_XmlObject;
    SetPointer(value);
    if (value)
        value->AddRef();
}

void MxVariant::SetXmlCollection(CXmlCollectionBase *value)
{
    Clear();
    m_type = ItemType_XmlCollection;
    CXmlObjectBase *object = value;
    SetPointer(object);
    if (object)
        object->AddRef();
}

std::string MxVariant::GetString() const { return GetHeap<std::string>(); }

std::string const &MxVariant::GetStringRef() const
{
    static std::string const empty;
    std::string const *p = StorageOf(m_type) == Storage::String ? Pointer<std::string>() : nullptr;
    return p ? *p : empty;
}
CBinaryData MxVariant::GetHexBinary() const { return GetHeap<CBinaryData>(); }
CDateTimeSpan MxVariant::GetDuration() const { return GetHeap<CDateTimeSpan>(); }
CDateTime MxVariant::GetDate() const { return GetHeap<CDateTime>(); }
CDecimal MxVariant::GetDecimal() const { return GetHeap<CDecimal>(); }
CDecimal const *MxVariant::PeekDecimal() const
{
    return StorageOf(m_type) == StorageFor<CDecimal>() ? Pointer<CDecimal>() : nullptr;
}
CBigInteger MxVariant::GetInteger() const { return GetHeap<CBigInteger>(); }

CSmartPtr<CXmlObjectBase> MxVariant::GetXmlObject() const
{
    return StorageOf(m_type) == Storage::Object ? Pointer<CXmlObjectBase>() : nullptr;
}

CSmartPtr<CXmlCollectionBase> MxVariant::GetXmlCollection() const
{
    return dynamic_cast<CXmlCollectionBase *>(GetXmlObject().Get());
}

std::string MxVariant::ToString(char const *format) const
{
    if (format == nullptr)
        format = "";
    switch (m_type)
    {
    case ItemType_i1:
        return CConversions::i1ToString(GetI1());
    case ItemType_i2:
        return CConversions::i2ToString(GetI2());
    case ItemType_i4:
        return CConversions::i4ToString(GetI4());
    case ItemType_i8:
        return CConversions::i8ToString(GetI8());
    case ItemType_ui1:
        return CConversions::ui1ToString(GetUI1());
    case ItemType_ui2:
        return CConversions::ui2ToString(GetUI2());
    case ItemType_ui4:
        return CConversions::ui4ToString(GetUI4());
    case ItemType_ui8:
        return CConversions::ui8ToString(GetUI8());
    case ItemType_r4:
        return CConversions::r4ToString(GetR4(), format);
    case ItemType_r8:
        return CConversions::r8ToString(GetR8(), format);
    case ItemType_year:
        return CConversions::yearToString(GetYear());
    case ItemType_month:
        return CConversions::monthToString(GetMonth());
    case ItemType_day:
        return CConversions::dayToString(GetDay());
    case ItemType_char:
        return CConversions::charToString(GetChar());
    case ItemType_string:
        return CConversions::stringToString(GetStringRef());
    case ItemType_boolean:
        return CConversions::booleanToString(GetBoolean());
    case ItemType_hexBinary:
        return HeapToString<CBinaryData>([](CBinaryData const &v) { return CConversions::hexBinaryToString(v); });
    case ItemType_base64Binary:
        return HeapToString<CBinaryData>([](CBinaryData const &v) { return CConversions::base64BinaryToString(v); });
    case ItemType_duration:
        return HeapToString<CDateTimeSpan>([](CDateTimeSpan const &v) { return CConversions::durationToString(v); });
    case ItemType_yearMonth:
    case ItemType_monthDay:
    case ItemType_date:
    case ItemType_datetime:
    case ItemType_time:
        return HeapToString<CDateTime>([](CDateTime const &v) { return CConversions::dateToString(v); });
    case ItemType_decimal:
        return HeapToString<CDecimal>([format](CDecimal const &v) {
            return *format ? CConversions::decimalToString(v, format) : CConversions::decimalToString(v);
        });
    case ItemType_integer:
        return HeapToString<CBigInteger>([](CBigInteger const &v) { return CConversions::integerToString(v); });
    default:
        ThrowNoTextForm(m_type);
    }
}

void MxVariant::FromString(std::string const &text, ItemType type, CWhitespaceUtils::WhitespaceRule rule)
{
    // Each parse runs before the setter, so a bad text leaves the cell alone.
    switch (type)
    {
    case ItemType_i1:
        return SetI1(CConversions::i1FromString(text, rule));
    case ItemType_i2:
        return SetI2(CConversions::i2FromString(text, rule));
    case ItemType_i4:
        return SetI4(CConversions::i4FromString(text, rule));
    case ItemType_i8:
        return SetI8(CConversions::i8FromString(text, rule));
    case ItemType_ui1:
        return SetUI1(CConversions::ui1FromString(text, rule));
    case ItemType_ui2:
        return SetUI2(CConversions::ui2FromString(text, rule));
    case ItemType_ui4:
        return SetUI4(CConversions::ui4FromString(text, rule));
    case ItemType_ui8:
        return SetUI8(CConversions::ui8FromString(text, rule));
    case ItemType_r4:
        return SetR4(CConversions::r4FromString(text, rule));
    case ItemType_r8:
        return SetR8(CConversions::r8FromString(text, rule));
    case ItemType_char:
        return SetChar(CConversions::charFromString(text, rule));
    case ItemType_string:
        return TakeString(CConversions::stringFromString(text, rule));
    case ItemType_boolean:
        return SetBoolean(CConversions::booleanFromString(text, rule));
    case ItemType_hexBinary:
        return SetHexBinary(CConversions::hexBinaryFromString(text, rule));
    case ItemType_base64Binary:
        return SetBase64Binary(CConversions::base64BinaryFromString(text, rule));
    case ItemType_duration:
        return SetDuration(CConversions::durationFromString(text, rule));
    case ItemType_yearMonth:
        return SetYearMonth(CConversions::yearMonthFromString(text, rule));
    case ItemType_monthDay:
        return SetMonthDay(CConversions::monthDayFromString(text, rule));
    case ItemType_year:
        return SetYear(CConversions::yearFromString(text, rule));
    case ItemType_month:
        return SetMonth(CConversions::monthFromString(text, rule));
    case ItemType_day:
        return SetDay(CConversions::dayFromString(text, rule));
    case ItemType_date:
        return SetDate(CConversions::dateFromString(text, rule));
    case ItemType_datetime:
        return SetDateTime(CConversions::datetimeFromString(text, rule));
    case ItemType_time:
        return SetTime(CConversions::timeFromString(text, rule));
    case ItemType_decimal:
        return SetDecimal(CConversions::decimalFromString(text, rule));
    case ItemType_integer:
        return SetInteger(CConversions::integerFromString(text, rule));
    default:
        // The number is the cell's own type, not the argument.
        ThrowNoTextForm(m_type);
    }
}

} // namespace MxXmlLib
