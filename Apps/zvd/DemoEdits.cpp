#include "Apps/zvd/DemoEdits.h"
#include "Apps/zvd/CompareDrawings.h"
#include "Apps/zvd/ConsoleHost.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Verbs/ZvVTransform.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvRecovery.h"
#include "ZvCore/MemFile.h"
#include "ZvCore/Platform/Platform.h"

namespace fs = std::filesystem;

namespace {

/// The drawing as bytes, entities in the order of their names.
std::vector<uint8_t> Bytes(ZvDrawing& drawing) {
    ZvCore::MemFile file;
    ZvNativeOptions options;
    options.orderByName = true;
    options.compressionLevel = 1;
    ZvNativeFile native(options);
    return Zv::Ok(native.WriteFile(&drawing, &file)) ? file.Take() : std::vector<uint8_t>();
}

/// Empty when the file holds the drawing, else the difference.
std::string DifferenceOf(const fs::path& file, const ZvDrawing& drawing) {
    ZvDrawing other;
    std::string why;
    if (!Zv::Ok(other.DrawingIO()->LoadNative(file, ZvIOFlag::Quiet)))
        return "it cannot be loaded";
    return AreDrawingsEqual(drawing, other, why) ? "" : why;
}

/// Moves everything and takes it back. Empty when undo and redo were exact.
std::string EditAndUndo(ZvDrawing& drawing) {
    const std::vector<uint8_t> before = Bytes(drawing);
    ZvSelection all(&drawing);
    drawing.SelectAll(all);
    drawing.DoVerb(new ZvVTransform(all, Mat4d::Translation({1.5, 0.25, 0})));
    const std::vector<uint8_t> after = Bytes(drawing);
    if (before.empty() || before == after)
        return "the edit changed nothing";
    if (!drawing.Verbs()->Undo() || Bytes(drawing) != before)
        return "undo did not bring the drawing back";
    if (!drawing.Verbs()->Redo() || Bytes(drawing) != after)
        return "redo did not bring the edit back";
    return drawing.Verbs()->Undo() && Bytes(drawing) == before ? "" : "the second undo was not exact";
}

std::string SaveOver(ZvDrawing& drawing, const fs::path& file) {
    IOErrorSet errors;
    for (int i = 0; i < 2; ++i)
        if (!Zv::Ok(drawing.DrawingIO()->SaveFile(file, nullptr, ZvIOFlag::Quiet, &errors)))
            return "cannot save: " + errors.ToString();
    fs::path backup = file;
    backup += ".bak";
    const std::string difference = DifferenceOf(backup, drawing);
    return difference.empty() ? "" : "the backup is not the old file: " + difference;
}

/// Cuts the file as a power cut could and has it recovered.
std::string CutAndRecover(ZvDrawing& drawing, const fs::path& file) {
    std::error_code failed;
    fs::resize_file(file, fs::file_size(file, failed) / 2, failed);
    const ZvBackupSettings settings = ZvBackupSettings::Application();
    const ZvBackups backups(ZvCore::IFileSystem::System(), settings, IZvClock::System(), nullptr);
    const ZvRecovery recovery(ZvCore::IFileSystem::System(), backups);
    const ZvRecovery::Finding finding = recovery.Look(file);
    if (failed || finding.IsWhole() || !finding.Best())
        return "the damage was not found";
    if (const std::string why = recovery.Restore(finding, *finding.Best()); !why.empty())
        return why;
    const std::string difference = DifferenceOf(file, drawing);
    return difference.empty() ? "" : "what was recovered is not the drawing: " + difference;
}

} // namespace

ExitCode ShowEdits(const Console& console, ZvDrawing& drawing, const fs::path& file) {
    ConsoleHost host(console);
    IZvHost* const former = drawing.Host();
    drawing.SetHost(&host);
    const std::string name = ZvPlatform::PathToUtf8(file);
    console.Line("5. Moving every country, and taking it back");
    std::string wrong = EditAndUndo(drawing);
    if (wrong.empty()) {
        console.Line("   After undo every byte is as before, after redo as after the edit.");
        console.Line("6. Saving over an old file, " + name);
        wrong = SaveOver(drawing, file);
    }
    if (wrong.empty()) {
        console.Line("   The old file is kept as " + name + ".bak.");
        console.Line("7. Cutting " + name + " in half, as a power cut might, and recovering it");
        drawing.DrawingIO()->ForgetDrawingFileName();
        wrong = CutAndRecover(drawing, file);
    }
    drawing.SetHost(former);
    if (!wrong.empty())
        return console.Fail(ExitCode::Internal, wrong);
    console.Line("   The drawing is whole again; the damaged file is kept as " + name + ".damaged.");
    return ExitCode::Ok;
}
