// Arbitrary bytes through the conversion of `mx convert`: format and
// compression detected, read into an untyped tree and through the schema of
// examples/ (the purchase order), and written to every format. Each read
// ends in an object or a CMxException; an object read writes itself as XML,
// JSON and Fast Infoset, or fails with a CMxException. Nothing else may come
// out. The first byte picks the JSON form and the output's compression.

#include "Convert.h"

#include <cstdint>

using namespace MxXmlLib;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static bool const registered = (Register(16, 1), true);
    (void)registered;
    static MxCompiler::CSchemaSet const schema = MxCompiler::CSchemaSet::Load({MX_FUZZ_SCHEMA});
    if (size == 0)
        return 0;
    uint8_t const options = data[0];
    CBinaryData const input(const_cast<uint8_t *>(data + 1), static_cast<unsigned long>(size - 1), false);
    MxTool::ConvertOptions convert;
    convert.jsonCompat = (options & 1) != 0;
    convert.compression = (options & 2) ? ((options & 4) ? CompressionZLib : CompressionGZip) : CompressionNone;
    for (MxCompiler::CSchemaSet const *bound : {static_cast<MxCompiler::CSchemaSet const *>(nullptr), &schema})
        for (MxTool::OutputFormat format :
             {MxTool::OutputFormat::Xml, MxTool::OutputFormat::Json, MxTool::OutputFormat::FastInfoset})
        {
            convert.format = format;
            try
            {
                (void)MxTool::ConvertBytes(input, bound, convert);
            }
            catch (CMxException const &)
            {
            }
        }
    return 0;
}
