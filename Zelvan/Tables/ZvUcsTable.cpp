#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvUnits.h"

XStringW ZvUcsTable::DefaultNameBase() const {
    return u"UCS";
}

void ZvUcsTable::CreateDefaults() {
    if (!GetByName(ZvStrings::GetW(ZvStr::DefaultUcs)))
        ApplyUnitPreset(0, 1.0);
    SetAnyCurrent();
}

bool ZvUcsTable::ApplyUnitPreset(int preset, double unitsPerMeter) {
    XStringW name = ZvStrings::GetW(ZvStr::DefaultUcs);
    XStringW unit, abbreviation;
    double ownScale = 1;
    if (preset != 0) {
        if (!ZvUnits::GetPresetParms(ZvUnits::Preset(preset - 1), unit, abbreviation, ownScale))
            return false;
        name = unit;
    }
    ZvUcs* record = GetByName(name);
    if (!record)
        record = InsertNew(name);
    if (!record)
        return false;
    record->SetScale(unitsPerMeter);
    record->SetUnitNames(unit, abbreviation);
    return SetCurrent(record);
}

void ZvUcsTable::SetCoordinateSystem(const ZvCoordSystem& system) {
    if (system == m_coordSystem)
        return;
    m_coordSystem = system;
    IncModified();
    SetModified(true);
    TellWatchers(ZvTableEvent::Changed, -1);
    if (GetParent())
        GetParent()->NotifyCoordinateSystemChanged();
}

double ZvUcsTable::MetersToWorld(double meters) const {
    return m_coordSystem.IsSet() ? meters / m_coordSystem.metersPerUnit : meters;
}

double ZvUcsTable::WorldToMeters(double world) const {
    return m_coordSystem.IsSet() ? world * m_coordSystem.metersPerUnit : world;
}

void ZvUcsTable::TableFields(ZvRecordFields& visit) {
    m_coordSystem.Visit(visit, "CoordinateSystem");
}

void ZvUcsTable::NativeInPostFix(ZvNativeDesc&) {
    if (m_coordSystem.IsSet() && GetParent())
        GetParent()->NotifyCoordinateSystemChanged();
}

void ZvUcsTable::OnPurged() {
    m_coordSystem = {};
}
