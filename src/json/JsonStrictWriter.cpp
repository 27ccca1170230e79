#include "json/JsonStrictWriter.h"

#include "runtime/MxException.h"

namespace MxXmlLib
{

namespace
{
// Bytes that cannot stand in a JSON string as they are.
constexpr CByteSet kEscaped([](unsigned c) { return c < 0x20 || c == '"' || c == '\\'; });

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The RFC 8259 number grammar; INF, NaN, "+1" and "1." are not numbers.
bool IsJsonNumber(std::string const &text)
{
    std::size_t i = 0;
    std::size_t const n = text.size();
    if (i < n && text[i] == '-')
        ++i;
    if (i == n)
        return false;
    if (text[i] == '0')
        ++i;
    else if (text[i] >= '1' && text[i] <= '9')
        while (i < n && IsDigit(text[i]))
            ++i;
    else
        return false;
    if (i < n && text[i] == '.')
    {
        std::size_t const start = ++i;
        while (i < n && IsDigit(text[i]))
            ++i;
        if (i == start)
            return false;
    }
    if (i < n && (text[i] == 'e' || text[i] == 'E'))
    {
        ++i;
        if (i < n && (text[i] == '+' || text[i] == '-'))
            ++i;
        std::size_t const start = i;
        while (i < n && IsDigit(text[i]))
            ++i;
        if (i == start)
            return false;
    }
    return i == n;
}

// Unquoted when the item type is numeric or boolean and the text is a JSON
// number or literal; the reader keeps such a token's text as it stood.
bool IsBareToken(std::string const &text, ItemType type)
{
    if (type == ItemType_boolean)
        return text == "true" || text == "false";
    bool const numeric = (type >= ItemType_i1 && type <= ItemType_r8) || type == ItemType_decimal ||
                         type == ItemType_integer;
    return numeric && IsJsonNumber(text);
}
} // namespace

CJsonStrictWriter::CJsonStrictWriter(CTextStream *stream) : CJsonTextWriter(stream), m_depth(0) {}

CJsonStrictWriter::~CJsonStrictWriter() = default;

std::unique_ptr<CJsonTextWriter> CreateJsonWriter(CTextStream *stream, CJsonContext const &options)
{
    if (options.IsStrict())
        return std::make_unique<CJsonStrictWriter>(stream);
    return std::make_unique<CJsonTextWriter>(stream);
}

void CJsonStrictWriter::WriteComment(std::string const &) {}

void CJsonStrictWriter::Newline(std::int32_t level)
{
    if (!m_formatted)
        return;
    WriteEndOfLine();
    WriteIndent(level);
}

void CJsonStrictWriter::WriteString(char const *text, std::size_t length)
{
    static char const kHex[] = "0123456789abcdef";
    Put('"');
    WriteEscapedRuns(text, text + length, kEscaped, [&](unsigned char c) {
        switch (c)
        {
        case '"':
            Write("\\\"", 2);
            break;
        case '\\':
            Write("\\\\", 2);
            break;
        case '\b':
            Write("\\b", 2);
            break;
        case '\f':
            Write("\\f", 2);
            break;
        case '\n':
            Write("\\n", 2);
            break;
        case '\r':
            Write("\\r", 2);
            break;
        case '\t':
            Write("\\t", 2);
            break;
        default:
        {
            char const escape[6] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0x0F]};
            Write(escape, sizeof escape);
            break;
        }
        }
    });
    Put('"');
}

void CJsonStrictWriter::WriteKey(std::string const &key)
{
    WriteString(key);
    if (m_formatted)
        Write(": ", 2);
    else
        Put(':');
}

void CJsonStrictWriter::WriteStrictValue(std::string const &value, ItemType type)
{
    if (IsBareToken(value, type))
        Write(value);
    else
        WriteString(value);
}

bool CJsonStrictWriter::HasKey(Frame const &frame, std::string const &key)
{
    for (std::string const &used : frame.keys)
        if (used == key)
            return true;
    return false;
}

CJsonStrictWriter::Frame &CJsonStrictWriter::PushFrame(std::int32_t level, bool wrapped)
{
    if (m_depth == m_frames.size())
        m_frames.emplace_back();
    Frame &frame = m_frames[m_depth++];
    frame.level = level;
    frame.object = false;
    frame.wrapped = wrapped;
    frame.nil = false;
    frame.textUsed = false;
    frame.content = false;
    frame.hasText = false;
    frame.group = GroupNone;
    frame.text.clear();
    frame.arrayKey.clear();
    frame.keys.clear();
    return frame;
}

void CJsonStrictWriter::BeginMember(Frame &frame)
{
    if (frame.object)
        Put(',');
    else
    {
        Put('{');
        frame.object = true;
    }
    Newline(frame.level);
}

void CJsonStrictWriter::WriteDeclarationMember(Frame &frame, std::string const &prefix, std::string const &uri)
{
    BeginMember(frame);
    WriteKey(prefix.empty() ? std::string("@xmlns") : "@xmlns:" + prefix);
    WriteString(uri);
}

// Text that came before any member goes first, as "#text".
void CJsonStrictWriter::FlushPendingText(Frame &frame)
{
    if (!frame.hasText)
        return;
    frame.hasText = false;
    BeginMember(frame);
    WriteKey("#text");
    WriteStrictValue(frame.text, frame.textType);
    frame.textUsed = true;
}

void CJsonStrictWriter::CloseGroup(Frame &frame)
{
    if (frame.group == GroupNone)
        return;
    Newline(frame.level);
    Put(']');
    frame.group = GroupNone;
}

std::int32_t CJsonStrictWriter::StartSequenceEntry(Frame &frame, std::string const &key)
{
    if (frame.group != GroupSequence)
    {
        CloseGroup(frame);
        BeginMember(frame);
        WriteKey("#seq");
        Put('[');
        frame.group = GroupSequence;
    }
    else
        Put(',');
    Newline(frame.level + 1);
    Put('{');
    Newline(frame.level + 2);
    WriteKey(key);
    return frame.level + 3;
}

std::int32_t CJsonStrictWriter::PlaceChild(Frame &parent, Context &parentContext, std::string const &key,
                                           bool &wrapped)
{
    FlushPendingText(parent);
    parent.content = true;
    wrapped = false;
    // The rows announce a collection on the parent's context before its first
    // item and mark it written after its last; the next event here sees it.
    bool starts = false;
    if (parentContext.ArrayState == Context::ArrayClosing)
    {
        if (parent.group == GroupArray)
            CloseGroup(parent);
        parentContext.ArrayState = Context::ArrayNone;
    }
    else if (parentContext.ArrayState == Context::ArrayPending)
    {
        if (parent.group == GroupArray)
            CloseGroup(parent);
        parentContext.ArrayState = Context::ArrayOpen;
        starts = true;
    }
    if (parent.group == GroupArray && key == parent.arrayKey)
    {
        Put(',');
        Newline(parent.level + 1);
        return parent.level + 2;
    }
    // Names alternate, or a key comes back: order can only be kept in "#seq".
    if (parent.group != GroupNone || HasKey(parent, key))
    {
        wrapped = true;
        return StartSequenceEntry(parent, key);
    }
    BeginMember(parent);
    WriteKey(key);
    parent.keys.push_back(key);
    if (!starts)
        return parent.level + 1;
    Put('[');
    parent.group = GroupArray;
    parent.arrayKey = key;
    Newline(parent.level + 1);
    return parent.level + 2;
}

void CJsonStrictWriter::StartElement(std::string const &localName, std::string const &namespaceUri)
{
    Context *parentContext = m_current;
    Context *context = CreateContext(localName, namespaceUri);
    bool const isRoot = parentContext == nullptr;
    bool const full = m_roundTrip == RoundTripFull;
    std::size_t const depthBefore = m_depth;
    try
    {
        std::string prefix;
        bool declare = false;
        if (full && !namespaceUri.empty() && namespaceUri != context->GetEffectiveDefaultNamespace())
        {
            prefix = PrefixFor(*context, namespaceUri, [&](std::string const &) { declare = true; });
            m_key.assign(prefix).append(1, ':').append(localName);
        }
        else
            m_key.assign(localName);

        std::int32_t level = 2;
        bool wrapped = false;
        if (isRoot)
        {
            // The frame has written "{" and its line end.
            if (m_formatted)
                WriteIndent(1);
            WriteKey(m_key);
        }
        else
            level = PlaceChild(Top(), *parentContext, m_key, wrapped);
        Frame &frame = PushFrame(level, wrapped);
        if (declare)
            WriteDeclarationMember(frame, prefix, namespaceUri);
        if (isRoot && full)
            ForEachRootDeclaration([&](std::string const &mapped, std::string const &uri) {
                WriteDeclarationMember(frame, mapped, uri);
            });
        FlushCheck();
    }
    catch (...)
    {
        m_depth = depthBefore;
        ReleaseContext(context);
        throw;
    }
    SetCurrentContext(context);
}

void CJsonStrictWriter::WriteText(std::string const &value, ItemType type, bool)
{
    if (value.empty())
        return;
    Current();
    Frame &frame = Top();
    if (!frame.object && !frame.content)
    {
        // Adjacent texts run together in the tree as well.
        if (!frame.hasText)
            frame.textType = type;
        frame.text += value;
        frame.hasText = true;
        return;
    }
    frame.content = true;
    if (frame.group == GroupArray)
        CloseGroup(frame);
    if (frame.group == GroupSequence || frame.textUsed)
    {
        StartSequenceEntry(frame, "#text");
        WriteStrictValue(value, type);
        Newline(frame.level + 1);
        Put('}');
        return;
    }
    BeginMember(frame);
    WriteKey("#text");
    WriteStrictValue(value, type);
    frame.textUsed = true;
}

void CJsonStrictWriter::EndElement()
{
    Current();
    Frame &frame = Top();
    if (frame.object)
        FlushPendingText(frame);
    else if (frame.hasText)
        WriteStrictValue(frame.text, frame.textType);
    else if (frame.nil)
        Write("null", 4);
    else
        Write("\"\"", 2);
    CloseGroup(frame);
    if (frame.object)
    {
        Newline(frame.level - 1);
        Put('}');
    }
    if (frame.wrapped)
    {
        Newline(frame.level - 2);
        Put('}');
    }
    --m_depth;
    PopContext();
}

void CJsonStrictWriter::WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                       std::string const &value, ItemType type)
{
    Context &context = Current();
    Frame &frame = Top();
    if (frame.content)
        throw CMxException("Attributes must be added before elements");
    if (m_roundTrip != RoundTripFull || namespaceUri.empty())
    {
        m_key.assign(1, '@').append(localName);
        if (m_roundTrip != RoundTripFull)
        {
            // Without namespaces two attributes may share a key; the first wins.
            if (HasKey(frame, m_key))
                return;
            frame.keys.push_back(m_key);
        }
    }
    else
    {
        std::string const &prefix = PrefixFor(context, namespaceUri, [&](std::string const &generated) {
            WriteDeclarationMember(frame, generated, namespaceUri);
        });
        m_key.assign(1, '@').append(prefix).append(1, ':').append(localName);
    }
    BeginMember(frame);
    WriteKey(m_key);
    WriteStrictValue(value, type);
}

void CJsonStrictWriter::WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName,
                                           ItemType type)
{
    if (m_roundTrip != RoundTripFull)
        return;
    Context &context = Current();
    Frame &frame = Top();
    std::string const value = TypeValue(context, typeNamespace, typeName, [&](std::string const &generated) {
        if (frame.content)
            throw CMxException("Attributes must be added before elements");
        WriteDeclarationMember(frame, generated, typeNamespace);
    });
    WriteAttribute("type", kXsiNamespace, value, type);
}

void CJsonStrictWriter::WriteNilAttribute()
{
    Current();
    if (m_roundTrip == RoundTripFull)
        WriteAttribute("nil", kXsiNamespace, "true", ItemType_boolean);
    else
        Top().nil = true;
}

} // namespace MxXmlLib
