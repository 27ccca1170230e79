#pragma once

// The run-time back end: a loaded schema set whose classes are built from
// the model when it loads, so that any schema binds without compiling
// anything. Objects of such a class keep their properties in cells and go
// through the ordinary driver like any generated class.
//
// The factory functions of the rows carry no context of their own, so each
// set takes a number in a process-wide registry while it lives, and every
// class number, enumeration function pair and substitution factory it hands
// to its rows names that number. Two sets loaded at once never see each
// other's classes. A set stays alive while any object made from it does.

#include "frontend/XsdFrontend.h"
#include "model/SchemaModel.h"

#include "MxXmlLib.h"

#include <memory>
#include <string>
#include <vector>

namespace MxCompiler
{

namespace Dynamic
{
struct SetData;
}

// An object of a loaded class. Properties are numbered as in the model and
// also reached by name.
class CDynamicObject : public MxXmlLib::CXmlGeneratedClass, public MxXmlLib::CSchemaPrefixHolder
{
public:
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    using MxXmlLib::CXmlObjectBase::GetBase;

    ClassDef const &GetClass() const;
    // The cell of a property: a value, or an object (a child, a collection).
    // An unknown name raises CMxException "Unknown property [name] of class [identifier]".
    MxXmlLib::MxVariant Get(std::string const &property) const;
    void Set(std::string const &property, MxXmlLib::MxVariant const &value);
    // The child object or collection of a property, or null.
    MxXmlLib::CXmlObjectBase *GetObject(std::string const &property) const;

    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;
    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;
    MxXmlLibData::CElementInfo **GetClassElementInfo() override;
    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;
    // The empty state: values unset, collections empty, mandatory children
    // made (but not filled in themselves: their own read does that).
    void Init() override;
    std::string GetNamespace() const override;
    MxXmlLib::SchemaValuePrefixes const &GetValuePrefixes() const override { return m_prefixes; }

    CDynamicObject(std::shared_ptr<Dynamic::SetData const> set, int classIndex, char const *elementName,
                   std::string elementNamespace);

protected:
    ~CDynamicObject() override;
    // QName values keep their prefixes: reading notes what each stands for,
    // and writing declares them on this element.
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *element, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &context, bool optionalChoice) override;
    void AttributesToXml_Int(MxXmlLib::CXmlWriter *writer, MxXmlLib::CSerializationContext const &context) const override;
    std::string GetTargetNamespace() const override { return m_elementNamespace; }

private:
    void Reset(bool makeMandatoryChildren);
    int PropertyIndex(std::string const &name) const;

    std::shared_ptr<Dynamic::SetData const> m_set;
    int m_class;
    std::string m_elementNamespace;
    std::vector<MxXmlLib::MxVariant> m_cells;
    MxXmlLib::SchemaValuePrefixes m_prefixes;
};

// A loaded schema set. Copies share the set; the set goes when the last copy
// and the last object made from it go.
class CSchemaSet
{
public:
    // Loads the schema files and builds every class; `locations` maps schema
    // locations on the network to local copies. Raises CSchemaError.
    static CSchemaSet Load(std::vector<std::string> const &files, SchemaLocations const &locations = {});
    // Builds the classes of a model made elsewhere. Raises CSchemaError when
    // the process has no room left for its numbers.
    static CSchemaSet FromModel(Model model);

    Model const &GetModel() const;

    // An empty object for a global element. A mixed or anyType element gives
    // an untyped CElement. Raises CMxException "The element [{ns}name] is not
    // declared by the schema" for an element the set does not declare.
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateRoot(std::string const &name, std::string const &ns) const;
    // The object for the root element of a parsed document: its declaration,
    // and its xsi:type where it names a derivation.
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateFor(MxXmlLib::CXmlElement *root) const;
    // Reads a document (XML text or Fast Infoset, maybe compressed, or JSON)
    // into the object its root element declares.
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> Read(MxXmlLib::CBinaryData const &bytes,
                                                       MxXmlLib::CSerializationContext const &context) const;

private:
    explicit CSchemaSet(std::shared_ptr<Dynamic::SetData> data) : m_data(std::move(data)) {}
    std::shared_ptr<Dynamic::SetData> m_data;
};

// Reads any document into an untyped element tree.
MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> ReadUntyped(MxXmlLib::CBinaryData const &bytes,
                                                          MxXmlLib::CSerializationContext const &context);

// Whether bytes (after any compression) look like JSON rather than XML or
// Fast Infoset: the first byte that is not white space is '{'.
bool LooksLikeJson(MxXmlLib::CBinaryData const &bytes);

} // namespace MxCompiler
