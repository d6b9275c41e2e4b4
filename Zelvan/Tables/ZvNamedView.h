#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "ZvCore/Vec.h"

/// A view kept under a name: what part of the drawing shows, from where, and which layers.
class ZV_API ZvNamedView : public ZvTableRecord {
public:
    uint16_t GetRecordCode() const override { return ZvTableCode::View; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    struct Values {
        Vec3d center;        ///< world point at the centre of the view
        double width = 1;    ///< world units across the view, > 0
        double height = 1;   ///< world units down the view, > 0
        double rotation = 0; ///< about the viewing direction's vertical, radians, counter-clockwise
        double tilt = 0;     ///< from straight down, radians, 0..pi/2
        bool perspective = false;
        double fieldOfView = 0.8; ///< of the perspective, radians across the width
        double distance = 0;      ///< of the eye from the centre; 0: chosen from the width
        XStringW layerPreset;     ///< layer preset applied with the view, empty for none
        XStringW ucs;             ///< UCS record made current with the view, empty for none
        XStringW description;
    };
    const Values& Get() const { return m_values; }
    void Set(const Values& values);

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    Values m_values;
};
