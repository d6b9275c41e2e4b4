// What a user sees and sets of a polyline besides its vertices.
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvStrings.h"

namespace {

/// Menu items are known by the number of their text.
constexpr int kMenuPolygon = ZvStr::PropertyPolygon;

/// Takes a truth value. Null when it is absent; a value of another type is refused.
const bool* TakeBool(ZvPropertySetter& setter, std::string_view id) {
    const ZvProperty::Value* value = setter.Take(id);
    const bool* on = value ? std::get_if<bool>(value) : nullptr;
    if (value && !on)
        setter.Refuse(id, ZvStrings::Get(ZvStr::PropertyWrongType));
    return on;
}

} // namespace

bool ZvXLine::AllPartsClosed() const {
    for (uint32_t i = 0; i < m_numParts; ++i)
        if (!PClosed(i))
            return false;
    return m_numParts > 0;
}

/// Whether every part has the vertices that a ring needs.
bool ZvXLine::CanBePolygon() const {
    for (uint32_t i = 0; i < m_numParts; ++i)
        if (PLen(i) < 3)
            return false;
    return m_numParts > 0;
}

void ZvXLine::GetProperties(ZvPropertyGatherer& gatherer, bool all) const {
    ZvFilledEntity::GetProperties(gatherer, all);
    const bool writable = IsPropertyWritable();
    const auto add = [&](const char* id, int label, ZvProperty::Value value, bool canSet) {
        gatherer.Add(id, ZvStrings::GetW(label), std::move(value), canSet && writable);
    };
    add("Closed", ZvStr::PropertyClosed, AllPartsClosed(), !IsPolygon());
    add("Polygon", ZvStr::PropertyPolygon, IsPolygon(), IsPolygon() || CanBePolygon());
    add("VertexCount", ZvStr::PropertyVertexCount, int64_t(m_numVerts), false);
    if (m_numParts > 1)
        add("PartCount", ZvStr::PropertyPartCount, int64_t(m_numParts), false);
    add("Length", ZvStr::PropertyLength, GetCircumference(), false);
    if (IsPolygon() || AllPartsClosed())
        add("Area", ZvStr::PropertyArea, GetArea(), false);
    if (!all)
        return;
    add("HasZ", ZvStr::PropertyHasZ, HasZ(), false);
    add("HasM", ZvStr::PropertyHasM, HasM(), false);
}

void ZvXLine::SetProperties(ZvPropertySetter& setter) {
    ZvFilledEntity::SetProperties(setter);
    if (const bool* polygon = TakeBool(setter, "Polygon"); polygon && *polygon != IsPolygon()) {
        if (*polygon && !CanBePolygon())
            setter.Refuse("Polygon", ZvStrings::Get(ZvStr::PolygonShortPart));
        else {
            SetIsPolygon(*polygon, true);
            Touch();
        }
    }
    if (const bool* closed = TakeBool(setter, "Closed"); closed && *closed != AllPartsClosed()) {
        if (!*closed && IsPolygon())
            setter.Refuse("Closed", ZvStrings::Get(ZvStr::PolygonIsClosed));
        else
            for (uint32_t i = 0; i < m_numParts; ++i)
                SetPClosed(i, *closed);
    }
}

void ZvXLine::Query(ZvQueryResults& results) const {
    ZvFilledEntity::Query(results);
    const auto add = [&](int label, XStringW text) {
        results.lines.emplace_back(ZvStrings::GetW(label), std::move(text));
    };
    if (m_numParts > 1)
        add(ZvStr::PropertyPartCount, XStringW::Format("%u", m_numParts));
    add(ZvStr::PropertyVertexCount, XStringW::Format("%u", m_numVerts));
    add(ZvStr::PropertyLength, XStringW::Format("%.10g", GetCircumference()));
    if (IsPolygon() || AllPartsClosed())
        add(ZvStr::PropertyArea, XStringW::Format("%.10g", GetArea()));
    add(ZvStr::PropertyStorage,
        XStringW::Format(ZvStrings::Get(ZvStr::StorageForm), Is64() ? 64 : 32, unsigned(CheapSize())));
}

void ZvXLine::GetContextMenu(ZvMenu& menu) const {
    ZvFilledEntity::GetContextMenu(menu);
    if (!IsPolygon() && m_numVerts < 3)
        return;
    menu.push_back({kMenuPolygon, ZvStrings::GetW(ZvStr::PropertyPolygon), IsPolygon(),
                    IsPropertyWritable() && (IsPolygon() || CanBePolygon())});
}

bool ZvXLine::OnContextMenuClick(const Vec3d& point, int menuId, ZvSelection* selection) {
    if (menuId != kMenuPolygon)
        return ZvFilledEntity::OnContextMenuClick(point, menuId, selection);
    const bool polygon = !IsPolygon();
    const auto apply = [polygon](ZvXLine& line) {
        if (line.IsPolygon() == polygon || (polygon && !line.CanBePolygon()))
            return;
        line.SetIsPolygon(polygon, true);
        line.RecalcBounds();
        line.Touch();
    };
    apply(*this);
    // The other polylines of the selection that was clicked become the same.
    std::vector<ZvEntity*> others;
    if (selection)
        selection->GetValidEntities(others);
    for (ZvEntity* other : others)
        if (ZvXLine* line = other->ToXLine())
            apply(*line);
    return true;
}
