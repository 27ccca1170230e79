#include "model/SimpleOrder.h"

#include "document/XmlWriter.h"

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

void CSimpleOrder::ToXml_Int(CXmlWriter *writer, bool, char const *namespaceUri, CSerializationContext const &,
                             bool) const
{
    writer->StartElement(GetElementName(), namespaceUri);
    if (!id.empty())
        writer->WriteAttribute("id", "", id, ItemType_string);
    auto child = [&](char const *name, std::string const &text) {
        writer->StartElement(name, namespaceUri);
        writer->WriteText(text, ItemType_string, false);
        writer->EndElement();
    };
    child("customer", customer);
    for (auto const &item : items)
        child("item", item);
    writer->EndElement();
}

} // namespace MxTestModel
