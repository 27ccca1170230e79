// Strict JSON: every shape of the model and of the untyped tree gives one
// exact text, which Python's json module accepts with duplicate keys and
// NaN/Infinity refused, and which reads back to byte-identical XML; the XML
// corpora of the other suites make the same round trip; malformed and
// unexpected JSON fail with the JSON path.

#include "JsonTestSupport.h"

#include "collections/Element.h"
#include "json/JsonContext.h"
#include "model/Model.h"
#include "runtime/MxException.h"

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
// back to the same XML.
std::string StrictRoundTrip(CSmartPtr<CXmlObjectBase> (*make)(), std::string const &xml,
                            CSerializationContext const &context, bool formatted)
{
    CSmartPtr<CXmlObjectBase> original = make();
    ReadXml(*original, xml, context);
    std::string const expectedXml = original->ToXml(false, false, LF, context);
    std::string const json = original->ToJson(formatted, LF, context);
    CSmartPtr<CXmlObjectBase> again = make();
    std::string const error = ErrorOf([&] { again->FromJson(json.c_str(), context); });
    EXPECT_EQ("no error", error) << json;
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
};

#define ORDER_START "<order xmlns=\"urn:m\" id=\"7\"><number>3</number><priority>high</priority>" \
                    "<customer><name>Ann</name></customer><payment xsi:type=\"card\" " \
                    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><number>1</number></payment>"

Shape const kShapes[] = {
    {"repeated class, then a sibling after the collection", &New<COrder>, RoundTripFull,
     ORDER_START "<line><name>a</name></line><line ref=\"2\"><name>b</name></line><tag>x</tag></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\",\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\",\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\",\"m:number\":\"1\"},\"m:line\":[{\"m:name\":\"a\"},{\"@ref\":2,\"m:name\":\"b\"}],\"m:tag\":[\"x\"]}}"},
    {"repeated primitive, numbers unquoted", &New<COrder>, RoundTripFull,
     ORDER_START "<code>-5</code><code>17</code></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\",\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\",\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\",\"m:number\":\"1\"},\"m:code\":[-5,17]}}"},
    {"repeated primitive strings and enumerations side by side", &New<COrder>, RoundTripFull,
     ORDER_START "<tag>a</tag><tag>b</tag><flag>low</flag><flag>high</flag><code>1</code></order>",
     "{\"m:order\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\",\"@xmlns:m\":\"urn:m\",\"@id\":7,\"m:number\":3,\"m:priority\":\"high\",\"m:customer\":{\"m:name\":\"Ann\"},\"m:payment\":{\"@xsi:type\":\"m:card\",\"m:number\":\"1\"},\"m:tag\":[\"a\",\"b\"],\"m:flag\":[\"low\",\"high\"],\"m:code\":[1]}}"},
    {"repeated choice of untyped content keeps its order", &New<CPacket>, RoundTripFull,
     "<packet xmlns=\"urn:m\" units=\"cm\"><width>1</width><height>2</height><x:f xmlns:x=\"urn:x\">1</x:f>"
     "<a>1</a><b>2</b><a>3</a></packet>",
     "{\"m:packet\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\",\"@xmlns:m\":\"urn:m\",\"@units\":\"cm\",\"m:width\":1,\"m:height\":2,\"AA:f\":{\"@xmlns:AA\":\"urn:x\",\"#text\":\"1\"},\"m:a\":[\"1\"],\"#seq\":[{\"m:b\":\"2\"},{\"m:a\":\"3\"}]}}"},
    {"empty element", &New<CPick>, RoundTripAttributes, "<pick xmlns=\"urn:m\"/>",
     "{\"pick\":\"\"}"},
    {"nil element keeps xsi:nil", &New<CPacket>, RoundTripFull,
     "<packet xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><width>1</width>"
     "<height>2</height><memo xsi:nil=\"true\"/><x:f xmlns:x=\"urn:x\"/></packet>",
     "{\"m:packet\":{\"@xmlns:xsi\":\"http://www.w3.org/2001/XMLSchema-instance\",\"@xmlns:m\":\"urn:m\",\"m:width\":1,\"m:height\":2,\"m:memo\":{\"@xsi:nil\":true},\"AA:f\":{\"@xmlns:AA\":\"urn:x\"}}}"},
    {"attributes only", &NewElement, RoundTripAttributes, "<a x=\"1\" y=\"two\"/>",
     "{\"a\":{\"@x\":\"1\",\"@y\":\"two\"}}"},
    {"text with attributes", &New<CPrice>, RoundTripAttributes, "<price xmlns=\"urn:m\" currency=\"USD\">12</price>",
     "{\"price\":{\"@currency\":\"USD\",\"#text\":12}}"},
    {"mixed content", &NewElement, RoundTripAttributes, "<p>one <b>two</b> three <i>four</i> five</p>",
     "{\"p\":{\"b\":\"two\",\"i\":\"four\",\"#text\":\"one  three  five\"}}"},
    {"untyped repeats and alternation", &NewElement, RoundTripAttributes,
     "<r><a>1</a><a>2</a><b/><a>3</a></r>",
     "{\"r\":{\"a\":\"1\",\"#seq\":[{\"a\":\"2\"},{\"b\":\"\"},{\"a\":\"3\"}]}}"},
    {"namespaces at RoundTripFull", &NewElement, RoundTripFull,
     "<r xmlns=\"urn:r\" xmlns:p=\"urn:p\" p:at=\"1\"><p:c/><d xmlns=\"urn:d\"><e/></d></r>",
     "{\"AA:r\":{\"@xmlns:AA\":\"urn:r\",\"@xmlns:AB\":\"urn:p\",\"@AB:at\":\"1\",\"AB:c\":\"\",\"AC:d\":{\"@xmlns:AC\":\"urn:d\",\"AC:e\":\"\"}}}"},
    {"escapes", &NewElement, RoundTripAttributes,
     "<e q='say \"hi\"&#9;\\'>back\\slash &quot;quoted&quot; &amp; tab&#9;line&#10;end &#x1F600;</e>",
     "{\"e\":{\"@q\":\"say \\\"hi\\\"\\t\\\\\",\"#text\":\"back\\\\slash \\\"quoted\\\" & tab\\tline\\nend \xF0\x9F\x98\x80\"}}"},
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
            std::string const error = ErrorOf([&] { json = StrictRoundTrip(shape.make, shape.xml, context, formatted); });
            EXPECT_EQ("no error", error);
            if (!formatted)
                EXPECT_EQ(shape.expected, json);
            texts.push_back(json);
            labels.push_back(shape.label);
        }
    ExpectPythonAccepts(texts, labels);
}

} // namespace
