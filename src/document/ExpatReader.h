#pragma once

#include "document/NameTable.h"
#include "runtime/InstanceMonitor.h"

#include <exception>
#include <string>

namespace MxXmlLib
{

class CXmlDocument;

// Feeds a document's buffer to Expat and turns its callbacks into the
// document's building operations. Lives on the stack of one parse.
class CExpatReader : public CInstanceMonitor
{
public:
    explicit CExpatReader(CXmlDocument *document);
    ~CExpatReader() override;
    CExpatReader(CExpatReader const &) = delete;
    CExpatReader &operator=(CExpatReader const &) = delete;

    void Init();
    // Parses the document's current buffer; failures raise "%s at line %d".
    // The parser is gone after a final call or any failure.
    void Parse(bool isFinal);
    // Parses `length` bytes that follow those parsed before, as above.
    void Parse(char const *data, unsigned long length, bool isFinal);

private:
    static void StartElementHandler(void *userData, char const *name, char const **attributes);
    static void EndElementHandler(void *userData, char const *name);
    static void StartNamespaceHandler(void *userData, char const *prefix, char const *uri);
    static void EndNamespaceHandler(void *userData, char const *prefix);
    static void CharacterDataHandler(void *userData, char const *text, int length);
    static void StartCdataHandler(void *userData);
    static void EndCdataHandler(void *userData);
    // Handlers must not let exceptions unwind through Expat: they park them here
    // and stop the parser, and Parse rethrows.
    void Stop(std::exception_ptr failure);
    void FreeParser();

    // A raw Expat name ("uri|local"), converted and split, as interned names.
    struct Name
    {
        std::string const *namespaceUri = nullptr;
        std::string const *localName = nullptr;
    };
    Name const &LookupName(char const *raw);
    // Local text of a piece of UTF-8 from Expat, with no copy where none is needed.
    std::string_view ToLocal(char const *utf8, std::size_t length);

    CXmlDocument *m_document;
    std::string m_scratch;
    unsigned m_scratchSize;
    void *m_parser; // XML_Parser
    std::exception_ptr m_failure;
    CStringMap<Name> m_names;
    bool m_passThrough;
};

} // namespace MxXmlLib
