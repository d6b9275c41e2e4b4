#include "ZvCore/BitMap.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Guid.h"
#include "ZvCore/PagedBitTree.h"
#include "ZvCore/dvect.h"

#include <gtest/gtest.h>
#include <set>
#include <unordered_set>

TEST(Guid, TextFormIsReadInEveryUsualSpelling) {
    Guid guid;
    for (int i = 0; i < 16; ++i)
        guid.bytes[size_t(i)] = uint8_t(i * 17);
    EXPECT_EQ(guid.ToString(), XStringW(u"00112233-4455-6677-8899-AABBCCDDEEFF"));
    for (const char16_t* text :
         {u"00112233-4455-6677-8899-AABBCCDDEEFF", u"{00112233-4455-6677-8899-aabbccddeeff}"}) {
        Guid parsed;
        EXPECT_TRUE(Guid::Parse(text, parsed));
        EXPECT_EQ(parsed, guid);
    }
    for (const char16_t* text :
         {u"", u"00112233445566778899AABBCCDDEEFF", u"{00112233-4455-6677-8899-AABBCCDDEEFF",
          u"00112233-4455-6677-8899-AABBCCDDEEFG", u"0011223-34455-6677-8899-AABBCCDDEEFF"}) {
        Guid untouched = guid;
        EXPECT_FALSE(Guid::Parse(text, untouched)) << XStringW(text).ToUtf8();
        EXPECT_EQ(untouched, guid);
    }
}

TEST(Guid, NewOnesAreRandomVersionFourAndDiffer) {
    std::unordered_set<Guid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Guid guid = Guid::New();
        EXPECT_EQ(guid.bytes[6] >> 4, 4);
        EXPECT_EQ(guid.bytes[8] >> 6, 2);
        seen.insert(guid);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

TEST(DateTime, CountsFrom1601AndPrintsUtc) {
    EXPECT_EQ(DateTime::FromUtc(1601, 1, 1).ticks, 0u);
    EXPECT_EQ(DateTime::FromUtc(1970, 1, 1).ticks,
              116444736000000000u); // the published offset of both epochs
    const DateTime date = DateTime::FromUtc(2004, 11, 8, 13, 26, 23);
    EXPECT_EQ(date.ToString(), XStringW(u"2004-11-08 13:26:23Z"));
    EXPECT_EQ(date.ToUnixSeconds(), 1099920383.0);
    EXPECT_EQ(DateTime::FromUnixSeconds(1099920383.0), date);
    EXPECT_EQ(DateTime::FromUtc(2003, 14, 29), DateTime::FromUtc(2004, 2, 29));
    EXPECT_EQ(DateTime::FromUtc(1500, 1, 1).ticks, 0u);
    EXPECT_EQ(DateTime::FromUnixSeconds(-1e300).ticks, 0u);
    EXPECT_EQ(DateTime{~uint64_t(0)}.ToString(), XStringW(u"9999-12-31 23:59:59Z"));
}

TEST(DateTime, SystemClockIsInThisCenturyAndNeverGoesBack) {
    const IZvClock& clock = IZvClock::System();
    EXPECT_GT(clock.Now(), DateTime::FromUtc(2020, 1, 1));
    EXPECT_LT(clock.Now(), DateTime::FromUtc(2200, 1, 1));
    const double before = clock.MonotonicSeconds();
    EXPECT_LE(before, clock.MonotonicSeconds());
}

TEST(dvect, GrowsByDoublingFromTwo) {
    dvect<int> v;
    std::set<size_t> capacities;
    for (int i = 0; i < 20; ++i) {
        v.push_back(i);
        capacities.insert(v.capacity());
    }
    EXPECT_EQ(capacities, (std::set<size_t>{2, 4, 8, 16, 32}));
    EXPECT_EQ(sizeof v, 16u);
}

TEST(dvect, OwnsItsItemsThroughEveryOperation) {
    const auto token = std::make_shared<int>(7);
    {
        dvect<std::shared_ptr<int>> v{token, token, nullptr};
        v.insert_at(1, std::make_shared<int>(9));
        ASSERT_EQ(v.size(), 4u);
        EXPECT_EQ(*v[1], 9);
        v.push_back(v[0]); // an item of its own while it grows
        v.erase_at(1);
        v.resize(6);
        dvect<std::shared_ptr<int>> copy = v;
        EXPECT_EQ(token.use_count(), 7);
        copy = dvect<std::shared_ptr<int>>{token};
        v.resize(2);
        v.shrink_to_fit();
        EXPECT_EQ(v.capacity(), 2u);
        v = copy;
    }
    EXPECT_EQ(token.use_count(), 1);
}

TEST(BitMap, AgreesWithASetAlsoAcrossWordsAndAfterShrinking) {
    BitMap bits;
    bits.Resize(200);
    const std::set<size_t> on{0, 1, 63, 64, 127, 130, 199};
    for (size_t i : on)
        bits.Set(i, true);
    EXPECT_EQ(bits.CountSet(), on.size());
    std::set<size_t> found;
    for (size_t i = bits.NextSet(0); i < bits.Size(); i = bits.NextSet(i + 1))
        found.insert(i);
    EXPECT_EQ(found, on);
    EXPECT_FALSE(bits.Get(200));
    bits.Resize(100);
    bits.Resize(200);
    EXPECT_EQ(bits.CountSet(), 4u) << "bits cut off must not come back";
    EXPECT_EQ(bits.NextSet(64 + 1), 200u);
}

TEST(PagedBitTree, HoldsRareBitsInFewPages) {
    PagedBitTree bits;
    bits.Set(123456789, false);
    EXPECT_EQ(bits.MemUsage(), 0u);
    for (size_t i : {size_t(5), size_t(1023), size_t(1024), size_t(10'000'000)})
        bits.Set(i, true);
    bits.Set(1023, false);
    EXPECT_TRUE(bits.Get(5) && bits.Get(1024) && bits.Get(10'000'000));
    EXPECT_FALSE(bits.Get(1023) || bits.Get(6) || bits.Get(999'999'999));
    EXPECT_LT(bits.MemUsage(), 10'000'000u / 8 / 4);
}
