#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Mat4T.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include <functional>

class ZvDrawing;
class ZvEntity;
class ZvLayer;
class ZvSelection;

/// Direct changes of selected entities: what verbs and scripts are made of. Nothing here can be undone by
/// itself. Erased entities, entities on locked or uneditable layers, and those for which a plug-in vetoes are
/// left as they are and counted.
class ZV_API ZvModOps {
public:
    explicit ZvModOps(ZvDrawing& drawing) : m_drawing(drawing) {}

    struct Result {
        int changed = 0;
        int refused = 0;
        XStringW reason; ///< of the first refusal
    };
    Result Translate(const ZvSelection& selection, const Vec3d& by);
    /// About an axis along Z; radians, counter-clockwise.
    Result Rotate(const ZvSelection& selection, const Vec3d& center, double angle);
    /// A factor of 0 or one that is not finite is refused.
    Result Scale(const ZvSelection& selection, const Vec3d& center, double factor);
    /// A singular matrix is refused.
    Result Transform(const ZvSelection& selection, const Mat4d& xform);
    /// Flags the entities erased and takes them out of the current selection.
    Result Erase(const ZvSelection& selection);
    /// The layer must be one of this drawing.
    Result MoveToLayer(const ZvSelection& selection, ZvLayer* layer);

private:
    bool MayChange(const ZvEntity& entity, XStringW& reason) const;
    Result ForEach(const ZvSelection& selection, const std::function<bool(ZvEntity&, XStringW&)>& change);
    static Result RefuseAll(const ZvSelection& selection, const char16_t* reason);

    ZvDrawing& m_drawing;
};
