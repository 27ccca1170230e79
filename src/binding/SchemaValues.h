#pragma once

// What a class bound from a schema checks when a value is stored, shared by
// the classes that the schema compiler loads at run time and the classes it
// generates as C++, so that the two check alike and say the same.
//
// The rows convert the text of an atomic value; they do not know the simple
// types that are held as their text: lists (items counted and checked one
// by one), unions (the first member that takes the text wins), and numbers,
// dates and booleans with a pattern or an enumeration, whose lexical form
// matters. A CSchemaValueType describes such a type, and
// CheckStoredSchemaValue is what a property function calls before it stores
// a value of it.

#include "binding/SerializationContext.h"
#include "binding/XmlGeneratedClass.h"
#include "binding/XmlObjectBase.h"
#include "collections/Element.h"
#include "document/XmlWriter.h"
#include "metadata/ElementInfo.h"
#include "values/BinaryData.h"
#include "values/Decimal.h"
#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/WhitespaceUtils.h"
#include "values/XsdPattern.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace MxXmlLib
{

class CXmlElement;
class CXmlWriter;

struct CSchemaValueType
{
    enum class Variety
    {
        Atomic,
        List,  // `items` holds the item type; the list facets count items
        Union, // `items` holds the member types, tried in order
    };
    std::string name; // for messages: the schema's name of the type
    Variety variety = Variety::Atomic;
    ItemType itemType = ItemType_string;
    CWhitespaceUtils::WhitespaceRule whitespace = CWhitespaceUtils::WhitespaceRule::Preserve;
    CPrimitiveRestrictions facets{nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1};
    int enumeration = -1; // index into the set's enumerations
    bool qname = false;   // QName or NOTATION: a prefix in the text must be declared where it is written
    int listLength = -1, listMinLength = -1, listMaxLength = -1;
    std::vector<CSchemaValueType> items;

    CSchemaValueType() = default;
    CSchemaValueType(Variety variety, char const *name, ItemType itemType, CWhitespaceUtils::WhitespaceRule whitespace,
                     CPrimitiveRestrictions const &facets, int enumeration, bool qname, int listLength,
                     int listMinLength, int listMaxLength, std::vector<CSchemaValueType> items = {});

    // Works out once, for a type whose values are stored often, what
    // CheckStoredSchemaValue can settle without the general checks: the
    // pattern of an atomic string compiled (copies share it), the bounds of
    // an integer or decimal parsed. A value that those pass is stored at
    // once; any other takes the general checks, which say why it fails, so
    // that a prepared type refuses and reports exactly what another would.
    void PreparePattern();
    std::shared_ptr<CXsdPattern const> const &GetPreparedPattern() const { return m_pattern; }

    // Whether no value of the type can fail the checks of a store: an
    // atomic type without facets or an enumeration (char aside, which has
    // no facet check and refuses every value).
    bool AcceptsEveryValue() const;

    // Whether the type or one of its items or members is a QName.
    bool HoldsQName() const;

    // Whether what PreparePattern worked out shows a value (set, not nil) to
    // pass every check; false leaves the answer to the general checks.
    bool PassesPrepared(MxVariant const &value) const;

private:
    enum class Prepared : unsigned char
    {
        None,     // the general checks
        Nothing,  // AcceptsEveryValue
        Pattern,  // a string: the compiled pattern, lengths as they stand
        Integer,  // i1 to i8 and ui1 to ui4 without totalDigits: m_bounds
        Decimal,  // without totalDigits: m_decimalBounds, fractionDigits as it stands
    };
    // The four bounds in the order the facet check takes them: minInclusive,
    // maxInclusive, minExclusive, maxExclusive; absent ones are not tested.
    template <typename T> struct Bounds
    {
        bool present[4] = {false, false, false, false};
        T value[4] = {};
    };
    Prepared m_prepared = Prepared::None;
    std::shared_ptr<CXsdPattern const> m_pattern;
    Bounds<long long> m_bounds;
    std::shared_ptr<Bounds<CDecimal> const> m_decimalBounds;
};

struct CSchemaEnumeration
{
    std::string name;                // for messages
    std::vector<std::string> values; // index = the enumeration's number
    // The type whose values these are: text matches a value when both have
    // the same canonical form in it (" 1.0 " is the decimal 1).
    CSchemaValueType type;
};

using CSchemaEnumerations = std::vector<CSchemaEnumeration>;

// The canonical text of `text` as a value of `type`, after every facet check
// but the enumeration of `type` itself; raises the facet's message when the
// text is no such value. `all` gives the enumerations that list items and
// union members are checked against; null checks none of them.
std::string CanonicalSchemaValue(CSchemaEnumerations const *all, CSchemaValueType const &type,
                                 std::string const &text, char const *name);

// Raises CMxInvalidValueException "Invalid value [text] for the enumeration
// name" when `type` has an enumeration (of `all`) that `text` matches none of.
void CheckSchemaEnumeration(CSchemaEnumerations const *all, CSchemaValueType const &type, std::string const &text);

// The index of the value of `e` that `text` stands for, or -1: the same
// text, else the same canonical value.
int MatchSchemaEnumeration(CSchemaEnumerations const *all, CSchemaEnumeration const &e, std::string const &text);

// The enumeration function pair of the rows: the text of a number ("" when
// out of range), and the number of a text, raising CMxInvalidValueException
// "Invalid value [text] for the enumeration name" when it matches none.
char const *SchemaEnumerationToString(CSchemaEnumeration const &e, int value);
int SchemaEnumerationFromString(CSchemaEnumeration const &e, char const *text);

// The checks of a value about to be stored in the property `name` whose
// type is `type`: nothing for an unset or nil value; the prepared pattern
// and the other facets of an atomic string; the facets of another atomic
// type; and for a value held as its text, its canonical form in `type` and
// the enumeration. Raises the message of the first check that fails.
void CheckStoredSchemaValue(CSchemaEnumerations const *all, CSchemaValueType const &type, char const *name,
                            MxVariant const &value);

// A class with simple content of another type than string reads its text
// as a string, since the driver would convert it without the type's white
// space rule (a number on a line of its own would fail); this converts
// such a string with the type's rule before it is stored. Text that stays
// text (strings, lists, unions, values kept for a pattern) gets the rule
// alone.
void ConvertSchemaText(CSchemaValueType const &type, MxVariant &value);
// An element with a default or fixed value whose content is empty has that
// value: the default's text takes the empty text's place before the store
// converts and checks it.
void ApplyContentDefault(char const *defaultText, MxVariant &value);
// Whether a class whose simple content has this type reads it as text.
bool ReadsSchemaText(ItemType itemType);

// The prefixes used in QName values: reading notes the namespace each stands
// for in the element that held it, and writing declares them on the element
// that holds the value again, so that the value keeps its meaning.
using SchemaValuePrefixes = std::vector<std::pair<std::string, std::string>>; // prefix, namespace URI
void CollectSchemaValuePrefixes(CXmlElement const *element, CSchemaValueType const &type, MxVariant const &cell,
                                SchemaValuePrefixes &prefixes);
// The same for a cell that holds a collection of QName values.
void CollectQNameCollectionPrefixes(CXmlElement const *element, MxVariant const &cell, SchemaValuePrefixes &prefixes);
void DeclareSchemaValuePrefixes(CXmlWriter *writer, SchemaValuePrefixes const &prefixes);
// The same for the xsi:type attributes in untyped content (a cell holding a
// CElement or a CElementCol): such an element keeps the attribute's text,
// not the mapping of the prefix in it.
void CollectUntypedTypePrefixes(CXmlElement const *element, MxVariant const &cell, SchemaValuePrefixes &prefixes);

// The local name and namespace URI of the type an element's xsi:type names,
// read as XSD reads a QName (CClassfactoryBase's GetElementType and
// GetElementTypeNamespaceUri take the text as it stands and an unprefixed
// name as one in the element's own namespace): white space collapsed, an
// unprefixed name in the default namespace. An undeclared prefix gives a
// string that is no namespace URI, so that no type matches. Schema
// factories compare these with the names of their types.
std::string SchemaElementType(CXmlElement *element);
std::string SchemaElementTypeNamespaceUri(CXmlElement *element);

// An object made for a document element that no global element declares,
// from the type its xsi:type names (as XSD allows): written, it names that
// type again, since no declaration would give the element a type.
template <typename Base> class CSchemaTypeRoot : public Base
{
public:
    using Base::Base;

protected:
    void AttributesToXml_Int(CXmlWriter *writer, CSerializationContext const &context) const override
    {
        auto *self = const_cast<CSchemaTypeRoot *>(this);
        MxXmlLibData::CParentElementInfo const *info = self->GetParentElementInfo();
        // The driver writes it itself for a class with bases, under another name.
        bool const driverWrites = info->GetHasBaseClasses() && this->GetElementName() != info->GetElementName();
        if (context.GetWriteTypeAttribute() && !driverWrites)
            writer->WriteTypeAttribute(info->GetElementNamespace(), info->GetElementName(), ItemType_string);
        Base::AttributesToXml_Int(writer, context);
    }
};

// A class of a schema set that notes the prefixes of its values. An inline
// group has no element of its own to declare them on: the class that holds
// it takes them over (CollectInlinePrefixes) and declares them on its own.
class CSchemaPrefixHolder
{
public:
    virtual SchemaValuePrefixes const &GetValuePrefixes() const = 0;

protected:
    ~CSchemaPrefixHolder() = default;
};
// Adds the prefixes of the object, or of each object of the collection,
// that `cell` holds.
void CollectInlinePrefixes(MxVariant const &cell, SchemaValuePrefixes &prefixes);

// The document element of a global element of xs:anyType: untyped, and
// the one place where the prefixes of the xsi:type values in it (its own
// and its descendants') can be declared again when it is written, since no
// class holds it.
class CSchemaUntypedRoot : public CElement
{
public:
    CSchemaUntypedRoot(char const *name, char const *namespaceUri);

protected:
    ~CSchemaUntypedRoot() override;
    CXmlElement *FromXml_Int(CXmlElement *parent, CXmlElement *current, CSerializationContext const &context,
                             bool optionalChoice) override;
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;

private:
    SchemaValuePrefixes m_prefixes;
};

// Init, and the same for every child object that Init made, down to where a
// class would contain itself: an object of a global element that a program
// can fill and write. A child whose class is already on the way down gets
// Init alone, since no document could fill more.
void InitSchemaTree(CXmlGeneratedClass &object);

// Whether bytes (after any compression) look like JSON rather than XML or
// Fast Infoset: the first byte that is not white space is '{'.
bool LooksLikeJsonDocument(CBinaryData const &bytes);

// Reads a document (XML text or Fast Infoset, maybe compressed, or JSON) into
// the object that `createFor` makes for its root element. JSON that is not a
// full round trip keeps no namespaces, so its elements match by local name.
// Raises CMxException "The document has no root element" for an empty one.
using SchemaRootFactory = std::function<CSmartPtr<CXmlObjectBase>(CXmlElement *root)>;
CSmartPtr<CXmlObjectBase> ReadSchemaDocument(CBinaryData const &bytes, CSerializationContext const &context,
                                             SchemaRootFactory const &createFor);

} // namespace MxXmlLib
