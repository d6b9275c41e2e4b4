#include "Zelvan/ZvTableTable.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/DrawingAux/ZvMergeHelper.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvDimStyleTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/Tables/ZvTextureTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Tables/ZvViewTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/ZvErrors.h"
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

// Tables through files, merges and deletions, with the entities that refer to them.

namespace {

using Bytes = std::vector<uint8_t>;

std::unique_ptr<ZvXLine> Line(double x, int lineType = -1, int texture = -1) {
    auto line = std::make_unique<ZvXLine>();
    line->LineVectorSetVertices({{x, 0, 0, 0}, {x + 1, 1, 0, 0}});
    line->SetLineType(ZvLineType(lineType));
    if (texture >= 0)
        line->SetBrush(ZvBrush::FromTexture(texture));
    return line;
}

Bytes Save(ZvDrawing& drawing, ZvNativeOptions options = {}) {
    options.compressionLevel = options.compressionLevel == 3 ? 0 : options.compressionLevel;
    ZvCore::MemFile file;
    ZvNativeFile native(options);
    EXPECT_TRUE(Zv::Ok(native.WriteFile(&drawing, &file)));
    return file.Take();
}

IOErrorSet LoadInto(ZvDrawing& drawing, const Bytes& bytes, ZvNativeOptions options = {}) {
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvNativeFile native(options);
    EXPECT_TRUE(Zv::Ok(native.ReadFile(&drawing, file.get())) || options.blockDigests == false);
    IOErrorSet errors;
    native.GetErrors(errors);
    return errors;
}

/// A drawing that uses what tables offer: references between them, entities on layers, in a block, in a layout, attributes.
void Fill(ZvDrawing& drawing) {
    ZvLineTypeRec* dash = drawing.LineTypeTable()->InsertNew(u"MyDash");
    dash->SetDashes({1, 2, 3, 4});
    auto texture = std::make_unique<ZvTexture>();
    texture->SetNameFinal(u"Hatch");
    ASSERT_TRUE(texture->SetFamilies({{0.3, {1, 2}, 3, 4, {5, 6}}}));
    ASSERT_TRUE(Zv::Ok(drawing.TextureTable()->Insert(std::move(texture))));
    ZvBlock* block = drawing.BlockTable()->InsertNew(u"Tree");
    block->SetBasePoint({1, 2, 3});
    block->Adopt(Line(50, 2));
    ZvLayer* roads = drawing.LayerTable()->InsertNew(u"Roads");
    roads->SetLineType(ZvLineType(2));
    roads->SetBrush(ZvBrush::FromTexture(0));
    roads->SetColor(ZvColor(1, 2, 3));
    ASSERT_TRUE(drawing.LayerTable()->AddGroup(u"Traffic") &&
                drawing.LayerTable()->AddToGroup(roads, u"Traffic"));
    drawing.LayerTable()->MoveLayerToBottom(roads);
    drawing.LayerTable()->PresetSet(u"All");
    ZvAttributeTable& attributes = roads->Attributes();
    attributes.AddField({u"lanes", ZvAttributeColumn::Type::Int64});
    attributes.AddField({u"name", ZvAttributeColumn::Type::String, 40, 0});
    for (int i = 0; i < 20; ++i) {
        const ZvName name = roads->Adopt(Line(i, i % 3 == 0 ? 2 : -2, i % 5 == 0 ? 0 : -1));
        if (i % 2)
            attributes.Set(name, u"lanes", int64_t(i));
    }
    drawing.UcsTable()->InsertNew(u"Site")->SetScale(1000);
    ZvCoordSystem system;
    system.kind = ZvCoordSystem::Kind::Projected;
    system.authority = u"EPSG:2056";
    system.metersPerUnit = 1;
    drawing.UcsTable()->SetCoordinateSystem(system);
    ZvLayout* layout = drawing.LayoutTable()->InsertNew(u"Sheet 1");
    layout->Drawing()->Insert(Line(7, 2), u"Frame");
    drawing.DataTable()->GetOrMake(u"Note").SetString(u"kept");
    drawing.TextStyleTable()->SetCurrent(drawing.TextStyleTable()->InsertNew(u"Tall"));
}

std::string Describe(ZvDrawing& drawing) {
    std::string text;
    for (int t = 0; t < drawing.TableTable()->Count(); ++t) {
        const ZvTable& table = *drawing.TableTable()->Get(t);
        for (int i = 0; i < table.Count(); ++i) {
            const ZvTableRecord& record = *table.Get(i);
            text += table.DefaultNameBase().ToUtf8() + " " + std::to_string(record.GetId()) + " " +
                    record.GetName().ToUtf8() + (&record == table.GetCurrent() ? " current" : "") + "\n";
            ZvPropertyGatherer properties;
            record.GetProperties(properties);
            for (const ZvProperty& property : properties.Items())
                if (const XStringW* value = std::get_if<XStringW>(&property.value))
                    text += "  " + property.id + "=" + value->ToUtf8() + "\n";
        }
    }
    for (ZvName name = drawing.NameTable().Next({}); !name.IsNull(); name = drawing.NameTable().Next(name)) {
        ZvEntity* entity = drawing.GetEntity(name);
        const ZvXLine* line = entity->ToXLine();
        text += name.ToString().ToUtf8() + " on " + entity->GetLayerName().ToUtf8() + " type " +
                std::to_string(line->GetLineType().hardGet()) + " brush " +
                std::to_string(line->GetBrush().GetStyle()) + "\n";
    }
    for (ZvLayer* layer : drawing.LayerTable()->GetLayerOrder())
        text += "order " + layer->GetName().ToUtf8() + "\n";
    if (ZvLayout* layout = drawing.LayoutTable()->Get(0))
        text += "--- layout\n" + Describe(*layout->Drawing());
    return text;
}

template <class T>
T Get(const Bytes& bytes, size_t at) {
    T value;
    std::memcpy(&value, &bytes[at], sizeof value);
    return value;
}

/// Frame of a table in the section of a file that was saved at level 0: position and length.
std::pair<size_t, size_t> FrameOf(const Bytes& file, uint16_t code) {
    size_t at = size_t(Get<uint64_t>(file, 44)); // header: offset of the tables section
    const auto tables = Get<uint32_t>(file, at + 4);
    at += Get<uint32_t>(file, at);
    for (uint32_t i = 0; i < tables; ++i) {
        const auto length = size_t(Get<uint64_t>(file, at));
        if (Get<uint32_t>(file, at + 8) == ZvTableCode::Full(code))
            return {at, length};
        at += length;
    }
    ADD_FAILURE() << "no table " << code;
    return {};
}

/// Checks are off: the tests change bytes.
ZvNativeOptions Unchecked() {
    ZvNativeOptions options;
    options.verifyChecksum = false;
    options.blockDigests = false;
    return options;
}

} // namespace

TEST(ZvTableTable, RegistersTablesOnce) {
    ZvDrawing drawing;
    ZvTableTable& tables = *drawing.TableTable();
    EXPECT_EQ(tables.Count(), 15);
    for (int i = 0; i < 15; ++i)
        EXPECT_EQ(tables.Get(i)->GetTableCode(), i + 1) << "the order of registration is that of the codes";
    EXPECT_EQ(tables.Insert(nullptr), Zv::Status::Failure);
    ZvViewTable second(&drawing);
    EXPECT_EQ(tables.Insert(&second), Zv::Status::Failure);
    std::string counted;
    for (const ZvTable* table : tables.TablesWithUsageCount())
        counted += std::to_string(table->GetTableCode()) + " ";
    EXPECT_EQ(counted, "1 2 3 4 6 7 8 ");
}

TEST(ZvTableTable, EverythingComesBackFromAFile) {
    for (const int level : {0, 1, 9}) {
        ZvDrawing drawing;
        Fill(drawing);
        ZvNativeOptions options;
        options.compressionLevel = level;
        const Bytes bytes = Save(drawing, options);
        EXPECT_EQ(bytes, Save(drawing, options)) << "the same drawing gives the same bytes";
        ZvDrawing loaded;
        loaded.Insert(Line(1)); // what was there goes
        EXPECT_TRUE(LoadInto(loaded, bytes).IsEmpty());
        EXPECT_EQ(Describe(loaded), Describe(drawing));
        ZvLayer* roads = loaded.LayerTable()->GetByName(u"Roads");
        ASSERT_TRUE(roads);
        EXPECT_EQ(roads->Attributes(), drawing.LayerTable()->GetByName(u"Roads")->Attributes());
        EXPECT_EQ(roads->Attributes().RowCount(), 10u);
        EXPECT_TRUE(loaded.LayerTable()->PresetFind(u"All"));
        EXPECT_EQ(loaded.TextureTable()->Get(0)->Families(), drawing.TextureTable()->Get(0)->Families());
        EXPECT_EQ(loaded.UcsTable()->CoordinateSystem(), drawing.UcsTable()->CoordinateSystem());
        EXPECT_EQ(loaded.BlockTable()->Get(0)->EntityCount(), 1u);
        EXPECT_EQ(loaded.LayerTable()->InsertNew()->GetId(), drawing.LayerTable()->InsertNew()->GetId());
    }
}

TEST(ZvTableTable, ErasedRecordsStayOutAndReferencesFollow) {
    ZvDrawing drawing;
    Fill(drawing);
    drawing.LineTypeTable()->InsertNew(u"After");
    const ZvName user = drawing.Insert(Line(0, 3));
    drawing.LineTypeTable()->Get(2)->SetErased(true);
    ZvDrawing loaded;
    EXPECT_TRUE(LoadInto(loaded, Save(drawing)).IsEmpty());
    EXPECT_EQ(loaded.LineTypeTable()->Count(), 3);
    EXPECT_EQ(loaded.LineTypeTable()->Get(2)->GetName(), XStringW(u"After"));
    EXPECT_EQ(loaded.GetEntity(user)->ToLineEntity()->GetLineType().GetIndex(), 2);
    EXPECT_TRUE(loaded.LayerTable()->GetByName(u"Roads")->GetLineType().IsContinuous()) << "its type is gone";
}

TEST(ZvTableTable, DeletingARecordCorrectsAllWhoHoldIndices) {
    ZvDrawing drawing;
    Fill(drawing);
    ZvLineTypeTable& types = *drawing.LineTypeTable();
    types.InsertNew(u"Last");
    const ZvName byLast = drawing.Insert(Line(0, 3)), byDash = drawing.Insert(Line(0, 2));
    ZvLayout* layout = drawing.LayoutTable()->Get(0);
    const ZvName inLayout = layout->Drawing()->Insert(Line(0, 3));
    const auto typeOf = [](ZvDrawing& of, ZvName name) {
        return of.GetEntity(name)->ToLineEntity()->GetLineType().hardGet();
    };
    const ZvName inBlock = drawing.BlockTable()->Get(0)->Adopt(Line(0, 3));
    EXPECT_TRUE(types.DeleteRecord(XStringW(u"MyDash")));
    EXPECT_EQ(typeOf(drawing, byLast), 2);
    EXPECT_EQ(typeOf(drawing, byDash), -1) << "continuous";
    EXPECT_EQ(typeOf(*layout->Drawing(), inLayout), 2);
    EXPECT_EQ(typeOf(drawing, inBlock), 2) << "corrected once";
    EXPECT_TRUE(drawing.LayerTable()->GetByName(u"Roads")->GetLineType().IsContinuous());
    EXPECT_FALSE(types.DeleteRecord(0)) << "internal";
}

TEST(ZvTableTable, PurgingLeavesWhatIsUsed) {
    ZvDrawing drawing;
    Fill(drawing);
    drawing.LineTypeTable()->InsertNew(u"Unused");
    drawing.LayerTable()->InsertNew(u"Empty");
    drawing.PurgeUnusedTableRecords();
    EXPECT_FALSE(drawing.LineTypeTable()->GetByName(u"Unused"));
    EXPECT_FALSE(drawing.LayerTable()->GetByName(u"Empty"));
    EXPECT_TRUE(drawing.LineTypeTable()->GetByName(u"MyDash"));
    EXPECT_TRUE(drawing.LayerTable()->GetByName(u"Roads"));
    EXPECT_TRUE(drawing.TextureTable()->GetByName(u"Hatch"));
}

TEST(ZvTableTable, MergedFilesKeepNamesApartAndReferencesRight) {
    ZvDrawing source;
    Fill(source);
    ZvDrawing target;
    target.LineTypeTable()->InsertNew(u"Own");
    target.LayerTable()->InsertNew(u"Roads");
    const ZvName mine = target.Insert(Line(-5), u"Roads");
    ZvMergeProfile profile;
    ZvNativeOptions options;
    options.merge = &profile;
    EXPECT_TRUE(LoadInto(target, Save(source), options).IsEmpty());
    EXPECT_EQ(target.NameTable().Count(), 22) << "20 on the layer, one in the block, one from before";
    EXPECT_EQ(target.GetEntity(mine)->Bounds3D().minX, -5);
    ZvLayer* roads = target.LayerTable()->GetByName(u"Roads");
    EXPECT_EQ(roads->EntityCount(), 21u);
    EXPECT_TRUE(roads->GetLineType().IsContinuous()) << "the existing layer keeps its values";
    const int dash = target.LineTypeTable()->IndexOf(u"MyDash");
    EXPECT_EQ(dash, 3);
    int dashed = 0;
    roads->Tree().ForEach([&](const ZvEntity* entity) {
        dashed += static_cast<const ZvXLine*>(entity)->GetLineType().GetIndex() == dash;
    });
    EXPECT_EQ(dashed, 7);
    EXPECT_EQ(roads->Attributes().RowCount(), 10u);
    int rowsOfEntities = 0;
    roads->Attributes().ForEachRow([&](ZvName name, size_t) {
        rowsOfEntities +=
            target.GetEntity(name) && target.GetEntity(name)->GetLayer() == roads && name != mine;
    });
    EXPECT_EQ(rowsOfEntities, 10);
    EXPECT_TRUE(target.LayerTable()->HasGroup(u"Traffic") == !roads->GetGroup().IsEmpty());
    ASSERT_TRUE(target.LayoutTable()->Get(0));
    EXPECT_EQ(target.LayoutTable()->Get(0)->Drawing()->NameTable().Count(), 1);
    EXPECT_EQ(target.LayoutTable()->Get(0)->Drawing()->GetEntity(1)->ToLineEntity()->GetLineType().GetIndex(),
              dash);
}

TEST(ZvTableTable, RecordsAreCopiedWithWhatTheyReferTo) {
    ZvDrawing source, target;
    Fill(source);
    target.LineTypeTable()->InsertNew(u"Own");
    ZvUsageTable wanted;
    wanted.Use(ZvTableCode::Full(ZvTableCode::Layer), source.LayerTable()->IndexOf(u"Roads"));
    wanted.Use(ZvTableCode::Full(ZvTableCode::Block), 0);
    wanted.Use(ZvTableCode::Full(ZvTableCode::Layout), 0);
    ZvNativeFile file;
    ZvNativeDesc desc(file, target);
    EXPECT_TRUE(Zv::Ok(target.TableTable()->CopyRecords(*source.TableTable(), wanted, {}, desc)));
    const ZvLayer* roads = target.LayerTable()->GetByName(u"Roads");
    ASSERT_TRUE(roads);
    EXPECT_EQ(roads->GetLineType().GetIndex(), 3);
    EXPECT_EQ(target.TextureTable()->Get(roads->GetBrush().GetTexture())->GetName(), XStringW(u"Hatch"));
    EXPECT_EQ(roads->EntityCount(), 0u);
    EXPECT_EQ(target.BlockTable()->Get(0)->EntityCount(), 1u);
    EXPECT_EQ(target.GetEntity(1)->ToLineEntity()->GetLineType().GetIndex(), 3);
    ZvDrawing& sheet = *target.LayoutTable()->Get(0)->Drawing();
    EXPECT_EQ(sheet.GetEntity(1)->GetLayerName(), XStringW(u"Frame"));
    EXPECT_EQ(sheet.GetEntity(1)->ToLineEntity()->GetLineType().GetIndex(), 3);
    EXPECT_EQ(source.BlockTable()->Get(0)->EntityCount(), 1u);
}

TEST(ZvTableTable, RecordsOfAFileCanBeTaken) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "zv_styles_\u00E4.zvd";
    ZvDrawing source, target;
    Fill(source);
    {
        const Bytes bytes = Save(source);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    EXPECT_TRUE(
        Zv::Ok(target.TextureTable()->LoadFromFile(reinterpret_cast<const char*>(path.u8string().c_str()))));
    EXPECT_EQ(target.TextureTable()->Count(), 1);
    std::filesystem::remove(path);
    const ZvErrorCapture errors;
    EXPECT_FALSE(Zv::Ok(target.TextureTable()->LoadFromFile("/nowhere/at all.zvd")));
    EXPECT_TRUE(errors.HasText("/nowhere/at all.zvd"));
}

// --- other versions and damage ----------------------------------------------------------------------------

TEST(ZvTableTable, ShorterAndLongerRecordsAreRead) {
    ZvDrawing drawing;
    drawing.ViewTable()->InsertNew(u"V");
    ZvNamedView::Values values;
    values.width = 11, values.height = 22;
    values.description = u"tail";
    drawing.ViewTable()->Get(0)->Set(values);
    const Bytes bytes = Save(drawing);
    const auto [frame, length] = FrameOf(bytes, ZvTableCode::View);
    // Frame head, block with the table's fields, group head, block head, then the record's length.
    const size_t group = frame + 24 + 36 + size_t(Get<uint64_t>(bytes, frame + 24 + 12));
    const size_t record = group + 12 + 36;
    const auto size = Get<uint64_t>(bytes, record);
    ASSERT_EQ(record + size, frame + length);
    const auto changed = [&](int64_t more) {
        Bytes other = bytes;
        if (more < 0)
            other.erase(other.begin() + int64_t(record + size) + more,
                        other.begin() + int64_t(record + size));
        else
            other.insert(other.begin() + int64_t(record + size), size_t(more), 0xAB);
        const auto grow = [&](size_t at) {
            const uint64_t value = Get<uint64_t>(other, at) + uint64_t(more);
            std::memcpy(&other[at], &value, sizeof value);
        };
        for (const size_t at :
             {frame, group, group + 12 + 4, group + 12 + 12, record, size_t(20), size_t(36)})
            grow(at); // lengths around the record; file length and clients' offset in the header
        return other;
    };
    for (const int64_t more : {int64_t(-13), int64_t(5)}) {
        ZvDrawing loaded;
        EXPECT_TRUE(LoadInto(loaded, changed(more), Unchecked()).IsEmpty()) << more;
        ASSERT_EQ(loaded.ViewTable()->Count(), 1) << more;
        EXPECT_EQ(loaded.ViewTable()->Get(0)->Get().height, 22);
        EXPECT_EQ(loaded.ViewTable()->Get(0)->Get().description, XStringW(more > 0 ? u"tail" : u""));
        if (more > 0) {
            EXPECT_EQ(Save(loaded).size(), Save(drawing).size() + 5) << "what a newer program stored is kept";
        }
    }
}

TEST(ZvTableTable, UnknownTablesAreKept) {
    ZvDrawing drawing;
    drawing.ViewTable()->InsertNew(u"V");
    Bytes bytes = Save(drawing);
    const auto [frame, length] = FrameOf(bytes, ZvTableCode::View);
    const uint32_t foreign = ZvTableCode::Full(7, 99);
    std::memcpy(&bytes[frame + 8], &foreign, 4);
    ZvDrawing loaded;
    EXPECT_TRUE(LoadInto(loaded, bytes, Unchecked()).IsEmpty());
    EXPECT_EQ(loaded.ViewTable()->Count(), 0);
    const Bytes again = Save(loaded);
    const Bytes kept(bytes.begin() + int64_t(frame), bytes.begin() + int64_t(frame + length));
    EXPECT_NE(std::search(again.begin(), again.end(), kept.begin(), kept.end()), again.end());
}

TEST(ZvTableTable, DamageCostsOnlyItself) {
    ZvDrawing drawing;
    Fill(drawing);
    const Bytes bytes = Save(drawing);
    const auto load = [&](const Bytes& damaged, ZvDrawing& into, bool digests = false) {
        const auto file = ZvCore::MemFile::OverView(damaged.data(), damaged.size());
        ZvNativeOptions options = Unchecked();
        options.blockDigests = digests;
        ZvNativeFile native(options);
        (void)native.ReadFile(&into, file.get());
        IOErrorSet errors;
        native.GetErrors(errors);
        return errors;
    };
    { // the block of all layer records cannot be opened: entities and their layer's place survive
        Bytes damaged = bytes;
        const size_t frame = FrameOf(bytes, ZvTableCode::Layer).first;
        const size_t group = frame + 24 + 36 + size_t(Get<uint64_t>(bytes, frame + 24 + 12));
        damaged[group + 12] = 9; // method
        ZvDrawing loaded;
        EXPECT_FALSE(load(damaged, loaded).IsEmpty());
        EXPECT_EQ(loaded.LineTypeTable()->Count(), 3);
        size_t onLayers = 0;
        for (int i = 0; i < loaded.LayerTable()->Count(); ++i)
            onLayers += loaded.LayerTable()->Get(i)->EntityCount();
        EXPECT_EQ(onLayers, 20u);
        EXPECT_TRUE(loaded.LayerTable()->GetByName(ZvStrings::GetW(ZvStr::TableRecovered)));
    }
    { // one of several blocks of a layer
        ZvDrawing many;
        for (int i = 0; i < 60000; ++i)
            many.Insert(Line(i));
        Bytes damaged = Save(many);
        const auto [frame, length] = FrameOf(damaged, ZvTableCode::Layer);
        size_t contents = frame + size_t(Get<uint64_t>(damaged, frame + 16));
        while (Get<uint64_t>(damaged, contents) < 1000) // internal layers hold nothing
            contents += size_t(Get<uint64_t>(damaged, contents));
        damaged[contents + 12 + 20 + 36 + 500] ^= 1; // in the first block
        ZvDrawing loaded;
        EXPECT_FALSE(load(damaged, loaded, true).IsEmpty());
        EXPECT_GT(loaded.NameTable().Count(), 20000);
        EXPECT_LT(loaded.NameTable().Count(), 60000);
    }
    { // a length that cannot be true in one record
        Bytes damaged = bytes;
        const size_t frame = FrameOf(bytes, ZvTableCode::TextStyle).first;
        const size_t group = frame + 24 + 36 + size_t(Get<uint64_t>(bytes, frame + 24 + 12));
        damaged[group + 12 + 36 + 7] = 0x7F;
        ZvDrawing loaded;
        EXPECT_FALSE(load(damaged, loaded).IsEmpty());
        EXPECT_EQ(loaded.LayerTable()->GetByName(u"Roads")->EntityCount(), 20u);
    }
    for (size_t at = size_t(Get<uint64_t>(bytes, 44)); at < bytes.size();
         at += 7) { // no byte may crash the reader
        Bytes damaged = bytes;
        damaged[at] ^= uint8_t(1 << at % 8);
        ZvDrawing loaded;
        load(damaged, loaded);
    }
}

TEST(ZvTableTable, NamesThatClashAreReplacedAndTheOthersKept) {
    ZvDrawing drawing;
    for (int i = 0; i < 5; ++i)
        drawing.Insert(Line(i));
    Bytes bytes = Save(drawing);
    // Entity record heads: u64 length, u16 client 1, u16 kind 35, u64 name.
    std::vector<size_t> heads;
    for (size_t at = size_t(Get<uint64_t>(bytes, 44)); at + 20 < bytes.size(); ++at)
        if (Get<uint32_t>(bytes, at + 8) == (35u << 16 | 1) && Get<uint64_t>(bytes, at + 12) <= 5 &&
            Get<uint64_t>(bytes, at + 12) > 0 && Get<uint64_t>(bytes, at) < 500)
            heads.push_back(at);
    ASSERT_EQ(heads.size(), 5u);
    const uint64_t names[] = {1, 1, 4000000000, 4, 0};
    for (size_t i = 0; i < 5; ++i)
        std::memcpy(&bytes[heads[i] + 12], &names[i], 8);
    ZvDrawing loaded;
    LoadInto(loaded, bytes, Unchecked());
    EXPECT_EQ(loaded.NameTable().Count(), 5);
    EXPECT_EQ(loaded.GetEntity(1)->Bounds3D().minX, 0);
    EXPECT_EQ(loaded.GetEntity(4)->Bounds3D().minX, 3);
    EXPECT_LT(loaded.NameTable().SlotCount(), 3000000u);
    EXPECT_LT(loaded.NameTable().TopName().value, 100u);
}

TEST(ZvTableTable, AttributesFollowTheirEntities) {
    ZvDrawing drawing, copy;
    Fill(drawing);
    ZvLayer *roads = drawing.LayerTable()->GetByName(u"Roads"),
            *other = drawing.LayerTable()->InsertNew(u"Other");
    EXPECT_TRUE(Zv::Ok(copy.MergeHelper()->Merge(drawing).status));
    const ZvAttributeTable& copied = copy.LayerTable()->GetByName(u"Roads")->Attributes();
    EXPECT_EQ(copied.RowCount(), 10u);
    EXPECT_EQ(copied.Fields(), roads->Attributes().Fields());
    std::vector<ZvName> with;
    roads->Attributes().ForEachRow([&](ZvName name, size_t) { with.push_back(name); });
    EXPECT_TRUE(drawing.GetEntity(with[0])->MoveToLayer(other));
    EXPECT_EQ(other->Attributes().Get(with[0], u"lanes"), ZvAttributeTable::Value(int64_t(1)));
    EXPECT_FALSE(roads->Attributes().HasRow(with[0]));
    drawing.GetEntity(with[1])->SetErased(true);
    drawing.PurgeErased();
    EXPECT_EQ(roads->Attributes().RowCount(), 8u);
}

namespace {

/// Sets every property that can be set to something else and counts them.
int ChangeAll(ZvTableRecord& record) {
    ZvPropertyGatherer before;
    record.GetProperties(before);
    ZvPropertySetter setter;
    int set = 0;
    for (const ZvProperty& property : before.Items()) {
        if (!property.writable || property.id == "Name")
            continue;
        ++set;
        if (const bool* flag = std::get_if<bool>(&property.value))
            setter.Set(property.id, !*flag);
        else if (const auto* whole = std::get_if<int64_t>(&property.value))
            setter.Set(property.id, *whole > 0 ? *whole - 1 : *whole + 1);
        else if (const auto* number = std::get_if<double>(&property.value))
            setter.Set(property.id, std::abs(*number) > 0.5 ? *number * 0.75 : *number + 0.125);
        else if (property.id.find("Color") != std::string::npos || property.id == "Ground")
            setter.Set(property.id, XStringW(u"RGB:123456"));
        else if (property.id == "Brush")
            setter.Set(property.id, XStringW(u"Solid:RGB:AB"));
        else if (property.id == "LineType")
            setter.Set(property.id, XStringW(u"I:1"));
        else if (property.id.find("Width") != std::string::npos)
            setter.Set(property.id, XStringW(u"World:2.500000"));
        else if (property.id == "Size" || property.id == "TextHeight")
            setter.Set(property.id, XStringW(u"Wo:2.5"));
        else
            setter.Set(property.id, std::get<XStringW>(property.value) + u"x");
    }
    record.SetProperties(setter);
    EXPECT_TRUE(setter.Refusals().empty()) << setter.Refusals()[0];
    ZvPropertyGatherer after;
    record.GetProperties(after);
    for (size_t i = 0; i < after.Items().size(); ++i)
        if (after.Items()[i].writable && after.Items()[i].id != "Name") {
            EXPECT_NE(after.Items()[i].value, before.Items()[i].value) << after.Items()[i].id;
        }
    return set;
}

} // namespace

TEST(ZvTableTable, EveryPropertyOfEveryKindSurvivesAFile) {
    ZvDrawing drawing;
    int set = 0;
    for (int t = 0; t < drawing.TableTable()->Count(); ++t)
        set += ChangeAll(*drawing.TableTable()->Get(t)->InsertNew(u"Changed"));
    EXPECT_GT(set, 120);
    ZvDrawing loaded;
    EXPECT_TRUE(LoadInto(loaded, Save(drawing)).IsEmpty());
    for (int t = 0; t < drawing.TableTable()->Count(); ++t) {
        ZvPropertyGatherer expected, found;
        drawing.TableTable()->Get(t)->GetByName(u"Changed")->GetProperties(expected);
        loaded.TableTable()->Get(t)->GetByName(u"Changed")->GetProperties(found);
        ASSERT_EQ(expected.Items().size(), found.Items().size());
        for (size_t i = 0; i < found.Items().size(); ++i)
            EXPECT_EQ(expected.Items()[i].value, found.Items()[i].value) << t << " " << found.Items()[i].id;
    }
}

TEST(ZvTableTable, ASelectionTakesOnlyWhatItUses) {
    ZvDrawing drawing;
    Fill(drawing);
    drawing.LineTypeTable()->InsertNew(u"Unused");
    drawing.LayerTable()->InsertNew(u"Other");
    const ZvName chosen = drawing.Insert(Line(0, 2), u"Other");
    ZvSelection selection(&drawing);
    selection.Insert(chosen);
    ZvNativeOptions options;
    options.selectionOnly = true;
    options.selection = &selection;
    ZvDrawing loaded;
    EXPECT_TRUE(LoadInto(loaded, Save(drawing, options)).IsEmpty());
    EXPECT_EQ(loaded.NameTable().Count(), 1);
    EXPECT_EQ(loaded.GetEntity(chosen)->GetLayerName(), XStringW(u"Other"));
    EXPECT_FALSE(loaded.LayerTable()->GetByName(u"Roads"));
    EXPECT_FALSE(loaded.LineTypeTable()->GetByName(u"Unused"));
    const int type = loaded.GetEntity(chosen)->ToLineEntity()->GetLineType().GetIndex();
    ASSERT_TRUE(loaded.LineTypeTable()->Get(type));
    EXPECT_EQ(loaded.LineTypeTable()->Get(type)->GetName(), XStringW(u"MyDash"));
}

TEST(ZvTableTable, ALayerThatCannotBeLoadedStopsTheSave) {
    ZvDrawing drawing;
    drawing.LayerTable()->InsertNew(u"Far")->SetDelayLoaded([](ZvLayer&) { return false; });
    ZvCore::MemFile file;
    ZvNativeFile native;
    EXPECT_FALSE(Zv::Ok(native.WriteFile(&drawing, &file)));
    IOErrorSet errors;
    native.GetErrors(errors);
    EXPECT_NE(errors.ToString().find("Far"), std::string::npos);
}
