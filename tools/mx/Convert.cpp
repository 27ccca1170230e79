#include "Convert.h"

namespace MxTool
{

using namespace MxXmlLib;

CBinaryData ConvertBytes(CBinaryData const &input, MxCompiler::CSchemaSet const *schema, ConvertOptions const &options)
{
    CSerializationContext context;
    // Fast Infoset that reads back as the same XML.
    context.GetFIContext().SetReadsBackAsXml(true);
    // Strict JSON by default: any parser accepts it, and it reads back to the same document.
    if (!options.jsonCompat)
        context.GetJsonContext().SetStrict(true);
    CSmartPtr<CXmlObjectBase> const object =
        schema == nullptr ? MxCompiler::ReadUntyped(input, context) : schema->Read(input, context);
    switch (options.format)
    {
    case OutputFormat::Xml:
        return object->ToXmlStream(true, true, XmlEncoding_UTF8, LF, context, options.compression);
    case OutputFormat::Json:
        return object->ToJsonStream(true, XmlEncoding_UTF8, LF, context, options.compression);
    case OutputFormat::FastInfoset:
        break;
    }
    return object->ToFastInfosetStream(FInfoDecl_None, context, options.compression);
}

} // namespace MxTool
