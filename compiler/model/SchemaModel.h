#pragma once

// The schema compiler's one model: what the front end decided about a schema
// set, and all that a back end needs to make classes and rows from it. Every
// choice that the run-time could observe (row family, ItemType, facets,
// class number, property number, names) is made here, once, so that the
// run-time back end and the C++ back end cannot disagree. Back ends only
// walk it; they never look at the schema again.
//
// Indexes: classes, enumerations and properties are numbered by their place
// in the vectors below, which is schema order, never hash order.

#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/WhitespaceUtils.h"

#include <string>
#include <vector>

namespace MxCompiler
{

using MxXmlLib::ItemType;
using WhitespaceRule = MxXmlLib::CWhitespaceUtils::WhitespaceRule;

// The three words of an element row's class name.
enum class Group
{
    Sequence,
    Choice,
    All,
};
enum class RowKind
{
    Cls,    // a concrete class, made by number
    AbsCls, // a class picked by the element's xsi:type, made by a factory
    Prim,   // a value of one of the primitives
    Enum,   // an enumeration, kept as its index
    Untpd,  // xs:any, or content kept untyped (mixed or anyType)
};
enum class Occurs
{
    Mnd,
    Opt,
    Col,
};

// How a class stands in the document: an element of its own, or inline
// content of its parent (a nested group, or the alternatives of a
// substitution group).
enum class ClassShape
{
    Element,
    PseudoGroup,
};

// The value of a simple type as the run-time holds it.
struct ValueType
{
    std::string name;    // the schema's name, or a description of an anonymous type
    ItemType itemType = MxXmlLib::ItemType_string;
    WhitespaceRule whitespace = WhitespaceRule::Preserve;
    MxXmlLib::CPrimitiveRestrictions facets{nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1};
    int enumeration = -1; // index into Model::enumerations
    // Lists and unions are held as their text; these say what the text must
    // be. A list has one entry in `items`, its item type, and counts items
    // for its length facets; a union has its member types, tried in order.
    enum class Variety
    {
        Atomic,
        List,
        Union,
    };
    Variety variety = Variety::Atomic;
    bool qname = false; // QName or NOTATION: the prefix in the text must be declared where it is written
    std::vector<ValueType> items;
    int listLength = -1, listMinLength = -1, listMaxLength = -1;
    // What the front end could not hand to the run-time (a second pattern
    // of a derivation chain, list item facets): shown by describe.
    std::vector<std::string> notes;
};

struct Enumeration
{
    std::string name;                // unique in the model
    std::vector<std::string> values; // index = the enumeration's number
    // The type whose values these are: text matches a value when both have
    // the same canonical form in it (" 1.0 " is the decimal 1).
    ValueType type;
};

// One numbered case of a class's property function.
struct Property
{
    enum class Holds
    {
        Value,          // a cell: primitive or enumeration index; unset is type 0
        Object,         // a child object, made on demand
        MandatoryObject, // a child object that Init makes (the row reads into it)
        ObjectCol,      // a collection of child objects
        ValueCol,       // a collection of primitives
        EnumCol,        // a collection of enumeration values
        Element,        // one untyped element (made on demand unless mandatory)
        MandatoryElement,
        ElementCol,     // untyped elements
        AttributeCol,   // the attributes of an xs:anyAttribute
    };
    std::string name; // unique in its class
    Holds holds = Holds::Value;
    int row = -1;        // the element row it serves, or -1
    int attribute = -1;  // the attribute row it serves, or -1
};

struct ElementRow
{
    std::string name;      // local name; "AnyElement" for a wildcard
    std::string ns;        // namespace URI
    Group group = Group::Sequence;
    RowKind kind = RowKind::Prim;
    Occurs occurs = Occurs::Mnd;
    int property = -1;
    // Cls and AbsCls: the class made, or for AbsCls the declared type whose
    // derivations the factory may pick; and whether that child is inline.
    int classIndex = -1;
    ClassShape childShape = ClassShape::Element;
    bool contentRequired = false;
    bool nillable = false;
    ValueType value; // Prim and Enum
    std::string defaultValue;
    bool hasDefault = false;
    // Col: the bounds of the collection; -1 is unbounded.
    int minOccurs = 1;
    int maxOccurs = 1;
    // Untpd: the wildcard, one token, and the schema's target namespace.
    std::string namespaceRestriction;
    std::string targetNamespace;
    std::string origin; // where it came from, for messages and describe
};

struct AttributeRow
{
    enum class Kind
    {
        Prim,
        Enum,
        Any,
    };
    std::string name;
    std::string ns;
    Kind kind = Kind::Prim;
    int property = -1;
    bool optional = true;
    ValueType value;
    std::string defaultValue;
    bool hasDefault = false;
    bool fixed = false; // the default is fixed: new objects start with it
    std::string namespaceRestriction; // Any
    std::string targetNamespace;      // Any
};

struct ClassDef
{
    std::string name;      // the schema type's name; an anonymous type's element name
    std::string ns;        // its namespace
    std::string identifier; // unique in the model, a valid identifier
    ClassShape shape = ClassShape::Element;
    Group group = Group::Sequence;
    bool abstract = false;
    bool anonymous = false;   // xsi:type can never name it
    bool hasBaseClasses = false; // derived from a named complex type: may need xsi:type
    bool failIfAttributeUnknown = true;
    int baseClass = -1;
    std::vector<int> derived;  // direct derivations in the set
    std::string defaultElementName;
    // Simple content: the property that holds the text, and its type.
    int simpleContentProperty = -1;
    ValueType simpleContent;
    // The default or fixed value of the element the class was made for: the
    // value of its empty content.
    bool hasContentDefault = false;
    std::string contentDefault;
    std::vector<ElementRow> elements;
    std::vector<AttributeRow> attributes;
    std::vector<Property> properties;
    std::string origin;
};

// The simple type whose facets a value stored in property `index` must
// meet, or null: enumeration rows store the number of a value their
// functions found. Both back ends ask it of the same model.
ValueType const *FacetedValue(ClassDef const &c, std::size_t index);

// Whether property `p` holds untyped elements (xs:any, anyType content).
bool HoldsUntyped(Property const &p);
// Whether the class is the one of a named type (not an anonymous type's, nor
// a copy of a simple type's classes that carries an element's default).
bool StandsForType(ClassDef const &c);
// Whether the type, or an item or member of it, is a QName or NOTATION.
bool HoldsQName(ValueType const &type);

// A global element declaration: what a document may start with.
struct RootElement
{
    std::string name;
    std::string ns;
    int classIndex = -1;   // complex content, or -1
    bool nillable = false;
    bool untyped = false;  // mixed or anyType: read as an untyped element
    ValueType value;       // simple content when classIndex is -1 and not untyped
    bool abstract = false;
};

// What a property holds whose prefixes the class notes when it reads and
// declares when it is written: QName values, one (`Value`) or a collection;
// untyped content, whose xsi:type values keep their prefixes; an inline
// group that notes prefixes itself, having no element to declare them on.
enum class PrefixSource
{
    None,
    Value,
    Collection,
    Untyped,
    InlineGroup,
};

struct Model
{
    std::vector<ClassDef> classes;
    std::vector<Enumeration> enumerations;
    std::vector<RootElement> roots;
    std::vector<std::string> schemaFiles;

    int FindRoot(std::string const &name, std::string const &ns) const;
    PrefixSource PrefixSourceOf(std::size_t classIndex, std::size_t property) const;
    // Whether any property of the class is a PrefixSource.
    bool NotesPrefixes(std::size_t classIndex) const;
    // The class of the named type, complex or simple, that an xsi:type on an
    // undeclared document element names, or -1: the first class that
    // StandsForType and has that name.
    int FindTypeClass(std::string const &name, std::string const &ns) const;
    // The class and all its derivations in the set, the class first.
    std::vector<int> Substitutes(int classIndex) const;
};

// The model as a listing a person can read: classes, properties, rows
// (family and type) and facets, in model order.
std::string Describe(Model const &model);

// The row class name the run-time has for a row: CElementInfoSeqPrimMnd, ...
std::string RowClassName(ElementRow const &row);
char const *ItemTypeName(ItemType type);

} // namespace MxCompiler
