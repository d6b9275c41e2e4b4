#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Flat bit array; new bits are 0. Reads past the end answer 0.
class BitMap {
public:
    size_t Size() const { return m_size; }
    void Resize(size_t bits) {
        m_size = bits;
        m_words.resize((bits + 63) / 64, 0);
        if (bits % 64)
            m_words.back() &= (uint64_t(1) << (bits % 64)) - 1;
    }
    bool Get(size_t i) const { return i < m_size && (m_words[i / 64] >> (i % 64) & 1); }
    void Set(size_t i, bool on) {
        const uint64_t bit = uint64_t(1) << (i % 64);
        on ? m_words[i / 64] |= bit : m_words[i / 64] &= ~bit;
    }
    void ClearAll() { m_words.assign(m_words.size(), 0); }
    /// First set bit at or after `from`; Size() when there is none.
    size_t NextSet(size_t from) const {
        for (size_t w = from / 64; w < m_words.size(); ++w) {
            uint64_t word = m_words[w];
            if (w == from / 64)
                word &= ~uint64_t(0) << (from % 64);
            if (word)
                return w * 64 + size_t(std::countr_zero(word));
        }
        return m_size;
    }
    size_t CountSet() const {
        size_t n = 0;
        for (uint64_t word : m_words)
            n += size_t(std::popcount(word));
        return n;
    }

private:
    std::vector<uint64_t> m_words;
    size_t m_size = 0;
};
