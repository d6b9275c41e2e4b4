#include "Zelvan/ZvBNodeList.h"
#include "ZvCore/SlabPool.h"
#include <algorithm>
#include <cstring>

void ZvBNodeList::EraseAt(size_t i) {
    const size_t size = Size();
    std::copy(Entities() + i + 1, Entities() + size, Entities() + i);
    std::copy(Boxes() + i + 1, Boxes() + size, Boxes() + i);
    --m_block->size;
}

void ZvBNodeList::Move(size_t from, size_t to) {
    const auto rotate = [from, to](auto* items) {
        if (from < to)
            std::rotate(items + from, items + from + 1, items + to + 1);
        else
            std::rotate(items + to, items + from, items + from + 1);
    };
    rotate(Entities());
    rotate(Boxes());
}

size_t ZvBNodeList::Find(const ZvEntity* entity) const {
    return size_t(std::find(begin(), end(), entity) - begin());
}

void ZvBNodeList::Reset() {
    SlabPool::Free(m_block, MemUsage());
    m_block = nullptr;
}

void ZvBNodeList::Reallocate(uint32_t capacity) {
    ZvBNodeList fresh;
    fresh.m_block = new (SlabPool::Alloc(BlockBytes(capacity))) Block{uint32_t(Size()), capacity, {}};
    if (m_block)
        fresh.m_block->grid = m_block->grid;
    if (const size_t size = Size()) {
        std::memcpy(fresh.Boxes(), Boxes(), size * sizeof(uint32_t));
        std::memcpy(fresh.Entities(), Entities(), size * sizeof(ZvEntity*));
    }
    Swap(fresh);
}
