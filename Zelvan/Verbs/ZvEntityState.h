#pragma once
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "ZvCore/Api.h"
#include <compare>
#include <cstdint>

class ZvEntity;

/// What every entity has beside its geometry: flags that a user can set, colour and, where the kind has them, line
/// width, line type and brush. 24 bytes; equal states are one state for who keeps many.
struct ZV_API ZvEntityState {
    /// Bits of the internal flag word that belong to the state. The others say where an entity is, not how.
    static uint16_t FlagMask();

    uint16_t flags = 0;
    uint64_t color = 0;
    uint32_t lineWidth = 0; ///< bits of the stored number
    int16_t lineType = 0;
    int64_t brush = 0;

    static ZvEntityState Of(const ZvEntity& entity);
    /// Sets what differs from the entity's own, through its setters.
    void ApplyTo(ZvEntity& entity) const;
    friend auto operator<=>(const ZvEntityState&, const ZvEntityState&) = default;
};
