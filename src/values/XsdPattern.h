#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace MxXmlLib
{

// Whether the whole of `value` (local text) matches the XSD pattern (UTF-8).
// The pattern is translated to PCRE for the XSD escapes \i \I \c \C and four
// Unicode blocks, anchored at both ends, and compiled anew for every call.
// A pattern that does not compile raises CMxException
// "Invalid Regular Expression: <value> Error: '<reason>'".
bool MatchesXsdPattern(std::string const &pattern, std::string const &value);

// An XSD pattern (UTF-8) compiled once, for a caller that checks many values
// against the same pattern. Matches answers as MatchesXsdPattern does, and
// raises the same message when the pattern does not compile. Matching does
// not change the object, so threads may share one.
class CXsdPattern
{
public:
    // `forManyValues` also has PCRE compile the pattern to machine code,
    // which costs more once and matches several times faster.
    explicit CXsdPattern(std::string const &pattern, bool forManyValues = false);
    ~CXsdPattern();
    CXsdPattern(CXsdPattern const &) = delete;
    CXsdPattern &operator=(CXsdPattern const &) = delete;

    bool Matches(std::string const &value) const;

private:
    void *m_compiled; // the PCRE form; null when it did not compile
    void *m_study;    // its machine code form, or null
    std::string m_error;
    int m_captures;
};

// The compiled form of one facet's pattern (local text), made on first use and
// kept from then on, for the callers that opt in to reusing compiled
// patterns. Threads may share one: the first compiled form stored stays.
class CCompiledPatternSlot
{
public:
    CXsdPattern const &Get(std::string const &localPattern) const;

private:
    mutable std::shared_ptr<CXsdPattern const> m_compiled;
};

// Local text as UTF-8, up to its first zero byte, as LocalToUtf8 gives it:
// the text itself where it is its own UTF-8 form, else `converted`.
std::string_view LocalToUtf8View(std::string const &local, std::string &converted);

// The PCRE form of an XSD pattern, before anchoring.
std::string TranslateXsdPattern(std::string const &pattern);
// The same between `before` and `after`, built in one string.
std::string TranslateXsdPattern(std::string const &pattern, std::string_view before, std::string_view after);

} // namespace MxXmlLib
