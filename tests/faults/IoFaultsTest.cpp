// Failures of the file system under each format, both ways. A write that
// the device refuses (/dev/full) or that stops after n bytes (a file size
// limit; every n near either end, a stride between): an exception with the
// file's message, a replaced file left as it was (the direct branch keeps
// the n bytes it wrote), no stray file, and the object writes as before. A read
// of a missing file, of a folder (the read itself fails) and of a file cut
// short (every cut near either end, a stride between): an exception, and
// the object reads as before.

#include "model/Model.h"
#include "support/FileTestSupport.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

using namespace MxXmlLib;
using namespace MxTestSupport;
using MxTestModel::COrder;

namespace
{
char const kOrder[] = "<order xmlns=\"urn:m\" "
                      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                      "id=\"7\" status=\"closed\">"
                      "<number>3</number><note>hi</note><priority>high</"
                      "priority><customer ref=\"2\"><name>Ann</name></customer>"
                      "<total currency=\"USD\">12</total><payment "
                      "xsi:type=\"card\"><number>42</number></payment>"
                      "<line><name>a</name></line><line><name>b</"
                      "name><phone>2</phone></line></order>";

// JSON keeps xsi:type only in full round trip; every format here uses it.
CSerializationContext const &Context()
{
    static CSerializationContext const context = [] {
        CSerializationContext made;
        made.GetJsonContext().SetSupportRoundtrip(RoundTripFull);
        made.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
        return made;
    }();
    return context;
}

std::size_t EntriesIn(std::string const &folder)
{
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

// Sets the direct (overlapped) branch of the file writers for its lifetime.
class DirectWrites
{
  public:
    explicit DirectWrites(bool direct) { AsyncToXmlFile(direct); }
    ~DirectWrites() { AsyncToXmlFile(false); }
};

struct Writer
{
    char const *name;
    bool direct;
    std::function<void(COrder const &, char const *)> write;
};

TEST(IoFaults, WritesThatFailInEachFormatKeepTheEarlierFile)
{
    Register(16, 1);
    CSmartPtr<COrder> order(new COrder);
    order->FromXml(kOrder, Context());
    Writer const writers[] = {
        {"XML", false,
         [](COrder const &o, char const *f) { o.ToXmlFile(f, true, true, XmlEncoding_UTF8, LF, Context()); }},
        {"XML direct", true,
         [](COrder const &o, char const *f) { o.ToXmlFile(f, true, true, XmlEncoding_UTF16, LF, Context()); }},
        {"XML gzip", false,
         [](COrder const &o, char const *f) {
             o.ToXmlFile(f, true, false, XmlEncoding_UTF8, LF, Context(), CompressionGZip);
         }},
        {"JSON", false, [](COrder const &o, char const *f) { o.ToJsonFile(f, true, XmlEncoding_UTF8, LF, Context()); }},
        {"JSON direct", true,
         [](COrder const &o, char const *f) { o.ToJsonFile(f, false, XmlEncoding_UTF8, LF, Context()); }},
        {"Fast Infoset", false,
         [](COrder const &o, char const *f) { o.ToFastInfosetFile(f, FInfoDecl_Finf, Context()); }},
    };
    TempDir dir;
    std::string const path = dir.Path("out");
    int failedWrites = 0;
    for (Writer const &w : writers)
    {
        SCOPED_TRACE(w.name);
        DirectWrites direct(w.direct);
        std::string const failed = w.direct ? "Failed to write data to the file. Error [0x%s]"
                                            : "Failed to write data to the file [" + path + "] error [0x%s]";
        auto message = [&](char const *code) { return failed.substr(0, failed.find("%s")) + code + "]"; };
        w.write(*order, path.c_str());
        std::string const whole = ReadFileBytes(path);
        ASSERT_GT(whole.size(), 100u);

        EXPECT_EQ(w.direct ? "Failed to write data to the file. Error [0x0000001C]"
                           : "Failed to write data to the file [/dev/full] error [0x0000001C]",
                  ErrorOf([&] { w.write(*order, "/dev/full"); }));
        // Every n near either end, and a stride between.
        for (rlim_t n = 0; n <= whole.size(); n += (n < 40 || whole.size() - n <= 40) ? 1 : 13)
        {
            SCOPED_TRACE(n);
            WriteFileBytes(path, "earlier");
            std::string error;
            {
                FileSizeLimit limit(n);
                error = ErrorOf([&] { w.write(*order, path.c_str()); });
            }
            std::string const left = ReadFileBytes(path);
            if (n == whole.size())
            {
                EXPECT_EQ("no error", error);
                EXPECT_EQ(whole, left);
            }
            else
            {
                ++failedWrites;
                EXPECT_EQ(message("0000001B"), error);
                EXPECT_EQ(w.direct ? whole.substr(0, n) : std::string("earlier"), left);
            }
            EXPECT_EQ(1u, EntriesIn(dir.Path("")));
            if (HasFailure())
                return;
        }
        // The object writes as before.
        w.write(*order, path.c_str());
        EXPECT_EQ(whole, ReadFileBytes(path));
    }
    std::printf("writes stopped short and survived: %d\n", failedWrites);
}

struct Reader
{
    char const *name;
    std::string file;
    std::function<void(COrder &, char const *)> read;
};

TEST(IoFaults, ReadsOfMissingFoldersAndTruncatedFilesInEachFormat)
{
    Register(16, 1);
    CSmartPtr<COrder> source(new COrder);
    source->FromXml(kOrder, Context());
    std::string const expected = source->ToXml(false, false, LF, Context());
    TempDir dir;
    source->ToXmlFile(dir.Path("order.xml").c_str(), true, true, XmlEncoding_UTF8, LF, Context());
    source->ToJsonFile(dir.Path("order.json").c_str(), true, XmlEncoding_UTF8, LF, Context());
    source->ToFastInfosetFile(dir.Path("order.fi").c_str(), FInfoDecl_None, Context());
    source->ToXmlFile(dir.Path("order.xml.gz").c_str(), true, true, XmlEncoding_UTF8, LF, Context(), CompressionGZip);
    source->ToJsonFile(dir.Path("order.json.gz").c_str(), true, XmlEncoding_UTF8, LF, Context(), CompressionGZip);
    auto chunked = [](COrder &o, char const *f) {
        AsyncFromXmlFile(true);
        try
        {
            o.FromXmlFile(f, Context());
        }
        catch (...)
        {
            AsyncFromXmlFile(false);
            throw;
        }
        AsyncFromXmlFile(false);
    };
    auto xml = [](COrder &o, char const *f) { o.FromXmlFile(f, Context()); };
    auto json = [](COrder &o, char const *f) { o.FromJsonFile(f, Context()); };
    Reader const readers[] = {
        {"XML", "order.xml", xml},         {"XML in chunks", "order.xml", chunked},
        {"XML gzip", "order.xml.gz", xml}, {"Fast Infoset", "order.fi", xml},
        {"JSON", "order.json", json},      {"JSON gzip", "order.json.gz", json},
    };
    std::string const folder = dir.Path("folder");
    std::filesystem::create_directory(folder);
    std::string const missing = dir.Path("missing");
    std::string const cut = dir.Path("cut");
    int failedReads = 0;
    for (Reader const &r : readers)
    {
        SCOPED_TRACE(r.name);
        bool const chunks = std::string(r.name) == "XML in chunks";
        CSmartPtr<COrder> order(new COrder);
        r.read(*order, dir.Path(r.file).c_str());
        ASSERT_EQ(expected, order->ToXml(false, false, LF, Context()));

        EXPECT_EQ("Failed to open the file [" + missing + "] Error [0x00000002]",
                  ErrorOf([&] { r.read(*order, missing.c_str()); }));
        EXPECT_EQ(chunks ? std::string("Failed to read the contents of the file. Error [0x00000015]")
                         : "Failed to read the contents of the file [" + folder + "] Error [0x00000015]",
                  ErrorOf([&] { r.read(*order, folder.c_str()); }));
        EXPECT_EQ(expected, order->ToXml(false, false, LF, Context()));

        std::string const whole = ReadFileBytes(dir.Path(r.file));
        for (std::size_t n = 0; n < whole.size(); n += (n < 40 || whole.size() - n <= 40) ? 1 : 7)
        {
            SCOPED_TRACE(n);
            WriteFileBytes(cut, whole.substr(0, n));
            std::string const error = ErrorOf([&] { r.read(*order, cut.c_str()); });
            // Text cut in its trailing line end is still whole.
            if (whole.find_first_not_of("\r\n", n) != std::string::npos)
            {
                EXPECT_NE("no error", error);
                ++failedReads;
            }
            if (HasFailure())
                return;
        }
        r.read(*order, dir.Path(r.file).c_str());
        EXPECT_EQ(expected, order->ToXml(false, false, LF, Context()));
    }
    std::printf("reads of cut files refused: %d\n", failedReads);
}
} // namespace
