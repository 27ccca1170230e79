#include "runtime/FileBinaryStream.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/platform/NativeFile.h"

namespace MxXmlLib
{

namespace
{
unsigned char const kUtf16Bom[2] = {0xFF, 0xFE};
}

CFileBinaryStream::CFileBinaryStream(char const *fileName, int encoding)
    : m_fileName(fileName ? fileName : ""), m_encoding(encoding)
{
}

CFileBinaryStream::CFileBinaryStream(char const *fileName, int encoding, CBinaryData const &data)
    : CBinaryStream(data), m_fileName(fileName ? fileName : ""), m_encoding(encoding)
{
}

void CFileBinaryStream::WriteFile()
{
    Platform::NativeFile file; // closed on every way out
    // A regular file is written beside its target and renamed over it, so
    // that a failure (a full disk, say) leaves the earlier file intact.
    bool ok = file.CreateForReplace(m_fileName.c_str());
    if (ok && (m_encoding == 2 || m_encoding == 3))
        ok = file.Write(kUtf16Bom, sizeof kUtf16Bom);
    if (ok)
        ok = file.Write(m_data.GetData(), m_data.GetLength());
    if (ok)
        ok = file.Commit();
    if (!ok)
        throw CMxException(FormatString("Failed to write data to the file [%s] error [0x%08X]", m_fileName.c_str(),
                                        static_cast<unsigned>(file.LastError())));
}

} // namespace MxXmlLib
