#include "Zelvan/ZvNativeSalvage.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeSalvageScan.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/ZvErrors.h"
#include <map>
#include <tuple>

namespace {

using Result = ZvNativeSalvage::Result;

Zv::Status Load(ZvDrawing& drawing, ZvCore::IFile& file, bool verify, const ZvNativeSalvage::Options& options,
                IOErrorSet& errors) {
    ZvNativeOptions read;
    read.verifyChecksum = verify;
    read.askNewerVersion = false;
    read.progress = options.progress;
    ZvNativeFile native(read);
    file.Seek(0);
    const Zv::Status status = native.ReadFile(&drawing, &file);
    native.GetErrors(errors);
    return status;
}

/// What the search knows of each layer and block, by layout, table and name.
using Known = std::map<std::tuple<std::string, uint32_t, std::string>, ZvNativeSalvage::Layer>;

constexpr uint32_t kLayers = ZvTableCode::Full(ZvTableCode::Layer);
constexpr uint32_t kBlocks = ZvTableCode::Full(ZvTableCode::Block);

struct RecordName {
    std::string name;
    bool doubtful = false;
};

std::map<int32_t, RecordName> NamesOf(const ZvSalvaged::Table& table) {
    std::map<int32_t, RecordName> names;
    for (const ZvSalvaged::Records& group : table.groups)
        ZvSalvaged::ForEachRecord(group, [&](const uint8_t* bytes, size_t length) {
            ZvSalvaged::RecordHead head;
            if (ZvSalvaged::ParseRecord(bytes, length, head))
                names.try_emplace(head.index, RecordName{head.name, group.doubtful});
        });
    return names;
}

void Know(const ZvSalvaged::Section& section, const std::string& sheet, Known& known) {
    for (const auto& table : section.tables) {
        std::map<int32_t, RecordName> names = NamesOf(*table);
        for (const auto& [index, record] : names)
            if (table->code == kLayers || table->code == kBlocks)
                known[{sheet, table->code, record.name}].contentsLost = !table->ownsNothing;
        for (const auto& contents : table->contents) {
            const RecordName& record = names[contents->index];
            if (contents->section)
                Know(*contents->section, record.name, known);
            if (table->code != kLayers && table->code != kBlocks)
                continue;
            ZvNativeSalvage::Layer& layer = known[{sheet, table->code, record.name}];
            layer.renamed = !contents->substitute.empty();
            layer.doubtfulName = record.doubtful && !layer.renamed;
            layer.contentsLost = false;
            layer.attributesLost |= contents->attributes.size() < contents->attributeFrames;
            layer.attributesUnknown |=
                table->code == kLayers && !contents->attributesTold && contents->attributes.empty();
            uint64_t count = 0, doubtful = 0;
            for (const ZvSalvaged::Records& list : contents->lists) {
                count += list.count;
                doubtful += list.doubtful ? list.count : 0;
            }
            layer.read += count;
            layer.doubtful += doubtful;
            const bool allThere = doubtful == 0 && contents->lists.size() == contents->blocks;
            layer.stated += allThere ? count : contents->stated; // which may be wrong itself
        }
    }
}

/// The layers (or blocks) of a table of the drawing with what the search knows of each.
template <class Table>
void Tell(const Table& table, uint32_t code, const std::string& sheet, const Known& known, Result& result) {
    for (int i = 0; i < table.Count(); ++i) {
        if (table.Get(i)->IsErased())
            continue;
        ZvNativeSalvage::Layer told;
        const std::string name = table.Get(i)->GetName().ToUtf8();
        if (const auto found = known.find({sheet, code, name}); found != known.end())
            told = found->second;
        told.saved = table.Get(i)->EntityCount();
        if (told.read < told.saved) { // under a name that the file does not have
            told.renamed = !result.isWhole;
            told.read = told.saved;
            told.doubtful = told.renamed ? told.saved : 0;
        }
        told.name = name;
        told.sheet = sheet;
        told.isBlock = code == kBlocks;
        if (result.isWhole)
            told.stated = told.read = told.saved;
        result.recordsFound += told.read;
        result.saved += told.saved;
        result.layers.push_back(std::move(told));
    }
}

void TellLayers(ZvDrawing& drawing, const Known& known, Result& result) {
    Tell(*drawing.LayerTable(), kLayers, {}, known, result);
    Tell(*drawing.BlockTable(), kBlocks, {}, known, result);
    for (const ZvLayout* layout : drawing.LayoutTable()->GetOrdered())
        if (layout->Drawing())
            Tell(*layout->Drawing()->LayerTable(), kLayers, layout->GetName().ToUtf8(), known, result);
}

bool HoldsAnything(const ZvSalvaged::Section& section) {
    for (const auto& table : section.tables)
        if (!table->groups.empty() || !table->contents.empty())
            return true;
    return false;
}

/// Objects by the heads of the sections that were found; 0 when they contradict the clients, which count all records.
uint64_t StatedBy(const ZvSalvaged::Section& section, uint64_t most) {
    uint64_t stated = section.stated;
    for (const auto& table : section.tables)
        for (const auto& contents : table->contents)
            if (contents->section && stated <= most)
                stated += StatedBy(*contents->section, most);
    return stated <= most ? stated : 0;
}

std::string TableName(ZvDrawing& drawing, uint32_t code) {
    for (int i = 0; i < drawing.TableTable()->Count(); ++i)
        if (const ZvTable* table = drawing.TableTable()->Get(i);
            ZvTableCode::Full(table->GetTableCode()) == code)
            return table->DefaultNameBase().Trimmed().ToUtf8();
    return std::to_string(code & 0xFFFF);
}

/// What is missing of tables, before anything is put in the place of it.
void TellTables(const ZvSalvaged::Section& section, const std::string& sheet, ZvDrawing& names,
                Result& result) {
    for (const auto& table : section.tables) {
        uint64_t read = 0;
        for (const ZvSalvaged::Records& group : table->groups)
            read += group.count;
        if (read < table->stated && table->stated < uint32_t(ZvSalvaged::kMostIndex))
            result.tables.push_back({TableName(names, table->code), sheet, table->stated, read});
        if (table->code != ZvTableCode::Full(ZvTableCode::Layout))
            continue;
        std::map<int32_t, RecordName> layouts = NamesOf(*table);
        for (const auto& contents : table->contents) {
            if (contents->section)
                TellTables(*contents->section, layouts[contents->index].name, names, result);
            layouts.erase(contents->index);
        }
        for (const auto& [index, layout] : layouts)
            if (!table->ownsNothing)
                result.lostLayouts.push_back(layout.name);
    }
    if (section.statedTables > section.tables.size())
        result.tablesLost += section.statedTables - section.tables.size();
}

struct Bytes {
    const uint8_t* data = nullptr;
    uint64_t size = 0;
    std::vector<uint8_t> hold; ///< when they are not the file's own
    std::unique_ptr<ZvCore::MemFile> File(uint64_t length) const {
        return ZvCore::MemFile::OverView(data, size_t(length));
    }
};

bool TakeBytes(ZvCore::IFile& file, Bytes& bytes) {
    bytes.size = file.Length();
    bytes.data = file.View(0, size_t(bytes.size));
    if (bytes.data)
        return true;
    bytes.hold.resize(size_t(bytes.size));
    bytes.data = bytes.hold.data();
    return file.Seek(0) && file.ReadChunked(bytes.hold.data(), bytes.size, size_t(4) << 20);
}

/// A transfer as text puts a carriage return in front of every line feed. No file of any size has none without by chance.
bool UndoText(Bytes& bytes) {
    constexpr uint64_t kFewest = 4;
    uint64_t feeds = 0;
    for (uint64_t i = 0; i < bytes.size; ++i)
        if (bytes.data[i] == '\n') {
            ++feeds;
            if (i == 0 || bytes.data[i - 1] != '\r')
                return false;
        }
    if (feeds < kFewest)
        return false;
    std::vector<uint8_t> undone;
    undone.reserve(size_t(bytes.size - feeds));
    for (uint64_t i = 0; i < bytes.size; ++i)
        if (bytes.data[i] != '\r' || i + 1 == bytes.size || bytes.data[i + 1] != '\n')
            undone.push_back(bytes.data[i]);
    bytes.hold = std::move(undone);
    bytes.data = bytes.hold.data();
    bytes.size = bytes.hold.size();
    return true;
}

/// Of compressed bytes every 65,536th is a carriage return with a line feed behind it. A long file that has hardly any, and is too short by
/// about as many bytes, went through a transfer as text.
bool SeemsToLackReturns(const Bytes& bytes, const Result& result) {
    constexpr uint64_t kLong = uint64_t(1) << 19, kMostOften = uint64_t(1) << 13;
    const uint64_t lacking = result.statedLength > bytes.size ? result.statedLength - bytes.size : 0;
    if (bytes.size < kLong || lacking == 0 || lacking > bytes.size / kMostOften)
        return false;
    uint64_t pairs = 0; // of two returns one is left
    for (uint64_t i = 1; i < bytes.size; ++i)
        pairs += bytes.data[i] == '\n' && bytes.data[i - 1] == '\r';
    return pairs <= lacking / 16;
}

ZvNativeCheck::Result Examine(ZvCore::IFile& file, const ZvNativeSalvage::Options& options) {
    ZvNativeCheck::Options examine;
    examine.maxFindings = 1;
    examine.progress = options.progress;
    return ZvNativeCheck::Run(file, examine);
}

/// False when it is not sound; else the result says how the loading went.
bool LoadSound(ZvCore::IFile& file, ZvDrawing& drawing, const ZvNativeSalvage::Options& options,
               Result& result) {
    const ZvNativeCheck::Result checked = Examine(file, options);
    if (checked.cancelled) {
        result.status = Zv::Status::Cancelled;
        return true;
    }
    if (!checked.IsSound())
        return false;
    result.status = Load(drawing, file, true, options, result.errors);
    result.isWhole = Zv::Ok(result.status);
    result.solid = checked.isSolid;
    result.blocks = checked.blocks;
    result.stated = checked.ownEntities;
    if (result.isWhole)
        TellLayers(drawing, {}, result);
    return true;
}

/// A drawing that is whole, with something behind its end.
bool LoadFront(const Bytes& bytes, ZvDrawing& drawing, const ZvNativeSalvage::Options& options,
               Result& result) {
    if (bytes.size < ZvNativeHeader::kSize)
        return false;
    ZvNativeHeader header;
    header.Parse(bytes.data);
    const uint64_t length = header.length;
    const bool wasTried = length == bytes.size && !result.wasText;
    if (!header.HasMagic() || wasTried || length < ZvNativeHeader::kSize || length > bytes.size ||
        !LoadSound(*bytes.File(length), drawing, options, result))
        return false;
    result.statedLength = length;
    result.behind = {length, bytes.size - length, 0};
    ZvNativeHeader next;
    if (result.behind.length >= ZvNativeHeader::kSize)
        next.Parse(bytes.data + length);
    result.anotherBehind = next.HasMagic();
    return true;
}

void Search(const Bytes& bytes, ZvDrawing& drawing, const ZvNativeSalvage::Options& options, Result& result) {
    ZvSalvaged::File found;
    if (!ZvNativeSalvageScan(bytes.data, bytes.size, result, options.progress).Run(found)) {
        result.status = Zv::Status::Cancelled;
        return;
    }
    if (!HoldsAnything(found.section))
        return;
    result.lostReturns = SeemsToLackReturns(bytes, result);
    result.stated = StatedBy(found.section, found.records ? found.records : bytes.size);
    AssignHeadless(found.section);
    TellTables(found.section, {}, drawing, result);
    SettleNames(found.section);
    NameTheNameless(found.section);
    Known known;
    Know(found.section, {}, known);
    const std::vector<uint8_t> rebuilt = Assemble(found);
    found.section.tables.clear();
    const auto view = ZvCore::MemFile::OverView(rebuilt.data(), rebuilt.size());
    const Zv::Status status = Load(drawing, *view, false, options, result.errors);
    if (status == Zv::Status::Cancelled) {
        result.status = status;
        return;
    }
    TellLayers(drawing, known, result);
    result.status = Zv::Status::Success;
}

} // namespace

ZvNativeSalvage::Result ZvNativeSalvage::Run(ZvCore::IFile& file, ZvDrawing& drawing,
                                             const Options& options) {
    const uint64_t position = file.Position();
    Result result;
    result.fileLength = file.Length();
    if (LoadSound(file, drawing, options, result)) {
        result.wasSound = result.isWhole;
        file.Seek(position);
        return result;
    }
    const ZvErrorCapture quiet; // what is wrong is told in the result
    Bytes bytes;
    if (!TakeBytes(file, bytes)) {
        result.errors.Add(int(ZvErrorCode::BlockUnreadable), file.ErrorText());
    } else {
        result.wasText = UndoText(bytes);
        if (!LoadFront(bytes, drawing, options, result))
            Search(bytes, drawing, options, result);
    }
    file.Seek(position);
    return result;
}
