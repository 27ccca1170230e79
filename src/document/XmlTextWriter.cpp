#include "document/XmlTextWriter.h"

#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
// Bytes that WriteEscaped must look at: line ends and markup.
constexpr CByteSet kSpecial([](unsigned c) {
    return c == '\n' || c == '\r' || c == '"' || c == '&' || c == '<' || c == '>';
});
} // namespace

CXmlTextWriter::CXmlTextWriter(CTextStream *stream) : CTextWriter(stream), m_writeDefaultValues(false) {}

void CXmlTextWriter::WriteDeclaration(std::string const &prefix, std::string const &uri)
{
    Write("xmlns:", 6);
    Write(prefix);
    Write("=\"", 2);
    Write(uri);
    Put('"');
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
    WriteEndOfLine();
    FlushCheck();
}

void CXmlTextWriter::WriteComment(std::string const &text)
{
    Write("<!--", 4);
    WriteEscaped(text.c_str(), false);
    Write("-->", 3);
    WriteEndOfLine();
    FlushCheck();
}

void CXmlTextWriter::WriteProcessingInstruction(std::string const &text)
{
    Write(text);
    WriteEndOfLine();
    WriteEndOfLine();
    FlushCheck();
}

void CXmlTextWriter::WriteInLineSchema(std::string const &text)
{
    Put(' ');
    WriteEndOfLine();
    Write(text);
    WriteEndOfLine();
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
                WriteEndOfLine();
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
            bool isNew = false;
            std::string const &prefix = PrefixFor(*context, namespaceUri, [&](std::string const &) { isNew = true; });
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
            ForEachDocumentMapping([this](std::string const &prefix, std::string const &uri) {
                Put(' ');
                WriteDeclaration(prefix, uri);
            });
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

CXmlWriter::CXmlWriterContext &CXmlTextWriter::TagOfAttributes()
{
    CXmlWriterContext &context = Current();
    if (context.TagOpen == 0)
        throw CMxException("Attributes must be added before elements");
    return context;
}

void CXmlTextWriter::WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                    std::string const &value, ItemType)
{
    CXmlWriterContext &context = TagOfAttributes();
    Put(' ');
    if (!namespaceUri.empty())
    {
        Write(PrefixFor(context, namespaceUri, [&](std::string const &generated) {
            WriteDeclaration(generated, namespaceUri);
            Put(' ');
        }));
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
    CXmlWriterContext &context = TagOfAttributes();
    std::string const value = TypeValue(context, typeNamespace, typeName, [&](std::string const &generated) {
        Put(' ');
        WriteDeclaration(generated, typeNamespace);
        Put(' ');
    });
    WriteAttribute("type", kXsiNamespace, value, type);
}

void CXmlTextWriter::WriteNilAttribute()
{
    TagOfAttributes();
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
        WriteEndOfLine();
    FlushCheck();
    PopContext();
}

void CXmlTextWriter::WriteEscaped(char const *text, bool isAttribute)
{
    WriteEscapedRuns(text, text + std::strlen(text), kSpecial, [&](unsigned char c) {
        switch (c)
        {
        case '\n':
            if (isAttribute)
                Write("&#xA;", 5);
            else
                WriteEndOfLine();
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
        default: // '\r' is dropped
            break;
        }
    });
}

} // namespace MxXmlLib
