#include "Zelvan/Verbs/ZvDrawPlace.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvBNode.h"
#include <algorithm>

ZvDrawPlace::ZvDrawPlace(const ZvEntity& entity) {
    const ZvBNode* node = entity.ParentBlockLeaf();
    if (!node)
        return;
    m_node = node->DebugGetNodeId();
    const auto list = node->GetEntitiesNoWalk();
    const auto at = std::find(list.begin(), list.end(), &entity);
    if (at != list.end() && at + 1 != list.end())
        m_next = (*(at + 1))->Name32();
}

void ZvDrawPlace::Restore(ZvEntity& entity) const {
    ZvBNode* node = entity.ParentBlockLeaf();
    if (!node)
        return;
    if (!m_next) {
        if (node->DebugGetNodeId() == m_node)
            node->ChangeEntityOrder(&entity, ZvEntityOrder::ToFront);
        return;
    }
    const auto list = node->GetEntitiesNoWalk();
    const auto next =
        std::find_if(list.begin(), list.end(), [&](const ZvEntity* e) { return e->Name32() == m_next; });
    if (next != list.end())
        node->ChangeEntityOrder(&entity, ZvEntityOrder::Below, *next);
}
