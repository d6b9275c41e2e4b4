#include "Apps/zvd/EditShape.h"
#include "Apps/zvd/DrawingUnits.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"

namespace {

using Entities = std::vector<std::unique_ptr<ZvEntity>>;
using Rings = std::vector<std::vector<Vec3d>>;

/// Points from `words[1]` on, a new ring behind each "/". False when a word is neither.
bool ReadRings(const DrawingUnits& units, const std::vector<std::string>& words, size_t end, Rings& rings,
               std::string& why) {
    rings.assign(1, {});
    for (size_t i = 1; i < end; ++i) {
        if (words[i] == "/") {
            rings.emplace_back();
            continue;
        }
        const auto point = units.Place(words[i]);
        if (!point) {
            why = "'" + words[i] + "' is no point: " + units.PlaceHint();
            return false;
        }
        rings.back().push_back(*point);
    }
    return true;
}

bool HasZ(const Rings& rings) {
    for (const auto& ring : rings)
        for (const Vec3d& point : ring)
            if (point.z != 0)
                return true;
    return false;
}

Entities MakeLine(ZvDrawing& drawing, const Rings& rings, bool polygon, bool closed, std::string& why) {
    std::vector<uint32_t> starts;
    std::vector<Vec4d> vertices;
    for (const auto& ring : rings) {
        if (ring.size() < (polygon ? 3u : 2u)) {
            why = polygon ? "each ring of a polygon needs three points or more"
                          : "a polyline needs two points or more";
            return {};
        }
        starts.push_back(uint32_t(vertices.size()) | (polygon || closed ? ZvXLine::kClosedBit : 0));
        for (const Vec3d& point : ring)
            vertices.push_back({point.x, point.y, point.z, 0});
    }
    auto line = std::make_unique<ZvXLine>();
    if (!line->Set(uint32_t(starts.size()), starts.data(), vertices, polygon, HasZ(rings), false, 0,
                   &drawing)) {
        why = "these points make no line: they reach too far for one";
        return {};
    }
    Entities made;
    made.push_back(std::move(line));
    return made;
}

} // namespace

Entities EditShape::Make(ZvDrawing& drawing, const std::vector<std::string>& words, std::string& why) {
    const std::string& kind = words[0];
    if (kind != "polyline" && kind != "polygon" && kind != "point") {
        why = "'" + kind + "' cannot be added: use polyline, polygon or point";
        return {};
    }
    const bool closed = kind == "polyline" && words.back() == "close";
    Rings rings;
    if (!ReadRings(DrawingUnits(drawing), words, words.size() - (closed ? 1 : 0), rings, why))
        return {};
    if (kind != "point")
        return MakeLine(drawing, rings, kind == "polygon", closed, why);
    Entities made;
    for (const auto& ring : rings)
        for (const Vec3d& point : ring)
            made.push_back(std::make_unique<ZvPointEnt>(point));
    if (made.empty())
        why = "a point needs coordinates: X,Y";
    return made;
}

bool EditShape::Style(ZvEntity& entity, const EditLine& line, std::string& why) {
    auto* const lineEntity = dynamic_cast<ZvLineEntity*>(&entity);
    auto* const filled = dynamic_cast<ZvFilledEntity*>(&entity);
    for (const auto& [key, value] : line.settings) {
        const XStringW text = XStringW::FromUtf8(value);
        ZvColor color;
        ZvLineWidth width;
        ZvBrush brush;
        const bool isColor = color.Parse(text) || color.ParseHex(text);
        if (key == "color" && isColor) {
            entity.SetColor(color);
        } else if (key == "width" && lineEntity && width.Parse(text)) {
            lineEntity->SetLineWidth(width);
        } else if (key == "fill" && filled && (isColor || brush.Parse(text))) {
            filled->SetBrush(isColor ? ZvBrush::Solid(color) : brush);
        } else if (key != "layer") {
            why = "'" + key + "=" + value +
                  "' cannot be set here: known are color=#3366CC, width=Points:1.0, fill=#FFEECC";
            return false;
        }
    }
    return true;
}

XStringW EditShape::ColorText(const std::string& text) {
    const XStringW wide = XStringW::FromUtf8(text);
    ZvColor color;
    return text.rfind('#', 0) == 0 && color.ParseHex(wide) ? color.ToString() : wide;
}
