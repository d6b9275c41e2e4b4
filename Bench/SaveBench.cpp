#include "Maps.h"
#include "PlainSave.h"
#include "Report.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"

namespace fs = std::filesystem;

namespace {

void SaveSafely(ZvDrawing& drawing, const fs::path& path, int level, uint32_t flags) {
    IOErrorSet errors;
    ZvFileOptions options;
    options.values.Set("CompressionLevel", int64_t(level));
    if (!Zv::Ok(drawing.DrawingIO()->SaveFile(path, nullptr, flags | ZvIOFlag::Quiet, &errors, &options)))
        Die("cannot save " + path.string() + ": " + errors.ToString());
}

} // namespace

void BenchSave(Report& report) {
    BenchMap& map = BenchMaps::Get().Synth();
    const fs::path path = BenchMaps::Get().Folder() / "safe.zvd";
    report.Line(
        "\nSaving over an old file: synced, read back and verified, backup kept, against a plain write");
    for (int level : {0, 1, 3}) {
        const std::string name = "save " + std::to_string(level);
        report.Time(name + ", plain", [&] { SavePlain(*map.drawing, path, level); });
        map.drawing->DrawingIO()->ForgetDrawingFileName();
        report.Time(name + ", safe", [&] { SaveSafely(*map.drawing, path, level, 0); });
        report.Time(name + ", unverified",
                    [&] { SaveSafely(*map.drawing, path, level, ZvIOFlag::NoVerify); });
        report.Line("level %d: plain %.0f ms, safe %.0f ms (%.2f times; aim at most 1.6), without reading "
                    "back %.0f ms",
                    level, report.Get(name + ", plain") * 1000, report.Get(name + ", safe") * 1000,
                    report.Get(name + ", safe") / report.Get(name + ", plain"),
                    report.Get(name + ", unverified") * 1000);
    }
    map.drawing->DrawingIO()->ForgetDrawingFileName();
}
