#include "Zelvan/DrawingAux/ZvEntityProperties.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include "Zelvan/ZvDrawing.h"

void ZvEntityProperties::TakeCurrent(const ZvDrawing& drawing) {
    color = drawing.CurrentColor();
    lineType = drawing.CurrentLineType();
    lineWidth = drawing.CurrentLineWidth();
    brush = drawing.CurrentBrush();
    text = drawing.CurrentTextProperties();
}

void ZvEntityProperties::TakeFrom(ZvEntity& entity) {
    color = entity.GetColor();
    if (const ZvLineEntity* line = entity.ToLineEntity()) {
        lineType = line->GetLineType();
        lineWidth = line->GetLineWidth();
    }
    if (const ZvFilledEntity* filled = entity.ToFilledEntity())
        brush = filled->GetBrush();
}

void ZvEntityProperties::ApplyTo(ZvEntity& entity) const {
    entity.SetColor(color);
    if (ZvLineEntity* line = entity.ToLineEntity()) {
        line->SetLineType(lineType);
        line->SetLineWidth(lineWidth);
    }
    if (ZvFilledEntity* filled = entity.ToFilledEntity())
        filled->SetBrush(brush);
}
