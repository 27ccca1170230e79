#include "runtime/Compression.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <zlib.h>

namespace MxXmlLib
{

namespace
{
constexpr int kGzipWindowBits = 15 + 16;
// 15 + 32: inflate reads either wrapper and tells them apart by the header.
constexpr int kAutoWindowBits = 15 + 32;
constexpr int kLevel = 1;
constexpr int kMemoryLevel = 8;
constexpr unsigned kInflateChunk = 0x10000;

// Owns an initialised deflate stream; deflateEnd runs on every way out.
struct DeflateStream
{
    z_stream stream{};
    bool live = false;
    ~DeflateStream()
    {
        if (live)
            deflateEnd(&stream);
    }
};

struct InflateStream
{
    z_stream stream{};
    bool live = false;
    ~InflateStream()
    {
        if (live)
            inflateEnd(&stream);
    }
};

[[noreturn]] void ThrowCompressFailure(int code)
{
    throw CMxException(FormatString("Failed to compress data. [Error Code: %d]", code));
}
} // namespace

void Compress(CBinaryData &data, int compressionType)
{
    if (compressionType != 1 && compressionType != 2)
        return;
    DeflateStream z;
    int const init = compressionType == 1
                         ? deflateInit2(&z.stream, kLevel, Z_DEFLATED, kGzipWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY)
                         : deflateInit(&z.stream, kLevel);
    if (init != Z_OK)
        ThrowCompressFailure(init);
    z.live = true;

    // CBinaryData lengths fit 32 bits, and so zlib's counters.
    unsigned long const size = data.GetLength();
    // No larger than the input, on purpose: output that does not shrink is
    // refused rather than grown. One spare byte keeps the pointer valid for 0.
    std::unique_ptr<unsigned char[]> out(new unsigned char[size + 1]);
    z.stream.next_in = const_cast<Bytef *>(data.GetData());
    z.stream.avail_in = static_cast<uInt>(size);
    z.stream.next_out = out.get();
    z.stream.avail_out = static_cast<uInt>(size);
    deflate(&z.stream, Z_NO_FLUSH);
    int const finish = deflate(&z.stream, Z_FINISH);
    if (finish != Z_STREAM_END)
        ThrowCompressFailure(finish);
    unsigned long const produced = z.stream.total_out;
    data = CBinaryData(out.release(), produced, true);
}

bool Decompress(unsigned char const *data, unsigned long length, CBinaryData &result, unsigned long limit)
{
    result.Clear();
    InflateStream z;
    z.stream.next_in = const_cast<Bytef *>(data);
    z.stream.avail_in = 0;
    if (inflateInit2(&z.stream, kAutoWindowBits) != Z_OK)
        return false;
    z.live = true;

    std::unique_ptr<unsigned char[]> chunk(new unsigned char[kInflateChunk]);
    unsigned char const *next = data;
    unsigned long remaining = length;
    CBinaryData out;
    int status;
    do
    {
        // zlib counts in 32 bits; longer input goes in slices.
        if (z.stream.avail_in == 0 && remaining > 0)
        {
            auto const slice = static_cast<uInt>(std::min<unsigned long>(remaining, UINT_MAX));
            z.stream.next_in = const_cast<Bytef *>(next);
            z.stream.avail_in = slice;
            next += slice;
            remaining -= slice;
        }
        z.stream.next_out = chunk.get();
        z.stream.avail_out = kInflateChunk;
        status = inflate(&z.stream, Z_NO_FLUSH);
        unsigned long const produced = kInflateChunk - z.stream.avail_out;
        if (produced == 0)
            continue;
        if (produced > limit - out.GetLength())
            throw CMxException(FormatString("Decompressed data exceeds the limit of %lu bytes", limit));
        out.Append(chunk.get(), produced);
    } while (status == Z_OK);
    if (status != Z_STREAM_END)
        return false;
    result = out;
    return true;
}

bool Decompress(CBinaryData &data, unsigned long limit)
{
    CBinaryData inflated;
    if (!Decompress(data.GetData(), data.GetLength(), inflated, limit))
        return false;
    data = inflated;
    return true;
}

} // namespace MxXmlLib
