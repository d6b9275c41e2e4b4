#include "Zelvan/ZvRecovery.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/ZvDrawingLock.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <set>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr const char* kBackup = ".bak";

std::string Text(const fs::path& path) {
    return ZvPlatform::PathToUtf8(path);
}

fs::path With(const fs::path& path, const char* ending) {
    return ZvCore::IFileSystem::WithEnding(path, ending);
}

/// The drawing that a file of that name belongs to by its name alone; empty for a name that says nothing.
fs::path DrawingOfName(const fs::path& path) {
    fs::path name = path;
    ZvCore::IFileSystem::IsTemporary(path, &name);
    for (const char* ending : {".bak", ".lock"})
        if (name.extension() == ending)
            name.replace_extension();
    return name.extension() == ".zvd" && ZvBackups::PeriodicNumber(name) < 0 ? name : fs::path();
}

} // namespace

std::string ZvRecovery::Candidate::Describe() const {
    const int text = kind == Kind::Unfinished ? ZvStr::RecoverUnfinished
                     : kind == Kind::Backup   ? ZvStr::RecoverBackup
                                              : ZvStr::RecoverPeriodic;
    return XStringA::Format(ZvStrings::Get(text), Text(file.filename()).c_str(),
                            modified.ToString().ToUtf8().c_str())
        .Str();
}

bool ZvRecovery::Finding::IsGain(const Candidate& candidate) const {
    return candidate.IsWhole() && (!IsWhole() || (candidate.kind != Kind::Backup && candidate.isNewer));
}

const ZvRecovery::Candidate* ZvRecovery::Finding::Best() const {
    const auto best = std::find_if(candidates.begin(), candidates.end(),
                                   [&](const Candidate& candidate) { return IsGain(candidate); });
    return isBusy || best == candidates.end() ? nullptr : &*best;
}

std::string ZvRecovery::Finding::Describe() const {
    std::string text;
    for (const Candidate& candidate : candidates)
        if (IsGain(candidate))
            text += (text.empty() ? "" : "\n") + candidate.Describe();
    return text;
}

fs::path ZvRecovery::DamagedName(const Path& drawing) {
    return With(drawing, ".damaged");
}

/// All that bears a name made from the drawing's, unverified, with where it comes from.
void ZvRecovery::Gather(Finding& finding) const {
    const Path& drawing = finding.drawing;
    const auto add = [&](Kind kind, const Path& file) {
        const ZvCore::IFileSystem::Info info = m_files.Look(file);
        if (info.exists && !info.isFolder)
            finding.candidates.push_back({kind, file, info.modified, {}, m_verifier.StampOf(file), false});
    };
    const Path folder = ZvCore::IFileSystem::FolderOf(drawing);
    std::vector<Path> names;
    (void)m_files.List(folder, names);
    for (const Path& name : names) {
        if (ZvCore::IFileSystem::IsTemporaryOf(name, drawing))
            add(Kind::Unfinished, drawing.parent_path() / name);
        else if (ZvCore::IFileSystem::IsTemporaryOf(name, With(drawing, kBackup)) ||
                 ZvCore::IFileSystem::IsTemporaryOf(name, ZvDrawingLock::NameFor(drawing)))
            finding.rubbish.push_back(drawing.parent_path() / name);
    }
    std::set<Path> backups{With(drawing, kBackup)};
    if (const Path other = m_backups.Directory(drawing) / With(drawing.filename(), kBackup);
        !m_files.Look(With(drawing, kBackup)).exists)
        backups.insert(other);
    for (const Path& backup : backups)
        add(Kind::Backup, backup);
    const Path periodic = m_backups.Directory(drawing);
    (void)m_files.List(periodic, names);
    std::string base;
    for (const Path& name : names)
        if (ZvBackups::PeriodicNumber(name, &base) >= 0 && base == ZvBackups::SeriesOf(drawing))
            add(Kind::Periodic, periodic / name);
    std::sort(finding.candidates.begin(), finding.candidates.end(),
              [](const Candidate& a, const Candidate& b) {
                  return std::pair(a.stamp.revision, a.modified) > std::pair(b.stamp.revision, b.modified);
              });
    for (Candidate& candidate : finding.candidates)
        candidate.isNewer = candidate.stamp.Follows(finding.stamp);
}

bool ZvRecovery::HasReason(const Path& drawing) const {
    Finding finding;
    finding.drawing = drawing;
    const bool exists = m_files.Look(drawing).exists;
    if (exists)
        finding.stamp = m_verifier.StampOf(drawing);
    Gather(finding);
    return std::any_of(finding.candidates.begin(), finding.candidates.end(), [&](const Candidate& candidate) {
        return !exists || (candidate.kind != Kind::Backup && candidate.isNewer);
    });
}

ZvRecovery::Finding ZvRecovery::Look(const Path& drawing) const {
    Finding finding;
    finding.drawing = drawing;
    const ZvCore::IFileSystem::Info info = m_files.Look(drawing);
    finding.exists = info.exists && !info.isFolder;
    finding.modified = info.modified;
    if (finding.exists) {
        finding.why = m_verifier.Check(drawing);
        finding.stamp = m_verifier.StampOf(drawing);
    }
    Gather(finding);
    // After the names were read: a temporary file that was there then is being written by whoever has the lock now, or by nobody.
    finding.isBusy = ZvDrawingLock::IsHeldElsewhere(m_files, drawing);
    Guid guid = finding.stamp.drawing; // of a damaged file, too, where its settings can be read
    for (const Candidate& candidate : finding.candidates)
        if (guid.IsNull() && candidate.kind != Kind::Periodic)
            guid = candidate.stamp.drawing;
    std::vector<Candidate> kept;
    for (Candidate& candidate : finding.candidates) {
        candidate.why = m_verifier.Check(candidate.file);
        if (candidate.kind == Kind::Unfinished && !candidate.IsWhole()) {
            finding.rubbish.push_back(candidate.file);
            continue;
        }
        if (candidate.kind == Kind::Periodic && !guid.IsNull() && candidate.IsWhole() &&
            candidate.stamp.drawing != guid)
            continue; // of another drawing that has the same name
        kept.push_back(std::move(candidate));
    }
    finding.candidates = std::move(kept);
    return finding;
}

std::string ZvRecovery::DrawingsIn(const Path& folder, std::vector<Path>& drawings) const {
    std::vector<Path> names;
    std::string why = m_files.List(folder, names);
    std::set<Path> found, stoodFor; // short forms of names that are there are no drawings of their own
    for (const Path& name : names) {
        const Path drawing = DrawingOfName(name);
        if (drawing.empty())
            continue;
        found.insert(folder / drawing);
        if (const Path brief = ZvCore::IFileSystem::ShortForm(drawing); drawing == name && brief != drawing)
            stoodFor.insert(folder / brief);
    }
    for (const Path& brief : stoodFor)
        if (!m_files.Look(brief).exists)
            found.erase(brief);
    drawings.assign(found.begin(), found.end());
    return why;
}

std::string ZvRecovery::Restore(const Finding& finding, const Candidate& candidate) const {
    const Path& drawing = finding.drawing;
    Path source = candidate.file;
    std::string why;
    ZvDrawingLock lock;
    if (lock.Take(m_files, drawing) == ZvDrawingLock::Outcome::Held)
        return "another program has begun to edit it";
    const ZvCore::IFileSystem::Info now = m_files.Look(drawing);
    if ((now.exists && !now.isFolder) != finding.exists || (now.exists && now.modified != finding.modified))
        return "another program has changed it in the meantime";
    if (candidate.kind != Kind::Unfinished) { // a backup stays a backup
        source = ZvCore::IFileSystem::TemporaryBeside(drawing);
        why = m_files.Copy(candidate.file, source);
        if (!why.empty())
            return why;
    }
    if (!finding.exists) {
        why = m_files.Rename(source, drawing);
    } else {
        const Path kept =
            finding.IsWhole() ? m_backups.GetInstantBackupFilename(drawing) : DamagedName(drawing);
        why = kept.empty() ? "no backup can be made" : m_files.ReplaceKeeping(source, drawing, kept);
    }
    if (!why.empty() && source != candidate.file)
        (void)m_files.Delete(source);
    return why.empty() ? m_files.SyncFolder(ZvCore::IFileSystem::FolderOf(drawing)) : why;
}

/// Only beside a whole drawing: else even rubbish may be all there is.
void ZvRecovery::DeleteRubbish(const Finding& finding) const {
    const bool hasLock = m_files.Look(ZvDrawingLock::NameFor(finding.drawing)).exists;
    if (finding.isBusy || (finding.rubbish.empty() && !hasLock) || !m_verifier.Check(finding.drawing).empty())
        return;
    ZvDrawingLock lock; // a stale one goes with it
    if (lock.Take(m_files, finding.drawing) == ZvDrawingLock::Outcome::Held)
        return;
    for (const Path& file : finding.rubbish)
        (void)m_files.Delete(file);
}

bool ZvRecovery::Offer(const Path& drawing, IZvHost& host) const {
    const Finding finding = Look(drawing);
    const Candidate* best = finding.Best();
    if (!best) {
        DeleteRubbish(finding);
        return false;
    }
    const XStringW question =
        XStringW::Format(ZvStrings::Get(ZvStr::RecoverQuestion), Text(drawing).c_str(),
                         finding.Describe().c_str(), Text(best->file.filename()).c_str());
    if (!host.AskYesNo(question, false))
        return false;
    if (const std::string why = Restore(finding, *best); !why.empty()) {
        host.Tell(XStringW::Format(ZvStrings::Get(ZvStr::RecoverFailed), Text(drawing).c_str(), why.c_str()));
        return false;
    }
    DeleteRubbish(finding);
    return true;
}
