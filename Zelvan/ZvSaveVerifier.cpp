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
#include "Zelvan/ZvNativeDigester.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvStrings.h"
#include <memory>
#include <system_error>

namespace {

/// Begins to digest a file that lies in memory on a second thread; null when that cannot be.
std::unique_ptr<ZvNativeDigester> DigestAside(const ZvCore::IFile& file, ZvNativeHeader& header) {
    const uint64_t length = file.Length();
    const uint8_t* bytes = length >= ZvNativeHeader::kSize ? file.View(0, size_t(length)) : nullptr;
    if (!bytes)
        return nullptr;
    header.Parse(bytes);
    if (!header.HasDigest() || header.length != length)
        return nullptr;
    try {
        return std::make_unique<ZvNativeDigester>(bytes, length);
    } catch (const std::system_error&) {
        return nullptr;
    }
}

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

/// With the drawings of layouts, which may have layouts of their own.
uint64_t CensusBelow(ZvDrawing& drawing, const ZvDrawing* parent) {
    uint64_t count = OwnCensus(drawing, parent);
    for (int i = 0; i < drawing.LayoutTable()->Count(); ++i)
        if (ZvDrawing* layout = drawing.LayoutTable()->Get(i)->Drawing())
            count += CensusBelow(*layout, &drawing);
    return count;
}

} // namespace

uint64_t ZvSaveVerifier::Census(ZvDrawing& drawing) {
    return CensusBelow(drawing, nullptr);
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
    ZvNativeHeader header;
    const auto digester = DigestAside(*stream, header);
    options.digests = !digester; // that of the whole file covers its blocks
    const ZvNativeCheck::Result result = ZvNativeCheck::Run(*stream, options);
    if (!result.findings.empty())
        return result.findings.front().where + ": " + result.findings.front().what;
    if (result.cancelled)
        return "cancelled";
    if (digester && digester->Finish(nullptr).whole != header.digest)
        return ZvStrings::Get(ZvStr::LoadBadChecksum);
    if (!result.hasDigest)
        return ZvStrings::Get(ZvStr::SaveNoDigest);
    if (entities && *entities != result.ownEntities)
        return XStringA::Format(ZvStrings::Get(ZvStr::SaveCensus), int64_t(result.ownEntities),
                                int64_t(*entities))
            .Str();
    return {};
}

ZvSaveStamp ZvSaveVerifier::StampOf(const std::filesystem::path& file) const {
    std::string why;
    const auto stream = m_files.Open(file, ZvCore::IFileSystem::Mode::Read, why);
    return stream ? ZvSaveStamp::Read(*stream) : ZvSaveStamp();
}

Guid ZvSaveVerifier::DigestOf(const std::filesystem::path& file) const {
    std::string why;
    const auto stream = m_files.Open(file, ZvCore::IFileSystem::Mode::Read, why);
    return stream ? ZvSaveStamp::ReadDigest(*stream) : Guid();
}
