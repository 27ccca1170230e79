#include "runtime/platform/NativeFile.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace MxXmlLib
{
namespace Platform
{

namespace
{
// Fills `buffer` with `readSome(at, want, done)` calls up to `size` bytes or
// the end of the file, calling again after a signal. -1 when a call fails,
// with errno telling why.
template <typename ReadSome>
long long ReadUpTo(void *buffer, std::size_t size, ReadSome readSome)
{
    auto *p = static_cast<char *>(buffer);
    std::size_t done = 0;
    while (done < size)
    {
        ssize_t const n = readSome(p + done, size - done, done);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<long long>(done);
}
} // namespace

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

bool NativeFile::CreateForReplace(char const *path)
{
    Close();
    std::string target = path ? path : "";
    if (target.empty() || target.back() == '/')
        return CreateForWrite(path); // fails as it always did
    struct stat st{};
    bool const exists = ::stat(target.c_str(), &st) == 0;
    if (exists && (!S_ISREG(st.st_mode) || st.st_nlink > 1))
        return CreateForWrite(path);
    // A link that names no file yet: opening through it creates that file.
    struct stat link{};
    if (!exists && ::lstat(target.c_str(), &link) == 0)
        return CreateForWrite(path);
    if (exists)
    {
        // Through a symbolic link, the file it names is the one replaced.
        char resolved[PATH_MAX];
        if (::realpath(target.c_str(), resolved) == nullptr)
            return CreateForWrite(path);
        target = resolved;
    }
    if (!OpenBeside(target))
        return CreateForWrite(path);
    if (exists && (::fchmod(m_fd, st.st_mode & 07777) != 0 ||
                   ((st.st_uid != ::geteuid() || st.st_gid != ::getegid()) &&
                    ::fchown(m_fd, st.st_uid, st.st_gid) != 0)))
        return CreateForWrite(path); // Close() removes the file beside
    return true;
}

// A new file in the target's folder, named after the target, created only if
// no such file exists; permissions as for a new target (0666 less the umask).
// Names are built before the file exists and handed over without allocating,
// so that no failure leaves a file that nobody removes.
bool NativeFile::OpenBeside(std::string const &target)
{
    std::size_t const slash = target.rfind('/');
    std::string const folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
    std::string const base = slash == std::string::npos ? target : target.substr(slash + 1);
    std::string targetPath = target;
    for (unsigned attempt = 0; attempt < 100; ++attempt)
    {
        char suffix[48];
        std::snprintf(suffix, sizeof suffix, ".%lx-%lx-%u.tmp", static_cast<unsigned long>(::getpid()),
                      static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(this)), attempt);
        std::string temporary = folder + "." + base + suffix;
        m_fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_fd >= 0)
        {
            m_temporaryPath.swap(temporary);
            m_targetPath.swap(targetPath);
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

bool NativeFile::Commit()
{
    if (m_fd < 0)
        return true;
    // The data reaches the disk before the name, so that after a crash the
    // target holds either the earlier bytes or all the new ones.
    if (!m_temporaryPath.empty() && ::fsync(m_fd) != 0)
        return Fail();
    int const fd = m_fd;
    m_fd = -1;
    if (::close(fd) != 0)
        return Fail();
    if (m_temporaryPath.empty())
        return true;
    if (::rename(m_temporaryPath.c_str(), m_targetPath.c_str()) != 0)
        return Fail();
    m_temporaryPath.clear();
    m_targetPath.clear();
    return true;
}

long long NativeFile::Read(void *buffer, std::size_t size)
{
    long long const n = ReadUpTo(buffer, size, [this](char *at, std::size_t want, std::size_t) {
        return ::read(m_fd, at, want);
    });
    if (n < 0)
        Fail();
    return n;
}

long long NativeFile::ReadAt(std::uint64_t offset, void *buffer, std::size_t size)
{
    long long const n = ReadUpTo(buffer, size, [this, offset](char *at, std::size_t want, std::size_t done) {
        return ::pread(m_fd, at, want, static_cast<off_t>(offset + done));
    });
    if (n < 0)
        Fail();
    return n;
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
    // A file written beside its target and not committed is abandoned.
    if (!m_temporaryPath.empty())
    {
        ::unlink(m_temporaryPath.c_str());
        m_temporaryPath.clear();
        m_targetPath.clear();
    }
}

} // namespace Platform
} // namespace MxXmlLib
