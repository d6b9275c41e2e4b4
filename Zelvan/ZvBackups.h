#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/FileSystem.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Settings.h"
#include <filesystem>
#include <string>

class IZvClock;
class IZvHost;

/// What the user chose about backups; the same for all drawings of a program.
struct ZV_API ZvBackupSettings {
    /// Where backups go that are not put beside the drawing. Empty: the folder of the drawing, or that for temporary files.
    std::filesystem::path directory;
    bool instantBackup = true; ///< each save keeps the former file
    bool besideDrawing = true; ///< the instant backup, whatever `directory` is
    int periodicMinutes = 5;   ///< 0: no periodic backups
    int periodicKept = 10;     ///< numbers go round after so many, 1..10000
    int expiryHours = 168;     ///< after which periodic backups are deleted; 0: never
    bool silentPurge = false;  ///< deletions are not told

    /// The program's.
    static ZvBackupSettings& Application();
    /// Values out of range become the nearest in range.
    void Load(const ZvCore::Settings& settings);
    void Store(ZvCore::Settings& settings) const;
};

/// Names, places and life of the backups of one drawing.
class ZV_API ZvBackups {
public:
    using Path = std::filesystem::path;
    /// `host` may be null. All must outlive this.
    ZvBackups(ZvCore::IFileSystem& files, const ZvBackupSettings& settings, const IZvClock& clock,
              IZvHost* host)
        : m_files(files), m_settings(settings), m_clock(clock), m_host(host) {}

    /// "Autobackup_".
    static XStringW PeriodicNamePrefix();
    /// The backup directory for a drawing of that file name (empty: one without).
    Path Directory(const Path& drawing) const;
    /// Whether the directory can be written to; says so otherwise unless `quiet`.
    bool CheckBackupPath(bool quiet, const Path& drawing = {}) const;
    /// "plan.zvd.bak" beside the drawing or in the backup directory. Empty, said, when that cannot be written to.
    Path GetInstantBackupFilename(const Path& path) const;
    /// The next of the series, one after the newest in the directory, round after periodicKept. A file of another drawing than
    /// `drawing` is passed over. Empty, said, when the directory cannot be written to. `last` is the number given out before in this
    /// session, or -1.
    Path GetPeriodicBackupFilename(const Path& path, const Guid& drawing, int last = -1) const;
    /// What the periodic backups of a drawing of that file name have between "Autobackup_" and the number: its base name, or what
    /// stands for a long one.
    static std::string SeriesOf(const Path& drawing);
    /// The number in such a name, -1 for other names; `base` (may be null) is set to the series.
    static int PeriodicNumber(const Path& name, std::string* base = nullptr);
    /// The highest revision among the periodic backups of a drawing of that file name; 0 when there are none.
    int64_t NewestRevision(const Path& path, const Guid& drawing) const;
    /// Deletes what has expired by its modification time, never the newest of a drawing, and what programs that ended while they wrote
    /// a backup left of it. The number of backups deleted.
    int PeriodicBackupPurge(const Path& directory) const;

private:
    void Print(const std::string& text) const;
    void DeleteLeftovers(const Path& directory) const;

    ZvCore::IFileSystem& m_files;
    const ZvBackupSettings& m_settings;
    const IZvClock& m_clock;
    IZvHost* m_host;
};
