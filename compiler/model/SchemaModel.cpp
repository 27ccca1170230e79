#include "model/SchemaModel.h"

#include <sstream>

namespace MxCompiler
{

namespace
{
char const *GroupWord(Group group)
{
    switch (group)
    {
    case Group::Sequence:
        return "Seq";
    case Group::Choice:
        return "Choice";
    case Group::All:
        return "All";
    }
    return "?";
}

char const *KindWord(RowKind kind)
{
    switch (kind)
    {
    case RowKind::Cls:
        return "Cls";
    case RowKind::AbsCls:
        return "AbsCls";
    case RowKind::Prim:
        return "Prim";
    case RowKind::Enum:
        return "Enum";
    case RowKind::Untpd:
        return "Untpd";
    }
    return "?";
}

char const *OccursWord(Occurs occurs)
{
    switch (occurs)
    {
    case Occurs::Mnd:
        return "Mnd";
    case Occurs::Opt:
        return "Opt";
    case Occurs::Col:
        return "Col";
    }
    return "?";
}

char const *RuleName(WhitespaceRule rule)
{
    switch (rule)
    {
    case WhitespaceRule::None:
        return "none";
    case WhitespaceRule::Preserve:
        return "preserve";
    case WhitespaceRule::Replace:
        return "replace";
    case WhitespaceRule::Collapse:
        return "collapse";
    }
    return "?";
}

char const *HoldsName(Property::Holds holds)
{
    switch (holds)
    {
    case Property::Holds::Value:
        return "value";
    case Property::Holds::Object:
        return "object";
    case Property::Holds::MandatoryObject:
        return "object, made by Init";
    case Property::Holds::ObjectCol:
        return "collection of objects";
    case Property::Holds::ValueCol:
        return "collection of values";
    case Property::Holds::EnumCol:
        return "collection of enumeration values";
    case Property::Holds::Element:
        return "untyped element";
    case Property::Holds::MandatoryElement:
        return "untyped element, made by Init";
    case Property::Holds::ElementCol:
        return "collection of untyped elements";
    case Property::Holds::AttributeCol:
        return "collection of attributes";
    }
    return "?";
}

std::string Qualified(std::string const &name, std::string const &ns)
{
    return ns.empty() ? name : "{" + ns + "}" + name;
}

void DescribeValue(std::ostream &out, Model const &model, ValueType const &value)
{
    if (value.enumeration >= 0)
        out << " enumeration " << model.enumerations[static_cast<std::size_t>(value.enumeration)].name;
    else
        out << " " << ItemTypeName(value.itemType) << " (" << value.name << ")";
    out << ", " << RuleName(value.whitespace);
    MxXmlLib::CPrimitiveRestrictions const &f = value.facets;
    if (!f.pattern.empty())
        out << ", pattern " << f.pattern;
    auto number = [&out](char const *name, int n) {
        if (n >= 0)
            out << ", " << name << " " << n;
    };
    auto text = [&out](char const *name, std::string const &t) {
        if (!t.empty())
            out << ", " << name << " " << t;
    };
    number("length", f.length);
    number("minLength", f.minLength);
    number("maxLength", f.maxLength);
    text("minInclusive", f.minInclusive);
    text("maxInclusive", f.maxInclusive);
    text("minExclusive", f.minExclusive);
    text("maxExclusive", f.maxExclusive);
    number("totalDigits", f.totalDigits);
    number("fractionDigits", f.fractionDigits);
    for (std::string const &note : value.notes)
        out << " [" << note << "]";
}
} // namespace

char const *ItemTypeName(ItemType type)
{
    static char const *const kNames[] = {
        "none",    "hexBinary", "base64Binary", "i1",   "i2",       "i4",   "i8",      "ui1",     "ui2",     "ui4",
        "ui8",     "r4",        "r8",           "duration", "yearMonth", "monthDay", "year", "month", "day",
        "date",    "datetime",  "time",         "char", "string",   "boolean", "decimal", "integer", "XmlObject",
        "XmlCollection"};
    int const index = static_cast<int>(type);
    return index >= 0 && index < static_cast<int>(sizeof kNames / sizeof *kNames) ? kNames[index] : "?";
}

std::string RowClassName(ElementRow const &row)
{
    std::string name = "CElementInfo";
    name += GroupWord(row.group);
    name += KindWord(row.kind);
    name += OccursWord(row.occurs);
    return name;
}

int Model::FindRoot(std::string const &name, std::string const &ns) const
{
    for (std::size_t i = 0; i < roots.size(); ++i)
        if (roots[i].name == name && roots[i].ns == ns)
            return static_cast<int>(i);
    return -1;
}

int Model::FindTypeClass(std::string const &name, std::string const &ns) const
{
    for (std::size_t i = 0; i < classes.size(); ++i)
    {
        ClassDef const &c = classes[i];
        if (StandsForType(c) && c.name == name && c.ns == ns)
            return static_cast<int>(i);
    }
    return -1;
}

std::vector<int> Model::Substitutes(int classIndex) const
{
    std::vector<int> result{classIndex};
    // Breadth first in model order: a derivation never precedes its base.
    for (std::size_t i = 0; i < result.size(); ++i)
        for (int d : classes[static_cast<std::size_t>(result[i])].derived)
            result.push_back(d);
    return result;
}

std::string Describe(Model const &model)
{
    std::ostringstream out;
    out << "schema set";
    for (std::string const &file : model.schemaFiles)
        out << " " << file;
    out << "\n";
    for (RootElement const &root : model.roots)
    {
        out << "root " << Qualified(root.name, root.ns) << ": ";
        if (root.untyped)
            out << "untyped element";
        else if (root.classIndex >= 0)
            out << "class " << model.classes[static_cast<std::size_t>(root.classIndex)].identifier;
        else
        {
            out << "value";
            DescribeValue(out, model, root.value);
        }
        if (root.nillable)
            out << ", nillable";
        if (root.abstract)
            out << ", abstract";
        out << "\n";
    }
    for (Enumeration const &e : model.enumerations)
    {
        out << "enumeration " << e.name << ":";
        for (std::size_t i = 0; i < e.values.size(); ++i)
            out << " " << i << "=\"" << e.values[i] << "\"";
        out << "\n";
    }
    for (ClassDef const &c : model.classes)
    {
        out << "class " << c.identifier << " " << Qualified(c.name, c.ns) << ": "
            << (c.shape == ClassShape::Element ? "element" : "inline group") << ", "
            << (c.group == Group::Sequence ? "sequence" : c.group == Group::Choice ? "choice" : "all");
        if (c.abstract)
            out << ", abstract";
        if (c.baseClass >= 0)
            out << ", derived from " << model.classes[static_cast<std::size_t>(c.baseClass)].identifier;
        out << "\n";
        for (std::size_t i = 0; i < c.properties.size(); ++i)
            out << "  property " << i << " " << c.properties[i].name << ": " << HoldsName(c.properties[i].holds)
                << "\n";
        if (c.simpleContentProperty >= 0)
        {
            out << "  text -> property " << c.simpleContentProperty << ":";
            DescribeValue(out, model, c.simpleContent);
            if (c.hasContentDefault)
                out << ", when empty \"" << c.contentDefault << "\"";
            out << "\n";
        }
        for (AttributeRow const &a : c.attributes)
        {
            out << "  attribute " << Qualified(a.name, a.ns) << " -> property " << a.property << ": ";
            if (a.kind == AttributeRow::Kind::Any)
                out << "CAttributeInfoAny " << a.namespaceRestriction;
            else
            {
                out << (a.kind == AttributeRow::Kind::Enum ? "CAttributeInfoEnum" : "CAttributeInfoPrimitive");
                DescribeValue(out, model, a.value);
                out << (a.optional ? ", optional" : ", required");
                if (a.hasDefault)
                    out << ", default \"" << a.defaultValue << "\"";
            }
            out << "\n";
        }
        for (ElementRow const &r : c.elements)
        {
            out << "  element " << Qualified(r.name, r.ns) << " -> property " << r.property << ": "
                << RowClassName(r);
            if (r.occurs == Occurs::Col)
                out << " [" << r.minOccurs << ".." << (r.maxOccurs < 0 ? std::string("*") : std::to_string(r.maxOccurs))
                    << "]";
            switch (r.kind)
            {
            case RowKind::Cls:
            case RowKind::AbsCls:
                out << " " << (r.kind == RowKind::AbsCls ? "substitutable " : "")
                    << model.classes[static_cast<std::size_t>(r.classIndex)].identifier
                    << (r.childShape == ClassShape::PseudoGroup ? " inline" : "");
                break;
            case RowKind::Prim:
            case RowKind::Enum:
                DescribeValue(out, model, r.value);
                break;
            case RowKind::Untpd:
                out << " " << r.namespaceRestriction;
                break;
            }
            if (r.nillable)
                out << ", nillable";
            if (r.hasDefault)
                out << ", default \"" << r.defaultValue << "\"";
            out << "\n";
        }
    }
    return out.str();
}

ValueType const *FacetedValue(ClassDef const &c, std::size_t index)
{
    Property const &p = c.properties[index];
    if (p.holds != Property::Holds::Value)
        return nullptr;
    if (p.row >= 0)
    {
        ElementRow const &row = c.elements[static_cast<std::size_t>(p.row)];
        return row.kind == RowKind::Enum ? nullptr : &row.value;
    }
    if (p.attribute >= 0)
    {
        AttributeRow const &a = c.attributes[static_cast<std::size_t>(p.attribute)];
        return a.kind == AttributeRow::Kind::Enum ? nullptr : &a.value;
    }
    return static_cast<int>(index) == c.simpleContentProperty ? &c.simpleContent : nullptr;
}

bool HoldsUntyped(Property const &p)
{
    return p.holds == Property::Holds::Element || p.holds == Property::Holds::MandatoryElement ||
           p.holds == Property::Holds::ElementCol;
}

bool StandsForType(ClassDef const &c)
{
    // The copies of a simple type's classes that carry an element's default
    // belong to that element.
    return !c.anonymous && !c.hasContentDefault;
}

bool HoldsQName(ValueType const &type)
{
    if (type.qname)
        return true;
    for (ValueType const &item : type.items)
        if (HoldsQName(item))
            return true;
    return false;
}

PrefixSource Model::PrefixSourceOf(std::size_t classIndex, std::size_t property) const
{
    ClassDef const &c = classes[classIndex];
    Property const &p = c.properties[property];
    if (ValueType const *v = FacetedValue(c, property))
        return HoldsQName(*v) ? PrefixSource::Value : PrefixSource::None;
    if (HoldsUntyped(p))
        return PrefixSource::Untyped;
    if (p.row < 0)
        return PrefixSource::None;
    ElementRow const &row = c.elements[static_cast<std::size_t>(p.row)];
    if (p.holds == Property::Holds::ValueCol)
        return HoldsQName(row.value) ? PrefixSource::Collection : PrefixSource::None;
    bool const objects = p.holds == Property::Holds::Object || p.holds == Property::Holds::MandatoryObject ||
                         p.holds == Property::Holds::ObjectCol;
    // An inline group never holds itself, so the question ends.
    if (objects && row.childShape == ClassShape::PseudoGroup && row.classIndex >= 0 &&
        NotesPrefixes(static_cast<std::size_t>(row.classIndex)))
        return PrefixSource::InlineGroup;
    return PrefixSource::None;
}

bool Model::NotesPrefixes(std::size_t classIndex) const
{
    for (std::size_t pi = 0; pi < classes[classIndex].properties.size(); ++pi)
        if (PrefixSourceOf(classIndex, pi) != PrefixSource::None)
            return true;
    return false;
}

} // namespace MxCompiler
