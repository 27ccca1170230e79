#pragma once

#include "runtime/InstanceMonitor.h"
#include "values/BinaryData.h"

namespace MxXmlLib
{

// Gathers octets in a CBinaryData: the sink of binary output such as Fast
// Infoset, and the buffer that CFileBinaryStream writes in one go.
class CBinaryStream : private CInstanceMonitor
{
public:
    CBinaryStream() = default;
    explicit CBinaryStream(CBinaryData const &data) : m_data(data) {}
    ~CBinaryStream() override;

    void Put(unsigned char octet) { m_data.Append(&octet, 1); }
    void Write(unsigned char const *data, unsigned long length) { m_data.Append(data, length); }

    CBinaryData &GetData() { return m_data; }
    CBinaryData const &GetData() const { return m_data; }
    void SetData(CBinaryData const &data) { m_data = data; }
    unsigned long GetLength() const { return m_data.GetLength(); }

protected:
    CBinaryData m_data;
};

} // namespace MxXmlLib
