#include "Apps/zvd/DrawingUnits.h"
#include "Apps/zvd/EditSession.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Verbs/ZvVRecordModify.h"
#include "Zelvan/ZvDrawing.h"
#include <cmath>

// Lines of an edit script that have to do with units: entities by place, the unit itself, and what is measured.

bool EditSession::ResolveBox(const std::string& box, bool crossing, ZvSelection& found,
                             EditOutcome& outcome) const {
    const std::vector<Vec2d> corners = DrawingUnits(m_drawing).Places(box);
    if (corners.size() != 2)
        return Refuse(outcome, "write box:X0,Y0,X1,Y1 or crossing:X0,Y0,X1,Y1 with four numbers");
    ZvBounds2D window;
    window.ExpandToFit(corners[0]);
    window.ExpandToFit(corners[1]);
    m_drawing.SelectRect(window, crossing, found);
    return true;
}

bool EditSession::ResolveOutline(const std::string& outline, ZvSelection& found, EditOutcome& outcome) const {
    const std::vector<Vec2d> corners = DrawingUnits(m_drawing).Places(outline);
    if (corners.size() < 3)
        return Refuse(outcome, "write outline:X,Y,X,Y,X,Y with three corners or more");
    m_drawing.SelectClipper(corners, false, found);
    return true;
}

bool EditSession::ResolveNear(const std::string& place, ZvSelection& found, EditOutcome& outcome) const {
    const DrawingUnits units(m_drawing);
    const size_t last = place.rfind(',');
    const auto at = units.Place(place.substr(0, last));
    const auto radius = units.Distance(last == std::string::npos ? "" : place.substr(last + 1));
    if (!at || !radius || *radius < 0)
        return Refuse(outcome, "write near:X,Y,RADIUS with a radius of 0 or more");
    m_drawing.SelectCylinderWorldRadius(Ray3d{{at->x, at->y, 0}, {0, 0, -1}}, *radius, found);
    return true;
}

/// The unit belongs to the drawing's current UCS record, so that it is saved, and can be undone, with it.
bool EditSession::Units(const EditLine& line, EditOutcome& outcome) {
    const auto unit = DrawingUnits(m_drawing).FindUnit(line.words[0], outcome.text);
    if (!unit)
        return false;
    ZvUcs* ucs = m_drawing.UcsTable()->SetAnyCurrent() ? m_drawing.UcsTable()->GetCurrent() : nullptr;
    if (!ucs)
        return Refuse(outcome, "the drawing has no coordinate system of its own that could take the unit");
    auto verb = std::make_unique<ZvVRecordModify>(*ucs);
    verb->Set("Scale", unit->perWorldUnit);
    verb->Set("UnitName", unit->name);
    verb->Set("UnitAbbr", unit->abbreviation);
    if (!Do(std::move(verb), outcome))
        return false;
    outcome.text = "numbers are in " + line.words[0] + " from here on";
    return true;
}

bool EditSession::Measure(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    const DrawingUnits units(m_drawing);
    DrawingMeasure measure;
    for (int i = 0; i < what.Count(); ++i)
        measure.Add(*what.GetEntity(i));
    outcome.text = std::to_string(measure.entities) + (measure.entities == 1 ? " entity" : " entities") +
                   ", length " + units.LengthText(measure.length) + ", area " + units.AreaText(measure.area) +
                   ", extent " + units.ExtentText(measure.bounds);
    return true;
}

bool EditSession::List(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    const DrawingUnits units(m_drawing);
    for (int i = 0; i < what.Count(); ++i) {
        const ZvEntity& entity = *what.GetEntity(i);
        DrawingMeasure measure;
        measure.Add(entity);
        outcome.text += (i > 0 ? "\n   " : "") + std::to_string(entity.Name32()) + " " +
                        entity.VerbalName().ToUtf8() + " on " + entity.GetLayerName().ToUtf8();
        if (measure.length > 0)
            outcome.text += ", length " + units.LengthText(measure.length);
        if (measure.area > 0)
            outcome.text += ", area " + units.AreaText(measure.area);
        outcome.text += ", at " + units.PlaceText(entity.Bounds3D().Center());
        outcome.names.push_back(entity.Name32());
    }
    return true;
}

bool EditSession::Distance(const EditLine& line, EditOutcome& outcome) {
    const DrawingUnits units(m_drawing);
    const auto from = units.Place(line.words[0]), to = units.Place(line.words[1]);
    if (!from || !to)
        return Refuse(outcome, "'" + line.words[from ? 1 : 0] + "' is no point: " + units.PlaceHint());
    const Vec3d way = *to - *from;
    outcome.text = units.LengthText(way.Length()) + " towards " + units.AngleText(std::atan2(way.y, way.x));
    return true;
}
