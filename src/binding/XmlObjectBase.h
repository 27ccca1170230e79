#pragma once

#include "binding/SerializationContext.h"
#include "runtime/EventSink.h"
#include "values/BinaryData.h"

#include <atomic>
#include <string>

namespace MxXmlLib
{

class CXmlElement;
class CXmlDocument;
class CXmlWriter;
class CXmlCollectionBase;
class CElement;
class CTextStream;

// Stores the version of the code generator; generated code calls it before it
// uses any object. Every entry point refuses to run unless it is 16.1.
void Register(int major, int minor);
// Process-wide switches for overlapped file output and input.
void AsyncToXmlFile(bool value);
void AsyncFromXmlFile(bool value);
bool IsAsyncToXmlFile();
bool IsAsyncFromXmlFile();

// Root of every bindable object. Its public operations are frames: check the
// generator version, parse or open the output, call the protected _Int virtual
// once, and finish. Objects are counted; a new one has the count 0 and is
// deleted by the Release that brings the count from 1 to 0.
class CXmlObjectBase : public IEventSink
{
public:
    CXmlObjectBase(CXmlObjectBase const &other);
    // Copies the element name and the reference count, as stored in the source.
    CXmlObjectBase &operator=(CXmlObjectBase const &other);

    long AddRef();
    long Release();
    CXmlObjectBase const *GetBase() const { return const_cast<CXmlObjectBase *>(this)->GetBase(); }
    using IEventSink::GetBase;

    // The object as an XML file. CompressionZLib is refused before anything
    // else: "ZLIB Compression only available for To Stream methods.". With
    // AsyncToXmlFile set and no compression, the text goes to the file piece
    // by piece; otherwise ToXmlStream's bytes are written in one go. Encodings
    // 2 and 3 put FF FE first, also in front of compressed data.
    virtual void ToXmlFile(char const *fileName, bool includeDocHeader = true, bool formatted = true,
                           XmlEncoding encoding = XmlEncoding_UTF8, EOLType eolType = LF,
                           CSerializationContext const &context = CSerializationContext::GetDefaultContext(),
                           CompressionType compression = CompressionNone) const;
    // The object as a Fast Infoset file: ToFastInfosetStream's bytes. Refuses
    // CompressionZLib first, as ToXmlFile does.
    virtual void ToFastInfosetFile(char const *fileName, FInfoDecl declaration = FInfoDecl_None,
                                   CSerializationContext const &context = CSerializationContext::GetDefaultContext(),
                                   CompressionType compression = CompressionNone) const;
    // The object as a JSON file, by the branches of ToXmlFile. Buffered files
    // never start with a byte order mark, whatever the encoding.
    virtual void ToJsonFile(char const *fileName, bool formatted = true, XmlEncoding encoding = XmlEncoding_UTF8,
                            EOLType eolType = LF,
                            CSerializationContext const &context = CSerializationContext::GetDefaultContext(),
                            CompressionType compression = CompressionNone) const;
    // The object as XML text in the local encoding; a declaration names no
    // encoding.
    virtual std::string ToXml(bool includeDocHeader = true, bool formatted = true, EOLType eolType = LF,
                              CSerializationContext const &context = CSerializationContext::GetDefaultContext()) const;
    // The object as JSON text in the local encoding: an object with one key,
    // the root element's name. The context's JSON context sets the round trip
    // mode. See CJsonTextWriter for what is and is not valid JSON.
    virtual std::string ToJson(bool formatted = true, EOLType eolType = LF,
                               CSerializationContext const &context = CSerializationContext::GetDefaultContext()) const;
    // The object as XML bytes: UTF-8 for encoding 1, UTF-16LE without a byte
    // order mark for 2 and 3. Other encodings fail after the whole text is
    // built, with "Unknown Encoding, select UTF-8 (contact our support team)".
    // The bytes are then compressed as asked (gzip or zlib).
    virtual CBinaryData ToXmlStream(bool includeDocHeader = true, bool formatted = true,
                                    XmlEncoding encoding = XmlEncoding_UTF8, EOLType eolType = LF,
                                    CSerializationContext const &context = CSerializationContext::GetDefaultContext(),
                                    CompressionType compression = CompressionNone) const;
    // The object as a Fast Infoset document, behind the XML declaration that
    // `declaration` chooses, with the options of context.GetFIContext(); then
    // compressed as asked.
    virtual CBinaryData ToFastInfosetStream(FInfoDecl declaration = FInfoDecl_None,
                                            CSerializationContext const &context =
                                                CSerializationContext::GetDefaultContext(),
                                            CompressionType compression = CompressionNone) const;
    // The object as JSON bytes, encoded and compressed as by ToXmlStream.
    virtual CBinaryData ToJsonStream(bool formatted = true, XmlEncoding encoding = XmlEncoding_UTF8,
                                     EOLType eolType = LF,
                                     CSerializationContext const &context = CSerializationContext::GetDefaultContext(),
                                     CompressionType compression = CompressionNone) const;

    // Reads an XML file (see CXmlDocument::Load).
    virtual void FromXmlFile(char const *fileName,
                             CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // Reads a JSON file: whole, maybe compressed, UTF-8 (see FromJson).
    virtual void FromJsonFile(char const *fileName,
                              CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    virtual void FromXml(wchar_t const *text,
                         CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    virtual void FromXml(char const *text,
                         CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // JSON is read by way of its XML translation. JSON syntax errors pass
    // unchanged; errors of the XML reading come wrapped in "Error converting
    // JSON to XML:" with the XML text. Unless the round trip mode is full,
    // namespaces are ignored for the call (the context is changed meanwhile).
    virtual void FromJson(wchar_t const *text,
                          CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    virtual void FromJson(char const *text,
                          CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // Reads bytes that may be compressed; an empty object raises
    // "XML Stream is empty!".
    virtual void FromXmlStream(CBinaryData const &data,
                               CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    virtual void FromXmlStream(unsigned char *const bytes, unsigned long length,
                               CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // JSON bytes that may be compressed, UTF-8 (see FromJson).
    virtual void FromJsonStream(CBinaryData const &data,
                                CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    virtual void FromJsonStream(unsigned char *const bytes, unsigned long length,
                                CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // Reads from an untyped tree, by way of its XML text.
    virtual void FromXmlElement(CElement const *element,
                                CSerializationContext const &context = CSerializationContext::GetDefaultContext());
    // Reads from an element of a tree that the caller keeps.
    virtual void FromXmlElement(CXmlElement const *element,
                                CSerializationContext const &context = CSerializationContext::GetDefaultContext());

protected:
    CXmlObjectBase();
    void OnEvent(CXmlObjectBase *source, IEventSink::MsgType type, void *data) override;
    virtual ~CXmlObjectBase();

    // The namespace of the top-level element of an output document.
    virtual std::string GetTargetNamespace() const = 0;

public:
    // The namespace of this class, handed to element rows as the class namespace.
    virtual std::string GetNamespace() const = 0;

protected:
    virtual void AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const;
    virtual void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                           CSerializationContext const &context, bool optionalChoice) const = 0;
    // Reads this object from `element`, starting at its child `cursor`, and
    // returns the first child it did not take (the same pointer: none taken).
    virtual CXmlElement *FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                     CSerializationContext const &context, bool optionalChoice) = 0;

public:
    std::string GetElementName() const { return m_elementName; }
    void SetElementName(char const *name);
    static void SetElementName(CXmlObjectBase *object, char const *name);

    // Let one object reach the protected virtuals of another.
    static void AttributesToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer,
                                    CSerializationContext const &context);
    static void ToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                          CSerializationContext const &context, bool optionalChoice);
    static CXmlElement *FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                    CSerializationContext const &context);
    static CXmlElement *FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                    CSerializationContext const &context, bool optionalChoice);
    static std::string GetTargetNamespace(CXmlObjectBase const *object) { return object->GetTargetNamespace(); }

    static void FireOnCollectionChangeEvent(IEventSink *sink, CXmlCollectionBase *collection);
    static void FireOnCollectionAddEvent(IEventSink *sink, CXmlCollectionBase *collection, void *item);
    static void FireOnCollectionAddCompleteEvent(IEventSink *sink, CXmlCollectionBase *collection, void *item);
    static void FireOnCollectionRemoveEvent(IEventSink *sink, CXmlCollectionBase *collection, int index);
    static void FireOnCollectionRemoveCompleteEvent(IEventSink *sink, CXmlCollectionBase *collection, int index);

    // Local name must match byte for byte; the namespace too, unless the
    // context ignores namespaces.
    bool DoesElementNameMatch(CSerializationContext const &context, CXmlElement const *element, char const *name,
                              char const *namespaceUri) const;

    // Whether `namespaceUri` meets the wildcard `allowed`; see CNamespaceRules.
    // A null string counts as empty.
    bool IsNamespaceValid(char const *namespaceUri, char const *allowed, char const *targetNamespace) const;
    // Raises CMxInvalidNamespaceException when IsNamespaceValid is false.
    void TestNamespace(char const *namespaceUri, char const *allowed, char const *targetNamespace) const;

protected:
    // For a choice over a collection: while nothing of the choice has been
    // read (`count` below 1), reads the collection from `cursor`; if it took
    // anything, moves `cursor`, checks the collection's count and adds 1.
    static void Choice_Read_Collection(CXmlCollectionBase *collection, CXmlElement *element, CXmlElement *&cursor,
                                       int &count, CSerializationContext const &context);

    // Raises "Wrong Version ..." (after the warning) unless the generator is 16.1.
    static void CheckVersion();
    // The steps of the ToXml frame after the version check: writer over
    // `stream`, declaration, the object, end of stream, unclosed element check.
    void WriteXmlText(CTextStream &stream, bool includeDocHeader, bool formatted, EOLType eolType,
                      CSerializationContext const &context) const;
    // The same for JSON: "{", the object, "}", unclosed element check.
    void WriteJsonText(CTextStream &stream, bool formatted, EOLType eolType,
                       CSerializationContext const &context) const;

    // Checks of the property setters of generated code.
    static void Throw_IfPropertyIsNull(CXmlObjectBase *value, char const *name);
    static void Throw_IfElementNameDiffers(CXmlObjectBase *value, char const *name);
    // Bookkeeping of a class with a choice: `current` names the alternative set.
    static void Choice_SetElementValid(bool valid, char const *name, std::string &current);
    static void Choice_SelectElement(char const *name, CXmlObjectBase *value, std::string &current);
    static void Choice_CollectionChanged(char const *name, long count, std::string &current);

private:
    // Reads the XML translation of a JSON text.
    void FromJson_Int(CBinaryData const &xml, CSerializationContext const &context);
    // The read of a frame that owns `document`, loaded to be read while it
    // is parsed: the document element, then the rest of the parse, whose
    // failure comes first, as if the whole text had been parsed before.
    void ReadParsedDocument(CXmlDocument &document, CSerializationContext const &context);

    std::string m_elementName;
    std::atomic<long> m_refCount;
};

} // namespace MxXmlLib
