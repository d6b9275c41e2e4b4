#include "ZvCore/ZvcDumbHeap.h"
#include <new>

void* ZvcDumbHeap::Alloc(size_t bytes) {
    constexpr size_t alignment = 4;
    if (bytes > SIZE_MAX - kBlock)
        return nullptr;
    const size_t rounded = (bytes + alignment - 1) / alignment * alignment;
    if (rounded > m_left || !m_next) {
        // A request that would waste much of a block gets memory of its own; the block stays in use.
        const bool ownBlock = rounded > kBlock / 4;
        uint8_t* block = AddBlock(ownBlock ? rounded : kBlock);
        if (!block || ownBlock) {
            m_used += block ? rounded : 0;
            return block;
        }
        m_next = block;
        m_left = kBlock;
    }
    void* result = m_next;
    m_next += rounded;
    m_left -= rounded;
    m_used += rounded;
    return result;
}

uint8_t* ZvcDumbHeap::AddBlock(size_t bytes) {
    try {
        m_blocks.push_back(std::make_unique_for_overwrite<uint8_t[]>(bytes));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    m_reserved += bytes;
    return m_blocks.back().get();
}

void ZvcDumbHeap::Clear() {
    m_blocks.clear();
    m_next = nullptr;
    m_left = m_used = m_reserved = 0;
}
