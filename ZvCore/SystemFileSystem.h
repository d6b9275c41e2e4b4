#pragma once
#include "ZvCore/FileSystem.h"

namespace ZvCore {

/// The file system of the machine.
class ZV_API SystemFileSystem final : public IFileSystem {
public:
    std::unique_ptr<IStoredFile> Open(const Path& path, Mode mode, std::string& why) override;
    Info Look(const Path& path) override;
    std::string List(const Path& folder, std::vector<Path>& names) override;
    std::string Rename(const Path& from, const Path& to) override;
    std::string Link(const Path& from, const Path& to) override;
    std::string Delete(const Path& path) override;
    std::string CopyPermissions(const Path& from, const Path& to) override;
    std::string SyncFolder(const Path& folder) override;
    bool CanWriteIn(const Path& folder) override;
    Path Resolve(const Path& path) override;
    Path Absolute(const Path& path) override;
    std::string ReplaceKeeping(const Path& from, const Path& to, const Path& backup) override;
};

} // namespace ZvCore
