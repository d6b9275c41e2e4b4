#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvRawCompoundProxy.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include <algorithm>

/// Owner link of the children: they see the compound's layer and drawing, the compound sees their changes.
class ZvRawCompound::ChildOwner final : public IZvEntityOwner {
public:
    explicit ChildOwner(ZvRawCompound& compound) : m_compound(compound) {}

    ZvDrawing* OwnerDrawing() const override { return m_compound.ParentDrawing(); }
    ZvLayer* OwnerLayer() const override { return m_compound.GetLayer(); }
    int OwnerLayerIndex() const override { return m_compound.GetLayerIndex(); }
    bool OwnerIsInDrawing() const override { return m_compound.IsInDrawing(); }
    bool OwnerRemove(ZvEntity* entity) override {
        return m_compound.RemoveEntity(entity).release() != nullptr; // the caller owns it from here on
    }
    bool OwnerRemoveAndDelete(ZvEntity* entity) override {
        return m_compound.RemoveEntity(entity) != nullptr;
    }
    void OwnerEntityChanged(ZvEntity*) override { m_compound.Touch(); }
    void OwnerEntityErased(ZvEntity*, bool) override { m_compound.Changed(); }
    void OwnerVisibilityChanged(ZvEntity*) override { m_compound.Touch(); }
    void OwnerBoundsChanged(ZvEntity*) override { m_compound.Changed(); }
    void OwnerSelectionChanged(ZvEntity*, bool) override {}
    void OwnerLineCapChanged(ZvEntity*) override { m_compound.Touch(); }

private:
    ZvRawCompound& m_compound;
};

ZvRawCompound::ZvRawCompound() : m_childOwner(std::make_unique<ChildOwner>(*this)) {}

ZvRawCompound::~ZvRawCompound() = default;

void ZvRawCompound::Changed() {
    m_boundsKnown = false;
    RecalcBounds();
}

// --- children --------------------------------------------------------------------------------------------------------------

void ZvRawCompound::TakeOver(std::unique_ptr<ZvEntity> entity) {
    entity->SetName32(0);
    entity->SetParentBlock(m_childOwner.get());
    m_children.push_back(std::move(entity));
}

bool ZvRawCompound::InsertEntity(std::unique_ptr<ZvEntity> entity) {
    if (!entity || entity->Owner())
        return false;
    TakeOver(std::move(entity));
    Changed();
    return true;
}

size_t ZvRawCompound::InsertEntities(ZvEntityList& entities) {
    size_t taken = 0;
    for (std::unique_ptr<ZvEntity>& entity : entities)
        if (entity && !entity->Owner()) {
            TakeOver(std::move(entity));
            ++taken;
        }
    entities.erase(std::remove(entities.begin(), entities.end(), nullptr), entities.end());
    if (taken)
        Changed();
    return taken;
}

std::unique_ptr<ZvEntity> ZvRawCompound::RemoveEntity(const ZvEntity* entity) {
    const auto found =
        std::find_if(m_children.begin(), m_children.end(),
                     [&](const std::unique_ptr<ZvEntity>& child) { return child.get() == entity; });
    if (!entity || found == m_children.end())
        return nullptr;
    std::unique_ptr<ZvEntity> removed = std::move(*found);
    m_children.erase(found);
    removed->SetParentBlock(nullptr);
    Changed();
    return removed;
}

void ZvRawCompound::RemoveAll() {
    if (m_children.empty())
        return;
    m_children.clear();
    Changed();
}

ZvBlock* ZvRawCompound::TiedBlock() const {
    const ZvDrawing* drawing = m_tie == BlockTie::None ? nullptr : ParentDrawing();
    return drawing && drawing->BlockTable() ? drawing->BlockTable()->Get(m_blockIndex) : nullptr;
}

template <class Visit>
void ZvRawCompound::ForEach(const ZvBounds2D* window, Visit&& visit) const {
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        if (!child->IsErased() && (!window || child->Bounds2D().PositiveUnion(*window)))
            visit(*child);
    const ZvBlock* block = m_visiting ? nullptr : TiedBlock();
    if (!block)
        return;
    m_visiting = true;
    if (m_tie == BlockTie::Indexed && window)
        block->Tree().ForEachInRect(*window, {}, [&](ZvEntity* entity) {
            visit(*entity);
            return true;
        });
    else
        block->Tree().ForEach([&](ZvEntity* entity) {
            if (!entity->IsErased() && (!window || entity->Bounds2D().PositiveUnion(*window)))
                visit(*entity);
        });
    m_visiting = false;
}

const ZvEntity* ZvRawCompound::GetClosestEntity(const Vec3d& point, double* distance) const {
    const ZvEntity* best = nullptr;
    double bestDistance = 0;
    ForEach(nullptr, [&](const ZvEntity& entity) {
        const double d = entity.DistanceToG(point);
        if (entity.IsVisible() && (!best || d < bestDistance))
            best = &entity, bestDistance = d;
    });
    if (best && distance)
        *distance = bestDistance;
    return best;
}

// --- block tie -------------------------------------------------------------------------------------------------------------

void ZvRawCompound::Tie(BlockTie tie, int blockIndex) {
    m_tie = blockIndex < 0 ? BlockTie::None : tie;
    m_blockIndex = blockIndex < 0 ? -1 : blockIndex;
    Changed();
}

void ZvRawCompound::SetBlockSimple(int blockIndex) {
    Tie(BlockTie::Simple, blockIndex);
}

void ZvRawCompound::SetBlockIndexed(int blockIndex) {
    Tie(BlockTie::Indexed, blockIndex);
}

void ZvRawCompound::BlockTouched() {
    Changed();
}

// --- copies ----------------------------------------------------------------------------------------------------------------

std::unique_ptr<ZvEntity> ZvRawCompound::Clone() const {
    auto copy = std::make_unique<ZvRawCompound>();
    copy->CloneFrom(*this);
    return copy;
}

void ZvRawCompound::CloneFrom(const ZvEntity& other) {
    ZvFilledEntity::CloneFrom(other);
    const auto* compound = dynamic_cast<const ZvRawCompound*>(&other);
    if (!compound || compound == this)
        return;
    m_children.clear();
    for (const std::unique_ptr<ZvEntity>& child : compound->m_children)
        TakeOver(child->Clone());
    m_proxy = compound->m_proxy ? std::make_unique<Proxy>(*compound->m_proxy) : nullptr;
    m_tie = compound->m_tie;
    m_blockIndex = compound->m_blockIndex;
    m_boundsKnown = false;
}

ZvEntityList ZvRawCompound::Explode() const {
    ZvEntityList pieces;
    ForEach(nullptr, [&](const ZvEntity& entity) { pieces.push_back(entity.Clone()); });
    return pieces;
}

/// Copies what the tied block shows into the compound itself, and so on for compounds in it; blocks in `chain` are on show already.
void ZvRawCompound::MakeBlockOwn(std::vector<const ZvBlock*>& chain) {
    const ZvBlock* block = TiedBlock();
    if (!block)
        return;
    m_tie = BlockTie::None;
    m_blockIndex = -1;
    if (std::find(chain.begin(), chain.end(), block) != chain.end())
        return;
    chain.push_back(block);
    block->Tree().ForEach([&](ZvEntity* entity) {
        if (!entity->IsErased())
            TakeOver(entity->Clone());
    });
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        if (auto* compound = dynamic_cast<ZvRawCompound*>(child.get()))
            compound->MakeBlockOwn(chain);
    chain.pop_back();
}

void ZvRawCompound::TransformInternal(const Mat4d& xform) {
    if (m_tie != BlockTie::None) { // a block has no place of its own here
        std::vector<const ZvBlock*> chain;
        MakeBlockOwn(chain);
    }
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->Transform(xform);
    Changed();
}

// --- identity, memory, references --------------------------------------------------------------------------------------------

uint16_t ZvRawCompound::GetEntityCode() const {
    return m_proxy ? m_proxy->type : uint16_t(ZvEntityCode::RawCompound);
}

uint16_t ZvRawCompound::GetClientCode() const {
    return m_proxy ? m_proxy->clientId : ZvEntityCode::kBuiltInClient;
}

XStringW ZvRawCompound::VerbalName() const {
    if (m_proxy && m_proxy->client) {
        const auto name = m_proxy->client->typeNames.find(m_proxy->type);
        if (name != m_proxy->client->typeNames.end() && !name->second.empty())
            return XStringW::FromUtf8(name->second);
    }
    return XStringW(u"Raw Compound");
}

size_t ZvRawCompound::MemUsage() const {
    size_t bytes = sizeof(*this) + sizeof(ChildOwner) + m_children.capacity() * sizeof(m_children[0]);
    if (m_proxy)
        bytes += sizeof(Proxy) + m_proxy->record.capacity();
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        bytes += child->MemUsage();
    return bytes;
}

void ZvRawCompound::GC_Mark(ZvHeapMarks& marks) const {
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->GC_Mark(marks);
}

void ZvRawCompound::Repack(bool ownBlock) {
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->Repack(ownBlock);
}

void ZvRawCompound::DeserializeHard() {
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->DeserializeHard();
}

void ZvRawCompound::Query(ZvQueryResults& results) const {
    ZvFilledEntity::Query(results);
    if (m_proxy)
        results.lines.emplace_back(XStringW(u"Module"),
                                   m_proxy->client ? XStringW::FromUtf8(m_proxy->client->name) : XStringW());
    else
        results.lines.emplace_back(XStringW(u"Objects"), XStringW::Format("%d", int(m_children.size())));
}

void ZvRawCompound::TableUsage(ZvUsageTable& usage) const {
    ZvFilledEntity::TableUsage(usage);
    if (m_tie != BlockTie::None)
        usage.Use(ZvTableCode::Full(ZvTableCode::Block), m_blockIndex);
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->TableUsage(usage);
}

void ZvRawCompound::TableUpdate(ZvNativeDesc& desc) {
    ZvFilledEntity::TableUpdate(desc);
    if (m_tie != BlockTie::None) {
        m_blockIndex = desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::Block), m_blockIndex, true);
        if (m_blockIndex < 0)
            m_tie = BlockTie::None;
    }
    for (const std::unique_ptr<ZvEntity>& child : m_children)
        child->TableUpdate(desc);
    m_boundsKnown = false;
}

bool ZvRawCompound::OkForInsertion(XStringW* reason) const {
    if (m_proxy)
        return true;
    if (m_children.empty() && m_tie == BlockTie::None) {
        if (reason)
            *reason = ZvStrings::GetW(ZvStr::EmptyCompound);
        return false;
    }
    return std::all_of(m_children.begin(), m_children.end(),
                       [&](const std::unique_ptr<ZvEntity>& child) { return child->OkForInsertion(reason); });
}

bool ZvRawCompound::IsGeometryEqual_Internal(const ZvEntity& other,
                                             const ZvGeometryCompare& parameters) const {
    const auto& compound = static_cast<const ZvRawCompound&>(other);
    if (m_proxy || compound.m_proxy)
        return m_proxy && compound.m_proxy && m_proxy->SamePayload(*compound.m_proxy);
    return m_tie == compound.m_tie && m_blockIndex == compound.m_blockIndex &&
           std::equal(m_children.begin(), m_children.end(), compound.m_children.begin(),
                      compound.m_children.end(),
                      [&](const auto& a, const auto& b) { return a->IsGeometryEqual(*b, parameters); });
}

// --- geometry --------------------------------------------------------------------------------------------------------------

ZvBounds2D ZvRawCompound::Bounds2D() const {
    return Bounds3D().ToBounds2D();
}

ZvBounds3D ZvRawCompound::Bounds3D() const {
    if (!m_boundsKnown) {
        m_childBounds.Reset();
        for (const std::unique_ptr<ZvEntity>& child : m_children)
            if (!child->IsErased())
                m_childBounds.ExpandToFit(child->Bounds3D());
        m_boundsKnown = true;
    }
    ZvBounds3D bounds = m_childBounds;
    const ZvBlock* block = m_visiting ? nullptr : TiedBlock();
    if (block) {
        m_visiting = true;
        bounds.ExpandToFit(block->Bounds());
        m_visiting = false;
    }
    return bounds;
}

ZvBounds3D ZvRawCompound::Bounds3D(const ZvScaleSetup& scale) const {
    ZvBounds3D bounds;
    ForEach(nullptr, [&](const ZvEntity& entity) { bounds.ExpandToFit(entity.Bounds3D(scale)); });
    return bounds;
}

bool ZvRawCompound::IsViewScaleDependent() const {
    return std::any_of(m_children.begin(), m_children.end(),
                       [](const std::unique_ptr<ZvEntity>& child) { return child->IsViewScaleDependent(); });
}

double ZvRawCompound::DistanceToV(const Ray3d& ray, const ZvScaleSetup* scale) const {
    double best = 9e90;
    ForEach(nullptr, [&](const ZvEntity& entity) {
        if (entity.IsVisible())
            best = std::min(best, entity.DistanceToV(ray, scale));
    });
    return best;
}

ZvOccupancy ZvRawCompound::InteriorTest(const Ray3d& ray) const {
    ZvOccupancy result = ZvOccupancy::Outside;
    ForEach(nullptr, [&](const ZvEntity& entity) {
        if (!entity.IsVisible() || result == ZvOccupancy::Inside)
            return;
        const ZvOccupancy one = entity.InteriorTest(ray);
        if (one != ZvOccupancy::Outside)
            result = one;
    });
    return result;
}

bool ZvRawCompound::ClosestPt(const Vec3d& point, const Vec3d& reference, ZvClosest& result) const {
    bool found = false;
    ForEach(nullptr, [&](const ZvEntity& entity) {
        ZvClosest one;
        if (entity.IsVisible() && entity.ClosestPt(point, reference, one) &&
            (!found || one.distance < result.distance)) {
            result = one;
            result.part = result.index = -1; // numbers of the child, not of the compound
            found = true;
        }
    });
    return found;
}

bool ZvRawCompound::GetGeomDir(const Vec3d& at, Vec3d& direction) const {
    const ZvEntity* closest = GetClosestEntity(at);
    return closest && closest->GetGeomDir(at, direction);
}

double ZvRawCompound::GetArea() const {
    double sum = 0;
    ForEach(nullptr, [&](const ZvEntity& entity) { sum += entity.GetArea(); });
    return sum;
}

double ZvRawCompound::GetCircumference() const {
    double sum = 0;
    ForEach(nullptr, [&](const ZvEntity& entity) { sum += entity.GetCircumference(); });
    return sum;
}

ZvClipResult ZvRawCompound::ClipTest(const ZvBounds2D& window) const {
    bool some = false, allInside = true, allOutside = true;
    ForEach(nullptr, [&](const ZvEntity& entity) {
        const ZvClipResult one = entity.ClipTest(window);
        some = true;
        allInside &= one == ZvClipResult::Inside;
        allOutside &= one == ZvClipResult::Outside;
    });
    if (!some || allOutside)
        return ZvClipResult::Outside;
    return allInside ? ZvClipResult::Inside : ZvClipResult::Crosses;
}

void ZvRawCompound::GetSnapsVertices(const ZvBounds2D& window, ZvSnaps& snaps) const {
    ForEach(&window, [&](const ZvEntity& entity) { entity.GetSnapsVertices(window, snaps); });
}

void ZvRawCompound::GetSnapsEdge(const Vec3d& nearPoint, double radius, ZvSnaps& snaps) const {
    ForEach(nullptr, [&](const ZvEntity& entity) { entity.GetSnapsEdge(nearPoint, radius, snaps); });
}

void ZvRawCompound::GetSnapsCenter(const ZvBounds2D& window, ZvSnaps& snaps) const {
    ForEach(nullptr, [&](const ZvEntity& entity) { entity.GetSnapsCenter(window, snaps); });
}

void ZvRawCompound::GetSnapsMidPoint(const ZvBounds2D& window, ZvSnaps& snaps) const {
    ForEach(&window, [&](const ZvEntity& entity) { entity.GetSnapsMidPoint(window, snaps); });
}

// --- drawing ---------------------------------------------------------------------------------------------------------------

void ZvRawCompound::DrawGDI(ZvRenderContext& context) const {
    ForEach(nullptr, [&](const ZvEntity& entity) {
        if (entity.IsVisible())
            entity.DrawGDI(context);
    });
}

void ZvRawCompound::DrawRast(ZvRenderContext& context) const {
    ForEach(nullptr, [&](const ZvEntity& entity) {
        if (entity.IsVisible())
            entity.DrawRast(context);
    });
}

void ZvRawCompound::DrawPdf(ZvRenderContext& context) const {
    ForEach(nullptr, [&](const ZvEntity& entity) {
        if (entity.IsVisible())
            entity.DrawPdf(context);
    });
}
