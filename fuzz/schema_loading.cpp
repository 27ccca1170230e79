// Arbitrary bytes as a schema: loading ends in a model, whose classes are
// built and an empty root of each declared element is written, or in a
// CSchemaError. Nothing else may come out: no crash, no other exception.

#include "MxXmlLib.h"
#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    // Schemas load from files, so that includes resolve as they would for a user.
    static std::string const path = "/tmp/mx-fuzz-schema-" + std::to_string(getpid()) + ".xsd";
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    try
    {
        MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({path});
        for (MxCompiler::RootElement const &root : set.GetModel().roots)
        {
            try
            {
                (void)set.CreateRoot(root.name, root.ns)->ToXml(false, false);
            }
            catch (MxXmlLib::CMxException const &)
            {
                // An empty object may break its own schema (a mandatory value unset).
            }
        }
    }
    catch (MxCompiler::CSchemaError const &)
    {
    }
    return 0;
}
