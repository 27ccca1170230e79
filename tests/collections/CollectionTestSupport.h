#pragma once

// Shared pieces of the collection tests: a listener that records what it
// hears, plain items, and helpers to catch messages.

#include "MxXmlLib.h"
#include "collections/XmlCollection.h"

#include <functional>
#include <string>
#include <vector>

namespace MxCollectionTest
{

// The message and the class of the exception a call raises, or "no error".
template <typename E = MxXmlLib::CMxException> std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (E const &e)
    {
        return e.GetMessage();
    }
    return "no error";
}

// A plain counted item that knows its label and counts its destruction.
class CItem : public MxXmlLib::CXmlObjectBase
{
public:
    explicit CItem(std::string label, int *destroyed = nullptr) : m_label(std::move(label)), m_destroyed(destroyed) {}
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return ""; }
    std::string const &Label() const { return m_label; }

protected:
    ~CItem() override
    {
        if (m_destroyed)
            ++*m_destroyed;
    }
    std::string GetTargetNamespace() const override { return ""; }
    // Inline items bring their attributes to the parent's start tag.
    void AttributesToXml_Int(MxXmlLib::CXmlWriter *writer, MxXmlLib::CSerializationContext const &) const override
    {
        writer->WriteAttribute(m_label, "", "1", MxXmlLib::ItemType_string);
    }
    void ToXml_Int(MxXmlLib::CXmlWriter *writer, bool, char const *, MxXmlLib::CSerializationContext const &,
                   bool) const override
    {
        writer->StartElement(m_label, "");
        writer->EndElement();
    }
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &, bool) override
    {
        return cursor;
    }

private:
    std::string m_label;
    int *m_destroyed;
};

// Writes each event as one line: "add a", "addComplete a", "change",
// "remove -", "removeComplete 3". Items are named by their label when they
// are CItem, else by the element name.
class CRecorder : public MxXmlLib::IEventSink
{
public:
    std::vector<std::string> events;
    std::vector<MxXmlLib::CXmlObjectBase *> sources;

    void OnEvent(MxXmlLib::CXmlObjectBase *source, MsgType type, void *data) override
    {
        static char const *const kNames[] = {"change", "add", "addComplete", "remove", "removeComplete"};
        std::string line = kNames[type];
        if (type == MsgCollectionAdd || type == MsgCollectionAddComplete)
            line += " " + Describe(static_cast<MxXmlLib::CXmlObjectBase *>(data));
        else if (type != MsgCollectionChange)
            line += data ? " " + std::to_string(*static_cast<int *>(data)) : std::string(" -");
        events.push_back(line);
        sources.push_back(source);
    }
    MxXmlLib::CXmlObjectBase *GetBase() override { return nullptr; }

    static std::string Describe(MxXmlLib::CXmlObjectBase *item)
    {
        if (auto *plain = dynamic_cast<CItem *>(item))
            return plain->Label();
        return item ? item->GetElementName() : "null";
    }
};

} // namespace MxCollectionTest
