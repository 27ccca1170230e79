#include "binding/SerializationContext.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;

namespace
{
char const kBothIgnoredUnknownFirst[] =
    "The parser can only ignore additional elements, or ignore the fact that some required ones are missing, you "
    "can not ignore both\nSet IgnoreUnknownElements to false before setting IgnoreMissingMandatoryElements to true";
char const kBothIgnoredMandatoryFirst[] =
    "The parser can only ignore additional elements, or ignore the fact that some required ones are missing, you "
    "can not ignore both\nSet IgnoreMissingMandatoryElements to false before setting IgnoreUnknownElements to true";
} // namespace

TEST(SerializationContext, Defaults)
{
    CSerializationContext c;
    EXPECT_TRUE(c.GetStripCDATA());
    EXPECT_TRUE(c.GetWriteTypeAttribute());
    EXPECT_FALSE(c.GetIgnoreInvalidCollectionCounts() || c.GetIgnoreMissingChoice() ||
                 c.GetIgnoreMissingMandatoryElements() || c.GetIgnoreUnknownElements() ||
                 c.GetIgnoreUnknownAttributes() || c.GetIgnoreNamespaces() ||
                 c.GetNoOptionalAttributeDefaultOutput() || c.GetWriteDefaultElementValues() ||
                 c.GetReuseCompiledPatterns());
    EXPECT_EQ("\t", c.GetIndentChars());
    EXPECT_EQ(SchemaType_Default, c.GetSchemaType());
    EXPECT_EQ("", c.GetDefaultNamespaceURI());
    EXPECT_EQ("", c.GetInLineSchema());
    EXPECT_EQ(0, c.GetNamespaceAliases().GetNamespaceCount());
    EXPECT_TRUE(c.GetProcessingInstructions().empty());
    EXPECT_EQ(&CSerializationContext::GetDefaultContext(), &CSerializationContext::GetDefaultContext());
}

TEST(SerializationContext, TheTwoIgnoreFlagsExcludeEachOther)
{
    CSerializationContext c;
    c.SetIgnoreUnknownElements(true);
    try
    {
        c.SetIgnoreMissingMandatoryElements(true);
        FAIL();
    }
    catch (CMxInvalidStateException const &e)
    {
        EXPECT_EQ(kBothIgnoredUnknownFirst, e.GetMessage());
    }
    EXPECT_FALSE(c.GetIgnoreMissingMandatoryElements());
    c.SetIgnoreMissingMandatoryElements(false); // clearing never raises
    c.SetIgnoreUnknownElements(false);
    c.SetIgnoreMissingMandatoryElements(true);
    try
    {
        c.SetIgnoreUnknownElements(true);
        FAIL();
    }
    catch (CMxInvalidStateException const &e)
    {
        EXPECT_EQ(kBothIgnoredMandatoryFirst, e.GetMessage());
    }
    EXPECT_FALSE(c.GetIgnoreUnknownElements());
    c.SetIgnoreUnknownElements(false);
}

TEST(SerializationContext, IndentChars)
{
    struct Case
    {
        char const *text;
        bool accepted;
        char const *result;
    };
    Case const cases[] = {
        {"  \t", true, "  \t"}, {"", true, ""}, {nullptr, true, ""}, {"  x", false, "\t"}, {"\n", false, "\t"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.text ? c.text : "(null)");
        CSerializationContext context;
        if (c.accepted)
            context.SetIndentChars(c.text);
        else
        {
            try
            {
                context.SetIndentChars(c.text);
                FAIL();
            }
            catch (CMxInvalidParamException const &e)
            {
                EXPECT_EQ("IndentChars can only contain Whitespace characters, i.e. \\t or spaces", e.GetMessage());
            }
        }
        EXPECT_EQ(c.result, context.GetIndentChars());
    }
}

TEST(SerializationContext, SchemaTypeTwoIgnoresNamespaces)
{
    CSerializationContext c;
    c.SetSchemaType(SchemaType_NoNamespaces);
    EXPECT_TRUE(c.GetIgnoreNamespaces());
    EXPECT_FALSE(c.GetIgnoreNamespacesFlag());
    c.SetSchemaType(static_cast<SchemaType>(1));
    EXPECT_FALSE(c.GetIgnoreNamespaces());
}

TEST(SerializationContext, CopyTakesEveryOption)
{
    CSerializationContext source;
    source.SetDefaultNamespaceURI("urn:d");
    source.SetWriteTypeAttribute(false);
    source.GetNamespaceAliases().Add("p", "urn:p");
    source.GetProcessingInstructions().push_back("pi x");
    source.SetInLineSchema("xsi:schemaLocation='a b'");
    source.SetIgnoreInvalidCollectionCounts(true);
    source.SetIgnoreMissingChoice(true);
    source.SetIgnoreUnknownElements(true);
    source.SetIgnoreUnknownAttributes(true);
    source.SetIgnoreNamespaces(true);
    source.SetSchemaType(SchemaType_NoNamespaces);
    source.SetNoOptionalAttributeDefaultOutput(true);
    source.SetWriteDefaultElementValues(true);
    source.SetStripCDATA(false);
    source.SetIndentChars("  ");
    source.SetReuseCompiledPatterns(true);

    CSerializationContext target;
    target.SetIgnoreMissingMandatoryElements(true);
    for (bool assign : {true, false})
    {
        SCOPED_TRACE(assign ? "assignment" : "copy");
        CSerializationContext copy(source);
        CSerializationContext &checked = assign ? (target = source) : copy;
        EXPECT_EQ("urn:d", checked.GetDefaultNamespaceURI());
        EXPECT_FALSE(checked.GetWriteTypeAttribute());
        EXPECT_EQ("p", checked.GetNamespaceAliases().GetAliasFromNamespace("urn:p"));
        EXPECT_EQ(1u, checked.GetProcessingInstructions().size());
        EXPECT_EQ("xsi:schemaLocation='a b'", checked.GetInLineSchema());
        EXPECT_TRUE(checked.GetIgnoreInvalidCollectionCounts() && checked.GetIgnoreMissingChoice() &&
                    checked.GetIgnoreUnknownElements() && checked.GetIgnoreUnknownAttributes() &&
                    checked.GetIgnoreNamespacesFlag() && checked.GetNoOptionalAttributeDefaultOutput() &&
                    checked.GetWriteDefaultElementValues());
        // Assignment copies the pair as it is, without the setters' check.
        EXPECT_FALSE(checked.GetIgnoreMissingMandatoryElements());
        EXPECT_EQ(SchemaType_NoNamespaces, checked.GetSchemaType());
        EXPECT_FALSE(checked.GetStripCDATA());
        EXPECT_EQ("  ", checked.GetIndentChars());
        EXPECT_TRUE(checked.GetReuseCompiledPatterns());
    }
}

TEST(NamespaceAliasMap, Lookups)
{
    CNamespaceAliasMap map;
    map.Add("z", "urn:b");
    map.Add("a", "urn:a");
    map.Add("z", "urn:c");
    EXPECT_EQ(3, map.GetNamespaceCount());
    EXPECT_EQ("urn:a", map.GetNamespaceAt(0));
    EXPECT_EQ("urn:a", map.GetNamespaceAt(-5));
    EXPECT_EQ("urn:c", map.GetNamespaceAt(2));
    EXPECT_EQ("urn:b", map.GetNamespaceFromAlias("z")); // first in key order
    EXPECT_TRUE(map.DoesAliasExist("a"));
    EXPECT_FALSE(map.DoesAliasExist("q"));
    map.Add("y", "urn:b"); // replaces the alias of urn:b
    EXPECT_EQ("urn:c", map.GetNamespaceFromAlias("z"));
    try
    {
        map.GetNamespaceFromAlias("q");
        FAIL();
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("Namespace alias [q] not found", e.GetMessage());
    }
    // Looking up an unknown namespace adds it with an empty alias.
    EXPECT_EQ("", map.GetAliasFromNamespace("urn:new"));
    EXPECT_TRUE(map.DoesNamespaceExist("urn:new"));
    EXPECT_EQ(4, map.GetNamespaceCount());
    map.RemoveNamespace("urn:new");
    map.RemoveNamespace("urn:unknown");
    EXPECT_EQ(3, map.GetNamespaceCount());
    CNamespaceAliasMap copy(map);
    EXPECT_EQ("a", copy.GetAliasFromNamespace("urn:a"));
}
