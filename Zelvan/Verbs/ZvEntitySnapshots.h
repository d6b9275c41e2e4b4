#pragma once
#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include "ZvCore/Api.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class ZvDrawing;
class ZvEntity;
class ZvLayer;
class ZvSelection;

/// Full copies of entities, in order: geometry, appearance, flags, layer and feature attributes. The copies
/// carry the names of their originals.
class ZV_API ZvEntitySnapshots {
public:
    ZvEntitySnapshots();
    ~ZvEntitySnapshots();
    ZvEntitySnapshots(const ZvEntitySnapshots&) = delete;
    ZvEntitySnapshots& operator=(const ZvEntitySnapshots&) = delete;

    void Take(const ZvEntity& entity);
    /// A state made elsewhere of an entity that is in a drawing; layer and attributes stay those of the latter.
    void Take(const ZvEntity& target, std::unique_ptr<ZvEntity> state);
    size_t Count() const { return m_copies.size(); }
    uint32_t Name(size_t index) const;
    const ZvEntity& Copy(size_t index) const { return *m_copies[index].entity; }
    std::vector<uint32_t> Names() const;
    /// Makes the drawing's entity of that name what it was. False (unchanged) when it is gone or of another kind.
    bool Restore(ZvDrawing& drawing, size_t index) const;
    void Remove(const ZvSelection& leaving);
    void AddLayers(const ZvDrawing& drawing, std::vector<ZvLayer*>& layers) const;
    /// In constant time.
    size_t MemUsage() const { return m_bytes + m_copies.capacity() * sizeof(One); }

private:
    using Row = std::vector<ZvAttributeColumn::Value>;
    struct One {
        std::unique_ptr<ZvEntity> entity;
        uint32_t layer = 0;       ///< id: the layer need not be there any more
        std::unique_ptr<Row> row; ///< null: it had none
    };
    static size_t BytesOf(const One& one);
    static ZvLayer* LayerOf(const ZvDrawing& drawing, const One& one);
    static void RestoreRow(const One& one, ZvLayer* layer, uint32_t name);

    std::vector<One> m_copies;
    size_t m_bytes = 0; ///< what the copies hold
};
