#include "compiler/CompilerTestSupport.h"

#include <gtest/gtest.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace MxCompilerTest
{

namespace
{
using namespace xercesc;

std::string Utf8(XMLCh const *text)
{
    if (text == nullptr)
        return std::string();
    TranscodeToStr bytes(text, "UTF-8");
    return std::string(reinterpret_cast<char const *>(bytes.str()), bytes.length());
}

class FirstError : public ErrorHandler
{
public:
    void warning(SAXParseException const &) override {}
    void error(SAXParseException const &e) override { Keep(e); }
    void fatalError(SAXParseException const &e) override { Keep(e); }
    void resetErrors() override {}
    std::string text;

private:
    void Keep(SAXParseException const &e)
    {
        if (text.empty())
            text = std::to_string(e.getLineNumber()) + ":" + std::to_string(e.getColumnNumber()) + ": " +
                   Utf8(e.getMessage());
    }
};

struct Cleanup
{
    std::string dir;
    ~Cleanup()
    {
        std::error_code ignored;
        if (!dir.empty())
            std::filesystem::remove_all(dir, ignored);
    }
};

std::string Quote(std::string const &arg)
{
    std::string quoted = "'";
    for (char c : arg)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
} // namespace

std::string TempDir()
{
    static Cleanup cleanup;
    if (cleanup.dir.empty())
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "mx-compiler-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            std::abort();
        cleanup.dir = pattern;
    }
    return cleanup.dir;
}

std::string WriteTemp(std::string const &name, std::string const &text)
{
    std::string const path = TempDir() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::string ReadFile(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string XercesValidate(std::vector<std::string> const &schemas, std::string const &xml)
{
    static std::once_flag once;
    std::call_once(once, [] { XMLPlatformUtils::Initialize(); });
    MemoryManager *memory = XMLPlatformUtils::fgMemoryManager;
    std::unique_ptr<XMLGrammarPool> pool(new XMLGrammarPoolImpl(memory));
    std::unique_ptr<SAX2XMLReader> parser(XMLReaderFactory::createXMLReader(memory, pool.get()));
    parser->setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    parser->setFeature(XMLUni::fgSAX2CoreValidation, true);
    parser->setFeature(XMLUni::fgXercesDynamic, false);
    parser->setFeature(XMLUni::fgXercesSchema, true);
    parser->setFeature(XMLUni::fgXercesSchemaFullChecking, true);
    parser->setFeature(XMLUni::fgXercesHandleMultipleImports, true);
    parser->setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    parser->setFeature(XMLUni::fgXercesLoadSchema, false);
    FirstError errors;
    parser->setErrorHandler(&errors);
    for (std::string const &schema : schemas)
        parser->loadGrammar(schema.c_str(), Grammar::SchemaGrammarType, true);
    if (!errors.text.empty())
        return "schema: " + errors.text;
    MemBufInputSource input(reinterpret_cast<XMLByte const *>(xml.data()), xml.size(), "output");
    parser->parse(input);
    return errors.text;
}

// A purchase order with every branch of the schema: both addresses, the
// comment, items with a ship date, a pickup, neither, and text to escape.
std::string LargeOrder(int items)
{
    std::string xml = "<po:purchaseOrder xmlns:po='urn:example:po' orderDate='2026-11-22' status='closed'>"
                      "<po:shipTo country='US'><po:name>A &amp; B</po:name><po:street>1 Main</po:street>"
                      "<po:city>X</po:city><po:state>CA</po:state><po:zip>90952-1234</po:zip></po:shipTo>"
                      "<po:billTo><po:name>C</po:name><po:street>2</po:street><po:city>Y</po:city>"
                      "<po:state>PA</po:state><po:zip>95819</po:zip></po:billTo>"
                      "<po:comment>&lt;quoted&gt; \"text\"</po:comment><po:items>";
    for (int i = 0; i < items; ++i)
    {
        xml += "<po:item partNum='" + std::to_string(100 + i % 900) + "-AB'><po:productName>P" + std::to_string(i) +
               "</po:productName><po:quantity>" + std::to_string(1 + i % 99) + "</po:quantity><po:USPrice>" +
               std::to_string(i) + ".5</po:USPrice>";
        if (i % 4 == 1)
            xml += "<po:comment>c</po:comment>";
        if (i % 3 == 0)
            xml += "<po:shipDate>2026-12-0" + std::to_string(1 + i % 9) + "</po:shipDate>";
        else if (i % 3 == 1)
            xml += "<po:pickup>Store " + std::to_string(i) + "</po:pickup>";
        xml += "</po:item>";
    }
    return xml + "</po:items></po:purchaseOrder>";
}

// Long texts differ in one place at most: say where, with a little context.
void ExpectSameText(std::string const &expected, std::string const &actual)
{
    if (expected == actual)
        return;
    std::size_t at = 0;
    while (at < expected.size() && at < actual.size() && expected[at] == actual[at])
        ++at;
    std::size_t const from = at < 40 ? 0 : at - 40;
    ADD_FAILURE() << "texts differ at byte " << at << " of " << expected.size() << "/" << actual.size()
                  << "\nexpected: " << ::testing::PrintToString(expected.substr(from, 100))
                  << "\nactual:   " << ::testing::PrintToString(actual.substr(from, 100));
}

RunResult RunMx(std::vector<std::string> const &args, std::string const &input)
{
    std::string command = Quote(MX_TOOL);
    for (std::string const &arg : args)
        command += " " + Quote(arg);
    std::string const in = WriteTemp("stdin.txt", input);
    std::string const out = TempDir() + "/stdout.txt";
    std::string const err = TempDir() + "/stderr.txt";
    command += " <" + Quote(in) + " >" + Quote(out) + " 2>" + Quote(err);
    RunResult result;
    int const raw = std::system(command.c_str());
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = ReadFile(out);
    result.err = ReadFile(err);
    return result;
}

} // namespace MxCompilerTest
