#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/FileSystem.h"
#include <optional>
#include <string>

/// A small file beside a drawing ("plan.zvd.lock") that tells other programs who is editing it. It names the process, when that
/// began, and the machine: a lock whose process is gone, or that names none, is stale and taken over. Locks of other machines are never stale.
class ZV_API ZvDrawingLock {
public:
    struct ZV_API Holder {
        uint64_t process = 0;
        std::string birth; ///< see ZvPlatform::ProcessBirth
        std::string host;
        friend bool operator==(const Holder&, const Holder&) = default;
        static Holder Self();
        /// On this machine, and its process has ended.
        bool IsGone() const;
    };
    enum class Outcome {
        Taken,
        Held,       ///< by another program, see Other()
        Unavailable ///< no lock can be written there
    };

    ZvDrawingLock() = default;
    ~ZvDrawingLock() { Release(); }
    ZvDrawingLock(ZvDrawingLock&& other) noexcept { *this = std::move(other); }
    ZvDrawingLock& operator=(ZvDrawingLock&& other) noexcept;
    /// Who holds the drawing's lock, be it stale or not; nothing when there is none.
    static std::optional<Holder> HolderOf(ZvCore::IFileSystem& files, const std::filesystem::path& drawing);
    /// Whether another program holds it, or may: a lock that cannot be read is anybody's.
    static bool IsHeldElsewhere(ZvCore::IFileSystem& files, const std::filesystem::path& drawing);
    static std::filesystem::path NameFor(const std::filesystem::path& drawing);

    /// Gives up what was held before. `files` must outlive the lock. A lock of this very process counts as taken.
    Outcome Take(ZvCore::IFileSystem& files, const std::filesystem::path& drawing);
    void Release();
    bool IsFor(const std::filesystem::path& drawing) const { return m_files && m_drawing == drawing; }
    bool IsHeld() const { return m_files != nullptr; }
    const Holder& Other() const { return m_other; }

private:
    bool Write(const std::filesystem::path& lock, bool& exists);
    enum class Content {
        Holder,
        Torn,      ///< as a program that ended while it wrote leaves it
        Unreadable ///< or no lock at all
    };
    static Content Read(ZvCore::IFileSystem& files, const std::filesystem::path& lock, Holder& holder);
    bool TakeOver(const std::filesystem::path& lock, const Holder& stale);

    ZvCore::IFileSystem* m_files = nullptr; ///< null: nothing is held
    std::filesystem::path m_drawing;
    Holder m_other;
};
