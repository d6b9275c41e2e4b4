#pragma once
#include "Zelvan/Entities/ZvEntityOwner.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvName.h"
#include "ZvCore/Mat4T.h"
#include "ZvCore/dvect.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class ZvArrow;
class ZvBitmap;
class ZvCircle;
class ZvFilledEntity;
class ZvInsert;
class ZvLineEntity;
class ZvMultiPoint;
class ZvNativeDesc;
class ZvPointEnt;
class ZvRectangle;
class ZvRenderContext;
class ZvSelection;
class ZvText;
class ZvXLine;
class ZvcDumbHeap;
class ZvEntityEditor;
class ZvcIEventListener;

/// Entity type codes of the built-in client (client code 1). They stand in files and never change.
namespace ZvEntityCode {
enum : uint16_t {
    Circle = 2,
    Text = 3,
    Insert = 5,
    Arc = 8,
    Bitmap = 9,
    Mesh = 10,
    AMesh = 11,
    Arrow = 12,
    Compound = 14,
    PointEnt = 17,
    Viewport = 18,
    TestEntity = 20,
    Rectangle = 25,
    ScaleBar = 26,
    CompoundRect = 28,
    RawCompound = 29,
    Dimension = 30,
    MultiPoint = 33,
    XLine = 35,
};
inline constexpr uint16_t kBuiltInClient = 1;
constexpr uint32_t Full(uint16_t client, uint16_t code) {
    return uint32_t(client) << 16 | code;
}
} // namespace ZvEntityCode

/// Outcome of `ZvEntity::Draw`.
enum class ZvDrawResult : int { Drawn = 1, NoMode = 6 };

/// Abstract base of every drawable object: its name, owner, colour and flags, and the virtual interface through which the
/// database, the renderer, files, undo, snapping, grips, properties and selection treat all entities alike.
///
/// Once inserted, the entity belongs to its layer's tree; before that, to whoever made it. The virtual operations stand in a fixed
/// order (plug-ins depend on it): add new ones at the end only. 32 bytes with the virtual pointer.
class ZV_API ZvEntity {
public:
    /// Bits of the internal flag word.
    enum Flag : uint16_t {
        kReactable = 1 << 0,
        kOnGCHeap = 1 << 1,
        kErased = 1 << 2,
        kAssociated = 1 << 3,
        kSelectable = 1 << 4,
        kVisible = 1 << 5,
        kTempDraw = 1 << 6,
        kSubscriber = 1 << 7,
        kSwapped = 1 << 8,
        kSwappedOrphan = 1 << 9,
        kDirectionFlipped = 1 << 10,
        kDirectionNull = 1 << 11,
        kLineCap1 = 1 << 12,
        kLineCap2 = 1 << 13,
    };
    /// Bits of the public flag word (files, scripts).
    enum PublicFlag : uint32_t {
        kPubReactable = 1 << 0,
        kPubSelectable = 1 << 2,
        kPubVisible = 1 << 3,
        kPubErased = 1 << 4,
        kPubAssociated = 1 << 5,
        kPubSubscriber = 1 << 6,
        kPubLineCap1 = 0x100,
        kPubLineCap2 = 0x200,
        kPubKeepAsProxy = 0x80000000u, ///< only in files: an older program keeps a kind that it does not know
    };

    ZvEntity();
    ZvEntity(const ZvEntity&) = delete;
    ZvEntity& operator=(const ZvEntity&) = delete;

    /// Objects come from a slab pool without per-object headers (drawings hold millions).
    static void* operator new(size_t bytes);
    static void operator delete(void* object, size_t bytes);

    // --- virtual operations, in their fixed order; the number is the position -----------------------------------------------
    /*0*/ virtual void TransformInternal(const Mat4d& xform) = 0;
    /// Same class, geometry and appearance; no name, no owner. Never shares storage.
    /*1*/ virtual std::unique_ptr<ZvEntity> Clone() const = 0;
    /*2*/ virtual uint16_t GetEntityCode() const = 0;
    /*3*/ virtual uint16_t GetClientCode() const = 0;
    /// The class's display name, English.
    /*4*/ virtual XStringW VerbalName() const = 0;
    /*5*/ virtual size_t SizeOf() const = 0;
    /// Compacts storage; `ownBlock`: into a block of the entity's own even when it lies in an arena.
    /*6*/ virtual void Repack(bool ownBlock);
    /*7*/ virtual void GC_Mark(ZvHeapMarks& marks) const;
    /// Flat copy for swapping and the clipboard: the entity's file record. False when `size` is below SerializeHardSize(), or
    /// when the entity has no drawing. ZvEntityRecords reads it back.
    /*8*/ virtual bool SerializeHard(uint8_t* buffer, size_t size) const;
    /*9*/ virtual size_t SerializeHardSize() const;
    /// Turns storage that is shared (an arena) into the entity's own. No-op in the base.
    /*10*/ virtual void DeserializeHard();
    /*11*/ virtual ZvBounds2D Bounds2D(const ZvScaleSetup& scale) const;
    /*12*/ virtual ZvBounds2D Bounds2D() const = 0;
    /*13*/ virtual ZvBounds3D Bounds3D(const ZvScaleSetup& scale) const;
    /*14*/ virtual ZvBounds3D Bounds3D() const = 0;
    /*15*/ virtual bool IsViewScaleDependent() const;
    /*16*/ virtual bool IsUntouchable() const;
    /*17*/ virtual void PreviewAssociateModification();
    /*18*/ virtual void SetUserVisibleName(const XStringW& name);
    /// Normal x, y, z and constant w of the plane that the entity lies in: n.p + w = 0.
    /*19*/ virtual Vec4d ObjectPlane() const;
    /*20*/ virtual void CloneFrom(const ZvEntity& other);
    /*21*/ virtual bool IsAppearanceEqual(const ZvEntity& other) const;
    /*22*/ virtual void CloneAppearanceFrom(const ZvEntity& other);
    /*23*/ virtual ~ZvEntity();
    /*24*/ virtual void DrawGDI(ZvRenderContext& context) const;
    /*25*/ virtual void DrawRast(ZvRenderContext& context) const;
    /// Entities of one run: same class, drawn one after another. The base draws each singly.
    /*26*/ virtual void DrawRast(ZvRenderContext& context, const ZvEntity* const* batch, size_t count) const;
    /*27*/ virtual void DrawHeatmap(ZvRenderContext& context) const;
    /*28*/ virtual void DrawPdf(ZvRenderContext& context) const;
    /*29*/ virtual void RecalcBounds();
    /*30*/ virtual void GetProperties(ZvPropertyGatherer& gatherer, bool all) const;
    /*31*/ virtual void SetProperties(ZvPropertySetter& setter);
    /*32*/ virtual bool IsPropertyWritable() const;
    /*33*/ virtual ZvEntityEditor* GetEditor();
    /// Simpler entities that look the same; empty when the kind cannot be exploded.
    /*34*/ virtual ZvEntityList Explode() const;
    /*35*/ virtual void MakeUnique(const ZvPropertyGatherer& properties);
    /*36*/ virtual void Query(ZvQueryResults& results) const;
    /// Bytes held, the object included.
    /*37*/ virtual size_t MemUsage() const;
    /// Writes the record (head through NativeOutBase, then the payload). False on success, true on failure.
    /*38*/ virtual bool NativeOut(ZvNativeDesc& desc) const = 0;
    /// Reads the record that starts at the stream's position. False on success, true on failure.
    /*39*/ virtual bool NativeIn(ZvNativeDesc& desc) = 0;
    /*40*/ virtual void Notify(ZvName who, int what);
    /*41*/ virtual void AssociatesModified();
    /// Full codes that CloneAs can produce besides the entity's own.
    /*42*/ virtual void GetCloneTargets(std::vector<uint32_t>& fullCodes) const;
    /*43*/ virtual std::unique_ptr<ZvEntity> CloneAs(uint32_t fullCode) const;
    /// Appends points in XY where the two meet. flags: see ZvIntersectFlags.
    /*44*/ virtual void GetIntersectionPoints(const ZvEntity& other, std::vector<Vec3d>& points,
                                              uint32_t flags) const;
    /*45*/ virtual void TableUpdate(ZvNativeDesc& desc);
    /*46*/ virtual void TableUsage(ZvUsageTable& usage) const;
    /*47*/ virtual int GetLinearDimIndices(const Vec3d& nearPoint, int& first, int& second) const;
    /*48*/ virtual int GetLinearDimIndices(double param, int& first, int& second) const;
    /*49*/ virtual bool GetLinearDimPoint(int index, Vec3d& point) const;
    /*50*/ virtual bool GetLinearDimPoint(double param, Vec3d& point) const;
    /*51*/ virtual bool GetLinearDimPoint_SegmentA(double param, Vec3d& point) const;
    /*52*/ virtual bool GetLinearDimPoint_SegmentB(double param, Vec3d& point) const;
    /*53*/ virtual void GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*54*/ virtual void GetSnapsEdge(const Vec3d& nearPoint, double radius, ZvSnaps& snaps) const;
    /*55*/ virtual void GetSnapsCenter(const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*56*/ virtual void GetSnapsMidPoint(const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*57*/ virtual void GetSnapsInsertPoint(const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*58*/ virtual void GetSnapsTangent(const Vec3d& from, const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*59*/ virtual void GetSnapsPerp(const Vec3d& from, const ZvBounds2D& window, ZvSnaps& snaps) const;
    /*60*/ virtual void GetContextMenu(ZvMenu& menu) const;
    /// True when the entity handled the item.
    /*61*/ virtual bool OnContextMenuClick(const Vec3d& point, int menuId, ZvSelection* selection);
    /*62*/ virtual void OnDoubleClick(const Vec3d& point);
    /*63*/ virtual bool IsLineEntity() const;
    /*64*/ virtual ZvLineEntity* ToLineEntity();
    /*65*/ virtual bool IsFilledEntity() const;
    /*66*/ virtual ZvFilledEntity* ToFilledEntity();
    /*67*/ virtual bool IsPointEnt() const;
    /*68*/ virtual ZvPointEnt* ToPointEnt();
    /*69*/ virtual bool IsCircle() const;
    /*70*/ virtual ZvCircle* ToCircle();
    /*71*/ virtual bool IsArc() const;
    /*72*/ virtual bool IsInsert() const;
    /*73*/ virtual ZvInsert* ToInsert();
    /*74*/ virtual bool IsXLine() const;
    /*75*/ virtual ZvXLine* ToXLine();
    /*76*/ virtual bool IsMultiPoint() const;
    /*77*/ virtual ZvMultiPoint* ToMultiPoint();
    /*78*/ virtual bool IsBitmap() const;
    /*79*/ virtual ZvBitmap* ToBitmap();
    /*80*/ virtual bool IsArrow() const;
    /*81*/ virtual ZvArrow* ToArrow();
    /*82*/ virtual bool IsRectangle() const;
    /*83*/ virtual ZvRectangle* ToRectangle();
    /*84*/ virtual bool IsText() const;
    /*85*/ virtual ZvText* ToText();
    /*86*/ virtual bool IsLogicalPoint() const;
    /*87*/ virtual bool GetLogicalPoint(Vec4d& point) const;
    /*88*/ virtual bool SetLogicalPoint(const Vec4d& point);
    /// True for linear kinds; the out values are then set.
    /*89*/ virtual bool IsLineVectorEntity(int* minVertices, int* maxVertices, bool* closed) const;
    /*90*/ virtual void LineVectorGetVertices(dvect<Vec4d>& vertices) const;
    /*91*/ virtual int LineVectorGetVertexCount() const;
    /*92*/ virtual bool LineVectorSetVertices(const dvect<Vec4d>& vertices);
    /*93*/ virtual bool IsMLVEntity() const;
    /*94*/ virtual int MLVGetPartCount() const;
    /*95*/ virtual int MLVGetVertexCount() const;
    /*96*/ virtual bool MLVGetPart(int part, dvect<Vec4d>& vertices, bool* closed) const;
    /// Vertex count of the part, -1 when there is no such part. Either out value may be null.
    /*97*/ virtual int MLVGetPartInfo(int part, bool* closed, int* depth) const;
    /// The part that directly encloses this one, -1 for an outermost ring.
    /*98*/ virtual int MLVGetPartParent(int part) const;
    /*99*/ virtual void MLVGetLinearVertices(dvect<Vec4d>& vertices) const;
    /*100*/ virtual bool MLVSetLinearVertices(const dvect<Vec4d>& vertices);
    /*101*/ virtual bool MLVAddPart(const dvect<Vec4d>& vertices, bool closed);
    /*102*/ virtual bool MLVDeletePart(int part);
    /*103*/ virtual bool MLVSetPart(int part, const dvect<Vec4d>& vertices, bool closed);
    /*104*/ virtual bool MLVSetParts(const std::vector<dvect<Vec4d>>& parts, const std::vector<bool>& closed);
    /*105*/ virtual bool MLVGetClosestSegment(const Vec3d& point, ZvClosest& closest) const;
    /*106*/ virtual bool MLVGetClosestVertex(const Vec3d& point, ZvClosest& closest) const;
    /*107*/ virtual bool MLVGetClosestPart(const Vec3d& point, ZvClosest& closest) const;
    /*108*/ virtual void GetGrips(ZvGrips& grips) const;
    /// What the entity would be after the grip moved (for drawing while dragging); null when grips are not supported.
    /*109*/ virtual std::unique_ptr<ZvEntity> PreviewGripChange(int gripId, const Vec3d& to) const;
    /*110*/ virtual bool UpdateByGrip(int gripId, const Vec3d& to);
    /// Distance from a pick ray in world units; a huge number (9e90) when there is no geometry.
    /*111*/ virtual double DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const;
    /*112*/ virtual ZvOccupancy InteriorTest(const Ray3d& ray) const;
    /*113*/ virtual bool AllowSingleClickSelectInside() const;
    /*114*/ virtual bool ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const;
    /// Direction (unit, XY) along the geometry at its point closest to `at`.
    /*115*/ virtual bool GetGeomDir(const Vec3d& at, Vec3d& direction) const;
    /*116*/ virtual double GetArea() const;
    /*117*/ virtual double GetCircumference() const;
    /*118*/ virtual void PostDrawingLoadCleanup();
    /*119*/ virtual void NotifyDrawingCoordinateSystemChanged();
    /*120*/ virtual void PostBlockLoadCleanup();
    /*121*/ virtual void UntouchableDelayLoad();
    /// Called once after construction through the user interface or an importer, before insertion.
    /*122*/ virtual void Finalize();
    /// False with the reason when the entity must not be inserted.
    /*123*/ virtual bool OkForInsertion(XStringW* reason) const;
    /*124*/ virtual bool IsHeavyWeight() const;
    /*125*/ virtual XStringW GetUserVisibleName() const;
    /*126*/ virtual bool UntouchableGetChecksum(uint64_t& checksum) const;
    /// Exact relation of the geometry to a window in the XY plane.
    /*127*/ virtual ZvClipResult ClipTest(const ZvBounds2D& window) const;
    /*128*/ virtual bool IsGeometryEqual_Internal(const ZvEntity& other,
                                                  const ZvGeometryCompare& parameters) const = 0;

    // --- identity and flags ------------------------------------------------------------------------------------------------
    ZvName Name() const { return m_name; }
    uint32_t Name32() const { return m_name; }
    /// For the name table and loaders.
    void SetName32(uint32_t name) { m_name = name; }
    uint32_t GetFullCode() const { return ZvEntityCode::Full(GetClientCode(), GetEntityCode()); }
    uint32_t ParentSpatialNode() const { return m_parentSpatialNode; }
    void SetParentSpatialNode(uint32_t node) { m_parentSpatialNode = node; }

    /// The public flag word.
    uint32_t GetFlags() const;
    void SetFlags(uint32_t publicFlags);
    /// The raw internal word.
    uint16_t GetFlagsMask() const { return m_flags; }
    void SetFlagsMask(uint16_t flags) { ApplyFlags(flags); }

    bool IsReactable() const { return Has(kReactable); }
    void SetReactable(bool on) { Put(kReactable, on); }
    bool IsOnGCHeap() const { return Has(kOnGCHeap); }
    void SetOnGCHeap(bool on) { Put(kOnGCHeap, on); }
    bool IsErased() const { return Has(kErased); }
    /// Returns the previous state; tells the owner only when the state changes.
    bool SetErased(bool on);
    bool IsAssociated() const { return Has(kAssociated); }
    void SetAssociated(bool on) { Put(kAssociated, on); }
    bool IsSelectable() const { return Has(kSelectable); }
    void SetSelectable(bool on) { Put(kSelectable, on); }
    bool IsVisible() const { return Has(kVisible); }
    void SetVisible(bool on);
    bool IsTempDraw() const { return Has(kTempDraw); }
    void SetTempDraw(bool on) { Put(kTempDraw, on); }
    bool IsSubscriber() const { return Has(kSubscriber); }
    void SetSubscriber(bool on) { Put(kSubscriber, on); }
    bool IsSwapped() const { return Has(kSwapped); }
    void SetSwapped(bool on) { Put(kSwapped, on); }
    bool IsSwappedOrphan() const { return Has(kSwappedOrphan); }
    void SetSwappedOrphan(bool on) { Put(kSwappedOrphan, on); }
    bool IsDirectionFlipped() const { return Has(kDirectionFlipped); }
    void SetDirectionFlipped(bool on) { Put(kDirectionFlipped, on); }
    bool IsDirectionNull() const { return Has(kDirectionNull); }
    void SetDirectionNull(bool on) { Put(kDirectionNull, on); }
    /// 0 default, 1, 2.
    int GetLineCap() const { return Has(kLineCap1) ? 1 : Has(kLineCap2) ? 2 : 0; }
    void SetLineCap(int cap);

    // --- owner ---------------------------------------------------------------------------------------------------------------
    IZvEntityOwner* Owner() const { return m_owner; }
    void SetParentBlock(IZvEntityOwner* owner) { m_owner = owner; }
    ZvBNode* ParentBlockLeaf() const;
    ZvBNode* ParentBlockRoot() const;
    bool IsInDrawing() const { return m_owner && m_owner->OwnerIsInDrawing(); }
    ZvDrawing* ParentDrawing() const { return m_owner ? m_owner->OwnerDrawing() : nullptr; }
    ZvLayer* GetLayer() const { return m_owner ? m_owner->OwnerLayer() : nullptr; }
    int GetLayerIndex() const { return m_owner ? m_owner->OwnerLayerIndex() : -1; }
    XStringW GetLayerName() const;
    /// False when not in a drawing or already there. Keeps the name.
    bool MoveToLayer(ZvLayer* layer);
    /// An entity with no owner shows "Entity is not in drawing" and returns false.
    bool RemoveAndDelete();
    void Touch();

    // --- appearance and selection --------------------------------------------------------------------------------------------
    ZvColor GetColor() const { return ZvColor(int(m_colorIndex), m_colorValue); }
    void SetColor(const ZvColor& color);
    /// By layer gives the layer's colour when the entity is in a drawing, else the stored colour.
    ZvColor ResolvedColor() const;
    bool IsSelected() const;
    /// Only for a selectable entity in a drawing with a non-null name.
    void SetSelected(bool on);
    /// While positive, SetSelected does not tell the owner.
    static void SuppressSelectionNotifications(bool on);

    // --- operations on the virtual interface -----------------------------------------------------------------------------------
    void Transform(const Mat4d& xform) { TransformInternal(xform); }
    void Translate(const Vec3d& by) { TransformInternal(Mat4d::Translation(by)); }
    bool IsGeometryEqual(const ZvEntity& other, const ZvGeometryCompare& parameters = {}) const;
    /// Dispatches by the context's mode: PDF, raster (batched) or GDI.
    ZvDrawResult Draw(ZvRenderContext& context) const;
    /// Draws at once in front of everything, bypassing batching (rubber bands, temporary entities).
    ZvDrawResult DrawInteractive(ZvRenderContext& context) const;
    /// A clone marked for temporary drawing and owned by the drawing's sink; null when not in a drawing.
    ZvEntity* CloneForTempDraw() const;
    /// Distance in XY of a point from the geometry.
    double DistanceToG(const Vec3d& point) const;
    /// Distance of two points' segment from the geometry in XY.
    double DistanceToV2(const Vec3d& a, const Vec3d& b) const;
    /// As DistanceToV for an entity extruded along Z by `height`.
    double DistanceToV_Extrude(const Ray3d& ray, double height) const;
    /// Where the ray meets the entity's object plane; false when parallel.
    bool IntersectWithPlane(const Ray3d& ray, Vec3d& point) const;
    static void IntersectMLVEntities(const ZvEntity& a, const ZvEntity& b, std::vector<Vec3d>& points);
    /// As above with open ends of `a` extended to infinity.
    static void IntersectMLVExtension(const ZvEntity& a, const ZvEntity& b, std::vector<Vec3d>& points);

protected:
    /// Writes the 30-byte record head with `extraFlags` ORed into the public flags, and counts the record for its client.
    bool NativeOutBase(ZvNativeDesc& desc, uint32_t extraFlags) const;
    bool NativeInBase(ZvNativeDesc& desc);

    bool Has(Flag flag) const { return m_flags & flag; }
    void Put(Flag flag, bool on) { m_flags = uint16_t(on ? m_flags | flag : m_flags & ~flag); }

private:
    /// Replaces the internal flag word and tells the owner what that changes.
    void ApplyFlags(uint16_t flags);

    uint32_t m_name = 0;
    uint32_t m_parentSpatialNode = 0;
    IZvEntityOwner* m_owner = nullptr;
    uint32_t m_colorValue = 0x00FFFFFF;
    int16_t m_colorIndex = -3;
    uint16_t m_flags = kReactable | kSelectable | kVisible;
};

/// Flags of GetIntersectionPoints.
enum ZvIntersectFlags : uint32_t {
    kIntersectPlain = 0,
    kIntersectExtendThis = 1, ///< open ends of this entity are extended to infinity
};
