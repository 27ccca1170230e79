// The JSON writer: byte-exact goldens of replayed XML in every mode, checked
// against a strict parser, and the writer's rules and failures call by call.

#include "JsonTestSupport.h"

#include "json/JsonTextWriter.h"
#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <vector>

using namespace MxXmlLib;
using namespace MxJsonTest;

namespace
{
char const kXsi[] = "http://www.w3.org/2001/XMLSchema-instance";

struct Variant
{
    int roundTrip;
    bool formatted;
    char const *suffix;
};
constexpr Variant kVariants[] = {
    {0, true, ".none"},  {1, true, ".attributes"},  {2, true, ""},
    {0, false, ".none.flat"}, {1, false, ".attributes.flat"}, {2, false, ".flat"},
};

std::vector<std::string> GoldenCases()
{
    std::vector<std::string> cases;
    for (auto const &entry : std::filesystem::directory_iterator(MX_TEST_DATA_DIR))
        if (entry.path().extension() == ".xml")
            cases.push_back(entry.path().stem().string());
    std::sort(cases.begin(), cases.end());
    return cases;
}

std::string GoldenPath(std::string const &name, Variant const &v)
{
    return std::string(MX_TEST_DATA_DIR) + "/" + name + v.suffix + ".expected.json";
}

// MX_UPDATE_GOLDENS=1 rewrites the expected files from the current output.
TEST(JsonTextWriterGolden, ReplayedXmlGivesTheExpectedJsonInEveryMode)
{
    bool const update = std::getenv("MX_UPDATE_GOLDENS") != nullptr;
    auto const cases = GoldenCases();
    ASSERT_FALSE(cases.empty());
    for (auto const &name : cases)
        for (auto const &v : kVariants)
        {
            SCOPED_TRACE(name + v.suffix);
            std::string const json =
                XmlToJsonText(ReadFile(std::string(MX_TEST_DATA_DIR) + "/" + name + ".xml"), v.roundTrip, v.formatted);
            if (update)
                WriteFile(GoldenPath(name, v), json);
            EXPECT_EQ(ReadFile(GoldenPath(name, v)), json);
        }
}

// Goldens the mapping cannot make valid JSON: elements without content, text
// collections (repeated keys, a "]" without "["), siblings after a collection,
// and text with a quotation mark, a tab or a line feed, copied as they stand.
std::set<std::string> const kInvalidCases = {"05-text-array", "06-empty-element", "09-sibling-after-array",
                                             "11-text-bytes", "12-line-feeds"};

TEST(JsonTextWriterGolden, StrictParserAcceptsExactlyTheGoldensWithoutSharpEdges)
{
    std::string files;
    std::string expected;
    for (auto const &name : GoldenCases())
        for (auto const &v : kVariants)
        {
            files += " " + GoldenPath(name, v);
            expected += kInvalidCases.count(name) ? "invalid\n" : "valid\n";
        }
    std::string const verdicts = CheckJsonFiles(files);
    if (verdicts.empty())
        GTEST_SKIP() << "python3 is not available";
    EXPECT_EQ(expected, verdicts);
}

// Drives a writer through `calls` and gives its text, or the message raised.
std::string Written(std::function<void(CJsonTextWriter &)> const &calls, int roundTrip = 2, bool formatted = false)
{
    CTextStream stream;
    CJsonTextWriter writer(&stream);
    writer.SetRoundTrip(static_cast<JsonRoundTrip>(roundTrip));
    writer.SetFormatted(formatted);
    try
    {
        calls(writer);
    }
    catch (CMxException const &e)
    {
        return "error: " + e.GetMessage();
    }
    return stream.TextAsString();
}

struct CallCase
{
    char const *label;
    std::function<void(CJsonTextWriter &)> calls;
    char const *expected;
    int roundTrip = 2;
    bool formatted = false;
};

void Text(CJsonTextWriter &w, char const *name, char const *value, ItemType type = ItemType_string)
{
    w.StartElement(name, "");
    w.WriteText(value, type, false);
    w.EndElement();
}

CallCase const kCalls[] = {
    {"unmapped root namespace gets a generated prefix declared first",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "urn:r");
         w.WriteAttribute("a", "", "1", ItemType_i4);
         w.EndElement();
     },
     "\"AA:r\": {\"@xmlns:AA\": \"urn:r\",\"@a\": 1}"},
    {"generated prefix skips one in use; default namespace and mappings follow",
     [](CJsonTextWriter &w) {
         w.AddNamespace("AA", "urn:a");
         w.SetDefaultNamespace("urn:d");
         w.StartElement("r", "urn:r");
         w.EndElement();
     },
     "\"AB:r\": {\"@xmlns:AB\": \"urn:r\",\"@xmlns\": \"urn:d\",\"@xmlns:AA\": \"urn:a\"}"},
    {"a namespace map with only the xml prefix declares nothing",
     [](CJsonTextWriter &w) { Text(w, "r", "t"); }, "\"r\": \"t\""},
    {"unknown namespace of a child element names the element",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         w.StartElement("c", "urn:c");
     },
     "error: Unknown Namespace: c."},
    {"unknown namespace of an attribute names the attribute",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         w.WriteAttribute("a", "urn:c", "v", ItemType_string);
     },
     "error: Unknown Namespace: a."},
    {"type attribute needs the XSI namespace mapped",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         w.WriteTypeAttribute("", "card", ItemType_string);
     },
     "error: Unknown Namespace: type."},
    {"type in an unknown namespace names the type",
     [](CJsonTextWriter &w) {
         w.AddNamespace("xsi", kXsi);
         w.StartElement("r", "");
         w.WriteTypeAttribute("urn:t", "card", ItemType_string);
     },
     "error: Unknown Namespace: card."},
    {"type attribute with prefixes; the default namespace needs none",
     [](CJsonTextWriter &w) {
         w.AddNamespace("xsi", kXsi);
         w.AddNamespace("t", "urn:t");
         w.SetDefaultNamespace("urn:d");
         w.StartElement("r", "urn:d");
         w.WriteTypeAttribute("urn:t", "card", ItemType_string);
         w.WriteTypeAttribute("urn:d", "cash", ItemType_string);
         w.EndElement();
     },
     // Declarations in the order of the URIs' bytes.
     "\"r\": {\"@xmlns\": \"urn:d\",\"@xmlns:xsi\": \"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:t\": \"urn:t\",\"@xsi:type\": \"t:card\",\"@xsi:type\": \"cash\"}"},
    {"without full round trips no namespace is written or refused",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "urn:r");
         w.WriteAttribute("a", "urn:c", "v", ItemType_string);
         w.WriteTypeAttribute("urn:t", "card", ItemType_string);
         w.StartElement("c", "urn:c");
         w.EndElement();
         w.EndElement();
     },
     "\"r\": {\"@a\": \"v\",\"c\": }", 1},
    {"an attribute never takes the default namespace",
     [](CJsonTextWriter &w) {
         w.SetDefaultNamespace("urn:d");
         w.StartElement("r", "urn:d");
         w.WriteAttribute("a", "urn:d", "v", ItemType_string);
     },
     "error: Unknown Namespace: a."},
    {"nil, processing instructions and in-line schema write nothing",
     [](CJsonTextWriter &w) {
         w.WriteProcessingInstruction("<?pi?>");
         w.StartElement("r", "");
         w.WriteInLineSchema("a=\"b\"");
         w.WriteNilAttribute();
         w.EndElement();
     },
     "\"r\": "},
    {"comment, then text as the bare value",
     [](CJsonTextWriter &w) {
         w.WriteComment("c\x01");
         Text(w, "r", "");
     },
     "/* c\\u0001 */\n\"r\": \"\""},
    {"unquoted types as CConversions gave them, the rest quoted",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         ItemType const types[] = {ItemType_hexBinary, ItemType_i1, ItemType_ui8, ItemType_r4, ItemType_r8,
                                   ItemType_duration, ItemType_datetime, ItemType_string, ItemType_boolean,
                                   ItemType_decimal, ItemType_integer};
         for (ItemType t : types)
             Text(w, "v", "x", t);
         w.EndElement();
     },
     "\"r\": {\"v\": \"x\",\"v\": x,\"v\": x,\"v\": x,\"v\": x,\"v\": \"x\",\"v\": \"x\",\"v\": \"x\",\"v\": x,"
     "\"v\": x,\"v\": x}"},
    {"escapes: controls as \\u, CR dropped, the rest as it stands",
     [](CJsonTextWriter &w) { Text(w, "r", "\x01\x08\x09\x0B\x0C\x0D\x1F \"\\/\x7F\xFF"); },
     "\"r\": \"\\u0001\x08\x09\\u000B\x0C\\u001F \"\\/\x7F\xFF\""},
    {"text after members goes under #text",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         w.WriteAttribute("a", "", "1", ItemType_string);
         w.WriteText("t", ItemType_string, false);
         w.EndElement();
     },
     "\"r\": {\"@a\": \"1\",\"#text\": \"t\"}"},
    {"... and under \"\" without round trips",
     [](CJsonTextWriter &w) {
         w.StartElement("r", "");
         w.WriteAttribute("a", "", "1", ItemType_string);
         w.WriteText("t", ItemType_string, true);
         w.EndElement();
     },
     "\"r\": {\"a\": \"1\",\"\": \"t\"}", 0},
    {"element names are not escaped",
     [](CJsonTextWriter &w) { Text(w, "a\"b", "t"); }, "\"a\"b\": \"t\""},
    {"an element left open is reported by EndDocument",
     [](CJsonTextWriter &w) {
         w.StartDocument();
         w.StartElement("r", "");
         w.EndDocument();
     },
     "error: An Element has not been closed."},
};

TEST(JsonTextWriter, FollowsItsRulesCallByCall)
{
    for (auto const &c : kCalls)
    {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(c.expected, Written(c.calls, c.roundTrip, c.formatted));
    }
}

TEST(JsonTextWriter, LineEndsFollowTheEolType)
{
    auto const calls = [](CJsonTextWriter &w) {
        w.SetEolType(CRLF);
        w.StartElement("r", "");
        w.WriteAttribute("a", "", "x\r\ny\nz", ItemType_string);
        w.EndElement();
    };
    EXPECT_EQ("\t\"r\": {\r\n\t\t\"@a\": \"x\r\ny\r\nz\"\r\n\t}", Written(calls, 2, true));
    EXPECT_EQ("error: Invalid EOL type.", Written([](CJsonTextWriter &w) { w.SetEolType(static_cast<EOLType>(2)); }));
}

TEST(JsonTextWriter, IndentsWithTheContextsIndentCharacters)
{
    CTextStream stream;
    CJsonTextWriter writer(&stream);
    writer.SetIndent("  ");
    writer.WriteDocumentStart();
    ReplayXml("<a><b>1</b></a>", writer);
    writer.WriteDocumentEnd();
    EXPECT_EQ("{\n  \"a\": {\n    \"b\": 1\n  }\n}", stream.TextAsString());
}

// Text goes out in pieces when the stream flushes; the flush check runs at
// every start tag, so nothing is lost or reordered.
class CPiecesStream : public CTextStream
{
public:
    void Flush() override
    {
        pieces.push_back(TextAsString());
        m_buffer.Clear();
    }
    std::vector<std::string> pieces;
};

TEST(JsonTextWriter, FlushesAtStartTagsOnceFourKilobytesAreBuffered)
{
    std::string xml = "<r>";
    for (int i = 0; i < 500; ++i)
        xml += "<item n=\"" + std::to_string(i) + "\"><v>some text</v></item>";
    xml += "</r>";
    CPiecesStream stream;
    CJsonTextWriter writer(&stream);
    writer.WriteDocumentStart();
    ReplayXml(xml, writer);
    writer.WriteDocumentEnd();
    stream.Flush();
    std::string whole;
    for (auto const &piece : stream.pieces)
    {
        EXPECT_LT(piece.size(), 4096u + 256u);
        whole += piece;
    }
    EXPECT_GT(stream.pieces.size(), 5u);
    EXPECT_EQ(XmlToJsonText(xml, 2, true), whole);
}

} // namespace
