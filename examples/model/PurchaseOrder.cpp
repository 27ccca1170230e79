#include "model/PurchaseOrder.h"

namespace Example
{

using namespace MxXmlLib;

std::string const &CPurchaseOrder::ChildText(CXmlElement const *parent, char const *name,
                                             CSerializationContext const &context) const
{
    for (CXmlElement const *c = parent->GetFirstElement(); c; c = c->GetNextSiblingElement())
        if (DoesElementNameMatch(context, c, name, kNamespace))
            return c->GetText();
    throw CMxValidationException(FormatString("The element %s is missing", name), parent->GetXPath());
}

CXmlElement *CPurchaseOrder::FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                         CSerializationContext const &context, bool)
{
    if (!DoesElementNameMatch(context, element, "purchaseOrder", kNamespace))
        throw CMxValidationException("Not a purchase order", element->GetXPath());
    orderDate = element->GetAttribute("orderDate", "");
    items.clear();
    for (; cursor; cursor = cursor->GetNextSiblingElement())
    {
        if (DoesElementNameMatch(context, cursor, "shipTo", kNamespace))
        {
            shipToName = ChildText(cursor, "name", context);
            shipToCity = ChildText(cursor, "city", context);
        }
        else if (DoesElementNameMatch(context, cursor, "items", kNamespace))
        {
            for (CXmlElement const *i = cursor->GetFirstElement(); i; i = i->GetNextSiblingElement())
                items.push_back({i->GetAttribute("partNum", ""), ChildText(i, "productName", context),
                                 ChildText(i, "quantity", context), ChildText(i, "price", context)});
        }
        else
            throw CMxValidationException("Unexpected element", cursor->GetXPath());
    }
    return nullptr;
}

} // namespace Example
