// Public schemas that people exchange documents in every day, compiled to C++
// by mx_generate at build time, over real documents of those formats (see
// README.md here for where each file comes from and its licence). Each
// document is read into the generated classes and written as XML that
// Xerces-C validates against the schema and that Python's ElementTree finds to
// hold the same information as the original; strict JSON (which Python's json
// module accepts) and Fast Infoset (whose infoset the Fast Infoset peer finds
// the same) read back to the same XML, and the classes that the run-time back
// end loads from the same schema write the same bytes.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"
#include "gpx.h"
#include "maven_4.h"
#include "surefire_test_report.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <utility>

using namespace MxXmlLib;
using MxCompilerTest::ExpectSameText;
using MxCompilerTest::ReadFile;

namespace
{

using CreateRoot = CSmartPtr<CXmlObjectBase> (*)(char const *name, char const *ns);

struct Sample
{
    char const *schema;
    char const *document;
    CreateRoot create;
    char const *root;
    char const *ns;
    // White space between the children of untyped content (xs:any).
    bool untypedWhitespace;
};

constexpr char const *kPom = "http://maven.apache.org/POM/4.0.0";
constexpr char const *kGpx = "http://www.topografix.com/GPX/1/1";

Sample const kSamples[] = {
    {"maven/maven-4.0.0.xsd", "maven/maven-site.pom.xml", pom::CreateRoot, "project", kPom, true},
    {"maven/maven-4.0.0.xsd", "maven/maven-surefire.pom.xml", pom::CreateRoot, "project", kPom, true},
    {"gpx/gpx.xsd", "gpx/around-visnjan-with-car.gpx", gpx::CreateRoot, "gpx", kGpx, false},
    {"gpx/gpx.xsd", "gpx/gpx_with_garmin_extension.gpx", gpx::CreateRoot, "gpx", kGpx, false},
    {"gpx/gpx.xsd", "gpx/track-with-empty-segment.gpx", gpx::CreateRoot, "gpx", kGpx, false},
    {"surefire/surefire-test-report.xsd", "surefire/TEST-surefire.MyTest.xml", surefire_test_report::CreateRoot,
     "testsuite", "", false},
    {"surefire/surefire-test-report.xsd", "surefire/TEST-org.acme.FlakyTest.xml", surefire_test_report::CreateRoot,
     "testsuite", "", false},
    {"surefire/surefire-test-report.xsd", "surefire/TEST-org.apache.maven.surefire.test.FailingTest.xml",
     surefire_test_report::CreateRoot, "testsuite", "", false},
};

std::string Path(char const *name)
{
    return std::string(MX_REALWORLD_DIR "/") + name;
}

std::string Text(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

// The bytes of `text`, which must outlive them.
CBinaryData Bytes(std::string const &text)
{
    return CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>(text.data())),
                       static_cast<unsigned long>(text.size()), false);
}

// The standard output of a shell command, and whether it ran to exit status 0.
std::pair<bool, std::string> Run(std::string const &command)
{
    std::pair<bool, std::string> result{false, ""};
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return result;
    char buffer[4096];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.second.append(buffer, got);
    int const status = pclose(pipe);
    result.first = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return result;
}

// "same", the first difference, or "" when python3 cannot be run.
std::string PeerVerdict(Sample const &sample, std::string const &written, std::string const &json)
{
    auto [ran, out] = Run("python3 " MX_REALWORLD_DIR "/same_content.py '" + Path(sample.schema) + "' '" +
                          Path(sample.document) + "' '" + MxCompilerTest::WriteTemp("written.xml", written) + "' '" +
                          MxCompilerTest::WriteTemp("written.json", json) + "' 2>/dev/null");
    while (!out.empty() && out.back() == '\n')
        out.pop_back();
    return ran ? out : "";
}

// The infoset of an XML or Fast Infoset document as the Fast Infoset peer
// reads it, one event a line; empty when the peer cannot run.
std::string PeerInfoset(std::string const &path, bool fastInfoset)
{
    auto const [ran, out] =
        Run("'" MX_FI_PEER "' canon " + std::string(fastInfoset ? "--own '" : "'") + path + "' 2>/dev/null");
    return ran ? out : "";
}

TEST(RealWorld, SamplesRoundTripThroughEveryFormat)
{
    Register(16, 1);
    // Values equal to an element's default are written out, so that the
    // output reads the same without the schema's defaults.
    CSerializationContext context;
    context.SetWriteDefaultElementValues(true);
    context.GetJsonContext().SetStrict(true);
    auto write = [&context](CXmlObjectBase const &object) { return object.ToXml(true, true, LF, context); };
    for (Sample const &sample : kSamples)
    {
        SCOPED_TRACE(sample.document);
        std::string const original = ReadFile(Path(sample.document));
        CSmartPtr<CXmlObjectBase> document = sample.create(sample.root, sample.ns);
        ASSERT_FALSE(document.IsNull());
        document->FromXml(original.c_str(), context);
        std::string const xml = write(*document);
        EXPECT_EQ("", MxCompilerTest::XercesValidate({Path(sample.schema)}, xml));

        std::string const json = document->ToJson(true, LF, context);
        CSmartPtr<CXmlObjectBase> fromJson = sample.create(sample.root, sample.ns);
        fromJson->FromJson(json.c_str(), context);
        {
            SCOPED_TRACE("JSON");
            ExpectSameText(xml, write(*fromJson));
        }

        CSmartPtr<CXmlObjectBase> fromFastInfoset = sample.create(sample.root, sample.ns);
        fromFastInfoset->FromXmlStream(document->ToFastInfosetStream(FInfoDecl_None, context), context);
        std::string const fastInfosetXml = write(*fromFastInfoset);
        if (!sample.untypedWhitespace)
        {
            SCOPED_TRACE("Fast Infoset");
            ExpectSameText(xml, fastInfosetXml);
        }

        // The Java codec takes a qualified name's prefix only by index, so
        // the peer's own decoder reads our bytes; text-only XML as the
        // reference, since formatting adds white space the bytes lack.
        if (!sample.untypedWhitespace)
        {
            std::string const bytes = Text(document->ToFastInfosetStream(FInfoDecl_None, context));
            std::string const decoded = PeerInfoset(MxCompilerTest::WriteTemp("written.fi", bytes), true);
            if (decoded.empty())
                std::puts("fi-peer cannot run: the Fast Infoset bytes not checked by the peer");
            else
            {
                SCOPED_TRACE("fi-peer");
                std::string const flat = document->ToXml(false, false, LF, context);
                ExpectSameText(PeerInfoset(MxCompilerTest::WriteTemp("flat.xml", flat), false), decoded);
            }
        }

        MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({Path(sample.schema)});
        CSmartPtr<CXmlObjectBase> loaded = set.Read(Bytes(original), context);
        {
            SCOPED_TRACE("run-time back end");
            ExpectSameText(xml, write(*loaded));
        }

        std::string const verdict = PeerVerdict(sample, xml, json);
        if (verdict.empty())
        {
            std::puts("python3 not found: the content of the written XML not checked by the peer");
            continue;
        }
        EXPECT_EQ("same", verdict);
        if (sample.untypedWhitespace)
        {
            // Fast Infoset writes the white space that follows a child of an
            // untyped element inside that child (the terminator of the child
            // is owed until the next element), so only the content compares.
            SCOPED_TRACE("Fast Infoset");
            EXPECT_EQ("same", PeerVerdict(sample, fastInfosetXml, json));
        }
    }
}

// The typed accessors reach what the documents hold.
TEST(RealWorld, TypedAccessorsSeeTheDocuments)
{
    Register(16, 1);
    CSmartPtr<CXmlObjectBase> root = pom::CreateRoot("project", kPom);
    root->FromXml(ReadFile(Path("maven/maven-surefire.pom.xml")).c_str());
    auto *project = dynamic_cast<pom::CModel *>(root.Get());
    ASSERT_NE(nullptr, project);
    EXPECT_EQ("surefire", project->GetArtifactId());
    EXPECT_EQ(28, project->GetDependencyManagement()->GetDependencies()->GetDependencyCount());
    project->SetArtifactId("renamed");
    EXPECT_NE(std::string::npos, root->ToXml().find(">renamed</"));

    root = gpx::CreateRoot("gpx", kGpx);
    root->FromXml(ReadFile(Path("gpx/around-visnjan-with-car.gpx")).c_str());
    auto *track = dynamic_cast<gpx::CgpxType *>(root.Get());
    ASSERT_NE(nullptr, track);
    EXPECT_EQ("eTrex 20x", track->GetCreator());
    gpx::CtrksegType const *segment = track->GetTrkAt(0)->GetTrksegAt(0);
    ASSERT_EQ(104, segment->GetTrkptCount());
    EXPECT_EQ("45.273518851", segment->GetTrkptAt(0)->GetLat().ToString());
    EXPECT_EQ("2020-12-18T06:15:50Z", segment->GetTrkptAt(0)->GetTime().ToString());

    root = surefire_test_report::CreateRoot("testsuite", "");
    root->FromXml(ReadFile(Path("surefire/TEST-org.apache.maven.surefire.test.FailingTest.xml")).c_str());
    auto *suite = dynamic_cast<surefire_test_report::Ctestsuite *>(root.Get());
    ASSERT_NE(nullptr, suite);
    EXPECT_EQ("org.apache.maven.surefire.test.FailingTest", suite->GetName());
    EXPECT_EQ(2, suite->GetTestcaseCount());
    pom::CleanAllMetaData();
    gpx::CleanAllMetaData();
    surefire_test_report::CleanAllMetaData();
}

} // namespace
