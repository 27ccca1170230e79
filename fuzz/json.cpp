// Arbitrary bytes into FromJson, through the reader, the translation to XML
// and the XML reading of an untyped element: every input ends in an object or
// a CMxException. The first byte picks the round trip mode, comments, a root
// element name and the wide entry; what was read is written back as JSON.
// With the top bit the strict reader and writer run instead, and with full
// round trips what they read must come back from their own output as the
// same XML (the other levels drop namespaces on purpose).

#include "MxXmlLib.h"
#include "collections/Element.h"
#include "json/JsonContext.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static bool const registered = (Register(16, 1), true);
    (void)registered;
    if (size == 0)
        return 0;
    uint8_t const options = data[0];
    std::string const text(reinterpret_cast<char const *>(data + 1), size - 1);
    CSerializationContext context;
    context.GetJsonContext().SetSupportRoundtrip(static_cast<JsonRoundTrip>(options % 3));
    context.GetJsonContext().GetAllowComments((options & 4) == 0);
    if (options & 8)
        context.GetJsonContext().SetRootElementName("root");
    if (options & 128)
    {
        context.GetJsonContext().SetStrict(true);
        try
        {
            CSmartPtr<CElement> element(new CElement("unread"));
            element->FromJson(text.c_str(), context);
            std::string const xml = element->ToXml(false, false, LF, context);
            // The strict text has no root element name of its own: read it without one.
            context.GetJsonContext().SetRootElementName("");
            std::string const json = element->ToJson((options & 32) != 0, LF, context);
            CSmartPtr<CElement> again(new CElement("unread"));
            again->FromJson(json.c_str(), context);
            if (context.GetJsonContext().GetSupportRoundtrip() == RoundTripFull &&
                again->ToXml(false, false, LF, context) != xml)
                std::abort();
        }
        catch (CMxException const &)
        {
        }
        return 0;
    }
    try
    {
        CSmartPtr<CElement> element(new CElement("unread"));
        if (options & 16)
        {
            std::wstring wide(text.begin(), text.end());
            element->FromJson(wide.c_str(), context);
        }
        else
            element->FromJson(text.c_str(), context);
        std::string const json = element->ToJson((options & 32) != 0, (options & 64) ? CRLF : LF, context);
        CSmartPtr<CElement> again(new CElement("unread"));
        again->FromJson(json.c_str(), context);
    }
    catch (CMxException const &)
    {
    }
    return 0;
}
