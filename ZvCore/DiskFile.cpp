#include "ZvCore/DiskFile.h"
#include "ZvCore/Platform/NativeFile.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstring>
#include <utility>

namespace ZvCore {

namespace {

constexpr size_t kWindow = size_t(256) << 10;

} // namespace

/// One window of the file is held in memory: bytes waiting to be written (`dirty`), or bytes read ahead.
/// Invariants: a dirty window overlaps nothing newer on disk; `length` counts what waits; a mapped file has
/// no window.
struct DiskFile::Impl {
    std::filesystem::path path;
    std::unique_ptr<ZvPlatform::NativeFile> file;
    bool writable = false;
    const uint8_t* map = nullptr;
    uint64_t length = 0;
    uint64_t position = 0;

    std::unique_ptr<uint8_t[]> window;
    uint64_t start = 0;
    size_t used = 0;
    bool dirty = false;

    bool failed = false;
    bool refuseWrites = false;
    std::string why;

    bool Fail(const char* doing, const std::string& reason) {
        if (!failed)
            why = std::string("cannot ") + doing + " '" + ZvPlatform::PathToUtf8(path) + "': " + reason;
        failed = true;
        return false;
    }
    bool RefuseWrites(const std::string& reason) {
        refuseWrites = true;
        return Fail("write", reason);
    }
    void Reach(uint64_t end) { length = std::max(length, end); }

    uint8_t* Window() {
        if (!window)
            window = std::make_unique_for_overwrite<uint8_t[]>(kWindow);
        return window.get();
    }
    bool WriteThrough(uint64_t offset, const void* bytes, size_t count);
    bool FlushWindow();
    void PutInWindow(const void* bytes, size_t count);
    size_t ReadUnmapped(void* bytes, size_t count);
};

bool DiskFile::Impl::WriteThrough(uint64_t offset, const void* bytes, size_t count) {
    std::string reason;
    if (file->WriteAt(offset, bytes, count, reason) != count)
        return RefuseWrites(reason);
    Reach(offset + count);
    return true;
}

bool DiskFile::Impl::FlushWindow() {
    if (!dirty)
        return true;
    dirty = false;
    const size_t count = std::exchange(used, 0);
    return WriteThrough(start, window.get(), count);
}

void DiskFile::Impl::PutInWindow(const void* bytes, size_t count) {
    const auto at = size_t(position - start);
    std::memcpy(Window() + at, bytes, count);
    used = std::max(used, at + count);
    dirty = true;
    position += count;
    Reach(position);
}

DiskFile::DiskFile() : m_impl(std::make_unique<Impl>()) {}

DiskFile::~DiskFile() {
    if (m_impl->file)
        m_impl->FlushWindow();
}

std::unique_ptr<DiskFile> DiskFile::Open(const std::filesystem::path& path, Mode mode, std::string& why,
                                         Access access) {
    using ZvPlatform::NativeFile;
    const auto native = mode == Mode::Read     ? NativeFile::Access::Read
                        : mode == Mode::Create ? NativeFile::Access::Create
                                               : NativeFile::Access::CreateNew;
    std::string reason;
    auto file = NativeFile::Open(path, native, reason);
    if (!file) {
        const char* doing = mode == Mode::Read ? "open" : "create";
        why = std::string("cannot ") + doing + " '" + ZvPlatform::PathToUtf8(path) + "': " + reason;
        return nullptr;
    }
    std::unique_ptr<DiskFile> disk(new DiskFile);
    Impl& impl = *disk->m_impl;
    impl.path = path;
    impl.length = file->Length();
    impl.writable = mode != Mode::Read;
    if (!impl.writable && access == Access::Mapped)
        impl.map = file->Map(impl.length);
    impl.file = std::move(file);
    return disk;
}

bool DiskFile::Error() const {
    return m_impl->failed;
}

std::string DiskFile::ErrorText() const {
    return m_impl->why;
}

void DiskFile::ClearError() {
    m_impl->failed = m_impl->refuseWrites = false;
    m_impl->why.clear();
}

uint64_t DiskFile::Position() const {
    return m_impl->position;
}

uint64_t DiskFile::Length() const {
    return m_impl->length;
}

const std::filesystem::path& DiskFile::Path() const {
    return m_impl->path;
}

size_t DiskFile::Write(const void* bytes, size_t count) {
    Impl& impl = *m_impl;
    if (impl.refuseWrites)
        return 0;
    if (!impl.writable) {
        impl.RefuseWrites("it was opened for reading");
        return 0;
    }
    if (count == 0)
        return 0;
    const uint64_t end = impl.position + count;
    if (impl.dirty && impl.position >= impl.start && impl.position <= impl.start + impl.used &&
        end - impl.start <= kWindow) {
        impl.PutInWindow(bytes, count);
        return count;
    }
    const bool patchesBefore = impl.dirty && end <= impl.start;
    if (!patchesBefore && !impl.FlushWindow())
        return 0;
    if (patchesBefore || count >= kWindow) {
        if (!patchesBefore)
            impl.used = 0; // what was read ahead may be what changes
        if (!impl.WriteThrough(impl.position, bytes, count))
            return 0;
        impl.position = end;
        return count;
    }
    impl.start = impl.position;
    impl.used = 0;
    impl.PutInWindow(bytes, count);
    return count;
}

size_t DiskFile::Impl::ReadUnmapped(void* bytes, size_t count) {
    const bool inWindow = position >= start && position + count <= start + used;
    if (inWindow) {
        std::memcpy(bytes, window.get() + (position - start), count);
        return count;
    }
    if (dirty && !FlushWindow())
        return 0;
    std::string reason;
    size_t got = 0;
    if (count >= kWindow) {
        got = file->ReadAt(position, bytes, count, reason);
    } else {
        start = position;
        used = file->ReadAt(start, Window(), size_t(std::min<uint64_t>(kWindow, length - start)), reason);
        got = std::min(used, count);
        std::memcpy(bytes, window.get(), got);
    }
    if (got < count)
        Fail("read", reason.empty() ? "it has become shorter" : reason);
    return got;
}

size_t DiskFile::Read(void* bytes, size_t count) {
    Impl& impl = *m_impl;
    const uint64_t there = impl.position < impl.length ? impl.length - impl.position : 0;
    if (count > there) {
        impl.Fail("read", "the file ends at " + std::to_string(impl.length) + ", " + std::to_string(count) +
                              " bytes were wanted at " + std::to_string(impl.position));
        count = size_t(there);
    }
    if (count == 0)
        return 0;
    if (impl.map)
        std::memcpy(bytes, impl.map + impl.position, count);
    else
        count = impl.ReadUnmapped(bytes, count);
    impl.position += count;
    return count;
}

bool DiskFile::Seek(uint64_t position) {
    constexpr uint64_t mostOffset = INT64_MAX;
    if (position > mostOffset || (!m_impl->writable && position > m_impl->length))
        return m_impl->Fail("seek in", "it ends at " + std::to_string(m_impl->length) + ", before " +
                                           std::to_string(position));
    m_impl->position = position;
    return true;
}

bool DiskFile::SeekRelative(int64_t distance) {
    if (distance < 0 && uint64_t(-(distance + 1)) >= m_impl->position)
        return m_impl->Fail("seek in", "the place lies before its start");
    return Seek(m_impl->position + uint64_t(distance));
}

const uint8_t* DiskFile::View(uint64_t position, size_t count) const {
    const Impl& impl = *m_impl;
    return impl.map && position <= impl.length && count <= impl.length - position ? impl.map + position
                                                                                  : nullptr;
}

bool DiskFile::Flush() {
    return m_impl->FlushWindow() && !m_impl->failed;
}

bool DiskFile::SyncToDisk() {
    std::string reason;
    if (!Flush())
        return false;
    return m_impl->file->Sync(reason) || m_impl->RefuseWrites(reason);
}

} // namespace ZvCore
