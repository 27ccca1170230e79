#pragma once

#include "binding/XmlObjectBase.h"
#include "runtime/InstanceMonitor.h"
#include "runtime/SmartPtr.h"

#include <string>

namespace MxXmlLib
{

class CAttributeCol;
class CElementCol;

// One untyped element (xs:any content): local name, namespace, text, and
// counted collections of attributes and child elements. Its namespace must
// meet the wildcard it was made with; its children are free of it. Text in
// mixed content is kept as one string and written after the children.
//
// An element with a default namespace (taken from an "xmlns" attribute or
// given when converting an object) is written through a private text writer
// that declares it, and without its attributes.
class CElement : public CXmlObjectBase, private CInstanceMonitor
{
public:
    // In no namespace, under the wildcard "##any".
    explicit CElement(char const *name);
    // The namespace serves as its own wildcard. A wildcard keyword raises
    // CMxInvalidNamespaceException "Invalid Namespace [...].".
    CElement(char const *name, char const *namespaceUri);
    // Raises CMxInvalidNamespaceException for a null name, restriction or
    // target namespace, and when the namespace fails the restriction.
    CElement(char const *name, char const *namespaceUri, char const *namespaceRestriction,
             char const *targetNamespace);
    // The tree of a bound object's XML form. A non-null default namespace is
    // kept, and makes this element write through the private writer.
    CElement(CXmlObjectBase *object, char const *defaultNamespace);
    // Copies the strings and shares the attribute and child collections.
    CElement(CElement const &other);
    CElement &operator=(CElement const &other);

    // A separate tree; the default namespace is not carried over.
    CSmartPtr<CElement> Clone() const;

    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    // Parses `xml` and reads its document element into this element, under
    // the default context. Attributes and children add to those present.
    // (It hides the inherited forms, which would read the document element's
    // first child rather than the document element.) Reading XML text only
    // reads a context, so threads may share the default one while nobody
    // changes it.
    void FromXml(char const *xml);
    // The same under the caller's context. A name of its own: a second
    // FromXml with a context would override the inherited virtual form and
    // change what that form reads.
    void FromXmlDocument(char const *xml, CSerializationContext const &context);
    // With strict JSON, the element of the document's one key is read into
    // this element, as FromXml reads the document element; otherwise the
    // inherited reading (which takes the document element's first child).
    using CXmlObjectBase::FromJson;
    using CXmlObjectBase::FromJsonStream;
    void FromJson(char const *text, CSerializationContext const &context =
                                        CSerializationContext::GetDefaultContext()) override;
    void FromJsonStream(unsigned char *const bytes, unsigned long length,
                        CSerializationContext const &context = CSerializationContext::GetDefaultContext()) override;
    void FromJsonFile(char const *fileName,
                      CSerializationContext const &context = CSerializationContext::GetDefaultContext()) override;

    // Tests this element, its attributes and, recursively, its children
    // against another wildcard, storing nothing. A failure of the element
    // itself is thrown as a pointer to a new CMxInvalidNamespaceException,
    // which the catcher deletes.
    void SetNamespaceRestrictions(char const *restriction, char const *targetNamespace);

    std::string GetName() const { return m_name; }
    void SetName(char const *name);
    std::string GetText() const { return m_text; }
    void SetText(char const *text);
    std::string GetNamespace() const override { return m_namespace; }
    void SetNamespace(char const *namespaceUri);
    std::string GetNamespaceRestriction() const { return m_namespaceRestriction; }
    std::string GetDefaultNamespace() const { return m_defaultNamespace; }
    CSmartPtr<CAttributeCol> GetAttributes() const;
    CSmartPtr<CElementCol> GetChildElements() const;

protected:
    ~CElement() override;

    void Init(char const *name, char const *namespaceUri, char const *namespaceRestriction,
              char const *targetNamespace);
    // Takes name, namespace, text, attributes and, recursively, the children
    // of `source`, replacing what this element held.
    void CopyXmlElement(CXmlElement *source);

    std::string GetTargetNamespace() const override { return m_namespace; }
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    // Reads `current` itself (not a child of it) and returns its next
    // sibling, or `current` when its namespace fails the wildcard. A child
    // that the children refuse raises CMxValidationException.
    CXmlElement *FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;

    void FireOnChangeName() {}
    void FireOnChangeNamespace() {}
    void FireOnChangeText() {}

private:
    // Reads strict JSON: `load` translates it to XML in a document of the
    // context (LoadJson, LoadJsonStream or LoadJsonFile).
    template <typename Load> void FromStrictJson(Load load, CSerializationContext const &context);
    // Reads the XML translation of strict JSON, document element included.
    void FromStrictJsonTranslation(CBinaryData const &xml, CSerializationContext const &context);
    void ToXmlWithDefaultNamespace(CXmlWriter *writer, CSerializationContext const &context,
                                   bool optionalChoice) const;

    std::string m_name;
    std::string m_text;
    std::string m_namespace;
    std::string m_namespaceRestriction;
    std::string m_targetNamespace;
    CSmartPtr<CAttributeCol> m_attributes;
    CSmartPtr<CElementCol> m_childElements;
    std::string m_defaultNamespace;
};

} // namespace MxXmlLib

// The collections complete the element's interface.
#include "collections/AttributeCol.h"
#include "collections/ElementCol.h"
