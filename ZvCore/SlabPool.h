#pragma once
#include "ZvCore/Api.h"
#include <cstddef>

/// Allocator for many small objects of few sizes: 16-byte size classes up to 512 bytes, slabs of 256 KiB, no
/// header per object. Classes use it through their own operator new and sized operator delete. A slab goes
/// back to the system when its last object is freed (one empty slab a class is kept). Larger objects come
/// from the general heap, and so does everything in builds with the address sanitizer. Window thread only.
class ZV_API SlabPool {
public:
    /// Aligned to 16 bytes. Throws std::bad_alloc as operator new does.
    static void* Alloc(size_t bytes);
    /// `bytes` must be what the object was allocated with. Null is allowed.
    static void Free(void* object, size_t bytes) noexcept;

    struct Usage {
        size_t reservedBytes = 0; ///< taken from the system for slabs
        size_t usedBytes = 0;     ///< in live objects, each rounded up to its size class
        size_t objects = 0;
    };
    /// Zero throughout where the general heap serves everything.
    static Usage GetUsage();

    static constexpr size_t kGranule = 16;
    static constexpr size_t kLargest = 512;
    static constexpr size_t kSlab = size_t(256) << 10;
};
