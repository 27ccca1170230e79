#pragma once

// The metadata rows of one generated class, built on first use and then
// shared, read-only, by every object of the class on every thread.
//
// Generated code keeps one holder per class, at namespace scope, and answers
// the three table getters from it:
//
//     static void BuildOrder(MxXmlLib::CClassTables::Rows &rows) { rows.info = new ...; ... }
//     static MxXmlLib::CClassTables g_orderTables;
//     CParentElementInfo *CPurchaseOrder::GetParentElementInfo() { return g_orderTables.Get(BuildOrder).info; }
//     void CPurchaseOrder::CleanMetaData() { g_orderTables.Clean(); }
//
// The build runs once, under CXmlGeneratedClass::m_csInit, into rows that no
// other thread can see; only when all three are complete is the holder
// marked built, with release order, and Get checks that mark with acquire
// order. A thread therefore sees either no rows (and waits for the lock) or
// all of them, and after the first build Get costs one load.

#include <atomic>
#include <type_traits>
#include <utility>

namespace MxXmlLibData
{
class CParentElementInfo;
class CElementInfo;
class CAttributeInfo;
} // namespace MxXmlLibData

namespace MxXmlLib
{

class CClassTables
{
public:
    // What a build fills: the class description and the two null-terminated
    // row arrays, all from the global allocator, as CleanMetaData frees them.
    struct Rows
    {
        MxXmlLibData::CParentElementInfo *info = nullptr;
        MxXmlLibData::CElementInfo **elements = nullptr;
        MxXmlLibData::CAttributeInfo **attributes = nullptr;
    };

    // Constant-initialised, so a holder at namespace scope is ready before
    // any static constructor of another file can reach it.
    constexpr CClassTables() noexcept = default;
    CClassTables(CClassTables const &) = delete;
    CClassTables &operator=(CClassTables const &) = delete;

    // The rows, built by `build(Rows &)` if no thread has built them yet.
    // `build` may be a function or a callable object (a run-time back end
    // passes one that reads its schema model). If it throws, what it had
    // made is released, nothing is published, and the next call tries again.
    template <typename Build> Rows const &Get(Build &&build)
    {
        if (!m_built.load(std::memory_order_acquire))
        {
            // A function decays to a pointer here, which can be passed on as data.
            std::decay_t<Build> callable(std::forward<Build>(build));
            BuildOnce(&CallBuild<std::decay_t<Build>>, &callable);
        }
        return m_rows;
    }

    bool IsBuilt() const { return m_built.load(std::memory_order_acquire); }

    // Releases the rows (CXmlGeneratedClass::CleanMetaData) under the lock;
    // the next Get builds them again. Meant for unload and tests: no other
    // thread may be using the class meanwhile.
    void Clean();

private:
    using BuildThunk = void (*)(Rows &rows, void *build);
    template <typename Build> static void CallBuild(Rows &rows, void *build) { (*static_cast<Build *>(build))(rows); }
    void BuildOnce(BuildThunk thunk, void *build);

    Rows m_rows;
    std::atomic<bool> m_built{false};
};

} // namespace MxXmlLib
