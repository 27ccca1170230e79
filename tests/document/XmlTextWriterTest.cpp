#include "document/XmlTextWriter.h"
#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <gtest/gtest.h>

#include <expat.h>
#include <functional>

using namespace MxXmlLib;

namespace
{
char const kXsi[] = "http://www.w3.org/2001/XMLSchema-instance";

struct Options
{
    bool formatted = false;
    EOLType eol = LF;
    bool writeDefaults = false;
    std::string indent = "\t";
};

std::string Write(std::function<void(CXmlTextWriter &)> const &script, Options const &options = Options())
{
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.StartDocument();
    writer.SetFormatted(options.formatted);
    writer.SetEolType(options.eol);
    writer.SetWriteDefaultValues(options.writeDefaults);
    writer.SetIndent(options.indent);
    script(writer);
    writer.EndDocument();
    return stream.Text();
}

// Parses with namespace processing, as a reader of our output would.
bool WellFormed(std::string const &xml, std::string &error)
{
    XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    bool const ok = XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_ERROR;
    if (!ok)
        error = XML_ErrorString(XML_GetErrorCode(parser));
    XML_ParserFree(parser);
    return ok;
}

struct Case
{
    char const *name;
    std::function<void(CXmlTextWriter &)> script;
    Options options;
    char const *expected;
};

void Element(CXmlTextWriter &w, char const *name, char const *ns, char const *text = "")
{
    w.StartElement(name, ns);
    w.WriteText(text, ItemType_string, false);
    w.EndElement();
}

Options Formatted(EOLType eol = LF, char const *indent = "\t")
{
    Options o;
    o.formatted = true;
    o.eol = eol;
    o.indent = indent;
    return o;
}
} // namespace

TEST(XmlTextWriter, WritesExactText)
{
    Options writeDefaults;
    writeDefaults.writeDefaults = true;
    Case const cases[] = {
        {"empty element", [](auto &w) { Element(w, "a", ""); }, Options(), "<a/>"},
        {"empty element formatted", [](auto &w) { Element(w, "a", ""); }, Formatted(), "<a/>\n"},
        {"text stays on the tag's line", [](auto &w) { Element(w, "a", "", "x"); }, Formatted(), "<a>x</a>\n"},
        {"children indented by depth",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "", "1");
             w.StartElement("c", "");
             Element(w, "d", "");
             w.EndElement();
             w.EndElement();
         },
         Formatted(), "<a>\n\t<b>1</b>\n\t<c>\n\t\t<d/>\n\t</c>\n</a>\n"},
        {"CRLF and a custom indent",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "");
             w.EndElement();
         },
         Formatted(CRLF, "  "), "<a>\r\n  <b/>\r\n</a>\r\n"},
        {"a new indent applies from the next line, an empty one indents nothing",
         [](auto &w) {
             w.StartElement("a", "");
             w.StartElement("b", "");
             Element(w, "c", "");
             w.SetIndent("-");
             Element(w, "d", "");
             w.EndElement();
             w.SetIndent("");
             Element(w, "e", "");
             w.EndElement();
         },
         Formatted(LF, "  "), "<a>\n  <b>\n    <c/>\n--<d/>\n-</b>\n<e/>\n</a>\n"},
        {"unformatted",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "", "t");
             w.EndElement();
         },
         Options(), "<a><b>t</b></a>"},
        {"root in an unmapped namespace gets AA",
         [](auto &w) {
             w.StartElement("a", "urn:a");
             Element(w, "b", "urn:a");
             w.EndElement();
         },
         Options(), "<AA:a xmlns:AA=\"urn:a\"><AA:b/></AA:a>"},
        {"siblings declare again",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "urn:x");
             Element(w, "c", "urn:x");
             w.EndElement();
         },
         Options(), "<a><AA:b xmlns:AA=\"urn:x\"/><AA:c xmlns:AA=\"urn:x\"/></a>"},
        {"second namespace gets AB",
         [](auto &w) {
             w.StartElement("a", "urn:a");
             Element(w, "b", "urn:b");
             w.EndElement();
         },
         Options(), "<AA:a xmlns:AA=\"urn:a\"><AB:b xmlns:AB=\"urn:b\"/></AA:a>"},
        {"a namespace mapped anew keeps its first prefix taken",
         [](auto &w) {
             w.StartElement("a", "urn:a");
             w.AddNamespace("p", "urn:a");
             w.WriteAttribute("xmlns:p", "", "urn:a", ItemType_string);
             w.WriteAttribute("x", "urn:x", "1", ItemType_string);
             w.EndElement();
         },
         Options(), "<AA:a xmlns:AA=\"urn:a\" xmlns:p=\"urn:a\" xmlns:AB=\"urn:x\" AB:x=\"1\"/>"},
        {"mapped before the root",
         [](auto &w) {
             w.AddNamespace("p", "urn:p");
             w.AddNamespace("q", "urn:0");
             w.SetDefaultNamespace("urn:d");
             w.StartElement("a", "urn:d");
             Element(w, "b", "urn:p");
             w.EndElement();
         },
         Options(), "<a xmlns=\"urn:d\" xmlns:q=\"urn:0\" xmlns:p=\"urn:p\"><p:b/></a>"},
        {"default namespace declared inside an element",
         [](auto &w) {
             w.StartElement("a", "");
             w.SetDefaultNamespace("urn:d");
             Element(w, "b", "urn:d");
             w.EndElement();
         },
         Options(), "<a><b/></a>"},
        {"xml namespace is never declared",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteAttribute("lang", "http://www.w3.org/XML/1998/namespace", "en", ItemType_string);
             w.EndElement();
         },
         Options(), "<a xml:lang=\"en\"/>"},
        {"attribute in a namespace always has a prefix",
         [](auto &w) {
             w.SetDefaultNamespace("urn:d");
             w.StartElement("a", "urn:d");
             w.WriteAttribute("x", "urn:d", "1", ItemType_string);
             w.WriteAttribute("y", "urn:d", "2", ItemType_string);
             w.EndElement();
         },
         Options(), "<a xmlns=\"urn:d\" xmlns:AA=\"urn:d\" AA:x=\"1\" AA:y=\"2\"/>"},
        {"type and nil attributes",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteTypeAttribute("urn:t", "T", ItemType_XmlObject);
             w.WriteNilAttribute();
             w.EndElement();
         },
         Options(),
         "<a xmlns:AA=\"urn:t\"  xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"AA:T\" "
         "AB:nil=\"true\"/>"},
        {"type in the default namespace is unprefixed",
         [](auto &w) {
             w.AddNamespace("xsi", kXsi);
             w.SetDefaultNamespace("urn:t");
             w.StartElement("a", "urn:t");
             w.WriteTypeAttribute("urn:t", "T", ItemType_XmlObject);
             w.EndElement();
         },
         Options(), "<a xmlns=\"urn:t\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"T\"/>"},
        {"escaping in text",
         [](auto &w) { Element(w, "a", "", "<&>\"'\t\r\nx"); }, Options(), "<a>&lt;&amp;&gt;\"'\t\nx</a>"},
        {"escaping in text with CRLF", [](auto &w) { Element(w, "a", "", "1\r\n2"); }, Options{false, CRLF},
         "<a>1\r\n2</a>"},
        {"escaping in attributes",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteAttribute("v", "", "<&>\"'\t\r\nx", ItemType_string);
             w.EndElement();
         },
         Options(), "<a v=\"&lt;&amp;&gt;&quot;'\t&#xA;x\"/>"},
        {"CDATA passes through, even unclosed",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "", "<![CDATA[x<y]]>");
             Element(w, "c", "", "<![CDATA[open");
             w.EndElement();
         },
         Options(), "<a><b><![CDATA[x<y]]></b><c><![CDATA[open</c></a>"},
        {"default values left out unless asked",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteText("d", ItemType_string, true);
             w.EndElement();
         },
         Options(), "<a/>"},
        {"default values written when asked",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteText("d", ItemType_string, true);
             w.EndElement();
         },
         writeDefaults, "<a>d</a>"},
        {"declaration, comment, instruction and in-line schema",
         [](auto &w) {
             w.WriteXmlDeclaration();
             w.WriteComment("c & d");
             w.WriteProcessingInstruction("<?pi x?>");
             w.AddNamespace("xsi", kXsi);
             w.StartElement("a", "");
             w.WriteInLineSchema("xsi:noNamespaceSchemaLocation=\"a.xsd\"");
             w.EndElement();
         },
         Formatted(),
         "<?xml version=\"1.0\"?>\n<!--c &amp; d-->\n<?pi x?>\n\n"
         "<a xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" \n"
         "xsi:noNamespaceSchemaLocation=\"a.xsd\"\n/>\n"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string const xml = Write(c.script, c.options);
        EXPECT_EQ(c.expected, xml);
        std::string error;
        bool const mustParse = std::string(c.name).find("unclosed") == std::string::npos &&
                               std::string(c.name).find("CDATA") == std::string::npos;
        if (mustParse)
            EXPECT_TRUE(WellFormed(xml, error)) << error;
    }
}

TEST(XmlTextWriter, GeneratedPrefixesSkipUsedOnes)
{
    std::string const xml = Write([](auto &w) {
        w.AddNamespace("AA", "urn:taken");
        w.StartElement("r", "");
        for (int i = 0; i < 27; ++i)
            w.WriteAttribute("x", "urn:" + std::to_string(i), "v", ItemType_string);
        w.EndElement();
    });
    EXPECT_NE(std::string::npos, xml.find(" xmlns:AB=\"urn:0\" AB:x=\"v\""));
    EXPECT_NE(std::string::npos, xml.find(" xmlns:BB=\"urn:26\" BB:x=\"v\""));
    std::string error;
    EXPECT_TRUE(WellFormed(xml, error)) << error;
}

TEST(XmlTextWriter, Failures)
{
    struct Failure
    {
        char const *name;
        std::function<void(CXmlTextWriter &)> script;
        char const *message;
    };
    Failure const cases[] = {
        {"attribute after a child",
         [](auto &w) {
             w.StartElement("a", "");
             Element(w, "b", "");
             w.WriteAttribute("x", "", "1", ItemType_string);
         },
         "Attributes must be added before elements"},
        {"attribute after text",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteText("t", ItemType_string, false);
             w.WriteNilAttribute();
         },
         "Attributes must be added before elements"},
        {"type attribute after text",
         [](auto &w) {
             w.StartElement("a", "");
             w.WriteText("t", ItemType_string, false);
             w.WriteTypeAttribute("", "T", ItemType_XmlObject);
         },
         "Attributes must be added before elements"},
        {"element left open", [](auto &w) { w.StartElement("a", ""); }, "An Element has not been closed."},
        {"bad EOL type", [](auto &w) { w.SetEolType(static_cast<EOLType>(2)); }, "Invalid EOL type."},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        try
        {
            Write(c.script);
            FAIL() << "no exception";
        }
        catch (CMxException const &e)
        {
            EXPECT_EQ(c.message, e.GetMessage());
        }
    }
}

TEST(XmlTextWriter, LargeOutputFlushesAndStaysWhole)
{
    std::string const xml = Write([](auto &w) {
        w.StartElement("r", "urn:r");
        for (int i = 0; i < 5000; ++i)
        {
            w.StartElement("i", "urn:r");
            w.WriteAttribute("n", "", std::to_string(i), ItemType_i4);
            w.WriteText(std::string(i % 50, 'x') + "&", ItemType_string, false);
            w.EndElement();
        }
        w.EndElement();
    });
    std::string error;
    ASSERT_TRUE(WellFormed(xml, error)) << error;
    EXPECT_NE(std::string::npos, xml.find("<AA:i n=\"4999\">" + std::string(49, 'x') + "&amp;</AA:i></AA:r>"));
}
