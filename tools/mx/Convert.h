#pragma once

// The conversion of `mx convert`, in process: bytes in, bytes out, no files.
// The program adds the reading and writing of files and the exit status; the
// fuzz target fuzz/mx_convert.cpp calls this directly.

#include "dynamic/DynamicSchema.h"

#include "MxXmlLib.h"

#include <string>

namespace MxTool
{

// The output formats, as --to names them: "xml", "json" or "fi".
enum class OutputFormat
{
    Xml,
    Json,
    FastInfoset
};

struct ConvertOptions
{
    OutputFormat format = OutputFormat::Xml;
    MxXmlLib::CompressionType compression = MxXmlLib::CompressionNone;
    // The specified JSON form instead of strict JSON (--json-compat).
    bool jsonCompat = false;
};

// Reads `input` (its format and compression detected) into an untyped tree,
// or through `schema` into the classes its root element declares when
// `schema` is not null, and writes it as the options say. Raises what the
// readers and writers raise (CMxException).
MxXmlLib::CBinaryData ConvertBytes(MxXmlLib::CBinaryData const &input, MxCompiler::CSchemaSet const *schema,
                                   ConvertOptions const &options);

} // namespace MxTool
