#pragma once
#include "Zelvan/Tools/ZvRingNesting.h"
#include "Zelvan/Tools/ZvTrapezoidFill.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstdint>
#include <span>
#include <vector>

/// Triangles that cover a polygon of rings by the even-odd rule. Rings of simple polygons are cut at their own vertices; where edges
/// cross, new points come in.
struct ZV_API ZvTriangulation {
    std::vector<uint32_t>
        triangles; ///< index triples, counter-clockwise; from vertices.size() on they name newPoints
    std::vector<ZvEdgePoint> newPoints; ///< on edges between vertices

    ZvTriangulation(std::span<const Vec2d> vertices, std::span<const ZvRingNesting::Ring> rings,
                    const ZvRingNesting& nesting);
};
