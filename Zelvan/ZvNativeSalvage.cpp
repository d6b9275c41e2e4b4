#include "Zelvan/ZvNativeSalvage.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeSalvageScan.h"
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
        for (const auto& contents : table->contents) {
            const RecordName& record = names[contents->index];
            if (contents->section)
                Know(*contents->section, record.name, known);
            if (table->code != kLayers && table->code != kBlocks)
                continue;
            ZvNativeSalvage::Layer& layer = known[{sheet, table->code, record.name}];
            layer.renamed = !contents->substitute.empty();
            layer.doubtfulName = record.doubtful && !layer.renamed;
            layer.stated += contents->stated;
            for (const ZvSalvaged::Records& list : contents->lists) {
                layer.read += list.count;
                layer.doubtful += list.doubtful ? list.count : 0;
            }
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
            told.renamed = !result.wasSound;
            told.read = told.saved;
        }
        told.name = name;
        told.sheet = sheet;
        told.isBlock = code == kBlocks;
        if (result.wasSound)
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

Result Search(ZvCore::IFile& file, ZvDrawing& drawing, const ZvNativeSalvage::Options& options) {
    Result result;
    std::vector<uint8_t> hold;
    const uint64_t size = file.Length();
    const uint8_t* bytes = file.View(0, size_t(size));
    if (!bytes) {
        hold.resize(size_t(size));
        if (!file.Seek(0) || !file.ReadChunked(hold.data(), size, size_t(4) << 20)) {
            result.errors.Add(int(ZvErrorCode::BlockUnreadable), file.ErrorText());
            return result;
        }
        bytes = hold.data();
    }
    ZvSalvaged::File found;
    if (!ZvNativeSalvageScan(bytes, size, result, options.progress).Run(found)) {
        result.status = Zv::Status::Cancelled;
        return result;
    }
    if (!HoldsAnything(found.section))
        return result;
    AssignHeadless(found.section);
    SettleNames(found.section);
    NameTheNameless(found.section);
    Known known;
    Know(found.section, {}, known);
    const std::vector<uint8_t> rebuilt = Assemble(found);
    found.section.tables.clear();
    const auto view = ZvCore::MemFile::OverView(rebuilt.data(), rebuilt.size());
    const ZvErrorCapture quiet; // what is wrong is told in the result
    const Zv::Status status = Load(drawing, *view, false, options, result.errors);
    if (status == Zv::Status::Cancelled) {
        result.status = status;
        return result;
    }
    TellLayers(drawing, known, result);
    result.status = Zv::Status::Success;
    return result;
}

} // namespace

ZvNativeSalvage::Result ZvNativeSalvage::Run(ZvCore::IFile& file, ZvDrawing& drawing,
                                             const Options& options) {
    const uint64_t position = file.Position();
    ZvNativeCheck::Options examine;
    examine.maxFindings = 1;
    examine.progress = options.progress;
    const ZvNativeCheck::Result checked = ZvNativeCheck::Run(file, examine);
    Result result;
    if (checked.cancelled) {
        result.status = Zv::Status::Cancelled;
    } else if (checked.IsSound()) {
        result.status = Load(drawing, file, true, options, result.errors);
        result.wasSound = Zv::Ok(result.status);
        result.solid = checked.isSolid;
        result.blocks = checked.blocks;
        if (result.wasSound)
            TellLayers(drawing, {}, result);
    } else {
        result = Search(file, drawing, options);
    }
    file.Seek(position);
    return result;
}
