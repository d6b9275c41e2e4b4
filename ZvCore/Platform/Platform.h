#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// The one door to the operating system. Posix/ and Win32/ hold the two answers.
namespace ZvPlatform {

/// Narrow text in the thread's ANSI code page (UTF-8 on POSIX), and back. Characters that it lacks become
/// '?'.
ZV_API std::u16string AnsiToWide(std::string_view text);
ZV_API std::string WideToAnsi(std::u16string_view text);

struct MemoryStatus {
    uint64_t physicalBytes = 0;
    unsigned loadPercent = 0; ///< share of physical memory in use, 0..100
};
/// False when the system does not tell.
ZV_API bool GetMemoryStatus(MemoryStatus& out);

/// Fills with random bytes of the system's entropy source.
ZV_API void RandomBytes(void* bytes, size_t count);

ZV_API uint64_t ProcessId();
ZV_API bool IsProcessAlive(uint64_t id);
/// When the process began, as a text to compare: two processes that one after the other have the same number differ in it, on
/// either side of a restart of the machine, too. Empty when there is no such process or the system does not tell.
ZV_API std::string ProcessBirth(uint64_t id);
/// Name of this machine in its network.
ZV_API std::string HostName();
/// Peak and current resident memory of this process in bytes; 0 when unknown.
ZV_API uint64_t ResidentBytes();
ZV_API uint64_t PeakResidentBytes();

// Memory straight from the system for large arenas, whole multiples of kLargePage and aligned to it, so that the
// system can serve it in large pages: fewer faults while it fills, fewer misses afterwards.
constexpr size_t kLargePage = size_t(2) << 20;
/// Zeroed; null when there is none.
ZV_API void* MapPages(size_t bytes) noexcept;
ZV_API void UnmapPages(void* pages, size_t bytes) noexcept;
/// What is mapped now; the general heap does not count it.
ZV_API size_t MappedBytes() noexcept;

// File operations that survive a power cut as far as the system allows. All return an empty string on success,
// else the system's reason in words.

/// Puts `from` in the place of `to` in one step: whoever opens `to` finds the old or the new file, never none.
ZV_API std::string RenameReplace(const std::filesystem::path& from, const std::filesystem::path& to);
/// Gives the file a second name, or a copy where the file system has no links. A file at `to` is replaced in
/// one step.
ZV_API std::string HardLinkOrCopy(const std::filesystem::path& from, const std::filesystem::path& to);
/// A second name for the file. `to` must not exist.
ZV_API std::string HardLink(const std::filesystem::path& from, const std::filesystem::path& to);
/// Whether the system has a call that replaces a file and keeps the former one in a single step.
ZV_API extern const bool kReplacesWithBackup;
/// That call: `from` becomes `to`, the former `to` becomes `backup`, all in one folder.
ZV_API std::string ReplaceWithBackup(const std::filesystem::path& from, const std::filesystem::path& to,
                                     const std::filesystem::path& backup);
/// When the content of the file last changed; the zero date when the system does not tell.
ZV_API DateTime FileModified(const std::filesystem::path& path);
ZV_API std::string DeleteFileIfThere(const std::filesystem::path& path);
/// Waits until renames in the folder are on the medium (nothing to do on Windows, where they are written
/// through).
ZV_API std::string SyncFolder(const std::filesystem::path& folder);
/// Puts the file's bytes on the medium, and tells why it could not be made longer: a disk that filled up while somebody wrote the file
/// who did not look. The file stays as it is.
ZV_API std::string SyncAndProbeGrowth(const std::filesystem::path& path);
ZV_API bool IsFolderWritable(const std::filesystem::path& folder);

/// Path from UTF-8 command-line or document text, and back.
ZV_API std::filesystem::path PathFromUtf8(std::string_view text);
ZV_API std::string PathToUtf8(const std::filesystem::path& path);

/// The arguments of the program as UTF-8, the program's name first. On Windows `argv` is in the ANSI code
/// page and cannot hold every name, so the system is asked again.
ZV_API std::vector<std::string> CommandLine(int argc, char** argv);

/// True after the user or the system asked to stop (Ctrl-C, the end of the session); InstallInterruptHandler must have been called
/// once.
ZV_API void InstallInterruptHandler();
ZV_API bool WasInterrupted();
ZV_API void ClearInterrupt();
/// Whether standard error is a terminal (progress is shown there only).
ZV_API bool IsTerminal();

} // namespace ZvPlatform
