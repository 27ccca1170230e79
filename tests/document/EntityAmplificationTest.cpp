// Expat's protection against entity amplification stays on: expansion is
// free until the bytes read and expanded together pass Expat's activation
// threshold (8 MiB), and beyond it a document may expand at most 100 times
// its own size. Documents on either side of the threshold, and the classic
// exponential one, through CXmlDocument.

#include "document/XmlDocument.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <expat.h>

#include <string>

using namespace MxXmlLib;

namespace
{
// An entity of 1 KiB referenced `count` times: about count KiB of text from
// about 3 * count bytes of input.
std::string Expanding(int count)
{
    std::string text = "<!DOCTYPE r [<!ENTITY e \"" + std::string(1024, 'a') + "\">]><r>";
    for (int i = 0; i < count; ++i)
        text += "&e;";
    return text + "</r>";
}

std::string LoadError(std::string const &text)
{
    CXmlDocument document;
    try
    {
        document.LoadXml(text.c_str());
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "";
}

TEST(EntityAmplification, ExpatLimitHoldsOnBothSidesOfItsThreshold)
{
    std::string const breach =
        std::string(XML_ErrorString(XML_ERROR_AMPLIFICATION_LIMIT_BREACH)) + " at line 1";
    // 8,000 KiB expanded stays below 8 MiB: read whole, however amplified.
    {
        std::string const text = Expanding(8000);
        CXmlDocument document;
        ASSERT_NO_THROW(document.LoadXml(text.c_str()));
        EXPECT_EQ(8000u * 1024u, document.GetDocumentElement()->GetText().size());
    }
    // 8,200 KiB passes the threshold at an amplification far above 100.
    EXPECT_EQ(breach, LoadError(Expanding(8200)));

    // Ten levels of ten references: 10^10 characters from under 1 KiB.
    std::string laughs = "<!DOCTYPE r [<!ENTITY l0 \"lol\">";
    for (int i = 1; i <= 10; ++i)
    {
        laughs += "<!ENTITY l" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j)
            laughs += "&l" + std::to_string(i - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><r>&l10;</r>";
    EXPECT_EQ(breach, LoadError(laughs));
}
} // namespace
