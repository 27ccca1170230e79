// Arbitrary bytes into CXmlDocument: every input ends in a tree or a
// CMxException. The first byte picks the options, so that the namespace-free
// parser, kept CDATA markers and the wide-text entry are covered too.

#include "FuzzSupport.h"

#include <cstdint>
#include <string>

using namespace MxXmlLib;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    if (size == 0)
        return 0;
    uint8_t const options = data[0];
    std::string const text(reinterpret_cast<char const *>(data + 1), size - 1);
    CSerializationContext context;
    context.SetStripCDATA((options & 1) == 0);
    if (options & 2)
        context.SetSchemaType(SchemaType_NoNamespaces);
    try
    {
        CXmlDocument document(context);
        if (options & 4)
        {
            std::wstring wide(text.begin(), text.end());
            document.LoadXml(wide.c_str());
        }
        else
            document.LoadXml(text.c_str());
        // Walk the tree the way readers do, paths included.
        MxFuzz::WalkTree(document.GetDocumentElement(), [](CXmlElement const *e) {
            (void)e->GetXPath();
            for (CXmlAttribute const *a : e->GetAttributes())
                (void)a->GetXPath();
        });
    }
    catch (CMxException const &)
    {
    }
    return 0;
}
