#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <utility>

class ZvEntity;

/// Monotone map of world coordinates to steps 1..254 across a node's box. Comparing steps never contradicts comparing the
/// coordinates: a < b in steps means a < b, so a query looks at an entity itself only where steps are equal.
struct ZvNodeGrid {
    static constexpr uint32_t kSteps = 254;
    /// Box of an entity that no window meets by steps: empty, not finite, or too large to be placed.
    static constexpr uint32_t kLoose = 0xFFFFFFFFu;

    double originX = 0, originY = 0;
    float scaleX = 0, scaleY = 0; ///< steps a world unit, 0 for a box without extent

    ZvNodeGrid() = default;
    explicit ZvNodeGrid(const ZvBounds3D& box)
        : originX(box.minX), originY(box.minY), scaleX(Scale(box.maxX - box.minX)),
          scaleY(Scale(box.maxY - box.minY)) {}
    /// Place in steps, not rounded: within 0..254 for the node's box, a little more by rounding.
    double PlaceX(double x) const { return (x - originX) * double(scaleX); }
    double PlaceY(double y) const { return (y - originY) * double(scaleY); }
    static uint32_t Step(double place) {
        return place > 0 ? place < kSteps - 1 ? uint32_t(int32_t(place)) + 1 : kSteps : 1;
    }
    /// Four steps in one word, lowest byte first: minX, minY, 255 - maxX, 255 - maxY. A box meets a window when each byte is
    /// at most that of the window's word, which is built with minima and maxima exchanged.
    uint32_t Pack(double minX, double minY, double maxX, double maxY) const {
        return Step(PlaceX(minX)) | Step(PlaceY(minY)) << 8 | (255 - Step(PlaceX(maxX))) << 16 |
               (255 - Step(PlaceY(maxY))) << 24;
    }

private:
    static float Scale(double extent) {
        const double scale = extent > 0 ? kSteps / extent : 0;
        return scale > 1e-30 && scale < 1e30 ? float(scale) : 0;
    }
};

/// The entities of one tree node, in drawing order, each with its box in steps of the node's grid. One pointer; the block behind it
/// holds counts, grid, boxes, entities. Capacity doubles, minimum 2. Does not own the entities. The grid is set before the first
/// entry, and anew (with all boxes) when the node's box changes.
class ZV_API ZvBNodeList {
public:
    ZvBNodeList() = default;
    ZvBNodeList(const ZvBNodeList&) = delete;
    ZvBNodeList& operator=(const ZvBNodeList&) = delete;
    ~ZvBNodeList() { Reset(); }
    void Swap(ZvBNodeList& other) noexcept { std::swap(m_block, other.m_block); }

    bool IsEmpty() const { return Size() == 0; }
    /// True before the first entry; does not look at the block.
    bool HasNoBlock() const { return !m_block; }
    const void* BlockAddress() const { return m_block; }
    /// Not for a list without a block.
    const ZvNodeGrid& Grid() const { return m_block->grid; }
    void SetGrid(const ZvNodeGrid& grid) {
        if (!m_block)
            Reallocate(2);
        m_block->grid = grid;
    }
    size_t Size() const { return m_block ? m_block->size : 0; }
    size_t Capacity() const { return m_block ? m_block->capacity : 0; }
    ZvEntity* Get(size_t i) const { return Entities()[i]; }
    void Set(size_t i, ZvEntity* entity) { Entities()[i] = entity; }
    uint32_t Box(size_t i) const { return Boxes()[i]; }
    void SetBox(size_t i, uint32_t box) { Boxes()[i] = box; }
    ZvEntity* const* begin() const { return m_block ? Entities() : nullptr; }
    ZvEntity* const* end() const { return m_block ? Entities() + m_block->size : nullptr; }
    /// Not for a list without a block.
    uint32_t* Boxes() const { return reinterpret_cast<uint32_t*>(m_block + 1); }
    ZvEntity** Entities() const {
        return reinterpret_cast<ZvEntity**>(Boxes() + (m_block->capacity + 1u) / 2 * 2);
    }

    /// The list has a block.
    void Add(ZvEntity* entity, uint32_t box) {
        if (m_block->size == m_block->capacity)
            Reallocate(m_block->capacity * 2);
        const uint32_t i = m_block->size++;
        Boxes()[i] = box;
        Entities()[i] = entity;
    }
    /// Later entries move up, order kept.
    void EraseAt(size_t i);
    /// Takes entry `from` out and puts it in so that it stands at `to`.
    void Move(size_t from, size_t to);
    /// Size() when the entity is not listed.
    size_t Find(const ZvEntity* entity) const;
    /// Forgets entries from `count` on; memory stays.
    void Truncate(size_t count) {
        if (m_block)
            m_block->size = uint32_t(count);
    }
    /// Room for exactly `count` entries when that is more than now.
    void Reserve(size_t count) {
        if (count > Capacity())
            Reallocate(uint32_t(count));
    }
    void Reset();
    size_t MemUsage() const { return m_block ? BlockBytes(m_block->capacity) : 0; }

private:
    struct Block {
        uint32_t size;
        uint32_t capacity;
        ZvNodeGrid grid;
    };
    static size_t BlockBytes(uint32_t capacity) {
        return sizeof(Block) + (capacity + 1u) / 2 * 2 * sizeof(uint32_t) + capacity * sizeof(ZvEntity*);
    }
    void Reallocate(uint32_t capacity);

    Block* m_block = nullptr;
};
