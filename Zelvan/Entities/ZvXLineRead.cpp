// Reading vertices out of the block: one by one, in runs, and their bounds.
#include "Zelvan/Entities/ZvXLine.h"
#include <algorithm>
#include <bit>
#include <cmath>

namespace {

inline double GetDouble(const uint8_t* at) {
    double value;
    std::memcpy(&value, at, 8);
    return value;
}

/// Calls put(i, q) for the 32-bit vertices first..last-1 with q their quanta; vertex 0 counts as all zeros. D at compile time lets
/// the compiler unroll.
template <int D, class Put>
inline void EachQuanta(const int32_t* packed, uint32_t first, uint32_t count, Put put) {
    static constexpr int32_t origin[4] = {};
    uint32_t i = 0;
    if (first == 0 && count > 0)
        put(i++, origin);
    const int32_t* q = packed + size_t(first + i - 1) * D;
    for (; i < count; ++i, q += D)
        put(i, q);
}

template <int D, class Put>
inline void EachDoubles(const uint8_t* packed, uint32_t first, uint32_t count, Put put) {
    const uint8_t* at = packed + size_t(first) * D * 8;
    for (uint32_t i = 0; i < count; ++i, at += D * 8) {
        double v[D];
        std::memcpy(v, at, D * 8);
        put(i, v);
    }
}

/// Runs `each` with the dimension as a compile-time constant.
template <class Each>
inline void ByDims(int dims, Each each) {
    if (dims == 2)
        each(std::integral_constant<int, 2>());
    else if (dims == 3)
        each(std::integral_constant<int, 3>());
    else
        each(std::integral_constant<int, 4>());
}

} // namespace

Vec4d ZvXLine::Origin() const {
    if (!m_data)
        return {};
    const uint8_t* at = OriginPtr();
    return {GetDouble(at), GetDouble(at + 8), HasZ() ? GetDouble(at + 16) : 0,
            HasM() ? GetDouble(at + (HasZ() ? 24 : 16)) : 0};
}

ZvXLine::FltData ZvXLine::GetFlt() const {
    const Vec4d o = Origin();
    FltData flt;
    flt.origin[0] = o.x, flt.origin[1] = o.y, flt.origin[2] = o.z, flt.origin[3] = o.w;
    if (!Is64()) {
        flt.scale[0] = flt.scale[1] = QuantumScale(GetExpXY());
        flt.scale[2] = QuantumScale(GetExpZ());
        flt.scale[3] = QuantumScale(GetExpM());
    }
    return flt;
}

Vec4d ZvXLine::Unpack(const FltData& flt, uint32_t i) const {
    if (i == 0)
        return {flt.origin[0], flt.origin[1], flt.origin[2], flt.origin[3]};
    if (!(m_xflags & (kHasZ | kHasM | k64))) {
        const int32_t* q = MVerts32() + (size_t(i) - 1) * 2;
        return {flt.origin[0] + q[0] * flt.scale[0], flt.origin[1] + q[1] * flt.scale[1], 0, 0};
    }
    const size_t dims = size_t(DimCount());
    double v[4] = {};
    if (Is64()) {
        std::memcpy(v, OriginPtr() + i * dims * 8, dims * 8);
    } else {
        const int32_t* q = MVerts32() + (size_t(i) - 1) * dims;
        for (size_t d = 0; d < dims; ++d) {
            const size_t axis = d == 2 && !HasZ() ? 3 : d;
            v[d] = flt.origin[axis] + q[d] * flt.scale[axis];
        }
    }
    return {v[0], v[1], HasZ() ? v[2] : 0, HasM() ? v[2 + HasZ()] : 0};
}

void ZvXLine::ReadXY(uint32_t first, uint32_t count, Vec2d* out) const {
    if (count == 0)
        return;
    ByDims(DimCount(), [&](auto dims) {
        if (Is64()) {
            EachDoubles<dims>(OriginPtr(), first, count, [out](uint32_t i, const double* v) {
                out[i] = {v[0], v[1]};
            });
            return;
        }
        const uint8_t* origin = OriginPtr();
        const double x0 = GetDouble(origin), y0 = GetDouble(origin + 8), scale = QuantumScale(GetExpXY());
        EachQuanta<dims>(MVerts32(), first, count, [=](uint32_t i, const int32_t* q) {
            out[i] = {x0 + q[0] * scale, y0 + q[1] * scale};
        });
    });
}

void ZvXLine::ReadXYZ(uint32_t first, uint32_t count, Vec3d* out) const {
    const FltData flt = GetFlt();
    const bool hasZ = HasZ();
    if (count == 0)
        return;
    ByDims(DimCount(), [&](auto dims) {
        if (Is64()) {
            EachDoubles<dims>(OriginPtr(), first, count, [=](uint32_t i, const double* v) {
                out[i] = {v[0], v[1], hasZ ? v[dims > 2 ? 2 : 0] : 0};
            });
            return;
        }
        const double zScale = hasZ ? flt.scale[2] : 0;
        EachQuanta<dims>(MVerts32(), first, count, [&, zScale](uint32_t i, const int32_t* q) {
            out[i] = {flt.origin[0] + q[0] * flt.scale[0], flt.origin[1] + q[1] * flt.scale[1],
                      flt.origin[2] + q[dims > 2 ? 2 : 0] * zScale};
        });
    });
}

void ZvXLine::ReadXYZM(uint32_t first, uint32_t count, Vec4d* out) const {
    const FltData flt = GetFlt();
    if (DimCount() > 2 || Is64()) {
        for (uint32_t i = 0; i < count; ++i)
            out[i] = Unpack(flt, first + i);
        return;
    }
    EachQuanta<2>(MVerts32(), first, count, [&](uint32_t i, const int32_t* q) {
        out[i] = {flt.origin[0] + q[0] * flt.scale[0], flt.origin[1] + q[1] * flt.scale[1], 0, 0};
    });
}

void ZvXLine::ReadXYf(uint32_t first, uint32_t count, const Affine2& map, Vec2f* out) const {
    if (count == 0)
        return;
    const Affine2 m = map;
    ByDims(DimCount(), [&](auto dims) {
        if (Is64()) {
            EachDoubles<dims>(OriginPtr(), first, count, [=](uint32_t i, const double* v) {
                out[i] = {float(m.xx * v[0] + m.xy * v[1] + m.dx), float(m.yx * v[0] + m.yy * v[1] + m.dy)};
            });
            return;
        }
        // The quantum goes into the map: one multiplication less a coordinate.
        const uint8_t* origin = OriginPtr();
        const double x0 = GetDouble(origin), y0 = GetDouble(origin + 8), scale = QuantumScale(GetExpXY());
        const double dx = m.xx * x0 + m.xy * y0 + m.dx, dy = m.yx * x0 + m.yy * y0 + m.dy;
        const double xx = m.xx * scale, xy = m.xy * scale, yx = m.yx * scale, yy = m.yy * scale;
        if (xy == 0 && yx == 0) {
            EachQuanta<dims>(MVerts32(), first, count, [=](uint32_t i, const int32_t* q) {
                out[i] = {float(xx * q[0] + dx), float(yy * q[1] + dy)};
            });
            return;
        }
        EachQuanta<dims>(MVerts32(), first, count, [=](uint32_t i, const int32_t* q) {
            out[i] = {float(xx * q[0] + xy * q[1] + dx), float(yx * q[0] + yy * q[1] + dy)};
        });
    });
}

// --- all vertices --------------------------------------------------------------------------------------------------------

void ZvXLine::GetAllVertices(dvect<Vec2d>& vertices) const {
    vertices.resize(m_numVerts);
    ReadXY(0, m_numVerts, vertices.data());
}

void ZvXLine::GetAllVertices(dvect<Vec3d>& vertices) const {
    vertices.resize(m_numVerts);
    ReadXYZ(0, m_numVerts, vertices.data());
}

void ZvXLine::GetAllVertices(dvect<Vec4d>& vertices) const {
    vertices.resize(m_numVerts);
    ReadXYZM(0, m_numVerts, vertices.data());
}

void ZvXLine::GetAllVertices(dvect<Vec2f>& vertices, const Vec3d& base) const {
    vertices.resize(m_numVerts);
    ReadXYf(0, m_numVerts, {1, 0, -base.x, 0, 1, -base.y}, vertices.data());
}

void ZvXLine::GetAllVertices(dvect<Vec3f>& vertices, const Vec3d& base) const {
    vertices.resize(m_numVerts);
    const FltData flt = GetFlt();
    for (uint32_t i = 0; i < m_numVerts; ++i) {
        const Vec4d v = Unpack(flt, i);
        vertices[i] = {float(v.x - base.x), float(v.y - base.y), float(v.z - base.z)};
    }
}

void ZvXLine::GetAllVertices(dvect<Vec4f>& vertices, const Vec3d& base) const {
    vertices.resize(m_numVerts);
    const FltData flt = GetFlt();
    for (uint32_t i = 0; i < m_numVerts; ++i) {
        const Vec4d v = Unpack(flt, i);
        vertices[i] = {float(v.x - base.x), float(v.y - base.y), float(v.z - base.z), float(v.w)};
    }
}

void ZvXLine::LineVectorGetVertices(dvect<Vec4d>& vertices) const {
    GetAllVertices(vertices);
}

// --- bounds --------------------------------------------------------------------------------------------------------------

namespace {

struct QuantaBox {
    int32_t min[3] = {}, max[3] = {};
};

/// Bounds of few vertices in quanta; the origin (all zeros) belongs to them.
template <int D>
inline QuantaBox ScanQuanta(const int32_t* q, uint32_t count) {
    QuantaBox box;
    constexpr int axes = D > 3 ? 3 : D;
    for (uint32_t i = 0; i < count; ++i, q += D)
        for (int d = 0; d < axes; ++d) {
            box.min[d] = q[d] < box.min[d] ? q[d] : box.min[d];
            box.max[d] = q[d] > box.max[d] ? q[d] : box.max[d];
        }
    return box;
}

} // namespace

ZvBounds3D ZvXLine::IBounds3D() const {
    if (!m_data || m_numVerts == 0)
        return {};
    const int dims = DimCount();
    const bool hasZ = HasZ();
    if (Is64()) {
        double min[3] = {}, max[3] = {};
        const uint8_t* at = BoundsPtr();
        const size_t vertexBytes = size_t(dims) * 8;
        const uint8_t* from = at ? at : OriginPtr();
        const uint32_t count = at ? 2 : m_numVerts;
        std::memcpy(min, from, hasZ ? 24 : 16);
        std::memcpy(max, from, hasZ ? 24 : 16);
        for (uint32_t i = 1; i < count; ++i)
            for (int d = 0; d < 2 + hasZ; ++d) {
                const double v = GetDouble(from + i * vertexBytes + size_t(d) * 8);
                min[d] = std::min(min[d], v), max[d] = std::max(max[d], v);
            }
        return {min[0], min[1], min[2], max[0], max[1], max[2]};
    }
    QuantaBox box;
    if (const uint8_t* cache = BoundsPtr()) {
        const size_t bytes = hasZ ? 12 : 8;
        std::memcpy(box.min, cache, bytes);
        std::memcpy(box.max, cache + size_t(dims) * 4, bytes);
    } else if (dims == 2)
        box = ScanQuanta<2>(MVerts32(), m_numVerts - 1);
    else if (dims == 3)
        box = ScanQuanta<3>(MVerts32(), m_numVerts - 1);
    else
        box = ScanQuanta<4>(MVerts32(), m_numVerts - 1);
    const uint8_t* origin = OriginPtr();
    const double x0 = GetDouble(origin), y0 = GetDouble(origin + 8), scale = QuantumScale(GetExpXY());
    ZvBounds3D b(x0 + box.min[0] * scale, y0 + box.min[1] * scale, 0, x0 + box.max[0] * scale,
                 y0 + box.max[1] * scale, 0);
    if (hasZ) {
        const double z0 = GetDouble(origin + 16), zScale = QuantumScale(GetExpZ());
        b.minZ = z0 + box.min[2] * zScale, b.maxZ = z0 + box.max[2] * zScale;
    }
    return b;
}

ZvBounds2D ZvXLine::IBounds2D() const {
    return IBounds3D().ToBounds2D();
}

// --- moving --------------------------------------------------------------------------------------------------------------

void ZvXLine::SetOrigin(const Vec4d& origin) {
    if (!m_data || m_numVerts == 0)
        return;
    const Vec4d by = origin - Origin();
    const double shift[] = {by.x, by.y, by.z, by.w};
    const double target[] = {origin.x, origin.y, origin.z, origin.w};
    const int dims = DimCount();
    // In 64-bit mode bounds cache, vertices and auxiliary vertices lie in a row, all in world coordinates; in 32-bit mode all but
    // the origin is relative to it.
    uint8_t* at = const_cast<uint8_t*>(OriginPtr());
    if (Is64()) {
        uint8_t* from = m_data + TriangleBytes() + size_t(m_numParts) * 4;
        const size_t count = size_t(m_data + BytesOfData() - from) / 8;
        for (size_t i = 0; i < count; ++i) {
            const int d = int(i % size_t(dims));
            const double moved = GetDouble(from + i * 8) + shift[d == 2 && !HasZ() ? 3 : d];
            std::memcpy(from + i * 8, &moved, 8);
        }
    }
    for (int d = 0; d < dims; ++d)
        std::memcpy(at + d * 8, &target[d == 2 && !HasZ() ? 3 : d], 8);
    RecalcBounds();
}
