#include "Zelvan/Tables/ZvNamedView.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include <algorithm>
#include <cmath>

namespace {

constexpr double kHalfPi = 1.5707963267948966;

} // namespace

std::unique_ptr<ZvTableRecord> ZvNamedView::NewOfKind() const {
    return std::make_unique<ZvNamedView>();
}

void ZvNamedView::Set(const Values& values) {
    m_values = values;
    FieldsChanged();
    IncModified();
}

void ZvNamedView::Fields(ZvRecordFields& visit) {
    Values& v = m_values;
    visit.Field("Center", v.center);
    visit.Field("Width", v.width);
    visit.Field("Height", v.height);
    visit.Field("Rotation", v.rotation);
    visit.Field("Tilt", v.tilt);
    visit.Field("Perspective", v.perspective);
    visit.Field("FieldOfView", v.fieldOfView);
    visit.Field("Distance", v.distance);
    visit.Field("LayerPreset", v.layerPreset);
    visit.Field("Ucs", v.ucs);
    visit.Field("Description", v.description);
}

void ZvNamedView::FieldsChanged() {
    const auto keep = [](double& value, double low, double high, double fallback) {
        value = std::isfinite(value) ? std::clamp(value, low, high) : fallback;
    };
    const auto keepSize = [](double& value) {
        if (!(value > 0) || !std::isfinite(value))
            value = 1;
    };
    Values& v = m_values;
    keepSize(v.width);
    keepSize(v.height);
    keep(v.rotation, -1e6, 1e6, 0);
    keep(v.tilt, 0, kHalfPi, 0);
    keep(v.fieldOfView, 0.01, 3, 0.8);
    keep(v.distance, 0, 9e90, 0);
    if (!std::isfinite(v.center.x) || !std::isfinite(v.center.y) || !std::isfinite(v.center.z))
        v.center = {};
}
