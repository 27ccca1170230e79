#include "values/BinaryData.h"

#include "runtime/CriticalSection.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"
#include "runtime/Utf8Codec.h"
#include "runtime/platform/Platform.h"
#include "values/Base64.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>

namespace MxXmlLib
{

struct CBinaryData::Block
{
    unsigned char *data;     // from new[]
    std::uint32_t length;    // bytes in use
    std::uint32_t capacity;  // bytes the block may fill before it grows
    std::int32_t refCount;   // changed under `lock`
    CMXCriticalSection lock;
    // Bytes actually behind `data`, at least `length`: one more than the
    // capacity for every buffer this class allocates, so that the byte behind
    // the data exists; only `length` for a buffer adopted from the caller.
    std::size_t allocated;

    // Other threads may copy or release handles of the same block at any
    // moment, so even a read of the count takes the lock.
    std::int32_t Count()
    {
        lock.Enter();
        std::int32_t const count = refCount;
        lock.Leave();
        return count;
    }
};

namespace
{

constexpr unsigned long kMaxLength = 0xFFFFFFFFul;
constexpr unsigned long kMinCapacity = 8192;

void CheckLength(unsigned long long length)
{
    if (length > kMaxLength)
        throw CMxOverFlowException(
            FormatString("The binary data cannot hold more than 4294967295 bytes [%llu].", length));
}

// Room for twice the length, at least 8 KB, within 32 bits.
unsigned long CapacityFor(unsigned long long length)
{
    return static_cast<unsigned long>(std::min<unsigned long long>(std::max<unsigned long long>(2 * length, kMinCapacity), kMaxLength));
}

// Uninitialised: a block's spare room is large (8 KB at least) and is only
// ever read after it is written. The one byte behind the data must read as 0,
// so whoever fills a buffer sets it (see Terminate).
unsigned char *NewBytes(std::size_t size)
{
    return new unsigned char[size];
}

void Terminate(unsigned char *bytes, std::size_t length)
{
    bytes[length] = 0;
}

// --- wide text to UTF-8 ---------------------------------------------------------

// The code point at text[i], advancing i past its units; -1 for a lone
// surrogate or a value beyond Unicode. The text ends with a zero, so the unit
// after a high surrogate can always be read.
long NextCodePoint(wchar_t const *text, std::size_t &i)
{
    unsigned long const unit = static_cast<std::uint32_t>(text[i]);
    if (unit >= 0xD800 && unit <= 0xDBFF)
    {
        unsigned long const low = static_cast<std::uint32_t>(text[i + 1]);
        if (low < 0xDC00 || low > 0xDFFF)
            return -1;
        i += 2;
        return static_cast<long>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
    }
    if ((unit >= 0xDC00 && unit <= 0xDFFF) || unit > 0x10FFFF)
        return -1;
    ++i;
    return static_cast<long>(unit);
}

// Bytes of the UTF-8 form, 0 when a unit is bad.
std::size_t MeasureUtf8(wchar_t const *text, std::size_t units)
{
    std::size_t size = 0;
    for (std::size_t i = 0; i < units;)
    {
        long const c = NextCodePoint(text, i);
        if (c < 0)
            return 0;
        size += Utf8::EncodedSize(static_cast<unsigned long>(c));
    }
    return size;
}

// Fills at most `size` bytes and stops at the first bad unit.
std::size_t WriteUtf8(wchar_t const *text, std::size_t units, unsigned char *out, std::size_t size)
{
    std::size_t n = 0;
    for (std::size_t i = 0; i < units;)
    {
        long const c = NextCodePoint(text, i);
        if (c < 0 || n + Utf8::EncodedSize(static_cast<unsigned long>(c)) > size)
            break;
        n += Utf8::Encode(static_cast<unsigned long>(c), out + n);
    }
    return n;
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

// --- blocks ---------------------------------------------------------------------

CBinaryData::Block *CBinaryData::Adopt(unsigned char *data, unsigned long length, unsigned long capacity,
                                       bool spare)
{
    Block *b = new Block;
    b->data = data;
    b->length = static_cast<std::uint32_t>(length);
    b->capacity = static_cast<std::uint32_t>(capacity);
    b->refCount = 1;
    b->allocated = spare ? static_cast<std::size_t>(std::max(length, capacity)) + 1 : length;
    return b;
}

CBinaryData::Block *CBinaryData::CopyOf(unsigned char const *data, unsigned long length)
{
    CheckLength(length);
    unsigned long const capacity = CapacityFor(length);
    std::unique_ptr<unsigned char[]> bytes(NewBytes(static_cast<std::size_t>(capacity) + 1));
    if (length)
        std::memcpy(bytes.get(), data, length);
    Terminate(bytes.get(), length);
    Block *b = Adopt(bytes.get(), length, capacity, true);
    bytes.release();
    return b;
}

void CBinaryData::Unshare()
{
    if (!block || block->Count() < 2)
        return;
    Block *const copy = CopyOf(block->data, block->length);
    Block *const old = block;
    old->lock.Enter();
    int const left = --old->refCount;
    old->lock.Leave();
    if (left == 0) // the other holders let go meanwhile
    {
        delete[] old->data;
        delete old;
    }
    block = copy;
}

void CBinaryData::AppendToBlock(unsigned char const *data, unsigned long length)
{
    std::int32_t const count = block->Count();
    if (count >= 2)
        throw CMxException(FormatString("Failed to append. [RefCount=%d]", count));
    unsigned long long const total = static_cast<unsigned long long>(block->length) + length;
    CheckLength(total);
    if (total > block->capacity)
    {
        unsigned long const capacity = static_cast<unsigned long>(std::min<unsigned long long>(2 * total, kMaxLength));
        unsigned char *const bytes = NewBytes(static_cast<std::size_t>(capacity) + 1);
        std::memcpy(bytes, block->data, block->length);
        // Copied before the old allocation goes: `data` may lie inside it.
        std::memcpy(bytes + block->length, data, length);
        delete[] block->data;
        block->data = bytes;
        block->capacity = static_cast<std::uint32_t>(capacity);
        block->allocated = static_cast<std::size_t>(capacity) + 1;
    }
    else
    {
        std::memmove(block->data + block->length, data, length); // `data` may lie inside the block
    }
    block->length = static_cast<std::uint32_t>(total);
    // A buffer adopted from the caller may have no byte behind its data.
    if (total < block->allocated)
        Terminate(block->data, static_cast<std::size_t>(total));
}

// --- construction -----------------------------------------------------------------

CBinaryData::CBinaryData() : block(nullptr)
{
}

CBinaryData::CBinaryData(CBinaryData const &other) : block(other.block)
{
    if (block)
    {
        block->lock.Enter();
        ++block->refCount;
        block->lock.Leave();
    }
}

CBinaryData::CBinaryData(unsigned char *const data, unsigned long length, bool takeOwnership) : block(nullptr)
{
    if (!takeOwnership)
    {
        if (length)
            block = CopyOf(data, length);
        return;
    }
    std::unique_ptr<unsigned char[]> owned(data);
    if (length == 0)
        return;
    CheckLength(length);
    block = Adopt(data, length, length, false);
    owned.release();
}

CBinaryData::CBinaryData(char const *text) : block(nullptr)
{
    if (text && *text)
        block = CopyOf(reinterpret_cast<unsigned char const *>(text), std::strlen(text));
}

CBinaryData::CBinaryData(wchar_t const *text) : block(nullptr)
{
    if (!text || !*text)
        return;
    std::size_t const units = std::wcslen(text);
    bool ascii = true;
    for (std::size_t i = 0; i < units && ascii; ++i)
        ascii = text[i] >= 0 && text[i] < 128;
    std::size_t const size = ascii ? units : MeasureUtf8(text, units);
    if (size == 0)
        return;
    CheckLength(size);
    std::unique_ptr<unsigned char[]> bytes(NewBytes(size + 1));
    std::size_t const written = WriteUtf8(text, units, bytes.get(), size);
    if (written == 0)
        return;
    Terminate(bytes.get(), written);
    block = Adopt(bytes.get(), written, written, true);
    bytes.release();
}

CBinaryData::~CBinaryData()
{
    Clear();
}

CBinaryData &CBinaryData::operator=(CBinaryData const &other)
{
    // Clear first: on self-assignment the source is empty by the time it is read.
    Clear();
    block = other.block;
    if (block)
    {
        block->lock.Enter();
        ++block->refCount;
        block->lock.Leave();
    }
    return *this;
}

// --- access ----------------------------------------------------------------------

unsigned char *CBinaryData::GetData()
{
    return block ? block->data : nullptr;
}

unsigned char const *CBinaryData::GetData() const
{
    return block ? block->data : nullptr;
}

unsigned long CBinaryData::GetLength() const
{
    return block ? block->length : 0;
}

void CBinaryData::Clear()
{
    if (!block)
        return;
    block->lock.Enter();
    int const left = --block->refCount;
    block->lock.Leave();
    if (left == 0)
    {
        delete[] block->data;
        delete block;
    }
    block = nullptr;
}

void CBinaryData::SetBuffer(unsigned char const *data, unsigned long length)
{
    // The copy is made before the old block goes, as `data` may lie inside it.
    Block *const copy = length ? CopyOf(data, length) : nullptr;
    Clear();
    block = copy;
}

void CBinaryData::SetBuffer(char const *text)
{
    SetBuffer(reinterpret_cast<unsigned char const *>(text), text ? std::strlen(text) : 0);
}

void CBinaryData::Append(unsigned char const *data, unsigned long length)
{
    if (length == 0)
        return;
    if (!block)
    {
        block = CopyOf(data, length);
        return;
    }
    Unshare(); // a shared block stays alive in its other handles, and `data` with it
    AppendToBlock(data, length);
}

void CBinaryData::Append(char c)
{
    Append(reinterpret_cast<unsigned char const *>(&c), 1);
}

void CBinaryData::Append(char const *text)
{
    if (text)
        Append(reinterpret_cast<unsigned char const *>(text), std::strlen(text));
}

void CBinaryData::Append(std::string const &text)
{
    Append(reinterpret_cast<unsigned char const *>(text.data()), text.size());
}

void CBinaryData::Append(CBinaryData const &other)
{
    Append(other.GetData(), other.GetLength());
}

unsigned char *CBinaryData::ReleaseData()
{
    if (!block)
        return nullptr;
    Unshare();
    block->lock.Enter();
    int const left = --block->refCount;
    block->lock.Leave();
    if (left > 0)
    {
        block->lock.Enter();
        ++block->refCount;
        block->lock.Leave();
        throw CMxException(FormatString("Failed to release data. [RefCount=%d]", left));
    }
    unsigned char *const data = block->data;
    delete block;
    block = nullptr;
    return data;
}

bool CBinaryData::operator==(CBinaryData const &other) const
{
    if (!block || !other.block)
        return !block && !other.block;
    return block->length == other.block->length &&
           (block->length == 0 || std::memcmp(block->data, other.block->data, block->length) == 0);
}

bool CBinaryData::operator!=(CBinaryData const &other) const
{
    return !(*this == other);
}

unsigned char CBinaryData::operator[](int index) const
{
    if (!block || index < 0 || static_cast<unsigned long>(index) > block->length ||
        static_cast<std::size_t>(index) >= block->allocated)
        throw CMxException(FormatString("Index Out of range [%d]", index));
    return block->data[index];
}

unsigned char &CBinaryData::operator[](int index)
{
    Unshare();
    if (!block || index < 0 || static_cast<unsigned long>(index) > block->length ||
        static_cast<std::size_t>(index) >= block->allocated)
        throw CMxException(FormatString("Index Out of range [%d]", index));
    return block->data[index];
}

// --- hex ---------------------------------------------------------------------------

std::string CBinaryData::GetAsHexString() const
{
    return block ? GetAsHexString(block->data, block->length) : std::string();
}

std::string CBinaryData::GetAsHexString(unsigned char const *data, unsigned long length)
{
    static char const kDigits[] = "0123456789ABCDEF";
    std::string text;
    if (!data)
        return text;
    text.resize(2 * static_cast<std::size_t>(length));
    for (unsigned long i = 0; i < length; ++i)
    {
        text[2 * i] = kDigits[data[i] >> 4];
        text[2 * i + 1] = kDigits[data[i] & 15];
    }
    return text;
}

unsigned long CBinaryData::ConvertToHexData(std::string const &text, unsigned char **out)
{
    *out = nullptr;
    if (text.size() % 2 != 0)
        throw CMxException(FormatString("Invalid length in hex string"));
    if (text.empty())
        return 0;
    std::size_t const count = text.size() / 2;
    CheckLength(count);
    std::unique_ptr<unsigned char[]> bytes(NewBytes(count + 1));
    for (std::size_t i = 0; i < count; ++i)
    {
        int const high = HexValue(text[2 * i]);
        if (high < 0)
            throw CMxException(FormatString("Invalid char in hex string [%c]", text[2 * i]));
        int const low = HexValue(text[2 * i + 1]);
        if (low < 0)
            throw CMxException(FormatString("Invalid char in hex string [%c]", text[2 * i + 1]));
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    Terminate(bytes.get(), count);
    *out = bytes.release();
    return static_cast<unsigned long>(count);
}

void CBinaryData::SetAsHexString(std::string const &text)
{
    Clear();
    unsigned char *bytes = nullptr;
    unsigned long const count = ConvertToHexData(text, &bytes);
    if (count)
        block = Adopt(bytes, count, count, true); // ConvertToHexData leaves a byte behind
}

void CBinaryData::SetAsHexString(char const *text)
{
    SetAsHexString(std::string(text ? text : ""));
}

// --- base64 ----------------------------------------------------------------------

std::string CBinaryData::GetAsBase64() const
{
    if (!block)
        return std::string();
    return CBase64(block->data, block->length).Encode();
}

void CBinaryData::SetAsBase64(std::string const &text)
{
    Clear();
    // Input length plus one: the decoded bytes are fewer, so a byte behind
    // them always exists.
    std::size_t const size = text.size() + 1;
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[size]);
    std::size_t const count = CBase64(text.data(), text.size()).Decode(bytes.get());
    std::memset(bytes.get() + count, 0, size - count);
    CheckLength(count);
    block = Adopt(bytes.get(), static_cast<unsigned long>(count), static_cast<unsigned long>(count), true);
    bytes.release();
}

void CBinaryData::SetAsBase64(char const *text)
{
    SetAsBase64(std::string(text ? text : ""));
}

// --- local text --------------------------------------------------------------------

CBinaryData LocalToUtf8(char const *text)
{
    if (!text)
        return CBinaryData();
    if (IsASCIIOnly())
        return CBinaryData(text);
    std::size_t const length = std::strlen(text);
    // Local text that is already well-formed UTF-8 converts to itself.
    if (IsUtf8PassThrough() && IsWellFormedUtf8(reinterpret_cast<unsigned char const *>(text), length))
        return CBinaryData(text);
    std::wstring wide;
    if (!Platform::DecodeToWide(GetLocalCharEncoding(), text, length, wide))
        return CBinaryData();
    return CBinaryData(wide.c_str());
}

CBinaryData LocalToUtf16(char const *text)
{
    CBinaryData result;
    if (!text || !*text)
        return result;
    std::wstring wide;
    if (!Platform::DecodeToWide(GetLocalCharEncoding(), text, std::strlen(text), wide) || wide.empty())
        return result;
    std::size_t units = 0;
    for (wchar_t c : wide)
        units += static_cast<std::uint32_t>(c) > 0xFFFF && static_cast<std::uint32_t>(c) <= 0x10FFFF ? 2 : 1;
    CheckLength(4 * static_cast<unsigned long long>(wide.size()));
    unsigned long const capacity = std::max<unsigned long>(4 * wide.size(), kMinCapacity);
    std::unique_ptr<unsigned char[]> bytes(NewBytes(static_cast<std::size_t>(capacity) + 1));
    unsigned char *out = bytes.get();
    auto put = [&out](unsigned unit) {
        *out++ = static_cast<unsigned char>(unit & 0xFF);
        *out++ = static_cast<unsigned char>(unit >> 8);
    };
    for (wchar_t c : wide)
    {
        std::uint32_t const code = static_cast<std::uint32_t>(c);
        if (code > 0x10FFFF)
            put(0xFFFD);
        else if (code > 0xFFFF)
        {
            put(0xD800 + ((code - 0x10000) >> 10));
            put(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
        else
            put(code);
    }
    Terminate(bytes.get(), 2 * units);
    result.block = CBinaryData::Adopt(bytes.get(), static_cast<unsigned long>(2 * units), capacity, true);
    bytes.release();
    return result;
}

} // namespace MxXmlLib
