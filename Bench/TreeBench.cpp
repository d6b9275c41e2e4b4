#include "BoostPeer.h"
#include "Maps.h"
#include "Report.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr size_t kWindows = 20000;
constexpr double kHitsWanted = 36;

ZvBNode& LinesTree() {
    return BenchMaps::Get().Synth().drawing->LayerTable()->GetByName(u"lines1")->Tree();
}

// The lines leave their layer for the time of the benchmark.
std::vector<ZvEntity*> BorrowLines() {
    std::vector<ZvEntity*> entities;
    LinesTree().ForEach([&](ZvEntity* entity) {
        entities.push_back(entity);
        return true;
    });
    LinesTree().ClearAll();
    std::shuffle(entities.begin(), entities.end(), std::mt19937(7));
    return entities;
}

size_t Query(const ZvBNode& tree, const std::vector<ZvBounds2D>& windows) {
    size_t hits = 0;
    dvect<ZvEntity*> found;
    for (const ZvBounds2D& window : windows) {
        found.clear();
        tree.PureSelectRect(window, found);
        hits += found.size();
    }
    return hits;
}

// Around random entities, of a side that gives the wanted number of hits on average.
std::vector<ZvBounds2D> MakeWindows(const ZvBNode& tree, const std::vector<ZvBounds2D>& boxes) {
    std::mt19937 random(11);
    std::vector<Vec2d> centers;
    for (size_t i = 0; i < kWindows; ++i)
        centers.push_back({boxes[random() % boxes.size()].minX, boxes[random() % boxes.size()].minY});
    double low = 0, high = 1e5;
    std::vector<ZvBounds2D> windows(kWindows);
    for (int step = 0; step < 24; ++step) {
        const double half = (low + high) / 2;
        for (size_t i = 0; i < kWindows; ++i)
            windows[i].Set(centers[i].x - half, centers[i].y - half, centers[i].x + half,
                           centers[i].y + half);
        const std::vector<ZvBounds2D> sample(windows.begin(), windows.begin() + 2000);
        (double(Query(tree, sample)) / double(sample.size()) < kHitsWanted ? low : high) = half;
    }
    return windows;
}

} // namespace

void BenchTree(Report& report) {
    std::vector<ZvEntity*> entities = BorrowLines();
    std::vector<ZvBounds2D> boxes;
    for (ZvEntity* entity : entities)
        boxes.push_back(entity->Bounds2D());
    std::unique_ptr<ZvBNode> tree, bulk;
    report.Time(
        "tree: insert a million lines one by one",
        [&] {
            for (ZvEntity* entity : entities)
                tree->Insert(entity);
        },
        3,
        [&] {
            if (tree)
                tree->ClearAll();
            tree = std::make_unique<ZvBNode>();
        });
    const std::vector<ZvBounds2D> windows = MakeWindows(*tree, boxes);
    size_t hits = 0;
    report.Time("tree: 20,000 windows", [&] { hits = Query(*tree, windows); });
    tree->ClearAll();
    report.Time(
        "tree: insert in bulk", [&] { bulk->InsertBulk(entities); }, 3,
        [&] {
            if (bulk)
                bulk->ClearAll();
            bulk = std::make_unique<ZvBNode>();
        });
    report.Time("tree: 20,000 windows, built in bulk", [&] { hits = Query(*bulk, windows); });
    bulk->ClearAll();
    LinesTree().InsertBulk(entities);
    BoostPeer peer;
    if (BoostPeer::IsHere()) {
        size_t peerHits = 0;
        report.Time(
            "boost: R*-tree one by one", [&] { peer.InsertDynamic(boxes); }, 1);
        report.Time("boost: 20,000 windows, R*", [&] { peerHits = peer.QueryDynamic(windows); });
        report.Time(
            "boost: packed", [&] { peer.BuildPacked(boxes); }, 3);
        report.Time("boost: 20,000 windows, packed", [&] { peer.QueryPacked(windows); });
        if (hits != peerHits)
            std::fprintf(stderr, "WARNING: %zu hits, the peer found %zu\n", hits, peerHits);
    }
    report.Heading(
        "Layer tree, a million lines in random order (Boost.Geometry's R*-tree, 16 entries a node)");
    report.Ratio("insert one by one", "tree: insert a million lines one by one", "boost: R*-tree one by one",
                 1, "ms", 1000);
    report.Ratio("insert in bulk, against the packed R-tree", "tree: insert in bulk", "boost: packed", 0,
                 "ms", 1000);
    report.Ratio("20,000 windows of about 36 hits, against R*", "tree: 20,000 windows",
                 "boost: 20,000 windows, R*", 1, "ms", 1000);
    report.Ratio("the same, built in bulk, against packed", "tree: 20,000 windows, built in bulk",
                 "boost: 20,000 windows, packed", 0, "ms", 1000);
    report.Line("%.1f hits a window, %.0f thousand windows a second", double(hits) / kWindows,
                kWindows / report.Get("tree: 20,000 windows") / 1000);
}
