#include "fastinfoset/FastInfosetWriter.h"

#include "fastinfoset/FastInfosetBinaryData.h"
#include "fastinfoset/FIIntegerLadder.h"
#include "fastinfoset/FastInfosetContext.h"
#include "runtime/BinaryStream.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

namespace MxXmlLib
{

namespace
{

// Indexed by FInfoDecl; 0 writes none.
char const *const kDeclarations[] = {
    "",
    "<?xml encoding='finf'?>",
    "<?xml encoding='finf' standalone='yes'?>",
    "<?xml encoding='finf' standalone='no'?>",
    "<?xml version='1.0' encoding='finf'?>",
    "<?xml version='1.0' encoding='finf' standalone='yes'?>",
    "<?xml version='1.0' encoding='finf' standalone='no'?>",
    "<?xml version='1.1' encoding='finf'?>",
    "<?xml version='1.1' encoding='finf' standalone='yes'?>",
    "<?xml version='1.1' encoding='finf' standalone='no'?>",
};
constexpr unsigned kDeclarationCount = sizeof(kDeclarations) / sizeof(kDeclarations[0]);

// Octets gathered before they are handed to the stream in one piece.
constexpr std::size_t kFlushSize = 0x10000;

constexpr unsigned char kTerminator = 0xF0;
constexpr unsigned char kDoubleTerminator = 0xFF;

bool IsAscii(std::string const &text)
{
    for (unsigned char c : text)
        if (c >= 0x80)
            return false;
    return true;
}

std::string_view View(CBinaryData const &data)
{
    return data.GetLength() ? std::string_view(reinterpret_cast<char const *>(data.GetData()), data.GetLength())
                            : std::string_view();
}

// A table index never exceeds 2^20, nor a length 2^32 - 1.
unsigned char Octet(std::uint64_t value)
{
    return static_cast<unsigned char>(value & 0xFF);
}
} // namespace

CFastInfosetWriter::CFastInfosetWriter(CBinaryStream *stream, CFastInfosetContext const *context)
    : Stream(stream), Context(context), PendingElement(nullptr), TerminatorPending(false),
      Vocabulary(context->GetUseGeneratedVocabulary() ? new CFIVocabulary(*context->GetVocabulary())
                                                      : new CFIVocabulary())
{
}

CFastInfosetWriter::~CFastInfosetWriter()
{
    delete Vocabulary;
    if (PendingElement)
        ReleaseContext(PendingElement);
}

void CFastInfosetWriter::Flush()
{
    if (m_out.empty())
        return;
    Stream->Write(reinterpret_cast<unsigned char const *>(m_out.data()), static_cast<unsigned long>(m_out.size()));
    m_out.clear();
}

// ---------------------------------------------------------------------------
// Document

char const *CFastInfosetWriter::DeclarationText(unsigned number)
{
    return number >= 1 && number < kDeclarationCount ? kDeclarations[number] : nullptr;
}

void CFastInfosetWriter::WriteHeader(FInfoDecl declaration)
{
    auto const number = static_cast<unsigned>(declaration);
    if (number >= kDeclarationCount)
        throw CMxInvalidParamException(FormatString("Invalid FInfoDecl value [%d]", static_cast<int>(declaration)));
    Put(kDeclarations[number]);
    Put(std::string_view("\xE0\x00\x00\x01", 4));
    if (!Context->GetUseGeneratedVocabulary())
    {
        Put(0x00);
        return;
    }
    // An initial vocabulary of one component: the external vocabulary.
    Put(0x20);
    Put(0x10);
    Put(0x00);
    std::string uri = Context->GetExternalVocabularyURI();
    if (uri.empty())
        uri = CFastInfosetContext::kDefaultVocabularyURI;
    AppendNonEmptyOctetStringBit2(Utf8(uri));
}

void CFastInfosetWriter::WriteDocumentEnd()
{
    FlushPendingElement(false);
    Put(TerminatorPending ? kDoubleTerminator : kTerminator);
    TerminatorPending = false;
    Flush();
    CXmlWriter::EndDocument();
}

void CFastInfosetWriter::WriteComment(std::string const &) {}

void CFastInfosetWriter::WriteProcessingInstruction(std::string const &)
{
    FlushPendingElement(false);
}

void CFastInfosetWriter::WriteInLineSchema(std::string const &) {}

// ---------------------------------------------------------------------------
// Elements

void CFastInfosetWriter::CloseStartTag()
{
    CXmlWriterContext &current = Current();
    if (!current.TagOpen)
        return;
    current.TagOpen = 0;
    if (current.HasAttributes)
        Put(kTerminator); // ends the attribute list
}

void CFastInfosetWriter::AddNamespace(std::string const &prefix, std::string const &uri)
{
    // An element's start waits for its first attribute or child; until then
    // its namespace block can still take a mapping.
    if (TakesNamespaces())
    {
        PendingElement->AddNamespace(prefix, uri);
        LateMappings.emplace_back(uri, prefix);
        return;
    }
    CXmlWriter::AddNamespace(prefix, uri);
}

void CFastInfosetWriter::SetDefaultNamespace(std::string const &uri)
{
    if (TakesNamespaces())
    {
        PendingElement->SetDefaultNamespace(uri);
        LateMappings.emplace_back(uri, std::string());
        return;
    }
    CXmlWriter::SetDefaultNamespace(uri);
}

bool CFastInfosetWriter::TakesNamespaces() const
{
    return PendingElement != nullptr && Context->GetReadsBackAsXml();
}

void CFastInfosetWriter::StartElement(std::string const &localName, std::string const &namespaceUri)
{
    FlushPendingElement(false);
    if (TerminatorPending)
    {
        Put(kTerminator);
        TerminatorPending = false;
    }
    if (m_current)
    {
        ++m_current->ChildCount;
        CloseStartTag();
    }
    PendingElement = CreateContext(localName, namespaceUri);
}

void CFastInfosetWriter::AppendNamespaceAttribute(std::string const &prefix, std::string const &uri)
{
    // A mapping without a prefix can only travel as a default.
    Put(prefix.empty() ? 0xCD : 0xCF);
    if (!prefix.empty())
        AppendIdentifyingString(prefix, StringTable::Prefix);
    AppendIdentifyingString(uri, StringTable::Namespace);
}

void CFastInfosetWriter::FlushPendingElement(bool attributesFollow)
{
    if (PendingElement == nullptr)
        return;
    CXmlWriterContext &element = *PendingElement;
    std::string prefix;
    std::string const &namespaceUri = element.NamespaceUri;
    bool generated = false;
    if (!namespaceUri.empty() && namespaceUri != element.GetEffectiveDefaultNamespace())
    {
        if (std::string const *known = element.FindPrefix(namespaceUri))
            prefix = *known;
        else
        {
            prefix = element.GeneratePrefix();
            generated = true;
        }
    }
    // By default a prefix made for the element's own name travels in the
    // literal name only; read back as XML it must be declared, since values
    // such as an xsi:type below may use it.
    bool const declareGenerated = generated && Context->GetReadsBackAsXml();
    if (declareGenerated)
    {
        element.AddNamespace(prefix, namespaceUri);
        LateMappings.emplace_back(namespaceUri, prefix);
    }
    unsigned char flags = 0;
    if (attributesFollow)
    {
        element.HasAttributes = 1;
        flags = 0x40;
    }
    if (element.GetParent() == nullptr)
    {
        // The root declares the document's mappings. The XML namespace is
        // bound by definition, and a block must hold at least one item.
        std::string const &defaultNamespace = element.GetEffectiveDefaultNamespace();
        NamespaceMap const map = element.GetEffectiveMap();
        bool declares = !defaultNamespace.empty();
        for (auto const &entry : map)
            declares = declares || !IsUnderXmlNamespace(entry.first);
        if (declares)
        {
            Put(flags | 0x38);
            flags = 0;
            if (!defaultNamespace.empty())
            {
                Put(0xCD);
                AppendIdentifyingString(defaultNamespace, StringTable::Namespace);
            }
            for (auto const &entry : map)
                if (!IsUnderXmlNamespace(entry.first))
                    AppendNamespaceAttribute(entry.second, entry.first);
            // The map keeps one prefix per namespace; values may use several.
            for (auto const &entry : LateMappings)
            {
                auto const mapped = map.find(entry.first);
                if (!entry.second.empty() && (mapped == map.end() || mapped->second != entry.second))
                    AppendNamespaceAttribute(entry.second, entry.first);
            }
            Put(kTerminator);
        }
    }
    else if (!LateMappings.empty())
    {
        Put(flags | 0x38);
        flags = 0;
        for (auto const &entry : LateMappings)
            AppendNamespaceAttribute(entry.second, entry.first);
        Put(kTerminator);
    }
    LateMappings.clear();
    if (generated && !declareGenerated)
        element.AddNamespace(prefix, namespaceUri);
    AppendElementQName(flags, prefix, namespaceUri, element.LocalName);
    SetCurrentContext(PendingElement);
    PendingElement = nullptr;
}

void CFastInfosetWriter::WriteText(std::string const &value, ItemType type, bool)
{
    FlushPendingElement(false);
    CloseStartTag();
    if (value.empty())
        return;
    // Text after a child element lands before the child's owed terminator,
    // inside the child, unless the context asks for what reads back as XML.
    if (TerminatorPending && Context->GetReadsBackAsXml())
    {
        Put(kTerminator);
        TerminatorPending = false;
    }
    AppendCharacterChunk(value, type);
}

void CFastInfosetWriter::EndElement()
{
    FlushPendingElement(false);
    CloseStartTag();
    if (TerminatorPending)
        Put(kDoubleTerminator);
    TerminatorPending = !TerminatorPending;
    PopContext();
    if (m_out.size() >= kFlushSize)
        Flush();
}

// ---------------------------------------------------------------------------
// Attributes

void CFastInfosetWriter::CheckAttributesAllowed()
{
    CXmlWriterContext &current = Current();
    // Once the element's first octet is out without the attribute bit, an
    // attribute could not be read back either.
    if (!current.TagOpen || !current.HasAttributes)
        throw CMxException("Attributes must be added before elements");
}

void CFastInfosetWriter::WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                        std::string const &value, ItemType type)
{
    FlushPendingElement(true);
    CheckAttributesAllowed();
    if (namespaceUri.empty())
        AppendAttributeQName("", "", localName);
    else
    {
        AppendAttributeQName(PrefixFor(Current(), namespaceUri, [](std::string const &) {}), namespaceUri, localName);
    }
    AppendAttributeValue(value, type);
}

void CFastInfosetWriter::WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName,
                                            ItemType type)
{
    // Reading back as XML: a type namespace with no prefix in force is
    // declared by the element itself, while its start still waits.
    if (TakesNamespaces() && !typeNamespace.empty() &&
        typeNamespace != PendingElement->GetEffectiveDefaultNamespace() &&
        PendingElement->FindPrefix(typeNamespace) == nullptr)
        AddNamespace(PendingElement->GeneratePrefix(), typeNamespace);
    FlushPendingElement(true);
    CheckAttributesAllowed();
    CXmlWriterContext &current = Current();
    if (typeNamespace.empty() || typeNamespace == current.GetEffectiveDefaultNamespace())
    {
        WriteAttribute("type", kXsiNamespace, typeName, type);
        return;
    }
    std::string prefix;
    if (std::string const *known = current.FindPrefix(typeNamespace))
    {
        prefix = *known;
        if (Context->GetReadsBackAsXml())
        {
            std::string const typePrefix = prefix;
            WriteAttribute("type", kXsiNamespace, typePrefix + ":" + typeName, type);
            return;
        }
        // The attribute carries the prefix of the type's namespace.
        AppendAttributeQName(prefix, kXsiNamespace, "type");
    }
    else
    {
        // Here the attribute is named after the type itself; the reader
        // takes what it finds.
        prefix = current.GeneratePrefix();
        current.AddNamespace(prefix, typeNamespace);
        AppendAttributeQName(prefix, typeNamespace, typeName);
    }
    AppendAttributeValue(prefix + ":" + typeName, type);
}

void CFastInfosetWriter::WriteNilAttribute()
{
    FlushPendingElement(true);
    CheckAttributesAllowed();
    WriteAttribute("nil", kXsiNamespace, "true", ItemType_boolean);
}

// ---------------------------------------------------------------------------
// Names and strings

void CFastInfosetWriter::AppendIdentifyingString(std::string const &text, StringTable table)
{
    CFIVocabulary::IndexMap const &map = table == StringTable::Prefix      ? Vocabulary->PrefixNamesMap
                                         : table == StringTable::Namespace ? Vocabulary->NamespaceNamesMap
                                                                           : Vocabulary->LocalNamesMap;
    std::uint32_t index;
    if (CFIVocabulary::FindIndex(map, text, index))
    {
        AppendIntegerBit2(0x80, index);
        return;
    }
    AppendNonEmptyOctetStringBit2(Utf8(text));
    switch (table)
    {
    case StringTable::Prefix:
        Vocabulary->AddPrefixName(text);
        break;
    case StringTable::Namespace:
        Vocabulary->AddNamespaceName(text);
        break;
    case StringTable::LocalName:
        Vocabulary->AddLocalName(text);
        break;
    }
}

void CFastInfosetWriter::AppendAttributeQName(std::string const &prefix, std::string const &namespaceUri,
                                              std::string const &localName)
{
    CFIVocabulary::QNameKey(m_key, prefix, namespaceUri, localName);
    std::uint32_t index;
    if (CFIVocabulary::FindIndex(Vocabulary->AttributeNamesMap, m_key, index))
    {
        AppendIntegerBit2(0, index);
        return;
    }
    AppendLiteralQName(0x78, prefix, namespaceUri, localName);
    CFIVocabulary::AddValueToMap(m_key, Vocabulary->AttributeNamesMap);
}

void CFastInfosetWriter::AppendElementQName(unsigned char flags, std::string const &prefix,
                                            std::string const &namespaceUri, std::string const &localName)
{
    KnownName &known = KnownElement(prefix, namespaceUri, localName);
    if (known.index != 0)
    {
        AppendInteger(kIntegerOnBit3, flags, known.index);
        return;
    }
    CFIVocabulary::QNameKey(m_key, prefix, namespaceUri, localName);
    std::uint32_t index;
    if (CFIVocabulary::FindIndex(Vocabulary->ElementNamesMap, m_key, index))
    {
        // Only a name the table holds is remembered: a full table adds none.
        if (m_knownCount < m_knownElements.size() / 4 * 3)
        {
            known.prefix = prefix;
            known.namespaceUri = namespaceUri;
            known.localName = localName;
            known.index = index;
            ++m_knownCount;
        }
        AppendInteger(kIntegerOnBit3, flags, index);
        return;
    }
    AppendLiteralQName(flags | 0x3C, prefix, namespaceUri, localName);
    CFIVocabulary::AddValueToMap(m_key, Vocabulary->ElementNamesMap);
}

CFastInfosetWriter::KnownName &CFastInfosetWriter::KnownElement(std::string const &prefix,
                                                                std::string const &namespaceUri,
                                                                std::string const &localName)
{
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (unsigned char c : localName)
        hash = (hash ^ c) * 16777619u;
    std::size_t const mask = m_knownElements.size() - 1; // a power of two
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask)
    {
        KnownName &known = m_knownElements[slot];
        if (known.index == 0 ||
            (known.localName == localName && known.namespaceUri == namespaceUri && known.prefix == prefix))
            return known;
    }
}

// The tag with a bit each for a prefix and a namespace, then the strings present.
void CFastInfosetWriter::AppendLiteralQName(unsigned char tag, std::string const &prefix,
                                            std::string const &namespaceUri, std::string const &localName)
{
    Put(tag | (prefix.empty() ? 0 : 2) | (namespaceUri.empty() ? 0 : 1));
    if (!prefix.empty())
        AppendIdentifyingString(prefix, StringTable::Prefix);
    if (!namespaceUri.empty())
        AppendIdentifyingString(namespaceUri, StringTable::Namespace);
    AppendIdentifyingString(localName, StringTable::LocalName);
}

void CFastInfosetWriter::AppendAttributeValue(std::string const &text, ItemType type)
{
    if (text.empty())
    {
        Put(0xFF); // index 0: the empty string
        return;
    }
    if (text.size() >= Context->GetAttributeMaxAddLength())
    {
        AppendEncodedCharacterString(kStringOnBit3, 0, text, type);
        return;
    }
    std::uint32_t index;
    if (CFIVocabulary::FindIndex(Vocabulary->AttributeValuesMap, text, index))
    {
        AppendIntegerBit2(0x80, index);
        return;
    }
    AppendEncodedCharacterString(kStringOnBit3, 0x40, text, type);
    CFIVocabulary::AddValueToMap(text, Vocabulary->AttributeValuesMap);
}

void CFastInfosetWriter::AppendCharacterChunk(std::string const &text, ItemType type)
{
    if (text.size() >= Context->GetElementMaxAddLength())
    {
        AppendEncodedCharacterString(kStringOnBit5, 0x80, text, type);
        return;
    }
    std::uint32_t index;
    if (CFIVocabulary::FindIndex(Vocabulary->CharacterChunksMap, text, index))
    {
        AppendInteger(kIntegerOnBit4, 0xA0, index);
        return;
    }
    AppendEncodedCharacterString(kStringOnBit5, 0x90, text, type);
    CFIVocabulary::AddValueToMap(text, Vocabulary->CharacterChunksMap);
}

void CFastInfosetWriter::AppendEncodedCharacterString(FIStringForm const &form, unsigned char flags,
                                                      std::string const &text, ItemType type)
{
    CFastInfosetContext::EncodedCharacterString const encoding = Context->GetEncoding(type);
    switch (encoding.Type)
    {
    case 0:
        if (Context->GetDefaultStringEncoding() == 1)
            throw CMxException(
                "Failed to write FastInfoset. Unsupported Feature UTF16BE in EncodedCharacterStringBit5.");
        AppendNonEmptyOctetString(*form.length, flags, Utf8(text));
        return;
    case 1:
    case 2: {
        std::string const octets = EncodeValue(encoding.Type, encoding.Value, text);
        std::uint32_t const number = encoding.Value - 1; // [0, 9]
        // The number's high bits close this octet, its low bits open the length's.
        unsigned const kind = encoding.Type == 1 ? 2u : 3u;
        Put(flags | Octet(kind << form.kindShift) | Octet(number >> (8 - form.kindShift)));
        AppendNonEmptyOctetString(*form.length, Octet(number << form.kindShift), octets);
        return;
    }
    default:
        throw CMxException(form.unknownEncoding);
    }
}

std::string CFastInfosetWriter::EncodeValue(std::uint32_t kind, std::uint32_t value, std::string const &text)
{
    std::string octets;
    if (kind == 1)
    {
        if (value != 1 && value != 2)
            throw CMxException(FormatString("Failed to write FastInfoset. Invalid Restricted Alphabet value [%d]",
                                            static_cast<int>(value)));
        octets = AppendRestrictedAlphabetString(value, text);
    }
    else
    {
        if (value < 1 || value > 10)
            throw CMxException(FormatString("Failed to write FastInfoset. Invalid Encoding Algorithm value [%d]",
                                            static_cast<int>(value)));
        CFastInfosetBinaryData data;
        data.SetAsEncodedString(value, text.c_str());
        octets = View(data);
    }
    // A value that encodes to nothing (base64 of stray characters) has no
    // form in the format, which knows no empty encoded string.
    if (octets.empty())
        throw CMxException("Failed to write FastInfoset. Empty encoded value.");
    return octets;
}

std::string CFastInfosetWriter::AppendRestrictedAlphabetString(std::uint32_t alphabet, std::string const &text)
{
    std::string const &characters = Vocabulary->RestrictedAlphabets[alphabet - 1];
    std::size_t const length = characters.size();
    if (length < 2 || length > 0x100000)
        throw CMxException("Failed to write FastInfoset. Invalid Restricted Alphabet. Alphabet must contain between "
                           "2 and 2^20 characters.");
    // The smallest width whose all-ones value, the terminator, is no character.
    unsigned bits = 2;
    while ((std::size_t(1) << bits) <= length)
        ++bits;
    if (bits != 4 && bits != 8)
        throw CMxException("Failed to write FastInfoset. Unsupported Feature in AppendRestrictedAlphabetString.");
    std::string octets;
    octets.reserve(bits == 8 ? text.size() : (text.size() + 1) / 2);
    bool highHalf = true;
    for (char c : text)
    {
        std::size_t const position = characters.find(c);
        if (position == std::string::npos)
            throw CMxException("Failed to write FastInfoset. Invalid character not found for Restricted Alphabet.");
        if (bits == 8)
            octets.push_back(static_cast<char>(position));
        else if (highHalf)
            octets.push_back(static_cast<char>(position << 4));
        else
            octets.back() = static_cast<char>(octets.back() | static_cast<char>(position));
        highHalf = bits == 8 || !highHalf;
    }
    if (!highHalf)
        octets.back() = static_cast<char>(octets.back() | 0x0F);
    return octets;
}

// ---------------------------------------------------------------------------
// Integers and octet strings

void CFastInfosetWriter::AppendLength32(std::uint32_t n)
{
    Put(Octet(n >> 24));
    Put(Octet(n >> 16));
    Put(Octet(n >> 8));
    Put(Octet(n));
}

void CFastInfosetWriter::AppendNonEmptyOctetStringBit2(std::string_view octets)
{
    if (octets.empty())
        throw CMxException("Failed to write FastInfoset. Empty identifying string.");
    AppendNonEmptyOctetString(kLengthOnBit2, 0, octets);
}

void CFastInfosetWriter::AppendNonEmptyOctetString(FILengthForm const &form, unsigned char prefix,
                                                   std::string_view octets)
{
    std::size_t const length = octets.size(); // >= 1: callers write non-empty strings
    if (length < form.oneBase)
        Put(prefix | Octet(length - 1));
    else if (length < form.fourBase)
    {
        Put(prefix | form.oneOctet);
        Put(Octet(length - form.oneBase));
    }
    else
    {
        Put(prefix | form.fourOctets);
        AppendLength32(static_cast<std::uint32_t>(length - form.fourBase));
    }
    Put(octets);
}

void CFastInfosetWriter::AppendIntegerBit2(unsigned char flags, std::uint32_t n)
{
    if (n < 65)
        Put(flags | Octet(n - 1)); // [0, 63]
    else if (n < 8257)
    {
        std::uint32_t const v = n - 65; // [0, 8191]
        Put(flags | 0x40 | Octet(v >> 8));
        Put(Octet(v));
    }
    else
    {
        std::uint32_t const v = n - 8257; // [0, 2^20 - 8257]
        Put(flags | 0x60 | Octet(v >> 16));
        Put(Octet(v >> 8));
        Put(Octet(v));
    }
}

void CFastInfosetWriter::AppendInteger(FIIntegerLadder const &ladder, unsigned char flags, std::uint32_t n)
{
    if (n < ladder.twoBase)
    {
        Put(flags | Octet(n - 1));
        return;
    }
    if (n < ladder.threeBase)
    {
        std::uint32_t const v = n - ladder.twoBase;
        Put(flags | ladder.twoOctets | Octet(v >> 8));
        Put(Octet(v));
        return;
    }
    std::uint32_t v;
    if (n < ladder.fourBase)
    {
        v = n - ladder.threeBase;
        Put(flags | ladder.threeOctets | Octet(v >> 16));
    }
    else
    {
        v = n - ladder.fourWriteBase;
        Put(flags | ladder.fourOctets);
        Put(Octet(v >> 16));
    }
    Put(Octet(v >> 8));
    Put(Octet(v));
}

std::string_view CFastInfosetWriter::Utf8(std::string const &text)
{
    if (IsUtf8PassThrough() || IsAscii(text))
        return text;
    CBinaryData const utf8 = LocalToUtf8(text.c_str());
    if (utf8.GetLength() == 0)
        return text; // not convertible: the bytes as they stand
    m_utf8.assign(reinterpret_cast<char const *>(utf8.GetData()), utf8.GetLength());
    return m_utf8;
}

} // namespace MxXmlLib
