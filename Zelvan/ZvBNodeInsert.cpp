// Insertion and removal of single entities.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodePair.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Platform/CrashDump.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr size_t kAhead = 6;

void Prefetch(const ZvEntity* entity) {
#if defined(__GNUC__)
    __builtin_prefetch(entity, 1);
#else
    (void)entity;
#endif
}

/// Share of the box's X extent by which the halves of a split node overlap on each side of the cut.
constexpr double kBand = 0.02;
/// Boxes are not halved below this share of their coordinates, nor below this size: halves would not get smaller.
constexpr double kSmallestShare = 1e-13;
constexpr double kSmallestBox = 1e-150;

} // namespace

ZvBNode::Cut::Cut(const ZvBounds3D& box) {
    const double width = box.maxX - box.minX, height = box.maxY - box.minY, band = kBand * width;
    acrossX = width > height;
    const double middle = acrossX ? box.minX + width / 2 : box.minY + height / 2;
    high = std::min(middle + band, acrossX ? box.maxX : box.maxY);
    low = std::max(middle - band, acrossX ? box.minX : box.minY);
}

bool ZvBNode::CanBePlaced(const ZvBounds3D& b) {
    return b.minX <= b.maxX && b.minY <= b.maxY && b.minX > -kZvBoundsLimit && b.minY > -kZvBoundsLimit &&
           b.maxX < kZvBoundsLimit && b.maxY < kZvBoundsLimit;
}

uint32_t ZvBNode::PackBox(const ZvNodeGrid& grid, const ZvBounds3D& b) {
    return CanBePlaced(b) ? grid.Pack(b.minX, b.minY, b.maxX, b.maxY) : ZvNodeGrid::kLoose;
}

void ZvBNode::List(ZvEntity* entity, const ZvBounds3D& bounds) {
    if (m_list.HasNoBlock())
        m_list.SetGrid(ZvNodeGrid(m_box));
    m_list.Add(entity, PackBox(m_list.Grid(), bounds));
}

bool ZvBNode::RefuseInsertion(const ZvEntity* entity) {
    if (!entity) {
        ZvPlatform::WriteCrashDump(R"(c:\zelvan-zvbnode_null.mdmp)");
        ZvErrors::Report(ZvErrorCode::NullInSplit, "ZvBNode.Insert");
        return true;
    }
    if (entity->ParentBlockLeaf()) {
        ZvErrors::Report(ZvErrorCode::NullInSplit, "ZvBNode.Insert: the entity is in a tree already");
        return true;
    }
    return false;
}

bool ZvBNode::Insert(ZvEntity* entity) {
    if (RefuseInsertion(entity))
        return false;
    RootBlock()->InsertAtRoot(entity, entity->Bounds3D());
    TouchContainer(entity);
    return true;
}

void ZvBNode::InsertAtRoot(ZvEntity* entity, const ZvBounds3D& bounds) {
    if (!CanBePlaced(bounds)) {
        ++m_root->insertionCounter;
        Keep(entity, bounds);
        return;
    }
    Accomodate(bounds);
    ZvBNode* start = m_root->lastInsertionNode;
    if (start && start != this && start->m_box.IsInsideMe(bounds)) {
        if (!entity->IsErased())
            start->ExtendAncestors(bounds, entity->IsVisible());
    } else {
        start = this;
        ++m_root->insertionCounter;
    }
    start->InsertInternal(entity, bounds);
}

void ZvBNode::InsertInternal(ZvEntity* entity, const ZvBounds3D& bounds) {
    const bool counts = !entity->IsErased(), visible = entity->IsVisible();
    ZvBNode* node = this;
    for (;;) {
        if (!node->m_children && node->MaySplit(node->m_list.Size()) && !node->HoldsOnly(bounds))
            node->Split();
        if (!node->m_children)
            break;
        const int side = node->ChildHolding(bounds);
        if (side < 0)
            break;
        if (counts)
            node->Extend(bounds, visible);
        node = &node->m_children->child[side];
    }
    node->Keep(entity, bounds);
}

void ZvBNode::Keep(ZvEntity* entity, const ZvBounds3D& bounds) {
    entity->SetParentBlock(this);
    entity->SetParentSpatialNode(uint32_t(m_nodeId));
    m_root->widestLine.Add(*entity);
    if (m_allEqual)
        m_allEqual = m_list.Size() > 0 && m_list.Get(0)->Bounds2D() == bounds.ToBounds2D();
    List(entity, bounds);
    if (CanBePlaced(bounds)) {
        WidenZ(bounds);
        m_root->lastInsertionNode = this;
    }
    if (!entity->IsErased())
        Extend(bounds, entity->IsVisible());
    if (entity->IsErased() || !entity->IsVisible())
        m_mixed = true;
    m_drawSetInvalid = true;
    ++m_changeCounter;
}

void ZvBNode::Extend(const ZvBounds3D& bounds, bool visible) {
    if (bounds.minX > bounds.maxX || bounds.minY > bounds.maxY)
        return;
    if (!visible && !HasOwnVisible()) {
        Rare& rare = NeedRare();
        rare.visible = m_content;
        rare.ownVisible = true;
    } else if (visible && HasOwnVisible()) {
        m_rare->visible.ExpandToFit(bounds);
    }
    if (m_content.IsInsideMe(bounds))
        return;
    m_content.ExpandToFit(bounds);
    TellParentContent();
}

void ZvBNode::TellParentContent() {
    if (m_parent)
        m_parent->m_childBox[ChildNumber()].Set(m_content);
}

void ZvBNode::ChildBox::Set(const ZvBounds3D& b) {
    const auto roundDown = [](double v) {
        constexpr double kMost = 3.4e38;
        if (!(std::abs(v) < kMost))
            return v < 0 ? -INFINITY : INFINITY;
        const float f = float(v);
        return double(f) > v ? std::nextafter(f, -INFINITY) : f;
    };
    if (b.minX > b.maxX || b.minY > b.maxY) {
        *this = {};
        return;
    }
    side[0] = roundDown(b.minX), side[1] = roundDown(b.minY);
    side[2] = roundDown(-b.maxX), side[3] = roundDown(-b.maxY);
}

void ZvBNode::ExtendByChild(const ZvBNode& child) {
    if (child.HasOwnVisible() && !HasOwnVisible()) {
        NeedRare().visible = m_content;
        m_rare->ownVisible = true;
    }
    if (HasOwnVisible())
        m_rare->visible.ExpandToFit(child.HasOwnVisible() ? child.m_rare->visible : child.m_content);
    m_content.ExpandToFit(child.m_content);
    m_childBox[child.ChildNumber()].Set(child.m_content);
}

void ZvBNode::ExtendAncestors(const ZvBounds3D& bounds, bool visible) {
    for (ZvBNode* node = m_parent; node; node = node->m_parent)
        node->Extend(bounds, visible);
}

bool ZvBNode::MaySplit(size_t entities) const {
    return entities >= size_t(m_root->maxEntitiesPerNode) && entities > size_t(m_depth) * 2 && CanBeHalved();
}

bool ZvBNode::CanBeHalved() const {
    const double extent = std::max(m_box.Width(), m_box.Height());
    const double reach = std::max({-m_box.minX, m_box.maxX, -m_box.minY, m_box.maxY});
    return extent > kSmallestBox && extent > reach * kSmallestShare;
}

bool ZvBNode::HoldsOnlyEqualBounds() const {
    if (m_allEqual)
        return true;
    // Different boxes in steps settle it without a look at the entities.
    const uint32_t* boxes = m_list.Boxes();
    for (size_t i = 1; i < m_list.Size(); ++i)
        if (boxes[i] != boxes[0])
            return false;
    const auto equal = [first = m_list.Get(0)->Bounds2D()](const ZvEntity* e) {
        return e->Bounds2D() == first;
    };
    m_allEqual = std::all_of(m_list.begin(), m_list.end(), equal);
    return m_allEqual;
}

bool ZvBNode::HoldsOnly(const ZvBounds3D& bounds) const {
    return m_list.Size() > 0 && HoldsOnlyEqualBounds() && m_list.Get(0)->Bounds2D() == bounds.ToBounds2D();
}

void ZvBNode::SplitIfOverfull() {
    if (!m_children && m_list.Size() > 1 && MaySplit(m_list.Size() - 1) && !HoldsOnlyEqualBounds())
        Split();
}

void ZvBNode::Halve(const ZvBounds3D& box, ZvBounds3D& first, ZvBounds3D& second) {
    const Cut cut(box);
    first = second = box;
    (cut.acrossX ? first.maxX : first.maxY) = cut.high;
    (cut.acrossX ? second.minX : second.minY) = cut.low;
    first.minZ = second.minZ = kZvBoundsLimit;
    first.maxZ = second.maxZ = -kZvBoundsLimit;
}

void ZvBNode::MakeChildren() {
    m_children = std::make_unique<ZvBNodePair>(*this);
    m_childSplit = 0;
    if (m_parent)
        m_parent->m_childSplit |= uint8_t(1 << ChildNumber());
    ZvBNode(&child)[2] = m_children->child;
    Halve(m_box, child[0].m_box, child[1].m_box);
    m_childBox[0] = m_childBox[1] = {};
    ++m_changeCounter;
}

void ZvBNode::Split() {
    MakeChildren();
    ZvBNodeList old;
    old.Swap(m_list);
    m_allEqual = false;
    const Cut cut(m_box);
    for (size_t i = 0; i < old.Size(); ++i) {
        ZvEntity* entity = old.Get(i);
        if (i + kAhead < old.Size())
            Prefetch(old.Get(i + kAhead));
        if (!entity) {
            ZvErrors::Report(ZvErrorCode::NullInSplit, "Split");
            continue;
        }
        const ZvBounds3D bounds = entity->Bounds3D();
        const int side = old.Box(i) != ZvNodeGrid::kLoose ? cut.ChildHolding(bounds) : -1;
        if (side < 0)
            List(entity, bounds);
        else
            m_children->child[side].Keep(entity, bounds);
    }
    for (ZvBNode& child : m_children->child)
        child.SplitIfOverfull();
    CollapseEmptyChildren();
    m_drawSetInvalid = true;
    SetBoundsDirty();
}

void ZvBNode::CollapseEmptyChildren() {
    for (ZvBNode& child : m_children->child)
        if (child.m_box.minZ > child.m_box.maxZ)
            child.m_box.minZ = child.m_box.maxZ = m_box.minZ + (m_box.maxZ - m_box.minZ) / 2;
}

// --- removal -----------------------------------------------------------------------------------------------------------------

bool ZvBNode::RemoveMe(ZvEntity* entity) {
    ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr;
    if (!node || node->m_root != m_root || !node->Detach(entity))
        return false;
    TouchContainer(entity);
    return true;
}

bool ZvBNode::Detach(ZvEntity* entity) {
    if (!DataErase(entity))
        return false;
    entity->SetParentBlock(nullptr);
    entity->SetParentSpatialNode(0);
    ++m_changeCounter;
    m_drawSetInvalid = true;
    SetBoundsDirty();
    return true;
}

bool ZvBNode::DeleteMe(ZvEntity* entity) {
    if (!RemoveMe(entity))
        return false;
    ForgetName(entity);
    delete entity;
    return true;
}

void ZvBNode::ForgetName(ZvEntity* entity) const {
    ZvDrawing* drawing = Drawing();
    if (drawing && !drawing->Destroying() && !entity->Name().IsNull())
        drawing->Remove(entity);
}

void ZvBNode::DeleteAll() {
    dvect<ZvEntity*> entities;
    RootBlock()->EnumAll(entities);
    ClearAll();
    for (ZvEntity* entity : entities) {
        ForgetName(entity);
        delete entity;
    }
}

void ZvBNode::ClearAll() {
    if (!IsRoot())
        return RootBlock()->ClearAll();
    ForEach([](ZvEntity* entity) {
        entity->SetParentBlock(nullptr);
        entity->SetParentSpatialNode(0);
    });
    DropShape();
    m_box.Reset();
    TouchContainer(nullptr);
}

void ZvBNode::DropShape() {
    m_children.reset();
    m_list.Reset();
    m_rare.reset();
    m_content.Reset();
    m_dirty = m_mixed = m_allEqual = false;
    m_drawSetInvalid = true;
    m_root->lastInsertionNode = nullptr;
    ++m_changeCounter;
}

size_t ZvBNode::PurgeErased() {
    dvect<ZvEntity*> erased;
    const size_t count = TakeErased(erased);
    for (ZvEntity* entity : erased) {
        ForgetName(entity);
        delete entity;
    }
    if (count)
        TouchContainer(nullptr);
    return count;
}

size_t ZvBNode::TakeErased(dvect<ZvEntity*>& erased) {
    size_t kept = 0;
    for (size_t i = 0; i < m_list.Size(); ++i) {
        ZvEntity* entity = m_list.Get(i);
        if (entity->IsErased()) {
            entity->SetParentBlock(nullptr);
            entity->SetParentSpatialNode(0);
            erased.push_back(entity);
        } else {
            const uint32_t box = m_list.Box(i);
            m_list.Set(kept, entity);
            m_list.SetBox(kept++, box);
        }
    }
    size_t taken = m_list.Size() - kept;
    if (taken) {
        m_list.Truncate(kept);
        m_drawSetInvalid = true;
        ++m_changeCounter;
    }
    if (m_children)
        for (ZvBNode& child : m_children->child)
            taken += child.TakeErased(erased);
    return taken;
}

bool ZvBNode::ChangeEntityOrder(ZvEntity* entity, ZvEntityOrder order, const ZvEntity* relativeTo) {
    ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr;
    if (!node || node->m_root != m_root)
        return false;
    ZvBNodeList& list = node->m_list;
    const size_t from = list.Find(entity), last = list.Size() - 1;
    size_t to = order == ZvEntityOrder::ToFront ? last : 0;
    if (order == ZvEntityOrder::Above || order == ZvEntityOrder::Below) {
        const size_t mark = list.Find(relativeTo);
        if (mark > last || mark == from)
            return false;
        // Where the mark stands once the entity is out, and one further for "above".
        to = (mark > from ? mark - 1 : mark) + (order == ZvEntityOrder::Above ? 1 : 0);
    }
    if (from != to) {
        list.Move(from, to);
        ++node->m_changeCounter;
        node->m_drawSetInvalid = true;
    }
    node->TouchContainer(entity);
    return true;
}
