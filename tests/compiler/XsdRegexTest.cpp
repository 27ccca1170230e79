// XSD patterns turned into PCRE by the schema compiler, then matched the
// way the run-time checks a facet (its own rewriting included), so each case
// holds the whole way from the schema's text to the verdict.

#include "frontend/XsdRegex.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace
{

using MxCompiler::AllOfPcre;
using MxCompiler::XsdRegexToPcre;

struct MatchCase
{
    char const *pattern;
    char const *value;
    bool matches;
};

constexpr MatchCase kMatchCases[] = {
    // Multi-character escapes cover all of Unicode, not ASCII only.
    {R"(\d{3})", "123", true},
    {R"(\d{3})", "\u0661\u0662\u0663", true},
    {R"(\d{3})", "12a", false},
    {R"(\w+)", "ab1\u00e9", true},
    {R"(\w+)", "a_b", false}, // '_' is punctuation, which \w leaves out
    {R"(\s+\S)", " \t\r\nx", true},
    {R"(\i\c*)", "_a-1.b", true},
    {R"(\i\c*)", "1a", false},
    {R"(\I\C)", "1 ", true},
    {R"([\i-[:]][\c-[:]]*)", "a:b", false},
    {R"([\i-[:]][\c-[:]]*)", "ab", true},
    // Categories and blocks, and their complements.
    {R"(\p{Lu}\P{Lu})", "Ab", true},
    {R"(\p{Lu}\P{Lu})", "AB", false},
    {R"(\p{IsGreek}+)", "\u03b1\u03b2", true},
    {R"(\p{IsGreek}+)", "ab", false},
    {R"(\p{IsBasicLatin}*)", "abc", true},
    {R"(\p{IsBasicLatin}*)", "\u00e9", false},
    {R"(\P{IsBasicLatin})", "\u00e9", true},
    {R"(\p{IsHighSurrogates}|a)", "a", true},
    {R"(\p{IsSpecials})", "\ufeff", true},
    // Classes: ranges, negation, escapes inside, subtraction.
    {R"([a-z-[aeiou]]+)", "bcd", true},
    {R"([a-z-[aeiou]]+)", "bad", false},
    {R"([^\d\W])", "a", true},
    {R"([^\d\W])", "1", false},
    {R"([^\d\W])", ".", false},
    {R"([\d\s]+)", "1 2", true},
    {R"([^a-c-[e]])", "d", true},
    {R"([^a-c-[e]])", "e", false},
    {R"([^a-c-[e]])", "a", false},
    {R"([\-a]+)", "-a-", true},
    {R"([a-])", "-", true},
    {R"([\^\]\[]+)", "^][", true},
    // '.', '^' and '$' mean what XSD says.
    {R"(.)", "a", true},
    {R"(.)", "\r", false},
    {R"(^a$)", "^a$", true},
    {R"(^a$)", "a", false},
    {R"(\.\*\+\?\(\)\{\}\|\\)", ".*+?(){}|\\", true},
    // Quantifiers, groups, alternatives, the empty pattern.
    {R"(a{2,3})", "aaa", true},
    {R"(a{2,3})", "aaaa", false},
    {R"(a{2,})", "aaaaa", true},
    {R"((ab)+|c)", "abab", true},
    {R"((ab)+|c)", "c", true},
    {R"(a|)", "", true},
    {R"()", "", true},
    {R"()", "a", false},
    {R"(a\n)", "a\n", true},
    {R"(a)", "a\n", false},
};

TEST(XsdRegex, MatchesAsXsdSays)
{
    for (MatchCase const &c : kMatchCases)
    {
        std::string const pcre = XsdRegexToPcre(c.pattern);
        SCOPED_TRACE(std::string(c.pattern) + " as " + pcre + " on [" + c.value + "]");
        EXPECT_EQ(c.matches, MxXmlLib::MatchesXsdPattern(pcre, c.value));
    }
}

TEST(XsdRegex, ReadableOutputForCommonPatterns)
{
    EXPECT_EQ(R"(\p{Nd}{5}(?:-\p{Nd}{4})?)", XsdRegexToPcre(R"(\d{5}(-\d{4})?)"));
    EXPECT_EQ(R"(\p{Nd}{3}-[A-Z]{2})", XsdRegexToPcre(R"(\d{3}-[A-Z]{2})"));
    EXPECT_EQ(R"([^\x{20}\x{9}\x{A}\x{D}]*)", XsdRegexToPcre(R"(\S*)"));
}

TEST(XsdRegex, DerivationStepsAllHold)
{
    std::string const both = AllOfPcre({XsdRegexToPcre("[a-z]+"), XsdRegexToPcre(".{3}")});
    EXPECT_TRUE(MxXmlLib::MatchesXsdPattern(both, "abc"));
    EXPECT_FALSE(MxXmlLib::MatchesXsdPattern(both, "abcd"));
    EXPECT_FALSE(MxXmlLib::MatchesXsdPattern(both, "aB1"));
    EXPECT_EQ("x", AllOfPcre({"x"}));
}

TEST(XsdRegex, UnreadablePatternsSayWhy)
{
    struct
    {
        char const *pattern;
        char const *message;
    } const cases[] = {
        {R"(a\q)", "an unknown escape at character 3"},
        {R"(\p{IsKlingon})", "an unknown block IsKlingon at character 14"},
        {R"(\p{Xx})", "an unknown character property Xx at character 7"},
        {R"(a{70000})", "a repetition count above 65535 at character 9"},
        {R"([a)", "an unclosed '[' at character 3"},
        {R"((a)", "an unclosed '(' at character 3"},
        {R"(a))", "an unmatched ')' at character 2"},
        {R"(*a)", "a quantifier with nothing to repeat at character 1"},
        {R"([z-a])", "a range whose end comes before its start at character 5"},
        {"\xff", "the pattern is not UTF-8"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.pattern);
        try
        {
            XsdRegexToPcre(c.pattern);
            ADD_FAILURE() << "no exception";
        }
        catch (std::invalid_argument const &e)
        {
            EXPECT_STREQ(c.message, e.what());
        }
    }
}

} // namespace
