#include "ZvCore/SlabPool.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cstdint>
#include <new>
#include <unordered_map>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define ZV_POOL_OFF
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZV_POOL_OFF
#endif
#endif

#ifdef ZV_POOL_OFF

void* SlabPool::Alloc(size_t bytes) {
    return ::operator new(bytes);
}

void SlabPool::Free(void* object, size_t) noexcept {
    ::operator delete(object);
}

SlabPool::Usage SlabPool::GetUsage() {
    return {};
}

#else

namespace {

constexpr size_t kClasses = SlabPool::kLargest / SlabPool::kGranule;

struct FreeObject {
    FreeObject* next;
};

/// Lies at the start of its memory, which is aligned to its own size: an object's slab is found by masking
/// its address. A slab is in its class's list while it has room.
struct alignas(64) Slab {
    Slab* previous = nullptr;
    Slab* next = nullptr;
    FreeObject* freed = nullptr; ///< objects given back
    uint32_t fresh = 0;          ///< offset of what was never handed out
    uint32_t live = 0;           ///< objects in use
    bool isListed = false;
};

/// Memory for slabs: the first from the general heap, those of programs that need many from large pages. Such a page goes back
/// when none of its slabs is in use.
class SlabSource {
public:
    void* Take() {
        if (m_free.empty() && (m_plain < kPlain || !MapPage())) {
            void* slab = ::operator new(SlabPool::kSlab, std::align_val_t(SlabPool::kSlab));
            ++m_plain;
            return slab;
        }
        void* slab = m_free.back();
        m_free.pop_back();
        ++m_used[PageOf(slab)];
        return slab;
    }

    void Give(void* slab) noexcept {
        const auto page = m_used.find(PageOf(slab));
        if (page == m_used.end()) {
            --m_plain;
            return ::operator delete(slab, std::align_val_t(SlabPool::kSlab));
        }
        m_free.push_back(slab); // there is room: it came from here
        if (--page->second > 0)
            return;
        std::erase_if(m_free, [&](void* free) { return PageOf(free) == page->first; });
        ZvPlatform::UnmapPages(page->first, ZvPlatform::kLargePage);
        m_used.erase(page);
    }

private:
    static constexpr size_t kPlain = 32;
    static void* PageOf(void* slab) {
        return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(slab) &
                                       ~uintptr_t(ZvPlatform::kLargePage - 1));
    }

    bool MapPage() {
        m_free.reserve((m_used.size() + 1) * kSlabsInPage);
        void* page = ZvPlatform::MapPages(ZvPlatform::kLargePage);
        if (!page)
            return false;
        m_used[page] = 0;
        for (size_t i = kSlabsInPage; i-- > 0;)
            m_free.push_back(static_cast<char*>(page) + i * SlabPool::kSlab);
        return true;
    }

    static constexpr size_t kSlabsInPage = ZvPlatform::kLargePage / SlabPool::kSlab;
    std::vector<void*> m_free;             ///< slabs of large pages that are not in use
    std::unordered_map<void*, int> m_used; ///< slabs in use by large page
    size_t m_plain = 0;
};

/// Never destroyed, as the classes below.
SlabSource& Source() {
    static auto* source = new SlabSource;
    return *source;
}

/// Objects of one size. Slabs with room are listed; the first of them serves.
class SizeClass {
public:
    void* Alloc(size_t objectSize) {
        Slab* slab = m_withRoom ? m_withRoom : AddSlab();
        ++slab->live;
        ++m_live;
        if (FreeObject* object = slab->freed) {
            slab->freed = object->next;
            if (!object->next && !HasFresh(slab, objectSize))
                Unlist(slab);
            return object;
        }
        void* object = reinterpret_cast<char*>(slab) + slab->fresh;
        slab->fresh += uint32_t(objectSize);
        if (!HasFresh(slab, objectSize))
            Unlist(slab);
        return object;
    }

    void Free(void* object) noexcept {
        auto* slab =
            reinterpret_cast<Slab*>(reinterpret_cast<uintptr_t>(object) & ~uintptr_t(SlabPool::kSlab - 1));
        slab->freed = new (object) FreeObject{slab->freed};
        --m_live;
        if (!slab->isListed)
            List(slab);
        if (--slab->live == 0)
            Retire(slab);
    }

    size_t Live() const { return m_live; }
    size_t Slabs() const { return m_slabs; }

private:
    static bool HasFresh(const Slab* slab, size_t objectSize) {
        return slab->fresh + objectSize <= SlabPool::kSlab;
    }

    Slab* AddSlab() {
        if (m_spare) {
            Slab* slab = m_spare;
            m_spare = nullptr;
            List(slab);
            return slab;
        }
        auto* slab = new (Source().Take()) Slab;
        slab->fresh = sizeof(Slab);
        ++m_slabs;
        List(slab);
        return slab;
    }

    /// One empty slab is kept, so that an object that comes and goes does not cost a slab each time.
    void Retire(Slab* slab) {
        Unlist(slab);
        if (!m_spare) {
            slab->freed = nullptr;
            slab->fresh = sizeof(Slab);
            m_spare = slab;
            return;
        }
        --m_slabs;
        Source().Give(slab);
    }

    void List(Slab* slab) {
        slab->previous = nullptr;
        slab->next = m_withRoom;
        if (m_withRoom)
            m_withRoom->previous = slab;
        m_withRoom = slab;
        slab->isListed = true;
    }

    void Unlist(Slab* slab) {
        (slab->previous ? slab->previous->next : m_withRoom) = slab->next;
        if (slab->next)
            slab->next->previous = slab->previous;
        slab->isListed = false;
    }

    Slab* m_withRoom = nullptr;
    Slab* m_spare = nullptr;
    size_t m_live = 0;
    size_t m_slabs = 0;
};

/// Never destroyed: objects with static lifetime may still free theirs at the program's end.
SizeClass g_classes[kClasses];

} // namespace

void* SlabPool::Alloc(size_t bytes) {
    if (bytes > kLargest)
        return ::operator new(bytes);
    const size_t index = bytes == 0 ? 0 : (bytes - 1) / kGranule;
    return g_classes[index].Alloc((index + 1) * kGranule);
}

void SlabPool::Free(void* object, size_t bytes) noexcept {
    if (!object)
        return;
    if (bytes > kLargest)
        return ::operator delete(object);
    g_classes[bytes == 0 ? 0 : (bytes - 1) / kGranule].Free(object);
}

SlabPool::Usage SlabPool::GetUsage() {
    Usage usage;
    for (size_t index = 0; index < kClasses; ++index) {
        usage.reservedBytes += g_classes[index].Slabs() * kSlab;
        usage.usedBytes += g_classes[index].Live() * (index + 1) * kGranule;
        usage.objects += g_classes[index].Live();
    }
    return usage;
}

#endif
