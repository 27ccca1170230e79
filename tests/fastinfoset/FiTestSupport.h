#pragma once

// Shared pieces of the Fast Infoset tests: files, hex text, a probe object
// that writes given elements and attributes with their ItemType, and the
// Java peer (peer/FiPeer.java, built by the tests' CMakeLists) run through
// popen.

#include "MxXmlLib.h"
#include "collections/Element.h"
#include "document/XmlWriter.h"
#include "fastinfoset/FastInfosetContext.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <utility>
#include <vector>

namespace MxFiTest
{

namespace fs = std::filesystem;

inline std::string ReadFile(fs::path const &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void WriteFile(fs::path const &path, std::string const &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out << bytes;
}

inline std::string Bytes(MxXmlLib::CBinaryData const &data)
{
    return data.GetLength() ? std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength())
                            : std::string();
}

// Upper-case hex, 16 octets a line, blanks between octets.
inline std::string Hex(std::string const &bytes)
{
    static char const digits[] = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        auto const c = static_cast<unsigned char>(bytes[i]);
        text += digits[c >> 4];
        text += digits[c & 15];
        text += (i % 16 == 15 || i + 1 == bytes.size()) ? '\n' : ' ';
    }
    return text;
}

// Hex digits to bytes; everything else is a separator.
inline std::string Unhex(std::string const &text)
{
    std::string bytes;
    int high = -1;
    for (char c : text)
    {
        int const v = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
        if (v < 0)
            continue;
        if (high < 0)
            high = v;
        else
        {
            bytes += static_cast<char>(high * 16 + v);
            high = -1;
        }
    }
    return bytes;
}

inline MxXmlLib::CBinaryData Data(std::string const &bytes)
{
    MxXmlLib::CBinaryData data;
    data.SetBuffer(reinterpret_cast<unsigned char const *>(bytes.data()), static_cast<unsigned long>(bytes.size()));
    return data;
}

template <typename E = MxXmlLib::CMxException> std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (E const &e)
    {
        return e.GetMessage();
    }
    return "no error";
}

// Writes <root> with the given attributes and child elements, each with its
// ItemType, through whatever writer it is given.
class CTypedProbe : public MxXmlLib::CXmlObjectBase
{
public:
    struct Item
    {
        std::string name;
        std::string value;
        MxXmlLib::ItemType type;
    };
    CTypedProbe(std::string root, std::vector<Item> attributes, std::vector<Item> elements)
        : m_root(std::move(root)), m_attributes(std::move(attributes)), m_elements(std::move(elements))
    {
        SetElementName(m_root.c_str());
    }
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return ""; }

protected:
    std::string GetTargetNamespace() const override { return ""; }
    void ToXml_Int(MxXmlLib::CXmlWriter *writer, bool, char const *, MxXmlLib::CSerializationContext const &,
                   bool) const override
    {
        writer->StartElement(m_root, "");
        for (Item const &a : m_attributes)
            writer->WriteAttribute(a.name, "", a.value, a.type);
        for (Item const &e : m_elements)
        {
            writer->StartElement(e.name, "");
            writer->WriteText(e.value, e.type, false);
            writer->EndElement();
        }
        writer->EndElement();
    }
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &, bool) override
    {
        return cursor;
    }

private:
    std::string m_root;
    std::vector<Item> m_attributes;
    std::vector<Item> m_elements;
};

// The peer's exit code and standard output.
struct PeerResult
{
    int code;
    std::string output;
};

inline PeerResult RunPeer(std::string const &arguments)
{
    std::string const command = std::string("'") + MX_FI_PEER + "' " + arguments + " 2>/dev/null";
    PeerResult result{-1, ""};
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return result;
    char buffer[4096];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0)
        result.output.append(buffer, got);
    int const status = pclose(pipe);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

// Empty when the peer runs; otherwise why not. The build leaves the peer
// out without a JDK or the codec's jar; the test command requires it
// (MX_FI_PEER_REQUIRED), and then its absence is a failure, not a skip.
inline std::string PeerUnavailable()
{
    static std::string const reason = [] {
        if (!fs::exists(MX_FI_PEER))
            return std::string("the Fast Infoset peer was not built (needs a JDK and libfastinfoset-java): " MX_FI_PEER);
        if (RunPeer("help").code != 0)
            return std::string("the Fast Infoset peer does not run: " MX_FI_PEER);
        return std::string();
    }();
    return reason;
}

// Documents whose names, attribute values and character chunks cross every
// index and length boundary of the format. "indexes-N": N distinct element
// names, attribute names, values and texts, each used twice, so that the
// second use goes by index (one-, two- and three-octet index forms meet at
// 16/17, 32/33, 64/65 and 2080/2081). "lengths-L": a name, value and text of
// L octets, twice (the length prefixes change at 2/3, 8/9, 64/65, 320/321).
inline std::vector<std::pair<std::string, std::string>> BoundaryDocuments()
{
    std::vector<std::pair<std::string, std::string>> documents;
    for (int count : {16, 17, 32, 33, 64, 65, 2080, 2081})
    {
        std::string xml = "<r>";
        for (int use = 0; use < 2; ++use)
            for (int k = 0; k < count; ++k)
            {
                std::string const n = std::to_string(k);
                xml += "<e" + n + " a" + n + "=\"v" + n + "\">t" + n + "</e" + n + ">";
            }
        documents.emplace_back("indexes-" + std::to_string(count), xml + "</r>");
    }
    for (std::size_t length : {2, 3, 8, 9, 64, 65, 320, 321})
    {
        std::string const name(length, 'n'), value(length, 'v'), text(length, 't');
        std::string const one = "<" + name + " x=\"" + value + "\">" + text + "</" + name + ">";
        documents.emplace_back("lengths-" + std::to_string(length), "<r>" + one + one + "</r>");
    }
    return documents;
}

// Our Fast Infoset of an XML text, by way of the untyped tree.
inline std::string FiOf(std::string const &xml, MxXmlLib::FInfoDecl declaration = MxXmlLib::FInfoDecl_None,
                        MxXmlLib::CompressionType compression = MxXmlLib::CompressionNone, bool readsBackAsXml = false)
{
    MxXmlLib::CSmartPtr<MxXmlLib::CElement> element(new MxXmlLib::CElement("unread"));
    element->FromXml(xml.c_str());
    MxXmlLib::CSerializationContext context;
    context.GetFIContext().SetReadsBackAsXml(readsBackAsXml);
    return Bytes(element->ToFastInfosetStream(declaration, context, compression));
}

} // namespace MxFiTest
