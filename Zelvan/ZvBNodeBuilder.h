#pragma once
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class ZvBNode;
class ZvEntity;

/// Puts many entities into a tree at once, top-down: each is asked for its bounds once, and every node's array gets its final
/// size. Order within a node is that of the input. Large inputs are first sorted by the nodes of the upper levels in one pass, so
/// that the rest works on pieces that fit into the cache. What is then moved from level to level is 20 bytes an entity: its box in
/// steps of 2^-32 of the root's box, and its number; where steps do not decide, the exact box does. Within the library only.
class ZvBNodeBuilder {
public:
    /// Reads bounds and flags. Nulls and, with `refuse`, entities that are in a tree already are reported and left out. The
    /// entities must stay as they are until Place. Once.
    void Load(std::span<ZvEntity* const> entities, bool refuse);
    /// Of everything that can be placed, erased entities included; empty when there is nothing.
    const ZvBounds3D& Bounds() const { return m_bounds; }
    size_t Count() const { return m_count + m_loose.size(); }
    /// The root's box holds Bounds().
    void Place(ZvBNode& root);

private:
    struct Source {
        double side[4];   ///< minX, minY, maxX, maxY
        uintptr_t entity; ///< bit 0: erased, bit 1: hidden
        ZvBounds2D Box() const { return {side[0], side[1], side[2], side[3]}; }
    };
    struct Item {
        uint32_t side[4]; ///< in steps
        uint32_t source;
    };
    struct Upper;

    void NoteHeights(const ZvBounds3D& bounds);
    uint32_t StepX(double x) const { return uint32_t(int64_t((x - m_origin.x) * m_steps.x)); }
    uint32_t StepY(double y) const { return uint32_t(int64_t((y - m_origin.y) * m_steps.y)); }
    ZvBounds3D BoundsOf(uint32_t source) const;
    void SortByUpperNodes(Upper& upper);
    void NumberByRank(Upper& upper, const std::vector<uint16_t>& rank);
    void MoveByRank(Upper& upper, const std::vector<uint16_t>& rank);
    void PlaceUpper(ZvBNode& node, const Upper& upper, uint32_t id, int level);
    /// Sources [begin, end), in input order after `upper` mixed them.
    void PlaceRange(ZvBNode& node, uint32_t begin, uint32_t end, const Upper* upper);
    void PlaceItems(ZvBNode& node, Item* items, size_t count, Item* scratch);
    bool AllEqual(uint32_t begin, uint32_t end, const Upper& upper) const;
    bool StaysLeaf(const ZvBNode& node, const Item* items, size_t count) const;
    void Append(ZvBNode& node, const Item* items, size_t count) const;
    void Fetch(const Item* items, size_t count) const;

    std::unique_ptr<Source[]> m_sources;
    size_t m_count = 0;
    std::vector<Vec2d> m_heights; ///< least and greatest Z of each source; empty while all are at one height
    std::vector<ZvEntity*> m_loose;
    ZvBounds3D m_bounds;
    Vec2d m_origin, m_steps; ///< of the root's box; steps a world unit
    std::unique_ptr<Item[]> m_items, m_scratch;
    size_t m_room = 0; ///< of both
};
