// Threads that each read and write the example purchase order with a context
// of their own, released together right after the class tables were dropped,
// so that the first use of the tables (and of the library) is raced. Every
// result must equal what one thread alone produces.
//
// MX_RACE_ROUNDS (default 8) rounds of MX_RACE_TRIPS (default 25) round trips
// per thread; scripts/tsan.sh runs 20 rounds of 500 (10,000 round trips per
// thread) under ThreadSanitizer, and a fresh process with 1 and 1 is one cold
// first use.

#include "model/PurchaseOrder.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace MxXmlLib;
using Example::CPurchaseOrder;

enum Kind
{
    Kind_Xml,
    Kind_Json,
    Kind_FastInfoset,
    Kind_Gzip,
    Kind_Untyped,
    Kind_Count
};
constexpr char const *kKindNames[Kind_Count] = {"xml", "json", "fast infoset", "gzip", "untyped"};
constexpr int kThreads = 8;

int Setting(char const *name, int fallback)
{
    char const *text = std::getenv(name);
    return text && std::atoi(text) > 0 ? std::atoi(text) : fallback;
}

std::string ReadInput()
{
    std::ifstream file(MX_EXAMPLE_DATA_DIR "/purchase-order.xml", std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string WriteBack(CPurchaseOrder const &order, CSerializationContext const &context)
{
    return order.ToXml(false, false, LF, context);
}

// One round trip of a kind; a failure becomes part of the result, so that it
// counts as a mismatch with its message.
// `shared` holds the input's bytes; every thread copies that handle and
// appends to its copy, so the block's count is read and changed on all threads.
std::string RoundTrip(Kind kind, std::string const &input, CBinaryData const &shared,
                      CSerializationContext const &context)
{
    try
    {
        CSmartPtr<CPurchaseOrder> order(new CPurchaseOrder);
        CSmartPtr<CPurchaseOrder> back(new CPurchaseOrder);
        switch (kind)
        {
        case Kind_Xml:
        {
            CBinaryData bytes = shared;
            bytes.Append('\n');
            order->FromXmlStream(bytes, context);
            return WriteBack(*order, context);
        }
        case Kind_Json:
        {
            order->FromXml(input.c_str(), context);
            std::string const json = order->ToJson(false, LF, context);
            back->FromJson(json.c_str(), context);
            return json + "\n" + WriteBack(*back, context);
        }
        case Kind_FastInfoset:
        {
            order->FromXml(input.c_str(), context);
            CBinaryData const bytes = order->ToFastInfosetStream(FInfoDecl_None, context, CompressionNone);
            back->FromXmlStream(bytes, context);
            return std::to_string(bytes.GetLength()) + "\n" + WriteBack(*back, context);
        }
        case Kind_Gzip:
        {
            order->FromXml(input.c_str(), context);
            CBinaryData const bytes =
                order->ToXmlStream(false, false, XmlEncoding_UTF8, LF, context, CompressionGZip);
            back->FromXmlStream(bytes, context);
            return WriteBack(*back, context);
        }
        case Kind_Untyped:
        {
            CSmartPtr<CElement> element(new CElement(""));
            element->FromXmlDocument(input.c_str(), context);
            std::string const text = element->ToXml(false, false, LF, context);
            back->FromXmlElement(element.Get(), context);
            return text + "\n" + WriteBack(*back, context);
        }
        case Kind_Count:
            break;
        }
        return "no such kind";
    }
    catch (CMxException const &e)
    {
        return "failed: " + e.GetFullMessage();
    }
}

struct ThreadResult
{
    std::array<std::string, Kind_Count> first; // this thread's first result of each kind
    int mismatches = 0;                          // later results that differ from the first
    std::string example;                         // the first of them
};

TEST(FirstUseRace, EveryThreadReadsAndWritesAsOneThreadAlone)
{
    Register(16, 1);
    int const rounds = Setting("MX_RACE_ROUNDS", 8);
    int const trips = Setting("MX_RACE_TRIPS", 25);
    std::string const input = ReadInput();
    ASSERT_FALSE(input.empty());
    CBinaryData const shared(input.c_str());

    std::array<std::string, Kind_Count> reference;
    for (int round = 0; round < rounds; ++round)
    {
        SCOPED_TRACE("round " + std::to_string(round));
        Example::CleanAllMetaData();
        std::vector<ThreadResult> results(kThreads);
        std::atomic<int> ready{0};
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                CSerializationContext context;
                ThreadResult &mine = results[t];
                ++ready;
                while (!go.load(std::memory_order_acquire))
                    std::this_thread::yield();
                // Each thread starts with another kind, so the first uses differ.
                for (int trip = 0; trip < trips; ++trip)
                {
                    Kind const kind = static_cast<Kind>((t + trip) % Kind_Count);
                    std::string result = RoundTrip(kind, input, shared, context);
                    if (mine.first[kind].empty())
                        mine.first[kind] = std::move(result);
                    else if (result != mine.first[kind] && mine.mismatches++ == 0)
                        mine.example = kKindNames[kind] + (": " + result);
                }
            });
        while (ready.load() < kThreads)
            std::this_thread::yield();
        go.store(true, std::memory_order_release);
        for (std::thread &thread : threads)
            thread.join();

        // The reference comes after the race, so that the race also had the
        // first objects of the process; one thread, tables built afresh.
        if (round == 0)
        {
            Example::CleanAllMetaData();
            CSerializationContext context;
            for (int kind = 0; kind < Kind_Count; ++kind)
                reference[kind] = RoundTrip(static_cast<Kind>(kind), input, shared, context);
            for (std::string const &text : reference)
                ASSERT_EQ(std::string::npos, text.find("failed: ")) << text;
        }
        for (int t = 0; t < kThreads; ++t)
        {
            SCOPED_TRACE("thread " + std::to_string(t));
            EXPECT_EQ(0, results[t].mismatches) << results[t].example;
            for (int kind = 0; kind < Kind_Count; ++kind)
                if (!results[t].first[kind].empty())
                    EXPECT_EQ(reference[kind], results[t].first[kind]) << kKindNames[kind];
        }
    }
    std::printf("%d threads, %d round trips each (a read and a write), in %d rounds\n", kThreads, rounds * trips,
                rounds);
}

} // namespace
