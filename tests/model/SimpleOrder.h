#pragma once

// A hand-written bindable class that walks the tree itself, the way the
// earliest generated code would: an `order` element with an `id` attribute,
// a `customer` child and repeated `item` children, in namespace urn:orders.

#include "MxXmlLib.h"

#include <string>
#include <vector>

namespace MxTestModel
{

class CSimpleOrder : public MxXmlLib::CXmlObjectBase
{
public:
    static constexpr char const *kNamespace = "urn:orders";

    CSimpleOrder() { SetElementName("order"); }

    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kNamespace; }

    std::string id;
    std::string customer;
    std::vector<std::string> items;

protected:
    ~CSimpleOrder() override = default;
    std::string GetTargetNamespace() const override { return kNamespace; }
    void ToXml_Int(MxXmlLib::CXmlWriter *writer, bool isRoot, char const *namespaceUri,
                   MxXmlLib::CSerializationContext const &context, bool) const override;
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *element, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &context, bool) override;
};

} // namespace MxTestModel
