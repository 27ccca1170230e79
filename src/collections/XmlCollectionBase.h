#pragma once

#include "binding/XmlObjectBase.h"

namespace MxXmlLib
{

// Root of all collections of the model: repeated content of a parent element,
// read from the parent's children and watched through listeners.
class CXmlCollectionBase : public CXmlObjectBase
{
public:
    virtual int GetCount() const { return 0; }

protected:
    CXmlCollectionBase() = default;
    CXmlCollectionBase(CXmlCollectionBase const &) = default;
    ~CXmlCollectionBase() override = default;
};

} // namespace MxXmlLib
