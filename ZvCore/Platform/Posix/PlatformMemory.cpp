#include "ZvCore/Platform/Platform.h"
#include <atomic>
#include <sys/mman.h>

namespace ZvPlatform {

namespace {
std::atomic<size_t> g_mapped{0};
}

void* MapPages(size_t bytes) noexcept {
    const size_t taken = bytes + kLargePage; // what is too much before and behind is given back
    if (taken < bytes)
        return nullptr;
    void* map = mmap(nullptr, taken, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED)
        return nullptr;
    char* start = static_cast<char*>(map);
    const size_t before = (kLargePage - reinterpret_cast<uintptr_t>(map) % kLargePage) % kLargePage;
    if (before > 0)
        munmap(start, before);
    munmap(start + before + bytes, kLargePage - before);
#ifdef MADV_HUGEPAGE
    madvise(start + before, bytes, MADV_HUGEPAGE); // a wish: small pages will do
#endif
    g_mapped += bytes;
    return start + before;
}

void UnmapPages(void* pages, size_t bytes) noexcept {
    if (!pages)
        return;
    munmap(pages, bytes);
    g_mapped -= bytes;
}

size_t MappedBytes() noexcept {
    return g_mapped;
}

} // namespace ZvPlatform
