#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include <cstdint>
#include <utility>
#include <vector>

/// Pairs of boxes from two sets that meet, found by a sweep along X: n log n and the number of pairs that overlap in X.
struct ZV_API ZvSegmentSweep {
    /// (index in a, index in b), in no particular order. Boxes that only touch meet.
    static std::vector<std::pair<uint32_t, uint32_t>> MeetingPairs(const std::vector<ZvBounds2D>& a,
                                                                   const std::vector<ZvBounds2D>& b);
};
