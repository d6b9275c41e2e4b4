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
constexpr size_t kTail = 1 + kDigits + kEnding.size();
/// Of a short form, in units of the system; leaves room for two endings.
constexpr size_t kLongestShort = 200;
constexpr size_t kLongestExtension = 16;

/// The beginning of the name, cut between characters.
fs::path Beginning(const fs::path& name, size_t length) {
    fs::path::string_type text = name.native();
    const auto continues = [](auto unit) {
        return sizeof unit == 1 ? (unit & 0xC0) == 0x80 : (unit & 0xFC00) == 0xDC00;
    };
    while (length > 0 && continues(text[length]))
        --length;
    text.resize(length);
    return text;
}

/// "~" and FNV-1a.
std::string MarkOf(const std::string& text) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text)
        hash = (hash ^ uint8_t(c)) * 0x100000001b3;
    char digits[20];
    std::snprintf(digits, sizeof digits, "~%08x%08x", uint32_t(hash >> 32), uint32_t(hash));
    return digits;
}

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

fs::path IFileSystem::ShortForm(const Path& path) {
    const Path name = path.filename();
    if (name.native().size() <= kLongestShort)
        return path;
    Path extension = name.extension();
    if (extension.native().size() > kLongestExtension)
        extension.clear();
    const std::string middle = MarkOf(ZvPlatform::PathToUtf8(name));
    Path brief = Beginning(name, kLongestShort - middle.size() - extension.native().size());
    brief += middle;
    brief += extension;
    return path.parent_path() / brief;
}

fs::path IFileSystem::WithEnding(const Path& path, std::string_view ending) {
    const bool fits = path.filename().native().size() + ending.size() <= kLongestName;
    Path name = fits ? path : ShortForm(path);
    name += ending;
    return name;
}

fs::path IFileSystem::TemporaryBeside(const Path& path) {
    uint32_t random = 0;
    ZvPlatform::RandomBytes(&random, sizeof random);
    char digits[16];
    std::snprintf(digits, sizeof digits, ".%08x", random);
    return WithEnding(path, std::string(digits).append(kEnding));
}

bool IFileSystem::IsTemporary(const Path& path, Path* of) {
    const std::string name = ZvPlatform::PathToUtf8(path.filename());
    if (name.size() <= kTail || !name.ends_with(kEnding) || name[name.size() - kTail] != '.')
        return false;
    const std::string_view digits = std::string_view(name).substr(name.size() - kTail + 1, kDigits);
    if (digits.find_first_not_of("0123456789abcdef") != std::string_view::npos)
        return false;
    if (of)
        *of = path.parent_path() / ZvPlatform::PathFromUtf8(name.substr(0, name.size() - kTail));
    return true;
}

bool IFileSystem::IsTemporaryOf(const Path& temporary, const Path& path) {
    const std::string name = ZvPlatform::PathToUtf8(temporary.filename());
    return IsTemporary(temporary) &&
           WithEnding(path.filename(), name.substr(name.size() - kTail)) == Path(temporary.filename());
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
