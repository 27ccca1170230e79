#pragma once

#include "values/WhitespaceUtils.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

// Value <-> text for the plain XSD primitives; the texts and messages are
// those that every row writes and reads. Nothing here depends on the C locale.
//
// From text: the whitespace rule runs first, then the parse. The parse reads
// the text as a C string (an embedded NUL ends it) with the acceptance of the
// C runtime's strtol family and strtod: leading white space and a sign pass,
// and an unsigned parse wraps a minus sign around ("-1" is 4294967295 as ui4).
// Every failure is a CMxInvalidValueException.
class CConversions
{
public:
    using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;

    static std::string i1ToString(std::int8_t value);
    static std::string i2ToString(std::int16_t value);
    static std::string i4ToString(std::int32_t value);
    static std::string i8ToString(std::int64_t value);
    static std::string ui1ToString(std::uint8_t value);
    static std::string ui2ToString(std::uint16_t value);
    static std::string ui4ToString(std::uint32_t value);
    static std::string ui8ToString(std::uint64_t value);

    // "NaN", "INF", "-INF", else the printf-style `format` (default "%.7g" for
    // r4, "%.16g" for r8) cut at 31 or 47 characters. A format takes one
    // floating conversion (e, f, g, a and their capitals); other conversions
    // are copied as they stand, as no argument exists for them.
    static std::string r4ToString(float value);
    static std::string r4ToString(float value, char const *format);
    static std::string r8ToString(double value);
    static std::string r8ToString(double value, char const *format);

    static std::string yearToString(std::uint16_t value);  // "%u"
    static std::string monthToString(std::uint8_t value);  // "--%02u"
    static std::string dayToString(std::uint8_t value);    // "---%02u"
    static std::string charToString(char value);           // NUL gives ""
    static std::string stringToString(std::string const &value);
    static std::string booleanToString(bool value);

    static std::int8_t i1FromString(std::string const &text, WhitespaceRule rule);
    static std::int16_t i2FromString(std::string const &text, WhitespaceRule rule);
    static std::int32_t i4FromString(std::string const &text, WhitespaceRule rule);
    static std::int64_t i8FromString(std::string const &text, WhitespaceRule rule);
    static std::uint8_t ui1FromString(std::string const &text, WhitespaceRule rule);
    static std::uint16_t ui2FromString(std::string const &text, WhitespaceRule rule);
    static std::uint32_t ui4FromString(std::string const &text, WhitespaceRule rule);
    static std::uint64_t ui8FromString(std::string const &text, WhitespaceRule rule);
    // "NaN", "1.#QNAN", "-NAN", "INF", "-INF" exactly, else strtod's forms; a
    // number beyond the range is infinity, without error.
    static float r4FromString(std::string const &text, WhitespaceRule rule);
    static double r8FromString(std::string const &text, WhitespaceRule rule);
    // Exactly one byte after the rule.
    static char charFromString(std::string const &text, WhitespaceRule rule);
    static std::string stringFromString(std::string const &text, WhitespaceRule rule);
    // "true", "false", "1", "0", letters in any case.
    static bool booleanFromString(std::string const &text, WhitespaceRule rule);
};

} // namespace MxXmlLib
