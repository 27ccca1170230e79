// Arbitrary bytes into the Fast Infoset reader: every input ends in a tree
// or a CMxException. The first byte picks the options: half the time the
// identification E0 00 00 01 00 is put in front, so that the fuzzer spends
// its time inside the body rather than finding the header; another bit reads
// with a generated vocabulary, so that indexes can point into tables that
// the document did not fill.

#include "FuzzSupport.h"
#include "fastinfoset/FastInfosetContext.h"

#include <cstdint>
#include <string>

using namespace MxXmlLib;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    if (size == 0)
        return 0;
    uint8_t const options = data[0];
    std::string bytes;
    if (options & 1)
        bytes.assign("\xE0\x00\x00\x01\x00", 5);
    bytes.append(reinterpret_cast<char const *>(data + 1), size - 1);
    if (bytes.empty())
        return 0;
    CSerializationContext context;
    if (options & 2)
    {
        CFastInfosetContext &fi = context.GetFIContext();
        fi.SetUseGeneratedVocabulary(true);
        fi.GetVocabulary()->AddElement("p", "urn:a", "e");
        fi.GetVocabulary()->AddAttribute("", "", "a");
        fi.GetVocabulary()->AddAttributeValue("v");
        fi.GetVocabulary()->AddElementValue("t");
    }
    try
    {
        CXmlDocument document(context);
        document.LoadXmlStream(reinterpret_cast<unsigned char *>(bytes.data()),
                               static_cast<unsigned long>(bytes.size()));
        MxFuzz::WalkTree(document.GetDocumentElement(), [](CXmlElement const *e) {
            for (CXmlAttribute const *a : e->GetAttributes())
                (void)a->GetValue().size();
            (void)e->GetText().size();
        });
    }
    catch (CMxException const &)
    {
    }
    return 0;
}
