// mx: converts, checks and describes documents, with or without a schema.
//
//   mx convert [--schema S.xsd]... [--to xml|json|fi] [--gzip|--zlib] [--json-compat] IN OUT
//   mx check --schema S.xsd [--schema ...] DOC...
//   mx describe --schema S.xsd [--schema ...]
//   mx generate --schema S.xsd [--schema ...] --out DIR [--namespace URI=cpp::ns]... [--file-per-type]
//
// Exit status: 0 success, 1 a document or schema failed, 2 usage.

#include "Convert.h"
#include "cpp/CppGenerator.h"
#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"

#include "MxXmlLib.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using namespace MxXmlLib;
using MxCompiler::CSchemaSet;

constexpr char const *kUsage =
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

// A failure whose message is the whole story: printed as it is, exit 1.
struct Failure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

struct Usage : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// Inputs larger than this show a progress line when stderr is a terminal.
constexpr std::size_t kProgressThreshold = 64u << 20;

std::vector<unsigned char> ReadAll(std::string const &name)
{
    FILE *file = name == "-" ? stdin : std::fopen(name.c_str(), "rb");
    if (file == nullptr)
        throw Failure(name + ": " + std::strerror(errno));
    std::vector<unsigned char> bytes;
    unsigned char buffer[1 << 16];
    bool const progress = isatty(STDERR_FILENO) != 0;
    std::size_t nextReport = kProgressThreshold;
    for (;;)
    {
        std::size_t const n = std::fread(buffer, 1, sizeof buffer, file);
        bytes.insert(bytes.end(), buffer, buffer + n);
        if (progress && bytes.size() >= nextReport)
        {
            std::fprintf(stderr, "\rread %zu MB of %s", bytes.size() >> 20, name.c_str());
            nextReport += kProgressThreshold;
        }
        if (n < sizeof buffer)
            break;
    }
    bool const failed = std::ferror(file) != 0;
    int const error = errno;
    if (file != stdin)
        std::fclose(file);
    if (progress && bytes.size() >= kProgressThreshold)
        std::fprintf(stderr, "\n");
    if (failed)
        throw Failure(name + ": " + std::strerror(error));
    return bytes;
}

void WriteAll(std::string const &name, CBinaryData const &bytes)
{
    FILE *file = name == "-" ? stdout : std::fopen(name.c_str(), "wb");
    if (file == nullptr)
        throw Failure(name + ": " + std::strerror(errno));
    std::size_t const written = std::fwrite(bytes.GetData(), 1, bytes.GetLength(), file);
    bool failed = written != bytes.GetLength();
    failed = (file == stdout ? std::fflush(file) != 0 : std::fclose(file) != 0) || failed;
    if (failed)
        throw Failure(name + ": " + std::strerror(errno));
}

bool EndsWith(std::string const &text, std::string const &tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

struct Options
{
    std::vector<std::string> schemas;
    std::vector<std::string> files;
    std::string to;
    std::string out;
    std::map<std::string, std::string> namespaces;
    MxCompiler::SchemaLocations locations;
    CompressionType compression = CompressionNone;
    bool jsonCompat = false;
    bool filePerType = false;
};

Options Parse(std::vector<std::string> const &args, bool allowFormat, bool allowGenerate = false)
{
    Options o;
    for (std::size_t i = 0; i < args.size(); ++i)
    {
        std::string const &a = args[i];
        if (a == "--schema" || a == "--to")
        {
            if (i + 1 >= args.size())
                throw Usage(a + " needs a value");
            if (a == "--to" && !allowFormat)
                throw Usage("unknown option --to");
            (a == "--schema" ? o.schemas.emplace_back() : o.to) = args[++i];
        }
        else if (allowGenerate && a == "--file-per-type")
            o.filePerType = true;
        else if (a == "--out" || a == "--namespace" || a == "--location")
        {
            if (i + 1 >= args.size())
                throw Usage(a + " needs a value");
            std::string const value = args[++i];
            if (a == "--out")
                o.out = value;
            else
            {
                // A URI may hold '=', a C++ namespace never does.
                std::size_t const eq = value.rfind('=');
                if (eq == std::string::npos || eq + 1 == value.size())
                    throw Usage(a == "--namespace" ? "--namespace takes URI=cpp::namespace" : "--location takes URI=FILE");
                (a == "--namespace" ? o.namespaces : o.locations)[value.substr(0, eq)] = value.substr(eq + 1);
            }
        }
        else if (allowFormat && a == "--gzip")
            o.compression = CompressionGZip;
        else if (allowFormat && a == "--zlib")
            o.compression = CompressionZLib;
        else if (allowFormat && a == "--json-compat")
            o.jsonCompat = true;
        else if (a.size() > 1 && a[0] == '-' && a != "-")
            throw Usage("unknown option " + a);
        else
            o.files.push_back(a);
    }
    return o;
}

std::string OutputFormat(Options &o, std::string const &out)
{
    std::string name = out;
    if (EndsWith(name, ".gz"))
    {
        name.resize(name.size() - 3);
        if (o.compression == CompressionNone)
            o.compression = CompressionGZip;
    }
    if (!o.to.empty())
    {
        if (o.to != "xml" && o.to != "json" && o.to != "fi")
            throw Usage("--to takes xml, json or fi");
        return o.to;
    }
    if (EndsWith(name, ".json"))
        return "json";
    if (EndsWith(name, ".fi") || EndsWith(name, ".finf"))
        return "fi";
    if (EndsWith(name, ".xml") || out == "-")
        return "xml";
    throw Usage("cannot tell the output format from " + out + "; use --to");
}

// JSON that any parser accepts and that reads back to the same document.
void UseStrictJson(CSerializationContext &context)
{
    context.GetJsonContext().SetStrict(true);
}

int Convert(std::vector<std::string> const &args)
{
    Options o = Parse(args, true);
    if (o.files.size() != 2)
        throw Usage("convert takes IN and OUT");
    std::string const format = OutputFormat(o, o.files[1]);
    std::vector<unsigned char> input = ReadAll(o.files[0]);
    CBinaryData bytes(input.data(), static_cast<unsigned long>(input.size()), false);
    std::unique_ptr<CSchemaSet> set;
    if (!o.schemas.empty())
        set = std::make_unique<CSchemaSet>(CSchemaSet::Load(o.schemas, o.locations));
    MxTool::ConvertOptions options;
    options.format = format == "xml"    ? MxTool::OutputFormat::Xml
                     : format == "json" ? MxTool::OutputFormat::Json
                                        : MxTool::OutputFormat::FastInfoset;
    options.compression = o.compression;
    options.jsonCompat = o.jsonCompat;
    WriteAll(o.files[1], MxTool::ConvertBytes(bytes, set.get(), options));
    return 0;
}

int Check(std::vector<std::string> const &args)
{
    Options o = Parse(args, false);
    if (o.schemas.empty())
        throw Usage("check needs --schema");
    if (o.files.empty())
        throw Usage("check needs at least one document");
    CSchemaSet const set = CSchemaSet::Load(o.schemas, o.locations);
    int status = 0;
    for (std::string const &file : o.files)
    {
        try
        {
            std::vector<unsigned char> input = ReadAll(file);
            CBinaryData bytes(input.data(), static_cast<unsigned long>(input.size()), false);
            CSerializationContext context;
            UseStrictJson(context);
            set.Read(bytes, context);
            std::cout << file << ": ok\n";
        }
        catch (CMxException const &e)
        {
            std::cout << file << ": " << e.GetFullMessage() << "\n";
            status = 1;
        }
        catch (Failure const &e)
        {
            std::cout << e.what() << "\n";
            status = 1;
        }
    }
    return status;
}

int Describe(std::vector<std::string> const &args)
{
    Options o = Parse(args, false);
    if (o.schemas.empty() || !o.files.empty())
        throw Usage("describe takes --schema files only");
    std::cout << MxCompiler::Describe(MxCompiler::LoadSchemaModel(o.schemas, o.locations));
    return 0;
}

// File names of generated code: the schema's name with '-' and '.' as '_'.
std::string MxCompilerBaseName(std::string name)
{
    for (char &c : name)
        if (c == '-' || c == '.' || c == ' ')
            c = '_';
    return name.empty() ? std::string("Schema") : name;
}

int Generate(std::vector<std::string> const &args)
{
    Options o = Parse(args, false, true);
    if (o.schemas.empty() || o.out.empty() || !o.files.empty())
        throw Usage("generate takes --schema files and --out DIR");
    MxCompiler::CppOptions options;
    std::string base = o.schemas.front();
    base = base.substr(base.find_last_of('/') + 1);
    base = base.substr(0, base.find('.'));
    options.baseName = MxCompilerBaseName(base);
    options.namespaces = o.namespaces;
    options.filePerType = o.filePerType;
    for (std::string const &schema : o.schemas)
        options.schemaNames.push_back(schema.substr(schema.find_last_of('/') + 1));
    for (MxCompiler::GeneratedFile const &file : MxCompiler::GenerateCpp(MxCompiler::LoadSchemaModel(o.schemas, o.locations), options))
    {
        std::string const path = o.out + "/" + file.name;
        std::string const old = [&path] {
            FILE *in = std::fopen(path.c_str(), "rb");
            std::string text;
            if (in == nullptr)
                return text;
            char buffer[4096];
            for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, in)) > 0;)
                text.append(buffer, n);
            std::fclose(in);
            return text;
        }();
        // An unchanged file keeps its time, so that builds that depend on it stay done.
        if (old == file.text)
            continue;
        CBinaryData bytes(reinterpret_cast<unsigned char *>(const_cast<char *>(file.text.data())),
                          static_cast<unsigned long>(file.text.size()), false);
        WriteAll(path, bytes);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    MxXmlLib::Register(16, 1);
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty() || args[0] == "--help" || args[0] == "-h")
    {
        (args.empty() ? std::cerr : std::cout) << kUsage;
        return args.empty() ? 2 : 0;
    }
    std::string const command = args[0];
    args.erase(args.begin());
    try
    {
        if (command == "convert")
            return Convert(args);
        if (command == "check")
            return Check(args);
        if (command == "describe")
            return Describe(args);
        if (command == "generate")
            return Generate(args);
        throw Usage("unknown command " + command);
    }
    catch (Usage const &e)
    {
        std::cerr << "mx: " << e.what() << "\n" << kUsage;
        return 2;
    }
    catch (Failure const &e)
    {
        std::cerr << "mx: " << e.what() << "\n";
    }
    catch (MxCompiler::CSchemaError const &e)
    {
        std::cerr << "mx: schema: " << e.what() << "\n";
    }
    catch (CMxException const &e)
    {
        std::cerr << "mx: " << e.GetFullMessage() << "\n";
    }
    catch (std::exception const &e)
    {
        std::cerr << "mx: " << e.what() << "\n";
    }
    return 1;
}
