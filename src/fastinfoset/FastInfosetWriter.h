#pragma once

// CXmlWriter that produces a binary Fast Infoset document (ITU-T X.891) in
// one forward pass. The only look-ahead is one element: its first octet says
// whether attributes follow, so it is held back until the next call tells.
// Terminators are four bits; two that meet share one octet (FF).

#include "document/XmlWriter.h"
#include "fastinfoset/FIVocabulary.h"
#include "runtime/OptionEnums.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>
#include <string_view>

namespace MxXmlLib
{

class CBinaryStream;
class CFastInfosetContext;
struct FIIntegerLadder;
struct FILengthForm;
struct FIStringForm;

class CFastInfosetWriter : public CXmlWriter
{
public:
    // Octets go to `stream`; neither argument is owned. The vocabulary is a
    // private copy of the context's when it uses a generated one, else fresh.
    CFastInfosetWriter(CBinaryStream *stream, CFastInfosetContext const *context);
    ~CFastInfosetWriter() override;

    // The declaration that `declaration` chooses (none for 0; a number above
    // 9 raises CMxInvalidParamException), the identification E0 00 00 01 and
    // the optional components: none, or the external vocabulary's URI.
    void WriteHeader(FInfoDecl declaration);
    // The text of declaration 1 to 9, or null; readers try them in order.
    static char const *DeclarationText(unsigned number);
    // The octet that closes the document (FF when it also owes the root's
    // terminator, else F0), then the end check: "An Element has not been
    // closed." while one is open.
    void WriteDocumentEnd();

    void WriteComment(std::string const &text) override;
    void WriteProcessingInstruction(std::string const &text) override;
    void WriteInLineSchema(std::string const &text) override;
    // With ReadsBackAsXml, a mapping made while an element's start waits
    // is declared by that element.
    void AddNamespace(std::string const &prefix, std::string const &uri) override;
    // Whether AddNamespace now declares a mapping on the element about to start.
    bool TakesNamespaces() const;
    // That element, while its start waits.
    CXmlWriterContext const *GetPendingElement() const { return PendingElement; }
    // With ReadsBackAsXml, a default namespace set while an element's start
    // waits is declared by that element.
    void SetDefaultNamespace(std::string const &uri) override;
    void StartElement(std::string const &localName, std::string const &namespaceUri) override;
    // Writes `value` whether it is a default value or not.
    void WriteText(std::string const &value, ItemType type, bool isDefaultValue) override;
    void EndElement() override;
    void WriteAttribute(std::string const &localName, std::string const &namespaceUri, std::string const &value,
                        ItemType type) override;
    void WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName, ItemType type) override;
    void WriteNilAttribute() override;

private:
    enum class StringTable
    {
        Prefix,
        Namespace,
        LocalName
    };

    void FlushPendingElement(bool attributesFollow);
    // One item of an element's namespace block.
    void AppendNamespaceAttribute(std::string const &prefix, std::string const &uri);
    // Closes the attribute list of the current element at its first content.
    void CloseStartTag();
    void CheckAttributesAllowed();

    void AppendIdentifyingString(std::string const &text, StringTable table);
    void AppendAttributeQName(std::string const &prefix, std::string const &namespaceUri,
                              std::string const &localName);
    void AppendElementQName(unsigned char flags, std::string const &prefix, std::string const &namespaceUri,
                            std::string const &localName);
    void AppendLiteralQName(unsigned char tag, std::string const &prefix, std::string const &namespaceUri,
                            std::string const &localName);
    void AppendAttributeValue(std::string const &text, ItemType type);
    void AppendCharacterChunk(std::string const &text, ItemType type);
    // An encoded character string on the third or fifth bit (FIIntegerLadder.h).
    void AppendEncodedCharacterString(FIStringForm const &form, unsigned char flags, std::string const &text,
                                      ItemType type);
    // The value's octets, by restricted alphabet (kind 1) or algorithm (2).
    std::string EncodeValue(std::uint32_t kind, std::uint32_t value, std::string const &text);
    std::string AppendRestrictedAlphabetString(std::uint32_t alphabet, std::string const &text);

    void AppendNonEmptyOctetStringBit2(std::string_view octets);
    // A length of the given form, its first octet under `prefix`, and the octets.
    void AppendNonEmptyOctetString(FILengthForm const &form, unsigned char prefix, std::string_view octets);
    void AppendIntegerBit2(unsigned char flags, std::uint32_t n);
    // The integers that start on the third or fourth bit (FIIntegerLadder.h).
    void AppendInteger(FIIntegerLadder const &ladder, unsigned char flags, std::uint32_t n);
    void AppendLength32(std::uint32_t n);

    // Local text as UTF-8; a view of `text` itself where no conversion is due.
    std::string_view Utf8(std::string const &text);

    void Put(unsigned char octet) { m_out.push_back(static_cast<char>(octet)); }
    void Put(std::string_view octets) { m_out.append(octets.data(), octets.size()); }
    // Hands the gathered octets to the stream.
    void Flush();

    CBinaryStream *Stream;
    CFastInfosetContext const *Context;
    CXmlWriterContext *PendingElement;
    // With ReadsBackAsXml: mappings made on an inner element while its start
    // waits, declared in its namespace block (URI, prefix).
    std::vector<std::pair<std::string, std::string>> LateMappings;
    bool TerminatorPending;
    CFIVocabulary *Vocabulary;

    std::string m_out;
    std::string m_utf8;
    // The key of the name being looked up (CFIVocabulary::QNameKey).
    std::string m_key;
    // Element names that the table holds, with their index, in a small open
    // hash table by local name: a document repeats a handful of names, and
    // comparing three short strings costs less than building and hashing the
    // vocabulary's key. Index 0 marks a free slot; at most three quarters of
    // the slots are taken, so a search always ends at a match or a free slot.
    struct KnownName
    {
        std::string prefix;
        std::string namespaceUri;
        std::string localName;
        std::uint32_t index = 0;
    };
    KnownName &KnownElement(std::string const &prefix, std::string const &namespaceUri,
                            std::string const &localName);
    std::array<KnownName, 64> m_knownElements;
    std::size_t m_knownCount = 0;
};

} // namespace MxXmlLib
