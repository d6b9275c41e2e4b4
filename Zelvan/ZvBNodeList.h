#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <span>

class ZvEntity;

/// Monotone map of world coordinates to steps 1..254 across a node's box. Comparing steps never contradicts comparing the
/// coordinates: a < b in steps means a < b, so a query looks at an entity itself only where steps are equal.
struct ZvNodeGrid {
    static constexpr uint32_t kSteps = 254;
    /// Box of an entity that no window meets by steps: empty, not finite, or too large to be placed.
    static constexpr uint32_t kLoose = 0xFFFFFFFFu;

    double originX = 0, originY = 0;
    double scaleX = 0, scaleY = 0; ///< steps a world unit, 0 for a box without extent

    ZvNodeGrid() = default;
    explicit ZvNodeGrid(const ZvBounds3D& box)
        : originX(box.minX), originY(box.minY), scaleX(Scale(box.maxX - box.minX)),
          scaleY(Scale(box.maxY - box.minY)) {}
    uint32_t StepX(double x) const { return Step((x - originX) * scaleX); }
    uint32_t StepY(double y) const { return Step((y - originY) * scaleY); }
    /// Four steps in one word, lowest byte first: minX, minY, 255 - maxX, 255 - maxY. A box meets a window when each byte is
    /// at most that of the window's word, which is built with minima and maxima exchanged.
    uint32_t Pack(double minX, double minY, double maxX, double maxY) const {
        return StepX(minX) | StepY(minY) << 8 | (255 - StepX(maxX)) << 16 | (255 - StepY(maxY)) << 24;
    }

private:
    static uint32_t Step(double v) { return v > 0 ? v < kSteps - 1 ? uint32_t(int32_t(v)) + 1 : kSteps : 1; }
    static double Scale(double extent) { return extent > 0 && extent < 1e200 ? kSteps / extent : 0; }
};

/// The entities of one tree node, in drawing order, each with its box in steps of the node's grid. One block of memory:
/// capacity doubles, minimum 2. Does not own the entities.
class ZV_API ZvBNodeList {
public:
    ZvBNodeList() = default;
    ZvBNodeList(const ZvBNodeList&) = delete;
    ZvBNodeList& operator=(const ZvBNodeList&) = delete;
    ~ZvBNodeList() { Reset(); }
    void Swap(ZvBNodeList& other) noexcept;

    size_t Size() const { return m_size; }
    size_t Capacity() const { return m_capacity; }
    ZvEntity* Get(size_t i) const { return m_block[i]; }
    void Set(size_t i, ZvEntity* entity) { m_block[i] = entity; }
    uint32_t Box(size_t i) const { return Boxes()[i]; }
    void SetBox(size_t i, uint32_t box) { Boxes()[i] = box; }
    ZvEntity* const* begin() const { return m_block; }
    ZvEntity* const* end() const { return m_block + m_size; }
    const uint32_t* Boxes() const { return reinterpret_cast<const uint32_t*>(m_block + m_capacity); }
    uint32_t* Boxes() { return reinterpret_cast<uint32_t*>(m_block + m_capacity); }

    void Add(ZvEntity* entity, uint32_t box) {
        if (m_size == m_capacity)
            Reallocate(m_capacity < 2 ? 2 : m_capacity * 2);
        m_block[m_size] = entity;
        Boxes()[m_size++] = box;
    }
    /// Later entries move up, order kept.
    void EraseAt(size_t i);
    /// Takes entry `from` out and puts it in so that it stands at `to`.
    void Move(size_t from, size_t to);
    /// Size() when the entity is not listed.
    size_t Find(const ZvEntity* entity) const;
    /// Forgets entries from `count` on; memory stays.
    void Truncate(size_t count) { m_size = uint32_t(count); }
    /// Room for exactly `count` entries when that is more than now.
    void Reserve(size_t count) {
        if (count > m_capacity)
            Reallocate(uint32_t(count));
    }
    void ShrinkToFit();
    void Reset();
    size_t MemUsage() const { return m_capacity * kEntry; }

    static constexpr size_t kEntry = sizeof(ZvEntity*) + sizeof(uint32_t);

private:
    void Reallocate(uint32_t capacity);

    ZvEntity** m_block = nullptr; // capacity pointers, then capacity boxes
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;
};
