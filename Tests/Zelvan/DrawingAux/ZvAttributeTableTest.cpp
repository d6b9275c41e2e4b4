#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvAttributeText.h"
#include <gtest/gtest.h>
#include <random>

using Value = ZvAttributeTable::Value;
using Type = ZvAttributeTable::Type;

namespace {

ZvAttributeTable Sample() {
    ZvAttributeTable table;
    table.AddField({u"id", Type::Int64, 10, 0});
    table.AddField({u"area", Type::Double, 12, 3});
    table.AddField({u"name", Type::String, 80, 0});
    table.AddField({u"open", Type::Bool});
    table.AddField({u"blob", Type::Binary});
    table.AddField({u"seen", Type::Date});
    table.SetRow(3, std::vector<Value>{int64_t(5), 2.5, XStringW(u"Wald \u00E4\U0001F332"), true,
                                       std::vector<uint8_t>{0, 255}, DateTime{77}});
    table.SetRow(1, std::vector<Value>{int64_t(1) << 40, int64_t(4), XStringW(), false,
                                       std::vector<uint8_t>(), Value()});
    table.SetRow(9, std::vector<Value>{});
    return table;
}

} // namespace

TEST(ZvAttributeTable, KeepsTypedValuesAndTellsNullFromEmpty) {
    const ZvAttributeTable table = Sample();
    EXPECT_EQ(table.RowCount(), 3u);
    EXPECT_EQ(table.Get(3, u"ID"), Value(int64_t(5)));
    EXPECT_EQ(table.Get(1, u"id"), Value(int64_t(1) << 40));
    EXPECT_EQ(table.Get(1, u"area"), Value(4.0)) << "whole numbers fit a double";
    EXPECT_EQ(table.Get(3, u"name"), Value(XStringW(u"Wald \u00E4\U0001F332")));
    EXPECT_EQ(table.Get(1, u"name"), Value(XStringW())) << "empty";
    EXPECT_EQ(table.Get(9, u"name"), Value()) << "NULL";
    EXPECT_EQ(table.Get(1, u"blob"), Value(std::vector<uint8_t>()));
    EXPECT_EQ(table.Get(1, u"seen"), Value());
    EXPECT_EQ(table.Get(2, u"name"), Value()) << "no such row";
    EXPECT_EQ(table.Get(3, u"nothing"), Value());
}

TEST(ZvAttributeTable, RefusesWhatDoesNotFit) {
    ZvAttributeTable table = Sample();
    EXPECT_EQ(table.AddField({u"AREA", Type::String}), -1);
    EXPECT_EQ(table.AddField({u"", Type::String}), -1);
    EXPECT_FALSE(table.RenameField(0, u"Name"));
    EXPECT_FALSE(table.SetRow(3, std::vector<Value>{XStringW(u"text")}));
    EXPECT_EQ(table.Get(3, u"id"), Value(int64_t(5))) << "unchanged";
    EXPECT_FALSE(table.SetRow(4, std::vector<Value>(7)));
    EXPECT_FALSE(table.Set(0, 0, int64_t(1)));
    EXPECT_FALSE(table.Set(3, u"id", 1.5));
    EXPECT_FALSE(table.HasRow(4));
}

TEST(ZvAttributeTable, FieldsComeAndGo) {
    ZvAttributeTable table = Sample();
    const int added = table.AddField({u"new", Type::Int64});
    EXPECT_EQ(table.Get(3, added), Value());
    EXPECT_TRUE(table.RemoveField(0));
    EXPECT_EQ(table.FindField(u"id"), -1);
    EXPECT_EQ(table.Get(3, u"area"), Value(2.5));
    EXPECT_TRUE(table.RenameField(0, u"size"));
    EXPECT_EQ(table.Get(3, u"SIZE"), Value(2.5));
}

TEST(ZvAttributeTable, RowsFollowRenamedAndMissingEntities) {
    ZvAttributeTable table = Sample();
    table.RenameRows({{3, 30}, {9, 3}});
    EXPECT_EQ(table.Get(30, u"id"), Value(int64_t(5)));
    EXPECT_TRUE(table.HasRow(3));
    EXPECT_FALSE(table.HasRow(9));
    EXPECT_EQ(table.KeepRows([](ZvName name) { return name.value != 3; }), 1u);
    EXPECT_EQ(table.RowEnd(), 2u);
    EXPECT_EQ(table.Get(30, u"name"), Value(XStringW(u"Wald \u00E4\U0001F332")));
    ZvAttributeTable other;
    other.AddField({u"Name", Type::String});
    other.AddField({u"id", Type::String});
    EXPECT_TRUE(other.CopyRow(7, table, 30));
    EXPECT_EQ(other.Get(7, u"name"), table.Get(30, u"name"));
    EXPECT_EQ(other.Get(7, u"id"), Value()) << "a field of another type is left alone";
    EXPECT_EQ(other.Get(7, u"area"), Value(2.5)) << "a missing one is made";
}

TEST(ZvAttributeTable, TextsAreReadAsTheTypeOfTheirField) {
    const DateTime noon = DateTime::FromUtc(2012, 9, 3, 12, 30);
    const struct {
        Type type;
        const char16_t* text;
        std::optional<Value> value;
    } cases[] = {
        {Type::Int64, u"-12", int64_t(-12)},
        {Type::Int64, u"9223372036854775807", INT64_MAX},
        {Type::Int64, u"9223372036854775808", std::nullopt},
        {Type::Int64, u"1.5", std::nullopt},
        {Type::Int64, u"", Value()},
        {Type::Double, u"1.5e3", 1500.0},
        {Type::Double, u"1,5", std::nullopt},
        {Type::Double, u"nan", std::nullopt},
        {Type::Bool, u"Yes", true},
        {Type::Bool, u"0", false},
        {Type::Bool, u"2", std::nullopt},
        {Type::Date, u"2012-09-03", DateTime::FromUtc(2012, 9, 3)},
        {Type::Date, u"2012/09/03 12:30", noon},
        {Type::Date, u"2012-09-03T12:30:00Z", noon},
        {Type::Date, u"2012-02-30", std::nullopt},
        {Type::Date, u"2012-09-03 12:30:61", std::nullopt},
        {Type::Date, u"2012-09-03 12:30 h", std::nullopt},
        {Type::String, u"", XStringW()},
        {Type::Binary, u"00", std::nullopt},
    };
    for (const auto& [type, text, value] : cases)
        EXPECT_EQ(ZvAttributeText::Parse(type, text), value) << XStringW(text).ToUtf8();
}

TEST(ZvAttributeTable, RandomEditsAgreeWithAPlainMap) {
    std::mt19937 random(4711);
    ZvAttributeTable table;
    table.AddField({u"text", Type::String});
    table.AddField({u"number", Type::Int64});
    std::map<uint32_t, std::pair<Value, Value>> plain;
    for (int step = 0; step < 20000; ++step) {
        const uint32_t name = 1 + random() % 500;
        const Value text = random() % 5 ? Value(XStringW::Format("v%u", unsigned(random() % 40))) : Value();
        const Value number = Value(int64_t(random()) - (int64_t(1) << (random() % 40)));
        if (random() % 4 == 0) {
            EXPECT_EQ(table.RemoveRow(name), plain.erase(name) == 1);
        } else {
            ASSERT_TRUE(table.SetRow(name, std::vector<Value>{text, number}));
            plain[name] = {text, number};
        }
    }
    ASSERT_EQ(table.RowCount(), plain.size());
    for (const auto& [name, values] : plain) {
        EXPECT_EQ(table.Get(name, 0), values.first);
        EXPECT_EQ(table.Get(name, 1), values.second);
    }
}

TEST(ZvAttributeTable, RepeatedTextsTakeFewBytes) {
    ZvAttributeTable table;
    table.AddField({u"landuse", Type::String});
    table.Reserve(100000);
    const std::string uses[] = {"forest", "meadow", "residential area", "water"};
    for (uint32_t name = 1; name <= 100000; ++name)
        table.Column(0).SetBytes(size_t(table.MakeRow(name)), uses[name % 4]);
    EXPECT_LT(table.MemUsage(), 100000u * 20);
    EXPECT_EQ(table.Column(0).GetBytes(3), "forest");
}
