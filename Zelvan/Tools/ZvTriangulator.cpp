#include "Zelvan/Tools/ZvTriangulator.h"
#include "Zelvan/Tools/ZvEarClipper.h"

/// Cuts each outer ring with the holes directly in it. False when one of them needs new points.
static bool ClipAll(std::span<const ZvGridPoint> points, std::span<const ZvRingNesting::Ring> rings,
                    const ZvRingNesting& nesting, std::vector<uint32_t>& triangles) {
    std::vector<std::vector<ZvEarClipper::Ring>> holes(rings.size());
    for (size_t i = 0; i < rings.size(); ++i)
        if (nesting.depths[i] % 2 && nesting.parents[i] >= 0 && rings[i].count >= 3)
            holes[size_t(nesting.parents[i])].push_back({rings[i].start, rings[i].count});
    ZvEarClipper clipper(points);
    for (size_t i = 0; i < rings.size(); ++i)
        if (nesting.depths[i] % 2 == 0 && rings[i].count >= 3 &&
            !clipper.Clip({rings[i].start, rings[i].count}, holes[i], triangles))
            return false;
    return true;
}

ZvTriangulation::ZvTriangulation(std::span<const Vec2d> vertices, std::span<const ZvRingNesting::Ring> rings,
                                 const ZvRingNesting& nesting) {
    const std::vector<ZvGridPoint> points = ZvGridPoint::Snap(vertices);
    std::vector<ZvGridEdge> edges;
    edges.reserve(vertices.size());
    for (const ZvRingNesting::Ring& ring : rings)
        for (uint32_t i = 0; ring.count >= 3 && i < ring.count; ++i)
            edges.push_back({ring.start + i, ring.start + (i + 1 == ring.count ? 0 : i + 1)});
    // Beyond this many crossings the polygon is a scribble; what is left out costs accuracy, not memory.
    const std::vector<ZvGridCrossing> crossings = FindGridCrossings(points, edges, 4'000'000);
    if (crossings.empty() && ClipAll(points, rings, nesting, triangles))
        return;
    triangles.clear();
    ZvTrapezoidFill(points, edges).Fill(crossings, triangles, newPoints);
}
