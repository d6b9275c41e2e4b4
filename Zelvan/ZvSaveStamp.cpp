#include "Zelvan/ZvSaveStamp.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"

namespace {

constexpr int kDocumentFirstVersion = 1048; // of settings as a binary XML document

bool ReadHeader(ZvNativeDesc& desc, ZvNativeHeader& header) {
    uint8_t bytes[ZvNativeHeader::kSize];
    if (!desc.Seek(0) || !desc.Read(bytes, sizeof bytes))
        return false;
    header.Parse(bytes);
    return header.HasMagic();
}

Guid GuidAt(const ZvCore::BinXmlNode& settings, const char* name) {
    Guid guid;
    Guid::Parse(settings.GetString(name, {}).View(), guid);
    return guid;
}

} // namespace

Guid ZvSaveStamp::ReadDigest(ZvCore::IFile& file) {
    uint8_t bytes[ZvNativeHeader::kSize];
    ZvNativeHeader header;
    if (file.Length() < sizeof bytes || !file.Seek(0) || file.Read(bytes, sizeof bytes) != sizeof bytes)
        return {};
    header.Parse(bytes);
    return header.HasMagic() ? Guid{header.digest} : Guid();
}

ZvSaveStamp ZvSaveStamp::Read(ZvCore::IFile& file) {
    ZvDrawingSetup setup;
    setup.createDefaults = false;
    ZvDrawing scratch(setup);
    ZvNativeFile native;
    native.Attach(scratch, file);
    ZvNativeHeader header;
    ZvSaveStamp stamp;
    if (!ReadHeader(native.Desc(), header))
        return stamp;
    stamp.digest.bytes = header.digest;
    const bool solid = header.IsSolid();
    if (header.version < kDocumentFirstVersion ||
        (solid && (!native.Desc().Seek(header.solidOffset) || !native.StartDecompressBlock())))
        return stamp;
    ZvCore::BinXmlDocument document;
    if ((!solid || ReadHeader(native.Desc(), header)) && native.Desc().Seek(header.settingsOffset) &&
        native.StartDecompressBlock()) {
        if (native.ReadBinXml(document)) {
            stamp.drawing = GuidAt(document.root, "Guid");
            stamp.basedOn = GuidAt(document.root, "BasedOn");
            stamp.revision = document.root.GetInt("Revision", 0);
        }
        native.EndDecompressBlock();
    }
    if (solid)
        native.EndDecompressBlock();
    return stamp;
}

void ZvSaveStamp::Store(ZvCore::BinXmlNode& settings) const {
    settings.Set("Revision", revision);
    if (!basedOn.IsNull())
        settings.Set("BasedOn", basedOn.ToString());
}
