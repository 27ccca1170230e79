#include "binding/ClassTables.h"

#include "binding/XmlGeneratedClass.h"

namespace MxXmlLib
{

namespace
{
class CInitLock
{
public:
    CInitLock() { CXmlGeneratedClass::m_csInit.Enter(); }
    ~CInitLock() { CXmlGeneratedClass::m_csInit.Leave(); }
    CInitLock(CInitLock const &) = delete;
    CInitLock &operator=(CInitLock const &) = delete;
};
} // namespace

void CClassTables::BuildOnce(BuildThunk thunk, void *build)
{
    CInitLock lock;
    // Another thread may have built them while this one waited for the lock.
    if (m_built.load(std::memory_order_relaxed))
        return;
    Rows rows;
    try
    {
        thunk(rows, build);
    }
    catch (...)
    {
        CXmlGeneratedClass::CleanMetaData(rows.info, rows.elements, rows.attributes);
        throw;
    }
    m_rows = rows;
    m_built.store(true, std::memory_order_release);
}

void CClassTables::Clean()
{
    CInitLock lock;
    m_built.store(false, std::memory_order_relaxed);
    CXmlGeneratedClass::CleanMetaData(m_rows.info, m_rows.elements, m_rows.attributes);
}

} // namespace MxXmlLib
