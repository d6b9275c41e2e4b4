#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"

ZvVDrawOrder::ZvVDrawOrder(const ZvSelection& entities) : ZvVerb(entities.ParentDrawing()) {
    Entities() = entities;
}

void ZvVDrawOrder::Bring(ZvEntityOrder order, const ZvEntity* relativeTo) {
    m_brings = true;
    m_order = order;
    m_relativeTo = relativeTo ? relativeTo->Name32() : 0;
}

ZvBNode* ZvVDrawOrder::Block(int index) const {
    const ZvEntity* entity = Entities().GetEntityQuiet(index);
    return entity ? entity->ParentBlockRoot() : nullptr;
}

ZvVDrawOrder::Orders ZvVDrawOrder::Present() const {
    Orders orders;
    std::set<const ZvBNode*> seen;
    for (int i = 0; i < Entities().Count(); ++i) {
        const ZvEntity* entity = Entities().GetEntityQuiet(i);
        const ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr;
        if (!node || !seen.insert(node).second)
            continue;
        std::vector<uint32_t>& names = orders.emplace_back();
        for (const ZvEntity* member : node->GetEntitiesNoWalk())
            names.push_back(member->Name32());
    }
    return orders;
}

void ZvVDrawOrder::StoreOriginal() {
    m_original = Present();
    m_stored = true;
}

void ZvVDrawOrder::StoreModified() {
    m_modified = Present();
}

bool ZvVDrawOrder::IsNullOp() const {
    return m_brings && !m_stored ? Entities().IsEmpty() : m_original == m_modified;
}

void ZvVDrawOrder::Do() {
    LeaveOutGone("ZvVDrawOrder.Do");
    if (!m_brings) {
        if (m_stored)
            Restore(m_modified);
        return;
    }
    StoreOriginal();
    const ZvEntity* mark = Drawing()->GetEntity(ZvName(m_relativeTo));
    // Several that go to the back or above one mark keep their own order when the last goes first.
    const bool backwards = m_order == ZvEntityOrder::ToBack || m_order == ZvEntityOrder::Above;
    const int count = Entities().Count();
    for (int i = 0; i < count; ++i) {
        ZvEntity* entity = Entities().GetEntityQuiet(backwards ? count - 1 - i : i);
        if (ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr)
            node->ChangeEntityOrder(entity, m_order, mark);
    }
    StoreModified();
}

void ZvVDrawOrder::Undo() {
    Restore(m_original);
}

/// Entities that joined a node since, or have left it, do not disturb the order of the others.
void ZvVDrawOrder::Restore(const Orders& orders) const {
    for (const std::vector<uint32_t>& names : orders)
        for (const uint32_t name : names) {
            ZvEntity* entity = Drawing()->GetEntity(ZvName(name));
            if (ZvBNode* node = entity ? entity->ParentBlockLeaf() : nullptr)
                node->ChangeEntityOrder(entity, ZvEntityOrder::ToFront);
        }
}

void ZvVDrawOrder::RemoveFromSet(const ZvSelection& leaving) {
    ZvVerb::RemoveFromSet(leaving);
    for (Orders* orders : {&m_original, &m_modified})
        for (std::vector<uint32_t>& names : *orders)
            std::erase_if(names, [&](uint32_t name) { return leaving.Contains(ZvName(name)); });
    if (leaving.Contains(ZvName(m_relativeTo)))
        m_relativeTo = 0;
}

XStringW ZvVDrawOrder::DefaultName() const {
    return ZvStrings::GetW(ZvStr::VerbDrawOrder);
}

size_t ZvVDrawOrder::MemUsage() const {
    size_t bytes = ZvVerb::MemUsage() + sizeof(*this) - sizeof(ZvVerb);
    for (const Orders* orders : {&m_original, &m_modified})
        for (const std::vector<uint32_t>& names : *orders)
            bytes += sizeof(names) + names.capacity() * sizeof(uint32_t);
    return bytes;
}
