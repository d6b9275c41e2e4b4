#include "Zelvan/ZvBNode.h"
#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNodePair.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/SlabPool.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>

ZvBNode::ZvBNode() : m_root(new ZvBNodeRoot) {
    m_root->root = this;
    m_nodeId = m_root->nextNodeId++;
}

ZvBNode::ZvBNode(ZvBNode& parent)
    : m_depth(int16_t(parent.m_depth + 1)), m_root(parent.m_root), m_parent(&parent) {
    m_nodeId = m_root->nextNodeId++;
}

ZvBNode::~ZvBNode() {
    if (!IsRoot())
        return;
    ForEach([](ZvEntity* entity) { delete entity; });
    m_children.reset();
    delete m_root;
}

void* ZvBNode::operator new(size_t bytes) {
    return SlabPool::Alloc(bytes);
}

void ZvBNode::operator delete(void* object, size_t bytes) {
    SlabPool::Free(object, bytes);
}

ZvBNodePair::ZvBNodePair(ZvBNode& parent) : child{ZvBNode(parent), ZvBNode(parent)} {}

void* ZvBNodePair::operator new(size_t bytes) {
    return SlabPool::Alloc(bytes);
}

void ZvBNodePair::operator delete(void* pair, size_t bytes) {
    SlabPool::Free(pair, bytes);
}

void ZvBNode::SetMaxEntitiesPerNode(int32_t count) {
    m_root->maxEntitiesPerNode = std::max(1, count);
}

ZvLayer* ZvBNode::Layer() const {
    return m_root->container ? m_root->container->TreeLayer() : nullptr;
}

ZvDrawing* ZvBNode::Drawing() const {
    return m_root->container ? m_root->container->TreeDrawing() : nullptr;
}

ZvBNode* ZvBNode::Child(int index) const {
    return m_children && (index == 0 || index == 1) ? &m_children->child[index] : nullptr;
}

int ZvBNode::ChildNumber() const {
    return IsRoot() ? -1 : this == &m_parent->m_children->child[0] ? 0 : 1;
}

void ZvBNode::DataAdd(ZvEntity* entity) {
    List(entity, entity->Bounds3D());
}

bool ZvBNode::DataErase(ZvEntity* entity) {
    const size_t i = m_list.Find(entity);
    if (i == m_list.Size())
        return false;
    m_list.EraseAt(i);
    return true;
}

void ZvBNode::DataEraseIx(size_t index) {
    m_list.EraseAt(index);
}

void ZvBNode::DataClear() {
    m_list.Reset();
}

size_t ZvBNode::Count() const {
    size_t count = m_list.Size();
    if (m_children)
        count += m_children->child[0].Count() + m_children->child[1].Count();
    return count;
}

size_t ZvBNode::CountNonErased() const {
    size_t count = 0;
    ForEach([&](const ZvEntity* entity) { count += !entity->IsErased(); });
    return count;
}

void ZvBNode::EnumAll(dvect<ZvEntity*>& entities, bool withErased) const {
    if (withErased)
        entities.reserve(entities.size() + Count());
    ForEach([&](ZvEntity* entity) {
        if (withErased || !entity->IsErased())
            entities.push_back(entity);
    });
}

void ZvBNode::GetBranchEntities(dvect<ZvEntity*>& entities) const {
    EnumAll(entities, false);
}

bool ZvBNode::VisitAll(Predicate take, void* target) const {
    for (ZvEntity* entity : m_list)
        if (!take(target, entity))
            return false;
    return !m_children ||
           (m_children->child[0].VisitAll(take, target) && m_children->child[1].VisitAll(take, target));
}

void ZvBNode::RemapEntities(const std::unordered_map<uint32_t, uint32_t>& newNames) {
    ForEach([&](ZvEntity* entity) {
        if (const auto found = newNames.find(entity->Name32()); found != newNames.end())
            entity->SetName32(found->second);
    });
}

// --- owner link --------------------------------------------------------------------------------------------------------------

ZvDrawing* ZvBNode::OwnerDrawing() const {
    return Drawing();
}

ZvLayer* ZvBNode::OwnerLayer() const {
    return Layer();
}

int ZvBNode::OwnerLayerIndex() const {
    return m_root->container ? m_root->container->TreeLayerIndex() : -1;
}

bool ZvBNode::OwnerIsInDrawing() const {
    return Drawing() != nullptr;
}

bool ZvBNode::OwnerRemove(ZvEntity* entity) {
    return RemoveMe(entity);
}

bool ZvBNode::OwnerRemoveAndDelete(ZvEntity* entity) {
    return DeleteMe(entity);
}

void ZvBNode::OwnerEntityChanged(ZvEntity* entity) {
    ChildUpdateAppearance(entity);
    TellChanged(*entity);
}

void ZvBNode::OwnerEntityErased(ZvEntity* entity, bool erased) {
    StateChanged(entity);
    ZvDrawing* drawing = Drawing();
    if (drawing && drawing->EntityReactorHandler())
        drawing->EntityReactorHandler()->EntityErased(*entity, erased);
}

void ZvBNode::OwnerVisibilityChanged(ZvEntity* entity) {
    StateChanged(entity);
    TellChanged(*entity);
}

void ZvBNode::OwnerBoundsChanged(ZvEntity* entity) {
    const ZvBNode& root = *RootBlock(); // this node may go
    ChildUpdateBounds(entity);
    root.TellChanged(*entity);
}

void ZvBNode::OwnerSelectionChanged(ZvEntity* entity, bool) {
    if (ZvDrawing* drawing = Drawing())
        drawing->Invalidate(entity->Bounds3D());
}

void ZvBNode::OwnerLineCapChanged(ZvEntity* entity) {
    ChildUpdateAppearance(entity);
    TellChanged(*entity);
}

void ZvBNode::TellChanged(ZvEntity& entity) const {
    ZvDrawing* drawing = Drawing();
    if (drawing && drawing->EntityReactorHandler())
        drawing->EntityReactorHandler()->EntityChanged(entity);
}

void ZvBNode::TouchContainer(ZvEntity* entity) const {
    if (m_root->container)
        m_root->container->TreeTouched(entity);
}
