#pragma once

// The parsed tree through which all input reaches the object model. It keeps
// elements, attributes and the text directly inside each element; comments,
// processing instructions, prefixes and the position of text between child
// elements are dropped. The tree is read once and thrown away.

#include "runtime/InstanceMonitor.h"
#include "runtime/OptionEnums.h"
#include "values/BinaryData.h"

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace MxXmlLib
{

class CXmlDocument;
class CXmlElement;
class CExpatReader;
class CFastInfosetReader;
class CNameTable;
class CNodePool;
class CSerializationContext;

namespace Platform
{
class NativeFile;
}

class CXmlAttribute : public CInstanceMonitor
{
    friend class CXmlElement;
    friend class CXmlDocument;
    friend class CExpatReader;
    friend class CFastInfosetReader;

public:
    ~CXmlAttribute() override = default;
    // Nodes live in their document's pool: only the document makes them, and
    // deleting one leaves its memory to the pool.
    static void *operator new(std::size_t, void *place) { return place; }
    static void operator delete(void *) {}
    static void operator delete(void *, void *) {}

    std::string const &GetLocalName() const { return *m_localName; }
    std::string const &GetNamespaceURI() const { return *m_namespaceUri; }
    std::string const &GetValue() const { return m_value; }
    // "/a/b/p:@x": the prefix of the attribute's namespace stands before the '@'.
    std::string GetXPath() const;
    // xmlns, type, schemaLocation or noNamespaceSchemaLocation in the XSI or
    // xmlns namespace: attributes that describe the document, not the data.
    bool IsNamespaceAttribute() const;
    bool IsNilAttribute() const;

protected:
    CXmlAttribute(CXmlElement const *element, std::string const &localName, std::string const &value,
                  std::string const &namespaceUri);

private:
    // Names are shared by all nodes of a document (see CXmlDocument::Intern).
    CXmlAttribute(CXmlElement const *element, std::string const *localName, std::string const *namespaceUri);

    CXmlElement const *m_element;
    std::string const *m_localName;
    std::string m_value;
    std::string const *m_namespaceUri;
};

class CXmlElement : public CInstanceMonitor
{
    friend class CXmlDocument;
    friend class CExpatReader;
    friend class CFastInfosetReader;

public:
    ~CXmlElement() override;
    CXmlElement(CXmlElement const &) = delete;
    CXmlElement &operator=(CXmlElement const &) = delete;
    // Nodes live in their document's pool: only the document makes them, and
    // deleting one leaves its memory to the pool.
    static void *operator new(std::size_t, void *place) { return place; }
    static void operator delete(void *) {}
    static void operator delete(void *, void *) {}

    CXmlDocument *GetDocument() const { return m_document; }
    CXmlElement *GetParentElm() const { return m_parent; }
    // In a document read while it is parsed, these three parse on as far as
    // they need to: what they give is what the whole parse would have given.
    CXmlElement *GetNextSiblingElement() const
    {
        return m_nextSibling || m_parent == nullptr || !m_parent->m_open ? m_nextSibling : AwaitNextSibling();
    }
    CXmlElement *GetFirstElement() const { return m_firstChild || !m_open ? m_firstChild : AwaitFirstChild(); }
    std::string const &GetLocalName() const { return *m_localName; }
    std::string const &GetNamespaceURI() const { return *m_namespaceUri; }
    // All character data directly inside this element, run together.
    std::string const &GetText() const
    {
        if (m_open)
            AwaitEnd();
        return m_text ? *m_text : NoText();
    }
    std::vector<CXmlAttribute *> const &GetAttributes() const;
    // The value of the first attribute with exactly this name and namespace,
    // or an empty string.
    std::string const &GetAttribute(std::string const &localName, std::string const &namespaceUri) const;
    // "/a/b[2]/c": a position is given only where siblings share the name.
    std::string GetXPath() const;

protected:
    CXmlElement(CXmlDocument *document, CXmlElement *parent);

    void AppendText(char const *text);
    void AppendText(char const *text, int length);
    CXmlElement *CreateNewChildElement();
    void AddAttribute(std::string const &localName, std::string const &value, std::string const &namespaceUri);
    void SetElementName(std::string const &localName);
    void SetNamespace(std::string const &namespaceUri);
    // Unlinks the last child and hands it to the caller; null without children.
    CXmlElement *RemoveLastChildElement();

private:
    std::string GetQName() const;
    std::string GetNameWithPredicate() const;
    // Parse on until the next sibling, the first child or the end tag is
    // there, or the parent or this element has ended.
    CXmlElement *AwaitNextSibling() const;
    CXmlElement *AwaitFirstChild() const;
    void AwaitEnd() const;
    // Deletes the children and the attributes and frees the text: all that a
    // read has taken from an element, while its name and place in the tree
    // stay for the paths of later messages.
    void DropContent();
    static std::string const &NoText();
    // Adds an attribute with interned names and an empty value, and returns it.
    CXmlAttribute *AddAttribute(std::string const *localName, std::string const *namespaceUri,
                                std::size_t expectedCount);

    CXmlDocument *m_document;
    CXmlElement *m_parent;
    CXmlElement *m_nextSibling;
    CXmlElement *m_firstChild;
    CXmlElement *m_lastChild;
    // Most elements carry no attributes: the vector exists only when needed,
    // and then in the document's pool, like the nodes.
    std::vector<CXmlAttribute *> *m_attributes = nullptr;
    // Made in the document's pool with the first character data, so that an
    // element without text, or one whose content a read has dropped, keeps
    // only a pointer.
    std::string *m_text = nullptr;
    std::string const *m_localName;
    std::string const *m_namespaceUri;
    // Its end tag is still to come: only while a document is read as it is
    // parsed.
    bool m_open = false;
};

class CXmlDocument : public CInstanceMonitor
{
    friend class CExpatReader;
    friend class CFastInfosetReader;

public:
    // Called as each element ends; returning true drops the element from the
    // tree at once, so that documents too big to hold can be consumed.
    using ElementEndFunction = bool (*)(CXmlElement *);
    // Deeper documents are refused while they are read.
    static constexpr std::size_t kMaxElementDepth = 2048;

    CXmlDocument();
    explicit CXmlDocument(CSerializationContext const &context);
    explicit CXmlDocument(ElementEndFunction onElementEnd);
    CXmlDocument(ElementEndFunction onElementEnd, CSerializationContext const &context);
    ~CXmlDocument() override;

    void LoadXml(char const *text);
    // Wide text is passed to the parser as UTF-16 behind a byte order mark.
    void LoadXml(wchar_t const *text);
    // Reads and parses a file. With AsyncFromXmlFile set, the file is read in
    // chunks of 0x20000 bytes, parsed as they come and not tried for
    // compression; otherwise it is read whole and goes the way of
    // LoadXmlStream. File errors raise CMxException with the system's errno.
    void Load(char const *fileName);
    // Parses bytes that may be gzip or zlib compressed (tried first, whatever
    // they are), then Fast Infoset, else XML text. A length of 0 (or null
    // bytes) raises "XML Stream is empty!". The bytes are only read.
    void LoadXmlStream(unsigned char *const bytes, unsigned long length);

    // JSON input is translated, not loaded: these return the XML text of the
    // JSON (see CJsonReaderToXmlHandler) and leave the tree alone. An empty
    // text raises "JSON String is empty!". The text is taken as it stands, in
    // the local encoding.
    CBinaryData LoadJson(char const *text);
    // The raw bytes of the wide characters, two per character, unconverted:
    // only text whose bytes happen to read as JSON gets through.
    CBinaryData LoadJson(wchar_t const *text);
    // Bytes and files of JSON may be gzip or zlib compressed, and are UTF-8
    // (a byte order mark is dropped), converted to the local encoding. A file
    // is read whole, with the messages of Load.
    CBinaryData LoadJsonFile(char const *fileName);
    CBinaryData LoadJsonStream(unsigned char *const bytes, unsigned long length);

    CXmlElement *GetDocumentElement() const { return m_documentElement; }
    CSerializationContext const &GetContext() const { return m_context; }
    std::string LookupNamespaceFromAlias(char const *prefix) const;
    std::string LookupAliasFromNamespace(char const *uri) const;

protected:
    virtual void Cleanup();

private:
    friend class CXmlElement;
    friend class CXmlAttribute;
    friend class CXmlObjectBase;

    // Reading while parsing, for the read frames, which own their document.
    // Before a load: the text is then parsed only as far as the reading asks
    // (in slices), and the content of every element that a read has taken
    // for good is dropped at once, so that tree and objects are never whole
    // at the same time. The frame calls FinishParse after the read, also when
    // the read fails: a parse failure raises what the whole parse would have
    // raised before any reading, and takes precedence over the read's own.
    void ReadWhileParsing() { m_readWhileParsing = true; }
    void FinishParse();
    // Parses the next slice; false when there is nothing left to parse.
    bool ParseMore();
    void ParseToEnd() const;
    bool DropsReadContent() const { return m_readWhileParsing; }
    // Reads whose result a caller may still undo (inline groups) are counted:
    // inside them nothing is dropped, as the elements may be read again.
    void BeginUndoableRead() { ++m_undoableReads; }
    void EndUndoableRead() { --m_undoableReads; }
    // The elements under a read as elements of their own, innermost last.
    bool IsChildOfRead(CXmlElement const *element) const
    {
        return !m_ownReads.empty() && element->GetParentElm() == m_ownReads.back();
    }
    void BeginOwnRead(CXmlElement *element) { m_ownReads.push_back(element); }
    void EndOwnRead() { m_ownReads.pop_back(); }
    // After `element` was read as an element of its own: drops its content
    // unless an undoable read is open.
    void ElementRead(CXmlElement *element);

    // The one shared copy of a name in this document; it lives as long as the
    // document. Nodes hold names this way, since documents repeat few of them.
    std::string const *Intern(std::string_view name);

    CXmlElement *AddDocElement(char const *namespaceUri, char const *localName);
    CXmlElement *AddChildElement(char const *namespaceUri, char const *localName);
    CXmlElement *AddElement(std::string const *namespaceUri, std::string const *localName);
    void EndElement();
    static void AddElementAttribute(CXmlElement *element, std::string const &localName, std::string const &value,
                                    std::string const &namespaceUri);
    static void AppendTextExcludingCR(CXmlElement *element, char const *text, unsigned long length);
    static void AppendTextExcludingCR(CXmlElement *element, char const *text);
    void Init();
    void ParseText();
    // JSON bytes: decompression attempt, byte order mark, UTF-8 to local.
    CBinaryData ParseJson(unsigned char const *bytes, unsigned long length) const;
    // JSON text in the local encoding to XML text.
    CBinaryData ParseJsonText(std::string const &json) const;
    // Decompression attempt, then Fast Infoset, then XML text.
    void Parse();
    // Reads the buffer as Fast Infoset if it starts with the format's
    // identification (behind one of its XML declarations, or none); false
    // leaves it to the XML parser.
    bool ParseFastInfosetIfPresent();
    void LoadWholeFile(char const *fileName);
    // Reads a whole file into the buffer, with the messages of Load.
    void ReadWholeFile(char const *fileName);
    void LoadFileInChunks(char const *fileName);
    // Parses the chunk in the buffer and reads the next into the spare one,
    // until the final chunk; cleans up and closes the file on failure.
    void AsyncParse(bool last);
    // Reads the next chunk at the file offset into `buffer`; true at the end
    // of the file (nothing read), with the byte count in m_chunkBytes.
    bool ReadChunkFromFile(unsigned char *buffer);
    void CloseFile();
    // A new owned buffer of `length` bytes, not filled.
    void NewBuffer(unsigned long length);
    // Takes ownership of a copy of the bytes as the input buffer.
    void SetBuffer(void const *data, unsigned long length);
    // Parses the caller's bytes in place: a synchronous load needs no copy.
    void SetBorrowedBuffer(void const *data, unsigned long length);
    void CleanupThis();

    CXmlElement *m_documentElement;
    std::vector<CXmlElement *> m_elementStack;
    std::map<std::string, std::string> m_namespaceMap;
    unsigned char *m_buffer;
    unsigned long m_bufferLength;
    bool m_bufferOwned;
    SchemaType m_schemaType;
    bool m_stripCDATA; // the context's, taken with the schema type at each load
    ElementEndFunction m_elementEndFunction;
    CSerializationContext const &m_context;
    std::unique_ptr<CNameTable> m_names;
    std::unique_ptr<CNodePool> m_pool;

    // Make and destroy nodes in the pool.
    CXmlElement *NewElement(CXmlElement *parent);
    void DestroyElement(CXmlElement *element);
    CXmlAttribute *NewAttribute(CXmlElement const *element, std::string const *localName,
                                std::string const *namespaceUri);
    void DestroyAttribute(CXmlAttribute *attribute);
    std::string *NewText();
    void DestroyText(std::string *text);
    std::vector<CXmlAttribute *> *NewAttributeList();
    void DestroyAttributeList(std::vector<CXmlAttribute *> *list);
    // The chunked file load: where the next chunk comes from, the file, and
    // the size of the chunk read last.
    std::uint64_t m_fileOffset;
    std::unique_ptr<Platform::NativeFile> m_file;
    unsigned long m_chunkBytes;
    // Decompressed input: the buffer then points into it.
    CBinaryData m_inflated;
    // The state of reading while parsing.
    bool m_readWhileParsing = false;
    int m_undoableReads = 0;
    std::vector<CXmlElement *> m_ownReads;
    std::unique_ptr<CExpatReader> m_lazyReader;
    unsigned long m_lazyOffset = 0;
    std::exception_ptr m_lazyFailure;
};

} // namespace MxXmlLib
