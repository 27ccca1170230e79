#pragma once

// Decodes a Fast Infoset document (ITU-T X.891) straight into a
// CXmlDocument, reading the document's buffer in place. It reads what
// CFastInfosetWriter writes and more, but is no full decoder: the header's
// tables, processing instructions, comments, notations, entities and the
// document type are read over and dropped. Every malformed input raises
// CMxException.

#include "fastinfoset/FIVocabulary.h"
#include "runtime/InstanceMonitor.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

class CXmlDocument;
class CXmlElement;
class CFastInfosetContext;
struct FIIntegerLadder;
struct FILengthForm;
struct FIStringForm;

class CFastInfosetReader : public CInstanceMonitor
{
public:
    CFastInfosetReader(CFastInfosetContext const *context, CXmlDocument *document);
    ~CFastInfosetReader() override;
    CFastInfosetReader(CFastInfosetReader const &) = delete;
    CFastInfosetReader &operator=(CFastInfosetReader const &) = delete;

    // True, with the identification consumed, when the buffer holds more
    // than E0 00 00 01, or one of the nine declarations followed by it.
    bool ReadIdentification();
    // The optional components of the header, all skipped.
    void ReadHeader();
    // The children of the document: one element, with processing
    // instructions, comments and a document type around it dropped.
    void ReadDocumentBody();

private:
    // Moves past `n` octets and returns the first; raises "Failed to parse
    // FastInfoset. Unexpected End of File." when fewer remain.
    unsigned char const *Read(std::uint64_t n);
    unsigned char ReadOctet() { return *Read(1); }

    void ReadElement();
    void ReadAttribute(unsigned char first);
    void ReadNamespaceAttribute(unsigned char first);
    void ReadCharacterChunk(unsigned char first);
    // Sets m_namespace and m_localName; the name enters `table`.
    void ReadLiteralQName(unsigned char first, CFIVocabulary::CFIQNameTable &table);
    // Sets m_namespace and m_localName from entry `index` of `table`.
    void TakeQName(std::uint32_t index, CFIVocabulary::CFIQNameTable const &table);

    // True for a literal (in Text), false for an index (in IndexRead).
    bool ReadIdentifyingString();
    // The string itself, from the list or added to it; `number` gets its index.
    std::string const *ReadIdentifyingString(CFIVocabulary::CFIStringTable &table, std::uint32_t &number,
                                             std::string &overflow);
    // A value string; with no table, an index is read and not resolved.
    std::string const *ReadValueString(CFIVocabulary::CFIStringTable *table);
    // An encoded character string on the third or fifth bit (FIIntegerLadder.h).
    void ReadEncodedString(FIStringForm const &form, unsigned char first);
    void ReadRestrictedAlphabet(unsigned char const *octets, std::uint64_t length, std::uint32_t number);
    void ReadEncodedValue(unsigned char const *octets, std::uint64_t length, std::uint32_t number);
    void ReadUtf8(unsigned char const *octets, std::uint64_t length);
    void ReadUtf16(unsigned char const *octets, std::uint64_t length);

    std::uint32_t ReadIntegerBit2(unsigned char first);
    std::uint32_t ReadIntegerBit2WithZero(unsigned char first);
    // The integers that start on the third or fourth bit (FIIntegerLadder.h).
    std::uint32_t ReadInteger(FIIntegerLadder const &ladder, unsigned char first);
    std::uint64_t ReadOctetStringLength(FILengthForm const &form, unsigned char first);
    std::uint32_t ReadFourOctets();
    std::uint32_t ReadSequenceCount();

    void SkipAdditionalData();
    void SkipInitialVocabulary();
    void SkipNotations();
    void SkipUnparsedEntities();
    void SkipOctetStringBit2();
    void SkipProcessingInstruction();
    void SkipComment();
    void SkipIdentifiers(unsigned char first);
    template <typename SkipItem> void SkipTable(SkipItem skipItem);

    CXmlElement *CurrentElement() const;
    static std::string const &Entry(CFIVocabulary::CFIStringTable const &table, std::uint32_t index);

    CFastInfosetContext const *Context;
    CXmlDocument *Document;
    unsigned char const *Cursor;
    unsigned char const *Current;
    unsigned char const *End;
    std::uint32_t BitsWanted;
    std::uint32_t BitsLeft;
    unsigned char BitBuffer;
    std::string Prefix;
    std::string Namespace;
    std::string LocalName;
    bool ElementEnded;
    std::string Text;
    std::uint32_t IndexRead;
    bool AddToTable;
    CFIVocabulary *Vocabulary;

    // The parts of the name just read: table entries, or the strings above
    // when a full table could take no more.
    std::string const *m_namespace;
    std::string const *m_localName;
};

} // namespace MxXmlLib
