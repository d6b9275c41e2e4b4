// The file form of polylines. After the record head:
//   0 u16 header length (30), 2 u8 file flags, 3 i8 expXY, 4 i8 expZ, 5 i8 expM, 6 i16 line type, 8 f32 line width,
//   12 u32 fill colour value, 16 i16 fill colour index, 18 i16 fill style, 20 u32 numVerts, 24 i8 micro bounds lo, 25 i8 hi,
//   26 u32 numParts
// and the block from its part table to its last vertex as it lies in memory.
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include <cmath>
#include <cstdlib>

namespace {

enum FileFlag : uint8_t {
    kFilePolygon = 1 << 0,
    kFileZ = 1 << 1,
    kFileM = 1 << 2,
    kFileConvex = 1 << 3,
    kFile64 = 1 << 4,
    kFileSeparateParts = 1 << 5,
    /// The same as kFile64; records in which they differ are damaged.
    kFile64Again = 1 << 7,
};

template <class T>
T Load(const uint8_t* bytes, size_t at) {
    T value;
    std::memcpy(&value, bytes + at, sizeof value);
    return value;
}

template <class T>
void Store(uint8_t* bytes, size_t at, T value) {
    std::memcpy(bytes + at, &value, sizeof value);
}

/// Whether `count` doubles are numbers: all bits of the exponent set means infinite or not a number.
bool AllFinite(const uint8_t* doubles, size_t count) {
    constexpr uint64_t kExponent = 0x7FF0000000000000u;
    bool finite = true;
    for (size_t i = 0; i < count; ++i)
        finite &= (Load<uint64_t>(doubles, i * 8) & kExponent) != kExponent;
    return finite;
}

float FiniteOrThin(float width) {
    return std::isfinite(width) ? width : 0;
}

} // namespace

void ZvXLine::StoreNativeHeader(uint8_t* header) const {
    Store<uint16_t>(header, 0, kNativeHeaderSize);
    header[2] = uint8_t((IsPolygon() ? kFilePolygon : 0) | (HasZ() ? kFileZ : 0) | (HasM() ? kFileM : 0) |
                        (IsConvex() ? kFileConvex : 0) | (Is64() ? kFile64 | kFile64Again : 0) |
                        (SeparateParts() ? kFileSeparateParts : 0));
    Store(header, 3, m_expXY);
    Store(header, 4, m_expZ);
    Store(header, 5, m_expM);
    Store<int16_t>(header, 6, m_lineType.hardGet());
    Store<float>(header, 8, m_lineWidth.Raw());
    Store(header, 12, m_brushValue);
    Store(header, 16, m_brushIndex);
    Store(header, 18, m_brushStyle);
    Store(header, 20, m_numVerts);
    Store(header, 24, m_microLo);
    Store(header, 25, m_microHi);
    Store(header, 26, m_numParts);
}

bool ZvXLine::NativeOut(ZvNativeDesc& desc) const {
    const uint64_t start = desc.Native().StoreRecordStart();
    if (NativeOutBase(desc, kPubKeepAsProxy))
        return true;
    uint8_t header[kNativeHeaderSize];
    StoreNativeHeader(header);
    const size_t size = BytesOfPureData();
    if (!desc.Write(header, sizeof header) || (size && !desc.Write(PureData(), size)))
        return true;
    desc.Native().WriteRecordLength64(start);
    return false;
}

size_t ZvXLine::SerializeHardSize() const {
    return ZvNativeRecordHead::kSize + kNativeHeaderSize + BytesOfPureData();
}

// The file record, as in the base, but without a stream and without need of a drawing.
bool ZvXLine::SerializeHard(uint8_t* buffer, size_t size) const {
    if (size < SerializeHardSize())
        return false;
    ZvNativeRecordHead head;
    head.length = SerializeHardSize();
    head.client = GetClientCode();
    head.type = GetEntityCode();
    head.name = Name32();
    head.colorValue = GetColor().NativeRGB();
    head.colorIndex = int16_t(GetColor().GetIndex());
    head.flags = GetFlags() | kPubKeepAsProxy;
    head.Store(buffer);
    StoreNativeHeader(buffer + ZvNativeRecordHead::kSize);
    if (m_data)
        std::memcpy(buffer + ZvNativeRecordHead::kSize + kNativeHeaderSize, PureData(), BytesOfPureData());
    return true;
}

bool ZvXLine::NativeIn(ZvNativeDesc& desc) {
    // The bound is the record's own, whoever asks.
    const uint64_t start = desc.Position();
    uint64_t length = 0;
    if (!desc.ReadValue(length) || !desc.Seek(start))
        return true;
    const ZvNativeDesc::RecordScope record(desc, start, length);
    if (!record.Fits())
        return true;
    const OldReader read = !m_data && m_microHi > 0 && size_t(m_microHi) <= OldKinds().size()
                               ? OldKinds()[size_t(m_microHi) - 1].read
                               : nullptr;
    if (!read)
        return NativeInXLine(desc);
    m_microHi = 0;
    return (this->*read)(desc);
}

bool ZvXLine::ReadNativeHeader(ZvNativeDesc& desc, uint8_t* header, size_t wanted) {
    uint16_t length = 0;
    if (desc.memory) {
        const uint64_t at = desc.Position();
        if (desc.RecordRemaining() < 2)
            return false;
        const uint8_t* stored = desc.memory->View(at, 2);
        length = Load<uint16_t>(stored, 0);
        if (length < 2 || length > desc.RecordRemaining())
            return false;
        const size_t known = std::min<size_t>(length, wanted);
        std::memcpy(header, stored, known);
        std::memset(header + known, 0, wanted - known);
        return desc.Seek(at + length);
    }
    if (!desc.ReadValue(length) || length < 2)
        return false;
    Store(header, 0, length);
    return desc.ReadPad(header + 2, wanted - 2, uint64_t(length) - 2);
}

bool ZvXLine::NativeInXLine(ZvNativeDesc& desc) {
    Free();
    if (NativeInBase(desc))
        return true;
    uint8_t header[kNativeHeaderSize];
    if (!ReadNativeHeader(desc, header, sizeof header))
        return true;
    const uint8_t file = header[2];
    const bool is64 = file & kFile64, hasZ = file & kFileZ, hasM = file & kFileM;
    const uint32_t numVerts = Load<uint32_t>(header, 20), numParts = Load<uint32_t>(header, 26);
    if (is64 != bool(file & kFile64Again) || (numVerts == 0) != (numParts == 0) || numParts > numVerts)
        return true;
    const uint64_t size = BytesOfData(is64, numParts, numVerts, hasZ, hasM, 0, 0),
                   left = desc.RecordRemaining();
    // A newer version may add something behind the block; this one has nothing there.
    if (size > left || (size < left && desc.version <= ZvNativeFile::kVersion))
        return true;
    if (!Alloc(is64, numParts, numVerts, file & kFilePolygon, hasZ, hasM, 0, 0, desc.heap))
        return true;
    if (size && (!desc.Read(m_data, size_t(size)) || !IsBlockSound())) {
        Free();
        return true;
    }
    m_xflags |=
        uint8_t((file & kFileConvex ? kConvex : 0) | (file & kFileSeparateParts ? kSeparateParts : 0));
    m_expXY = Load<int8_t>(header, 3);
    m_expZ = Load<int8_t>(header, 4);
    m_expM = Load<int8_t>(header, 5);
    m_microLo = Load<int8_t>(header, 24);
    m_microHi = Load<int8_t>(header, 25);
    m_lineType.hardSet(Load<int16_t>(header, 6));
    m_lineWidth.SetRaw(FiniteOrThin(Load<float>(header, 8)));
    m_brushValue = Load<uint32_t>(header, 12);
    m_brushIndex = Load<int16_t>(header, 16);
    m_brushStyle = Load<int16_t>(header, 18);
    return false;
}

bool ZvXLine::IsBlockSound() const {
    const uint32_t* parts = MParts();
    for (uint32_t i = 0; i < m_numParts; ++i) {
        const uint32_t start = parts[i] & kStartMask;
        const bool follows = i == 0 ? start == 0 : start >= 2 && start < m_numVerts && start > PStart(i - 1);
        if ((parts[i] & ~kEntryMask) || !follows)
            return false;
    }
    const size_t dims = size_t(DimCount());
    return AllFinite(OriginPtr(), Is64() ? dims * m_numVerts : dims) &&
           (!Is64() || !HasBoundsCache() || AllFinite(BoundsPtr(), dims * 2));
}

// --- older kinds ---------------------------------------------------------------------------------------------------------
//
// Each has, after the record head, a u16 header length and the fixed fields below, all zero where the stored header is shorter;
// then, as doubles, its vertices.
//   Line        2 i16 line type, 4 f32 line width, 8 f64 x0 y0 z0 x1 y1 z1                                          (header 56)
//   all others  2 i16 line type, 4 f32 line width, 8 u32 flags (1 closed, 2 Z, 4 M), 12 u32 fill colour value,
//               16 i16 fill colour index, 18 i16 fill style, 20 u32 number of parts, 24 u32 number of vertices      (header 28)
// Polyline and Polygon have one part and no table (the number of parts is not looked at); Polygon2D, MultiLine and Hatch have a
// table of u32 before the vertices: bits 0..30 first vertex of the part, bit 31 closed. Polygon2D has neither Z nor M whatever its
// flags say. Polygon, Polygon2D and Hatch are polygons: their parts are closed.

struct ZvXLine::OldForm {
    bool isPolygon = false;
    bool hasTable = false;
    bool only2D = false;
};

bool ZvXLine::NativeInLine(ZvNativeDesc& desc) {
    uint8_t header[56];
    if (NativeInBase(desc) || !ReadNativeHeader(desc, header, sizeof header) || !AllFinite(header + 8, 6))
        return true;
    const Vec3d a{Load<double>(header, 8), Load<double>(header, 16), Load<double>(header, 24)};
    const Vec3d b{Load<double>(header, 32), Load<double>(header, 40), Load<double>(header, 48)};
    m_lineType.hardSet(Load<int16_t>(header, 2));
    m_lineWidth.SetRaw(FiniteOrThin(Load<float>(header, 4)));
    return !SetLine(a, b, a.z != 0 || b.z != 0, &desc.Drawing());
}

bool ZvXLine::NativeInOld(ZvNativeDesc& desc, const OldForm& form) {
    uint8_t header[28];
    if (NativeInBase(desc) || !ReadNativeHeader(desc, header, sizeof header))
        return true;
    m_lineType.hardSet(Load<int16_t>(header, 2));
    m_lineWidth.SetRaw(FiniteOrThin(Load<float>(header, 4)));
    m_brushValue = Load<uint32_t>(header, 12);
    m_brushIndex = Load<int16_t>(header, 16);
    m_brushStyle = Load<int16_t>(header, 18);
    const uint32_t flags = Load<uint32_t>(header, 8), numVerts = Load<uint32_t>(header, 24);
    const uint32_t numParts = form.hasTable ? Load<uint32_t>(header, 20) : 1;
    const bool hasZ = !form.only2D && flags & 2, hasM = !form.only2D && flags & 4;
    const size_t dims = 2 + size_t(hasZ) + size_t(hasM);
    if (numParts == 0 || numParts > numVerts ||
        desc.RecordRemaining() < uint64_t(numVerts) * dims * 8 + (form.hasTable ? uint64_t(numParts) * 4 : 0))
        return true;

    std::vector<uint32_t> table(numParts, flags & 1 ? kClosedBit : 0);
    if (form.hasTable && !desc.Read(table.data(), table.size() * 4))
        return true;
    std::vector<double> vertices(numVerts * dims);
    if (!desc.Read(vertices.data(), vertices.size() * 8) ||
        !AllFinite(reinterpret_cast<const uint8_t*>(vertices.data()), vertices.size()))
        return true;
    for (uint32_t& entry : table)
        entry = MakePartEntry(entry & ~kClosedBit, form.isPolygon || (entry & kClosedBit));
    if (!VerifyPartSanity(numParts, table.data(), numVerts))
        return true;
    const bool ok = Set(numParts, table.data(), numVerts, form.isPolygon, hasZ, hasM, hasZ, hasM,
                        vertices.data(), 0, &desc.Drawing(), false);
    // A table that cannot be stored has become one part by now.
    if (!ok || m_numParts != numParts || (PartEntry(0) & kBadPartTable)) {
        Free();
        return true;
    }
    return false;
}

bool ZvXLine::NativeInPolyline(ZvNativeDesc& desc) {
    return NativeInOld(desc, {});
}

bool ZvXLine::NativeInPolygon(ZvNativeDesc& desc) {
    return NativeInOld(desc, {true, false, false});
}

bool ZvXLine::NativeInPolygon2D(ZvNativeDesc& desc) {
    return NativeInOld(desc, {true, true, true});
}

bool ZvXLine::NativeInMultiLine(ZvNativeDesc& desc) {
    return NativeInOld(desc, {false, true, false});
}

bool ZvXLine::NativeInHatch(ZvNativeDesc& desc) {
    return NativeInOld(desc, {true, true, false});
}

template <int8_t Kind>
std::unique_ptr<ZvEntity> ZvXLine::MakeOld() {
    auto line = std::make_unique<ZvXLine>();
    // Nothing else uses the micro bounds before there is a block.
    line->m_microHi = Kind + 1;
    return line;
}

std::span<const ZvXLine::OldKind> ZvXLine::OldKinds() {
    static constexpr OldKind kinds[] = {
        {1, "ZvLine", &ZvXLine::NativeInLine, &MakeOld<0>},
        {4, "ZvPolyline", &ZvXLine::NativeInPolyline, &MakeOld<1>},
        {6, "ZvPolygon", &ZvXLine::NativeInPolygon, &MakeOld<2>},
        {7, "ZvPolygon2D", &ZvXLine::NativeInPolygon2D, &MakeOld<3>},
        {13, "ZvMultiLine", &ZvXLine::NativeInMultiLine, &MakeOld<4>},
        {15, "ZvHatch", &ZvXLine::NativeInHatch, &MakeOld<5>},
    };
    return kinds;
}
