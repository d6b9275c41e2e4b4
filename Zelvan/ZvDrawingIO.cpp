#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/DrawingAux/ZvSwapManager.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvNamedView.h"
#include "Zelvan/Tables/ZvViewTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvNativeProvider.h"
#include "Zelvan/ZvRecovery.h"
#include "Zelvan/ZvSaveVerifier.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"

namespace {

/// Raises a counter for a scope.
class Nested {
public:
    explicit Nested(int& counter) : m_counter(counter) { ++m_counter; }
    ~Nested() { --m_counter; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

private:
    int& m_counter;
};

const char16_t* const kStoredView = u"__CurrentView__";

std::unique_ptr<ZvCore::IProgress> StartProgress(IZvHost* host, int title) {
    if (host)
        return host->StartProgress(ZvStrings::GetW(title));
    return std::make_unique<ZvCore::NoProgress>();
}

} // namespace

ZvDrawingIO::ZvDrawingIO(ZvDrawing& drawing)
    : m_drawing(drawing), m_files(&ZvCore::IFileSystem::System()),
      m_backupSettings(&ZvBackupSettings::Application()) {
    ResetSaveTime();
}

ZvDrawingIO::~ZvDrawingIO() = default;

void ZvDrawingIO::SetFiles(ZvCore::IFileSystem& files) {
    m_lock.Release();
    m_files = &files;
}

void ZvDrawingIO::SetDrawingFileName(const std::filesystem::path& given) {
    const std::filesystem::path file = m_files->Absolute(given);
    if (file != m_fileName) {
        m_lock.Release();
        m_seen = {};
        m_lastPeriodic = -1;
    }
    m_fileName = file;
}

/// The file that a save or a load of that name gets at.
std::filesystem::path ZvDrawingIO::TargetOf(const std::filesystem::path& file) const {
    return m_files->Resolve(m_files->Absolute(file));
}

bool ZvDrawingIO::IsNative(const ZvFileFormat& format) const {
    return format.provider == m_drawing.FileFormats().GetNativeSaveFormat()->provider;
}

const ZvFileFormat* ZvDrawingIO::GetLastFormat() const {
    return m_lastFormat.empty() ? nullptr : m_drawing.FileFormats().GetFormatById(m_lastFormat);
}

// --- dirty tracking ---------------------------------------------------------------------------------------

void ZvDrawingIO::ResetSaveTime() {
    m_suppressUntil = DateTime::FromUtc(2000, 1, 1);
}

void ZvDrawingIO::SetDrawingDirty(bool dirty) {
    const bool was = m_dirty;
    m_dirty = dirty;
    if (ZvDrawing* container = m_drawing.ParentLayoutDrawing(); dirty && container)
        container->SetModified();
    else
        m_unsaved = dirty;
    if (was != dirty && !m_drawing.Destroying())
        m_drawing.PostEvent(ZvDrawingEvent::ModifiedChanged, dirty);
}

/// What is in the file are the drawing and those of its layouts.
void ZvDrawingIO::MarkClean() {
    for (int i = 0; i < m_drawing.LayoutTable()->Count(); ++i)
        if (ZvDrawing* layout = m_drawing.LayoutTable()->Get(i)->Drawing())
            layout->DrawingIO()->MarkClean();
    SetDrawingDirty(false);
}

bool ZvDrawingIO::IsDrawingDirty() const {
    return m_dirty && m_drawing.Clock().Now() >= m_suppressUntil;
}

void ZvDrawingIO::ShowLoadErrors(const IOErrorSet& errors) {
    m_drawing.Dialogs()->ShowLoadErrors(errors);
}

void ZvDrawingIO::ShowSaveErrors(const IOErrorSet& errors) {
    m_drawing.Dialogs()->ShowSaveErrors(errors);
}

// --- loading ----------------------------------------------------------------------------------------------

void ZvDrawingIO::ApplyLoadFlags(uint32_t flags, ZvFileOptions& options) {
    options.providerOption = flags & ZvIOFlag::ProviderOption;
    if (flags & ZvIOFlag::Merge)
        options.values.Set("Merge", true);
    if (flags & ZvIOFlag::SkipChecksum)
        options.values.Set("SkipChecksum", true);
}

void ZvDrawingIO::AddPostLoadScheduledAction(std::function<void(ZvDrawing&)> action) {
    if (action)
        m_postLoadActions.push_back(std::move(action));
}

Zv::Status ZvDrawingIO::LoadFile(const std::filesystem::path& file, uint32_t flags, IOErrorSet* errors,
                                 const ZvFileOptions* options) {
    IOErrorSet own;
    IOErrorSet& set = errors ? *errors : own;
    const ZvFileFormat* format = m_drawing.FileFormats().GetFormat(file);
    if (format && format->canLoad) {
        const bool mayRecover = IsNative(*format) && format->id != ZvNativeProvider::kBackupFormatId &&
                                m_drawing.Host() &&
                                !(flags & (ZvIOFlag::Quiet | ZvIOFlag::Merge | ZvIOFlag::KeepName));
        const ZvBackups backups = Backups();
        const ZvRecovery recovery(*m_files, backups);
        const std::filesystem::path target = TargetOf(file);
        if (mayRecover && recovery.HasReason(target))
            (void)recovery.Offer(target, *m_drawing.Host());
        return LoadFileInternal(file, *format, flags, set, options);
    }
    set.Add(
        0, XStringA::Format(ZvStrings::Get(ZvStr::LoadNoFormat), ZvPlatform::PathToUtf8(file).c_str()).Str());
    if (!(flags & ZvIOFlag::Quiet))
        ShowLoadErrors(set);
    return Zv::Status::NotStarted;
}

Zv::Status ZvDrawingIO::LoadNative(const std::filesystem::path& file, uint32_t flags, IOErrorSet* errors) {
    IOErrorSet own;
    return LoadFileInternal(file, *m_drawing.FileFormats().GetNativeLoadFormat(), flags,
                            errors ? *errors : own, nullptr);
}

Zv::Status ZvDrawingIO::LoadSimple(const std::filesystem::path& file, std::string* why) {
    IOErrorSet errors;
    const Zv::Status status = LoadFile(file, ZvIOFlag::Quiet, &errors);
    if (why)
        *why = errors.ToString();
    return status;
}

Zv::Status ZvDrawingIO::LoadFileInternal(const std::filesystem::path& file, const ZvFileFormat& format,
                                         uint32_t flags, IOErrorSet& errors, const ZvFileOptions* given) {
    if (m_loading || m_saving) {
        errors.Add(0, ZvStrings::Get(ZvStr::FileBusy));
        return Zv::Status::NotStarted;
    }
    ZvLog::Printf(ZvLog::Level::Info, "Load %s\n", ZvPlatform::PathToUtf8(file).c_str());
    ZvFileOptions options = given ? *given : ZvFileOptions();
    ApplyLoadFlags(flags, options);
    if (!(flags & ZvIOFlag::Quiet) && !options.host)
        options.host = m_drawing.Host();
    options.files = m_files;
    const auto content = [&] {
        return std::pair(m_drawing.LayerTable()->GetAccumModStamp(), m_drawing.NameTable().Count());
    };
    const auto before = content();
    // Locked and looked at before it is read: what another program saves from then on counts as a change of the file.
    const bool takesName = !(flags & (ZvIOFlag::Merge | ZvIOFlag::KeepName));
    const bool isBackup = format.id == ZvNativeProvider::kBackupFormatId;
    ZvDrawingLock lock;
    if (takesName && IsNative(format) && !isBackup)
        lock = LockToLoad(TargetOf(NormalizeName(file)), errors);
    const ZvCore::IFileSystem::Info seen = m_files->Look(TargetOf(file));
    const Guid digest = takesName && !isBackup && IsNative(format)
                            ? ZvSaveVerifier(*m_files).DigestOf(TargetOf(file))
                            : Guid();
    Zv::Status status;
    {
        const Nested busy(m_loading);
        const ZvWaitCursor wait(m_drawing.Host());
        m_drawing.SuspendAutoCleanup();
        const auto progress = StartProgress(m_drawing.Host(), ZvStr::LoadingDrawing);
        status = format.provider->Load(m_drawing, file, format, options, errors, *progress);
        m_drawing.ResumeAutoCleanup();
    }
    const bool touched = content() != before || Zv::Ok(status);
    PostLoadCleanup(file, format, flags, status, touched);
    if (takesName && Zv::Ok(status)) {
        m_seen = isBackup ? ZvCore::IFileSystem::Info() : seen;
        m_stamp.digest = digest;
        if (lock.IsHeld())
            m_lock = std::move(lock);
    }
    PostLoadCleanupObligatoir(flags & ZvIOFlag::Merge, touched);
    PostLoadRunScheduledActions();
    if (touched && m_drawing.Host() && !(flags & ZvIOFlag::Quiet))
        LocateLinkedImages(file);
    m_drawing.PostEvent(ZvDrawingEvent::Loaded, Zv::Ok(status));
    if (!(flags & ZvIOFlag::Quiet))
        ShowLoadErrors(errors);
    if (ZvSwapManager* swap = m_drawing.SwapManager())
        (void)swap->Balance();
    return status;
}

/// What the drawing stands for now. After half a load it stands for no file: saving it must not replace a whole one. Neither does it
/// after a backup was loaded, so that the next save asks for a name and the backup stays what it is.
void ZvDrawingIO::PostLoadCleanup(const std::filesystem::path& file, const ZvFileFormat& format,
                                  uint32_t flags, Zv::Status status, bool touched) {
    if (flags & (ZvIOFlag::Merge | ZvIOFlag::KeepName)) {
        if (touched)
            SetDrawingDirty(true);
    } else if (Zv::Ok(status)) {
        const bool isBackup = format.id == ZvNativeProvider::kBackupFormatId;
        SetDrawingFileName(isBackup ? std::filesystem::path() : NormalizeName(file));
        m_lastFormat = isBackup ? ZvNativeProvider::kFormatId : format.id;
        RestoreCurrentView();
        MarkClean();
    } else if (touched) {
        ForgetDrawingFileName();
        m_stamp.digest = {};
        SetDrawingDirty(true);
    }
}

/// Tells others that the file is being edited, and the user when others edit it. Holds nothing when there is no such file, the drawing
/// has its lock already, or none can be had.
ZvDrawingLock ZvDrawingIO::LockToLoad(const std::filesystem::path& target, IOErrorSet& errors) const {
    ZvDrawingLock lock;
    if (m_lock.IsFor(target) || !m_files->Look(target).exists ||
        !m_files->CanWriteIn(m_files->FolderOf(target)))
        return lock;
    if (lock.Take(*m_files, target) == ZvDrawingLock::Outcome::Held)
        errors.Add(0,
                   XStringA::Format(ZvStrings::Get(ZvStr::LoadIsEdited),
                                    ZvPlatform::PathToUtf8(target).c_str(),
                                    std::to_string(lock.Other().process).c_str(), lock.Other().host.c_str())
                       .Str(),
                   IOErrorSet::Severity::Warning);
    return lock;
}

/// After every load. Where it changed the drawing, nothing may refer to entities that are gone; a drawing that a refused file left
/// as it was keeps its selection and what can be undone.
void ZvDrawingIO::PostLoadCleanupObligatoir(bool merged, bool touched) {
    if (!touched)
        return;
    if (merged)
        m_drawing.CurrentSelection().CropInvalidEntities();
    else
        m_drawing.ClearCurrentSelection(); // its names may mean other entities now
    m_drawing.Verbs()->PurgeUndo();
    m_drawing.RefreshGlobalData();
    m_drawing.Regenerate();
}

void ZvDrawingIO::PostLoadRunScheduledActions() {
    const auto actions = std::move(m_postLoadActions);
    m_postLoadActions.clear();
    for (const auto& action : actions)
        action(m_drawing);
}

// --- the view goes with the drawing -----------------------------------------------------------------------

void ZvDrawingIO::StoreCurrentView() {
    const ZvView* view = m_drawing.GetCurrentView();
    if (!view)
        return;
    ZvNamedView* record = m_drawing.ViewTable()->GetByName(kStoredView);
    if (!record) {
        record = m_drawing.ViewTable()->InsertNew(kStoredView);
        if (!record)
            return;
        record->SetInternal(true);
    }
    view->StoreTo(*record);
}

void ZvDrawingIO::RestoreCurrentView() {
    ZvView* view = m_drawing.GetCurrentView();
    if (!view)
        return;
    if (const ZvNamedView* record = m_drawing.ViewTable()->GetByName(kStoredView))
        view->RestoreFrom(*record);
    else
        (void)view->ZoomExtents();
}
