#include "runtime/Compression.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <algorithm>
#include <climits>
#include <cstring>
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

// Owns an initialised zlib stream; `End` (deflateEnd or inflateEnd) runs on
// every way out.
template <int (*End)(z_streamp)>
struct ZStream
{
    z_stream stream{};
    bool live = false;
    ~ZStream()
    {
        if (live)
            End(&stream);
    }
};
using DeflateStream = ZStream<deflateEnd>;
using InflateStream = ZStream<inflateEnd>;

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

namespace
{
// Room for the first try. A gzip stream states its size (mod 2^32) in its
// last four bytes; that is only a hint, and from hostile input, so it is
// held to what deflate can produce from this much input and to the limit.
unsigned long FirstCapacity(unsigned char const *data, unsigned long length, unsigned long limit)
{
    unsigned long guess = 4 * static_cast<unsigned long>(std::min<unsigned long>(length, limit));
    if (length >= 18 && data[0] == 0x1F && data[1] == 0x8B)
    {
        unsigned char const *tail = data + length - 4;
        guess = static_cast<unsigned long>(tail[0]) | static_cast<unsigned long>(tail[1]) << 8 |
                static_cast<unsigned long>(tail[2]) << 16 | static_cast<unsigned long>(tail[3]) << 24;
        guess = std::min<unsigned long>(guess, 1032 * static_cast<unsigned long>(std::min<unsigned long>(length, limit)));
    }
    // One byte past the limit tells output that is too long from output that just fits.
    return std::min<unsigned long>(std::max<unsigned long>(guess, kInflateChunk / 8), limit + 1);
}
} // namespace

bool Decompress(unsigned char const *data, unsigned long length, CBinaryData &result, unsigned long limit)
{
    result.Clear();
    // Lengths of the library's buffers fit 32 bits, and limit + 1 must too.
    limit = std::min<unsigned long>(limit, 0xFFFFFFFEUL);
    InflateStream z;
    z.stream.next_in = const_cast<Bytef *>(data);
    z.stream.avail_in = 0;
    if (inflateInit2(&z.stream, kAutoWindowBits) != Z_OK)
        return false;
    z.live = true;

    // zlib writes straight into the result, which doubles when full.
    unsigned long capacity = FirstCapacity(data, length, limit);
    std::unique_ptr<unsigned char[]> out(new unsigned char[capacity + 1]);
    unsigned long produced = 0;
    unsigned char const *next = data;
    unsigned long remaining = length;
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
        if (produced == capacity)
        {
            if (produced > limit)
                throw CMxException(FormatString("Decompressed data exceeds the limit of %lu bytes", limit));
            unsigned long const larger = std::min<unsigned long>(2 * capacity, limit + 1);
            std::unique_ptr<unsigned char[]> grown(new unsigned char[larger + 1]);
            std::memcpy(grown.get(), out.get(), produced);
            out = std::move(grown);
            capacity = larger;
        }
        auto const room = static_cast<uInt>(std::min<unsigned long>(capacity - produced, kInflateChunk));
        z.stream.next_out = out.get() + produced;
        z.stream.avail_out = room;
        status = inflate(&z.stream, Z_NO_FLUSH);
        produced += room - z.stream.avail_out;
    } while (status == Z_OK);
    if (status != Z_STREAM_END)
        return false;
    if (produced > limit)
        throw CMxException(FormatString("Decompressed data exceeds the limit of %lu bytes", limit));
    if (produced > 0)
        result = CBinaryData(out.release(), produced, true);
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
