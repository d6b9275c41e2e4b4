#include "ZvCore/TrivialHeap.h"
#include <algorithm>

namespace {

constexpr size_t kAlignment = alignof(std::max_align_t);
constexpr size_t kLargestBlock = size_t(64) << 10;

} // namespace

void* TrivialHeap::Alloc(size_t bytes) {
    const size_t rounded = std::max(bytes + (kAlignment - bytes % kAlignment) % kAlignment, kAlignment);
    if (rounded > m_left) {
        const size_t size = std::max(rounded, m_nextBlock);
        m_blocks.push_back(std::make_unique_for_overwrite<uint8_t[]>(size));
        m_next = m_blocks.back().get();
        m_left = size;
        m_reserved += size;
        m_nextBlock = std::min(m_nextBlock * 2, std::max(kLargestBlock, m_nextBlock));
    }
    void* result = m_next;
    m_next += rounded;
    m_left -= rounded;
    return result;
}
