#pragma once

#include "runtime/BinaryStream.h"

#include <string>

namespace MxXmlLib
{

// A finished buffer written to a file with one call.
class CFileBinaryStream : public CBinaryStream
{
public:
    // `encoding` is an XmlEncoding number; 2 and 3 put FF FE in front of the
    // data, whatever the data is (compressed bytes included).
    CFileBinaryStream(char const *fileName, int encoding);
    CFileBinaryStream(char const *fileName, int encoding, CBinaryData const &data);

    // Creates or replaces the file and writes it. A regular file is replaced
    // only once all bytes are written, so a failure leaves the earlier file
    // as it was; a pipe or a device is written in place. Every failure closes
    // the file and raises CMxException
    // "Failed to write data to the file [%s] error [0x%08X]".
    void WriteFile();

    std::string const &GetFileName() const { return m_fileName; }
    int GetEncoding() const { return m_encoding; }

private:
    std::string m_fileName;
    int m_encoding;
};

} // namespace MxXmlLib
