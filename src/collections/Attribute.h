#pragma once

#include "binding/XmlObjectBase.h"
#include "runtime/InstanceMonitor.h"
#include "runtime/SmartPtr.h"

#include <string>

namespace MxXmlLib
{

class CAttributeCol;

// One untyped attribute. Only its collection makes and reads them; it writes
// itself as an attribute of the open element. The setters test nothing.
class CAttribute : public CXmlObjectBase, private CInstanceMonitor
{
    friend class CAttributeCol;

public:
    CAttribute(CAttribute const &other);
    CAttribute &operator=(CAttribute const &other);

    // A separate attribute with the same name, value and namespace.
    CSmartPtr<CAttribute> Clone() const;

    CXmlObjectBase *GetBase() override { return this; }
    using CXmlObjectBase::GetBase;

    std::string GetName() const { return m_name; }
    void SetName(char const *name) { m_name = name ? name : ""; }
    std::string GetValue() const { return m_value; }
    void SetValue(char const *value) { m_value = value ? value : ""; }
    std::string GetNamespace() const override { return m_namespace; }
    void SetNamespace(char const *namespaceUri) { m_namespace = namespaceUri ? namespaceUri : ""; }

protected:
    // A null string is stored as empty.
    CAttribute(char const *name, char const *value, char const *namespaceUri);
    ~CAttribute() override;

    std::string GetTargetNamespace() const override { return m_namespace; }
    void ToXml_Int(CXmlWriter *writer, bool isRoot, char const *namespaceUri, CSerializationContext const &context,
                   bool optionalChoice) const override;
    // Attributes are read by their collection: raises "This should be done by
    // the collection".
    CXmlElement *FromXml_Int(CXmlElement *element, CXmlElement *cursor, CSerializationContext const &context,
                             bool optionalChoice) override;

private:
    std::string m_name;
    std::string m_value;
    std::string m_namespace;
};

} // namespace MxXmlLib
