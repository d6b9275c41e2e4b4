#pragma once
#include "Zelvan/Tools/ZvGridPoint.h"
#include <cstdint>
#include <span>
#include <vector>

/// Cuts one ring with holes into triangles of its own vertices by clipping ears ("Triangulation by Ear Clipping", D. Eberly 2002);
/// holes are joined to the ring by bridges first, vertices near an ear are found along a z-order curve ("FIST", M. Held 2001).
/// All decisions are exact. Rings may touch, but edges must not cross.
class ZvEarClipper {
public:
    explicit ZvEarClipper(std::span<const ZvGridPoint> points) : m_points(points) {}

    struct Ring {
        uint32_t start = 0, count = 0;
    };
    /// Appends triples of point indices, counter-clockwise. False, nothing appended, when rings cross so that no ear is found or the
    /// triangles would not cover exactly the ring's area less the holes'.
    bool Clip(const Ring& outer, std::span<const Ring> holes, std::vector<uint32_t>& triangles);

private:
    struct Node {
        ZvGridPoint p;
        uint32_t point = 0; ///< index among the points
        uint32_t prev = 0, next = 0;
        uint32_t z = 0, prevZ = 0, nextZ = 0;
    };
    static constexpr uint32_t kNone = UINT32_MAX;

    uint32_t AddRing(const Ring& ring, bool counterClockwise);
    bool JoinHoles(uint32_t outer, const std::vector<uint32_t>& holes);
    uint32_t FindBridge(uint32_t hole) const;
    void InsertBridge(uint32_t at, uint32_t hole);
    bool IsInCone(uint32_t node, ZvGridPoint p) const;
    void MakeStrips(uint32_t outer);
    uint32_t Strip(int32_t y) const;
    void AddToStrips(uint32_t node);
    bool ClipEars(uint32_t start, std::vector<uint32_t>& triangles);
    bool IsEar(uint32_t node) const;
    bool Blocks(const Node& p, ZvGridPoint a, ZvGridPoint b, ZvGridPoint c) const;
    void LinkByZ(uint32_t start);
    void Remove(uint32_t node);
    int64_t TurnAt(const Node& n) const {
        return ZvGridPoint::Turn(m_nodes[n.prev].p, n.p, m_nodes[n.next].p);
    }
    template <class F>
    void EachNode(uint32_t start, F f) const {
        uint32_t i = start;
        do
            f(i);
        while ((i = m_nodes[i].next) != start);
    }

    std::span<const ZvGridPoint> m_points;
    std::vector<Node> m_nodes;
    /// While holes are joined: nodes whose edges pass a horizontal strip. Entries may be stale; the edge itself is looked at.
    std::vector<std::vector<uint32_t>> m_strips;
    int32_t m_stripBase = 0;
    double m_stripsPerUnit = 0;
    bool m_hashed = false;
};
