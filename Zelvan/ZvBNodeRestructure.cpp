// The root's box: how it grows, and the rebuilding of the tree in a new one.
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvBNodeBuilder.h"
#include "Zelvan/ZvBNodePair.h"
#include "ZvCore/ZvErrors.h"

namespace {

constexpr double kLeafGrowth = 1.5;
constexpr double kRebuildGrowth = 3.0;
constexpr double kRootOfTwo = 1.4142135623730951;

/// Scales about the centre; never smaller than it was, whatever rounding does.
ZvBounds3D Grown(const ZvBounds3D& box, double factor) {
    const auto grow = [factor](double& low, double& high) {
        const double middle = low + (high - low) / 2, half = (high - low) / 2 * factor;
        low = std::min(low, middle - half);
        high = std::max(high, middle + half);
    };
    ZvBounds3D grown = box;
    grow(grown.minX, grown.maxX);
    grow(grown.minY, grown.maxY);
    grow(grown.minZ, grown.maxZ);
    return grown;
}

} // namespace

void ZvBNode::FixAspect(ZvBounds3D& box) {
    const double width = box.maxX - box.minX, height = box.maxY - box.minY;
    if (height * kRootOfTwo > width) {
        const double grow = (height * kRootOfTwo - width) / 2;
        box.minX -= grow, box.maxX += grow;
    } else if (width * kRootOfTwo > height) {
        const double grow = (width * kRootOfTwo - height) / 2;
        box.minY -= grow, box.maxY += grow;
    }
}

void ZvBNode::SetLeafBox(const ZvBounds3D& box) {
    m_box = box;
    if (m_list.HasNoBlock())
        return;
    m_list.SetGrid(ZvNodeGrid(box));
    for (size_t i = 0; i < m_list.Size(); ++i)
        m_list.SetBox(i, PackBox(m_list.Grid(), m_list.Get(i)->Bounds3D()));
}

void ZvBNode::Accomodate(const ZvBounds3D& bounds) {
    if (m_box.minX > m_box.maxX)
        return SetLeafBox(Grown(bounds, kLeafGrowth));
    ZvBounds3D all = m_box;
    if (!all.ExpandToFitTest(bounds))
        return;
    const bool small = !m_children && m_list.Size() < size_t(m_root->maxEntitiesPerNode);
    ZvBounds3D grown = Grown(all, small ? kLeafGrowth : kRebuildGrowth);
    if (small) {
        FixAspect(grown);
        SetLeafBox(grown);
    } else {
        Restructure(grown);
    }
}

void ZvBNode::Restructure(const ZvBounds3D& box) {
    if (!IsRoot())
        return RootBlock()->Restructure(box);
    dvect<ZvEntity*> entities;
    EnumAll(entities);
    ZvBNodeBuilder builder;
    builder.Load({entities.data(), entities.size()}, false);
    DropShape();
    m_box = box;
    m_box.ExpandToFit(builder.Bounds());
    builder.Place(*this);
}

void ZvBNode::InsertBulk(std::span<ZvEntity* const> entities) {
    if (!IsRoot())
        return RootBlock()->InsertBulk(entities);
    ZvBNodeBuilder builder;
    builder.Load(entities, true);
    if (!builder.Bounds().IsNull()) {
        const bool first = m_box.minX > m_box.maxX;
        Accomodate(builder.Bounds());
        if (first) {
            ZvBounds3D box = m_box;
            FixAspect(box);
            SetLeafBox(box);
        }
    }
    builder.Place(*this);
    m_root->insertionCounter += int32_t(builder.Count());
    TouchContainer(nullptr);
}
