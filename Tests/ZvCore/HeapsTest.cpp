#include "ZvCore/Platform/Platform.h"
#include "ZvCore/SlabPool.h"
#include "ZvCore/TrivialHeap.h"
#include "ZvCore/ZvcDumbHeap.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

TEST(ZvcDumbHeap, BlocksAreApartAlignedAndCounted) {
    ZvcDumbHeap heap;
    std::vector<std::pair<char*, size_t>> blocks;
    size_t used = 0;
    for (size_t size : {size_t(0), size_t(1), size_t(3), size_t(50'000), size_t(2'000'000), size_t(7)}) {
        for (int i = 0; i < 30; ++i) {
            auto* block = static_cast<char*>(heap.Alloc(size));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 4, 0u);
            std::memset(block, int(blocks.size()), size);
            blocks.emplace_back(block, size);
            used += (size + 3) / 4 * 4;
        }
    }
    for (size_t i = 0; i < blocks.size(); ++i)
        EXPECT_EQ(std::string(blocks[i].first, blocks[i].second), std::string(blocks[i].second, char(i)));
    EXPECT_EQ(heap.BytesUsed(), used);
    EXPECT_GE(heap.MemUsage(), used);
    EXPECT_LT(heap.MemUsage(), used + (size_t(4) << 20));
    EXPECT_EQ(heap.Alloc(SIZE_MAX - 2), nullptr);
    heap.Clear();
    EXPECT_EQ(heap.MemUsage() + heap.BytesUsed(), 0u);
    EXPECT_NE(heap.Alloc(8), nullptr);
}

TEST(TrivialHeap, ObjectsLiveInItsBlocksAndAreDestroyedByTheirOwners) {
    const auto token = std::make_shared<int>(1);
    struct Service {
        Service(std::shared_ptr<int> t, long double a) : token(std::move(t)), aligned(a) {}
        std::shared_ptr<int> token;
        long double aligned;
    };
    TrivialHeap heap(5632);
    {
        std::vector<HeapPtr<Service>> services;
        for (int i = 0; i < 1000; ++i) {
            heap.Alloc(size_t(i % 5));
            services.emplace_back(heap.New<Service>(token, 0.5L));
            EXPECT_EQ(reinterpret_cast<uintptr_t>(services.back().get()) % alignof(Service), 0u);
        }
        EXPECT_EQ(token.use_count(), 1001);
    }
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_NE(heap.Alloc(1'000'000), nullptr);
    EXPECT_LT(heap.MemUsage(), 1'400'000u);
}

TEST(SlabPool, ObjectsOfAllSizesStayApartWhileOthersComeAndGo) {
    const SlabPool::Usage before = SlabPool::GetUsage();
    std::mt19937 random(3);
    struct Object {
        char* bytes;
        size_t size;
        char fill;
    };
    std::vector<Object> live;
    const auto freeOne = [&live](size_t i) {
        const Object object = live[i];
        ASSERT_EQ(std::string(object.bytes, object.size), std::string(object.size, object.fill));
        SlabPool::Free(object.bytes, object.size);
        live[i] = live.back();
        live.pop_back();
    };
    for (int step = 0; step < 100'000; ++step) {
        const bool shrinking = step / 20'000 % 2 == 1;
        if (!live.empty() && random() % 100 < (shrinking ? 60u : 30u)) {
            freeOne(random() % live.size());
            continue;
        }
        const size_t size = random() % 600;
        auto* bytes = static_cast<char*>(SlabPool::Alloc(size));
        ASSERT_EQ(reinterpret_cast<uintptr_t>(bytes) % 16, 0u);
        std::memset(bytes, step % 100, size);
        live.push_back({bytes, size, char(step % 100)});
    }
    if (SlabPool::GetUsage().objects > 0) { // the pool is in use in this build
        const auto pooled =
            std::count_if(live.begin(), live.end(), [](const Object& o) { return o.size <= 512; });
        EXPECT_EQ(SlabPool::GetUsage().objects, before.objects + size_t(pooled));
        EXPECT_GE(SlabPool::GetUsage().reservedBytes, SlabPool::GetUsage().usedBytes);
    }
    while (!live.empty())
        freeOne(live.size() - 1);
    EXPECT_EQ(SlabPool::GetUsage().usedBytes, before.usedBytes);
    EXPECT_LE(SlabPool::GetUsage().reservedBytes, 32 * SlabPool::kSlab)
        << "empty slabs go back, but for one a class";
    SlabPool::Free(nullptr, 16);
}

TEST(Heaps, LargeOnesTakeLargePagesAndGiveThemBack) {
    const size_t before = ZvPlatform::MappedBytes();
    {
        ZvcDumbHeap heap;
        for (int i = 0; i < 300'000; ++i)
            std::memset(heap.Alloc(100), i, 100);
        EXPECT_GT(ZvPlatform::MappedBytes(), before);
        EXPECT_LT(heap.MemUsage(), size_t(33) << 20);
    }
    EXPECT_EQ(ZvPlatform::MappedBytes(), before);
    std::vector<char*> objects;
    for (int i = 0; i < 60'000; ++i) {
        objects.push_back(static_cast<char*>(SlabPool::Alloc(400)));
        std::memset(objects.back(), i % 100, 400);
    }
    if (SlabPool::GetUsage().objects > 0) {
        EXPECT_GT(ZvPlatform::MappedBytes(), before);
    }
    for (size_t i = 0; i < objects.size(); ++i) {
        ASSERT_EQ(std::string(objects[i], 400), std::string(400, char(i % 100)));
        SlabPool::Free(objects[i], 400);
    }
    EXPECT_LE(ZvPlatform::MappedBytes(), before + ZvPlatform::kLargePage) << "an empty slab is kept";
}
