#include "Zelvan/ZvBackups.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawingLock.h"
#include "Zelvan/ZvSaveVerifier.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* kPrefix = "Autobackup_";
constexpr const char* kExtension = ".zvd";
constexpr size_t kDigits = 4;
constexpr int kMostNumbers = 10000;
constexpr uint64_t kTicksPerHour = 3600 * DateTime::kTicksPerSecond;

int Clamped(const ZvCore::Settings& settings, const char* key, int fallback, int least, int most) {
    return int(std::clamp<int64_t>(settings.GetInt(key, fallback), least, most));
}

struct Numbered {
    fs::path path;
    std::string base;
    int number = 0;
    DateTime modified;
    ZvSaveStamp stamp; // read where the order matters
};

std::vector<Numbered> PeriodicIn(ZvCore::IFileSystem& files, const fs::path& folder) {
    std::vector<fs::path> names;
    std::vector<Numbered> found;
    (void)files.List(folder, names); // a folder that is not there holds nothing
    for (const fs::path& name : names) {
        Numbered file;
        file.number = ZvBackups::PeriodicNumber(name, &file.base);
        if (file.number < 0)
            continue;
        file.path = folder / name;
        file.modified = files.Look(file.path).modified;
        found.push_back(std::move(file));
    }
    return found;
}

bool IsOlder(const Numbered& a, const Numbered& b) {
    return std::tuple(a.stamp.revision, a.modified, a.number) <
           std::tuple(b.stamp.revision, b.modified, b.number);
}

} // namespace

// --- settings ----------------------------------------------------------------------------------------------

ZvBackupSettings& ZvBackupSettings::Application() {
    static ZvBackupSettings settings;
    return settings;
}

void ZvBackupSettings::Load(const ZvCore::Settings& settings) {
    const ZvBackupSettings fallback;
    directory = ZvPlatform::PathFromUtf8(settings.GetString("BackupDirectory", {}).ToUtf8());
    instantBackup = settings.GetBool("InstantBackup", fallback.instantBackup);
    besideDrawing = settings.GetBool("InstantBackupBesideDrawing", fallback.besideDrawing);
    periodicMinutes = Clamped(settings, "PeriodicBackupMinutes", fallback.periodicMinutes, 0, 24 * 60);
    periodicKept = Clamped(settings, "PeriodicBackupsKept", fallback.periodicKept, 1, kMostNumbers);
    expiryHours = Clamped(settings, "PeriodicBackupExpiryHours", fallback.expiryHours, 0, 1'000'000);
    silentPurge = settings.GetBool("SilentBackupPurge", fallback.silentPurge);
}

void ZvBackupSettings::Store(ZvCore::Settings& settings) const {
    settings.Set("BackupDirectory", XStringW::FromUtf8(ZvPlatform::PathToUtf8(directory)));
    settings.Set("InstantBackup", instantBackup);
    settings.Set("InstantBackupBesideDrawing", besideDrawing);
    settings.Set("PeriodicBackupMinutes", int64_t(periodicMinutes));
    settings.Set("PeriodicBackupsKept", int64_t(periodicKept));
    settings.Set("PeriodicBackupExpiryHours", int64_t(expiryHours));
    settings.Set("SilentBackupPurge", silentPurge);
}

// --- places and names --------------------------------------------------------------------------------------

void ZvBackups::Print(const std::string& text) const {
    if (m_host)
        m_host->Print(XStringW::FromUtf8(text));
    else
        ZvLog::Write(ZvLog::Level::Info, text);
}

XStringW ZvBackups::PeriodicNamePrefix() {
    return XStringW::FromUtf8(kPrefix);
}

fs::path ZvBackups::Directory(const Path& drawing) const {
    if (!m_settings.directory.empty())
        return m_settings.directory;
    if (!drawing.empty())
        return ZvCore::IFileSystem::FolderOf(drawing);
    std::error_code error;
    const Path temporary = fs::temp_directory_path(error);
    return error ? Path(".") : temporary;
}

bool ZvBackups::CheckBackupPath(bool quiet, const Path& drawing) const {
    const Path folder = Directory(drawing);
    const bool writable = m_files.CanWriteIn(folder);
    if (!writable && !quiet)
        Print(XStringA::Format(ZvStrings::Get(ZvStr::BackupPathUnwritable),
                               ZvPlatform::PathToUtf8(folder).c_str())
                  .Str());
    return writable;
}

fs::path ZvBackups::GetInstantBackupFilename(const Path& path) const {
    Path place = path;
    if (!m_settings.besideDrawing) {
        if (!CheckBackupPath(false, path))
            return {};
        place = Directory(path) / path.filename();
    }
    return ZvCore::IFileSystem::WithEnding(place, ".bak");
}

std::string ZvBackups::SeriesOf(const Path& drawing) {
    const Path stem = drawing.stem();
    constexpr size_t around =
        std::string_view(kPrefix).size() + kDigits + std::string_view(kExtension).size();
    const bool fits = stem.native().size() + around <= ZvCore::IFileSystem::kLongestName;
    return ZvPlatform::PathToUtf8(fits ? stem : ZvCore::IFileSystem::ShortForm(stem));
}

int ZvBackups::PeriodicNumber(const Path& name, std::string* base) {
    const std::string text = ZvPlatform::PathToUtf8(name.filename());
    const std::string_view prefix = kPrefix, extension = kExtension;
    if (text.size() < prefix.size() + kDigits + extension.size() || !text.starts_with(prefix) ||
        !text.ends_with(extension))
        return -1;
    const size_t at = text.size() - extension.size() - kDigits;
    int number = 0;
    for (size_t i = at; i < at + kDigits; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return -1;
        number = number * 10 + (text[i] - '0');
    }
    if (base)
        *base = text.substr(prefix.size(), at - prefix.size());
    return number;
}

fs::path ZvBackups::GetPeriodicBackupFilename(const Path& path, const Guid& drawing, int last) const {
    if (!CheckBackupPath(false, path))
        return {};
    const Path folder = Directory(path);
    const std::string base = SeriesOf(path);
    const ZvSaveVerifier verifier(m_files);
    std::map<int, Path> taken; // numbers of other drawings of that name
    const Numbered* newest = nullptr;
    std::vector<Numbered> series = PeriodicIn(m_files, folder);
    for (Numbered& file : series) {
        if (file.base != base)
            continue;
        file.stamp = verifier.StampOf(file.path);
        const Guid of = file.stamp.drawing;
        if (of != drawing && !of.IsNull())
            taken[file.number] = file.path;
        else if (!newest || IsOlder(*newest, file))
            newest = &file;
    }
    const int kept = std::clamp(m_settings.periodicKept, 1, kMostNumbers);
    const int before = last >= 0 ? last : newest ? newest->number : -1;
    int number = (before + 1) % kept;
    for (int tries = 0; taken.contains(number) && tries < kMostNumbers; ++tries)
        number = (number + 1) % (tries < kept ? kept : kMostNumbers); // all of the round are taken: behind it
    return folder / ZvPlatform::PathFromUtf8(
                        XStringA::Format("%s%s%04d%s", kPrefix, base.c_str(), number, kExtension).Str());
}

int64_t ZvBackups::NewestRevision(const Path& path, const Guid& drawing) const {
    const std::string base = SeriesOf(path);
    const ZvSaveVerifier verifier(m_files);
    int64_t newest = 0;
    for (const Numbered& file : PeriodicIn(m_files, Directory(path)))
        if (file.base == base)
            if (const ZvSaveStamp stamp = verifier.StampOf(file.path); stamp.drawing == drawing)
                newest = std::max(newest, stamp.revision);
    return newest;
}

// --- purge -------------------------------------------------------------------------------------------------

/// A backup is written under the lock of its name. Whoever gets that lock knows that nobody writes it.
void ZvBackups::DeleteLeftovers(const Path& directory) const {
    constexpr size_t longest = 160; // of longer names the lock may stand under a short form
    std::vector<Path> names;
    (void)m_files.List(directory, names);
    for (const Path& name : names) {
        Path of = name;
        const bool isTemporary = ZvCore::IFileSystem::IsTemporary(name, &of);
        const bool isLock = of.extension() == ".lock";
        if (isLock)
            of.replace_extension();
        if ((!isTemporary && !isLock) || PeriodicNumber(of) < 0 || of.native().size() > longest)
            continue;
        ZvDrawingLock lock;
        if (lock.Take(m_files, directory / of) == ZvDrawingLock::Outcome::Taken && lock.IsHeld() &&
            isTemporary)
            (void)m_files.Delete(directory / name);
    }
}

int ZvBackups::PeriodicBackupPurge(const Path& directory) const {
    DeleteLeftovers(directory);
    if (m_settings.expiryHours <= 0)
        return 0;
    std::vector<Numbered> files = PeriodicIn(m_files, directory);
    const uint64_t now = m_clock.Now().ticks;
    const uint64_t expiry = uint64_t(m_settings.expiryHours) * kTicksPerHour;
    const auto expired = [&](const Numbered& file) {
        return file.modified.ticks < now && now - file.modified.ticks > expiry;
    };
    if (std::none_of(files.begin(), files.end(), expired))
        return 0;
    const ZvSaveVerifier verifier(m_files);
    for (Numbered& file : files)
        file.stamp = verifier.StampOf(file.path);
    std::sort(files.begin(), files.end(), [](const Numbered& a, const Numbered& b) { return IsOlder(b, a); });
    std::map<std::pair<std::string, Guid>, bool> hasNewer;
    int deleted = 0;
    for (const Numbered& file : files) {
        bool& newer = hasNewer[{file.base, file.stamp.drawing}];
        if (!std::exchange(newer, true) || !expired(file))
            continue;
        if (const std::string why = m_files.Delete(file.path); !why.empty()) {
            ZvLog::Write(ZvLog::Level::Warning,
                         "backup " + ZvPlatform::PathToUtf8(file.path) + " not deleted: " + why);
            continue;
        }
        ++deleted;
        if (!m_settings.silentPurge)
            Print(XStringA::Format(ZvStrings::Get(ZvStr::PurgingBackup),
                                   ZvPlatform::PathToUtf8(file.path).c_str())
                      .Str());
    }
    return deleted;
}
