#include "runtime/FileTextStream.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/platform/NativeFile.h"

namespace MxXmlLib
{

// How the overlap works here. The library starts no threads, and POSIX has no
// overlapped write on a regular file without them (aio_write runs on helper
// threads in glibc). So a write is "issued" by handing its bytes to
// m_pendingWrite, and carried out when the stream waits for it: at the next
// Flush, at End, or in the destructor. The order of effects is that of an
// overlapped write completed by the system: one write in flight, its bytes
// kept alive until it ends, its error raised at the next Flush or at End, and
// the file offset advanced only once it has ended.

namespace
{
unsigned char const kUtf16Bom[2] = {0xFF, 0xFE};
}

CFileTextStream::CFileTextStream(char const *fileName, int encoding)
    : CTextStream(encoding), m_fileName(fileName ? fileName : ""), m_writeInFlight(false), m_fileOffset(0)
{
}

CFileTextStream::~CFileTextStream()
{
    // A write the system had accepted would still reach the file: let it,
    // without waiting for a verdict that nobody could receive.
    if (m_file && m_file->IsOpen() && m_writeInFlight)
        (void)m_file->WriteAt(m_fileOffset, m_pendingWrite.GetData(), m_pendingWrite.GetLength());
    CloseFile();
}

void CFileTextStream::CloseFile()
{
    m_writeInFlight = false;
    m_file.reset();
}

void CFileTextStream::IssueWrite(CBinaryData const &bytes)
{
    m_pendingWrite = bytes;
    m_writeInFlight = true;
}

bool CFileTextStream::WaitForWrite(unsigned long &written, int &error)
{
    written = 0;
    if (!m_writeInFlight)
        return true;
    m_writeInFlight = false;
    if (!m_file->WriteAt(m_fileOffset, m_pendingWrite.GetData(), m_pendingWrite.GetLength()))
    {
        error = m_file->LastError();
        return false;
    }
    written = m_pendingWrite.GetLength();
    return true;
}

void CFileTextStream::FailWrite(int error)
{
    CloseFile();
    throw CMxException(
        FormatString("Failed to write data to the file. Error [0x%08X]", static_cast<unsigned>(error)));
}

void CFileTextStream::Start()
{
    m_buffer.Empty();
    CloseFile();
    m_file = std::make_unique<Platform::NativeFile>();
    if (!m_file->CreateForWrite(m_fileName.c_str()))
    {
        int const error = m_file->LastError();
        CloseFile();
        throw CMxException(FormatString("Failed to write data to the file [%s] error [0x%08X]", m_fileName.c_str(),
                                        static_cast<unsigned>(error)));
    }
    m_fileOffset = 0;
    if (m_encoding == 2 || m_encoding == 3)
        IssueWrite(CBinaryData(const_cast<unsigned char *>(kUtf16Bom), sizeof kUtf16Bom, false));
}

void CFileTextStream::Flush()
{
    if (m_buffer.GetLength() == 0)
        return;
    if (!m_file)
        throw CMxInvalidStateException("The file stream has not been started.");
    unsigned long written;
    int error = 0;
    if (!WaitForWrite(written, error))
        FailWrite(error);
    m_fileOffset += written;
    // The previous bytes are dropped only now that their write has ended.
    IssueWrite(GetBytes());
    m_buffer.Clear();
}

void CFileTextStream::End()
{
    Flush();
    if (!m_file)
        return;
    unsigned long written;
    int error = 0;
    if (!WaitForWrite(written, error))
        FailWrite(error);
    m_fileOffset += written;
    CloseFile();
}

} // namespace MxXmlLib
