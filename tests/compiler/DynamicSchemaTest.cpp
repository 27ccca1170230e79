// The run-time back end: a schema loaded at run time must bind exactly as the
// hand-written model of the same schema does, keep every construct of a
// document, refuse what it cannot express with a clear message, and keep two
// loaded sets apart.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"
#include "model/PurchaseOrder.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace MxXmlLib;
using MxCompiler::CDynamicObject;
using MxCompiler::CSchemaSet;
using MxCompilerTest::ExpectSameText;
using MxCompilerTest::LargeOrder;
using MxCompilerTest::ReadFile;
using MxCompilerTest::WriteTemp;
using MxCompilerTest::XercesValidate;

namespace
{

std::string const kPoSchema = MX_EXAMPLE_DATA_DIR "/purchase-order.xsd";

CBinaryData Bytes(std::string const &text)
{
    return CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>(text.data())),
                       static_cast<unsigned long>(text.size()), false);
}

std::string Text(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

class DynamicSchemaTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { Register(16, 1); }
};

// The loaded schema and the hand-written classes describe the same content
// model, so every output format must agree byte for byte.
TEST_F(DynamicSchemaTest, PurchaseOrderBindsAsTheHandWrittenModel)
{
    CSchemaSet const set = CSchemaSet::Load({kPoSchema});
    std::vector<std::string> const documents = {ReadFile(MX_EXAMPLE_DATA_DIR "/purchase-order.xml"), LargeOrder(40)};
    for (std::string const &xml : documents)
    {
        SCOPED_TRACE(xml.substr(0, 80));
        CSerializationContext const &context = CSerializationContext::GetDefaultContext();
        CSmartPtr<CXmlObjectBase> dynamic = set.Read(Bytes(xml), context);
        CSmartPtr<Example::CPurchaseOrder> written(new Example::CPurchaseOrder);
        written->FromXml(xml.c_str());

        ExpectSameText(written->ToXml(true, true), dynamic->ToXml(true, true));
        ExpectSameText(written->ToXml(false, false), dynamic->ToXml(false, false));
        ExpectSameText(written->ToJson(), dynamic->ToJson());
        ExpectSameText(Text(written->ToFastInfosetStream()), Text(dynamic->ToFastInfosetStream()));
        EXPECT_EQ("", XercesValidate({kPoSchema}, dynamic->ToXml()));
    }
}

// A failure reads the same, message, path and chain, as in the hand-written
// model; the loaded classes also check facets as they read, where the
// hand-written ones wait for the writing.
TEST_F(DynamicSchemaTest, FailuresMatchTheHandWrittenModel)
{
    CSchemaSet const set = CSchemaSet::Load({kPoSchema});
    std::string const good = LargeOrder(2);
    struct Case
    {
        char const *name;
        std::string xml;
        char const *loadedOnly = nullptr; // the loaded classes' own message, where they refuse earlier
    };
    std::vector<Case> const cases = {
        {"valid document", good},
        {"unknown element", [&] {
             std::string x = good;
             return x.replace(x.find("<po:comment>"), 0, "<po:extra/>");
         }()},
        {"bad date", [&] {
             std::string x = good;
             return x.replace(x.find("2026-11-22"), 10, "2026-13-22");
         }()},
        {"bad pattern", [&] {
             std::string x = good;
             return x.replace(x.find("100-AB"), 6, "10-AB");
         }(),
         "Failed to set the property value [10-AB].\nPath: /po:purchaseOrder/po:items/po:item[1]/@partNum\n"
         "Invalid Value for partNum [10-AB]."},
        {"missing attribute", [&] {
             std::string x = good;
             return x.replace(x.find("orderDate='2026-11-22'"), 22, "");
         }()},
        {"unknown enumeration", [&] {
             std::string x = good;
             return x.replace(x.find("'closed'"), 8, "'lost'");
         }()},
    };
    for (Case const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string expected = "(none)", actual = "(none)";
        try
        {
            CSmartPtr<Example::CPurchaseOrder> written(new Example::CPurchaseOrder);
            written->FromXml(c.xml.c_str());
        }
        catch (CMxException const &e)
        {
            expected = e.GetFullMessage();
        }
        try
        {
            set.Read(Bytes(c.xml), CSerializationContext::GetDefaultContext());
        }
        catch (CMxException const &e)
        {
            actual = e.GetFullMessage();
        }
        EXPECT_EQ(c.loadedOnly ? std::string(c.loadedOnly) : expected, actual);
    }
}

TEST_F(DynamicSchemaTest, PropertiesByName)
{
    CSchemaSet const set = CSchemaSet::Load({kPoSchema});
    CSmartPtr<CXmlObjectBase> root = set.CreateRoot("purchaseOrder", "urn:example:po");
    auto *order = dynamic_cast<CDynamicObject *>(root.Get());
    ASSERT_NE(nullptr, order);
    EXPECT_EQ("PurchaseOrderType", order->GetClass().identifier);

    MxVariant date;
    date.FromString("2026-01-02", ItemType_date, CWhitespaceUtils::WhitespaceRule::Collapse);
    order->Set("orderDate", date);
    auto *shipTo = dynamic_cast<CDynamicObject *>(order->GetObject("shipTo"));
    ASSERT_NE(nullptr, shipTo);
    for (char const *field : {"name", "street", "city", "state"})
    {
        MxVariant text;
        text.SetString(field);
        shipTo->Set(field, text);
    }
    MxVariant zip;
    zip.SetString("12345");
    shipTo->Set("zip", zip);
    EXPECT_EQ("12345", shipTo->Get("zip").GetString());
    EXPECT_EQ("<AA:purchaseOrder xmlns:AA=\"urn:example:po\" orderDate=\"2026-01-02\"><AA:shipTo country=\"US\"><AA:name>name"
              "</AA:name><AA:street>street</AA:street><AA:city>city</AA:city><AA:state>state</AA:state><AA:zip>"
              "12345</AA:zip></AA:shipTo><AA:items/></AA:purchaseOrder>",
              root->ToXml(false, false));

    try
    {
        order->Get("nothing");
        FAIL() << "no exception";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("Unknown property [nothing] of class [PurchaseOrderType]", e.GetMessage());
    }
}

// Two sets with the same names in the same namespace and different content:
// each reads only its own documents, and one outlives the other.
TEST_F(DynamicSchemaTest, LoadedSetsAreIsolated)
{
    auto schema = [](char const *content) {
        return std::string("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:t' "
                           "xmlns:t='urn:t' elementFormDefault='qualified'><xs:element name='r' type='t:T'/>"
                           "<xs:complexType name='T'><xs:sequence>") +
               content + "</xs:sequence></xs:complexType></xs:schema>";
    };
    std::string const a = WriteTemp("iso-a.xsd", schema("<xs:element name='a' type='xs:int'/>"));
    std::string const b = WriteTemp("iso-b.xsd", schema("<xs:element name='b' type='xs:string'/>"));
    std::string const docA = "<r xmlns='urn:t'><a>7</a></r>";
    std::string const docB = "<r xmlns='urn:t'><b>x</b></r>";
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();

    CSmartPtr<CXmlObjectBase> keptFromA;
    {
        CSchemaSet const setA = CSchemaSet::Load({a});
        CSchemaSet const setB = CSchemaSet::Load({b});
        keptFromA = setA.Read(Bytes(docA), context);
        EXPECT_EQ("<AA:r xmlns:AA=\"urn:t\"><AA:b>x</AA:b></AA:r>", setB.Read(Bytes(docB), context)->ToXml(false, false));
        EXPECT_THROW(setB.Read(Bytes(docA), context), CMxException);
        EXPECT_THROW(setA.Read(Bytes(docB), context), CMxException);
    }
    // The set's handles are gone; its object still reads and writes.
    keptFromA->FromXml("<r xmlns='urn:t'><a>8</a></r>");
    EXPECT_EQ("<AA:r xmlns:AA=\"urn:t\"><AA:a>8</AA:a></AA:r>", keptFromA->ToXml(false, false));
}

TEST_F(DynamicSchemaTest, UndeclaredRootIsNamed)
{
    CSchemaSet const set = CSchemaSet::Load({kPoSchema});
    try
    {
        set.Read(Bytes("<order xmlns='urn:example:po'/>"), CSerializationContext::GetDefaultContext());
        FAIL() << "no exception";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("The element [{urn:example:po}order] is not declared by the schema", e.GetMessage());
    }
}

// A QName value's prefix is declared on the element that holds the value,
// once however often the value uses it, and JSON carries it back.
// The XML of `object`, read back from its strict JSON with full round
// trips and from its Fast Infoset written to read back as XML, is `xml`.
void ExpectJsonAndFastInfosetReadBack(CSchemaSet const &set, CXmlObjectBase &object, std::string const &xml)
{
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    CSerializationContext json;
    json.GetJsonContext().SetSupportRoundtrip(RoundTripFull);
    json.GetJsonContext().SetStrict(true);
    json.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
    EXPECT_EQ(xml, set.Read(Bytes(object.ToJson(false, LF, json)), json)->ToXml(false, false, LF, context));
    CSerializationContext fi;
    fi.GetFIContext().SetReadsBackAsXml(true);
    EXPECT_EQ(xml,
              set.Read(object.ToFastInfosetStream(FInfoDecl_None, fi), context)->ToXml(false, false, LF, context));
}

TEST_F(DynamicSchemaTest, QNamePrefixesAreDeclaredOnceWhereTheValueIs)
{
    std::string const schema =
        WriteTemp("qnames.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:q' "
                                "elementFormDefault='qualified'><xs:element name='q' type='xs:QName'/>"
                                "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='a' "
                                "type='xs:QName'/><xs:element name='c'><xs:complexType><xs:sequence>"
                                "<xs:element name='b' type='xs:QName'/></xs:sequence></xs:complexType></xs:element>"
                                "</xs:sequence></xs:complexType></xs:element><xs:element name='l'><xs:simpleType>"
                                "<xs:list itemType='xs:QName'/></xs:simpleType></xs:element><xs:element name='u'>"
                                "<xs:complexType><xs:sequence><xs:element name='v' maxOccurs='unbounded'/>"
                                "</xs:sequence></xs:complexType></xs:element></xs:schema>");
    // With ReadsBackAsXml, Fast Infoset declares a value's prefixes in the
    // element's namespace block, the root's too, where one namespace may
    // have several.
    struct
    {
        char const *document;
        char const *xml;
    } const cases[] = {
        {"<q xmlns='urn:q' xmlns:p='urn:p'>p:x</q>", "<AA:q xmlns:AA=\"urn:q\" xmlns:p=\"urn:p\">p:x</AA:q>"},
        {"<r xmlns='urn:q' xmlns:p='urn:p' xmlns:s='urn:s'><a>p:x</a><c><b>s:y</b></c></r>",
         "<AA:r xmlns:AA=\"urn:q\" xmlns:p=\"urn:p\"><AA:a>p:x</AA:a><AA:c xmlns:s=\"urn:s\"><AA:b>s:y</AA:b></AA:c>"
         "</AA:r>"},
        // An unprefixed name is in the default namespace, declared again
        // on a prefixed element without children.
        {"<q xmlns='urn:q'>x</q>", "<AA:q xmlns:AA=\"urn:q\" xmlns=\"urn:q\">x</AA:q>"},
        {"<p:q xmlns:p='urn:q' xmlns='urn:d'>x</p:q>", "<AA:q xmlns:AA=\"urn:q\" xmlns=\"urn:d\">x</AA:q>"},
        // Untyped content keeps an xsi:type's text; its prefix is declared
        // by the class that holds the content.
        {"<u xmlns='urn:q' xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
         "xmlns:xs='http://www.w3.org/2001/XMLSchema'><v i:type='xs:int'>1</v></u>",
         "<AA:u xmlns:AA=\"urn:q\" xmlns:xs=\"http://www.w3.org/2001/XMLSchema\"><AA:v xmlns:AB=\""
         "http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"xs:int\">1</AA:v></AA:u>"},
        {"<l xmlns='urn:q' xmlns:p='urn:p' xmlns:o='urn:p'>p:x o:y p:z</l>",
         "<AA:l xmlns:AA=\"urn:q\" xmlns:p=\"urn:p\" xmlns:o=\"urn:p\">p:x o:y p:z</AA:l>"},
    };
    CSchemaSet const set = CSchemaSet::Load({schema});
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.document);
        try
        {
            CSmartPtr<CXmlObjectBase> object = set.Read(Bytes(c.document), context);
            std::string const xml = object->ToXml(false, false, LF, context);
            EXPECT_EQ(c.xml, xml);
            EXPECT_EQ("", XercesValidate({schema}, xml));
            ExpectJsonAndFastInfosetReadBack(set, *object, xml);
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << e.GetFullMessage();
        }
    }
}

// xsi:type reads back from JSON, and from Fast Infoset with ReadsBackAsXml,
// where it travels under a prefix of the XSI namespace as in XML text, also
// where the type's prefix is one the writer made for the root's name.
TEST_F(DynamicSchemaTest, XsiTypeReadsBackFromJsonAndFastInfoset)
{
    struct
    {
        char const *form;
        char const *document;
    } const cases[] = {
        {"qualified", "<r xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><v xsi:type='Ext'>"
                      "<a>1</a><b>y</b></v><z>2</z></r>"},
        {"unqualified", "<c:r xmlns:c='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><v "
                        "xsi:type='c:Ext'><a>1</a><b>y</b></v><z>2</z></c:r>"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.form);
        std::string const schema = WriteTemp(
            std::string("xsi-type-") + c.form + ".xsd",
            std::string("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:c' "
                        "xmlns:c='urn:c' elementFormDefault='") +
                c.form +
                "'><xs:complexType name='Base'><xs:sequence><xs:element name='a' type='xs:int'/></xs:sequence>"
                "</xs:complexType><xs:complexType name='Ext'><xs:complexContent><xs:extension base='c:Base'>"
                "<xs:sequence><xs:element name='b' type='xs:string'/></xs:sequence></xs:extension>"
                "</xs:complexContent></xs:complexType><xs:element name='r'><xs:complexType><xs:sequence>"
                "<xs:choice><xs:element name='v' type='c:Base'/><xs:element name='w' type='xs:int'/></xs:choice>"
                "<xs:element name='z' type='xs:int'/></xs:sequence></xs:complexType></xs:element></xs:schema>");
        CSchemaSet const set = CSchemaSet::Load({schema});
        CSerializationContext const &context = CSerializationContext::GetDefaultContext();
        try
        {
            CSmartPtr<CXmlObjectBase> object = set.Read(Bytes(c.document), context);
            ExpectJsonAndFastInfosetReadBack(set, *object, object->ToXml(false, false, LF, context));
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << e.GetFullMessage();
        }
    }
}

// An element of a named simple type from which others derive, or of
// xs:anySimpleType, takes xsi:type like a complex one: the named type's
// facets check the value, and the type is written back and survives JSON
// and Fast Infoset.
TEST_F(DynamicSchemaTest, XsiTypeOnASimpleTypePicksTheNamedType)
{
    struct
    {
        char const *name;
        char const *schemaBody;
        char const *content;
        char const *xml;
        std::vector<char const *> refused;
    } const cases[] = {
        {"derived", "<xs:simpleType name='Base'><xs:restriction base='xs:string'><xs:maxLength value='5'/>"
                    "</xs:restriction></xs:simpleType><xs:simpleType name='Lower'><xs:restriction base='Base'>"
                    "<xs:pattern value='[a-z]+'/></xs:restriction></xs:simpleType><xs:element name='r'>"
                    "<xs:complexType><xs:sequence><xs:element name='v' type='Base' maxOccurs='3'/></xs:sequence>"
                    "</xs:complexType></xs:element>",
         "<v>AB</v><v xsi:type='Lower'>ab</v>",
         "<r><v>AB</v><v xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"Lower\">ab</v></r>",
         // The derived type's pattern holds; the base's maxLength still does.
         {"<v xsi:type='Lower'>AB</v>", "<v xsi:type='Lower'>abcdef</v>"}},
        {"anySimpleType", "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='v' "
                          "type='xs:anySimpleType' maxOccurs='2'/></xs:sequence></xs:complexType></xs:element>",
         "<v xsi:type='xs:int'> 1 </v><v>free text</v>",
         "<r><v xmlns:AA=\"http://www.w3.org/2001/XMLSchema\"  xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "AB:type=\"AA:int\">1</v><v>free text</v></r>",
         {"<v xsi:type='xs:int'>x</v>", "<v xsi:type='xs:nothing'>1</v>"}},
    };
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    std::string const open = "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                             "xmlns:xs='http://www.w3.org/2001/XMLSchema'>";
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string const schema =
            WriteTemp(std::string("xsi-simple-") + c.name + ".xsd",
                      std::string("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>") + c.schemaBody +
                          "</xs:schema>");
        CSchemaSet const set = CSchemaSet::Load({schema});
        try
        {
            CSmartPtr<CXmlObjectBase> object = set.Read(Bytes(open + c.content + "</r>"), context);
            std::string const xml = object->ToXml(false, false, LF, context);
            EXPECT_EQ(c.xml, xml);
            EXPECT_EQ("", XercesValidate({schema}, xml));
            ExpectJsonAndFastInfosetReadBack(set, *object, xml);
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << e.GetFullMessage();
        }
        for (char const *bad : c.refused)
        {
            SCOPED_TRACE(bad);
            EXPECT_THROW(set.Read(Bytes(open + bad + "</r>"), context), CMxException);
        }
    }
}

} // namespace
