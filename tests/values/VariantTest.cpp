#include "binding/XmlObjectBase.h"
#include "collections/XmlCollectionBase.h"
#include "runtime/MxException.h"
#include "values/Variant.h"
#include "support/CountedObject.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

using namespace MxXmlLib;
using Rule = CWhitespaceUtils::WhitespaceRule;

namespace
{

using MxTestSupport::CCounted;

class CCountedCollection : public CXmlCollectionBase
{
public:
    int GetCount() const override { return 0; }
    void Clear() override {}
    void Remove(int) override {}
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return ""; }

protected:
    std::string GetTargetNamespace() const override { return ""; }
    void ToXml_Int(CXmlWriter *, bool, char const *, CSerializationContext const &, bool) const override {}
    CXmlElement *FromXml_Int(CXmlElement *, CXmlElement *cursor, CSerializationContext const &, bool) override
    {
        return cursor;
    }
};

// The message of the CMxException that `f` raises, "" when it returns.
std::string Failure(std::function<void()> const &f)
{
    try
    {
        f();
    }
    catch (CMxException const &e)
    {
        return e.GetMessage();
    }
    return "";
}

struct TextCase
{
    ItemType type;
    char const *name;
    char const *text;
    Rule rule;
    char const *format;
    char const *printed;
};

TextCase const kTextCases[] = {
    {ItemType_i1, "i1", "-128", Rule::None, nullptr, "-128"},
    {ItemType_i2, "i2", " 32767 ", Rule::Collapse, nullptr, "32767"},
    {ItemType_i4, "i4", "-2147483648", Rule::None, nullptr, "-2147483648"},
    {ItemType_i8, "i8", "+9223372036854775807", Rule::None, nullptr, "9223372036854775807"},
    {ItemType_ui1, "ui1", "255", Rule::None, nullptr, "255"},
    {ItemType_ui2, "ui2", "00065535", Rule::None, nullptr, "65535"},
    {ItemType_ui4, "ui4", "-1", Rule::None, nullptr, "4294967295"},
    {ItemType_ui8, "ui8", "18446744073709551615", Rule::None, nullptr, "18446744073709551615"},
    {ItemType_r4, "r4", "0.1", Rule::None, nullptr, "0.1"},
    {ItemType_r4, "r4", "2.5", Rule::None, "%.3f", "2.500"},
    {ItemType_r4, "r4", "1.#QNAN", Rule::None, "%.3f", "NaN"},
    {ItemType_r8, "r8", "0.1", Rule::None, "", "0.1"},
    {ItemType_r8, "r8", "1e999", Rule::None, nullptr, "INF"},
    {ItemType_r8, "r8", "-1234.5678", Rule::None, "%.2e", "-1.23e+03"},
    {ItemType_char, "char", "x", Rule::None, nullptr, "x"},
    {ItemType_string, "string", " a \t b ", Rule::Collapse, "%.2f", "a b"},
    {ItemType_string, "string", "", Rule::None, nullptr, ""},
    {ItemType_boolean, "boolean", "TRUE", Rule::None, nullptr, "true"},
    {ItemType_boolean, "boolean", "0", Rule::None, nullptr, "false"},
};

TEST(Variant, FromStringThenToString)
{
    for (TextCase const &c : kTextCases)
    {
        SCOPED_TRACE(std::string(c.name) + " " + c.text);
        MxVariant v;
        v.FromString(c.text, c.type, c.rule);
        EXPECT_EQ(c.type, v.GetTypeAsEnum());
        EXPECT_EQ(c.name, v.GetType());
        EXPECT_FALSE(v.IsNil());
        EXPECT_EQ(c.printed, v.ToString(c.format));
        MxVariant copy(v);
        EXPECT_EQ(c.printed, copy.ToString(c.format));
    }
}

TEST(Variant, SettersAndTheirNames)
{
    struct Case
    {
        std::function<void(MxVariant &)> set;
        ItemType type;
        char const *name;
        char const *printed;
    } const cases[] = {
        {[](MxVariant &v) { v.SetI1(-5); }, ItemType_i1, "i1", "-5"},
        {[](MxVariant &v) { v.SetI2(-300); }, ItemType_i2, "i2", "-300"},
        {[](MxVariant &v) { v.SetI4(70000); }, ItemType_i4, "i4", "70000"},
        {[](MxVariant &v) { v.SetI8(-5000000000); }, ItemType_i8, "i8", "-5000000000"},
        {[](MxVariant &v) { v.SetUI1(200); }, ItemType_ui1, "ui1", "200"},
        {[](MxVariant &v) { v.SetUI2(60000); }, ItemType_ui2, "ui2", "60000"},
        {[](MxVariant &v) { v.SetUI4(4000000000u); }, ItemType_ui4, "ui4", "4000000000"},
        {[](MxVariant &v) { v.SetUI8(10000000000000000000u); }, ItemType_ui8, "ui8", "10000000000000000000"},
        {[](MxVariant &v) { v.SetR4(1.5f); }, ItemType_r4, "r4", "1.5"},
        {[](MxVariant &v) { v.SetR8(1.0 / 3); }, ItemType_r8, "r8", "0.3333333333333333"},
        {[](MxVariant &v) { v.SetYear(2001); }, ItemType_year, "year", "2001"},
        {[](MxVariant &v) { v.SetMonth(5); }, ItemType_month, "month", "--05"},
        {[](MxVariant &v) { v.SetDay(9); }, ItemType_day, "day", "---09"},
        {[](MxVariant &v) { v.SetChar('q'); }, ItemType_char, "char", "q"},
        {[](MxVariant &v) { v.SetString("text"); }, ItemType_string, "string", "text"},
        {[](MxVariant &v) { v.SetBoolean(true); }, ItemType_boolean, "boolean", "true"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        MxVariant v;
        v.SetString("previous"); // the setter must release it
        c.set(v);
        EXPECT_EQ(c.type, v.GetTypeAsEnum());
        EXPECT_EQ(c.name, v.GetType());
        EXPECT_EQ(c.printed, v.ToString());
        EXPECT_TRUE(v.IsValid());
        MxVariant copy;
        copy = v;
        EXPECT_EQ(c.printed, copy.ToString());
    }
}

TEST(Variant, GettersOfOneWidthShareTheBytes)
{
    MxVariant v;
    v.SetI1(-1);
    EXPECT_EQ(255, v.GetUI1());
    EXPECT_EQ(255, v.GetMonth());
    EXPECT_EQ(255, v.GetDay());
    EXPECT_EQ('\xff', v.GetChar());
    EXPECT_TRUE(v.GetBoolean());
    v.SetI2(-2);
    EXPECT_EQ(65534, v.GetUI2());
    EXPECT_EQ(65534, v.GetYear());
    v.SetI4(-3);
    EXPECT_EQ(4294967293u, v.GetUI4());
    v.SetI8(-4);
    EXPECT_EQ(18446744073709551612u, v.GetUI8());
    // An inline value is left behind by Clear.
    v.Clear();
    EXPECT_EQ(-4, v.GetI8());
    EXPECT_EQ(ItemType_None, v.GetTypeAsEnum());
}

TEST(Variant, HeapGettersOfAnotherTypeAreEmpty)
{
    MxVariant v;
    v.SetI8(0x1234567812345678);
    EXPECT_EQ("", v.GetString());
    EXPECT_TRUE(v.GetXmlObject().IsNull());
    EXPECT_TRUE(v.GetXmlCollection().IsNull());
}

TEST(Variant, DefaultCell)
{
    MxVariant v;
    EXPECT_FALSE(v.IsNil());
    EXPECT_FALSE(v.IsValid());
    EXPECT_EQ(ItemType_None, v.GetTypeAsEnum());
    EXPECT_EQ(0, v.GetI8());
}

// A move hands the value over (heap blocks and counted objects included)
// and leaves the source an unset cell; the target's old value is released.
TEST(Variant, MoveTakesTheValueAndLeavesTheSourceUnset)
{
    int deaths = 0;
    std::vector<std::function<void(MxVariant &)>> const setters = {
        [](MxVariant &v) { v.SetI4(7); },
        [](MxVariant &v) { v.SetString(std::string(100, 's')); },
        [](MxVariant &v) { v.SetDecimal(CDecimal("1.25")); },
        [&deaths](MxVariant &v) { v.SetXmlObject(new CCounted(&deaths)); },
        [](MxVariant &v) {
            v.SetString("nil");
            v.SetNil();
        },
    };
    for (std::size_t i = 0; i < setters.size(); ++i)
    {
        SCOPED_TRACE(i);
        MxVariant source, expected;
        setters[i](source);
        expected = source;
        MxVariant constructed(std::move(source));
        EXPECT_EQ(ItemType_None, source.GetTypeAsEnum());
        EXPECT_FALSE(source.IsNil());
        MxVariant assigned;
        assigned.SetString("old");
        assigned = std::move(constructed);
        EXPECT_EQ(ItemType_None, constructed.GetTypeAsEnum());
        EXPECT_EQ(expected.GetTypeAsEnum(), assigned.GetTypeAsEnum());
        EXPECT_EQ(expected.IsNil(), assigned.IsNil());
        if (!expected.IsNil() && expected.GetTypeAsEnum() != ItemType_XmlObject)
            EXPECT_EQ(expected.ToString(), assigned.ToString());
    }
    EXPECT_EQ(1, deaths);
}

TEST(Variant, NilKeepsTheType)
{
    MxVariant v;
    v.SetString("abc");
    v.SetNil();
    EXPECT_TRUE(v.IsNil());
    EXPECT_TRUE(v.IsValid());
    EXPECT_EQ("string", v.GetType());
    EXPECT_EQ("", v.GetString());
    EXPECT_EQ("", v.ToString()); // the nil flag is not looked at

    MxVariant copy;
    copy.SetI4(3);
    copy = v;
    EXPECT_TRUE(copy.IsNil());
    EXPECT_EQ(ItemType_string, copy.GetTypeAsEnum());
    EXPECT_EQ("", copy.GetString());

    v.Clear();
    EXPECT_FALSE(v.IsNil());
    EXPECT_FALSE(v.IsValid());
}

TEST(Variant, NilWithoutType)
{
    MxVariant v;
    v.SetNil();
    EXPECT_TRUE(v.IsNil());
    EXPECT_TRUE(v.IsValid());
    EXPECT_EQ("Invalid Type 0", Failure([&] { v.GetType(); }));
    v.Clear(); // nothing to do on type 0, the nil flag included
    EXPECT_TRUE(v.IsNil());
    v.SetInvalid();
    EXPECT_TRUE(v.IsNil());
    // A nil cell of type 0 that takes a heap type by assignment has no value.
    MxVariant nilString;
    nilString.SetString("x");
    nilString.SetNil();
    MxVariant target;
    target.SetI8(-1);
    target.Clear();
    target = nilString;
    EXPECT_EQ("", target.GetString());
}

TEST(Variant, SelfAssignmentClears)
{
    MxVariant v;
    v.SetString("abc");
    MxVariant &alias = v;
    v = alias;
    EXPECT_EQ(ItemType_None, v.GetTypeAsEnum());
    EXPECT_FALSE(v.IsValid());
}

TEST(Variant, CopiesOwnTheirStrings)
{
    MxVariant a;
    a.SetString("one");
    MxVariant b(a);
    a.SetString("two");
    EXPECT_EQ("one", b.GetString());
    EXPECT_EQ("two", a.GetString());
}

TEST(Variant, Errors)
{
    int deaths = 0;
    CSmartPtr<CCountedCollection> collection(new CCountedCollection);
    MxVariant v;
    v.SetXmlCollection(collection);
    EXPECT_EQ("Invalid Type 28 to convert to string", Failure([&] { v.ToString(); }));
    EXPECT_EQ("Invalid Type 28", Failure([&] { v.GetType(); }));
    v.SetXmlObject(new CCounted(&deaths));
    EXPECT_EQ("Invalid Type 27", Failure([&] { v.GetType(); }));
    EXPECT_EQ("Invalid Type 27 to convert to string", Failure([&] { v.ToString("%f"); }));
    v.Clear();
    EXPECT_EQ(1, deaths);

    MxVariant fresh;
    EXPECT_EQ("Invalid Type 0 to convert to string", Failure([&] { fresh.ToString(); }));
    // The number printed is the cell's type, not the one asked for.
    EXPECT_EQ("Invalid Type 0 to convert to string",
              Failure([&] { fresh.FromString("x", ItemType_XmlObject, Rule::None); }));
    fresh.SetI4(1);
    EXPECT_EQ("Invalid Type 5 to convert to string",
              Failure([&] { fresh.FromString("x", static_cast<ItemType>(99), Rule::None); }));
    EXPECT_EQ("Invalid Type 5 to convert to string",
              Failure([&] { fresh.FromString("x", ItemType_None, Rule::None); }));
}

TEST(Variant, BadTextLeavesTheCell)
{
    MxVariant v;
    v.SetString("keep");
    try
    {
        v.FromString("300", ItemType_i1, Rule::None);
        ADD_FAILURE() << "no exception";
    }
    catch (CMxInvalidValueException const &e)
    {
        EXPECT_EQ("The value [300] is to large to fit in a i1", e.GetMessage());
    }
    EXPECT_EQ("keep", v.GetString());
    EXPECT_EQ("Unknown WhitespaceRule",
              Failure([&] { v.FromString("1", ItemType_i4, static_cast<Rule>(7)); }));
    EXPECT_EQ("keep", v.GetString());
}

TEST(Variant, ObjectCellsCount)
{
    int deaths = 0;
    CCounted *object = new CCounted(&deaths);
    CSmartPtr<CCounted> holder(object);
    {
        MxVariant v;
        v.SetXmlObject(object);
        EXPECT_EQ(2, object->Count());
        MxVariant copy(v);
        EXPECT_EQ(3, object->Count());
        CSmartPtr<CXmlObjectBase> got = copy.GetXmlObject();
        EXPECT_EQ(object, got.Get());
        EXPECT_EQ(4, object->Count());
        EXPECT_TRUE(copy.GetXmlCollection().IsNull()); // not a collection
        copy.SetNil();
        EXPECT_TRUE(copy.GetXmlObject().IsNull());
        EXPECT_EQ(3, object->Count());
        v = v; // cleared, the reference dropped
        EXPECT_EQ(2, object->Count());
    }
    EXPECT_EQ(1, object->Count());
    holder.Release();
    EXPECT_EQ(1, deaths);

    MxVariant empty;
    empty.SetXmlObject(nullptr);
    EXPECT_EQ(ItemType_XmlObject, empty.GetTypeAsEnum());
    EXPECT_TRUE(empty.GetXmlObject().IsNull());
    MxVariant emptyCopy(empty);
    EXPECT_TRUE(emptyCopy.GetXmlObject().IsNull());
}

TEST(Variant, CollectionCells)
{
    CSmartPtr<CCountedCollection> collection(new CCountedCollection);
    MxVariant v;
    v.SetXmlCollection(collection);
    EXPECT_EQ(ItemType_XmlCollection, v.GetTypeAsEnum());
    EXPECT_EQ(collection.Get(), v.GetXmlCollection().Get());
    EXPECT_EQ(static_cast<CXmlObjectBase *>(collection.Get()), v.GetXmlObject().Get());
    MxVariant copy;
    copy = v;
    EXPECT_EQ(collection.Get(), copy.GetXmlCollection().Get());
    v.SetI4(1);
    copy.SetInvalid();
    EXPECT_FALSE(copy.IsValid());
}

} // namespace
