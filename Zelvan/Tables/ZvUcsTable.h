#pragma once
#include "Zelvan/Tables/ZvTable.h"
#include "Zelvan/Tables/ZvUcs.h"

/// User coordinate systems, and the coordinate system of the drawing itself: what its world coordinates mean.
class ZV_API ZvUcsTable : public ZvTableOf<ZvUcs, ZvTableCode::Ucs> {
public:
    using ZvTableOf::ZvTableOf;
    XStringW DefaultNameBase() const override;
    /// Applies unit preset 0 with scale 1.0 when the record named by text 45000 is missing.
    void CreateDefaults() override;
    /// The record of the preset (0: world units, named by text 45000; n: preset n - 1 of ZvUnits, named as
    /// its unit) gets the scale and becomes current; it is made when missing. False for a preset that there
    /// is not.
    bool ApplyUnitPreset(int preset, double unitsPerMeter);

    const ZvCoordSystem& CoordinateSystem() const { return m_coordSystem; }
    void SetCoordinateSystem(const ZvCoordSystem& system);
    /// Through the drawing's coordinate system; unchanged when none is set.
    double MetersToWorld(double meters) const;
    double WorldToMeters(double world) const;

    void NativeInPostFix(ZvNativeDesc& desc) override;

protected:
    void TableFields(ZvRecordFields& visit) override;
    void OnPurged() override;

private:
    ZvCoordSystem m_coordSystem;
};
