#include "runtime/CriticalSection.h"

#include "runtime/platform/Platform.h"

#include <cstring>

CMXCriticalSection::CMXCriticalSection()
{
    MxXmlLib::Platform::MutexInit(m_cs, sizeof(m_cs));
}

CMXCriticalSection::CMXCriticalSection(CMXCriticalSection const &other)
{
    std::memcpy(m_cs, other.m_cs, sizeof(m_cs));
}

CMXCriticalSection &CMXCriticalSection::operator=(CMXCriticalSection const &other)
{
    if (this != &other)
        std::memcpy(m_cs, other.m_cs, sizeof(m_cs));
    return *this;
}

CMXCriticalSection::~CMXCriticalSection()
{
    MxXmlLib::Platform::MutexDestroy(m_cs);
}

void CMXCriticalSection::Enter()
{
    MxXmlLib::Platform::MutexLock(m_cs);
}

void CMXCriticalSection::Leave()
{
    MxXmlLib::Platform::MutexUnlock(m_cs);
}
