#include "runtime/StringBuffer.h"

#include <cstring>
#include <memory>

namespace MxXmlLib
{

namespace
{

char const kEmptyText[1] = {'\0'};

} // namespace

CStringBuffer::CStringBuffer(std::uint32_t chunkSize)
    : m_chunkSize(chunkSize ? chunkSize : 1), m_used(0), m_capacity(0), m_current(nullptr), m_length(0)
{
}

CStringBuffer::~CStringBuffer() { FreeChunks(); }

void CStringBuffer::NewChunk()
{
    // Not filled: GetText puts the terminator behind the text when asked.
    std::unique_ptr<char[]> chunk(new char[static_cast<std::size_t>(m_chunkSize) + 1]);
    // Either list may fail to grow: the chunk is handed over only when both have.
    m_chunkSizes.push_back(m_chunkSize);
    try
    {
        m_chunks.push_back(chunk.get());
    }
    catch (...)
    {
        m_chunkSizes.pop_back();
        throw;
    }
    m_current = chunk.release();
    m_capacity = m_chunkSize;
    m_used = 0;
}

void CStringBuffer::Append(char const *text)
{
    if (text == nullptr)
        return;
    Append(text, std::strlen(text));
}

void CStringBuffer::AppendSlow(char const *text, std::size_t remaining)
{
    // The length grows with each piece copied, so that it stays true if a
    // new chunk cannot be had.
    while (remaining > 0)
    {
        if (m_capacity == m_used)
        {
            NewChunk();
            continue;
        }
        std::size_t n = m_capacity - m_used;
        if (n > remaining)
            n = remaining;
        std::memcpy(m_current + m_used, text, n);
        m_used += static_cast<std::uint32_t>(n); // <= m_capacity
        m_length += static_cast<std::uint32_t>(n);
        text += n;
        remaining -= n;
    }
}

std::string CStringBuffer::ToString() const
{
    std::string text;
    text.reserve(m_length);
    std::size_t const last = m_chunks.empty() ? 0 : m_chunks.size() - 1;
    for (std::size_t i = 0; i < m_chunks.size(); ++i)
    {
        // The writers never append a zero byte, so the chunks hold the text whole.
        text.append(m_chunks[i], i == last ? m_used : m_chunkSizes[i]);
    }
    return text;
}

char const *CStringBuffer::GetText()
{
    if (m_chunks.empty())
        return kEmptyText;
    if (m_chunks.size() == 1)
    {
        m_current[m_used] = '\0'; // each chunk has room for it
        return m_current;
    }
    char *joined = new char[static_cast<std::size_t>(m_length) + 1];
    char *out = joined;
    std::size_t const last = m_chunks.size() - 1;
    for (std::size_t i = 0; i < m_chunks.size(); ++i)
    {
        std::size_t n = i == last ? m_used : m_chunkSizes[i];
        std::memcpy(out, m_chunks[i], n);
        out += n;
    }
    *out = '\0';
    FreeChunks();
    m_chunks.push_back(joined);
    m_chunkSizes.push_back(m_length);
    m_current = joined;
    m_capacity = m_length;
    m_used = m_length;
    return joined;
}

void CStringBuffer::Clear()
{
    if (m_chunks.size() == 1)
    {
        // A flushing file stream clears after every piece; keeping the chunk
        // spares an allocation each time.
        m_current[0] = '\0';
        m_used = 0;
        m_length = 0;
        return;
    }
    Empty();
}

void CStringBuffer::Empty()
{
    FreeChunks();
    m_used = 0;
    m_capacity = 0;
    m_current = nullptr;
    m_length = 0;
}

void CStringBuffer::FreeChunks()
{
    for (char *chunk : m_chunks)
        delete[] chunk;
    m_chunks.clear();
    m_chunkSizes.clear();
}

} // namespace MxXmlLib
