#pragma once

// A file handle for the stream and document layers, which put the system's
// error number into their messages. No system header appears here.

#include <cstddef>
#include <cstdint>
#include <string>

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
    // Opens a file that is to replace `path` at Commit(). A regular file, or a
    // new one, is written beside the target under a temporary name and renamed
    // over it, so that a write that fails leaves the earlier file as it was;
    // the temporary file is removed unless committed. Written in place, as by
    // CreateForWrite: targets that are no regular file (a pipe, a device), a
    // file with several hard links or one whose owner could not be kept, and a
    // file whose folder does not take a new file.
    bool CreateForReplace(char const *path);
    // Flushes the data to the disk and closes; a file written beside its
    // target then takes the target's name.
    bool Commit();
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
    bool OpenBeside(std::string const &target);

    int m_fd = -1;
    int m_error = 0;
    // Set while the file is written beside its target.
    std::string m_temporaryPath;
    std::string m_targetPath;
};

} // namespace Platform
} // namespace MxXmlLib
