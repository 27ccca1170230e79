#include "json/JsonContext.h"

namespace MxXmlLib
{

CJsonContext::CJsonContext() : m_supportRoundtrip(RoundTripFull), m_allowComments(true), m_strict(false) {}

CJsonContext::~CJsonContext() = default;

void CJsonContext::SetRootElementName(char const *name)
{
    m_rootElementName = name ? name : "";
}

} // namespace MxXmlLib
