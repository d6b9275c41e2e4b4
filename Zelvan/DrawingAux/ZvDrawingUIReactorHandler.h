#pragma once
#include "Zelvan/DrawingAux/IZvDrawingUIReactor.h"
#include "Zelvan/DrawingAux/ZvReactorList.h"
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"

/// Asks the plug-ins registered with a drawing. The first veto counts; without one everything is allowed.
class ZV_API ZvDrawingUIReactorHandler {
public:
    explicit ZvDrawingUIReactorHandler(ZvDrawing& drawing) : m_drawing(drawing) {}

    /// Not owned; must leave before it dies.
    void Register(IZvDrawingUIReactor* reactor) { m_reactors.Add(reactor); }
    bool Unregister(IZvDrawingUIReactor* reactor) { return m_reactors.Remove(reactor); }

    /// `reason` may be null; it is set only by a veto.
    bool MayRunCommand(const XStringW& command, XStringW* reason = nullptr);
    bool MayCreate(const ZvEntity& entity, XStringW* reason = nullptr);
    bool MayErase(const ZvEntity& entity, XStringW* reason = nullptr);
    bool MayModify(const ZvEntity& entity, XStringW* reason = nullptr);
    /// Tells everybody and forgets them.
    void DrawingDying();

private:
    template <class Question>
    bool Ask(XStringW* reason, Question question);

    ZvDrawing& m_drawing;
    ZvReactorList<IZvDrawingUIReactor> m_reactors;
};
