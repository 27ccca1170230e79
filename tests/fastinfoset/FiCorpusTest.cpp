// Fast Infoset documents made by the Java codec's own project (its UBL test
// documents, vendored under data/finf with their licence): each is read,
// compared with the XML text it was made from, written again by us and read
// back equal.

#include "FiTestSupport.h"

#include "document/XmlDocument.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace MxXmlLib;
using namespace MxFiTest;

namespace
{
fs::path const kDir = fs::path(MX_TEST_DATA_DIR) / "finf";

// The tree as the untyped element writes it back as XML text.
std::string AsXml(CXmlDocument const &document)
{
    CSerializationContext context;
    CSmartPtr<CElement> element(new CElement("unread"));
    CXmlObjectBase::FromXml_Int(element.Get(), document.GetDocumentElement(), document.GetDocumentElement(), context);
    return element->ToXml(false, false, LF, context);
}

void LoadBytes(CXmlDocument &document, std::string bytes)
{
    document.LoadXmlStream(reinterpret_cast<unsigned char *>(bytes.data()), static_cast<unsigned long>(bytes.size()));
}

TEST(FastInfosetCorpus, PeerDocumentsReadWriteAndReadBackEqual)
{
    Register(16, 1);
    CXmlDocument fromXml;
    fromXml.Load((kDir / "UBL-example.xml").c_str());
    std::string const expected = AsXml(fromXml);

    CXmlDocument fromFi;
    LoadBytes(fromFi, ReadFile(kDir / "UBL-example.finf"));
    ASSERT_EQ(expected, AsXml(fromFi));

    CSmartPtr<CElement> element(new CElement("unread"));
    CSerializationContext context;
    CXmlObjectBase::FromXml_Int(element.Get(), fromFi.GetDocumentElement(), fromFi.GetDocumentElement(), context);
    std::string ours;
    ASSERT_EQ("no error", ErrorOf([&] { ours = Bytes(element->ToFastInfosetStream(FInfoDecl_None, context)); }));
    CXmlDocument again;
    LoadBytes(again, ours);
    EXPECT_EQ(expected, AsXml(again));

    // Their document through the Java codec and ours through the peer's own
    // reading give one infoset. (Our untyped writer names namespaces by
    // literal prefix without declaring them in scope, which the Java codec
    // refuses; see FastInfosetPeerTest.)
    std::string const unavailable = PeerUnavailable();
    if (!unavailable.empty())
    {
        EXPECT_FALSE(MX_FI_PEER_REQUIRED) << unavailable;
        return;
    }
    fs::path const oursPath = fs::temp_directory_path() / ("mx-fi-corpus-" + std::to_string(getpid()) + ".finf");
    WriteFile(oursPath, ours);
    PeerResult const theirs = RunPeer("canon '" + (kDir / "UBL-example.finf").string() + "'");
    PeerResult const mine = RunPeer("canon --own '" + oursPath.string() + "'");
    fs::remove(oursPath);
    ASSERT_EQ(0, theirs.code);
    ASSERT_EQ(0, mine.code);
    EXPECT_EQ(theirs.output, mine.output);
}

// The other document indexes an external vocabulary that only its URI
// names: without that vocabulary its references point into empty tables.
TEST(FastInfosetCorpus, ExternalVocabularyDocumentEndsInAnException)
{
    CXmlDocument document;
    EXPECT_EQ("Failed to parse FastInfoset. Index [2] out of range.", ErrorOf([&] { LoadBytes(document, ReadFile(kDir / "UBL-example-refvocab.finf")); }));
}
} // namespace
