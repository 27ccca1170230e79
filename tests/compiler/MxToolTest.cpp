// The mx program as a user meets it: exit status 0, 1 or 2, the usage text,
// one line per failure naming the file, and conversions that detect their
// input and keep the document.

#include "compiler/CompilerTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using MxCompilerTest::ReadFile;
using MxCompilerTest::RunMx;
using MxCompilerTest::RunResult;
using MxCompilerTest::TempDir;
using MxCompilerTest::WriteTemp;

namespace
{

std::string const kSchema = MX_EXAMPLE_DATA_DIR "/purchase-order.xsd";
std::string const kOrder = MX_EXAMPLE_DATA_DIR "/purchase-order.xml";
std::string const kUsage =
    "usage: mx convert [--schema S.xsd]... [--to xml|json|fi] [--gzip|--zlib] [--json-compat] IN OUT\n"
    "       mx check --schema S.xsd [--schema S.xsd]... DOC...\n"
    "       mx describe --schema S.xsd [--schema S.xsd]...\n"
    "       mx generate --schema S.xsd [--schema S.xsd]... --out DIR [--namespace URI=cpp::ns]...\n"
    "                   [--file-per-type]\n"
    "IN and OUT may be - for standard input and output. The input's format and\n"
    "compression are detected; the output's format comes from --to or OUT's\n"
    "extension (.xml, .json, .fi, .finf, each maybe followed by .gz).\n"
    "--location URI=FILE (any command with --schema) reads FILE wherever a schema\n"
    "imports or includes URI; other locations on the network are refused.\n";

struct ToolCase
{
    std::string name;
    std::vector<std::string> args;
    std::string input;
    int status;
    std::string out;
    std::string err;
};

TEST(MxTool, StatusAndMessages)
{
    std::string const dir = TempDir();
    std::string const bad = WriteTemp("bad-order.xml", "<purchaseOrder xmlns='urn:example:po'/>");
    std::string const importer =
        WriteTemp("importer.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:o='urn:example:po'>"
                                  "<xs:import namespace='urn:example:po' schemaLocation='http://example.org/po.xsd'/>"
                                  "</xs:schema>");
    std::string const mapped = "http://example.org/po.xsd=" + kSchema;
    std::vector<ToolCase> const cases = {
        {"no arguments", {}, "", 2, "", kUsage},
        {"help", {"--help"}, "", 0, kUsage, ""},
        {"unknown command", {"frob"}, "", 2, "", "mx: unknown command frob\n" + kUsage},
        {"file per type outside generate", {"check", "--file-per-type", "a.xml"}, "", 2, "",
         "mx: unknown option --file-per-type\n" + kUsage},
        {"convert without OUT", {"convert", "a.xml"}, "", 2, "", "mx: convert takes IN and OUT\n" + kUsage},
        {"unknown format", {"convert", "--to", "yaml", "-", "-"}, "", 2, "", "mx: --to takes xml, json or fi\n" + kUsage},
        {"format not known from the name", {"convert", "-", "out.txt"}, "", 2, "",
         "mx: cannot tell the output format from out.txt; use --to\n" + kUsage},
        {"missing schema", {"describe", "--schema", dir + "/none.xsd"}, "", 1, "",
         "mx: schema: " + dir + "/none.xsd: No such file or directory\n"},
        {"missing input", {"convert", dir + "/none.xml", "-"}, "", 1, "",
         "mx: " + dir + "/none.xml: No such file or directory\n"},
        {"check passes", {"check", "--schema", kSchema, kOrder}, "", 0, kOrder + ": ok\n", ""},
        {"check fails and goes on", {"check", "--schema", kSchema, bad, dir + "/none.xml", kOrder}, "", 1,
         bad + ": Failed to process the element.\nPath: /purchaseOrder\nFailed to find the required Attribute [orderDate].\n" +
             dir + "/none.xml: No such file or directory\n" + kOrder + ": ok\n",
         ""},
        {"a network location is refused", {"check", "--schema", importer, kOrder}, "", 1, "",
         "mx: schema: the schema location http://example.org/po.xsd is on the network; only local files are read\n"},
        {"a network location read from its local copy", {"check", "--schema", importer, "--location", mapped, kOrder},
         "", 0, kOrder + ": ok\n", ""},
        {"a local copy that is missing",
         {"check", "--schema", importer, "--location", "http://example.org/po.xsd=" + dir + "/none.xsd", kOrder}, "", 1,
         "", "mx: schema: " + dir + "/none.xsd (the local copy of http://example.org/po.xsd): No such file or directory\n"},
        {"root not declared", {"convert", "--schema", kSchema, "-", "-"}, "<order xmlns='urn:example:po'/>", 1, "",
         "mx: The element [{urn:example:po}order] is not declared by the schema\n"},
        {"untyped, stdin to stdout", {"convert", "-", "-"}, "<a x='1'><b>t</b></a>", 0,
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a x=\"1\">\n\t<b>t</b>\n</a>\n", ""},
    };
    for (ToolCase const &c : cases)
    {
        SCOPED_TRACE(c.name);
        RunResult const r = RunMx(c.args, c.input);
        EXPECT_EQ(c.status, r.status);
        EXPECT_EQ(c.out, r.out);
        EXPECT_EQ(c.err, r.err);
    }
}

// Every output format, compressed or not, reads back through detection to
// the XML that the first conversion wrote.
TEST(MxTool, ConversionsRoundTrip)
{
    std::string const dir = TempDir();
    std::string const reference = dir + "/reference.xml";
    ASSERT_EQ(0, RunMx({"convert", "--schema", kSchema, kOrder, reference}).status);
    for (char const *name : {"o.json", "o.json.gz", "o.fi", "o.finf.gz", "o.xml.gz"})
    {
        SCOPED_TRACE(name);
        std::string const path = dir + "/" + name;
        std::string const back = dir + "/back.xml";
        RunResult const there = RunMx({"convert", "--schema", kSchema, kOrder, path});
        ASSERT_EQ(0, there.status) << there.err;
        RunResult const again = RunMx({"convert", "--schema", kSchema, path, back});
        ASSERT_EQ(0, again.status) << again.err;
        EXPECT_EQ(ReadFile(reference), ReadFile(back));
    }
}

} // namespace
