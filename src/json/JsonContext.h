#pragma once

#include "runtime/OptionEnums.h"

#include <string>

namespace MxXmlLib
{

// The JSON options of both directions. A CSerializationContext owns one,
// built on first use.
class CJsonContext
{
public:
    CJsonContext();
    CJsonContext(CJsonContext const &other);
    CJsonContext &operator=(CJsonContext const &other);
    virtual ~CJsonContext();

    JsonRoundTrip GetSupportRoundtrip() const { return m_supportRoundtrip; }
    void SetSupportRoundtrip(JsonRoundTrip value) { m_supportRoundtrip = value; }

    // When not empty, JSON input is read as if it stood inside an object with
    // this one key, so that a document with several top-level keys has a root.
    std::string GetRootElementName() const { return m_rootElementName; }
    void SetRootElementName(char const *name);

    // Whether /* */ and // comments are skipped in JSON input. The setter is
    // the overload that takes a value; the name is part of the interface.
    bool GetAllowComments() const { return m_allowComments; }
    void GetAllowComments(bool value) { m_allowComments = value; }

private:
    JsonRoundTrip m_supportRoundtrip;
    std::string m_rootElementName;
    bool m_allowComments;
};

} // namespace MxXmlLib
