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
    : m_document(document), m_scratchSize(0), m_parser(nullptr), m_passThrough(IsUtf8PassThrough())
{
}

CExpatReader::Name const &CExpatReader::LookupName(char const *raw)
{
    std::string_view const key(raw);
    std::size_t const hash = HashBytes(key);
    if (Name const *found = m_names.Find(key, hash))
        return *found;
    std::string converted, namespaceUri, localName;
    Utf8ToLocal(converted, raw);
    SplitName(converted, namespaceUri, localName);
    Name name;
    name.namespaceUri = m_document->Intern(namespaceUri);
    name.localName = m_document->Intern(localName);
    return m_names.Insert(key, hash, name);
}

std::string_view CExpatReader::ToLocal(char const *utf8, std::size_t length)
{
    // Expat hands out well-formed UTF-8, which is already local text when the
    // local encoding is UTF-8; a zero byte cannot occur in XML text.
    if (m_passThrough)
        return std::string_view(utf8, length);
    Utf8ToLocal(m_scratch, reinterpret_cast<unsigned char const *>(utf8), static_cast<unsigned>(length));
    return m_scratch;
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
    if (!m_document->m_stripCDATA)
        XML_SetCdataSectionHandler(parser, &StartCdataHandler, &EndCdataHandler);
}

void CExpatReader::Parse(bool isFinal)
{
    Parse(reinterpret_cast<char const *>(m_document->m_buffer), m_document->m_bufferLength, isFinal);
}

void CExpatReader::Parse(char const *data, unsigned long length, bool isFinal)
{
    XML_Parser parser = AsParser(m_parser);
    unsigned long remaining = length;
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
        Name const elementName = self->LookupName(name);
        CXmlElement *element = self->m_document->AddElement(elementName.namespaceUri, elementName.localName);
        std::size_t count = 0;
        for (char const **pair = attributes; pair && pair[0]; pair += 2)
            ++count;
        for (char const **pair = attributes; pair && pair[0]; pair += 2)
        {
            Name const attributeName = self->LookupName(pair[0]);
            CXmlAttribute *attribute = element->AddAttribute(attributeName.localName, attributeName.namespaceUri, count);
            std::string_view const value = self->ToLocal(pair[1], std::strlen(pair[1]));
            attribute->m_value.assign(value.data(), value.size());
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
        std::string_view const local = self->ToLocal(text, static_cast<std::size_t>(length));
        // Expat's text holds no zero byte, and a carriage return only where a
        // character reference wrote one: most pieces go in whole.
        CXmlElement *const element = document->m_elementStack.back();
        if (std::memchr(local.data(), '\r', local.size()) == nullptr)
            element->AppendText(local.data(), static_cast<int>(local.size()));
        else
            CXmlDocument::AppendTextExcludingCR(element, local.data(), local.size());
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
