#include "fastinfoset/FIVocabulary.h"
#include "fastinfoset/FastInfosetContext.h"
#include "values/Variant.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
std::vector<std::string> List(CFIVocabulary::CFIStringTable const &table)
{
    return std::vector<std::string>(table.begin(), table.end());
}
} // namespace

TEST(FIVocabulary, StartsWithTheSeedsOnly)
{
    CFIVocabulary vocabulary;
    EXPECT_EQ(std::vector<std::string>{"xml"}, List(vocabulary.GetPrefixNamesTable()));
    EXPECT_EQ(std::vector<std::string>{"http://www.w3.org/XML/1998/namespace"},
              List(vocabulary.GetNamespaceNamesTable()));
    EXPECT_EQ(0u, vocabulary.GetLocalNamesTable().size());
    EXPECT_EQ(0u, vocabulary.GetElementNamesTable().size());
    EXPECT_EQ(0u, vocabulary.GetAttributeNamesTable().size());
    EXPECT_EQ(0u, vocabulary.GetAttributeValuesTable().size());
    EXPECT_EQ(0u, vocabulary.GetCharacterChunksTable().size());
}

TEST(FIVocabulary, NamesShareTheirParts)
{
    CFIVocabulary vocabulary;
    vocabulary.AddElement("p", "urn:a", "item");
    vocabulary.AddElement("p", "urn:a", "item"); // known: nothing added
    vocabulary.AddElement("", "urn:b", "item");  // shares the local name
    vocabulary.AddAttribute("xml", "http://www.w3.org/XML/1998/namespace", "lang");
    EXPECT_EQ((std::vector<std::string>{"xml", "p"}), List(vocabulary.GetPrefixNamesTable()));
    EXPECT_EQ((std::vector<std::string>{"http://www.w3.org/XML/1998/namespace", "urn:a", "urn:b"}),
              List(vocabulary.GetNamespaceNamesTable()));
    EXPECT_EQ((std::vector<std::string>{"item", "lang"}), List(vocabulary.GetLocalNamesTable()));
    auto const &elements = vocabulary.GetElementNamesTable();
    ASSERT_EQ(2u, elements.size());
    EXPECT_EQ((std::vector<std::uint32_t>{2, 2, 1}),
              (std::vector<std::uint32_t>{elements[0].Prefix, elements[0].Namespace, elements[0].LocalName}));
    EXPECT_EQ((std::vector<std::uint32_t>{0, 3, 1}),
              (std::vector<std::uint32_t>{elements[1].Prefix, elements[1].Namespace, elements[1].LocalName}));
    auto const &attribute = vocabulary.GetAttributeNamesTable()[0];
    EXPECT_EQ((std::vector<std::uint32_t>{1, 1, 2}),
              (std::vector<std::uint32_t>{attribute.Prefix, attribute.Namespace, attribute.LocalName}));
    // AddPrefixName does not look first: the list takes "xml" again.
    vocabulary.AddPrefixName("xml");
    EXPECT_EQ((std::vector<std::string>{"xml", "p", "xml"}), List(vocabulary.GetPrefixNamesTable()));
}

TEST(FIVocabulary, FullTablesIgnoreFurtherStrings)
{
    CFIVocabulary vocabulary;
    for (std::uint32_t i = 0; i < CFIVocabulary::kMaxEntries; ++i)
        vocabulary.AddAttributeValue(std::to_string(i));
    EXPECT_EQ(CFIVocabulary::kMaxEntries, vocabulary.GetAttributeValuesTable().size());
    EXPECT_EQ("1048575", vocabulary.GetAttributeValuesTable()[CFIVocabulary::kMaxEntries - 1]);
    vocabulary.AddAttributeValue("one more");
    EXPECT_EQ(CFIVocabulary::kMaxEntries, vocabulary.GetAttributeValuesTable().size());
    // Assignment copies both sides.
    CFIVocabulary copy;
    copy = vocabulary;
    EXPECT_EQ(CFIVocabulary::kMaxEntries, copy.GetAttributeValuesTable().size());
}

TEST(FastInfosetContext, DefaultsAndSuggestedValues)
{
    CFastInfosetContext context;
    EXPECT_EQ(0, context.GetDefaultStringEncoding());
    EXPECT_EQ(6u, context.GetAttributeMaxAddLength());
    EXPECT_EQ(6u, context.GetElementMaxAddLength());
    EXPECT_FALSE(context.GetUseGeneratedVocabulary());
    EXPECT_EQ("", context.GetExternalVocabularyURI());
    for (int type = 0; type < CFastInfosetContext::kEncodingCount; ++type)
        EXPECT_EQ(0u, context.GetEncoding(type).Type + context.GetEncoding(type).Value);

    context.SetEncoding(ItemType_string, {2, 10});
    context.SetSuggestedValues();
    // ItemType -> (Type, Value); unnamed entries keep what they had.
    std::uint32_t const expected[29][2] = {
        {0, 0}, {2, 1}, {2, 2}, {2, 3}, {2, 3}, {2, 4}, {2, 5}, {2, 3}, {2, 4}, {2, 5},
        {2, 5}, {2, 7}, {2, 8}, {0, 0}, {1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2},
        {1, 2}, {1, 2}, {0, 0}, {2, 10}, {2, 6}, {1, 1}, {1, 1}, {0, 0}, {0, 0}};
    for (int type = 0; type < 29; ++type)
    {
        SCOPED_TRACE(type);
        EXPECT_EQ(expected[type][0], context.GetEncoding(type).Type);
        EXPECT_EQ(expected[type][1], context.GetEncoding(type).Value);
    }
}
