#pragma once

// The options of Fast Infoset output and input: how each primitive type is
// encoded, how long a string may be and still enter a table, and whether a
// vocabulary prepared by generated code is in use. A run never changes the
// context's own vocabulary: writer and reader each work on a copy of it.

#include "fastinfoset/FIVocabulary.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

class CFastInfosetContext
{
public:
    // How values of one ItemType travel: Type 0 in the default string
    // encoding, 1 in restricted alphabet `Value`, 2 by encoding algorithm
    // `Value` (both 1-based numbers of X.891).
    struct EncodedCharacterString
    {
        std::uint32_t Type = 0;
        std::uint32_t Value = 0;
    };

    static constexpr int kEncodingCount = 29; // indexed by ItemType

    CFastInfosetContext();
    CFastInfosetContext(CFastInfosetContext const &other) = default;
    CFastInfosetContext &operator=(CFastInfosetContext const &other) = default;

    // 0 is UTF-8; 1 (UTF-16) is refused by the writer.
    unsigned char GetDefaultStringEncoding() const { return DefaultStringEncoding; }

    // No range check: `index` is an ItemType.
    EncodedCharacterString GetEncoding(int index) const { return Encodings[index]; }
    void SetEncoding(int index, EncodedCharacterString value) { Encodings[index] = value; }
    // Binary and numeric types by encoding algorithm, dates and times in the
    // date and time alphabet, decimal and integer in the numeric alphabet;
    // other entries stay as they are.
    void SetSuggestedValues();

    // Strings of this many bytes or more never enter a table.
    std::uint32_t GetAttributeMaxAddLength() const { return AttributeMaxAddLength; }
    void SetAttributeMaxAddLength(std::uint32_t value) { AttributeMaxAddLength = value; }
    std::uint32_t GetElementMaxAddLength() const { return ElementMaxAddLength; }
    void SetElementMaxAddLength(std::uint32_t value) { ElementMaxAddLength = value; }

    // With it, runs start from a copy of GetVocabulary() and documents name
    // the external vocabulary URI in their header.
    bool GetUseGeneratedVocabulary() const { return UseGeneratedVocabulary; }
    void SetUseGeneratedVocabulary(bool value) { UseGeneratedVocabulary = value; }
    CFIVocabulary *GetVocabulary() { return &Vocabulary; }
    CFIVocabulary const *GetVocabulary() const { return &Vocabulary; }

    // Empty means the library's own default URI (kDefaultVocabularyURI).
    std::string GetExternalVocabularyURI() const { return ExternalVocabularyURI; }
    void SetExternalVocabularyURI(std::string const &uri) { ExternalVocabularyURI = uri; }

    // Off (the default), the writer keeps to the bytes specified for it,
    // where some documents do not read back as the XML that was written:
    // text that follows a child element lands inside that child; an
    // xsi:type attribute borrows the prefix of the type's namespace, which
    // a reader then binds to the XSI namespace, or is named after the type
    // when that namespace has no prefix in force; and a namespace that a
    // caller maps on an element after its start is not declared. On, the
    // child's terminator comes before such text, xsi:type is named with a
    // prefix of the XSI namespace, and an element declares in its namespace
    // block what is mapped on it (a type's namespace included) before its
    // first attribute or child is written.
    bool GetReadsBackAsXml() const { return ReadsBackAsXml; }
    void SetReadsBackAsXml(bool value) { ReadsBackAsXml = value; }

    // Names the vocabulary of this library's generated code.
    static char const kDefaultVocabularyURI[];

private:
    unsigned char DefaultStringEncoding;
    EncodedCharacterString Encodings[kEncodingCount];
    std::uint32_t AttributeMaxAddLength;
    std::uint32_t ElementMaxAddLength;
    bool UseGeneratedVocabulary;
    bool ReadsBackAsXml;
    CFIVocabulary Vocabulary;
    std::string ExternalVocabularyURI;
};

} // namespace MxXmlLib
