#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvSaveVerifier.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"

namespace fs = std::filesystem;

namespace {

/// What is written of a file until it is whole: deleted at the end of the scope unless it was released.
class HalfFile {
public:
    HalfFile(ZvCore::IFileSystem& files, fs::path path) : m_files(files), m_path(std::move(path)) {}
    ~HalfFile() { (void)Discard(); }
    HalfFile(const HalfFile&) = delete;
    HalfFile& operator=(const HalfFile&) = delete;
    void Release() { m_path.clear(); }
    /// False, told to the log, when it cannot be deleted.
    bool Discard() {
        if (m_path.empty())
            return true;
        const fs::path path = std::exchange(m_path, {});
        const std::string why = m_files.Delete(path);
        if (!why.empty())
            ZvLog::Write(ZvLog::Level::Warning, ZvPlatform::PathToUtf8(path) + " not deleted: " + why);
        return why.empty();
    }

private:
    ZvCore::IFileSystem& m_files;
    fs::path m_path;
};

/// The errors of the set in one line without a full stop, to be a part of another text.
std::string Reasons(const IOErrorSet& errors) {
    std::string line;
    for (const IOErrorSet::Item& item : errors.Items())
        if (item.severity == IOErrorSet::Severity::Error)
            line += (line.empty() ? "" : "; ") + item.text;
    while (line.ends_with('.') || line.ends_with('\n'))
        line.pop_back();
    return line.empty() ? ZvStrings::Get(ZvStr::SaveUnknownReason) : line;
}

template <class... Values>
void AddText(IOErrorSet& errors, int text, const fs::path& path, const Values&... values) {
    errors.Add(0,
               XStringA::Format(ZvStrings::Get(text), ZvPlatform::PathToUtf8(path).c_str(), values...).Str());
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
    options.files = m_files;
    if (!(flags & ZvIOFlag::Quiet) && !options.host)
        options.host = m_drawing.Host();
    StoreCurrentView();
    const Zv::Status status = SaveUnderLock(file, format, flags, options, errors);
    --m_saving;
    m_drawing.ResumeAutoCleanup();
    return status;
}

/// The lock comes first: what is looked at under it stays so until the file is in place.
Zv::Status ZvDrawingIO::SaveUnderLock(const fs::path& file, const ZvFileFormat& format, uint32_t flags,
                                      ZvFileOptions& options, IOErrorSet& errors) {
    const fs::path target = TargetOf(file);
    ZvDrawingLock lock;
    if ((IsNative(format) && !LockFor(target, lock, errors)) || !MayReplace(target, flags, errors))
        return Zv::Status::NotStarted;
    const ZvWaitCursor wait(m_drawing.Host());
    const bool native = PreSave(format);
    if (flags & ZvIOFlag::SelectionOnly && !options.selection && m_savedSelection)
        options.selection = &*m_savedSelection;
    m_drawing.PostEvent(ZvDrawingEvent::PreSave, native);
    if (!m_fileName.empty() && target == TargetOf(m_fileName)) // under another name it follows nothing
        m_stampToWrite = NextStamp(target);
    const Zv::Status status =
        WriteAndReplace(target, format, m_backupSettings->instantBackup, flags, options, errors);
    m_stamp.revision = std::exchange(m_stampToWrite, {}).value_or(m_stamp).revision;
    if (Zv::Ok(status)) {
        if (!(flags & ZvIOFlag::KeepName)) {
            m_stamp.digest = native ? ZvSaveVerifier(*m_files).DigestOf(target) : Guid();
            SetDrawingFileName(file);
            m_seen = m_files->Look(target);
            if (lock.IsFor(target))
                m_lock = std::move(lock);
            m_lastFormat = format.id;
            MarkClean();
        }
        m_drawing.PostEvent(ZvDrawingEvent::Saved);
    }
    PostSave();
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
    // Linked images are named relative to where the drawing is now, not to where it goes.
    bitmaps->PrepareSave(m_fileName.empty() ? "" : ZvPlatform::PathToUtf8(m_files->FolderOf(m_fileName)));
    return IsNative(format);
}

void ZvDrawingIO::PostSave() {
    if (m_savedSelection)
        m_drawing.ChangeSelection(*m_savedSelection);
    m_savedSelection.reset();
}

// --- what stands in the way --------------------------------------------------------------------------------

/// False, said, when the target cannot or must not be written.
bool ZvDrawingIO::MayReplace(const fs::path& target, uint32_t flags, IOErrorSet& errors) {
    const ZvCore::IFileSystem::Info there = m_files->Look(target);
    const fs::path folder = m_files->FolderOf(target);
    if (m_files->IsNameTooLong(target))
        AddText(errors, ZvStr::SaveNameTooLong, target, int(target.filename().native().size()),
                int(ZvCore::IFileSystem::kLongestName));
    else if (there.isFolder)
        AddText(errors, ZvStr::SaveIsFolder, target);
    else if (there.isSpecial)
        AddText(errors, ZvStr::SaveIsSpecial, target);
    else if (there.exists && there.isReadOnly)
        AddText(errors, ZvStr::SaveIsReadOnly, target);
    else if (!m_files->CanWriteIn(folder))
        AddText(errors, ZvStr::SaveFolderUnwritable, target, ZvPlatform::PathToUtf8(folder).c_str());
    else if (const bool ours = m_seen.exists && target == TargetOf(m_fileName);
             !ours || !there.exists || there == m_seen)
        return true;
    else {
        IZvHost* host = flags & ZvIOFlag::Quiet ? nullptr : m_drawing.Host();
        const XStringW question = XStringW::Format(ZvStrings::Get(ZvStr::SaveChangedQuestion),
                                                   ZvPlatform::PathToUtf8(target).c_str());
        if (host && host->AskYesNo(question, false))
            return true;
        AddText(errors, ZvStr::SaveChangedKept, target);
    }
    return false;
}

/// `lock` is taken for the target, unless the drawing has that lock. False, said, when another program has it.
bool ZvDrawingIO::LockFor(const fs::path& target, ZvDrawingLock& lock, IOErrorSet& errors) {
    if (m_lock.IsFor(target) || lock.Take(*m_files, target) != ZvDrawingLock::Outcome::Held)
        return true;
    AddText(errors, ZvStr::SaveIsEdited, target, std::to_string(lock.Other().process).c_str(),
            lock.Other().host.c_str());
    return false;
}

// --- writing; the numbers are those of Docs/saving.md -------------------------------------------------------

Zv::Status ZvDrawingIO::WriteAndReplace(const fs::path& target, const ZvFileFormat& format, bool keepBackup,
                                        uint32_t flags, ZvFileOptions& options, IOErrorSet& errors) {
    const bool replaces = m_files->Look(target).exists;
    const bool direct = !replaces || format.replacesTarget;
    const fs::path written = direct ? target : m_files->TemporaryBeside(target);
    HalfFile half(*m_files, format.replacesTarget ? fs::path() : written);
    std::string why;
    const Zv::Status status = Write(written, format, flags, options, errors, why);
    if (IsNative(format) && status == Zv::Status::NotStarted)
        half.Release(); // it was not made, so what may be there is not ours
    if (status == Zv::Status::Cancelled)
        return status;
    if (!Zv::Ok(status) || (!direct && !(why = PutInPlace(written, target, keepBackup, errors)).empty())) {
        const int text = !direct || half.Discard() ? replaces ? ZvStr::SaveFailed : ZvStr::SaveFailedNew
                                                   : ZvStr::SaveFailedLeft;
        AddText(errors, text, target, why.c_str());
        return Zv::Ok(status) ? Zv::Status::Failure : status;
    }
    if (direct)
        half.Release();
    why = m_files->SyncFolder(m_files->FolderOf(target));
    if (!why.empty())
        ZvLog::Write(ZvLog::Level::Warning, "folder not flushed: " + why);
    if (IZvHost* host = m_drawing.Host(); host && !direct)
        host->SetStatusText(ZvStrings::GetW(ZvStr::SaveDone));
    return Zv::Status::Success;
}

/// Warnings go to `errors`, the reasons of a failure to `why`.
Zv::Status ZvDrawingIO::Write(const fs::path& file, const ZvFileFormat& format, uint32_t flags,
                              ZvFileOptions& options, IOErrorSet& errors, std::string& why) {
    uint64_t unwritten = 0;
    options.unwritten = &unwritten;
    options.mustBeNew = true; // a temporary file, or a first save: nobody else's is written over
    IZvHost* host = m_drawing.Host();
    const auto progress = host ? host->StartProgress(ZvStrings::GetW(ZvStr::SavingDrawing))
                               : std::unique_ptr<ZvCore::IProgress>(new ZvCore::NoProgress);
    IOErrorSet writing;
    const Zv::Status status = format.provider->Save(m_drawing, file, format, options, writing, *progress);
    options.unwritten = nullptr;
    for (const IOErrorSet::Item& item : writing.Items())
        if (Zv::Ok(status) || item.severity == IOErrorSet::Severity::Warning)
            for (int i = 0; i < item.count; ++i)
                errors.Add(item.code, item.text, item.severity);
    if (!Zv::Ok(status)) {
        why = Reasons(writing);
        return status;
    }
    if (IsNative(format) && !(flags & ZvIOFlag::NoVerify))
        why = VerifyWritten(file, options, unwritten);
    return Zv::FromBool(why.empty());
}

/// Empty, or why the target could not be replaced.
std::string ZvDrawingIO::PutInPlace(const fs::path& written, const fs::path& target, bool keepBackup,
                                    IOErrorSet& errors) {
    IZvHost* host = m_drawing.Host();
    const auto tell = [&](int text) {
        if (host)
            host->SetStatusText(ZvStrings::GetW(text));
    };
    std::string why = m_files->CopyPermissions(target, written);
    if (!why.empty())
        ZvLog::Write(ZvLog::Level::Warning, "permissions not kept: " + why);
    std::string withoutBackup;
    const fs::path backup = keepBackup ? Backups().GetInstantBackupFilename(target) : fs::path();
    if (!backup.empty()) {
        tell(ZvStr::ShiftingBackups);
        withoutBackup = m_files->ReplaceKeeping(written, target, backup);
        if (withoutBackup.empty())
            return {};
    }
    tell(ZvStr::ReplacingOriginal);
    why = m_files->Rename(written, target);
    if (!why.empty())
        return XStringA::Format(ZvStrings::Get(ZvStr::SaveCannotReplace), why.c_str()).Str();
    if (!withoutBackup.empty())
        errors.Add(0,
                   XStringA::Format(ZvStrings::Get(ZvStr::SaveBackupFailed),
                                    ZvPlatform::PathToUtf8(backup).c_str(), withoutBackup.c_str())
                       .Str(),
                   IOErrorSet::Severity::Warning);
    return {};
}

/// Empty, or what is wrong with the file. `unwritten`: entities that are known to be missing in it.
std::string ZvDrawingIO::VerifyWritten(const fs::path& file, const ZvFileOptions& options,
                                       uint64_t unwritten) const {
    std::optional<uint64_t> entities;
    if (!options.selection || !options.values.GetBool("SelectionOnly", true))
        entities = ZvSaveVerifier::Census(m_drawing) - unwritten;
    const std::string why = ZvSaveVerifier(*m_files).Check(file, entities);
    return why.empty() ? why : XStringA::Format(ZvStrings::Get(ZvStr::SaveNotVerified), why.c_str()).Str();
}

Zv::Status ZvDrawingIO::SaveNativeInternal(const fs::path& file, uint32_t flags, IOErrorSet& errors,
                                           const ZvFileOptions* given) {
    ZvFileOptions options = given ? *given : ZvFileOptions();
    ApplySaveFlags(flags, options);
    options.files = m_files;
    const ZvFileFormat& format = *m_drawing.FileFormats().GetNativeSaveFormat();
    ZvCore::NoProgress progress;
    return format.provider->Save(m_drawing, file, format, options, errors, progress);
}
