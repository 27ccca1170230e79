#include "fastinfoset/FastInfosetReader.h"

#include "document/XmlDocument.h"
#include "fastinfoset/FastInfosetBinaryData.h"
#include "fastinfoset/FIIntegerLadder.h"
#include "fastinfoset/FastInfosetContext.h"
#include "fastinfoset/FastInfosetWriter.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"

#include <cstring>

namespace MxXmlLib
{

namespace
{
unsigned char const kIdentification[4] = {0xE0, 0x00, 0x00, 0x01};
std::string const kEmpty;

[[noreturn]] void Fail(char const *message)
{
    throw CMxException(message);
}

// Indexes come from the input: one beyond its table is malformed input.
[[noreturn]] void FailIndex(std::uint32_t index)
{
    throw CMxException(FormatString("Failed to parse FastInfoset. Index [%u] out of range.", index));
}
} // namespace

CFastInfosetReader::CFastInfosetReader(CFastInfosetContext const *context, CXmlDocument *document)
    : Context(context), Document(document), Cursor(document->m_buffer), Current(document->m_buffer),
      End(document->m_buffer + document->m_bufferLength), BitsWanted(0), BitsLeft(0), BitBuffer(0),
      ElementEnded(false), IndexRead(0), AddToTable(false),
      Vocabulary(context->GetUseGeneratedVocabulary() ? new CFIVocabulary(*context->GetVocabulary())
                                                      : new CFIVocabulary()),
      m_namespace(&kEmpty), m_localName(&kEmpty)
{
}

CFastInfosetReader::~CFastInfosetReader()
{
    delete Vocabulary;
}

unsigned char const *CFastInfosetReader::Read(std::uint64_t n)
{
    Current = Cursor;
    if (n > static_cast<std::uint64_t>(End - Cursor))
        Fail("Failed to parse FastInfoset. Unexpected End of File.");
    Cursor += n;
    return Current;
}

CXmlElement *CFastInfosetReader::CurrentElement() const
{
    return Document->m_elementStack.back();
}

std::string const &CFastInfosetReader::Entry(CFIVocabulary::CFIStringTable const &table, std::uint32_t index)
{
    if (index == 0 || index > table.size())
        FailIndex(index);
    return table[index - 1];
}

// ---------------------------------------------------------------------------
// Header

bool CFastInfosetReader::ReadIdentification()
{
    unsigned char const *const data = Cursor;
    auto const length = static_cast<std::size_t>(End - Cursor);
    if (length > 4 && std::memcmp(data, kIdentification, 4) == 0)
    {
        Cursor += 4;
        return true;
    }
    for (unsigned number = 1; char const *declaration = CFastInfosetWriter::DeclarationText(number); ++number)
    {
        std::size_t const size = std::strlen(declaration);
        if (length < size || std::memcmp(data, declaration, size) != 0)
            continue;
        Cursor += size;
        if (length - size < 4 || std::memcmp(Cursor, kIdentification, 4) != 0)
            return false;
        Cursor += 4;
        return true;
    }
    return false;
}

void CFastInfosetReader::ReadHeader()
{
    unsigned char const components = ReadOctet();
    if (components == 0)
        return;
    if (components & 0x40)
        SkipAdditionalData();
    if (components & 0x20)
        SkipInitialVocabulary();
    if (components & 0x10)
        SkipNotations();
    if (components & 0x08)
        SkipUnparsedEntities();
    if (components & 0x04)
        SkipOctetStringBit2(); // character encoding scheme
    if (components & 0x02)
        Read(1); // standalone
    if (components & 0x01)
        ReadValueString(nullptr); // version
}

std::uint32_t CFastInfosetReader::ReadSequenceCount()
{
    unsigned char const first = ReadOctet();
    if (first < 0x80)
        return first + 1u; // [1, 128]
    std::uint32_t const high = first & 0x0F;
    std::uint32_t const middle = ReadOctet();
    return ((high << 16) | (middle << 8) | ReadOctet()) + 129;
}

// The count is read again before every item, and the table ends when the
// items done reach the count just read. A table of one item reads as X.891
// has it; longer ones, which this library never writes, read differently.
template <typename SkipItem> void CFastInfosetReader::SkipTable(SkipItem skipItem)
{
    std::uint32_t done = 0;
    std::uint32_t count;
    do
    {
        count = ReadSequenceCount();
        skipItem();
        ++done;
    } while (done < count);
}

void CFastInfosetReader::SkipOctetStringBit2()
{
    Read(ReadOctetStringLength(kLengthOnBit2, ReadOctet()));
}

void CFastInfosetReader::SkipAdditionalData()
{
    SkipTable([this] {
        SkipOctetStringBit2(); // id
        SkipOctetStringBit2(); // data
    });
}

void CFastInfosetReader::SkipInitialVocabulary()
{
    unsigned char const first = ReadOctet();
    unsigned char const second = ReadOctet();
    // The external vocabulary's URI is never compared with anything.
    if (first & 0x10)
        SkipOctetStringBit2();
    auto strings = [this] { SkipTable([this] { SkipOctetStringBit2(); }); };
    auto encoded = [this] { SkipTable([this] { ReadEncodedString(kStringOnBit3, ReadOctet()); }); };
    auto names = [this] {
        SkipTable([this] {
            unsigned char const parts = ReadOctet();
            if (parts & 0x02)
                ReadIntegerBit2(ReadOctet());
            if (parts & 0x01)
                ReadIntegerBit2(ReadOctet());
            ReadIntegerBit2(ReadOctet());
        });
    };
    for (unsigned char bit : {0x08, 0x04, 0x02, 0x01})
        if (first & bit)
            strings();
    for (unsigned char bit : {0x80, 0x40, 0x20})
        if (second & bit)
            strings();
    for (unsigned char bit : {0x10, 0x08, 0x04})
        if (second & bit)
            encoded();
    for (unsigned char bit : {0x02, 0x01})
        if (second & bit)
            names();
}

void CFastInfosetReader::SkipNotations()
{
    for (unsigned char item = ReadOctet(); (item & 0xFC) == 0xC0; item = ReadOctet())
    {
        ReadIdentifyingString(); // name
        if (item & 0x02)
            ReadIdentifyingString(); // system identifier
        if (item & 0x01)
            ReadIdentifyingString(); // public identifier
    }
}

void CFastInfosetReader::SkipUnparsedEntities()
{
    for (unsigned char item = ReadOctet(); (item & 0xFE) == 0xD0; item = ReadOctet())
    {
        ReadIdentifyingString(); // name
        ReadIdentifyingString(); // system identifier
        if (item & 0x01)
            ReadIdentifyingString(); // public identifier
        ReadIdentifyingString();     // notation name
    }
}

// ---------------------------------------------------------------------------
// Body

void CFastInfosetReader::ReadDocumentBody()
{
    unsigned char last;
    do
    {
        unsigned char const item = ReadOctet();
        last = item;
        if (item < 0x80)
        {
            ReadElement();
            last = *Current; // the element's terminator
        }
        else if (item == 0xE1)
            SkipProcessingInstruction();
        else if (item == 0xE2)
            SkipComment();
        else if ((item & 0xFC) == 0xC4)
            SkipIdentifiers(item); // document type
    } while (last != 0xF0 && last < 0xFF);
}

void CFastInfosetReader::SkipProcessingInstruction()
{
    ReadIdentifyingString(); // target
    ReadValueString(nullptr);
}

void CFastInfosetReader::SkipComment()
{
    ReadValueString(nullptr);
}

void CFastInfosetReader::SkipIdentifiers(unsigned char first)
{
    if (first & 0x02)
        ReadIdentifyingString(); // system identifier
    if (first & 0x01)
        ReadIdentifyingString(); // public identifier
}

void CFastInfosetReader::ReadElement()
{
    unsigned char const first = *Current;
    unsigned char name = first;
    if ((first & 0x3C) == 0x38)
    {
        unsigned char item = ReadOctet();
        for (; (item & 0xFC) == 0xCC; item = ReadOctet())
            ReadNamespaceAttribute(item);
        // `item` was the terminator of the block; the name follows.
        name = ReadOctet();
    }
    if ((name & 0x3C) < 0x3C)
        TakeQName(ReadInteger(kIntegerOnBit3, name), Vocabulary->ElementNamesTable);
    else
        ReadLiteralQName(name, Vocabulary->ElementNamesTable);
    // The prefix is not kept: the tree holds namespaces only.
    if (Document->m_elementStack.empty())
        Document->AddDocElement(m_namespace->c_str(), m_localName->c_str());
    else
        Document->AddChildElement(m_namespace->c_str(), m_localName->c_str());

    if (first & 0x40)
    {
        unsigned char item = ReadOctet();
        for (; item < 0x80; item = ReadOctet())
            ReadAttribute(item);
        if (item == 0xFF) // the attribute list and the element end together
        {
            Document->EndElement();
            return;
        }
    }
    for (;;)
    {
        unsigned char const item = ReadOctet();
        if (item == 0xF0)
        {
            Document->EndElement();
            return;
        }
        if (item == 0xFF)
        {
            // Ends this element and its parent.
            ElementEnded = true;
            Document->EndElement();
            return;
        }
        if (item >= 0xC0)
        {
            if (item == 0xE1)
                SkipProcessingInstruction();
            else if (item == 0xE2)
                SkipComment();
            else if ((item & 0xFC) == 0xC8)
            {
                ReadIdentifyingString(); // entity name
                SkipIdentifiers(item);
            }
            else
                Fail("Failed to parse FastInfoset. Invalid Encoding of Element type.");
        }
        else if (item >= 0x80)
            ReadCharacterChunk(item);
        else
        {
            ReadElement();
            if (ElementEnded)
            {
                ElementEnded = false;
                Document->EndElement();
                return;
            }
        }
    }
}

void CFastInfosetReader::ReadCharacterChunk(unsigned char first)
{
    CFIVocabulary::CFIStringTable &table = Vocabulary->CharacterChunksTable;
    std::string const *text = &Text;
    if (first & 0x20)
        text = &Entry(table, ReadInteger(kIntegerOnBit4, first));
    else
    {
        AddToTable = (first & 0x10) != 0;
        ReadEncodedString(kStringOnBit5, first);
        if (AddToTable)
            CFIVocabulary::AddValueToVector(Text, table);
    }
    CXmlDocument::AppendTextExcludingCR(CurrentElement(), text->data(), text->size());
}

void CFastInfosetReader::ReadAttribute(unsigned char first)
{
    if ((first & 0x78) != 0x78)
        TakeQName(ReadIntegerBit2(first), Vocabulary->AttributeNamesTable);
    else
        ReadLiteralQName(first, Vocabulary->AttributeNamesTable);
    std::string const *const namespaceUri = m_namespace;
    std::string const *const localName = m_localName;
    std::string const *const value = ReadValueString(&Vocabulary->AttributeValuesTable);
    CXmlDocument::AddElementAttribute(CurrentElement(), *localName, *value, *namespaceUri);
}

void CFastInfosetReader::ReadNamespaceAttribute(unsigned char first)
{
    std::uint32_t number;
    std::string const *prefix = &kEmpty;
    std::string const *uri = &kEmpty;
    if (first & 0x02)
        prefix = ReadIdentifyingString(Vocabulary->PrefixNamesTable, number, Prefix);
    if (first & 0x01)
        uri = ReadIdentifyingString(Vocabulary->NamespaceNamesTable, number, Namespace);
    Document->m_namespaceMap[*prefix] = *uri;
}

void CFastInfosetReader::TakeQName(std::uint32_t index, CFIVocabulary::CFIQNameTable const &table)
{
    if (index == 0 || index > table.size())
        FailIndex(index);
    CFIVocabulary::CQNameParts const &parts = table[index - 1];
    m_namespace = parts.Namespace ? &Entry(Vocabulary->NamespaceNamesTable, parts.Namespace) : &kEmpty;
    m_localName = &Entry(Vocabulary->LocalNamesTable, parts.LocalName);
}

void CFastInfosetReader::ReadLiteralQName(unsigned char first, CFIVocabulary::CFIQNameTable &table)
{
    bool const hasPrefix = (first & 0x02) != 0;
    bool const hasNamespace = (first & 0x01) != 0;
    if (hasPrefix && !hasNamespace)
        Fail("Failed to parse FastInfoset. Invalid QName type Prefix without Namespace.");
    std::uint32_t prefix = 0;
    std::uint32_t namespaceName = 0;
    std::uint32_t localName = 0;
    if (hasPrefix)
        ReadIdentifyingString(Vocabulary->PrefixNamesTable, prefix, Prefix);
    m_namespace = hasNamespace ? ReadIdentifyingString(Vocabulary->NamespaceNamesTable, namespaceName, Namespace)
                               : &kEmpty;
    m_localName = ReadIdentifyingString(Vocabulary->LocalNamesTable, localName, LocalName);
    CFIVocabulary::AddQNameToVector(prefix, namespaceName, localName, table);
}

// ---------------------------------------------------------------------------
// Strings

bool CFastInfosetReader::ReadIdentifyingString()
{
    unsigned char const first = ReadOctet();
    if (first & 0x80)
    {
        IndexRead = ReadIntegerBit2(first);
        return false;
    }
    std::uint64_t const length = ReadOctetStringLength(kLengthOnBit2, first);
    ReadUtf8(Read(length), length);
    return true;
}

std::string const *CFastInfosetReader::ReadIdentifyingString(CFIVocabulary::CFIStringTable &table,
                                                             std::uint32_t &number, std::string &overflow)
{
    if (!ReadIdentifyingString())
    {
        number = IndexRead;
        return &Entry(table, IndexRead);
    }
    if (table.size() < CFIVocabulary::kMaxEntries)
    {
        CFIVocabulary::AddValueToVector(Text, table);
        number = static_cast<std::uint32_t>(table.size());
        return &table[table.size() - 1];
    }
    number = static_cast<std::uint32_t>(table.size());
    overflow = Text;
    return &overflow;
}

std::string const *CFastInfosetReader::ReadValueString(CFIVocabulary::CFIStringTable *table)
{
    unsigned char const first = ReadOctet();
    if (first & 0x80)
    {
        std::uint32_t const index = ReadIntegerBit2WithZero(first);
        if (index == 0 || table == nullptr)
            return &kEmpty;
        return &Entry(*table, index);
    }
    AddToTable = (first & 0x40) != 0;
    ReadEncodedString(kStringOnBit3, first);
    if (AddToTable && table)
        CFIVocabulary::AddValueToVector(Text, *table);
    return &Text;
}

void CFastInfosetReader::ReadEncodedString(FIStringForm const &form, unsigned char first)
{
    unsigned const kind = (first >> form.kindShift) & 0x03u;
    if (kind < 2)
    {
        std::uint64_t const length = ReadOctetStringLength(*form.length, first);
        if (kind == 0)
            ReadUtf8(Read(length), length);
        else
            ReadUtf16(Read(length), length);
        return;
    }
    unsigned char const next = ReadOctet();
    unsigned const lowBits = (1u << form.kindShift) - 1u; // 0x0F, 0x03
    std::uint32_t const number =
        (((first & lowBits) << (8 - form.kindShift)) | (next >> form.kindShift)) + 1; // [1, 256]
    std::uint64_t const length = ReadOctetStringLength(*form.length, next);
    unsigned char const *octets = Read(length);
    if (kind == 2)
        ReadRestrictedAlphabet(octets, length, number);
    else
        ReadEncodedValue(octets, length, number);
}

void CFastInfosetReader::ReadUtf8(unsigned char const *octets, std::uint64_t length)
{
    Utf8ToLocal(Text, octets, static_cast<unsigned>(length));
}

// The units are taken in machine byte order, not swapped from the
// big-endian order of X.891: documents of this library never hold UTF-16.
void CFastInfosetReader::ReadUtf16(unsigned char const *octets, std::uint64_t length)
{
    std::wstring units(static_cast<std::size_t>(length / 2), L'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        std::uint16_t unit;
        std::memcpy(&unit, octets + 2 * i, sizeof(unit));
        units[i] = static_cast<wchar_t>(unit);
    }
    Text = Utf16ToLocal(units.data(), static_cast<unsigned>(units.size()));
}

void CFastInfosetReader::ReadRestrictedAlphabet(unsigned char const *octets, std::uint64_t length,
                                                std::uint32_t number)
{
    if (number > Vocabulary->RestrictedAlphabets.size())
        throw CMxException(
            FormatString("Failed to parse FastInfoset. Unknown Restricted Alphabet [%u].", number));
    std::string const &alphabet = Vocabulary->RestrictedAlphabets[number - 1];
    std::size_t const size = alphabet.size();
    if (size < 2 || size > 0x100000)
        Fail("Failed to parse FastInfoset. Invalid Encoding of Restricted Alphabet. Alphabet must contain between 2 "
             "and 2^20 characters.");
    unsigned width = 2;
    while ((std::size_t(1) << width) <= size)
        ++width;
    auto character = [&alphabet, size](std::uint32_t index) {
        if (index >= size)
            Fail("Failed to parse FastInfoset. Invalid character index for Restricted Alphabet.");
        return alphabet[index];
    };
    Text.clear();
    if (width == 8)
    {
        for (std::uint64_t i = 0; i < length; ++i)
            Text += character(octets[i]);
        return;
    }
    if (width == 4)
    {
        for (std::uint64_t i = 0; i < length; ++i)
        {
            Text += character(octets[i] >> 4);
            if ((octets[i] & 0x0F) == 0x0F)
                return;
            Text += character(octets[i] & 0x0F);
        }
        return;
    }
    // Other widths: `width` bits at a time, until the all-ones terminator.
    std::uint32_t const terminator = (1u << width) - 1;
    std::uint64_t const count = length * 8 / width;
    BitsLeft = 0;
    BitBuffer = 0;
    unsigned char const *next = octets;
    for (std::uint64_t i = 0; i < count; ++i)
    {
        std::uint32_t value = 0;
        for (BitsWanted = width; BitsWanted > 0; --BitsWanted)
        {
            if (BitsLeft == 0)
            {
                BitBuffer = *next++;
                BitsLeft = 8;
            }
            --BitsLeft;
            value = (value << 1) | ((BitBuffer >> BitsLeft) & 1u);
        }
        if (value == terminator)
            return;
        Text += character(value);
    }
}

void CFastInfosetReader::ReadEncodedValue(unsigned char const *octets, std::uint64_t length, std::uint32_t number)
{
    if (number == 10) // cdata: text as it stands
    {
        ReadUtf8(octets, length);
        return;
    }
    CFastInfosetBinaryData const data(const_cast<unsigned char *>(octets), static_cast<unsigned long>(length), false);
    Text = data.GetAsString(number);
}

// ---------------------------------------------------------------------------
// Integers and lengths

std::uint32_t CFastInfosetReader::ReadFourOctets()
{
    unsigned char const *p = Read(4);
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}

std::uint32_t CFastInfosetReader::ReadIntegerBit2(unsigned char first)
{
    if ((first & 0x40) == 0)
        return (first & 0x3Fu) + 1; // [1, 64]
    if ((first & 0x60) == 0x40)
        return (((first & 0x1Fu) << 8) | ReadOctet()) + 65; // [65, 8256]
    if ((first & 0x70) == 0x60)
    {
        std::uint32_t const high = first & 0x0Fu;
        std::uint32_t const middle = ReadOctet();
        return ((high << 16) | (middle << 8) | ReadOctet()) + 8257;
    }
    Fail("Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the second bit of an octet.");
}

std::uint32_t CFastInfosetReader::ReadIntegerBit2WithZero(unsigned char first)
{
    if ((first & 0x7F) == 0x7F)
        return 0;
    if ((first & 0x70) == 0x70)
        Fail("Failed to parse FastInfoset. Invalid Encoding of integers 0 To 2^20 type  on the second bit of an "
             "octet.");
    return ReadIntegerBit2(first);
}

std::uint32_t CFastInfosetReader::ReadInteger(FIIntegerLadder const &ladder, unsigned char first)
{
    unsigned const below = ladder.startBit - 1u;                // 0x1F, 0x0F
    if ((first & ladder.startBit) == 0)
        return (first & below) + 1; // [1, twoBase - 1]
    unsigned const low = below & ~unsigned(ladder.formMask);    // 0x07, 0x03
    if ((first & ladder.formMask) == ladder.twoOctets)
        return (((first & low) << 8) | ReadOctet()) + ladder.twoBase; // [twoBase, threeBase - 1]
    std::uint32_t high;
    std::uint32_t base;
    if ((first & ladder.formMask) == ladder.threeOctets)
    {
        high = first & low;
        base = ladder.threeBase;
    }
    else if ((first & ladder.fourMask) == ladder.fourOctets)
    {
        high = ReadOctet() & 0x0Fu;
        base = ladder.fourBase;
    }
    else
        Fail(ladder.failure);
    std::uint32_t const middle = ReadOctet();
    return ((high << 16) | (middle << 8) | ReadOctet()) + base;
}

std::uint64_t CFastInfosetReader::ReadOctetStringLength(FILengthForm const &form, unsigned char first)
{
    if ((first & form.startBit) == 0)
        return (first & (form.startBit - 1u)) + 1u; // [1, oneBase - 1]
    if ((first & form.formMask) == form.oneOctet)
        return ReadOctet() + std::uint64_t(form.oneBase); // [oneBase, fourBase - 1]
    if ((first & form.formMask) == form.fourOctets)
        return ReadFourOctets() + std::uint64_t(form.fourBase);
    Fail(form.failure);
}

} // namespace MxXmlLib
