#include "ZvCore/SystemFileSystem.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/FileFacts.h"
#include "ZvCore/Platform/Platform.h"

namespace ZvCore {

namespace fs = std::filesystem;

namespace {

/// As many as Linux follows.
constexpr int kMostLinks = 40;

} // namespace

IFileSystem& IFileSystem::System() {
    static SystemFileSystem files;
    return files;
}

std::unique_ptr<IStoredFile> SystemFileSystem::Open(const Path& path, Mode mode, std::string& why) {
    const DiskFile::Mode how = mode == Mode::Read     ? DiskFile::Mode::Read
                               : mode == Mode::Create ? DiskFile::Mode::Create
                                                      : DiskFile::Mode::CreateNew;
    return DiskFile::Open(path, how, why);
}

IFileSystem::Info SystemFileSystem::Look(const Path& path) {
    return ZvPlatform::FactsOf(path);
}

std::string SystemFileSystem::List(const Path& folder, std::vector<Path>& names) {
    names.clear();
    std::error_code error;
    fs::directory_iterator at(folder.empty() ? Path(".") : folder, error);
    for (const fs::directory_iterator end; !error && at != end; at.increment(error))
        names.push_back(at->path().filename());
    return error ? error.message() : std::string();
}

std::string SystemFileSystem::Rename(const Path& from, const Path& to) {
    return ZvPlatform::RenameReplace(from, to);
}

std::string SystemFileSystem::Link(const Path& from, const Path& to) {
    return ZvPlatform::HardLink(from, to);
}

std::string SystemFileSystem::Delete(const Path& path) {
    return ZvPlatform::DeleteFileIfThere(path);
}

std::string SystemFileSystem::CopyPermissions(const Path& from, const Path& to) {
    std::error_code error;
    const fs::file_status status = fs::status(from, error);
    if (!error)
        fs::permissions(to, status.permissions(), error);
    return error ? error.message() : std::string();
}

std::string SystemFileSystem::SyncFolder(const Path& folder) {
    return ZvPlatform::SyncFolder(folder);
}

bool SystemFileSystem::CanWriteIn(const Path& folder) {
    return ZvPlatform::IsFolderWritable(folder);
}

fs::path SystemFileSystem::Resolve(const Path& path) {
    Path at = path;
    std::error_code error;
    for (int links = 0; links < kMostLinks; ++links) {
        if (!fs::is_symlink(at, error))
            return at;
        const Path next = fs::read_symlink(at, error);
        if (error)
            return at;
        at = at.parent_path() / next; // an absolute one takes the place of the whole
    }
    return path;
}

fs::path SystemFileSystem::Absolute(const Path& path) {
    std::error_code error;
    const Path absolute = path.empty() ? Path() : fs::absolute(path, error);
    return error || absolute.empty() ? path : absolute;
}

std::string SystemFileSystem::ReplaceKeeping(const Path& from, const Path& to, const Path& backup) {
    if (ZvPlatform::kReplacesWithBackup && FolderOf(to) == FolderOf(backup))
        return ZvPlatform::ReplaceWithBackup(from, to, backup);
    return IFileSystem::ReplaceKeeping(from, to, backup);
}

} // namespace ZvCore
