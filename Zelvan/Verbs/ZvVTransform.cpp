#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include <cmath>

namespace {

/// Whether the matrix, its last column aside, is the identity: a shift.
bool OnlyMoves(const Mat4d& xform) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            if (xform.m[row][column] != (row == column))
                return false;
    return xform.m[3][3] == 1;
}

bool IsFinite(const Mat4d& xform) {
    for (const auto& row : xform.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

} // namespace

ZvVTransform::ZvVTransform(const ZvSelection& entities, const Mat4d& xform)
    : ZvVerb(entities.ParentDrawing()), m_xform(xform) {
    Entities() = entities;
}

bool ZvVTransform::IsNullOp() const {
    const auto& m = m_xform.m;
    return Entities().IsEmpty() || IsRefused() || !IsFinite(m_xform) ||
           (OnlyMoves(m_xform) && m[0][3] == 0 && m[1][3] == 0 && m[2][3] == 0);
}

void ZvVTransform::Do() {
    LeaveOutGone("ZvVTransform.Do");
    m_originals.Clear();
    m_leftOut = 0;
    if (!IsFinite(m_xform))
        m_leftOut = Entities().Count();
    else if (!IsNullOp())
        for (int i = 0; i < Entities().Count(); ++i)
            TransformOne(*Entities().GetEntity(i));
    if (m_leftOut > 0)
        Refuse(XStringW::Format(ZvStrings::Get(ZvStr::RefusedCoordinates), m_leftOut), m_originals.IsEmpty());
}

void ZvVTransform::TransformOne(ZvEntity& entity) {
    const ZvXLine* line = entity.ToXLine();
    const bool keepsBlock =
        line && !line->Is64() && OnlyMoves(m_xform) && (line->HasZ() || m_xform.m[2][3] == 0);
    if (keepsBlock)
        m_originals.KeepOrigin(*line);
    else
        m_originals.Keep(entity);
    entity.Transform(m_xform);
    XStringW reason;
    if (!entity.OkForInsertion(&reason)) {
        m_originals.RestoreLast(entity);
        ++m_leftOut;
    }
}

void ZvVTransform::Undo() {
    m_originals.Restore(*Drawing(), "ZvVTransform.Undo");
}

void ZvVTransform::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    m_originals.Remove(leaving);
}

XStringW ZvVTransform::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbTransform);
}

size_t ZvVTransform::MemUsage() const {
    return ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb) + m_originals.MemUsage();
}
