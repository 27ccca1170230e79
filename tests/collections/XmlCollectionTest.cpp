#include "collections/CollectionTestSupport.h"
#include "collections/XmlTypeCollection.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using namespace MxCollectionTest;

namespace
{
// Makes the protected list operations reachable, as generated collections do
// under typed names.
class CTestCollection : public CXmlCollection
{
public:
    CTestCollection() = default;
    CTestCollection(char const *name, int minOccurs, int maxOccurs) : CXmlCollection(name, "urn:t", minOccurs, maxOccurs)
    {
    }
    CTestCollection(CTestCollection const &other) = default;

    using CXmlCollection::AddAfterItem;
    using CXmlCollection::AddBeforeItem;
    using CXmlCollection::AddItemAt;
    using CXmlCollection::AppendItem;
    using CXmlCollection::FireOnCollectionRemove;
    using CXmlCollection::FireOnCollectionRemoveComplete;
    using CXmlCollection::GetNodeAtIndex;
    using CXmlCollection::GetTargetNamespace;
    using CXmlCollection::PrependItem;
    using CXmlCollection::AttributesToXml_Int;

    std::string Labels() const
    {
        std::string text;
        for (CNode *node = GetFirstNode(); node; node = node->next)
            text += static_cast<CItem *>(node->item.Get())->Label();
        // The backward links must tell the same story.
        std::string backwards;
        for (CNode *node = GetLastNode(); node; node = node->previous)
            backwards.insert(0, static_cast<CItem *>(node->item.Get())->Label());
        EXPECT_EQ(text, backwards);
        return text;
    }

    ~CTestCollection() override = default;

protected:
    void ToXml_Int(CXmlWriter *, bool, char const *, CSerializationContext const &, bool) const override {}
    CXmlElement *FromXml_Int(CXmlElement *, CXmlElement *cursor, CSerializationContext const &, bool) override
    {
        return cursor;
    }
};

// A collection of strings in the shape of the primitive collections: checks
// its count before it writes, one element per item.
class CTextCollection : public CXmlTypeCollection
{
public:
    CTextCollection(int minOccurs, int maxOccurs)
        : CXmlTypeCollection(ItemType_string, "v", "urn:t", minOccurs, maxOccurs, nullptr, -1, -1, nullptr, nullptr,
                             nullptr, nullptr, -1, -1, -1, CWhitespaceUtils::WhitespaceRule::Preserve, nullptr)
    {
    }
    std::vector<std::string> items;

    int GetCount() const override { return static_cast<int>(items.size()); }
    void Clear() override { items.clear(); }
    void Remove(int index) override { items.erase(items.begin() + index); }
    using CXmlTypeCollection::FromXml_Int;

protected:
    ~CTextCollection() override = default;
    void AddFromString(std::string text) override { items.push_back(text); }
    void ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &context,
                   bool) const override
    {
        ValidateCount(context);
        for (auto const &item : items)
        {
            writer->StartElement(GetElementName(), GetNamespace());
            writer->WriteText(item, ItemType_string, false);
            writer->EndElement();
        }
    }
};

// A generated-shape owner of a choice over a collection.
class CChoiceOwner : public CItem
{
public:
    CChoiceOwner() : CItem("owner") {}
    static void Read(CXmlCollectionBase *collection, CXmlElement *element, CXmlElement *&cursor, int &count,
                     CSerializationContext const &context)
    {
        Choice_Read_Collection(collection, element, cursor, count, context);
    }
};

class Collections : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

using Op = std::function<void(CTestCollection &, std::vector<CSmartPtr<CItem>> const &)>;

struct AddCase
{
    char const *name;
    Op op;
    char const *labels;
    std::vector<std::string> events;
};
} // namespace

TEST_F(Collections, EveryAddFormPlacesTheItemAndTellsTheListenersInOrder)
{
    // The collection starts as "ab"; the new item is "n".
    AddCase const cases[] = {
        {"append", [](auto &c, auto const &) { c.AppendItem(new CItem("n")); }, "abn", {}},
        {"prepend", [](auto &c, auto const &) { c.PrependItem(new CItem("n")); }, "nab", {}},
        {"after a", [](auto &c, auto const &it) { c.AddAfterItem(it[0], new CItem("n")); }, "anb", {}},
        {"after b", [](auto &c, auto const &it) { c.AddAfterItem(it[1], new CItem("n")); }, "abn", {}},
        {"after null", [](auto &c, auto const &) { c.AddAfterItem(nullptr, new CItem("n")); }, "nab", {}},
        {"before a", [](auto &c, auto const &it) { c.AddBeforeItem(it[0], new CItem("n")); }, "nab", {}},
        {"before b", [](auto &c, auto const &it) { c.AddBeforeItem(it[1], new CItem("n")); }, "anb", {}},
        {"before null", [](auto &c, auto const &) { c.AddBeforeItem(nullptr, new CItem("n")); }, "abn", {}},
        {"at 0", [](auto &c, auto const &) { c.AddItemAt(0, new CItem("n")); }, "nab", {}},
        {"at 1", [](auto &c, auto const &) { c.AddItemAt(1, new CItem("n")); }, "anb", {}},
        {"at count", [](auto &c, auto const &) { c.AddItemAt(2, new CItem("n")); }, "abn", {}},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        CRecorder recorder; // outlives the collection, which tells it of its end
        CSmartPtr<CTestCollection> collection(new CTestCollection);
        std::vector<CSmartPtr<CItem>> items{new CItem("a"), new CItem("b")};
        collection->AppendItem(items[0]);
        collection->AppendItem(items[1]);
        collection->AddEventListener(&recorder);
        c.op(*collection, items);
        EXPECT_EQ(c.labels, collection->Labels());
        EXPECT_EQ(3, collection->GetCount());
        EXPECT_EQ((std::vector<std::string>{"add n", "addComplete n", "change"}), recorder.events);
        for (CXmlObjectBase *source : recorder.sources)
            EXPECT_EQ(collection.Get(), source);
    }
}

TEST_F(Collections, RemovalsTellThatSomethingWentButNotWhat)
{
    int destroyed = 0;
    CRecorder recorder;
    {
        CSmartPtr<CTestCollection> collection(new CTestCollection);
        for (char const *label : {"a", "b", "c", "d"})
            collection->AppendItem(new CItem(label, &destroyed));
        collection->AddEventListener(&recorder);
        collection->Remove(1);
        EXPECT_EQ("acd", collection->Labels());
        EXPECT_EQ(1, destroyed);
        EXPECT_EQ((std::vector<std::string>{"remove -", "removeComplete -", "change"}), recorder.events);
        collection->Remove(2);
        collection->Clear();
        EXPECT_EQ("", collection->Labels());
        EXPECT_EQ(4, destroyed);
        EXPECT_EQ(12u, recorder.events.size());
        collection->AppendItem(new CItem("e", &destroyed));
        recorder.events.clear();
    }
    // The destructor empties the list the same way, one set of events per item.
    EXPECT_EQ(5, destroyed);
    EXPECT_EQ((std::vector<std::string>{"remove -", "removeComplete -", "change"}), recorder.events);
}

TEST_F(Collections, FailedLookupsLeaveTheListAsItWas)
{
    struct FailCase
    {
        char const *name;
        Op op;
        char const *message;
        std::vector<std::string> events;
    };
    FailCase const cases[] = {
        {"after a stranger", [](auto &c, auto const &it) { c.AddAfterItem(it[2], it[3]); },
         "The object was not found in the collection", {"add n"}},
        {"before a stranger", [](auto &c, auto const &it) { c.AddBeforeItem(it[2], it[3]); },
         "The object was not found in the collection", {"add n"}},
        {"at -1", [](auto &c, auto const &it) { c.AddItemAt(-1, it[3]); }, "Index out of range", {}},
        {"at count + 1", [](auto &c, auto const &it) { c.AddItemAt(3, it[3]); }, "Index out of range", {}},
        {"remove -1", [](auto &c, auto const &) { c.Remove(-1); }, "Index -1 is out of range, use 0 - 2", {}},
        {"remove count", [](auto &c, auto const &) { c.Remove(2); }, "Index 2 is out of range, use 0 - 2", {}},
        {"node at count", [](auto &c, auto const &) { c.GetNodeAtIndex(2); }, "Index 2 is out of range, use 0 - 2",
         {}},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        CRecorder recorder;
        CSmartPtr<CTestCollection> collection(new CTestCollection);
        std::vector<CSmartPtr<CItem>> items{new CItem("a"), new CItem("b"), new CItem("x"), new CItem("n")};
        collection->AppendItem(items[0]);
        collection->AppendItem(items[1]);
        collection->AddEventListener(&recorder);
        EXPECT_EQ(c.message, ErrorOf<CMxInvalidParamException>([&] { c.op(*collection, items); }));
        EXPECT_EQ("ab", collection->Labels());
        EXPECT_EQ(2, collection->GetCount());
        EXPECT_EQ(c.events, recorder.events);
    }
    CSmartPtr<CTestCollection> empty(new CTestCollection);
    EXPECT_EQ("Index 0 is out of range, use 0 - 0", ErrorOf([&] { empty->Remove(0); }));
}

TEST_F(Collections, ListenersHearOncePerEntryAndLeaveAtOnce)
{
    CRecorder twice, once;
    CSmartPtr<CTestCollection> collection(new CTestCollection);
    collection->AddEventListener(&twice);
    collection->AddEventListener(&once);
    collection->AddEventListener(&twice);
    collection->RemoveEventListener(nullptr); // unknown: no error
    CSmartPtr<CItem> item(new CItem("a"));
    collection->AppendItem(item);
    EXPECT_EQ(6u, twice.events.size());
    EXPECT_EQ(3u, once.events.size());
    collection->RemoveEventListener(&twice);
    collection->Remove(0);
    EXPECT_EQ(6u, twice.events.size());
    EXPECT_EQ(6u, once.events.size());

    // The index forms hand out a pointer to the index, and null for -1.
    collection->FireOnCollectionRemove(5);
    collection->FireOnCollectionRemoveComplete(0);
    collection->FireOnCollectionRemove(-1);
    EXPECT_EQ((std::vector<std::string>{"remove 5", "removeComplete 0", "remove -"}),
              std::vector<std::string>(once.events.end() - 3, once.events.end()));
}

TEST_F(Collections, CountBoundsDecideValidity)
{
    struct BoundCase
    {
        int minOccurs, maxOccurs, count;
        char const *message; // of ValidateCount; null when valid
    };
    BoundCase const cases[] = {
        {0, -1, 0, nullptr},
        {0, -1, 5, nullptr},
        {0, 0, 0, nullptr},
        {0, 0, 1, "The Maximum number of [v] elements allowed in this collection is 0"},
        {1, 2, 0, "The Minimum number of [v] elements allowed in this collection is 1"},
        {1, 2, 2, nullptr},
        {1, 2, 3, "The Maximum number of [v] elements allowed in this collection is 2"},
        // The maximum is tested first, even when the bounds contradict each other.
        {3, 1, 2, "The Maximum number of [v] elements allowed in this collection is 1"},
        {3, -1, 2, "The Minimum number of [v] elements allowed in this collection is 3"},
    };
    CSerializationContext strict, lenient;
    lenient.SetIgnoreInvalidCollectionCounts(true);
    for (auto const &c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.minOccurs << ".." << c.maxOccurs << " with " << c.count);
        CSmartPtr<CTestCollection> collection(new CTestCollection("v", c.minOccurs, c.maxOccurs));
        for (int i = 0; i < c.count; ++i)
            collection->AppendItem(new CItem("i"));
        EXPECT_EQ(c.message == nullptr, collection->IsValidCount(strict));
        EXPECT_EQ(c.message ? c.message : "no error",
                  ErrorOf<CMxValidationException>([&] { collection->ValidateCount(strict); }));
        EXPECT_TRUE(collection->IsValidCount(lenient));
        EXPECT_EQ("no error", ErrorOf([&] { collection->ValidateCount(lenient); }));
    }
}

TEST_F(Collections, BoundsAreCheckedOnWriteUnlessIgnored)
{
    CSerializationContext lenient;
    lenient.SetIgnoreInvalidCollectionCounts(true);
    auto write = [](CXmlObjectBase const *collection, CSerializationContext const &context) {
        CTextStream stream;
        CXmlTextWriter writer(&stream);
        writer.SetFormatted(false);
        writer.StartElement("r", "");
        CXmlObjectBase::ToXml_Int(collection, &writer, false, "", context, false);
        writer.EndElement();
        return std::string(stream.Text());
    };
    CSmartPtr<CTextCollection> few(new CTextCollection(2, 3));
    few->items = {"x"};
    EXPECT_EQ("The Minimum number of [v] elements allowed in this collection is 2",
              ErrorOf<CMxValidationException>([&] { write(few, CSerializationContext::GetDefaultContext()); }));
    EXPECT_EQ("<r><AA:v xmlns:AA=\"urn:t\">x</AA:v></r>", write(few, lenient));
    CSmartPtr<CTextCollection> many(new CTextCollection(0, 1));
    many->items = {"x", "y"};
    EXPECT_EQ("The Maximum number of [v] elements allowed in this collection is 1",
              ErrorOf<CMxValidationException>([&] { write(many, CSerializationContext::GetDefaultContext()); }));
    EXPECT_EQ("<r><AA:v xmlns:AA=\"urn:t\">x</AA:v><AA:v xmlns:AA=\"urn:t\">y</AA:v></r>", write(many, lenient));
    // A plain collection has no root namespace of its own.
    EXPECT_EQ("CXmlCollectionBase::GetTargetNamespace Should not be used from within a Collection (program logic "
              "error)",
              ErrorOf([&] { many->ToXml(false, false, LF, lenient); }));
}

TEST_F(Collections, TypedItemsAreReadFromARunOfMatchingSiblings)
{
    CXmlDocument document;
    document.LoadXml("<r xmlns='urn:t'><v>1</v><v> 2 </v><w/><v>3</v></r>");
    CXmlElement *root = document.GetDocumentElement();
    CSmartPtr<CTextCollection> collection(new CTextCollection(0, -1));
    CXmlElement *next = collection->FromXml_Int(root, root->GetFirstElement(), CSerializationContext::GetDefaultContext(),
                                                false);
    EXPECT_EQ((std::vector<std::string>{"1", " 2 "}), collection->items);
    ASSERT_NE(nullptr, next);
    EXPECT_EQ("w", next->GetLocalName());
    EXPECT_EQ(nullptr, collection->FromXml_Int(root, nullptr, CSerializationContext::GetDefaultContext(), false));

    // Another namespace stops the run unless namespaces are ignored.
    document.LoadXml("<r><v>1</v></r>");
    root = document.GetDocumentElement();
    EXPECT_EQ(root->GetFirstElement(),
              collection->FromXml_Int(root, root->GetFirstElement(), CSerializationContext::GetDefaultContext(), false));
    CSerializationContext ignoring;
    ignoring.SetIgnoreNamespaces(true);
    EXPECT_EQ(nullptr, collection->FromXml_Int(root, root->GetFirstElement(), ignoring, false));
    EXPECT_EQ(3u, collection->items.size());
}

TEST_F(Collections, AChoiceReadsItsCollectionOnceAndChecksTheCount)
{
    CXmlDocument document;
    document.LoadXml("<r xmlns='urn:t'><v>1</v><v>2</v><v>3</v><w/></r>");
    CXmlElement *root = document.GetDocumentElement();
    CSerializationContext lenient;
    lenient.SetIgnoreInvalidCollectionCounts(true);
    struct ChoiceCase
    {
        int maxOccurs;
        int countBefore;
        CSerializationContext const *context;
        char const *error;
        int countAfter;
        std::size_t items;
    };
    ChoiceCase const cases[] = {
        {-1, 0, &CSerializationContext::GetDefaultContext(), "no error", 1, 3},
        {2, 0, &CSerializationContext::GetDefaultContext(),
         "The Maximum number of [v] elements allowed in this collection is 2", 0, 3},
        {2, 0, &lenient, "no error", 1, 3},
        {-1, 1, &CSerializationContext::GetDefaultContext(), "no error", 1, 0},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.maxOccurs << " " << c.countBefore);
        CSmartPtr<CTextCollection> collection(new CTextCollection(0, c.maxOccurs));
        CXmlElement *cursor = root->GetFirstElement();
        int count = c.countBefore;
        EXPECT_EQ(c.error, ErrorOf([&] { CChoiceOwner::Read(collection, root, cursor, count, *c.context); }));
        EXPECT_EQ(c.countAfter, count);
        EXPECT_EQ(c.items, collection->items.size());
        if (c.items > 0)
            EXPECT_EQ("w", cursor->GetLocalName()); // moved before the check
    }
}

TEST_F(Collections, CopiesShareOneChain)
{
    int destroyed = 0;
    CSmartPtr<CTestCollection> original(new CTestCollection("v", 1, 4));
    original->AppendItem(new CItem("a", &destroyed));
    {
        CSmartPtr<CTestCollection> copy(new CTestCollection(*original));
        copy->Release(); // the copy took over the source's count as well
        copy->AppendItem(new CItem("b", &destroyed));
        EXPECT_EQ("ab", original->Labels());
        EXPECT_EQ(4, copy->GetMaxOccurs());
    }
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(2, original->GetCount());
    original.Release();
    EXPECT_EQ(2, destroyed);
}

TEST_F(Collections, InlineItemsBringTheirAttributesToTheParent)
{
    CSmartPtr<CTestCollection> collection(new CTestCollection);
    collection->AppendItem(new CItem("a"));
    collection->AppendItem(new CItem("b"));
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.StartElement("p", "");
    collection->AttributesToXml_Int(&writer, CSerializationContext::GetDefaultContext());
    writer.EndElement();
    EXPECT_EQ("<p a=\"1\" b=\"1\"/>\n", std::string(stream.Text()));
}
