#pragma once
#include "Zelvan/Verbs/ZvVerb.h"

class ZvEntity;

/// New entities: undone they are erased, redone they are back.
class ZV_API ZvVEntNew : public ZvVerb {
public:
    explicit ZvVEntNew(ZvDrawing* drawing = nullptr);
    ~ZvVEntNew() override;

    /// An entity that is in the drawing already. False when it was added before.
    bool Add(const ZvEntity* entity);
    /// One that Do inserts into the drawing, on the named layer (the current one when empty).
    void Add(std::unique_ptr<ZvEntity> entity, const XStringW& layerName = {});
    /// Before Do: drops the entity that was the `index`-th to be handed over.
    void DropWaiting(size_t index);

    Kind GetKind() const override { return Kind::New; }
    void FlushNeverDone() override;
    XStringW DefaultName() const override;
    /// While undone with the entities, which only redoing needs.
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    /// Tells the user about entities that cannot be seen.
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct Waiting {
        std::unique_ptr<ZvEntity> entity;
        XStringW layerName;
    };
    bool InsertWaiting();
    void ShowNotes() const;

    std::vector<Waiting> m_waiting;
    size_t m_erasedBytes = 0;
};
