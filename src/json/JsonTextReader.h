#pragma once

// A recursive-descent reader of one JSON text held in memory. It builds no
// tree: it reports what it finds to an IJsonReaderHandler. Departures from
// RFC 8259 are kept on purpose, since the handlers and the JSON writer are
// built around them:
//   - any value may stand at the top, and text after the first value is ignored;
//   - a raw line feed inside a string or a number is dropped (so "1\n2" is 12);
//   - "\uXXXX" gives one character, the upper hex digit of the first X's byte;
//   - control characters and bytes from 0x80 up stand in strings as they are;
//   - /* */ and // comments are skipped when allowed;
//   - a leading zero ends a number, leaving the next digit to the caller.

#include "runtime/InstanceMonitor.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace MxXmlLib
{

// The JSON path of the place the reader has reached, for error messages.
class IErrorPathProvider
{
public:
    virtual ~IErrorPathProvider() = default;
    virtual std::string GetErrorPath() = 0;
};

// Receiver of the reader's events. Values come as text: numbers as their
// digits stood, strings decoded; each ends at its first zero byte.
class IJsonReaderHandler : public CInstanceMonitor
{
public:
    ~IJsonReaderHandler() override = default;
    virtual void StartDocument() = 0;
    virtual void EndDocument() = 0;
    virtual void OnName(std::string const &name) = 0;
    virtual void OnString(std::string const &value) = 0;
    virtual void OnNumber(std::string const &value) = 0;
    virtual void OnStartObject() = 0;
    virtual void OnEndObject() = 0;
    virtual void OnStartArray() = 0;
    virtual void OnEndArray() = 0;
    virtual void OnBoolean(bool value) = 0;
    virtual void OnNull() = 0;
};

class CJsonTextReader : public CInstanceMonitor
{
public:
    // Takes ownership of `handler`, which should also be an IErrorPathProvider
    // (its path goes into every error). `text` is borrowed for the reader's life.
    CJsonTextReader(std::string const *text, IJsonReaderHandler *handler, std::int32_t depthLimit = 100);
    ~CJsonTextReader() override;
    CJsonTextReader(CJsonTextReader const &) = delete;
    CJsonTextReader &operator=(CJsonTextReader const &) = delete;

    void SetAllowComments(bool value) { m_allowComments = value; }
    // Non-empty: the events are wrapped in an object with this one key.
    void SetRootElementName(std::string const &name) { m_rootElementName = name; }

    // Reads the whole text from its start. An empty text, or one of
    // whitespace and comments only, gives no value and no error. Syntax
    // errors raise CMxValidationException with line, position and path.
    void Parse();

private:
    // Reads past whitespace, and comments when allowed, into m_current.
    void NextToken();
    // Reads one byte into m_current; line feeds are consumed and skipped.
    void NextChar()
    {
        // Line feeds inside strings and numbers vanish: "1\n2" reads as 12.
        do
        {
            if (!ReadByte())
                return;
        } while (m_current == '\n');
    }
    // Reads up to `count` bytes into `out` without line tracking.
    void ReadBlock(std::size_t count, std::string &out);
    // With m_current '/': skips one comment if one starts here; false if not.
    bool SkipComment();
    // Reads one byte, counting lines: false at the end of the text. Inline:
    // the reader takes every byte of the text through here.
    bool ReadByte()
    {
        if (m_index >= m_text->size())
        {
            m_atEof = true;
            return false;
        }
        m_current = (*m_text)[m_index++];
        ++m_position;
        if (m_current == '\n')
        {
            ++m_line;
            m_position = 0;
        }
        return true;
    }

    void ParseValue(std::int32_t depth);
    void ParseObject(std::int32_t depth);
    void ParseArray(std::int32_t depth);
    // The steps around the members of an object or array.
    bool OpenMembers(char terminator, char const *kind, char const *shownTerminator);
    bool EndOfMembers(char terminator, char const *kind);
    void ParseString(std::string &out);
    void ParseNumber(std::string &out);
    // The rest of a literal after its first letter, by a block read; `word`
    // names the literal in the messages ('NULL', 'true', 'false').
    void ParseWord(char const *rest, std::size_t length, char const *word);
    // Appends m_current and the digits that follow it.
    void AppendDigits(std::string &out);
    // Appends m_current and reads on; the end of the text raises "Unexpected
    // End of File. Expected <expected> ...".
    void TakeIntoNumber(std::string &out, char const *expected);

    // Raises CMxValidationException with the message and the handler's path.
    [[noreturn]] void Fail(std::string const &message);

    IJsonReaderHandler *m_handler;
    std::int32_t m_depthLimit;
    bool m_allowComments;
    std::string m_rootElementName;
    std::string const *m_text;
    std::size_t m_index;
    char m_current;
    bool m_atEof;
    std::int32_t m_line;
    std::int32_t m_position;
};

} // namespace MxXmlLib
