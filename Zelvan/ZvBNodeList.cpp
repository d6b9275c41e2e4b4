#include "Zelvan/ZvBNodeList.h"
#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

void ZvBNodeList::Swap(ZvBNodeList& other) noexcept {
    std::swap(m_block, other.m_block);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
}

void ZvBNodeList::EraseAt(size_t i) {
    std::copy(m_block + i + 1, m_block + m_size, m_block + i);
    uint32_t* boxes = Boxes();
    std::copy(boxes + i + 1, boxes + m_size, boxes + i);
    --m_size;
}

void ZvBNodeList::Move(size_t from, size_t to) {
    const auto rotate = [from, to](auto* items) {
        if (from < to)
            std::rotate(items + from, items + from + 1, items + to + 1);
        else
            std::rotate(items + to, items + from, items + from + 1);
    };
    rotate(m_block);
    rotate(Boxes());
}

size_t ZvBNodeList::Find(const ZvEntity* entity) const {
    return size_t(std::find(begin(), end(), entity) - begin());
}

void ZvBNodeList::ShrinkToFit() {
    if (m_size == 0)
        Reset();
    else if (m_size < m_capacity)
        Reallocate(m_size);
}

void ZvBNodeList::Reset() {
    ::operator delete(m_block);
    m_block = nullptr;
    m_size = m_capacity = 0;
}

void ZvBNodeList::Reallocate(uint32_t capacity) {
    auto* fresh = static_cast<ZvEntity**>(::operator new(size_t(capacity) * kEntry));
    if (m_size) {
        std::memcpy(fresh, m_block, m_size * sizeof(ZvEntity*));
        std::memcpy(fresh + capacity, Boxes(), m_size * sizeof(uint32_t));
    }
    ::operator delete(m_block);
    m_block = fresh;
    m_capacity = capacity;
}
