#pragma once
#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "ZvCore/Vec.h"
#include <vector>

/// Moves grips (vertices of polylines, positions of points ...) of one or more entities.
class ZV_API ZvVMoveGrip : public ZvVerb {
public:
    explicit ZvVMoveGrip(ZvDrawing* drawing = nullptr) : ZvVerb(drawing) {}

    /// `gripId`: as GetGrips of the entity gives it; `to`: world units. Where it is now is the other half of the pair.
    /// False, nothing added, when the entity has no such grip or the place is not finite. Several grips of one entity move in the order added.
    bool AddGripPair(const ZvEntity& entity, int gripId, const Vec3d& to);
    int GripCount() const { return int(m_pairs.size()); }
    /// Moves the grips to where they go (`forward`) or back.
    void DoInternal(bool forward);

    Kind GetKind() const override { return Kind::MoveGrip; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override { DoInternal(true); }
    void Undo() override { DoInternal(false); }
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct Pair {
        uint32_t name;
        int gripId;
        Vec3d from, to;
    };
    std::vector<Pair> m_pairs;
    ZvOriginals m_originals; ///< packing a vertex anew can move its neighbours by a fraction of a step
};
