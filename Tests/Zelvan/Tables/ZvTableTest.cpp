#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvSelectionVolumeTable.h"
#include "Zelvan/Tables/ZvViewTable.h"
#include "ZvCore/ZvErrors.h"
#include <gtest/gtest.h>

// What all tables have in common, on tables that belong to no drawing.

namespace {

std::unique_ptr<ZvTableRecord> View(const char16_t* name) {
    auto record = std::make_unique<ZvNamedView>();
    record->SetNameFinal(name);
    return record;
}

std::string NameOf(const ZvTableRecord* record) {
    return record ? record->GetName().ToUtf8() : "(none)";
}

struct Heard : IZvTableWatcher {
    std::string log;
    void OnTableEvent(ZvTable&, ZvTableEvent event, int index) override {
        log += std::to_string(int(event)) + ":" + std::to_string(index) + " ";
    }
};

} // namespace

TEST(ZvTable, AutomaticNamesCountOn) {
    const struct {
        std::vector<const char16_t*> names;
        const char* last;
    } cases[] = {
        {{u"", u""}, "View2"},
        {{u"Wall", u"Wall"}, "Wall1"},
        {{u"Wall", u"wall", u"WALL"}, "WALL2"},
        {{u"Wall09", u"Wall09"}, "Wall10"},
        {{u"A007", u"A007"}, "A  8"}, // the field is as wide as the digits were, padded with blanks
        {{u"W9", u"W10", u"w9"}, "w11"},
    };
    for (const auto& one : cases) {
        ZvViewTable table(nullptr);
        for (const char16_t* name : one.names)
            EXPECT_TRUE(Zv::Ok(table.Insert(View(name))));
        EXPECT_EQ(NameOf(table.LastInserted()), one.last);
    }
}

TEST(ZvTable, NamelessLayersAreNumberedFromTheBaseOfTheTable) {
    ZvLayerTable layers(nullptr);
    EXPECT_EQ(NameOf(layers.InsertNew()), "Layer1");
    EXPECT_EQ(NameOf(layers.InsertNew()), "Layer2");
    ZvSelectionVolumeTable volumes(nullptr);
    EXPECT_EQ(NameOf(volumes.InsertNew()), "Selection Volume 1");
}

TEST(ZvTable, DefaultNameReplacesCharactersThatNoNameMayHoldAndCanBeTheGuid) {
    ZvViewTable table(nullptr);
    XStringW name;
    EXPECT_TRUE(table.GetDefaultName(name, u"a/b\\c\"d?e*f|g"));
    EXPECT_EQ(name, XStringW(u"a_b_c_d_e_f_g"));
    ZvNamedView record;
    EXPECT_TRUE(table.GetDefaultName(name, u"x", &record, true));
    EXPECT_EQ(name, record.GetGuid().ToString());
}

TEST(ZvTable, ManyClashesJumpAheadAndStillFindAName) {
    ZvViewTable table(nullptr);
    table.InsertNew(u"n");
    for (int i = 1; i <= 1200; ++i)
        table.InsertNew(XStringW::Format("n%d", i));
    ZvNamedView* last = table.InsertNew(u"n0");
    ASSERT_TRUE(last);
    XStringW name;
    EXPECT_TRUE(table.GetDefaultName(name, u"n0"));
    EXPECT_FALSE(table.GetByName(name));
}

TEST(ZvTable, RefusesWhatItCannotTake) {
    ZvViewTable table(nullptr);
    table.InsertNew(u"There");
    const auto twin = [&] {
        auto record = View(u"Other");
        record->SetGuidFinal(table.Get(0)->GetGuid());
        return record;
    };
    const auto used = [] {
        auto record = View(u"Used");
        record->SetTableId(7);
        return record;
    };
    table.SetAutoNaming(false);
    table.SetAutoRenaming(false);
    struct {
        std::unique_ptr<ZvTableRecord> record;
        const char* text;
    } cases[] = {
        {nullptr, "Null record to table.insert"},
        {used(), "Record for insertion already has an Id"},
        {View(u""), "Record has no name"},
        {View(u"THERE"), "Record with identical name already in table"},
        {twin(), "Record with identical GUID already in table"},
        {std::make_unique<ZvLineTypeRec>(), ""},
    };
    for (auto& one : cases) {
        const ZvErrorCapture errors;
        const bool wasThere = one.record != nullptr;
        EXPECT_EQ(table.Insert(std::move(one.record)), Zv::Status::Failure);
        EXPECT_EQ(wasThere, one.record != nullptr) << "a refused record stays with the caller";
        EXPECT_EQ(errors.Entries().empty(), !*one.text);
        EXPECT_TRUE(!*one.text || errors.Entries()[0].context == one.text) << one.text;
        EXPECT_EQ(table.Count(), 1);
    }
}

TEST(ZvTable, NullGuidIsReplacedAndIdsAreNeverUsedAgain) {
    ZvViewTable table(nullptr);
    auto record = View(u"A");
    record->SetGuidFinal({});
    ASSERT_TRUE(Zv::Ok(table.Insert(std::move(record))));
    EXPECT_FALSE(table.Get(0)->GetGuid().IsNull());
    EXPECT_EQ(table.Get(0)->GetId(), 1u);
    EXPECT_TRUE(table.DeleteRecord(0));
    EXPECT_EQ(table.InsertNew(u"A")->GetId(), 2u);
}

TEST(ZvTable, NewNamesOfUsersAreChecked) {
    ZvViewTable table(nullptr);
    table.InsertNew(u"Taken");
    for (const char16_t* bad : {u"", u"ByLayer", u"by block", u"By Layer", u"BYBLOCK", u"A/B", u"a\\b", u"\"",
                                u"?", u"*", u"|", u"tAkEn"})
        EXPECT_FALSE(table.IsNewNameValid(bad)) << XStringW(bad).ToUtf8();
    for (const char16_t* good : {u"A", u"Layer by layer", u"Straße", u"a b:c"})
        EXPECT_TRUE(table.IsNewNameValid(good)) << XStringW(good).ToUtf8();
}

TEST(ZvTable, RenamingKeepsTheMapsRight) {
    ZvViewTable table(nullptr);
    ZvNamedView* a = table.InsertNew(u"A");
    table.InsertNew(u"B");
    EXPECT_TRUE(a->SetName(u"A"));
    EXPECT_TRUE(a->SetName(u"a")) << "only the case changes";
    EXPECT_FALSE(a->SetName(u"b")) << "taken";
    {
        const ZvErrorCapture errors;
        EXPECT_FALSE(a->SetName(u"x/y"));
        EXPECT_TRUE(errors.Has(17) && errors.HasText("x/y"));
    }
    EXPECT_TRUE(a->SetName(u"C"));
    EXPECT_EQ(table.GetByName(u"c"), a);
    EXPECT_FALSE(table.GetByName(u"A"));
    a->SetNameFinal(u"D"); // past the table
    table.RegenNameMap();
    EXPECT_EQ(table.GetByName(u"D"), a);
    const Guid guid = Guid::New();
    EXPECT_FALSE(a->SetGuid(table.Get(1)->GetGuid()));
    EXPECT_TRUE(a->SetGuid(guid));
    EXPECT_EQ(table.GetByGuid(guid), a);
    EXPECT_TRUE(table.Get(1)->SetName(u"D", false));
    EXPECT_TRUE(table.DeleteRecord(1));
    EXPECT_EQ(table.GetByName(u"D"), a) << "the name of the one that stays";
    EXPECT_FALSE(table.GetByName(u"B"));
}

TEST(ZvTable, WatchersHearWhatHappens) {
    ZvViewTable table(nullptr);
    Heard heard;
    table.AddWatcher(&heard);
    table.InsertNew(u"A");
    table.InsertNew(u"B");
    EXPECT_EQ(heard.log, "1:0 1:1 ");
    heard.log.clear();
    table.Get(1)->SetName(u"C");
    table.SetCurrent(table.Get(1));
    EXPECT_EQ(heard.log, "5:1 3:1 6:1 ");
    heard.log.clear();
    table.DeleteRecord(0);
    EXPECT_EQ(heard.log, "7:-1 2:0 ");
    heard.log.clear();
    table.SuspendEventsOut();
    table.InsertNew(u"D");
    table.SuspendEventsOut();
    table.ResumeEventsOut();
    EXPECT_EQ(heard.log, "");
    table.ResumeEventsOut();
    EXPECT_EQ(heard.log, "5:-1 ");
    heard.log.clear();
    table.Purge();
    EXPECT_EQ(heard.log, "4:-1 ");
    EXPECT_EQ(table.Count(), 0);
    EXPECT_FALSE(table.GetCurrent());
    table.RemoveWatcher(&heard);
    heard.log.clear();
    table.InsertNew();
    EXPECT_EQ(heard.log, "");
}

TEST(ZvTable, DeletingMovesLaterRecordsUpAndFindsAnotherCurrent) {
    ZvViewTable table(nullptr);
    for (const char16_t* name : {u"A", u"B", u"C", u"D"})
        table.InsertNew(name);
    table.SetCurrent(table.GetByName(u"B"));
    ZvTableRecord* doomed[] = {table.GetByName(u"B"), table.GetByName(u"C"), table.GetByName(u"B"), nullptr};
    EXPECT_EQ(table.DeleteRecords(doomed), 2);
    EXPECT_EQ(table.IndexOf(u"D"), 1);
    EXPECT_EQ(table.Get(1)->GetTableIndex(), 1);
    EXPECT_EQ(NameOf(table.GetCurrent()), "A");
    EXPECT_FALSE(table.DeleteRecord(XStringW(u"B")));
    table.Get(0)->SetErased(true);
    EXPECT_EQ(table.DeleteErased(), 1);
    EXPECT_EQ(NameOf(table.GetCurrent()), "D");
}

TEST(ZvTable, OnlyUnusedRecordsThatUsersSeeAreErasedAsUnused) {
    ZvViewTable table(nullptr);
    for (const char16_t* name : {u"Used", u"Unused", u"Internal", u"Current"})
        table.InsertNew(name);
    table.Get(0)->SetUsageCount(3);
    table.Get(2)->SetInternal(true);
    table.SetCurrent(table.Get(3));
    EXPECT_EQ(table.EraseUnused(), 1);
    EXPECT_FALSE(table.GetByName(u"Unused"));
}

TEST(ZvTable, ListsForUsersLeaveOutWhatIsNotTheirs) {
    ZvViewTable table(nullptr);
    for (const char16_t* name : {u"v10", u"V2", u"hidden", u"erased", u"v 1"})
        table.InsertNew(name);
    table.GetByName(u"hidden")->SetHidden(true);
    table.GetByName(u"erased")->SetErased(true);
    std::string names;
    for (const ZvTableRecord* record : table.GetUserEnumList())
        names += NameOf(record) + ",";
    EXPECT_EQ(names, "v 1,V2,v10,") << "numbers by value";
    EXPECT_EQ(table.CountUserEnum(), 3);
    EXPECT_EQ(NameOf(table.GetUserEnum(1)), "V2");
    EXPECT_EQ(NameOf(table.GetUserEnum(3)), "(none)");
    std::set<uint32_t> ids;
    table.NameSetToIdSet({u"V2", u"nobody"}, ids);
    EXPECT_EQ(ids, std::set<uint32_t>{2});
    std::set<XStringW> back;
    table.IdSetToNameSet({2, 99}, back);
    EXPECT_EQ(back, std::set<XStringW>{u"V2"});
    const ZvErrorCapture errors;
    EXPECT_FALSE(table.CheckIndex(5));
    EXPECT_TRUE(errors.HasText("ZvTable.CheckIndex"));
}

TEST(ZvTable, MergingDecidesByConflict) {
    struct Handler : IZvMergeHandler {
        bool DecideFate(ZvTable&, const ZvTableRecord& incoming, const ZvTableRecord*,
                        ZvMergeFate& fate) override {
            if (incoming.GetName() != XStringW(u"SkipMe"))
                return false;
            fate = ZvMergeFate::Skip;
            return true;
        }
        void OnRecordRead(ZvTable&, int, ZvTableRecord*) override {}
    } handler;
    const auto merge = [&](const char16_t* name, ZvMergeFate onName, bool sameGuid) {
        ZvViewTable table(nullptr);
        table.AddCustomMergeHandler(&handler);
        table.InsertNew(u"A");
        auto incoming = View(name);
        ZvNamedView::Values values;
        values.width = 77;
        static_cast<ZvNamedView&>(*incoming).Set(values);
        if (sameGuid)
            incoming->SetGuidFinal(table.Get(0)->GetGuid());
        ZvMergeProfile profile;
        profile.perTable[table.GetFullCode()] = {ZvMergeFate::Rename, onName, true};
        const ZvMergeResult result = table.Merge(std::move(incoming), profile);
        return NameOf(result.record) + " of " + std::to_string(table.Count()) + " width " +
               std::to_string(int(table.Get(0)->Get().width));
    };
    EXPECT_EQ(merge(u"B", ZvMergeFate::UseExisting, false), "B of 2 width 1");
    EXPECT_EQ(merge(u"a", ZvMergeFate::UseExisting, false), "A of 1 width 1");
    EXPECT_EQ(merge(u"a", ZvMergeFate::Rename, false), "a1 of 2 width 1");
    EXPECT_EQ(merge(u"a", ZvMergeFate::Replace, false), "A of 1 width 77");
    EXPECT_EQ(merge(u"a", ZvMergeFate::Skip, false), "(none) of 1 width 1");
    EXPECT_EQ(merge(u"B", ZvMergeFate::UseExisting, true), "B of 2 width 1")
        << "guid conflicts are renamed here";
    EXPECT_EQ(merge(u"SkipMe", ZvMergeFate::Insert, false), "(none) of 1 width 1");
}
