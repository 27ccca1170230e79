#include "json/JsonTextReader.h"

#include "runtime/CharClass.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "values/BinaryData.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
// Handlers see values as C strings: text after a zero byte is cut off.
std::string const &UpToZero(std::string &text)
{
    std::size_t const zero = text.find('\0');
    if (zero != std::string::npos)
        text.resize(zero);
    return text;
}
} // namespace

CJsonTextReader::CJsonTextReader(std::string const *text, IJsonReaderHandler *handler, std::int32_t depthLimit)
    : m_handler(handler), m_depthLimit(depthLimit), m_allowComments(true), m_text(text), m_index(0),
      m_current(0), m_atEof(false), m_line(1), m_position(0)
{
}

CJsonTextReader::~CJsonTextReader()
{
    delete m_handler;
}

void CJsonTextReader::Fail(std::string const &message)
{
    std::string path;
    if (auto *provider = dynamic_cast<IErrorPathProvider *>(m_handler))
        path = provider->GetErrorPath();
    throw CMxValidationException(message, path);
}

void CJsonTextReader::NextToken()
{
    // Comments in a row are skipped by this loop rather than by recursion,
    // so that a text of many comments cannot exhaust the stack.
    for (;;)
    {
        do
        {
            if (!ReadByte())
                return;
        } while (IsBlank(m_current));
        if (!m_allowComments || m_current != '/' || !SkipComment() || m_atEof)
            return;
    }
}

bool CJsonTextReader::SkipComment()
{
    // The byte after '/' decides before it is consumed: anything but '/' or
    // '*' leaves '/' for the grammar to refuse.
    if (m_index >= m_text->size())
        return false;
    char const next = (*m_text)[m_index];
    if (next == '/')
    {
        while (ReadByte())
            if (m_current == '\n')
                break;
        return true;
    }
    if (next != '*')
        return false;
    ReadByte();
    while (ReadByte())
        if (m_current == '*' && m_index < m_text->size() && (*m_text)[m_index] == '/')
        {
            ReadByte();
            break;
        }
    return true;
}

void CJsonTextReader::ReadBlock(std::size_t count, std::string &out)
{
    std::size_t const left = m_text->size() - m_index;
    std::size_t const taken = count < left ? count : left;
    out.assign(*m_text, m_index, taken);
    m_index += taken;
    m_position += static_cast<std::int32_t>(taken);
    if (taken > 0)
        m_current = out.back();
    if (taken < count)
        m_atEof = true;
}

void CJsonTextReader::Parse()
{
    m_index = 0;
    m_atEof = false;
    m_line = 1;
    m_position = 0;
    m_current = 0;
    m_handler->StartDocument();
    if (!m_rootElementName.empty())
    {
        m_handler->OnStartObject();
        m_handler->OnName(m_rootElementName);
    }
    NextToken();
    // What follows the first value is not looked at.
    if (!m_atEof)
        ParseValue(0);
    if (!m_rootElementName.empty())
        m_handler->OnEndObject();
    m_handler->EndDocument();
}

void CJsonTextReader::ParseValue(std::int32_t depth)
{
    if (depth + 1 > m_depthLimit)
        Fail(FormatString("JSON exceeded depth limit at line %d, position %d.", m_line, m_position));
    std::string text;
    switch (m_current)
    {
    case '{':
        m_handler->OnStartObject();
        ParseObject(depth + 1);
        m_handler->OnEndObject();
        break;
    case '[':
        m_handler->OnStartArray();
        ParseArray(depth + 1);
        m_handler->OnEndArray();
        break;
    case '"':
        ParseString(text);
        m_handler->OnString(UpToZero(text));
        break;
    case 'n':
        ParseWord("ull", 3, "NULL");
        m_handler->OnNull();
        break;
    case 't':
        ParseWord("rue", 3, "true");
        m_handler->OnBoolean(true);
        break;
    case 'f':
        ParseWord("alse", 4, "false");
        m_handler->OnBoolean(false);
        break;
    case '-':
    case '0':
    case '1':
    case '2':
    case '3':
    case '4':
    case '5':
    case '6':
    case '7':
    case '8':
    case '9':
        ParseNumber(text);
        m_handler->OnNumber(text);
        break;
    default:
        Fail(FormatString("Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found '%c' at line "
                          "%d, position %d.",
                          m_current, m_line, m_position));
    }
}

void CJsonTextReader::ParseObject(std::int32_t depth)
{
    // The message of an empty object's end of text shows the brace twice.
    if (OpenMembers('}', "Object", "}}"))
        return;
    std::string name;
    for (;;)
    {
        if (m_current != '"')
            Fail(FormatString("Expected quotation mark character '\"' before Name, found '%c' at line %d, position %d.",
                              m_current, m_line, m_position));
        ParseString(name);
        m_handler->OnName(UpToZero(name));
        if (m_atEof)
            Fail(FormatString("Unexpected End of File. Expected Object Name/Value separator character ':' at line %d, "
                              "position %d.",
                              m_line, m_position));
        if (m_current != ':')
            Fail(FormatString("Expected Object Name/Value separator character ':', found '%c' at line %d, position %d.",
                              m_current, m_line, m_position));
        NextToken();
        if (m_atEof)
            Fail(FormatString("Unexpected End of File. Expected Object Value at line %d, position %d.", m_line,
                              m_position));
        ParseValue(depth);
        if (EndOfMembers('}', "Object"))
            return;
    }
}

void CJsonTextReader::ParseArray(std::int32_t depth)
{
    if (OpenMembers(']', "Array", "]"))
        return;
    for (;;)
    {
        // A trailing comma reaches here and fails as a missing value.
        ParseValue(depth);
        if (EndOfMembers(']', "Array"))
            return;
    }
}

// Past the opening character: true, past the terminator too, when the
// object or array is empty. `kind` and `shownTerminator` name it in the
// message.
bool CJsonTextReader::OpenMembers(char terminator, char const *kind, char const *shownTerminator)
{
    NextToken();
    if (m_atEof)
        Fail(FormatString("Unexpected End of File. Expected %s terminator character '%s' at line %d, position %d.",
                          kind, shownTerminator, m_line, m_position));
    if (m_current != terminator)
        return false;
    NextToken();
    return true;
}

// After a member: true past the terminator, false past a separator with a
// member to follow. `kind` and `terminator` name the object or array in the
// messages.
bool CJsonTextReader::EndOfMembers(char terminator, char const *kind)
{
    if (m_atEof)
        Fail(FormatString("Unexpected End of File. Expected %s terminator character '%c' at line %d, position %d.",
                          kind, terminator, m_line, m_position));
    if (m_current == terminator)
    {
        NextToken();
        return true;
    }
    if (m_current != ',')
        Fail(FormatString("Expected %s separator character ',', found '%c' at line %d, position %d.", kind, m_current,
                          m_line, m_position));
    NextToken();
    if (m_atEof)
        Fail(FormatString("Unexpected End of File. Expected %s terminator character '%c' at line %d, position %d.",
                          kind, terminator, m_line, m_position));
    return false;
}

void CJsonTextReader::ParseString(std::string &out)
{
    out.clear();
    std::string hex;
    std::string const &text = *m_text;
    for (;;)
    {
        // A run of plain characters goes over in one piece, counted as the
        // byte-by-byte reading would count it (it holds no line feed).
        std::size_t end = m_index;
        while (end < text.size() && text[end] != '"' && text[end] != '\\' && text[end] != '\n')
            ++end;
        if (end > m_index)
        {
            out.append(text, m_index, end - m_index);
            m_position += static_cast<std::int32_t>(end - m_index);
            m_current = text[end - 1];
            m_index = end;
        }
        NextChar();
        if (m_atEof)
            Fail(FormatString("Unexpected End of File. Expected string value at line %d, position %d.", m_line,
                              m_position));
        if (m_current == '"')
        {
            // The end of the text right after a string is for the caller to judge.
            NextToken();
            return;
        }
        if (m_current != '\\')
        {
            out += m_current;
            continue;
        }
        NextChar();
        if (m_atEof)
            Fail(FormatString("Unexpected End of File. Expected string value at line %d, position %d.", m_line,
                              m_position));
        switch (m_current)
        {
        case '"':
        case '\\':
        case '/':
            out += m_current;
            break;
        case 'b':
            out += '\x08';
            break;
        case 'f':
            out += '\x0C';
            break;
        case 'n':
            out += '\x0A';
            break;
        case 'r':
            out += '\x0D';
            break;
        case 't':
            out += '\x09';
            break;
        case 'u':
            // The four characters are not decoded: the escape stands for the
            // first character of their hex dump, as the writer's peers expect.
            ReadBlock(4, hex);
            if (hex.size() < 4)
                Fail(FormatString("Unexpected End of File. Expected 4 hexadecimal digits'\\uxxxx' at line %d, "
                                  "position %d.",
                                  m_line, m_position));
            out += CBinaryData::GetAsHexString(reinterpret_cast<unsigned char const *>(hex.data()), 4)[0];
            break;
        default:
            Fail(FormatString("Invalid Escape Character '%c' at line %d, position %d.", m_current, m_line,
                              m_position));
        }
    }
}

void CJsonTextReader::AppendDigits(std::string &out)
{
    while (IsDigit(m_current))
    {
        out += m_current;
        NextChar();
        if (m_atEof)
            return;
    }
}

void CJsonTextReader::TakeIntoNumber(std::string &out, char const *expected)
{
    out += m_current;
    NextChar();
    if (m_atEof)
        Fail(FormatString("Unexpected End of File. Expected %s at line %d, position %d.", expected, m_line,
                          m_position));
}

void CJsonTextReader::ParseNumber(std::string &out)
{
    // The digits are kept as they stand; nothing converts them.
    out.clear();
    if (m_current == '-')
    {
        TakeIntoNumber(out, "a number");
    }
    if (m_current == '0')
    {
        out += '0';
        NextChar();
    }
    else if (IsDigit(m_current))
        AppendDigits(out);
    else
        Fail(FormatString("Expected a digit '0' to '9', found '%c' at line %d, position %d.", m_current, m_line,
                          m_position));
    if (m_atEof)
        return;
    if (m_current == '.')
    {
        TakeIntoNumber(out, "a digit '0' to '9'");
        if (!IsDigit(m_current))
            Fail(FormatString("Expected a digit '0' to '9', found '%c' at line %d, position %d.", m_current, m_line,
                              m_position));
        AppendDigits(out);
        if (m_atEof)
            return;
    }
    if (m_current == 'e' || m_current == 'E')
    {
        TakeIntoNumber(out, "'+', '-' or a number");
        if (m_current == '+' || m_current == '-')
        {
            TakeIntoNumber(out, "a number");
        }
        // The words of the end of the text, though it has not ended.
        if (!IsDigit(m_current))
            Fail(FormatString("Unexpected End of File. Expected a digit '0' to '9' at line %d, position %d.", m_line,
                              m_position));
        AppendDigits(out);
        if (m_atEof)
            return;
    }
    if (IsBlank(m_current))
        NextToken();
}

void CJsonTextReader::ParseWord(char const *rest, std::size_t length, char const *word)
{
    std::string taken;
    ReadBlock(length, taken);
    if (taken.size() < length)
        Fail(FormatString("Unexpected End of File. Expected value '%s' at line %d, position %d.", word, m_line,
                          m_position));
    if (std::memcmp(taken.data(), rest, length) != 0)
        Fail(FormatString("Expected '%s' at line %d, position %d.", word, m_line, m_position));
    NextToken();
}

} // namespace MxXmlLib
