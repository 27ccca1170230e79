#include "compiler/CompilerTestSupport.h"

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
