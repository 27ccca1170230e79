#include "document/ExpatReader.h"

#include "document/XmlDocument.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

#include <cstring>
#include <expat.h>

namespace MxXmlLib
{

namespace
{
constexpr unsigned kScratchSize = 1024;

XML_Parser AsParser(void *p)
{
    return static_cast<XML_Parser>(p);
}

// "uri|local" from a namespace-aware parser; a name without '|' has no namespace.
void SplitName(std::string const &name, std::string &namespaceUri, std::string &localName)
{
    std::size_t const bar = name.find('|');
    if (bar == std::string::npos)
    {
        namespaceUri.clear();
        localName = name;
        return;
    }
    namespaceUri.assign(name, 0, bar);
    localName.assign(name, bar + 1, std::string::npos);
}
} // namespace

CExpatReader::CExpatReader(CXmlDocument *document)
    : m_document(document), m_scratchSize(0), m_parser(nullptr)
{
}

CExpatReader::~CExpatReader()
{
    m_scratch.clear();
    m_scratch.shrink_to_fit();
    m_scratchSize = 0;
    // A parse abandoned by an exception outside Expat still owns its parser.
    FreeParser();
}

void CExpatReader::FreeParser()
{
    if (m_parser)
    {
        XML_ParserFree(AsParser(m_parser));
        m_parser = nullptr;
    }
}

void CExpatReader::Init()
{
    m_scratch.reserve(kScratchSize);
    m_scratchSize = kScratchSize;
    XML_Parser parser = m_document->m_schemaType == SchemaType_NoNamespaces ? XML_ParserCreate(nullptr)
                                                                             : XML_ParserCreateNS(nullptr, '|');
    if (parser == nullptr)
        throw std::bad_alloc();
    m_parser = parser;
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, &StartElementHandler, &EndElementHandler);
    XML_SetNamespaceDeclHandler(parser, &StartNamespaceHandler, &EndNamespaceHandler);
    XML_SetCharacterDataHandler(parser, &CharacterDataHandler);
    if (!m_document->m_context.GetStripCDATA())
        XML_SetCdataSectionHandler(parser, &StartCdataHandler, &EndCdataHandler);
}

void CExpatReader::Parse(bool isFinal)
{
    XML_Parser parser = AsParser(m_parser);
    unsigned long remaining = m_document->m_bufferLength;
    char const *data = reinterpret_cast<char const *>(m_document->m_buffer);
    XML_Status status = XML_STATUS_OK;
    // XML_Parse takes an int length; larger buffers go in slices.
    constexpr unsigned long kSlice = 1UL << 30;
    do
    {
        unsigned long const piece = remaining > kSlice ? kSlice : remaining;
        bool const last = isFinal && piece == remaining;
        status = XML_Parse(parser, data, static_cast<int>(piece), last ? 1 : 0);
        data += piece;
        remaining -= piece;
    } while (status != XML_STATUS_ERROR && remaining > 0);

    if (m_failure)
    {
        std::exception_ptr failure = m_failure;
        m_failure = nullptr;
        FreeParser();
        std::rethrow_exception(failure);
    }
    if (status != XML_STATUS_ERROR)
    {
        if (isFinal)
            FreeParser();
        return;
    }
    auto const line = static_cast<int>(XML_GetCurrentLineNumber(parser));
    char const *reason = XML_ErrorString(XML_GetErrorCode(parser));
    std::string message = FormatString("%s at line %d", reason ? reason : "", line);
    m_scratch.clear();
    m_scratchSize = 0;
    FreeParser();
    throw CMxException(message);
}

void CExpatReader::Stop(std::exception_ptr failure)
{
    if (!m_failure)
        m_failure = failure;
    XML_StopParser(AsParser(m_parser), XML_FALSE);
}

void CExpatReader::StartElementHandler(void *userData, char const *name, char const **attributes)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (self->m_failure)
        return;
    try
    {
        CXmlDocument *document = self->m_document;
        std::string namespaceUri, localName;
        Utf8ToLocal(self->m_scratch, name);
        SplitName(self->m_scratch, namespaceUri, localName);
        CXmlElement *element = document->m_documentElement == nullptr
                                   ? document->AddDocElement(namespaceUri.c_str(), localName.c_str())
                                   : document->AddChildElement(namespaceUri.c_str(), localName.c_str());
        std::string rawName, value;
        for (char const **pair = attributes; pair && pair[0]; pair += 2)
        {
            Utf8ToLocal(rawName, pair[0]);
            Utf8ToLocal(value, pair[1]);
            SplitName(rawName, namespaceUri, localName);
            element->AddAttribute(localName, value, namespaceUri);
        }
    }
    catch (...)
    {
        self->Stop(std::current_exception());
    }
}

void CExpatReader::EndElementHandler(void *userData, char const *)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (self->m_failure)
        return;
    try
    {
        self->m_document->EndElement();
    }
    catch (...)
    {
        self->Stop(std::current_exception());
    }
}

void CExpatReader::StartNamespaceHandler(void *userData, char const *prefix, char const *uri)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (self->m_failure)
        return;
    try
    {
        std::string localPrefix, localUri;
        Utf8ToLocal(localPrefix, prefix ? prefix : "");
        Utf8ToLocal(localUri, uri ? uri : "");
        self->m_document->m_namespaceMap[localPrefix] = localUri;
    }
    catch (...)
    {
        self->Stop(std::current_exception());
    }
}

void CExpatReader::EndNamespaceHandler(void *, char const *) {}

void CExpatReader::CharacterDataHandler(void *userData, char const *text, int length)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (length <= 0 || self->m_failure)
        return;
    try
    {
        CXmlDocument *document = self->m_document;
        if (document->m_elementStack.empty())
            return;
        Utf8ToLocal(self->m_scratch, reinterpret_cast<unsigned char const *>(text), static_cast<unsigned>(length));
        CXmlDocument::AppendTextExcludingCR(document->m_elementStack.back(), self->m_scratch.data(),
                                            self->m_scratch.size());
    }
    catch (...)
    {
        self->Stop(std::current_exception());
    }
}

void CExpatReader::StartCdataHandler(void *userData)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (!self->m_failure && !self->m_document->m_elementStack.empty())
        self->m_document->m_elementStack.back()->AppendText("<![CDATA[", 9);
}

void CExpatReader::EndCdataHandler(void *userData)
{
    auto *self = static_cast<CExpatReader *>(userData);
    if (!self->m_failure && !self->m_document->m_elementStack.empty())
        self->m_document->m_elementStack.back()->AppendText("]]>", 3);
}

} // namespace MxXmlLib
