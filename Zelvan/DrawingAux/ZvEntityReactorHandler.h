#pragma once
#include "Zelvan/DrawingAux/IZvEntityReactor.h"
#include "Zelvan/DrawingAux/ZvReactorList.h"
#include "ZvCore/Api.h"

/// Passes what happens to entities on to the reactors registered with a drawing, and to the subscribers among
/// the entities. Costs a test of two flags when nobody listens. Bulk loads do not go through it.
class ZV_API ZvEntityReactorHandler {
public:
    explicit ZvEntityReactorHandler(ZvDrawing& drawing) : m_drawing(drawing) {}

    /// Not owned; must leave before it dies.
    void Register(IZvEntityReactor* reactor) { m_reactors.Add(reactor); }
    bool Unregister(IZvEntityReactor* reactor) { return m_reactors.Remove(reactor); }

    void EntityInserted(ZvEntity& entity);
    void EntityChanged(ZvEntity& entity);
    void EntityErased(ZvEntity& entity, bool erased);
    void EntityRemoved(ZvEntity& entity);
    /// Tells everybody and forgets them.
    void DrawingDying();
    /// Nothing is passed on while suspended (calls nest).
    void Suspend() { ++m_suspended; }
    void Resume() { m_suspended -= m_suspended > 0; }

private:
    bool Listening(const ZvEntity& entity) const;

    ZvDrawing& m_drawing;
    ZvReactorList<IZvEntityReactor> m_reactors;
    int m_suspended = 0;
};
