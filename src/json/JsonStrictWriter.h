#pragma once

#include "json/JsonTextWriter.h"

#include <memory>
#include <vector>

namespace MxXmlLib
{

// Writes the element stream as RFC 8259 JSON that CJsonStrictReader reads
// back to the same XML. An element is a key; its value is the bare text when
// it has nothing else (a number or boolean unquoted where the item type says
// so and the text is one), "" when empty, null when nil without namespaces,
// and otherwise an object of "@attribute" members, child keys and "#text".
// A collection that the element rows announce becomes an array under one key.
// A child whose key is taken already (a repeated choice, a repeat in untyped
// content, a second text) sends it and every later child of that element into
// "#seq", an array of one-key objects in document order, so no key repeats.
// With RoundTripFull, keys keep their prefixes and declarations are members
// ("@xmlns:p"), generated where the XML writer would generate them; the other
// levels write local names, drop xsi:type, and mark attributes and text all
// the same, since plain keys could collide. Comments are not written.
//
// Memory: one small frame per open element, reused; nothing of the document.
class CJsonStrictWriter : public CJsonTextWriter
{
public:
    explicit CJsonStrictWriter(CTextStream *stream);
    ~CJsonStrictWriter() override;

    void WriteComment(std::string const &text) override;
    void StartElement(std::string const &localName, std::string const &namespaceUri) override;
    // Empty text adds nothing; text before the first member is held until
    // the element shows whether it is bare.
    void WriteText(std::string const &value, ItemType type, bool isDefaultValue) override;
    void EndElement() override;
    // Raises "Attributes must be added before elements" after a child or text.
    // Below RoundTripFull a second attribute of the same local name is dropped.
    void WriteAttribute(std::string const &localName, std::string const &namespaceUri, std::string const &value,
                        ItemType type) override;
    void WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName, ItemType type) override;
    // RoundTripFull: the attribute xsi:nil. Otherwise the value becomes null.
    void WriteNilAttribute() override;

private:
    enum Group : std::uint8_t
    {
        GroupNone,
        GroupArray,    // "key": [ is open for a collection
        GroupSequence, // "#seq": [ is open
    };
    struct Frame
    {
        std::int32_t level = 0; // indentation of the element's members
        bool object = false;    // '{' is written
        bool wrapped = false;   // an entry of the parent's "#seq": its '}' is owed too
        bool nil = false;
        bool textUsed = false;  // "#text" is written
        bool content = false;   // a child or text is written
        bool hasText = false;   // `text` waits for the element to show its shape
        Group group = GroupNone;
        ItemType textType = ItemType_None;
        std::string text;
        std::string arrayKey;
        std::vector<std::string> keys; // child keys, and attribute keys below RoundTripFull
    };

    Frame &Top() { return m_frames[m_depth - 1]; }
    Frame &PushFrame(std::int32_t level, bool wrapped);
    // A line end and the indentation of `level`, when formatted.
    void Newline(std::int32_t level);
    void WriteString(char const *text, std::size_t length);
    void WriteString(std::string const &text) { WriteString(text.data(), text.size()); }
    void WriteKey(std::string const &key);
    void WriteStrictValue(std::string const &value, ItemType type);
    // ',' or '{' before a member of `frame`, then the line and indentation.
    void BeginMember(Frame &frame);
    void WriteDeclarationMember(Frame &frame, std::string const &prefix, std::string const &uri);
    void FlushPendingText(Frame &frame);
    void CloseGroup(Frame &frame);
    // Opens "#seq" if needed and starts an entry with `key`; returns the
    // level of the entry's element.
    std::int32_t StartSequenceEntry(Frame &frame, std::string const &key);
    // Writes the key or array position of a child in its parent; returns the
    // child's level and whether it is a "#seq" entry.
    std::int32_t PlaceChild(Frame &parent, Context &parentContext, std::string const &key, bool &wrapped);
    static bool HasKey(Frame const &frame, std::string const &key);

    std::vector<Frame> m_frames;
    std::size_t m_depth;
    std::string m_key;
};

// The writer that the context's JSON options ask for.
std::unique_ptr<CJsonTextWriter> CreateJsonWriter(CTextStream *stream, CJsonContext const &options);

} // namespace MxXmlLib
