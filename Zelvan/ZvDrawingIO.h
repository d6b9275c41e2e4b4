#pragma once
#include "Zelvan/IZvFileProvider.h"
#include "Zelvan/ZvBackups.h"
#include "Zelvan/ZvDrawingLock.h"
#include "Zelvan/ZvSaveStamp.h"
#include "Zelvan/ZvSelection.h"
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Status.h"
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

class ZvDrawing;
struct ZvNativeOptions;
namespace ZvCore {
class BinXmlNode;
}

/// Flags of loads and saves; bits that a call has no use for are ignored.
namespace ZvIOFlag {
enum : uint32_t {
    Merge = 1,        ///< load: into what the drawing holds
    SkipChecksum = 2, ///< load: do not verify the whole-file digest
    Quiet = 4,        ///< neither show errors nor ask; they are in the error set
    /// The file name stays; a save leaves the drawing as dirty as it was (export), a load makes it dirty (import).
    KeepName = 8,
    PurgeUnused = 0x10,       ///< save: leave out table records without use
    SelectionOnly = 0x20,     ///< save: the selection in the options, or else the current one
    Preview = 0x40,           ///< save: store a thumbnail
    Solid = 0x80,             ///< save: smallest file
    NoVerify = 0x100,         ///< save: do not read the written file back before it replaces the old one
    ProviderOption = 0x10000, ///< passed on to the provider
};
}

/// Drives loading and saving of one drawing: chooses the format, saves through a temporary file, tracks
/// whether the drawing is dirty.
///
/// Saving over an existing file: (1) the new content goes to a temporary file beside the target, flushed to
/// disk; (2) it is read back and checked; (3) the old file gets its backup's name, too; (4) the temporary file takes the target's
/// name in one step. A failure before (4) leaves the target as it was. Docs/saving.md has the whole of it.
class ZV_API ZvDrawingIO {
public:
    explicit ZvDrawingIO(ZvDrawing& drawing);
    ~ZvDrawingIO();
    ZvDrawingIO(const ZvDrawingIO&) = delete;
    ZvDrawingIO& operator=(const ZvDrawingIO&) = delete;

    // --- loading. Errors are added to `errors` (may be null) and shown unless Quiet -----------------------
    Zv::Status LoadFile(const std::filesystem::path& file, uint32_t flags = 0, IOErrorSet* errors = nullptr,
                        const ZvFileOptions* options = nullptr);
    /// The native format, whatever the name's extension.
    Zv::Status LoadNative(const std::filesystem::path& file, uint32_t flags = 0,
                          IOErrorSet* errors = nullptr);
    /// A quiet load without options; the reasons of a failure as text.
    Zv::Status LoadSimple(const std::filesystem::path& file, std::string* why = nullptr);
    /// Sets a native load's options from flags.
    static void ApplyLoadFlags(uint32_t flags, ZvFileOptions& options);
    /// Work to run once after the next load, successful or not.
    void AddPostLoadScheduledAction(std::function<void(ZvDrawing&)> action);

    // --- saving -------------------------------------------------------------------------------------------
    /// `format` null: native, whatever the name's extension. NotStarted when the save could not begin.
    Zv::Status SaveFile(const std::filesystem::path& file, const ZvFileFormat* format = nullptr,
                        uint32_t flags = 0, IOErrorSet* errors = nullptr,
                        const ZvFileOptions* options = nullptr);
    Zv::Status SaveNative(const std::filesystem::path& file, uint32_t flags = 0,
                          IOErrorSet* errors = nullptr);
    /// Writes the native format to that very file: no temporary file, no backup, no check. For scratch copies.
    Zv::Status SaveNativeInternal(const std::filesystem::path& file, uint32_t flags, IOErrorSet& errors,
                                  const ZvFileOptions* options = nullptr);
    static void ApplySaveFlags(uint32_t flags, ZvFileOptions& options);
    /// "a.zvf" and "a.zvf.zvd" become "a.zvd", in any case of letters; other names stay.
    static std::filesystem::path NormalizeName(const std::filesystem::path& file);

    bool IsFileLoadBusy() const { return m_loading > 0; }
    bool IsFileSaveBusy() const { return m_saving > 0; }

    // --- name and format ----------------------------------------------------------------------------------
    /// Kept as an absolute path.
    void SetDrawingFileName(const std::filesystem::path& file);
    void ForgetDrawingFileName() { SetDrawingFileName({}); }
    const std::filesystem::path& DrawingFileName() const { return m_fileName; }
    /// What the drawing was last read or written with; null when neither, or when its provider is gone.
    const ZvFileFormat* GetLastFormat() const;

    // --- dirty tracking -----------------------------------------------------------------------------------
    /// A dirty child layout makes its parent dirty.
    void SetDrawingDirty(bool dirty);
    /// False while the time is before the suppression stamp.
    bool IsDrawingDirty() const;
    /// Set together with the dirty flag, cleared when the drawing was brought to safety (a backup counts).
    bool IsUnsaved() const { return m_unsaved; }
    /// The drawing reports clean until then (while a host still settles what it opened).
    void SuppressDirtyUntil(DateTime time) { m_suppressUntil = time; }
    /// Nothing is suppressed any more.
    void ResetSaveTime();

    // --- backups ------------------------------------------------------------------------------------------
    /// The program's settings unless others are set; they must outlive this.
    const ZvBackupSettings& BackupSettings() const { return *m_backupSettings; }
    void SetBackupSettings(const ZvBackupSettings* settings);
    /// Writes the drawing to the next file of its series, then purges. Without `force` only when it changed since it was last saved
    /// or backed up, and periodic backups are on (NotStarted otherwise). The host calls it every `periodicMinutes`.
    Zv::Status PeriodicBackup(bool force);
    int PeriodicBackupPurge(const std::filesystem::path& directory) const;
    bool CheckBackupPath(bool quiet) const;
    std::filesystem::path GetInstantBackupFilename(const std::filesystem::path& path) const;
    std::filesystem::path GetPeriodicBackupFilename(const std::filesystem::path& path) const;
    /// What the file that is being saved tells of its origin, among the drawing's settings; and the other way.
    void StoreStamp(ZvCore::BinXmlNode& settings) const;
    void LoadStamp(const ZvCore::BinXmlNode& settings);
    static XStringW PeriodicNamePrefix() { return ZvBackups::PeriodicNamePrefix(); }

    // --- several files, media -----------------------------------------------------------------------------
    /// Opens each of the names: recordings are replayed by the command "ScreenRecord", images are placed, all else goes to `open`
    /// (empty: into this drawing, those after the first added to it). Many names are asked about first. The number opened.
    int GenericFileLoader(const std::vector<std::filesystem::path>& files,
                          const std::function<Zv::Status(const std::filesystem::path&)>& open = {});
    /// Where a file is that the drawing refers to: `media` itself, or what the user chose in its place; empty when it is missing.
    std::filesystem::path LocateMedia(const std::filesystem::path& media);

    /// Where files are read and written, the system's unless set; must outlive this.
    ZvCore::IFileSystem& Files() const { return *m_files; }
    void SetFiles(ZvCore::IFileSystem& files);

    /// Headings "File Load Errors" and "File SaveBusy Errors"; nothing for an empty set.
    void ShowLoadErrors(const IOErrorSet& errors);
    void ShowSaveErrors(const IOErrorSet& errors);

private:
    Zv::Status LoadFileInternal(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                                IOErrorSet& errors, const ZvFileOptions* given);
    void PostLoadCleanup(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                         Zv::Status status, bool touched);
    void PostLoadCleanupObligatoir(bool merged, bool touched);
    void PostLoadRunScheduledActions();
    Zv::Status SaveFileInternal(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                                IOErrorSet& errors, const ZvFileOptions* given);
    bool MayReplace(const std::filesystem::path& target, uint32_t flags, IOErrorSet& errors);
    bool LockFor(const std::filesystem::path& target, ZvDrawingLock& lock, IOErrorSet& errors);
    Zv::Status WriteAndReplace(const std::filesystem::path& target, const ZvFileFormat& format,
                               bool keepBackup, uint32_t flags, ZvFileOptions& options, IOErrorSet& errors);
    Zv::Status Write(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                     ZvFileOptions& options, IOErrorSet& errors, std::string& why);
    std::string PutInPlace(const std::filesystem::path& written, const std::filesystem::path& target,
                           bool keepBackup, IOErrorSet& errors);
    std::string VerifyWritten(const std::filesystem::path& file, const ZvFileOptions& options,
                              uint64_t unwritten) const;
    ZvBackups Backups() const;
    ZvSaveStamp NextStamp(const std::filesystem::path& target) const;
    bool IsNative(const ZvFileFormat& format) const;
    void LocateLinkedImages(const std::filesystem::path& file);
    ZvDrawingLock LockToLoad(const std::filesystem::path& target, IOErrorSet& errors) const;
    std::filesystem::path TargetOf(const std::filesystem::path& file) const;
    Zv::Status SaveUnderLock(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                             ZvFileOptions& options, IOErrorSet& errors);
    void MarkClean();
    bool OpenOne(const std::filesystem::path& file,
                 const std::function<Zv::Status(const std::filesystem::path&)>& open);
    bool PreSave(const ZvFileFormat& format);
    void PostSave();
    void StoreCurrentView();
    void RestoreCurrentView();

    ZvDrawing& m_drawing;
    ZvCore::IFileSystem* m_files;
    const ZvBackupSettings* m_backupSettings;
    int m_lastPeriodic = -1;
    std::filesystem::path m_fileName;
    ZvCore::IFileSystem::Info m_seen; ///< of m_fileName; exists is false when nothing is known
    ZvSaveStamp
        m_stamp; ///< of what the drawing was last read from or saved to; the revision goes on with backups
    std::optional<ZvSaveStamp> m_stampToWrite;
    ZvDrawingLock m_lock;
    std::string m_lastFormat; // id
    std::optional<ZvSelection> m_savedSelection;
    int m_saving = 0;
    int m_loading = 0;
    bool m_dirty = false;
    bool m_unsaved = false;
    DateTime m_suppressUntil;
    std::vector<std::function<void(ZvDrawing&)>> m_postLoadActions;
};
