#include "Zelvan/DrawingAux/ZvDrawingAuxData.h"
#include "Zelvan/RenC/ZvPreviewPainter.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvPreviewBitmap.h"

namespace {

const XStringW& ThumbnailName() {
    static const XStringW name(u"__Thumbnail__");
    return name;
}

} // namespace

bool ZvNativeFile::Impl::PreparePreviewBitmap() {
    ZvPreviewBitmap bitmap;
    bitmap.width = bitmap.height = ZvPreviewBitmap::kSide;
    bitmap.pixels.assign(size_t(bitmap.width) * size_t(bitmap.height), 0x00FFFFFFu);
    if (options.previewRenderer ? !options.previewRenderer(*drawing, bitmap)
                                : !ZvPreviewPainter::Paint(*drawing, bitmap))
        return false;
    drawing->DataTable()->GetOrMake(ThumbnailName()).SetBinary(bitmap.Encode());
    return true;
}

bool ZvNativeFile::GetPreviewBitmap(ZvCore::IFile* file, XStringW* text, ZvPreviewBitmap& bitmap) {
    ZvDrawing scratch;
    ZvNativeFile native;
    if (!Zv::Ok(native.ReadFile(&scratch, file)))
        return false;
    if (text) {
        const ZvDrawingAuxData& aux = *scratch.AuxData();
        *text = XStringW::Format("Author: %s\r\n", aux.Author().ToUtf8().c_str()) +
                XStringW::Format("Created:\r\n  %s\r\n", aux.Created().ToString().ToUtf8().c_str()) +
                XStringW::Format("Modified:\r\n  %s\r\n", aux.Modified().ToString().ToUtf8().c_str()) +
                XStringW::Format("Version: %d\r\n", native.m_impl->header.version);
    }
    const std::vector<uint8_t>* bytes = scratch.DataTable()->GetBinary(ThumbnailName());
    return bytes && bitmap.Decode(bytes->data(), bytes->size());
}
