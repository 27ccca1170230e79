#include "json/JsonStrictReader.h"

#include "document/XmlDocument.h"
#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace MxXmlLib
{

namespace
{
char const kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

bool IsNameStart(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80;
}

bool IsNameChar(unsigned char c)
{
    return IsNameStart(c) || IsDigit(static_cast<char>(c)) || c == '-' || c == '.';
}

// An XML name with at most one colon, not at either end: what Expat takes in
// namespace mode.
bool IsQualifiedName(char const *name, std::size_t length)
{
    bool colon = false;
    bool start = true;
    for (std::size_t i = 0; i < length; ++i)
    {
        unsigned char const c = static_cast<unsigned char>(name[i]);
        if (c == ':')
        {
            if (colon || start)
                return false;
            colon = true;
            start = true;
            continue;
        }
        if (start ? !IsNameStart(c) : !IsNameChar(c))
            return false;
        start = false;
    }
    return !start;
}

void AppendUtf8(std::string &out, std::uint32_t code)
{
    if (code < 0x80)
        out += static_cast<char>(code);
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else if (code < 0x10000)
    {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Bytes that XML text or attribute values cannot carry as they are.
struct XmlSpecialBytes
{
    bool text[256] = {};
    bool attribute[256] = {};
    constexpr XmlSpecialBytes()
    {
        for (unsigned char c : {'&', '<', '>', '\r'})
            text[c] = attribute[c] = true;
        for (unsigned char c : {'"', '\n', '\t'})
            attribute[c] = true;
    }
};
constexpr XmlSpecialBytes kXmlSpecial;

class CStrictReader
{
public:
    CStrictReader(std::string const &json, std::string &xml)
        : m_begin(json.data()), m_p(json.data()), m_end(json.data() + json.size()), m_out(xml), m_steps(0)
    {
    }

    void ReadDocument(std::string const &rootName);

private:
    struct Step
    {
        std::string key;
        long index; // -1 for a key
    };

    [[noreturn]] void Fail(char const *message);
    std::string Path() const;
    void SkipSpace()
    {
        while (m_p != m_end && (*m_p == ' ' || *m_p == '\n' || *m_p == '\r' || *m_p == '\t'))
            ++m_p;
    }
    char Peek() const { return m_p == m_end ? '\0' : *m_p; }
    void Expect(char c, char const *message);

    std::size_t PushKey();
    void PopStep() { --m_steps; }
    // A step for the items of an array, counted from 0 in the error path.
    std::size_t PushItem()
    {
        if (m_steps == m_stepStore.size())
            m_stepStore.emplace_back();
        m_stepStore[m_steps].index = 0;
        return m_steps++;
    }
    // After an item: true when another follows (the ',' is taken and the
    // item's index counts on), false at the closing ']' (taken too).
    bool NextItem(std::size_t item)
    {
        SkipSpace();
        if (Peek() == ']')
        {
            ++m_p;
            return false;
        }
        if (Peek() != ',')
            Fail("Strict JSON: expected ',' or ']' in an array");
        ++m_p;
        ++m_stepStore[item].index;
        return true;
    }
    void ReadString(std::string &out);
    void ReadHex4(std::uint32_t &code);
    // A string, number or literal as the text it gives; false for anything else.
    bool ReadScalar(std::string &out);
    void ReadLiteral(char const *word, std::size_t length);
    void ReadNumber(std::string &out);

    void ReadElement(std::size_t step, std::size_t depth);
    void ReadObject(std::size_t step, std::size_t depth);
    void ReadChildKey(std::size_t step, std::size_t depth, bool &startOpen);
    void ReadSequence(std::size_t depth, bool &startOpen);
    void CheckName(std::string const &name, std::size_t from);
    void CloseStart(bool &startOpen);
    void WriteEscaped(std::string const &text, bool attribute);

    char const *m_begin;
    char const *m_p;
    char const *m_end;
    std::string &m_out;
    std::vector<Step> m_stepStore; // capacity reused; m_steps are in use
    std::size_t m_steps;
    std::string m_text;
};

void CStrictReader::Fail(char const *message)
{
    int line = 1;
    int position = 0;
    for (char const *p = m_begin; p < m_p && p < m_end; ++p)
    {
        ++position;
        if (*p == '\n')
        {
            ++line;
            position = 0;
        }
    }
    throw CMxValidationException(FormatString("%s at line %d, position %d.", message, line, position), Path());
}

std::string CStrictReader::Path() const
{
    std::string path = "$";
    for (std::size_t i = 0; i < m_steps; ++i)
    {
        Step const &step = m_stepStore[i];
        if (step.index >= 0)
            path += '[' + std::to_string(step.index) + ']';
        else
            path += '.' + step.key;
    }
    return path;
}

void CStrictReader::Expect(char c, char const *message)
{
    SkipSpace();
    if (Peek() != c)
        Fail(message);
    ++m_p;
}

std::size_t CStrictReader::PushKey()
{
    if (m_steps == m_stepStore.size())
        m_stepStore.emplace_back();
    Step &step = m_stepStore[m_steps];
    step.index = -1;
    ReadString(step.key);
    return m_steps++;
}

void CStrictReader::ReadHex4(std::uint32_t &code)
{
    code = 0;
    for (int i = 0; i < 4; ++i, ++m_p)
    {
        if (m_p == m_end)
            Fail("Strict JSON: the text ends inside a \\u escape");
        char const c = *m_p;
        code <<= 4;
        if (IsDigit(c))
            code |= static_cast<std::uint32_t>(c - '0');
        else if (c >= 'a' && c <= 'f')
            code |= static_cast<std::uint32_t>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            code |= static_cast<std::uint32_t>(c - 'A' + 10);
        else
            Fail("Strict JSON: a \\u escape needs four hexadecimal digits");
    }
}

void CStrictReader::ReadString(std::string &out)
{
    // At the opening quotation mark.
    out.clear();
    ++m_p;
    for (;;)
    {
        char const *run = m_p;
        while (m_p != m_end && *m_p != '"' && *m_p != '\\' && static_cast<unsigned char>(*m_p) >= 0x20)
            ++m_p;
        out.append(run, static_cast<std::size_t>(m_p - run));
        if (m_p == m_end)
            Fail("Strict JSON: the text ends inside a string");
        char const c = *m_p;
        if (c == '"')
        {
            ++m_p;
            return;
        }
        if (c != '\\')
            Fail("Strict JSON: a control character must be escaped in a string");
        if (++m_p == m_end)
            Fail("Strict JSON: the text ends inside a string");
        switch (*m_p++)
        {
        case '"': out += '"'; break;
        case '\\': out += '\\'; break;
        case '/': out += '/'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'u':
        {
            std::uint32_t code;
            ReadHex4(code);
            if (code >= 0xDC00 && code <= 0xDFFF)
                Fail("Strict JSON: a low surrogate without a high one");
            if (code >= 0xD800 && code <= 0xDBFF)
            {
                if (m_end - m_p < 2 || m_p[0] != '\\' || m_p[1] != 'u')
                    Fail("Strict JSON: a high surrogate without a low one");
                m_p += 2;
                std::uint32_t low;
                ReadHex4(low);
                if (low < 0xDC00 || low > 0xDFFF)
                    Fail("Strict JSON: a high surrogate without a low one");
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            }
            AppendUtf8(out, code);
            break;
        }
        default:
            --m_p;
            Fail("Strict JSON: an invalid escape in a string");
        }
    }
}

void CStrictReader::ReadLiteral(char const *word, std::size_t length)
{
    if (static_cast<std::size_t>(m_end - m_p) < length || std::memcmp(m_p, word, length) != 0)
        Fail("Strict JSON: expected a value");
    m_p += length;
}

void CStrictReader::ReadNumber(std::string &out)
{
    char const *start = m_p;
    if (Peek() == '-')
        ++m_p;
    if (Peek() == '0')
        ++m_p;
    else if (IsDigit(Peek()))
        while (IsDigit(Peek()))
            ++m_p;
    else
        Fail("Strict JSON: expected a digit");
    if (Peek() == '.')
    {
        ++m_p;
        if (!IsDigit(Peek()))
            Fail("Strict JSON: expected a digit");
        while (IsDigit(Peek()))
            ++m_p;
    }
    if (Peek() == 'e' || Peek() == 'E')
    {
        ++m_p;
        if (Peek() == '+' || Peek() == '-')
            ++m_p;
        if (!IsDigit(Peek()))
            Fail("Strict JSON: expected a digit");
        while (IsDigit(Peek()))
            ++m_p;
    }
    out.assign(start, static_cast<std::size_t>(m_p - start));
}

bool CStrictReader::ReadScalar(std::string &out)
{
    SkipSpace();
    switch (Peek())
    {
    case '"':
        ReadString(out);
        return true;
    case 't':
        ReadLiteral("true", 4);
        out.assign("true", 4);
        return true;
    case 'f':
        ReadLiteral("false", 5);
        out.assign("false", 5);
        return true;
    case '-':
    case '0': case '1': case '2': case '3': case '4':
    case '5': case '6': case '7': case '8': case '9':
        ReadNumber(out);
        return true;
    default:
        return false;
    }
}

void CStrictReader::WriteEscaped(std::string const &text, bool attribute)
{
    bool const *special = attribute ? kXmlSpecial.attribute : kXmlSpecial.text;
    char const *p = text.data();
    char const *const end = p + text.size();
    char const *run = p;
    for (; p != end; ++p)
    {
        unsigned char const c = static_cast<unsigned char>(*p);
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            Fail("Strict JSON: the text holds a control character that XML cannot carry");
        if (!special[c])
            continue;
        m_out.append(run, static_cast<std::size_t>(p - run));
        run = p + 1;
        switch (c)
        {
        case '&': m_out.append("&amp;", 5); break;
        case '<': m_out.append("&lt;", 4); break;
        case '>': m_out.append("&gt;", 4); break;
        case '"': m_out.append("&quot;", 6); break;
        case '\r': m_out.append("&#13;", 5); break;
        case '\n': m_out.append("&#10;", 5); break;
        case '\t': m_out.append("&#9;", 4); break;
        }
    }
    m_out.append(run, static_cast<std::size_t>(end - run));
}

void CStrictReader::CheckName(std::string const &name, std::size_t from)
{
    if (!IsQualifiedName(name.data() + from, name.size() - from))
        Fail("Strict JSON: the key is no XML name");
}

void CStrictReader::CloseStart(bool &startOpen)
{
    if (startOpen)
    {
        m_out += '>';
        startOpen = false;
    }
}

void CStrictReader::ReadDocument(std::string const &rootName)
{
    SkipSpace();
    std::size_t step;
    if (!rootName.empty())
    {
        if (m_stepStore.empty())
            m_stepStore.emplace_back();
        m_stepStore[0].key = rootName;
        m_stepStore[0].index = -1;
        step = m_steps++;
        CheckName(rootName, 0);
        ReadElement(step, 1);
    }
    else
    {
        Expect('{', "Strict JSON: expected '{' to open the document");
        SkipSpace();
        if (Peek() != '"')
            Fail("Strict JSON: expected the key of the root element");
        step = PushKey();
        CheckName(m_stepStore[step].key, 0);
        Expect(':', "Strict JSON: expected ':' after a key");
        ReadElement(step, 1);
        SkipSpace();
        if (Peek() == ',')
            Fail("Strict JSON: a document has one key, its root element");
        Expect('}', "Strict JSON: expected '}' to close the document");
    }
    PopStep();
    SkipSpace();
    if (m_p != m_end)
        Fail("Strict JSON: text follows the document");
}

// The value of one element, named by the key of `step`.
void CStrictReader::ReadElement(std::size_t step, std::size_t depth)
{
    if (depth > CXmlDocument::kMaxElementDepth)
        Fail("Strict JSON: elements nest deeper than the XML reader takes");
    SkipSpace();
    char const c = Peek();
    if (c == '{')
    {
        ReadObject(step, depth);
        return;
    }
    if (c == 'n')
    {
        ReadLiteral("null", 4);
        std::string const &name = m_stepStore[step].key;
        // A prefix of its own, so that the element's name keeps its binding.
        char const *prefix = name.compare(0, 4, "xsi:") == 0 ? "xsi_" : "xsi";
        m_out += '<';
        m_out += name;
        m_out += FormatString(" xmlns:%s=\"%s\" %s:nil=\"true\"/>", prefix, kXsiNamespace, prefix);
        return;
    }
    if (c == '[')
        Fail("Strict JSON: an array holds the repeats of a key and cannot be an element's value");
    if (!ReadScalar(m_text))
        Fail("Strict JSON: expected a value");
    std::string const &name = m_stepStore[step].key;
    m_out += '<';
    m_out += name;
    if (m_text.empty())
    {
        m_out.append("/>", 2);
        return;
    }
    m_out += '>';
    WriteEscaped(m_text, false);
    m_out.append("</", 2);
    m_out += m_stepStore[step].key;
    m_out += '>';
}

void CStrictReader::ReadObject(std::size_t step, std::size_t depth)
{
    ++m_p;
    m_out += '<';
    m_out += m_stepStore[step].key;
    bool startOpen = true;
    SkipSpace();
    if (Peek() == '}')
        ++m_p;
    else
        for (;;)
        {
            SkipSpace();
            if (Peek() != '"')
                Fail("Strict JSON: expected a key");
            std::size_t const member = PushKey();
            Expect(':', "Strict JSON: expected ':' after a key");
            std::string const &key = m_stepStore[member].key;
            if (!key.empty() && key[0] == '@')
            {
                if (!startOpen)
                    Fail("Strict JSON: an attribute follows the content of its element");
                CheckName(key, 1);
                if (!ReadScalar(m_text))
                    Fail("Strict JSON: an attribute takes a string, number or boolean");
                m_out += ' ';
                m_out.append(key, 1, std::string::npos);
                m_out.append("=\"", 2);
                WriteEscaped(m_text, true);
                m_out += '"';
            }
            else if (key == "#text")
            {
                if (!ReadScalar(m_text))
                    Fail("Strict JSON: text takes a string, number or boolean");
                CloseStart(startOpen);
                WriteEscaped(m_text, false);
            }
            else if (key == "#seq")
                ReadSequence(depth, startOpen);
            else
                ReadChildKey(member, depth, startOpen);
            PopStep();
            SkipSpace();
            if (Peek() == '}')
            {
                ++m_p;
                break;
            }
            if (Peek() != ',')
                Fail("Strict JSON: expected ',' or '}' in an object");
            ++m_p;
        }
    if (startOpen)
    {
        m_out.append("/>", 2);
        return;
    }
    m_out.append("</", 2);
    m_out += m_stepStore[step].key;
    m_out += '>';
}

// A child key: one element, or an array of its repeats.
void CStrictReader::ReadChildKey(std::size_t member, std::size_t depth, bool &startOpen)
{
    std::string const &key = m_stepStore[member].key;
    if (key.empty() || key[0] == '#')
        Fail("Strict JSON: unknown key");
    CheckName(key, 0);
    CloseStart(startOpen);
    SkipSpace();
    if (Peek() != '[')
    {
        ReadElement(member, depth + 1);
        return;
    }
    ++m_p;
    SkipSpace();
    if (Peek() == ']')
        Fail("Strict JSON: an array of repeats cannot be empty");
    std::size_t const item = PushItem();
    for (;;)
    {
        // The item is named by the key of the array.
        m_stepStore[item].key = m_stepStore[member].key;
        ReadElement(item, depth + 1);
        if (!NextItem(item))
            break;
    }
    PopStep();
}

// "#seq": children and text in document order, one key per entry.
void CStrictReader::ReadSequence(std::size_t depth, bool &startOpen)
{
    CloseStart(startOpen);
    Expect('[', "Strict JSON: \"#seq\" takes an array");
    std::size_t const item = PushItem();
    m_stepStore[item].key.clear();
    SkipSpace();
    if (Peek() == ']')
        Fail("Strict JSON: \"#seq\" cannot be empty");
    for (;;)
    {
        Expect('{', "Strict JSON: an entry of \"#seq\" is an object with one key");
        SkipSpace();
        if (Peek() != '"')
            Fail("Strict JSON: an entry of \"#seq\" is an object with one key");
        std::size_t const member = PushKey();
        Expect(':', "Strict JSON: expected ':' after a key");
        if (m_stepStore[member].key == "#text")
        {
            if (!ReadScalar(m_text))
                Fail("Strict JSON: text takes a string, number or boolean");
            WriteEscaped(m_text, false);
        }
        else
        {
            std::string const &key = m_stepStore[member].key;
            if (key.empty() || key[0] == '#' || key[0] == '@')
                Fail("Strict JSON: an entry of \"#seq\" holds an element or text");
            CheckName(key, 0);
            SkipSpace();
            if (Peek() == '[')
                Fail("Strict JSON: an entry of \"#seq\" holds one element");
            ReadElement(member, depth + 1);
        }
        PopStep();
        Expect('}', "Strict JSON: an entry of \"#seq\" is an object with one key");
        if (!NextItem(item))
            break;
    }
    PopStep();
}
} // namespace

std::string ConvertStrictJsonToXml(std::string const &json, CJsonContext const &options)
{
    std::string xml;
    xml.reserve(json.size() + json.size() / 4);
    CStrictReader reader(json, xml);
    reader.ReadDocument(options.GetRootElementName());
    return xml;
}

} // namespace MxXmlLib
