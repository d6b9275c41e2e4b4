#pragma once
#include "ZvCore/Api.h"
#include <cstdint>

class ZvEntity;

/// Where an entity stands in the drawing order of its tree node, by the name of the one drawn next, so that an entity
/// that left the node and came back is drawn where it was. Places of several entities are restored in the reverse of
/// the order in which they were taken.
class ZV_API ZvDrawPlace {
public:
    ZvDrawPlace() = default;
    explicit ZvDrawPlace(const ZvEntity& entity);
    /// Leaves the entity where it is when the one drawn next is in another node now.
    void Restore(ZvEntity& entity) const;

private:
    int32_t m_node = 0;
    uint32_t m_next = 0; ///< 0: drawn last
};
