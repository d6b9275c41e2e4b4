#pragma once
#include "Zelvan/DrawingAux/ZvLooseOwner.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include <memory>
#include <vector>

class ZvDrawing;
class ZvEntity;

/// The sink for entities that are only drawn (previews, ghosts of a drag): they are in no tree, have no name
/// and never reach a file. Owned until they are taken back or cleared.
class ZV_API ZvTemporaryData {
public:
    explicit ZvTemporaryData(ZvDrawing& drawing);
    ~ZvTemporaryData();
    ZvTemporaryData(const ZvTemporaryData&) = delete;
    ZvTemporaryData& operator=(const ZvTemporaryData&) = delete;

    /// Marks the entity for temporary drawing and lends it the drawing. Null stays null.
    ZvEntity* Add(std::unique_ptr<ZvEntity> entity);
    /// Null when the entity is not here.
    std::unique_ptr<ZvEntity> Take(const ZvEntity* entity);
    bool Delete(const ZvEntity* entity) { return Take(entity) != nullptr; }
    void Clear();
    const std::vector<std::unique_ptr<ZvEntity>>& Entities() const { return m_entities; }
    ZvBounds3D Bounds() const;

private:
    ZvDrawing& m_drawing;
    ZvLooseOwner m_owner;
    std::vector<std::unique_ptr<ZvEntity>> m_entities;
};
