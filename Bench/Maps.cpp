#include "Maps.h"
#include "Apps/zvd/SyntheticMap.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/Guid.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Progress.h"
#include <cstdio>
#include <cstdlib>
#ifdef ZELVAN_HAVE_GIS
#include "Modules/Gis/ZvGdalProvider.h"
#endif

namespace fs = std::filesystem;

namespace {

void CountContent(BenchMap& map) {
    for (ZvLayer* layer : map.drawing->LayerTable()->GetDrawOrder())
        layer->Tree().ForEach([&](ZvEntity* entity) {
            ++map.entities;
            map.vertices += uint64_t(entity->MLVGetVertexCount());
            return true;
        });
    std::fprintf(stderr, "%s: %llu entities, %llu vertices\n", map.name.c_str(),
                 static_cast<unsigned long long>(map.entities),
                 static_cast<unsigned long long>(map.vertices));
}

#ifdef ZELVAN_HAVE_GIS
void LoadRealMap(BenchMap& map) {
    fs::path file;
    ZvFileOptions options;
    if (const char* chosen = std::getenv("ZELVAN_BENCH_MAP")) {
        file = chosen;
    } else if (const char* data = std::getenv("ZELVAN_TEST_DATA")) {
        file = fs::path(data) / "maps/natural_earth_10m.gpkg";
        options.values.Set("Layers", XStringW(u"coastline,borders,rivers,lakes"));
    }
    if (file.empty() || !fs::exists(file)) {
        std::fprintf(stderr, "no real map: set ZELVAN_TEST_DATA or ZELVAN_BENCH_MAP\n");
        return;
    }
    ZvGdalProvider provider;
    ZvFileFormat format;
    for (const ZvFileFormat& known : provider.Formats())
        if (known.Matches(file) && known.canLoad && !format.canLoad)
            format = known;
    auto drawing = std::make_unique<ZvDrawing>();
    IOErrorSet errors;
    ZvCore::NoProgress progress;
    if (Zv::Ok(provider.Load(*drawing, file, format, options, errors, progress)))
        map.drawing = std::move(drawing);
    else
        std::fprintf(stderr, "%s", errors.ToString().c_str());
}
#else
void LoadRealMap(BenchMap&) {}
#endif

} // namespace

BenchMaps& BenchMaps::Get() {
    static BenchMaps maps;
    return maps;
}

BenchMaps::BenchMaps() {
    m_folder = fs::temp_directory_path() / ("zelvan-bench-" + Guid::New().ToString().ToUtf8().substr(0, 8));
    fs::create_directories(m_folder);
    const char* lines = std::getenv("ZELVAN_BENCH_LINES");
    MakeUp(m_synth, "synth", lines ? std::strtoull(lines, nullptr, 10) : 1'000'000, 10);
    MakeUp(m_long, "long", 190'000, 58);
    m_real.name = "real";
    LoadRealMap(m_real);
    if (m_real.drawing)
        CountContent(m_real);
}

void BenchMaps::MakeUp(BenchMap& map, const char* name, uint64_t lines, uint32_t vertices) {
    map.name = name;
    map.drawing = std::make_unique<ZvDrawing>();
    ZvCore::NoProgress progress;
    SyntheticMap content;
    content.lines = lines;
    content.vertices = vertices;
    content.Fill(*map.drawing, progress);
    CountContent(map);
}

BenchMaps::~BenchMaps() {
    std::error_code failed;
    fs::remove_all(m_folder, failed);
}

std::vector<BenchMap*> BenchMaps::All() {
    std::vector<BenchMap*> maps{&m_synth, &m_long};
    if (m_real.drawing)
        maps.push_back(&m_real);
    return maps;
}
