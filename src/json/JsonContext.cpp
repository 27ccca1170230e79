#include "json/JsonContext.h"

namespace MxXmlLib
{

CJsonContext::CJsonContext() : m_supportRoundtrip(RoundTripFull), m_allowComments(true), m_strict(false) {}

CJsonContext::CJsonContext(CJsonContext const &other)
    : m_supportRoundtrip(other.m_supportRoundtrip), m_rootElementName(other.m_rootElementName),
      m_allowComments(other.m_allowComments), m_strict(other.m_strict)
{
}

CJsonContext &CJsonContext::operator=(CJsonContext const &other)
{
    m_supportRoundtrip = other.m_supportRoundtrip;
    m_rootElementName = other.m_rootElementName;
    m_allowComments = other.m_allowComments;
    m_strict = other.m_strict;
    return *this;
}

CJsonContext::~CJsonContext() = default;

void CJsonContext::SetRootElementName(char const *name)
{
    m_rootElementName = name ? name : "";
}

} // namespace MxXmlLib
