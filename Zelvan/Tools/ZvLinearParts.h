#pragma once
#include "Zelvan/Entities/ZvEntity.h"
#include "ZvCore/Vec.h"
#include "ZvCore/dvect.h"

/// Reads linear kinds through the multi-line-vertex interface or, where a kind lacks that, the line vector interface.

/// Calls `f(vertices, closed, part)` for each part; nothing for kinds without vertices. A closed part does not repeat its first
/// vertex.
template <class F>
void ForEachLinearPart(const ZvEntity& entity, F&& f) {
    dvect<Vec4d> vertices;
    bool closed = false;
    if (entity.IsMLVEntity()) {
        for (int part = 0, count = entity.MLVGetPartCount(); part < count; ++part)
            if (entity.MLVGetPart(part, vertices, &closed))
                f(vertices, closed, part);
    } else if (int least = 0, most = 0; entity.IsLineVectorEntity(&least, &most, &closed)) {
        entity.LineVectorGetVertices(vertices);
        f(vertices, closed, 0);
    }
}

/// A straight piece of a linear entity.
struct ZvLinearSegment {
    Vec4d a, b;
    int part = 0;
    int index = 0;      ///< of its first vertex, counted over all parts
    bool ring = false;  ///< of a closed part
    bool first = false; ///< the beginning of an open part: nothing comes before it
    bool last = false;
};

/// Calls `f(const ZvLinearSegment&)`; a part of one vertex gives one segment without length.
template <class F>
void ForEachLinearSegment(const ZvEntity& entity, F&& f) {
    int base = 0;
    ForEachLinearPart(entity, [&](const dvect<Vec4d>& v, bool closed, int part) {
        const size_t n = v.size();
        const bool ring = closed && n > 2;
        const size_t segments = n < 2 || ring ? n : n - 1;
        for (size_t i = 0; i < segments; ++i)
            f(ZvLinearSegment{v[i], v[(i + 1) % n], part, base + int(i), ring, !ring && i == 0,
                              !ring && i + 1 == segments});
        base += int(n);
    });
}
