#pragma once

#include "runtime/InstanceMonitor.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <cstdint>
#include <vector>

namespace MxXmlLib
{

// Text gathered in chunks of ChunkSize usable bytes, so that nothing is moved
// while it is being built. Invariants: every chunk has one zero byte beyond its
// capacity and is zero-filled past Used, so the last chunk is always a
// terminated C string; all chunks but the last are full.
class CStringBuffer : public CInstanceMonitor
{
public:
    explicit CStringBuffer(std::uint32_t chunkSize = 4095);
    CStringBuffer(CStringBuffer const &) = delete;
    CStringBuffer &operator=(CStringBuffer const &) = delete;
    ~CStringBuffer() override;

    // Appends up to the first NUL of `text`; a null text adds nothing.
    void Append(char const *text);
    // Appends exactly `length` bytes.
    void Append(char const *text, std::size_t length)
    {
        // Small pieces nearly always fit the current chunk.
        if (length <= m_capacity - m_used)
        {
            if (length == 0)
                return;
            std::memcpy(m_current + m_used, text, length);
            m_used += static_cast<std::uint32_t>(length);
            m_length += static_cast<std::uint32_t>(length);
            return;
        }
        AppendSlow(text, length);
    }
    void AppendChar(char c)
    {
        if (m_capacity == m_used)
            NewChunk();
        m_current[m_used++] = c;
        ++m_length;
    }

    // The whole text, joined into one chunk when there are several. Owned by
    // the buffer and valid until its next change.
    char const *GetText();
    // The whole text as a string, copied once from the chunks (no join).
    std::string ToString() const;
    // Keeps a single chunk, zero-filled, for the next piece; else as Empty.
    void Clear();
    // Frees every chunk.
    void Empty();

    // Bytes appended since the last clearing.
    std::uint32_t GetLength() const { return m_length; }
    std::uint32_t GetChunkCount() const { return static_cast<std::uint32_t>(m_chunks.size()); }
    std::uint32_t GetCapacity() const { return m_capacity; }

private:
    void AppendSlow(char const *text, std::size_t length);
    void NewChunk();
    void FreeChunks();

    std::vector<char *> m_chunks;
    std::vector<std::uint32_t> m_chunkSizes;
    std::uint32_t m_chunkSize;
    std::uint32_t m_used;
    std::uint32_t m_capacity;
    char *m_current;
    std::uint32_t m_length;
};

} // namespace MxXmlLib
