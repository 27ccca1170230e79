#pragma once

// The library's byte buffer: the value of hexBinary and base64Binary, and the
// result of the stream writers. Copies share one counted block; a write
// through a shared handle first takes a private copy.

#include <cstdint>
#include <string>

namespace MxXmlLib
{

// A handle is empty (no block) or holds a block, which may have length 0
// (SetAsBase64 of bad text gives one): an empty handle and a block of length 0
// are unequal. Lengths are limited to 32 bits; a longer buffer raises
// CMxOverFlowException.
class CBinaryData
{
public:
    CBinaryData();
    CBinaryData(CBinaryData const &other);
    // A length of 0 makes no block (an adopted buffer is then freed at once).
    // `takeOwnership` adopts `data`, which must come from new[], without a
    // copy; otherwise the bytes are copied.
    CBinaryData(unsigned char *const data, unsigned long length, bool takeOwnership);
    // The bytes without the terminator; no block for "" or null.
    CBinaryData(char const *text);
    // Wide text as UTF-8. Each wchar_t is one unit: UTF-16 surrogate pairs
    // join, other values up to 0x10FFFF are code points (wide text is UTF-32
    // on this platform). A lone surrogate or a unit above 0x10FFFF gives an
    // empty handle, as does "" or null.
    CBinaryData(wchar_t const *text);
    virtual ~CBinaryData();

    // Clears first, then shares: assigning a handle to itself empties it.
    CBinaryData &operator=(CBinaryData const &other);

    // Neither getter un-shares: a write through GetData reaches every handle
    // on the block.
    unsigned char *GetData();
    unsigned char const *GetData() const;
    unsigned long GetLength() const;
    void Clear();

    // A copy of the bytes in a new block (none for a length of 0). The bytes
    // may lie inside this handle's own block.
    void SetBuffer(unsigned char const *data, unsigned long length);
    void SetBuffer(char const *text);

    // Un-shares, then adds; growing past the capacity doubles the new length.
    // The bytes may lie inside this handle's own block.
    void Append(unsigned char const *data, unsigned long length);
    void Append(char c);
    void Append(char const *text);
    void Append(std::string const &text);
    void Append(CBinaryData const &other);

    // Hands the bytes (from new[]) to the caller and empties the handle;
    // a shared block is copied first. Null for an empty handle.
    unsigned char *ReleaseData();

    bool operator==(CBinaryData const &other) const;
    bool operator!=(CBinaryData const &other) const;

    // "Index Out of range [%d]" for no block, a negative index or one past
    // GetLength(). Index GetLength() itself is the byte behind the data, which
    // every block this class allocates has; a block adopted from the caller
    // has none, so there it raises too. The non-const form un-shares first.
    unsigned char operator[](int index) const;
    unsigned char &operator[](int index);

    // Two upper-case hex digits a byte; "" for an empty handle or null data.
    std::string GetAsHexString() const;
    static std::string GetAsHexString(unsigned char const *data, unsigned long length);
    // Clears, then reads two hex digits (either case) a byte. An odd length or
    // another character raises CMxException; "" leaves the handle empty.
    void SetAsHexString(std::string const &text);
    void SetAsHexString(char const *text);

    std::string GetAsBase64() const;
    // Clears, then decodes (see CBase64::Decode). A stray character gives a
    // block of length 0, without an exception.
    void SetAsBase64(std::string const &text);
    void SetAsBase64(char const *text);

protected:
    // Parses hex text into a new[] buffer given to `*out` (null for "") and
    // returns its byte count.
    static unsigned long ConvertToHexData(std::string const &text, unsigned char **out);

private:
    friend CBinaryData LocalToUtf16(char const *text);
    struct Block;

    // Adopts `data`; `capacity` is what the caller may count on, `spare`
    // whether one byte behind `length` is allocated too.
    static Block *Adopt(unsigned char *data, unsigned long length, unsigned long capacity, bool spare);
    static Block *CopyOf(unsigned char const *data, unsigned long length);
    void Unshare();
    void AppendToBlock(unsigned char const *data, unsigned long length);

    Block *block;
};

// Local text (see SetLocalCharEncoding) as UTF-8; with ASCIIOnly set, the
// bytes as they stand. Empty for null, "" or an unknown code page.
CBinaryData LocalToUtf8(char const *text);
// Local text as UTF-16 little-endian without a byte order mark: characters
// beyond U+FFFF become surrogate pairs, so the length is twice the UTF-16
// units. Ignores ASCIIOnly. Empty for null, "" or an unknown code page.
CBinaryData LocalToUtf16(char const *text);

} // namespace MxXmlLib
