#include "runtime/MxException.h"
#include "values/WhitespaceUtils.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

struct WhitespaceCase
{
    std::string text, preserved, replaced, collapsed;
};

WhitespaceCase const kCases[] = {
    {"", "", "", ""},
    {"abc", "abc", "abc", "abc"},
    {"a b", "a b", "a b", "a b"},
    {"\r\n", "\n", " ", ""},
    {"\r\r\n", "\n\n", "  ", ""},
    {"a\rb", "a\nb", "a b", "a b"},
    {"a\n\rb", "a\n\nb", "a  b", "a b"},
    {"\ta\t", "\ta\t", " a ", "a"},
    {"   ", "   ", "   ", ""},
    {"  a  b  ", "  a  b  ", "  a  b  ", "a b"},
    {" \t\r\n x \t\r\n y \t\r\n ", " \t\n x \t\n y \t\n ", "    x    y    ", "x y"},
    {"a\vb\fc", "a\vb\fc", "a\vb\fc", "a\vb\fc"}, // only 9, 10, 13 and 32 count
    {"x\r", "x\n", "x ", "x"},
    // An embedded NUL ends a text that gets rebuilt, and stays in one that
    // is returned as it is.
    {std::string("a\0 b", 4), std::string("a\0 b", 4), std::string("a\0 b", 4), "a"},
    {std::string("a\r\0b", 4), "a\n", "a ", "a"},
    {std::string("a\n\0b", 4), std::string("a\n\0b", 4), "a ", "a"},
    // Collapse returns a text without blanks as it is, but not one with a NUL;
    // other control bytes and bytes above 127 are no blanks.
    {std::string("ab\0c", 4), std::string("ab\0c", 4), std::string("ab\0c", 4), "ab"},
    {"\x01\x1f\x7f\xc3\xa9", "\x01\x1f\x7f\xc3\xa9", "\x01\x1f\x7f\xc3\xa9", "\x01\x1f\x7f\xc3\xa9"},
};

TEST(WhitespaceUtils, Rules)
{
    for (WhitespaceCase const &c : kCases)
    {
        SCOPED_TRACE(testing::PrintToString(c.text));
        EXPECT_EQ(c.preserved, CWhitespaceUtils::Preserve(c.text));
        EXPECT_EQ(c.replaced, CWhitespaceUtils::Replace(c.text));
        EXPECT_EQ(c.collapsed, CWhitespaceUtils::Collapse(c.text));
        EXPECT_EQ(c.text, CWhitespaceUtils::ApplyRule(Rule::None, c.text));
        EXPECT_EQ(c.preserved, CWhitespaceUtils::ApplyRule(Rule::Preserve, c.text));
        EXPECT_EQ(c.replaced, CWhitespaceUtils::ApplyRule(Rule::Replace, c.text));
        EXPECT_EQ(c.collapsed, CWhitespaceUtils::ApplyRule(Rule::Collapse, c.text));
    }
}

TEST(WhitespaceUtils, PreserveOfCharacters)
{
    EXPECT_EQ("a\nb", CWhitespaceUtils::Preserve("a\r\nbc", 4));
    // A CR at the end of the counted length does not look beyond it.
    EXPECT_EQ("a\n", CWhitespaceUtils::Preserve("a\r\n", 2));
    EXPECT_EQ("ab", CWhitespaceUtils::Preserve("ab\0cd", 5));
    EXPECT_EQ("", CWhitespaceUtils::Preserve(nullptr, 3));
    EXPECT_EQ("", CWhitespaceUtils::Preserve("abc", -1));
}

TEST(WhitespaceUtils, IsWhiteSpaceIsExactlyFourBytes)
{
    for (int c = -128; c < 128; ++c)
    {
        SCOPED_TRACE(c);
        EXPECT_EQ(c == 9 || c == 10 || c == 13 || c == 32, CWhitespaceUtils::IsWhiteSpace(static_cast<char>(c)));
    }
}

TEST(WhitespaceUtils, UnknownRule)
{
    for (int rule : {4, 5, 100, -1})
    {
        SCOPED_TRACE(rule);
        try
        {
            CWhitespaceUtils::ApplyRule(static_cast<Rule>(rule), "x");
            ADD_FAILURE() << "no exception";
        }
        catch (CMxInvalidValueException const &e)
        {
            EXPECT_EQ("Unknown WhitespaceRule", e.GetMessage());
        }
    }
}

} // namespace
