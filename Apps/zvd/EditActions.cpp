#include "Apps/zvd/DrawingUnits.h"
#include "Apps/zvd/EditSession.h"
#include "Apps/zvd/EditShape.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Verbs/ZvVChangeSS.h"
#include "Zelvan/Verbs/ZvVDrawOrder.h"
#include "Zelvan/Verbs/ZvVEntNew.h"
#include "Zelvan/Verbs/ZvVErase.h"
#include "Zelvan/Verbs/ZvVMoveGrip.h"
#include "Zelvan/Verbs/ZvVMoveToLayer.h"
#include "Zelvan/Verbs/ZvVPropertyChange.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Mat4T.h"

namespace {

/// The matrix with `about` as its fixed point.
Mat4d About(const Vec3d& about, const Mat4d& xform) {
    return Mat4d::Translation(about) * xform * Mat4d::Translation({-about.x, -about.y, -about.z});
}

/// The point of "about=", else the origin; nothing when it is none.
std::optional<Vec3d> FixedPoint(const ZvDrawing& drawing, const EditLine& line) {
    const auto found = line.settings.find("about");
    return found == line.settings.end() ? std::optional<Vec3d>(Vec3d{})
                                        : DrawingUnits(drawing).Place(found->second);
}

} // namespace

// --- entities -----------------------------------------------------------------------------------------------

bool EditSession::Add(const EditLine& line, EditOutcome& outcome) {
    std::vector<std::unique_ptr<ZvEntity>> made = EditShape::Make(m_drawing, line.words, outcome.text);
    if (made.empty())
        return false;
    XStringW layerName;
    if (const auto found = line.settings.find("layer"); found != line.settings.end()) {
        if (!FindLayer(found->second, outcome))
            return false;
        layerName = XStringW::FromUtf8(found->second);
    }
    for (const auto& entity : made)
        if (XStringW reason;
            !EditShape::Style(*entity, line, outcome.text) || !entity->OkForInsertion(&reason))
            return Refuse(outcome, outcome.text.empty() ? reason.ToUtf8() : outcome.text);
    auto verb = std::make_unique<ZvVEntNew>(&m_drawing);
    ZvSelection added(&m_drawing);
    for (auto& entity : made) {
        const ZvName name = m_drawing.Insert(std::move(entity), layerName);
        ZvEntity* inserted = m_drawing.GetEntity(name);
        if (!inserted)
            continue;
        verb->Add(inserted);
        added.Insert(name);
        outcome.names.push_back(name.value);
    }
    if (added.IsEmpty())
        return Refuse(outcome, "the layer takes no entities: is it locked?");
    m_last = added;
    return Do(std::move(verb), outcome);
}

bool EditSession::Erase(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    return ResolveSome(line.words[0], what, outcome) && Do(std::make_unique<ZvVErase>(what), outcome);
}

bool EditSession::Transform(const std::string& what, const Mat4d& xform, EditOutcome& outcome) {
    ZvSelection entities;
    return ResolveSome(what, entities, outcome) &&
           Do(std::make_unique<ZvVTransform>(entities, xform), outcome);
}

bool EditSession::Move(const EditLine& line, EditOutcome& outcome) {
    const auto by = DrawingUnits(m_drawing).Way(line.words[1]);
    if (!by)
        return Refuse(outcome, "'" + line.words[1] + "' is no distance: write DX,DY without blanks");
    return Transform(line.words[0], Mat4d::Translation(*by), outcome);
}

bool EditSession::Rotate(const EditLine& line, EditOutcome& outcome) {
    const auto angle = DrawingUnits(m_drawing).Angle(line.words[1]);
    const auto about = FixedPoint(m_drawing, line);
    if (!angle || !about)
        return Refuse(outcome, "write: rotate WHAT DEGREES about=X,Y");
    return Transform(line.words[0], About(*about, Mat4d::RotationZ(*angle)), outcome);
}

bool EditSession::Scale(const EditLine& line, EditOutcome& outcome) {
    const auto factor = EditLine::Number(line.words[1]);
    const auto about = FixedPoint(m_drawing, line);
    if (!factor || *factor == 0 || !about)
        return Refuse(outcome, "write: scale WHAT FACTOR about=X,Y, with a factor that is not 0");
    return Transform(line.words[0], About(*about, Mat4d::Scaling({*factor, *factor, *factor})), outcome);
}

bool EditSession::Grip(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    const auto index = EditLine::Whole(line.words[1]);
    const auto to = DrawingUnits(m_drawing).Place(line.words[2]);
    if (!index || *index > 0x7FFFFFFF || !to)
        return Refuse(outcome, "write: grip NAME INDEX X,Y");
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVMoveGrip>(&m_drawing);
    if (what.Count() != 1)
        return Refuse(outcome, "'" + line.words[0] + "' means " + std::to_string(what.Count()) +
                                   " entities: name the one whose grip goes elsewhere");
    ZvGrips grips;
    what.GetEntity(0)->GetGrips(grips);
    if (!verb->AddGripPair(*what.GetEntity(0), int(*index), *to))
        return Refuse(outcome, "'" + line.words[0] + "' has no grip " + line.words[1] + ": it has " +
                                   std::to_string(grips.size()) + ", counted from 0");
    return Do(std::move(verb), outcome);
}

bool EditSession::ToLayer(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    ZvLayer* layer = FindLayer(line.words[1], outcome);
    return layer && ResolveSome(line.words[0], what, outcome) &&
           Do(std::make_unique<ZvVMoveToLayer>(*layer, what), outcome);
}

bool EditSession::Property(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVPropertyChange>(what);
    for (const auto& [key, value] : line.settings) {
        if (key == "color")
            verb->Set("Color", EditShape::ColorText(value));
        else if (key == "width")
            verb->Set("LineWidth", XStringW::FromUtf8(value));
        else if (key == "fill")
            verb->Set("Brush", ZvColor().ParseHex(XStringW::FromUtf8(value))
                                   ? u"Solid:" + EditShape::ColorText(value)
                                   : XStringW::FromUtf8(value));
        else
            return Refuse(outcome, "'" + key + "' is no property: known are color, width, fill");
    }
    if (line.settings.empty())
        return Refuse(outcome, "nothing to set: write for example: property " + line.words[0] + " color=Red");
    return Do(std::move(verb), outcome);
}

bool EditSession::Attribute(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    if (line.settings.empty())
        return Refuse(outcome, "nothing to set: write: attribute WHAT FIELD=VALUE");
    auto verb = std::make_unique<ZvVPropertyChange>(what);
    for (const auto& [field, value] : line.settings)
        verb->SetAttribute(XStringW::FromUtf8(field), XStringW::FromUtf8(value), true);
    return Do(std::move(verb), outcome);
}

bool EditSession::Order(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what;
    const bool front = line.words[1] == "front";
    if (!front && line.words[1] != "back")
        return Refuse(outcome, "write: order WHAT front, or: order WHAT back");
    if (!ResolveSome(line.words[0], what, outcome))
        return false;
    auto verb = std::make_unique<ZvVDrawOrder>(what);
    verb->Bring(front ? ZvEntityOrder::ToFront : ZvEntityOrder::ToBack);
    return Do(std::move(verb), outcome);
}

bool EditSession::Select(const EditLine& line, EditOutcome& outcome) {
    ZvSelection what(&m_drawing);
    if (line.words[0] != "none" && !ResolveSome(line.words[0], what, outcome))
        return false;
    return Do(std::make_unique<ZvVChangeSS>(what), outcome);
}
