// The reader against the writer: FI -> tree -> XML equals XML -> tree -> XML
// over a corpus, every declaration and compression, typed values, and the
// fixed messages of malformed input.

#include "FiTestSupport.h"

#include "document/XmlDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

using namespace MxXmlLib;
using namespace MxFiTest;

namespace
{
using Item = CTypedProbe::Item;

class FastInfosetReader : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

// The tree as text: namespaces in braces, attributes in document order, no
// escaping. Prefixes are not part of a tree.
void Dump(CXmlElement const *element, std::string &out)
{
    auto name = [](std::string const &ns, std::string const &local) {
        return ns.empty() ? local : "{" + ns + "}" + local;
    };
    std::string const tag = name(element->GetNamespaceURI(), element->GetLocalName());
    out += "<" + tag;
    for (CXmlAttribute const *a : element->GetAttributes())
        out += " " + name(a->GetNamespaceURI(), a->GetLocalName()) + "=\"" + a->GetValue() + "\"";
    out += ">" + element->GetText();
    for (CXmlElement const *child = element->GetFirstElement(); child; child = child->GetNextSiblingElement())
        Dump(child, out);
    out += "</" + tag + ">";
}

std::string Dump(CXmlDocument const &document)
{
    std::string out;
    if (document.GetDocumentElement())
        Dump(document.GetDocumentElement(), out);
    return out;
}

std::string XmlOf(std::string const &xml)
{
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    return Dump(document);
}

std::string XmlOfStream(std::string const &bytes, CSerializationContext const &context = CSerializationContext())
{
    CXmlDocument document(context);
    std::string copy = bytes;
    document.LoadXmlStream(reinterpret_cast<unsigned char *>(copy.data()), static_cast<unsigned long>(copy.size()));
    return Dump(document);
}

// Text and child elements side by side: by default the writer puts such
// text inside the last child, so these documents round trip only with the
// context's ReadsBackAsXml.
bool HasMixedContent(CXmlElement const *element)
{
    if (element->GetFirstElement() && !element->GetText().empty())
        return true;
    for (CXmlElement const *child = element->GetFirstElement(); child; child = child->GetNextSiblingElement())
        if (HasMixedContent(child))
            return true;
    return false;
}

std::vector<fs::path> Corpus()
{
    std::vector<fs::path> files;
    for (fs::path const dir : {fs::path(MX_TEST_DATA_DIR), fs::path(MX_TEST_DATA_DIR) / "../../collections/data"})
        for (auto const &entry : fs::directory_iterator(dir))
        {
            std::string const name = entry.path().filename().string();
            if (entry.path().extension() == ".xml" && name.find(".expected.") == std::string::npos)
                files.push_back(entry.path());
        }
    std::sort(files.begin(), files.end());
    return files;
}

// The document that most tests read: attributes, namespaces, repeats,
// typed values and long strings.
std::string RichDocument()
{
    std::string const xml = "<p:r xmlns:p=\"urn:p\" a=\"1\" p:b=\"\"><p:c>x</p:c><p:c>x</p:c><d e=\"" +
                            std::string(70, 'e') + "\">" + std::string(300, 't') + "</d><f/></p:r>";
    return FiOf(xml, FInfoDecl_Finf);
}
} // namespace

TEST_F(FastInfosetReader, CorpusReadsBackAsItsXml)
{
    int compared = 0, mixed = 0;
    for (fs::path const &input : Corpus())
    {
        SCOPED_TRACE(input.filename().string());
        std::string const xml = ReadFile(input);
        CXmlDocument document;
        document.LoadXml(xml.c_str());
        bool const hasMixedContent = HasMixedContent(document.GetDocumentElement());
        for (bool const readsBackAsXml : {false, true})
        {
            if (hasMixedContent && !readsBackAsXml)
                continue;
            std::string fi;
            std::string const error =
                ErrorOf([&] { fi = FiOf(xml, FInfoDecl_None, CompressionNone, readsBackAsXml); });
            if (error == "An element with a default namespace can only be written as XML text")
                continue;
            ASSERT_EQ("no error", error);
            EXPECT_EQ(XmlOf(xml), XmlOfStream(fi));
            ++compared;
            mixed += hasMixedContent;
        }
    }
    EXPECT_GE(compared, 40);
    EXPECT_GE(mixed, 1);
}

TEST_F(FastInfosetReader, EveryIndexAndLengthBoundaryReadsBack)
{
    for (auto const &[name, xml] : BoundaryDocuments())
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(XmlOf(xml), XmlOfStream(FiOf(xml)));
    }
}

TEST_F(FastInfosetReader, EveryDeclarationAndCompressionIsDetected)
{
    // Large enough that compression pays: smaller output is refused.
    std::string xml = "<a x=\"1\">";
    for (int i = 0; i < 50; ++i)
        xml += "<b n=\"" + std::to_string(i) + "\">some repeated text</b>";
    xml += "</a>";
    for (int declaration = 0; declaration <= 9; ++declaration)
        for (CompressionType compression : {CompressionNone, CompressionGZip, CompressionZLib})
        {
            SCOPED_TRACE(declaration * 10 + compression);
            std::string const fi = FiOf(xml, static_cast<FInfoDecl>(declaration), compression);
            EXPECT_EQ(XmlOf(xml), XmlOfStream(fi));
        }
}

TEST_F(FastInfosetReader, TypedValuesComeBackAsText)
{
    CSerializationContext context;
    context.GetFIContext().SetSuggestedValues();
    CSmartPtr<CTypedProbe> probe(new CTypedProbe(
        "t", {{"n", "-7", ItemType_i4}, {"b", "false", ItemType_boolean}, {"d", "2024-02-29", ItemType_date}},
        {{"i1", "-2", ItemType_i1},
         {"ui4", "4000000000", ItemType_ui4},
         {"i8", "-9000000000", ItemType_i8},
         {"r8", "0.1", ItemType_r8},
         {"r4", "1.5", ItemType_r4},
         {"hex", "DEAD", ItemType_hexBinary},
         {"b64", "AQID", ItemType_base64Binary},
         {"dec", "-123.45e6", ItemType_decimal},
         {"dt", "2001-12-31T23:59:59Z", ItemType_datetime},
         {"again", "-2", ItemType_i1}}));
    std::string const fi = Bytes(probe->ToFastInfosetStream(FInfoDecl_None, context));
    // Text is what the algorithms give back; a float is rebuilt from the
    // first octet of its group (3F), and base64 goes back to text as such.
    EXPECT_EQ("<t n=\"-7\" b=\"false\" d=\"2024-02-29\"><i1>-2</i1><ui4>4000000000</ui4><i8>-9000000000</i8>"
              "<r8>0.1</r8><r4>0.7470588</r4><hex>DEAD</hex><b64>AQID</b64><dec>-123.45e6</dec>"
              "<dt>2001-12-31T23:59:59Z</dt><again>-2</again></t>",
              XmlOfStream(fi));
}

TEST_F(FastInfosetReader, GeneratedVocabularyIsSharedByWriterAndReader)
{
    CSerializationContext context;
    CFastInfosetContext &options = context.GetFIContext();
    options.SetUseGeneratedVocabulary(true);
    options.GetVocabulary()->AddElement("", "", "known");
    options.GetVocabulary()->AddAttribute("", "", "id");
    options.GetVocabulary()->AddElementValue("yes");
    std::string const xml = "<known id=\"3\"><other>yes</other></known>";
    CSmartPtr<CElement> element(new CElement("unread"));
    element->FromXml(xml.c_str());
    std::string const fi = Bytes(element->ToFastInfosetStream(FInfoDecl_None, context));
    // Header with the external vocabulary, then known (00) with id (00).
    EXPECT_EQ(std::string("\x40\x00", 2), fi.substr(8 + std::strlen(CFastInfosetContext::kDefaultVocabularyURI), 2));
    EXPECT_EQ(XmlOf(xml), XmlOfStream(fi, context));
    // Without it the indexes point nowhere.
    EXPECT_NE("no error", ErrorOf([&] { XmlOfStream(fi); }));
}

TEST_F(FastInfosetReader, NotFastInfosetGoesToTheXmlParser)
{
    // Four octets alone, or a declaration followed by anything else, are
    // given to Expat, which refuses them with its own messages.
    for (std::string const bytes : {std::string("\xE0\x00\x00\x01", 4), std::string("<?xml encoding='finf'?><a/>")})
    {
        std::string const message = ErrorOf([&] { XmlOfStream(bytes); });
        EXPECT_EQ(std::string::npos, message.find("FastInfoset")) << message;
    }
}

TEST_F(FastInfosetReader, MalformedInputRaisesTheFixedMessages)
{
    std::string const head = "E0 00 00 01 00 ";
    struct ErrorCase
    {
        char const *hex;
        char const *message;
    };
    ErrorCase const cases[] = {
        {"", "Failed to parse FastInfoset. Unexpected End of File."},
        {"3C 00 61", "Failed to parse FastInfoset. Unexpected End of File."},
        {"3C 00 61 C0", "Failed to parse FastInfoset. Invalid Encoding of Element type."},
        {"3E 00 70 00 61 FF", "Failed to parse FastInfoset. Invalid QName type Prefix without Namespace."},
        {"31 FF", "Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the third bit of an "
                  "octet."},
        {"7C 00 61 70 FF", "Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the second "
                           "bit of an octet."},
        {"7C 00 61 78 00 78 F0 F0", "Failed to parse FastInfoset. Invalid Encoding of integers 0 To 2^20 type  on the "
                                    "second bit of an octet."},
        {"3C 00 61 BF FF", "Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the fourth "
                           "bit of an octet."},
        {"3C 50 61 FF", "Failed to parse FastInfoset. Invalid NonEmptyOctetString type  on the second bit of an "
                        "octet."},
        {"7C 00 61 78 00 78 09 FF", "Failed to parse FastInfoset. Invalid NonEmptyOctetString type  on the fifth bit "
                                    "of an octet."},
        {"3C 00 61 8C 0A 00 00 01 02 FF", "Invalid value for SHORT byte encoding."},
        {"3C 00 61 8C 28 41 FF", "Unknown byte encoding."},
        {"3C 00 61 8C 40 41 FF", "Unknown byte encoding."},
        // Choices of this reader for indexes and characters the input
        // cannot have.
        {"05 FF", "Failed to parse FastInfoset. Index [6] out of range."},
        {"3C 00 61 A3 FF", "Failed to parse FastInfoset. Index [4] out of range."},
        {"3C 00 61 88 00 FF FF", "Failed to parse FastInfoset. Invalid character index for Restricted Alphabet."},
        {"3C 00 61 88 0C 12 FF", "Failed to parse FastInfoset. Unknown Restricted Alphabet [4]."},
        {"F0", "Invalid or empty XML document"},
    };
    for (ErrorCase const &c : cases)
    {
        SCOPED_TRACE(c.hex);
        EXPECT_EQ(c.message, ErrorOf([&] { XmlOfStream(Unhex(head + c.hex)); }));
    }
}

TEST_F(FastInfosetReader, OddButValidShapesRead)
{
    struct ShapeCase
    {
        char const *hex; // after E0 00 00 01 00
        char const *xml;
    };
    ShapeCase const cases[] = {
        // An attribute list that ends with FF ends the element too; the
        // document's own terminator may then be missing.
        {"7C 00 61 78 00 78 FF FF", "<a x=\"\"></a>"},
        // A literal not added to its table moves no later index: "b" is
        // value 1 here, not 2.
        {"3C 00 72 7C 00 61 78 00 78 00 61 FF 41 00 40 62 FF 41 00 80 FF FF",
         "<r><a x=\"a\"></a><a x=\"b\"></a><a x=\"b\"></a></r>"},
        // Processing instructions and comments are dropped, inside and out.
        {"E1 00 70 40 64 E2 40 63 3C 00 61 E2 40 63 81 74 74 F0 F0", "<a>tt</a>"},
        // Numeric alphabet, four bits a character, F ending an odd count;
        // CDATA algorithm reads as text.
        {"3C 00 61 88 01 A1 CF 8C 25 3C 3E FF", "<a>-1.<></a>"},
    };
    for (ShapeCase const &c : cases)
    {
        SCOPED_TRACE(c.hex);
        EXPECT_EQ(c.xml, XmlOfStream(Unhex(std::string("E0 00 00 01 00 ") + c.hex)));
    }
}

TEST_F(FastInfosetReader, EveryTruncationRaises)
{
    std::string const fi = RichDocument();
    std::size_t const start = std::string("<?xml encoding='finf'?>").size() + 5;
    for (std::size_t length = start; length < fi.size() - 1; ++length)
    {
        SCOPED_TRACE(length);
        std::string const message = ErrorOf([&] { XmlOfStream(fi.substr(0, length)); });
        EXPECT_TRUE(message == "Failed to parse FastInfoset. Unexpected End of File." ||
                    message == "Invalid or empty XML document")
            << message;
    }
    // The last octet is the document's terminator, which the root's FF
    // already implies.
    EXPECT_EQ("no error", ErrorOf([&] { XmlOfStream(fi.substr(0, fi.size() - 1)); }));
}
