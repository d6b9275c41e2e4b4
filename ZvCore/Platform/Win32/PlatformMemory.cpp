#include "ZvCore/Platform/Platform.h"
#include "ZvCore/Platform/Win32/Win32.h"
#include <atomic>

namespace ZvPlatform {

namespace {
std::atomic<size_t> g_mapped{0};
}

// Addresses are handed out in steps of 64 KiB: a place that is large enough is looked for, given back, and taken again from
// where it is aligned. Another thread may be quicker, so it is tried more than once.
void* MapPages(size_t bytes) noexcept {
    constexpr int kTries = 8;
    for (int i = 0; i < kTries && bytes + kLargePage > bytes; ++i) {
        void* room = VirtualAlloc(nullptr, bytes + kLargePage, MEM_RESERVE, PAGE_READWRITE);
        if (!room)
            return nullptr;
        VirtualFree(room, 0, MEM_RELEASE);
        const uintptr_t at = (reinterpret_cast<uintptr_t>(room) + kLargePage - 1) / kLargePage * kLargePage;
        void* pages =
            VirtualAlloc(reinterpret_cast<void*>(at), bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        if (pages) {
            g_mapped += bytes;
            return pages;
        }
    }
    return nullptr;
}

void UnmapPages(void* pages, size_t bytes) noexcept {
    if (!pages)
        return;
    VirtualFree(pages, 0, MEM_RELEASE);
    g_mapped -= bytes;
}

size_t MappedBytes() noexcept {
    return g_mapped;
}

} // namespace ZvPlatform
