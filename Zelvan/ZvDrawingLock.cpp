#include "Zelvan/ZvDrawingLock.h"
#include "ZvCore/Platform/Platform.h"
#include <cstdlib>
#include <sstream>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr const char* kFirstLine = "Zelvan lock 1";
constexpr uint64_t kLongest = 4096;
constexpr int kTries = 3;

} // namespace

ZvDrawingLock::Holder ZvDrawingLock::Holder::Self() {
    const uint64_t id = ZvPlatform::ProcessId();
    return {id, ZvPlatform::ProcessBirth(id), ZvPlatform::HostName()};
}

bool ZvDrawingLock::Holder::IsGone() const {
    if (host != ZvPlatform::HostName())
        return false;
    return !ZvPlatform::IsProcessAlive(process) ||
           (!birth.empty() && ZvPlatform::ProcessBirth(process) != birth);
}

fs::path ZvDrawingLock::NameFor(const fs::path& drawing) {
    return ZvCore::IFileSystem::WithEnding(drawing, ".lock");
}

std::optional<ZvDrawingLock::Holder> ZvDrawingLock::HolderOf(ZvCore::IFileSystem& files,
                                                             const fs::path& drawing) {
    Holder holder;
    return Read(files, NameFor(drawing), holder) == Content::Holder ? std::optional(holder) : std::nullopt;
}

bool ZvDrawingLock::IsHeldElsewhere(ZvCore::IFileSystem& files, const fs::path& drawing) {
    const fs::path lock = NameFor(drawing);
    Holder holder;
    switch (Read(files, lock, holder)) {
    case Content::Holder:
        return holder != Holder::Self() && !holder.IsGone();
    case Content::Unreadable:
        return files.Look(lock).exists;
    default:
        return false;
    }
}

ZvDrawingLock& ZvDrawingLock::operator=(ZvDrawingLock&& other) noexcept {
    if (this != &other) {
        Release();
        m_files = std::exchange(other.m_files, nullptr);
        m_drawing = std::move(other.m_drawing);
        m_other = std::move(other.m_other);
    }
    return *this;
}

void ZvDrawingLock::Release() {
    if (!m_files)
        return;
    const fs::path lock = NameFor(m_drawing);
    Holder holder; // somebody may have taken it over, on a machine that saw this one as gone
    if (Read(*m_files, lock, holder) == Content::Holder && holder == Holder::Self())
        (void)m_files->Delete(lock);
    m_files = nullptr;
}

ZvDrawingLock::Content ZvDrawingLock::Read(ZvCore::IFileSystem& files, const fs::path& lock, Holder& holder) {
    std::string why;
    const auto file = files.Open(lock, ZvCore::IFileSystem::Mode::Read, why);
    if (!file || file->Length() > kLongest)
        return Content::Unreadable;
    std::string text(size_t(file->Length()), '\0');
    if (file->Read(text.data(), text.size()) != text.size())
        return Content::Unreadable;
    std::istringstream lines(text);
    std::string first, process;
    if (!std::getline(lines, first) || first != kFirstLine || !std::getline(lines, process) ||
        !std::getline(lines, holder.birth) || !std::getline(lines, holder.host))
        return Content::Torn;
    holder.process = std::strtoull(process.c_str(), nullptr, 10);
    return Content::Holder;
}

/// The lock appears with its content or not at all, where the file system has links.
bool ZvDrawingLock::Write(const fs::path& lock, bool& exists) {
    const Holder self = Holder::Self();
    const std::string text = std::string(kFirstLine) + "\n" + std::to_string(self.process) + "\n" +
                             self.birth + "\n" + self.host + "\n";
    const auto write = [&](const fs::path& path) {
        std::string why;
        auto file = m_files->Open(path, ZvCore::IFileSystem::Mode::CreateNew, why);
        if (!file)
            return false;
        const bool good = file->Write(text.data(), text.size()) == text.size() && file->SyncToDisk();
        file.reset();
        if (!good)
            (void)m_files->Delete(path);
        return good;
    };
    const fs::path temporary = ZvCore::IFileSystem::TemporaryBeside(lock);
    if (!write(temporary))
        return false;
    bool good = m_files->Link(temporary, lock).empty();
    exists = !good && m_files->Look(lock).exists;
    (void)m_files->Delete(temporary);
    if (!good && !exists) {
        good = write(lock);
        exists = !good && m_files->Look(lock).exists;
    }
    return good;
}

/// Takes a stale lock away. False when it was not the stale one any more.
bool ZvDrawingLock::TakeOver(const fs::path& lock, const Holder& stale) {
    const fs::path aside = ZvCore::IFileSystem::TemporaryBeside(lock);
    if (!m_files->Rename(lock, aside).empty())
        return false;
    Holder taken;
    const Content content = Read(*m_files, aside, taken);
    const bool wasStale = content == Content::Torn || (content == Content::Holder && taken == stale);
    if (!wasStale && !m_files->Link(aside, lock).empty() && !m_files->Look(lock).exists)
        (void)m_files->Rename(aside, lock); // no links here
    (void)m_files->Delete(aside);
    return wasStale;
}

ZvDrawingLock::Outcome ZvDrawingLock::Take(ZvCore::IFileSystem& files, const fs::path& drawing) {
    Release();
    m_drawing = drawing;
    m_files = &files;
    const fs::path lock = NameFor(drawing);
    for (int attempt = 0; attempt < kTries; ++attempt) {
        bool exists = false;
        if (Write(lock, exists))
            return Outcome::Taken;
        if (!exists)
            break;
        Holder holder;
        const Content content = Read(files, lock, holder);
        if (content == Content::Unreadable)
            break; // it may be anybody's
        const bool readable = content == Content::Holder;
        if (readable && holder == Holder::Self()) {
            m_files = nullptr; // whoever took it gives it back
            return Outcome::Taken;
        }
        if (readable && !holder.IsGone()) {
            m_files = nullptr;
            m_other = holder;
            return Outcome::Held;
        }
        (void)TakeOver(lock, holder);
    }
    m_files = nullptr;
    return Outcome::Unavailable;
}
