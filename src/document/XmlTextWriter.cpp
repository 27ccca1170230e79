#include "document/XmlTextWriter.h"

#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
char const kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";
char const kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";

// Bytes that WriteEscaped must look at: the end, line ends, and markup.
struct SpecialBytes
{
    bool table[256] = {};
    constexpr SpecialBytes()
    {
        for (unsigned char c : {'\0', '\n', '\r', '"', '&', '<', '>'})
            table[c] = true;
    }
    constexpr bool operator[](unsigned char c) const { return table[c]; }
};
constexpr SpecialBytes kSpecial;
} // namespace

CXmlTextWriter::CXmlTextWriter(CTextStream *stream)
    : m_writeDefaultValues(false), m_indent("\t"), m_endOfLine("\n"), m_eolType(LF), m_formatted(true),
      m_stream(stream)
{
}

void CXmlTextWriter::WriteIndent(std::int32_t depth)
{
    for (std::int32_t i = 0; i < depth; ++i)
        Write(m_indent);
}

void CXmlTextWriter::WriteDeclaration(std::string const &prefix, std::string const &uri)
{
    Write("xmlns:", 6);
    Write(prefix);
    Write("=\"", 2);
    Write(uri);
    Put('"');
}

void CXmlTextWriter::StartDocument()
{
    m_stream->Start();
}

void CXmlTextWriter::EndDocument()
{
    m_stream->End();
    CXmlWriter::EndDocument();
}

void CXmlTextWriter::SetEolType(EOLType type)
{
    if (type == CRLF)
        m_endOfLine = "\r\n";
    else if (type == LF)
        m_endOfLine = "\n";
    else
        throw CMxException("Invalid EOL type.");
    m_eolType = type;
}

void CXmlTextWriter::WriteXmlDeclaration()
{
    Write("<?xml version=\"1.0\"", 19);
    switch (m_stream->GetEncoding())
    {
    case XmlEncoding_UTF8:
        Write(" encoding=\"UTF-8\"", 17);
        break;
    case XmlEncoding_UTF16:
        Write(" encoding=\"UTF-16\"", 18);
        break;
    default:
        break;
    }
    Write("?>", 2);
    Write(m_endOfLine);
    FlushCheck();
}

void CXmlTextWriter::WriteComment(std::string const &text)
{
    Write("<!--", 4);
    WriteEscaped(text.c_str(), false);
    Write("-->", 3);
    Write(m_endOfLine);
    FlushCheck();
}

void CXmlTextWriter::WriteProcessingInstruction(std::string const &text)
{
    Write(text);
    Write(m_endOfLine);
    Write(m_endOfLine);
    FlushCheck();
}

void CXmlTextWriter::WriteInLineSchema(std::string const &text)
{
    Put(' ');
    Write(m_endOfLine);
    Write(text);
    Write(m_endOfLine);
    FlushCheck();
}

void CXmlTextWriter::CloseStartTag()
{
    if (m_current)
    {
        ++m_current->ChildCount;
        if (m_current->TagOpen == 1)
        {
            m_current->TagOpen = 0;
            Put('>');
            if (m_formatted)
                Write(m_endOfLine);
        }
    }
}

void CXmlTextWriter::StartElement(std::string const &localName, std::string const &namespaceUri)
{
    CloseStartTag();
    bool const isRoot = m_current == nullptr;
    CXmlWriterContext *context = CreateContext(localName, namespaceUri);
    // Until it becomes current, the new context is ours to delete on failure.
    try
    {
        if (m_formatted && context->Depth > 0)
            WriteIndent(context->Depth);
        Put('<');
        if (namespaceUri.empty() || namespaceUri == context->GetEffectiveDefaultNamespace())
            Write(localName);
        else
        {
            std::string prefix;
            bool isNew = false;
            if (std::string const *mapped = context->FindPrefix(namespaceUri))
                prefix = *mapped;
            else
            {
                prefix = context->GeneratePrefix();
                context->AddNamespace(prefix, namespaceUri);
                isNew = true;
            }
            Write(prefix);
            Put(':');
            Write(localName);
            context->NamePrefix = prefix;
            if (isNew)
            {
                Put(' ');
                WriteDeclaration(prefix, namespaceUri);
            }
        }
        if (isRoot)
        {
            if (!m_defaultNamespace.empty())
            {
                Write(" xmlns=\"", 8);
                Write(m_defaultNamespace);
                Put('"');
            }
            for (auto const &entry : m_namespaceMap)
            {
                // A prefix test, not equality: nothing under the XML namespace is declared.
                if (entry.first.compare(0, sizeof(kXmlNamespace) - 1, kXmlNamespace) == 0)
                    continue;
                Put(' ');
                WriteDeclaration(entry.second, entry.first);
            }
        }
        FlushCheck();
    }
    catch (...)
    {
        ReleaseContext(context);
        throw;
    }
    SetCurrentContext(context);
}

void CXmlTextWriter::WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                    std::string const &value, ItemType)
{
    CXmlWriterContext &context = Current();
    if (context.TagOpen == 0)
        throw CMxException("Attributes must be added before elements");
    Put(' ');
    if (!namespaceUri.empty())
    {
        std::string const *prefix = context.FindPrefix(namespaceUri);
        if (prefix == nullptr)
        {
            std::string generated = context.GeneratePrefix();
            context.AddNamespace(generated, namespaceUri);
            WriteDeclaration(generated, namespaceUri);
            Put(' ');
            prefix = context.FindPrefix(namespaceUri);
        }
        Write(*prefix);
        Put(':');
    }
    Write(localName);
    Write("=\"", 2);
    WriteEscaped(value.c_str(), true);
    Put('"');
    FlushCheck();
}

void CXmlTextWriter::WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName, ItemType type)
{
    CXmlWriterContext &context = Current();
    if (context.TagOpen == 0)
        throw CMxException("Attributes must be added before elements");
    std::string value;
    if (!typeNamespace.empty() && typeNamespace != context.GetEffectiveDefaultNamespace())
    {
        std::string const *prefix = context.FindPrefix(typeNamespace);
        if (prefix == nullptr)
        {
            std::string generated = context.GeneratePrefix();
            context.AddNamespace(generated, typeNamespace);
            Put(' ');
            WriteDeclaration(generated, typeNamespace);
            Put(' ');
            prefix = context.FindPrefix(typeNamespace);
        }
        value = *prefix + ":" + typeName;
    }
    else
        value = typeName;
    WriteAttribute("type", kXsiNamespace, value, type);
}

void CXmlTextWriter::WriteNilAttribute()
{
    CXmlWriterContext &context = Current();
    if (context.TagOpen == 0)
        throw CMxException("Attributes must be added before elements");
    WriteAttribute("nil", kXsiNamespace, "true", ItemType_boolean);
}

void CXmlTextWriter::WriteText(std::string const &value, ItemType, bool isDefaultValue)
{
    if (value.empty())
        return;
    if (isDefaultValue && !m_writeDefaultValues)
        return;
    CXmlWriterContext &context = Current();
    if (context.TagOpen)
    {
        Put('>');
        context.TagOpen = 0;
    }
    if (value.compare(0, 9, "<![CDATA[") == 0)
        Write(value);
    else
        WriteEscaped(value.c_str(), false);
    FlushCheck();
}

void CXmlTextWriter::EndElement()
{
    CXmlWriterContext &context = Current();
    if (context.TagOpen)
        Write("/>", 2);
    else
    {
        if (m_formatted && context.ChildCount > 0)
            WriteIndent(context.Depth);
        Write("</", 2);
        if (!context.NamePrefix.empty())
        {
            Write(context.NamePrefix);
            Put(':');
        }
        Write(context.LocalName);
        Put('>');
    }
    if (m_formatted)
        Write(m_endOfLine);
    FlushCheck();
    PopContext();
}

void CXmlTextWriter::WriteEscaped(char const *text, bool isAttribute)
{
    char const *run = text;
    char const *p = text;
    auto flush = [&] {
        if (p > run)
            Write(run, static_cast<std::size_t>(p - run));
    };
    for (;; ++p)
    {
        char const c = *p;
        // Most bytes need nothing: scan them as one run.
        if (!kSpecial[static_cast<unsigned char>(c)])
            continue;
        flush();
        run = p + 1;
        switch (c)
        {
        case '\0':
            return;
        case '\n':
            if (isAttribute)
                Write("&#xA;", 5);
            else if (m_eolType == CRLF)
                Write("\r\n", 2);
            else if (m_eolType == LF)
                Put('\n');
            else
                throw CMxException("Invalid EOL type.");
            break;
        case '\r':
            break;
        case '"':
            if (isAttribute)
                Write("&quot;", 6);
            else
                Put('"');
            break;
        case '&':
            Write("&amp;", 5);
            break;
        case '<':
            Write("&lt;", 4);
            break;
        case '>':
            Write("&gt;", 4);
            break;
        default:
            break;
        }
    }
}

} // namespace MxXmlLib
