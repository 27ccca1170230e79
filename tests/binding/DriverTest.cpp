// The driver's walk over sequence, choice and all, seen through rows that
// record every offer: the element under the cursor, the answer and where
// the cursor was left.

#include "model/Model.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

using namespace MxXmlLib;
using namespace MxXmlLibData;

namespace
{
using Log = std::vector<std::string>;

std::string NameAt(CXmlElement const *e) { return e ? e->GetLocalName() : "null"; }

// Takes a run of elements of its name (at most `most`); answers as the
// group's rule asks: `whenTaken` / `whenNot`.
class CRecordingRow : public CElementInfo
{
public:
    CRecordingRow(char const *name, Log *log, bool whenTaken, bool whenNot, int most = 1)
        : CElementInfo(name, "", 0), m_log(log), m_whenTaken(whenTaken), m_whenNot(whenNot), m_most(most)
    {
    }
    bool ElementToXml(CSerializationContext const &, CXmlGeneratedClass const *, CXmlWriter *) const override
    {
        return false;
    }
    bool ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *, CXmlElement *,
                        CXmlElement **current, char const *, XmlElementType) override
    {
        std::string entry = m_elementName + "@" + NameAt(*current);
        int taken = 0;
        while (taken < m_most && IsThisElement(context, *current))
        {
            *current = (*current)->GetNextSiblingElement();
            ++taken;
        }
        bool const result = taken ? m_whenTaken : m_whenNot;
        m_log->push_back(entry + (result ? " true " : " false ") + NameAt(*current));
        return result;
    }
    bool Validate(CSerializationContext const &, CXmlGeneratedClass const *, bool found, bool) const override
    {
        m_log->push_back(m_elementName + (found ? " valid" : " missing"));
        return true;
    }

private:
    Log *m_log;
    bool m_whenTaken, m_whenNot;
    int m_most;
};

// A class whose tables belong to the object, for driving the walk by hand.
class CRecordingClass : public CXmlGeneratedClass
{
public:
    CRecordingClass(XmlElementGroupType group, std::vector<CElementInfo *> rows)
        : m_info(group, XmlElementType_Element, "r", "", false, false, -1, ItemType_None, nullptr, false)
    {
        for (CElementInfo *row : rows)
            m_rows.emplace_back(row);
        for (auto const &row : m_rows)
            m_table.push_back(row.get());
        m_table.push_back(nullptr);
    }
    CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return ""; }
    void AccessProperty(int, bool, MxVariant &) override {}
    CParentElementInfo *GetParentElementInfo() override { return &m_info; }
    CElementInfo **GetClassElementInfo() override { return m_table.data(); }
    CAttributeInfo **GetClassAttributeInfo() override { return &m_noAttributes; }
    void Init() override {}

protected:
    std::string GetTargetNamespace() const override { return ""; }

private:
    CParentElementInfo m_info;
    std::vector<std::unique_ptr<CElementInfo>> m_rows;
    std::vector<CElementInfo *> m_table;
    CAttributeInfo *m_noAttributes = nullptr;
};

struct DriverCase
{
    char const *label;
    XmlElementGroupType group;
    bool ignoreUnknown;
    char const *input;
    Log expected;
};

class DriverTest : public ::testing::Test
{
protected:
    void SetUp() override { Register(16, 1); }
};

// Rows a and b (b takes a run of up to two) answer true when they took
// something. Each entry: row@element under the cursor, answer, cursor after.
TEST_F(DriverTest, OffersFollowTheGroupRule)
{
    DriverCase const cases[] = {
        {"sequence in order", XmlElementGroupType_Sequence, false, "<r><a/><b/><b/></r>",
         {"a@a true b", "b@b true null"}},
        {"sequence gives back its start at an unknown element, quietly", XmlElementGroupType_Sequence, false, "<r><x/><a/></r>",
         {"a@x false x"}},
        {"sequence skips unknown elements and asks the same row again", XmlElementGroupType_Sequence, true,
         "<r><x/><a/><y/><b/></r>", {"a@x false x", "a@a true y", "b@y false y", "b@b true null"}},
        {"sequence offers what follows a skipped element to the last row", XmlElementGroupType_Sequence, true,
         "<r><a/><b/><x/><b/></r>", {"a@a true b", "b@b true x", "b@b true null"}},
        {"choice takes the first row that answers true", XmlElementGroupType_Choice, false, "<r><b/></r>",
         {"a@b false b", "b@b true null"}},
        {"choice without a match", XmlElementGroupType_Choice, true, "<r><x/><b/></r>",
         {"a@x false x", "b@x false x", "a@b false b", "b@b true null"}},
        {"all in any order", XmlElementGroupType_All, false, "<r><b/><a/></r>",
         {"a@b false b", "b@b true a", "a@a true null", "a valid", "b valid"}},
        {"all leaves a missing row to Validate", XmlElementGroupType_All, true, "<r><b/></r>",
         {"a@b false b", "b@b true null", "a missing", "b valid"}},
    };
    for (DriverCase const &c : cases)
    {
        SCOPED_TRACE(c.label);
        Log log;
        CSmartPtr<CRecordingClass> object(new CRecordingClass(
            c.group, {new CRecordingRow("a", &log, true, false), new CRecordingRow("b", &log, true, false, 2)}));
        CSerializationContext context;
        context.SetIgnoreUnknownElements(c.ignoreUnknown);
        context.SetIgnoreMissingChoice(true);
        try
        {
            object->FromXml(c.input, context);
        }
        catch (CMxException const &)
        {
            log.push_back("error");
        }
        EXPECT_EQ(c.expected, log);
    }
}

// A failure three elements deep names the innermost element once; the
// chain shows the wrapping above the cause.
TEST_F(DriverTest, FailureThreeLevelsDownCarriesTheInnermostPath)
{
    using namespace MxTestModel;
    CSmartPtr<COrder> order(new COrder);
    try
    {
        order->FromXml("<order xmlns='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='1'>"
                       "<number>1</number><priority>low</priority><customer><name>A</name></customer>"
                       "<payment xsi:type='card'><number>1</number></payment><tender xsi:type='card'><number a='1'/>"
                       "</tender></order>");
        FAIL() << "no error";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("/order/tender/number/@a", e.GetPath());
        EXPECT_EQ("Unexpected Attribute found.\nPath: /order/tender/number/@a", e.GetFullMessage());
    }
    try
    {
        order->FromXml("<order xmlns='urn:m' id='1'><number>1</number><priority>low</priority><customer>"
                       "<name>A</name></customer><total>x</total></order>");
        FAIL() << "no error";
    }
    catch (CMxException const &e)
    {
        EXPECT_EQ("Failed to process the element.\nPath: /order/total\nThe value [x] can not be converted to a i4",
                  e.GetFullMessage());
    }
}

} // namespace
