#include "MxXmlLib.h"
#include "collections/Element.h"
#include "metadata/NamespaceRules.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using MxXmlLibData::CNamespaceRules;

namespace
{
char const kT[] = "urn:target"; // the target namespace
char const kA[] = "urn:a";      // a foreign namespace

struct RuleCase
{
    char const *restriction;
    char const *target;
    // Results for the target namespace, the empty namespace, and kA.
    bool target_, empty, foreign;
};

// Lists are told by their first token; after it only an empty namespace, or
// one equal to the whole list, passes. The cases where a literal walk would
// never end come out false.
constexpr RuleCase kRules[] = {
    {"##any", kT, true, true, true},
    {"##other", kT, false, true, true},
    {"##other", "", false, false, true},
    {"##local", kT, false, true, false},
    {"##targetNamespace", kT, true, false, false},
    {"##targetNamespace", "", true, true, false},
    {"urn:a", kT, false, true, true},
    {"urn:target", kT, true, true, false},
    {"", kT, false, true, false},
    {"##ANY", kT, false, true, false}, // keywords are exact
    {"##any urn:a", kT, true, true, true},
    {"##targetNamespace urn:a", kT, true, true, false},
    {"urn:a ##targetNamespace", kT, false, true, false},
    {"##local ##targetNamespace", kT, false, true, false},
    {"##other ##local", kT, false, true, true},
    {"urn:a urn:b", kT, false, true, false},
    {" urn:a", kT, false, true, false},
    {"urn:a ", kT, false, true, false},
};
} // namespace

TEST(NamespaceRules, EveryKeywordListAndLiteralAgainstPresentAbsentAndForeign)
{
    CSmartPtr<CElement> holder(new CElement("x"));
    for (auto const &c : kRules)
    {
        SCOPED_TRACE(testing::Message() << "[" << c.restriction << "] target [" << c.target << "]");
        struct Probe
        {
            char const *uri;
            bool expected;
        } const probes[] = {{c.target, c.target_}, {"", c.empty}, {kA, c.foreign}};
        for (auto const &p : probes)
        {
            SCOPED_TRACE(p.uri);
            EXPECT_EQ(p.expected, CNamespaceRules::IsNamespaceValid(p.uri, c.restriction, c.target));
            EXPECT_EQ(p.expected, holder->IsNamespaceValid(p.uri, c.restriction, c.target));
            std::string const error = p.expected ? "no error" : FormatString(
                "Invalid namespace [%s]. The namespace must be one of [%s] where the target namespace is [%s].",
                p.uri, c.restriction, c.target);
            std::string got = "no error";
            try
            {
                holder->TestNamespace(p.uri, c.restriction, c.target);
            }
            catch (CMxInvalidNamespaceException const &e)
            {
                got = e.GetMessage();
                EXPECT_EQ("", e.GetPath());
            }
            EXPECT_EQ(error, got);
        }
    }
}

TEST(NamespaceRules, AListPassesANamespaceEqualToItsWholeText)
{
    EXPECT_TRUE(CNamespaceRules::IsNamespaceValid("urn:a urn:b", "urn:a urn:b", kT));
    EXPECT_TRUE(CNamespaceRules::IsNamespaceValid("##local urn:b", "##local urn:b", kT));
    EXPECT_FALSE(CNamespaceRules::IsNamespaceValid("urn:b", "urn:a urn:b", kT));
    // Null strings on the object base count as empty.
    CSmartPtr<CElement> holder(new CElement("x"));
    EXPECT_TRUE(holder->IsNamespaceValid(nullptr, nullptr, nullptr));
    EXPECT_FALSE(holder->IsNamespaceValid(kA, nullptr, nullptr));
}
