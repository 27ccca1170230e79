#include "Catalogue.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace XsdTests
{

namespace
{
using namespace xercesc;
namespace fs = std::filesystem;

constexpr char const *kSuiteNs = "http://www.w3.org/XML/2004/xml-schema-test-suite/";
constexpr char const *kXlinkNs = "http://www.w3.org/1999/xlink";

std::string Utf8(XMLCh const *text)
{
    if (text == nullptr)
        return std::string();
    TranscodeToStr bytes(text, "UTF-8");
    return std::string(reinterpret_cast<char const *>(bytes.str()), bytes.length());
}

struct X
{
    explicit X(char const *text) : m_text(XMLString::transcode(text)) {}
    ~X() { XMLString::release(&m_text); }
    operator XMLCh const *() const { return m_text; }
    XMLCh *m_text;
};

// NIST: schema NISTSchema-SV-<IV|II>-<name>.xsd, its instances
// NISTXML-SV-<IV|II>-<name>-<n>.xml beside it; IV marks valid instances.
void ReadNist(std::string const &root, std::vector<Case> &cases)
{
    fs::path const base = fs::path(root) / "nistData";
    if (!fs::exists(base))
        return;
    std::vector<fs::path> schemas;
    for (auto const &entry : fs::recursive_directory_iterator(base))
    {
        std::string const name = entry.path().filename().string();
        if (entry.is_regular_file() && name.rfind("NISTSchema-SV-", 0) == 0 && entry.path().extension() == ".xsd")
            schemas.push_back(entry.path());
    }
    std::sort(schemas.begin(), schemas.end());
    for (fs::path const &schema : schemas)
    {
        std::string const stem = schema.stem().string();  // NISTSchema-SV-IV-atomic-int-pattern-1
        std::string const rest = stem.substr(std::string("NISTSchema-").size()); // SV-IV-...
        std::string const prefix = "NISTXML-" + rest + "-";
        std::vector<fs::path> instances;
        for (auto const &entry : fs::directory_iterator(schema.parent_path()))
        {
            std::string const name = entry.path().filename().string();
            if (name.rfind(prefix, 0) == 0 && entry.path().extension() == ".xml" &&
                name.find_first_not_of("0123456789", prefix.size()) == name.size() - 4)
                instances.push_back(entry.path());
        }
        std::sort(instances.begin(), instances.end());
        for (fs::path const &instance : instances)
        {
            Case c;
            c.set = "nist";
            c.group = stem;
            c.schemas.push_back(fs::relative(schema, root).string());
            c.instance = fs::relative(instance, root).string();
            c.valid = rest.rfind("SV-IV-", 0) == 0;
            cases.push_back(std::move(c));
        }
    }
}

std::vector<std::string> Tokens(std::string const &text)
{
    std::istringstream in(text);
    std::vector<std::string> tokens;
    for (std::string t; in >> t;)
        tokens.push_back(t);
    return tokens;
}

// Whether an item with this version attribute applies to XSD 1.0.
bool ForXsd10(DOMElement const *e)
{
    std::vector<std::string> const tokens = Tokens(Utf8(e->getAttribute(X("version"))));
    bool const has10 = std::find(tokens.begin(), tokens.end(), "1.0") != tokens.end();
    bool const has11 = std::find(tokens.begin(), tokens.end(), "1.1") != tokens.end();
    return has10 || !has11;
}

std::vector<DOMElement *> Children(DOMElement *parent, char const *local)
{
    std::vector<DOMElement *> found;
    for (DOMElement *e = parent->getFirstElementChild(); e != nullptr; e = e->getNextElementSibling())
        if (Utf8(e->getNamespaceURI()) == kSuiteNs && Utf8(e->getLocalName()) == local)
            found.push_back(e);
    return found;
}

// The expected validity for XSD 1.0: "valid", "invalid", or "" when none.
std::string Expected(DOMElement *test)
{
    std::string result;
    for (DOMElement *e : Children(test, "expected"))
        if (ForXsd10(e))
            result = Utf8(e->getAttribute(X("validity")));
    return result;
}

std::string Href(DOMElement *e, fs::path const &dir, std::string const &root)
{
    std::string const href = Utf8(e->getAttributeNS(X(kXlinkNs), X("href")));
    return fs::relative(fs::weakly_canonical(dir / href), fs::weakly_canonical(root)).string();
}

void ReadTestSet(std::string const &root, fs::path const &file, std::string const &set, std::vector<Case> &cases,
                 int &missing)
{
    XercesDOMParser parser;
    parser.setDoNamespaces(true);
    parser.setLoadExternalDTD(false);
    HandlerBase errors;
    parser.setErrorHandler(&errors);
    parser.parse(file.string().c_str());
    DOMDocument *doc = parser.getDocument();
    if (doc == nullptr || doc->getDocumentElement() == nullptr)
        throw std::runtime_error(file.string() + ": not a test set");
    fs::path const dir = file.parent_path();
    for (DOMElement *group : Children(doc->getDocumentElement(), "testGroup"))
    {
        if (!ForXsd10(group))
            continue;
        std::vector<DOMElement *> const schemaTests = Children(group, "schemaTest");
        // A group without a schema test names its schema in its instances: not
        // a case for a binding that needs the schema first.
        if (schemaTests.empty() || !ForXsd10(schemaTests.front()) || Expected(schemaTests.front()) != "valid")
            continue;
        std::vector<std::string> schemas;
        for (DOMElement *doc : Children(schemaTests.front(), "schemaDocument"))
            schemas.push_back(Href(doc, dir, root));
        for (DOMElement *test : Children(group, "instanceTest"))
        {
            std::string const expected = Expected(test);
            if (!ForXsd10(test) || expected.empty() || expected == "notKnown" || expected == "indeterminate")
                continue;
            std::vector<DOMElement *> const documents = Children(test, "instanceDocument");
            if (documents.empty())
                continue;
            Case c;
            c.set = set;
            // Group names repeat across a set's catalogues (Sun's annotation00101m1
            // stands in seven of them, each with its own schema).
            c.group = set + ":" + file.stem().string() + ":" + Utf8(group->getAttribute(X("name")));
            c.schemas = schemas;
            c.instance = Href(documents.front(), dir, root);
            c.valid = expected == "valid";
            if (!fs::exists(fs::path(root) / c.instance))
            {
                ++missing;
                continue;
            }
            cases.push_back(std::move(c));
        }
    }
}

void ReadTestSets(std::string const &root, char const *folder, char const *set, std::vector<Case> &cases,
                  int &missing)
{
    fs::path const dir = fs::path(root) / folder;
    if (!fs::exists(dir))
        return;
    std::vector<fs::path> files;
    for (auto const &entry : fs::directory_iterator(dir))
    {
        std::string const name = entry.path().filename().string();
        std::string const ext = entry.path().extension().string();
        // Editor backups (".#Regex_w3c.xml.1.22") are not catalogues.
        if (entry.is_regular_file() && name[0] != '.' && (ext == ".testSet" || ext == ".xml"))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (fs::path const &file : files)
        ReadTestSet(root, file, set, cases, missing);
}

std::vector<std::string> Split(std::string const &text, char separator)
{
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    for (;;)
    {
        std::string::size_type const end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos)
            return parts;
        start = end + 1;
    }
}
} // namespace

std::vector<Case> ReadSuite(std::string const &root, int &missing)
{
    std::vector<Case> cases;
    missing = 0;
    ReadNist(root, cases);
    ReadTestSets(root, "msMeta", "ms", cases, missing);
    ReadTestSets(root, "sunMeta", "sun", cases, missing);
    ReadTestSets(root, "boeingMeta", "boeing", cases, missing);
    fs::path const common = fs::path(root) / "common" / "introspection.testSet";
    if (fs::exists(common))
        ReadTestSet(root, common, "common", cases, missing);
    return cases;
}

std::vector<Case> ReadCases(std::string const &file)
{
    std::ifstream in(file);
    if (!in)
        throw std::runtime_error(file + ": cannot be read");
    std::vector<Case> cases;
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::vector<std::string> const f = Split(line, '\t');
        if (f.size() != 5)
            throw std::runtime_error(file + ": bad line: " + line);
        Case c;
        c.set = f[0];
        c.group = f[1];
        c.schemas = Split(f[2], '|');
        c.instance = f[3];
        c.valid = f[4] == "valid";
        cases.push_back(std::move(c));
    }
    return cases;
}

void WriteCases(std::string const &file, std::vector<Case> const &cases)
{
    std::ofstream out(file);
    out << "# set\tgroup\tschemas\tinstance\texpected\n";
    for (Case const &c : cases)
    {
        std::string schemas;
        for (std::string const &s : c.schemas)
            schemas += (schemas.empty() ? "" : "|") + s;
        out << c.set << '\t' << c.group << '\t' << schemas << '\t' << c.instance << '\t'
            << (c.valid ? "valid" : "invalid") << '\n';
    }
}

} // namespace XsdTests
