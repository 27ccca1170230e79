#include "model/SimpleOrder.h"

namespace MxTestModel
{

using namespace MxXmlLib;

CXmlElement *CSimpleOrder::FromXml_Int(CXmlElement *element, CXmlElement *cursor,
                                       CSerializationContext const &context, bool)
{
    if (!DoesElementNameMatch(context, element, "order", kNamespace))
        throw CMxValidationException(FormatString("Expected the element order, found %s",
                                                  element->GetLocalName().c_str()),
                                     element->GetXPath());
    id = element->GetAttribute("id", "");
    customer.clear();
    items.clear();
    for (; cursor; cursor = cursor->GetNextSiblingElement())
    {
        if (DoesElementNameMatch(context, cursor, "customer", kNamespace))
            customer = cursor->GetText();
        else if (DoesElementNameMatch(context, cursor, "item", kNamespace))
            items.push_back(cursor->GetText());
        else
            throw CMxValidationException("Unexpected element", cursor->GetXPath());
    }
    return nullptr;
}

} // namespace MxTestModel
