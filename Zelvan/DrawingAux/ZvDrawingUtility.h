#pragma once
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

class ZvDrawing;
class ZvEntity;

/// Figures about the content of a drawing, for statistics and for proving that a saved file holds it all.
class ZV_API ZvDrawingUtility {
public:
    explicit ZvDrawingUtility(const ZvDrawing& drawing) : m_drawing(drawing) {}

    struct Tally {
        int64_t count = 0;
        int64_t erased = 0;
        int64_t vertices = 0; ///< of non-erased entities
        size_t bytes = 0;
    };
    /// All named entities by full code, those of blocks included.
    std::map<uint32_t, Tally> CountByKind() const;
    /// By layer index, -1 for entities that lie on no layer (those of blocks).
    std::map<int, Tally> CountByLayer() const;
    Tally CountAll() const;
    void EntitiesOfKind(uint32_t fullCode, std::vector<ZvEntity*>& entities) const;

private:
    const ZvDrawing& m_drawing;
};
