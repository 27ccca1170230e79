#pragma once

// Reads the strict JSON form that CJsonStrictWriter writes (RFC 8259, one key
// per element, arrays for repeats, "#seq" for order) and translates it to XML
// text in one pass, so that it then goes the ordinary way of XML input. Any
// departure from RFC 8259 or from that form (comments, trailing text, an
// array where an element value belongs, a key that is no XML name, a control
// character that XML cannot carry, nesting deeper than the XML reader takes)
// raises CMxValidationException with the line, the position and the JSON path
// of the place ("$.order.line[2].name").

#include "json/JsonContext.h"

#include <string>

namespace MxXmlLib
{

// `json` is in the local encoding; "\u" escapes are decoded to it. With a
// root element name, the whole text is that element's value.
std::string ConvertStrictJsonToXml(std::string const &json, CJsonContext const &options);

} // namespace MxXmlLib
