#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/IFile.h"
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZvCore {

/// A stream of a file system: its bytes can be waited for.
class ZV_API IStoredFile : public IFile {
public:
    /// Hands everything written to the system and waits until it is on the medium. False after any failure.
    virtual bool SyncToDisk() = 0;
};

/// The calls to a file system that saving, backing up and recovering make: all of them, so that what a power cut or a full disk
/// leaves behind can be tried out. Where an operation answers a text it is the reason of its failure in words, empty on success.
class ZV_API IFileSystem {
public:
    using Path = std::filesystem::path;
    enum class Mode {
        Read,     ///< must exist and be a regular file
        Create,   ///< made or emptied, read and write
        CreateNew ///< must not exist
    };
    struct Info {
        bool exists = false;
        bool isFolder = false;
        bool isSpecial =
            false; ///< neither file nor folder: a device, a pipe, links that lead round in a circle
        bool isReadOnly = false; ///< marked so, or this user may not write to it
        uint64_t length = 0;
        DateTime modified;
        friend bool operator==(const Info&, const Info&) = default;
    };

    virtual ~IFileSystem() = default;
    /// The system's; lives as long as the program.
    static IFileSystem& System();

    virtual std::unique_ptr<IStoredFile> Open(const Path& path, Mode mode, std::string& why) = 0;
    virtual Info Look(const Path& path) = 0;
    /// Names in the folder, in no order.
    virtual std::string List(const Path& folder, std::vector<Path>& names) = 0;
    /// In one step: whoever opens `to` finds the old or the new file, never none.
    virtual std::string Rename(const Path& from, const Path& to) = 0;
    /// A second name for the file; `to` must not exist. A failure where the file system has no links.
    virtual std::string Link(const Path& from, const Path& to) = 0;
    /// Success, too, when there is none.
    virtual std::string Delete(const Path& path) = 0;
    virtual std::string CopyPermissions(const Path& from, const Path& to) = 0;
    /// Waits until what happened to names in the folder is on the medium.
    virtual std::string SyncFolder(const Path& folder) = 0;
    virtual bool CanWriteIn(const Path& folder) = 0;
    /// What stands at the end of a chain of links, be it there or not; the path itself when it is no link, or one that leads round in
    /// a circle.
    virtual Path Resolve(const Path& path) = 0;
    /// The path from the root on: what it means does not change with the folder that the program works in.
    virtual Path Absolute(const Path& path) { return path; }
    /// `from` takes the place of `to`, whose former content is kept as `backup` (replacing what is there). The name `to` is never
    /// without a file. This form links or copies, and renames; a system with a call of its own uses that.
    virtual std::string ReplaceKeeping(const Path& from, const Path& to, const Path& backup);

    /// Bytes and permissions, on the medium before this returns; `to` must not exist, and does not after a failure.
    std::string Copy(const Path& from, const Path& to);
    /// Gives the file another name, or a copy where there are no links; a file at `to` is replaced in one step. Names are on the
    /// medium afterwards.
    std::string KeepAs(const Path& from, const Path& to);
    /// The folder that a name is in; "." for a bare name.
    static Path FolderOf(const Path& path);
    /// Names of files are at most so long: bytes, on Windows UTF-16 units.
    static constexpr size_t kLongestName = 255;
    static bool IsNameTooLong(const Path& path) { return path.filename().native().size() > kLongestName; }
    /// The path with `ending` at its end. Where the name would get too long its short form gets the ending.
    static Path WithEnding(const Path& path, std::string_view ending);
    /// What stands for a long name where more than the name is to fit: its beginning, "~", a digest of all of it, its extension
    /// ("planplanplan~0123456789abcdef.zvd"). The same at all times; of names up to about 200 the name itself.
    static Path ShortForm(const Path& path);
    /// A name beside `path` that no file has: "plan.zvd.1f2e3d4c.tmp".
    static Path TemporaryBeside(const Path& path);
    /// Whether the name has the form that TemporaryBeside makes; `of` (may be null) is set to the name that it was made from, or the
    /// short form of that.
    static bool IsTemporary(const Path& path, Path* of = nullptr);
    /// Whether TemporaryBeside(path) may have made it. Folders are not looked at.
    static bool IsTemporaryOf(const Path& temporary, const Path& path);
};

} // namespace ZvCore
