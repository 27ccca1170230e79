#pragma once

// A file handle for the stream and document layers, which put the system's
// error number into their messages. No system header appears here.

#include <cstddef>
#include <cstdint>

namespace MxXmlLib
{
namespace Platform
{

// Every failure returns false (or -1) and leaves the system's error number,
// an errno value, in LastError(). The destructor closes without reporting.
class NativeFile
{
public:
    NativeFile() = default;
    ~NativeFile();
    NativeFile(NativeFile const &) = delete;
    NativeFile &operator=(NativeFile const &) = delete;

    // Existing files only, with a hint that they are read from start to end.
    bool OpenForSequentialRead(char const *path);
    // Creates the file or empties an existing one.
    bool CreateForWrite(char const *path);
    bool IsOpen() const { return m_fd >= 0; }

    // Reads until `size` bytes or the end of the file: bytes read, -1 on failure.
    long long Read(void *buffer, std::size_t size);
    // The same at a fixed offset, leaving the file position alone.
    long long ReadAt(std::uint64_t offset, void *buffer, std::size_t size);
    // Writes all bytes (retrying short writes) at the file position or at `offset`.
    bool Write(void const *buffer, std::size_t size);
    bool WriteAt(std::uint64_t offset, void const *buffer, std::size_t size);
    bool Size(std::uint64_t &size);
    void Close();

    int LastError() const { return m_error; }

private:
    bool Fail();

    int m_fd = -1;
    int m_error = 0;
};

} // namespace Platform
} // namespace MxXmlLib
