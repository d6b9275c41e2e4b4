#include "Zelvan/Tools/ZvLineCrossing.h"
#include <algorithm>

void AppendCrossings(std::vector<ZvLineCrossing>& found, double extent, std::vector<Vec3d>& points) {
    std::sort(found.begin(), found.end(),
              [](const ZvLineCrossing& a, const ZvLineCrossing& b) { return a.along < b.along; });
    const double same = extent * kSameCrossing;
    const size_t start = points.size();
    for (const ZvLineCrossing& crossing : found) {
        const auto near = [&](const Vec3d& p) {
            return (p.XY() - crossing.point.XY()).LengthSq() <= same * same;
        };
        const bool repeated = points.size() > start && (near(points.back()) || near(points[start]));
        if (!repeated)
            points.push_back(crossing.point);
    }
}
