#pragma once

// Empty root of the library's plain (uncounted) classes: documents, elements,
// writers, streams. It carries no state; the name argument is ignored.
class CInstanceMonitor
{
public:
    CInstanceMonitor() = default;
    explicit CInstanceMonitor(char const *) {}
    CInstanceMonitor(CInstanceMonitor const &) = default;
    CInstanceMonitor &operator=(CInstanceMonitor const &) { return *this; }
    virtual ~CInstanceMonitor() {}
};
