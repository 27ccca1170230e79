#include "MxXmlLib.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;

// The deepest document the reader accepts goes through the untyped tree and
// back without exhausting the stack, under the sanitizers too.
TEST(DeepNesting, UntypedRoundTripAtTheDepthLimit)
{
    Register(16, 1);
    std::string xml;
    for (std::size_t i = 0; i < CXmlDocument::kMaxElementDepth; ++i)
        xml += "<e a=\"1\">t";
    for (std::size_t i = 0; i < CXmlDocument::kMaxElementDepth; ++i)
        xml += "</e>";
    CSmartPtr<CElement> element(new CElement("e"));
    element->FromXml(xml.c_str());
    std::string const written = element->ToXml(false, false, LF, CSerializationContext::GetDefaultContext());
    // Text is written after an element's children; the shape stays the same.
    EXPECT_EQ(xml.size(), written.size());
    CSmartPtr<CElement> again(new CElement("e"));
    again->FromXml(written.c_str());
    EXPECT_TRUE(written == again->ToXml(false, false, LF, CSerializationContext::GetDefaultContext()));
}
