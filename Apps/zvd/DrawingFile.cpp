#include "Apps/zvd/DrawingFile.h"
#include "Apps/zvd/ConsoleHost.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/Platform.h"
#include <nlohmann/json.hpp>
#include <set>

namespace fs = std::filesystem;

namespace {

std::string Quoted(const fs::path& path) {
    return "'" + ZvPlatform::PathToUtf8(path) + "'";
}

constexpr const char* kCheckHint = "; 'zvd check' tells what is damaged";

bool IsNative(const ZvFileFormat& format) {
    const ZvFileFormat* native = ZvFileFormatServer::Application().GetNativeLoadFormat();
    return native && format.provider == native->provider;
}

std::string FirstError(const IOErrorSet& errors) {
    for (const IOErrorSet::Item& item : errors.Items())
        if (item.severity == IOErrorSet::Severity::Error)
            return item.text;
    return "no reason is known";
}

ExitCode CheckOutput(const Console& console, const fs::path& file) {
    std::error_code failed;
    if (fs::is_directory(file, failed))
        return console.Fail(ExitCode::NoOutput, Quoted(file) + " is a folder; give the name of a file in it");
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, failed))
        return console.Fail(ExitCode::NoOutput,
                            "folder " + Quoted(folder) + " does not exist; make it first");
    if (!ZvPlatform::IsFolderWritable(folder))
        return console.Fail(ExitCode::NoOutput,
                            "folder " + Quoted(folder) + " cannot be written to; choose another one");
    return ExitCode::Ok;
}

} // namespace

ExitCode CheckInput(const Console& console, const fs::path& file) {
    std::error_code failed;
    const fs::file_status status = fs::status(file, failed);
    if (!fs::exists(status))
        return console.Fail(ExitCode::NoInput, Quoted(file) + " does not exist; check the name");
    if (fs::is_directory(status))
        return console.Fail(ExitCode::NoInput, Quoted(file) + " is a folder; give a file in it");
    std::string why;
    const auto opened = ZvCore::DiskFile::Open(file, ZvCore::DiskFile::Mode::Read, why);
    if (!opened)
        return console.Fail(ExitCode::NoInput, why);
    if (opened->Length() == 0)
        return console.Fail(ExitCode::BadInput, Quoted(file) + " is empty; restore it from a copy");
    return ExitCode::Ok;
}

std::string KnownExtensions(bool save) {
    std::string list;
    std::set<std::string> told;
    const ZvFileFormatServer& server = ZvFileFormatServer::Application();
    for (const ZvFileFormat* format : save ? server.FileFormatOutList() : server.FileFormatInList())
        if (!format->extensions.empty() && list.size() < 200 &&
            told.insert(format->extensions.front()).second)
            list += (list.empty() ? "." : ", .") + format->extensions.front();
    return list;
}

ExitCode LoadDrawing(const Console& console, const fs::path& file, const ZvFileOptions& options,
                     LoadedDrawing& loaded) {
    if (const ExitCode code = CheckInput(console, file); code != ExitCode::Ok)
        return code;
    loaded.format = ZvFileFormatServer::Application().GetFormat(file);
    if (!loaded.format || !loaded.format->canLoad)
        return console.Fail(ExitCode::NoInput,
                            Quoted(file) + " is of no known kind; known are " + KnownExtensions(false));
    loaded.drawing = std::make_unique<ZvDrawing>();
    ZvFileOptions all = options;
    all.losses = &loaded.losses;
    ConsoleProgress progress(console);
    const double start = IZvClock::System().MonotonicSeconds();
    const Zv::Status status =
        loaded.format->provider->Load(*loaded.drawing, file, *loaded.format, all, loaded.errors, progress);
    loaded.seconds = IZvClock::System().MonotonicSeconds() - start;
    if (status == Zv::Status::Cancelled || ZvPlatform::WasInterrupted())
        return console.Fail(ExitCode::Interrupted,
                            "interrupted while reading " + Quoted(file) + "; nothing was written");
    if (!Zv::Ok(status))
        return console.Fail(ExitCode::BadInput, "cannot load " + Quoted(file) + ": " +
                                                    FirstError(loaded.errors) +
                                                    (IsNative(*loaded.format) ? kCheckHint : ""));
    return ExitCode::Ok;
}

ExitCode SaveDrawing(const Console& console, ZvDrawing& drawing, const fs::path& file, ZvFileOptions options,
                     int level, IOErrorSet& errors) {
    if (const ExitCode code = CheckOutput(console, file); code != ExitCode::Ok)
        return code;
    const ZvFileFormatServer& server = ZvFileFormatServer::Application();
    const ZvFileFormat* format = server.GetSaveFormat(file);
    if (!format)
        return console.Fail(ExitCode::NoOutput,
                            Quoted(file) + ": no format that can be saved has this extension; known are " +
                                KnownExtensions(true));
    options.values.Set("CompressionLevel", int64_t(level));
    ConsoleHost host(console);
    IZvHost* former = drawing.Host();
    drawing.SetHost(&host);
    const Zv::Status status = drawing.DrawingIO()->SaveFile(file, format, ZvIOFlag::Quiet, &errors, &options);
    drawing.SetHost(former);
    if (status == Zv::Status::Cancelled || ZvPlatform::WasInterrupted())
        return console.Fail(ExitCode::Interrupted,
                            "interrupted while writing " + Quoted(file) + "; it is as it was before");
    if (!Zv::Ok(status))
        return console.Fail(ExitCode::NoOutput, "cannot save " + Quoted(file) + ": " + FirstError(errors));
    return ExitCode::Ok;
}

nlohmann::ordered_json ToJson(const ZvLossReport& losses) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& [what, count] : losses.Items())
        list.push_back(
            {{"fate", ZvLossReport::FateName(what.first)}, {"what", what.second}, {"count", count}});
    return list;
}

nlohmann::ordered_json ToJson(const IOErrorSet& errors) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const IOErrorSet::Item& item : errors.Items())
        list.push_back({{"severity", item.severity == IOErrorSet::Severity::Error ? "error" : "warning"},
                        {"number", item.code},
                        {"text", item.text},
                        {"count", item.count}});
    return list;
}
