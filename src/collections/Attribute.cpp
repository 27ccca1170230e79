#include "collections/Attribute.h"

#include "document/XmlWriter.h"
#include "runtime/MxException.h"

namespace MxXmlLib
{

CAttribute::CAttribute(char const *name, char const *value, char const *namespaceUri)
    : m_name(name ? name : ""), m_value(value ? value : ""), m_namespace(namespaceUri ? namespaceUri : "")
{
}

CAttribute::CAttribute(CAttribute const &other)
    : CXmlObjectBase(other), CInstanceMonitor(other), m_name(other.m_name), m_value(other.m_value),
      m_namespace(other.m_namespace)
{
}

CAttribute &CAttribute::operator=(CAttribute const &other)
{
    CXmlObjectBase::operator=(other);
    m_name = other.m_name;
    m_value = other.m_value;
    m_namespace = other.m_namespace;
    return *this;
}

CAttribute::~CAttribute() = default;

CSmartPtr<CAttribute> CAttribute::Clone() const
{
    return CSmartPtr<CAttribute>(new CAttribute(m_name.c_str(), m_value.c_str(), m_namespace.c_str()));
}

void CAttribute::ToXml_Int(CXmlWriter *writer, bool, char const *, CSerializationContext const &, bool) const
{
    writer->WriteAttribute(m_name, m_namespace, m_value, ItemType_string);
}

CXmlElement *CAttribute::FromXml_Int(CXmlElement *, CXmlElement *, CSerializationContext const &, bool)
{
    throw CMxException("This should be done by the collection");
}

} // namespace MxXmlLib
