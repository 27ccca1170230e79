#pragma once

// Helpers of the file and compression tests: a temporary folder that removes
// itself, whole-file reads and writes, an independent zlib inflater, and a
// file-size limit that makes writes fail after N bytes.

#include "runtime/MxException.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/resource.h>

namespace MxTestSupport
{

class TempDir
{
public:
    TempDir()
    {
        char name[] = "/tmp/mx-streams-XXXXXX";
        char *made = ::mkdtemp(name);
        EXPECT_NE(nullptr, made);
        m_path = made ? made : "/tmp";
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(TempDir const &) = delete;
    TempDir &operator=(TempDir const &) = delete;

    std::string Path(std::string const &name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

inline std::string ReadFileBytes(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteFileBytes(std::string const &path, std::string const &bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// zlib's own inflate, with the wrapper fixed by `windowBits` (15 zlib, 31
// gzip): a stream that does not end properly fails the test.
inline std::string Inflate(std::string const &bytes, int windowBits)
{
    z_stream z{};
    EXPECT_EQ(Z_OK, inflateInit2(&z, windowBits));
    z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
    z.avail_in = static_cast<uInt>(bytes.size());
    std::string out;
    int status;
    do
    {
        char chunk[4096];
        z.next_out = reinterpret_cast<Bytef *>(chunk);
        z.avail_out = sizeof chunk;
        status = inflate(&z, Z_NO_FLUSH);
        out.append(chunk, sizeof chunk - z.avail_out);
    } while (status == Z_OK);
    inflateEnd(&z);
    EXPECT_EQ(Z_STREAM_END, status);
    EXPECT_EQ(0u, z.avail_in) << "bytes behind the stream";
    return out;
}

// zlib's one-call compressor at its default level, a producer independent of
// the library's own.
inline std::string ZlibCompress(std::string const &bytes)
{
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string out(size, '\0');
    EXPECT_EQ(Z_OK, compress2(reinterpret_cast<Bytef *>(&out[0]), &size,
                              reinterpret_cast<Bytef const *>(bytes.data()), static_cast<uLong>(bytes.size()), 9));
    out.resize(size);
    return out;
}

// The gzip program's view of a file, or of bytes written to one.
inline std::string GunzipWithTool(std::string const &path)
{
    std::string command = "gzip -dc < '" + path + "'";
    FILE *pipe = ::popen(command.c_str(), "r");
    EXPECT_NE(nullptr, pipe);
    std::string out;
    if (!pipe)
        return out;
    char chunk[4096];
    std::size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0)
        out.append(chunk, n);
    EXPECT_EQ(0, ::pclose(pipe)) << "gzip refused " << path;
    return out;
}

inline std::string GzipWithTool(TempDir const &dir, std::string const &bytes)
{
    std::string const plain = dir.Path("tool-input");
    WriteFileBytes(plain, bytes);
    std::string const command = "gzip -c -n < '" + plain + "' > '" + plain + ".gz'";
    EXPECT_EQ(0, std::system(command.c_str()));
    return ReadFileBytes(plain + ".gz");
}

// While alive, writes to files beyond `bytes` fail with EFBIG (the signal
// that would otherwise kill the process is ignored). Nothing is printed
// while it holds, so that no test output is lost to the limit.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = m_old;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(FileSizeLimit const &) = delete;
    FileSizeLimit &operator=(FileSizeLimit const &) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int);
};

inline std::string ErrorOf(std::function<void()> const &call)
{
    try
    {
        call();
    }
    catch (MxXmlLib::CMxException const &e)
    {
        return e.GetFullMessage();
    }
    return "no error";
}

} // namespace MxTestSupport
