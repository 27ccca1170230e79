// Schemas that cannot be loaded and hostile schemas: each ends in one clear
// message naming the file and place, or works; none crashes or hangs.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using MxCompiler::CSchemaError;
using MxCompilerTest::WriteTemp;

namespace
{

std::string const kXs = "xmlns:xs='http://www.w3.org/2001/XMLSchema'";

std::string Nested(int depth)
{
    std::string s = "<xs:schema " + kXs + "><xs:element name='a'><xs:complexType>";
    for (int i = 0; i < depth; ++i)
        s += "<xs:sequence><xs:choice>";
    s += "<xs:element name='x'/>";
    for (int i = 0; i < depth; ++i)
        s += "</xs:choice></xs:sequence>";
    return s + "</xs:complexType></xs:element></xs:schema>";
}

struct LoadCase
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> files; // the first is loaded
    std::string expected; // the message; {dir} stands for the temporary folder
};

TEST(SchemaErrors, EachFailureSaysWhatAndWhere)
{
    std::string const dir = MxCompilerTest::TempDir();
    std::vector<LoadCase> const cases = {
        {"unknown type", {{"e1.xsd", "<xs:schema " + kXs + "><xs:element name='a' type='xs:nosuch'/></xs:schema>"}},
         "{dir}/e1.xsd:1:95: type 'http://www.w3.org/2001/XMLSchema:nosuch' not found"},
        {"not well-formed", {{"e2.xsd", "<xs:schema " + kXs + "><xs:element name='a'"}},
         "{dir}/e2.xsd:1:76: whitespace expected"},
        {"network import",
         {{"e3.xsd", "<xs:schema " + kXs +
                         "><xs:import namespace='urn:x' schemaLocation='http://example.com/x.xsd'/></xs:schema>"}},
         "the schema location http://example.com/x.xsd is on the network; only local files are read"},
        {"nesting past the limit", {{"e4.xsd", Nested(101)}},
         "content of a group inside the anonymous type of element a nests groups deeper than 200 levels"},
        {"maxOccurs past 32 bits, which Xerces-C refuses",
         {{"e5.xsd", "<xs:schema " + kXs + "><xs:element name='a'><xs:complexType><xs:sequence>"
                     "<xs:element name='b' maxOccurs='4294967296'/></xs:sequence></xs:complexType></xs:element>"
                     "</xs:schema>"}},
         "{dir}/e5.xsd:1:151: value '0' invalid for attribute 'maxOccurs'"},
    };
    for (LoadCase const &c : cases)
    {
        SCOPED_TRACE(c.name);
        for (auto const &[file, text] : c.files)
            WriteTemp(file, text);
        std::string expected = c.expected;
        if (expected.rfind("{dir}", 0) == 0)
            expected.replace(0, 5, dir);
        try
        {
            MxCompiler::LoadSchemaModel({dir + "/" + c.files.front().first});
            ADD_FAILURE() << "loaded";
        }
        catch (CSchemaError const &e)
        {
            EXPECT_EQ(expected, e.what());
        }
    }
}

// Hostile but valid: they load, and bind what they describe.
TEST(SchemaErrors, HostileButValidSchemasLoad)
{
    std::string const dir = MxCompilerTest::TempDir();
    WriteTemp("cyc1.xsd", "<xs:schema " + kXs + "><xs:include schemaLocation='cyc2.xsd'/>"
                                                "<xs:element name='a' type='T'/></xs:schema>");
    WriteTemp("cyc2.xsd", "<xs:schema " + kXs + "><xs:include schemaLocation='cyc1.xsd'/><xs:complexType name='T'>"
                                                "<xs:sequence><xs:element name='b' type='xs:int' maxOccurs='2147483647'/>"
                                                "</xs:sequence></xs:complexType></xs:schema>");
    WriteTemp("deep.xsd", Nested(99));
    for (char const *file : {"cyc1.xsd", "deep.xsd"})
    {
        SCOPED_TRACE(file);
        EXPECT_NO_THROW(MxCompiler::CSchemaSet::Load({dir + "/" + file}));
    }
    MxCompiler::Model const model = MxCompiler::LoadSchemaModel({dir + "/cyc1.xsd"});
    ASSERT_EQ(1u, model.roots.size());
    MxCompiler::ClassDef const &t = model.classes[static_cast<std::size_t>(model.roots[0].classIndex)];
    ASSERT_EQ(1u, t.elements.size());
    EXPECT_EQ(2147483647, t.elements[0].maxOccurs);
}

// Files that never become a schema: the system's reason, or the reader's
// (a malformed XML declaration once escaped as a DOM exception).
TEST(SchemaErrors, UnreadableFilesNameTheReason)
{
    std::string const bad = MX_TEST_DATA_DIR "/bad-xml-declaration.xsd";
    std::pair<std::string, std::string> const cases[] = {
        {"/nonexistent/dir/s.xsd", "/nonexistent/dir/s.xsd: No such file or directory"},
        {bad, bad + ": implementation does not support the requested type of object or operation"},
    };
    for (auto const &[path, message] : cases)
    {
        SCOPED_TRACE(path);
        try
        {
            MxCompiler::LoadSchemaModel({path});
            ADD_FAILURE() << "loaded";
        }
        catch (CSchemaError const &e)
        {
            EXPECT_EQ(message, e.what());
        }
    }
}

} // namespace
