#include "model/SimpleOrder.h"

#include <gtest/gtest.h>

#include <functional>

using namespace MxXmlLib;
using MxTestModel::CSimpleOrder;

namespace
{
class Registered : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (CMxException const &e)
    {
        return e.GetFullMessage();
    }
    return "no error";
}
} // namespace

TEST_F(Registered, WrongGeneratorVersionFailsEveryEntryPoint)
{
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    Register(15, 9);
    testing::internal::CaptureStderr();
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v15.9)",
              ErrorOf([&] { order->FromXml("<order xmlns='urn:orders'/>"); }));
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v15.9)",
              ErrorOf([&] { order->FromXml(L"<order xmlns='urn:orders'/>"); }));
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v15.9)",
              ErrorOf([&] { order->FromXmlElement(static_cast<CXmlElement const *>(nullptr)); }));
    std::string const warning = testing::internal::GetCapturedStderr();
    std::string const line = "Version Mismatch Error: Please ensure your generated code is the same version as this "
                             "library (Velmar Runtime: v16.1, Generator: v15.9).\n";
    EXPECT_EQ(line + line + line, warning);
    Register(0, 0);
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v0.0)",
              ErrorOf([&] { order->FromXml("<order/>"); }));
}

TEST_F(Registered, ReadsFromText)
{
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    order->FromXml("<order xmlns='urn:orders' id='A7'><customer>Ann</customer><item>pen</item>"
                   "<item>ink</item></order>");
    EXPECT_EQ("A7", order->id);
    EXPECT_EQ("Ann", order->customer);
    EXPECT_EQ((std::vector<std::string>{"pen", "ink"}), order->items);

    order->FromXml(L"<o:order xmlns:o='urn:orders'><o:item>\u00E9</o:item></o:order>");
    EXPECT_EQ((std::vector<std::string>{"\xC3\xA9"}), order->items);
}

TEST_F(Registered, ReadsFromAnElementTheCallerKeeps)
{
    CSmartPtr<CSimpleOrder> empty(new CSimpleOrder);
    EXPECT_EQ("The element to read from is NULL.",
              ErrorOf([&] { empty->FromXmlElement(static_cast<CXmlElement const *>(nullptr)); }));
    EXPECT_EQ("The element to read from is NULL.",
              ErrorOf([&] { empty->FromXmlElement(static_cast<CElement const *>(nullptr)); }));
    CXmlDocument document;
    document.LoadXml("<order xmlns='urn:orders'><item>a</item></order>");
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    order->FromXmlElement(document.GetDocumentElement());
    EXPECT_EQ(1u, order->items.size());
    EXPECT_EQ("order", document.GetDocumentElement()->GetLocalName());
}

TEST_F(Registered, FailuresCarryTheirPath)
{
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    EXPECT_EQ("Unexpected element\nPath: /o:order/o:bad[1]",
              ErrorOf([&] { order->FromXml("<o:order xmlns:o='urn:orders'><o:bad/><o:item/><o:bad/></o:order>"); }));
    EXPECT_EQ("Unexpected element\nPath: /o:order/o:bad",
              ErrorOf([&] { order->FromXml("<o:order xmlns:o='urn:orders'><o:item/><o:bad/></o:order>"); }));
    EXPECT_EQ("mismatched tag at line 2", ErrorOf([&] { order->FromXml("<order>\n</orders>"); }));
    EXPECT_EQ("XML String is empty!", ErrorOf([&] { order->FromXml(""); }));
    EXPECT_EQ("Expected the element order, found other\nPath: /other",
              ErrorOf([&] { order->FromXml("<other xmlns='urn:orders'/>"); }));
}

TEST_F(Registered, ElementNameMatching)
{
    CXmlDocument document;
    document.LoadXml("<a xmlns='urn:x'/>");
    CXmlElement const *a = document.GetDocumentElement();
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    CSerializationContext plain, ignoring, noNamespaces;
    ignoring.SetIgnoreNamespaces(true);
    noNamespaces.SetSchemaType(SchemaType_NoNamespaces);
    struct Case
    {
        CSerializationContext const *context;
        char const *name;
        char const *ns;
        bool match;
    };
    Case const cases[] = {
        {&plain, "a", "urn:x", true},      {&plain, "a", "urn:y", false},      {&plain, "a", "", false},
        {&plain, "A", "urn:x", false},     {&ignoring, "a", "urn:y", true},    {&ignoring, "b", "urn:x", false},
        {&noNamespaces, "a", "", true},    {&noNamespaces, "b", "urn:x", false},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(std::string(c.name) + " " + c.ns);
        EXPECT_EQ(c.match, order->DoesElementNameMatch(*c.context, a, c.name, c.ns));
    }
}

TEST_F(Registered, WritesAndReadsBack)
{
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder);
    order->id = "A&7";
    order->customer = "Ann <ann@example.com>";
    order->items = {"pen", "ink\nwell"};
    struct Case
    {
        bool header;
        bool formatted;
        EOLType eol;
        char const *expected;
    };
    Case const cases[] = {
        {false, false, LF,
         "<AA:order xmlns:AA=\"urn:orders\" id=\"A&amp;7\"><AA:customer>Ann &lt;ann@example.com&gt;</AA:customer>"
         "<AA:item>pen</AA:item><AA:item>ink\nwell</AA:item></AA:order>"},
        {true, true, CRLF,
         "<?xml version=\"1.0\"?>\r\n<AA:order xmlns:AA=\"urn:orders\" id=\"A&amp;7\">\r\n"
         "\t<AA:customer>Ann &lt;ann@example.com&gt;</AA:customer>\r\n\t<AA:item>pen</AA:item>\r\n"
         "\t<AA:item>ink\r\nwell</AA:item>\r\n</AA:order>\r\n"},
    };
    for (auto const &c : cases)
    {
        std::string const xml = order->ToXml(c.header, c.formatted, c.eol);
        EXPECT_EQ(c.expected, xml);
        CSmartPtr<CSimpleOrder> back(new CSimpleOrder);
        back->FromXml(xml.c_str());
        EXPECT_EQ(order->id, back->id);
        EXPECT_EQ(order->customer, back->customer);
        EXPECT_EQ(order->items, back->items);
    }
    CSerializationContext spaces;
    spaces.SetIndentChars("  ");
    std::string const prefix = "<AA:order xmlns:AA=\"urn:orders\" id=\"A&amp;7\">\n  <AA:customer>";
    EXPECT_EQ(prefix, order->ToXml(false, true, LF, spaces).substr(0, prefix.size()));
    Register(1, 0);
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v1.0)", ErrorOf([&] { order->ToXml(); }));
    Register(16, 1);
}
