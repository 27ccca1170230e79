#pragma once

// The library's one UTF-8 codec: validation, decoding to wide text (UTF-32
// here) and encoding from code points. Strict in both directions: no
// overlong forms, no surrogates, nothing above U+10FFFF. Internal.

#include <cstddef>
#include <string>

namespace MxXmlLib
{
namespace Utf8
{

constexpr wchar_t kReplacement = 0xFFFD;

// Bytes of the UTF-8 form of a scalar value.
constexpr std::size_t EncodedSize(unsigned long codePoint)
{
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

// Writes the scalar value `codePoint` (no surrogate, at most U+10FFFF) to
// `out`, which has room for EncodedSize bytes, and returns their count.
std::size_t Encode(unsigned long codePoint, unsigned char *out);

// Whether the bytes are strict UTF-8.
bool IsWellFormed(unsigned char const *text, std::size_t length);

// Decodes into `out` (replacing it). Malformed input gives one U+FFFD for
// each maximal ill-formed subpart, the usual practice of UTF-8 decoders.
void DecodeToWide(unsigned char const *text, std::size_t length, std::wstring &out);

// Encodes wide text into `out` (replacing it); a surrogate or a value above
// U+10FFFF becomes U+FFFD.
void EncodeFromWide(wchar_t const *text, std::size_t length, std::string &out);

} // namespace Utf8
} // namespace MxXmlLib
