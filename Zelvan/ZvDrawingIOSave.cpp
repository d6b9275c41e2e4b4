#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeProvider.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"

namespace fs = std::filesystem;

namespace {

/// Deletes the file at the end of the scope unless it was released.
class HalfFile {
public:
    explicit HalfFile(fs::path path) : m_path(std::move(path)) {}
    ~HalfFile() {
        if (!m_path.empty())
            (void)ZvPlatform::DeleteFileIfThere(m_path);
    }
    HalfFile(const HalfFile&) = delete;
    HalfFile& operator=(const HalfFile&) = delete;
    void Release() { m_path.clear(); }

private:
    fs::path m_path;
};

/// A name beside the target that no file has.
fs::path TemporaryName(const fs::path& target) {
    fs::path name = target;
    name += "." + Guid::New().ToString().ToUtf8().substr(0, 8) + ".tmp";
    return name;
}

/// The file that a chain of links ends at: replacing it keeps the links.
fs::path Resolved(const fs::path& target) {
    std::error_code error;
    const fs::path resolved = fs::is_symlink(target, error) ? fs::canonical(target, error) : fs::path();
    return error || resolved.empty() ? target : resolved;
}

} // namespace

void ZvDrawingIO::ApplySaveFlags(uint32_t flags, ZvFileOptions& options) {
    constexpr int64_t kSolidLevel = 9;
    options.providerOption = flags & ZvIOFlag::ProviderOption;
    if (flags & ZvIOFlag::PurgeUnused)
        options.values.Set("PurgeUnused", true);
    if (flags & ZvIOFlag::SelectionOnly)
        options.values.Set("SelectionOnly", true);
    if (flags & ZvIOFlag::Preview)
        options.values.Set("Preview", true);
    if (flags & ZvIOFlag::Solid)
        options.values.Set("CompressionLevel", kSolidLevel);
}

fs::path ZvDrawingIO::NormalizeName(const fs::path& file) {
    XStringW name = XStringW::FromUtf8(ZvPlatform::PathToUtf8(file.filename()));
    const XStringW lower = name.ToLower();
    size_t cut = 0;
    if (lower.EndsWith(u".zvf.zvd"))
        cut = 8;
    else if (lower.EndsWith(u".zvf"))
        cut = 4;
    else
        return file;
    name = XStringW(name.View().substr(0, name.Length() - cut)) + u".zvd";
    return file.parent_path() / ZvPlatform::PathFromUtf8(name.ToUtf8());
}

Zv::Status ZvDrawingIO::SaveNative(const fs::path& file, uint32_t flags, IOErrorSet* errors) {
    return SaveFile(file, m_drawing.FileFormats().GetNativeSaveFormat(), flags, errors);
}

Zv::Status ZvDrawingIO::SaveFile(const fs::path& given, const ZvFileFormat* format, uint32_t flags,
                                 IOErrorSet* errors, const ZvFileOptions* options) {
    IOErrorSet own;
    IOErrorSet& set = errors ? *errors : own;
    const fs::path file = NormalizeName(given);
    if (!format)
        format = m_drawing.FileFormats().GetSaveFormat(file);
    if (!format)
        format = m_drawing.FileFormats().GetNativeSaveFormat();
    Zv::Status status = Zv::Status::NotStarted;
    if (m_saving || m_loading)
        set.Add(0, ZvStrings::Get(ZvStr::FileBusy));
    else if (file.filename().empty() || !format->canSave)
        set.Add(0, XStringA::Format(ZvStrings::Get(ZvStr::SaveNoFormat), ZvPlatform::PathToUtf8(file).c_str())
                       .Str());
    else
        status = SaveFileInternal(file, *format, flags, set, options);
    if (!(flags & ZvIOFlag::Quiet))
        ShowSaveErrors(set);
    return status;
}

Zv::Status ZvDrawingIO::SaveFileInternal(const fs::path& file, const ZvFileFormat& format, uint32_t flags,
                                         IOErrorSet& errors, const ZvFileOptions* given) {
    ++m_saving;
    m_drawing.SuspendAutoCleanup();
    ZvFileOptions options = given ? *given : ZvFileOptions();
    ApplySaveFlags(flags, options);
    if (!(flags & ZvIOFlag::Quiet) && !options.host)
        options.host = m_drawing.Host();
    Zv::Status status = Zv::Status::Failure;
    {
        const ZvWaitCursor wait(m_drawing.Host());
        StoreCurrentView();
        const bool native = PreSave(format);
        if (flags & ZvIOFlag::SelectionOnly && !options.selection && m_savedSelection)
            options.selection = &*m_savedSelection;
        m_drawing.PostEvent(ZvDrawingEvent::PreSave, native);
        status = WriteAndReplace(Resolved(file), format, flags, options, errors);
    }
    if (Zv::Ok(status)) {
        if (!(flags & ZvIOFlag::KeepName)) {
            m_fileName = file;
            m_lastFormat = format.id;
            SetDrawingDirty(false);
        }
        m_drawing.PostEvent(ZvDrawingEvent::Saved);
    }
    PostSave();
    --m_saving;
    m_drawing.ResumeAutoCleanup();
    return status;
}

/// Keeps the selection and brings tables up to date. True for the native format.
bool ZvDrawingIO::PreSave(const ZvFileFormat& format) {
    m_savedSelection.emplace(m_drawing.CurrentSelection());
    m_drawing.ClearCurrentSelection();
    ZvBitmapTable* bitmaps = m_drawing.BitmapTable();
    if (bitmaps->SavingChanges()) {
        m_drawing.Verbs()->PurgeUndo();
        for (int i = 0; i < m_drawing.LayoutTable()->Count(); ++i)
            if (ZvDrawing* layout = m_drawing.LayoutTable()->Get(i)->Drawing())
                layout->Verbs()->PurgeUndo();
        m_drawing.RefreshRecordUsage();
    }
    bitmaps->PrepareSave();
    return format.provider == m_drawing.FileFormats().GetNativeSaveFormat()->provider;
}

void ZvDrawingIO::PostSave() {
    if (m_savedSelection)
        m_drawing.ChangeSelection(*m_savedSelection);
    m_savedSelection.reset();
}

/// The save itself; see the class for its steps.
Zv::Status ZvDrawingIO::WriteAndReplace(const fs::path& target, const ZvFileFormat& format, uint32_t flags,
                                        const ZvFileOptions& options, IOErrorSet& errors) {
    std::error_code ignored;
    const bool replaces = fs::exists(target, ignored);
    const bool direct = !replaces || format.replacesTarget;
    const fs::path written = direct ? target : TemporaryName(target);
    HalfFile half(format.replacesTarget ? fs::path() : written);
    IZvHost* host = m_drawing.Host();
    const auto progress = host ? host->StartProgress(ZvStrings::GetW(ZvStr::SavingDrawing))
                               : std::unique_ptr<ZvCore::IProgress>(new ZvCore::NoProgress);
    const Zv::Status status = format.provider->Save(m_drawing, written, format, options, errors, *progress);
    if (!Zv::Ok(status)) {
        if (!errors.HasErrors())
            errors.Add(
                0, XStringA::Format(ZvStrings::Get(ZvStr::SaveFailed), ZvPlatform::PathToUtf8(target).c_str())
                       .Str());
        return status;
    }
    const bool native = format.provider == m_drawing.FileFormats().GetNativeSaveFormat()->provider;
    if (native && !(flags & ZvIOFlag::NoVerify) && !VerifyWritten(written, errors))
        return Zv::Status::Failure;
    if (!direct) {
        if (host)
            host->SetStatusText(ZvStrings::GetW(ZvStr::ReplacingOriginal));
        fs::permissions(written, fs::status(target, ignored).permissions(), ignored);
        if (const std::string why = ZvPlatform::RenameReplace(written, target); !why.empty()) {
            errors.Add(0, XStringA::Format(ZvStrings::Get(ZvStr::SaveCannotReplace),
                                           ZvPlatform::PathToUtf8(target).c_str(), why.c_str())
                              .Str());
            return Zv::Status::Failure;
        }
        if (host)
            host->SetStatusText(ZvStrings::GetW(ZvStr::SaveDone));
    }
    half.Release();
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (const std::string why = ZvPlatform::SyncFolder(folder); !why.empty())
        ZvLog::Write(ZvLog::Level::Warning, "folder not flushed: " + why);
    return Zv::Status::Success;
}

bool ZvDrawingIO::VerifyWritten(const fs::path& file, IOErrorSet& errors) const {
    std::string why;
    XStringW reason;
    const auto stream = ZvCore::DiskFile::Open(file, ZvCore::DiskFile::Mode::Read, why);
    if (stream && ZvNativeFile::IsValidFile(stream.get(), true, reason))
        return true;
    errors.Add(0, XStringA::Format(ZvStrings::Get(ZvStr::SaveNotVerified),
                                   stream ? reason.ToUtf8().c_str() : why.c_str())
                      .Str());
    return false;
}
