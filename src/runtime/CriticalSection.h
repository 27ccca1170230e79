#pragma once

// A lock that the same thread may enter again. Copying copies the raw bytes of
// the system object and initialises nothing: a copy must not be used as a lock.
class CMXCriticalSection
{
public:
    CMXCriticalSection();
    CMXCriticalSection(CMXCriticalSection const &other);
    CMXCriticalSection &operator=(CMXCriticalSection const &other);
    virtual ~CMXCriticalSection();

    void Enter();
    void Leave();

private:
    // Storage for the platform's recursive mutex, kept opaque so that no
    // system header leaks into the public interface.
    alignas(8) unsigned char m_cs[48];
};
