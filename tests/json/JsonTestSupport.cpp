#include "JsonTestSupport.h"

#include "json/JsonTextWriter.h"
#include "runtime/TextStream.h"

#include <expat.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

using namespace MxXmlLib;

namespace MxJsonTest
{

namespace
{
struct Node
{
    std::string uri, local, text;
    std::vector<std::pair<std::string, std::string>> declarations; // prefix, uri
    std::vector<std::vector<std::string>> attributes;               // uri, local, value
    std::vector<std::unique_ptr<Node>> children;
};

struct Builder
{
    std::unique_ptr<Node> root;
    std::vector<Node *> open;
    std::vector<std::pair<std::string, std::string>> pendingDeclarations;
};

void SplitName(char const *name, std::string &uri, std::string &local)
{
    std::string const n = name;
    std::size_t const bar = n.find('|');
    uri = bar == std::string::npos ? "" : n.substr(0, bar);
    local = bar == std::string::npos ? n : n.substr(bar + 1);
}

void XMLCALL OnStart(void *data, XML_Char const *name, XML_Char const **attributes)
{
    auto *b = static_cast<Builder *>(data);
    auto node = std::make_unique<Node>();
    SplitName(name, node->uri, node->local);
    node->declarations.swap(b->pendingDeclarations);
    for (XML_Char const **a = attributes; *a; a += 2)
    {
        std::string uri, local;
        SplitName(a[0], uri, local);
        node->attributes.push_back({uri, local, a[1]});
    }
    Node *raw = node.get();
    if (b->open.empty())
        b->root = std::move(node);
    else
        b->open.back()->children.push_back(std::move(node));
    b->open.push_back(raw);
}

void XMLCALL OnEnd(void *data, XML_Char const *)
{
    static_cast<Builder *>(data)->open.pop_back();
}

void XMLCALL OnText(void *data, XML_Char const *text, int length)
{
    auto *b = static_cast<Builder *>(data);
    if (!b->open.empty())
        b->open.back()->text.append(text, static_cast<std::size_t>(length));
}

void XMLCALL OnDeclaration(void *data, XML_Char const *prefix, XML_Char const *uri)
{
    static_cast<Builder *>(data)->pendingDeclarations.emplace_back(prefix ? prefix : "", uri ? uri : "");
}

ItemType TypeOf(std::string const &value)
{
    if (value == "true" || value == "false")
        return ItemType_boolean;
    std::size_t i = value[0] == '-' ? 1 : 0;
    if (i == value.size())
        return ItemType_string;
    for (; i < value.size(); ++i)
        if (value[i] < '0' || value[i] > '9')
            return ItemType_string;
    return ItemType_i4;
}

bool IsBlank(std::string const &text)
{
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

void Replay(Node const &node, CXmlWriter &writer, bool isRoot)
{
    if (isRoot)
        for (auto const &d : node.declarations)
            d.first.empty() ? writer.SetDefaultNamespace(d.second) : writer.AddNamespace(d.first, d.second);
    writer.StartElement(node.local, node.uri);
    if (!isRoot)
        for (auto const &d : node.declarations)
            d.first.empty() ? writer.SetDefaultNamespace(d.second) : writer.AddNamespace(d.first, d.second);
    for (auto const &a : node.attributes)
        writer.WriteAttribute(a[1], a[0], a[2], TypeOf(a[2]));
    if (!IsBlank(node.text))
        writer.WriteText(node.text, TypeOf(node.text), false);
    using Context = CXmlWriter::CXmlWriterContext;
    for (std::size_t i = 0; i < node.children.size();)
    {
        std::size_t run = i + 1;
        while (run < node.children.size() && node.children[run]->local == node.children[i]->local)
            ++run;
        bool const collection = run - i >= 2;
        if (collection)
            writer.GetCurrentContext()->ArrayState = Context::ArrayPending;
        for (; i < run; ++i)
            Replay(*node.children[i], writer, false);
        if (collection)
            writer.GetCurrentContext()->ArrayState = Context::ArrayClosing;
    }
    writer.EndElement();
}
} // namespace

void ReplayXml(std::string const &xml, CXmlWriter &writer)
{
    Builder builder;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreateNS(nullptr, '|'),
                                                                   XML_ParserFree);
    XML_SetUserData(parser.get(), &builder);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    XML_SetStartNamespaceDeclHandler(parser.get(), OnDeclaration);
    if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK)
        throw std::runtime_error(XML_ErrorString(XML_GetErrorCode(parser.get())));
    Replay(*builder.root, writer, true);
}

std::string XmlToJsonText(std::string const &xml, int roundTrip, bool formatted)
{
    CTextStream stream;
    CJsonTextWriter writer(&stream);
    stream.Start();
    writer.SetFormatted(formatted);
    writer.SetRoundTrip(static_cast<JsonRoundTrip>(roundTrip));
    writer.WriteDocumentStart();
    ReplayXml(xml, writer);
    writer.WriteDocumentEnd();
    stream.End();
    return stream.TextAsString();
}

std::string ReadFile(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteFile(std::string const &path, std::string const &text)
{
    std::ofstream out(path, std::ios::binary);
    out << text;
}

std::string CheckJsonFiles(std::string const &fileList)
{
    std::string const command = "python3 " MX_TEST_DATA_DIR "/check_json.py " + fileList + " 2>/dev/null";
    std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe)
        return "";
    std::string output;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe.get()))
        output.append(buffer, n);
    return output;
}

} // namespace MxJsonTest
