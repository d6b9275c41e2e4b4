#include "Zelvan/ZvBounds.h"
#include <cmath>
#include <limits>

namespace {

int RoundToInt(double value) {
    const double rounded = std::round(value);
    if (!(rounded > std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return rounded < std::numeric_limits<int>::max() ? int(rounded) : std::numeric_limits<int>::max();
}

} // namespace

Rect2I ZvBounds2D::ToRect() const {
    return {RoundToInt(minX), RoundToInt(minY), RoundToInt(maxX), RoundToInt(maxY)};
}
