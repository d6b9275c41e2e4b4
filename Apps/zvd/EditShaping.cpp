// Lines that make entities of others, and those that change how entities are.
#include "Apps/zvd/DrawingUnits.h"
#include "Apps/zvd/EditSession.h"
#include "Apps/zvd/EditShape.h"
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Verbs/ZvVConvert.h"
#include "Zelvan/Verbs/ZvVEntModify.h"
#include "Zelvan/Verbs/ZvVEntNewDualSource.h"
#include "Zelvan/Verbs/ZvVEntTiny.h"
#include "Zelvan/Verbs/ZvVModify.h"
#include "Zelvan/Verbs/ZvVTextChange.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cmath>

namespace {

/// The points that the entity goes through; none for kinds without.
dvect<Vec4d> PointsOf(const ZvEntity& entity) {
    dvect<Vec4d> points;
    if (auto* some = dynamic_cast<const ZvMultiPoint*>(&entity))
        for (const Vec4d& location : some->GetLocations())
            points.push_back(location);
    else if (entity.IsMLVEntity())
        entity.MLVGetLinearVertices(points);
    return points;
}

/// Exactly: as they are stored.
bool SamePoints(const dvect<Vec4d>& a, const dvect<Vec4d>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

/// Null where the entity cannot become that: of another kind, or with too few points.
std::unique_ptr<ZvEntity> Converted(const ZvEntity& entity, const std::string& kind, ZvDrawing& drawing) {
    const dvect<Vec4d> points = PointsOf(entity);
    const std::span<const Vec4d> all(points.data(), points.size());
    const bool hasZ = entity.Bounds3D().minZ != 0 || entity.Bounds3D().maxZ != 0;
    std::unique_ptr<ZvEntity> made;
    if (kind == "multipoint" && !points.empty()) {
        auto some = std::make_unique<ZvMultiPoint>();
        if (some->SetLocations(all, hasZ, false))
            made = std::move(some);
    } else if ((kind == "polyline" && points.size() > 1) || (kind == "polygon" && points.size() > 2)) {
        auto line = std::make_unique<ZvXLine>();
        if (kind == "polygon" ? line->SetPolygon(all, &drawing) : line->SetPolyline(all, false, &drawing))
            made = std::move(line);
    }
    if (made)
        made->SetColor(entity.GetColor());
    return made;
}

} // namespace

bool EditSession::Convert(const EditLine& line, EditOutcome& outcome) {
    const std::string& kind = line.words[1];
    if (kind != "multipoint" && kind != "polyline" && kind != "polygon")
        return Refuse(outcome, "'" + kind + "' is nothing to become: use multipoint, polyline or polygon");
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVConvert>(&m_drawing);
    for (int i = 0; i < what.Count(); ++i)
        verb->AddPair(what.GetEntity(i), Converted(*what.GetEntity(i), kind, m_drawing));
    return verb->IsNullOp() ? Refuse(outcome, "nothing there can become a " + kind)
                            : Do(std::move(verb), outcome);
}

bool EditSession::Replace(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    std::vector<std::unique_ptr<ZvEntity>> made =
        EditShape::Make(m_drawing, {line.words.begin() + 1, line.words.end()}, outcome.text);
    if (made.empty())
        return false;
    if (what.Count() != 1 || made.size() != 1)
        return Refuse(outcome, "one entity is replaced by one: write: replace NAME polyline X,Y X,Y");
    if (XStringW reason; !EditShape::Style(*made[0], line, outcome.text) || !made[0]->OkForInsertion(&reason))
        return Refuse(outcome, outcome.text.empty() ? reason.ToUtf8() : outcome.text);
    auto verb = std::make_unique<ZvVModify>(&m_drawing);
    verb->Add1To1(what.GetEntity(0), std::move(made[0]));
    return Do(std::move(verb), outcome);
}

bool EditSession::Connect(const EditLine& line, EditOutcome& outcome) {
    ZvSelection first, second;
    if (!ResolveSome(line.words[0], first, outcome) || !ResolveSome(line.words[1], second, outcome))
        return false;
    const ZvEntity *a = first.GetEntity(0), *b = second.GetEntity(0);
    if (first.Count() != 1 || second.Count() != 1 || a == b)
        return Refuse(outcome, "two entities are connected: write: connect NAME NAME");
    auto connection = std::make_unique<ZvXLine>();
    if (!connection->SetLine(a->Bounds3D().Center(), b->Bounds3D().Center(), false, &m_drawing))
        return Refuse(outcome, "the two lie too far apart for one line");
    const ZvName name = m_drawing.Insert(std::move(connection), a->GetLayerName());
    if (name.IsNull())
        return Refuse(outcome, "the layer takes no entities: is it locked?");
    auto verb = std::make_unique<ZvVEntNewDualSource>(&m_drawing);
    verb->AddDualSourceTripple(m_drawing.GetEntity(name), a, b);
    outcome.names.push_back(name.value);
    m_last = verb->Entities();
    return Do(std::move(verb), outcome);
}

bool EditSession::Round(const EditLine& line, EditOutcome& outcome) {
    const auto step = DrawingUnits(m_drawing).Distance(line.words[1]);
    if (!step || !(*step > 0))
        return Refuse(outcome, "'" + line.words[1] + "' is no step: write for example: round all 0.5");
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVEntModify>(&m_drawing);
    bool haveVertices = false;
    for (int i = 0; i < what.Count(); ++i) {
        ZvEntity& entity = *what.GetEntity(i);
        if (!entity.IsMLVEntity())
            continue;
        haveVertices = true;
        dvect<Vec4d> vertices = PointsOf(entity);
        for (Vec4d& vertex : vertices) {
            vertex.x = std::round(vertex.x / *step) * *step;
            vertex.y = std::round(vertex.y / *step) * *step;
        }
        std::unique_ptr<ZvEntity> rounded = entity.Clone();
        if (XStringW reason; rounded->MLVSetLinearVertices(vertices) && rounded->OkForInsertion(&reason) &&
                             !SamePoints(PointsOf(*rounded), PointsOf(entity)))
            verb->AddOriginalAndModified(entity, std::move(rounded));
    }
    return haveVertices ? Do(std::move(verb), outcome) : Refuse(outcome, "nothing there has vertices");
}

bool EditSession::Hide(const EditLine& line, EditOutcome& outcome) {
    return Switch(line.words[0], ZvEntity::kVisible, line.command == "show", outcome);
}

bool EditSession::Protect(const EditLine& line, EditOutcome& outcome) {
    return Switch(line.words[0], ZvEntity::kSelectable, line.command == "release", outcome);
}

bool EditSession::Switch(const std::string& which, uint16_t flag, bool on, EditOutcome& outcome) {
    ZvSelection what;
    auto verb = std::make_unique<ZvVEntTiny>(m_drawing);
    if (!ResolveSome(which, what, outcome))
        return false;
    if (!verb->Collect(what))
        return Refuse(outcome, "stopped");
    verb->SetFlag(flag, on);
    return Do(std::move(verb), outcome);
}

bool EditSession::Text(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVTextChange>(m_drawing);
    for (int i = 0; i < what.Count(); ++i)
        verb->AddAttribute(*what.GetEntity(i), XStringW::FromUtf8(line.words[1]),
                           XStringW::FromUtf8(line.words[2]));
    return verb->IsNullOp() ? Refuse(outcome, "no layer there has a text '" + line.words[1] +
                                                  "': make it with: attribute WHAT FIELD=VALUE")
                            : Do(std::move(verb), outcome);
}
