#include "runtime/platform/NativeFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace MxXmlLib
{
namespace Platform
{

NativeFile::~NativeFile()
{
    Close();
}

bool NativeFile::Fail()
{
    m_error = errno;
    return false;
}

bool NativeFile::OpenForSequentialRead(char const *path)
{
    Close();
    m_fd = ::open(path ? path : "", O_RDONLY | O_CLOEXEC);
    if (m_fd < 0)
        return Fail();
    // Only a hint: a file system that ignores it reads the same bytes.
    (void)::posix_fadvise(m_fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    return true;
}

bool NativeFile::CreateForWrite(char const *path)
{
    Close();
    m_fd = ::open(path ? path : "", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_fd < 0)
        return Fail();
    return true;
}

long long NativeFile::Read(void *buffer, std::size_t size)
{
    auto *p = static_cast<char *>(buffer);
    std::size_t done = 0;
    while (done < size)
    {
        ssize_t const n = ::read(m_fd, p + done, size - done);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            Fail();
            return -1;
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<long long>(done);
}

long long NativeFile::ReadAt(std::uint64_t offset, void *buffer, std::size_t size)
{
    auto *p = static_cast<char *>(buffer);
    std::size_t done = 0;
    while (done < size)
    {
        ssize_t const n = ::pread(m_fd, p + done, size - done, static_cast<off_t>(offset + done));
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            Fail();
            return -1;
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<long long>(done);
}

bool NativeFile::Write(void const *buffer, std::size_t size)
{
    auto const *p = static_cast<char const *>(buffer);
    while (size > 0)
    {
        ssize_t const n = ::write(m_fd, p, size);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            return Fail();
        }
        if (n == 0) // a device that takes nothing would loop forever
        {
            errno = EIO;
            return Fail();
        }
        p += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool NativeFile::WriteAt(std::uint64_t offset, void const *buffer, std::size_t size)
{
    auto const *p = static_cast<char const *>(buffer);
    while (size > 0)
    {
        ssize_t const n = ::pwrite(m_fd, p, size, static_cast<off_t>(offset));
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            return Fail();
        }
        if (n == 0)
        {
            errno = EIO;
            return Fail();
        }
        p += n;
        offset += static_cast<std::uint64_t>(n);
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool NativeFile::Size(std::uint64_t &size)
{
    struct stat st{};
    if (::fstat(m_fd, &st) != 0)
        return Fail();
    size = static_cast<std::uint64_t>(st.st_size);
    return true;
}

void NativeFile::Close()
{
    if (m_fd >= 0)
    {
        ::close(m_fd);
        m_fd = -1;
    }
}

} // namespace Platform
} // namespace MxXmlLib
