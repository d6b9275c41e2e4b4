#pragma once
#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include "ZvCore/Mat4T.h"

/// Moves, turns, scales or mirrors entities by a matrix. Undo gives every bit back: what rounding would lose is kept.
class ZV_API ZvVTransform : public ZvVerb {
public:
    ZvVTransform(const ZvSelection& entities, const Mat4d& xform);

    const Mat4d& Transformation() const { return m_xform; }

    Kind GetKind() const override { return Kind::Transform; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    void TransformOne(ZvEntity& entity);

    Mat4d m_xform;
    ZvOriginals m_originals;
    int m_leftOut = 0; ///< entities that could not be stored as the result of the last Do
};
