#include "collections/CollectionTestSupport.h"
#include "collections/Element.h"

#include <gtest/gtest.h>

using namespace MxXmlLib;
using namespace MxCollectionTest;

namespace
{
class Untyped : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

// A bound object of the generated shape: <note to=".." m:id=".."><body>..</body></note>.
class CNote : public CXmlObjectBase
{
public:
    std::string to = "Ann", id = "1", body = "Hi";
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return "urn:notes"; }

protected:
    ~CNote() override = default;
    std::string GetTargetNamespace() const override { return "urn:notes"; }
    void ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &, bool) const override
    {
        writer->StartElement("note", "urn:notes");
        writer->WriteAttribute("to", "", to, ItemType_string);
        writer->WriteAttribute("id", "urn:meta", id, ItemType_string);
        writer->StartElement("body", "urn:notes");
        writer->WriteText(body, ItemType_string, false);
        writer->EndElement();
        writer->EndElement();
    }
    CXmlElement *FromXml_Int(CXmlElement *element, CXmlElement *cursor, CSerializationContext const &context,
                             bool) override
    {
        if (!DoesElementNameMatch(context, element, "note", "urn:notes"))
            throw CMxValidationException("not a note", element->GetXPath());
        to = element->GetAttribute("to", "");
        id = element->GetAttribute("id", "urn:meta");
        body = cursor && DoesElementNameMatch(context, cursor, "body", "urn:notes") ? cursor->GetText() : "?";
        return nullptr;
    }
};

// Lets a copy live on the stack, where its borrowed count does not matter.
class CStackElement : public CElement
{
public:
    explicit CStackElement(CElement const &other) : CElement(other) {}
    ~CStackElement() override = default;
};

std::string Xml(CXmlObjectBase const *object, bool formatted = false)
{
    return object->ToXml(false, formatted, LF, CSerializationContext::GetDefaultContext());
}

std::string Children(CElement const *element)
{
    std::string names;
    for (CElement const *child : *element->GetChildElements())
        names += child->GetName() + "{" + child->GetNamespace() + "}";
    return names;
}
} // namespace

TEST_F(Untyped, ConstructorsCheckTheirStringsInOrder)
{
    struct Case
    {
        char const *name;
        std::function<void()> make;
        char const *message;
    };
    auto make = [](auto... args) { return [=] { CSmartPtr<CElement> e(new CElement(args...)); }; };
    Case const cases[] = {
        {"keyword ##any", make("a", "##any"), "Invalid Namespace [##any]."},
        {"keyword ##other", make("a", "##other"), "Invalid Namespace [##other]."},
        {"keyword ##local", make("a", "##local"), "Invalid Namespace [##local]."},
        {"keyword ##targetNamespace", make("a", "##targetNamespace"), "Invalid Namespace [##targetNamespace]."},
        {"null name", make(static_cast<char const *>(nullptr)), "Element Name must have a value"},
        {"all null", make(nullptr, nullptr, nullptr, nullptr), "Element Name must have a value"},
        {"null namespace as its own restriction", make("a", static_cast<char const *>(nullptr)),
         "Namespace Restriction must have a value"},
        {"null restriction", make("a", "u", nullptr, ""), "Namespace Restriction must have a value"},
        {"null target", make("a", "u", "##any", nullptr), "Target Namespace must have a value"},
        {"restriction refuses", make("a", "urn:b", "urn:a", "urn:t"),
         "Invalid namespace [urn:b]. The namespace must be one of [urn:a] where the target namespace is [urn:t]."},
        {"##any with no namespace", make("a", "", "##any", ""), "no error"},
        {"a literal URI", make("a", "urn:x"), "no error"},
        {"keyword in four arguments", make("a", "##any", "##any", ""), "no error"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.message, ErrorOf<CMxInvalidNamespaceException>(c.make));
    }
}

TEST_F(Untyped, ChildrenAreFreeOfTheElementsRestriction)
{
    CSmartPtr<CElement> element(new CElement("a", "urn:x"));
    EXPECT_EQ("urn:x", element->GetNamespaceRestriction());
    EXPECT_EQ("##any", element->GetChildElements()->GetNamespaceRestriction());
    CSmartPtr<CElement> child = element->GetChildElements()->Add("b", "urn:other");
    EXPECT_EQ("urn:other", child->GetNamespace());
    element->GetChildElements()->Add("c");
    EXPECT_EQ("b{urn:other}c{urn:x}", Children(element));
    // A collection's own restriction is tested once, against its namespace.
    CSmartPtr<CElementCol> col(new CElementCol("urn:a", "##other", "urn:t", 5, 7));
    EXPECT_EQ(0, col->GetMinOccurs());
    EXPECT_EQ(-1, col->GetMaxOccurs());
    EXPECT_EQ("urn:t", col->GetNamespace());
    col->Add("x", "urn:t");
    EXPECT_EQ("Invalid namespace [urn:t]. The namespace must be one of [##other] where the target namespace is "
              "[urn:t].",
              ErrorOf([] { CSmartPtr<CElementCol> bad(new CElementCol("urn:t", "##other", "urn:t", 0, -1)); }));
}

TEST_F(Untyped, CollectionNamespacesComeFromTheWildcardInMirrorImage)
{
    struct Case
    {
        char const *uri, *restriction;
        char const *attributeNamespace; // of CAttributeCol
        char const *itemNamespace;      // of CElementCol
    };
    Case const cases[] = {
        {"", "##any", "", "##any"},
        {"", "##other urn:x", "", "##other urn:x"},
        {"", "urn:a urn:b", "urn:a", ""},
        {"", "urn:a", "urn:a", ""},
        {"", "u", "", ""},
        {"", "a#", "", ""},
        {"", "#a", "", ""},
        {"", "", "", ""},
        {"urn:x", "##any", "urn:x", "urn:x"},
    };
    for (auto const &c : cases)
    {
        SCOPED_TRACE(testing::Message() << "[" << c.uri << "] [" << c.restriction << "]");
        CSmartPtr<CAttributeCol> attributes(new CAttributeCol(c.uri, c.restriction, ""));
        EXPECT_EQ(c.attributeNamespace, attributes->GetNamespace());
        EXPECT_EQ(c.restriction, attributes->GetNamespaceRestriction());
        CSmartPtr<CElementCol> elements(new CElementCol(c.uri, "##any", "", 0, -1));
        CSmartPtr<CElementCol> keyed(new CElementCol(c.uri, c.restriction, c.uri, 0, -1));
        EXPECT_EQ(c.itemNamespace, keyed->GetItemNamespace());
        if (*c.itemNamespace)
            EXPECT_EQ(c.itemNamespace, keyed->Add("n")->GetNamespace());
        else
            EXPECT_EQ("A Namespace has not been set for this Collection",
                      ErrorOf<CMxInvalidStateException>([&] { keyed->Add("n"); }));
    }
}

TEST_F(Untyped, AttributesAddedByNameMeetTheWildcard)
{
    CSmartPtr<CAttributeCol> col(new CAttributeCol("", "urn:a", "urn:t"));
    EXPECT_EQ("Invalid namespace [urn:b]. The namespace must be one of [urn:a] where the target namespace is [urn:t].",
              ErrorOf<CMxInvalidNamespaceException>([&] { col->Add("x", "1", "urn:b"); }));
    col->Add("x", "1", "urn:a");
    col->Add("y", "2"); // the collection's namespace, urn:a
    col->Add("z");
    ASSERT_EQ(3, col->GetCount());
    EXPECT_EQ("urn:a", col->Item(1)->GetNamespace());
    EXPECT_EQ("", col->Item(2)->GetValue());
    // An attribute object goes in untested, wherever it is put.
    CSmartPtr<CAttribute> stranger = col->Item(0)->Clone();
    stranger->SetNamespace("urn:elsewhere");
    col->AddBefore(col->Item(0), stranger);
    col->AddAfter(stranger, col->Item(2)->Clone());
    std::string names;
    for (CAttribute const *a : *col)
        names += a->GetName() + "=" + a->GetValue() + "{" + a->GetNamespace() + "} ";
    EXPECT_EQ("x=1{urn:elsewhere} y=2{urn:a} x=1{urn:a} y=2{urn:a} z={urn:a} ", names);
    EXPECT_EQ("This should be done by the collection",
              ErrorOf([&] { CXmlObjectBase::FromXml_Int(stranger, nullptr, nullptr, CSerializationContext::GetDefaultContext()); }));
}

TEST_F(Untyped, ReadsADocumentElementWithTextAttributesAndChildren)
{
    CSmartPtr<CElement> element(new CElement("placeholder"));
    element->FromXml("<a xmlns='urn:a' xmlns:p='urn:p' p:x='1' y='2'>text<b/>more<c><d xmlns=''/></c></a>");
    EXPECT_EQ("a", element->GetName());
    EXPECT_EQ("urn:a", element->GetNamespace());
    EXPECT_EQ("textmore", element->GetText());
    EXPECT_EQ("b{urn:a}c{urn:a}", Children(element));
    EXPECT_EQ("d{}", Children(element->GetChildElements()->Item(1)));
    auto attributes = element->GetAttributes();
    ASSERT_EQ(2, attributes->GetCount());
    EXPECT_EQ("x", attributes->Item(0)->GetName());
    EXPECT_EQ("urn:p", attributes->Item(0)->GetNamespace());
    EXPECT_EQ("2", attributes->Item(1)->GetValue());

    // An element whose namespace fails the restriction is left unread.
    CSmartPtr<CElement> strict(new CElement("z", "urn:z"));
    strict->FromXml("<a xmlns='urn:a'><b/></a>");
    EXPECT_EQ("z", strict->GetName());
    EXPECT_EQ("urn:z", strict->GetNamespace());
    EXPECT_EQ(0, strict->GetChildElements()->GetCount());
    // A literal restriction lets the empty namespace through.
    strict->FromXml("<a>t</a>");
    EXPECT_EQ("a", strict->GetName());
    EXPECT_EQ("", strict->GetNamespace());
    EXPECT_EQ("t", strict->GetText());
}

TEST_F(Untyped, AttributesInAForeignNamespaceAreRefusedWithThePath)
{
    CXmlDocument document;
    document.LoadXml("<r xmlns:p='urn:p' xmlns:q='urn:q'><p:e a='1' q:b='2' c='3'/></r>");
    CXmlElement *e = document.GetDocumentElement()->GetFirstElement();
    CSmartPtr<CAttributeCol> col(new CAttributeCol("", "##local", ""));
    std::string path;
    EXPECT_EQ("Invalid Attribute [b]. The attributes namespace is Inappropriate.\nPath: /r/p:e",
              ErrorOf<CMxInvalidNamespaceException>(
                  [&] { CXmlObjectBase::FromXml_Int(col, e, nullptr, CSerializationContext::GetDefaultContext()); }));
    EXPECT_EQ(1, col->GetCount()); // what came before the failure stays
    CSmartPtr<CAttributeCol> open(new CAttributeCol("", "##any", ""));
    EXPECT_EQ(e, CXmlObjectBase::FromXml_Int(open, e, e, CSerializationContext::GetDefaultContext()));
    EXPECT_EQ(3, open->GetCount());
}

TEST_F(Untyped, ARunOfEqualNamesIsReadUnderALock)
{
    CXmlDocument document;
    document.LoadXml("<r xmlns:x='urn:x'><x:a>1</x:a><x:a>2</x:a><a/><x:a/></r>");
    CXmlElement *root = document.GetDocumentElement();
    CSmartPtr<CElementCol> col(new CElementCol("", "##any", "urn:t", 0, -1));
    CXmlElement *next = col->FromXmlLockElementName_Int("a", "urn:x", root, root->GetFirstElement(),
                                                        CSerializationContext::GetDefaultContext());
    ASSERT_NE(nullptr, next);
    EXPECT_EQ("", next->GetNamespaceURI());
    ASSERT_EQ(2, col->GetCount());
    EXPECT_EQ("2", col->Item(1)->GetText());
    // Without the lock the collection takes every sibling.
    EXPECT_EQ(nullptr, CXmlObjectBase::FromXml_Int(col, root, root->GetFirstElement(),
                                                    CSerializationContext::GetDefaultContext()));
    EXPECT_EQ(6, col->GetCount());
}

TEST_F(Untyped, WritesItsOwnNameAndNamespaceAttributesChildrenThenText)
{
    CSmartPtr<CElement> root(new CElement("root", "urn:r"));
    root->GetAttributes()->Add("id", "7", "");
    root->GetAttributes()->Add("lang", "en", "http://www.w3.org/XML/1998/namespace");
    root->GetChildElements()->Add("c", "urn:c")->SetText("a<b");
    root->GetChildElements()->Add("d", "");
    root->SetText("t");
    EXPECT_EQ("<AA:root xmlns:AA=\"urn:r\" id=\"7\" xml:lang=\"en\"><AB:c xmlns:AB=\"urn:c\">a&lt;b</AB:c><d/>t"
              "</AA:root>",
              Xml(root));
    EXPECT_EQ("<AA:root xmlns:AA=\"urn:r\" id=\"7\" xml:lang=\"en\">\n\t<AB:c xmlns:AB=\"urn:c\">a&lt;b</AB:c>\n"
              "\t<d/>\nt</AA:root>\n",
              Xml(root, true));
}

TEST_F(Untyped, CloneIsSeparateAndCopiesShare)
{
    CSmartPtr<CElement> original(new CElement("a", "urn:a"));
    original->SetText("x");
    original->GetAttributes()->Add("k", "v", "");
    original->GetChildElements()->Add("b")->GetChildElements()->Add("c");
    CSmartPtr<CElement> clone = original->Clone();
    EXPECT_EQ(Xml(original), Xml(clone));
    EXPECT_EQ("urn:a", clone->GetNamespaceRestriction());
    clone->GetChildElements()->Item(0)->SetText("changed");
    clone->GetAttributes()->Item(0)->SetValue("w");
    EXPECT_EQ("<AA:a xmlns:AA=\"urn:a\" k=\"v\"><AA:b><AA:c/></AA:b>x</AA:a>", Xml(original));

    CStackElement copy(*original);
    copy.GetChildElements()->Add("e");
    copy.SetText("y");
    EXPECT_EQ("<AA:a xmlns:AA=\"urn:a\" k=\"v\"><AA:b><AA:c/></AA:b><AA:e/>x</AA:a>", Xml(original));
    EXPECT_EQ("y", copy.GetText());
}

TEST_F(Untyped, ABoundObjectBecomesATreeWrittenUnderItsDefaultNamespace)
{
    CSmartPtr<CNote> note(new CNote);
    CSmartPtr<CElement> plain(new CElement(note, nullptr));
    EXPECT_EQ("", plain->GetDefaultNamespace());
    EXPECT_EQ("<AA:note xmlns:AA=\"urn:notes\" to=\"Ann\" xmlns:AB=\"urn:meta\" AB:id=\"1\"><AA:body>Hi</AA:body>"
              "</AA:note>",
              Xml(plain));

    CSmartPtr<CElement> element(new CElement(note, "urn:notes"));
    EXPECT_EQ("urn:notes", element->GetDefaultNamespace());
    EXPECT_EQ(2, element->GetAttributes()->GetCount());
    // The private writer declares the default and leaves the attributes out.
    EXPECT_EQ("<note xmlns=\"urn:notes\"><body>Hi</body></note>", Xml(element));
    CSmartPtr<CElement> wrap(new CElement("wrap"));
    wrap->GetChildElements()->Add(element);
    EXPECT_EQ("<wrap><note xmlns=\"urn:notes\"><body>Hi</body></note></wrap>", Xml(wrap));
    EXPECT_EQ("<wrap>\n<note xmlns=\"urn:notes\">\n\t<body>Hi</body>\n</note>\n\n</wrap>\n", Xml(wrap, true));
    // A clone forgets the default namespace and writes in the ordinary way.
    EXPECT_EQ(Xml(plain), Xml(element->Clone()));
    EXPECT_EQ("The object to convert is NULL",
              ErrorOf<CMxInvalidParamException>([] { CSmartPtr<CElement> e(new CElement(static_cast<CXmlObjectBase *>(nullptr), "")); }));
}

TEST_F(Untyped, AnObjectReadsFromAnUntypedTree)
{
    CSmartPtr<CElement> element(new CElement("x"));
    element->FromXml("<n:note xmlns:n='urn:notes' xmlns:m='urn:meta' to='Bo' m:id='9'><n:body>Yo</n:body></n:note>");
    CSmartPtr<CNote> note(new CNote);
    note->FromXmlElement(element.Get());
    EXPECT_EQ("Bo", note->to);
    EXPECT_EQ("9", note->id);
    EXPECT_EQ("Yo", note->body);
}

TEST_F(Untyped, RestrictionsAreRetestedThroughTheTree)
{
    CSmartPtr<CElement> element(new CElement("e", "urn:a", "##any", ""));
    element->GetAttributes()->Add("k", "v", "urn:k");
    element->GetChildElements()->Add("c", "urn:c");
    try
    {
        element->SetNamespaceRestrictions("urn:b", "");
        ADD_FAILURE() << "no exception";
    }
    catch (CMxInvalidNamespaceException *e)
    {
        EXPECT_EQ("The namespace e in the class urn:a is invalid against restriction urn:b", e->GetMessage());
        ASSERT_NE(nullptr, e->GetInnerException());
        EXPECT_EQ("Invalid namespace [urn:a]. The namespace must be one of [urn:b] where the target namespace is [].",
                  e->GetInnerException()->GetMessage());
        delete e;
    }
    // The attribute fails next, by value; then a child, by pointer again.
    EXPECT_EQ("Invalid namespace [urn:k]. The namespace must be one of [urn:a] where the target namespace is [].",
              ErrorOf<CMxInvalidNamespaceException>([&] { element->SetNamespaceRestrictions("urn:a", ""); }));
    element->GetAttributes()->Clear();
    try
    {
        element->SetNamespaceRestrictions("##other", "urn:c");
        ADD_FAILURE() << "no exception";
    }
    catch (CMxInvalidNamespaceException *e)
    {
        EXPECT_EQ("The namespace c in the class urn:c is invalid against restriction ##other", e->GetMessage());
        delete e;
    }
    element->SetNamespaceRestrictions("##any", "");
    EXPECT_EQ("##any", element->GetNamespaceRestriction()); // nothing is stored
}

TEST_F(Untyped, ChildCollectionsTellTheirListeners)
{
    CRecorder recorder;
    CSmartPtr<CElement> parent(new CElement("p"));
    parent->GetChildElements()->AddEventListener(&recorder);
    CSmartPtr<CElement> child = parent->GetChildElements()->Add("c", "");
    EXPECT_EQ((std::vector<std::string>{"add ", "addComplete ", "change"}), recorder.events);
    parent->GetChildElements()->RemoveEventListener(&recorder);
}

TEST_F(Untyped, TheContextsRootAttributesAreMadeOnceAndShared)
{
    CSerializationContext context;
    CSmartPtr<CAttributeCol> first = context.GetAdditionalRootAttributes();
    EXPECT_EQ(first.Get(), context.GetAdditionalRootAttributes().Get());
    EXPECT_EQ("##any", first->GetNamespaceRestriction());
    first->Add("a", "1", "urn:anything");
    CSerializationContext copy(context);
    EXPECT_EQ(first.Get(), copy.GetAdditionalRootAttributes().Get());
    CSerializationContext other;
    other = copy;
    EXPECT_EQ(1, other.GetAdditionalRootAttributes()->GetCount());
}
