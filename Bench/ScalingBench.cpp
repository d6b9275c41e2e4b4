#include "Apps/zvd/SyntheticMap.h"
#include "Report.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/IFile.h"
#include "ZvCore/Progress.h"
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

namespace {

struct Costs {
    std::vector<std::pair<double, double>> insert, load, query;
};

void BenchSize(Report& report, uint64_t lines, Costs& costs) {
    const std::string n = "scaling " + std::to_string(lines);
    ZvCore::NoProgress progress;
    SyntheticMap map;
    map.lines = lines;
    map.vertices = 4;
    std::unique_ptr<ZvDrawing> drawing;
    report.Time(
        n + ": make and insert", [&] { map.Fill(*drawing, progress); }, 1,
        [&] { drawing = std::make_unique<ZvDrawing>(); });
    ZvCore::MemFile file;
    {
        ZvNativeOptions options;
        options.compressionLevel = 0;
        ZvNativeFile native(options);
        (void)native.WriteFile(drawing.get(), &file);
    }
    std::unique_ptr<ZvDrawing> loaded;
    report.Time(
        n + ": load",
        [&] {
            file.Seek(0);
            ZvNativeFile native;
            (void)native.ReadFile(loaded.get(), &file);
        },
        3, [&] { loaded = std::make_unique<ZvDrawing>(); });
    const ZvBNode& tree = loaded->LayerTable()->GetByName(u"lines1")->Tree();
    std::mt19937_64 random(3);
    const double half = 0.5 * map.size * 3 / std::sqrt(double(lines));
    dvect<ZvEntity*> found;
    report.Time(n + ": 10,000 windows", [&] {
        for (int i = 0; i < 10000; ++i) {
            const double x = double(random() >> 11) * 0x1p-53 * map.size,
                         y = double(random() >> 11) * 0x1p-53 * map.size;
            ZvBounds2D window;
            window.Set(x - half, y - half, x + half, y + half);
            found.clear();
            tree.PureSelectRect(window, found);
        }
    });
    costs.insert.push_back({double(lines), report.Get(n + ": make and insert")});
    costs.load.push_back({double(lines), report.Get(n + ": load")});
    costs.query.push_back({double(lines), report.Get(n + ": 10,000 windows")});
}

} // namespace

void BenchScaling(Report& report) {
    Costs costs;
    uint64_t most = 10'000'000;
    if (const char* asked = std::getenv("ZELVAN_BENCH_LARGEST"))
        most = std::strtoull(asked, nullptr, 10);
    for (uint64_t lines = 10'000; lines <= most; lines *= 10)
        BenchSize(report, lines, costs);
    report.Line("\nHow cost grows from 10 thousand to %.0f million lines (exponent of n; 1 is proportional)",
                double(most) / 1e6);
    report.Line("  make and insert one by one %.2f, load %.2f, window query of a like number of hits %.2f",
                Report::Exponent(costs.insert), Report::Exponent(costs.load), Report::Exponent(costs.query));
}
