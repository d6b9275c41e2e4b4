#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

/// Bump allocator for the long-lived sub-objects of one owner. Memory goes back all at once; objects made
/// with `New` are destroyed by whoever owns them, through `HeapPtr`.
class ZV_API TrivialHeap {
public:
    explicit TrivialHeap(size_t firstBlock = 8192) : m_nextBlock(firstBlock) {}
    TrivialHeap(const TrivialHeap&) = delete;
    TrivialHeap& operator=(const TrivialHeap&) = delete;
    /// Aligned to max_align_t. Never null.
    void* Alloc(size_t bytes);
    template <class T, class... Args>
    T* New(Args&&... args) {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        return new (Alloc(sizeof(T))) T(std::forward<Args>(args)...);
    }
    size_t MemUsage() const { return m_reserved; }

private:
    std::vector<std::unique_ptr<uint8_t[]>> m_blocks;
    uint8_t* m_next = nullptr;
    size_t m_left = 0;
    size_t m_nextBlock;
    size_t m_reserved = 0;
};

/// Owns an object whose memory belongs to a TrivialHeap: runs the destructor, frees nothing.
struct HeapDestroy {
    template <class T>
    void operator()(T* object) const {
        object->~T();
    }
};
template <class T>
using HeapPtr = std::unique_ptr<T, HeapDestroy>;
