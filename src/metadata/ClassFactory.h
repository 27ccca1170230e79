#pragma once

#include "binding/XmlObjectBase.h"
#include "runtime/SmartPtr.h"

#include <string>

namespace MxXmlLib
{

class CXmlElement;

// The base of generated factories: what they ask of an element whose class
// is chosen by xsi:type.
class CClassfactoryBase
{
public:
    // Makes an object of the class `classId` stands for, named `elementName`.
    using FactoryByNumber = CSmartPtr<CXmlObjectBase> (*)(int classId, char const *elementName);
    // Makes an object of the class that fits the element, or null.
    using FactoryByElement = CSmartPtr<CXmlObjectBase> (*)(CXmlElement *element);

    CClassfactoryBase() = default;
    CClassfactoryBase(CClassfactoryBase const &) = default;
    CClassfactoryBase &operator=(CClassfactoryBase const &) = default;
    virtual ~CClassfactoryBase() = default;

protected:
    // The local part of the xsi:type value; "" without the attribute.
    static std::string GetElementType(CXmlElement *element);
    // The namespace of the xsi:type value. An unprefixed value, or a prefix
    // that no declaration binds, gives the element's own namespace.
    static std::string GetElementTypeNamespaceUri(CXmlElement *element);
};

} // namespace MxXmlLib
