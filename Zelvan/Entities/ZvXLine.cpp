#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include "ZvCore/ZvcDumbHeap.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>

#if defined(__GNUC__)
static_assert(sizeof(ZvXLine) == 72, "the members fill the gaps that the bases leave");
#endif

ZvXLine::ZvXLine() {
    Construct(nullptr);
}

ZvXLine::ZvXLine(ZvDrawing* drawing) {
    Construct(drawing);
}

ZvXLine::ZvXLine(const Vec3d& a, const Vec3d& b, ZvDrawing* drawing) {
    Construct(drawing);
    SetLine(a, b, a.z != 0 || b.z != 0, drawing);
}

ZvXLine::ZvXLine(const Vec4d& a, const Vec4d& b, ZvDrawing* drawing) {
    Construct(drawing);
    const uint32_t open = 0;
    const Vec4d points[] = {a, b};
    Set(1, &open, points, false, a.z != 0 || b.z != 0, a.w != 0 || b.w != 0, 0, drawing);
}

ZvXLine::ZvXLine(const Vec3d& a, const Vec3d& b, const ZvColor& color, ZvLineWidth width, ZvLineType type,
                 ZvDrawing* drawing)
    : ZvXLine(a, b, drawing) {
    SetColor(color);
    m_lineWidth = width;
    m_lineType = type;
}

ZvXLine::ZvXLine(const Vec4d& a, const Vec4d& b, const ZvColor& color, ZvLineWidth width, ZvLineType type,
                 ZvDrawing* drawing)
    : ZvXLine(a, b, drawing) {
    SetColor(color);
    m_lineWidth = width;
    m_lineType = type;
}

ZvXLine::~ZvXLine() {
    Free();
}

void ZvXLine::Construct(ZvDrawing* drawing) {
    m_xflags = 0;
    m_expXY = m_expZ = m_expM = 0;
    m_microLo = m_microHi = 0;
    SetNums(0, 0);
    m_data = nullptr;
    if (drawing)
        SetParentBlock(drawing->LooseOwner());
}

// --- the block -----------------------------------------------------------------------------------------------------------

size_t ZvXLine::BytesOfData(bool is64, uint32_t numParts, uint32_t numVerts, bool hasZ, bool hasM,
                            uint32_t numTri, uint32_t numAux) {
    const size_t dims = 2 + size_t(hasZ) + size_t(hasM);
    const size_t triangles = numTri ? size_t(numTri) * 12 + 8 : 0;
    const size_t parts = size_t(numParts) * 4;
    if (numVerts == 0)
        return parts + triangles;
    const size_t cache = numVerts < kBoundsCacheFrom ? 0 : 2;
    return (is64 ? 8 : 4) * dims * (size_t(numVerts) - 1 + cache + numAux) + 8 * dims + parts + triangles;
}

size_t ZvXLine::BytesOfData() const {
    if (!m_data)
        return 0;
    return BytesOfData(Is64(), m_numParts, m_numVerts, HasZ(), HasM(), NumTri(), NumAux());
}

size_t ZvXLine::BytesOfPureData() const {
    return m_data ? BytesOfData(Is64(), m_numParts, m_numVerts, HasZ(), HasM(), 0, 0) : 0;
}

const uint8_t* ZvXLine::BoundsPtr() const {
    if (!HasBoundsCache())
        return nullptr;
    const uint8_t* after = PureData() + size_t(m_numParts) * 4;
    return Is64() ? after : after + size_t(DimCount()) * 8;
}

const int32_t* ZvXLine::AuxVertsPtr32() const {
    return Is64() || NumAux() == 0 ? nullptr : MVerts32() + size_t(DimCount()) * (m_numVerts - 1);
}

const uint8_t* ZvXLine::AuxVertsPtr64() const {
    return Is64() && NumAux() != 0 ? OriginPtr() + size_t(DimCount()) * 8 * m_numVerts : nullptr;
}

bool ZvXLine::Alloc(size_t size, ZvcDumbHeap* heap) {
    m_data = static_cast<uint8_t*>(heap ? heap->Alloc(size) : std::malloc(size));
    if (!m_data) {
        ZvErrors::Report(ZvErrorCode::OutOfMemory, "ZvXLine.Alloc");
        return false;
    }
    if (heap)
        m_xflags |= kDataIsSwapped;
    return true;
}

bool ZvXLine::Alloc(bool is64, uint32_t numParts, uint32_t numVerts, bool isPolygon, bool hasZ, bool hasM,
                    uint32_t numTri, uint32_t numAux, ZvcDumbHeap* heap) {
    Free();
    m_xflags = uint8_t((isPolygon ? kPolygon : 0) | (hasZ ? kHasZ : 0) | (hasM ? kHasM : 0) |
                       (is64 ? k64 : 0) | (numTri ? kHasTriangles : 0));
    const size_t size = BytesOfData(is64, numParts, numVerts, hasZ, hasM, numTri, numAux);
    if (size == 0)
        return true;
    if (!Alloc(size, heap)) {
        m_xflags = 0;
        return false;
    }
    SetNums(numParts, numVerts);
    if (numTri) {
        std::memcpy(m_data, &numTri, 4);
        std::memcpy(m_data + 4, &numAux, 4);
    }
    return true;
}

void ZvXLine::Free() {
    if (!DataIsSwapped())
        std::free(m_data);
    m_data = nullptr;
    m_xflags = 0;
    m_expXY = m_expZ = m_expM = 0;
    m_microLo = m_microHi = 0;
    SetNums(0, 0);
}

void ZvXLine::DeserializeHard() {
    if (!DataIsSwapped())
        return;
    const size_t size = BytesOfData();
    const uint8_t* shared = m_data;
    if (size == 0)
        m_data = nullptr;
    else if (!Alloc(size, nullptr)) {
        m_data = const_cast<uint8_t*>(shared);
        return;
    } else
        std::memcpy(m_data, shared, size);
    m_xflags &= uint8_t(~kDataIsSwapped);
}

void ZvXLine::GC_Mark(ZvHeapMarks& marks) const {
    if (DataIsSwapped())
        marks.Mark(m_data, BytesOfData());
}

size_t ZvXLine::MemUsage() const {
    return CheapSize();
}

// --- scales --------------------------------------------------------------------------------------------------------------

Vec4d ZvXLine::Scales() const {
    if (Is64())
        return {1, 1, 1, 1};
    const double xy = QuantumScale(GetExpXY());
    return {xy, xy, QuantumScale(GetExpZ()), QuantumScale(GetExpM())};
}

Vec4f ZvXLine::Scalesf() const {
    const Vec4d s = Scales();
    return {float(s.x), float(s.y), float(s.z), float(s.w)};
}

Vec4d ZvXLine::Scales_I64(int expXY, int expZ, int expM) {
    const double xy = std::ldexp(1.0, 8 * expXY - 63);
    return {xy, xy, std::ldexp(1.0, 8 * expZ - 63), std::ldexp(1.0, 8 * expM - 63)};
}

double ZvXLine::MicroBoundsScale() const {
    return std::ldexp(1.0, GetExpXY()) / 127;
}

double ZvXLine::MicroBoundsScaleInv() const {
    const double extent = std::ldexp(1.0, GetExpXY());
    return extent < 1e-300 ? 0 : 127 / extent;
}

// --- parts ---------------------------------------------------------------------------------------------------------------

void ZvXLine::SetDepthRaw(uint32_t i, uint32_t raw) {
    uint32_t& entry = MParts()[i];
    entry = (entry & ~kDepthMask) | (std::min(raw, 15u) << kDepthShift);
}

bool ZvXLine::HasDepths() const {
    for (uint32_t i = 0; i < m_numParts; ++i)
        if (GetDepthRaw(i) == 0)
            return false;
    return true;
}

bool ZvXLine::VerifyPartSanity(uint32_t numParts, const uint32_t* partTable, uint32_t numVerts) {
    for (uint32_t i = 0; i < numParts; ++i) {
        const uint32_t start = partTable[i] & kStartMask;
        if (i == 0 ? start != 0 : start < 2 || start >= numVerts)
            return false;
    }
    return true;
}

bool ZvXLine::VerifyPartSanity() const {
    return m_numParts == 0 || VerifyPartSanity(m_numParts, MParts(), m_numVerts);
}

uint32_t ZvXLine::MakePartEntry(uint32_t start, bool closed) {
    return (start & kStartMask) | (start > kMaxStart ? kBadPartTable : 0) | (closed ? kClosedBit : 0);
}

uint32_t ZvXLine::PartOfVertex(uint32_t vertex) const {
    const uint32_t* parts = MParts();
    const uint32_t* after =
        std::upper_bound(parts, parts + m_numParts, vertex,
                         [](uint32_t v, uint32_t entry) { return v < (entry & kStartMask); });
    return after == parts ? 0 : uint32_t(after - parts) - 1;
}

void ZvXLine::SetPClosed(uint32_t part, bool closed) {
    if (part >= m_numParts)
        return;
    uint32_t& entry = MParts()[part];
    entry = closed ? entry | kClosedBit : entry & ~kClosedBit;
    if (!IsPolygon())
        ClearDepths();
    Touch();
}

void ZvXLine::CloseAllParts() {
    for (uint32_t i = 0; i < m_numParts; ++i)
        MParts()[i] |= kClosedBit;
}

void ZvXLine::SetIsPolygon(bool polygon, bool closeAll) {
    if (polygon != IsPolygon()) {
        // Open parts are rings in a polygon only: what was known of the rings is void.
        DropTriangles();
        ClearDepths();
        m_xflags &= uint8_t(~(kConvex | kSeparateParts));
    }
    m_xflags = uint8_t(polygon ? m_xflags | kPolygon : m_xflags & ~kPolygon);
    if (polygon && closeAll)
        CloseAllParts();
}

// --- identity ------------------------------------------------------------------------------------------------------------

XStringW ZvXLine::VerbalName() const {
    if (IsPolygon())
        return ZvStrings::GetW(m_numParts >= 2 ? ZvStr::KindMultipartPolygon : ZvStr::KindPolygon);
    if (m_numVerts == 2)
        return ZvStrings::GetW(ZvStr::KindLine);
    return ZvStrings::GetW(m_numParts >= 2 ? ZvStr::KindMultipartLine : ZvStr::KindPolyline);
}

bool ZvXLine::IsLineVectorEntity(int* minVertices, int* maxVertices, bool* closed) const {
    if (minVertices)
        *minVertices = 2;
    if (maxVertices)
        *maxVertices = 2147483646;
    if (closed)
        *closed = IsPolygon();
    return true;
}

std::unique_ptr<ZvEntity> ZvXLine::Clone() const {
    auto copy = std::make_unique<ZvXLine>();
    copy->CloneFrom(*this);
    return copy;
}

void ZvXLine::CloneFrom(const ZvEntity& other) {
    if (&other == this)
        return;
    ZvFilledEntity::CloneFrom(other);
    if (other.IsXLine())
        CopyBlock(static_cast<const ZvXLine&>(other));
}

bool ZvXLine::CopyBlock(const ZvXLine& other) {
    Free();
    const size_t size = other.BytesOfData();
    if (size && !Alloc(size, nullptr))
        return false;
    m_xflags = uint8_t(other.m_xflags & ~kDataIsSwapped);
    m_expXY = other.m_expXY, m_expZ = other.m_expZ, m_expM = other.m_expM;
    m_microLo = other.m_microLo, m_microHi = other.m_microHi;
    SetNums(other.m_numParts, other.m_numVerts);
    if (size)
        std::memcpy(m_data, other.m_data, size);
    return true;
}

std::unique_ptr<ZvEntity> ZvXLine::CloneAs(uint32_t fullCode) const {
    if (fullCode == GetFullCode())
        return Clone();
    if (fullCode != ZvEntityCode::Full(ZvEntityCode::kBuiltInClient, ZvEntityCode::XLine))
        return nullptr;
    auto plain = std::make_unique<ZvXLine>();
    plain->CloneFrom(*this);
    return plain;
}

bool ZvXLine::IsAppearanceEqual(const ZvEntity& other) const {
    // Where neither is filled the brushes do not show.
    if (other.IsXLine() && !IsPolygon() && !static_cast<const ZvXLine&>(other).IsPolygon())
        return ZvLineEntity::IsAppearanceEqual(other);
    return ZvFilledEntity::IsAppearanceEqual(other);
}

bool ZvXLine::IsGeometryEqual_Internal(const ZvEntity& entity, const ZvGeometryCompare& parameters) const {
    if (!entity.IsXLine())
        return false;
    const auto& other = static_cast<const ZvXLine&>(entity);
    if (m_numParts != other.m_numParts || m_numVerts != other.m_numVerts ||
        IsPolygon() != other.IsPolygon() || HasZ() != other.HasZ() || HasM() != other.HasM())
        return false;
    for (uint32_t i = 0; i < m_numParts; ++i)
        if ((PartEntry(i) ^ other.PartEntry(i)) & ~kDepthMask)
            return false;
    const FltData flt = GetFlt(), otherFlt = other.GetFlt();
    const double tolerance = parameters.tolerance;
    for (uint32_t i = 0; i < m_numVerts; ++i) {
        const Vec4d a = Unpack(flt, i), b = other.Unpack(otherFlt, i);
        if (tolerance <= 0 ? a != b
                           : !(std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance &&
                               std::abs(a.z - b.z) <= tolerance && std::abs(a.w - b.w) <= tolerance))
            return false;
    }
    return true;
}

// --- the insertion check -------------------------------------------------------------------------------------------------

void ZvXLine::Finalize() {
    if (IsPolygon())
        CloseAllParts();
    RecalcBounds();
}

bool ZvXLine::OkForInsertion(XStringW* reason) const {
    const auto refuse = [reason](int text, uint32_t value = 0) {
        if (reason)
            *reason = XStringW::Format(ZvStrings::Get(text), value);
        return false;
    };
    if (m_numParts == 0)
        return refuse(ZvStr::LinearNoPart);
    if (PartEntry(0) & kBadPartTable)
        return refuse(ZvStr::LinearPartTable);
    const uint32_t least = IsPolygon() ? 3 : 2;
    for (uint32_t i = 0; i < m_numParts; ++i)
        if (PLen(i) < least)
            return refuse(IsPolygon() ? ZvStr::PolygonShortPart : ZvStr::LinearShortPart);
    if (!VerifyPartSanity())
        return refuse(ZvStr::LinearFirstPart);
    const uint32_t bad = FirstNotFinite();
    return bad == m_numVerts || refuse(ZvStr::LinearNotFinite, bad);
}

uint32_t ZvXLine::FirstNotFinite() const {
    // Quanta are finite by nature: in 32-bit mode the origin alone can be at fault.
    const FltData flt = GetFlt();
    const uint32_t count = Is64() ? m_numVerts : std::min(m_numVerts, 1u);
    for (uint32_t i = 0; i < count; ++i) {
        const Vec4d v = Unpack(flt, i);
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z) || !std::isfinite(v.w))
            return i;
    }
    return m_numVerts;
}
