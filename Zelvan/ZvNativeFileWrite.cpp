#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvStrings.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/Version.h"
#include "ZvCore/ZvErrors.h"
#include <cstring>
#include <new>

namespace {

/// From this compression level on the whole body is one block.
constexpr int kSolidLevel = 6;

} // namespace

Zv::Status ZvNativeFile::WriteFile(ZvDrawing* drawing, ZvCore::IFile* file) {
    Impl& impl = *m_impl;
    impl.Begin(*drawing, *file);
    bool good = false;
    try {
        good = impl.Write();
    } catch (const std::bad_alloc&) {
        AddError(int(ZvErrorCode::OutOfMemory), ZvStrings::Get(ZvStr::SaveOutOfMemory));
    }
    if (file->Error())
        impl.errors.Add(
            0, XStringA::Format(ZvStrings::Get(ZvStr::SaveWriteFailed), file->ErrorText().c_str()).Str());
    return impl.Outcome(good && !file->Error());
}

bool ZvNativeFile::Impl::Write() {
    if (options.purgeUnused)
        drawing->PurgeUnusedTableRecords();
    ZvUsageTable used;
    if (options.selectionOnly && options.selection) {
        drawing->GatherUsageInfo(used, options.selection);
        desc->usedRecords = &used;
    }
    desc->version = kVersion;
    const bool solid = options.compressionLevel >= kSolidLevel;
    const bool good = (!solid || WriteSolidHeadBegin()) && WriteBody() && (!solid || WriteSolidHeadEnd());
    desc->usedRecords = nullptr;
    return good;
}

bool ZvNativeFile::Impl::WriteSolidHeadBegin() {
    if (!WriteHeader())
        return false;
    api.StartCompressBlock();
    return true;
}

bool ZvNativeFile::Impl::WriteBody() {
    FillHeader();
    if (!WriteHeader() || !WriteSettings())
        return false;
    if (options.preview && !PreparePreviewBitmap())
        Warn(0, ZvStrings::Get(ZvStr::SaveNoPreview));
    if (!WriteTables() || !WriteClients())
        return false;
    header.length = Target().Length();
    return CalculateChecksum() && WriteHeader();
}

bool ZvNativeFile::Impl::WriteSolidHeadEnd() {
    if (!api.EndCompressBlock(true))
        return false;
    header.flags = ZvNativeHeader::kFlagSolid;
    header.clientCount = 0;
    header.clientsOffset = header.tablesOffset = header.settingsOffset = 0;
    header.length = Target().Length();
    header.solidOffset = kHeaderSize;
    return CalculateChecksum() && WriteHeader();
}

/// At the start of the target; the position is behind the header afterwards.
bool ZvNativeFile::Impl::WriteHeader() {
    uint8_t bytes[ZvNativeHeader::kSize];
    header.Store(bytes);
    return desc->Seek(0) && desc->Write(bytes, sizeof bytes);
}

void ZvNativeFile::Impl::FillHeader() {
    header = {};
    std::memcpy(header.magic, ZvNativeHeader::kMagic, sizeof header.magic);
    header.version = kVersion;
    header.buildStamp = ZvCore::Version::BuildStamp();
    header.size = kHeaderSize;
    header.entityHeadSize = kEntityHeadSize;
    header.flags = options.optionBit1 ? ZvNativeHeader::kFlagNoNewerQuestion : 0;
    header.minimumReader = MinimumReaderVersion(kVersion);
    desc->flags = header.flags;
    desc->entityHeadSize = header.entityHeadSize;
}

bool ZvNativeFile::Impl::WriteTables() {
    header.tablesOffset = desc->Position();
    return Zv::Ok(drawing->TableTable()->NativeOut(*desc)) && !aborted && !cancelled && !Target().Error();
}
