// Strict JSON: every shape of the model and of the untyped tree gives one
// exact text, which Python's json module accepts with duplicate keys and
// NaN/Infinity refused, and which reads back to byte-identical XML; the XML
// corpora of the other suites make the same round trip; malformed and
// unexpected JSON fail with the JSON path.

#include "JsonTestSupport.h"

#include "collections/Element.h"
#include "json/JsonContext.h"
#include "json/JsonStrictWriter.h"
#include "model/Model.h"
#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>

using namespace MxXmlLib;
using namespace MxTestModel;
using namespace MxJsonTest;
namespace fs = std::filesystem;

namespace
{
char const kXsi[] = "http://www.w3.org/2001/XMLSchema-instance";

class StrictJson : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

template <class T> CSmartPtr<CXmlObjectBase> New()
{
    return CSmartPtr<CXmlObjectBase>(new T);
}

CSmartPtr<CXmlObjectBase> NewElement()
{
    return CSmartPtr<CXmlObjectBase>(new CElement("unread"));
}

// Reads XML the way each kind of object reads a whole document.
void ReadXml(CXmlObjectBase &object, std::string const &xml, CSerializationContext const &context)
{
    if (auto *element = dynamic_cast<CElement *>(&object))
        element->FromXml(xml.c_str());
    else
        object.FromXml(xml.c_str(), context);
}

CSerializationContext StrictContext(JsonRoundTrip mode)
{
    CSerializationContext context;
    context.GetJsonContext().SetStrict(true);
    context.GetJsonContext().SetSupportRoundtrip(mode);
    return context;
}

std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (CMxValidationException const &e)
    {
        return "validation: " + e.GetFullMessage();
    }
    catch (CMxException const &e)
    {
        return e.GetFullMessage();
    }
    return "no error";
}

// One line per text: "valid", or "invalid: <reason>"; empty when python3 is missing.
std::vector<std::string> PythonVerdicts(std::vector<std::string> const &texts)
{
    std::string const dir = (fs::temp_directory_path() / ("mx-strict-json-" + std::to_string(::getpid()))).string();
    fs::create_directories(dir);
    std::string command = "python3 " MX_TEST_DATA_DIR "/check_strict_json.py";
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        std::string const path = dir + "/" + std::to_string(i) + ".json";
        WriteFile(path, texts[i]);
        command += " " + path;
    }
    command += " 2>/dev/null";
    std::vector<std::string> verdicts;
    std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    if (pipe)
    {
        std::string output;
        char buffer[4096];
        while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe.get()))
            output.append(buffer, n);
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);)
            verdicts.push_back(line);
    }
    fs::remove_all(dir);
    return verdicts;
}

void ExpectPythonAccepts(std::vector<std::string> const &texts, std::vector<std::string> const &labels)
{
    std::vector<std::string> const verdicts = PythonVerdicts(texts);
    if (verdicts.empty())
    {
        std::puts("python3 not found: strict JSON not checked by the peer");
        return;
    }
    ASSERT_EQ(texts.size(), verdicts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ("valid", verdicts[i]) << labels[i] << "\n" << texts[i];
}

// The strict text of `xml` read into `make()`, after checking that it reads
// back to the same XML (or at least without an error).
std::string StrictRoundTrip(CSmartPtr<CXmlObjectBase> (*make)(), std::string const &xml,
                            CSerializationContext const &context, bool formatted, bool readsBack = true)
{
    CSmartPtr<CXmlObjectBase> original = make();
    ReadXml(*original, xml, context);
    std::string const expectedXml = original->ToXml(false, false, LF, context);
    std::string const json = original->ToJson(formatted, LF, context);
    CSmartPtr<CXmlObjectBase> again = make();
    std::string const error = ErrorOf([&] { again->FromJson(json.c_str(), context); });
    EXPECT_EQ("no error", error) << json;
    if (readsBack)
        EXPECT_EQ(expectedXml, again->ToXml(false, false, LF, context)) << json;
    return json;
}

struct Shape
{
    char const *label;
    CSmartPtr<CXmlObjectBase> (*make)();
    JsonRoundTrip mode;
    char const *xml;
    char const *expected; // unformatted
    // Below RoundTripFull the untyped tree loses its namespaces.
    bool readsBack = true;
};

#define ORDER_START "<order xmlns=\"urn:m\" id=\"7\"><number>3</number><priority>high</priority>" \
                    "<customer><name>Ann</name></customer><payment xsi:type=\"card\" " \
                    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><number>1</number></payment>"

Shape const kShapes[] = {
    {"repeated class, then a sibling after the collection", &New<COrder>, RoundTripFull,
     ORDER_START "<line><name>a</name></line><line ref=\"2\"><name>b</name></line><tag>x</tag></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\","
     "\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\","
     "\"m:number\":\"1\"},\"m:line\":[{\"m:name\":\"a\"},{\"@ref\":2,\"m:name\":\"b\"}],"
     "\"m:tag\":[\"x\"]}}"},
    {"repeated primitive, numbers unquoted", &New<COrder>, RoundTripFull,
     ORDER_START "<code>-5</code><code>17</code></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\","
     "\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\","
     "\"m:number\":\"1\"},\"m:code\":[-5,17]}}"},
    {"repeated primitive strings and enumerations side by side", &New<COrder>, RoundTripFull,
     ORDER_START "<tag>a</tag><tag>b</tag><flag>low</flag><flag>high</flag><code>1</code></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\","
     "\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\","
     "\"m:number\":\"1\"},\"m:tag\":[\"a\",\"b\"],\"m:flag\":[\"low\",\"high\"],"
     "\"m:code\":[1]}}"},
    {"repeated choice of untyped content keeps its order", &New<CPacket>, RoundTripFull,
     "<packet xmlns=\"urn:m\" units=\"cm\"><width>1</width><height>2</height><x:f xmlns:x=\"urn:x\">1</x:f>"
     "<a>1</a><b>2</b><a>3</a></packet>",
     "{\"m:packet\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:m\":\"urn:m\",\"@units\":\"cm\",\"m:width\":1,\"m:height\":2,\"AA:f\":{\"@xmlns:AA\":\"urn:x\","
     "\"#text\":\"1\"},\"m:a\":[\"1\"],\"#seq\":[{\"m:b\":\"2\"},{\"m:a\":\"3\"}]}}"},
    {"empty element", &New<CPick>, RoundTripAttributes, "<pick xmlns=\"urn:m\"/>",
     "{\"pick\":\"\"}"},
    {"nil element keeps xsi:nil", &New<CPacket>, RoundTripFull,
     "<packet xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><width>1</width>"
     "<height>2</height><memo xsi:nil=\"true\"/><x:f xmlns:x=\"urn:x\"/></packet>",
     "{\"m:packet\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\","
     "\"@xmlns:m\":\"urn:m\",\"m:width\":1,\"m:height\":2,\"m:memo\":{\"@xsi:nil\":true},"
     "\"AA:f\":{\"@xmlns:AA\":\"urn:x\"}}}"},
    {"nil element below RoundTripFull is null", &New<CPacket>, RoundTripAttributes,
     "<packet xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><width>1</width>"
     "<height>2</height><memo xsi:nil=\"true\"/><x:f xmlns:x=\"urn:x\"/></packet>",
     "{\"packet\":{\"width\":1,\"height\":2,\"memo\":null,\"f\":\"\"}}", false},
    {"attributes only", &NewElement, RoundTripAttributes, "<a x=\"1\" y=\"two\"/>",
     "{\"a\":{\"@x\":\"1\",\"@y\":\"two\"}}"},
    {"text with attributes", &New<CPrice>, RoundTripAttributes, "<price xmlns=\"urn:m\" currency=\"USD\">12</price>",
     "{\"price\":{\"@currency\":\"USD\",\"#text\":12}}"},
    {"mixed content", &NewElement, RoundTripAttributes, "<p>one <b>two</b> three <i>four</i> five</p>",
     "{\"p\":{\"b\":\"two\",\"i\":\"four\",\"#text\":\"one  three  five\"}}"},
    {"untyped repeats and alternation", &NewElement, RoundTripAttributes,
     "<r><a>1</a><a>2</a><b/><a>3</a></r>",
     "{\"r\":{\"a\":[\"1\",\"2\"],\"b\":\"\",\"#seq\":[{\"a\":\"3\"}]}}"},
    {"namespaces at RoundTripFull", &NewElement, RoundTripFull,
     "<r xmlns=\"urn:r\" xmlns:p=\"urn:p\" p:at=\"1\"><p:c/><d xmlns=\"urn:d\"><e/></d></r>",
     "{\"AA:r\":{\"@xmlns:AA\":\"urn:r\",\"@xmlns:AB\":\"urn:p\",\"@AB:at\":\"1\","
     "\"AB:c\":\"\",\"AC:d\":{\"@xmlns:AC\":\"urn:d\",\"AC:e\":\"\"}}}"},
    {"escapes", &NewElement, RoundTripAttributes,
     "<e q='say \"hi\"&#9;\\'>back\\slash &quot;quoted&quot; &amp; tab&#9;line&#10;end &#x1F600;</e>",
     "{\"e\":{\"@q\":\"say \\\"hi\\\"\\t\\\\\","
     "\"#text\":\"back\\\\slash \\\"quoted\\\" & tab\\tline\\nend \xF0\x9F\x98\x80\"}}"},
};

TEST_F(StrictJson, EveryShapeHasOneTextThatPythonAcceptsAndThatReadsBack)
{
    std::vector<std::string> texts, labels;
    for (Shape const &shape : kShapes)
        for (bool formatted : {false, true})
        {
            SCOPED_TRACE(std::string(shape.label) + (formatted ? ", formatted" : ""));
            CSerializationContext context = StrictContext(shape.mode);
            context.GetNamespaceAliases().Add("xsi", kXsi);
            context.GetNamespaceAliases().Add("m", "urn:m");
            std::string json;
            std::string const error = ErrorOf(
                [&] { json = StrictRoundTrip(shape.make, shape.xml, context, formatted, shape.readsBack); });
            EXPECT_EQ("no error", error);
            if (!formatted)
                EXPECT_EQ(shape.expected, json);
            texts.push_back(json);
            labels.push_back(shape.label);
        }
    ExpectPythonAccepts(texts, labels);
}

} // namespace

namespace
{
std::vector<fs::path> CorpusDocuments()
{
    fs::path const tests = fs::path(MX_TEST_DATA_DIR).parent_path().parent_path();
    std::vector<fs::path> documents;
    for (fs::path const &folder : {tests / "collections" / "data", tests / "fastinfoset" / "data",
                                   tests / "document" / "data", tests / "json" / "data",
                                   tests.parent_path() / "examples" / "data"})
        for (auto const &entry : fs::directory_iterator(folder))
        {
            std::string const name = entry.path().filename().string();
            if (entry.path().extension() == ".xml" && name.find(".expected.") == std::string::npos)
                documents.push_back(entry.path());
        }
    std::sort(documents.begin(), documents.end());
    return documents;
}
} // namespace

// Every XML document of the suites' corpora and the example's order, read by
// the untyped tree, formatted and not.
TEST_F(StrictJson, CorpusDocumentsComeBackThroughTheUntypedTree)
{
    std::vector<fs::path> const documents = CorpusDocuments();
    ASSERT_GE(documents.size(), 50u);
    std::vector<std::string> texts, labels;
    for (fs::path const &document : documents)
        for (bool formatted : {false, true})
        {
            std::string const label = document.parent_path().parent_path().filename().string() + "/" +
                                      document.filename().string() + (formatted ? ", formatted" : "");
            SCOPED_TRACE(label);
            CSerializationContext const context = StrictContext(RoundTripFull);
            std::string json;
            std::string const error =
                ErrorOf([&] { json = StrictRoundTrip(&NewElement, ReadFile(document.string()), context, formatted); });
            EXPECT_EQ("no error", error);
            texts.push_back(json);
            labels.push_back(label);
        }
    ExpectPythonAccepts(texts, labels);
}

// The deepest tree the XML reader takes comes back; one level more is refused
// by the strict reader itself, with the path.
TEST_F(StrictJson, NestingAtTheLimitOfTheXmlReader)
{
    std::size_t const limit = CXmlDocument::kMaxElementDepth;
    std::string xml;
    for (std::size_t i = 0; i < limit; ++i)
        xml += "<e a=\"1\">";
    for (std::size_t i = 0; i < limit; ++i)
        xml += "</e>";
    CSerializationContext const context = StrictContext(RoundTripAttributes);
    std::string const json = StrictRoundTrip(&NewElement, xml, context, false);
    EXPECT_EQ(limit * std::string("{\"e\":{\"@a\":\"1\"").size() + 1 + (limit - 1) + 1, json.size());

    std::string deeper;
    for (std::size_t i = 0; i <= limit; ++i)
        deeper += "{\"e\":";
    deeper += "1" + std::string(limit + 1, '}');
    CSmartPtr<CElement> element(new CElement("unread"));
    std::string const error = ErrorOf([&] { element->FromJson(deeper.c_str(), context); });
    EXPECT_EQ(0u, error.find("validation: Strict JSON: elements nest deeper than the XML reader takes at line 1, "
                             "position 10245.\nPath: $.e.e.e."))
        << error.substr(0, 200);
}

struct Malformed
{
    char const *json;
    char const *error;
};

Malformed const kMalformed[] = {
    {"{\"a\":1} x",
     "validation: Strict JSON: text follows the document at line 1, position 8.\nPath: $"},
    {"{\"a\":1,\"b\":2}",
     "validation: Strict JSON: a document has one key, its root element at line 1, position 6.\nPath: $.a"},
    {"[1]",
     "validation: Strict JSON: expected '{' to open the document at line 1, position 0.\nPath: $"},
    {"// note\n{\"a\":1}",
     "validation: Strict JSON: expected '{' to open the document at line 1, position 0.\nPath: $"},
    {"{\"a\":[1,2]}",
     "validation: Strict JSON: an array holds the repeats of a key and cannot be an element's value at line 1,"
     " position 5.\nPath: $.a"},
    {"{\"a\":{\"b\":[]}}",
     "validation: Strict JSON: an array of repeats cannot be empty at line 1, position 11.\nPath: $.a.b"},
    {"{\"a\":{\"b\":[1,[2]]}}",
     "validation: Strict JSON: an array holds the repeats of a key and cannot be an element's value at line 1,"
     " position 13.\nPath: $.a.b[1]"},
    {"{\"a\":{\"b\":1,\"@c\":2}}",
     "validation: Strict JSON: an attribute follows the content of its element at line 1,"
     " position 17.\nPath: $.a.@c"},
    {"{\"a\":{\"@c\":null}}",
     "validation: Strict JSON: an attribute takes a string, number or boolean at line 1, position 11.\nPath: $.a.@c"},
    {"{\"a\":{\"#seq\":[{\"b\":1,\"c\":2}]}}",
     "validation: Strict JSON: an entry of \"#seq\" is an object with one key at line 1,"
     " position 20.\nPath: $.a.#seq[0]"},
    {"{\"a\":{\"#seq\":{\"b\":1}}}",
     "validation: Strict JSON: \"#seq\" takes an array at line 1, position 13.\nPath: $.a.#seq"},
    {"{\"a\":{\"#other\":1}}",
     "validation: Strict JSON: unknown key at line 1, position 15.\nPath: $.a.#other"},
    {"{\"a b\":1}",
     "validation: Strict JSON: the key is no XML name at line 1, position 6.\nPath: $.a b"},
    {"{\"a\":{\"p:q:r\":1}}",
     "validation: Strict JSON: the key is no XML name at line 1, position 14.\nPath: $.a.p:q:r"},
    {"{\"a\":\"\\u0001\"}",
     "validation: Strict JSON: the text holds a control character that XML cannot carry at line 1,"
     " position 13.\nPath: $.a"},
    {"{\"a\":\"\\ud800x\"}",
     "validation: Strict JSON: a high surrogate without a low one at line 1, position 12.\nPath: $.a"},
    {"{\"a\":\"\\x\"}",
     "validation: Strict JSON: an invalid escape in a string at line 1, position 7.\nPath: $.a"},
    {"{\"a\":\"tab\there\"}",
     "validation: Strict JSON: a control character must be escaped in a string at line 1, position 9.\nPath: $.a"},
    {"{\"a\":\"open",
     "validation: Strict JSON: the text ends inside a string at line 1, position 10.\nPath: $.a"},
    {"{\"a\":NaN}",
     "validation: Strict JSON: expected a value at line 1, position 5.\nPath: $.a"},
    {"{\"a\":01}",
     "validation: Strict JSON: expected '}' to close the document at line 1, position 6.\nPath: $.a"},
    {"{\"a\":-}",
     "validation: Strict JSON: expected a digit at line 1, position 6.\nPath: $.a"},
    {"{\"a\":1.}",
     "validation: Strict JSON: expected a digit at line 1, position 7.\nPath: $.a"},
    {"{\"a\":tru}",
     "validation: Strict JSON: expected a value at line 1, position 5.\nPath: $.a"},
    {"{\"a\":{\"b\":1",
     "validation: Strict JSON: expected ',' or '}' in an object at line 1, position 11.\nPath: $.a"},
};

TEST_F(StrictJson, MalformedOrUnexpectedJsonFailsWithTheJsonPath)
{
    CSerializationContext const context = StrictContext(RoundTripFull);
    for (Malformed const &c : kMalformed)
    {
        SCOPED_TRACE(c.json);
        CSmartPtr<CElement> element(new CElement("unread"));
        EXPECT_EQ(c.error, ErrorOf([&] { element->FromJson(c.json, context); }));
    }
}

// Strict reading takes the root element name and the byte entries as the
// default reading does; null is a nil element.
TEST_F(StrictJson, RootNameNullAndByteInput)
{
    CSerializationContext context = StrictContext(RoundTripFull);
    context.GetJsonContext().SetRootElementName("r");
    CSmartPtr<CElement> element(new CElement("unread"));
    element->FromJson("{\"@x\":\"1\",\"n\":null,\"v\":[true,-2.5e3]}", context);
    EXPECT_EQ("<r x=\"1\"><n xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:nil=\"true\"/><v>true</v>"
              "<v>-2.5e3</v></r>",
              element->ToXml(false, false, LF, context));
    // Byte and file input drop a byte order mark; escapes decode
    // to UTF-8; the untyped tree reads the document element, as from text.
    CSerializationContext const plain = StrictContext(RoundTripFull);
    std::string const json = "\xEF\xBB\xBF{\"r\":{\"s\":\"\\u00e9\\ud83d\\ude00\"}}";
    std::string const path = (fs::temp_directory_path() / ("mx-strict-" + std::to_string(::getpid()))).string();
    WriteFile(path, json);
    CBinaryData bytes;
    bytes.SetBuffer(json.c_str());
    for (int entry = 0; entry < 2; ++entry)
    {
        CSmartPtr<CElement> read(new CElement("unread"));
        if (entry == 0)
            read->FromJsonStream(bytes, plain);
        else
            read->FromJsonFile(path.c_str(), plain);
        EXPECT_EQ("<r><s>\xC3\xA9\xF0\x9F\x98\x80</s></r>", read->ToXml(false, false, LF, plain));
    }
    fs::remove(path);
}

// Numbers and booleans stay unquoted only where the item type says so and the
// text is a JSON token; whatever is written reads back as the same text.
struct ValueCase
{
    char const *text;
    ItemType type;
    char const *json;
};

ValueCase const kValues[] = {
    {"12.50", ItemType_decimal, "12.50"},     {"-0", ItemType_i4, "-0"},
    {"1.5E+10", ItemType_r8, "1.5E+10"},
    {"123456789012345678901234567890", ItemType_integer, "123456789012345678901234567890"},
    {"true", ItemType_boolean, "true"},       {"1", ItemType_boolean, "\"1\""},
    {"INF", ItemType_r8, "\"INF\""},          {"-INF", ItemType_r4, "\"-INF\""},
    {"NaN", ItemType_r8, "\"NaN\""},          {"007", ItemType_i4, "\"007\""},
    {"+1", ItemType_i4, "\"+1\""},            {"1.", ItemType_r8, "\"1.\""},
    {".5", ItemType_r8, "\".5\""},            {"1e5", ItemType_string, "\"1e5\""},
    {"2026-11-25", ItemType_date, "\"2026-11-25\""},
    {"\x01\x1F\x7F\xC3\xA9", ItemType_string, "\"\\u0001\\u001f\x7F\xC3\xA9\""},
};

TEST_F(StrictJson, ValuesAreBareOnlyWhereTheTypeAndTheTextAllow)
{
    std::vector<std::string> texts, labels;
    for (ValueCase const &c : kValues)
    {
        SCOPED_TRACE(c.text);
        CTextStream stream;
        CJsonStrictWriter writer(&stream);
        writer.SetFormatted(false);
        stream.Start();
        writer.WriteDocumentStart();
        writer.StartElement("v", "");
        writer.WriteText(c.text, c.type, false);
        writer.EndElement();
        writer.WriteDocumentEnd();
        stream.End();
        std::string const json = stream.TextAsString();
        EXPECT_EQ(std::string("{\"v\":") + c.json + "}", json);
        texts.push_back(json);
        labels.push_back(c.text);
        if (c.text[0] == '\x01')
            continue; // XML cannot carry the control characters back
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromJson(json.c_str(), StrictContext(RoundTripFull));
        EXPECT_EQ(c.text, element->GetText());
    }
    ExpectPythonAccepts(texts, labels);
}

// Every level writes valid JSON for every shape, though only the full one
// keeps namespaces, xsi:type and xsi:nil; the setting is off by default and
// shared by copies of a context.
TEST_F(StrictJson, EveryRoundTripLevelWritesValidJson)
{
    EXPECT_FALSE(CSerializationContext().GetJsonContext().IsStrict());
    CJsonContext copy(StrictContext(RoundTripNone).GetJsonContext());
    EXPECT_TRUE(copy.IsStrict());
    std::vector<std::string> texts, labels;
    for (Shape const &shape : kShapes)
        for (JsonRoundTrip mode : {RoundTripNone, RoundTripAttributes, RoundTripFull})
        {
            std::string const label = std::string(shape.label) + ", level " + std::to_string(mode);
            SCOPED_TRACE(label);
            CSerializationContext context = StrictContext(mode);
            context.GetNamespaceAliases().Add("xsi", kXsi);
            CSmartPtr<CXmlObjectBase> object = shape.make();
            ReadXml(*object, shape.xml, context);
            texts.push_back(object->ToJson(true, CRLF, context));
            labels.push_back(label);
        }
    ExpectPythonAccepts(texts, labels);
}
