#pragma once
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/View/ZvGLMatrix.h"
#include "Zelvan/View/ZvViewOptions.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Api.h"
#include "ZvCore/Mat4T.h"
#include "ZvCore/Vec.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class ZvDrawing;
class ZvPaperPage;
class ZvUniSize;

namespace Zelvan {

/// Where a box lies in the view volume.
enum class VFCResult : int { Outside = 0, Inside = 1, Partial = 2 };

/// Maps drawing (world) coordinates to pixels and back for one view of a drawing.
///
/// Every world point first loses the world centre, a point near what is shown, in double precision. What
/// follows may then be single precision and stays exact at any distance from the drawing's origin. Pixels:
/// those of the window rectangle, or of the frame buffer's corner where one is set; x to the right, y down
/// (up when SetYAxisUp), pixel centres at .5. Depth: -1 near .. 1 far.
///
/// Setters of the camera take effect with the next RebuildView. Converters may be called from several threads
/// between rebuilds.
class ZV_API ZvViewXForm {
public:
    /// Bits of the projection flags.
    enum ProjectionFlag : uint32_t {
        kOrthographic = 1,         ///< plan projection; else perspective
        kOrientLookAt = 2,         ///< orientation from eye, target and up vector
        kOrientAngles = 0x400,     ///< orientation from tilt and rotation
        kTiltBack = 0x800,         ///< with kOrientAngles: a positive tilt shows the scene from the north
        kRotateClockwise = 0x1000, ///< with kOrientAngles: a positive rotation turns the scene clockwise
    };
    static constexpr double kNearPlane = 3.0;
    static constexpr double kDefaultTolerance = 100000;
    static constexpr size_t kMaxRecentCenters = 5;
    struct RecentCenter {
        double x = 0, y = 0, z = 0;
        int useCount = 0;
    };

    /// An orthographic plan view, 1 world unit wide, of the origin, in a window of 1 x 1 pixels. `drawing`
    /// may be null.
    explicit ZvViewXForm(ZvDrawing* drawing = nullptr);
    virtual ~ZvViewXForm();
    ZvViewXForm(const ZvViewXForm& other) = default;
    ZvViewXForm& operator=(const ZvViewXForm& other) = default;
    /// Made on the heap; the caller ends it with Delete.
    static ZvViewXForm* New(ZvDrawing* drawing);
    void Delete() { delete this; }
    /// Drawing, options, camera, window, matrices, world centres, stacks.
    void CopyFrom(const ZvViewXForm& other) { *this = other; }

    // --- setup ---------------------------------------------------------------------------------------
    void SetDrawing(ZvDrawing* drawing) { m_drawing = drawing; }
    ZvDrawing* Drawing() const { return m_drawing; }
    /// Null: defaults. The options must outlive the transform.
    void SetOptions(const ZvViewOptions* options) { m_options = options; }
    const ZvViewOptions& Options() const;
    /// The window area in pixels.
    void SetWindowRect(const Rect2I& window, bool rebuild);
    void SetWindowRect(const ZvBounds2D& window, bool rebuild);
    const ZvBounds2D& WindowRect() const { return m_window; }
    /// Area of the render target, in pixels of the window. Pixels are counted from its corner.
    void SetFrameBufferRect(const Rect2I& area);
    /// A further shift of the render target, in pixels.
    void RenC_SetFrameBufferOffset(const Vec2d& offset);
    /// Targets whose pixel y grows upwards.
    void SetYAxisUp(bool up) { m_yUp = up; }

    void SetProjectionFlags(uint32_t flags) { m_flags = flags; }
    uint32_t ProjectionFlags() const { return m_flags; }
    bool IsOrthographic() const { return m_flags & kOrthographic; }
    /// Orthographic and not tilted: X and Y alone decide where a point lands.
    bool IsPlan() const { return m_isPlan; }
    void SetEye(const Vec3d& eye) { m_eye = eye; }
    const Vec3d& Eye() const { return m_eye; }
    void SetTarget(const Vec3d& target) { m_target = target; }
    const Vec3d& Target() const { return m_target; }
    /// Degrees from bottom to top, perspective.
    void SetFieldOfView(double degrees) { m_fieldOfView = degrees; }
    double FieldOfView() const { return m_fieldOfView; }
    /// World units across the window, orthographic.
    void SetViewWidth(double width) { m_viewWidth = width; }
    double ViewWidth() const { return m_viewWidth; }
    /// Radians. Tilt leans the scene away about the screen's x axis; rotation turns it counter-clockwise.
    void SetTilt(double tilt) { m_tilt = tilt; }
    double Tilt() const { return m_tilt; }
    void SetRotation(double rotation) { m_rotation = rotation; }
    double Rotation() const { return m_rotation; }
    /// Target, width, rotation and flags of a plan view at once.
    void SetPlan(const Vec3d& target, double width, double rotation = 0);
    /// A plan view of all of `world`, kept in the middle, with `margin` pixels around it. Rebuilds. An empty
    /// or flat box shows at least one world unit.
    void FitPlan(const ZvBounds2D& world, double margin = 0);

    /// Sizes in points and millimetres as on that page, `scale` times as large; null: as on paper at
    /// 1:`scale`. `keep`: rebuilds leave it so; else the next one goes back to what the options say.
    void SetupPointsToWorld(const ZvPaperPage* page, float scale, bool keep);
    /// From the options: by their paper scale, else constant on the screen.
    void AutoSetupPointsToWorld();
    /// World units per point (1/72 inch).
    double PointsToWorld() const { return m_pointsToWorld; }

    // --- rebuild -------------------------------------------------------------------------------------
    void RebuildView();
    /// Only `crop` (pixels of the window) is projected and counts as visible; pixels stay the same.
    void RebuildViewCropped(const ZvBounds2D& crop);
    const Mat4d& Projection() const { return m_projection; }
    const Mat4d& ModelView() const { return m_modelView; }
    /// Maps offset world points (WorldCenterOffset added) to clip space.
    const Mat4d& Combined() const { return m_combined; }
    const ZvViewport& Viewport() const { return m_viewport; }

    // --- world centre --------------------------------------------------------------------------------
    void SetWorldCenter(const Vec3d& center);
    Vec3d WorldCenter() const { return -m_offset; }
    const Vec3d& WorldCenterOffset() const { return m_offset; }
    void CheckWorldCenter(bool force);
    bool WorldCenterOk(const Vec3d& point) const;
    void SetWorldCenterTolerance(double pixels) { m_tolerance = pixels; }
    double WorldCenterTolerance() const { return m_tolerance; }
    void EnableWorldCenterManagement(bool on) { m_manageCenter = on; }
    /// Of all transforms.
    static void EnableWorldCenterManagementGlobally(bool on);
    /// Oldest first.
    const std::vector<RecentCenter>& RecentWorldCenters() const { return m_recent; }

    // --- pre-transforms: for content drawn in coordinates of its own ---------------------------------
    /// Points are in coordinates that `toOuter` maps to those that were in use before (world at first), until
    /// the matching pop.
    void PushPreTransform(const Mat4d& toOuter);
    void PushPreTransform(const Mat4f& toOuter) { PushPreTransform(toOuter.As<double>()); }
    void PopPreTransform();
    size_t PreTransformDepth() const { return m_pre.size(); }
    /// Keeps and restores projection, model-view and world centre.
    void PushMatrixSet();
    void PopMatrixSet();
    /// Both change the model-view matrix from the right until the matching PopTranslate.
    void TempTranslate(const Vec3d& by);
    void TempModelViewMul(const Mat4d& matrix);
    void PopTranslate();

    // --- mapping: world to pixels --------------------------------------------------------------------
    /// High quality (double precision). w of the input (a measure) does not count; w of the result is that of
    /// clip space: not above 0 for points at or behind the eye, whose pixel means nothing.
    Vec4d ToView(const Vec4d& world) const { return m_toView(*this, world); }
    Vec3d ToView(const Vec3d& world) const { return ToView(Vec4d{world.x, world.y, world.z, 1}).XYZ(); }
    /// Low quality (single precision after the world centre): within a few hundredths of a pixel in the
    /// window, for what is not much nearer to the eye than the target.
    Vec4f ToViewLQ(const Vec4d& world) const { return m_toViewLQ(*this, world); }
    /// Many points; `out` may not overlap the input.
    void ToViewLQ(const Vec4d* world, size_t count, Vec4f* out) const;
    /// Pixels alone.
    void ToViewLQ(const Vec4d* world, size_t count, Vec2f* out) const;
    void ToViewLQ(const Vec2d* world, size_t count, Vec2f* out, double z = 0) const;
    /// World to offset single-precision coordinates: what the graphics card gets (its matrices do the rest).
    Vec3f ToViewGL3f(const Vec3d& world) const;
    Vec4f ToViewGL4f(const Vec4d& world) const; ///< w is kept
    void ToViewGL3fa(const Vec4d* world, size_t count, Vec3f* out) const;

    // --- mapping: pixels to world --------------------------------------------------------------------
    /// z: depth -1..1; 0 is the target's plane in orthographic views. The world point of a pixel that has
    /// none is the target.
    Vec3d ToWorld(const Vec3d& view) const;
    Vec3f ToWorldf(const Vec3f& view) const;
    /// From the near plane into the scene; the direction has length 1.
    Ray3d ToWorldRay(const Vec2d& pixel) const;
    /// `toView`: world to pixel, else pixel to world. False, `point` untouched, when it has no counterpart.
    virtual bool Transform(bool toView, Vec3d& point) const;
    /// World box (XY) of what the window shows in the plane z = target's z; everything when the horizon is in
    /// view.
    ZvBounds2D VisibleWorld() const;

    // --- sizes and angles ----------------------------------------------------------------------------
    /// World units covered by one pixel at the target.
    double WorldPerPixel() const { return m_worldPerPixel; }
    ZvScaleSetup Scale() const;
    /// World units, pixels; 0 for null, by layer and by block.
    float SizeToWorld(const ZvUniSize& size) const;
    float SizeToView(const ZvUniSize& size) const;
    /// World angle (radians, from +X in the XY plane) to the angle on the screen, both counter-clockwise as
    /// seen; -pi..pi.
    double AngleToView(double angle) const;
    /// The rectangle mirrored top to bottom in the window, for targets that count from the bottom.
    Rect2I InvertRect(const Rect2I& rect) const;
    ZvBounds2D InvertRect(const ZvBounds2D& rect) const;

    // --- culling -------------------------------------------------------------------------------------
    /// Never Outside for a box that shows; a box that only comes near the volume's edges may answer Partial.
    /// Orthographic views have neither near nor far plane. Pre-transforms do not count. Empty boxes are
    /// outside.
    VFCResult CullResult(const ZvBounds3D& world) const;
    /// At z = 0, in plan views at any z.
    VFCResult CullResult(const ZvBounds2D& world) const;

private:
    using HQ = Vec4d (*)(const ZvViewXForm&, const Vec4d&);
    using LQ = Vec4f (*)(const ZvViewXForm&, const Vec4d&);
    struct PreTransform {
        Mat4d toWorld;
        Mat4d toOffset; ///< to world minus centre
    };
    struct MatrixSet {
        Mat4d projection, modelView;
        Vec3d offset;
    };
    struct Plane {
        double x, y, z, w;
    };

    void RebuildViewInternal(const ZvBounds2D* crop);
    void SetupViewport(const ZvBounds2D& area);
    double AspectRatio() const;
    double WorldUnitsPerMeter() const;
    void AdjustProjection(const ZvBounds2D& crop);
    void BuildProjection(double aspect);
    void BuildModelView();
    void AutoSetupWorldScale();
    void SetupFunctionPointers();
    void MatricesChanged();
    void TrimRecentWorldCenters();
    void ExtractPlanes();
    void RefreshPre();
    double EyeDistance() const;
    double PixelsPerWorld() const;
    template <class In, class Out>
    void MapBatch(const In* world, size_t count, Out* out, double z) const;

    static Vec4d ToViewPlain(const ZvViewXForm& x, const Vec4d& world);
    static Vec4d ToViewPre(const ZvViewXForm& x, const Vec4d& world);
    static Vec4f ToViewLQPlain(const ZvViewXForm& x, const Vec4d& world);
    static Vec4f ToViewLQPre(const ZvViewXForm& x, const Vec4d& world);

    ZvDrawing* m_drawing = nullptr;
    const ZvViewOptions* m_options = nullptr;
    uint32_t m_flags = kOrthographic | kOrientAngles;
    bool m_yUp = false;
    bool m_manageCenter = true;
    bool m_keepPointsToWorld = false;
    bool m_isPlan = true;
    bool m_isAffine = true; ///< the combined matrix leaves w alone
    Vec3d m_eye{0, 0, 10}, m_target;
    double m_fieldOfView = 45;
    double m_viewWidth = 1;
    double m_tilt = 0, m_rotation = 0;
    ZvBounds2D m_window{0, 0, 1, 1};
    Rect2I m_frameBuffer; ///< empty: not set
    Vec2d m_frameBufferOffset;

    Mat4d m_projection, m_modelView, m_combined;
    Mat4f m_combinedLQ;
    Vec3d m_offset;
    double m_tolerance = kDefaultTolerance;
    std::vector<RecentCenter> m_recent;
    std::vector<PreTransform> m_pre;
    std::vector<MatrixSet> m_sets;
    std::vector<Mat4d> m_translates;

    ZvViewport m_viewport;
    float m_halfWidth = 0.5f, m_halfHeight = -0.5f; ///< height signed: negative when y grows downwards
    float m_originX = 0.5f, m_originY = 0.5f;       ///< pixel of the middle
    double m_worldPerPixel = 1, m_pointsToWorld = 1;
    Plane m_planes[6] = {};
    int m_planeCount = 0;
    HQ m_toView = &ToViewPlain;
    LQ m_toViewLQ = &ToViewLQPlain;
};

} // namespace Zelvan
