#pragma once
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tools/ZvSegment2D.h"
#include <algorithm>

/// Walks over the vertices of a polyline without taking memory: they are unpacked in runs into a buffer on the stack.
namespace ZvXLineScan {

inline constexpr uint32_t kRun = 256;

/// Calls f(vertex index, Vec2d) for the vertices of [first, last); f answers false to stop. False when stopped.
template <class F>
bool Vertices(const ZvXLine& line, uint32_t first, uint32_t last, F f) {
    Vec2d run[kRun];
    while (first < last) {
        const uint32_t count = std::min(kRun, last - first);
        line.ReadXY(first, count, run);
        for (uint32_t i = 0; i < count; ++i)
            if (!f(first + i, run[i]))
                return false;
        first += count;
    }
    return true;
}

/// Calls f(part, index of the first vertex, ZvSegment2D) for every segment of a part, the closing one of a ring included; a part of
/// one vertex is one segment of no length. f answers false to stop. False when stopped.
template <class F>
bool SegmentsOfPart(const ZvXLine& line, uint32_t part, F f) {
    const uint32_t start = line.PStart(part), end = line.PEnd(part);
    if (start >= end)
        return true;
    Vec2d first, last;
    const bool done = Vertices(line, start, end, [&](uint32_t i, const Vec2d& v) {
        const bool goOn = i == start || f(part, i - 1, ZvSegment2D{last, v});
        if (i == start)
            first = v;
        last = v;
        return goOn;
    });
    if (!done)
        return false;
    const bool closes = (line.PIsRing(part) && end - start > 2) || end - start == 1;
    return !closes || f(part, end - 1, ZvSegment2D{last, first});
}

template <class F>
bool Segments(const ZvXLine& line, F f) {
    for (uint32_t part = 0; part < line.NumParts(); ++part)
        if (!SegmentsOfPart(line, part, f))
            return false;
    return true;
}

/// Index of the vertex that ends the segment which starts at `vertex` of `part`.
inline uint32_t SegmentEnd(const ZvXLine& line, uint32_t part, uint32_t vertex) {
    return vertex + 1 < line.PEnd(part) ? vertex + 1 : line.PStart(part);
}

} // namespace ZvXLineScan
