#include "model/SimpleOrder.h"

#include <gtest/gtest.h>

#include <functional>

using namespace MxXmlLib;
using MxTestModel::CSimpleOrder;

namespace
{
// The helpers are protected statics for generated property setters.
class CSetters : public CSimpleOrder
{
public:
    using CXmlObjectBase::Choice_CollectionChanged;
    using CXmlObjectBase::Choice_SelectElement;
    using CXmlObjectBase::Choice_SetElementValid;
    using CXmlObjectBase::Throw_IfElementNameDiffers;
    using CXmlObjectBase::Throw_IfPropertyIsNull;
};

std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (CMxInvalidStateException const &e)
    {
        return "state: " + e.GetMessage();
    }
    catch (CMxInvalidParamException const &e)
    {
        return "param: " + e.GetMessage();
    }
    return "";
}

char const kBusyB[] =
    "state: The Property [b] is already set. Only one element within this class bay be set at a time";
} // namespace

TEST(PropertyHelpers, MandatoryAndNamedProperties)
{
    Register(16, 1);
    CSmartPtr<CSimpleOrder> order(new CSimpleOrder); // named "order"
    EXPECT_EQ("param: The Property [Customer] is mandatory, it may node be NULL",
              ErrorOf([] { CSetters::Throw_IfPropertyIsNull(nullptr, "Customer"); }));
    EXPECT_EQ("", ErrorOf([&] { CSetters::Throw_IfPropertyIsNull(order, "Customer"); }));
    EXPECT_EQ("", ErrorOf([&] { CSetters::Throw_IfElementNameDiffers(order, "order"); }));
    EXPECT_EQ("", ErrorOf([] { CSetters::Throw_IfElementNameDiffers(nullptr, "order"); }));
    EXPECT_EQ("param: This property requires an element with the name invoice the element being set has the "
              "element name order",
              ErrorOf([&] { CSetters::Throw_IfElementNameDiffers(order, "invoice"); }));
}

TEST(PropertyHelpers, ChoiceBookkeeping)
{
    CSmartPtr<CSimpleOrder> value(new CSimpleOrder);
    struct Case
    {
        char const *name;
        std::function<void(std::string &)> call;
        char const *before;
        char const *after;
        char const *error;
    };
    Case const cases[] = {
        {"select into empty", [&](auto &c) { CSetters::Choice_SelectElement("a", value, c); }, "", "a", ""},
        {"select null into empty still records",
         [](auto &c) { CSetters::Choice_SelectElement("a", nullptr, c); }, "", "a", ""},
        {"select same again", [&](auto &c) { CSetters::Choice_SelectElement("a", value, c); }, "a", "a", ""},
        {"clear own", [](auto &c) { CSetters::Choice_SelectElement("a", nullptr, c); }, "a", "", ""},
        {"null for another leaves", [](auto &c) { CSetters::Choice_SelectElement("a", nullptr, c); }, "b", "b", ""},
        {"second alternative", [&](auto &c) { CSetters::Choice_SelectElement("a", value, c); }, "b", "b", kBusyB},
        {"collection grows from empty", [](auto &c) { CSetters::Choice_CollectionChanged("a", 2, c); }, "", "a", ""},
        {"collection empty stays empty", [](auto &c) { CSetters::Choice_CollectionChanged("a", 0, c); }, "", "", ""},
        {"own collection emptied", [](auto &c) { CSetters::Choice_CollectionChanged("a", 0, c); }, "a", "", ""},
        {"own collection changes", [](auto &c) { CSetters::Choice_CollectionChanged("a", 3, c); }, "a", "a", ""},
        {"other set, empty collection", [](auto &c) { CSetters::Choice_CollectionChanged("a", 0, c); }, "b", "b", ""},
        {"other set, filled collection", [](auto &c) { CSetters::Choice_CollectionChanged("a", 1, c); }, "b", "b",
         kBusyB},
        {"valid false clears", [](auto &c) { CSetters::Choice_SetElementValid(false, "a", c); }, "b", "", ""},
        {"valid true on own", [](auto &c) { CSetters::Choice_SetElementValid(true, "a", c); }, "a", "a", ""},
        {"valid true on empty raises with an empty name",
         [](auto &c) { CSetters::Choice_SetElementValid(true, "a", c); }, "", "",
         "state: The Property  is already set. Only one element within this class bay be set at a time"},
        {"valid true on other", [](auto &c) { CSetters::Choice_SetElementValid(true, "a", c); }, "b", "b",
         "state: The Property b is already set. Only one element within this class bay be set at a time"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        std::string current = c.before;
        EXPECT_EQ(c.error, ErrorOf([&] { c.call(current); }));
        EXPECT_EQ(c.after, current);
    }
}
