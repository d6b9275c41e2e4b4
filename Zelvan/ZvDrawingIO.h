#pragma once
#include "Zelvan/IZvFileProvider.h"
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
/// disk; (2) it is read back and checked; (3) it takes the target's name in one step. A failure in (1) or (2)
/// leaves the target as it was.
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
    /// `format` null: by the name's extension, else native. NotStarted when the save could not begin.
    Zv::Status SaveFile(const std::filesystem::path& file, const ZvFileFormat* format = nullptr,
                        uint32_t flags = 0, IOErrorSet* errors = nullptr,
                        const ZvFileOptions* options = nullptr);
    Zv::Status SaveNative(const std::filesystem::path& file, uint32_t flags = 0,
                          IOErrorSet* errors = nullptr);
    static void ApplySaveFlags(uint32_t flags, ZvFileOptions& options);
    /// "a.zvf" and "a.zvf.zvd" become "a.zvd", in any case of letters; other names stay.
    static std::filesystem::path NormalizeName(const std::filesystem::path& file);

    bool IsFileLoadBusy() const { return m_loading > 0; }
    bool IsFileSaveBusy() const { return m_saving > 0; }

    // --- name and format ----------------------------------------------------------------------------------
    void SetDrawingFileName(const std::filesystem::path& file) { m_fileName = file; }
    void ForgetDrawingFileName() { m_fileName.clear(); }
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

    /// Headings "File Load Errors" and "File SaveBusy Errors"; nothing for an empty set.
    void ShowLoadErrors(const IOErrorSet& errors);
    void ShowSaveErrors(const IOErrorSet& errors);

private:
    Zv::Status LoadFileInternal(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                                IOErrorSet& errors, const ZvFileOptions* given);
    void PostLoadCleanup(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                         Zv::Status status, bool touched);
    void PostLoadCleanupObligatoir(bool merged);
    void PostLoadRunScheduledActions();
    Zv::Status SaveFileInternal(const std::filesystem::path& file, const ZvFileFormat& format, uint32_t flags,
                                IOErrorSet& errors, const ZvFileOptions* given);
    Zv::Status WriteAndReplace(const std::filesystem::path& target, const ZvFileFormat& format,
                               uint32_t flags, const ZvFileOptions& options, IOErrorSet& errors);
    bool VerifyWritten(const std::filesystem::path& file, IOErrorSet& errors) const;
    bool PreSave(const ZvFileFormat& format);
    void PostSave();
    void StoreCurrentView();
    void RestoreCurrentView();

    ZvDrawing& m_drawing;
    std::filesystem::path m_fileName;
    std::string m_lastFormat; // id
    std::optional<ZvSelection> m_savedSelection;
    int m_saving = 0;
    int m_loading = 0;
    bool m_dirty = false;
    bool m_unsaved = false;
    DateTime m_suppressUntil;
    std::vector<std::function<void(ZvDrawing&)>> m_postLoadActions;
};
