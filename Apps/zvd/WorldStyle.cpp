#include "Apps/zvd/WorldStyle.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include <array>
#include <map>
#include <vector>

namespace {

constexpr std::array<ZvColor, 7> kTints{
    ZvColor(244, 217, 168), ZvColor(205, 222, 176), ZvColor(233, 192, 180), ZvColor(198, 213, 226),
    ZvColor(222, 203, 224), ZvColor(246, 232, 185), ZvColor(186, 219, 206)};
constexpr ZvColor kBorder(150, 135, 120), kCoast(44, 84, 122), kGrid(120, 160, 195, 90), kFrame(60, 70, 84);

ZvLayer* LayerNamed(ZvDrawing& drawing, const XStringW& name) {
    ZvLayer* layer = drawing.LayerTable()->GetByName(name);
    return layer ? layer : drawing.LayerTable()->InsertNew(name);
}

// Greedy: each country takes the tint least used among those whose boxes meet its own.
void TintCountries(ZvLayer& layer) {
    std::map<const ZvEntity*, size_t> tintOf;
    std::vector<ZvEntity*> countries;
    layer.Tree().ForEach([&](ZvEntity* entity) {
        countries.push_back(entity);
        return true;
    });
    for (ZvEntity* country : countries) {
        std::array<int, kTints.size()> uses{};
        dvect<ZvEntity*> near;
        ZvBounds2D box = country->Bounds2D();
        layer.Tree().PureSelectRect(box, near);
        for (ZvEntity* other : near)
            if (const auto found = tintOf.find(other); found != tintOf.end())
                ++uses[found->second];
        size_t best = country->Name32() % kTints.size();
        for (size_t i = 0; i < kTints.size(); ++i)
            if (uses[(country->Name32() + i) % kTints.size()] < uses[best])
                best = (country->Name32() + i) % kTints.size();
        tintOf[country] = best;
        if (ZvFilledEntity* filled = country->ToFilledEntity())
            filled->SetBrush(ZvBrush::Solid(kTints[best]));
    }
}

void AddLine(ZvLayer& layer, ZvDrawing& drawing, const std::vector<Vec2d>& points, bool closed) {
    auto line = std::make_unique<ZvXLine>();
    line->SetPolyline(points, closed, &drawing);
    line->SetLineWidth(ZvLineWidth::ByLayer());
    layer.Adopt(std::move(line));
}

void AddGrid(ZvDrawing& drawing) {
    ZvLayer& grid = *LayerNamed(drawing, u"grid");
    grid.SetColor(kGrid);
    for (int longitude = -150; longitude <= 150; longitude += 30)
        AddLine(grid, drawing, {{double(longitude), -90}, {double(longitude), 90}}, false);
    for (int latitude = -60; latitude <= 60; latitude += 30)
        AddLine(grid, drawing, {{-180, double(latitude)}, {180, double(latitude)}}, false);
    ZvLayer& frame = *LayerNamed(drawing, u"frame");
    frame.SetColor(kFrame);
    frame.SetLineWidth(ZvLineWidth::Pixels(2));
    AddLine(frame, drawing, {{-180, -90}, {180, -90}, {180, 90}, {-180, 90}}, true);
}

} // namespace

void StyleWorld(ZvDrawing& drawing) {
    ZvLayerTable& layers = *drawing.LayerTable();
    AddGrid(drawing);
    if (ZvLayer* countries = layers.GetByName(u"countries")) {
        countries->SetColor(kBorder);
        TintCountries(*countries);
        layers.MoveLayerAbove(countries, layers.GetByName(u"grid"));
    }
    if (ZvLayer* coast = layers.GetByName(u"coastline")) {
        coast->SetColor(kCoast);
        layers.MoveLayerToTop(coast);
    }
    layers.MoveLayerToTop(layers.GetByName(u"frame"));
}
