#include "Zelvan/Verbs/ZvEntityState.h"
#include "Zelvan/Entities/ZvFilledEntity.h"
#include <bit>

uint16_t ZvEntityState::FlagMask() {
    return ZvEntity::kReactable | ZvEntity::kSelectable | ZvEntity::kVisible | ZvEntity::kDirectionFlipped |
           ZvEntity::kDirectionNull | ZvEntity::kLineCap1 | ZvEntity::kLineCap2;
}

ZvEntityState ZvEntityState::Of(const ZvEntity& entity) {
    ZvEntityState state;
    state.flags = entity.GetFlagsMask() & FlagMask();
    state.color = entity.GetColor().To64();
    auto& mutableEntity = const_cast<ZvEntity&>(entity); // asking for its kind changes nothing
    if (const ZvLineEntity* line = mutableEntity.ToLineEntity()) {
        state.lineWidth = std::bit_cast<uint32_t>(line->GetLineWidth().Raw());
        state.lineType = line->GetLineType().hardGet();
    }
    if (const ZvFilledEntity* filled = mutableEntity.ToFilledEntity())
        state.brush = filled->GetBrush().ToInt64();
    return state;
}

void ZvEntityState::ApplyTo(ZvEntity& entity) const {
    const ZvEntityState now = Of(entity);
    if (color != now.color)
        entity.SetColor(ZvColor(color));
    if (ZvLineEntity* line = entity.ToLineEntity()) {
        if (lineType != now.lineType)
            line->SetLineType(ZvLineType(lineType));
        if (lineWidth != now.lineWidth)
            line->SetLineWidth(ZvLineWidth::FromRaw(std::bit_cast<float>(lineWidth)));
    }
    ZvFilledEntity* filled = entity.ToFilledEntity();
    if (filled && brush != now.brush)
        filled->SetBrush(ZvBrush::FromInt64(brush));
    if (flags != now.flags)
        entity.SetFlagsMask(uint16_t((entity.GetFlagsMask() & ~FlagMask()) | (flags & FlagMask())));
}
