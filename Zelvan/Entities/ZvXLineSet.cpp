// The packing path: one pass over the input for its extent, one that writes the block.
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <utility>

/// Where the vertices come from: `stride` doubles apart, Z and M at these places of a vertex (-1: the input has none).
struct ZvXLine::Source {
    const double* vertices = nullptr;
    uint32_t numVerts = 0;
    int stride = 2;
    int zAt = -1;
    int mAt = -1;

    const double* Vertex(uint32_t i) const { return vertices + size_t(i) * size_t(stride); }
    bool Has(int axis) const { return axis < 2 || At(axis) >= 0; }
    /// Place of axis 0..3 (X, Y, Z, M).
    int At(int axis) const { return axis < 2 ? axis : axis == 2 ? zAt : mAt; }
    double Value(const double* vertex, int axis) const { return Has(axis) ? vertex[At(axis)] : 0; }
};

/// Extent of the input by axis; an axis that it lacks is 0 throughout.
struct ZvXLine::Extent {
    double first[4] = {};
    double min[4] = {};
    double max[4] = {};
    /// Largest distance of a coordinate from the first vertex's.
    double reach[4] = {};
    bool isFinite = true;

    explicit Extent(const Source& source);
    double ReachXY() const { return std::max(reach[0], reach[1]); }
};

namespace {

constexpr double kLargestQuantum = 2147483647.0;
constexpr double kDefaultPrecision = 1e-6;

/// Widens [min, max] by one axis of all vertices. 0 times a number that is not finite is not a number: `taint` keeps that.
void Widen(const double* value, uint32_t count, int stride, double& min, double& max, double& taint) {
    double lo = min, hi = max, bad = taint;
    for (uint32_t i = 0; i < count; ++i, value += stride) {
        const double v = *value;
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
        bad += v * 0;
    }
    min = lo, max = hi, taint = bad;
}

/// Smallest exponent e (in steps of 8 in 64-bit mode) with 2^e >= v x 1.001, kept within a signed byte. The factor leaves headroom,
/// so that the largest offset stays strictly within 32 bits.
int8_t ClampExp(double v, bool is64) {
    const double grown = v * 1.001;
    if (!(grown >= 1e-100))
        return -128;
    if (!(grown <= DBL_MAX))
        return 127;
    int e = 0;
    if (std::frexp(grown, &e) == 0.5)
        --e;
    if (is64)
        e = e > 0 ? (e + 7) / 8 : -(-e / 8);
    return int8_t(std::clamp(e, -128, 127));
}

/// Nearest quantum, halves go up; saturates.
inline int32_t TPack(double value, double origin, double inverseScale) {
    const double t =
        std::min(std::max((value - origin) * inverseScale + 0.5, -kLargestQuantum), kLargestQuantum);
    const int64_t q = int64_t(t);
    return int32_t(q - (t < double(q)));
}

int8_t ToMicro(double steps) {
    return int8_t(steps > -128 ? steps < 127 ? steps : 127 : -128);
}

/// Vectors are their coordinates in a row.
template <class V>
const double* Doubles(const V* vertices) {
    static_assert(sizeof(V) % sizeof(double) == 0);
    return reinterpret_cast<const double*>(vertices);
}

inline uint8_t* PutDouble(uint8_t* at, double value) {
    std::memcpy(at, &value, 8);
    return at + 8;
}

} // namespace

ZvXLine::Extent::Extent(const Source& source) {
    double taint = 0;
    const double* start = source.vertices;
    for (int axis = 0; axis < 4; ++axis) {
        if (!source.Has(axis) || source.numVerts == 0)
            continue;
        const double* values = start + source.At(axis);
        min[axis] = DBL_MAX, max[axis] = -DBL_MAX;
        Widen(values, source.numVerts, source.stride, min[axis], max[axis], taint);
        first[axis] = *values;
        reach[axis] = std::max(max[axis] - first[axis], first[axis] - min[axis]);
    }
    isFinite = taint == 0;
}

bool ZvXLine::Decide64(const Extent& extent, int force64, ZvDrawing* drawing) const {
    if (!extent.isFinite)
        return true;
    if (force64)
        return force64 > 0;
    if (ZvDrawing* own = ParentDrawing())
        drawing = own;
    const double precision = drawing ? drawing->LinearPrecision() : kDefaultPrecision;
    return extent.ReachXY() / kLargestQuantum > precision;
}

/// Whether parts follow one another within the vertices and no entry is marked as one that does not fit.
static bool CanStore(uint32_t numParts, const uint32_t* partTable, uint32_t numVerts) {
    uint32_t last = 0;
    for (uint32_t i = 0; i < numParts; ++i) {
        const uint32_t start = partTable[i] & ZvXLine::kStartMask;
        if ((partTable[i] & ~ZvXLine::kEntryMask) || start < last || start > numVerts)
            return false;
        last = start;
    }
    return true;
}

void ZvXLine::ComputeMicroBounds(const Extent& extent) {
    const double inverse = MicroBoundsScaleInv();
    const double lo = std::min(extent.min[0] - extent.first[0], extent.min[1] - extent.first[1]);
    const double hi = std::max(extent.max[0] - extent.first[0], extent.max[1] - extent.first[1]);
    m_microLo = ToMicro(std::floor(lo * inverse));
    m_microHi = ToMicro(std::ceil(hi * inverse));
}

void ZvXLine::WriteBoundsCache(const Extent& extent, const int* axes, int dims) {
    uint8_t* at = const_cast<uint8_t*>(BoundsPtr());
    if (!at)
        return;
    const Vec4d scales = Scales();
    const double scale[] = {scales.x, scales.y, scales.z, scales.w};
    for (const double* side : {extent.min, extent.max})
        for (int d = 0; d < dims; ++d) {
            const int axis = axes[d];
            if (Is64()) {
                at = PutDouble(at, side[axis]);
                continue;
            }
            const int32_t q = TPack(side[axis], extent.first[axis], 1 / scale[axis]);
            std::memcpy(at, &q, 4);
            at += 4;
        }
}

void ZvXLine::WriteVertices(const Source& source, const int* axes, int dims) {
    uint8_t* at = const_cast<uint8_t*>(OriginPtr());
    const double* first = source.Vertex(0);
    if (Is64()) {
        for (uint32_t i = 0; i < source.numVerts; ++i) {
            const double* vertex = source.Vertex(i);
            for (int d = 0; d < dims; ++d)
                at = PutDouble(at, source.Value(vertex, axes[d]));
        }
        return;
    }
    for (int d = 0; d < dims; ++d)
        at = PutDouble(at, source.Value(first, axes[d]));

    const Vec4d scales = Scales();
    const double x0 = first[0], y0 = first[1], inverseXY = 1 / scales.x;
    int32_t* q = MVerts32();
    const double* vertex = source.vertices;
    for (uint32_t i = 1; i < source.numVerts; ++i, q += dims) {
        vertex += source.stride;
        q[0] = TPack(vertex[0], x0, inverseXY);
        q[1] = TPack(vertex[1], y0, inverseXY);
    }
    const double inverse[] = {0, 0, 1 / scales.z, 1 / scales.w};
    for (int d = 2; d < dims; ++d) {
        const int axis = axes[d];
        q = MVerts32() + d;
        for (uint32_t i = 1; i < source.numVerts; ++i, q += dims)
            *q = source.Has(axis)
                     ? TPack(source.Vertex(i)[source.At(axis)], first[source.At(axis)], inverse[axis])
                     : 0;
    }
}

bool ZvXLine::Pack(uint32_t numParts, const uint32_t* partTable, const Source& source, bool isPolygon,
                   bool hasZ, bool hasM, int force64, ZvDrawing* drawing, bool notify) {
    if (source.numVerts == 0)
        numParts = 0;
    const uint32_t onePart = kBadPartTable | (isPolygon ? kClosedBit : 0);
    const bool storable = CanStore(numParts, partTable, source.numVerts);
    if (!storable)
        numParts = 1, partTable = &onePart;
    const Extent extent(source);
    const bool is64 = source.numVerts ? Decide64(extent, force64, drawing) : Is64();

    // The former block is freed last: the part table passed may lie in it.
    uint8_t* formerOwned = DataIsSwapped() ? nullptr : m_data;
    m_data = nullptr;
    const bool ok = Alloc(is64, numParts, source.numVerts, isPolygon, hasZ, hasM, 0, 0);
    if (ok && source.numVerts) {
        for (uint32_t i = 0; i < numParts; ++i)
            MParts()[i] = storable ? partTable[i] & kEntryMask : partTable[i];
        m_expXY = ClampExp(extent.ReachXY(), is64);
        m_expZ = hasZ && source.Has(2) ? ClampExp(extent.reach[2], is64) : int8_t(0);
        m_expM = hasM && source.Has(3) ? ClampExp(extent.reach[3], is64) : int8_t(0);
        int axes[4] = {0, 1, 2, 3}, dims = 2;
        if (hasZ)
            axes[dims++] = 2;
        if (hasM)
            axes[dims++] = 3;
        WriteVertices(source, axes, dims);
        ComputeMicroBounds(extent);
        WriteBoundsCache(extent, axes, dims);
    }
    std::free(formerOwned);
    if (notify)
        RecalcBounds();
    return ok;
}

// --- the setters ---------------------------------------------------------------------------------------------------------

bool ZvXLine::Set(uint32_t numParts, const uint32_t* partTable, uint32_t numVerts, bool isPolygon, bool hasZ,
                  bool hasM, bool inputHasZ, bool inputHasM, const double* vertices, int force64,
                  ZvDrawing* drawing, bool notify) {
    const Source source{vertices, numVerts, 2 + inputHasZ + inputHasM, inputHasZ ? 2 : -1,
                        inputHasM ? 2 + inputHasZ : -1};
    return Pack(numParts, partTable, source, isPolygon, hasZ, hasM, force64, drawing, notify);
}

bool ZvXLine::Set(uint32_t numParts, const uint32_t* partTable, std::span<const Vec4d> vertices,
                  bool isPolygon, bool hasZ, bool hasM, int force64, ZvDrawing* drawing, bool notify) {
    const Source source{Doubles(vertices.data()), uint32_t(vertices.size()), 4, hasZ ? 2 : -1, hasM ? 3 : -1};
    return Pack(numParts, partTable, source, isPolygon, hasZ, hasM, force64, drawing, notify);
}

bool ZvXLine::SetLine(const Vec4d& a, const Vec4d& b, bool hasZ, ZvDrawing* drawing) {
    const uint32_t open = 0;
    const Vec4d vertices[] = {a, b};
    return Set(1, &open, vertices, false, hasZ, false, 0, drawing);
}

bool ZvXLine::SetLine(const Vec3d& a, const Vec3d& b, bool hasZ, ZvDrawing* drawing) {
    return SetLine(Vec4d{a.x, a.y, a.z, 0}, Vec4d{b.x, b.y, b.z, 0}, hasZ, drawing);
}

bool ZvXLine::SetPoly(bool closed, bool isPolygon, size_t count, const Vec2d* vertices, int force64,
                      ZvDrawing* drawing) {
    const uint32_t entry = MakePartEntry(0, closed || isPolygon);
    const Source source{Doubles(vertices), uint32_t(count), 2, -1, -1};
    return Pack(1, &entry, source, isPolygon, false, false, force64, drawing, true);
}

bool ZvXLine::SetPoly(bool closed, bool isPolygon, size_t count, const Vec3d* vertices, int force64,
                      ZvDrawing* drawing) {
    const uint32_t entry = MakePartEntry(0, closed || isPolygon);
    const Source source{Doubles(vertices), uint32_t(count), 3, 2, -1};
    return Pack(1, &entry, source, isPolygon, true, false, force64, drawing, true);
}

bool ZvXLine::SetPoly(bool closed, bool isPolygon, size_t count, const Vec4d* vertices, int force64,
                      ZvDrawing* drawing) {
    const uint32_t entry = MakePartEntry(0, closed || isPolygon);
    const Source source{Doubles(vertices), uint32_t(count), 4, 2, 3};
    return Pack(1, &entry, source, isPolygon, true, true, force64, drawing, true);
}

bool ZvXLine::SetPolyline(std::span<const Vec2d> vertices, bool closed, ZvDrawing* drawing) {
    return SetPoly(closed, false, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::SetPolyline(std::span<const Vec3d> vertices, bool closed, ZvDrawing* drawing) {
    return SetPoly(closed, false, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::SetPolyline(std::span<const Vec4d> vertices, bool closed, ZvDrawing* drawing) {
    return SetPoly(closed, false, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::SetPolygon(std::span<const Vec2d> vertices, ZvDrawing* drawing) {
    return SetPoly(true, true, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::SetPolygon(std::span<const Vec3d> vertices, ZvDrawing* drawing) {
    return SetPoly(true, true, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::SetPolygon(std::span<const Vec4d> vertices, ZvDrawing* drawing) {
    return SetPoly(true, true, vertices.size(), vertices.data(), 0, drawing);
}

bool ZvXLine::ReplaceVertices(const Source& source, bool hasZ, bool hasM, ZvDrawing* drawing) {
    if (source.numVerts != m_numVerts || m_numVerts == 0)
        return false;
    // Rings may nest otherwise now.
    const bool hadTriangles = HasTriangles();
    for (uint32_t i = 0; i < m_numParts; ++i)
        SetDepthRaw(i, 0);
    if (!Pack(m_numParts, MParts(), source, IsPolygon(), hasZ, hasM, Is64() ? 1 : 0, drawing, true))
        return false;
    return !hadTriangles || Triangulate();
}

bool ZvXLine::SetAllVertices(const dvect<Vec4d>& vertices, ZvDrawing* drawing) {
    return ReplaceVertices({Doubles(vertices.data()), uint32_t(vertices.size()), 4, 2, 3}, true, true,
                           drawing);
}

bool ZvXLine::SetAllVertices(const dvect<Vec3d>& vertices, ZvDrawing* drawing) {
    return ReplaceVertices({Doubles(vertices.data()), uint32_t(vertices.size()), 3, 2, -1}, true, false,
                           drawing);
}
