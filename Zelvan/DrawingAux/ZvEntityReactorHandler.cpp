#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"

bool ZvEntityReactorHandler::Listening(const ZvEntity& entity) const {
    return !m_suspended && !m_reactors.IsEmpty() && entity.IsReactable();
}

void ZvEntityReactorHandler::EntityInserted(ZvEntity& entity) {
    if (Listening(entity))
        m_reactors.Each([&](IZvEntityReactor& reactor) { reactor.EntityInserted(m_drawing, entity); });
}

void ZvEntityReactorHandler::EntityChanged(ZvEntity& entity) {
    if (Listening(entity))
        m_reactors.Each([&](IZvEntityReactor& reactor) { reactor.EntityChanged(m_drawing, entity); });
    if (!m_suspended)
        m_drawing.EntityNotifier()->Tell(entity.Name(), ZvNotifyWhat::Changed);
}

void ZvEntityReactorHandler::EntityErased(ZvEntity& entity, bool erased) {
    if (Listening(entity))
        m_reactors.Each([&](IZvEntityReactor& reactor) { reactor.EntityErased(m_drawing, entity, erased); });
    if (!m_suspended)
        m_drawing.EntityNotifier()->Tell(entity.Name(),
                                         erased ? ZvNotifyWhat::Erased : ZvNotifyWhat::Restored);
}

void ZvEntityReactorHandler::EntityRemoved(ZvEntity& entity) {
    if (Listening(entity))
        m_reactors.Each([&](IZvEntityReactor& reactor) { reactor.EntityRemoved(m_drawing, entity); });
    if (!m_suspended)
        m_drawing.EntityNotifier()->Tell(entity.Name(), ZvNotifyWhat::Removed);
}

void ZvEntityReactorHandler::DrawingDying() {
    m_reactors.Each([&](IZvEntityReactor& reactor) { reactor.DrawingDying(m_drawing); });
    m_reactors.Clear();
}
