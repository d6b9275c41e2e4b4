#pragma once
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"

class ZvDrawing;
class ZvNamedView;

/// One view of a drawing: its transform, what it has to repaint, and how a user moves about in it. The window
/// itself is the host's.
class ZV_API ZvView {
public:
    /// What input does in the view; bits.
    enum InputMode : uint32_t { kNavigate = 1, kSelect = 2, kEdit = 4, kInputAll = 7 };

    /// `drawing` may be null and must outlive the view.
    explicit ZvView(ZvDrawing* drawing = nullptr, int id = 0);
    ZvView(const ZvView&) = delete;
    ZvView& operator=(const ZvView&) = delete;

    int GetId() const { return m_id; }
    void SetId(int id) { m_id = id; }
    ZvDrawing* Drawing() const { return m_drawing; }
    void SetDrawing(ZvDrawing* drawing);
    const XStringW& Name() const { return m_name; }
    void SetName(const XStringW& name) { m_name = name; }
    uint32_t GetInputMode() const { return m_inputMode; }
    void SetInputMode(uint32_t mode) { m_inputMode = mode; }
    Zelvan::ZvViewXForm& XForm() { return m_xform; }
    const Zelvan::ZvViewXForm& XForm() const { return m_xform; }
    void SetOptions(const ZvViewOptions* options);

    /// The window's size changed: the same centre and the same world units per pixel.
    void Resize(int width, int height);
    int Width() const;
    int Height() const;

    // --- navigation: each rebuilds the transform and repaints ----------------------------------------
    /// Multiplies what the window shows by `factor` (below 1: closer); the world point under the pixel stays
    /// there. Factors that are not positive and finite, or that leave the range of 1e-12 .. 1e15 world units
    /// across the window, change nothing and answer false.
    bool ZoomMousePt(const Vec2d& pixel, double factor);
    bool ZoomCenter(double factor);
    /// Shows the box with `margin` as a part of its size on every side. False for an empty box.
    bool ZoomTo(const ZvBounds2D& world, double margin = 0.05);
    /// All non-erased entities on visible layers. False when there are none.
    bool ZoomExtents(double margin = 0.05);
    /// The scene follows the pointer from one pixel to the other.
    void PanPixels(const Vec2d& from, const Vec2d& to);
    void CenterOn(const Vec3d& world);
    void SetRotation(double radians);

    /// World point of a pixel in the plane z = 0 (where the line of sight meets it, else in the target's
    /// plane).
    Vec3d PixelToPlane(const Vec2d& pixel) const;

    // --- repainting ----------------------------------------------------------------------------------
    /// Adds what shows of the box to the pixels to repaint and tells the drawing's host. Boxes that do not
    /// show cost nothing.
    void Invalidate(const ZvBounds3D& world);
    void InvalidateAll();
    /// Pixels to repaint, empty when all is up to date; forgets them.
    Rect2I TakeDirty();

    // --- saved state ---------------------------------------------------------------------------------
    void StoreTo(ZvNamedView& record) const;
    void RestoreFrom(const ZvNamedView& record);

private:
    bool SetWidthChecked(double width);
    void Rebuilt();

    ZvDrawing* m_drawing;
    int m_id;
    XStringW m_name;
    uint32_t m_inputMode = kInputAll;
    Zelvan::ZvViewXForm m_xform;
    Rect2I m_dirty;
};
