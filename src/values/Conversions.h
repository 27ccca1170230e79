#pragma once

#include "values/BinaryData.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"
#include "values/Decimal.h"
#include "values/WhitespaceUtils.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

// Value <-> text for every XSD primitive; the texts and messages are those
// that every row writes and reads. Nothing here depends on the C locale.
//
// From text: the whitespace rule runs first, then the parse. The parse reads
// the text as a C string (an embedded NUL ends it) with the acceptance of the
// C runtime's strtol family and strtod: leading white space and a sign pass,
// and an unsigned parse wraps a minus sign around ("-1" is 4294967295 as ui4).
// Every failure of the plain primitives is a CMxInvalidValueException; the
// value classes raise their own errors, which pass through unchanged.
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

    // The value classes.
    static std::string hexBinaryToString(CBinaryData const &value);    // upper-case hex
    static std::string base64BinaryToString(CBinaryData const &value); // base64, no line breaks
    static std::string durationToString(CDateTimeSpan const &value);
    // The XSD form of whatever form the value has, for every date and time type.
    static std::string dateToString(CDateTime const &value);
    static std::string decimalToString(CDecimal const &value);
    // An empty `format` prints all places held; otherwise its leading integer,
    // read as atoi does ("2" or "2f"; none is 0), is the number of places.
    static std::string decimalToString(CDecimal const &value, std::string const &format);
    static std::string integerToString(CBigInteger const &value);

    static CBinaryData hexBinaryFromString(std::string const &text, WhitespaceRule rule);
    static CBinaryData base64BinaryFromString(std::string const &text, WhitespaceRule rule);
    static CDateTimeSpan durationFromString(std::string const &text, WhitespaceRule rule);
    static CDateTime datetimeFromString(std::string const &text, WhitespaceRule rule);
    static CDateTime timeFromString(std::string const &text, WhitespaceRule rule);
    // These three, and the year, month and day below, accept every form
    // without a time part: the form of the result is the one the text has, so
    // yearMonthFromString("2001-02-03") is a date. Only reading a field the
    // form lacks fails (CMxInvalidStateException from CDateTime).
    static CDateTime dateFromString(std::string const &text, WhitespaceRule rule);
    static CDateTime yearMonthFromString(std::string const &text, WhitespaceRule rule);
    static CDateTime monthDayFromString(std::string const &text, WhitespaceRule rule);
    // The signed year taken as unsigned: "-0001" is 65535.
    static std::uint16_t yearFromString(std::string const &text, WhitespaceRule rule);
    static std::uint8_t monthFromString(std::string const &text, WhitespaceRule rule);
    static std::uint8_t dayFromString(std::string const &text, WhitespaceRule rule);
    static CDecimal decimalFromString(std::string const &text, WhitespaceRule rule);
    static CBigInteger integerFromString(std::string const &text, WhitespaceRule rule);
};

} // namespace MxXmlLib
