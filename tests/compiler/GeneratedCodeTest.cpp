// The C++ back end: the source generated from the example schema is the
// committed golden, compiles without warnings (the build uses -Werror for
// it), and reads and writes exactly as the hand-written model and the
// classes loaded at run time do.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"
#include "model/PurchaseOrder.h"
#include "parity.h"
#include "purchase_order.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using namespace MxXmlLib;
namespace Generated = Example::Generated;

namespace
{

std::string Text(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

TEST(GeneratedCode, MatchesTheGolden)
{
    for (char const *name : {"purchase_order.h", "purchase_order.cpp"})
    {
        SCOPED_TRACE(name);
        MxCompilerTest::ExpectSameText(MxCompilerTest::ReadFile(std::string(MX_TEST_DATA_DIR "/") + name + ".golden"),
                                       MxCompilerTest::ReadFile(std::string(MX_GENERATED_DIR "/") + name));
    }
}

TEST(GeneratedCode, ReadsAndWritesAsTheOtherModels)
{
    Register(16, 1);
    std::string const xml = MxCompilerTest::LargeOrder(30);
    CSmartPtr<CXmlObjectBase> generated = Generated::CreateRoot("purchaseOrder", "urn:example:po");
    ASSERT_FALSE(generated.IsNull());
    generated->FromXml(xml.c_str());
    CSmartPtr<Example::CPurchaseOrder> written(new Example::CPurchaseOrder);
    written->FromXml(xml.c_str());
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({MX_EXAMPLE_DATA_DIR "/purchase-order.xsd"});
    CBinaryData const bytes(reinterpret_cast<unsigned char *>(const_cast<char *>(xml.data())),
                            static_cast<unsigned long>(xml.size()), false);
    CSmartPtr<CXmlObjectBase> loaded = set.Read(bytes, CSerializationContext::GetDefaultContext());

    MxCompilerTest::ExpectSameText(written->ToXml(), generated->ToXml());
    MxCompilerTest::ExpectSameText(loaded->ToXml(false, false), generated->ToXml(false, false));
    MxCompilerTest::ExpectSameText(written->ToJson(), generated->ToJson());
    MxCompilerTest::ExpectSameText(Text(written->ToFastInfosetStream()), Text(generated->ToFastInfosetStream()));
}

TEST(GeneratedCode, TypedAccessorsBuildADocument)
{
    Register(16, 1);
    CSmartPtr<CXmlObjectBase> root = Generated::CreateRoot("purchaseOrder", "urn:example:po");
    auto *order = dynamic_cast<Generated::CPurchaseOrderType *>(root.Get());
    ASSERT_NE(nullptr, order);
    CDateTime date;
    date.ParseXSDDate("2026-03-04");
    order->SetOrderDate(date);
    order->SetStatus(Generated::OrderStatus::shipped);
    CSmartPtr<Generated::CUSAddress> to = order->GetShipTo();
    to->SetName("Ann");
    to->SetStreet("1 Elm");
    to->SetCity("Oslo");
    to->SetState("NA");
    to->SetZip("12345");
    CSmartPtr<Generated::CItem> item(new Generated::CItem("item"));
    item->SetPartNum("123-AB");
    item->SetProductName("Spade");
    item->SetQuantity(3);
    item->SetUSPrice(CDecimal("9.50"));
    order->GetItems()->AddItem(item);

    EXPECT_EQ("<AA:purchaseOrder xmlns:AA=\"urn:example:po\" orderDate=\"2026-03-04\" status=\"shipped\">"
              "<AA:shipTo country=\"US\"><AA:name>Ann</AA:name><AA:street>1 Elm</AA:street><AA:city>Oslo</AA:city>"
              "<AA:state>NA</AA:state><AA:zip>12345</AA:zip></AA:shipTo><AA:items><AA:item partNum=\"123-AB\">"
              "<AA:productName>Spade</AA:productName><AA:quantity>3</AA:quantity><AA:USPrice>9.5</AA:USPrice>"
              "</AA:item></AA:items></AA:purchaseOrder>",
              root->ToXml(false, false));
    EXPECT_EQ(1, order->GetItems()->GetItemCount());
    EXPECT_EQ(3, order->GetItems()->GetItemAt(0)->GetQuantity());
    EXPECT_FALSE(order->HasComment());
}

// ---------------------------------------------------------------------------
// Parity: the classes generated from parity.xsd (two schema namespaces, two
// C++ namespaces) and the same schema loaded at run time give the same bytes
// on every leg, and the same messages with the same paths.

using Reader = std::function<CSmartPtr<CXmlObjectBase>(CBinaryData const &, CSerializationContext const &)>;

CBinaryData Bytes(std::string const &text)
{
    return CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>(text.data())),
                       static_cast<unsigned long>(text.size()), false);
}

// What a back end makes of a document: the XML it writes, the XML after a
// JSON and after a Fast Infoset round trip (with the JSON and the Fast
// Infoset bytes), or the message, with its path, of the step that refused.
std::vector<std::string> Legs(Reader const &read, std::string const &document)
{
    std::vector<std::string> legs;
    try
    {
        CSerializationContext const &context = CSerializationContext::GetDefaultContext();
        CSmartPtr<CXmlObjectBase> object = read(Bytes(document), context);
        legs.push_back(object->ToXml(false, false));
        CSerializationContext json;
        json.GetJsonContext().SetSupportRoundtrip(RoundTripFull);
        for (char const *ns : {"urn:parity", "urn:parity:types", "http://www.w3.org/2001/XMLSchema-instance"})
            json.GetNamespaceAliases().Add(("n" + std::to_string(legs.size())).c_str(), ns), legs.push_back(ns);
        legs.push_back(object->ToJson(false, LF, json));
        legs.push_back(read(Bytes(legs.back()), json)->ToXml(false, false));
        CBinaryData const fi = object->ToFastInfosetStream();
        legs.push_back(Text(fi));
        legs.push_back(read(fi, context)->ToXml(false, false));
    }
    catch (CMxException const &e)
    {
        std::string text = e.GetFullMessage();
        for (CMxException const *x = &e; x != nullptr; x = x->GetInnerException())
            text += " @" + x->GetPath();
        legs.push_back(text);
    }
    return legs;
}

std::string Record(std::string const &attributes, std::string const &digits, std::string const &count,
                   std::string const &code, std::string const &items)
{
    return "<p:record xmlns:p=\"urn:parity\" xmlns:t=\"urn:parity:types\" xmlns:q=\"urn:q\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"" +
           attributes + "><p:digits>" + digits + "</p:digits><p:count>" + count + "</p:count><p:code>" + code +
           "</p:code><p:name>q:thing</p:name><p:note xsi:nil=\"true\"/>" + items + "</p:record>";
}

TEST(GeneratedCode, ChecksValuesAsTheLoadedSchema)
{
    Register(16, 1);
    std::string const item = "<p:item><t:size>1.50</t:size></p:item>";
    std::string const derived = "<p:item xsi:type=\"t:Derived\"><t:size> 2 </t:size><t:extra>x</t:extra></p:item>";
    struct Case
    {
        char const *what;
        std::string document;
        char const *refusal; // the innermost message, or null when the document reads
    };
    Case const cases[] = {
        {"every check passes", Record(" version=\"1.0\" size=\"2.0\"", " 1  2 3 ", "none", "0123", item + derived),
         nullptr},
        {"a union member other than the first", Record("", "1 2", " 42 ", "0999", item), nullptr},
        // Neither back end holds a read value to the fixed one; a new object starts with it (version="1.0" below).
        {"a fixed attribute with another value", Record(" version=\"2.0\"", "1 2", "none", "0123", item), nullptr},
        {"a nil simple element with text",
         "<p:record xmlns:p=\"urn:parity\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><p:digits>1 2"
         "</p:digits><p:count>1</p:count><p:code>0123</p:code><p:name>x</p:name><p:note xsi:nil=\"true\">t</p:note>"
         "<p:item><t:size xmlns:t=\"urn:parity:types\">2</t:size></p:item></p:record>",
         nullptr},
        {"a list too short", Record("", "1", "none", "0123", item),
         "The list [1] has 1 items, fewer than the 2 required"},
        {"a list item out of range", Record("", "1 10", "none", "0123", item), "Invalid Value for digits [10]"},
        {"a value of no union member", Record("", "1 2", "maybe", "0123", item),
         "The value [maybe] is valid for none of the member types of CountOrNone"},
        {"an int outside its pattern", Record("", "1 2", "none", "123", item), "Invalid Value for code [123]."},
        {"an enumeration matched in value space only", Record(" size=\"3\"", "1 2", "none", "0123", item),
         "Invalid value [3] for the enumeration Size"},
        {"xsi:type of the root names a derivation",
         "<p:base xmlns:p=\"urn:parity\" xmlns:t=\"urn:parity:types\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"t:Derived\">"
         "<t:size>1.5</t:size><t:extra>y</t:extra></p:base>",
         nullptr},
        {"xsi:type of the root names no type",
         "<p:base xmlns:p=\"urn:parity\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:type=\"p:Nothing\"/>",
         "Failed to find a suitable substitution element for [base]."},
        {"an undeclared root", "<p:other xmlns:p=\"urn:parity\"/>",
         "The element [{urn:parity}other] is not declared by the schema"},
        {"an untyped root", "<p:anything xmlns:p=\"urn:parity\" a=\"1\"><b>text</b></p:anything>", nullptr},
        {"an undeclared root that names its type",
         "<p:other xmlns:p=\"urn:parity\" xmlns:t=\"urn:parity:types\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\" t:Derived \">"
         "<t:size>2</t:size><t:extra>z</t:extra></p:other>",
         nullptr},
        {"an untyped root whose xsi:type needs its prefix",
         "<p:anything xmlns:p=\"urn:parity\" xmlns:t=\"urn:parity:types\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"t:Base\"><t:size>2</t:size>"
         "</p:anything>",
         nullptr},
        {"an empty element with a default and a derived type",
         "<p:level xmlns:p=\"urn:parity\" xmlns:t=\"urn:parity:types\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"t:LowLevel\"/>",
         nullptr},
        {"QName values in a repeated choice and a repeated element",
         "<p:names xmlns:p=\"urn:parity\" xmlns:a=\"urn:a\" xmlns:b=\"urn:b\" xmlns:c=\"urn:c\"><p:key>a:x</p:key><p:ref>b:x</p:ref>"
         "<p:key>b:y</p:key><p:also>c:z</p:also></p:names>",
         nullptr},
    };
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({MX_TEST_DATA_DIR "/parity.xsd"});
    Reader const loaded = [&set](CBinaryData const &b, CSerializationContext const &c) { return set.Read(b, c); };
    for (Case const &c : cases)
    {
        SCOPED_TRACE(c.what);
        std::vector<std::string> const expected = Legs(loaded, c.document);
        std::vector<std::string> const actual = Legs(&Parity::Records::Read, c.document);
        ASSERT_EQ(expected.size(), actual.size()) << expected.back() << "\n" << actual.back();
        for (std::size_t i = 0; i < expected.size(); ++i)
            MxCompilerTest::ExpectSameText(expected[i], actual[i]);
        if (c.refusal == nullptr)
            EXPECT_GT(actual.size(), 1U) << actual.front();
        else
            EXPECT_NE(std::string::npos, actual.front().find(c.refusal)) << actual.front();
    }
}

TEST(GeneratedCode, NewRootsAreTheLoadedSchemasNewRoots)
{
    Register(16, 1);
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({MX_TEST_DATA_DIR "/parity.xsd"});
    // An empty record lacks its mandatory values: both refuse to write it alike.
    auto written = [](CXmlObjectBase *object) {
        try
        {
            return object->ToXml(false, false);
        }
        catch (CMxException const &e)
        {
            return "raises: " + e.GetFullMessage();
        }
    };
    for (char const *root : {"record", "base", "anything"})
    {
        SCOPED_TRACE(root);
        CSmartPtr<CXmlObjectBase> generated = Parity::Records::CreateRoot(root, "urn:parity");
        ASSERT_FALSE(generated.IsNull());
        EXPECT_EQ(written(set.CreateRoot(root, "urn:parity").Get()), written(generated.Get()));
    }
    EXPECT_TRUE(Parity::Records::CreateRoot("other", "urn:parity").IsNull());
}

TEST(GeneratedCode, KeepsQNamePrefixesAndTheirNamespaces)
{
    Register(16, 1);
    std::string const document = Record("", "1 2", "none", "0123", "<p:item><t:size>2</t:size></p:item>");
    CSmartPtr<CXmlObjectBase> object = Parity::Records::Read(Bytes(document), CSerializationContext::GetDefaultContext());
    std::string const xml = object->ToXml(false, false);
    EXPECT_NE(std::string::npos, xml.find("xmlns:q=\"urn:q\"")) << xml;
    EXPECT_NE(std::string::npos, xml.find(">q:thing<")) << xml;
    // The typed accessors live in the C++ namespace of their schema namespace.
    auto *record = dynamic_cast<Parity::Records::Crecord *>(object.Get());
    ASSERT_NE(nullptr, record);
    EXPECT_EQ("q:thing", record->GetName());
    CSmartPtr<Parity::Types::CBase> first(record->GetItemAt(0));
    EXPECT_EQ(Parity::Records::Size::_2, first->GetSize());
}

std::vector<std::string> Listing(std::string const &dir)
{
    std::vector<std::string> names;
    if (DIR *d = opendir(dir.c_str()))
    {
        while (dirent *e = readdir(d))
            if (e->d_name[0] != '.')
                names.push_back(e->d_name);
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(GeneratedCode, FilePerTypeIsOnePairPerClassAndDeterministic)
{
    std::string const dirs[] = {MxCompilerTest::TempDir() + "/one", MxCompilerTest::TempDir() + "/two"};
    for (std::string const &dir : dirs)
    {
        ASSERT_EQ(0, mkdir(dir.c_str(), 0700));
        ASSERT_EQ(0, MxCompilerTest::RunMx({"generate", "--schema", MX_TEST_DATA_DIR "/parity.xsd", "--out", dir,
                                            "--file-per-type", "--namespace", "urn:parity=Parity::Records",
                                            "--namespace", "urn:parity:types=Parity::Types"})
                         .status);
    }
    std::vector<std::string> const names = Listing(dirs[0]);
    EXPECT_EQ((std::vector<std::string>{"CBase.cpp", "CBase.h", "CDerived.cpp", "CDerived.h", "CLevel_Value.cpp",
                                        "CLevel_Value.h", "CLowLevel_Value.cpp", "CLowLevel_Value.h", "Cnames.cpp",
                                        "Cnames.h", "Cnames_Choice.cpp", "Cnames_Choice.h", "Cnote_Value.cpp",
                                        "Cnote_Value.h", "Crecord.cpp", "Crecord.h", "parity.cpp", "parity.h"}),
              names);
    EXPECT_EQ(names, Listing(dirs[1]));
    for (std::string const &name : names)
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(MxCompilerTest::ReadFile(dirs[0] + "/" + name), MxCompilerTest::ReadFile(dirs[1] + "/" + name));
    }
    EXPECT_NE(std::string::npos, MxCompilerTest::ReadFile(dirs[0] + "/CBase.h").find("namespace Parity::Types\n"));
    EXPECT_NE(std::string::npos, MxCompilerTest::ReadFile(dirs[0] + "/parity.h").find("#include \"Crecord.h\"\n"));
}

} // namespace

