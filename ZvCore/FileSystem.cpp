#include "ZvCore/FileSystem.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstdio>

namespace ZvCore {

namespace fs = std::filesystem;

namespace {

constexpr size_t kCopyChunk = size_t(1) << 20;
constexpr size_t kDigits = 8;
constexpr std::string_view kEnding = ".tmp";

std::string CopyBytes(IFile& source, IStoredFile& target) {
    std::string buffer(kCopyChunk, '\0');
    while (source.Remaining() > 0) {
        const size_t count = size_t(std::min<uint64_t>(buffer.size(), source.Remaining()));
        if (source.Read(buffer.data(), count) != count)
            return source.ErrorText();
        if (target.Write(buffer.data(), count) != count)
            return target.ErrorText();
    }
    return target.SyncToDisk() ? std::string() : target.ErrorText();
}

} // namespace

fs::path IFileSystem::FolderOf(const Path& path) {
    return path.has_parent_path() ? path.parent_path() : Path(".");
}

fs::path IFileSystem::TemporaryBeside(const Path& path) {
    uint32_t random = 0;
    ZvPlatform::RandomBytes(&random, sizeof random);
    char digits[16];
    std::snprintf(digits, sizeof digits, ".%08x", random);
    Path name = path;
    name += digits;
    name += kEnding;
    return name;
}

bool IFileSystem::IsTemporary(const Path& path, Path* of) {
    const std::string name = ZvPlatform::PathToUtf8(path.filename());
    const size_t tail = 1 + kDigits + kEnding.size();
    if (name.size() <= tail || !name.ends_with(kEnding) || name[name.size() - tail] != '.')
        return false;
    const std::string_view digits = std::string_view(name).substr(name.size() - tail + 1, kDigits);
    if (digits.find_first_not_of("0123456789abcdef") != std::string_view::npos)
        return false;
    if (of)
        *of = path.parent_path() / ZvPlatform::PathFromUtf8(name.substr(0, name.size() - tail));
    return true;
}

std::string IFileSystem::Copy(const Path& from, const Path& to) {
    std::string why;
    const auto source = Open(from, Mode::Read, why);
    auto target = source ? Open(to, Mode::CreateNew, why) : nullptr;
    if (!target)
        return why;
    why = CopyBytes(*source, *target);
    target.reset();
    if (why.empty())
        why = CopyPermissions(from, to);
    if (!why.empty())
        (void)Delete(to);
    return why;
}

std::string IFileSystem::KeepAs(const Path& from, const Path& to) {
    const Path temporary = TemporaryBeside(to);
    std::string why = Link(from, temporary);
    if (!why.empty())
        why = Copy(from, temporary);
    if (!why.empty())
        return why;
    why = Rename(temporary, to);
    // Also after success: renaming one of two names of the same file onto the other leaves both.
    (void)Delete(temporary);
    return why.empty() ? SyncFolder(FolderOf(to)) : why;
}

std::string IFileSystem::ReplaceKeeping(const Path& from, const Path& to, const Path& backup) {
    const std::string why = KeepAs(to, backup);
    return why.empty() ? Rename(from, to) : why;
}

} // namespace ZvCore
