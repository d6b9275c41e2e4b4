#pragma once
#include "Zelvan/Entities/ZvFilledEntity.h"
#include <bit>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

struct ZvEdgePoint;

/// The one linear entity: line, open or closed polyline, polygon, polygon with holes, several separate rings. It holds parts (runs
/// of vertices; rings where closed or where the entity is a polygon) over one vertex array, with Z and M per vertex where wanted.
/// Segments are straight. A closed part does not repeat its first vertex.
///
/// All parts and vertices lie in one block, in this order (D = DimCount values a vertex: X, Y, [Z], [M]):
///   1. with triangles: u32 numTri, u32 numAux, numTri x 3 u32 vertex indices (indices >= numVerts name auxiliary vertices)
///   2. numParts u32 part entries: bits 0..23 first vertex, 25..28 depth + 1 (0: not computed), 31 closed, the rest 0
///   3. bounds cache (from 16 vertices up, 64-bit mode): D doubles minimum, D doubles maximum
///   4. origin: D doubles, vertex 0 in full precision
///   5. bounds cache (from 16 vertices up, 32-bit mode): D int32 minimum, D int32 maximum, in quanta from the origin
///   6. vertices 1..numVerts-1: D int32 quanta from the origin each, or D doubles each in 64-bit mode
///   7. auxiliary vertices of the triangles, in the same form
/// The block is aligned to 4 bytes only; doubles in it go through memcpy. Depths, triangles and the convex and separate-parts flags
/// are caches that const operations fill. Coordinates are world units; a missing Z or M reads 0.
///
/// The object is 72 bytes; drawings hold millions.
class ZV_API ZvXLine : public ZvFilledEntity {
public:
    enum XFlag : uint8_t {
        kPolygon = 1 << 0,
        kHasZ = 1 << 1,
        kHasM = 1 << 2,
        kDataIsSwapped = 1 << 3,
        kConvex = 1 << 4,
        k64 = 1 << 5,
        kSeparateParts = 1 << 6,
        kHasTriangles = 1 << 7,
    };
    static constexpr uint32_t kStartMask = 0x00FFFFFFu;
    static constexpr uint32_t kDepthMask = 0x1E000000u;
    static constexpr int kDepthShift = 25;
    static constexpr uint32_t kClosedBit = 0x80000000u;
    static constexpr uint32_t kEntryMask = kStartMask | kDepthMask | kClosedBit;
    /// In an entry: the table cannot be stored (a start beyond kMaxStart, starts that descend). Never in an inserted entity.
    static constexpr uint32_t kBadPartTable = 1u << 24;
    /// From this many vertices up the block carries its bounds.
    static constexpr uint32_t kBoundsCacheFrom = 16;
    /// Largest first vertex of a part.
    static constexpr uint32_t kMaxStart = kStartMask;
    static constexpr uint16_t kNativeHeaderSize = 30;

    ZvXLine();
    explicit ZvXLine(ZvDrawing* drawing);
    /// One open part of two vertices. Z (and M) are kept when one of them is not 0.
    ZvXLine(const Vec3d& a, const Vec3d& b, ZvDrawing* drawing = nullptr);
    ZvXLine(const Vec4d& a, const Vec4d& b, ZvDrawing* drawing = nullptr);
    ZvXLine(const Vec3d& a, const Vec3d& b, const ZvColor& color, ZvLineWidth width, ZvLineType type,
            ZvDrawing* drawing = nullptr);
    ZvXLine(const Vec4d& a, const Vec4d& b, const ZvColor& color, ZvLineWidth width, ZvLineType type,
            ZvDrawing* drawing = nullptr);
    ~ZvXLine() override;

    // --- setters: each rebuilds the whole block --------------------------------------------------------------------------
    // force64: 1 doubles, -1 integers, 0 decides by the precision of the drawing (of the entity, else the one passed, else 1e-6).
    // Input that is not finite is kept as doubles whatever is forced, so that the insertion check can refuse it. All return false
    // (and leave an empty entity) when memory runs out; `notify` calls RecalcBounds.

    /// `vertices`: 2 + inputHasZ + inputHasM doubles each. `partTable`: numParts entries as in the block (see MakePartEntry), starts
    /// ascending. A table that cannot be stored (a part begins beyond kMaxStart, starts descend or pass numVerts) gives one part of
    /// all vertices that OkForInsertion refuses.
    bool Set(uint32_t numParts, const uint32_t* partTable, uint32_t numVerts, bool isPolygon, bool hasZ,
             bool hasM, bool inputHasZ, bool inputHasM, const double* vertices, int force64 = 0,
             ZvDrawing* drawing = nullptr, bool notify = true);
    /// As above from vectors of 4; of Z and M what `hasZ`, `hasM` say is kept.
    bool Set(uint32_t numParts, const uint32_t* partTable, std::span<const Vec4d> vertices, bool isPolygon,
             bool hasZ, bool hasM, int force64 = 0, ZvDrawing* drawing = nullptr, bool notify = true);
    bool SetLine(const Vec4d& a, const Vec4d& b, bool hasZ, ZvDrawing* drawing = nullptr);
    bool SetLine(const Vec3d& a, const Vec3d& b, bool hasZ, ZvDrawing* drawing = nullptr);
    /// One part, closed when `closed` or `isPolygon`.
    bool SetPoly(bool closed, bool isPolygon, size_t count, const Vec2d* vertices, int force64 = 0,
                 ZvDrawing* drawing = nullptr);
    bool SetPoly(bool closed, bool isPolygon, size_t count, const Vec3d* vertices, int force64 = 0,
                 ZvDrawing* drawing = nullptr);
    bool SetPoly(bool closed, bool isPolygon, size_t count, const Vec4d* vertices, int force64 = 0,
                 ZvDrawing* drawing = nullptr);
    /// One open part. Vec2d has neither Z nor M, Vec3d has Z, Vec4d both. Take dvect, std::vector, std::array.
    bool SetPolyline(std::span<const Vec2d> vertices, bool closed = false, ZvDrawing* drawing = nullptr);
    bool SetPolyline(std::span<const Vec3d> vertices, bool closed = false, ZvDrawing* drawing = nullptr);
    bool SetPolyline(std::span<const Vec4d> vertices, bool closed = false, ZvDrawing* drawing = nullptr);
    bool SetPolygon(std::span<const Vec2d> vertices, ZvDrawing* drawing = nullptr);
    bool SetPolygon(std::span<const Vec3d> vertices, ZvDrawing* drawing = nullptr);
    bool SetPolygon(std::span<const Vec4d> vertices, ZvDrawing* drawing = nullptr);
    /// Replace the vertices and keep the parts; false (nothing changed) when the count differs from NumVerts.
    bool SetAllVertices(const dvect<Vec4d>& vertices, ZvDrawing* drawing = nullptr);
    bool SetAllVertices(const dvect<Vec3d>& vertices, ZvDrawing* drawing = nullptr);
    /// Sets the polygon flag alone; with `closeAll` a new polygon's parts are closed too.
    void SetIsPolygon(bool polygon, bool closeAll);
    void CloseAllParts();
    /// Tells the owner (Touch).
    void SetPClosed(uint32_t part, bool closed);

    // --- state -----------------------------------------------------------------------------------------------------------
    bool IsPolygon() const { return m_xflags & kPolygon; }
    bool HasZ() const { return m_xflags & kHasZ; }
    bool HasM() const { return m_xflags & kHasM; }
    bool DataIsSwapped() const { return m_xflags & kDataIsSwapped; }
    bool IsConvex() const { return m_xflags & kConvex; }
    bool Is64() const { return m_xflags & k64; }
    bool SeparateParts() const { return m_xflags & kSeparateParts; }
    bool HasTriangles() const { return m_xflags & kHasTriangles; }
    uint8_t XFlags() const { return m_xflags; }
    uint32_t NumParts() const { return m_numParts; }
    uint32_t NumVerts() const { return m_numVerts; }
    int DimCount() const { return 2 + HasZ() + HasM(); }
    int VertSize() const { return Is64() ? 8 : 4; }
    uint32_t NumPackedVerts() const { return Is64() ? m_numVerts : m_numVerts ? m_numVerts - 1 : 0; }
    bool HasBoundsCache() const { return m_numVerts >= kBoundsCacheFrom; }
    bool IsLine() const { return m_numParts == 1 && m_numVerts == 2; }
    bool IsConvexOrTriangle() const { return IsConvex() || m_numVerts == 3; }
    uint32_t NumTri() const { return HasTriangles() ? Word(0) : 0; }
    uint32_t NumAux() const { return HasTriangles() ? Word(4) : 0; }

    // --- parts -----------------------------------------------------------------------------------------------------------
    uint32_t PStart(uint32_t i) const { return PartEntry(i) & kStartMask; }
    uint32_t PEnd(uint32_t i) const { return i + 1 < m_numParts ? PStart(i + 1) : m_numVerts; }
    uint32_t PLen(uint32_t i) const { return PEnd(i) - PStart(i); }
    bool PClosed(uint32_t i) const { return PartEntry(i) & kClosedBit; }
    /// True where the last vertex joins the first: a closed part, or any part of a polygon.
    bool PIsRing(uint32_t i) const { return IsPolygon() || PClosed(i); }
    /// Nesting level of the ring; 255 when it was not computed.
    uint8_t PDepth(uint32_t i) const { return uint8_t(GetDepthRaw(i) - 1); }
    /// Depth + 1, 0 when not computed. 15 stands for every depth from 14 up.
    uint32_t GetDepthRaw(uint32_t i) const { return (PartEntry(i) & kDepthMask) >> kDepthShift; }
    void SetDepthRaw(uint32_t i, uint32_t raw);
    bool HasDepths() const;
    /// Computes the depths when they are not known. Rings alone nest; an open part of a line has depth 0.
    void EnsureDepths() const;
    /// The first part at or after `part` that is an outer ring (even depth); NumParts() when there is none. Depths are computed when
    /// `part` is 0.
    uint32_t GetOuterParts(uint32_t part) const;
    /// For each part the part that directly encloses it, -1 for none. One pass for all; MLVGetPartParent asks for one.
    void GetPartParents(std::vector<int32_t>& parents) const;
    /// First start 0, every other at least 2 and below numVerts. The order of the starts is not part of this test.
    bool VerifyPartSanity() const;
    static bool VerifyPartSanity(uint32_t numParts, const uint32_t* partTable, uint32_t numVerts);
    /// An entry without depth for Set. A start that does not fit marks the table as one that cannot be stored.
    static uint32_t MakePartEntry(uint32_t start, bool closed);
    /// The part table in the block (4-byte aligned).
    uint32_t* MParts() { return reinterpret_cast<uint32_t*>(m_data + TriangleBytes()); }
    const uint32_t* MParts() const { return reinterpret_cast<const uint32_t*>(m_data + TriangleBytes()); }
    /// The part that vertex `vertex` belongs to.
    uint32_t PartOfVertex(uint32_t vertex) const;

    // --- vertices --------------------------------------------------------------------------------------------------------
    struct FltData {
        double origin[4] = {};
        double scale[4] = {1, 1, 1, 1};
    };
    FltData GetFlt() const;
    Vec4d Origin() const;
    /// Moves the whole entity so that vertex 0 lies there; in 32-bit mode nothing else of the block changes.
    void SetOrigin(const Vec4d& origin);
    /// Vertex i; `flt` is what GetFlt gave.
    Vec4d Unpack(const FltData& flt, uint32_t i) const;
    /// Vertices [first, first + count) at once; `out` has room for them. These are the fast ways.
    void ReadXY(uint32_t first, uint32_t count, Vec2d* out) const;
    void ReadXYZ(uint32_t first, uint32_t count, Vec3d* out) const;
    void ReadXYZM(uint32_t first, uint32_t count, Vec4d* out) const;
    /// An affine map of the plane: x' = xx x + xy y + dx, y' = yx x + yy y + dy.
    struct Affine2 {
        double xx = 1, xy = 0, dx = 0, yx = 0, yy = 1, dy = 0;
    };
    /// As ReadXY through the map, in single precision; the map is applied in double precision.
    void ReadXYf(uint32_t first, uint32_t count, const Affine2& map, Vec2f* out) const;
    struct ViewCut {
        Affine2 map;                                   ///< world to pixels
        ZvBounds2D window = ZvBounds2D::SuperBounds(); ///< world; what lies outside is not seen
        double step = 0;                               ///< pixels
    };
    /// Vertices in pixels for drawing as one run or ring: without those within a step of the last one kept, and of runs beyond one
    /// side of the window with their ends only. The first and the last vertex are kept. `out` has room for `count`; answers how many
    /// came out.
    uint32_t ReadForView(uint32_t first, uint32_t count, const ViewCut& cut, Vec2f* out) const;
    /// All vertices; the array is resized. Floats are given relative to `base`.
    void GetAllVertices(dvect<Vec2d>& vertices) const;
    void GetAllVertices(dvect<Vec3d>& vertices) const;
    void GetAllVertices(dvect<Vec4d>& vertices) const;
    void GetAllVertices(dvect<Vec2f>& vertices, const Vec3d& base = {}) const;
    void GetAllVertices(dvect<Vec3f>& vertices, const Vec3d& base = {}) const;
    void GetAllVertices(dvect<Vec4f>& vertices, const Vec3d& base = {}) const;
    /// Into room for NumVerts() vectors.
    void GetAllVertices3(Vec3d* vertices) const { ReadXYZ(0, m_numVerts, vertices); }
    void GetAllVertices4(Vec4d* vertices) const { ReadXYZM(0, m_numVerts, vertices); }

    /// Effective exponents: in 32-bit mode as stored, but 127 means 256; in 64-bit mode the stored value x 8.
    int16_t GetExpXY() const { return EffectiveExp(m_expXY, Is64()); }
    int16_t GetExpZ() const { return EffectiveExp(m_expZ, Is64()); }
    int16_t GetExpM() const { return EffectiveExp(m_expM, Is64()); }
    /// World units a quantum for X, Y, Z, M; 1 in 64-bit mode.
    Vec4d Scales() const;
    Vec4f Scalesf() const;
    static Vec4d Scales_I64(int expXY, int expZ, int expM);
    int8_t MicroBoundsLo() const { return m_microLo; }
    int8_t MicroBoundsHi() const { return m_microHi; }
    /// World units a step of the micro bounds, and its inverse (0 when there is no extent to speak of).
    double MicroBoundsScale() const;
    double MicroBoundsScaleInv() const;
    /// Coarse size of the square around the entity, without a look at the block.
    double SizeFromMicroBounds() const { return (m_microHi - m_microLo) * MicroBoundsScale(); }

    // --- the block -------------------------------------------------------------------------------------------------------
    size_t BytesOfData() const;
    static size_t BytesOfData(bool is64, uint32_t numParts, uint32_t numVerts, bool hasZ, bool hasM,
                              uint32_t numTri, uint32_t numAux);
    /// Without triangles and auxiliary vertices: what the file stores.
    size_t BytesOfPureData() const;
    const uint8_t* Data() const { return m_data; }
    /// First byte of the part table, where the pure data begin.
    const uint8_t* PureData() const { return m_data + TriangleBytes(); }
    const uint8_t* TrianglesPtr() const { return m_data + 8; }
    const uint8_t* OriginPtr() const {
        const uint8_t* after = PureData() + size_t(m_numParts) * 4;
        return Is64() && HasBoundsCache() ? after + size_t(DimCount()) * 16 : after;
    }
    /// Minimum vector, then maximum vector; null below 16 vertices.
    const uint8_t* BoundsPtr() const;
    /// Vertices 1.. in 32-bit mode, null in 64-bit mode.
    int32_t* MVerts32() { return const_cast<int32_t*>(static_cast<const ZvXLine*>(this)->MVerts32()); }
    const int32_t* MVerts32() const {
        if (Is64() || !m_data)
            return nullptr;
        const size_t dims = size_t(DimCount());
        return reinterpret_cast<const int32_t*>(OriginPtr() + dims * 8 + (HasBoundsCache() ? dims * 8 : 0));
    }
    const int32_t* AuxVertsPtr32() const;
    const uint8_t* AuxVertsPtr64() const;
    /// Frees the old block, resets flags and exponents and takes room for the counts given; contents are not set, but for numTri and
    /// numAux. The block comes from `heap` when one is given. False when memory runs out (the entity is empty then).
    bool Alloc(bool is64, uint32_t numParts, uint32_t numVerts, bool isPolygon, bool hasZ, bool hasM,
               uint32_t numTri, uint32_t numAux, ZvcDumbHeap* heap = nullptr);
    /// Room for `size` bytes, from `heap` when one is given (bit 3 is then set).
    bool Alloc(size_t size, ZvcDumbHeap* heap);
    void Free();
    /// Bytes that the entity costs, without a look at its block's allocation.
    size_t CheapSize() const { return SizeOf() + BytesOfData(); }
    void Repack(bool ownBlock) override;
    /// Drops parts without vertices, repeated vertices at ring ends, and consecutive equal vertices. True when something changed.
    bool RepackParts();

    // --- triangles -------------------------------------------------------------------------------------------------------
    /// Finds out how a polygon can be filled by triangles: a convex ring is marked (bit 4), several rings of which none meets or
    /// encloses another are marked (bit 6) and can be cut singly, anything else is triangulated.
    void TriangulateIfNecessary() const;
    /// Builds the triangle section; false when the polygon has no area to cover or memory runs out.
    bool Triangulate() const;
    void DropTriangles() const;
    /// The three corners of triangle `index`.
    void GetTriangle(uint32_t index, uint32_t& a, uint32_t& b, uint32_t& c) const;
    /// A corner: vertex or auxiliary vertex.
    Vec4d TriangleCorner(const FltData& flt, uint32_t index) const;

    /// Bounds without virtual calls or allocation: from the cache, or by a scan below 16 vertices. Null box when empty.
    ZvBounds3D IBounds3D() const;
    ZvBounds2D IBounds2D() const;

    // --- overrides -------------------------------------------------------------------------------------------------------
    void TransformInternal(const Mat4d& xform) override;
    std::unique_ptr<ZvEntity> Clone() const override;
    uint16_t GetEntityCode() const override { return ZvEntityCode::XLine; }
    uint16_t GetClientCode() const override { return ZvEntityCode::kBuiltInClient; }
    XStringW VerbalName() const override;
    size_t SizeOf() const override { return sizeof(ZvXLine); }
    void GC_Mark(ZvHeapMarks& marks) const override;
    bool SerializeHard(uint8_t* buffer, size_t size) const override;
    size_t SerializeHardSize() const override;
    void DeserializeHard() override;
    ZvBounds2D Bounds2D() const override { return IBounds2D(); }
    ZvBounds3D Bounds3D() const override { return IBounds3D(); }
    using ZvFilledEntity::Bounds2D;
    using ZvFilledEntity::Bounds3D;
    void CloneFrom(const ZvEntity& other) override;
    std::unique_ptr<ZvEntity> CloneAs(uint32_t fullCode) const override;
    bool IsAppearanceEqual(const ZvEntity& other) const override;
    /// All kinds of surfaces draw by this.
    void DrawGeneric(ZvRenderContext& context) const;
    void DrawGDI(ZvRenderContext& context) const override;
    void DrawRast(ZvRenderContext& context) const override;
    void DrawRast(ZvRenderContext& context, const ZvEntity* const* batch, size_t count) const override;
    void DrawHeatmap(ZvRenderContext& context) const override;
    void DrawPdf(ZvRenderContext& context) const override;
    void GetProperties(ZvPropertyGatherer& gatherer, bool all) const override;
    void SetProperties(ZvPropertySetter& setter) override;
    /// Polygons with several outer rings: one polygon each with its holes. A polygon otherwise: its rings as closed polylines.
    /// Lines of several parts: one entity a part; a polyline: its segments. A single line: nothing.
    ZvEntityList Explode() const override;
    void Query(ZvQueryResults& results) const override;
    size_t MemUsage() const override;
    bool NativeOut(ZvNativeDesc& desc) const override;
    bool NativeIn(ZvNativeDesc& desc) override;
    void GetIntersectionPoints(const ZvEntity& other, std::vector<Vec3d>& points,
                               uint32_t flags) const override;
    void GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    void GetSnapsEdge(const Vec3d& nearPoint, double radius, ZvSnaps& snaps) const override;
    void GetSnapsMidPoint(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    void GetContextMenu(ZvMenu& menu) const override;
    bool OnContextMenuClick(const Vec3d& point, int menuId, ZvSelection* selection) override;
    bool IsXLine() const override { return true; }
    ZvXLine* ToXLine() override { return this; }
    bool IsLineVectorEntity(int* minVertices, int* maxVertices, bool* closed) const override;
    void LineVectorGetVertices(dvect<Vec4d>& vertices) const override;
    int LineVectorGetVertexCount() const override { return int(m_numVerts); }
    /// As many vertices as there are keep all parts; another number (2 at least) needs an entity of one part, which stays as closed
    /// as it is. Z and M are gained when a vertex has them. So it is with the other setters here.
    bool LineVectorSetVertices(const dvect<Vec4d>& vertices) override;
    bool IsMLVEntity() const override { return true; }
    int MLVGetPartCount() const override { return int(m_numParts); }
    int MLVGetVertexCount() const override { return int(m_numVerts); }
    bool MLVGetPart(int part, dvect<Vec4d>& vertices, bool* closed) const override;
    int MLVGetPartInfo(int part, bool* closed, int* depth) const override;
    int MLVGetPartParent(int part) const override;
    void MLVGetLinearVertices(dvect<Vec4d>& vertices) const override;
    bool MLVSetLinearVertices(const dvect<Vec4d>& vertices) override;
    bool MLVAddPart(const dvect<Vec4d>& vertices, bool closed) override;
    bool MLVDeletePart(int part) override;
    bool MLVSetPart(int part, const dvect<Vec4d>& vertices, bool closed) override;
    bool MLVSetParts(const std::vector<dvect<Vec4d>>& parts, const std::vector<bool>& closed) override;
    bool MLVGetClosestSegment(const Vec3d& point, ZvClosest& closest) const override;
    bool MLVGetClosestVertex(const Vec3d& point, ZvClosest& closest) const override;
    bool MLVGetClosestPart(const Vec3d& point, ZvClosest& closest) const override;
    void GetGrips(ZvGrips& grips) const override;
    std::unique_ptr<ZvEntity> PreviewGripChange(int gripId, const Vec3d& to) const override;
    bool UpdateByGrip(int gripId, const Vec3d& to) override;
    double DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const override;
    ZvOccupancy InteriorTest(const Ray3d& ray) const override;
    /// True for a polygon with a brush: a click inside it picks it.
    bool AllowSingleClickSelectInside() const override;
    bool ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const override;
    bool GetGeomDir(const Vec3d& at, Vec3d& direction) const override;
    /// By ring area and depth: holes are subtracted, islands added. Every part counts as a ring.
    double GetArea() const override;
    /// Length of all parts in XY, closing segments of rings included.
    double GetCircumference() const override;
    void Finalize() override;
    bool OkForInsertion(XStringW* reason) const override;
    ZvClipResult ClipTest(const ZvBounds2D& window) const override;
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare& parameters) const override;

    // --- readers of records of older kinds, each turning the record into this entity; layouts in ZvXLineNative.cpp -----------
    bool NativeInXLine(ZvNativeDesc& desc);
    bool NativeInLine(ZvNativeDesc& desc);
    bool NativeInPolyline(ZvNativeDesc& desc);
    bool NativeInPolygon(ZvNativeDesc& desc);
    bool NativeInPolygon2D(ZvNativeDesc& desc);
    bool NativeInMultiLine(ZvNativeDesc& desc);
    bool NativeInHatch(ZvNativeDesc& desc);
    using OldReader = bool (ZvXLine::*)(ZvNativeDesc&);
    struct OldKind {
        uint16_t entityCode; ///< of the built-in client
        const char* typeName;
        OldReader read;
        std::unique_ptr<ZvEntity> (*make)(); ///< an entity whose NativeIn reads this kind
    };
    static std::span<const OldKind> OldKinds();

protected:
    void Construct(ZvDrawing* drawing);

    void SetNums(uint32_t numParts, uint32_t numVerts) { m_numParts = numParts, m_numVerts = numVerts; }

private:
    struct Source;
    struct Extent;
    bool Pack(uint32_t numParts, const uint32_t* partTable, const Source& source, bool isPolygon, bool hasZ,
              bool hasM, int force64, ZvDrawing* drawing, bool notify);
    bool Decide64(const Extent& extent, int force64, ZvDrawing* drawing) const;
    void ComputeMicroBounds(const Extent& extent);
    void WriteVertices(const Source& source, const int* axes, int dims);
    void WriteBoundsCache(const Extent& extent, const int* axes, int dims);
    bool ReplaceVertices(const Source& source, bool hasZ, bool hasM, ZvDrawing* drawing);
    bool CopyBlock(const ZvXLine& other);
    void ClearDepths();
    bool ReplaceKeepingParts(const dvect<Vec4d>& vertices);
    bool ReplacePart(uint32_t part, uint32_t removed, const dvect<Vec4d>* vertices, bool closed);
    double DistanceAlong(const Ray3d& ray) const;
    /// The height goes evenly from the segment's first vertex to its end; t is 0..1.
    Vec3d PointOnSegment(uint32_t part, uint32_t vertex, double t, const Vec2d& xy) const;
    bool FindClosest(const Vec3d& point, const Vec3d* reference, ZvClosest& closest) const;
    std::unique_ptr<ZvXLine> Extract(std::span<const uint32_t> parts, bool isPolygon, bool close) const;
    std::unique_ptr<ZvXLine> ExtractSegment(uint32_t from, uint32_t to) const;
    ZvEntityList ExplodePolygon() const;
    bool PartsAreSeparate() const;
    bool StoreTriangles(const std::vector<uint32_t>& triangles,
                        const std::vector<ZvEdgePoint>& newPoints) const;
    void WriteAuxVertices(uint8_t* at, const std::vector<ZvEdgePoint>& newPoints) const;
    uint32_t FirstNotFinite() const;
    void DrawFilled(ZvRenderContext& context, Vec2f* points, bool outline) const;
    uint32_t ReadPixels(const ZvRenderContext& context, uint32_t part, Vec2f* points) const;
    bool AllPartsClosed() const;
    bool CanBePolygon() const;
    struct OldForm;
    bool NativeInOld(ZvNativeDesc& desc, const OldForm& form);
    static bool ReadNativeHeader(ZvNativeDesc& desc, uint8_t* header, size_t wanted);
    bool IsBlockSound() const;
    void StoreNativeHeader(uint8_t* header) const;
    template <int8_t Kind>
    static std::unique_ptr<ZvEntity> MakeOld();

    uint32_t Word(size_t offset) const {
        uint32_t word;
        std::memcpy(&word, m_data + offset, 4);
        return word;
    }
    uint32_t PartEntry(uint32_t i) const { return MParts()[i]; }
    size_t TriangleBytes() const { return HasTriangles() ? size_t(Word(0)) * 12 + 8 : 0; }
    /// World units a quantum in 32-bit mode, whose exponents (-128..256) are those of normal numbers. The division by the largest
    /// quantum is exactly this product.
    static double QuantumScale(int exponent) {
        return std::bit_cast<double>(uint64_t(exponent + 1023) << 52) * (1.0 / 2147483647.0);
    }
    static int16_t EffectiveExp(int8_t stored, bool is64) {
        return is64 ? int16_t(stored * 8) : stored == 127 ? int16_t(256) : int16_t(stored);
    }

    // In the order of the stated members; the two micro bounds lie where the counts would leave a gap.
    mutable uint8_t m_xflags = 0;
    int8_t m_expXY = 0;
    int8_t m_expZ = 0;
    int8_t m_expM = 0;
    int8_t m_microLo = 0;
    int8_t m_microHi = 0;
    uint32_t m_numParts = 0;
    uint32_t m_numVerts = 0;
    mutable uint8_t* m_data = nullptr;
};
