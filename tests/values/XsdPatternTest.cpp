#include "values/XsdPattern.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

#include <gtest/gtest.h>

#include <string>
#include <iterator>
#include <utility>
#include <vector>

using namespace MxXmlLib;

namespace
{
struct PatternCase
{
    char const *pattern;
    char const *value;
    bool matches;
};

// Whole-value matching of the XSD pattern language as translated for PCRE.
constexpr PatternCase kPatterns[] = {
    // anchoring by the wrapper
    {"a", "a", true},
    {"a", "ab", false},
    {"a", "ba", false},
    {"a", "", false},
    {"", "", true},
    {"", "x", false},
    {"a|b", "b", true},
    {"a|b", "ab", false},
    {"ab|cd", "abcd", false},
    {"ab|cd", "cd", true},
    {".*", "anything at all", true},
    {".", "\n", false},
    // quantifiers
    {"a*", "", true},
    {"a*", "aaaa", true},
    {"a+", "", false},
    {"a+", "aa", true},
    {"a?", "", true},
    {"a?", "aa", false},
    {"a{3}", "aaa", true},
    {"a{3}", "aa", false},
    {"a{2,}", "aaaaa", true},
    {"a{2,}", "a", false},
    {"a{1,2}", "aa", true},
    {"a{1,2}", "aaa", false},
    {"(ab)+", "ababab", true},
    {"(ab)+", "ababa", false},
    {"(a|b){2}c", "bac", true},
    {"(a|b){2}c", "abbc", false},
    // character classes
    {"[abc]", "b", true},
    {"[abc]", "d", false},
    {"[^abc]", "d", true},
    {"[^abc]", "a", false},
    {"[a-z]+", "hello", true},
    {"[a-z]+", "Hello", false},
    {"[A-Za-z0-9]{3}", "a9Z", true},
    {"[0-9]{3}-[0-9]{4}", "555-1234", true},
    {"[0-9]{3}-[0-9]{4}", "5551234", false},
    {"[\\-+]?[0-9]+", "-12", true},
    {"[\\-+]?[0-9]+", "+12", true},
    {"[\\-+]?[0-9]+", "*12", false},
    {"[a-c-]+", "a-b", true},
    // multi-character escapes that PCRE reads as XSD does
    {"\\d+", "0123456789", true},
    {"\\d+", "12a", false},
    {"\\D+", "abc", true},
    {"\\D", "1", false},
    {"\\s", " ", true},
    {"\\s", "\t", true},
    {"\\s", "x", false},
    {"\\S+", "no-space", true},
    {"\\S+", "a b", false},
    {"\\w+", "word_1", true},
    {"\\w", "-", false},
    {"\\W", "-", true},
    {"\\W", "a", false},
    // single-character escapes
    {"\\.", ".", true},
    {"\\.", "a", false},
    {"a\\*b", "a*b", true},
    {"\\(x\\)", "(x)", true},
    {"\\[\\]", "[]", true},
    {"\\{1\\}", "{1}", true},
    {"\\?", "?", true},
    {"\\+", "+", true},
    {"\\|", "|", true},
    {"\\^\\$", "^$", true},
    {"a\\nb", "a\nb", true},
    {"a\\tb", "a\tb", true},
    // \i: an initial name character
    {"\\i", "a", true},
    {"\\i", "_", true}, // \w holds the underscore
    {"\\i", ":", true},
    {"\\i", "1", false},
    {"\\i", "-", false},
    {"\\i\\c*", "name", true},
    {"\\i\\c*", "xs:element", true},
    {"\\i\\c*", "a.b-c_d", true},
    {"\\i\\c*", "1abc", false},
    {"\\i\\c*", "a b", false},
    // \I: not an initial name character
    {"\\I", "1", true},
    {"\\I", "-", true},
    {"\\I", "a", false},
    {"\\I", "_", false},
    // \c: a name character
    {"\\c", "a", true},
    {"\\c", "9", true},
    {"\\c", ".", true},
    {"\\c", "-", true},
    {"\\c", ":", true},
    {"\\c", "_", true},
    {"\\c", " ", false},
    {"\\c", "!", false},
    // \C: not a name character
    {"\\C", " ", true},
    {"\\C", "!", true},
    {"\\C", "a", false},
    {"\\C", ".", false},
    {"\\C", ":", false},
    {"\\C", "-", false},
    {"\\C+", "@#$", true},
    // escaped backslashes are shielded from the translation
    {"\\\\i", "\\i", true},
    {"\\\\i", "a", false},
    {"\\\\c", "\\c", true},
    {"\\\\", "\\", true},
    {"\\\\\\\\", "\\\\", true},
    {"a\\\\b", "a\\b", true},
    {"\\\\\\i", "\\a", true},
    {"\\\\\\i", "\\1", false},
    {"\\\\p{IsBasicLatin}", "\\p{IsBasicLatin}", true},
    // Unicode blocks
    {"\\p{IsBasicLatin}+", "Plain ASCII!", true},
    {"\\p{IsBasicLatin}", "\xC3\xA9", false},
    {"\\p{IsLatin-1Supplement}", "\xC3\xA9", true},
    {"\\p{IsLatin-1Supplement}", "\xC2\x80", true},
    {"\\p{IsLatin-1Supplement}", "\xC3\xBF", true},
    {"\\p{IsLatin-1Supplement}", "e", false},
    {"\\p{IsLatin-1Supplement}", "\xC4\x80", false},
    {"\\p{IsLatinExtended-A}", "\xC4\x80", true},
    {"\\p{IsLatinExtended-A}", "\xC5\xBF", true},
    {"\\p{IsLatinExtended-A}", "\xC6\x80", false},
    {"\\p{IsLatinExtended-A}x", "\xC5\x81x", true},
    {"\\p{IsLatinExtended-A}x", "x", false},
    {"\\p{IsBasicLatin}\\p{IsLatinExtended-A}", "a\xC5\x81", true},
    {"[\\p{IsBasicLatin}\\p{IsLatin-1Supplement}]+", "na\xC3\xAFve", false},
    {"(\\p{IsBasicLatin}|\\p{IsLatin-1Supplement})+", "na\xC3\xAFve", true},
    // non-ASCII text counts characters, not bytes
    {".", "\xC3\xA9", true},
    {"..", "\xC3\xA9", false},
    {".{3}", "\xE2\x82\xAC\xC3\xA9x", true},
    {"\xE2\x82\xAC[0-9]+", "\xE2\x82\xAC" "42", true},
    {"[\xC3\xA0-\xC3\xBF]+", "\xC3\xA9\xC3\xA8", true},
    {"[\xC3\xA0-\xC3\xBF]+", "e", false},
    {"caf\xC3\xA9", "caf\xC3\xA9", true},
    {"caf\xC3\xA9", "cafe", false},
    {"\\w+", "\xC3\xA9t\xC3\xA9", false}, // PCRE's \w is ASCII without UCP
    // typical schema patterns
    {"[A-Z]{2}\\d{4}", "AB1234", true},
    {"[A-Z]{2}\\d{4}", "ab1234", false},
    {"\\d{3}-[A-Z]{2}", "872-AA", true},
    {"\\d{3}-[A-Z]{2}", "872-A", false},
    {"[0-9]{5}(-[0-9]{4})?", "90952", true},
    {"[0-9]{5}(-[0-9]{4})?", "90952-1234", true},
    {"[0-9]{5}(-[0-9]{4})?", "90952-12", false},
    {"[^@]+@[^@]+\\.[a-z]{2,}", "ann@example.com", true},
    {"[^@]+@[^@]+\\.[a-z]{2,}", "ann@example", false},
    {"(\\d{1,3}\\.){3}\\d{1,3}", "192.168.0.1", true},
    {"(\\d{1,3}\\.){3}\\d{1,3}", "192.168.0", false},
    {"#[0-9a-fA-F]{6}", "#C0FFEE", true},
    {"#[0-9a-fA-F]{6}", "#C0FFEZ", false},
    {"(true|false)", "true", true},
    {"(true|false)", "True", false},
    {"-?\\d+(\\.\\d+)?", "-3.14", true},
    {"-?\\d+(\\.\\d+)?", "3.", false},
    {"P(\\d+Y)?(\\d+M)?(\\d+D)?", "P1Y2D", true},
    {"P(\\d+Y)?(\\d+M)?(\\d+D)?", "P", true},
    {"\\d{4}-\\d{2}-\\d{2}", "2026-11-22", true},
    {"\\d{4}-\\d{2}-\\d{2}", "2026-1-22", false},
    // alternation with the wrapper's group
    {"a|bc|", "", true},
    {"x(a|b)*y", "xababy", true},
    {"x(a|b)*y", "xabcy", false},
};
} // namespace

TEST(XsdPattern, MatchesWholeValues)
{
    static_assert(std::size(kPatterns) >= 150, "keep the table broad");
    for (auto const &c : kPatterns)
    {
        SCOPED_TRACE(std::string("pattern ") + c.pattern + " value " + c.value);
        EXPECT_EQ(c.matches, MatchesXsdPattern(c.pattern, c.value));
        // Compiled once, and compiled to machine code for many values: the
        // same verdicts.
        EXPECT_EQ(c.matches, CXsdPattern(c.pattern).Matches(c.value));
        EXPECT_EQ(c.matches, CXsdPattern(c.pattern, true).Matches(c.value));
    }
}

// The escapes and what each becomes, in the order the rule replaces them.
constexpr std::pair<char const *, char const *> kEscapes[] = {
    {"\\i", "([^\\W\\d]|:)"},
    {"\\I", "([\\W\\d])"},
    {"\\c", "(\\w|\\.|-|:)"},
    {"\\C", "([^\\w\\.\\-\\:])"},
    {"\\p{IsBasicLatin}", "[\\000-\\177]"},
    {"\\p{IsLatin-1Supplement}", "[\\200-\\377]"},
    {"\\p{IsLatinExtended-A}", "[\\400-\\577]"},
    {"\\p{IsLatinExtended-B}", "[\\600-\\1117]"},
};

TEST(XsdPattern, TranslationOfEscapes)
{
    struct Case
    {
        char const *xsd;
        char const *pcre;
    };
    for (auto const &[xsd, pcre] : kEscapes)
        EXPECT_EQ(pcre, TranslateXsdPattern(xsd)) << xsd;
    Case const cases[] = {
        {"\\\\i", "\\\\i"},
        {"[\\i]", "[([^\\W\\d]|:)]"}, // no regard for context
        {"\\p{IsGreek}", "\\p{IsGreek}"},
        {"[a-z]+", "[a-z]+"},
        // The byte that shields escaped backslashes is undone even where the
        // pattern has no backslash at all.
        {"a\x01" "b", "a\\\\b"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.xsd);
        EXPECT_EQ(c.pcre, TranslateXsdPattern(c.xsd));
    }
}

// The translation is one pass over the pattern; the rule is a series of
// replacements, each over the whole text and from its start again after every
// replacement. Every pattern of up to four pieces drawn from backslashes, the
// escape letters, the block names, the shielding byte and plain text gives
// the same text both ways.
TEST(XsdPattern, TranslationEqualsTheStepwiseReplacements)
{
    auto stepwise = [](std::string p) {
        std::vector<std::pair<char const *, char const *>> steps = {{"\\\\", "\x01"}};
        steps.insert(steps.end(), std::begin(kEscapes), std::end(kEscapes));
        steps.emplace_back("\x01", "\\\\");
        for (auto const &step : steps)
        {
            std::string const from = step.first;
            std::size_t at;
            while ((at = p.find(from)) != std::string::npos)
                p.replace(at, from.size(), step.second);
        }
        return p;
    };
    char const *const pieces[] = {"\\", "i", "I", "c", "C", "\x01", "a", "p{IsBasicLatin}",
                                  "p{IsLatin-1Supplement}", "p{IsLatinExtended-A}", "p{IsLatinExtended-B}",
                                  "p{IsLatin"};
    std::size_t const count = sizeof pieces / sizeof pieces[0];
    std::vector<std::size_t> digits;
    for (std::size_t length = 0; length <= 4; ++length)
    {
        digits.assign(length, 0);
        for (;;)
        {
            std::string pattern;
            for (std::size_t d : digits)
                pattern += pieces[d];
            std::string const expected = stepwise(pattern);
            ASSERT_EQ(expected, TranslateXsdPattern(pattern)) << pattern;
            ASSERT_EQ("^(" + expected + ")$", TranslateXsdPattern(pattern, "^(", ")$")) << pattern;
            std::size_t k = 0;
            while (k < length && ++digits[k] == count)
                digits[k++] = 0;
            if (k == length)
                break;
        }
    }
}

TEST(XsdPattern, CompileErrorsNameTheValue)
{
    struct Case
    {
        char const *pattern;
        char const *message;
    };
    Case const cases[] = {
        {"(a", "Invalid Regular Expression: val Error: 'missing )'"},
        {"[a", "Invalid Regular Expression: val Error: 'missing terminating ] for character class'"},
        {"a{2,1}", "Invalid Regular Expression: val Error: 'numbers out of order in {} quantifier'"},
        {"+a", "Invalid Regular Expression: val Error: 'nothing to repeat'"},
        // PCRE reads at most three octal digits, so the translated range of
        // this block ends at \111 followed by a 7.
        {"\\p{IsLatinExtended-B}", "Invalid Regular Expression: val Error: 'range out of order in character class'"},
        {"\\p{IsGreek}", "Invalid Regular Expression: val Error: 'unknown property name after \\P or \\p'"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.pattern);
        try
        {
            MatchesXsdPattern(c.pattern, "val");
            FAIL() << "expected a compile error";
        }
        catch (CMxException const &e)
        {
            EXPECT_EQ(c.message, e.GetMessage());
        }
    }
}

// The value is local text and reaches PCRE as UTF-8: converted from a
// single-byte code page, taken as it stands where it is already UTF-8, and
// read up to its first zero byte either way.
TEST(XsdPattern, SubjectIsTheValueAsUtf8)
{
    struct Case
    {
        unsigned codePage;
        char const *pattern;
        std::string value;
        bool matches;
    };
    Case const cases[] = {
        {1252, ".", "\xE9", true},            // one character, two bytes in UTF-8
        {1252, "\xC3\xA9", "\xE9", true},
        {1252, "..", "\xE9", false},
        {65001, ".", "\xC3\xA9", true},
        {65001, "\xC3\xA9", "\xC3\xA9", true},
        {65001, "a", std::string("a\0b", 3), true},
        {1252, "a", std::string("a\0b", 3), true},
    };
    unsigned const saved = GetLocalCharEncoding();
    for (auto const &c : cases)
    {
        SCOPED_TRACE(std::to_string(c.codePage) + " " + c.pattern);
        SetLocalCharEncoding(c.codePage);
        EXPECT_EQ(c.matches, MatchesXsdPattern(c.pattern, c.value));
    }
    SetLocalCharEncoding(saved);
}
