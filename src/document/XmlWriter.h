#pragma once

// The sink that the object model writes itself to. It never knows the output
// format: XML text, JSON and Fast Infoset each implement it. The base keeps
// the namespace state; each open element has a context that gives namespace
// declarations their scope by copy on write.

#include "runtime/InstanceMonitor.h"
#include "values/Variant.h"

#include <map>
#include <string>

namespace MxXmlLib
{

class CXmlWriter : public CInstanceMonitor
{
public:
    using NamespaceMap = std::map<std::string, std::string>; // URI -> prefix

    // The state of one open element. A context without declarations of its
    // own inherits: its default namespace and map are those of the nearest
    // ancestor that does not.
    class CXmlWriterContext : public CInstanceMonitor
    {
    public:
        // The root's context: its own copy of the writer's declarations.
        CXmlWriterContext(std::string const &localName, std::string const &namespaceUri,
                          std::string const &defaultNamespace, NamespaceMap const &map);
        // A child's context: shares the parent's declarations until it declares.
        CXmlWriterContext(std::string const &localName, std::string const &namespaceUri, CXmlWriterContext *parent);
        ~CXmlWriterContext() override;
        CXmlWriterContext(CXmlWriterContext const &) = delete;
        CXmlWriterContext &operator=(CXmlWriterContext const &) = delete;

        std::string const &GetEffectiveDefaultNamespace() const;
        NamespaceMap const &GetEffectiveMap() const { return *m_map; }
        // Gives the context declarations of its own, copied from the parent's.
        void MakeScopeOwn();
        void SetDefaultNamespace(std::string const &uri);
        void AddNamespace(std::string const &prefix, std::string const &uri);
        // The prefix mapped to `uri`, or null.
        std::string const *FindPrefix(std::string const &uri) const;
        // The first of AA, AB, ... AZ, BA, ... that the effective map does not use.
        std::string GeneratePrefix() const;

        CXmlWriterContext *GetParent() const { return m_parent; }
        // Unlinks the parent, so that deleting this context spares it.
        CXmlWriterContext *DetachParent();

        std::uint32_t ChildCount = 0;
        std::uint32_t TagOpen = 1;
        std::int32_t Depth = 0;
        std::string NamespaceUri;
        std::string LocalName;
        std::uint32_t ArrayState = 0;
        std::uint32_t HasAttributes = 0;

    private:
        CXmlWriterContext *m_parent;
        std::string m_defaultNamespace;
        NamespaceMap *m_map;
        bool m_inherits;
        bool m_ownsMap;
    };

    CXmlWriter();
    ~CXmlWriter() override;
    CXmlWriter(CXmlWriter const &) = delete;
    CXmlWriter &operator=(CXmlWriter const &) = delete;

    virtual void StartDocument();
    // Raises "An Element has not been closed." while an element is open.
    virtual void EndDocument();
    // Before the root: the document's default namespace. Inside an element:
    // that element's, for it and its descendants.
    virtual void SetDefaultNamespace(std::string const &uri);
    // Before the root: declared on the root. Inside an element: in its scope.
    virtual void AddNamespace(std::string const &prefix, std::string const &uri);
    virtual void WriteComment(std::string const &text) = 0;
    virtual void WriteProcessingInstruction(std::string const &text) = 0;
    virtual void WriteInLineSchema(std::string const &text) = 0;
    virtual void StartElement(std::string const &localName, std::string const &namespaceUri) = 0;
    // Text marked as a default value may be left out by the writer.
    virtual void WriteText(std::string const &value, ItemType type, bool isDefaultValue) = 0;
    virtual void EndElement() = 0;
    virtual void WriteAttribute(std::string const &localName, std::string const &namespaceUri,
                                std::string const &value, ItemType type) = 0;
    virtual void WriteTypeAttribute(std::string const &typeNamespace, std::string const &typeName,
                                    ItemType type) = 0;
    virtual void WriteNilAttribute() = 0;

    CXmlWriterContext *GetCurrentContext() const { return m_current; }

protected:
    // Makes the context for a new element and links it under the current one;
    // the caller makes it current when its start tag is written.
    CXmlWriterContext *CreateContext(std::string const &localName, std::string const &namespaceUri);
    void SetCurrentContext(CXmlWriterContext *context) { m_current = context; }
    // Ends the current context and makes its parent current.
    void PopContext();

    std::string m_defaultNamespace;
    CXmlWriterContext *m_current;
    NamespaceMap m_namespaceMap;
};

} // namespace MxXmlLib
