#include "Apps/zvd/SyntheticMap.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Progress.h"
#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// splitmix64 (S. Vigna, public domain): the same numbers everywhere. Only +, -, *, / and sqrt are used on them, which every
// machine rounds alike.
class Random {
public:
    explicit Random(uint64_t seed) : m_state(seed) {}
    /// 0 inclusive to 1 exclusive.
    double Unit() {
        uint64_t z = m_state += 0x9E3779B97F4A7C15ull;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return double((z ^ (z >> 31)) >> 11) * 0x1p-53;
    }
    /// About normal: mean 0, deviation 1.
    double Bell() { return (Unit() + Unit() + Unit() + Unit() - 2) * 1.7320508075688772; }

private:
    uint64_t m_state;
};

Vec2d Unit(Vec2d v) {
    const double length = std::sqrt(v.LengthSq());
    return length > 0 ? v * (1 / length) : Vec2d{1, 0};
}

struct Town {
    Vec2d center;
    double radius;
};

std::vector<Town> MakeTowns(const SyntheticMap& map, Random& random) {
    std::vector<Town> towns;
    for (uint32_t i = 0; i < std::max(map.towns, 1u); ++i) {
        const double share = random.Unit();
        towns.push_back({{random.Unit() * map.size, random.Unit() * map.size},
                         map.size * (0.002 + 0.03 * share * share)});
    }
    return towns;
}

// A fifth lies in the open country.
Vec2d Place(const SyntheticMap& map, const std::vector<Town>& towns, Random& random) {
    if (random.Unit() < 0.2)
        return {random.Unit() * map.size, random.Unit() * map.size};
    const Town& town = towns[size_t(random.Unit() * double(towns.size()))];
    return {town.center.x + random.Bell() * town.radius, town.center.y + random.Bell() * town.radius};
}

void Walk(std::vector<Vec2d>& line, Vec2d start, uint32_t count, double step, Random& random) {
    line.assign(1, start);
    Vec2d direction = Unit({random.Bell(), random.Bell()});
    for (uint32_t i = 1; i < count; ++i) {
        direction = Unit({direction.x + 0.4 * random.Bell(), direction.y + 0.4 * random.Bell()});
        line.push_back(line.back() + direction * (step * (0.5 + random.Unit())));
    }
}

// Corners of a square, bent outwards and shaken: star-shaped around the centre, so that it never crosses itself.
void Ring(std::vector<Vec2d>& points, Vec2d center, uint32_t count, double radius, bool clockwise,
          Random& random) {
    const size_t first = points.size();
    for (uint32_t i = 0; i < count; ++i) {
        const double t = 4.0 * i / count;
        const int side = int(t);
        const double f = 2 * (t - side) - 1;
        const Vec2d corner = side == 0   ? Vec2d{1, f}
                             : side == 1 ? Vec2d{-f, 1}
                             : side == 2 ? Vec2d{-1, -f}
                                         : Vec2d{f, -1};
        points.push_back(center + Unit(corner) * (radius * (0.7 + 0.3 * random.Unit())));
    }
    if (clockwise)
        std::reverse(points.begin() + std::ptrdiff_t(first), points.end());
}

} // namespace

bool SyntheticMap::Fill(ZvDrawing& drawing, ZvCore::IProgress& progress) const {
    Random random(seed);
    const std::vector<Town> placed = MakeTowns(*this, random);
    drawing.SetLinearPrecision(1e-3);
    std::vector<ZvLayer*> targets;
    for (uint32_t i = 0; i < std::max(layers, 1u); ++i)
        targets.push_back(drawing.LayerTable()->InsertNew(XStringW::Format("lines%u", i + 1)));
    std::vector<Vec2d> points;
    const double step = size / 20000;
    for (uint64_t i = 0; i < lines; ++i) {
        auto line = std::make_unique<ZvXLine>();
        Walk(points, Place(*this, placed, random), std::max(vertices, 2u), step, random);
        line->SetPolyline(points, false, &drawing);
        targets[i % targets.size()]->Adopt(std::move(line));
        if (i % 4096 == 0 && !progress.Step("making lines", i, lines + polygons))
            return false;
    }
    ZvLayer* areas = polygons ? drawing.LayerTable()->InsertNew(u"areas") : nullptr;
    const uint32_t ring = std::max(vertices, 4u);
    for (uint64_t i = 0; i < polygons; ++i) {
        auto area = std::make_unique<ZvXLine>();
        const Vec2d center = Place(*this, placed, random);
        points.clear();
        Ring(points, center, ring, step * 4, false, random);
        uint32_t parts[2] = {ZvXLine::kClosedBit, ring | ZvXLine::kClosedBit};
        if (i % 3 == 0)
            Ring(points, center, ring, step, true, random);
        area->Set(i % 3 == 0 ? 2 : 1, parts, uint32_t(points.size()), true, false, false, false, false,
                  &points[0].x, 0, &drawing);
        areas->Adopt(std::move(area));
        if (i % 4096 == 0 && !progress.Step("making areas", lines + i, lines + polygons))
            return false;
    }
    return true;
}
