// The reader's grammar, departures included, and its messages with line,
// position and JSON path.

#include "json/JsonHandlers.h"
#include "json/JsonTextReader.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

using namespace MxXmlLib;

namespace
{
// Records the events as one line: { } [ ] k:name s:text n:digits true false null
class CTraceHandler : public IJsonReaderHandler
{
public:
    explicit CTraceHandler(std::string *trace) : m_trace(trace) {}
    void StartDocument() override { Add("<"); }
    void EndDocument() override { Add(">"); }
    void OnName(std::string const &name) override { Add("k:" + name); }
    void OnString(std::string const &value) override { Add("s:" + value); }
    void OnNumber(std::string const &value) override { Add("n:" + value); }
    void OnStartObject() override { Add("{"); }
    void OnEndObject() override { Add("}"); }
    void OnStartArray() override { Add("["); }
    void OnEndArray() override { Add("]"); }
    void OnBoolean(bool value) override { Add(value ? "true" : "false"); }
    void OnNull() override { Add("null"); }

private:
    void Add(std::string const &event)
    {
        if (!m_trace->empty())
            *m_trace += ' ';
        *m_trace += event;
    }
    std::string *m_trace;
};

struct Outcome
{
    std::string trace;
    std::string message; // empty: no error
    std::string path;
};

Outcome Read(std::string const &text, bool allowComments = true, std::string const &rootName = "")
{
    Outcome outcome;
    CJsonTextReader reader(&text, new CJsonReaderDefaultHandler(new CTraceHandler(&outcome.trace)));
    reader.SetAllowComments(allowComments);
    reader.SetRootElementName(rootName);
    try
    {
        reader.Parse();
    }
    catch (CMxValidationException const &e)
    {
        // The exception appends its path to the message.
        outcome.message = e.GetMessage().substr(0, e.GetMessage().find("\nPath: "));
        outcome.path = e.GetPath();
    }
    return outcome;
}

struct EventCase
{
    char const *label;
    std::string text;
    char const *trace;
    bool allowComments = true;
    char const *rootName = "";
};

EventCase const kEvents[] = {
    {"empty text", "", "< >"},
    {"whitespace and comments only", " \t\r\n/* a */ // b\n", "< >"},
    {"empty text with a root name", "", "< { k:root } >", true, "root"},
    {"root name wraps the value", "{\"a\":1}", "< { k:root { k:a n:1 } } >", true, "root"},
    {"scalars at the top", "\"x\"", "< s:x >"},
    {"number at the top", "-0.5e+10", "< n:-0.5e+10 >"},
    {"literals", "[true,false,null]", "< [ true false null ] >"},
    {"nested", "{\"a\":[1,{\"b\":\"c\"}],\"d\":{}}", "< { k:a [ n:1 { k:b s:c } ] k:d { } } >"},
    {"empty containers", "[[],{}]", "< [ [ ] { } ] >"},
    {"trailing text is not read", "[1,2] x y {", "< [ n:1 n:2 ] >"},
    {"duplicate keys as they come", "{\"a\":1,\"a\":2}", "< { k:a n:1 k:a n:2 } >"},
    {"empty key reaches the handler", "{\"\":1}", "< { k: n:1 } >"},
    {"line feed inside a number joins it", "[1\n2]", "< [ n:12 ] >"},
    {"raw line feed in a string is dropped", "\"a\nb\"", "< s:ab >"},
    {"tab and carriage return in a string stay", "\"a\tb\rc\"", "< s:a\tb\rc >"},
    {"short escapes", "\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"", "< s:\"\\/\b\f\n\r\t >"},
    {"\\u takes the upper hex digit of the first byte", "[\"\\u0041\",\"\\uABCD\",\"\\uzzzz\",\"\\uaaaa\"]",
     "< [ s:3 s:4 s:7 s:6 ] >"},
    {"bytes from 0x80 up stand", "\"\xC3\xA9\"", "< s:\xC3\xA9 >"},
    {"a zero byte ends a value", std::string("[\"a\0b\"]", 7), "< [ s:a ] >"},
    {"a leading zero ends the number at the top", "01", "< n:0 >"},
    {"comments between all tokens", "/*a*/{//b\n\"k\"/**/:/*c*/[1 /**/,2]//\n}", "< { k:k [ n:1 n:2 ] } >"},
    {"comment after a number and a space", "[1 //c\n]", "< [ n:1 ] >"},
    {"unterminated block comment at the top", "/* x", "< >"},
    {"comment markers inside a string are text", "\"/*x*/\"", "< s:/*x*/ >"},
};

TEST(JsonTextReader, ReportsEventsForTheGrammarAndItsDepartures)
{
    for (auto const &c : kEvents)
    {
        SCOPED_TRACE(c.label);
        Outcome const outcome = Read(c.text, c.allowComments, c.rootName);
        EXPECT_EQ("", outcome.message);
        EXPECT_EQ(c.trace, outcome.trace);
    }
}

struct ErrorCase
{
    std::string text;
    char const *message;
    std::string path;
    bool allowComments = true;
};

ErrorCase const kErrors[] = {
    {"[1,2", "Unexpected End of File. Expected Array terminator character ']' at line 1, position 4.", "$"},
    {"[", "Unexpected End of File. Expected Array terminator character ']' at line 1, position 1.", "$"},
    {"[1,", "Unexpected End of File. Expected Array terminator character ']' at line 1, position 3.", "$"},
    {"[1,]", "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found ']' at line 1, position 4.",
     "$"},
    {"[1 2]", "Expected Array separator character ',', found '2' at line 1, position 4.", "$"},
    {"[01]", "Expected Array separator character ',', found '1' at line 1, position 3.", "$"},
    {"{", "Unexpected End of File. Expected Object terminator character '}}' at line 1, position 1.", "$"},
    {"{\"a\"", "Unexpected End of File. Expected Object Name/Value separator character ':' at line 1, position 4.",
     "$.a"},
    {"{\"a\" 1}", "Expected Object Name/Value separator character ':', found '1' at line 1, position 6.", "$.a"},
    {"{\"a\":", "Unexpected End of File. Expected Object Value at line 1, position 5.", "$.a"},
    {"{\"a\":}", "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found '}' at line 1, position 6.",
     "$.a"},
    {"{\"a\":1", "Unexpected End of File. Expected Object terminator character '}' at line 1, position 6.", "$.a"},
    {"{\"a\":1,", "Unexpected End of File. Expected Object terminator character '}' at line 1, position 7.", "$.a"},
    {"{\"a\":1 x", "Expected Object separator character ',', found 'x' at line 1, position 8.", "$.a"},
    {"{\"a\":1,}", "Expected quotation mark character '\"' before Name, found '}' at line 1, position 8.", "$.a"},
    {"{1}", "Expected quotation mark character '\"' before Name, found '1' at line 1, position 2.", "$"},
    {"x", "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found 'x' at line 1, position 1.", "$"},
    {"-", "Unexpected End of File. Expected a number at line 1, position 1.", "$"},
    {"-x", "Expected a digit '0' to '9', found 'x' at line 1, position 2.", "$"},
    {"1.", "Unexpected End of File. Expected a digit '0' to '9' at line 1, position 2.", "$"},
    {"1.x", "Expected a digit '0' to '9', found 'x' at line 1, position 3.", "$"},
    {"1e", "Unexpected End of File. Expected '+', '-' or a number at line 1, position 2.", "$"},
    {"1e+", "Unexpected End of File. Expected a number at line 1, position 3.", "$"},
    // The words of the end of the text, though it has not ended.
    {"1ex", "Unexpected End of File. Expected a digit '0' to '9' at line 1, position 3.", "$"},
    {"nul", "Unexpected End of File. Expected value 'NULL' at line 1, position 3.", "$"},
    {"nulx", "Expected 'NULL' at line 1, position 4.", "$"},
    {"tru", "Unexpected End of File. Expected value 'true' at line 1, position 3.", "$"},
    {"trux", "Expected 'true' at line 1, position 4.", "$"},
    {"fals", "Unexpected End of File. Expected value 'false' at line 1, position 4.", "$"},
    {"falsx", "Expected 'false' at line 1, position 5.", "$"},
    {"\"abc", "Unexpected End of File. Expected string value at line 1, position 4.", "$"},
    {"\"\\", "Unexpected End of File. Expected string value at line 1, position 2.", "$"},
    {"\"\\q\"", "Invalid Escape Character 'q' at line 1, position 3.", "$"},
    {"\"\\u12", "Unexpected End of File. Expected 4 hexadecimal digits'\\uxxxx' at line 1, position 5.", "$"},
    // Plain runs inside strings are taken whole and counted as single bytes:
    // a line feed inside restarts the count, an escape breaks the run.
    {"\"abc\ndef", "Unexpected End of File. Expected string value at line 2, position 3.", "$"},
    {"\"ab\\q\"", "Invalid Escape Character 'q' at line 1, position 5.", "$"},
    {"\"a\\\"bc", "Unexpected End of File. Expected string value at line 1, position 6.", "$"},
    {"\n\n\"abcdef\\x", "Invalid Escape Character 'x' at line 3, position 9.", "$"},
    {"/* c */ 1", "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found '/' at line 1, position 1.",
     "$", false},
    {"[1/x]", "Expected Array separator character ',', found '/' at line 1, position 3.", "$"},
    // A number ends at the '/', which is then no token of the grammar.
    {"[1//c\n]", "Expected Array separator character ',', found '/' at line 1, position 3.", "$"},
    {"{ // c", "Unexpected End of File. Expected Object terminator character '}}' at line 1, position 6.", "$"},
    // Line and position: the block read of a literal counts no lines.
    {"{\n  \"a\": tru\n}", "Expected 'true' at line 2, position 11.", "$.a"},
    {"[\n\n 1,\r\n x]", "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found 'x' at line 4, "
                        "position 2.",
     "$"},
    // The path reads from the innermost place outwards; an array index is one raw byte.
    {"{\"a\":[{\"b\":1},{\"c\":x}]}",
     "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found 'x' at line 1, position 20.",
     "$.c.a[\x01]"},
    {"{\"a\":{\"b\":[[{\"c\":{\"d\":-}}]]}}", "Expected a digit '0' to '9', found '}' at line 1, position 24.",
     std::string("$.d.c.[\0].a", 11)},
};

TEST(JsonTextReader, ReportsSyntaxErrorsWithLinePositionAndPath)
{
    for (auto const &c : kErrors)
    {
        SCOPED_TRACE(c.text);
        Outcome const outcome = Read(c.text, c.allowComments);
        EXPECT_EQ(c.message, outcome.message);
        EXPECT_EQ(c.path, outcome.path);
    }
}

std::string Nested(int levels, char const *inner)
{
    return std::string(levels, '[') + inner + std::string(levels, ']');
}

TEST(JsonTextReader, AcceptsOneHundredLevelsAndRefusesTheNext)
{
    EXPECT_EQ("", Read(Nested(100, "")).message);
    EXPECT_EQ("", Read(Nested(99, "1")).message);
    EXPECT_EQ("JSON exceeded depth limit at line 1, position 101.", Read(Nested(100, "1")).message);
    EXPECT_EQ("JSON exceeded depth limit at line 1, position 101.", Read(Nested(101, "")).message);
    // Far deeper input fails at the same place, without deep recursion.
    EXPECT_EQ("JSON exceeded depth limit at line 1, position 101.", Read(std::string(100000, '[')).message);
}

TEST(JsonTextReader, SkipsLongRunsOfCommentsWithoutRecursion)
{
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "/**/";
    EXPECT_EQ("< n:1 >", Read(text + "1").trace);
}

// Texts made by Python's json.dumps (make_python_vectors.py), with the
// events that Python's own parse of them gives.
TEST(JsonTextReader, ReadsWhatPythonWritesAsPythonReadsIt)
{
    std::ifstream in(MX_TEST_DATA_DIR "/python-vectors.txt", std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    std::string const all = buffer.str();
    std::size_t at = 0;
    auto next = [&](char const *tag) {
        std::size_t const space = all.find(' ', at);
        EXPECT_EQ(tag, all.substr(at, space - at));
        std::size_t const newline = all.find('\n', space);
        std::size_t const length = std::stoul(all.substr(space + 1, newline - space - 1));
        std::string piece = all.substr(newline + 1, length);
        at = newline + 1 + length + 1;
        return piece;
    };
    int count = 0;
    while (at < all.size())
    {
        std::string const json = next("json");
        std::string const trace = next("trace");
        SCOPED_TRACE(json);
        Outcome const outcome = Read(json);
        EXPECT_EQ("", outcome.message);
        EXPECT_EQ(trace, outcome.trace);
        ++count;
    }
    EXPECT_EQ(300, count);
}

} // namespace
