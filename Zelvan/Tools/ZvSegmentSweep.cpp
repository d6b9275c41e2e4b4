#include "Zelvan/Tools/ZvSegmentSweep.h"
#include <algorithm>
#include <numeric>

namespace {

std::vector<uint32_t> ByLeftEdge(const std::vector<ZvBounds2D>& boxes) {
    std::vector<uint32_t> order(boxes.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [&](uint32_t i, uint32_t j) { return boxes[i].minX < boxes[j].minX; });
    return order;
}

/// Drops boxes that end before `x` and calls `f` for those that meet `box` in Y.
template <class F>
void Match(std::vector<uint32_t>& active, const std::vector<ZvBounds2D>& boxes, const ZvBounds2D& box,
           F&& f) {
    std::erase_if(active, [&](uint32_t i) { return boxes[i].maxX < box.minX; });
    for (const uint32_t i : active)
        if (boxes[i].minY <= box.maxY && boxes[i].maxY >= box.minY)
            f(i);
}

} // namespace

std::vector<std::pair<uint32_t, uint32_t>> ZvSegmentSweep::MeetingPairs(const std::vector<ZvBounds2D>& a,
                                                                        const std::vector<ZvBounds2D>& b) {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    std::vector<uint32_t> activeA, activeB;
    const std::vector<uint32_t> orderA = ByLeftEdge(a), orderB = ByLeftEdge(b);
    size_t i = 0, j = 0;
    while (i < orderA.size() || j < orderB.size()) {
        const bool takeA =
            j >= orderB.size() || (i < orderA.size() && a[orderA[i]].minX <= b[orderB[j]].minX);
        if (takeA) {
            const uint32_t k = orderA[i++];
            Match(activeB, b, a[k], [&](uint32_t other) { pairs.emplace_back(k, other); });
            activeA.push_back(k);
        } else {
            const uint32_t k = orderB[j++];
            Match(activeA, a, b[k], [&](uint32_t other) { pairs.emplace_back(other, k); });
            activeB.push_back(k);
        }
    }
    return pairs;
}
