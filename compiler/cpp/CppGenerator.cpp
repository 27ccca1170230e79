#include "cpp/CppGenerator.h"

#include "binding/SchemaValues.h"
#include "frontend/XsdFrontend.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <sstream>

namespace MxCompiler
{

namespace
{

// ---------------------------------------------------------------------------
// Text

// Fills $name$ holes from the table; "$$" is a dollar sign.
std::string Fill(std::string const &templ, std::map<std::string, std::string> const &vars)
{
    std::string out;
    for (std::size_t i = 0; i < templ.size(); ++i)
    {
        if (templ[i] != '$')
        {
            out += templ[i];
            continue;
        }
        std::size_t const end = templ.find('$', i + 1);
        std::string const key = templ.substr(i + 1, end - i - 1);
        if (key.empty())
            out += '$';
        else
        {
            auto const found = vars.find(key);
            if (found == vars.end())
                throw CSchemaError("generator template has no value for $" + key + "$");
            out += found->second;
        }
        i = end;
    }
    return out;
}

// A C++ string literal; bytes outside printable ASCII as octal escapes, so
// that no escape can run into the next character.
std::string Literal(std::string const &text)
{
    std::string out = "\"";
    for (unsigned char c : text)
    {
        if (c == '"' || c == '\\')
            out += std::string("\\") + static_cast<char>(c);
        else if (c >= 0x20 && c < 0x7F && c != '?')
            out += static_cast<char>(c);
        else
        {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\%03o", c);
            out += buffer;
        }
    }
    return out + "\"";
}

std::string LiteralOrNull(bool has, std::string const &text)
{
    return has ? Literal(text) : "nullptr";
}

std::string FacetText(std::string const &text)
{
    return text.empty() ? "nullptr" : Literal(text);
}

std::string Restrictions(MxXmlLib::CPrimitiveRestrictions const &f)
{
    if (f.pattern.empty() && f.minLength < 0 && f.maxLength < 0 && f.minInclusive.empty() && f.maxInclusive.empty() &&
        f.minExclusive.empty() && f.maxExclusive.empty() && f.length < 0 && f.totalDigits < 0 && f.fractionDigits < 0)
        return "NoFacets()";
    std::ostringstream out;
    out << "MxXmlLib::CPrimitiveRestrictions(" << FacetText(f.pattern) << ", " << f.minLength << ", " << f.maxLength
        << ", " << FacetText(f.minInclusive) << ", " << FacetText(f.maxInclusive) << ", " << FacetText(f.minExclusive)
        << ", " << FacetText(f.maxExclusive) << ", " << f.length << ", " << f.totalDigits << ", " << f.fractionDigits
        << ")";
    return out.str();
}

// The facets that a row checks on writing, less an inclusive bound at the end
// of an integer type's own range (xs:int's maxInclusive 2147483647 on a
// restriction of it): no value of the type can fail it, and the row would
// parse it for every value written.
MxXmlLib::CPrimitiveRestrictions RowFacets(ValueType const &v)
{
    struct Range
    {
        MxXmlLib::ItemType type;
        char const *min;
        char const *max;
    };
    static Range const ranges[] = {
        {MxXmlLib::ItemType_i1, "-128", "127"},
        {MxXmlLib::ItemType_i2, "-32768", "32767"},
        {MxXmlLib::ItemType_i4, "-2147483648", "2147483647"},
        {MxXmlLib::ItemType_i8, "-9223372036854775808", "9223372036854775807"},
        {MxXmlLib::ItemType_ui1, "0", "255"},
        {MxXmlLib::ItemType_ui2, "0", "65535"},
        {MxXmlLib::ItemType_ui4, "0", "4294967295"},
        {MxXmlLib::ItemType_ui8, "0", "18446744073709551615"},
    };
    MxXmlLib::CPrimitiveRestrictions f = v.facets;
    for (Range const &r : ranges)
        if (r.type == v.itemType)
        {
            if (f.minInclusive == r.min)
                f.minInclusive.clear();
            if (f.maxInclusive == r.max)
                f.maxInclusive.clear();
        }
    return f;
}

std::string FacetArguments(MxXmlLib::CPrimitiveRestrictions const &f)
{
    std::ostringstream out;
    out << FacetText(f.pattern) << ", " << f.minLength << ", " << f.maxLength << ", " << FacetText(f.minInclusive)
        << ", " << FacetText(f.maxInclusive) << ", " << FacetText(f.minExclusive) << ", " << FacetText(f.maxExclusive)
        << ", " << f.length << ", " << f.totalDigits << ", " << f.fractionDigits;
    return out.str();
}

char const *RuleName(WhitespaceRule rule)
{
    switch (rule)
    {
    case WhitespaceRule::None:
        return "Rule::None";
    case WhitespaceRule::Preserve:
        return "Rule::Preserve";
    case WhitespaceRule::Replace:
        return "Rule::Replace";
    case WhitespaceRule::Collapse:
        return "Rule::Collapse";
    }
    return "Rule::None";
}

// The C++ face of each primitive: value type, cell getter and setter, and
// the run-time's collection class.
struct PrimitiveFace
{
    char const *type;
    char const *get;
    char const *set;
    char const *collection;
};

PrimitiveFace Face(ItemType t)
{
    switch (t)
    {
    case MxXmlLib::ItemType_hexBinary:
        return {"MxXmlLib::CBinaryData", "GetHexBinary", "SetHexBinary", "ChexBinaryCol"};
    case MxXmlLib::ItemType_base64Binary:
        return {"MxXmlLib::CBinaryData", "GetBase64Binary", "SetBase64Binary", "Cbase64BinaryCol"};
    case MxXmlLib::ItemType_i1:
        return {"std::int8_t", "GetI1", "SetI1", "Ci1Col"};
    case MxXmlLib::ItemType_i2:
        return {"std::int16_t", "GetI2", "SetI2", "Ci2Col"};
    case MxXmlLib::ItemType_i4:
        return {"std::int32_t", "GetI4", "SetI4", "Ci4Col"};
    case MxXmlLib::ItemType_i8:
        return {"std::int64_t", "GetI8", "SetI8", "Ci8Col"};
    case MxXmlLib::ItemType_ui1:
        return {"std::uint8_t", "GetUI1", "SetUI1", "Cui1Col"};
    case MxXmlLib::ItemType_ui2:
        return {"std::uint16_t", "GetUI2", "SetUI2", "Cui2Col"};
    case MxXmlLib::ItemType_ui4:
        return {"std::uint32_t", "GetUI4", "SetUI4", "Cui4Col"};
    case MxXmlLib::ItemType_ui8:
        return {"std::uint64_t", "GetUI8", "SetUI8", "Cui8Col"};
    case MxXmlLib::ItemType_r4:
        return {"float", "GetR4", "SetR4", "Cr4Col"};
    case MxXmlLib::ItemType_r8:
        return {"double", "GetR8", "SetR8", "Cr8Col"};
    case MxXmlLib::ItemType_duration:
        return {"MxXmlLib::CDateTimeSpan", "GetDuration", "SetDuration", "CdurationCol"};
    case MxXmlLib::ItemType_yearMonth:
        return {"MxXmlLib::CDateTime", "GetYearMonth", "SetYearMonth", "CyearMonthCol"};
    case MxXmlLib::ItemType_monthDay:
        return {"MxXmlLib::CDateTime", "GetMonthDay", "SetMonthDay", "CmonthDayCol"};
    case MxXmlLib::ItemType_year:
        return {"std::uint16_t", "GetYear", "SetYear", "CyearCol"};
    case MxXmlLib::ItemType_month:
        return {"std::uint8_t", "GetMonth", "SetMonth", "CmonthCol"};
    case MxXmlLib::ItemType_day:
        return {"std::uint8_t", "GetDay", "SetDay", "CdayCol"};
    case MxXmlLib::ItemType_date:
        return {"MxXmlLib::CDateTime", "GetDate", "SetDate", "CdateCol"};
    case MxXmlLib::ItemType_datetime:
        return {"MxXmlLib::CDateTime", "GetDateTime", "SetDateTime", "CdatetimeCol"};
    case MxXmlLib::ItemType_time:
        return {"MxXmlLib::CDateTime", "GetTime", "SetTime", "CtimeCol"};
    case MxXmlLib::ItemType_boolean:
        return {"bool", "GetBoolean", "SetBoolean", "CbooleanCol"};
    case MxXmlLib::ItemType_decimal:
        return {"MxXmlLib::CDecimal", "GetDecimal", "SetDecimal", "CdecimalCol"};
    case MxXmlLib::ItemType_integer:
        return {"MxXmlLib::CBigInteger", "GetInteger", "SetInteger", "CintegerCol"};
    default:
        return {"std::string", "GetString", "SetString", "CstringCol"};
    }
}

bool PassByReference(char const *type)
{
    return std::string(type).find("::C") != std::string::npos || std::string(type) == "std::string";
}

// ---------------------------------------------------------------------------
// Names: every C++ name is settled here, before anything is printed.

std::set<std::string> const kKeywords = {
    "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break", "case", "catch",
    "char", "char16_t", "char32_t", "class", "compl", "const", "constexpr", "const_cast", "continue", "decltype",
    "default", "delete", "do", "double", "dynamic_cast", "else", "enum", "explicit", "export", "extern", "false",
    "float", "for", "friend", "goto", "if", "inline", "int", "long", "mutable", "namespace", "new", "noexcept",
    "not", "not_eq", "nullptr", "operator", "or", "or_eq", "private", "protected", "public", "register",
    "reinterpret_cast", "return", "short", "signed", "sizeof", "static", "static_assert", "static_cast", "struct",
    "switch", "template", "this", "thread_local", "throw", "true", "try", "typedef", "typeid", "typename", "union",
    "unsigned", "using", "virtual", "void", "volatile", "wchar_t", "while", "NULL", "EOF", "assert", "errno"};

// Methods of the bases that an accessor must not hide.
std::set<std::string> const kReserved = {"GetBase",     "GetNamespace",   "GetElementName", "SetElementName",
                                         "GetTargetNamespace", "Init",     "ToXml",          "FromXml",
                                         "AccessProperty", "CleanMetaData", "IsNil",         "SetNil",
                                         "GetParentElementInfo", "GetClassElementInfo", "GetClassAttributeInfo",
                                         "AddRef",      "Release",        "GetCount",       "Clear"};

std::string Identifier(std::string const &text)
{
    std::string id;
    for (char c : text)
    {
        bool const ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        id += ok ? c : '_';
    }
    if (id.empty() || (id[0] >= '0' && id[0] <= '9'))
        id.insert(0, "_");
    // Names with a double underscore or an underscore and a capital are the implementation's.
    while (id.size() > 1 && id[0] == '_' && (id[1] == '_' || (id[1] >= 'A' && id[1] <= 'Z')))
        id.insert(0, "V");
    if (kKeywords.count(id))
        id += '_';
    return id;
}

std::string Pascal(std::string const &name)
{
    std::string id = Identifier(name);
    if (id[0] >= 'a' && id[0] <= 'z')
        id[0] = static_cast<char>(id[0] - 'a' + 'A');
    else if (id[0] == '_')
        id.insert(0, "V");
    return id;
}

std::string Unique(std::string const &wanted, std::set<std::string> &taken)
{
    std::string candidate = wanted;
    for (int n = 2; !taken.insert(candidate).second; ++n)
        candidate = wanted + "_" + std::to_string(n);
    return candidate;
}

// A C++ namespace from its spelling: each part between "::" an identifier.
std::string NamespaceIdentifier(std::string const &ns)
{
    std::string qualified;
    for (std::size_t from = 0;;)
    {
        std::size_t const at = ns.find("::", from);
        qualified += Identifier(ns.substr(from, at == std::string::npos ? std::string::npos : at - from));
        if (at == std::string::npos)
            break;
        qualified += "::";
        from = at + 2;
    }
    return qualified;
}

struct Names
{
    std::string cppNamespace;               // the set's: enumerations, class numbers, factories
    std::vector<std::string> classes;       // C<identifier>
    std::vector<std::string> classNamespaces; // the C++ namespace of each class
    std::vector<bool> nillable;             // a nillable variant is made
    std::vector<std::string> enums;
    std::vector<std::vector<std::string>> enumerators;
    std::vector<std::vector<std::string>> accessors; // per class, per property: the part after Get/Set
    std::vector<std::pair<int, bool>> substitutionFactories; // (base class, nillable)
};

Names Decide(Model const &model, CppOptions const &options)
{
    Names names;
    std::string ns = options.cppNamespace;
    if (ns.empty() && !model.roots.empty())
    {
        auto const mapped = options.namespaces.find(model.roots.front().ns);
        if (mapped != options.namespaces.end())
            ns = mapped->second;
    }
    if (ns.empty())
        ns = options.baseName;
    names.cppNamespace = NamespaceIdentifier(ns);

    std::set<std::string> types = {"ClassId",  "CFactory",     "Rule",      "NoFacets", "CreateByClassId",
                                   "CreateRoot", "CreateFor",  "Read",      "CleanAllMetaData",
                                   "CSchemaValueTables", "SchemaValues", "Variety", "CheckValue", "ObjectIn", "Unset"};
    for (ClassDef const &c : model.classes)
    {
        names.classes.push_back(Unique("C" + Identifier(c.identifier), types));
        auto const mapped = options.namespaces.find(c.ns);
        names.classNamespaces.push_back(mapped == options.namespaces.end() ? names.cppNamespace
                                                                           : NamespaceIdentifier(mapped->second));
    }
    for (Enumeration const &e : model.enumerations)
    {
        names.enums.push_back(Unique(Pascal(e.name), types));
        std::set<std::string> taken;
        std::vector<std::string> values;
        for (std::string const &v : e.values)
            values.push_back(Unique(Identifier(v.empty() ? "Empty" : v), taken));
        names.enumerators.push_back(values);
    }
    names.nillable.assign(model.classes.size(), false);
    auto markNillable = [&](int cls, bool substitutable) {
        std::vector<int> const all = substitutable ? model.Substitutes(cls) : std::vector<int>{cls};
        for (int i : all)
            names.nillable[static_cast<std::size_t>(i)] = true;
    };
    auto addFactory = [&](int cls, bool nillable) {
        std::pair<int, bool> const key{cls, nillable};
        for (auto const &f : names.substitutionFactories)
            if (f == key)
                return;
        names.substitutionFactories.push_back(key);
    };
    for (ClassDef const &c : model.classes)
        for (ElementRow const &r : c.elements)
        {
            if (r.nillable && (r.kind == RowKind::Cls || r.kind == RowKind::AbsCls))
                markNillable(r.classIndex, r.kind == RowKind::AbsCls);
            if (r.kind == RowKind::AbsCls)
                addFactory(r.classIndex, r.nillable);
        }
    for (RootElement const &r : model.roots)
    {
        if (r.nillable && r.classIndex >= 0)
            markNillable(r.classIndex, true);
        // A root's xsi:type may name a derivation.
        if (r.classIndex >= 0 && !r.untyped)
            addFactory(r.classIndex, r.nillable);
    }
    for (ClassDef const &c : model.classes)
    {
        std::set<std::string> taken;
        std::vector<std::string> accessors;
        for (Property const &p : c.properties)
        {
            std::string a = Pascal(p.name);
            for (char const *prefix : {"Get", "Set", "Has", "Clear"})
                if (kReserved.count(prefix + a))
                    a += "_";
            accessors.push_back(Unique(a, taken));
        }
        names.accessors.push_back(accessors);
    }
    return names;
}

// ---------------------------------------------------------------------------
// Printing

class Generator
{
public:
    Generator(Model const &model, CppOptions const &options) : m(model), o(options), n(Decide(model, options))
    {
        // The value types that stored values are checked against, one entry
        // per distinct type, in model order.
        std::map<std::string, int> seen;
        for (ClassDef const &c : m.classes)
        {
            std::vector<int> types;
            for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
            {
                ValueType const *v = FacetedValue(c, pi);
                if (v == nullptr)
                {
                    types.push_back(-1);
                    continue;
                }
                std::string const expr = ValueExpression(*v, "        ");
                auto const found = seen.emplace(expr, static_cast<int>(m_valueTypes.size()));
                if (found.second)
                {
                    m_valueTypes.push_back(expr);
                    m_uncheckedTypes.push_back(AcceptsEveryValue(*v));
                }
                types.push_back(found.first->second);
            }
            m_propertyTypes.push_back(types);
        }
    }

    std::vector<GeneratedFile> Run()
    {
        if (!o.filePerType)
            return {{o.baseName + ".h", Header()}, {o.baseName + ".cpp", Source()}};
        std::vector<GeneratedFile> files;
        std::string header = CommonHeader() + "\n";
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
            header += "#include \"" + n.classes[ci] + ".h\"\n";
        files.push_back({o.baseName + ".h", header});
        files.push_back({o.baseName + ".cpp", Banner() + "#include \"" + o.baseName + ".h\"\n\n" + Prelude(true, false) +
                                                  CommonSource()});
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
        {
            std::string const &c = n.classes[ci];
            files.push_back({c + ".h", Banner() + "#pragma once\n\n#include \"" + o.baseName + ".h\"\n\n" +
                                           Open(n.classNamespaces[ci]) + ClassHeader(ci) +
                                           Close(n.classNamespaces[ci])});
            files.push_back({c + ".cpp", Banner() + "#include \"" + c + ".h\"\n\n" + Prelude(false, true) +
                                             ClassSourceIn(ci) + "\n"});
        }
        return files;
    }

private:
    std::string Banner() const
    {
        std::string schemas;
        for (std::string const &s : o.schemaNames)
            schemas += (schemas.empty() ? "" : ", ") + s;
        return "// Generated by mx generate from " + schemas + ".\n// Do not edit: generate again from the schema.\n\n";
    }

    static std::string Open(std::string const &ns) { return "namespace " + ns + "\n{\n\n"; }
    static std::string Close(std::string const &ns) { return "} // namespace " + ns + "\n"; }

    std::string const &ClassName(int index) const { return n.classes[static_cast<std::size_t>(index)]; }
    // The name of a class as code in the namespace `from` writes it.
    std::string ClassRef(int index, std::string const &from) const
    {
        std::string const &ns = n.classNamespaces[static_cast<std::size_t>(index)];
        return ns == from ? ClassName(index) : "::" + ns + "::" + ClassName(index);
    }
    std::string ClassId(int index, bool nillable) const
    {
        return "ClassId_" + ClassName(index).substr(1) + (nillable ? "_Nillable" : "");
    }
    std::string ConcreteName(int index, bool nillable, std::string const &from) const
    {
        return ClassRef(index, from) + (nillable ? "_Nillable" : "");
    }
    std::string SubstitutionFactory(int base, bool nillable) const
    {
        return "CFactory::MakeSubstituteOf" + ClassName(base).substr(1) + (nillable ? "_Nillable" : "");
    }
    std::string EnumName(int e) const { return n.enums[static_cast<std::size_t>(e)]; }

    static char const *VarietyName(ValueType::Variety v)
    {
        switch (v)
        {
        case ValueType::Variety::List:
            return "Variety::List";
        case ValueType::Variety::Union:
            return "Variety::Union";
        case ValueType::Variety::Atomic:
            break;
        }
        return "Variety::Atomic";
    }

    // Whether the run-time's checks pass every value of the type, so that
    // a property of it needs none.
    static bool AcceptsEveryValue(ValueType const &v)
    {
        return v.variety == ValueType::Variety::Atomic &&
               MxXmlLib::CSchemaValueType(MxXmlLib::CSchemaValueType::Variety::Atomic, v.name.c_str(), v.itemType,
                                          v.whitespace, v.facets, v.enumeration, v.qname, v.listLength,
                                          v.listMinLength, v.listMaxLength)
                   .AcceptsEveryValue();
    }

    // A value type as the run-time's checks take it, as an expression.
    static std::string ValueExpression(ValueType const &v, std::string const &indent)
    {
        std::string out = "MxXmlLib::CSchemaValueType(" + std::string(VarietyName(v.variety)) + ", " + Literal(v.name) +
                          ", MxXmlLib::ItemType_" + ItemTypeName(v.itemType) + ", " + RuleName(v.whitespace) + ", " +
                          Restrictions(v.facets) + ", " + std::to_string(v.enumeration) + ", " +
                          (v.qname ? "true" : "false") + ", " + std::to_string(v.listLength) + ", " +
                          std::to_string(v.listMinLength) + ", " + std::to_string(v.listMaxLength);
        if (!v.items.empty())
        {
            out += ",\n" + indent + "    {";
            for (std::size_t i = 0; i < v.items.size(); ++i)
                out += (i ? ",\n" + indent + "     " : std::string()) + ValueExpression(v.items[i], indent + "     ");
            out += "}";
        }
        return out + ")";
    }

    // The accessors of one property, declared in the class.
    std::string Declarations(std::size_t ci) const
    {
        ClassDef const &c = m.classes[ci];
        std::string const &here = n.classNamespaces[ci];
        std::string out;
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            Property const &p = c.properties[pi];
            std::map<std::string, std::string> v = {{"name", n.accessors[ci][pi]}, {"xml", p.name}};
            std::string type, comment;
            ValueType const *value = ValueOf(c, p);
            switch (p.holds)
            {
            case Property::Holds::Value:
                if (value != nullptr && value->enumeration >= 0)
                    type = EnumRef(value->enumeration, here);
                else
                    type = Face(value ? value->itemType : MxXmlLib::ItemType_string).type;
                v["type"] = type;
                v["param"] = PassByReference(type.c_str()) ? type + " const &" : type + " ";
                out += Fill("    // $xml$\n"
                            "    bool Has$name$() const;\n"
                            "    $type$ Get$name$() const;\n"
                            "    void Set$name$($param$value);\n"
                            "    void Clear$name$();\n",
                            v);
                break;
            case Property::Holds::Object:
            case Property::Holds::MandatoryObject:
            {
                ElementRow const &r = c.elements[static_cast<std::size_t>(p.row)];
                v["type"] = ClassRef(r.classIndex, here);
                out += Fill("    // $xml$\n"
                            "    MxXmlLib::CSmartPtr<$type$> Get$name$() const;\n"
                            "    void Set$name$($type$ *value);\n",
                            v);
                break;
            }
            case Property::Holds::ObjectCol:
            {
                ElementRow const &r = c.elements[static_cast<std::size_t>(p.row)];
                v["type"] = ClassRef(r.classIndex, here);
                out += Fill("    // $xml$, repeated\n"
                            "    MxXmlLib::CObjectCol *Get$name$() const;\n"
                            "    int Get$name$Count() const;\n"
                            "    $type$ *Get$name$At(int index) const;\n"
                            "    void Add$name$($type$ *item);\n",
                            v);
                break;
            }
            case Property::Holds::ValueCol:
                v["type"] = std::string("MxXmlLib::") +
                            Face(c.elements[static_cast<std::size_t>(p.row)].value.itemType).collection;
                out += Fill("    // $xml$, repeated\n    $type$ *Get$name$() const;\n", v);
                break;
            case Property::Holds::EnumCol:
                out += Fill("    // $xml$, repeated\n    MxXmlLib::CEnumCol *Get$name$() const;\n", v);
                break;
            case Property::Holds::Element:
            case Property::Holds::MandatoryElement:
                out += Fill("    // $xml$, untyped\n"
                            "    MxXmlLib::CSmartPtr<MxXmlLib::CElement> Get$name$() const;\n"
                            "    void Set$name$(MxXmlLib::CElement *value);\n",
                            v);
                break;
            case Property::Holds::ElementCol:
                out += Fill("    // $xml$, untyped, repeated\n    MxXmlLib::CElementCol *Get$name$() const;\n", v);
                break;
            case Property::Holds::AttributeCol:
                out += Fill("    // $xml$\n    MxXmlLib::CAttributeCol *Get$name$() const;\n", v);
                break;
            }
        }
        return out;
    }

    // Enumerations live in the set's namespace.
    std::string EnumRef(int e, std::string const &from) const
    {
        return from == n.cppNamespace ? EnumName(e) : "::" + n.cppNamespace + "::" + EnumName(e);
    }

    static ValueType const *ValueOf(ClassDef const &c, Property const &p)
    {
        if (p.row >= 0)
            return &c.elements[static_cast<std::size_t>(p.row)].value;
        if (p.attribute >= 0)
            return &c.attributes[static_cast<std::size_t>(p.attribute)].value;
        if (c.simpleContentProperty >= 0)
            return &c.simpleContent;
        return nullptr;
    }

    // The declarations that every class of the set needs: enumerations,
    // class numbers, factories, the value types, and every class by name.
    std::string CommonHeader() const
    {
        std::string out = Banner();
        out += "#pragma once\n\n#include \"MxXmlLib.h\"\n#include \"collections/GeneratedCollections.h\"\n\n"
               "#include <cstdint>\n#include <string>\n#include <utility>\n#include <vector>\n\n";
        // Every class by name, namespace by namespace in the order they first appear.
        std::vector<std::string> order;
        for (std::string const &ns : n.classNamespaces)
            if (std::find(order.begin(), order.end(), ns) == order.end())
                order.push_back(ns);
        if (std::find(order.begin(), order.end(), n.cppNamespace) == order.end())
            order.insert(order.begin(), n.cppNamespace);
        for (std::string const &ns : order)
        {
            if (ns == n.cppNamespace)
                continue;
            out += Open(ns);
            for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
                if (n.classNamespaces[ci] == ns)
                    out += "class " + n.classes[ci] + ";\n";
            out += "\n" + Close(ns) + "\n";
        }
        out += Open(n.cppNamespace);
        for (std::size_t e = 0; e < m.enumerations.size(); ++e)
        {
            out += "enum class " + n.enums[e] + "\n{\n";
            for (std::size_t i = 0; i < n.enumerators[e].size(); ++i)
                out += "    " + n.enumerators[e][i] + " = " + std::to_string(i) + ",\n";
            out += "};\nchar const *" + n.enums[e] + "ToString(int value);\nint " + n.enums[e] +
                   "FromString(char const *text);\n\n";
        }
        out += "// Class numbers of the factory by number.\nenum ClassId\n{\n";
        int number = 1;
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
        {
            out += "    " + ClassId(static_cast<int>(ci), false) + " = " + std::to_string(number++) + ",\n";
            if (n.nillable[ci])
                out += "    " + ClassId(static_cast<int>(ci), true) + " = " + std::to_string(number++) + ",\n";
        }
        out += "};\n\nMxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateByClassId(int classId, char const "
               "*elementName);\n"
               "// An empty object for a global element of the schema, mandatory children made down to where a\n"
               "// class would contain itself; null for an element the schema does not declare.\n"
               "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateRoot(char const *name, char const *ns);\n"
               "// The object for the root element of a parsed document: its declaration, and its xsi:type where\n"
               "// it names a derivation. Raises CMxException for an element the schema does not declare.\n"
               "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateFor(MxXmlLib::CXmlElement *root);\n"
               "// Reads a document (XML text or Fast Infoset, maybe compressed, or JSON) into the object its\n"
               "// root element declares.\n"
               "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> Read(MxXmlLib::CBinaryData const &bytes,\n"
               "                                                   MxXmlLib::CSerializationContext const &context);\n"
               "// Releases the tables of every class; the next use builds them again.\nvoid CleanAllMetaData();\n\n"
               "// The simple types whose values the classes check when they are stored, and the enumerations.\n"
               "struct CSchemaValueTables\n{\n    MxXmlLib::CSchemaEnumerations enumerations;\n"
               "    std::vector<MxXmlLib::CSchemaValueType> types;\n};\n"
               "CSchemaValueTables const &SchemaValues();\n\n";
        out += "// The factories the rows hold.\n"
               "class CFactory : public MxXmlLib::CClassfactoryBase\n{\npublic:\n";
        for (auto const &[base, nillable] : n.substitutionFactories)
            out += "    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakeSubstituteOf" +
                   ClassName(base).substr(1) + (nillable ? "_Nillable" : "") + "(MxXmlLib::CXmlElement *element);\n";
        out += "    static MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> MakeRoot(MxXmlLib::CXmlElement *root);\n";
        out += "};\n\n";
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
            if (n.classNamespaces[ci] == n.cppNamespace)
                out += "class " + n.classes[ci] + ";\n";
        out += "\n" + Close(n.cppNamespace);
        return out;
    }

    std::string ClassHeader(std::size_t ci) const
    {
        ClassDef const &c = m.classes[ci];
        bool const qnames = m.NotesPrefixes(ci);
        std::map<std::string, std::string> v = {
            {"class", n.classes[ci]},
            {"element", Literal(c.defaultElementName)},
            {"origin", c.origin},
            {"cells", std::to_string(std::max<std::size_t>(1, c.properties.size()))},
            {"accessors", Declarations(ci)},
            {"qnames", qnames ? "    // QName values and xsi:type in untyped content keep their prefixes:\n"
                                "    // reading notes what each stands for, and writing declares them here.\n"
                                "    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *element, "
                                "MxXmlLib::CXmlElement *cursor,\n"
                                "                                       MxXmlLib::CSerializationContext const "
                                "&context, bool optionalChoice) override;\n"
                                "    void AttributesToXml_Int(MxXmlLib::CXmlWriter *writer,\n"
                                "                             MxXmlLib::CSerializationContext const &context) const "
                                "override;\n"
                              : ""},
            {"prefixes", qnames ? "    MxXmlLib::SchemaValuePrefixes m_prefixes;\n" : ""},
            {"holder", qnames ? ", public MxXmlLib::CSchemaPrefixHolder" : ""},
            {"holderGet", qnames ? "    MxXmlLib::SchemaValuePrefixes const &GetValuePrefixes() const override { return "
                                   "m_prefixes; }\n"
                                 : ""}};
        std::string out = Fill("// $origin$\n"
                               "class $class$ : public MxXmlLib::CXmlGeneratedClass$holder$\n"
                               "{\n"
                               "public:\n"
                               "    explicit $class$(char const *elementName = $element$);\n"
                               "    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }\n"
                               "    using MxXmlLib::CXmlObjectBase::GetBase;\n"
                               "    std::string GetNamespace() const override;\n"
                               "    void SetTargetNamespace(std::string ns) { m_targetNamespace = std::move(ns); }\n"
                               "\n"
                               "$accessors$"
                               "\n"
                               "    void AccessProperty(int index, bool read, MxXmlLib::MxVariant &value) override;\n"
                               "    MxXmlLibData::CParentElementInfo *GetParentElementInfo() override;\n"
                               "    MxXmlLibData::CElementInfo **GetClassElementInfo() override;\n"
                               "    MxXmlLibData::CAttributeInfo **GetClassAttributeInfo() override;\n"
                               "    void Init() override;\n"
                               "$holderGet$"
                               "    static void CleanMetaData();\n"
                               "\n"
                               "protected:\n"
                               "    ~$class$() override;\n"
                               "    std::string GetTargetNamespace() const override { return m_targetNamespace; }\n"
                               "$qnames$"
                               "\n"
                               "private:\n"
                               "    void Reset(bool makeMandatoryChildren);\n"
                               "\n"
                               "    MxXmlLib::MxVariant m_cells[$cells$];\n"
                               "    std::string m_targetNamespace;\n"
                               "$prefixes$"
                               "};\n\n",
                               v);
        if (n.nillable[ci])
            out += Fill("// $class$ where the element is nillable.\n"
                        "class $class$_Nillable : public $class$, public MxXmlLib::INillable\n"
                        "{\n"
                        "public:\n"
                        "    using $class$::$class$;\n"
                        "    bool IsNil() override { return m_nil; }\n"
                        "    void SetNil(bool nil) override { m_nil = nil; }\n"
                        "    void Init() override\n"
                        "    {\n"
                        "        m_nil = false;\n"
                        "        $class$::Init();\n"
                        "    }\n"
                        "\n"
                        "private:\n"
                        "    bool m_nil = false;\n"
                        "};\n\n",
                        v);
        return out;
    }

    std::string Header() const
    {
        std::string out = CommonHeader();
        // Classes grouped by namespace, each group in model order.
        std::string open;
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
        {
            std::string const &ns = n.classNamespaces[ci];
            if (ns != open)
            {
                if (!open.empty())
                    out += Close(open);
                out += "\n" + Open(ns);
                open = ns;
            }
            out += ClassHeader(ci);
        }
        if (!open.empty())
            out += Close(open);
        return out;
    }

    // ---- source

    // What the sources share, file-local: the row classes' names, the
    // whitespace rules, and small helpers.
    std::string Prelude(bool common, bool classes) const
    {
        std::string out = "#include <cstring>\n\n" + Open(n.cppNamespace) +
                          "using namespace MxXmlLibData;\n"
                          "using Rule = MxXmlLib::CWhitespaceUtils::WhitespaceRule;\n\n"
                          "namespace\n{\n"
                          "[[maybe_unused]] MxXmlLib::CPrimitiveRestrictions NoFacets()\n{\n"
                          "    return MxXmlLib::CPrimitiveRestrictions(nullptr, -1, -1, nullptr, nullptr, nullptr, "
                          "nullptr, -1, -1, -1);\n}\n\n";
        if (common)
            out += "using Variety = MxXmlLib::CSchemaValueType::Variety;\n\n"
                   "// An object that a substitution factory makes takes the namespace of its element.\n"
                   "template <typename T>\n"
                   "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> Named(T *object, MxXmlLib::CXmlElement *element)\n"
                   "{\n"
                   "    object->SetTargetNamespace(element->GetNamespaceURI());\n"
                   "    return object;\n"
                   "}\n";
        if (classes)
            out += std::string(common ? "\n" : "") +
                   "template <typename T> MxXmlLib::CSmartPtr<T> ObjectIn(MxXmlLib::MxVariant const &cell)\n{\n"
                   "    return dynamic_cast<T *>(cell.GetXmlObject().Get());\n}\n\n"
                   "// A cell made empty; one that is empty already, as most are when a read starts, is left alone.\n"
                   "[[maybe_unused]] void Unset(MxXmlLib::MxVariant &cell)\n{\n"
                   "    if (cell.IsValid())\n"
                   "        cell = MxXmlLib::MxVariant();\n}\n\n"
                   "// The checks of a value about to be stored, as the run-time makes them for a loaded schema.\n"
                   "[[maybe_unused]] void CheckValue(int type, char const *name, MxXmlLib::MxVariant const &value)\n"
                   "{\n"
                   "    CSchemaValueTables const &tables = SchemaValues();\n"
                   "    MxXmlLib::CheckStoredSchemaValue(&tables.enumerations, "
                   "tables.types[static_cast<std::size_t>(type)], name, value);\n"
                   "}\n";
        out += "} // namespace\n\n" + Close(n.cppNamespace) + "\n";
        return out;
    }

    std::string Source() const
    {
        std::string out = Banner();
        out += "#include \"" + o.baseName + ".h\"\n\n";
        out += Prelude(true, true);
        out += CommonSource();
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
            out += "\n" + ClassSourceIn(ci);
        return out;
    }

    // A class's definitions in its namespace, which sees the set's.
    std::string ClassSourceIn(std::size_t ci) const
    {
        std::string const &ns = n.classNamespaces[ci];
        std::string out = Open(ns);
        if (ns != n.cppNamespace)
            out += "using namespace ::" + n.cppNamespace + ";\n\n";
        out += ClassSource(ci);
        return out + Close(ns);
    }

    std::string CommonSource() const
    {
        std::string out = Open(n.cppNamespace);
        out += ValueTables();
        out += Enumerations();
        out += Factories();
        out += "void CleanAllMetaData()\n{\n";
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
            out += "    " + ClassRef(static_cast<int>(ci), n.cppNamespace) + "::CleanMetaData();\n";
        out += "}\n\n" + Close(n.cppNamespace);
        return out;
    }

    std::string ValueTables() const
    {
        std::string enumerations;
        for (Enumeration const &e : m.enumerations)
        {
            std::string values;
            for (std::string const &value : e.values)
                values += (values.empty() ? "" : ", ") + Literal(value);
            enumerations += "        {" + Literal(e.name) + ",\n         {" + values + "},\n         " +
                            ValueExpression(e.type, "         ") + "},\n";
        }
        std::string types;
        for (std::string const &t : m_valueTypes)
            types += "        " + t + ",\n";
        return Fill("CSchemaValueTables const &SchemaValues()\n"
                    "{\n"
                    "    static CSchemaValueTables const tables = [] {\n"
                    "        CSchemaValueTables t;\n"
                    "        t.enumerations = {\n$enumerations$        };\n"
                    "        t.types = {\n$types$        };\n"
                    "        // The checks of stored values work out once what they can: patterns, bounds.\n"
                    "        for (MxXmlLib::CSchemaValueType &type : t.types)\n"
                    "            type.PreparePattern();\n"
                    "        return t;\n"
                    "    }();\n"
                    "    return tables;\n"
                    "}\n\n",
                    {{"enumerations", enumerations}, {"types", types}});
    }

    std::string Enumerations() const
    {
        std::string out;
        for (std::size_t e = 0; e < m.enumerations.size(); ++e)
        {
            std::map<std::string, std::string> v = {{"enum", n.enums[e]}, {"i", std::to_string(e)}};
            out += Fill("char const *$enum$ToString(int value)\n"
                        "{\n"
                        "    return MxXmlLib::SchemaEnumerationToString(SchemaValues().enumerations[$i$], value);\n"
                        "}\n\n"
                        "int $enum$FromString(char const *text)\n"
                        "{\n"
                        "    return MxXmlLib::SchemaEnumerationFromString(SchemaValues().enumerations[$i$], text);\n"
                        "}\n\n",
                        v);
        }
        return out;
    }

    // A document element that no global element declares may name the type
    // of its content with xsi:type: one case per class a type names.
    std::string TypeRoots() const
    {
        std::string const &here = n.cppNamespace;
        std::string cases;
        std::set<std::pair<std::string, std::string>> named;
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
        {
            ClassDef const &c = m.classes[ci];
            // The class FindTypeClass gives: the first of its name.
            if (!StandsForType(c) || !named.emplace(c.name, c.ns).second || c.abstract)
                continue;
            cases += "        if (type == " + Literal(c.name) + " && typeNs == " + Literal(c.ns) +
                     ")\n            made = Named(new MxXmlLib::CSchemaTypeRoot<" +
                     ConcreteName(static_cast<int>(ci), false, here) + ">(n.c_str()), root);\n";
        }
        if (cases.empty())
            return std::string();
        return "    if (made.IsNull() && !MxXmlLib::SchemaElementType(root).empty())\n    {\n"
               "        std::string const type = MxXmlLib::SchemaElementType(root);\n"
               "        std::string const typeNs = MxXmlLib::SchemaElementTypeNamespaceUri(root);\n" +
               cases + "    }\n";
    }

    std::string Factories() const
    {
        std::string const &here = n.cppNamespace;
        std::string out;
        out += "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateByClassId(int classId, [[maybe_unused]] char const "
               "*elementName)\n"
               "{\n    switch (classId)\n    {\n";
        for (std::size_t ci = 0; ci < m.classes.size(); ++ci)
            for (bool nil : {false, true})
            {
                if (nil && !n.nillable[ci])
                    continue;
                out += "    case " + ClassId(static_cast<int>(ci), nil) + ":\n        return new " +
                       ConcreteName(static_cast<int>(ci), nil, here) + "(elementName);\n";
            }
        out += "    default:\n        return nullptr;\n    }\n}\n\n";
        for (auto const &[base, nillable] : n.substitutionFactories)
        {
            std::string cases;
            for (int s : m.Substitutes(base))
            {
                ClassDef const &c = m.classes[static_cast<std::size_t>(s)];
                if (c.anonymous || c.abstract)
                    continue;
                cases += "    if (type == " + Literal(c.name) + " && typeNs == " + Literal(c.ns) +
                         ")\n        made = Named(new " + ConcreteName(s, nillable, here) + "(name.c_str()), element);\n";
            }
            ClassDef const &b = m.classes[static_cast<std::size_t>(base)];
            std::map<std::string, std::string> v = {
                {"function", SubstitutionFactory(base, nillable).substr(10)},
                {"base", b.abstract ? std::string("nullptr")
                                    : "Named(new " + ConcreteName(base, nillable, here) + "(name.c_str()), element)"},
                {"cases", cases}};
            out += Fill("// The class that xsi:type names, or the declared one without it; the object takes the\n"
                        "// element's namespace.\n"
                        "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CFactory::$function$(MxXmlLib::CXmlElement "
                        "*element)\n"
                        "{\n"
                        "    if (element == nullptr)\n"
                        "        return nullptr;\n"
                        "    std::string const name = element->GetLocalName();\n"
                        "    std::string const type = MxXmlLib::SchemaElementType(element);\n"
                            "    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> made;\n"
                        "    if (type.empty())\n"
                        "        made = $base$;\n"
                        "    std::string const typeNs = type.empty() ? std::string() : "
                        "MxXmlLib::SchemaElementTypeNamespaceUri(element);\n"
                        "$cases$"
                        "    return made;\n"
                        "}\n\n",
                        v);
        }
        out += "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateRoot(char const *name, char const *ns)\n{\n"
               "    std::string const n = name, u = ns ? ns : \"\";\n";
        for (RootElement const &r : m.roots)
        {
            std::map<std::string, std::string> v = {{"name", Literal(r.name)}, {"ns", Literal(r.ns)}};
            if (r.untyped)
            {
                out += Fill("    if (n == $name$ && u == $ns$)\n"
                            "        return new MxXmlLib::CSchemaUntypedRoot(name, u.c_str());\n",
                            v);
                continue;
            }
            if (r.classIndex < 0)
                continue;
            v["class"] = ConcreteName(r.classIndex, r.nillable, here);
            out += Fill("    if (n == $name$ && u == $ns$)\n"
                        "    {\n"
                        "        $class$ *made = new $class$(name);\n"
                        "        made->SetTargetNamespace(u);\n"
                        "        MxXmlLib::InitSchemaTree(*made);\n"
                        "        return made;\n"
                        "    }\n",
                        v);
        }
        out += "    return nullptr;\n}\n\n";
        std::string typed;
        for (RootElement const &r : m.roots)
        {
            if (r.untyped || r.classIndex < 0)
                continue;
            typed += "        if (n == " + Literal(r.name) + " && u == " + Literal(r.ns) + ")\n        {\n"
                     "            typed = true;\n            made = " +
                     SubstitutionFactory(r.classIndex, r.nillable).substr(10) + "(root);\n        }\n";
        }
        out += Fill("MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CFactory::MakeRoot(MxXmlLib::CXmlElement *root)\n"
                    "{\n"
                    "    std::string const n = root->GetLocalName(), u = root->GetNamespaceURI();\n"
                    "    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> made;\n"
                    "    if (!MxXmlLib::SchemaElementType(root).empty())\n"
                    "    {\n"
                    "        [[maybe_unused]] bool typed = false;\n"
                    "$typed$"
                    "        if (typed && made.IsNull())\n"
                    "            throw MxXmlLib::CMxValidationException(\n"
                    "                MxXmlLib::FormatString(\"Failed to find a suitable substitution element for [%s].\", "
                    "n.c_str()),\n"
                    "                root->GetXPath());\n"
                    "        if (typed)\n"
                    "            return made;\n"
                    "    }\n"
                    "    made = CreateRoot(n.c_str(), u.c_str());\n"
                    "$typeRoots$"
                    "    if (made.IsNull())\n"
                    "        throw MxXmlLib::CMxException(MxXmlLib::FormatString(\n"
                    "            \"The element [%s] is not declared by the schema\", (u.empty() ? n : \"{\" + u + \"}\" "
                    "+ n).c_str()));\n"
                    "    return made;\n"
                    "}\n\n"
                    "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> CreateFor(MxXmlLib::CXmlElement *root)\n"
                    "{\n"
                    "    return CFactory::MakeRoot(root);\n"
                    "}\n\n"
                    "MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> Read(MxXmlLib::CBinaryData const &bytes,\n"
                    "                                                   MxXmlLib::CSerializationContext const "
                    "&context)\n"
                    "{\n"
                    "    return MxXmlLib::ReadSchemaDocument(bytes, context, &CFactory::MakeRoot);\n"
                    "}\n\n",
                    {{"typed", typed}, {"typeRoots", TypeRoots()}});
        return out;
    }

    std::string RowConstructor(ClassDef const &c, ElementRow const &r) const
    {
        std::string cls = RowClassName(r);
        // A repeated enumeration in xs:all reads as a collection of values,
        // as the run-time back end builds it.
        if (r.group == Group::All && r.kind == RowKind::Enum && r.occurs == Occurs::Col)
            cls = "CElementInfoAllPrimCol";
        std::string const head = "new " + cls + "(" + Literal(r.name) + ", " + Literal(r.ns) + ", " +
                                 std::to_string(r.property);
        std::string const shape = r.childShape == ClassShape::Element ? "XmlElementType_Element"
                                                                      : "XmlElementType_PseudoGroup";
        std::string const def = LiteralOrNull(r.hasDefault, r.defaultValue);
        (void)c;
        switch (r.kind)
        {
        case RowKind::Cls:
            if (r.occurs == Occurs::Col)
                return head + ", " + shape + ")";
            if (r.occurs == Occurs::Opt)
                return head + ", " + shape + ", &CreateByClassId, " + ClassId(r.classIndex, r.nillable) + ")";
            return head + ", " + shape + ", &CreateByClassId, " + ClassId(r.classIndex, r.nillable) + ", " +
                   (r.contentRequired ? "true" : "false") + ")";
        case RowKind::AbsCls:
            if (r.occurs == Occurs::Col)
                return head + ", " + shape + ")";
            if (r.occurs == Occurs::Mnd && r.group == Group::All)
                return head + ", " + shape + ", &" + SubstitutionFactory(r.classIndex, r.nillable) + ", 0)";
            return head + ", " + shape + ", &" + SubstitutionFactory(r.classIndex, r.nillable) + ")";
        case RowKind::Enum:
            if (r.occurs == Occurs::Col)
                return head + ")";
            return head + ", " + (r.nillable ? "true" : "false") + ", &" + EnumName(r.value.enumeration) +
                   "ToString, &" + EnumName(r.value.enumeration) + "FromString, " + def + ")";
        case RowKind::Prim:
            if (r.occurs == Occurs::Col)
                return head + ")";
            return head + ", " + (r.nillable ? "true" : "false") + ", MxXmlLib::ItemType_" +
                   ItemTypeName(r.value.itemType) + ", nullptr, " + RuleName(r.value.whitespace) + ", " +
                   Restrictions(RowFacets(r.value)) + ", " + def + ")";
        case RowKind::Untpd:
            if (r.occurs == Occurs::Col)
                return head + ")";
            return head + ", " + Literal(r.namespaceRestriction) + ", " + Literal(r.targetNamespace) + ")";
        }
        return head + ")";
    }
    std::string AttributeConstructor(AttributeRow const &a) const
    {
        std::string const def = LiteralOrNull(a.hasDefault, a.defaultValue);
        switch (a.kind)
        {
        case AttributeRow::Kind::Any:
            return "new CAttributeInfoAny(\"\", \"\", " + std::to_string(a.property) + ", true, " +
                   Literal(a.namespaceRestriction) + ", " + Literal(a.targetNamespace) + ", nullptr)";
        case AttributeRow::Kind::Enum:
            return "new CAttributeInfoEnum(" + Literal(a.name) + ", " + Literal(a.ns) + ", " +
                   std::to_string(a.property) + ", " + (a.optional ? "true" : "false") + ", &" +
                   EnumName(a.value.enumeration) + "ToString, &" + EnumName(a.value.enumeration) + "FromString, " +
                   def + ")";
        case AttributeRow::Kind::Prim:
            break;
        }
        return "new CAttributeInfoPrimitive(" + Literal(a.name) + ", " + Literal(a.ns) + ", " +
               std::to_string(a.property) + ", " + (a.optional ? "true" : "false") + ", MxXmlLib::ItemType_" +
               ItemTypeName(a.value.itemType) + ", nullptr, " + RuleName(a.value.whitespace) + ", " +
               Restrictions(RowFacets(a.value)) + ", " + def + ")";
    }

    std::string ResetBody(ClassDef const &c) const
    {
        std::string out;
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            Property const &p = c.properties[pi];
            std::string const cell = "    m_cells[" + std::to_string(pi) + "]";
            ElementRow const *r = p.row >= 0 ? &c.elements[static_cast<std::size_t>(p.row)] : nullptr;
            switch (p.holds)
            {
            case Property::Holds::Value:
            {
                out += "    Unset(m_cells[" + std::to_string(pi) + "]);\n";
                AttributeRow const *a = p.attribute >= 0 ? &c.attributes[static_cast<std::size_t>(p.attribute)] : nullptr;
                if (a != nullptr && a->fixed && a->kind == AttributeRow::Kind::Prim)
                    out += cell + ".FromString(" + Literal(a->defaultValue) + ", MxXmlLib::ItemType_" +
                           ItemTypeName(a->value.itemType) + ", " + RuleName(a->value.whitespace) + ");\n";
                break;
            }
            case Property::Holds::Object:
            case Property::Holds::Element:
                out += cell + ".SetXmlObject(nullptr);\n";
                break;
            case Property::Holds::MandatoryObject:
                out += cell + ".SetXmlObject(makeMandatoryChildren ? CreateByClassId(" +
                       ClassId(r->classIndex, r->nillable) + ", " + Literal(r->name) + ").Get() : nullptr);\n";
                break;
            case Property::Holds::ObjectCol:
                out += cell + ".SetXmlObject(new MxXmlLib::CObjectCol(" + Literal(r->name) + ", " + Literal(r->ns) +
                       ", " + std::to_string(r->minOccurs) + ", " + std::to_string(r->maxOccurs) +
                       ", &CreateByClassId, " + ClassId(r->classIndex, r->nillable) + ", " +
                       (r->kind == RowKind::AbsCls ? "&" + SubstitutionFactory(r->classIndex, r->nillable)
                                                   : std::string("nullptr")) +
                       ", " + (r->childShape == ClassShape::PseudoGroup ? "true" : "false") + "));\n";
                break;
            case Property::Holds::ValueCol:
                out += cell + ".SetXmlObject(new MxXmlLib::" + Face(r->value.itemType).collection + "(" +
                       Literal(r->name) + ", " + Literal(r->ns) + ", " + std::to_string(r->minOccurs) + ", " +
                       std::to_string(r->maxOccurs) + ", " + FacetArguments(r->value.facets) + ", " +
                       RuleName(r->value.whitespace) + "));\n";
                break;
            case Property::Holds::EnumCol:
                out += cell + ".SetXmlObject(new MxXmlLib::CEnumCol(" + Literal(r->name) + ", " + Literal(r->ns) +
                       ", " + std::to_string(r->minOccurs) + ", " + std::to_string(r->maxOccurs) + ", &" +
                       EnumName(r->value.enumeration) + "ToString, &" + EnumName(r->value.enumeration) +
                       "FromString, " + RuleName(r->value.whitespace) + "));\n";
                break;
            case Property::Holds::MandatoryElement:
                out += cell + ".SetXmlObject(new MxXmlLib::CElement(" + Literal(r->name) + ", " +
                       Literal(WildcardNamespace(r->namespaceRestriction, r->targetNamespace)) + ", " +
                       Literal(r->namespaceRestriction) + ", " + Literal(r->targetNamespace) + "));\n";
                break;
            case Property::Holds::ElementCol:
                out += cell + ".SetXmlObject(new MxXmlLib::CElementCol(" +
                       Literal(WildcardNamespace(r->namespaceRestriction, r->targetNamespace)) + ", " +
                       Literal(r->namespaceRestriction) + ", " + Literal(r->targetNamespace) + ", " +
                       std::to_string(r->minOccurs) + ", " + std::to_string(r->maxOccurs) + "));\n";
                break;
            case Property::Holds::AttributeCol:
            {
                AttributeRow const &a = c.attributes[static_cast<std::size_t>(p.attribute)];
                out += cell + ".SetXmlObject(new MxXmlLib::CAttributeCol(" +
                       Literal(WildcardNamespace(a.namespaceRestriction, a.targetNamespace)) + ", " +
                       Literal(a.namespaceRestriction) + ", " + Literal(a.targetNamespace) + "));\n";
                break;
            }
            }
        }
        return out;
    }

    static std::string WildcardNamespace(std::string const &restriction, std::string const &targetNs)
    {
        if (restriction == "##targetNamespace")
            return targetNs;
        if (restriction.rfind("##", 0) == 0)
            return std::string();
        return restriction;
    }

    std::string AccessorBodies(std::size_t ci) const
    {
        ClassDef const &c = m.classes[ci];
        std::string out;
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            Property const &p = c.properties[pi];
            std::map<std::string, std::string> v = {
                {"class", n.classes[ci]}, {"name", n.accessors[ci][pi]}, {"i", std::to_string(pi)}};
            ValueType const *value = ValueOf(c, p);
            switch (p.holds)
            {
            case Property::Holds::Value:
            {
                bool const isEnum = value != nullptr && value->enumeration >= 0;
                PrimitiveFace const f = Face(value ? value->itemType : MxXmlLib::ItemType_string);
                std::string const type = isEnum ? EnumName(value->enumeration) : f.type;
                v["type"] = type;
                v["param"] = PassByReference(type.c_str()) ? type + " const &" : type + " ";
                v["get"] = isEnum ? "static_cast<" + type + ">(m_cells[" + v["i"] + "].GetI4())"
                                  : "m_cells[" + v["i"] + "]." + f.get + "()";
                v["set"] = isEnum ? "SetI4(static_cast<int>(value))" : std::string(f.set) + "(value)";
                out += Fill("bool $class$::Has$name$() const\n{\n    return m_cells[$i$].IsValid();\n}\n"
                            "$type$ $class$::Get$name$() const\n{\n    return $get$;\n}\n"
                            "void $class$::Set$name$($param$value)\n{\n    m_cells[$i$].$set$;\n}\n"
                            "void $class$::Clear$name$()\n{\n    m_cells[$i$] = MxXmlLib::MxVariant();\n}\n\n",
                            v);
                break;
            }
            case Property::Holds::Object:
            case Property::Holds::MandatoryObject:
                v["type"] = ClassRef(c.elements[static_cast<std::size_t>(p.row)].classIndex, n.classNamespaces[ci]);
                out += Fill("MxXmlLib::CSmartPtr<$type$> $class$::Get$name$() const\n{\n"
                            "    return ObjectIn<$type$>(m_cells[$i$]);\n}\n"
                            "void $class$::Set$name$($type$ *value)\n{\n    m_cells[$i$].SetXmlObject(value);\n}\n\n",
                            v);
                break;
            case Property::Holds::ObjectCol:
                v["type"] = ClassRef(c.elements[static_cast<std::size_t>(p.row)].classIndex, n.classNamespaces[ci]);
                out += Fill("MxXmlLib::CObjectCol *$class$::Get$name$() const\n{\n"
                            "    return ObjectIn<MxXmlLib::CObjectCol>(m_cells[$i$]).Get();\n}\n"
                            "int $class$::Get$name$Count() const\n{\n    return Get$name$()->GetCount();\n}\n"
                            "$type$ *$class$::Get$name$At(int index) const\n{\n"
                            "    return dynamic_cast<$type$ *>(Get$name$()->GetAt(index));\n}\n"
                            "void $class$::Add$name$($type$ *item)\n{\n    Get$name$()->Add(item);\n}\n\n",
                            v);
                break;
            case Property::Holds::ValueCol:
                v["type"] =
                    std::string("MxXmlLib::") + Face(c.elements[static_cast<std::size_t>(p.row)].value.itemType).collection;
                out += Fill("$type$ *$class$::Get$name$() const\n{\n    return ObjectIn<$type$>(m_cells[$i$]).Get();\n}\n\n",
                            v);
                break;
            case Property::Holds::EnumCol:
                out += Fill("MxXmlLib::CEnumCol *$class$::Get$name$() const\n{\n"
                            "    return ObjectIn<MxXmlLib::CEnumCol>(m_cells[$i$]).Get();\n}\n\n",
                            v);
                break;
            case Property::Holds::Element:
            case Property::Holds::MandatoryElement:
                out += Fill("MxXmlLib::CSmartPtr<MxXmlLib::CElement> $class$::Get$name$() const\n{\n"
                            "    return ObjectIn<MxXmlLib::CElement>(m_cells[$i$]);\n}\n"
                            "void $class$::Set$name$(MxXmlLib::CElement *value)\n{\n"
                            "    m_cells[$i$].SetXmlObject(value);\n}\n\n",
                            v);
                break;
            case Property::Holds::ElementCol:
                out += Fill("MxXmlLib::CElementCol *$class$::Get$name$() const\n{\n"
                            "    return ObjectIn<MxXmlLib::CElementCol>(m_cells[$i$]).Get();\n}\n\n",
                            v);
                break;
            case Property::Holds::AttributeCol:
                out += Fill("MxXmlLib::CAttributeCol *$class$::Get$name$() const\n{\n"
                            "    return ObjectIn<MxXmlLib::CAttributeCol>(m_cells[$i$]).Get();\n}\n\n",
                            v);
                break;
            }
        }
        return out;
    }

    std::string ClassSource(std::size_t ci) const
    {
        ClassDef const &c = m.classes[ci];
        std::string rows;
        for (ElementRow const &r : c.elements)
            rows += "        " + RowConstructor(c, r) + ",\n";
        std::string attributes;
        for (AttributeRow const &a : c.attributes)
            attributes += "        " + AttributeConstructor(a) + ",\n";
        char const *group = c.group == Group::Sequence ? "XmlElementGroupType_Sequence"
                            : c.group == Group::Choice ? "XmlElementGroupType_Choice"
                                                       : "XmlElementGroupType_All";
        std::map<std::string, std::string> v = {
            {"class", n.classes[ci]},
            {"ns", Literal(c.ns)},
            {"name", Literal(c.name)},
            {"group", group},
            {"shape", c.shape == ClassShape::Element ? "XmlElementType_Element" : "XmlElementType_PseudoGroup"},
            {"fail", c.failIfAttributeUnknown ? "true" : "false"},
            {"bases", c.hasBaseClasses ? "true" : "false"},
            {"text", std::to_string(c.simpleContentProperty)},
            {"textType", c.simpleContentProperty >= 0
                             ? std::string("MxXmlLib::ItemType_") + ItemTypeName(c.simpleContent.itemType)
                             : std::string("MxXmlLib::ItemType_None")},
            {"textAsString",
             c.simpleContentProperty >= 0 && MxXmlLib::ReadsSchemaText(c.simpleContent.itemType) ? "true" : "false"},
            {"rowCount", std::to_string(c.elements.size() + 1)},
            {"rows", rows},
            {"attributeCount", std::to_string(c.attributes.size() + 1)},
            {"attributes", attributes},
            {"reset", ResetBody(c)},
            {"accessors", AccessorBodies(ci)},
            {"cells", std::to_string(c.properties.size())},
            {"identifier", Literal(c.identifier)},
            {"checks", StoreChecks(ci)},
            {"qnames", QNameOverrides(ci)}};
        return Fill("// ---------------------------------------------------------------------------\n"
                    "// $class$\n\n"
                    "namespace\n{\nMxXmlLib::CClassTables g_tables$class$;\n} // namespace\n\n"
                    "$class$::$class$(char const *elementName) : m_targetNamespace($ns$)\n"
                    "{\n"
                    "    SetElementName(elementName);\n"
                    "    Reset(false);\n"
                    "}\n\n"
                    "$class$::~$class$() = default;\n\n"
                    "std::string $class$::GetNamespace() const\n{\n    return $ns$;\n}\n\n"
                    "void $class$::Init()\n{\n    Reset(true);\n}\n\n"
                    "// Mandatory children are made empty: each one's own read fills it.\n"
                    "void $class$::Reset([[maybe_unused]] bool makeMandatoryChildren)\n{\n$reset$}\n\n"
                    "void $class$::AccessProperty(int index, bool read, MxXmlLib::MxVariant &value)\n"
                    "{\n"
                    "    if (index < 0 || index >= $cells$)\n"
                    "        throw MxXmlLib::CMxException(MxXmlLib::FormatString(\"Unknown property %d of %s\", index, "
                    "$identifier$));\n"
                    "    if (read)\n"
                    "    {\n"
                    "        value = m_cells[index];\n"
                    "        return;\n"
                    "    }\n"
                    "$checks$"
                    "    // The value is taken, not copied: the caller has no more use for it.\n"
                    "    m_cells[index] = std::move(value);\n"
                    "}\n\n"
                    "$qnames$"
                    "$accessors$"
                    "static void Build$class$(MxXmlLib::CClassTables::Rows &t)\n"
                    "{\n"
                    "    t.info = new CParentElementInfo($group$, $shape$, $name$, $ns$, $fail$, $bases$, $text$,\n"
                    "                                    $textType$, nullptr, $textAsString$);\n"
                    "    t.elements = new CElementInfo *[$rowCount$]{\n$rows$        nullptr};\n"
                    "    t.attributes = new CAttributeInfo *[$attributeCount$]{\n$attributes$        nullptr};\n"
                    "}\n\n"
                    "CParentElementInfo *$class$::GetParentElementInfo()\n{\n"
                    "    return g_tables$class$.Get(Build$class$).info;\n}\n"
                    "CElementInfo **$class$::GetClassElementInfo()\n{\n"
                    "    return g_tables$class$.Get(Build$class$).elements;\n}\n"
                    "CAttributeInfo **$class$::GetClassAttributeInfo()\n{\n"
                    "    return g_tables$class$.Get(Build$class$).attributes;\n}\n"
                    "void $class$::CleanMetaData()\n{\n    g_tables$class$.Clean();\n}\n\n",
                    v);
    }

    // The checks of AccessProperty before it stores a value: one case per
    // property that holds a value of a simple type.
    std::string StoreChecks(std::size_t ci) const
    {
        ClassDef const &c = m.classes[ci];
        std::string cases;
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            int const type = m_propertyTypes[ci][pi];
            if (type < 0)
                continue;
            std::string body;
            if (static_cast<int>(pi) == c.simpleContentProperty && c.hasContentDefault)
                body += "        MxXmlLib::ApplyContentDefault(" + Literal(c.contentDefault) + ", value);\n";
            if (static_cast<int>(pi) == c.simpleContentProperty)
                body += "        MxXmlLib::ConvertSchemaText(SchemaValues().types[" + std::to_string(type) +
                        "], value);\n";
            if (!m_uncheckedTypes[static_cast<std::size_t>(type)])
                body += "        CheckValue(" + std::to_string(type) + ", " + Literal(c.properties[pi].name) +
                        ", value);\n";
            if (!body.empty())
                cases += "    case " + std::to_string(pi) + ":\n" + body + "        break;\n";
        }
        if (cases.empty())
            return std::string();
        return "    switch (index)\n    {\n" + cases + "    default:\n        break;\n    }\n";
    }

    std::string QNameOverrides(std::size_t ci) const
    {
        if (!m.NotesPrefixes(ci))
            return std::string();
        ClassDef const &c = m.classes[ci];
        std::string collect;
        for (std::size_t pi = 0; pi < c.properties.size(); ++pi)
        {
            std::string const cell = "m_cells[" + std::to_string(pi) + "]";
            switch (m.PrefixSourceOf(ci, pi))
            {
            case PrefixSource::Value:
                collect += "    MxXmlLib::CollectSchemaValuePrefixes(element, SchemaValues().types[" +
                           std::to_string(m_propertyTypes[ci][pi]) + "], " + cell + ", m_prefixes);\n";
                break;
            case PrefixSource::Collection:
                collect += "    MxXmlLib::CollectQNameCollectionPrefixes(element, " + cell + ", m_prefixes);\n";
                break;
            case PrefixSource::Untyped:
                collect += "    MxXmlLib::CollectUntypedTypePrefixes(element, " + cell + ", m_prefixes);\n";
                break;
            case PrefixSource::InlineGroup:
                collect += "    MxXmlLib::CollectInlinePrefixes(" + cell + ", m_prefixes);\n";
                break;
            case PrefixSource::None:
                break;
            }
        }
        return Fill("MxXmlLib::CXmlElement *$class$::FromXml_Int(MxXmlLib::CXmlElement *element, "
                    "MxXmlLib::CXmlElement *cursor,\n"
                    "                                     MxXmlLib::CSerializationContext const &context, bool "
                    "optionalChoice)\n"
                    "{\n"
                    "    MxXmlLib::CXmlElement *const next = CXmlGeneratedClass::FromXml_Int(element, cursor, context, "
                    "optionalChoice);\n"
                    "    m_prefixes.clear();\n"
                    "$collect$"
                    "    return next;\n"
                    "}\n\n"
                    "void $class$::AttributesToXml_Int(MxXmlLib::CXmlWriter *writer, MxXmlLib::CSerializationContext "
                    "const &context) const\n"
                    "{\n"
                    "    MxXmlLib::DeclareSchemaValuePrefixes(writer, m_prefixes);\n"
                    "    CXmlGeneratedClass::AttributesToXml_Int(writer, context);\n"
                    "}\n\n",
                    {{"class", n.classes[ci]}, {"collect", collect}});
    }

    Model const &m;
    CppOptions const &o;
    Names n;
    std::vector<std::string> m_valueTypes;       // expressions, by number
    std::vector<bool> m_uncheckedTypes;          // by number: no stored value can fail its checks
    std::vector<std::vector<int>> m_propertyTypes; // per class, per property: a number or -1
};

} // namespace

std::vector<GeneratedFile> GenerateCpp(Model const &model, CppOptions const &options)
{
    return Generator(model, options).Run();
}

} // namespace MxCompiler
