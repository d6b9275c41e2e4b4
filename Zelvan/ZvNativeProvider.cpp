#include "Zelvan/ZvNativeProvider.h"
#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/Tables/ZvTableMerge.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvStrings.h"
#include "ZvCore/FileSystem.h"
#include "ZvCore/Platform/Platform.h"
#include "ZvCore/ZvErrors.h"

namespace {

constexpr int kCannotOpen = int(ZvErrorCode::None);

ZvNativeOptions ToNative(const ZvFileOptions& options, const std::filesystem::path& file,
                         ZvCore::IProgress& progress) {
    ZvNativeOptions native;
    const ZvCore::Settings& values = options.values;
    native.compressionLevel = int(values.GetInt("CompressionLevel", native.compressionLevel));
    native.blockDigests = values.GetBool("BlockDigests", native.blockDigests);
    native.verifyChecksum = !values.GetBool("SkipChecksum", false);
    native.optionBit1 = options.providerOption;
    native.purgeUnused = values.GetBool("PurgeUnused", false);
    native.selectionOnly = options.selection && values.GetBool("SelectionOnly", true);
    native.selection = options.selection;
    native.preview = values.GetBool("Preview", false);
    native.host = options.host;
    native.fileName = ZvPlatform::PathToUtf8(file);
    native.progress = &progress;
    return native;
}

ZvCore::IFileSystem& FilesOf(const ZvFileOptions& options) {
    return options.files ? *options.files : ZvCore::IFileSystem::System();
}

} // namespace

std::vector<ZvFileFormat> ZvNativeProvider::Formats() const {
    ZvFileFormat drawing;
    drawing.id = kFormatId;
    drawing.name = ZvStrings::GetW(ZvStr::DrawingFilter);
    drawing.extensions = {"zvd"};
    drawing.canLoad = drawing.canSave = true;
    ZvFileFormat older = drawing;
    older.id = "zvf";
    older.extensions = {"zvf", "zelvantextures"};
    older.canSave = false;
    ZvFileFormat backup = older;
    backup.id = kBackupFormatId;
    backup.name = ZvStrings::GetW(ZvStr::BackupFilter);
    backup.extensions = {"zvd.bak"};
    return {drawing, older, backup};
}

Zv::Status ZvNativeProvider::Load(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat&,
                                  const ZvFileOptions& options, IOErrorSet& errors,
                                  ZvCore::IProgress& progress) {
    std::string why;
    const auto stream = FilesOf(options).Open(file, ZvCore::IFileSystem::Mode::Read, why);
    if (!stream) {
        errors.Add(kCannotOpen, why);
        return Zv::Status::Failure;
    }
    ZvNativeOptions native = ToNative(options, file, progress);
    ZvMergeProfile profile;
    if (options.values.GetBool("Merge", false))
        native.merge = &profile;
    ZvNativeFile reader(native);
    const Zv::Status status = reader.ReadFile(&drawing, stream.get());
    reader.GetErrors(errors);
    return status;
}

Zv::Status ZvNativeProvider::Save(ZvDrawing& drawing, const std::filesystem::path& file, const ZvFileFormat&,
                                  const ZvFileOptions& options, IOErrorSet& errors,
                                  ZvCore::IProgress& progress) {
    std::string why;
    using Mode = ZvCore::IFileSystem::Mode;
    const auto stream = FilesOf(options).Open(file, options.mustBeNew ? Mode::CreateNew : Mode::Create, why);
    if (!stream) {
        errors.Add(kCannotOpen, why);
        return Zv::Status::NotStarted;
    }
    ZvNativeFile writer(ToNative(options, file, progress));
    const Zv::Status status = writer.WriteFile(&drawing, stream.get());
    writer.GetErrors(errors);
    if (options.unwritten)
        *options.unwritten = writer.UnwrittenEntities();
    if (!Zv::Ok(status))
        return status;
    if (!stream->SyncToDisk() || stream->Error()) {
        errors.Add(kCannotOpen, stream->ErrorText());
        return Zv::Status::Failure;
    }
    return Zv::Status::Success;
}
