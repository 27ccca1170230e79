#include "runtime/BinaryStream.h"

namespace MxXmlLib
{

CBinaryStream::~CBinaryStream() {}

} // namespace MxXmlLib
