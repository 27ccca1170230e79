// Arbitrary bytes through CXmlDocument::LoadXmlStream: the decompression
// attempt, then the parser. Every input ends in a tree or a CMxException;
// inflated output is capped (kMaxInflatedSize), so no input can exhaust
// memory. Inputs whose first byte is 'Z' or 'G' are compressed by the
// library first (zlib or gzip), so that the parser behind the inflater is
// reached with mutated text as well.

#include "FuzzSupport.h"
#include "runtime/Compression.h"

#include <cstdint>
#include <vector>

using namespace MxXmlLib;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    try
    {
        CBinaryData bytes;
        if (size > 0 && (data[0] == 'Z' || data[0] == 'G'))
        {
            bytes.SetBuffer(data + 1, static_cast<unsigned long>(size - 1));
            Compress(bytes, data[0] == 'G' ? CompressionGZip : CompressionZLib);
        }
        else
            bytes.SetBuffer(data, static_cast<unsigned long>(size));
        CXmlDocument document;
        document.LoadXmlStream(bytes.GetData(), bytes.GetLength());
        MxFuzz::WalkTree(document.GetDocumentElement(), [](CXmlElement const *e) { (void)e->GetXPath(); });
    }
    catch (CMxException const &)
    {
    }
    return 0;
}
