#include "GdalPeer.h"
#include "Maps.h"
#include "PlainSave.h"
#include "Report.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/DiskFile.h"
#include <memory>

namespace fs = std::filesystem;

namespace {

void Load(ZvDrawing& drawing, const fs::path& path, bool verify) {
    std::string why;
    const auto file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Read, why);
    ZvNativeOptions options;
    options.verifyChecksum = options.blockDigests = verify;
    ZvNativeFile native(options);
    if (!file || !Zv::Ok(native.ReadFile(&drawing, file.get())))
        Die("cannot load " + path.string() + " " + why);
}

void BenchMapIo(Report& report, BenchMap& map) {
    const std::string& name = map.name;
    for (int level : {0, 1, 3, 9}) {
        map.native[level] = BenchMaps::Get().Folder() / (name + std::to_string(level) + ".zvd");
        report.Time(
            name + ": save, level " + std::to_string(level),
            [&] { SavePlain(*map.drawing, map.native[level], level); }, level == 9 ? 1 : 3);
        if (!fs::exists(map.native[level]))
            continue;
        report.Set(name + " size " + std::to_string(level), double(fs::file_size(map.native[level])));
        std::unique_ptr<ZvDrawing> target;
        const auto fresh = [&] { target = std::make_unique<ZvDrawing>(); };
        report.Time(
            name + ": load, level " + std::to_string(level), [&] { Load(*target, map.native[level], true); },
            3, fresh);
        if (level < 6)
            report.Time(
                name + ": load unverified, level " + std::to_string(level),
                [&] { Load(*target, map.native[level], false); }, 3, fresh);
    }
    if (!GdalPeer::IsHere())
        return;
    map.flatGeobuf = BenchMaps::Get().Folder() / (name + ".fgb");
    GdalPeer::Prepare(*map.drawing);
    report.Time(
        name + ": GDAL writes FlatGeobuf", [&] { GdalPeer::Write(map.flatGeobuf); }, 3,
        [&] { fs::remove(map.flatGeobuf); });
    if (!fs::exists(map.flatGeobuf))
        return;
    report.Set(name + " size fgb", double(fs::file_size(map.flatGeobuf)));
    report.Time(
        name + ": GDAL reads FlatGeobuf", [&] { GdalPeer::Read(map.flatGeobuf); }, 3,
        [] { GdalPeer::Forget(); });
    GdalPeer::Forget();
}

} // namespace

void BenchIo(Report& report) {
    for (BenchMap* map : BenchMaps::Get().All())
        BenchMapIo(report, *map);
    report.Heading("Load and save (GDAL's FlatGeobuf: read into kept features, written with its index)");
    for (BenchMap* map : BenchMaps::Get().All()) {
        const std::string& n = map->name;
        const double loadAim = n == "synth" ? 1.5 : 3;
        report.Ratio(n + ", load level 0, ms", n + ": load, level 0", n + ": GDAL reads FlatGeobuf", loadAim,
                     "ms", 1000);
        report.Ratio(n + ", load level 0, digests not checked", n + ": load unverified, level 0",
                     n + ": GDAL reads FlatGeobuf", loadAim, "ms", 1000);
        report.Ratio(n + ", load level 1", n + ": load, level 1", n + ": GDAL reads FlatGeobuf", loadAim,
                     "ms", 1000);
        report.Ratio(n + ", load level 1, digests not checked", n + ": load unverified, level 1",
                     n + ": GDAL reads FlatGeobuf", loadAim, "ms", 1000);
        report.Ratio(n + ", load level 9 (solid)", n + ": load, level 9", n + ": GDAL reads FlatGeobuf", 0,
                     "ms", 1000);
        for (int level : {0, 1, 3})
            report.Ratio(n + ", save level " + std::to_string(level),
                         n + ": save, level " + std::to_string(level), n + ": GDAL writes FlatGeobuf", 3,
                         "ms", 1000);
        for (int level : {0, 1, 3, 9})
            report.Ratio(n + ", file at level " + std::to_string(level), n + " size " + std::to_string(level),
                         n + " size fgb", level == 1 || level == 3 ? 2 : 0, "MB", 1e-6);
    }
}
