// xsdtests: runs the W3C XML Schema test suite's instance tests through the
// run-time back end of the schema compiler.
//
//   xsdtests run ROOT|CASES.tsv --results OUT.tsv [--shard I/N] [--batch GROUPS] [--expect FILE]
//   xsdtests cases ROOT OUT.tsv
//   xsdtests report --out REPORT.md [--failures LIST.txt] [--write-expect FILE] RESULTS.tsv...
//   xsdtests compiled ROOT|CASES.tsv --work DIR --compile COMMAND [--results OUT.tsv] [--shard I/N] [--batch N]
//   xsdtests compiled-report RESULTS.tsv...
//
// Each expected-valid instance is read into the bound objects and written as
// XML; it passes the XML leg when Xerces-C validates that output against the
// schema and the output's infoset equals the input's (simple values compared
// by their canonical forms). The JSON leg (ToJson, read back, ToXml) and the
// Fast Infoset leg (ToFastInfosetStream, read back, ToXml) pass when they
// give the XML leg's text again. Expected-invalid instances count as
// rejected when reading raises.
//
// The compiled mode generates C++ from a sample of the groups with the C++
// back end, compiles a batch of groups to one shared library (the command
// given, e.g. "g++ -std=c++17 -O0 -shared -fPIC -I... -L... -lMxXmlLib"),
// and holds what those classes write, and the messages they raise, to the
// run-time back end's, byte for byte.
//
// Test groups run in child processes (--batch groups each), so that a crash
// or a hang is reported as the cause of its cases and the run goes on.

#include "Catalogue.h"
#include "Infoset.h"

#include "cpp/CppGenerator.h"
#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"

#include "MxXmlLib.h"

#include <xercesc/util/PlatformUtils.hpp>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace MxXmlLib;
using namespace XsdTests;
namespace fs = std::filesystem;

constexpr unsigned kGroupSeconds = 120;

// ---------------------------------------------------------------------------
// Messages reduced to their family: first line, with names and values out.

std::string Family(std::string const &message)
{
    std::string line = message.substr(0, message.find('\n'));
    // This message quotes the value checked without brackets: it goes too.
    std::string const regex = "Invalid Regular Expression: ";
    std::size_t const error = line.find(" Error: ");
    if (line.rfind(regex, 0) == 0 && error != std::string::npos)
        line = regex + "[]" + line.substr(error);
    std::string out;
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        char const c = line[i];
        char const close = c == '[' ? ']' : c == '\'' ? '\'' : c == '"' ? '"' : c == '{' ? '}' : 0;
        std::size_t const end = close ? line.find(close, i + 1) : std::string::npos;
        if (close && end != std::string::npos)
        {
            out += c;
            out += close;
            i = end;
        }
        else if (c >= '0' && c <= '9')
        {
            if (out.empty() || out.back() != 'N')
                out += 'N';
        }
        else if (c == '\t')
            out += ' ';
        else
            out += c;
    }
    if (out.size() > 200)
    {
        // Cut before a UTF-8 continuation byte, never inside a character.
        std::size_t cut = 200;
        while (cut > 0 && (static_cast<unsigned char>(out[cut]) & 0xC0) == 0x80)
            --cut;
        out = out.substr(0, cut) + "...";
    }
    return out;
}

CMxException const &Innermost(CMxException const &e)
{
    CMxException const *inner = &e;
    while (inner->GetInnerException() != nullptr)
        inner = inner->GetInnerException();
    return *inner;
}

bool NamesPath(CMxException const &e)
{
    for (CMxException const *x = &e; x != nullptr; x = x->GetInnerException())
        if (!x->GetPath().empty())
            return true;
    return false;
}

// A schema error's family: the file and position of a Xerces message go.
std::string SchemaFamily(std::string const &message)
{
    std::string m = message;
    if (!m.empty() && m[0] == '/')
    {
        // file:line:col: text
        std::size_t const colon = m.find(": ");
        if (colon != std::string::npos)
            m = "Xerces: " + m.substr(colon + 2);
    }
    return Family(m);
}

std::string ReadFile(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error(path + ": cannot be read");
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

CBinaryData Bytes(std::string const &text)
{
    return CBinaryData(reinterpret_cast<unsigned char *>(const_cast<char *>(text.data())),
                       static_cast<unsigned long>(text.size()), false);
}

// The context of the JSON leg: JSON that keeps attributes, namespaces and
// xsi:type, so that reading it back can give the same XML.
// Full round trips name namespaces by prefixes declared on the root: every
// namespace of the schema set and of the input gets one.
void PrepareJsonContext(CSerializationContext &context, MxCompiler::Model const &model, std::string const &input)
{
    context.GetJsonContext().SetSupportRoundtrip(RoundTripFull);
    std::set<std::string> namespaces = {"http://www.w3.org/2001/XMLSchema-instance"};
    for (MxCompiler::ClassDef const &c : model.classes)
    {
        namespaces.insert(c.ns);
        for (MxCompiler::ElementRow const &r : c.elements)
            namespaces.insert(r.ns);
        for (MxCompiler::AttributeRow const &a : c.attributes)
            namespaces.insert(a.ns);
    }
    for (MxCompiler::RootElement const &r : model.roots)
        namespaces.insert(r.ns);
    for (std::size_t at = input.find("xmlns"); at != std::string::npos; at = input.find("xmlns", at + 5))
    {
        std::size_t const quote = input.find_first_of("\"'", at);
        std::size_t const equals = input.find('=', at);
        if (quote == std::string::npos || equals == std::string::npos || equals > quote ||
            input.find_first_not_of(" \t\r\n", equals + 1) != quote)
            continue;
        std::size_t const end = input.find(input[quote], quote + 1);
        if (end != std::string::npos)
            namespaces.insert(input.substr(quote + 1, end - quote - 1));
    }
    // The xml namespace is bound to its own prefix, and no other may name it.
    namespaces.erase("http://www.w3.org/XML/1998/namespace");
    int n = 0;
    for (std::string const &ns : namespaces)
        if (!ns.empty())
            context.GetNamespaceAliases().Add(("ns" + std::to_string(++n)).c_str(), ns.c_str());
    // The JSON leg holds the JSON that any reader accepts and that reads back whole.
    context.GetJsonContext().SetStrict(true);
}

// ---------------------------------------------------------------------------
// One group

struct Leg
{
    std::string status = "fail"; // pass, fail
    std::string cause;
};

std::string Clean(std::string text)
{
    for (char &c : text)
        if (c == '\t' || c == '\n' || c == '\r')
            c = ' ';
    return text;
}

std::string ValidLine(Case const &c, Leg const &xml, Leg const &json, Leg const &fi)
{
    return "V\t" + c.set + "\t" + c.group + "\t" + c.instance + "\t" + xml.status + "\t" + Clean(xml.cause) + "\t" +
           json.status + "\t" + Clean(json.cause) + "\t" + fi.status + "\t" + Clean(fi.cause) + "\n";
}

std::string InvalidLine(Case const &c, bool rejected, std::string const &family, bool path)
{
    return "I\t" + c.set + "\t" + c.group + "\t" + c.instance + "\t" + (rejected ? "1" : "0") + "\t" + Clean(family) +
           "\t" + (path ? "1" : "0") + "\n";
}

// Runs one leg's body; a failure's message becomes the cause.
template <typename F> void Try(Leg &leg, char const *step, F &&body)
{
    try
    {
        body();
    }
    catch (CMxException const &e)
    {
        leg.status = "fail";
        leg.cause = std::string(step) + ": " + Family(Innermost(e).GetMessage());
    }
    catch (std::exception const &e)
    {
        leg.status = "fail";
        leg.cause = std::string(step) + ": " + Family(e.what());
    }
}

// The schemas that the suite imports from the network, read from the copies
// beside this runner, for the compiler and for Xerces alike.
MxCompiler::SchemaLocations const &SuiteLocations()
{
    static MxCompiler::SchemaLocations const locations = {
        {"http://www.w3.org/XML/2008/06/xlink.xsd", MX_XSDTESTS_SCHEMAS "/xlink.xsd"},
        {"http://www.w3.org/2001/xml.xsd", MX_XSDTESTS_SCHEMAS "/xml.xsd"},
    };
    return locations;
}

std::string RunValid(MxCompiler::CSchemaSet const &set, Validator &validator, std::string const &root, Case const &c)
{
    Leg xml, json, fi;
    json.cause = fi.cause = "not run: the XML leg failed before writing";
    std::string const input = ReadFile((fs::path(root) / c.instance).string());
    std::string error;
    std::unique_ptr<Node> expected = validator.Parse(input, error);
    if (!error.empty() || expected == nullptr)
    {
        xml.cause = "Xerces rejects the suite's valid input: " + Family(error);
        return ValidLine(c, xml, json, fi);
    }
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    CSmartPtr<CXmlObjectBase> object;
    std::string written;
    Try(xml, "read", [&] { object = set.Read(Bytes(input), context); });
    if (object.IsNull())
        return ValidLine(c, xml, json, fi);
    Try(xml, "write", [&] {
        written = object->ToXml(true, false, LF, context);
        std::unique_ptr<Node> actual = validator.Parse(written, error);
        if (!error.empty() || actual == nullptr)
            xml.cause = "output invalid: " + Family(error);
        else
        {
            std::string const difference = Compare(*expected, *actual);
            if (difference.empty())
                xml.status = "pass";
            else
                xml.cause = "infoset: " + difference.substr(0, difference.find(" ("));
        }
    });
    if (written.empty())
        return ValidLine(c, xml, json, fi);
    json.cause.clear();
    fi.cause.clear();
    Try(json, "json", [&] {
        CSerializationContext jsonContext;
        PrepareJsonContext(jsonContext, set.GetModel(), input);
        std::string const text = object->ToJson(false, LF, jsonContext);
        CSmartPtr<CXmlObjectBase> back = set.Read(Bytes(text), jsonContext);
        if (back->ToXml(true, false, LF, context) == written)
            json.status = "pass";
        else
            json.cause = "json: the XML differs after the round trip";
    });
    Try(fi, "fi", [&] {
        CSerializationContext fiContext;
        fiContext.GetFIContext().SetReadsBackAsXml(true);
        CBinaryData const bytes = object->ToFastInfosetStream(FInfoDecl_None, fiContext);
        CSmartPtr<CXmlObjectBase> back = set.Read(bytes, context);
        if (back->ToXml(true, false, LF, context) == written)
            fi.status = "pass";
        else
            fi.cause = "fi: the XML differs after the round trip";
    });
    return ValidLine(c, xml, json, fi);
}

std::string RunInvalid(MxCompiler::CSchemaSet const &set, std::string const &root, Case const &c)
{
    std::string const input = ReadFile((fs::path(root) / c.instance).string());
    try
    {
        CSmartPtr<CXmlObjectBase> object = set.Read(Bytes(input), CSerializationContext::GetDefaultContext());
    }
    catch (CMxException const &e)
    {
        return InvalidLine(c, true, Family(Innermost(e).GetMessage()), NamesPath(e));
    }
    catch (std::exception const &e)
    {
        return InvalidLine(c, true, Family(e.what()), false);
    }
    return InvalidLine(c, false, "accepted", false);
}

std::string RunGroup(std::string const &root, std::vector<Case const *> const &cases)
{
    std::vector<std::string> schemas;
    for (std::string const &s : cases.front()->schemas)
        schemas.push_back((fs::path(root) / s).string());
    std::string out;
    std::string refused;
    std::unique_ptr<MxCompiler::CSchemaSet> set;
    try
    {
        set = std::make_unique<MxCompiler::CSchemaSet>(MxCompiler::CSchemaSet::Load(schemas, SuiteLocations()));
    }
    catch (std::exception const &e)
    {
        refused = "schema not expressible: " + SchemaFamily(e.what());
    }
    catch (CMxException const &e)
    {
        refused = "schema not expressible: " + Family(e.GetMessage());
    }
    std::unique_ptr<Validator> validator;
    std::string peerRefused;
    if (set)
    {
        try
        {
            validator = std::make_unique<Validator>(schemas, SuiteLocations());
        }
        catch (std::exception const &e)
        {
            peerRefused = "Xerces refuses the schema for validation: " + SchemaFamily(e.what());
        }
    }
    for (Case const *c : cases)
    {
        if (!c->valid)
        {
            out += set ? RunInvalid(*set, root, *c) : InvalidLine(*c, false, refused, false);
            continue;
        }
        Leg xml, json, fi;
        if (!set || !validator)
        {
            xml.cause = json.cause = fi.cause = set ? peerRefused : refused;
            out += ValidLine(*c, xml, json, fi);
            continue;
        }
        try
        {
            out += RunValid(*set, *validator, root, *c);
        }
        catch (std::exception const &e)
        {
            xml.cause = json.cause = fi.cause = "runner: " + Family(e.what());
            out += ValidLine(*c, xml, json, fi);
        }
    }
    return out;
}

// Runs `body` in a child process with a time limit. Returns whether it
// ended well, with what it gave in `out`; otherwise `cause` says how it ended.
bool RunInChild(unsigned seconds, std::function<std::string()> const &body, std::string &out, std::string &cause)
{
    int pipeFds[2];
    if (pipe(pipeFds) != 0)
        throw std::runtime_error("pipe failed");
    std::fflush(nullptr);
    pid_t const child = fork();
    if (child < 0)
        throw std::runtime_error("fork failed");
    if (child == 0)
    {
        close(pipeFds[0]);
        alarm(seconds);
        std::string const text = body();
        std::size_t done = 0;
        while (done < text.size())
        {
            ssize_t const n = write(pipeFds[1], text.data() + done, text.size() - done);
            if (n <= 0)
                _exit(3);
            done += static_cast<std::size_t>(n);
        }
        close(pipeFds[1]);
        // exit, not _exit: the leak check of a sanitizer build runs at exit,
        // and a leak turns into a failing exit status of the group.
        std::exit(0);
    }
    close(pipeFds[1]);
    out.clear();
    char buffer[65536];
    for (;;)
    {
        ssize_t const n = read(pipeFds[0], buffer, sizeof buffer);
        if (n <= 0)
            break;
        out.append(buffer, static_cast<std::size_t>(n));
    }
    close(pipeFds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return true;
    cause = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM
                ? "runner: the group took longer than " + std::to_string(kGroupSeconds) + " s"
            : WIFSIGNALED(status) ? "runner: crashed with signal " + std::to_string(WTERMSIG(status))
                                  : "runner: exit status " + std::to_string(WEXITSTATUS(status));
    return false;
}

// The groups in a child process; a crash or a hang becomes the cause of
// every case of the group.
using Batch = std::vector<std::vector<Case const *>>;

std::string RunGroupsIsolated(std::string const &root, Batch const &batch)
{
    std::string out, cause;
    auto const body = [&] {
        std::string text;
        for (std::vector<Case const *> const &cases : batch)
            text += RunGroup(root, cases);
        return text;
    };
    if (RunInChild(kGroupSeconds * static_cast<unsigned>(batch.size()), body, out, cause))
        return out;
    // One group of the batch failed it: each group again on its own, so that
    // only that one is charged with it.
    if (batch.size() > 1)
    {
        out.clear();
        for (std::vector<Case const *> const &cases : batch)
            out += RunGroupsIsolated(root, Batch{cases});
        return out;
    }
    out.clear();
    for (Case const *c : batch.front())
    {
        Leg xml, json, fi;
        xml.cause = json.cause = fi.cause = cause;
        out += c->valid ? ValidLine(*c, xml, json, fi) : InvalidLine(*c, false, cause, false);
    }
    return out;
}

std::vector<Case> LoadCases(std::string const &source, std::string &root)
{
    if (fs::is_directory(source))
    {
        root = source;
        int missing = 0;
        std::vector<Case> cases = ReadSuite(source, missing);
        if (missing > 0)
            std::cerr << missing << " instance documents named by the catalogues are absent\n";
        return cases;
    }
    root = fs::path(source).parent_path().string();
    return ReadCases(source);
}

// ---------------------------------------------------------------------------
// Results and the report

struct Result
{
    bool valid = true;
    std::string set, group, instance;
    std::string status[3], cause[3]; // valid: xml, json, fi
    bool rejected = false, path = false;
    std::string family;
    bool AllPass() const { return status[0] == "pass" && status[1] == "pass" && status[2] == "pass"; }
};

std::vector<std::string> Fields(std::string const &line)
{
    std::vector<std::string> f;
    std::size_t start = 0;
    for (;;)
    {
        std::size_t const end = line.find('\t', start);
        f.push_back(line.substr(start, end - start));
        if (end == std::string::npos)
            return f;
        start = end + 1;
    }
}

std::vector<Result> ReadResults(std::vector<std::string> const &files)
{
    std::vector<Result> results;
    for (std::string const &file : files)
    {
        std::ifstream in(file);
        if (!in)
            throw std::runtime_error(file + ": cannot be read");
        for (std::string line; std::getline(in, line);)
        {
            std::vector<std::string> const f = Fields(line);
            Result r;
            if (f.size() == 10 && f[0] == "V")
            {
                r.valid = true;
                for (int i = 0; i < 3; ++i)
                {
                    r.status[i] = f[static_cast<std::size_t>(4 + 2 * i)];
                    r.cause[i] = f[static_cast<std::size_t>(5 + 2 * i)];
                }
            }
            else if (f.size() == 7 && f[0] == "I")
            {
                r.valid = false;
                r.rejected = f[4] == "1";
                r.family = f[5];
                r.path = f[6] == "1";
            }
            else
                throw std::runtime_error(file + ": bad line: " + line);
            r.set = f[1];
            r.group = f[2];
            r.instance = f[3];
            results.push_back(std::move(r));
        }
    }
    return results;
}

std::string Percent(long part, long whole)
{
    if (whole == 0)
        return "-";
    std::ostringstream s;
    s << std::fixed << std::setprecision(1) << 100.0 * static_cast<double>(part) / static_cast<double>(whole) << "%";
    return s.str();
}

std::string Row(std::vector<std::string> const &cells)
{
    std::string row = "|";
    for (std::string const &c : cells)
        row += " " + c + " |";
    return row + "\n";
}

// Cause -> the instances failing with it.
using Groups = std::map<std::string, std::vector<std::string>>;

void WriteGroups(std::ostream &md, std::ostream *list, char const *title, Groups const &groups)
{
    std::vector<std::pair<std::string, std::vector<std::string>>> sorted(groups.begin(), groups.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](auto const &a, auto const &b) { return a.second.size() > b.second.size(); });
    long total = 0;
    for (auto const &g : sorted)
        total += static_cast<long>(g.second.size());
    md << "\n### " << title << " (" << total << " cases)\n\n";
    if (sorted.empty())
    {
        md << "None.\n";
        return;
    }
    md << "| cases | cause | for example |\n|---:|---|---|\n";
    for (auto const &[cause, cases] : sorted)
    {
        std::string examples;
        for (std::size_t i = 0; i < cases.size() && i < 2; ++i)
            examples += (i ? ", " : "") + std::string("`") + fs::path(cases[i]).filename().string() + "`";
        std::string escaped;
        for (char ch : cause)
            escaped += ch == '|' ? std::string("\\|") : std::string(1, ch);
        md << "| " << cases.size() << " | " << escaped << " | " << examples << " |\n";
        if (list)
        {
            *list << "## " << title << ": " << cause << " (" << cases.size() << ")\n";
            for (std::string const &c : cases)
                *list << c << "\n";
        }
    }
}

int Report(std::vector<std::string> const &args)
{
    std::string out, failures, expectOut;
    std::vector<std::string> inputs;
    for (std::size_t i = 0; i < args.size(); ++i)
    {
        if (args[i] == "--out" && i + 1 < args.size())
            out = args[++i];
        else if (args[i] == "--failures" && i + 1 < args.size())
            failures = args[++i];
        else if (args[i] == "--write-expect" && i + 1 < args.size())
            expectOut = args[++i];
        else
            inputs.push_back(args[i]);
    }
    std::vector<Result> const results = ReadResults(inputs);
    std::vector<std::string> const sets = {"nist", "ms", "sun", "boeing", "common"};
    std::ostringstream md;
    md << "| set | valid | XML leg | JSON leg | FI leg | all three | invalid | rejected | rejected, path named |\n"
       << "|---|---:|---:|---:|---:|---:|---:|---:|---:|\n";
    long tv = 0, tx = 0, tj = 0, tf = 0, ta = 0, ti = 0, tr = 0, tp = 0;
    for (std::string const &set : sets)
    {
        long v = 0, x = 0, j = 0, f = 0, a = 0, inv = 0, rej = 0, path = 0;
        for (Result const &r : results)
        {
            if (r.set != set)
                continue;
            if (r.valid)
            {
                ++v;
                x += r.status[0] == "pass";
                j += r.status[1] == "pass";
                f += r.status[2] == "pass";
                a += r.AllPass();
            }
            else
            {
                ++inv;
                rej += r.rejected;
                path += r.rejected && r.path;
            }
        }
        if (v + inv == 0)
            continue;
        auto cell = [](long n, long whole) { return std::to_string(n) + " (" + Percent(n, whole) + ")"; };
        md << Row({set, std::to_string(v), cell(x, v), cell(j, v), cell(f, v), cell(a, v), std::to_string(inv),
                   cell(rej, inv), cell(path, inv)});
        tv += v, tx += x, tj += j, tf += f, ta += a, ti += inv, tr += rej, tp += path;
    }
    auto cell = [](long n, long whole) { return std::to_string(n) + " (" + Percent(n, whole) + ")"; };
    md << Row({"**all**", std::to_string(tv), cell(tx, tv), cell(tj, tv), cell(tf, tv), cell(ta, tv),
               std::to_string(ti), cell(tr, ti), cell(tp, ti)});

    Groups byLeg[3];
    Groups accepted, rejectedFamilies;
    for (Result const &r : results)
    {
        std::string const id = r.instance;
        if (r.valid)
        {
            for (int i = 0; i < 3; ++i)
                if (r.status[i] != "pass")
                    byLeg[i][r.set + ": " + r.cause[i]].push_back(id);
        }
        else if (!r.rejected)
            accepted[r.set + ": " + r.family].push_back(id);
        else
            rejectedFamilies[r.set + ": " + r.family + (r.path ? "" : " (no path)")].push_back(id);
    }
    std::unique_ptr<std::ofstream> list;
    if (!failures.empty())
        list = std::make_unique<std::ofstream>(failures);
    md << "\n## Failing cases by cause\n";
    WriteGroups(md, list.get(), "XML leg", byLeg[0]);
    WriteGroups(md, list.get(), "JSON leg", byLeg[1]);
    WriteGroups(md, list.get(), "Fast Infoset leg", byLeg[2]);
    WriteGroups(md, list.get(), "Invalid instances accepted", accepted);
    md << "\n## Invalid instances: how they are rejected\n";
    WriteGroups(md, nullptr, "Rejections by message family", rejectedFamilies);
    if (out.empty())
        std::cout << md.str();
    else
    {
        std::ofstream file(out);
        file << md.str();
    }
    if (!expectOut.empty())
    {
        std::ofstream file(expectOut);
        file << "# cases that pass today: valid ones pass every leg, invalid ones are rejected\n";
        for (Result const &r : results)
            if (r.valid ? r.AllPass() : r.rejected)
                file << r.instance << "\n";
    }
    return 0;
}

// ---------------------------------------------------------------------------

int Run(std::vector<std::string> const &args)
{
    if (args.empty())
        throw std::invalid_argument("run needs a suite folder or a case list");
    std::string resultsFile, expect;
    int shard = 0, shards = 1, batchSize = 1;
    for (std::size_t i = 1; i < args.size(); ++i)
    {
        if (args[i] == "--results" && i + 1 < args.size())
            resultsFile = args[++i];
        else if (args[i] == "--expect" && i + 1 < args.size())
            expect = args[++i];
        else if (args[i] == "--batch" && i + 1 < args.size())
            batchSize = std::max(1, std::stoi(args[++i]));
        else if (args[i] == "--shard" && i + 1 < args.size())
        {
            std::string const s = args[++i];
            shard = std::stoi(s.substr(0, s.find('/')));
            shards = std::stoi(s.substr(s.find('/') + 1));
        }
        else
            throw std::invalid_argument("unknown argument " + args[i]);
    }
    std::string root;
    std::vector<Case> const cases = LoadCases(args[0], root);
    std::vector<std::string> order;
    std::map<std::string, std::vector<Case const *>> groups;
    for (Case const &c : cases)
    {
        auto &g = groups[c.group];
        if (g.empty())
            order.push_back(c.group);
        g.push_back(&c);
    }
    std::ofstream out;
    if (!resultsFile.empty())
        out.open(resultsFile);
    std::ostream &sink = resultsFile.empty() ? std::cout : out;
    std::string all;
    // Groups go to the shards in turn; a child process runs a batch of them.
    Batch batch;
    auto flush = [&] {
        if (batch.empty())
            return;
        std::string const lines = RunGroupsIsolated(root, batch);
        sink << lines << std::flush;
        all += lines;
        batch.clear();
    };
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        if (static_cast<int>(i % static_cast<std::size_t>(shards)) != shard)
            continue;
        batch.push_back(groups[order[i]]);
        if (static_cast<int>(batch.size()) >= batchSize)
            flush();
    }
    flush();
    if (expect.empty())
        return 0;
    // Every case that passed when the list was made must pass still.
    std::set<std::string> passing;
    std::istringstream in(all);
    for (std::string line; std::getline(in, line);)
    {
        std::vector<std::string> const f = Fields(line);
        bool const ok = f[0] == "V" ? f[4] == "pass" && f[6] == "pass" && f[8] == "pass" : f[4] == "1";
        if (ok)
            passing.insert(f[3]);
    }
    std::ifstream list(expect);
    int regressions = 0, expected = 0;
    for (std::string line; std::getline(list, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        ++expected;
        if (passing.count(line) == 0)
        {
            std::cerr << "REGRESSION: " << line << "\n";
            ++regressions;
        }
    }
    std::cerr << expected - regressions << " of " << expected << " cases that passed before pass now; "
              << passing.size() << " pass in all\n";
    return regressions == 0 ? 0 : 1;
}

// Shows the legs of one instance: the XML written, the JSON, and the XML
// that the JSON translates to.
int Show(std::vector<std::string> const &args)
{
    if (args.size() < 2)
        throw std::invalid_argument("show needs SCHEMA... INSTANCE");
    std::vector<std::string> const schemas(args.begin(), args.end() - 1);
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load(schemas, SuiteLocations());
    std::string const input = ReadFile(args.back());
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    try
    {
        CSmartPtr<CXmlObjectBase> object = set.Read(Bytes(input), context);
        std::string const written = object->ToXml(true, false, LF, context);
        std::cout << "--- XML\n" << written << "\n";
        CSerializationContext jsonContext;
        PrepareJsonContext(jsonContext, set.GetModel(), input);
        std::string const json = object->ToJson(true, LF, jsonContext);
        std::cout << "--- JSON\n" << json << "\n";
        CXmlDocument document(jsonContext);
        CBinaryData const xml = document.LoadJson(json.c_str());
        std::cout << "--- JSON as XML\n"
                  << std::string(reinterpret_cast<char const *>(xml.GetData()), xml.GetLength()) << "\n";
        CSmartPtr<CXmlObjectBase> back = set.Read(Bytes(json), jsonContext);
        std::cout << "--- XML from JSON\n" << back->ToXml(true, false, LF, context) << "\n";
    }
    catch (CMxException const &e)
    {
        std::cout << "--- failure\n" << e.GetFullMessage() << "\n";
    }
    return 0;
}

// ---------------------------------------------------------------------------
// Compiled classes: the sample's schemas generated as C++, compiled a batch
// of groups to one shared library, and held to the run-time back end: every
// output of every leg, and every message, must be the same bytes.

using ReadFunction = CSmartPtr<CXmlObjectBase> (*)(CBinaryData const &, CSerializationContext const &);
using Reader = std::function<CSmartPtr<CXmlObjectBase>(CBinaryData const &, CSerializationContext const &)>;

// Everything a back end gives for one instance, in order; a step that raises
// gives its message (and the path it names) instead of its output.
std::vector<std::pair<char const *, std::string>> Outputs(Reader const &read, MxCompiler::Model const &model,
                                                          std::string const &input)
{
    std::vector<std::pair<char const *, std::string>> out;
    auto failure = [](CMxException const &e) {
        std::string text = "raises: " + e.GetFullMessage();
        for (CMxException const *x = &e; x != nullptr; x = x->GetInnerException())
            if (!x->GetPath().empty())
                text += " @ " + x->GetPath();
        return text;
    };
    auto step = [&](char const *what, auto &&body) {
        try
        {
            out.emplace_back(what, body());
            return true;
        }
        catch (CMxException const &e)
        {
            out.emplace_back(what, failure(e));
        }
        catch (std::exception const &e)
        {
            out.emplace_back(what, std::string("raises: ") + e.what());
        }
        return false;
    };
    CSerializationContext const &context = CSerializationContext::GetDefaultContext();
    CSmartPtr<CXmlObjectBase> object;
    if (!step("reading", [&] {
            object = read(Bytes(input), context);
            return std::string();
        }))
        return out;
    step("the XML", [&] { return object->ToXml(true, false, LF, context); });
    std::string json;
    if (step("the JSON", [&] {
            CSerializationContext jsonContext;
            PrepareJsonContext(jsonContext, model, input);
            json = object->ToJson(false, LF, jsonContext);
            return json;
        }))
        step("the XML from JSON", [&] {
            CSerializationContext jsonContext;
            PrepareJsonContext(jsonContext, model, input);
            return read(Bytes(json), jsonContext)->ToXml(true, false, LF, context);
        });
    CBinaryData fi;
    if (step("the Fast Infoset", [&] {
            fi = object->ToFastInfosetStream(FInfoDecl_None, context);
            return std::string(reinterpret_cast<char const *>(fi.GetData()), fi.GetLength());
        }))
        step("the XML from Fast Infoset", [&] { return read(fi, context)->ToXml(true, false, LF, context); });
    return out;
}

std::string CompiledLine(Case const &c, char const *status, std::string const &cause)
{
    return "C\t" + c.set + "\t" + c.group + "\t" + c.instance + "\t" + (c.valid ? "1" : "0") + "\t" + status + "\t" +
           Clean(cause) + "\n";
}

// Where two texts part: a few bytes of each around the first difference.
std::string Parting(std::string const &a, std::string const &b)
{
    std::size_t i = 0;
    while (i < a.size() && i < b.size() && a[i] == b[i])
        ++i;
    std::size_t const from = i > 20 ? i - 20 : 0;
    return "at byte " + std::to_string(i) + ": run-time [" + a.substr(from, 60) + "] compiled [" + b.substr(from, 60) +
           "]";
}

std::string RunCompiledGroup(std::string const &root, std::vector<Case const *> const &cases, ReadFunction compiled)
{
    std::vector<std::string> schemas;
    for (std::string const &s : cases.front()->schemas)
        schemas.push_back((fs::path(root) / s).string());
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load(schemas);
    Reader const dynamic = [&set](CBinaryData const &b, CSerializationContext const &c) { return set.Read(b, c); };
    std::string out;
    for (Case const *c : cases)
    {
        std::string const input = ReadFile((fs::path(root) / c->instance).string());
        auto const expected = Outputs(dynamic, set.GetModel(), input);
        auto const actual = Outputs(compiled, set.GetModel(), input);
        std::string cause;
        for (std::size_t i = 0; i < expected.size() && cause.empty(); ++i)
        {
            if (i >= actual.size())
                cause = std::string("compiled classes stop before ") + expected[i].first;
            else if (expected[i].second != actual[i].second)
                cause = std::string(expected[i].first) + " differs " +
                        Parting(expected[i].second, actual[i].second);
        }
        if (cause.empty() && actual.size() > expected.size())
            cause = std::string("compiled classes go on to ") + actual[expected.size()].first;
        out += CompiledLine(*c, cause.empty() ? "same" : "differs", cause);
    }
    return out;
}

struct CompiledGroup
{
    std::vector<Case const *> cases;
    int number = 0;     // its C++ namespace XsdG<number>
    std::string refused; // why there is no code for it
};

// Runs the groups of one compiled batch in a child process; a crash there
// runs each group in a child of its own.
std::string RunCompiledBatch(std::string const &root, std::string const &library,
                             std::vector<CompiledGroup const *> const &groups)
{
    auto const body = [&] {
        std::string out;
        void *handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
        for (CompiledGroup const *g : groups)
        {
            std::string const symbol = "xsdtests_read_" + std::to_string(g->number);
            auto const read = handle ? reinterpret_cast<ReadFunction (*)()>(dlsym(handle, symbol.c_str())) : nullptr;
            if (read == nullptr)
            {
                std::string const why = handle ? "no entry " + symbol : std::string("dlopen: ") + dlerror();
                for (Case const *c : g->cases)
                    out += CompiledLine(*c, "differs", "runner: " + why);
                continue;
            }
            try
            {
                out += RunCompiledGroup(root, g->cases, read());
            }
            catch (std::exception const &e)
            {
                for (Case const *c : g->cases)
                    out += CompiledLine(*c, "differs", std::string("runner: ") + e.what());
            }
            catch (CMxException const &e)
            {
                for (Case const *c : g->cases)
                    out += CompiledLine(*c, "differs", "runner: " + e.GetMessage());
            }
        }
        return out;
    };
    std::string out, cause;
    if (RunInChild(kGroupSeconds * static_cast<unsigned>(groups.size()), body, out, cause))
        return out;
    if (groups.size() > 1)
    {
        out.clear();
        for (CompiledGroup const *g : groups)
            out += RunCompiledBatch(root, library, {g});
        return out;
    }
    out.clear();
    for (Case const *c : groups.front()->cases)
        out += CompiledLine(*c, "differs", cause);
    return out;
}

void WriteText(std::string const &path, std::string const &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file)
        throw std::runtime_error(path + ": cannot be written");
}

// Compiles a unity source to a shared library; returns the compiler's
// messages (empty when it compiled without a warning), and whether it built.
bool CompileLibrary(std::string const &compile, std::string const &source, std::string const &library,
                    std::string &messages)
{
    std::string const log = library + ".log";
    std::string const command = compile + " " + source + " -o " + library + " >" + log + " 2>&1";
    int const status = std::system(command.c_str());
    std::ifstream in(log);
    std::ostringstream text;
    text << in.rdbuf();
    messages = text.str();
    return status == 0;
}

// The sample: every group of sun and boeing, every 10th group of ms and
// every 20th of nist, in catalogue order.
bool Sampled(std::string const &set, int indexInSet)
{
    if (set == "sun" || set == "boeing")
        return true;
    if (set == "ms")
        return indexInSet % 10 == 0;
    if (set == "nist")
        return indexInSet % 20 == 0;
    return false;
}

int Compiled(std::vector<std::string> const &args)
{
    if (args.empty())
        throw std::invalid_argument("compiled needs the suite folder");
    std::string resultsFile, work, compile;
    int shard = 0, shards = 1, batchSize = 50;
    for (std::size_t i = 1; i < args.size(); ++i)
    {
        if (args[i] == "--results" && i + 1 < args.size())
            resultsFile = args[++i];
        else if (args[i] == "--work" && i + 1 < args.size())
            work = args[++i];
        else if (args[i] == "--compile" && i + 1 < args.size())
            compile = args[++i];
        else if (args[i] == "--batch" && i + 1 < args.size())
            batchSize = std::max(1, std::stoi(args[++i]));
        else if (args[i] == "--shard" && i + 1 < args.size())
        {
            std::string const s = args[++i];
            shard = std::stoi(s.substr(0, s.find('/')));
            shards = std::stoi(s.substr(s.find('/') + 1));
        }
        else
            throw std::invalid_argument("unknown argument " + args[i]);
    }
    if (work.empty() || compile.empty())
        throw std::invalid_argument("compiled needs --work DIR and --compile COMMAND");
    std::string root;
    std::vector<Case> const cases = LoadCases(args[0], root);
    std::vector<std::string> order;
    std::map<std::string, std::vector<Case const *>> byGroup;
    for (Case const &c : cases)
    {
        auto &g = byGroup[c.group];
        if (g.empty())
            order.push_back(c.group);
        g.push_back(&c);
    }
    std::vector<CompiledGroup> sample;
    std::map<std::string, int> seenInSet;
    for (std::string const &name : order)
    {
        std::vector<Case const *> const &g = byGroup[name];
        if (Sampled(g.front()->set, seenInSet[g.front()->set]++))
            sample.push_back({g, static_cast<int>(sample.size()) + 1, std::string()});
    }
    std::ofstream out;
    if (!resultsFile.empty())
        out.open(resultsFile);
    std::ostream &sink = resultsFile.empty() ? std::cout : out;
    std::vector<CompiledGroup *> mine;
    for (std::size_t i = 0; i < sample.size(); ++i)
        if (static_cast<int>(i % static_cast<std::size_t>(shards)) == shard)
            mine.push_back(&sample[i]);
    int warnings = 0, compiles = 0, differing = 0;
    for (std::size_t from = 0; from < mine.size(); from += static_cast<std::size_t>(batchSize))
    {
        std::vector<CompiledGroup *> batch(mine.begin() + static_cast<std::ptrdiff_t>(from),
                                           mine.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                              mine.size(), from + static_cast<std::size_t>(batchSize))));
        fs::path const dir = fs::path(work) / ("batch" + std::to_string(batch.front()->number));
        fs::create_directories(dir);
        std::string unity = "// The groups of one batch, each in its own namespace.\n";
        std::vector<CompiledGroup const *> built;
        for (CompiledGroup *g : batch)
        {
            std::vector<std::string> schemas;
            for (std::string const &s : g->cases.front()->schemas)
                schemas.push_back((fs::path(root) / s).string());
            try
            {
                MxCompiler::Model const model = MxCompiler::LoadSchemaModel(schemas);
                MxCompiler::CppOptions options;
                options.baseName = "Schema";
                options.cppNamespace = "XsdG" + std::to_string(g->number);
                options.schemaNames = g->cases.front()->schemas;
                fs::path const sub = dir / ("g" + std::to_string(g->number));
                fs::create_directories(sub);
                try
                {
                    for (MxCompiler::GeneratedFile const &file : MxCompiler::GenerateCpp(model, options))
                        WriteText((sub / file.name).string(), file.text);
                }
                catch (std::exception const &e)
                {
                    g->refused = std::string("differs\tgenerator: ") + e.what();
                    continue;
                }
            }
            catch (std::exception const &e)
            {
                g->refused = "refused\tschema not expressible: " + SchemaFamily(e.what());
                continue;
            }
            catch (CMxException const &e)
            {
                g->refused = "refused\tschema not expressible: " + Family(e.GetMessage());
                continue;
            }
            std::string const ns = "XsdG" + std::to_string(g->number);
            unity += "#include \"g" + std::to_string(g->number) + "/Schema.cpp\"\n"
                     "extern \"C\" auto xsdtests_read_" + std::to_string(g->number) + "() { return &" + ns +
                     "::Read; }\n";
            built.push_back(g);
        }
        std::string const library = (dir / "batch.so").string();
        std::string messages;
        bool ok = built.empty() || (WriteText((dir / "unity.cpp").string(), unity),
                                    CompileLibrary(compile, (dir / "unity.cpp").string(), library, messages));
        compiles += built.empty() ? 0 : 1;
        if (!messages.empty())
        {
            ++warnings;
            std::cerr << "compiling " << dir.string() << ":\n" << messages.substr(0, 4000) << "\n";
        }
        std::string lines;
        for (CompiledGroup *g : batch)
            if (!g->refused.empty())
            {
                std::string const status = g->refused.substr(0, g->refused.find('\t'));
                for (Case const *c : g->cases)
                    lines += CompiledLine(*c, status.c_str(), g->refused.substr(g->refused.find('\t') + 1));
            }
        if (!ok)
            for (CompiledGroup const *g : built)
                for (Case const *c : g->cases)
                    lines += CompiledLine(*c, "differs", "compile: " + Family(messages));
        else if (!built.empty())
            lines += RunCompiledBatch(root, library, built);
        sink << lines << std::flush;
        for (std::size_t at = lines.find("\tdiffers\t"); at != std::string::npos;
             at = lines.find("\tdiffers\t", at + 1))
            ++differing;
    }
    std::cerr << "shard " << shard << ": " << mine.size() << " groups, " << compiles << " libraries compiled, "
              << warnings << " with compiler messages, " << differing << " cases differ\n";
    return warnings == 0 && differing == 0 ? 0 : 1;
}

int CompiledReport(std::vector<std::string> const &files)
{
    struct Count
    {
        long groups = 0, cases = 0, same = 0, differs = 0, refused = 0;
    };
    std::map<std::string, Count> bySet;
    std::map<std::string, std::set<std::string>> groups;
    Groups causes;
    for (std::string const &file : files)
    {
        std::ifstream in(file);
        for (std::string line; std::getline(in, line);)
        {
            std::vector<std::string> const f = Fields(line);
            if (f.size() != 7 || f[0] != "C")
                throw std::runtime_error(file + ": bad line: " + line);
            Count &n = bySet[f[1]];
            groups[f[1]].insert(f[2]);
            ++n.cases;
            if (f[5] == "same")
                ++n.same;
            else if (f[5] == "refused")
                ++n.refused;
            else
            {
                ++n.differs;
                causes[f[1] + ": " + Family(f[6])].push_back(f[3]);
            }
        }
    }
    std::cout << "| set | groups | cases | same bytes and messages | differ | schema refused by both |\n"
              << "|---|---:|---:|---:|---:|---:|\n";
    Count all;
    for (char const *set : {"nist", "ms", "sun", "boeing"})
    {
        if (bySet.count(set) == 0)
            continue;
        Count const &n = bySet[set];
        long const g = static_cast<long>(groups[set].size());
        std::cout << Row({set, std::to_string(g), std::to_string(n.cases), std::to_string(n.same),
                          std::to_string(n.differs), std::to_string(n.refused)});
        all.groups += g, all.cases += n.cases, all.same += n.same, all.differs += n.differs, all.refused += n.refused;
    }
    std::cout << Row({"**all**", std::to_string(all.groups), std::to_string(all.cases), std::to_string(all.same),
                      std::to_string(all.differs), std::to_string(all.refused)});
    WriteGroups(std::cout, nullptr, "Compiled classes that differ from the run-time back end", causes);
    return 0;
}

int Cases(std::vector<std::string> const &args)
{
    if (args.size() != 2)
        throw std::invalid_argument("cases needs ROOT and OUT");
    int missing = 0;
    std::vector<Case> const cases = ReadSuite(args[0], missing);
    WriteCases(args[1], cases);
    std::cerr << cases.size() << " cases; " << missing << " instance documents absent\n";
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    try
    {
        xercesc::XMLPlatformUtils::Initialize();
        if (!args.empty() && args[0] == "run")
        {
            int const status = Run({args.begin() + 1, args.end()});
            xercesc::XMLPlatformUtils::Terminate();
            return status;
        }
        if (!args.empty() && args[0] == "cases")
            return Cases({args.begin() + 1, args.end()});
        if (!args.empty() && args[0] == "show")
            return Show({args.begin() + 1, args.end()});
        if (!args.empty() && args[0] == "report")
            return Report({args.begin() + 1, args.end()});
        if (!args.empty() && args[0] == "compiled")
        {
            int const status = Compiled({args.begin() + 1, args.end()});
            xercesc::XMLPlatformUtils::Terminate();
            return status;
        }
        if (!args.empty() && args[0] == "compiled-report")
            return CompiledReport({args.begin() + 1, args.end()});
        std::cerr << "usage: xsdtests run ROOT|CASES.tsv [--results OUT.tsv] [--shard I/N] [--expect FILE]\n"
                     "       xsdtests compiled ROOT|CASES.tsv --work DIR --compile COMMAND [--results OUT.tsv]\n"
                     "                [--shard I/N] [--batch GROUPS]\n"
                     "       xsdtests compiled-report RESULTS...\n"
                     "       xsdtests cases ROOT OUT.tsv\n"
                     "       xsdtests report [--out REPORT.md] [--failures LIST] [--write-expect FILE] RESULTS...\n";
        return 2;
    }
    catch (std::exception const &e)
    {
        std::cerr << "xsdtests: " << e.what() << "\n";
        return 2;
    }
}
