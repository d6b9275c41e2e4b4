// Nesting of rings and the triangle section: the caches that filling and areas need.
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tools/ZvPolygonArea.h"
#include "Zelvan/Tools/ZvRingNesting.h"
#include "Zelvan/Tools/ZvTriangulator.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// The parts as rings; open parts of lines are no rings and count as empty.
std::vector<ZvRingNesting::Ring> RingsOf(const ZvXLine& line) {
    std::vector<ZvRingNesting::Ring> rings(line.NumParts());
    for (uint32_t i = 0; i < line.NumParts(); ++i)
        if (line.PIsRing(i))
            rings[i] = {line.PStart(i), line.PLen(i)};
    return rings;
}

std::vector<Vec2d> PlaneVertices(const ZvXLine& line) {
    std::vector<Vec2d> xy(line.NumVerts());
    line.ReadXY(0, line.NumVerts(), xy.data());
    return xy;
}

} // namespace

void ZvXLine::EnsureDepths() const {
    if (HasDepths())
        return;
    auto* self = const_cast<ZvXLine*>(this);
    if (m_numParts == 1) {
        self->SetDepthRaw(0, 1);
        return;
    }
    const ZvRingNesting nesting(PlaneVertices(*this), RingsOf(*this));
    for (uint32_t i = 0; i < m_numParts; ++i)
        self->SetDepthRaw(i, nesting.depths[i] + 1);
}

uint32_t ZvXLine::GetOuterParts(uint32_t part) const {
    if (part == 0)
        EnsureDepths();
    while (part < m_numParts && PDepth(part) % 2)
        ++part;
    return std::min(part, m_numParts);
}

void ZvXLine::GetPartParents(std::vector<int32_t>& parents) const {
    if (m_numParts < 2)
        parents.assign(m_numParts, -1);
    else
        parents = ZvRingNesting(PlaneVertices(*this), RingsOf(*this)).parents;
}

int ZvXLine::MLVGetPartParent(int part) const {
    if (part < 0 || uint32_t(part) >= m_numParts)
        return -1;
    std::vector<int32_t> parents;
    GetPartParents(parents);
    return parents[size_t(part)];
}

// --- triangles -----------------------------------------------------------------------------------------------------------

void ZvXLine::TriangulateIfNecessary() const {
    if (!IsPolygon() || m_numVerts < 3 || HasTriangles() || SeparateParts())
        return;
    if (m_numParts == 1) {
        if (IsConvexOrTriangle())
            return;
        const std::vector<Vec2d> xy = PlaneVertices(*this);
        if (IsConvexRing2D(xy.data(), xy.size()))
            m_xflags |= kConvex;
        else
            Triangulate();
        return;
    }
    if (PartsAreSeparate())
        m_xflags |= kSeparateParts;
    else
        Triangulate();
}

bool ZvXLine::PartsAreSeparate() const {
    EnsureDepths();
    for (uint32_t i = 0; i < m_numParts; ++i)
        if (PDepth(i) != 0)
            return false;
    const std::vector<ZvGridPoint> points = ZvGridPoint::Snap(PlaneVertices(*this));
    std::vector<ZvGridEdge> edges;
    for (uint32_t i = 0; i < m_numParts; ++i)
        for (uint32_t k = PStart(i); k < PEnd(i); ++k)
            edges.push_back({k, k + 1 == PEnd(i) ? PStart(i) : k + 1});
    const auto partOf = [&](uint32_t edge) { return PartOfVertex(edges[edge].from); };
    for (const ZvGridCrossing& c : FindGridCrossings(points, edges, 100'000))
        if (partOf(c.first) != partOf(c.second))
            return false;
    return true;
}

bool ZvXLine::Triangulate() const {
    if (!IsPolygon() || m_numVerts < 3 || FirstNotFinite() < m_numVerts)
        return false;
    DropTriangles();
    const std::vector<Vec2d> xy = PlaneVertices(*this);
    const std::vector<ZvRingNesting::Ring> rings = RingsOf(*this);
    const ZvTriangulation result(xy, rings, ZvRingNesting(xy, rings));
    return !result.triangles.empty() && StoreTriangles(result.triangles, result.newPoints);
}

bool ZvXLine::StoreTriangles(const std::vector<uint32_t>& triangles,
                             const std::vector<ZvEdgePoint>& newPoints) const {
    const uint32_t numTri = uint32_t(triangles.size() / 3), numAux = uint32_t(newPoints.size());
    const size_t pure = BytesOfPureData(), section = size_t(numTri) * 12 + 8;
    const size_t size = BytesOfData(Is64(), m_numParts, m_numVerts, HasZ(), HasM(), numTri, numAux);
    auto* block = static_cast<uint8_t*>(std::malloc(size));
    if (!block) {
        ZvErrors::Report(ZvErrorCode::OutOfMemory, "ZvXLine.Triangulate");
        return false;
    }
    std::memcpy(block, &numTri, 4);
    std::memcpy(block + 4, &numAux, 4);
    std::memcpy(block + 8, triangles.data(), size_t(numTri) * 12);
    std::memcpy(block + section, PureData(), pure);
    WriteAuxVertices(block + section + pure, newPoints);
    if (!DataIsSwapped())
        std::free(m_data);
    m_data = block;
    m_xflags = uint8_t((m_xflags & ~(kDataIsSwapped | kSeparateParts)) | kHasTriangles);
    return true;
}

void ZvXLine::WriteAuxVertices(uint8_t* at, const std::vector<ZvEdgePoint>& newPoints) const {
    const uint32_t dims = uint32_t(DimCount());
    const int32_t* packed = MVerts32();
    const uint8_t* doubles = OriginPtr();
    for (const ZvEdgePoint& p : newPoints)
        for (uint32_t d = 0; d < dims; ++d) {
            if (Is64()) {
                double a, b;
                std::memcpy(&a, doubles + (size_t(p.edge.from) * dims + d) * 8, 8);
                std::memcpy(&b, doubles + (size_t(p.edge.to) * dims + d) * 8, 8);
                const double v = a + (b - a) * p.t;
                std::memcpy(at, &v, 8);
                at += 8;
                continue;
            }
            const double a = p.edge.from ? packed[(size_t(p.edge.from) - 1) * dims + d] : 0;
            const double b = p.edge.to ? packed[(size_t(p.edge.to) - 1) * dims + d] : 0;
            const int32_t q = int32_t(std::floor(a + (b - a) * p.t + 0.5));
            std::memcpy(at, &q, 4);
            at += 4;
        }
}

void ZvXLine::DropTriangles() const {
    if (!HasTriangles())
        return;
    const size_t pure = BytesOfPureData();
    if (DataIsSwapped()) {
        m_data += TriangleBytes();
    } else {
        std::memmove(m_data, PureData(), pure);
        if (void* smaller = std::realloc(m_data, pure))
            m_data = static_cast<uint8_t*>(smaller);
    }
    m_xflags &= uint8_t(~kHasTriangles);
}

void ZvXLine::GetTriangle(uint32_t index, uint32_t& a, uint32_t& b, uint32_t& c) const {
    const size_t at = 8 + size_t(index) * 12;
    a = Word(at), b = Word(at + 4), c = Word(at + 8);
}

Vec4d ZvXLine::TriangleCorner(const FltData& flt, uint32_t index) const {
    // Auxiliary vertices follow the others in the same form.
    return Unpack(flt, index);
}
