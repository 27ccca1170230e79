// Round trips through the generated-shape model: every concrete element row
// reads a document and writes it back byte for byte, and each rule it
// enforces fails with its own message and path.

#include "model/Model.h"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

using namespace MxXmlLib;
using namespace MxTestModel;

namespace
{
enum Options : unsigned
{
    None = 0,
    IgnoreUnknown = 1,
    IgnoreMissing = 2,
    IgnoreNamespaces = 4,
    IgnoreCounts = 8,
    IgnoreChoice = 16,
};

CSerializationContext MakeContext(unsigned options)
{
    CSerializationContext context;
    context.SetDefaultNamespaceURI("urn:m");
    context.SetIgnoreUnknownElements((options & IgnoreUnknown) != 0);
    context.SetIgnoreMissingMandatoryElements((options & IgnoreMissing) != 0);
    context.SetIgnoreNamespaces((options & IgnoreNamespaces) != 0);
    context.SetIgnoreInvalidCollectionCounts((options & IgnoreCounts) != 0);
    context.SetIgnoreMissingChoice((options & IgnoreChoice) != 0);
    return context;
}

using Maker = CXmlObjectBase *(*)();
template <typename T> CXmlObjectBase *New() { return new T; }

// The text written back after reading, or "ERR " and the full message.
std::string ReadAndWrite(Maker make, char const *input, unsigned options)
{
    CSerializationContext const context = MakeContext(options);
    CSmartPtr<CXmlObjectBase> object(make());
    try
    {
        object->FromXml(input, context);
        return object->ToXml(false, false, LF, context);
    }
    catch (CMxException const &e)
    {
        return "ERR " + e.GetFullMessage();
    }
}

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

class ModelTest : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

struct Case
{
    char const *label;
    Maker make;
    unsigned options;
    char const *input;
    char const *expected; // null: the input itself
};

// Documents that come back as they went in, or in the expected form.
Case const kRoundTrips[] = {
    // Sequence: every kind of real element, attributes, xs:anyAttribute, substitution, collections.
    {"order, all rows", &New<COrder>, None,
     "<order xmlns=\"urn:m\" id=\"7\" status=\"closed\" xmlns:AA=\"urn:x\" AA:a=\"1\"><number>3</number>"
     "<note>hi</note><priority>high</priority><channel>low</channel><customer ref=\"2\"><name>Ann</name>"
     "<phone>1</phone></customer><shipTo><name>Bo</name></shipTo><total currency=\"USD\">12</total>"
     "<payment xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"card\"><number>42</number></payment>"
     "<deposit xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"cash\"/><line><name>a</name></line>"
     "<line><name>b</name></line><tender xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"cash\">"
     "<currency>USD</currency></tender><tag>x</tag><tag>y</tag><flag>low</flag><flag>high</flag><code>1</code>"
     "<code>2</code></order>",
     nullptr},
    {"order, mandatory rows only", &New<COrder>, None,
     "<order xmlns=\"urn:m\" id=\"1\"><number>1</number><priority>low</priority><customer><name>A</name></customer>"
     "<payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"cash\"/></order>",
     nullptr},
    {"defaults read from empty elements, written empty", &New<COrder>, None,
     "<order xmlns=\"urn:m\" id=\"1\"><number>1</number><note/><priority>low</priority><channel/><customer>"
     "<name>A</name></customer><payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
     "AA:type=\"cash\"><currency/></payment></order>",
     nullptr},
    {"nil on a nillable row stores nothing", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<note xsi:nil='true'/><priority xsi:nil='false'>low</priority><customer><name>A</name></customer>"
     "<payment xsi:type='cash'/></order>",
     "<order xmlns=\"urn:m\" id=\"1\"><number>1</number><priority>low</priority><customer><name>A</name></customer>"
     "<payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"cash\"/></order>"},
    // After the last row, what follows a skipped element goes to the last row only: the tag is lost.
    {"unknown elements skipped before a mandatory one and at the end", &New<COrder>, IgnoreUnknown,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><bogus/><number>1</number>"
     "<priority>low</priority><x/><customer><name>A</name></customer><payment xsi:type='cash'/><y/><tag>t</tag>"
     "<z/></order>",
     "<order xmlns=\"urn:m\" id=\"1\"><number>1</number><priority>low</priority><customer><name>A</name></customer>"
     "<payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"cash\"/></order>"},
    {"namespaces ignored", &New<COrder>, IgnoreNamespaces,
     "<order xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:m='urn:m' id='1'><number>1</number>"
     "<priority>low</priority><customer><name>A</name></customer><m:payment xsi:type='m:card'><number>5</number>"
     "</m:payment></order>",
     "<order xmlns=\"urn:m\" id=\"1\"><number>1</number><priority>low</priority><customer><name>A</name></customer>"
     "<payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"card\"><number>5</number></payment>"
     "</order>"},

    // Sequence: inline children, a nillable class, xs:any.
    {"packet, all rows", &New<CPacket>, None,
     "<packet xmlns=\"urn:m\" units=\"cm\"><width>1</width><height>2</height><fax>f</fax><memo><text>t</text></memo>"
     "<AA:any xmlns:AA=\"urn:x\" a=\"1\"><AA:c/>t</AA:any><remark>r</remark><AA:more xmlns:AA=\"urn:x\"/><more/>"
     "</packet>",
     nullptr},
    {"packet, nil class and no optional rows", &New<CPacket>, None,
     "<packet xmlns=\"urn:m\"><width>1</width><height>2</height><memo xmlns:AA=\"http://www.w3.org/2001/"
     "XMLSchema-instance\" AA:nil=\"true\"/><AA:any xmlns:AA=\"urn:x\"/></packet>",
     nullptr},

    // Choice: each alternative, inline ones, empty.
    {"choice of a class", &New<CPick>, None, "<pick xmlns=\"urn:m\"><party><name>Ann</name></party></pick>", nullptr},
    {"choice of a substitute", &New<CPick>, None,
     "<pick xmlns=\"urn:m\"><payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"card\">"
     "<number>1</number></payment></pick>",
     nullptr},
    {"choice of a primitive", &New<CPick>, None, "<pick xmlns=\"urn:m\"><amount>100</amount></pick>", nullptr},
    {"choice of an enumeration", &New<CPick>, None, "<pick xmlns=\"urn:m\"><level>normal</level></pick>", nullptr},
    {"choice of an inline group", &New<CPick>, None, "<pick xmlns=\"urn:m\"><fax>1</fax></pick>", nullptr},
    {"choice of xs:any", &New<CPick>, None, "<pick xmlns=\"urn:m\"><AA:y xmlns:AA=\"urn:x\"/></pick>", nullptr},
    {"choice of named xs:any run", &New<CPick>, None, "<pick xmlns=\"urn:m\"><extra/><extra>2</extra></pick>",
     nullptr},
    {"empty choice with optional rows", &New<CPick>, None, "<pick xmlns=\"urn:m\"/>", nullptr},
    {"choice leftover skipped", &New<CPick>, IgnoreUnknown,
     "<pick xmlns=\"urn:m\"><amount>5</amount><level>low</level></pick>",
     "<pick xmlns=\"urn:m\"><amount>5</amount></pick>"},
    {"choice: unknown elements skipped in front", &New<CPick>, IgnoreUnknown,
     "<pick xmlns=\"urn:m\"><a/><b/><level>low</level></pick>", "<pick xmlns=\"urn:m\"><level>low</level></pick>"},
    {"choice of enumeration collection", &New<CPicks>, None,
     "<picks xmlns=\"urn:m\"><mark>low</mark><mark>high</mark></picks>", nullptr},
    {"choice of primitive collection", &New<CPicks>, None, "<picks xmlns=\"urn:m\"><code>a</code></picks>", nullptr},
    {"choice of class collection", &New<CPicks>, None,
     "<picks xmlns=\"urn:m\"><line><name>a</name></line><line><name>b</name></line></picks>", nullptr},
    {"choice of substitutes collection", &New<CPicks>, None,
     "<picks xmlns=\"urn:m\"><tender xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"cash\"/>"
     "</picks>",
     nullptr},
    {"choice of a plain collection", &New<CPicks>, None, "<picks xmlns=\"urn:m\"><num>1</num><num>2</num></picks>",
     nullptr},
    {"empty strict choice allowed by the context", &New<CPicks>, IgnoreChoice, "<picks xmlns=\"urn:m\"/>", nullptr},

    // All: any order in, schema order out.
    {"all, any order", &New<CSettings>, None,
     "<settings xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><meta>m</meta><mode>low</mode>"
     "<refund xsi:type='cash'/><width>3</width><level>high</level><owner><name>O</name></owner>"
     "<payment xsi:type='card'><number>1</number></payment><x:z xmlns:x='urn:x'/><color/><backup><name>B</name>"
     "</backup></settings>",
     "<settings xmlns=\"urn:m\"><width>3</width><color/><mode>low</mode><level>high</level><owner><name>O</name>"
     "</owner><backup><name>B</name></backup><payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
     "AA:type=\"card\"><number>1</number></payment><refund xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
     "AA:type=\"cash\"/><meta>m</meta><AA:z xmlns:AA=\"urn:x\"/></settings>"},
    {"all of inline children, any order", &New<CLayout>, None,
     "<layout xmlns='urn:m' units='mm'><side>2</side><radius>1</radius><email>e</email><width>1</width>"
     "<height>2</height></layout>",
     "<layout xmlns=\"urn:m\" units=\"mm\"><width>1</width><height>2</height><email>e</email><radius>1</radius>"
     "<side>2</side></layout>"},
    // An inline choice of repeated alternatives: the cursor moves past the whole run.
    {"inline choice, a run of the first alternative", &New<CLabelled>, None,
     "<labelled xmlns=\"urn:m\"><tag>a</tag><tag>b</tag><tag>c</tag><note>n</note></labelled>", nullptr},
    {"inline choice, a run of the second alternative, nothing after it", &New<CLabelled>, None,
     "<labelled xmlns=\"urn:m\"><code>1</code><code>2</code></labelled>", nullptr},
    {"all of inline children, optional ones absent", &New<CLayout>, None,
     "<layout xmlns=\"urn:m\"><width>1</width><height>2</height><radius>1</radius></layout>", nullptr},
};

TEST_F(ModelTest, DocumentsRoundTrip)
{
    for (Case const &c : kRoundTrips)
    {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(c.expected ? c.expected : c.input, ReadAndWrite(c.make, c.input, c.options));
    }
}

// Documents that break a rule, and the message with its path.
Case const kFailures[] = {
    {"missing mandatory primitive", &New<COrder>, None,
     "<order xmlns='urn:m' id='1'><priority>low</priority></order>", "ERR Failed to find the required child element [number].\nPath: /order"},
    {"missing mandatory after skipping", &New<COrder>, IgnoreUnknown,
     "<order xmlns='urn:m' id='1'><a/><b/></order>", "ERR Failed to find the required child element [number].\nPath: /order"},
    {"missing mandatory ignored, then not writable", &New<COrder>, IgnoreMissing,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><priority>low</priority>"
     "<customer><name>A</name></customer><payment xsi:type='cash'/></order>",
     "ERR Failed to convert the element [order] to XML\nThe Property [number] is mandatory, it may not be NULL"},
    {"substitution without a class", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<priority>low</priority><customer><name>A</name></customer><payment xsi:type='cheque'/></order>",
     "ERR Failed to find a suitable substitution element for [payment].\nPath: /order"},
    {"substitution missing, even when missing ones are ignored", &New<COrder>, IgnoreMissing,
     "<order xmlns='urn:m' id='1'><number>1</number><priority>low</priority></order>", "ERR Failed to find a suitable substitution element for [payment].\nPath: /order"},
    {"nil read, mandatory enumeration then unwritable", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<priority xsi:nil='1'/><customer><name>A</name></customer><payment xsi:type='cash'/></order>",
     "ERR Failed to convert the element [order] to XML\nThe Property [priority] is mandatory, it may not be NULL"},
    {"nil on a non-nillable element", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<priority>low</priority><channel xsi:nil='maybe'/></order>",
     "ERR Invalid use of 'nil' attribute in non-nillable element.\nPath: /order/channel"},
    {"bad nil value", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<note xsi:nil='yes'/></order>",
     "ERR Unexpected Value [yes] for 'nil' Attribute found.\nPath: /order/note/xsi:@nil"},
    {"attribute on a simple element", &New<COrder>, None,
     "<order xmlns='urn:m' id='1'><number a='1'>1</number></order>", "ERR Unexpected Attribute found.\nPath: /order/number/@a"},
    {"collection above its maximum", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<priority>low</priority><customer><name>A</name></customer><payment xsi:type='cash'/><code>1</code>"
     "<code>2</code><code>3</code><code>4</code></order>",
     "ERR Failed to process the element.\nPath: /order\nThe Maximum number of [code] elements allowed in this collection is 3"},
    {"left-over element", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'><number>1</number>"
     "<priority>low</priority><customer><name>A</name></customer><payment xsi:type='cash'/><bogus/></order>",
     "ERR Failed read all the elements held within the element [order]. The unexpected element [bogus] remains un processed\nPath: /order"},
    {"failure inside a child carries the child's path", &New<COrder>, None,
     "<order xmlns='urn:m' id='1'><number>1</number><priority>low</priority><customer><phone>1</phone></customer>"
     "</order>",
     "ERR Failed to find the required child element [name].\nPath: /order/customer"},
    {"required attribute missing", &New<COrder>, None, "<order xmlns='urn:m'/>", "ERR Failed to process the element.\nPath: /order\nFailed to find the required Attribute [id]."},
    {"any attribute refused in the class namespace", &New<COrder>, None,
     "<order xmlns='urn:m' xmlns:m='urn:m' id='1' m:x='1'/>", "ERR Unexpected Attribute found.\nPath: /order/@x"},
    {"inline child with required content missing", &New<CPacket>, None,
     "<packet xmlns='urn:m'><x:any xmlns:x='urn:x'/></packet>", "ERR Failed to find the required child element [dimensions].\nPath: /packet"},
    {"xs:any at the end of the children", &New<CPacket>, None,
     "<packet xmlns='urn:m'><width>1</width><height>2</height></packet>", "ERR Failed to find the required child element [AnyElement].\nPath: /packet"},
    {"xs:any refusing the namespace", &New<CPacket>, None,
     "<packet xmlns='urn:m'><width>1</width><height>2</height><remark/></packet>", "ERR Failed to find the required element from namespace [urn:m].\nPath: /packet"},
    {"choice followed by another element", &New<CPick>, None,
     "<pick xmlns='urn:m'><amount>5</amount><level>low</level></pick>", "ERR Failed read all the elements held within the element [pick]. The unexpected element [level] remains un processed\nPath: /pick"},
    {"choice of a substitute without a class", &New<CPick>, None,
     "<pick xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><payment xsi:type='x'/></pick>", "ERR Failed read all the elements held within the element [pick]. The unexpected element [payment] remains un processed\nPath: /pick"},
    {"strict choice empty", &New<CPicks>, None, "<picks xmlns='urn:m'/>", "ERR No child elements within the element [picks] were populated. The element represents a choice, so one and only one element should be populated. The element contained no sutable child elements\nPath: /picks"},
    {"strict choice with an unknown element", &New<CPicks>, None, "<picks xmlns='urn:m'><x/></picks>", "ERR No child elements within the element [picks] were populated. The element represents a choice, so one and only one element should be populated. The element contained no sutable child elements\nPath: /picks"},
    {"choice collection above its maximum", &New<CPicks>, None,
     "<picks xmlns='urn:m'><num>1</num><num>2</num><num>3</num></picks>", "ERR Failed to process the element.\nPath: /picks\nThe Maximum number of [num] elements allowed in this collection is 2"},
    {"all: mandatory primitive missing", &New<CSettings>, None,
     "<settings xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><mode>low</mode>"
     "<payment xsi:type='cash'/><meta/></settings>",
     "ERR Failed to process the element.\nPath: /settings\nFailed to find the mandatory element [width]."},
    {"all: a class without content is fine to read, not to write", &New<CSettings>, None,
     "<settings xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><mode>low</mode><width>1</width>"
     "<payment xsi:type='cash'/><meta/></settings>",
     "ERR Failed to convert the element [settings] to XML\nFailed to convert the element [owner] to XML\nThe Property [name] is mandatory, it may not be NULL"},
    {"all: element twice", &New<CSettings>, None,
     "<settings xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><width>1</width><mode>low</mode>"
     "<payment xsi:type='cash'/><meta/><width>2</width></settings>",
     "ERR Failed read all the elements held within the element [settings]. The unexpected element [width] remains un processed\nPath: /settings"},
    {"simple content that does not convert", &New<COrder>, None,
     "<order xmlns='urn:m' id='1'><number>1</number><priority>low</priority><customer><name>A</name></customer>"
     "<total/></order>",
     "ERR Failed to process the element.\nPath: /order/total\nThe value [] can not be converted to a i4"},
    {"all: inline pseudo element missing", &New<CLayout>, None, "<layout xmlns='urn:m'><radius>1</radius></layout>",
     "ERR Failed to process the element.\nPath: /layout\nFailed to find the mandatory element [dimensions]."},
    {"all: inline substitute missing", &New<CLayout>, None,
     "<layout xmlns='urn:m'><width>1</width><height>2</height></layout>", "ERR Failed to process the element.\nPath: /layout\nFailed to find the mandatory element [shape]."},
    {"all: collections can never be read to the end", &New<CBag>, None, "<bag xmlns='urn:m'><tag>a</tag></bag>",
     "ERR Failed to process the element.\nPath: /bag\nNot implemented, should never be called"},
};

TEST_F(ModelTest, BrokenDocumentsFailWithTheirMessage)
{
    for (Case const &c : kFailures)
    {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(c.expected, ReadAndWrite(c.make, c.input, c.options));
    }
}

// The read frames parse as far as the reading asks and drop what it has
// taken; a tree loaded whole and read through FromXmlElement is neither. Both
// must give the same objects and the same messages, for every document above,
// also when it spans many parse slices (a long comment after the start tag)
// and when a parse error follows content that reads, or fails to read, first.
std::string ReadWholeTreeAndWrite(Maker make, std::string const &input, unsigned options)
{
    CSerializationContext const context = MakeContext(options);
    CSmartPtr<CXmlObjectBase> object(make());
    try
    {
        CXmlDocument document(context);
        document.LoadXml(input.c_str());
        object->FromXmlElement(document.GetDocumentElement(), context);
        return object->ToXml(false, false, LF, context);
    }
    catch (CMxException const &e)
    {
        return "ERR " + e.GetFullMessage();
    }
}

TEST_F(ModelTest, ReadingWhileParsingMatchesReadingTheWholeTree)
{
    std::string const padding = "<!--" + std::string(200 * 1000, 'x') + "-->";
    for (Case const *table : {&kRoundTrips[0], &kFailures[0]})
    {
        std::size_t const count = table == kRoundTrips ? std::size(kRoundTrips) : std::size(kFailures);
        for (std::size_t i = 0; i < count; ++i)
        {
            Case const &c = table[i];
            SCOPED_TRACE(c.label);
            std::string const input = c.input;
            std::size_t const startEnd = input.find('>') + 1;
            std::size_t const rootEnd = input.rfind("</");
            std::vector<std::string> variants = {input,
                                                 input.substr(0, startEnd) + padding + input.substr(startEnd)};
            if (rootEnd != std::string::npos && rootEnd > startEnd)
            {
                // Broken at the end, after a long stretch that reads.
                variants.push_back(input.substr(0, startEnd) + padding + input.substr(startEnd, rootEnd - startEnd) +
                                   "</wrong>");
                variants.push_back(input.substr(0, rootEnd) + padding + "<unclosed>" + input.substr(rootEnd));
            }
            for (std::string const &variant : variants)
                EXPECT_EQ(ReadWholeTreeAndWrite(c.make, variant, c.options),
                          ReadAndWrite(c.make, variant.c_str(), c.options));
            if (table == kRoundTrips)
                EXPECT_EQ(c.expected ? c.expected : c.input, ReadAndWrite(c.make, variants[1].c_str(), c.options));
        }
    }
    // A failure in the first of two like-named children is told with its
    // position, which only the rest of the document shows.
    std::string const twoLines = "<picks xmlns='urn:m'><line><name>a</name><bad/></line>" + padding +
                                 "<line><name>b</name></line></picks>";
    EXPECT_EQ("ERR Failed read all the elements held within the element [line]. The unexpected element [bad] "
              "remains un processed\nPath: /picks/line[1]",
              ReadAndWrite(&New<CPicks>, twoLines.c_str(), None));
}

// The family's shape: each collection row derives from its group's
// collection rule, except the enumeration collection of xs:all, which stays
// abstract on purpose.
using namespace MxXmlLibData;
static_assert(std::is_base_of_v<CElementInfoSeqCol, CElementInfoSeqUntpdCol>);
static_assert(std::is_base_of_v<CElementInfoAllCol, CElementInfoAllPrimCol>);
static_assert(std::is_base_of_v<CElementInfoChoiceCol, CElementInfoChoiceAbsClsCol>);
static_assert(std::is_abstract_v<CElementInfoAllEnumCol>);
static_assert(!std::is_base_of_v<CElementInfoAllCol, CElementInfoAllEnumCol>);
static_assert(!std::is_abstract_v<CElementInfoAllCol> && !std::is_abstract_v<CElementInfoChoiceCol>);

std::string Write(CXmlObjectBase const &object, unsigned options = None)
{
    try
    {
        return object.ToXml(false, false, LF, MakeContext(options));
    }
    catch (CMxException const &e)
    {
        return "ERR " + e.GetFullMessage();
    }
}

TEST_F(ModelTest, WritingFollowsTheProperties)
{
    CSmartPtr<COrder> order(new COrder);
    order->id.SetI4(1);
    order->number.SetI4(2);
    order->priority.SetI4(0);
    order->customer->name.SetString("A");
    CSmartPtr<CCard> card(new CCard);
    card->SetElementName("payment");
    order->payment = card.Get();
    // A failure below the root: one link for each element on the way up.
    EXPECT_EQ("ERR Failed to convert the element [order] to XML\nFailed to convert the element [payment] to XML\n"
              "The Property [number] is mandatory, it may not be NULL",
              Write(*order));
    card->number.SetString("9");

    // The start tag takes the object's own name; xsi:type only when asked for.
    CSmartPtr<CParty> other(new CParty);
    other->SetElementName("other");
    other->name.SetString("B");
    order->shipTo = other;
    std::string const head = "<order xmlns=\"urn:m\" id=\"1\"><number>2</number><priority>low</priority><customer>"
                             "<name>A</name></customer><other><name>B</name></other>";
    EXPECT_EQ(head + "<payment xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" AA:type=\"card\"><number>9"
                     "</number></payment></order>",
              Write(*order));
    CSerializationContext plain = MakeContext(None);
    plain.SetWriteTypeAttribute(false);
    EXPECT_EQ(head + "<payment><number>9</number></payment></order>", order->ToXml(false, false, LF, plain));

    // A mandatory class property that is null.
    order->customer = nullptr;
    EXPECT_EQ("ERR Failed to convert the element [order] to XML\nThe Property [customer] is mandatory, it may not be "
              "NULL",
              Write(*order));
}

TEST_F(ModelTest, WritingCollectionsAndChoices)
{
    CSmartPtr<CBag> bag(new CBag);
    CSmartPtr<CDimensions> box(new CDimensions);
    box->width.SetI4(1);
    box->height.SetI4(2);
    box->units.SetString("in");
    bag->dims->Add(box);
    for (char const *tag : {"a", "b"})
        bag->tag->Add(tag);
    CSmartPtr<CParty> party(new CParty);
    party->SetElementName("line");
    party->name.SetString("P");
    bag->line->Add(party);
    CSmartPtr<CElement> any(new CElement("free", "urn:x"));
    bag->rest->Add(any.Get());
    // Inline items write their attributes on the bag's start tag.
    EXPECT_EQ("<bag xmlns=\"urn:m\" units=\"in\"><line><name>P</name></line><tag>a</tag><tag>b</tag><width>1"
              "</width><height>2</height><AA:free xmlns:AA=\"urn:x\"/></bag>",
              Write(*bag));
    bag->tag->Add("c");
    EXPECT_EQ("ERR Failed to convert the element [bag] to XML\nThe Maximum number of [tag] elements allowed in this "
              "collection is 2",
              Write(*bag));
    EXPECT_EQ("<bag xmlns=\"urn:m\" units=\"in\"><line><name>P</name></line><tag>a</tag><tag>b</tag><tag>c</tag>"
              "<width>1</width><height>2</height><AA:free xmlns:AA=\"urn:x\"/></bag>",
              Write(*bag, IgnoreCounts));

    // A choice with no collection that may be empty must have one set.
    CSmartPtr<CPicks> picks(new CPicks);
    EXPECT_EQ("ERR Failed to convert the element [picks] to XML\nThis element is a choice, and as such must have at "
              "one (and only one) valid item, currently there are none set",
              Write(*picks));
    EXPECT_EQ("<picks xmlns=\"urn:m\"/>", Write(*picks, IgnoreChoice));
    // The first alternative that writes ends the choice.
    picks->num->Add(1);
    picks->mark->Add(2);
    EXPECT_EQ("<picks xmlns=\"urn:m\"><mark>high</mark></picks>", Write(*picks));
}

TEST_F(ModelTest, WhatReadingLeavesInTheProperties)
{
    CSerializationContext const context = MakeContext(None);
    CSmartPtr<CPick> pick(new CPick);
    // An inline alternative that takes nothing is cleared again.
    pick->FromXml("<pick xmlns='urn:m'><x:y xmlns:x='urn:x'/></pick>", context);
    EXPECT_TRUE(pick->contact.IsNull());
    EXPECT_FALSE(pick->foreign.IsNull());
    // A choice stores the new object before it reads: a failing child stays, half read.
    EXPECT_EQ("Failed to find the required child element [name].\nPath: /pick/party",
              ErrorOf([&] { pick->FromXml("<pick xmlns='urn:m'><party ref='5'><phone>1</phone></party></pick>", context); }));
    ASSERT_FALSE(pick->party.IsNull());
    EXPECT_EQ(5, pick->party->ref.GetI4());

    // A sequence stores an inline optional object only when it took something.
    CSmartPtr<CPacket> packet(new CPacket);
    packet->FromXml("<packet xmlns='urn:m'><width>1</width><height>2</height><x:a xmlns:x='urn:x'/></packet>",
                    context);
    EXPECT_TRUE(packet->contact.IsNull());
    EXPECT_TRUE(packet->remark.IsNull());
    EXPECT_EQ(2, packet->dimensions->height.GetI4());

    // Ignored missing elements leave the constructed state.
    CSmartPtr<COrder> order(new COrder);
    order->FromXml("<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'>"
                   "<payment xsi:type='cash'/></order>",
                   MakeContext(IgnoreMissing));
    EXPECT_EQ(ItemType_None, order->number.GetTypeAsEnum());
    EXPECT_EQ("customer", order->customer->GetElementName());
}

TEST_F(ModelTest, TablesAreSharedAndRebuiltAfterUnload)
{
    CSmartPtr<CParty> a(new CParty), b(new CParty);
    EXPECT_EQ(a->GetClassElementInfo(), b->GetClassElementInfo());
    EXPECT_TRUE(CParty::TablesBuilt());
    UnloadModel();
    EXPECT_FALSE(CParty::TablesBuilt());
    a->FromXml("<party xmlns='urn:m'><name>x</name></party>", MakeContext(None));
    EXPECT_EQ("<party xmlns=\"urn:m\"><name>x</name></party>", Write(*a));
}

} // namespace
