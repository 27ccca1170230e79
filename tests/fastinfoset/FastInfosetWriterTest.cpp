// The octets of the writer: hand-computed cases for each rule, and goldens
// data/<case>.xml -> <case>.expected.fi.hex (the XML read into an untyped
// tree, written as Fast Infoset). The Java peer reads the goldens in
// FastInfosetPeerTest.

#include "FiTestSupport.h"

#include "fastinfoset/FastInfosetWriter.h"
#include "document/XmlDocument.h"
#include "runtime/BinaryStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <unistd.h>

using namespace MxXmlLib;
using namespace MxFiTest;

namespace
{
using Item = CTypedProbe::Item;

std::string FiHex(CXmlObjectBase const &object, CSerializationContext const &context,
                  FInfoDecl declaration = FInfoDecl_None)
{
    return Hex(Bytes(object.ToFastInfosetStream(declaration, context)));
}

// Calls on a bare writer; the body's octets after the 5-octet header.
std::string Written(std::function<void(CFastInfosetWriter &)> const &calls,
                    CFastInfosetContext const &options = CFastInfosetContext())
{
    CBinaryStream stream;
    CFastInfosetWriter writer(&stream, &options);
    writer.WriteHeader(FInfoDecl_None);
    calls(writer);
    writer.WriteDocumentEnd();
    return Hex(Bytes(stream.GetData()).substr(5));
}

class FastInfosetWriter : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};
} // namespace

struct WriterCase
{
    char const *name;
    std::function<void(CFastInfosetWriter &)> calls;
    char const *hex; // after E0 00 00 01 00
};

TEST_F(FastInfosetWriter, WritesEachRuleAsComputedByHand)
{
    std::string const x64(64, 'x');
    std::string const x65(65, 'x');
    std::string const x321(321, 'x');
    WriterCase const cases[] = {
        // Literal name, held back: the terminator of root and document share FF.
        {"empty root", [](CFastInfosetWriter &w) { w.StartElement("a", ""); w.EndElement(); }, "3C 00 61 FF\n"},
        // Attribute bit 0x40, literal attribute name 78, added value 40 31,
        // F0 ends the attributes.
        {"attribute",
         [](CFastInfosetWriter &w) {
             w.StartElement("a", "");
             w.WriteAttribute("x", "", "1", ItemType_string);
             w.EndElement();
         },
         "7C 00 61 78 00 78 40 31 F0 FF\n"},
        // An empty value is index 0 (FF); an empty text writes nothing.
        {"empty value and text",
         [](CFastInfosetWriter &w) {
             w.StartElement("a", "");
             w.WriteAttribute("x", "", "", ItemType_string);
             w.WriteText("", ItemType_string, false);
             w.EndElement();
         },
         "7C 00 61 78 00 78 FF F0 FF\n"},
        // Second occurrences are indexes: element name 2 (01), chunk 1 (A0);
        // the sibling owes F0, the two last ends share FF, the document F0.
        {"indexes",
         [](CFastInfosetWriter &w) {
             w.StartElement("r", "");
             for (int i = 0; i < 2; ++i)
             {
                 w.StartElement("a", "");
                 w.WriteText("hello", ItemType_string, false);
                 w.EndElement();
             }
             w.EndElement();
         },
         "3C 00 72 3C 00 61 92 02 68 65 6C 6C 6F F0 01 A0\nFF F0\n"},
        // Six bytes reach the add limit: never indexed (80 flags, no 10).
        {"add limit",
         [](CFastInfosetWriter &w) {
             w.StartElement("a", "");
             w.WriteAttribute("x", "", "123456", ItemType_string);
             w.WriteText("123456", ItemType_string, false);
             w.EndElement();
         },
         "7C 00 61 78 00 78 05 31 32 33 34 35 36 F0 82 03\n31 32 33 34 35 36 FF\n"},
        // A namespace gets a generated prefix that travels in the literal
        // name only (3F: prefix and namespace), and the attribute reuses it.
        {"generated prefix",
         [](CFastInfosetWriter &w) {
             w.StartElement("a", "urn:n");
             w.WriteAttribute("b", "urn:n", "v", ItemType_string);
             w.EndElement();
         },
         "7F 01 41 41 04 75 72 6E 3A 6E 00 61 7B 81 81 00\n62 40 76 F0 FF\n"},
        // Mappings made before the root become its namespace attributes
        // (0x38 | attribute bit, CF prefix URI, F0), then the name without
        // the attribute bit.
        {"declared mapping",
         [](CFastInfosetWriter &w) {
             w.AddNamespace("p", "urn:n");
             w.SetDefaultNamespace("urn:d");
             w.StartElement("a", "urn:d");
             w.WriteAttribute("b", "urn:n", "v", ItemType_string);
             w.EndElement();
         },
         "78 CD 04 75 72 6E 3A 64 CF 00 70 04 75 72 6E 3A\n6E F0 3D 81 00 61 7B 81 82 00 62 40 76 F0 FF\n"},
        // Lengths: 64 and 65 octets on the second bit.
        {"name lengths",
         [&](CFastInfosetWriter &w) {
             w.StartElement(x64, "");
             w.StartElement(x65, "");
             w.EndElement();
             w.EndElement();
         },
         nullptr},
        {"long text",
         [&](CFastInfosetWriter &w) {
             w.StartElement("a", "");
             w.WriteText(x321, ItemType_string, false);
             w.EndElement();
         },
         nullptr},
    };
    for (WriterCase const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string const got = Written(c.calls);
        if (c.hex)
            EXPECT_EQ(c.hex, got);
    }
    // The two computed without a table of octets:
    std::string const names = Unhex(Written(cases[7].calls));
    EXPECT_EQ(std::string("\x3C\x3F", 2), names.substr(0, 2));
    EXPECT_EQ(std::string("\x3C\x40\x00", 3), names.substr(66, 3));
    std::string const text = Unhex(Written(cases[8].calls));
    // 80 | 03: the length in four octets, 321 - 259 = 62.
    EXPECT_EQ(std::string("\x83\x00\x00\x00\x3E", 5), text.substr(3, 5));
}

TEST_F(FastInfosetWriter, TypedValuesFollowTheEncodingTable)
{
    CFastInfosetContext options;
    options.SetSuggestedValues();
    struct TypedCase
    {
        ItemType type;
        char const *text;
        char const *hex; // the chunk after <a>
    };
    TypedCase const cases[] = {
        // 9C: a chunk added to the table, by algorithm; then (number - 1) << 2
        // with the length on the seventh bit.
        {ItemType_i4, "-2", "9C 0E 01 FF FF FF FE"},                 // int: (4 - 1) << 2
        {ItemType_i1, "-2", "9C 09 FF FE"},                          // short
        {ItemType_ui4, "7", "9C 12 05 00 00 00 00 00 00 00 07"},     // long
        {ItemType_boolean, "true", "9C 14 38"},                      // boolean
        {ItemType_r8, "0.5", "9C 1E 05 3F E0 00 00 00 00 00 00"},    // double
        {ItemType_r4, "1.5", "9C 1A 01 3F C0 00 00"},                // float
        {ItemType_hexBinary, "DEAD", "9C 01 DE AD"},
        {ItemType_base64Binary, "AQID", "9C 06 00 01 02 03"},
        // Six bytes and more are not added (88 rather than 98). Restricted
        // alphabets: numeric 1 and date-time 2, four bits a character, F
        // after an odd count.
        {ItemType_decimal, "-1.5e3", "88 02 00 A1 C5 D3"},
        {ItemType_date, "2024-02-29Z", "88 06 03 20 24 A0 2A 29 DF"},
        {ItemType_string, "text!", "92 02 74 65 78 74 21"},
    };
    for (TypedCase const &c : cases)
    {
        SCOPED_TRACE(c.text);
        std::string const got = Written(
            [&](CFastInfosetWriter &w) {
                w.StartElement("a", "");
                w.WriteText(c.text, c.type, false);
                w.EndElement();
            },
            options);
        EXPECT_EQ(Hex(Unhex(std::string("3C 00 61 ") + c.hex + " FF")), got);
    }
}

TEST_F(FastInfosetWriter, RaisesTheFixedMessages)
{
    CFastInfosetContext suggested;
    suggested.SetSuggestedValues();
    CFastInfosetContext unknown;
    unknown.SetEncoding(ItemType_string, {3, 0});
    CFastInfosetContext badAlphabet;
    badAlphabet.SetEncoding(ItemType_string, {1, 3});
    CFastInfosetContext badAlgorithm;
    badAlgorithm.SetEncoding(ItemType_string, {2, 11});
    auto text = [](ItemType type, char const *value) {
        return [=](CFastInfosetWriter &w) {
            w.StartElement("a", "");
            w.WriteText(value, type, false);
        };
    };
    auto attribute = [](ItemType type, char const *value) {
        return [=](CFastInfosetWriter &w) {
            w.StartElement("a", "");
            w.WriteAttribute("x", "", value, type);
        };
    };
    struct ErrorCase
    {
        char const *name;
        CFastInfosetContext const *options;
        std::function<void(CFastInfosetWriter &)> calls;
        char const *message;
    };
    ErrorCase const cases[] = {
        {"attribute after content", &suggested,
         [](CFastInfosetWriter &w) {
             w.StartElement("a", "");
             w.StartElement("b", "");
             w.EndElement();
             w.WriteAttribute("x", "", "1", ItemType_string);
         },
         "Attributes must be added before elements"},
        {"unknown encoding, chunk", &unknown, text(ItemType_string, "v"),
         "Failed to write FastInfoset. Unknown encoding in EncodedCharacterStringBit7."},
        {"unknown encoding, attribute", &unknown, attribute(ItemType_string, "v"),
         "Failed to write FastInfoset. Unknown encoding in EncodedCharacterStringBit5."},
        {"alphabet 3", &badAlphabet, text(ItemType_string, "1"),
         "Failed to write FastInfoset. Invalid Restricted Alphabet value [3]"},
        {"algorithm 11", &badAlgorithm, attribute(ItemType_string, "1"),
         "Failed to write FastInfoset. Invalid Encoding Algorithm value [11]"},
        // The date and time alphabet has no full stop.
        {"fraction of a second", &suggested, text(ItemType_datetime, "2024-01-01T10:00:00.5"),
         "Failed to write FastInfoset. Invalid character not found for Restricted Alphabet."},
        {"short out of range", &suggested, text(ItemType_i1, "40000"), nullptr},
        {"open element", &suggested, [](CFastInfosetWriter &w) { w.StartElement("a", ""); },
         "An Element has not been closed."},
    };
    for (ErrorCase const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string const message = ErrorOf([&] {
            CBinaryStream stream;
            CFastInfosetWriter writer(&stream, c.options);
            writer.WriteHeader(FInfoDecl_None);
            c.calls(writer);
            writer.WriteDocumentEnd();
        });
        if (c.message)
            EXPECT_EQ(c.message, message);
        else
            EXPECT_NE("no error", message);
    }
}

TEST_F(FastInfosetWriter, HeaderCarriesDeclarationAndExternalVocabulary)
{
    CSmartPtr<CTypedProbe> probe(new CTypedProbe("a", {}, {}));
    CSerializationContext context;
    EXPECT_EQ("E0 00 00 01 00 3C 00 61 FF\n", FiHex(*probe, context));
    std::string const declared = Bytes(probe->ToFastInfosetStream(FInfoDecl_V10FinfStandaloneYes, context));
    EXPECT_EQ("<?xml version='1.0' encoding='finf' standalone='yes'?>\xE0", declared.substr(0, 55));

    context.GetFIContext().SetUseGeneratedVocabulary(true);
    context.GetFIContext().GetVocabulary()->AddElement("", "", "a");
    context.GetFIContext().SetExternalVocabularyURI("urn:v");
    // 20: initial vocabulary; 10 00: external vocabulary only; its URI;
    // then the element by index 1 of the generated vocabulary.
    EXPECT_EQ("E0 00 00 01 20 10 00 04 75 72 6E 3A 76 00 FF\n", FiHex(*probe, context));
    context.GetFIContext().SetExternalVocabularyURI("");
    std::string const fallback = Bytes(probe->ToFastInfosetStream(FInfoDecl_None, context));
    std::string const uri = CFastInfosetContext::kDefaultVocabularyURI;
    EXPECT_EQ(uri, fallback.substr(8, uri.size()));
    // The run used a copy: the context's vocabulary is as it was.
    EXPECT_EQ(1u, context.GetFIContext().GetVocabulary()->GetElementNamesTable().size());
    EXPECT_EQ(1u, context.GetFIContext().GetVocabulary()->GetLocalNamesTable().size());
}

TEST_F(FastInfosetWriter, GoldensMatchByteForByte)
{
    std::vector<fs::path> inputs;
    for (auto const &entry : fs::directory_iterator(MX_TEST_DATA_DIR))
        if (entry.path().extension() == ".xml")
            inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    ASSERT_GE(inputs.size(), 5u);
    for (fs::path const &input : inputs)
    {
        SCOPED_TRACE(input.filename().string());
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromXml(ReadFile(input).c_str());
        std::string const got = FiHex(*element, CSerializationContext());
        fs::path golden = input;
        golden.replace_extension(".expected.fi.hex");
        if (!fs::exists(golden))
        {
            WriteFile(golden, got);
            ADD_FAILURE() << "golden written: " << golden;
            continue;
        }
        EXPECT_EQ(ReadFile(golden), got);
    }
}

TEST_F(FastInfosetWriter, FileFrameWritesTheStreamBytes)
{
    // Repeated enough that gzip shrinks it: output that grows is refused.
    std::vector<Item> children(40, Item{"b", "t", ItemType_string});
    CSmartPtr<CTypedProbe> probe(new CTypedProbe("a", {{"x", "1", ItemType_string}}, children));
    CSerializationContext context;
    fs::path const path = fs::temp_directory_path() / ("mx-fi-frame-" + std::to_string(getpid()) + ".fi");
    EXPECT_EQ("ZLIB Compression only available for To Stream methods.", ErrorOf([&] {
                  probe->ToFastInfosetFile(path.string().c_str(), FInfoDecl_None, context, CompressionZLib);
              }));
    EXPECT_FALSE(fs::exists(path));
    for (CompressionType compression : {CompressionNone, CompressionGZip})
    {
        SCOPED_TRACE(compression);
        probe->ToFastInfosetFile(path.string().c_str(), FInfoDecl_Finf, context, compression);
        std::string const bytes = ReadFile(path);
        if (compression == CompressionNone)
            EXPECT_EQ(Bytes(probe->ToFastInfosetStream(FInfoDecl_Finf, context)), bytes);
        // Whatever the form, loading detects it.
        CXmlDocument document;
        document.Load(path.string().c_str());
        ASSERT_NE(nullptr, document.GetDocumentElement());
        EXPECT_EQ("1", document.GetDocumentElement()->GetAttribute("x", ""));
        EXPECT_EQ("t", document.GetDocumentElement()->GetFirstElement()->GetText());
    }
    fs::remove(path);
    // The version check comes first in the stream frame.
    Register(1, 0);
    EXPECT_EQ("Wrong Version (Velmar Runtime: v16.1, Generator: v1.0)",
              ErrorOf([&] { probe->ToFastInfosetStream(FInfoDecl_None, context); }));
    Register(16, 1);
}
