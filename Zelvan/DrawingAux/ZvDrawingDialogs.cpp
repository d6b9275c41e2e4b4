#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"

std::vector<std::filesystem::path> ZvDrawingDialogs::AskOpen(bool many, bool* includeUnused,
                                                             bool* customMerge) {
    IZvHost* host = m_drawing.Host();
    if (!host)
        return {};
    ZvFileRequest request;
    request.title = ZvStrings::GetW(ZvStr::OpenDrawing);
    request.many = many;
    request.filters.push_back({ZvStrings::GetW(ZvStr::DrawingFilter), u"*.zvf;*.zvd;*.ZelvanTextures"});
    request.filters.push_back({ZvStrings::GetW(ZvStr::DrawingFilter), u"*.ZelvanTextures"});
    for (const ZvFileFormat* format : m_drawing.FileFormats().FileFormatInList())
        if (format != m_drawing.FileFormats().GetNativeLoadFormat() && format->id != "zvf")
            request.filters.push_back({format->name, XStringW::FromUtf8(format->Wildcards())});
    if (includeUnused)
        request.options.push_back({ZvStrings::GetW(ZvStr::IncludeUnusedRecords), *includeUnused});
    if (customMerge)
        request.options.push_back({ZvStrings::GetW(ZvStr::CustomMerge), *customMerge});
    const auto files = host->AskFile(request);
    if (includeUnused)
        *includeUnused = request.options[0].on;
    if (customMerge)
        *customMerge = request.options.back().on;
    return files;
}

std::filesystem::path ZvDrawingDialogs::AskSave(const std::filesystem::path& start) {
    IZvHost* host = m_drawing.Host();
    if (!host)
        return {};
    ZvFileRequest request;
    request.title = ZvStrings::GetW(ZvStr::SaveDrawing);
    request.save = true;
    request.start = start;
    request.defaultExtension = u".zvd";
    for (const ZvFileFormat* format : m_drawing.FileFormats().FileFormatOutList())
        if (!format->extensions.empty())
            request.filters.push_back({format->name, XStringW::FromUtf8(format->Wildcards())});
    const auto files = host->AskFile(request);
    if (files.empty())
        return {};
    std::filesystem::path file = files.front();
    if (!file.has_extension())
        file += ".zvd";
    if (!m_drawing.FileFormats().GetSaveFormat(file)) {
        host->Tell(ZvStrings::GetW(ZvStr::SaveNeedsExtension));
        return {};
    }
    return file;
}

std::filesystem::path ZvDrawingDialogs::AskOpenBackup(const std::filesystem::path& start) {
    IZvHost* host = m_drawing.Host();
    if (!host)
        return {};
    ZvFileRequest request;
    request.title = ZvStrings::GetW(ZvStr::OpenDrawing);
    request.start = start;
    request.filters.push_back({ZvStrings::GetW(ZvStr::BackupFilter), u"*.zvd.bak"});
    const auto files = host->AskFile(request);
    return files.empty() ? std::filesystem::path() : files.front();
}

bool ZvDrawingDialogs::AskOpenMany(int count) {
    IZvHost* host = m_drawing.Host();
    return !host || host->AskYesNo(XStringW::Format(ZvStrings::Get(ZvStr::OpenManyQuestion), count), true);
}

std::filesystem::path ZvDrawingDialogs::AskMedia(const std::filesystem::path& missing) {
    IZvHost* host = m_drawing.Host();
    if (!host || !host->AskYesNo(XStringW::Format(ZvStrings::Get(ZvStr::MediaMissing),
                                                  ZvPlatform::PathToUtf8(missing).c_str()),
                                 false))
        return {};
    ZvFileRequest request;
    request.title = ZvStrings::GetW(ZvStr::LocateMediaTitle);
    request.start = missing;
    const std::string extension = ZvPlatform::PathToUtf8(missing.extension());
    const XStringW pattern = XStringW::FromUtf8("*" + (extension.empty() ? ".*" : extension));
    request.filters.push_back({pattern, pattern});
    const auto files = host->AskFile(request);
    return files.empty() ? std::filesystem::path() : files.front();
}

void ZvDrawingDialogs::ShowErrors(int heading, const IOErrorSet& errors) {
    if (errors.IsEmpty())
        return;
    if (IZvHost* host = m_drawing.Host())
        host->ShowErrors(ZvStrings::GetW(heading), errors);
    else
        ZvLog::Write(ZvLog::Level::Error, std::string(ZvStrings::Get(heading)) + "\n" + errors.ToString());
}

void ZvDrawingDialogs::ShowLoadErrors(const IOErrorSet& errors) {
    ShowErrors(ZvStr::FileLoadErrors, errors);
}

void ZvDrawingDialogs::ShowSaveErrors(const IOErrorSet& errors) {
    ShowErrors(ZvStr::FileSaveErrors, errors);
}

bool ZvDrawingDialogs::AskSaveAfterFatalError() {
    IZvHost* host = m_drawing.Host();
    return host && host->AskYesNo(ZvStrings::GetW(ZvStr::FatalErrorSave), true);
}

void ZvDrawingDialogs::TellOutOfSync() {
    if (IZvHost* host = m_drawing.Host())
        host->Tell(ZvStrings::GetW(ZvStr::OutOfSync));
    else
        ZvLog::Write(ZvLog::Level::Error, ZvStrings::Get(ZvStr::OutOfSync));
}
