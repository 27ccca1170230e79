#include "metadata/ClassFactory.h"
#include "document/XmlDocument.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;

namespace
{
// The two questions are protected: a derived factory asks them.
class CProbe : public CClassfactoryBase
{
public:
    using CClassfactoryBase::GetElementType;
    using CClassfactoryBase::GetElementTypeNamespaceUri;
};
} // namespace

TEST(ClassFactory, ReadsTheXsiTypeOfAnElement)
{
    struct Case
    {
        char const *xml;
        char const *type;
        char const *typeNamespace;
    };
    Case const cases[] = {
        {"<e xmlns='urn:n' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:a='urn:a' xsi:type='a:b:c'/>",
         "b:c", "urn:a"},
        {"<e xmlns='urn:n' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='T'/>", "T", "urn:n"},
        {"<e xmlns='urn:n' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='x:T'/>", "T", "urn:n"},
        {"<e xmlns='urn:n' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:t='urn:t' xsi:type='t:T'/>",
         "T", "urn:t"},
        {"<e xmlns='urn:n'/>", "", "urn:n"},
        {"<e type='a:T' xmlns:a='urn:a'/>", "", ""},
        {"<e xmlns:o='urn:other' o:type='a:T' xmlns:a='urn:a'/>", "", ""},
        {"<e xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type=':T'/>", "T", ""},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.xml);
        CXmlDocument document;
        document.LoadXml(c.xml);
        CXmlElement *e = document.GetDocumentElement();
        EXPECT_EQ(c.type, CProbe::GetElementType(e));
        EXPECT_EQ(c.typeNamespace, CProbe::GetElementTypeNamespaceUri(e));
    }
}
