#pragma once
#include "Zelvan/ZvBounds.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class ZvBNode;
class ZvEntity;

/// Puts many entities into a tree at once, top-down: each is asked for its bounds once, and every node's array gets its final
/// size. Order within a node is that of the input. Within the library only.
class ZvBNodeBuilder {
public:
    /// Reads bounds and flags. The entities must stay as they are until Place.
    void Load(std::span<ZvEntity* const> entities);
    /// Of everything that can be placed, erased entities included; empty when there is nothing.
    const ZvBounds3D& Bounds() const { return m_bounds; }
    /// The root's box holds Bounds().
    void Place(ZvBNode& root);

    struct Item {
        double minX, minY, maxX, maxY;
        uintptr_t entity; ///< bit 0: erased, bit 1: hidden
    };

private:
    void PlaceItems(ZvBNode& node, Item* items, size_t count, Item* scratch);
    bool StaysLeaf(const ZvBNode& node, const Item* items, size_t count) const;
    void Append(ZvBNode& node, const Item* items, size_t count) const;
    ZvBounds3D BoundsOf(const Item& item) const;

    std::vector<Item> m_items;
    std::vector<ZvEntity*> m_loose;
    ZvBounds3D m_bounds;
    bool m_flat = true; ///< all at the height m_bounds.minZ
};
