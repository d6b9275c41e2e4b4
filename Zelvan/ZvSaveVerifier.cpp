#include "Zelvan/ZvSaveVerifier.h"
#include "Zelvan/Tables/ZvBlock.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayout.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvStrings.h"

namespace {

/// Entities in the trees of the drawing's own records; tables borrowed from `parent` are its parent's.
uint64_t OwnCensus(ZvDrawing& drawing, const ZvDrawing* parent) {
    uint64_t count = 0;
    if (!parent || drawing.LayerTable() != parent->LayerTable())
        for (int i = 0; i < drawing.LayerTable()->Count(); ++i)
            count += drawing.LayerTable()->Get(i)->Tree().CountNonErased();
    if (!parent || drawing.BlockTable() != parent->BlockTable())
        for (int i = 0; i < drawing.BlockTable()->Count(); ++i)
            count += drawing.BlockTable()->Get(i)->Tree().CountNonErased();
    return count;
}

} // namespace

uint64_t ZvSaveVerifier::Census(ZvDrawing& drawing) {
    uint64_t count = OwnCensus(drawing, nullptr);
    for (int i = 0; i < drawing.LayoutTable()->Count(); ++i)
        if (ZvDrawing* layout = drawing.LayoutTable()->Get(i)->Drawing())
            count += OwnCensus(*layout, &drawing);
    return count;
}

std::string ZvSaveVerifier::Check(const std::filesystem::path& file, std::optional<uint64_t> entities,
                                  ZvCore::IProgress* progress) const {
    std::string why;
    const auto stream = m_files.Open(file, ZvCore::IFileSystem::Mode::Read, why);
    if (!stream)
        return why;
    ZvNativeCheck::Options options;
    options.maxFindings = 1;
    options.progress = progress;
    const ZvNativeCheck::Result result = ZvNativeCheck::Run(*stream, options);
    if (!result.findings.empty())
        return result.findings.front().where + ": " + result.findings.front().what;
    if (result.cancelled)
        return "cancelled";
    if (!result.hasDigest)
        return ZvStrings::Get(ZvStr::SaveNoDigest);
    if (entities && *entities != result.ownEntities)
        return XStringA::Format(ZvStrings::Get(ZvStr::SaveCensus), int64_t(result.ownEntities),
                                int64_t(*entities))
            .Str();
    return {};
}

Guid ZvSaveVerifier::DrawingOf(const std::filesystem::path& file) const {
    std::string why;
    const auto stream = m_files.Open(file, ZvCore::IFileSystem::Mode::Read, why);
    return stream ? ZvNativeFile::ReadGuid(stream.get()) : Guid();
}
