#pragma once
#include "ZvCore/Vec.h"
#include <vector>

/// Where a line meets another one.
struct ZvLineCrossing {
    double along; ///< number of the line's segment plus the share of its length
    Vec3d point;
};

/// Points closer than this share of the extent of both lines, in XY, are one point.
inline constexpr double kSameCrossing = 1e-9;

/// Appends the points in the order along the line, each place once: neighbouring segments meet the other line at a vertex twice.
/// Sorts `found`. `extent`: the larger side of the box around both lines.
void AppendCrossings(std::vector<ZvLineCrossing>& found, double extent, std::vector<Vec3d>& points);
