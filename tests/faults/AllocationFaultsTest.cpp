// Allocation failure at every step. This program replaces the global
// operator new so that, while armed, the n-th allocation throws
// std::bad_alloc; each whole read and each whole write of the model, in each
// format, is run once for every n below its allocation count. Each run must
// end in an exception without a crash (ASan) or a leak (LeakSanitizer, at
// exit), and the same object must then read or write as if nothing had
// happened. Memory that Expat, zlib and the document buffer take with malloc,
// and nothrow allocations, are not counted.

#include "model/Model.h"
#include "support/FileTestSupport.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <cxxabi.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

namespace
{
// The countdown of the armed allocator: -1 is disarmed. The program runs
// its tests on one thread, so plain counters serve.
long g_failAt = -1;
long g_allocations = 0;

void *Allocate(std::size_t size)
{
    if (g_failAt >= 0 && g_allocations++ == g_failAt)
        throw std::bad_alloc();
    if (void *p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
} // namespace

void *operator new(std::size_t size)
{
    return Allocate(size);
}
void *operator new[](std::size_t size)
{
    return Allocate(size);
}
// The value cell's setters allocate with nothrow and keep a null value when
// that fails, by design: those allocations are left alone.
void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    return std::malloc(size ? size : 1);
}
void *operator new[](std::size_t size, std::nothrow_t const &) noexcept
{
    return std::malloc(size ? size : 1);
}
void operator delete(void *p) noexcept
{
    std::free(p);
}
void operator delete[](void *p) noexcept
{
    std::free(p);
}
void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void *p, std::size_t) noexcept
{
    std::free(p);
}

using namespace MxXmlLib;
using MxTestModel::COrder;

namespace
{
char const kOrder[] =
    "<order xmlns=\"urn:m\" id=\"7\" status=\"closed\" xmlns:AA=\"urn:x\" AA:a=\"1\"><number>3</number>"
    "<note>hi</note><priority>high</priority><channel>low</channel><customer ref=\"2\"><name>Ann</name>"
    "<phone>1</phone></customer><shipTo><name>Bo</name></shipTo><total currency=\"USD\">12</total>"
    "<payment xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"card\"><number>42</number>"
    "</payment><deposit xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"cash\"/>"
    "<line><name>a</name></line><line><name>b</name></line>"
    "<tender xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"cash\"><currency>USD</currency>"
    "</tender><tag>x</tag><tag>y</tag><flag>low</flag><flag>high</flag><code>1</code><code>2</code></order>";

// JSON brings a collection of objects back only at the end of its parent.
char const kJsonOrder[] =
    "<order xmlns=\"urn:m\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" id=\"7\" status=\"closed\">"
    "<number>3</number><note>hi</note><priority>high</priority><customer ref=\"2\"><name>Ann</name></customer>"
    "<total currency=\"USD\">12</total><payment xsi:type=\"card\"><number>42</number></payment>"
    "<line><name>a</name></line><line><name>b</name><phone>2</phone></line></order>";

std::string Bytes(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

// What a read left in the object: its XML text, written unarmed.
std::string Written(CSmartPtr<COrder> const &order)
{
    return order->ToXml(false, false, LF);
}

struct Operation
{
    char const *name;
    // Runs the operation on `order`; returns what it produced, for writes.
    std::function<std::string(CSmartPtr<COrder> &)> run;
    bool isRead;
    CSmartPtr<COrder> model; // what a write writes
};

long g_survived = 0;

// Counts the operation's allocations, then fails each one in turn.
void FailEveryAllocation(Operation const &op)
{
    SCOPED_TRACE(op.name);
    CSmartPtr<COrder> order(new COrder);
    if (!op.isRead)
        order = op.model;
    std::string const expected = op.isRead ? (op.run(order), Written(order)) : op.run(order);

    g_allocations = 0;
    g_failAt = 1L << 40; // counting only
    std::string const counted = op.run(order);
    long const total = g_allocations;
    g_failAt = -1;
    ASSERT_GT(total, 10);

    for (long n = 0; n < total; ++n)
    {
        SCOPED_TRACE(n);
        g_allocations = 0;
        g_failAt = n;
        bool threw = false;
        try
        {
            (void)op.run(order);
        }
        catch (std::bad_alloc const &)
        {
            threw = true;
        }
        catch (CMxException const &)
        {
            threw = true; // a failure inside a reader, wrapped with its place
        }
        catch (...)
        {
            ADD_FAILURE() << "an exception of type " << abi::__cxa_current_exception_type()->name();
        }
        g_failAt = -1;
        if (g_allocations <= n)
        {
            // Fewer allocations than counted (first use builds caches): the
            // failure was never injected, and the call had to succeed.
            EXPECT_FALSE(threw);
            break;
        }
        EXPECT_TRUE(threw) << "allocation " << n << " of " << total << " failed without an exception";
        g_survived += threw;
        // The object is usable as before.
        std::string again;
        try
        {
            again = op.run(order);
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << "after allocation " << n << " failed: " << e.GetFullMessage();
            return;
        }
        EXPECT_EQ(expected, op.isRead ? Written(order) : again);
        if (::testing::Test::HasFailure())
            return;
    }
    std::printf("%-12s %ld allocations, each failed in turn\n", op.name, total);
}

long OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

TEST(AllocationFaults, EveryAllocationOfAWholeReadAndWriteInEachFormat)
{
    Register(16, 1);
    long const descriptors = OpenDescriptors();
    CSmartPtr<COrder> model(new COrder);
    try
    {
        model->FromXml(kOrder);
    }
    catch (CMxException const &e)
    {
        FAIL() << e.GetFullMessage();
    }
    std::string const xml = kOrder;
    // JSON keeps xsi:type and the foreign attribute's namespace only in full
    // round trip, with prefixes for both.
    CSerializationContext jsonContext;
    jsonContext.GetJsonContext().SetSupportRoundtrip(RoundTripFull);
    jsonContext.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
    jsonContext.GetNamespaceAliases().Add("x", "urn:x");
    CSmartPtr<COrder> jsonModel(new COrder);
    jsonModel->FromXml(kJsonOrder, jsonContext);
    std::string const json = jsonModel->ToJson(false, LF, jsonContext);
    // Strict JSON has a reader and a writer of its own.
    CSerializationContext strictContext = jsonContext;
    strictContext.GetJsonContext().SetStrict(true);
    std::string const strict = jsonModel->ToJson(false, LF, strictContext);
    ASSERT_NE(json, strict) << strict;
    std::string fi = Bytes(model->ToFastInfosetStream());
    std::string gzip = Bytes(model->ToXmlStream(false, false, XmlEncoding_UTF8, LF,
                                                CSerializationContext::GetDefaultContext(), CompressionGZip));
    MxTestSupport::TempDir dir;
    std::string const xmlFile = dir.Path("order.xml");
    std::string const outFile = dir.Path("out.xml");
    MxTestSupport::WriteFileBytes(xmlFile, xml);
    Operation const operations[] = {
        {"read file", [&](CSmartPtr<COrder> &o) { o->FromXmlFile(xmlFile.c_str()); return std::string(); }, true,
         model},
        {"write file",
         [&](CSmartPtr<COrder> &o) {
             o->ToXmlFile(outFile.c_str());
             return MxTestSupport::ReadFileBytes(outFile);
         },
         false, model},
        {"read chunks",
         [&](CSmartPtr<COrder> &o) {
             AsyncFromXmlFile(true);
             try
             {
                 o->FromXmlFile(xmlFile.c_str());
             }
             catch (...)
             {
                 AsyncFromXmlFile(false);
                 throw;
             }
             AsyncFromXmlFile(false);
             return std::string();
         },
         true, model},
        {"write direct",
         [&](CSmartPtr<COrder> &o) {
             AsyncToXmlFile(true);
             try
             {
                 o->ToXmlFile(outFile.c_str());
             }
             catch (...)
             {
                 AsyncToXmlFile(false);
                 throw;
             }
             AsyncToXmlFile(false);
             return MxTestSupport::ReadFileBytes(outFile);
         },
         false, model},
        {"read XML", [&](CSmartPtr<COrder> &o) { o->FromXml(xml.c_str()); return std::string(); }, true, model},
        {"read JSON", [&](CSmartPtr<COrder> &o) { o->FromJson(json.c_str(), jsonContext); return std::string(); }, true, model},
        {"read FI",
         [&](CSmartPtr<COrder> &o) {
             o->FromXmlStream(reinterpret_cast<unsigned char *>(fi.data()), static_cast<unsigned long>(fi.size()));
             return std::string();
         },
         true, model},
        {"read gzip",
         [&](CSmartPtr<COrder> &o) {
             o->FromXmlStream(reinterpret_cast<unsigned char *>(gzip.data()),
                              static_cast<unsigned long>(gzip.size()));
             return std::string();
         },
         true, model},
        {"write XML", [&](CSmartPtr<COrder> &o) { return o->ToXml(true, true, LF); }, false, model},
        {"write JSON", [&](CSmartPtr<COrder> &o) { return o->ToJson(true, LF, jsonContext); }, false, jsonModel},
        {"write FI", [&](CSmartPtr<COrder> &o) { return Bytes(o->ToFastInfosetStream()); }, false, model},
        {"read strict",
         [&](CSmartPtr<COrder> &o) {
             o->FromJson(strict.c_str(), strictContext);
             return std::string();
         },
         true, model},
        {"write strict", [&](CSmartPtr<COrder> &o) { return o->ToJson(true, LF, strictContext); }, false, jsonModel},
        {"write JSON file",
         [&](CSmartPtr<COrder> &o) {
             o->ToJsonFile(outFile.c_str(), true, XmlEncoding_UTF8, LF, jsonContext);
             return MxTestSupport::ReadFileBytes(outFile);
         },
         false, jsonModel},
        {"write FI file",
         [&](CSmartPtr<COrder> &o) {
             o->ToFastInfosetFile(outFile.c_str());
             return MxTestSupport::ReadFileBytes(outFile);
         },
         false, model},
        {"write gzip",
         [&](CSmartPtr<COrder> &o) {
             return Bytes(o->ToXmlStream(true, true, XmlEncoding_UTF16, LF, CSerializationContext::GetDefaultContext(),
                                         CompressionGZip));
         },
         false, model},
    };
    for (Operation const &op : operations)
        try
        {
            FailEveryAllocation(op);
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << op.name << " without faults: " << e.GetFullMessage();
        }
    // Failed file operations left no file open, and nothing beside their target.
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(dir.Path("")), std::filesystem::directory_iterator()));
    std::printf("injected allocation faults survived: %ld\n", g_survived);
}
} // namespace
