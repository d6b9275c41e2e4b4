#pragma once
#include <cstdint>

class ZvDrawing;
namespace ZvCore {
class IProgress;
}

/// A made-up map for benchmarks: winding lines and polygons, crowded around towns as on real maps. The same options give the same
/// drawing on every machine.
struct SyntheticMap {
    uint64_t lines = 1'000'000;
    uint32_t vertices = 10; ///< of each line and ring
    uint64_t polygons = 0;  ///< every third has a hole
    uint32_t towns = 400;
    double size = 1'000'000; ///< side of the square that holds it, world units
    uint64_t seed = 1;
    uint32_t layers = 1; ///< the lines are dealt to this many

    /// Adds the content to the drawing. False when `progress` asked to stop.
    bool Fill(ZvDrawing& drawing, ZvCore::IProgress& progress) const;
};
