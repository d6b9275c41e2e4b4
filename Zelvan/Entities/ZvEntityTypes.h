#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class ZvEntity;
class ZvUniSize;
class ZvLineWidth;

/// How sizes in device units become world units in one view or on one sheet. Zero members mean "not known": sizes of that kind
/// then resolve to 0.
struct ZV_API ZvScaleSetup {
    double worldPerMeter = 0; ///< world units covered by one metre of screen or paper
    double worldPerPixel = 0; ///< world units covered by one pixel
    /// World units; 0 for null, by-layer, by-block and unresolvable sizes.
    double SizeToWorld(const ZvUniSize& size) const;
    double WidthToWorld(const ZvLineWidth& width) const;
};

/// Names a property and carries its value. Identifiers of the base: "Color", "Layer".
struct ZvProperty {
    using Value = std::variant<bool, int64_t, double, XStringW>;
    std::string id;
    XStringW label;
    Value value;
    bool writable = true;
};

/// Filled by GetProperties of entities and records. Order is the order of showing.
class ZV_API ZvPropertyGatherer {
public:
    void Add(std::string id, XStringW label, ZvProperty::Value value, bool writable = true);
    const std::vector<ZvProperty>& Items() const { return m_items; }
    const ZvProperty* Find(std::string_view id) const;

private:
    std::vector<ZvProperty> m_items;
};

/// The values to set, by identifier. SetProperties takes what it knows; `Unused` tells what nobody took, `Refuse` keeps a reason.
class ZV_API ZvPropertySetter {
public:
    void Set(std::string id, ZvProperty::Value value);
    /// Marks the value as taken. Null when absent or of another type.
    const ZvProperty::Value* Take(std::string_view id);
    /// Takes a text. Null when absent; a value of another type is refused.
    const XStringW* TakeText(std::string_view id);
    /// Takes a number, whole numbers included. False when absent; text and truth values are refused.
    bool TakeNumber(std::string_view id, double& number);
    void Refuse(std::string_view id, std::string reason);
    /// Refuses because the text does not parse.
    void RefuseText(std::string_view id, const XStringW& text);
    bool IsRefused(std::string_view id) const;
    std::vector<std::string> Unused() const;
    const std::vector<std::string>& Refusals() const { return m_refusals; }

private:
    struct Entry {
        ZvProperty::Value value;
        bool taken = false;
    };
    std::map<std::string, Entry, std::less<>> m_values;
    std::vector<std::string> m_refusals;
};

/// Lines of generic information about an entity, label and text.
struct ZvQueryResults {
    std::vector<std::pair<XStringW, XStringW>> lines;
};

enum class ZvSnapKind { Vertex, Edge, Center, MidPoint, InsertPoint, Tangent, Perpendicular };
struct ZvSnap {
    ZvSnapKind kind = ZvSnapKind::Vertex;
    Vec3d point;
};
using ZvSnaps = std::vector<ZvSnap>;

/// A handle by which a user edits an entity. `id` is the entity's own (for polylines: the vertex index).
struct ZvGrip {
    int id = 0;
    Vec3d point;
};
using ZvGrips = std::vector<ZvGrip>;

/// Where an entity comes closest to something. Distances are in world units in the XY plane unless said otherwise.
struct ZvClosest {
    Vec3d point;
    double distance = 0;
    int part = -1;
    int index = -1; ///< segment or vertex index over all parts, -1 when the entity has none
};

enum class ZvOccupancy { Outside, Inside, On };
enum class ZvClipResult { Outside, Inside, Crosses };

struct ZvMenuItem {
    int id = 0;
    XStringW text;
    bool checked = false;
    bool enabled = true;
};
using ZvMenu = std::vector<ZvMenuItem>;

/// Counts uses of table records: (table code, record index) -> uses. Part of purging.
class ZV_API ZvUsageTable {
public:
    void Use(uint32_t tableCode, int index) { ++m_counts[{tableCode, index}]; }
    int Count(uint32_t tableCode, int index) const;
    void Clear() { m_counts.clear(); }

private:
    std::map<std::pair<uint32_t, int>, int> m_counts;
};

/// Told of every live block in an arena, so that its owner knows what is garbage there.
struct ZvHeapMarks {
    size_t liveBytes = 0;
    size_t liveBlocks = 0;
    void Mark(const void* block, size_t bytes) {
        if (block)
            liveBytes += bytes, ++liveBlocks;
    }
};

using ZvEntityList = std::vector<std::unique_ptr<ZvEntity>>;

/// What counts as equal geometry: coordinates within `tolerance` (world units; 0: the same bits).
struct ZvGeometryCompare {
    double tolerance = 0;
};
