// JSON to XML text: the path keeper and the translation, edge cases included.

#include "document/XmlDocument.h"
#include "json/JsonContext.h"
#include "json/JsonHandlers.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

using namespace MxXmlLib;

namespace
{
struct Translation
{
    char const *label;
    char const *json;
    char const *expected; // the XML text, or "!" and the message, or "?" and the message and path
    JsonRoundTrip mode = RoundTripFull;
    char const *rootName = "";
};

std::string Translate(char const *json, JsonRoundTrip mode, char const *rootName)
{
    CSerializationContext context;
    context.GetJsonContext().SetSupportRoundtrip(mode);
    context.GetJsonContext().SetRootElementName(rootName);
    CXmlDocument document(context);
    try
    {
        CBinaryData const xml = document.LoadJson(json);
        return std::string(reinterpret_cast<char const *>(xml.GetData()), xml.GetLength());
    }
    catch (CMxValidationException const &e)
    {
        return "? " + e.GetFullMessage();
    }
    catch (CMxInvalidStateException const &e)
    {
        return "! " + e.GetFullMessage();
    }
    catch (CMxException const &e)
    {
        return "plain " + e.GetFullMessage();
    }
}

Translation const kTranslations[] = {
    {"attributes, then elements", "{\"a\":{\"@x\":\"1\",\"b\":\"t\",\"c\":2,\"d\":true}}",
     "<a x=\"1\">\n\t<b>t</b>\n\t<c>2</c>\n\t<d>true</d>\n</a>\n"},
    {"the outermost object gives no element", "{\"a\":1,\"b\":2}", "<a>1</a>\n<b>2</b>\n"},
    {"a root name puts one element around them", "{\"a\":1,\"b\":2}", "<r>\n\t<a>1</a>\n\t<b>2</b>\n</r>\n",
     RoundTripFull, "r"},
    {"empty text with a root name", "  ", "<r/>\n", RoundTripFull, "r"},
    {"arrays of objects reopen the element", "{\"r\":{\"i\":[{\"v\":\"1\"},{\"v\":\"2\"}]}}",
     "<r>\n\t<i>\n\t\t<v>1</v>\n\t</i>\n\t<i>\n\t\t<v>2</v>\n\t</i>\n</r>\n"},
    {"in an array of scalars only the first is inside its element", "{\"r\":{\"a\":[1,2]}}",
     "<r>\n\t<a>1</a>\n2</r>\n"},
    {"an object after a scalar reopens the array's element", "{\"r\":{\"i\":[1,{\"v\":\"2\"}]}}",
     "<r>\n\t<i>1</i>\n\t<i>\n\t\t<v>2</v>\n\t</i>\n</r>\n"},
    {"#text closes the element", "{\"p\":{\"@c\":\"USD\",\"#text\":12}}", "<p c=\"USD\">12</p>\n"},
    {"a key after #text lands in the parent", "{\"r\":{\"p\":{\"#text\":\"1\",\"q\":\"2\"}}}",
     "<r>\n\t<p>1</p>\n\t<q>2</q>\n</r>\n"},
    {"without round trips @ and #text are element names", "{\"r\":{\"@a\":\"1\",\"#text\":\"t\"}}",
     "<r>\n\t<@a>1</@a>\n\t<#text>t</#text>\n</r>\n", RoundTripNone},
    {"null gives an empty element, or no attribute", "{\"r\":{\"@b\":null,\"a\":null}}", "<r>\n\t<a/>\n</r>\n"},
    {"names are not mangled", "{\"p:r\":{\"@xmlns:p\":\"urn:p\",\"p:a\":\"<&>\"}}",
     "<p:r xmlns:p=\"urn:p\">\n\t<p:a>&lt;&amp;&gt;</p:a>\n</p:r>\n"},
    {"an attribute after an element", "{\"r\":{\"a\":\"1\",\"@b\":\"2\"}}",
     "! Failed to convert value '2' to Attribute string value in XML."},
    {"a value with no element open", "\"x\"", "! Failed to convert value 'x' to Element string value in XML."},
    {"an object ending in an attribute stays open", "{\"a\":{\"@x\":\"1\"}}", "plain An Element has not been closed."},
    {"empty key", "{\"r\":{\"\":1}}", "? JSON item has an empty Name.\nPath: $..r"},
    {"array without a key", "[1]", "? JSON Array has no Name.\nPath: $"},
    {"syntax errors pass through", "{\"r\":[{\"a\":1},{\"a\":x}]}",
     "? Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found 'x' at line 1, position 20.\n"
     "Path: $.a.r[\x01]"},
};

TEST(JsonToXml, TranslatesEventsToXmlText)
{
    for (auto const &c : kTranslations)
    {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(c.expected, Translate(c.json, c.mode, c.rootName));
    }
}

TEST(JsonToXml, CommentsFollowTheContext)
{
    CSerializationContext context;
    CXmlDocument document(context);
    CBinaryData const xml = document.LoadJson("/* c */ {\"a\":1}");
    EXPECT_EQ("<a>1</a>\n", std::string(reinterpret_cast<char const *>(xml.GetData()), xml.GetLength()));
    context.GetJsonContext().GetAllowComments(false);
    EXPECT_THROW(document.LoadJson("/* c */ {\"a\":1}"), CMxValidationException);
}

TEST(JsonToXml, RefusesEmptyText)
{
    CXmlDocument document;
    for (auto const &call : {+[](CXmlDocument &d) { d.LoadJson(""); }, +[](CXmlDocument &d) { d.LoadJson(L""); },
                             +[](CXmlDocument &d) { d.LoadJson(static_cast<char const *>(nullptr)); }})
    {
        try
        {
            call(document);
            ADD_FAILURE() << "no error";
        }
        catch (CMxException const &e)
        {
            EXPECT_EQ(typeid(CMxException), typeid(e));
            EXPECT_EQ("JSON String is empty!", e.GetMessage());
        }
    }
}

TEST(JsonToXml, WideTextIsTakenAsTwoRawBytesPerCharacter)
{
    // Only the first half of each 32-bit character's bytes reaches the
    // reader: "5" followed by a zero byte, which ends the number.
    CXmlDocument document;
    try
    {
        document.LoadJson(L"5");
        ADD_FAILURE() << "no error";
    }
    catch (CMxInvalidStateException const &e)
    {
        EXPECT_EQ("Failed to convert value '5' to Element string value in XML.", e.GetMessage());
    }
    EXPECT_THROW(document.LoadJson(L"{\"a\":1}"), CMxValidationException);
}

TEST(JsonPath, KeepsNamesObjectsAndArrayIndexes)
{
    CJsonReaderDefaultHandler path;
    EXPECT_EQ("$", path.GetErrorPath());
    path.OnStartObject();
    path.OnName("a");
    EXPECT_EQ("$.a", path.GetErrorPath());
    path.OnStartArray();
    EXPECT_EQ("$", path.GetErrorPath());
    path.OnNumber("1"); // scalars leave the index alone
    path.OnStartObject();
    path.OnName("b");
    EXPECT_EQ(std::string("$.b.a[\0]", 8), path.GetErrorPath());
    path.OnEndObject();
    path.OnStartObject();
    EXPECT_EQ("$.a[\x01]", path.GetErrorPath());
    path.OnStartObject(); // an object in an object without a key is nameless
    EXPECT_EQ("$..a[\x01]", path.GetErrorPath());
    path.OnEndObject();
    path.OnEndObject();
    path.OnEndArray();
    path.OnName("c");
    EXPECT_EQ("$.c", path.GetErrorPath());
    path.OnEndObject();
    EXPECT_EQ("$", path.GetErrorPath());
}

} // namespace
