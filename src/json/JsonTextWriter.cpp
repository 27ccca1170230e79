#include "json/JsonTextWriter.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
// Bytes that WriteEscaped must look at: the control characters other than
// backspace, tab and form feed, which are copied as they stand.
constexpr CByteSet kSpecial([](unsigned c) { return c < 0x20 && c != 0x08 && c != 0x09 && c != 0x0C; });

// The types whose text is a JSON number or boolean as CConversions gives it.
bool IsUnquoted(ItemType type)
{
    return (type >= ItemType_i1 && type <= ItemType_r8) || (type >= ItemType_boolean && type <= ItemType_integer);
}
} // namespace

CJsonTextWriter::CJsonTextWriter(CTextStream *stream)
    : CTextWriter(stream), m_roundTrip(RoundTripFull), m_valuePending(false)
{
}

CJsonTextWriter::~CJsonTextWriter() = default;

void CJsonTextWriter::WriteDocumentStart()
{
    Put('{');
    if (m_formatted)
        WriteEndOfLine();
    FlushCheck();
}

void CJsonTextWriter::WriteDocumentEnd()
{
    if (m_formatted)
        WriteEndOfLine();
    Put('}');
}

void CJsonTextWriter::WriteComment(std::string const &text)
{
    Write("/* ", 3);
    WriteEscaped(text.c_str());
    Write(" */", 3);
    WriteEndOfLine();
    FlushCheck();
}

void CJsonTextWriter::WriteProcessingInstruction(std::string const &) {}

void CJsonTextWriter::WriteInLineSchema(std::string const &) {}

void CJsonTextWriter::WriteNilAttribute() {}

// Called before `context` gets a member. The first member decides that the
// element is an object; if the element is the first item of an announced
// collection, the array opens here too, and everything open so far moves one
// level in.
void CJsonTextWriter::WriteSeparator(Context *context)
{
    Context *parent = context->GetParent();
    if (m_valuePending && parent && parent->ArrayState == Context::ArrayPending)
    {
        parent->ArrayState = Context::ArrayOpen;
        Put('[');
        if (m_formatted)
        {
            for (Context *c = context; c; c = c->GetParent())
                ++c->Depth;
            WriteEndOfLine();
            WriteIndent(context->Depth);
        }
    }
    Put(m_valuePending ? '{' : ',');
    if (m_formatted)
        WriteEndOfLine();
}

void CJsonTextWriter::WriteDeclaration(Context *context, std::string const &prefix, std::string const &uri)
{
    WriteSeparator(context);
    if (m_formatted)
        WriteIndent(context->Depth + 1);
    if (prefix.empty())
        Write("\"@xmlns\": \"", 11);
    else
    {
        Write("\"@xmlns:", 8);
        Write(prefix);
        Write("\": \"", 4);
    }
    Write(uri);
    Put('"');
    m_valuePending = false;
}

void CJsonTextWriter::StartElement(std::string const &localName, std::string const &namespaceUri)
{
    Context *parent = m_current;
    // Items after the first of an open array are anonymous members of it.
    bool nameWanted = true;
    if (parent)
    {
        nameWanted = parent->ArrayState != Context::ArrayOpen;
        WriteSeparator(parent);
    }
    bool const isRoot = parent == nullptr;
    Context *context = CreateContext(localName, namespaceUri);
    if (isRoot)
        context->Depth = 1;
    // Until it becomes current, the new context is ours to release on failure.
    try
    {
        if (m_formatted)
            WriteIndent(context->Depth);
        if (m_roundTrip != RoundTripFull || !nameWanted)
        {
            if (nameWanted)
            {
                Put('"');
                Write(localName);
                Write("\": ", 3);
            }
            m_valuePending = true;
            FlushCheck();
            SetCurrentContext(context);
            return;
        }
        if (namespaceUri.empty() || namespaceUri == context->GetEffectiveDefaultNamespace())
        {
            Put('"');
            Write(localName);
            Write("\": ", 3);
            m_valuePending = true;
        }
        else
        {
            bool generated = false;
            std::string const &prefix = PrefixFor(*context, namespaceUri, [&](std::string const &) {
                if (!isRoot)
                    throw CMxException(FormatString("Unknown Namespace: %s.", localName.c_str()));
                generated = true;
            });
            Put('"');
            Write(prefix);
            Put(':');
            Write(localName);
            Write("\": ", 3);
            m_valuePending = true;
            if (generated)
                WriteDeclaration(context, prefix, namespaceUri);
        }
        if (isRoot)
            ForEachRootDeclaration([&](std::string const &mapped, std::string const &uri) {
                WriteDeclaration(context, mapped, uri);
            });
        FlushCheck();
    }
    catch (...)
    {
        ReleaseContext(context);
        throw;
    }
    SetCurrentContext(context);
}

void CJsonTextWriter::WriteText(std::string const &value, ItemType type, bool)
{
    Context &context = Current();
    if (!m_valuePending)
    {
        Put(',');
        if (m_formatted)
        {
            WriteEndOfLine();
            WriteIndent(context.Depth + 1);
        }
        if (m_roundTrip != RoundTripNone)
            Write("\"#text\": ", 9);
        else
            Write("\"\": ", 4);
    }
    // An element with text only stays pending: its key takes the bare value.
    WriteValue(value, type);
}

void CJsonTextWriter::EndElement()
{
    Context &context = Current();
    // The "]" of a collection is owed by the element that holds it.
    if (context.ArrayState == Context::ArrayClosing)
    {
        context.ArrayState = Context::ArrayNone;
        if (m_formatted)
        {
            WriteEndOfLine();
            WriteIndent(context.Depth);
            for (Context *c = &context; c; c = c->GetParent())
                if (c->Depth > 1)
                    --c->Depth;
        }
        Put(']');
    }
    if (!m_valuePending)
    {
        if (m_formatted)
        {
            WriteEndOfLine();
            WriteIndent(context.Depth);
        }
        Put('}');
    }
    PopContext();
    m_valuePending = false;
}

void CJsonTextWriter::WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                     std::string const &value, ItemType type)
{
    Context &context = Current();
    WriteSeparator(&context);
    if (m_formatted)
        WriteIndent(context.Depth + 1);
    if (namespaceUri.empty() || m_roundTrip != RoundTripFull)
    {
        if (m_roundTrip == RoundTripNone)
            Put('"');
        else
            Write("\"@", 2);
    }
    else
    {
        // Unlike an element, an attribute never takes the default namespace.
        std::string const &prefix = PrefixFor(context, namespaceUri, [&](std::string const &) {
            throw CMxException(FormatString("Unknown Namespace: %s.", localName.c_str()));
        });
        Write("\"@", 2);
        Write(prefix);
        Put(':');
    }
    Write(localName);
    Write("\": ", 3);
    WriteValue(value, type);
    m_valuePending = false;
}

void CJsonTextWriter::WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName,
                                         ItemType type)
{
    if (m_roundTrip != RoundTripFull)
        return;
    std::string const value = TypeValue(Current(), typeNamespace, typeName, [&](std::string const &) {
        throw CMxException(FormatString("Unknown Namespace: %s.", typeName.c_str()));
    });
    WriteAttribute("type", kXsiNamespace, value, type);
}

void CJsonTextWriter::WriteValue(std::string const &value, ItemType type)
{
    if (IsUnquoted(type))
    {
        Write(value);
        return;
    }
    Put('"');
    WriteEscaped(value.c_str());
    Put('"');
}

void CJsonTextWriter::WriteEscaped(char const *text)
{
    static char const kHex[] = "0123456789ABCDEF";
    WriteEscapedRuns(text, text + std::strlen(text), kSpecial, [&](unsigned char c) {
        if (c == 0x0A)
            WriteEndOfLine();
        else if (c != 0x0D)
        {
            char const escape[6] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0x0F]};
            Write(escape, sizeof escape);
        }
    });
}

} // namespace MxXmlLib
