#pragma once
#include "Zelvan/Tables/ZvTexture.h"

/// The lines of one hatch family over an area. Works in the family's own frame: u along the lines, t across
/// them in spacings, so that line k lies at t = k.
class ZvHatchLines {
public:
    /// `patternAngle`: turn of the whole pattern; `scale`: world units of one pattern unit.
    ZvHatchLines(const ZvTexture::Family& family, double patternAngle, double scale);
    /// As ZvTexture::GenerateHatch, for this family.
    bool Generate(std::span<const std::span<const Vec2d>> rings, const ZvBounds2D& window, size_t maxLines,
                  const ZvTexture::SegmentSink& sink) const;

private:
    struct Crossing {
        int64_t line;
        double u;
        friend auto operator<=>(const Crossing&, const Crossing&) = default;
    };
    struct Range {
        double low, high;
    };
    Vec2d ToFrame(const Vec2d& world) const;
    Vec2d ToWorld(double u, int64_t line) const;
    Range LinesOf(const ZvBounds2D& window) const;
    bool CollectCrossings(std::span<const std::span<const Vec2d>> rings, const Range& lines, size_t most,
                          std::vector<Crossing>& crossings) const;
    bool ClipToWindow(const ZvBounds2D& window, int64_t line, double& from, double& to) const;
    bool Dash(int64_t line, double from, double to, size_t& budget, const ZvTexture::SegmentSink& sink) const;

    Vec2d m_origin;
    Vec2d m_along;
    Vec2d m_across;
    double m_spacing;
    double m_shift;
    std::vector<double> m_dashes;
    double m_period = 0;
};
