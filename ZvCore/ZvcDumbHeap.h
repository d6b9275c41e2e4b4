#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Arena from which loaded entities take their variable-size blocks. Allocation bumps a pointer in blocks of
/// 1 MiB, from 16 MiB on of large pages (a request above a quarter of that gets memory of its own when it does not fit); nothing is freed
/// singly, everything with the heap. Results are aligned to 4 bytes: users read doubles through memcpy.
class ZV_API ZvcDumbHeap {
public:
    ZvcDumbHeap() = default;
    ZvcDumbHeap(const ZvcDumbHeap&) = delete;
    ZvcDumbHeap& operator=(const ZvcDumbHeap&) = delete;
    /// Null when there is no memory.
    void* Alloc(size_t bytes);
    /// Bytes handed out, and bytes taken from the system for them.
    size_t BytesUsed() const { return m_used; }
    size_t MemUsage() const { return m_reserved; }
    void Clear();

private:
    bool AddCommonBlock();
    uint8_t* AddBlock(size_t bytes);
    uint8_t* AddLargeBlock();
    static constexpr size_t kBlock = size_t(1) << 20;
    static constexpr size_t kLargeBlock = size_t(2) << 20;
    static constexpr size_t kLargeFrom = size_t(16) << 20;
    struct ZV_API Unmap {
        void operator()(uint8_t* block) const noexcept;
    };
    std::vector<std::unique_ptr<uint8_t[]>> m_blocks;
    std::vector<std::unique_ptr<uint8_t[], Unmap>> m_largeBlocks;
    uint8_t* m_next = nullptr;
    size_t m_left = 0;
    size_t m_used = 0;
    size_t m_reserved = 0;
};
