#pragma once

#include <string>

namespace MxXmlLib
{

// printf-style formatting into a string of exactly the needed size; it builds
// every message of the library. `%s` takes local text, `%S` and `%ls` wide
// text. The Windows size prefix `I64` is accepted as `ll`.
std::string FormatString(char const *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

} // namespace MxXmlLib
