#include "runtime/MxException.h"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

using namespace MxXmlLib;

namespace
{
// Clone is protected; the inner exception shows its dynamic class.
template <typename T> bool InnerIs(CMxException const &e)
{
    return e.GetInnerException() && typeid(*e.GetInnerException()) == typeid(T);
}
} // namespace

TEST(MxException, PathIsAppendedToTheMessage)
{
    struct Case
    {
        char const *message;
        char const *path;
        char const *expectedMessage;
    };
    Case const cases[] = {
        {"a", "b", "a\nPath: b"},
        {"a", "", "a"},
        {"", "/x/y[2]", "\nPath: /x/y[2]"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.expectedMessage);
        CMxException plain(c.message, std::string(c.path));
        EXPECT_EQ(c.expectedMessage, plain.GetMessage());
        EXPECT_EQ(c.path, plain.GetPath());
        CMxValidationException validation(c.message, c.path);
        EXPECT_EQ(c.expectedMessage, validation.GetMessage());
        CMxInvalidNamespaceException ns(c.message, c.path);
        EXPECT_EQ(c.expectedMessage, ns.GetMessage());
    }
    EXPECT_EQ("v", CMxInvalidValueException("v").GetMessage());
    EXPECT_EQ("", CMxInvalidValueException("v").GetPath());
}

TEST(MxException, FullMessageWalksTheChain)
{
    CMxException inner("inner");
    CMxInvalidValueException middle("middle", inner);
    CMxValidationException outer("outer", "/a/b", middle);
    EXPECT_EQ("outer\nPath: /a/b\nmiddle\ninner", outer.GetFullMessage());
    EXPECT_TRUE(InnerIs<CMxInvalidValueException>(outer));
    EXPECT_TRUE(InnerIs<CMxException>(*outer.GetInnerException()));
    EXPECT_EQ(nullptr, inner.GetInnerException());
}

TEST(MxException, InnerExceptionIsClonedWithItsClass)
{
    std::unique_ptr<CMxException> copy;
    {
        CMxOverFlowException cause("too big");
        CMxException wrapper("wrapped", cause);
        copy = std::make_unique<CMxException>(wrapper);
    }
    // The copy outlives both originals: its inner exception is its own clone.
    ASSERT_TRUE(InnerIs<CMxOverFlowException>(*copy));
    EXPECT_EQ("wrapped\ntoo big", copy->GetFullMessage());

    struct Named
    {
        char const *name;
        std::unique_ptr<CMxException> cause;
    };
    Named causes[] = {
        {"state", std::make_unique<CMxInvalidStateException>("s")},
        {"param", std::make_unique<CMxInvalidParamException>("p")},
        {"value", std::make_unique<CMxInvalidValueException>("v")},
        {"namespace", std::make_unique<CMxInvalidNamespaceException>("n", "")},
        {"validation", std::make_unique<CMxValidationException>("w", "")},
    };
    for (auto const &c : causes)
    {
        SCOPED_TRACE(c.name);
        CMxException wrapper("w", *c.cause);
        ASSERT_NE(nullptr, wrapper.GetInnerException());
        EXPECT_EQ(typeid(*c.cause), typeid(*wrapper.GetInnerException()));
    }
}

TEST(MxException, ConversionFromBaseKeepsMessagePathAndInner)
{
    CMxException source("m", "/p", CMxException("cause"));
    CMxInvalidStateException state(source);
    CMxInvalidValueException value(source);
    for (CMxException const *e : {static_cast<CMxException const *>(&state), static_cast<CMxException const *>(&value)})
    {
        EXPECT_EQ("m\nPath: /p", e->GetMessage());
        EXPECT_EQ("/p", e->GetPath());
        EXPECT_EQ("m\nPath: /p\ncause", e->GetFullMessage());
    }
}

TEST(MxException, AssignmentKeepsThePathButTakesMessageAndCause)
{
    CMxException target("old", "/old");
    CMxException source("new", "/new", CMxInvalidValueException("why"));
    target = source;
    EXPECT_EQ("new\nPath: /new", target.GetMessage());
    EXPECT_EQ("/old", target.GetPath());
    EXPECT_TRUE(InnerIs<CMxInvalidValueException>(target));

    target = target; // self-assignment keeps a valid cause
    EXPECT_EQ("new\nPath: /new\nwhy", target.GetFullMessage());

    target = CMxException("plain");
    EXPECT_EQ(nullptr, target.GetInnerException());
}

TEST(MxException, RethrowThroughTheBaseSlicesTheClass)
{
    try
    {
        try
        {
            throw CMxInvalidValueException("bad");
        }
        catch (CMxException const &e)
        {
            throw CMxException(e);
        }
    }
    catch (CMxInvalidValueException const &)
    {
        FAIL() << "the derived class should be lost";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("bad", e.GetMessage());
    }
}
