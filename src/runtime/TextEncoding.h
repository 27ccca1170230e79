#pragma once

// Strings inside the library are narrow text in one process-wide local
// encoding, named by a code-page number (65001, UTF-8, unless set). Both
// settings are plain variables meant to be set once at start-up.

#include <cstddef>
#include <string>

namespace MxXmlLib
{

// When set, UTF-8 input is taken byte for byte, without conversion.
void ASCIIOnly(bool asciiOnly);
bool IsASCIIOnly();

void SetLocalCharEncoding(unsigned int codePage);
unsigned int GetLocalCharEncoding();
// True when UTF-8 input reaches local text unchanged: ASCIIOnly is set, or
// the local encoding is UTF-8 (readers then copy well-formed input as it is).
bool IsUtf8PassThrough();
// Strict UTF-8: no overlong forms, surrogates or values above U+10FFFF. Such
// text is its own local form wherever IsUtf8PassThrough() holds.
bool IsWellFormedUtf8(unsigned char const *text, std::size_t length);

// UTF-8 to local text. The result ends at the first zero byte. Characters the
// local encoding cannot show become '?'. The scratch buffers, when given,
// spare an allocation for short pieces.
void Utf8ToLocal(std::string &result, unsigned char const *utf8, unsigned length, wchar_t *wideScratch,
                 unsigned wideScratchCount, char *narrowScratch, unsigned narrowScratchSize);
void Utf8ToLocal(std::string &result, unsigned char const *utf8, unsigned length);
void Utf8ToLocal(std::string &result, char const *utf8); // zero-terminated
std::string Utf8ToLocal(char const *utf8, unsigned length);

// Wide text (wchar_t is UTF-32 here) to local text, ending at the first zero.
std::string Utf16ToLocal(wchar_t const *text, unsigned length);

} // namespace MxXmlLib
