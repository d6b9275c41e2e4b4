#include "ZvCore/ZvcDumbHeap.h"
#include "ZvCore/Platform/Platform.h"
#include <new>

void* ZvcDumbHeap::Alloc(size_t bytes) {
    constexpr size_t alignment = 4;
    if (bytes > SIZE_MAX - kBlock)
        return nullptr;
    const size_t rounded = (bytes + alignment - 1) / alignment * alignment;
    if (rounded > m_left || !m_next) {
        // A request that would waste much of a block gets memory of its own; the block stays in use.
        if (rounded > kBlock / 4) {
            uint8_t* block = AddBlock(rounded);
            m_used += block ? rounded : 0;
            return block;
        }
        if (!AddCommonBlock())
            return nullptr;
    }
    void* result = m_next;
    m_next += rounded;
    m_left -= rounded;
    m_used += rounded;
    return result;
}

bool ZvcDumbHeap::AddCommonBlock() {
    uint8_t* block = nullptr;
    m_left = kBlock;
    if (m_reserved >= kLargeFrom && (block = AddLargeBlock()))
        m_left = kLargeBlock;
    m_next = block ? block : AddBlock(kBlock);
    m_left = m_next ? m_left : 0;
    return m_next != nullptr;
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

uint8_t* ZvcDumbHeap::AddLargeBlock() {
    std::unique_ptr<uint8_t[], Unmap> block(static_cast<uint8_t*>(ZvPlatform::MapPages(kLargeBlock)));
    if (!block)
        return nullptr;
    try {
        m_largeBlocks.push_back(std::move(block));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    m_reserved += kLargeBlock;
    return m_largeBlocks.back().get();
}

void ZvcDumbHeap::Unmap::operator()(uint8_t* block) const noexcept {
    ZvPlatform::UnmapPages(block, kLargeBlock);
}

void ZvcDumbHeap::Clear() {
    m_blocks.clear();
    m_largeBlocks.clear();
    m_next = nullptr;
    m_left = m_used = m_reserved = 0;
}
