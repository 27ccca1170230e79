#pragma once

// Memory for the nodes of one document: carved from large blocks, with a free
// list per size for the nodes dropped while a document streams through, and
// released at once when the document is cleaned up. Nodes cost no allocator
// header, and building a tree makes no allocator call per node.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define MX_POOL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MX_POOL_ASAN 1
#endif
#endif
#ifdef MX_POOL_ASAN
#include <sanitizer/asan_interface.h>
#define MX_POOL_POISON(p, n) ASAN_POISON_MEMORY_REGION(p, n)
#define MX_POOL_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#endif
#ifndef MX_POOL_POISON
#define MX_POOL_POISON(p, n) ((void)(p), (void)(n))
#define MX_POOL_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace MxXmlLib
{

class CNodePool
{
public:
    void *Allocate(std::size_t size)
    {
        size = Round(size);
        std::size_t const slot = size / kAlign;
        if (slot < kSlots && m_free[slot])
        {
            FreeNode *node = m_free[slot];
            m_free[slot] = node->next;
            MX_POOL_UNPOISON(node, size);
            return node;
        }
        if (size > m_left)
            NewBlock(size);
        void *p = m_cursor;
        m_cursor += size;
        m_left -= size;
        return p;
    }

    void Free(void *p, std::size_t size)
    {
        std::size_t const slot = Round(size) / kAlign;
        if (p == nullptr || slot >= kSlots)
            return; // sizes beyond the slots stay in their block until Clear
        auto *node = static_cast<FreeNode *>(p);
        node->next = m_free[slot];
        m_free[slot] = node;
        // Under the address sanitizer a freed node stays out of bounds until
        // it is handed out again.
        MX_POOL_POISON(static_cast<char *>(p) + sizeof(FreeNode), Round(size) - sizeof(FreeNode));
    }

    void Clear()
    {
        for (auto &block : m_blocks)
            MX_POOL_UNPOISON(block.first.get(), block.second);
        m_blocks.clear();
        m_cursor = nullptr;
        m_left = 0;
        for (auto &head : m_free)
            head = nullptr;
    }

private:
    struct FreeNode
    {
        FreeNode *next;
    };
    // Nodes hold pointers and strings; they need no more alignment than that.
    static constexpr std::size_t kAlign = alignof(void *);
    static constexpr std::size_t kSlots = 64; // free lists for sizes below 512 bytes
    static constexpr std::size_t kBlockSize = 64 * 1024;
    static constexpr std::size_t kMaxBlockSize = kBlockSize << 5;

    static std::size_t Round(std::size_t size) { return (size + kAlign - 1) / kAlign * kAlign; }

    void NewBlock(std::size_t size)
    {
        // Blocks double up to kMaxBlockSize: a small document costs one small
        // block, a large one few allocator calls.
        std::size_t const step = m_blocks.size() < 6 ? kBlockSize << m_blocks.size() : kMaxBlockSize;
        std::size_t const bytes = size > step ? size : step;
        // Owned before the list can grow, so that a failure there frees it.
        std::unique_ptr<std::max_align_t[]> block(
            new std::max_align_t[(bytes + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t)]);
        m_blocks.emplace_back(std::move(block), bytes);
        m_cursor = reinterpret_cast<char *>(m_blocks.back().first.get());
        m_left = bytes;
    }

    std::vector<std::pair<std::unique_ptr<std::max_align_t[]>, std::size_t>> m_blocks;
    char *m_cursor = nullptr;
    std::size_t m_left = 0;
    FreeNode *m_free[kSlots] = {};
};

} // namespace MxXmlLib
