#pragma once

#include <string>

namespace MxXmlLib
{

// The XSD whiteSpace facet as applied to text on its way in. The functions
// work on bytes and stop at an embedded NUL, since their result is built as a
// terminated C string; the shortcuts that return the text unchanged keep it.
class CWhitespaceUtils
{
public:
    // Generated tables hold these numbers.
    enum class WhitespaceRule : int
    {
        None = 0,
        Preserve = 1,
        Replace = 2,
        Collapse = 3
    };

    // Rule 0 gives a copy of `text`; a number outside 0 to 3 raises
    // CMxInvalidValueException "Unknown WhitespaceRule".
    static std::string ApplyRule(WhitespaceRule rule, std::string const &text);

    // Codes 9, 10, 13 and 32 only.
    static bool IsWhiteSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    // Line ends normalised: CR LF and a lone CR become LF. The string form
    // returns the text as it is when it holds no CR.
    static std::string Preserve(std::string const &text);
    static std::string Preserve(char const *text, int length);
    // CR LF becomes one blank, a lone CR, LF or TAB one blank each.
    static std::string Replace(std::string const &text);
    // Runs of white space become one blank, none at either end.
    static std::string Collapse(std::string const &text);
};

} // namespace MxXmlLib
