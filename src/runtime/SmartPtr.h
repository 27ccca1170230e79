#pragma once

namespace MxXmlLib
{

// Counted pointer to an object of the model (CXmlObjectBase or a class derived
// from it). A new object has the count 0: the first CSmartPtr that takes it
// makes it 1, and the one that brings it back to 0 deletes it.
template <typename T> class CSmartPtr
{
public:
    CSmartPtr() : m_p(nullptr) {}
    CSmartPtr(T *p) : m_p(p)
    {
        if (m_p)
            m_p->AddRef();
    }
    CSmartPtr(CSmartPtr const &other) : CSmartPtr(other.m_p) {}
    template <typename U> CSmartPtr(CSmartPtr<U> const &other) : CSmartPtr(other.Get()) {}
    ~CSmartPtr()
    {
        if (m_p)
            m_p->Release();
    }

    // The new object is counted before the old one is released, so that
    // assigning an object to itself never drops it to zero.
    CSmartPtr &operator=(T *p)
    {
        T *old = m_p;
        m_p = p;
        if (m_p)
            m_p->AddRef();
        if (old)
            old->Release();
        return *this;
    }
    CSmartPtr &operator=(CSmartPtr const &other) { return *this = other.m_p; }
    template <typename U> CSmartPtr &operator=(CSmartPtr<U> const &other) { return *this = other.Get(); }

    T *Get() const { return m_p; }
    T *operator->() const { return m_p; }
    T &operator*() const { return *m_p; }
    operator T *() const { return m_p; }
    bool IsNull() const { return m_p == nullptr; }

    // Drops the reference, leaving the pointer null.
    void Release()
    {
        T *old = m_p;
        m_p = nullptr;
        if (old)
            old->Release();
    }

private:
    T *m_p;
};

} // namespace MxXmlLib
