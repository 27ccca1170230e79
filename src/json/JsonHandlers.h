#pragma once

// The handlers that turn the JSON reader's events into XML text, which then
// goes the ordinary way of XML input. The default handler keeps the JSON path
// for error messages and passes every event on; the XML handler maps keys to
// elements ('@' keys to attributes and "#text" to text, unless round trips are
// off) and drives a CXmlTextWriter. Names are not mangled: a key that is no
// XML name fails later, in the XML parser.

#include "binding/SerializationContext.h"
#include "json/JsonContext.h"
#include "json/JsonTextReader.h"
#include "values/BinaryData.h"

#include <cstdint>
#include <string>
#include <vector>

namespace MxXmlLib
{

class CXmlTextWriter;

class CJsonReaderDefaultHandler : public IJsonReaderHandler, public IErrorPathProvider
{
public:
    // Takes ownership of `next`, which may be null.
    explicit CJsonReaderDefaultHandler(IJsonReaderHandler *next = nullptr);
    ~CJsonReaderDefaultHandler() override;
    CJsonReaderDefaultHandler(CJsonReaderDefaultHandler const &) = delete;
    CJsonReaderDefaultHandler &operator=(CJsonReaderDefaultHandler const &) = delete;

    void StartDocument() override;
    void EndDocument() override;
    void OnName(std::string const &name) override;
    void OnString(std::string const &value) override;
    void OnNumber(std::string const &value) override;
    void OnStartObject() override;
    void OnEndObject() override;
    void OnStartArray() override;
    void OnEndArray() override;
    void OnBoolean(bool value) override;
    void OnNull() override;

    // "$" and the names of the open objects and keys, innermost first:
    // "$.b.a" inside {"a":{"b":...}}. An object in an array is named by the
    // array, '[', its index as one raw byte, and ']'.
    std::string GetErrorPath() override;

private:
    enum PathKind : std::int32_t
    {
        KindArray = 0,
        KindName = 1,
        KindObject = 2,
    };
    struct PathItem
    {
        std::string Name;
        std::int32_t Index;
        PathKind Kind;
    };
    void Push(std::string const &name, PathKind kind);
    // Pops items up to and including the first of `kind` from the top.
    void PopThrough(PathKind kind);

    std::vector<PathItem> m_path;
    IJsonReaderHandler *m_next;
};

class CJsonReaderToXmlHandler : public IJsonReaderHandler
{
public:
    // `writer` and `errorPath` are borrowed.
    CJsonReaderToXmlHandler(CXmlTextWriter *writer, JsonRoundTrip roundTrip, IErrorPathProvider *errorPath);

    void StartDocument() override;
    void EndDocument() override;
    // An empty key raises CMxValidationException "JSON item has an empty Name.".
    void OnName(std::string const &name) override;
    void OnString(std::string const &value) override;
    void OnNumber(std::string const &value) override;
    // The outermost object gives no element.
    void OnStartObject() override;
    void OnEndObject() override;
    // An array without a key raises CMxValidationException "JSON Array has no Name.".
    void OnStartArray() override;
    void OnEndArray() override;
    void OnBoolean(bool value) override;
    void OnNull() override;

    void SetErrorPath(IErrorPathProvider *errorPath) { m_errorPath = errorPath; }

private:
    void StartNamedElement(std::string const &name);
    void WriteValue(std::string const &value);
    // Ends the element of the current key, unless the key is an attribute.
    void FinishValue();
    std::string ErrorPath() const;

    CXmlTextWriter *m_writer;
    JsonRoundTrip m_roundTrip;
    IErrorPathProvider *m_errorPath;
    std::vector<std::string> m_openElements;
    std::vector<std::string> m_openArrays;
    std::string m_currentName;
    bool m_isAttribute;
    bool m_isText;
};

// JSON text (local encoding) to XML text, with the options of the context's
// JSON context (made if absent); strict JSON goes to ConvertStrictJsonToXml. JSON syntax errors raise
// CMxValidationException; an element left open raises
// "An Element has not been closed.".
CBinaryData ConvertJsonToXml(std::string const &json, CSerializationContext const &context);

} // namespace MxXmlLib
