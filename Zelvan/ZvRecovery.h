#pragma once
#include "Zelvan/ZvBackups.h"
#include "Zelvan/ZvSaveVerifier.h"
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/FileSystem.h"
#include <string>
#include <vector>

class IZvHost;

/// Finds out what a broken-off save, a damaged file or a program that ended without saving left behind, and puts the newest whole
/// form of a drawing in its place. Nothing that is whole is lost by it: what it replaces is kept under another name.
class ZV_API ZvRecovery {
public:
    using Path = std::filesystem::path;
    enum class Kind {
        Unfinished, ///< a save that was written but did not get the drawing's name
        Backup,     ///< the content before the last save
        Periodic    ///< a periodic backup
    };
    struct ZV_API Candidate {
        Kind kind = Kind::Backup;
        Path file;
        DateTime modified;
        std::string why;      ///< what is wrong with it; empty: whole
        ZvSaveStamp stamp;    ///< where it comes from
        bool isNewer = false; ///< made from what the drawing's file holds
        bool IsWhole() const { return why.empty(); }
        std::string Describe() const;
    };
    struct ZV_API Finding {
        Path drawing;
        bool exists = false;
        std::string why; ///< what is wrong with the drawing's own file; empty when it is whole
        DateTime modified;
        ZvSaveStamp stamp;
        std::vector<Candidate> candidates; ///< newest first, by revision and then by time
        std::vector<Path> rubbish;         ///< temporary files that hold nothing of worth
        bool isBusy = false;               ///< another program edits the drawing: nothing is to be touched
        bool IsWhole() const { return exists && why.empty(); }
        /// Whether the drawing would gain by the candidate: its file is missing or damaged, or the candidate was made from it. Times
        /// prove nothing, since clocks go back.
        bool IsGain(const Candidate& candidate) const;
        /// The newest whole candidate that the drawing would gain by; null when there is none.
        const Candidate* Best() const;
        /// Every candidate that the drawing would gain by, in a line of its own.
        std::string Describe() const;
    };

    /// Both must outlive this.
    ZvRecovery(ZvCore::IFileSystem& files, const ZvBackups& backups)
        : m_files(files), m_backups(backups), m_verifier(files) {}

    /// Whether names and origins give reason to look: the drawing is missing, or something made from it is there. Cheap.
    bool HasReason(const Path& drawing) const;
    /// Verifies the drawing's file and all that could take its place.
    Finding Look(const Path& drawing) const;
    /// Drawings of the folder: those that are there and those of which only something else is left.
    std::string DrawingsIn(const Path& folder, std::vector<Path>& drawings) const;
    /// Puts the candidate in the drawing's place. A whole file that it replaces becomes the instant backup, a damaged one
    /// "plan.zvd.damaged". Empty on success, else the reason; the drawing is then as it was.
    std::string Restore(const Finding& finding, const Candidate& candidate) const;
    void DeleteRubbish(const Finding& finding) const;
    /// Asks through the host whether to restore the best candidate, and does. True when the drawing's file changed.
    bool Offer(const Path& drawing, IZvHost& host) const;
    static Path DamagedName(const Path& drawing);

private:
    void Gather(Finding& finding) const;

    ZvCore::IFileSystem& m_files;
    const ZvBackups& m_backups;
    ZvSaveVerifier m_verifier;
};
