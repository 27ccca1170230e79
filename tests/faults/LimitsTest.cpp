// Every limit that bounds what hostile input can cost, exactly on it and one
// step past it: on the limit the input reads, past it the read ends in the
// limit's own message. Expat's entity amplification protection is held to
// both of its figures (the 8 MiB of bytes read and expanded before it acts,
// the amplification of 100), so a change of Expat that moves them shows here.

#include "document/XmlDocument.h"
#include "fastinfoset/FIVocabulary.h"
#include "fastinfoset/FastInfosetContext.h"
#include "support/FileTestSupport.h"
#include "values/Decimal.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <expat.h>

#include <cstdint>
#include <functional>
#include <string>

using namespace MxXmlLib;
using MxTestSupport::ErrorOf;

namespace
{
std::string const kFine = "no error";

std::string LoadXml(std::string const &text)
{
    return ErrorOf([&] {
        CXmlDocument document;
        document.LoadXml(text.c_str());
    });
}

std::string Nested(std::size_t levels)
{
    std::string xml;
    for (std::size_t i = 0; i < levels; ++i)
        xml += "<e>";
    for (std::size_t i = 0; i < levels; ++i)
        xml += "</e>";
    return xml;
}

// A chain of `levels` elements as Fast Infoset: the writer is not bounded,
// so it makes what the reader must refuse.
std::string DeepFastInfoset(std::size_t levels)
{
    CSmartPtr<CElement> root(new CElement("e"));
    CElement *inner = root.Get();
    for (std::size_t i = 1; i < levels; ++i)
        inner = inner->GetChildElements()->Add("e").Get();
    CBinaryData const bytes = root->ToFastInfosetStream();
    return std::string(reinterpret_cast<char const *>(bytes.GetData()), bytes.GetLength());
}

std::string ReadUntyped(std::string bytes)
{
    return ErrorOf([&] {
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromXmlStream(reinterpret_cast<unsigned char *>(bytes.data()),
                               static_cast<unsigned long>(bytes.size()));
    });
}

// An entity of 1 KiB referenced `references` times after `text` bytes of
// plain text. Expat counts every byte of the document and every byte of each
// expansion; its protection acts once that sum reaches 8 MiB.
std::string Expanding(int references, std::size_t text)
{
    std::string xml = "<!DOCTYPE r [<!ENTITY e \"" + std::string(1024, 'a') + "\">]><r>" + std::string(text, 'b');
    for (int i = 0; i < references; ++i)
        xml += "&e;";
    return xml + "</r>";
}

constexpr std::size_t kThreshold = 8u << 20;

// The plain text that brings the document and its expansions to `total` bytes.
std::size_t TextFor(int references, std::size_t total)
{
    return total - Expanding(references, 0).size() - 1024u * static_cast<std::size_t>(references);
}

struct LimitCase
{
    char const *limit;
    std::function<std::string(bool past)> read; // the outcome on the limit, or one step past it
    std::string past;                           // the message past it
};

TEST(Limits, EachHoldsExactlyOnItsEdge)
{
    Register(16, 1);
    std::string const breach = std::string(XML_ErrorString(XML_ERROR_AMPLIFICATION_LIMIT_BREACH)) + " at line 1";
    LimitCase const cases[] = {
        {"XML nesting depth", [](bool past) { return LoadXml(Nested(CXmlDocument::kMaxElementDepth + past)); },
         "The document nests elements deeper than 2048 levels."},
        {"Fast Infoset nesting depth",
         [](bool past) { return ReadUntyped(DeepFastInfoset(CXmlDocument::kMaxElementDepth + past)); },
         "The document nests elements deeper than 2048 levels."},
        // Far more than 100 times amplified: only the sum of the bytes counts.
        {"bytes read and expanded",
         [](bool past) {
             int const references = 8167;
             return LoadXml(Expanding(references, TextFor(references, kThreshold - 1 + past)));
         },
         breach},
        // Above 8 MiB, all bytes counted may be at most 100 times the
        // document's own, up to its last expansion (the end tag follows):
        // 84,992 of them and 99 times as many expanded make exactly 100.
        {"entity amplification",
         [](bool past) {
             int const references = 8217; // 1024 * 8217 = 99 * 84992
             std::size_t const counted = 1024u * references / 99u;
             return LoadXml(Expanding(references, counted - past + 4 - Expanding(references, 0).size()));
         },
         breach},
        // An object holding a scalar is two levels: 99 objects and the number make 100.
        {"JSON nesting depth",
         [](bool past) {
             std::string json;
             for (int i = 0; i < 99 + past; ++i)
                 json += "{\"e\":";
             json += "1" + std::string(99 + past, '}');
             return ErrorOf([&] {
                 CSmartPtr<CElement> element(new CElement("unread"));
                 element->FromJson(json.c_str());
             });
         },
         [] {
             std::string path = "JSON exceeded depth limit at line 1, position 501.\nPath: $";
             for (int i = 0; i < 100; ++i)
                 path += ".e";
             return path;
         }()},
        // A number's exponent is what makes a short text expensive.
        {"decimal exponent", [](bool past) { return ErrorOf([&] { CDecimal value(past ? "1e100001" : "1e100000"); }); },
         "The exponent of the Decimal is out of range at position 2 [1e100001]."},
    };
    for (LimitCase const &c : cases)
    {
        SCOPED_TRACE(c.limit);
        EXPECT_EQ(kFine, c.read(false));
        EXPECT_EQ(c.past, c.read(true));
    }
}

std::string Bytes(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

// The attribute values table of a reader holds 2^20 strings, the largest
// index a document can carry. Both sides start from a vocabulary of 2^20 - 1
// values: the document's first new value takes the last index, the next
// stays a literal on both sides, and an index one past the last is refused.
TEST(Limits, FastInfosetVocabularyFillsToItsLastIndex)
{
    Register(16, 1);
    CSerializationContext context;
    CFastInfosetContext &fi = context.GetFIContext();
    fi.SetUseGeneratedVocabulary(true);
    for (std::uint32_t i = 1; i < CFIVocabulary::kMaxEntries; ++i)
        fi.GetVocabulary()->AddAttributeValue(std::to_string(i));
    ASSERT_EQ(CFIVocabulary::kMaxEntries - 1, fi.GetVocabulary()->GetAttributeValuesTable().size());

    std::string const xml = "<r><i v=\"last\"/><i v=\"over\"/><i v=\"last\"/><i v=\"over\"/><i v=\"7\"/></r>";
    CSmartPtr<CElement> element(new CElement("unread"));
    element->FromXmlDocument(xml.c_str(), context);
    std::string bytes = Bytes(element->ToFastInfosetStream(FInfoDecl_None, context));
    // The index 2^20 on the second bit: 1048576 - 8257 in the three-octet form.
    std::string const last("\xEF\xDF\xBF", 3);
    ASSERT_NE(std::string::npos, bytes.find(last));
    auto occurrences = [&](std::string const &text) {
        std::size_t count = 0;
        for (std::size_t at = bytes.find(text); at != std::string::npos; at = bytes.find(text, at + 1))
            ++count;
        return count;
    };
    EXPECT_EQ(1u, occurrences("last")) << "the last index names it the second time";
    EXPECT_EQ(2u, occurrences("over")) << "a value past the full table is written out each time";

    auto values = [&](std::string input) {
        CXmlDocument document(context);
        document.LoadXmlStream(reinterpret_cast<unsigned char *>(input.data()),
                               static_cast<unsigned long>(input.size()));
        std::string seen;
        for (CXmlElement const *i = document.GetDocumentElement()->GetFirstElement(); i; i = i->GetNextSiblingElement())
            seen += i->GetAttribute("v", "") + " ";
        return seen;
    };
    EXPECT_EQ("last over last over 7 ", values(bytes));

    bytes.replace(bytes.find(last), 3, std::string("\xEF\xDF\xC0", 3)); // 2^20 + 1
    EXPECT_EQ("Failed to parse FastInfoset. Index [1048577] out of range.", ErrorOf([&] { values(bytes); }));
}

// Each length field of Fast Infoset in its four-octet form: a string that
// has all its bytes reads whole; a length of one byte more than the rest of
// the input, or the largest the field carries (2^32 - 1 above its base),
// ends the read before anything is taken.
TEST(Limits, FastInfosetLengthFieldsReachTheEndOfTheInputAndNoFurther)
{
    Register(16, 1);
    struct Field
    {
        char const *name;
        std::string xml;    // a document whose long string has the field
        char fill;          // the string's character, found first in the bytes
        std::uint32_t base; // what the four octets leave out
        std::size_t length; // the string's length
    };
    Field const fields[] = {
        {"a name (on the second bit)", "<" + std::string(400, 'n') + "/>", 'n', 321, 400},
        {"an attribute value (on the fifth bit)", "<r a=\"" + std::string(300, 'v') + "\"/>", 'v', 265, 300},
        {"character data (on the seventh bit)", "<r>" + std::string(270, 't') + "</r>", 't', 259, 270},
    };
    for (Field const &f : fields)
    {
        SCOPED_TRACE(f.name);
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromXml(f.xml.c_str());
        std::string const whole = Bytes(element->ToFastInfosetStream());
        std::size_t const start = whole.find(std::string(f.length, f.fill));
        ASSERT_NE(std::string::npos, start);
        ASSERT_GE(start, 4u);
        auto withLength = [&](std::uint64_t length) {
            std::uint64_t const field = length - f.base;
            std::string bytes = whole;
            for (int i = 0; i < 4; ++i)
                bytes[start - 4 + i] = static_cast<char>(field >> (8 * (3 - i)));
            return bytes;
        };
        ASSERT_EQ(whole, withLength(f.length)) << "the four octets before the string are its length";
        EXPECT_EQ(kFine, ReadUntyped(whole));

        std::uint64_t const rest = whole.size() - start;
        EXPECT_EQ("Failed to parse FastInfoset. Unexpected End of File.", ReadUntyped(withLength(rest + 1)));
        EXPECT_EQ("Failed to parse FastInfoset. Unexpected End of File.",
                  ReadUntyped(withLength(f.base + std::uint64_t(0xFFFFFFFF))));
    }
}
} // namespace
