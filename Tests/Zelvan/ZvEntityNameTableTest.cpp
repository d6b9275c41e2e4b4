#include "Zelvan/ZvEntityNameTable.h"
#include "Tests/Support/ProbeEntity.h"
#include "ZvCore/Log.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

namespace {

/// Keeps the log's lines for a scope.
class LogLines {
public:
    LogLines()
        : m_former(
              ZvLog::SetSink([this](ZvLog::Level, std::string_view text) { lines.emplace_back(text); })) {}
    ~LogLines() { ZvLog::SetSink(std::move(m_former)); }
    std::vector<std::string> lines;

private:
    ZvLog::Sink m_former;
};

/// Adds until the next name will be `next`. The table does not mind one entity in many slots.
void AddUntil(ZvEntityNameTable& table, ZvEntity& entity, uint64_t next) {
    while (table.Cursor() != next)
        table.Add(&entity);
}

void RemoveName(ZvEntityNameTable& table, ZvEntity& entity, uint32_t name) {
    entity.SetName32(name);
    ASSERT_TRUE(table.Remove(&entity));
}

} // namespace

TEST(ZvEntityNameTable, NamesStartAtOneAndFreedNamesAreNotReusedWithinTheRange) {
    ZvEntityNameTable table;
    ProbeEntity a, b, c;
    EXPECT_EQ(table.Add(&a), ZvName(1));
    EXPECT_EQ(table.Add(&b), ZvName(2));
    EXPECT_TRUE(table.Remove(&a));
    EXPECT_EQ(table.Add(&c), ZvName(3));
    EXPECT_EQ(table.TopName(), ZvName(3));
    EXPECT_EQ(table.Count(), 2);
    EXPECT_EQ(table.GetQuiet(1), nullptr);
    EXPECT_EQ(table.GetQuiet(0), nullptr);
    EXPECT_EQ(table.Get(2), &b);
    EXPECT_EQ(table.RawGet(uint64_t(-1)), nullptr);
    EXPECT_EQ(table.MemUsage(), table.SlotCount() * 9);
    table.Clear();
    EXPECT_EQ(table.Add(&a), ZvName(1));
}

TEST(ZvEntityNameTable, FullRangeIsExtendedByAnotherWhenSlotsAreUsed) {
    ZvEntityNameTable table;
    ProbeEntity entity;
    LogLines log;
    AddUntil(table, entity, 0x100000);
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(table.Add(&entity), ZvName(0x100000));
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.lines[0], "FindEmptyRange MORE SPACE 1048577 - 2097153\n");
    EXPECT_EQ(table.Add(&entity), ZvName(0x100001));
    EXPECT_EQ(table.Count(), 0x100001);
}

TEST(ZvEntityNameTable, FullRangeTakesTheFirstLongRunOfFreedNames) {
    struct {
        const char* what;
        std::vector<std::pair<uint32_t, uint32_t>> freed; // first, last
        const char* trace;
    } const cases[] = {
        {"the longest class of runs wins over an earlier shorter one",
         {{100, 100 + 0x8000}, {300000, 300000 + 0x90000}},
         "FindEmptyRange LIBERATED 300000 - 889824\n"},
        {"a run of the shortest length that counts",
         {{1, 0x8000}, {40000, 40000 + 0x7FFE}, {80000, 1'000'000}},
         "FindEmptyRange LIBERATED 80000 - 1000000\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ZvEntityNameTable table;
        ProbeEntity entity;
        AddUntil(table, entity, 0x100000);
        for (const auto& [first, last] : c.freed)
            for (uint32_t name = first; name <= last; ++name)
                RemoveName(table, entity, name);
        LogLines log;
        table.Add(&entity);
        ASSERT_EQ(log.lines.size(), 1u);
        EXPECT_EQ(log.lines[0], c.trace);
        const uint64_t first = table.Cursor();
        EXPECT_EQ(table.Add(&entity).value, first);
    }
}

TEST(ZvEntityNameTable, RangesGoOnAtTheirLimitWithoutTouchingOccupiedNames) {
    ZvEntityNameTable table;
    std::vector<std::unique_ptr<ProbeEntity>> kept;
    const auto at = [&](uint32_t name) {
        kept.push_back(std::make_unique<ProbeEntity>());
        kept.back()->SetName32(name);
        return table.Update(kept.back().get());
    };
    EXPECT_EQ(at(5), ZvName(5));
    EXPECT_EQ(table.Cursor(), 6u) << "the cursor moves past a name at or beyond it";
    EXPECT_EQ(at(2), ZvName(2));
    EXPECT_EQ(table.Cursor(), 6u);
    EXPECT_EQ(at(0x100000), ZvName(0x100000));
    EXPECT_EQ(table.Cursor(), 6u) << "the limit itself ends the range, and the longest run begins here";
    EXPECT_EQ(table.Limit(), 0xFFFFFu);
    EXPECT_EQ(table.GetQuiet(ZvName(uint32_t(table.Cursor()))), nullptr);
    ProbeEntity next;
    EXPECT_EQ(table.GetQuiet(table.Add(&next)), &next);
    for (const auto& entity : kept)
        EXPECT_EQ(table.GetQuiet(entity->Name()), entity.get());
}

TEST(ZvEntityNameTable, UpdateFallsBackToAFreshName) {
    ZvEntityNameTable table;
    ProbeEntity first, nameless, rival, huge;
    table.Add(&first);
    {
        ZvErrorCapture errors;
        EXPECT_EQ(table.Update(&nameless), ZvName(2));
        ASSERT_EQ(errors.Entries().size(), 1u);
        EXPECT_EQ(errors.Entries()[0].code, 10009);
        EXPECT_EQ(errors.Entries()[0].context, "ZvEntityNameTable.update");
    }
    {
        ZvErrorCapture errors;
        rival.SetName32(1);
        EXPECT_EQ(table.Update(&rival), ZvName(3));
        EXPECT_TRUE(errors.Has(10020));
        EXPECT_EQ(table.GetQuiet(1), &first);
    }
    huge.SetName32(4'000'000'000u);
    EXPECT_EQ(table.Update(&huge), ZvName(4)) << "the slot array does not explode";
    EXPECT_LT(table.SlotCount(), 0x10000u);
}

TEST(ZvEntityNameTable, ReserveMakesHighNamesPlausible) {
    ZvEntityNameTable table;
    ProbeEntity high;
    ASSERT_TRUE(table.Reserve(3'000'000));
    high.SetName32(5'999'999);
    EXPECT_EQ(table.Update(&high), ZvName(5'999'999));
    ProbeEntity next;
    EXPECT_EQ(table.Add(&next), ZvName(1));
}

TEST(ZvEntityNameTable, SwapUnderANameReportsAnEmptySlotAndStoresAnyway) {
    ZvEntityNameTable table;
    ProbeEntity a, b;
    table.Add(&a);
    ZvErrorCapture errors;
    table.Update(ZvName(1), &b);
    EXPECT_TRUE(errors.Entries().empty());
    EXPECT_EQ(table.GetQuiet(1), &b);
    EXPECT_EQ(b.Name(), ZvName(1));
    EXPECT_EQ(table.Count(), 1);
    table.Update(ZvName(7), &a);
    EXPECT_TRUE(errors.Has(13));
    EXPECT_TRUE(errors.HasText("Update(name, ptr). Name:Ptr = 7:"));
    EXPECT_EQ(table.GetQuiet(7), &a);
    EXPECT_EQ(table.Count(), 2);
    EXPECT_EQ(table.Cursor(), 8u) << "the range stays free of occupied names";
}

TEST(ZvEntityNameTable, MisuseIsReportedAndChangesNothing) {
    ZvEntityNameTable table;
    ProbeEntity inside, stranger, twin;
    table.Add(&inside);
    twin.SetName32(1);
    const struct {
        const char* context;
        std::function<void()> act;
    } cases[] = {
        {"ZvEntityNameTable.add", [&] { table.Add(nullptr); }},
        {"ZvEntityNameTable.update", [&] { table.Update(nullptr); }},
        {"ZvEntityNameTable.Remove", [&] { table.Remove(&stranger); }},
        {"ZvEntityNameTable.Remove", [&] { table.Remove(&twin); }},
        {"ZvEntityNameTable.Get", [&] { table.Get(ZvName(99)); }},
    };
    for (const auto& c : cases) {
        ZvErrorCapture errors;
        c.act();
        ASSERT_EQ(errors.Entries().size(), 1u) << c.context;
        EXPECT_EQ(errors.Entries()[0].code, 13);
        EXPECT_EQ(errors.Entries()[0].context, c.context);
        EXPECT_EQ(table.Count(), 1);
        EXPECT_EQ(table.GetQuiet(1), &inside);
    }
}

TEST(ZvEntityNameTable, IterationSkipsEmptySlotsAndErasedEntities) {
    ZvEntityNameTable table;
    ProbeEntity e[5];
    e[4].untouchable = true;
    for (ProbeEntity& entity : e)
        table.Add(&entity);
    table.Remove(&e[1]);
    e[2].SetErased(true);
    EXPECT_EQ(table.NextNonErased(nullptr), &e[0]);
    EXPECT_EQ(table.NextNonErased(&e[0]), &e[3]);
    EXPECT_EQ(table.NextNonErased(&e[4]), nullptr);
    EXPECT_EQ(table.Next(1), ZvName(3));
    std::vector<ZvEntity*> all, alive, untouchable;
    table.GetAll(all);
    table.GetAllNonErased(alive);
    table.GetAllNonErasedUntouchables(untouchable);
    EXPECT_EQ(all, (std::vector<ZvEntity*>{&e[0], &e[2], &e[3], &e[4]}));
    EXPECT_EQ(alive, (std::vector<ZvEntity*>{&e[0], &e[3], &e[4]}));
    EXPECT_EQ(untouchable, std::vector<ZvEntity*>{&e[4]});
}

TEST(ZvEntityNameTable, SelectedBitsGoWithTheirNames) {
    ZvEntityNameTable table;
    ProbeEntity e[4];
    for (ProbeEntity& entity : e)
        table.Add(&entity);
    table.SetSelected(2, true);
    table.SetSelected(4, true);
    table.SetSelected(0, true);
    table.SetSelected(1'000'000, true);
    EXPECT_EQ(table.NextSelected({}), ZvName(2));
    EXPECT_EQ(table.NextSelected(2), ZvName(4));
    EXPECT_EQ(table.NextSelected(4), ZvName());
    table.Remove(&e[1]);
    EXPECT_FALSE(table.IsSelected(2));
}
