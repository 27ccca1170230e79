#pragma once

// The sink that the object model writes itself to. It never knows the output
// format: XML text, JSON and Fast Infoset each implement it. The base keeps
// the namespace state; each open element has a context that gives namespace
// declarations their scope by copy on write.

#include "runtime/InstanceMonitor.h"
#include "values/Variant.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace MxXmlLib
{

class CTextStream;

class CXmlWriter : public CInstanceMonitor
{
public:
    using NamespaceMap = std::map<std::string, std::string>; // URI -> prefix

    // The state of one open element. A context without declarations of its
    // own inherits: its default namespace and mappings are those of the
    // nearest ancestor that does not. A context that declares something gets a
    // scope of its own on top of the one it inherited (copy on write), so its
    // declarations are seen by it and its descendants and not by its siblings.
    class CXmlWriterContext : public CInstanceMonitor
    {
    public:
        CXmlWriterContext() = default;
        CXmlWriterContext(CXmlWriterContext const &) = delete;
        CXmlWriterContext &operator=(CXmlWriterContext const &) = delete;

        std::string const &GetEffectiveDefaultNamespace() const { return m_scope->m_defaultNamespace; }
        // Gives the context declarations of its own, starting from the ones in force.
        void MakeScopeOwn();
        void SetDefaultNamespace(std::string const &uri);
        void AddNamespace(std::string const &prefix, std::string const &uri);
        // The prefix that the mappings in force give `uri`, or null.
        std::string const *FindPrefix(std::string const &uri) const;
        bool IsPrefixInUse(std::string const &prefix) const;
        // The first of AA, AB, ... AZ, BA, ... that no mapping in force uses.
        std::string GeneratePrefix() const;
        // The mappings in force, as one map.
        NamespaceMap GetEffectiveMap() const;

        CXmlWriterContext *GetParent() const { return m_parent; }

        // Values of ArrayState: how a JSON writer brackets a collection that
        // the element rows announce.
        enum
        {
            ArrayNone = 0,
            ArrayPending = 1, // a non-empty collection is about to be written
            ArrayOpen = 2,    // "[" is written
            ArrayClosing = 3, // the collection is written; "]" is owed
        };

        std::uint32_t ChildCount = 0;
        std::uint32_t TagOpen = 1;
        std::int32_t Depth = 0;
        std::string NamespaceUri;
        std::string LocalName;
        // The prefix the start tag gave the name, for its end tag: a value's
        // declarations made in between may map the namespace anew.
        std::string NamePrefix;
        std::uint32_t ArrayState = 0;
        std::uint32_t HasAttributes = 0;

    private:
        friend class CXmlWriter;
        // The root: its own copy of the writer's declarations.
        void InitRoot(std::string const &localName, std::string const &namespaceUri,
                      std::string const &defaultNamespace, NamespaceMap const &map);
        // A child: shares the parent's declarations until it declares.
        void InitChild(std::string const &localName, std::string const &namespaceUri, CXmlWriterContext *parent);
        void InitCommon(std::string const &localName, std::string const &namespaceUri);

        CXmlWriterContext *m_parent = nullptr;
        // The nearest context, this one or an ancestor, that has its own scope.
        CXmlWriterContext *m_scope = this;
        // For a context with its own scope: the scope it started from.
        CXmlWriterContext *m_outerScope = nullptr;
        bool m_inherits = false;
        std::string m_defaultNamespace;
        // Own mappings (URI, prefix), overriding those of the outer scopes.
        std::vector<std::pair<std::string, std::string>> m_declared;
        // Prefixes this context declared whose namespace it then mapped to
        // another prefix: still declared here, so not free to generate.
        std::vector<std::string> m_remapped;
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
    static constexpr char kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

    // Makes the context for a new element, below the current one if any; the
    // caller makes it current when its start tag is written, or releases it.
    CXmlWriterContext *CreateContext(std::string const &localName, std::string const &namespaceUri);
    void ReleaseContext(CXmlWriterContext *context);
    void SetCurrentContext(CXmlWriterContext *context) { m_current = context; }
    // Ends the current context and makes its parent current.
    void PopContext();
    // The open element's context. Writing inside an element with none open
    // is the caller's error: say so rather than follow a null pointer.
    CXmlWriterContext &Current();
    // The text writers hand their stream's bytes on once it holds this many,
    // so that a file is written as it grows.
    static void FlushCheck(CTextStream &stream);

    // The prefix in force for `uri` on `context`. Where there is none, the
    // next generated one goes to `declare` (which writes its declaration, or
    // throws before anything is mapped) and is then mapped on `context`. The
    // reference lives until `context` maps another namespace.
    template <class Declare>
    static std::string const &PrefixFor(CXmlWriterContext &context, std::string const &uri, Declare const &declare)
    {
        if (std::string const *prefix = context.FindPrefix(uri))
            return *prefix;
        std::string const generated = context.GeneratePrefix();
        declare(generated);
        context.AddNamespace(generated, uri);
        return *context.FindPrefix(uri);
    }
    // The text of an xsi:type attribute: the type's name, behind the prefix
    // of its namespace (PrefixFor) unless that is empty or the default in force.
    template <class Declare>
    static std::string TypeValue(CXmlWriterContext &context, std::string const &typeNamespace,
                                 std::string const &typeName, Declare const &declare)
    {
        if (typeNamespace.empty() || typeNamespace == context.GetEffectiveDefaultNamespace())
            return typeName;
        return PrefixFor(context, typeNamespace, declare) + ":" + typeName;
    }
    // A prefix test, not equality: nothing under the XML namespace is
    // declared, as it is bound by definition.
    static bool IsUnderXmlNamespace(std::string const &uri);
    // The mappings made before the root, as the root declares them
    // (`declare(prefix, uri)`), in URI order.
    template <class Declare> void ForEachDocumentMapping(Declare const &declare) const
    {
        for (auto const &entry : m_namespaceMap)
            if (!IsUnderXmlNamespace(entry.first))
                declare(entry.second, entry.first);
    }
    // The same behind the document's default namespace, if any, as the
    // mapping of the empty prefix.
    template <class Declare> void ForEachRootDeclaration(Declare const &declare) const
    {
        if (!m_defaultNamespace.empty())
            declare(std::string(), m_defaultNamespace);
        ForEachDocumentMapping(declare);
    }

    std::string m_defaultNamespace;
    CXmlWriterContext *m_current;
    NamespaceMap m_namespaceMap;

private:
    // Contexts are reused from element to element: writing allocates only
    // for the deepest nesting seen so far.
    std::vector<std::unique_ptr<CXmlWriterContext>> m_contexts;
    std::vector<CXmlWriterContext *> m_free;
};

} // namespace MxXmlLib
