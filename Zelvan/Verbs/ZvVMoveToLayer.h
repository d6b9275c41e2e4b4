#pragma once
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Verbs/ZvDrawPlace.h"
#include "Zelvan/Verbs/ZvFieldGain.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <map>
#include <vector>

/// Moves entities to a layer. Their attribute rows go along: fields that the layer lacks are added to it, and values
/// that its fields cannot take come back with the undo. Insert the entities into Entities(), or pass them.
class ZV_API ZvVMoveToLayer : public ZvVerb {
public:
    explicit ZvVMoveToLayer(ZvLayer& to, const ZvSelection& entities = ZvSelection());

    Kind GetKind() const override { return Kind::MoveToLayer; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    /// Every entity is on the layer already.
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void UpdateLayersUsed() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct Former {
        uint32_t name;
        uint32_t layerId;
        ZvDrawPlace place;
    };
    ZvLayer* FindLayer(uint32_t id) const;
    bool HasMembersElsewhere() const;
    ZvLayer* Target(const char* context) const;
    void MoveAll(ZvLayer& to);
    void MoveOne(ZvEntity& entity, ZvLayer& to);
    void BringBack(const Former& former, ZvLayer* from);

    uint32_t m_layerId;
    ZvFieldGain m_fields;                        ///< of the layer moved to
    std::vector<Former> m_former;                ///< of the entities that moved, in their order
    std::map<uint32_t, ZvAttributeTable> m_rows; ///< their attribute rows, by former layer
};
