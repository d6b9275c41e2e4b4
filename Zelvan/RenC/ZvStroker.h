#pragma once
#include "Zelvan/RenC/ZvSurfaceCut.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <span>
#include <vector>

class ZvCoverageFill;

/// Turns polylines into pieces for a fill: a quad for each segment, a wedge at each joint, caps at open ends. All pieces turn the same
/// way, so that the non-zero rule unites them. What lies outside the fill's clip costs next to nothing.
class ZV_API ZvStroker {
public:
    enum class Cap { Flat, Round, Square };
    explicit ZvStroker(ZvCoverageFill& target) : m_target(target) {}
    /// width in pixels, above 0.
    void SetPen(float width, Cap cap) { m_half = width / 2, m_cap = cap; }
    /// A line without extent is a dot of the pen's width, square for square caps. Points that are not finite break the line.
    void Polyline(const Vec2f* points, size_t count, bool closed);

private:
    void Run(bool closed);
    void Dot(Vec2f at);
    void Piece(std::span<const Vec2f> corners);
    void Quad(Vec2f a, Vec2f b, Vec2f normal);
    void Joint(Vec2f at, Vec2f before, Vec2f after);
    void EndCap(Vec2f at, Vec2f outward);
    void Fan(Vec2f at, float fromAngle, float sweep);

    ZvCoverageFill& m_target;
    float m_half = 0.5f;
    Cap m_cap = Cap::Flat;
    ZvSurfaceCut::Box m_box{}; // what may show: the clip and the pen's reach around it
    std::vector<Vec2f> m_line; // finite, no point equal to the one before
    std::vector<Vec2f> m_dirs; // of its segments, length 1
};
