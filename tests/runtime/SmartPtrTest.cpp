#include "binding/XmlObjectBase.h"
#include "collections/XmlCollectionBase.h"
#include "runtime/SmartPtr.h"
#include "support/CountedObject.h"

#include <gtest/gtest.h>

#include <vector>

using namespace MxXmlLib;

namespace
{
using MxTestSupport::CCounted;

class CTestCollection : public CXmlCollectionBase
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

struct Event
{
    CXmlObjectBase *source;
    IEventSink::MsgType type;
    void *data;
    int index; // *data when it is an index
};

class CRecorder : public IEventSink
{
public:
    void OnEvent(CXmlObjectBase *source, MsgType type, void *data) override
    {
        bool const isIndex = type == MsgCollectionRemove || type == MsgCollectionRemoveComplete;
        events.push_back({source, type, data, isIndex && data ? *static_cast<int *>(data) : 0});
    }
    CXmlObjectBase *GetBase() override { return nullptr; }
    std::vector<Event> events;
};
} // namespace

TEST(SmartPtr, CountingRules)
{
    int deaths = 0;
    auto *object = new CCounted(&deaths);
    EXPECT_EQ(1, object->AddRef()); // new gives no reference
    EXPECT_EQ(2, object->AddRef());
    EXPECT_EQ(1, object->Release());
    EXPECT_EQ(0, object->Release()); // from 1 to 0 deletes
    EXPECT_EQ(1, deaths);

    {
        CSmartPtr<CCounted> a(new CCounted(&deaths));
        EXPECT_EQ(1, a->Count());
        CSmartPtr<CCounted> b(a);
        EXPECT_EQ(2, a->Count());
        a = a; // self-assignment keeps the object and the count
        EXPECT_EQ(2, a->Count());
        b = nullptr;
        EXPECT_EQ(1, a->Count());
        CSmartPtr<CXmlObjectBase> base(a);
        EXPECT_EQ(2, a->Count());
        EXPECT_FALSE(base.IsNull());
        EXPECT_EQ(1, deaths);
    }
    EXPECT_EQ(2, deaths);

    CSmartPtr<CCounted> empty;
    EXPECT_TRUE(empty.IsNull());
    EXPECT_TRUE(empty == nullptr);
}

TEST(SmartPtr, AssignmentReleasesTheOldObjectLast)
{
    int deaths = 0;
    CSmartPtr<CCounted> a(new CCounted(&deaths));
    CSmartPtr<CCounted> b(new CCounted(&deaths));
    a = b;
    EXPECT_EQ(1, deaths);
    EXPECT_EQ(2, b->Count());
}

TEST(SmartPtr, CopyOfACountedObjectTakesItsCount)
{
    int deaths = 0;
    CSmartPtr<CCounted> a(new CCounted(&deaths));
    a->SetElementName("x");
    CSmartPtr<CCounted> b(new CCounted(&deaths));
    CXmlObjectBase &target = *b;
    target = *a; // copies name and count
    EXPECT_EQ("x", b->GetElementName());
    EXPECT_EQ(1, b->Count());
}

TEST(SmartPtr, CollectionEventsReachTheSink)
{
    CSmartPtr<CTestCollection> collection(new CTestCollection);
    CRecorder sink;
    int item = 7;
    CXmlObjectBase::FireOnCollectionChangeEvent(&sink, collection);
    CXmlObjectBase::FireOnCollectionAddEvent(&sink, collection, &item);
    CXmlObjectBase::FireOnCollectionAddCompleteEvent(&sink, collection, &item);
    CXmlObjectBase::FireOnCollectionRemoveEvent(&sink, collection, 3);
    CXmlObjectBase::FireOnCollectionRemoveCompleteEvent(&sink, collection, 4);
    CXmlObjectBase::FireOnCollectionRemoveEvent(&sink, collection, -1);
    CXmlObjectBase::FireOnCollectionRemoveCompleteEvent(&sink, collection, -1);

    struct Expected
    {
        IEventSink::MsgType type;
        void *data;
        int index;
    };
    Expected const expected[] = {
        {IEventSink::MsgCollectionChange, nullptr, 0},
        {IEventSink::MsgCollectionAdd, &item, 0},
        {IEventSink::MsgCollectionAddComplete, &item, 0},
        {IEventSink::MsgCollectionRemove, nullptr, 3},
        {IEventSink::MsgCollectionRemoveComplete, nullptr, 4},
        {IEventSink::MsgCollectionRemove, nullptr, 0},
        {IEventSink::MsgCollectionRemoveComplete, nullptr, 0},
    };
    ASSERT_EQ(std::size(expected), sink.events.size());
    for (std::size_t i = 0; i < std::size(expected); ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(collection.Get(), sink.events[i].source);
        EXPECT_EQ(expected[i].type, sink.events[i].type);
        EXPECT_EQ(expected[i].index, sink.events[i].index);
        if (i < 3)
            EXPECT_EQ(expected[i].data, sink.events[i].data);
        else if (i < 5)
            EXPECT_NE(nullptr, sink.events[i].data);
        else
            EXPECT_EQ(nullptr, sink.events[i].data); // index -1 passes null
    }
}
