#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Sparse bit set over 64-bit indices for marks that are rare: bits live in pages of 1024, allocated when the
/// first bit of a page is set. Reads of absent pages answer 0.
class PagedBitTree {
public:
    static constexpr size_t kPageSize = 1024;

    bool Get(size_t i) const {
        const size_t page = i / kPageSize;
        return page < m_pages.size() && m_pages[page] &&
               ((*m_pages[page])[i % kPageSize / 64] >> (i % 64) & 1);
    }
    void Set(size_t i, bool on) {
        const size_t page = i / kPageSize;
        if (!on && (page >= m_pages.size() || !m_pages[page]))
            return;
        if (page >= m_pages.size())
            m_pages.resize(page + 1);
        if (!m_pages[page])
            m_pages[page] = std::make_unique<Page>();
        uint64_t& word = (*m_pages[page])[i % kPageSize / 64];
        const uint64_t bit = uint64_t(1) << (i % 64);
        on ? word |= bit : word &= ~bit;
    }
    void Clear() { m_pages.clear(); }
    size_t MemUsage() const {
        size_t n = m_pages.capacity() * sizeof(void*);
        for (const auto& page : m_pages)
            n += page ? sizeof(Page) : 0;
        return n;
    }

private:
    using Page = std::array<uint64_t, kPageSize / 64>;
    std::vector<std::unique_ptr<Page>> m_pages;
};
