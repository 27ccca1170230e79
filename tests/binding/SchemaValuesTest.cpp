// The checks of a stored schema value: a prepared type (bounds parsed,
// pattern compiled once) must refuse exactly the values that the general
// checks refuse, with the same message, and let the same values through.

#include "binding/SchemaValues.h"
#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
using Rule = CWhitespaceUtils::WhitespaceRule;
using Variety = CSchemaValueType::Variety;

CSchemaValueType Atomic(ItemType type, CPrimitiveRestrictions const &facets)
{
    return CSchemaValueType(Variety::Atomic, "T", type, Rule::Collapse, facets, -1, false, -1, -1, -1);
}

CPrimitiveRestrictions Bounds(char const *minInclusive, char const *maxInclusive, char const *minExclusive,
                              char const *maxExclusive, long totalDigits = -1, long fractionDigits = -1)
{
    return CPrimitiveRestrictions(nullptr, -1, -1, minInclusive, maxInclusive, minExclusive, maxExclusive, -1,
                                  totalDigits, fractionDigits);
}

CPrimitiveRestrictions Pattern(char const *pattern, long minLength = -1, long maxLength = -1)
{
    return CPrimitiveRestrictions(pattern, minLength, maxLength, nullptr, nullptr, nullptr, nullptr, -1, -1, -1);
}

CPrimitiveRestrictions NoFacets()
{
    return Pattern(nullptr);
}

// "" when the value is stored, else the message that refuses it.
std::string Outcome(CSchemaValueType const &type, MxVariant const &value)
{
    try
    {
        CheckStoredSchemaValue(nullptr, type, "v", value);
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "";
}

MxVariant Cell(char const *text, ItemType type)
{
    MxVariant v;
    v.FromString(text, type, Rule::Collapse);
    return v;
}

struct Case
{
    CSchemaValueType type;
    MxVariant value;
    std::string refused; // "" when stored
};

TEST(SchemaValues, PreparedTypesRefuseWhatTheGeneralChecksRefuse)
{
    std::vector<Case> cases;
    auto add = [&cases](CSchemaValueType const &type, MxVariant const &value, std::string const &refused) {
        cases.push_back({type, value, refused});
    };
    CSchemaValueType const quantity = Atomic(ItemType_i4, Bounds("1", "2147483647", nullptr, "100", -1, 0));
    add(quantity, Cell("1", ItemType_i4), "");
    add(quantity, Cell("99", ItemType_i4), "");
    add(quantity, Cell("0", ItemType_i4), "Invalid Value for v [0]");
    add(quantity, Cell("100", ItemType_i4), "Invalid Value for v [100]");
    // A cell of another type is left to the general check.
    add(quantity, Cell("5", ItemType_i2), "");
    add(quantity, Cell("500", ItemType_i2), "Invalid Value for v [500]");
    CSchemaValueType const wide = Atomic(ItemType_ui4, Bounds("10", " 4294967295 ", nullptr, nullptr));
    add(wide, Cell("4294967295", ItemType_ui4), "");
    add(wide, Cell("3", ItemType_ui4), "Invalid Value for v [3]");
    add(Atomic(ItemType_i1, Bounds(nullptr, nullptr, "-128", nullptr)), Cell("-128", ItemType_i1),
        "Invalid Value for v [-128]");
    // A bound that does not parse is the general check's to report.
    add(Atomic(ItemType_i4, Bounds("x", nullptr, nullptr, nullptr)), Cell("1", ItemType_i4),
        Outcome(Atomic(ItemType_i4, Bounds("x", nullptr, nullptr, nullptr)), Cell("1", ItemType_i4)));
    add(Atomic(ItemType_i4, Bounds(nullptr, nullptr, nullptr, nullptr, 2)), Cell("123", ItemType_i4),
        "Invalid Value for v [123]");

    CSchemaValueType const price = Atomic(ItemType_decimal, Bounds("0", nullptr, nullptr, nullptr, -1, 2));
    add(price, Cell("1.25", ItemType_decimal), "");
    add(price, Cell("0", ItemType_decimal), "");
    add(price, Cell("1.000", ItemType_decimal), ""); // no significant places
    add(price, Cell("1.255", ItemType_decimal), "Invalid Value for v [1.255].");
    add(price, Cell("-0.01", ItemType_decimal), "Invalid Value for v [-0.01].");
    add(Atomic(ItemType_decimal, Bounds(nullptr, "9.5", nullptr, nullptr)), Cell("9.50", ItemType_decimal), "");
    add(Atomic(ItemType_decimal, Bounds(nullptr, nullptr, "9.5", nullptr)), Cell("9.50", ItemType_decimal),
        "Invalid Value for v [9.5].");

    CSchemaValueType const zip = Atomic(ItemType_string, Pattern("\\p{Nd}{5}(?:-\\p{Nd}{4})?"));
    add(zip, Cell("12345", ItemType_string), "");
    add(zip, Cell("12345-6789", ItemType_string), "");
    add(zip, Cell("1234", ItemType_string), "Invalid Value for v [1234].");
    CSchemaValueType const code = Atomic(ItemType_string, Pattern("[A-Z]+", 2, 3));
    add(code, Cell("AB", ItemType_string), "");
    add(code, Cell("A", ItemType_string), "Invalid Value for v [A].");
    add(code, Cell("ABCD", ItemType_string), "Invalid Value for v [ABCD].");

    add(Atomic(ItemType_string, NoFacets()), Cell("7", ItemType_i4), "");
    add(Atomic(ItemType_date, NoFacets()), Cell("2026-11-25", ItemType_date), "");
    add(Atomic(ItemType_char, NoFacets()), Cell("a", ItemType_char), "Unknown type [char].");
    add(Atomic(ItemType_i4, Bounds("5", nullptr, nullptr, nullptr)), MxVariant(), "");

    for (Case const &c : cases)
    {
        SCOPED_TRACE(c.value.GetTypeAsEnum() == ItemType_None ? std::string("unset") : c.value.ToString());
        CSchemaValueType prepared = c.type;
        prepared.PreparePattern();
        EXPECT_EQ(c.refused, Outcome(c.type, c.value));
        EXPECT_EQ(c.refused, Outcome(prepared, c.value));
    }
}

TEST(SchemaValues, AcceptsEveryValueOnlyWithoutFacets)
{
    struct Row
    {
        CSchemaValueType type;
        bool acceptsEvery;
    };
    CSchemaValueType enumerated = Atomic(ItemType_string, NoFacets());
    enumerated.enumeration = 0;
    CSchemaValueType list(Variety::List, "L", ItemType_string, Rule::Collapse, NoFacets(), -1, false, -1, -1, -1);
    std::vector<Row> const rows = {
        {Atomic(ItemType_string, NoFacets()), true},
        {Atomic(ItemType_decimal, NoFacets()), true},
        {Atomic(ItemType_char, NoFacets()), false},
        {Atomic(ItemType_string, Pattern(nullptr, 1)), false},
        {Atomic(ItemType_i4, Bounds(nullptr, nullptr, nullptr, nullptr, -1, 0)), false},
        {enumerated, false},
        {list, false},
    };
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(rows[i].acceptsEvery, rows[i].type.AcceptsEveryValue());
    }
}

} // namespace
