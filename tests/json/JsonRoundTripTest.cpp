// Objects of the test model written as JSON and read back give the same XML;
// the frames' messages, wrapping and handling of the context.

#include "model/Model.h"
#include "model/SimpleOrder.h"

#include "json/JsonContext.h"

#include <gtest/gtest.h>

#include <functional>

using namespace MxXmlLib;
using namespace MxTestModel;

namespace
{
char const kXsi[] = "http://www.w3.org/2001/XMLSchema-instance";

class JsonFrames : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

template <class T> CSmartPtr<CXmlObjectBase> New()
{
    return CSmartPtr<CXmlObjectBase>(new T);
}

struct RoundTrip
{
    char const *label;
    CSmartPtr<CXmlObjectBase> (*make)();
    char const *xml;
    unsigned modes; // bit per JsonRoundTrip value
};

constexpr unsigned kAll = 7, kWithAttributes = 6, kFull = 4;

RoundTrip const kRoundTrips[] = {
    {"elements only", &New<CParty>, "<party xmlns=\"urn:m\"><name>A&amp;B &lt;3&gt;</name><phone>1</phone></party>",
     kAll},
    {"attribute and elements", &New<CParty>, "<party xmlns=\"urn:m\" ref=\"-2\"><name>Ann</name></party>",
     kWithAttributes},
    {"simple content with an attribute", &New<CPrice>, "<price xmlns=\"urn:m\" currency=\"USD\">12</price>",
     kWithAttributes},
    {"all group of single elements", &New<CSettings>,
     "<settings xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><width>3</width>"
     "<color>red</color><mode>low</mode><owner><name>A</name></owner><payment xsi:type=\"card\"><number>1</number>"
     "</payment><meta>m</meta></settings>",
     kFull},
    {"substitution by xsi:type and a collection of objects at the end", &New<COrder>,
     "<order xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" id=\"7\" status=\"closed\">"
     "<number>3</number><note>hi</note><priority>high</priority><customer ref=\"2\"><name>Ann</name></customer>"
     "<total currency=\"USD\">12</total><payment xsi:type=\"card\"><number>42</number></payment>"
     "<line><name>a</name></line><line><name>b</name><phone>2</phone></line></order>",
     kFull},
};

TEST_F(JsonFrames, ModelObjectsComeBackAsTheSameXml)
{
    for (auto const &c : kRoundTrips)
        for (int mode = 0; mode < 3; ++mode)
            for (bool formatted : {true, false})
            {
                if (!(c.modes & (1u << mode)))
                    continue;
                SCOPED_TRACE(std::string(c.label) + ", mode " + std::to_string(mode) +
                             (formatted ? ", formatted" : ""));
                CSerializationContext context;
                context.GetJsonContext().SetSupportRoundtrip(static_cast<JsonRoundTrip>(mode));
                context.GetNamespaceAliases().Add("xsi", kXsi);
                try
                {
                    CSmartPtr<CXmlObjectBase> original = c.make();
                    original->FromXml(c.xml, context);
                    std::string const xml = original->ToXml(false, false, LF, context);
                    std::string const json = original->ToJson(formatted, LF, context);
                    CSmartPtr<CXmlObjectBase> again = c.make();
                    again->FromJson(json.c_str(), context);
                    EXPECT_EQ(xml, again->ToXml(false, false, LF, context)) << json;
                }
                catch (CMxException const &e)
                {
                    ADD_FAILURE() << e.GetFullMessage();
                }
            }
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

TEST_F(JsonFrames, ToJsonWritesTheRootAsTheOneKeyOfTheDocument)
{
    CSmartPtr<CParty> party(new CParty);
    party->FromXml("<party xmlns='urn:m' ref='2'><name>Ann</name></party>");
    CSerializationContext context;
    EXPECT_EQ("{\n\t\"AA:party\": {\n\t\t\"@xmlns:AA\": \"urn:m\",\n\t\t\"@ref\": 2,\n\t\t\"AA:name\": \"Ann\"\n\t}\n}",
              party->ToJson(true, LF, context));
    context.GetNamespaceAliases().Add("m", "urn:m");
    context.SetIndentChars("  ");
    EXPECT_EQ("{\r\n  \"m:party\": {\r\n    \"@xmlns:m\": \"urn:m\",\r\n    \"@ref\": 2,\r\n    \"m:name\": \"Ann\"\r\n  }\r\n}",
              party->ToJson(true, CRLF, context));
    context.GetJsonContext().SetSupportRoundtrip(RoundTripNone);
    EXPECT_EQ("{\"party\": {\"ref\": 2,\"name\": \"Ann\"}}", party->ToJson(false, LF, context));
}

TEST_F(JsonFrames, ReadingWrapsXmlErrorsButNotJsonErrors)
{
    CSmartPtr<CParty> party(new CParty);
    EXPECT_EQ("Error converting JSON to XML:\n<a>1</a>\n<b>2</b>\n\njunk after document element at line 2",
              ErrorOf([&] { party->FromJson("{\"a\":1,\"b\":2}"); }));
    EXPECT_EQ("validation: Expected Object separator character ',', found 'x' at line 1, position 13.\nPath: $",
              ErrorOf([&] { party->FromJson("{\"party\":{} x"); }));
    EXPECT_EQ("JSON String is empty!", ErrorOf([&] { party->FromJson(""); }));
    EXPECT_EQ("Failed to convert value '5' to Element string value in XML.", ErrorOf([&] { party->FromJson(L"5"); }));
    EXPECT_EQ("An Element has not been closed.", ErrorOf([&] { party->FromJson("{\"party\":{\"@ref\":1}}"); }));
}

TEST_F(JsonFrames, RootElementNameGivesTheKeysTheirElement)
{
    CSerializationContext context;
    context.GetJsonContext().SetSupportRoundtrip(RoundTripAttributes);
    context.GetJsonContext().SetRootElementName("party");
    CSmartPtr<CParty> party(new CParty);
    party->FromJson("{\"@ref\": 3, \"name\": \"Ann\", \"phone\": 12}", context);
    EXPECT_EQ("<AA:party xmlns:AA=\"urn:m\" ref=\"3\"><AA:name>Ann</AA:name><AA:phone>12</AA:phone></AA:party>",
              party->ToXml(false, false, LF, context));
}

// Without full round trips namespaces are ignored for the call only; the flag
// is put back on every way out, as the combined test found it.
TEST_F(JsonFrames, IgnoreNamespacesIsRestoredAfterEachCall)
{
    struct Case
    {
        JsonRoundTrip mode;
        SchemaType schema;
        char const *json;
        bool flagAfter;
    };
    Case const cases[] = {
        {RoundTripAttributes, SchemaType_Default, "{\"party\":{\"name\":\"A\"}}", false},
        {RoundTripAttributes, SchemaType_Default, "{\"party\":{\"bogus\":\"A\"}}", false},
        {RoundTripNone, SchemaType_NoNamespaces, "{\"party\":{\"name\":\"A\"}}", true},
        {RoundTripFull, SchemaType_Default, "{\"party\":{\"name\":\"A\"}}", false},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.json);
        CSerializationContext context;
        context.GetJsonContext().SetSupportRoundtrip(c.mode);
        context.SetSchemaType(c.schema);
        CSmartPtr<CParty> party(new CParty);
        std::string const error = ErrorOf([&] { party->FromJson(c.json, context); });
        EXPECT_EQ(c.flagAfter, context.GetIgnoreNamespacesFlag()) << error;
    }
}

TEST_F(JsonFrames, JsonContextIsBuiltOnFirstUseWithItsDefaults)
{
    CSerializationContext context;
    CJsonContext &json = context.GetJsonContext();
    EXPECT_EQ(&json, &context.GetJsonContext());
    EXPECT_EQ(RoundTripFull, json.GetSupportRoundtrip());
    EXPECT_EQ("", json.GetRootElementName());
    EXPECT_TRUE(json.GetAllowComments());
    json.SetRootElementName(nullptr);
    json.GetAllowComments(false);
    CJsonContext copy(json);
    EXPECT_FALSE(copy.GetAllowComments());
}

} // namespace
