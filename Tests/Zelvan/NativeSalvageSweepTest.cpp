#include "Tests/Support/NativeFiles.h"
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeDump.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvNativeSalvage.h"
#include "ZvCore/MD5.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

using namespace NativeFiles;

// Damage of every kind at many places of files of every form. Whatever is done to a file, what is saved of it is sound, no object is
// put on another's layer, and only what the damage touched is lost. ZELVAN_SALVAGE_SWEEP sets how many places a kind of damage takes.

namespace {

using Row = std::vector<ZvAttributeTable::Value>;

struct Object {
    std::string layer, what;
    Row row;
};
/// By drawing ("" is the main one, else the name of a layout) and name.
using Inventory = std::map<std::pair<std::string, uint32_t>, Object>;

/// Of long lines a digest, which is quicker made than their text.
std::string Told(const ZvEntity& entity) {
    constexpr size_t kLong = 20000;
    const size_t size = entity.MLVGetPartCount() == 1 ? entity.SerializeHardSize() : 0;
    if (size < kLong)
        return Describe(entity);
    Bytes record(size);
    return entity.SerializeHard(record.data(), size)
               ? ZvCore::MD5::ToHex(ZvCore::MD5::Of(record.data(), size))
               : "";
}

void Take(const std::string& sheet, ZvDrawing& drawing, Inventory& all) {
    for (int i = 0; i < drawing.LayerTable()->Count(); ++i) {
        const ZvLayer* layer = drawing.LayerTable()->Get(i);
        const ZvAttributeTable* rows = layer->AttributesOrNull();
        layer->Tree().ForEach([&](ZvEntity* entity) {
            Object object{layer->GetName().ToUtf8(), Told(*entity), {}};
            for (int f = 0; rows && rows->HasRow(entity->Name32()) && f < rows->FieldCount(); ++f)
                object.row.push_back(rows->Get(entity->Name32(), f));
            all[{sheet, entity->Name32()}] = std::move(object);
        });
    }
    for (int i = 0; sheet.empty() && i < drawing.BlockTable()->Count(); ++i) {
        const ZvBlock* block = drawing.BlockTable()->Get(i);
        block->Tree().ForEach([&](ZvEntity* entity) {
            all[{sheet, entity->Name32()}] = {"block " + block->GetName().ToUtf8(), Describe(*entity), {}};
        });
    }
    for (int i = 0; sheet.empty() && i < drawing.LayoutTable()->Count(); ++i) {
        const ZvLayout* layout = drawing.LayoutTable()->Get(i);
        Take(layout->GetName().ToUtf8(), *layout->Drawing(), all);
    }
}

std::unique_ptr<ZvRawCompound> Foreign(uint8_t filling) {
    static const auto client = [] {
        auto made = std::make_shared<ZvNativeDesc::Client>();
        made->name = "Contours";
        made->guid.bytes.fill(0xF0);
        made->fileId = 9;
        made->typeNames[77] = "ContourLine";
        return made;
    }();
    ZvNativeRecordHead head;
    Bytes record(ZvNativeRecordHead::kSize + 40, filling);
    head.length = record.size();
    head.client = 9, head.type = 77;
    head.flags = 0x80000000u | ZvEntity::kPubVisible;
    head.Store(record.data());
    auto proxy = std::make_unique<ZvRawCompound>();
    proxy->SetProxyRecord(std::move(record), client);
    return proxy;
}

void AddLines(ZvDrawing& drawing, const XStringW& layer, int count, int vertices) {
    std::vector<Vec2d> points(size_t(vertices), Vec2d{});
    for (int i = 0; i < count; ++i) {
        for (int v = 0; v < vertices; ++v)
            points[size_t(v)] = {i * 10.0 + v, (v * 7 + i) % 10 * 1.0};
        auto line = std::make_unique<ZvXLine>();
        line->SetPolyline(std::span<const Vec2d>(points));
        drawing.Insert(std::move(line), layer);
    }
}

/// Layers with and without attributes, objects of another module, two layouts with objects of their own; `bulk`: a layer of several
/// blocks among the others.
std::unique_ptr<ZvDrawing> Mixed(bool bulk) {
    auto drawing = Sample();
    AddLines(*drawing, u"Parcels", 25, 6);
    ZvLayer* parcels = drawing->LayerTable()->GetByName(u"Parcels");
    parcels->Attributes().AddField({u"owner", ZvAttributeTable::Type::String});
    parcels->Attributes().AddField({u"area", ZvAttributeTable::Type::Double});
    parcels->Tree().ForEach([&](ZvEntity* entity) {
        const Row row{XStringW(u"owner ") + XStringW::FromUtf8(std::to_string(entity->Name32())),
                      1.5 * entity->Name32()};
        parcels->Attributes().SetRow(entity->Name32(), row);
    });
    for (int i = 0; i < 4; ++i)
        drawing->Insert(Foreign(uint8_t(i + 1)), u"Contours");
    if (bulk)
        AddLines(*drawing, u"Coast", 3, 135000);
    AddLines(*drawing, u"Walls", 15, 4);
    for (const char16_t* name : {u"Sheet", u"Annex"}) {
        ZvDrawing& sheet = *drawing->LayoutTable()->InsertNew(name)->Drawing();
        AddLines(sheet, u"Frame", 5, 5);
        AddLines(sheet, u"Legend", 4, 3);
    }
    FixGuids(*drawing);
    return drawing;
}

/// A file with what its drawing holds and where that stands in it.
struct Original {
    int level;
    Bytes bytes;
    Inventory objects;
    struct Place {
        size_t begin, end; ///< of the record, in a compressed file of the block that holds it
    };
    std::map<uint32_t, std::vector<Place>> places; ///< of the objects of that name, whichever their drawing
    Place attributes{};
    std::vector<Place> blocks; ///< that lie in the file itself, heads included
};

Original Make(int level, bool bulk) {
    Original original;
    original.level = level;
    const auto drawing = Mixed(bulk);
    ZvNativeOptions options;
    options.compressionLevel = level;
    options.preview = level > 0;
    original.bytes = Save(*drawing, options);
    Take("", *drawing, original.objects);
    const auto file = ZvCore::MemFile::OverView(original.bytes.data(), original.bytes.size());
    ZvNativeDump::Options all;
    all.maxEntitiesPerList = ~uint64_t(0);
    all.payloads = false;
    size_t block = 0, blockEnd = 0;
    Original::Place place{};
    uint32_t name = 0;
    ZvNativeDump::Run(*file, all, [&](const ZvNativeDumpItem& item) {
        if (item.label == "has attributes" && item.value == "1")
            original.attributes.begin = size_t(item.offset);
        else if (item.label == "rows block")
            original.attributes.end = size_t(item.offset + item.length);
        if (item.stream == 0 && item.label.ends_with(" block"))
            original.blocks.push_back({size_t(item.offset), size_t(item.offset + item.length)});
        if (item.label == "objects block" && item.stream == 0)
            block = size_t(item.offset), blockEnd = size_t(item.offset + item.length);
        else if (item.label == "object" && level == 0)
            place = {block + 36 + size_t(item.offset), block + 36 + size_t(item.offset + item.length)};
        else if (item.label == "object")
            place = {block, blockEnd};
        else if (item.label == "name" && item.stream > 0 && item.length == 8) {
            name = item.value == "0" ? name
                                     : uint32_t(std::stoul(item.value)); // inside of others there are none
            original.places[name].push_back(place);
        }
        return true;
    });
    return original;
}

struct Stretch {
    size_t at, length;
    bool Touches(const Original::Place& place) const { return at < place.end && place.begin < at + length; }
};

enum class Harm { Zeros, Noise, Truncate, TwoStretches, ZerosAndTruncate, Removed, Inserted };
constexpr Harm kHarms[] = {
    Harm::Zeros,   Harm::Noise,   Harm::Truncate, Harm::TwoStretches, Harm::ZerosAndTruncate,
    Harm::Removed, Harm::Inserted};

struct Damaged {
    Bytes bytes;
    std::vector<Stretch> where;
    std::string told;
};

Damaged Damage(const Bytes& sound, Harm harm, size_t at, std::mt19937& random) {
    Damaged damaged{sound, {}, "harm " + std::to_string(int(harm))};
    const auto fill = [&](size_t from, bool noise) {
        const size_t length =
            std::min<size_t>(1 + random() % (random() % 4 ? 60 : 1500), sound.size() - from);
        for (size_t i = from; i < from + length; ++i)
            damaged.bytes[i] = noise ? uint8_t(random()) : uint8_t(0);
        damaged.where.push_back({from, length});
    };
    const auto truncate = [&](size_t from) {
        damaged.bytes.resize(from);
        damaged.where.push_back({from, sound.size() - from});
    };
    const auto begin = damaged.bytes.begin() + ptrdiff_t(at);
    const size_t length = std::min<size_t>(1 + random() % 200, sound.size() - at);
    switch (harm) {
    case Harm::Zeros:
    case Harm::Noise:
        fill(at, harm == Harm::Noise);
        break;
    case Harm::Truncate:
        truncate(at);
        break;
    case Harm::TwoStretches:
        fill(at, true);
        fill(random() % sound.size(), random() % 2);
        break;
    case Harm::ZerosAndTruncate:
        fill(random() % (at + 1), false);
        truncate(at);
        break;
    case Harm::Removed:
        damaged.bytes.erase(begin, begin + ptrdiff_t(length));
        damaged.where.push_back({at, length});
        break;
    case Harm::Inserted:
        damaged.bytes.insert(begin, length, uint8_t(random()));
        damaged.where.push_back({at, 1});
        break;
    }
    for (const Stretch& stretch : damaged.where)
        damaged.told += ", " + std::to_string(stretch.length) + " at " + std::to_string(stretch.at);
    return damaged;
}

std::string Findings(const Bytes& bytes) {
    std::string text;
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    for (const ZvNativeFinding& finding : ZvNativeCheck::Run(*file).findings)
        text += finding.where + ": " + finding.what + "\n";
    return text;
}

/// What must be true of a repair, as a text of what is not.
std::string Judge(const Original& original, const Damaged& damaged) {
    ZvDrawing drawing;
    const auto file = ZvCore::MemFile::OverView(damaged.bytes.data(), damaged.bytes.size());
    const ZvNativeSalvage::Result result = ZvNativeSalvage::Run(*file, drawing);
    const bool solid = original.level >= 6;
    const auto isHurt = [&](const Original::Place& place) {
        return std::any_of(damaged.where.begin(), damaged.where.end(),
                           [&](const Stretch& stretch) { return stretch.Touches(place); });
    };
    const auto touched = [&](uint32_t name) {
        const auto found = original.places.find(name);
        return found != original.places.end() &&
               std::any_of(found->second.begin(), found->second.end(), isHurt);
    };
    const bool rowsAreThere = !solid && !isHurt(original.attributes);
    if (!Zv::Ok(result.status)) {
        const bool mayBeNothing =
            solid || std::all_of(original.objects.begin(), original.objects.end(),
                                 [&](const auto& one) { return touched(one.first.second); });
        return mayBeNothing ? "" : "nothing was found";
    }
    std::string wrong = Findings(Save(drawing));
    std::set<std::string> standIns;
    std::map<std::string, uint64_t> doubtful, had;
    for (const auto& [key, object] : original.objects)
        ++had[key.first + "/" + object.layer];
    // Numbers of objects stand in front of blocks, and in a solid file are vouched for by nothing.
    const bool numbersAreSound =
        !solid && std::all_of(damaged.where.begin(), damaged.where.end(), [&](const Stretch& stretch) {
            return std::any_of(original.blocks.begin(), original.blocks.end(), [&](const auto& block) {
                return stretch.at >= block.begin + 36 && stretch.at + stretch.length <= block.end;
            });
        });
    if (numbersAreSound && result.stated && result.stated != original.objects.size())
        wrong +=
            std::to_string(result.stated) + " stated of " + std::to_string(original.objects.size()) + "\n";
    uint64_t saved = 0;
    for (const ZvNativeSalvage::Layer& layer : result.layers) {
        const std::string key = layer.sheet + "/" + (layer.isBlock ? "block " : "") + layer.name;
        if (layer.renamed || layer.doubtfulName)
            standIns.insert(key);
        doubtful[key] = layer.doubtful;
        if (numbersAreSound && layer.stated && had.count(key) && !standIns.count(key) &&
            layer.stated != had[key])
            wrong += key + " is said to have had " + std::to_string(layer.stated) + "\n";
        saved += layer.saved;
    }
    Inventory after;
    Take("", drawing, after);
    if (saved != result.saved || after.size() != saved)
        wrong += std::to_string(saved) + " told, " + std::to_string(after.size()) + " there\n";
    std::set<std::string> sheets{""}; // that kept their names
    for (const auto& one : original.objects)
        sheets.insert(one.first.first);
    std::multiset<std::pair<uint32_t, std::string>>
        found; // what is there of each name, whichever its drawing
    size_t others = 0;
    for (const auto& [key, object] : after) {
        const std::string layer = key.first + "/" + object.layer;
        const auto before = original.objects.find(key);
        const bool same = before != original.objects.end() && before->second.what == object.what &&
                          ((object.row.empty() && !rowsAreThere) || before->second.row == object.row);
        found.emplace(key.second, object.what);
        if (!sheets.count(key.first))
            continue;
        const std::string called = "object " + key.first + ":" + std::to_string(key.second) + " on " + layer;
        others += !same;
        if (!same && !doubtful[layer])
            wrong += called + " is another\n";
        if (same && before->second.layer != object.layer && !standIns.count(layer))
            wrong += called + " was on " + before->second.layer + "\n";
    }
    size_t lost = 0;
    for (const auto& [key, object] : original.objects)
        if (const auto there = found.find({key.second, object.what}); there != found.end())
            found.erase(there);
        else if (++lost; !solid && !touched(key.second))
            wrong += "object " + key.first + ":" + std::to_string(key.second) + " of " + object.layer +
                     " is lost\n";
    // The objects inside of a damaged one may be all that is left of it.
    size_t hurt = 0;
    for (const auto& one : original.places)
        hurt += touched(one.first) ? one.second.size() : 0;
    if (!solid && others > std::max(lost, hurt))
        wrong += std::to_string(others) + " objects are others, " + std::to_string(hurt) + " were hurt\n";
    return wrong;
}

size_t Asked(const char* variable, size_t otherwise) {
    const char* number = std::getenv(variable);
    return number ? size_t(std::max(1, std::atoi(number))) : otherwise;
}

void Sweep(int level, bool bulk, size_t places) {
    places = Asked("ZELVAN_SALVAGE_SWEEP", places);
    const Original original = Make(level, bulk);
    std::mt19937 random{unsigned(level + 10 * Asked("ZELVAN_SALVAGE_SEED", 0))};
    for (const Harm harm : kHarms)
        for (size_t i = 0; i < places; ++i) {
            const size_t size = original.bytes.size(), at = (i * size + random() % size) / places;
            const Damaged damaged = Damage(original.bytes, harm, at, random);
            const std::string wrong = Judge(original, damaged);
            EXPECT_TRUE(wrong.empty()) << "level " << level << ", " << damaged.told << ":\n"
                                       << wrong.substr(0, 600);
        }
}

/// Lengths that make what a damaged block states of its end true again, at another piece: those to every place behind it where one
/// may begin. With them those of the heads that stand in front of blocks, and some without any meaning.
std::vector<size_t> MisleadingLengths(const Original& original, size_t block) {
    std::set<size_t> lengths{1, 7, 8, 12, 20, 24, 32, 33, 36, 44, 48, 68, 97, 512, 4096};
    const size_t end = original.blocks[block].end;
    for (size_t next = block + 1; next < original.blocks.size(); ++next) {
        const auto [from, to] = original.blocks[next];
        lengths.insert({to - from, to - end, to + 1 - end});
        for (const size_t head : {0, 8, 12, 24, 32, 48})
            if (from - end > head)
                lengths.insert(from - head - end);
    }
    return {lengths.begin(), lengths.end()};
}

Damaged Shift(const Bytes& sound, bool cut, size_t at, size_t length, uint8_t filling) {
    Damaged damaged{sound, {{at, cut ? length : 1}}, cut ? "cut " : "inserted "};
    const auto place = damaged.bytes.begin() + ptrdiff_t(at);
    if (cut)
        damaged.bytes.erase(place, place + ptrdiff_t(length));
    else
        damaged.bytes.insert(place, length, filling);
    damaged.told += std::to_string(length) + " at " + std::to_string(at);
    return damaged;
}

/// `share`: of the cases one in so many.
void SweepMisleading(int level, size_t share) {
    share = std::max<size_t>(1, share / Asked("ZELVAN_SALVAGE_SWEEP", 1));
    const Original original = Make(level, false);
    std::mt19937 random{unsigned(level + 10 * Asked("ZELVAN_SALVAGE_SEED", 0))};
    const auto judge = [&](size_t block, bool cut, size_t at, size_t length) {
        const Damaged damaged = Shift(original.bytes, cut, at, length, uint8_t(random()));
        const std::string wrong = Judge(original, damaged);
        EXPECT_TRUE(wrong.empty()) << "level " << level << ", block " << block << ", " << damaged.told
                                   << ":\n"
                                   << wrong.substr(0, 600);
    };
    for (size_t block = 0; block < original.blocks.size(); ++block) {
        const auto [from, to] = original.blocks[block];
        const size_t stored = from + 36, room = to - stored;
        for (const size_t length : MisleadingLengths(original, block)) {
            if (length < room && random() % share == 0)
                judge(block, true, stored + random() % (room - length), length);
            if (random() % share == 0)
                judge(block, false, stored + random() % room, length);
        }
        if (block + 1 == original.blocks.size() || random() % share % 8 != 0)
            continue;
        const size_t last = original.blocks[block + 1].begin + 36,
                     at = to - 1 - random() % std::min<size_t>(room, 200);
        judge(block, true, at, to - at + random() % (last - to)); // into the heads of the next one
    }
}

} // namespace

TEST(NativeSalvageSweep, DamageAnywhereCostsOnlyWhatItTouchesAndMovesNothing) {
    for (int level : {0, 1, 3, 6})
        Sweep(level, false, 12);
}

TEST(NativeSalvageSweep, ALayerOfSeveralBlocksLosesOnlyTheBlocksThatAreTouched) {
    for (int level : {0, 3})
        Sweep(level, true, 1);
}

TEST(NativeSalvageSweep, BytesCutOutOrPutInAsManyAsAPieceHasHideNoPieceBehind) {
    for (int level : {0, 1, 3, 6})
        SweepMisleading(level, 40);
}
