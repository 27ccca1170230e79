#include "json/JsonHandlers.h"

#include "document/XmlTextWriter.h"
#include "json/JsonStrictReader.h"
#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextStream.h"

#include <memory>

namespace MxXmlLib
{

// ---------------------------------------------------------------------------
// Path keeping

CJsonReaderDefaultHandler::CJsonReaderDefaultHandler(IJsonReaderHandler *next) : m_next(next) {}

CJsonReaderDefaultHandler::~CJsonReaderDefaultHandler()
{
    delete m_next;
}

void CJsonReaderDefaultHandler::Push(std::string const &name, PathKind kind)
{
    m_path.push_back(PathItem{name, -1, kind});
}

void CJsonReaderDefaultHandler::PopThrough(PathKind kind)
{
    while (!m_path.empty())
    {
        bool const found = m_path.back().Kind == kind;
        m_path.pop_back();
        if (found)
            return;
    }
}

void CJsonReaderDefaultHandler::StartDocument()
{
    if (m_next)
        m_next->StartDocument();
}

void CJsonReaderDefaultHandler::EndDocument()
{
    if (m_next)
        m_next->EndDocument();
}

void CJsonReaderDefaultHandler::OnName(std::string const &name)
{
    if (!m_path.empty() && m_path.back().Kind == KindName)
        m_path.pop_back();
    Push(name, KindName);
    if (m_next)
        m_next->OnName(name);
}

void CJsonReaderDefaultHandler::OnString(std::string const &value)
{
    if (m_next)
        m_next->OnString(value);
}

void CJsonReaderDefaultHandler::OnNumber(std::string const &value)
{
    if (m_next)
        m_next->OnNumber(value);
}

void CJsonReaderDefaultHandler::OnBoolean(bool value)
{
    if (m_next)
        m_next->OnBoolean(value);
}

void CJsonReaderDefaultHandler::OnNull()
{
    if (m_next)
        m_next->OnNull();
}

void CJsonReaderDefaultHandler::OnStartObject()
{
    // The outermost object has no name and is left out of the path.
    if (!m_path.empty())
    {
        PathItem &top = m_path.back();
        if (top.Kind == KindName)
        {
            std::string name = std::move(top.Name);
            m_path.pop_back();
            Push(name, KindObject);
        }
        else if (top.Kind == KindArray)
        {
            ++top.Index;
            // The index stands as one raw byte, not as digits.
            std::string name = top.Name;
            name += '[';
            name += static_cast<char>(top.Index & 0xFF);
            name += ']';
            Push(name, KindObject);
        }
        else
            Push(std::string(), KindObject);
    }
    if (m_next)
        m_next->OnStartObject();
}

void CJsonReaderDefaultHandler::OnEndObject()
{
    PopThrough(KindObject);
    if (m_next)
        m_next->OnEndObject();
}

void CJsonReaderDefaultHandler::OnStartArray()
{
    if (!m_path.empty())
    {
        if (m_path.back().Kind == KindName)
        {
            std::string name = std::move(m_path.back().Name);
            m_path.pop_back();
            Push(name, KindArray);
        }
        else
            Push(std::string(), KindArray);
    }
    if (m_next)
        m_next->OnStartArray();
}

void CJsonReaderDefaultHandler::OnEndArray()
{
    PopThrough(KindArray);
    if (m_next)
        m_next->OnEndArray();
}

std::string CJsonReaderDefaultHandler::GetErrorPath()
{
    std::string path = "$";
    for (auto item = m_path.rbegin(); item != m_path.rend(); ++item)
        if (item->Kind != KindArray)
        {
            path += '.';
            path += item->Name;
        }
    return path;
}

// ---------------------------------------------------------------------------
// Events to XML

CJsonReaderToXmlHandler::CJsonReaderToXmlHandler(CXmlTextWriter *writer, JsonRoundTrip roundTrip,
                                                 IErrorPathProvider *errorPath)
    : m_writer(writer), m_roundTrip(roundTrip), m_errorPath(errorPath), m_isAttribute(false), m_isText(false)
{
}

std::string CJsonReaderToXmlHandler::ErrorPath() const
{
    return m_errorPath ? m_errorPath->GetErrorPath() : std::string();
}

void CJsonReaderToXmlHandler::StartDocument()
{
    m_openElements.clear();
    m_openArrays.clear();
    m_writer->StartDocument();
}

void CJsonReaderToXmlHandler::EndDocument() {}

void CJsonReaderToXmlHandler::OnName(std::string const &name)
{
    if (name.empty())
        throw CMxValidationException("JSON item has an empty Name.", ErrorPath());
    if (m_roundTrip != RoundTripNone && name == "#text")
    {
        m_isAttribute = false;
        m_isText = true;
        return;
    }
    if (m_roundTrip != RoundTripNone && name[0] == '@')
    {
        // Written when its value comes.
        m_currentName = name.substr(1);
        m_isAttribute = true;
        return;
    }
    StartNamedElement(name);
}

void CJsonReaderToXmlHandler::StartNamedElement(std::string const &name)
{
    m_isAttribute = false;
    m_currentName = name;
    m_openElements.push_back(name);
    try
    {
        m_writer->StartElement(name, std::string());
    }
    catch (CMxException const &)
    {
        throw CMxInvalidStateException(
            FormatString("Failed to convert name '%s' to Element name in XML.", name.c_str()));
    }
}

void CJsonReaderToXmlHandler::WriteValue(std::string const &value)
{
    if (m_isAttribute)
    {
        try
        {
            m_writer->WriteAttribute(m_currentName, std::string(), value, ItemType_string);
        }
        catch (CMxException const &)
        {
            throw CMxInvalidStateException(
                FormatString("Failed to convert value '%s' to Attribute string value in XML.", value.c_str()));
        }
    }
    else
    {
        try
        {
            m_writer->WriteText(value, ItemType_string, false);
        }
        catch (CMxException const &)
        {
            throw CMxInvalidStateException(
                FormatString("Failed to convert value '%s' to Element string value in XML.", value.c_str()));
        }
    }
    FinishValue();
}

void CJsonReaderToXmlHandler::FinishValue()
{
    m_currentName.clear();
    // An attribute leaves its element open for more members.
    if (m_isAttribute)
        return;
    if (!m_openElements.empty())
    {
        m_openElements.pop_back();
        m_writer->EndElement();
    }
}

void CJsonReaderToXmlHandler::OnString(std::string const &value)
{
    WriteValue(value);
}

void CJsonReaderToXmlHandler::OnNumber(std::string const &value)
{
    WriteValue(value);
}

void CJsonReaderToXmlHandler::OnBoolean(bool value)
{
    WriteValue(value ? "true" : "false");
}

void CJsonReaderToXmlHandler::OnNull()
{
    FinishValue();
}

void CJsonReaderToXmlHandler::OnStartObject()
{
    if (!m_currentName.empty())
        return; // the element of this key is open
    // The second and later objects of an array reopen the array's element.
    if (!m_openArrays.empty())
        StartNamedElement(m_openArrays.back());
}

void CJsonReaderToXmlHandler::OnEndObject()
{
    if (m_isText)
    {
        // The "#text" value has closed the element already.
        m_isText = false;
        return;
    }
    FinishValue();
    m_isText = false;
}

void CJsonReaderToXmlHandler::OnStartArray()
{
    if (m_currentName.empty())
        throw CMxValidationException("JSON Array has no Name.", ErrorPath());
    m_openArrays.push_back(m_currentName);
}

void CJsonReaderToXmlHandler::OnEndArray()
{
    if (!m_openArrays.empty())
        m_openArrays.pop_back();
}

// ---------------------------------------------------------------------------

CBinaryData ConvertJsonToXml(std::string const &json, CSerializationContext const &context)
{
    if (context.GetJsonContext().IsStrict())
    {
        std::string const xml = ConvertStrictJsonToXml(json, context.GetJsonContext());
        CBinaryData result;
        result.SetBuffer(reinterpret_cast<unsigned char const *>(xml.data()), static_cast<unsigned long>(xml.size()));
        return result;
    }
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.SetIndent("\t");
    writer.SetEolType(LF);
    writer.SetFormatted(true);

    CJsonContext const &options = context.GetJsonContext();
    // The reader owns the default handler, which owns the XML handler; each
    // is held here until its owner exists, so that a failed allocation frees it.
    std::unique_ptr<CJsonReaderToXmlHandler> xmlHandler(
        new CJsonReaderToXmlHandler(&writer, options.GetSupportRoundtrip(), nullptr));
    std::unique_ptr<CJsonReaderDefaultHandler> defaultHandler(new CJsonReaderDefaultHandler(xmlHandler.get()));
    CJsonReaderToXmlHandler *const toXml = xmlHandler.release();
    CJsonReaderDefaultHandler *const pathKeeper = defaultHandler.release();
    CJsonTextReader reader(&json, pathKeeper, 100);
    toXml->SetErrorPath(pathKeeper);
    reader.SetAllowComments(options.GetAllowComments());
    reader.SetRootElementName(options.GetRootElementName());

    reader.Parse();
    stream.End();
    if (writer.GetCurrentContext())
        throw CMxException("An Element has not been closed.");
    std::string const text = stream.TextAsString();
    CBinaryData result;
    result.SetBuffer(reinterpret_cast<unsigned char const *>(text.data()), static_cast<unsigned long>(text.size()));
    return result;
}

} // namespace MxXmlLib
