#include "Zelvan/ZvNativePayload.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvNativeWalk.h"
#include <cmath>
#include <span>

// The payloads of the built-in kinds, as lists of fields where that is all there is to them. A kind's own source has the meaning.

namespace {

/// type: b i8, B u8, h i16, H u16, i i32, I u32, q i64, Q u64, f f32, d f64, and 1..9: twice as many reserved bytes.
struct FieldSpec {
    const char* name;
    char type;
};

const char* const kThisObject = "this object";

template <class T>
double NumberAt(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof(T));
    return double(value);
}

constexpr size_t SizeOf(char type) {
    switch (type) {
    case 'b':
    case 'B':
        return 1;
    case 'h':
    case 'H':
        return 2;
    case 'i':
    case 'I':
    case 'f':
        return 4;
    case 'q':
    case 'Q':
    case 'd':
        return 8;
    default:
        return size_t(type - '0') * 2;
    }
}

bool IsFinite(char type, const uint8_t* at) {
    return type == 'f' ? std::isfinite(NumberAt<float>(at))
                       : type != 'd' || std::isfinite(NumberAt<double>(at));
}

/// Empty for reserved bytes.
std::string Show(char type, const uint8_t* at) {
    switch (type) {
    case 'b':
        return std::to_string(int(NumberAt<int8_t>(at)));
    case 'B':
        return std::to_string(unsigned(NumberAt<uint8_t>(at)));
    case 'h':
        return std::to_string(int(NumberAt<int16_t>(at)));
    case 'H':
        return std::to_string(unsigned(NumberAt<uint16_t>(at)));
    case 'i':
        return std::to_string(int64_t(NumberAt<int32_t>(at)));
    case 'I':
        return std::to_string(int64_t(NumberAt<uint32_t>(at)));
    case 'f':
        return XStringA::Format("%.9g", NumberAt<float>(at)).Str();
    case 'd':
        return XStringA::Format("%.9g", NumberAt<double>(at)).Str();
    default:
        return {};
    }
}

size_t SizeOf(std::span<const FieldSpec> fields) {
    size_t size = 0;
    for (const FieldSpec& field : fields)
        size += SizeOf(field.type);
    return size;
}

/// Tells the fields that the `stored` bytes at the cursor hold, as far as they go.
void TellFields(ZvNativeWalk& walk, ZvNativeCursor& cursor, std::span<const FieldSpec> fields,
                uint64_t stored) {
    uint64_t left = std::min(stored, cursor.Left());
    const uint64_t end = cursor.At() + left;
    for (const FieldSpec& field : fields) {
        const size_t size = SizeOf(field.type);
        if (left < size)
            break;
        if (const std::string text = walk.WantsFields() ? Show(field.type, cursor.Here()) : std::string();
            !text.empty())
            walk.Tell(cursor, size, field.name, text);
        if (!IsFinite(field.type, cursor.Here()))
            walk.Problem(cursor, std::string(field.name) + " is no finite number", kThisObject);
        cursor.Skip(size);
        left -= size;
    }
    cursor.Skip(end - cursor.At());
}

/// A header that begins with its own length. False when it is past the record.
bool HeadedFields(ZvNativeWalk& walk, ZvNativeCursor& cursor, std::span<const FieldSpec> fields) {
    ZvNativeCursor at = cursor;
    uint16_t length = 0;
    if (!at.Read(length) || length < sizeof length || length > cursor.Left()) {
        walk.Problem(cursor, "the header length " + std::to_string(length) + " does not fit the record",
                     kThisObject);
        return false;
    }
    if (walk.WantsFields())
        walk.Tell(cursor, sizeof length, "header length", std::to_string(length));
    TellFields(walk, at, fields, length - sizeof length);
    cursor.Skip(length);
    return true;
}

// --- polyline --------------------------------------------------------------------------------------------------------------

constexpr FieldSpec kPolyline[] = {
    {"file flags", 'B'}, {"scale exponent XY", 'b'}, {"scale exponent Z", 'b'},  {"scale exponent M", 'b'},
    {"line type", 'h'},  {"line width", 'f'},        {"fill colour value", 'I'}, {"fill colour index", 'h'},
    {"fill style", 'h'}, {"vertices", 'I'},          {"micro bounds low", 'b'},  {"micro bounds high", 'b'},
    {"parts", 'I'},
};

struct PolylineNumbers {
    bool is64, hasZ, hasM;
    uint32_t verts, parts;
    uint64_t Dims() const { return 2u + hasZ + hasM; }
    uint64_t BlockSize() const {
        if (!verts)
            return 0;
        const uint64_t cached = verts >= ZvXLine::kBoundsCacheFrom ? 2 : 0;
        return (is64 ? 8 : 4) * Dims() * (verts - 1 + cached) + 8 * Dims() + 4 * uint64_t(parts);
    }
};

void CheckParts(ZvNativeWalk& walk, ZvNativeCursor cursor, const PolylineNumbers& n) {
    uint32_t former = 0;
    for (uint32_t i = 0; i < n.parts; ++i) {
        const ZvNativeCursor at = cursor;
        uint32_t entry = 0;
        cursor.Read(entry);
        const uint32_t start = entry & ZvXLine::kStartMask;
        const bool follows = i == 0 ? start == 0 : start >= 2 && start > former && start < n.verts;
        if ((entry & ~ZvXLine::kEntryMask) || !follows) {
            walk.Problem(at, "entry " + std::to_string(i) + " of the part table cannot be true", kThisObject);
            return;
        }
        former = start;
    }
}

void CheckDoubles(ZvNativeWalk& walk, ZvNativeCursor cursor, uint64_t count) {
    for (uint64_t i = 0; i < count; ++i) {
        const ZvNativeCursor at = cursor;
        double value = 0;
        cursor.Read(value);
        if (!std::isfinite(value)) {
            walk.Problem(at, "a coordinate is no finite number", kThisObject);
            return;
        }
    }
}

void CheckPolyline(ZvNativeWalk& walk, ZvNativeCursor payload) {
    uint8_t header[ZvXLine::kNativeHeaderSize] = {};
    const ZvNativeCursor start = payload;
    uint16_t length = 0;
    ZvNativeCursor peek = payload;
    if (peek.Read(length))
        std::memcpy(header, start.Here(), std::min<uint64_t>({length, sizeof header, start.Left()}));
    if (walk.WantsFields() ? !HeadedFields(walk, payload, kPolyline) : length < 2 || !payload.Skip(length)) {
        if (!walk.WantsFields())
            walk.Problem(start, "the header length does not fit the record", kThisObject);
        return;
    }
    const uint8_t flags = header[2];
    PolylineNumbers n{bool(flags & 0x10), bool(flags & 2), bool(flags & 4), 0, 0};
    std::memcpy(&n.verts, header + 20, 4);
    std::memcpy(&n.parts, header + 26, 4);
    if (n.is64 != bool(flags & 0x80))
        walk.Problem(start, "bits 4 and 7 of the flags differ", kThisObject);
    else if ((n.verts == 0) != (n.parts == 0) || n.parts > n.verts)
        walk.Problem(start, "the numbers of parts and vertices contradict each other", kThisObject);
    else if (n.BlockSize() != payload.Left())
        walk.Problem(payload,
                     "the block takes " + std::to_string(payload.Left()) + " bytes where its numbers need " +
                         std::to_string(n.BlockSize()),
                     kThisObject);
    else if (n.verts) {
        CheckParts(walk, payload, n);
        ZvNativeCursor numbers = payload;
        numbers.Skip(4 * uint64_t(n.parts));
        CheckDoubles(walk, numbers, n.is64 ? numbers.Left() / 8 : n.Dims());
        if (walk.WantsFields())
            walk.Tell(payload, payload.Left(), "block", std::to_string(payload.Left()) + " bytes");
    }
}

// --- kinds that are lists of fields ------------------------------------------------------------------------------------------

constexpr FieldSpec kText[] = {
    {"style", 'i'},
    {"height", 'f'},
    {"reserved", '2'},
    {"x", 'd'},
    {"y", 'd'},
    {"z", 'd'},
    {"hook, alignment", 'i'},
    {"angle", 'f'},
    {"multi-line", 'i'},
    {"outline", 'B'},
    {"outline colour", 'I'},
    {"outline colour kind", 'H'},
    {"outline width", 'B'},
};

void CheckText(ZvNativeWalk& walk, ZvNativeCursor payload) {
    if (!HeadedFields(walk, payload, kText))
        return;
    const ZvNativeCursor at = payload;
    if (!walk.String(payload, "text"))
        walk.Problem(at, "the text does not fit the record", kThisObject);
    else if (payload.Left() && walk.WantsFields())
        walk.Tell(payload, payload.Left(), "tail", std::to_string(payload.Left()) + " bytes");
}

constexpr FieldSpec kInsert[] = {
    {"line type", 'H'},
    {"line width", 'f'},
    {"x", 'd'},
    {"y", 'd'},
    {"z", 'd'},
    {"size", 'f'},
    {"insert flags", 'i'},
    {"reserved", '8'},
    {"rotation x", 'f'},
    {"rotation y", 'f'},
    {"rotation z", 'f'},
    {"rotation w", 'f'},
    {"block", 'i'},
    {"fill colour value", 'I'},
    {"fill colour index", 'h'},
    {"fill style", 'h'},
};

void CheckInsert(ZvNativeWalk& walk, ZvNativeCursor payload) {
    if (payload.Left() < SizeOf(kInsert)) {
        walk.Problem(payload, "the record is shorter than a block reference", kThisObject);
        return;
    }
    TellFields(walk, payload, kInsert, SizeOf(kInsert));
    if (payload.Left() && walk.WantsFields())
        walk.Tell(payload, payload.Left(), "tail", std::to_string(payload.Left()) + " bytes");
}

constexpr FieldSpec kPoint[] = {
    {"x", 'd'}, {"y", 'd'}, {"z", 'd'}, {"angle", 'd'}, {"measure", 'd'}, {"point type", 'H'}, {"flags", 'H'},
};

void CheckPoint(ZvNativeWalk& walk, ZvNativeCursor payload) {
    HeadedFields(walk, payload, kPoint);
}

constexpr FieldSpec kMultiPoint[] = {
    {"flags", 'H'},
    {"point type", 'H'},
    {"reserved", '1'},
    {"locations", 'I'},
};

void CheckMultiPoint(ZvNativeWalk& walk, ZvNativeCursor payload) {
    uint16_t flags = 0;
    uint32_t count = 0;
    if (payload.Left() >= 12) {
        std::memcpy(&flags, payload.Here() + 2, sizeof flags);
        std::memcpy(&count, payload.Here() + 8, sizeof count);
    }
    if (!HeadedFields(walk, payload, kMultiPoint))
        return;
    const uint64_t needed = uint64_t(count) * (flags & 2 ? 4 : 3);
    if (needed > payload.Left() / 8)
        walk.Problem(payload, "the locations do not fit the record", kThisObject);
    else
        CheckDoubles(walk, payload, needed);
}

constexpr FieldSpec kCompound[] = {
    {"line type", 'h'},  {"line width", 'f'}, {"fill colour value", 'I'}, {"fill colour index", 'h'},
    {"fill style", 'h'}, {"block tie", 'B'},  {"children follow", 'B'},   {"block", 'i'},
};

void CheckCompound(ZvNativeWalk& walk, ZvNativeCursor payload) {
    constexpr size_t kChildrenAt = 17;
    const bool children = payload.Left() > kChildrenAt && payload.Here()[kChildrenAt];
    if (HeadedFields(walk, payload, kCompound) && children)
        walk.EntityList(payload);
}

constexpr ZvNativePayload kKinds[] = {
    {1, "ZvLine", nullptr},
    {ZvEntityCode::Circle, "ZvCircle", nullptr},
    {ZvEntityCode::Text, "ZvText", CheckText},
    {4, "ZvPolyline", nullptr},
    {ZvEntityCode::Insert, "ZvInsert", CheckInsert},
    {6, "ZvPolygon", nullptr},
    {7, "ZvPolygon2D", nullptr},
    {ZvEntityCode::Arc, "ZvArc", nullptr},
    {ZvEntityCode::Bitmap, "ZvBitmap", nullptr},
    {ZvEntityCode::Mesh, "ZvMesh", nullptr},
    {ZvEntityCode::AMesh, "ZvAMesh", nullptr},
    {ZvEntityCode::Arrow, "ZvArrow", CheckPolyline},
    {13, "ZvMultiLine", nullptr},
    {ZvEntityCode::Compound, "ZvCompound", nullptr},
    {15, "ZvHatch", nullptr},
    {ZvEntityCode::PointEnt, "ZvPointEnt", CheckPoint},
    {ZvEntityCode::Viewport, "ZvViewportEntity", nullptr},
    {ZvEntityCode::TestEntity, "ZvTestEntity", nullptr},
    {ZvEntityCode::Rectangle, "ZvRectangle", nullptr},
    {ZvEntityCode::ScaleBar, "ZvScaleBar", nullptr},
    {ZvEntityCode::CompoundRect, "ZvCompoundRect", nullptr},
    {ZvEntityCode::RawCompound, "ZvRawCompound", CheckCompound},
    {ZvEntityCode::Dimension, "ZvDimension", nullptr},
    {ZvEntityCode::MultiPoint, "ZvMultiPoint", CheckMultiPoint},
    {ZvEntityCode::XLine, "ZvXLine", CheckPolyline},
};

} // namespace

const ZvNativePayload* ZvNativePayload::Find(uint16_t type) {
    for (const ZvNativePayload& kind : kKinds)
        if (kind.type == type)
            return &kind;
    return nullptr;
}
