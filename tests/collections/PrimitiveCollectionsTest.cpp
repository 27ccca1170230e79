#include "collections/CollectionTestSupport.h"
#include "collections/PrimitiveCollections.h"
#include "document/XmlTextWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

using namespace MxXmlLib;
using namespace MxCollectionTest;

namespace
{
using Rule = CWhitespaceUtils::WhitespaceRule;

struct Facets
{
    char const *pattern = nullptr;
    long minLength = -1, maxLength = -1;
    char const *minInclusive = nullptr, *maxInclusive = nullptr, *minExclusive = nullptr, *maxExclusive = nullptr;
    long length = -1, totalDigits = -1, fractionDigits = -1;
};

// Every collection of the tests is named v in no namespace.
template <typename Col>
CSmartPtr<Col> Make(Rule rule = Rule::None, Facets const &f = {}, int minOccurs = 0, int maxOccurs = -1)
{
    return CSmartPtr<Col>(new Col("v", "", minOccurs, maxOccurs, f.pattern, f.minLength, f.maxLength, f.minInclusive,
                                  f.maxInclusive, f.minExclusive, f.maxExclusive, f.length, f.totalDigits,
                                  f.fractionDigits, rule));
}

using Factory = std::function<CSmartPtr<CXmlTypeCollection>(Rule, Facets const &, int, int)>;
template <typename Col> Factory MakerOf()
{
    return [](Rule rule, Facets const &facets, int minOccurs, int maxOccurs) {
        return CSmartPtr<CXmlTypeCollection>(Make<Col>(rule, facets, minOccurs, maxOccurs).Get());
    };
}

// Records what a collection tells the writer: "<v>[type]text</v>".
class CTraceWriter : public CXmlWriter
{
public:
    std::string trace;
    void WriteComment(std::string const &) override {}
    void WriteProcessingInstruction(std::string const &) override {}
    void WriteInLineSchema(std::string const &) override {}
    void StartElement(std::string const &localName, std::string const &namespaceUri) override
    {
        trace += "<" + (namespaceUri.empty() ? "" : "{" + namespaceUri + "}") + localName + ">";
    }
    void WriteText(std::string const &value, ItemType type, bool isDefault) override
    {
        trace += "[" + std::to_string(type) + (isDefault ? "d" : "") + "]" + value;
    }
    void EndElement() override { trace += "</>"; }
    void WriteAttribute(std::string const &, std::string const &, std::string const &, ItemType) override {}
    void WriteTypeAttribute(std::string const &, std::string const &, ItemType) override {}
    void WriteNilAttribute() override {}
};

std::string WriteText(CXmlTypeCollection const *collection,
                      CSerializationContext const &context = CSerializationContext::GetDefaultContext())
{
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(false);
    writer.StartElement("r", "");
    CXmlObjectBase::ToXml_Int(collection, &writer, false, "", context, false);
    writer.EndElement();
    return stream.TextAsString();
}

std::string WriteTrace(CXmlTypeCollection const *collection,
                       CSerializationContext const &context = CSerializationContext::GetDefaultContext())
{
    CTraceWriter writer;
    CXmlObjectBase::ToXml_Int(collection, &writer, false, "", context, false);
    return writer.trace;
}

// Reads the run of <v> that opens <r>; returns the local name where it stopped.
std::string Read(CXmlTypeCollection *collection, std::string const &xml)
{
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    CXmlElement *root = document.GetDocumentElement();
    CXmlElement *next = CXmlObjectBase::FromXml_Int(collection, root, root->GetFirstElement(),
                                                    CSerializationContext::GetDefaultContext(), false);
    return next ? next->GetLocalName() : "(end)";
}

std::string Elements(std::vector<std::string> const &texts)
{
    std::string xml;
    for (auto const &text : texts)
        xml += text.empty() ? "<v/>" : "<v>" + text + "</v>";
    return xml;
}

class PrimitiveCollections : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

struct RoundTripCase
{
    char const *name;
    Factory make;
    Rule rule;
    std::vector<std::string> in;  // element texts as they stand in the XML
    std::vector<std::string> out; // as written back; empty: the same as `in`
    int writerType;
    bool rereads = true; // what is written reads back
};

std::vector<RoundTripCase> RoundTripCases()
{
    return {
        {"i1", MakerOf<Ci1Col>(), Rule::None, {"-128", "127", "0", "-1"}, {}, 3},
        {"i1 signs and blanks", MakerOf<Ci1Col>(), Rule::Collapse, {" +5 ", "\n-7\t"}, {"5", "-7"}, 3},
        {"i2", MakerOf<Ci2Col>(), Rule::None, {"-32768", "32767"}, {}, 4},
        {"i4", MakerOf<Ci4Col>(), Rule::None, {"-2147483648", "2147483647", "0"}, {}, 5},
        {"i4 leading zeros", MakerOf<Ci4Col>(), Rule::Collapse, {"007", " -010 "}, {"7", "-10"}, 5},
        {"i8", MakerOf<Ci8Col>(), Rule::None, {"-9223372036854775808", "9223372036854775807"}, {}, 6},
        {"ui1", MakerOf<Cui1Col>(), Rule::None, {"0", "255"}, {}, 7},
        {"ui2", MakerOf<Cui2Col>(), Rule::None, {"65535", "1"}, {}, 8},
        {"ui4", MakerOf<Cui4Col>(), Rule::None, {"4294967295", "0"}, {}, 9},
        {"ui4 wraps a minus", MakerOf<Cui4Col>(), Rule::None, {"-1"}, {"4294967295"}, 9},
        {"ui8", MakerOf<Cui8Col>(), Rule::None, {"18446744073709551615", "0"}, {}, 10},
        {"r4", MakerOf<Cr4Col>(), Rule::None, {"1.5", "-0.25", "INF", "-INF", "NaN", "0.1"}, {}, 11},
        {"r4 default format", MakerOf<Cr4Col>(), Rule::Collapse, {" 1e10 ", "1.#QNAN", "3.14159265", "1e999"},
         {"1e+10", "NaN", "3.141593", "INF"}, 11},
        {"r8", MakerOf<Cr8Col>(), Rule::None, {"0.1", "-2.5", "INF", "NaN"}, {}, 12},
        {"r8 default format", MakerOf<Cr8Col>(), Rule::None, {"123456789012345678", "-NAN", "1e-5"},
         {"1.234567890123457e+17", "NaN", "1e-05"}, 12},
        {"string escaped", MakerOf<CstringCol>(), Rule::Preserve, {"a &lt; b &amp; c", "", "x&gt;y"}, {}, 23},
        {"string replace", MakerOf<CstringCol>(), Rule::Replace, {"a\tb", " c\nd "}, {"a b", " c d "}, 23},
        {"string collapse", MakerOf<CstringCol>(), Rule::Collapse, {"  a \t b  ", "   "}, {"a b", ""}, 23},
        {"boolean", MakerOf<CbooleanCol>(), Rule::None, {"true", "false"}, {}, 24},
        {"boolean other forms", MakerOf<CbooleanCol>(), Rule::Collapse, {"1", "0", " TRUE ", "False"},
         {"true", "false", "true", "false"}, 24},
        {"decimal", MakerOf<CdecimalCol>(), Rule::None, {"1.5", "-0.001", "12345678901234567890.25", "0"}, {}, 25},
        {"integer", MakerOf<CintegerCol>(), Rule::None,
         {"123456789012345678901234567890", "-98765432109876543210", "0"}, {}, 26},
        {"duration", MakerOf<CdurationCol>(), Rule::None, {"P1Y2M3DT4H5M6S", "-P2D", "PT0.5S"}, {}, 13},
        {"base64Binary", MakerOf<Cbase64BinaryCol>(), Rule::None, {"AQID", "SGVsbG8=", ""}, {}, 2},
        {"hexBinary", MakerOf<ChexBinaryCol>(), Rule::Collapse, {"0aff", " 00 ", "DEADBEEF"},
         {"0AFF", "00", "DEADBEEF"}, 1},
        {"year", MakerOf<CyearCol>(), Rule::None, {"2001", "1999"}, {}, 16},
        {"year below zero", MakerOf<CyearCol>(), Rule::None, {"-0001"}, {"65535"}, 16, false},
        {"month", MakerOf<CmonthCol>(), Rule::None, {"--05", "--12"}, {}, 17},
        {"day", MakerOf<CdayCol>(), Rule::None, {"---01", "---31"}, {}, 18},
        {"date", MakerOf<CdateCol>(), Rule::Collapse, {"2001-02-03", "2001-02-03Z", " 1999-12-31-05:00 "},
         {"2001-02-03", "2001-02-03Z", "1999-12-31-05:00"}, 20},
        {"datetime", MakerOf<CdatetimeCol>(), Rule::None, {"2001-02-03T04:05:06", "2001-02-03T04:05:06.5Z"}, {}, 20},
        {"time", MakerOf<CtimeCol>(), Rule::None, {"04:05:06", "23:59:59+01:00"}, {}, 20},
        {"yearMonth", MakerOf<CyearMonthCol>(), Rule::None, {"2001-02", "1999-12Z"}, {}, 20},
        {"monthDay", MakerOf<CmonthDayCol>(), Rule::None, {"--02-29", "--12-31"}, {}, 20},
    };
}

// The three entities that the texts of the table use.
std::string Unescape(std::string text)
{
    static char const *const kEntities[][2] = {{"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}};
    for (auto const &entity : kEntities)
        for (std::string::size_type at; (at = text.find(entity[0])) != std::string::npos;)
            text.replace(at, std::strlen(entity[0]), entity[1]);
    return text;
}

void CheckRoundTrip(RoundTripCase const &c)
{
    CSmartPtr<CXmlTypeCollection> collection = c.make(c.rule, Facets(), 0, -1);
    EXPECT_EQ("w", Read(collection, "<r>" + Elements(c.in) + "<w/><v>9</v></r>"));
    EXPECT_EQ(static_cast<int>(c.in.size()), collection->GetCount());
    std::vector<std::string> const &out = c.out.empty() ? c.in : c.out;
    EXPECT_EQ("<r>" + Elements(out) + "</r>", WriteText(collection));

    // Each item goes out as one element of the collection's name with the
    // type's own number (the date family: always that of datetime).
    std::string trace;
    for (auto const &text : out)
        trace += "<v>[" + std::to_string(c.writerType) + "]" + Unescape(text) + "</>";
    EXPECT_EQ(trace, WriteTrace(collection));

    if (!c.rereads)
        return;
    CSmartPtr<CXmlTypeCollection> again = c.make(c.rule, Facets(), 0, -1);
    EXPECT_EQ("(end)", Read(again, WriteText(collection)));
    EXPECT_EQ(WriteText(collection), WriteText(again));
}
} // namespace

TEST_F(PrimitiveCollections, EveryTypeReadsARunAndWritesItBackByteForByte)
{
    for (auto const &c : RoundTripCases())
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ("no error", ErrorOf([&] { CheckRoundTrip(c); }));
    }
}

TEST_F(PrimitiveCollections, TypedAccessSeesTheValuesRead)
{
    auto i1 = Make<Ci1Col>();
    Read(i1, "<r><v>-5</v><v>100</v></r>");
    EXPECT_EQ(-5, i1->Item(0));
    EXPECT_EQ(100, i1->Item(1));

    auto r8 = Make<Cr8Col>();
    Read(r8, "<r><v>NaN</v><v>-INF</v></r>");
    EXPECT_TRUE(std::isnan(r8->Item(0)));
    EXPECT_EQ(-INFINITY, r8->Item(1));

    auto flags = Make<CbooleanCol>();
    Read(flags, "<r><v>1</v><v>false</v><v>true</v></r>");
    EXPECT_EQ((std::vector<bool>{true, false, true}), std::vector<bool>(flags->begin(), flags->end()));

    auto strings = Make<CstringCol>(Rule::Preserve);
    strings->Add("x");
    strings->AddAt(0, "w");
    EXPECT_EQ((std::vector<std::string>{"w", "x"}), std::vector<std::string>(strings->begin(), strings->end()));

    auto dates = Make<CdatetimeCol>();
    Read(dates, "<r><v>2001-02-03T04:05:06Z</v></r>");
    EXPECT_EQ(CDateTime::dateTime, dates->Item(0).GetType());
    EXPECT_EQ(4, dates->Item(0).GetHour());

    auto years = Make<CyearCol>();
    Read(years, "<r><v>-0001</v></r>");
    EXPECT_EQ(65535, years->Item(0));
}

TEST_F(PrimitiveCollections, ConversionErrorsOnReadingPassUnchangedAndKeepWhatCameBefore)
{
    struct BadTextCase
    {
        char const *name;
        Factory make;
        Rule rule;
        char const *text;
        char const *message;
    };
    BadTextCase const cases[] = {
        {"i1 overflow", MakerOf<Ci1Col>(), Rule::Collapse, " 128 ", "The value [ 128 ] is to large to fit in a i1"},
        {"i1 bad text", MakerOf<Ci1Col>(), Rule::None, "abc", "The value [abc] can not be converted to a i4"},
        {"i4 trailing", MakerOf<Ci4Col>(), Rule::None, "12abc", "The value [12abc] can not be converted to a i4"},
        {"i8 overflow", MakerOf<Ci8Col>(), Rule::None, "9223372036854775808",
         "The value [9223372036854775808] is to large to fit in a i8"},
        {"ui2 overflow", MakerOf<Cui2Col>(), Rule::None, "65536", "The value [65536] is to large to fit in a ui2"},
        {"r8 empty", MakerOf<Cr8Col>(), Rule::Collapse, " ", "The value [] can not be converted to a r8"},
        {"r4 bad", MakerOf<Cr4Col>(), Rule::None, "1.5x", "The value [1.5x] can not be converted to a r4"},
        {"boolean blanks kept", MakerOf<CbooleanCol>(), Rule::None, " true ",
         "A Boolean Value read from an XML document was invalid [ true ]. Valid values are 'true', 'false', '1', or "
         "'0'"},
        // The date family reads any form and refuses a foreign one on adding.
        {"yearMonth given a date", MakerOf<CyearMonthCol>(), Rule::None, "2001-02-03",
         "Dates added to this collection must be of type dt_gYearMonth"},
        {"date given a yearMonth", MakerOf<CdateCol>(), Rule::None, "2001-02",
         "Dates added to this collection must be of type dt_date"},
        {"monthDay given a gDay", MakerOf<CmonthDayCol>(), Rule::None, "---05",
         "Dates added to this collection must be of type dt_gMonthDay"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        CSmartPtr<CXmlTypeCollection> collection = c.make(c.rule, Facets(), 0, -1);
        EXPECT_EQ(c.message, ErrorOf([&] { Read(collection, std::string("<r><v>") + c.text + "</v></r>"); }));
        EXPECT_EQ(0, collection->GetCount());
    }
    // The month of a full date reads as its month; a text without one fails in
    // the conversion.
    auto months = Make<CmonthCol>();
    EXPECT_EQ("Failed to GetMonth. Invalid Date Type: gYear.",
              ErrorOf<CMxInvalidStateException>([&] { Read(months, "<r><v>--07</v><v>2000</v></r>"); }));
    EXPECT_EQ(1, months->GetCount());
    EXPECT_EQ(7, months->Item(0));
}

namespace
{
Facets Inclusive(char const *min, char const *max)
{
    Facets f;
    f.minInclusive = min;
    f.maxInclusive = max;
    return f;
}
Facets Exclusive(char const *min, char const *max)
{
    Facets f;
    f.minExclusive = min;
    f.maxExclusive = max;
    return f;
}
Facets Lengths(long min, long max, long length, char const *pattern = nullptr)
{
    Facets f;
    f.minLength = min;
    f.maxLength = max;
    f.length = length;
    f.pattern = pattern;
    return f;
}
Facets Digits(long total, long fraction)
{
    Facets f;
    f.totalDigits = total;
    f.fractionDigits = fraction;
    return f;
}
} // namespace

TEST_F(PrimitiveCollections, FacetsAreTestedOnEveryAddWithTheirOwnMessages)
{
    struct FacetCase
    {
        char const *name;
        Factory make;
        Facets facets;
        char const *text;
        char const *message; // "no error": the item is taken
    };
    FacetCase const cases[] = {
        {"i1 max", MakerOf<Ci1Col>(), Inclusive(nullptr, "10"), "11", "Invalid Value for v [11]"},
        {"i1 digits count the sign", MakerOf<Ci1Col>(), Digits(1, -1), "-1", "Invalid Value for v [-1]"},
        {"i2 min exclusive", MakerOf<Ci2Col>(), Exclusive("0", nullptr), "0", "Invalid Value for v [0]"},
        {"i4 max exclusive", MakerOf<Ci4Col>(), Exclusive(nullptr, "100"), "100", "Invalid Value for v [100]"},
        {"i4 in range", MakerOf<Ci4Col>(), Exclusive(nullptr, "100"), "99", "no error"},
        {"i4 bound that will not parse", MakerOf<Ci4Col>(), Inclusive(nullptr, "abc"), "1",
         "The value [abc] can not be converted to a i4"},
        {"i8 min", MakerOf<Ci8Col>(), Inclusive("-5", nullptr), "-6", "Invalid Value for v [-6]."},
        {"ui1 max", MakerOf<Cui1Col>(), Inclusive(nullptr, "200"), "201", "Invalid Value for v [201]"},
        {"ui2 digits", MakerOf<Cui2Col>(), Digits(3, -1), "1000", "Invalid Value for v [1000]"},
        {"ui4 digits", MakerOf<Cui4Col>(), Digits(3, -1), "999", "no error"},
        {"ui8 max", MakerOf<Cui8Col>(), Inclusive(nullptr, "10"), "18446744073709551615",
         "Invalid Value for v [18446744073709551615]."},
        {"r4 max", MakerOf<Cr4Col>(), Inclusive(nullptr, "1.5"), "2", "Invalid Value for v [2.000000]"},
        {"r8 min", MakerOf<Cr8Col>(), Inclusive("0", nullptr), "-0.5", "Invalid Value for v [-0.500000]"},
        {"string max length", MakerOf<CstringCol>(), Lengths(-1, 3, -1), "abcd", "Invalid Value for v [abcd]."},
        {"string pattern", MakerOf<CstringCol>(), Lengths(2, -1, -1, "[a-z]+"), "ab1", "Invalid Value for v [ab1]."},
        {"string pattern holds", MakerOf<CstringCol>(), Lengths(2, -1, -1, "[a-z]+"), "abc", "no error"},
        {"string pattern that will not compile", MakerOf<CstringCol>(), Lengths(-1, -1, -1, "(a"), "a",
         "Invalid Regular Expression: a Error: 'missing )'\nInvalid Value for v [a]."},
        {"boolean has no facets", MakerOf<CbooleanCol>(), Lengths(5, 0, 3, "x"), "true", "no error"},
        {"decimal total digits", MakerOf<CdecimalCol>(), Digits(3, -1), "12.34", "Invalid Value for v [12.34]."},
        {"decimal fraction digits", MakerOf<CdecimalCol>(), Digits(-1, 1), "0.25", "Invalid Value for v [0.25]."},
        {"decimal trailing zero", MakerOf<CdecimalCol>(), Digits(-1, 1), "0.50", "no error"},
        {"integer max", MakerOf<CintegerCol>(), Inclusive(nullptr, "99999999999999999999"),
         "100000000000000000000", "Invalid Value for v [100000000000000000000]."},
        {"duration max", MakerOf<CdurationCol>(), Inclusive(nullptr, "P1D"), "P2D", "Invalid Value for v [P2D]."},
        {"duration indeterminate passes", MakerOf<CdurationCol>(), Exclusive(nullptr, "P30D"), "P1M", "no error"},
        {"base64Binary max length", MakerOf<Cbase64BinaryCol>(), Lengths(-1, 2, -1), "AQID",
         "Invalid Value for v [AQID]."},
        {"hexBinary length", MakerOf<ChexBinaryCol>(), Lengths(-1, -1, 1), "0a0b", "Invalid Value for v [0A0B]."},
        {"year max", MakerOf<CyearCol>(), Inclusive(nullptr, "2000"), "2001", "Invalid Value for v [2001]"},
        {"month min", MakerOf<CmonthCol>(), Inclusive("--03", nullptr), "--02", "Invalid Value for v [2]"},
        {"day max exclusive", MakerOf<CdayCol>(), Exclusive(nullptr, "---10"), "---10", "Invalid Value for v [10]"},
        {"date max", MakerOf<CdateCol>(), Inclusive(nullptr, "2000-01-01"), "2000-01-02",
         "Invalid Value for v [2000-01-02]."},
        {"datetime min exclusive", MakerOf<CdatetimeCol>(), Exclusive("2000-01-01T00:00:00", nullptr),
         "2000-01-01T00:00:00", "Invalid Value for v [2000-01-01T00:00:00]."},
        {"time max", MakerOf<CtimeCol>(), Inclusive(nullptr, "12:00:00"), "12:00:01",
         "Invalid Value for v [12:00:01]."},
        {"yearMonth min", MakerOf<CyearMonthCol>(), Inclusive("2000-01", nullptr), "1999-12",
         "Invalid Value for v [1999-12]."},
        {"monthDay max", MakerOf<CmonthDayCol>(), Inclusive(nullptr, "--06-30"), "--07-01",
         "Invalid Value for v [--07-01]."},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        CSmartPtr<CXmlTypeCollection> collection = c.make(Rule::None, c.facets, 0, -1);
        EXPECT_EQ(c.message, ErrorOf([&] { Read(collection, std::string("<r><v>") + c.text + "</v></r>"); }));
        EXPECT_EQ(std::string(c.message) == "no error" ? 1 : 0, collection->GetCount());
    }
}

TEST_F(PrimitiveCollections, BoundsAreCheckedBeforeTheWriterSeesAnything)
{
    CSerializationContext lenient;
    lenient.SetIgnoreInvalidCollectionCounts(true);
    for (auto const &c : RoundTripCases())
    {
        SCOPED_TRACE(c.name);
        int const n = static_cast<int>(c.in.size());
        struct BoundCase
        {
            int minOccurs, maxOccurs;
            std::string error; // empty: all items are written
        };
        BoundCase const bounds[] = {
            {n + 1, -1, FormatString("The Minimum number of [v] elements allowed in this collection is %d", n + 1)},
            {0, n - 1, FormatString("The Maximum number of [v] elements allowed in this collection is %d", n - 1)},
            {n, n, ""},
            {0, -1, ""},
        };
        for (auto const &b : bounds)
        {
            SCOPED_TRACE(testing::Message() << b.minOccurs << " to " << b.maxOccurs);
            CSmartPtr<CXmlTypeCollection> collection = c.make(c.rule, Facets(), b.minOccurs, b.maxOccurs);
            Read(collection, "<r>" + Elements(c.in) + "</r>");
            CTraceWriter writer;
            std::string const error = ErrorOf<CMxValidationException>([&] {
                CXmlObjectBase::ToXml_Int(collection, &writer, false, "", CSerializationContext::GetDefaultContext(),
                                          false);
            });
            EXPECT_EQ(b.error.empty() ? "no error" : b.error, error);
            EXPECT_EQ(b.error.empty(), collection->IsValidCount(CSerializationContext::GetDefaultContext()));
            std::string const all = WriteTrace(collection, lenient);
            EXPECT_EQ(b.error.empty() ? all : "", writer.trace);
            EXPECT_EQ(static_cast<std::size_t>(n), std::count(all.begin(), all.end(), '/'));
            EXPECT_TRUE(collection->IsValidCount(lenient));
        }
    }
    // An empty collection below its minimum writes nothing, or nothing at all
    // when counts are ignored.
    auto empty = Make<CstringCol>(Rule::None, {}, 1, 0);
    EXPECT_EQ("The Minimum number of [v] elements allowed in this collection is 1",
              ErrorOf<CMxValidationException>([&] { WriteTrace(empty); }));
    EXPECT_EQ("", WriteTrace(empty, lenient));
}

namespace
{
// Names each event and the value it carries: "add 5", "remove -",
// "removeComplete 0", "change".
template <typename T> class CValueRecorder : public IEventSink
{
public:
    explicit CValueRecorder(std::function<std::string(T const &)> show) : m_show(std::move(show)) {}
    std::vector<std::string> events;

    void OnEvent(CXmlObjectBase *, MsgType type, void *data) override
    {
        static char const *const kNames[] = {"change", "add", "addComplete", "remove", "removeComplete"};
        std::string line = kNames[type];
        if (type == MsgCollectionAdd || type == MsgCollectionAddComplete)
            line += " " + m_show(*static_cast<T *>(data));
        else if (type != MsgCollectionChange)
            line += data ? " " + std::to_string(*static_cast<int *>(data)) : std::string(" -");
        events.push_back(line);
    }
    CXmlObjectBase *GetBase() override { return nullptr; }

private:
    std::function<std::string(T const &)> m_show;
};

std::string Join(std::vector<std::string> const &lines)
{
    std::string text;
    for (auto const &line : lines)
        text += (text.empty() ? "" : ", ") + line;
    return text;
}
} // namespace

TEST_F(PrimitiveCollections, ListenersHearEachAddAndRemoveFormInOrder)
{
    // The collection starts as 1 2, with a maximum of 10 for each item.
    struct EventCase
    {
        char const *name;
        std::function<void(Ci4Col &)> op;
        char const *error;
        char const *items;
        char const *events;
    };
    EventCase const cases[] = {
        {"Add", [](Ci4Col &c) { c.Add(3); }, "no error", "1 2 3", "add 3, addComplete 3, change"},
        {"AddAt front", [](Ci4Col &c) { c.AddAt(0, 3); }, "no error", "3 1 2", "add 3, addComplete 3, change"},
        {"AddAt middle", [](Ci4Col &c) { c.AddAt(1, 3); }, "no error", "1 3 2", "add 3, addComplete 3, change"},
        {"AddAt count appends", [](Ci4Col &c) { c.AddAt(2, 3); }, "no error", "1 2 3",
         "add 3, addComplete 3, change"},
        {"AddAt below 0", [](Ci4Col &c) { c.AddAt(-1, 3); }, "Index out of range", "1 2", "add 3"},
        {"AddAt past the count", [](Ci4Col &c) { c.AddAt(3, 3); }, "Index out of range", "1 2", "add 3"},
        {"Add against a facet", [](Ci4Col &c) { c.Add(11); }, "Invalid Value for v [11]", "1 2", "add 11"},
        {"bad position wins over a facet", [](Ci4Col &c) { c.AddAt(5, 11); }, "Index out of range", "1 2", "add 11"},
        {"Remove first", [](Ci4Col &c) { c.Remove(0); }, "no error", "2", "remove 0, removeComplete 0, change"},
        {"Remove last", [](Ci4Col &c) { c.Remove(1); }, "no error", "1", "remove 1, removeComplete 0, change"},
        {"Remove past the end", [](Ci4Col &c) { c.Remove(2); }, "Index 2 is out of range, use 0 - 2", "1 2",
         "remove 2"},
        {"Remove -1", [](Ci4Col &c) { c.Remove(-1); }, "Index -1 is out of range, use 0 - 2", "1 2", "remove -"},
        {"Clear", [](Ci4Col &c) { c.Clear(); }, "no error", "",
         "remove 0, removeComplete 0, change, remove 0, removeComplete 0, change"},
        {"Item past the end", [](Ci4Col &c) { c.Item(2); }, "Index 2 is out of range, use 0 - 2", "1 2", ""},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        auto collection = Make<Ci4Col>(Rule::None, Inclusive(nullptr, "10"));
        collection->Add(1);
        collection->Add(2);
        CValueRecorder<std::int32_t> recorder([](std::int32_t const &v) { return std::to_string(v); });
        collection->AddEventListener(&recorder);
        EXPECT_EQ(c.error, ErrorOf([&] { c.op(*collection); }));
        std::string items;
        for (std::int32_t item : *collection)
            items += (items.empty() ? "" : " ") + std::to_string(item);
        EXPECT_EQ(c.items, items);
        EXPECT_EQ(c.events, Join(recorder.events));
    }

    // An empty collection: Clear says nothing, Remove tells and then fails.
    auto empty = Make<CstringCol>();
    CValueRecorder<std::string> recorder([](std::string const &v) { return "'" + v + "'"; });
    empty->AddEventListener(&recorder);
    empty->Clear();
    EXPECT_EQ("Index 0 is out of range, use 0 - 0", ErrorOf([&] { empty->Remove(0); }));
    empty->Add("x y");
    EXPECT_EQ("remove 0, add 'x y', addComplete 'x y', change", Join(recorder.events));
}

TEST_F(PrimitiveCollections, TheDateFamilyTestsFormAndFacetsBeforeTheAddEvent)
{
    struct FormCase
    {
        char const *name;
        std::function<CSmartPtr<CdatetimeBaseCol>()> make;
        char const *good; // a text of the collection's own form
        char const *message;
    };
    FormCase const forms[] = {
        {"date", [] { return CSmartPtr<CdatetimeBaseCol>(Make<CdateCol>().Get()); }, "2001-02-03",
         "Dates added to this collection must be of type dt_date"},
        {"datetime", [] { return CSmartPtr<CdatetimeBaseCol>(Make<CdatetimeCol>().Get()); }, "2001-02-03T04:05:06",
         "Dates added to this collection must be of type dt_dateTime"},
        {"time", [] { return CSmartPtr<CdatetimeBaseCol>(Make<CtimeCol>().Get()); }, "04:05:06",
         "Dates added to this collection must be of type dt_time"},
        {"yearMonth", [] { return CSmartPtr<CdatetimeBaseCol>(Make<CyearMonthCol>().Get()); }, "2001-02",
         "Dates added to this collection must be of type dt_gYearMonth"},
        {"monthDay", [] { return CSmartPtr<CdatetimeBaseCol>(Make<CmonthDayCol>().Get()); }, "--02-03",
         "Dates added to this collection must be of type dt_gMonthDay"},
    };
    // One value of each form, and one of none.
    CDateTime const others[] = {CDateTime("2001-02-03T04:05:06"),
                                CConversions::dateFromString("2001-02-03", Rule::None),
                                CConversions::timeFromString("04:05:06", Rule::None),
                                CConversions::dateFromString("2001-02", Rule::None),
                                CConversions::dateFromString("--02-03", Rule::None),
                                CConversions::dateFromString("---03", Rule::None), CDateTime()};
    auto show = [](CDateTime const &v) { return CConversions::dateToString(v); };
    for (auto const &f : forms)
    {
        SCOPED_TRACE(f.name);
        CSmartPtr<CdatetimeBaseCol> collection = f.make();
        CValueRecorder<CDateTime> recorder(show);
        collection->AddEventListener(&recorder);
        Read(collection, std::string("<r><v>") + f.good + "</v></r>");
        CDateTime const own = collection->Item(0);
        for (CDateTime const &other : others)
        {
            if (other.GetType() == own.GetType())
                continue;
            EXPECT_EQ(f.message, ErrorOf<CMxInvalidParamException>([&] { collection->Add(other); }));
        }
        // Through the base, Add reaches the class's own AddAt; a bad position
        // is found after the form test, with the add event sent.
        collection->Add(own);
        EXPECT_EQ("Index out of range", ErrorOf([&] { collection->AddAt(3, own); }));
        std::string const text = f.good;
        EXPECT_EQ("add " + text + ", addComplete " + text + ", change, add " + text + ", addComplete " + text +
                      ", change, add " + text,
                  Join(recorder.events));
        EXPECT_EQ(2, collection->GetCount());
        EXPECT_EQ("<r><v>" + text + "</v><v>" + text + "</v></r>", WriteText(collection));
    }

    // A facet failure of the date family sends no event at all.
    auto dates = Make<CdateCol>(Rule::None, Inclusive(nullptr, "2000-01-01"));
    CValueRecorder<CDateTime> recorder(show);
    dates->AddEventListener(&recorder);
    EXPECT_EQ("Invalid Value for v [2001-01-01].",
              ErrorOf([&] { dates->AddAt(9, CConversions::dateFromString("2001-01-01", Rule::None)); }));
    EXPECT_TRUE(recorder.events.empty());
}

TEST_F(PrimitiveCollections, CopiesOwnTheirItems)
{
    auto original = Make<CintegerCol>(Rule::Collapse, {}, 1, 5);
    original->Add(CBigInteger(7));
    CSmartPtr<CintegerCol> copy(new CintegerCol(*original));
    copy->Release(); // the copy took over the source's reference count as well
    copy->Add(CBigInteger(8));
    EXPECT_EQ(1, original->GetCount());
    EXPECT_EQ(2, copy->GetCount());
    EXPECT_EQ(5, copy->GetMaxOccurs());
    EXPECT_EQ(Rule::Collapse, copy->GetWhitespaceRule());
    EXPECT_EQ("<r><v>7</v><v>8</v></r>", WriteText(copy));

    auto times = Make<CtimeCol>();
    times->Add(CConversions::timeFromString("01:02:03", Rule::None));
    *original = *copy;
    EXPECT_EQ(2, original->GetCount());
    CSmartPtr<CtimeCol> timesCopy(new CtimeCol(*times));
    timesCopy->Release();
    times->Clear();
    EXPECT_EQ("<r><v>01:02:03</v></r>", WriteText(timesCopy));
}
