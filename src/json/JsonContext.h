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

    // Off by default. On, ToJson writes RFC 8259 JSON for every document
    // (arrays for repeated elements, escaped strings, a value for every key)
    // and FromJson reads exactly that form, refusing anything else with a
    // CMxValidationException that names the JSON path. docs/json.md has the
    // mapping.
    bool IsStrict() const { return m_strict; }
    void SetStrict(bool value) { m_strict = value; }

private:
    JsonRoundTrip m_supportRoundtrip;
    std::string m_rootElementName;
    bool m_allowComments;
    bool m_strict;
};

} // namespace MxXmlLib
