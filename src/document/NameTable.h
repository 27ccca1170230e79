#pragma once

// Open-addressing table from byte strings to values, looked up without
// building a std::string. Documents intern their names in one, and the Expat
// reader caches the split, converted form of each raw name in another.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace MxXmlLib
{

// Names of one document share long prefixes (the namespace URI), so the
// hash mixes eight bytes at a time and always takes in the tail.
inline std::size_t HashBytes(std::string_view bytes)
{
    auto load = [](char const *p) {
        std::uint64_t v;
        std::memcpy(&v, p, sizeof(v));
        return v;
    };
    std::uint64_t h = 0x9E3779B97F4A7C15ULL ^ bytes.size();
    char const *p = bytes.data();
    std::size_t n = bytes.size();
    auto mix = [&h](std::uint64_t v) {
        h ^= v;
        h *= 0xFF51AFD7ED558CCDULL;
        h ^= h >> 32;
    };
    while (n >= 8)
    {
        mix(load(p));
        p += 8;
        n -= 8;
    }
    if (n > 0)
    {
        // The tail in whole loads, never byte by byte: bytes stored one at a
        // time and read back as a word stall the read. A name of eight bytes
        // or more takes its last eight (overlapping what is mixed already);
        // a shorter one two overlapping halves, or its first, middle and
        // last byte. Either way every byte counts.
        std::uint64_t tail;
        if (bytes.size() >= 8)
            tail = load(bytes.data() + bytes.size() - 8);
        else if (n >= 4)
        {
            std::uint32_t low, high;
            std::memcpy(&low, p, sizeof(low));
            std::memcpy(&high, p + n - 4, sizeof(high));
            tail = low | (static_cast<std::uint64_t>(high) << 32);
        }
        else
            tail = static_cast<std::uint64_t>(static_cast<unsigned char>(p[0])) |
                   static_cast<std::uint64_t>(static_cast<unsigned char>(p[n / 2])) << 8 |
                   static_cast<std::uint64_t>(static_cast<unsigned char>(p[n - 1])) << 16;
        mix(tail);
    }
    return static_cast<std::size_t>(h ^ (h >> 29));
}

template <typename V> class CStringMap
{
public:
    V *Find(std::string_view key, std::size_t hash)
    {
        if (m_slots.empty())
            return nullptr;
        std::size_t const mask = m_slots.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask)
        {
            Slot &slot = m_slots[i];
            if (!slot.used)
                return nullptr;
            if (slot.hash == hash && slot.key == key)
                return &slot.value;
        }
    }

    V &Insert(std::string_view key, std::size_t hash, V value)
    {
        if ((m_count + 1) * 2 > m_slots.size())
            Grow();
        std::size_t const mask = m_slots.size() - 1;
        std::size_t i = hash & mask;
        while (m_slots[i].used)
            i = (i + 1) & mask;
        Slot &slot = m_slots[i];
        slot.used = true;
        slot.hash = hash;
        slot.key.assign(key.data(), key.size());
        slot.value = std::move(value);
        ++m_count;
        return slot.value;
    }

    void Clear()
    {
        m_slots.clear();
        m_count = 0;
    }

private:
    struct Slot
    {
        bool used = false;
        std::size_t hash = 0;
        std::string key;
        V value{};
    };

    void Grow()
    {
        std::vector<Slot> old;
        old.swap(m_slots);
        m_slots.resize(old.empty() ? 64 : old.size() * 2);
        std::size_t const mask = m_slots.size() - 1;
        for (Slot &slot : old)
        {
            if (!slot.used)
                continue;
            std::size_t i = slot.hash & mask;
            while (m_slots[i].used)
                i = (i + 1) & mask;
            m_slots[i] = std::move(slot);
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

// One shared copy of each distinct name; the pointers stay valid as long as
// the table lives.
class CNameTable
{
public:
    std::string const *Intern(std::string_view name)
    {
        std::size_t const hash = HashBytes(name);
        if (auto *found = m_map.Find(name, hash))
            return found->get();
        return m_map.Insert(name, hash, std::make_unique<std::string>(name)).get();
    }
    void Clear() { m_map.Clear(); }

private:
    CStringMap<std::unique_ptr<std::string>> m_map;
};

} // namespace MxXmlLib
