#include "document/XmlDocument.h"

#include "binding/SerializationContext.h"
#include "binding/XmlObjectBase.h"
#include "document/ExpatReader.h"
#include "document/NameTable.h"
#include "document/NodePool.h"
#include "fastinfoset/FastInfosetContext.h"
#include "fastinfoset/FastInfosetReader.h"
#include "json/JsonHandlers.h"
#include "runtime/Compression.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"
#include "runtime/platform/NativeFile.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>

// The loading frames of CXmlDocument: the options a document takes from its
// context, and how it gets its bytes (text, bytes that may be compressed or
// Fast Infoset, JSON by translation, files whole or in chunks) and hands them
// to a reader. They stand in the binding layer because they know the context
// and every format; the tree itself knows neither.

namespace MxXmlLib
{

namespace
{
// One chunk of the chunked file load.
constexpr unsigned long kChunkSize = 0x20000;
// The end-of-file code that the read messages carry: the number by which the
// system this library was first written for reports a read past the end.
constexpr unsigned kEndOfFileCode = 38;
} // namespace

CXmlDocument::CXmlDocument() : CXmlDocument(nullptr, CSerializationContext::GetDefaultContext()) {}

CXmlDocument::CXmlDocument(CSerializationContext const &context) : CXmlDocument(nullptr, context) {}

CXmlDocument::CXmlDocument(ElementEndFunction onElementEnd)
    : CXmlDocument(onElementEnd, CSerializationContext::GetDefaultContext())
{
}

CXmlDocument::CXmlDocument(ElementEndFunction onElementEnd, CSerializationContext const &context)
    : m_documentElement(nullptr), m_buffer(nullptr), m_bufferLength(0), m_bufferOwned(false),
      m_schemaType(context.GetSchemaType()), m_stripCDATA(context.GetStripCDATA()), m_elementEndFunction(onElementEnd), m_context(context),
      m_names(std::make_unique<CNameTable>()), m_pool(std::make_unique<CNodePool>()), m_fileOffset(0),
      m_chunkBytes(0)
{
}

void CXmlDocument::Init()
{
    m_buffer = nullptr;
    m_bufferLength = 0;
    m_documentElement = nullptr;
    m_fileOffset = 0;
    m_schemaType = m_context.GetSchemaType();
    m_stripCDATA = m_context.GetStripCDATA();
}

void CXmlDocument::LoadXml(char const *text)
{
    Cleanup();
    if (text == nullptr || *text == '\0')
        throw CMxException("XML String is empty!");
    Init();
    // The text outlives this synchronous parse, so Expat reads it in place;
    // the buffer is dropped again before returning.
    SetBorrowedBuffer(text, std::strlen(text));
    try
    {
        ParseText();
    }
    catch (...)
    {
        SetBorrowedBuffer(nullptr, 0);
        throw;
    }
    if (!m_readWhileParsing)
        SetBorrowedBuffer(nullptr, 0);
}

void CXmlDocument::LoadXml(wchar_t const *text)
{
    Cleanup();
    Init();
    // wchar_t holds UTF-32 here; the parser is given UTF-16LE behind FF FE,
    // so that a byte order mark always announces the encoding.
    std::string bytes("\xFF\xFE", 2);
    for (wchar_t const *p = text ? text : L""; *p; ++p)
    {
        auto c = static_cast<unsigned long>(*p);
        if (c > 0x10FFFF)
            c = 0xFFFD;
        auto put = [&bytes](unsigned long unit) {
            bytes.push_back(static_cast<char>(unit & 0xFF));
            bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
        };
        if (c >= 0x10000)
        {
            c -= 0x10000;
            put(0xD800 | (c >> 10));
            put(0xDC00 | (c & 0x3FF));
        }
        else
            put(c);
    }
    SetBuffer(bytes.data(), bytes.size());
    ParseText();
}

CBinaryData CXmlDocument::LoadJson(char const *text)
{
    if (text == nullptr || *text == '\0')
        throw CMxException("JSON String is empty!");
    return ParseJsonText(text);
}

CBinaryData CXmlDocument::LoadJson(wchar_t const *text)
{
    if (text == nullptr || *text == L'\0')
        throw CMxException("JSON String is empty!");
    // Two bytes per character: all of a 16-bit wchar_t's bytes, the first
    // half of a 32-bit one's. Deliberately no conversion.
    std::size_t const count = std::wcslen(text);
    return ParseJsonText(std::string(reinterpret_cast<char const *>(text), 2 * count));
}

CBinaryData CXmlDocument::LoadJsonFile(char const *fileName)
{
    Cleanup();
    Init();
    ReadWholeFile(fileName ? fileName : "");
    return ParseJson(m_buffer, m_bufferLength);
}

CBinaryData CXmlDocument::LoadJsonStream(unsigned char *const bytes, unsigned long length)
{
    return ParseJson(bytes, length);
}

CBinaryData CXmlDocument::ParseJson(unsigned char const *bytes, unsigned long length) const
{
    CBinaryData inflated;
    if (bytes && Decompress(bytes, length, inflated))
    {
        bytes = inflated.GetData();
        length = inflated.GetLength();
    }
    if (length > 2 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
    {
        bytes += 3;
        length -= 3;
    }
    std::string json;
    if (length > 0)
        Utf8ToLocal(json, bytes, static_cast<unsigned>(length));
    return ParseJsonText(json);
}

CBinaryData CXmlDocument::ParseJsonText(std::string const &json) const
{
    return ConvertJsonToXml(json, m_context);
}

void CXmlDocument::ParseText()
{
    if (m_readWhileParsing)
    {
        // The buffer stays until FinishParse: the parse goes on from it as
        // the reading asks. Parsed here only as far as the document element.
        m_lazyReader = std::make_unique<CExpatReader>(this);
        m_lazyReader->Init();
        m_lazyOffset = 0;
        while (m_documentElement == nullptr && ParseMore())
        {
        }
        return;
    }
    CExpatReader reader(this);
    reader.Init();
    reader.Parse(true);
}

void CXmlDocument::NewBuffer(unsigned long length)
{
    if (m_bufferOwned)
        std::free(m_buffer);
    m_bufferOwned = false;
    m_buffer = static_cast<unsigned char *>(std::malloc(length ? length : 1));
    if (m_buffer == nullptr)
        throw std::bad_alloc();
    m_bufferLength = length;
    m_bufferOwned = true;
}

void CXmlDocument::Parse()
{
    // Compressed input is recognised by trying: plain text simply fails to
    // inflate and stays as it is.
    CBinaryData inflated;
    if (Decompress(m_buffer, m_bufferLength, inflated))
    {
        m_inflated = inflated;
        SetBorrowedBuffer(m_inflated.GetData(), m_inflated.GetLength());
    }
    if (ParseFastInfosetIfPresent())
        return;
    ParseText();
}

bool CXmlDocument::ParseFastInfosetIfPresent()
{
    CFastInfosetReader reader(&m_context.GetFIContext(), this);
    if (!reader.ReadIdentification())
        return false;
    reader.ReadHeader();
    reader.ReadDocumentBody();
    // A body with no element (only a terminator) is no document.
    if (m_documentElement == nullptr)
        throw CMxException("Invalid or empty XML document");
    return true;
}

void CXmlDocument::LoadXmlStream(unsigned char *const bytes, unsigned long length)
{
    Cleanup();
    if (length == 0 || bytes == nullptr)
        throw CMxException("XML Stream is empty!");
    Init();
    // The caller's bytes outlive this synchronous parse and are only read, so
    // they are parsed in place; decompression gives the document its own.
    SetBorrowedBuffer(bytes, length);
    try
    {
        Parse();
    }
    catch (...)
    {
        if (m_buffer == bytes)
            SetBorrowedBuffer(nullptr, 0);
        throw;
    }
    if (m_buffer == bytes && !m_readWhileParsing)
        SetBorrowedBuffer(nullptr, 0);
}

void CXmlDocument::Load(char const *fileName)
{
    Cleanup();
    Init();
    if (fileName == nullptr)
        fileName = "";
    if (IsAsyncFromXmlFile())
        LoadFileInChunks(fileName);
    else
        LoadWholeFile(fileName);
}

void CXmlDocument::LoadWholeFile(char const *fileName)
{
    ReadWholeFile(fileName);
    Parse();
}

void CXmlDocument::ReadWholeFile(char const *fileName)
{
    {
        Platform::NativeFile file; // closed on every way out of this block
        if (!file.OpenForSequentialRead(fileName))
            throw CMxException(FormatString("Failed to open the file [%s] Error [0x%08x]", fileName,
                                            static_cast<unsigned>(file.LastError())));
        std::uint64_t size = 0;
        if (!file.Size(size))
            throw CMxException(FormatString("Failed to get the size of the file [%s] Error [0x%08x]", fileName,
                                            static_cast<unsigned>(file.LastError())));
        // The buffer length is 32 bits: only the low word of the size counts.
        auto const length = static_cast<unsigned long>(size & 0xFFFFFFFFULL);
        NewBuffer(length);
        long long const got = file.Read(m_buffer, length);
        if (got < 0 || static_cast<unsigned long>(got) != length)
            throw CMxException(FormatString("Failed to read the contents of the file [%s] Error [0x%08x]", fileName,
                                            got < 0 ? static_cast<unsigned>(file.LastError()) : kEndOfFileCode));
    }
}

// The chunked load keeps two buffers of 0x20000 bytes: one is parsed while
// the other receives the next chunk. The library starts no threads, and
// POSIX offers no overlapped read of a regular file without them, so here the
// next chunk is read with a plain read issued before the current one is
// parsed, and has ended when ReadChunkFromFile returns. Memory stays at two
// chunks whatever the size of the file; reading and parsing take turns.
void CXmlDocument::LoadFileInChunks(char const *fileName)
{
    m_file = std::make_unique<Platform::NativeFile>();
    if (!m_file->OpenForSequentialRead(fileName))
    {
        unsigned const error = static_cast<unsigned>(m_file->LastError());
        CloseFile();
        throw CMxException(FormatString("Failed to open the file [%s] Error [0x%08x]", fileName, error));
    }
    NewBuffer(kChunkSize);
    if (ReadChunkFromFile(m_buffer))
    {
        // Nothing at offset 0: the file is empty.
        CloseFile();
        throw CMxException(
            FormatString("Failed to read the contents of the file [%s] Error [0x%08x]", fileName, kEndOfFileCode));
    }
    m_fileOffset += m_chunkBytes;
    m_bufferLength = m_chunkBytes;
    AsyncParse(m_chunkBytes < kChunkSize);
}

bool CXmlDocument::ReadChunkFromFile(unsigned char *buffer)
{
    m_chunkBytes = 0;
    long long const got = m_file->ReadAt(m_fileOffset, buffer, kChunkSize);
    if (got < 0)
    {
        unsigned const error = static_cast<unsigned>(m_file->LastError());
        CloseFile();
        throw CMxException(FormatString("Failed to read the contents of the file. Error [0x%08x]", error));
    }
    m_chunkBytes = static_cast<unsigned long>(got);
    return got == 0;
}

void CXmlDocument::AsyncParse(bool last)
{
    struct FreeSpare
    {
        unsigned char *bytes = nullptr;
        ~FreeSpare() { std::free(bytes); }
    } spare;
    CExpatReader reader(this);
    reader.Init();
    spare.bytes = static_cast<unsigned char *>(std::malloc(kChunkSize));
    if (spare.bytes == nullptr)
        throw std::bad_alloc();
    try
    {
        while (!last)
        {
            // The next chunk goes into the spare buffer while this one is parsed.
            bool const atEnd = ReadChunkFromFile(spare.bytes);
            reader.Parse(false);
            unsigned long const got = atEnd ? 0 : m_chunkBytes;
            std::swap(m_buffer, spare.bytes);
            m_fileOffset += got;
            m_bufferLength = got;
            last = got < kChunkSize;
        }
        reader.Parse(true);
        if (m_documentElement == nullptr)
            throw CMxException("Invalid or empty XML document");
    }
    catch (CMxException const &e)
    {
        Cleanup();
        CloseFile();
        // The derived type is dropped on purpose: callers of a file load see
        // one exception class.
        throw CMxException(e);
    }
    std::free(m_buffer);
    m_buffer = nullptr;
    m_bufferLength = 0;
    m_bufferOwned = false;
    CloseFile();
}

void CXmlDocument::CloseFile()
{
    m_file.reset();
}

} // namespace MxXmlLib
