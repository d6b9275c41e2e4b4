#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstdint>
#include <span>
#include <vector>

/// Which ring lies in which. Rings may touch each other and themselves but should not cross; where they cross, the answer is that
/// for one point of the inner ring. Of two equal rings the later lies in the earlier. Work grows as n log n with the number of
/// rings, as long as few of them enclose many others whole.
struct ZV_API ZvRingNesting {
    struct Ring {
        uint32_t start = 0; ///< first vertex
        uint32_t count = 0;
    };
    /// Number of rings around each ring.
    std::vector<uint32_t> depths;
    /// The ring directly around each ring, -1 for none.
    std::vector<int32_t> parents;

    /// Rings with fewer than 3 vertices enclose nothing.
    ZvRingNesting(std::span<const Vec2d> vertices, std::span<const Ring> rings);
};
