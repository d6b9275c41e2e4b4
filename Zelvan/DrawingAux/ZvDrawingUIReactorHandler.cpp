#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"

template <class Question>
bool ZvDrawingUIReactorHandler::Ask(XStringW* reason, Question question) {
    XStringW why;
    if (m_reactors.All([&](IZvDrawingUIReactor& reactor) { return question(reactor, why); }))
        return true;
    if (reason)
        *reason = why;
    return false;
}

bool ZvDrawingUIReactorHandler::MayRunCommand(const XStringW& command, XStringW* reason) {
    return Ask(reason,
               [&](auto& reactor, XStringW& why) { return reactor.AllowCommand(m_drawing, command, why); });
}

bool ZvDrawingUIReactorHandler::MayCreate(const ZvEntity& entity, XStringW* reason) {
    return Ask(reason,
               [&](auto& reactor, XStringW& why) { return reactor.AllowCreation(m_drawing, entity, why); });
}

bool ZvDrawingUIReactorHandler::MayErase(const ZvEntity& entity, XStringW* reason) {
    return Ask(reason,
               [&](auto& reactor, XStringW& why) { return reactor.AllowErasure(m_drawing, entity, why); });
}

bool ZvDrawingUIReactorHandler::MayModify(const ZvEntity& entity, XStringW* reason) {
    return Ask(reason, [&](auto& reactor, XStringW& why) {
        return reactor.AllowModification(m_drawing, entity, why);
    });
}

void ZvDrawingUIReactorHandler::DrawingDying() {
    m_reactors.Each([&](IZvDrawingUIReactor& reactor) { reactor.DrawingDying(m_drawing); });
    m_reactors.Clear();
}
