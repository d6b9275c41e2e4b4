#pragma once
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvTextProperties.h"
#include "ZvCore/Api.h"

class ZvDrawing;
class ZvEntity;

/// The attributes that a new entity gets.
class ZV_API ZvEntityProperties {
public:
    ZvColor color = ZvColor::ByLayer();
    ZvLineType lineType;
    ZvLineWidth lineWidth = ZvLineWidth::ByLayer();
    ZvBrush brush;
    ZvTextProperties text;

    /// The drawing's current attributes.
    void TakeCurrent(const ZvDrawing& drawing);
    /// What an entity has; kinds without a line or a fill leave those as they are.
    void TakeFrom(ZvEntity& entity);
    void ApplyTo(ZvEntity& entity) const;
};
