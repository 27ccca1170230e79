#pragma once

// Character classes of the texts the readers and the value parsers take.
// Unlike isdigit and isspace they do not follow the C locale, so a caller's
// setlocale cannot change what a document means.

namespace MxXmlLib
{

inline bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The white space of XML and JSON: space, tab, line feed, carriage return.
inline bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace MxXmlLib
