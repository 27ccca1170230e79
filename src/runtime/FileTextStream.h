#pragma once

#include "runtime/TextStream.h"

#include <cstdint>
#include <memory>
#include <string>

namespace MxXmlLib
{

namespace Platform
{
class NativeFile;
}

// A text stream that pushes its text to a file piece by piece, each time the
// writer flushes, so that output of any size needs only one piece in memory.
// At most one write is in flight: its bytes are held until it ends, and its
// failure is raised at the next Flush or at End.
class CFileTextStream : public CTextStream
{
public:
    // `encoding` as for CTextStream; 0 cannot be written and fails at the
    // first flush.
    CFileTextStream(char const *fileName, int encoding);
    // Closes what is still open; a write in flight still reaches the file.
    ~CFileTextStream() override;
    CFileTextStream(CFileTextStream const &) = delete;
    CFileTextStream &operator=(CFileTextStream const &) = delete;

    // Creates or replaces the file; 2 and 3 put FF FE first. Failure raises
    // "Failed to write data to the file [%s] error [0x%08X]".
    void Start() override;
    // Flushes, waits for the last write and closes the file.
    void End() override;
    // With text in the buffer: waits for the write in flight, then sends the
    // text, converted, as the next one. Failures raise
    // "Failed to write data to the file. Error [0x%08X]".
    void Flush() override;

    std::string const &GetFileName() const { return m_fileName; }
    bool HasWriteInFlight() const { return m_writeInFlight; }
    // Where the next write goes: the bytes of all finished writes.
    std::uint64_t GetFileOffset() const { return m_fileOffset; }

private:
    void IssueWrite(CBinaryData const &bytes);
    // Ends the write in flight; false, with the error in `error`, on failure.
    bool WaitForWrite(unsigned long &written, int &error);
    [[noreturn]] void FailWrite(int error);
    void CloseFile();

    std::string m_fileName;
    CBinaryData m_pendingWrite;
    bool m_writeInFlight;
    std::uint64_t m_fileOffset;
    std::unique_ptr<Platform::NativeFile> m_file;
};

} // namespace MxXmlLib
