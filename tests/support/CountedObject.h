#pragma once

// The smallest counted object: it reads and writes nothing and records its
// destruction, for the tests of the count and of what holds objects.

#include "binding/XmlObjectBase.h"

#include <string>

namespace MxTestSupport
{

class CCounted : public MxXmlLib::CXmlObjectBase
{
public:
    // `deaths` goes up by one when the object is destroyed.
    explicit CCounted(int *deaths) : m_deaths(deaths) {}
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return ""; }
    // The count as it stands.
    long Count()
    {
        AddRef();
        return Release();
    }

protected:
    ~CCounted() override { ++*m_deaths; }
    std::string GetTargetNamespace() const override { return ""; }
    void ToXml_Int(MxXmlLib::CXmlWriter *, bool, char const *, MxXmlLib::CSerializationContext const &,
                   bool) const override
    {
    }
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &, bool) override
    {
        return cursor;
    }

private:
    int *m_deaths;
};

} // namespace MxTestSupport
