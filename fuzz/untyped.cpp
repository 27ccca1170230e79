// Arbitrary bytes read into an untyped element and written back: every input
// ends in text or a CMxException. The first byte picks formatted output and
// whether the tree is cloned and nested under another element first.

#include "MxXmlLib.h"
#include "collections/Element.h"

#include <cstdint>
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
    try
    {
        CSmartPtr<CElement> element(new CElement("unread"));
        element->FromXml(text.c_str());
        CSmartPtr<CElement> written = element;
        if (options & 2)
        {
            written = new CElement("wrap", "urn:wrap");
            written->GetChildElements()->Add(element->Clone());
        }
        std::string const output =
            written->ToXml(false, (options & 1) != 0, (options & 4) ? CRLF : LF, CSerializationContext::GetDefaultContext());
        // What was written is read once more, as a tree of its own.
        CSmartPtr<CElement> again(new CElement("unread"));
        again->FromXml(output.c_str());
    }
    catch (CMxException const &)
    {
    }
    return 0;
}
