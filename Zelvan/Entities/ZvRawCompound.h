#pragma once
#include "Zelvan/Entities/IIndexParent.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include "Zelvan/ZvNativeDesc.h"
#include <cstdint>
#include <memory>
#include <vector>

class ZvBlock;

/// A group of child entities kept in the entity itself, in front of which it acts as one. It can be tied to a block record,
/// whose entities it then shows beside its own: simply (every query looks at each of them) or through the block's
/// spatial tree. Children are owned, answer this entity's layer and drawing, and have no names.
///
/// It is also the keeper of records whose kind or client the program does not know (a proxy): it holds such a record
/// byte for byte, has no geometry, and answers the record's own client and type.
class ZV_API ZvRawCompound : public ZvFilledEntity, public IIndexParent {
public:
    enum class BlockTie : uint8_t { None = 0, Simple = 1, Indexed = 2 };

    ZvRawCompound();
    ~ZvRawCompound() override;

    // --- children --------------------------------------------------------------------------------------------------------------
    /// Takes the entity. Null and entities that have an owner are refused.
    bool InsertEntity(std::unique_ptr<ZvEntity> entity);
    /// Those that were refused stay in the list.
    size_t InsertEntities(ZvEntityList& entities);
    /// Gives the child back; null when it is none of ours.
    std::unique_ptr<ZvEntity> RemoveEntity(const ZvEntity* entity);
    void RemoveAll();
    const ZvEntityList& GetEntityVect() const { return m_children; }
    /// The child (or entity of the block) closest to the point in XY, null when there is none.
    const ZvEntity* GetClosestEntity(const Vec3d& point, double* distance = nullptr) const;

    // --- block tie -------------------------------------------------------------------------------------------------------------
    /// `blockIndex` in the drawing's block table, -1: none. What the block holds shows where it is: a compound that is
    /// transformed while it has a drawing takes copies of it and gives up the tie; without a drawing only children move.
    void SetBlockSimple(int blockIndex);
    void SetBlockIndexed(int blockIndex);
    void BlockTouched() override;
    BlockTie CheckBlockType() const { return m_tie; }
    int BlockIndex() const { return m_blockIndex; }

    // --- proxy -----------------------------------------------------------------------------------------------------------------
    bool IsProxy() const { return m_proxy != nullptr; }
    /// Makes this the keeper of the record (current head form, 30 bytes, first).
    void SetProxyRecord(std::vector<uint8_t> record, std::shared_ptr<ZvNativeDesc::Client> client);
    /// The whole record; empty when this is no proxy.
    const std::vector<uint8_t>& ProxyRecord() const;
    /// The client record of the file that the proxy came from; null when this is no proxy or the file named none.
    const ZvNativeDesc::Client* ProxyClient() const;

    // --- entity ----------------------------------------------------------------------------------------------------------------
    std::unique_ptr<ZvEntity> Clone() const override;
    void CloneFrom(const ZvEntity& other) override;
    uint16_t GetEntityCode() const override;
    uint16_t GetClientCode() const override;
    XStringW VerbalName() const override;
    size_t SizeOf() const override { return sizeof(*this); }
    size_t MemUsage() const override;
    void GC_Mark(ZvHeapMarks& marks) const override;
    void Repack(bool ownBlock) override;
    void DeserializeHard() override;
    void TransformInternal(const Mat4d& xform) override;
    using ZvFilledEntity::Bounds2D;
    using ZvFilledEntity::Bounds3D;
    ZvBounds2D Bounds2D() const override;
    ZvBounds3D Bounds3D() const override;
    ZvBounds3D Bounds3D(const ZvScaleSetup& scale) const override;
    bool IsViewScaleDependent() const override;
    void DrawGDI(ZvRenderContext& context) const override;
    using ZvFilledEntity::DrawRast;
    void DrawRast(ZvRenderContext& context) const override;
    void DrawPdf(ZvRenderContext& context) const override;
    ZvEntityList Explode() const override;
    void Query(ZvQueryResults& results) const override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;
    void GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    void GetSnapsEdge(const Vec3d& nearPoint, double radius, ZvSnaps& snaps) const override;
    void GetSnapsCenter(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    void GetSnapsMidPoint(const ZvBounds2D& window, ZvSnaps& snaps) const override;
    double DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const override;
    ZvOccupancy InteriorTest(const Ray3d& ray) const override;
    bool ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const override;
    bool GetGeomDir(const Vec3d& at, Vec3d& direction) const override;
    double GetArea() const override;
    double GetCircumference() const override;
    ZvClipResult ClipTest(const ZvBounds2D& window) const override;
    bool OkForInsertion(XStringW* reason) const override;
    bool IsGeometryEqual_Internal(const ZvEntity& other, const ZvGeometryCompare& parameters) const override;
    bool NativeOut(ZvNativeDesc& desc) const override;
    bool NativeIn(ZvNativeDesc& desc) override;

protected:
    /// The compound's own fields (line, fill, block tie) after the record head, and its children where wanted; what a subclass
    /// adds follows. Both true on success, unlike NativeOut and NativeIn.
    bool WriteCompoundFields(ZvNativeDesc& desc, bool children) const;
    bool ReadCompoundFields(ZvNativeDesc& desc);

private:
    struct Proxy;
    class ChildOwner;
    /// Every entity shown: the children, then those of the tied block whose bounds meet the window (all for null).
    template <class Visit>
    void ForEach(const ZvBounds2D* window, Visit&& visit) const;
    ZvBlock* TiedBlock() const;
    void MakeBlockOwn(std::vector<const ZvBlock*>& chain);
    void TakeOver(std::unique_ptr<ZvEntity> entity);
    void Changed();
    void Tie(BlockTie tie, int blockIndex);
    bool WriteProxy(ZvNativeDesc& desc) const;

    ZvEntityList m_children;
    std::unique_ptr<ChildOwner> m_childOwner;
    std::unique_ptr<Proxy> m_proxy;
    mutable ZvBounds3D m_childBounds;
    mutable bool m_boundsKnown = false;
    mutable bool m_visiting = false; ///< guards against blocks that show themselves
    BlockTie m_tie = BlockTie::None;
    int32_t m_blockIndex = -1;
};
