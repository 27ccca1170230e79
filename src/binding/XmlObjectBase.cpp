#include "binding/XmlObjectBase.h"
#include "binding/XmlGeneratedClass.h"
#include "metadata/ElementInfo.h"

#include "collections/Element.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "document/XmlTextWriter.h"
#include "fastinfoset/FastInfosetContext.h"
#include "fastinfoset/FastInfosetWriter.h"
#include "json/JsonContext.h"
#include "json/JsonStrictWriter.h"
#include "metadata/NamespaceRules.h"
#include "runtime/BinaryStream.h"
#include "runtime/Compression.h"
#include "runtime/FileBinaryStream.h"
#include "runtime/FileTextStream.h"
#include "runtime/FormatString.h"
#include "runtime/TextStream.h"
#include "runtime/MxException.h"
#include "runtime/platform/Platform.h"

#include <atomic>

namespace MxXmlLib
{

namespace
{
constexpr int kRuntimeMajor = 16;
constexpr int kRuntimeMinor = 1;

int g_generatorMajor = 0;
int g_generatorMinor = 0;
// Objects are made on any thread; the first of them looks at the version.
std::atomic<bool> g_versionWarned{false};
bool g_asyncToXmlFile = false;
bool g_asyncFromXmlFile = false;

bool VersionMatches()
{
    return g_generatorMajor == kRuntimeMajor && g_generatorMinor == kRuntimeMinor;
}

void WarnVersion()
{
    std::string text = FormatString("Please ensure your generated code is the same version as this library "
                                    "(Velmar Runtime: v%d.%d, Generator: v%d.%d).",
                                    kRuntimeMajor, kRuntimeMinor, g_generatorMajor, g_generatorMinor);
    Platform::ShowWarning("Version Mismatch Error", text.c_str());
}

void Fire(IEventSink *sink, CXmlCollectionBase *collection, IEventSink::MsgType type, void *data)
{
    sink->OnEvent(collection->GetBase(), type, data);
}
} // namespace

void Register(int major, int minor)
{
    g_generatorMajor = major;
    g_generatorMinor = minor;
}

void AsyncToXmlFile(bool value)
{
    g_asyncToXmlFile = value;
}

void AsyncFromXmlFile(bool value)
{
    g_asyncFromXmlFile = value;
}

bool IsAsyncToXmlFile()
{
    return g_asyncToXmlFile;
}

bool IsAsyncFromXmlFile()
{
    return g_asyncFromXmlFile;
}

CXmlObjectBase::CXmlObjectBase() : m_refCount(0)
{
    // The constructor only warns, and only once a process: objects may be
    // built before the generated code has registered its version.
    // The plain load keeps the common case free of a shared write.
    if (!g_versionWarned.load(std::memory_order_relaxed) && !g_versionWarned.exchange(true))
    {
        if (!VersionMatches())
            WarnVersion();
    }
}

CXmlObjectBase::CXmlObjectBase(CXmlObjectBase const &other)
    : IEventSink(other), m_elementName(other.m_elementName), m_refCount(other.m_refCount.load())
{
}

CXmlObjectBase &CXmlObjectBase::operator=(CXmlObjectBase const &other)
{
    m_elementName = other.m_elementName;
    m_refCount.store(other.m_refCount.load());
    return *this;
}

CXmlObjectBase::~CXmlObjectBase() = default;

long CXmlObjectBase::AddRef()
{
    return ++m_refCount;
}

long CXmlObjectBase::Release()
{
    long const now = --m_refCount;
    if (now == 0)
        delete this;
    return now;
}

void CXmlObjectBase::OnEvent(CXmlObjectBase *, IEventSink::MsgType, void *) {}

void CXmlObjectBase::AttributesToXml_Int(CXmlWriter *, CSerializationContext const &) const {}

void CXmlObjectBase::CheckVersion()
{
    if (VersionMatches())
        return;
    WarnVersion();
    throw CMxException(FormatString("Wrong Version (Velmar Runtime: v%d.%d, Generator: v%d.%d)", kRuntimeMajor,
                                    kRuntimeMinor, g_generatorMajor, g_generatorMinor));
}

void CXmlObjectBase::WriteXmlText(CTextStream &stream, bool includeDocHeader, bool formatted, EOLType eolType,
                                  CSerializationContext const &context) const
{
    CXmlTextWriter writer(&stream);
    stream.Start();
    writer.SetFormatted(formatted);
    writer.SetIndent(context.GetIndentChars());
    writer.SetEolType(eolType);
    writer.SetWriteDefaultValues(context.GetWriteDefaultElementValues());
    if (includeDocHeader)
        writer.WriteXmlDeclaration();
    std::string const targetNamespace = GetTargetNamespace();
    ToXml_Int(&writer, true, targetNamespace.c_str(), context, false);
    stream.End();
    if (writer.GetCurrentContext())
        throw CMxException("An Element has not been closed.");
}

void CXmlObjectBase::ToXmlFile(char const *fileName, bool includeDocHeader, bool formatted, XmlEncoding encoding,
                               EOLType eolType, CSerializationContext const &context,
                               CompressionType compression) const
{
    // Refused before the version check: no file form can write zlib data.
    if (compression == CompressionZLib)
        throw CMxException("ZLIB Compression only available for To Stream methods.");
    if (!IsAsyncToXmlFile() || compression != CompressionNone)
    {
        CFileBinaryStream file(fileName, encoding,
                               ToXmlStream(includeDocHeader, formatted, encoding, eolType, context, compression));
        file.WriteFile();
        return;
    }
    CheckVersion();
    // After a failure the file stays as far as it was written.
    CFileTextStream stream(fileName, encoding);
    WriteXmlText(stream, includeDocHeader, formatted, eolType, context);
}

void CXmlObjectBase::ToFastInfosetFile(char const *fileName, FInfoDecl declaration,
                                       CSerializationContext const &context, CompressionType compression) const
{
    if (compression == CompressionZLib)
        throw CMxException("ZLIB Compression only available for To Stream methods.");
    CFileBinaryStream file(fileName, XmlEncoding_None, ToFastInfosetStream(declaration, context, compression));
    file.WriteFile();
}

std::string CXmlObjectBase::ToXml(bool includeDocHeader, bool formatted, EOLType eolType,
                                  CSerializationContext const &context) const
{
    CheckVersion();
    CTextStream stream(XmlEncoding_None);
    WriteXmlText(stream, includeDocHeader, formatted, eolType, context);
    return stream.TextAsString();
}

CBinaryData CXmlObjectBase::ToXmlStream(bool includeDocHeader, bool formatted, XmlEncoding encoding,
                                        EOLType eolType, CSerializationContext const &context,
                                        CompressionType compression) const
{
    CheckVersion();
    CTextStream stream(encoding);
    WriteXmlText(stream, includeDocHeader, formatted, eolType, context);
    // An encoding that cannot be written fails only here, once all is built.
    CBinaryData bytes = stream.GetBytes();
    if (compression != CompressionNone)
        Compress(bytes, compression);
    return bytes;
}

CBinaryData CXmlObjectBase::ToFastInfosetStream(FInfoDecl declaration, CSerializationContext const &context,
                                                CompressionType compression) const
{
    CheckVersion();
    CBinaryStream stream;
    CFastInfosetWriter writer(&stream, &context.GetFIContext());
    writer.WriteHeader(declaration);
    std::string const targetNamespace = GetTargetNamespace();
    ToXml_Int(&writer, true, targetNamespace.c_str(), context, false);
    writer.WriteDocumentEnd();
    CBinaryData bytes = stream.GetData();
    if (compression != CompressionNone)
        Compress(bytes, compression);
    return bytes;
}

void CXmlObjectBase::FromXmlFile(char const *fileName, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    document.ReadWhileParsing();
    document.Load(fileName);
    ReadParsedDocument(document, context);
}

void CXmlObjectBase::WriteJsonText(CTextStream &stream, bool formatted, EOLType eolType,
                                   CSerializationContext const &context) const
{
    std::unique_ptr<CJsonTextWriter> const made = CreateJsonWriter(&stream, context.GetJsonContext());
    CJsonTextWriter &writer = *made;
    stream.Start();
    writer.SetFormatted(formatted);
    writer.SetIndent(context.GetIndentChars());
    writer.SetEolType(eolType);
    writer.SetRoundTrip(context.GetJsonContext().GetSupportRoundtrip());
    writer.WriteDocumentStart();
    std::string const targetNamespace = GetTargetNamespace();
    ToXml_Int(&writer, true, targetNamespace.c_str(), context, false);
    writer.WriteDocumentEnd();
    stream.End();
    if (writer.GetCurrentContext())
        throw CMxException("An Element has not been closed.");
}

void CXmlObjectBase::ToJsonFile(char const *fileName, bool formatted, XmlEncoding encoding, EOLType eolType,
                                CSerializationContext const &context, CompressionType compression) const
{
    if (compression == CompressionZLib)
        throw CMxException("ZLIB Compression only available for To Stream methods.");
    if (!IsAsyncToXmlFile() || compression != CompressionNone)
    {
        // Encoding 1 whatever the caller's: buffered JSON files never start
        // with a byte order mark.
        CFileBinaryStream file(fileName, XmlEncoding_UTF8,
                               ToJsonStream(formatted, encoding, eolType, context, compression));
        file.WriteFile();
        return;
    }
    CheckVersion();
    CFileTextStream stream(fileName, encoding);
    WriteJsonText(stream, formatted, eolType, context);
}

std::string CXmlObjectBase::ToJson(bool formatted, EOLType eolType, CSerializationContext const &context) const
{
    CheckVersion();
    CTextStream stream(XmlEncoding_None);
    WriteJsonText(stream, formatted, eolType, context);
    return stream.TextAsString();
}

CBinaryData CXmlObjectBase::ToJsonStream(bool formatted, XmlEncoding encoding, EOLType eolType,
                                         CSerializationContext const &context, CompressionType compression) const
{
    CheckVersion();
    CTextStream stream(encoding);
    WriteJsonText(stream, formatted, eolType, context);
    CBinaryData bytes = stream.GetBytes();
    if (compression != CompressionNone)
        Compress(bytes, compression);
    return bytes;
}

void CXmlObjectBase::FromJsonFile(char const *fileName, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    CBinaryData const xml = document.LoadJsonFile(fileName);
    FromJson_Int(xml, context);
}

void CXmlObjectBase::FromJsonStream(CBinaryData const &data, CSerializationContext const &context)
{
    FromJsonStream(const_cast<unsigned char *>(data.GetData()), data.GetLength(), context);
}

void CXmlObjectBase::FromJsonStream(unsigned char *const bytes, unsigned long length,
                                    CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    CBinaryData const xml = document.LoadJsonStream(bytes, length);
    FromJson_Int(xml, context);
}

void CXmlObjectBase::FromJson(wchar_t const *text, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    CBinaryData const xml = document.LoadJson(text);
    FromJson_Int(xml, context);
}

void CXmlObjectBase::FromJson(char const *text, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    CBinaryData const xml = document.LoadJson(text);
    FromJson_Int(xml, context);
}

void CXmlObjectBase::FromJson_Int(CBinaryData const &xml, CSerializationContext const &context)
{
    // Without full round trips the JSON keeps no namespaces, so matching must
    // ignore them for this call. The caller's context is const, but is
    // changed here on purpose and put back on every way out.
    bool const ignoredBefore = context.GetIgnoreNamespaces();
    auto &writable = const_cast<CSerializationContext &>(context);
    if (context.GetJsonContext().GetSupportRoundtrip() != RoundTripFull)
        writable.SetIgnoreNamespaces(true);
    auto restore = [&] {
        if (context.GetJsonContext().GetSupportRoundtrip() != RoundTripFull)
            writable.SetIgnoreNamespaces(ignoredBefore);
    };
    try
    {
        FromXmlStream(xml, context);
    }
    catch (CMxException const &e)
    {
        restore();
        std::string const text(xml.GetData() ? reinterpret_cast<char const *>(xml.GetData()) : "", xml.GetLength());
        throw CMxException(FormatString("Error converting JSON to XML:\n%s", text.c_str()), e);
    }
    catch (...)
    {
        restore();
        throw;
    }
    restore();
}

void CXmlObjectBase::FromXml(wchar_t const *text, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    document.ReadWhileParsing();
    document.LoadXml(text);
    ReadParsedDocument(document, context);
}

void CXmlObjectBase::FromXml(char const *text, CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    document.ReadWhileParsing();
    document.LoadXml(text);
    ReadParsedDocument(document, context);
}

void CXmlObjectBase::FromXmlStream(CBinaryData const &data, CSerializationContext const &context)
{
    FromXmlStream(const_cast<unsigned char *>(data.GetData()), data.GetLength(), context);
}

void CXmlObjectBase::FromXmlStream(unsigned char *const bytes, unsigned long length,
                                   CSerializationContext const &context)
{
    CheckVersion();
    CXmlDocument document(context);
    document.ReadWhileParsing();
    document.LoadXmlStream(bytes, length);
    ReadParsedDocument(document, context);
}

void CXmlObjectBase::ReadParsedDocument(CXmlDocument &document, CSerializationContext const &context)
{
    CXmlElement *root = document.GetDocumentElement();
    if (root == nullptr)
        document.FinishParse(); // a text without an element fails in the parse
    document.BeginOwnRead(root);
    try
    {
        FromXml_Int(root, root ? root->GetFirstElement() : nullptr, context, false);
    }
    catch (...)
    {
        document.FinishParse();
        throw;
    }
    document.FinishParse();
}

void CXmlObjectBase::FromXmlElement(CXmlElement const *element, CSerializationContext const &context)
{
    CheckVersion();
    // The tree's nodes are not changed by reading; the readers take them
    // non-const only because they hand out cursors into them.
    if (element == nullptr)
        throw CMxInvalidParamException("The element to read from is NULL.");
    auto *e = const_cast<CXmlElement *>(element);
    FromXml_Int(e, e->GetFirstElement(), context, false);
}

void CXmlObjectBase::FromXmlElement(CElement const *element, CSerializationContext const &context)
{
    CheckVersion();
    if (element == nullptr)
        throw CMxInvalidParamException("The element to read from is NULL.");
    // The text is written under the default context on purpose: the caller's
    // output options (aliases, processing instructions, root attributes) must
    // not reshape the input. Writing an untyped element only reads a context,
    // so concurrent calls may share the default one; the caller's context
    // governs the reading.
    std::string const text = element->ToXml(false, false, LF, CSerializationContext::GetDefaultContext());
    FromXml(text.c_str(), context);
}

void CXmlObjectBase::SetElementName(char const *name)
{
    m_elementName = name ? name : "";
}

void CXmlObjectBase::SetElementName(CXmlObjectBase *object, char const *name)
{
    object->SetElementName(name);
}

void CXmlObjectBase::AttributesToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer,
                                         CSerializationContext const &context)
{
    object->AttributesToXml_Int(writer, context);
}

void CXmlObjectBase::ToXml_Int(CXmlObjectBase const *object, CXmlWriter *writer, bool isRoot,
                               char const *namespaceUri, CSerializationContext const &context, bool optionalChoice)
{
    object->ToXml_Int(writer, isRoot, namespaceUri, context, optionalChoice);
}

CXmlElement *CXmlObjectBase::FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                         CSerializationContext const &context)
{
    return FromXml_Int(object, element, cursor, context, false);
}

// Every read of a child object passes here, which makes it the place where a
// frame's document learns what the reading has taken. A class that reads a
// child of the element under the innermost read as an element of its own has
// taken it for good once its read returns, unless an inline read around it
// may still be undone by its caller (which then offers the same elements to
// another row): so inline classes count as undoable while they read, and
// the content of an element is dropped only when none is open.
CXmlElement *CXmlObjectBase::FromXml_Int(CXmlObjectBase *object, CXmlElement *element, CXmlElement *cursor,
                                         CSerializationContext const &context, bool optionalChoice)
{
    CXmlDocument *const document = element ? element->GetDocument() : nullptr;
    if (document == nullptr || !document->DropsReadContent())
        return object->FromXml_Int(element, cursor, context, optionalChoice);
    auto *const generated = dynamic_cast<CXmlGeneratedClass *>(object);
    if (generated == nullptr)
        return object->FromXml_Int(element, cursor, context, optionalChoice);
    bool const own = generated->GetParentElementInfo()->GetElementType() == MxXmlLibData::XmlElementType_Element &&
                     document->IsChildOfRead(element);
    struct Scope
    {
        CXmlDocument *document;
        bool own;
        ~Scope() { own ? document->EndOwnRead() : document->EndUndoableRead(); }
    } const scope{document, own};
    if (own)
        document->BeginOwnRead(element);
    else
        document->BeginUndoableRead();
    CXmlElement *const next = object->FromXml_Int(element, cursor, context, optionalChoice);
    // What the class gives back lies inside the element, and the callers of
    // a read of an element of its own do not look at it.
    if (own)
        document->ElementRead(element);
    return next;
}

void CXmlObjectBase::Throw_IfPropertyIsNull(CXmlObjectBase *value, char const *name)
{
    if (value == nullptr)
        throw CMxInvalidParamException(
            FormatString("The Property [%s] is mandatory, it may node be NULL", name ? name : ""));
}

void CXmlObjectBase::Throw_IfElementNameDiffers(CXmlObjectBase *value, char const *name)
{
    if (value == nullptr)
        return;
    std::string const found = value->GetBase()->GetElementName();
    if (found != (name ? name : ""))
        throw CMxInvalidParamException(FormatString(
            "This property requires an element with the name %s the element being set has the element name %s",
            name ? name : "", found.c_str()));
}

namespace
{
[[noreturn]] void ThrowAlreadySet(char const *format, std::string const &current)
{
    throw CMxInvalidStateException(FormatString(format, current.c_str()));
}
char const kAlreadySetBracketed[] =
    "The Property [%s] is already set. Only one element within this class bay be set at a time";
} // namespace

void CXmlObjectBase::Choice_SelectElement(char const *name, CXmlObjectBase *value, std::string &current)
{
    std::string const wanted = name ? name : "";
    if (current == wanted)
    {
        if (value == nullptr)
            current.clear();
    }
    else if (current.empty())
        current = wanted;
    else if (value != nullptr)
        ThrowAlreadySet(kAlreadySetBracketed, current);
}

void CXmlObjectBase::Choice_CollectionChanged(char const *name, long count, std::string &current)
{
    std::string const wanted = name ? name : "";
    if (current == wanted)
    {
        if (count == 0)
            current.clear();
    }
    else if (!current.empty())
    {
        if (count != 0)
            ThrowAlreadySet(kAlreadySetBracketed, current);
    }
    else if (count >= 1)
        current = wanted;
}

void CXmlObjectBase::Choice_SetElementValid(bool valid, char const *name, std::string &current)
{
    if (!valid)
    {
        current.clear();
        return;
    }
    std::string const wanted = name ? name : "";
    if (current.empty() || current != wanted)
        ThrowAlreadySet("The Property %s is already set. Only one element within this class bay be set at a time",
                        current);
    current = wanted;
}

void CXmlObjectBase::FireOnCollectionChangeEvent(IEventSink *sink, CXmlCollectionBase *collection)
{
    Fire(sink, collection, IEventSink::MsgCollectionChange, nullptr);
}

void CXmlObjectBase::FireOnCollectionAddEvent(IEventSink *sink, CXmlCollectionBase *collection, void *item)
{
    Fire(sink, collection, IEventSink::MsgCollectionAdd, item);
}

void CXmlObjectBase::FireOnCollectionAddCompleteEvent(IEventSink *sink, CXmlCollectionBase *collection, void *item)
{
    Fire(sink, collection, IEventSink::MsgCollectionAddComplete, item);
}

void CXmlObjectBase::FireOnCollectionRemoveEvent(IEventSink *sink, CXmlCollectionBase *collection, int index)
{
    Fire(sink, collection, IEventSink::MsgCollectionRemove, index == -1 ? nullptr : &index);
}

void CXmlObjectBase::FireOnCollectionRemoveCompleteEvent(IEventSink *sink, CXmlCollectionBase *collection,
                                                         int index)
{
    Fire(sink, collection, IEventSink::MsgCollectionRemoveComplete, index == -1 ? nullptr : &index);
}

bool CXmlObjectBase::DoesElementNameMatch(CSerializationContext const &context, CXmlElement const *element,
                                          char const *name, char const *namespaceUri) const
{
    if (element->GetLocalName() != (name ? name : ""))
        return false;
    if (context.GetSchemaType() == SchemaType_NoNamespaces || context.GetIgnoreNamespacesFlag())
        return true;
    return element->GetNamespaceURI() == (namespaceUri ? namespaceUri : "");
}

void CXmlObjectBase::Choice_Read_Collection(CXmlCollectionBase *collection, CXmlElement *element,
                                            CXmlElement *&cursor, int &count, CSerializationContext const &context)
{
    if (count >= 1)
        return;
    CXmlElement *next = collection->FromXml_Int(element, cursor, context, false);
    if (next == cursor)
        return;
    cursor = next;
    collection->ValidateCount(context);
    ++count;
}

bool CXmlObjectBase::IsNamespaceValid(char const *namespaceUri, char const *allowed,
                                      char const *targetNamespace) const
{
    return MxXmlLibData::CNamespaceRules::IsNamespaceValid(namespaceUri ? namespaceUri : "", allowed ? allowed : "",
                                                           targetNamespace ? targetNamespace : "");
}

void CXmlObjectBase::TestNamespace(char const *namespaceUri, char const *allowed, char const *targetNamespace) const
{
    MxXmlLibData::CNamespaceRules::TestNamespace(namespaceUri ? namespaceUri : "", allowed ? allowed : "",
                                                 targetNamespace ? targetNamespace : "");
}

} // namespace MxXmlLib
