#pragma once

// Compression is a step on a finished buffer, and decompression an attempt
// made on every binary input: callers never say whether bytes are compressed.

#include "values/BinaryData.h"

namespace MxXmlLib
{

// Inflated input larger than this is refused. A deflate stream inflates to at
// most about 1032 times its size, so a ratio cap would refuse nothing that a
// small input could reach; a fixed 1 GiB keeps a hostile megabyte from taking
// gigabytes, and stays far above any document this library holds in memory.
constexpr unsigned long kMaxInflatedSize = 0x40000000UL;

// Compresses `data` in place: type 1 (CompressionGZip) with the gzip wrapper,
// type 2 (CompressionZLib) with the zlib wrapper, both at level 1; other
// types leave it alone. The output may not grow past the input's size, so
// input that does not shrink (tiny input included) raises CMxException
// "Failed to compress data. [Error Code: %d]" with zlib's code.
void Compress(CBinaryData &data, int compressionType);

// Inflates a complete zlib or gzip stream, told apart by its header. True,
// with the bytes in `result`, only when the stream ends properly; any other
// input (plain text, a broken stream) gives false and an empty `result`.
// Output beyond `limit` bytes raises CMxException
// "Decompressed data exceeds the limit of %lu bytes".
bool Decompress(unsigned char const *data, unsigned long length, CBinaryData &result,
                unsigned long limit = kMaxInflatedSize);
// Replaces `data` by its inflated bytes when it is a compressed stream.
bool Decompress(CBinaryData &data, unsigned long limit = kMaxInflatedSize);

} // namespace MxXmlLib
