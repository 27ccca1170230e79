#include "document/XmlDocument.h"
#include "binding/SerializationContext.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <functional>

using namespace MxXmlLib;

namespace
{
// One line per node: element as {ns}name "text", attributes as @{ns}name=value.
void Dump(CXmlElement const *e, int depth, std::string &out)
{
    out += std::string(depth * 2, ' ');
    if (!e->GetNamespaceURI().empty())
        out += "{" + e->GetNamespaceURI() + "}";
    out += e->GetLocalName();
    if (!e->GetText().empty())
        out += " \"" + e->GetText() + "\"";
    out += "\n";
    for (CXmlAttribute const *a : e->GetAttributes())
    {
        out += std::string(depth * 2 + 2, ' ') + "@";
        if (!a->GetNamespaceURI().empty())
            out += "{" + a->GetNamespaceURI() + "}";
        out += a->GetLocalName() + "=" + a->GetValue() + "\n";
    }
    for (CXmlElement const *c = e->GetFirstElement(); c; c = c->GetNextSiblingElement())
        Dump(c, depth + 1, out);
}

std::string Tree(CXmlDocument const &document)
{
    std::string out;
    if (document.GetDocumentElement())
        Dump(document.GetDocumentElement(), 0, out);
    return out;
}

std::string Load(char const *xml, CSerializationContext const &context = CSerializationContext())
{
    CXmlDocument document(context);
    document.LoadXml(xml);
    return Tree(document);
}

std::string LoadError(char const *xml)
{
    try
    {
        CXmlDocument document;
        document.LoadXml(xml);
    }
    catch (CMxException const &e)
    {
        return e.GetFullMessage();
    }
    return "no error";
}

CXmlElement const *Child(CXmlElement const *e, int index)
{
    CXmlElement const *c = e->GetFirstElement();
    while (index-- > 0 && c)
        c = c->GetNextSiblingElement();
    return c;
}
} // namespace

TEST(XmlDocument, BuildsTheTree)
{
    struct Case
    {
        char const *name;
        char const *xml;
        char const *tree;
    };
    Case const cases[] = {
        {"mixed content runs together", "<a>x<b/>y</a>", "a \"xy\"\n  b\n"},
        {"CR LF and character reference to CR vanish", "<a>1\r\n2&#13;3\r4</a>", "a \"1\n23\n4\"\n"},
        {"whitespace between children kept", "<a>\n <b> </b>\n</a>", "a \"\n \n\"\n  b \" \"\n"},
        {"namespaces and attributes",
         "<p:a xmlns:p='urn:p' xmlns='urn:d' x='1' p:y='2'><b q='3'/></p:a>",
         "{urn:p}a\n  @x=1\n  @{urn:p}y=2\n  {urn:d}b\n    @q=3\n"},
        {"xsi attributes keep their namespace",
         "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:nil='true'/>",
         "a\n  @{http://www.w3.org/2001/XMLSchema-instance}nil=true\n"},
        {"CDATA is stripped by default", "<a><![CDATA[x<y]]></a>", "a \"x<y\"\n"},
        {"entities and non-ASCII", "<a v='&lt;&amp;&#xE9;'>caf\xC3\xA9 &#x20AC;</a>",
         "a \"caf\xC3\xA9 \xE2\x82\xAC\"\n  @v=<&\xC3\xA9\n"},
        {"comments and processing instructions dropped", "<?xml version='1.0'?><!--c--><a><?pi x?>t<!--c--></a>",
         "a \"t\"\n"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.tree, Load(c.xml));
    }
}

TEST(XmlDocument, OptionsOfTheContext)
{
    CSerializationContext keepCdata;
    keepCdata.SetStripCDATA(false);
    EXPECT_EQ("a \"<![CDATA[x<y]]>z\"\n", Load("<a><![CDATA[x<y]]>z</a>", keepCdata));

    CSerializationContext noNamespaces;
    noNamespaces.SetSchemaType(SchemaType_NoNamespaces);
    CXmlDocument document(noNamespaces);
    document.LoadXml("<a:b xmlns:a='u'/>");
    EXPECT_EQ("a:b\n  @xmlns:a=u\n", Tree(document));
    EXPECT_EQ("", document.LookupNamespaceFromAlias("a"));
}

TEST(XmlDocument, NamespaceMapIsNotScoped)
{
    CXmlDocument document;
    document.LoadXml("<a xmlns:p='u1'><b xmlns:p='u2' xmlns='d'/><p:c/></a>");
    // The later declaration wins for the whole document.
    EXPECT_EQ("u2", document.LookupNamespaceFromAlias("p"));
    EXPECT_EQ("d", document.LookupNamespaceFromAlias(""));
    EXPECT_EQ("p", document.LookupAliasFromNamespace("u2"));
    EXPECT_EQ("", document.LookupAliasFromNamespace("u1"));
    // Elements still get the namespace in scope where they stand.
    EXPECT_EQ("u1", Child(document.GetDocumentElement(), 1)->GetNamespaceURI());
}

TEST(XmlDocument, XPaths)
{
    CXmlDocument document;
    document.LoadXml("<r xmlns:p='urn:p'><b/><p:b p:x='1' y='2'/><b><c/></b><d/><p:b/></r>");
    CXmlElement const *r = document.GetDocumentElement();
    struct Case
    {
        CXmlElement const *element;
        char const *path;
    };
    Case const cases[] = {
        {r, "/r"},
        {Child(r, 0), "/r/b[1]"},
        {Child(r, 1), "/r/p:b[1]"},
        {Child(r, 2), "/r/b[2]"},
        {Child(Child(r, 2), 0), "/r/b[2]/c"},
        {Child(r, 3), "/r/d"},
        {Child(r, 4), "/r/p:b[2]"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.path, c.element->GetXPath());
    }
    auto const &attributes = Child(r, 1)->GetAttributes();
    ASSERT_EQ(2u, attributes.size());
    EXPECT_EQ("/r/p:b[1]/p:@x", attributes[0]->GetXPath());
    EXPECT_EQ("/r/p:b[1]/@y", attributes[1]->GetXPath());
}

TEST(XmlDocument, AttributeLookupAndKinds)
{
    CXmlDocument document;
    document.LoadXml("<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:n='urn:n' "
                     "x='1' n:x='2' xsi:type='t' xsi:nil='true' xsi:schemaLocation='s' "
                     "xsi:noNamespaceSchemaLocation='s' xsi:other='o'/>");
    CXmlElement const *a = document.GetDocumentElement();
    EXPECT_EQ("1", a->GetAttribute("x", ""));
    EXPECT_EQ("2", a->GetAttribute("x", "urn:n"));
    EXPECT_EQ("", a->GetAttribute("x", "urn:other"));
    std::string kinds;
    for (CXmlAttribute const *attribute : a->GetAttributes())
        kinds += attribute->GetLocalName() + ":" + (attribute->IsNamespaceAttribute() ? "ns" : "") +
                 (attribute->IsNilAttribute() ? "nil" : "") + " ";
    EXPECT_EQ("x: x: type:ns nil:nil schemaLocation:ns noNamespaceSchemaLocation:ns other: ", kinds);
}

TEST(XmlDocument, ExpatErrorsCarryTheLine)
{
    struct Case
    {
        char const *xml;
        char const *message;
    };
    Case const cases[] = {
        {"<a>\n<b>\n</a>", "mismatched tag at line 3"},
        {"<a", "unclosed token at line 1"},
        {"text", "syntax error at line 1"},
        {"<a/><b/>", "junk after document element at line 1"},
        {"<a x='1' x='2'/>", "duplicate attribute at line 1"},
        {"<p:a/>", "unbound prefix at line 1"},
        {"<?xml version='1.0' encoding='klingon'?><a/>", "unknown encoding at line 1"},
        {"", "XML String is empty!"},
        {nullptr, "XML String is empty!"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.message);
        EXPECT_EQ(c.message, LoadError(c.xml));
    }
}

TEST(XmlDocument, WideText)
{
    CXmlDocument document;
    document.LoadXml(L"<a v='\u00E9'>\U0001F600</a>");
    EXPECT_EQ("a \"\xF0\x9F\x98\x80\"\n  @v=\xC3\xA9\n", Tree(document));
    // An empty wide string reaches the parser as a byte order mark alone.
    try
    {
        document.LoadXml(L"");
        FAIL() << "expected a parser error";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("no element found at line 1", e.GetMessage());
    }
}

namespace
{
int g_seen = 0;
bool CountAndDrop(CXmlElement *)
{
    ++g_seen;
    return true;
}
bool ThrowAtC(CXmlElement *e)
{
    if (e->GetLocalName() == "c")
        throw CMxException("stop at c");
    return false;
}
} // namespace

TEST(XmlDocument, ElementEndFunction)
{
    g_seen = 0;
    CXmlDocument dropping(&CountAndDrop);
    dropping.LoadXml("<a><b><c/></b><b/></a>");
    EXPECT_EQ(4, g_seen);
    EXPECT_EQ("a\n", Tree(dropping));

    // A failure inside the callback ends the parse with that failure.
    CXmlDocument failing(&ThrowAtC);
    try
    {
        failing.LoadXml("<a><b/><c/><d/></a>");
        FAIL();
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("stop at c", e.GetMessage());
    }
}

TEST(XmlDocument, LoadingAgainStartsAfresh)
{
    CXmlDocument document;
    document.LoadXml("<a xmlns:p='u'><b/></a>");
    document.LoadXml("<c/>");
    EXPECT_EQ("c\n", Tree(document));
    EXPECT_EQ("", document.LookupNamespaceFromAlias("p"));
    EXPECT_THROW(document.LoadXml("<broken"), CMxException);
}

TEST(XmlDocument, DeepAndWideDocuments)
{
    auto nested = [](std::size_t levels) {
        std::string xml;
        for (std::size_t i = 0; i < levels; ++i)
            xml += "<e>";
        for (std::size_t i = 0; i < levels; ++i)
            xml += "</e>";
        return xml;
    };
    CXmlDocument document;
    document.LoadXml(nested(CXmlDocument::kMaxElementDepth).c_str());
    std::size_t depth = 0;
    CXmlElement const *innermost = nullptr;
    for (CXmlElement const *e = document.GetDocumentElement(); e; e = e->GetFirstElement())
    {
        ++depth;
        innermost = e;
    }
    EXPECT_EQ(CXmlDocument::kMaxElementDepth, depth);
    EXPECT_EQ(depth * 2, innermost->GetXPath().size());
    try
    {
        document.LoadXml(nested(300000).c_str());
        FAIL() << "no depth limit";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("The document nests elements deeper than 2048 levels.", e.GetMessage());
    }

    std::string wide = "<r>";
    for (int i = 0; i < 20000; ++i)
        wide += "<i>" + std::to_string(i) + "</i>";
    wide += "</r>";
    document.LoadXml(wide.c_str());
    int count = 0;
    for (CXmlElement const *e = document.GetDocumentElement()->GetFirstElement(); e; e = e->GetNextSiblingElement())
        EXPECT_EQ(std::to_string(count++), e->GetText());
    EXPECT_EQ(20000, count);
}
