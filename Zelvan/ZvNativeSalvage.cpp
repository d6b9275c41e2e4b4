#include "Zelvan/ZvNativeSalvage.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvTableCodes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeSalvageScan.h"
#include "ZvCore/ZvErrors.h"
#include <map>

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

/// The layers of the drawing with what the search knows of each, by name.
void TellLayers(ZvDrawing& drawing, const std::map<std::string, ZvNativeSalvage::Layer>& found,
                Result& result) {
    const ZvLayerTable& table = *drawing.LayerTable();
    for (int i = 0; i < table.Count(); ++i) {
        const ZvLayer* layer = table.Get(i);
        if (layer->IsErased())
            continue;
        ZvNativeSalvage::Layer told;
        told.name = layer->GetName().ToUtf8();
        if (const auto known = found.find(told.name); known != found.end())
            told = known->second;
        told.saved = layer->EntityCount();
        if (result.wasSound)
            told.stated = told.read = told.saved;
        result.recordsFound += told.read;
        result.saved += told.saved;
        result.layers.push_back(std::move(told));
    }
}

std::map<std::string, ZvNativeSalvage::Layer> LayersOf(ZvSalvaged::Section& section) {
    std::map<std::string, ZvNativeSalvage::Layer> layers;
    const ZvSalvaged::Table* table = section.Find(ZvTableCode::Full(ZvTableCode::Layer));
    if (!table)
        return layers;
    std::map<int32_t, std::string> names;
    ForEachRecord(*table, [&](const uint8_t* bytes, size_t length) {
        int32_t index = 0;
        uint32_t id = 0;
        std::string name;
        if (ZvSalvaged::ParseRecord(bytes, length, index, id, name))
            names.emplace(index, name);
    });
    for (const auto& contents : table->contents) {
        const std::string& name = names[contents->index];
        ZvNativeSalvage::Layer& layer = layers[name];
        layer.name = name;
        layer.renamed = !contents->substitute.empty();
        layer.stated += contents->stated;
        for (const ZvSalvaged::Records& list : contents->lists) {
            layer.read += list.count;
            layer.doubtful += list.doubtful ? list.count : 0;
        }
    }
    return layers;
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
    NameTheNameless(found.section);
    const auto layers = LayersOf(found.section);
    const std::vector<uint8_t> rebuilt = Assemble(found);
    found.section.tables.clear();
    const auto view = ZvCore::MemFile::OverView(rebuilt.data(), rebuilt.size());
    const ZvErrorCapture quiet; // what is wrong is told in the result
    const Zv::Status status = Load(drawing, *view, false, options, result.errors);
    if (status == Zv::Status::Cancelled) {
        result.status = status;
        return result;
    }
    TellLayers(drawing, layers, result);
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
