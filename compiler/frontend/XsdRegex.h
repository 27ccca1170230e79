#pragma once

#include <string>
#include <vector>

namespace MxCompiler
{

// Rewrites an XSD 1.0 regular expression as a PCRE pattern with XSD's
// meaning: \d, \w, \i and \c over all of Unicode, block escapes, character
// class subtraction, '.' that stops at CR as well as LF, and '^' and '$' as
// plain characters. The result is plain ASCII and holds none of the
// sequences that the run-time rewrites before it compiles a pattern (\i, \c,
// \p{Is...}), so it reaches PCRE unchanged. Raises std::invalid_argument
// with the reason for a pattern it cannot read.
std::string XsdRegexToPcre(std::string const &xsdPattern);

// The patterns of the steps of a derivation chain all hold, so they become
// one pattern: each but the last as a look-ahead over the whole value.
std::string AllOfPcre(std::vector<std::string> const &pcrePatterns);

} // namespace MxCompiler
