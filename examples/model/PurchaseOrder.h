#pragma once

// A purchase order bound by hand: the class walks the tree itself. It reads
// the order date, the recipient and the items of examples/data.

#include "MxXmlLib.h"

#include <string>
#include <vector>

namespace Example
{

struct Item
{
    std::string partNum;
    std::string productName;
    std::string quantity;
    std::string price;
};

class CPurchaseOrder : public MxXmlLib::CXmlObjectBase
{
public:
    static constexpr char const *kNamespace = "urn:example:po";

    CPurchaseOrder() { SetElementName("purchaseOrder"); }
    MxXmlLib::CXmlObjectBase *GetBase() override { return this; }
    std::string GetNamespace() const override { return kNamespace; }

    std::string orderDate;
    std::string shipToName;
    std::string shipToCity;
    std::vector<Item> items;

protected:
    ~CPurchaseOrder() override = default;
    std::string GetTargetNamespace() const override { return kNamespace; }
    void ToXml_Int(MxXmlLib::CXmlWriter *, bool, char const *, MxXmlLib::CSerializationContext const &,
                   bool) const override
    {
    }
    MxXmlLib::CXmlElement *FromXml_Int(MxXmlLib::CXmlElement *element, MxXmlLib::CXmlElement *cursor,
                                       MxXmlLib::CSerializationContext const &context, bool) override;

private:
    std::string const &ChildText(MxXmlLib::CXmlElement const *parent, char const *name,
                                 MxXmlLib::CSerializationContext const &context) const;
};

} // namespace Example
