#include "Zelvan/RenC/ZvPreviewPainter.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvLayer.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvPreviewBitmap.h"
#include "ZvCore/MemFile.h"
#include <gtest/gtest.h>

namespace {

// A red square left below and a blue one right above; a far one on a hidden layer.
void Fill(ZvDrawing& drawing) {
    for (int i = 0; i < 3; ++i) {
        const double at = i == 2 ? 5000 : i * 20;
        const Vec2d square[] = {{at, at}, {at + 20, at}, {at + 20, at + 20}, {at, at + 20}};
        auto area = std::make_unique<ZvXLine>();
        area->SetPoly(true, true, 4, square);
        area->SetColor(i ? ZvColor(0, 0, 255) : ZvColor(255, 0, 0));
        area->SetBrush(ZvBrush::Solid(area->GetColor()));
        ZvLayer* layer = drawing.LayerTable()->InsertNew(XStringW::Format("l%d", i));
        layer->SetVisible(i != 2);
        layer->Adopt(std::move(area));
    }
}

TEST(ZvPreviewPainter, SavedFilesCarryAPictureOfWhatIsVisible) {
    for (const bool wanted : {true, false}) {
        ZvDrawing drawing;
        Fill(drawing);
        ZvNativeOptions options;
        options.preview = wanted;
        ZvCore::MemFile file;
        ASSERT_TRUE(Zv::Ok(ZvNativeFile(options).WriteFile(&drawing, &file)));
        ZvPreviewBitmap bitmap;
        file.Seek(0);
        ASSERT_EQ(ZvNativeFile::GetPreviewBitmap(&file, nullptr, bitmap), wanted);
        if (!wanted)
            continue;
        ASSERT_EQ(bitmap.width, int(ZvPreviewBitmap::kSide));
        const auto at = [&](int x, int y) { return bitmap.pixels[size_t(y * bitmap.width + x)]; };
        EXPECT_EQ(at(70, 180), 0xFF0000u);
        EXPECT_EQ(at(180, 70), 0x0000FFu);
        EXPECT_EQ(at(70, 70), 0xFFFFFFu);
        EXPECT_EQ(at(2, 128), 0xFFFFFFu) << "the margin";
    }
}

TEST(ZvPreviewPainter, AnEmptyDrawingIsWhiteAndAnEmptyBitmapIsRefused) {
    ZvDrawing drawing;
    ZvPreviewBitmap bitmap;
    EXPECT_FALSE(ZvPreviewPainter::Paint(drawing, bitmap));
    bitmap.width = 8, bitmap.height = 4;
    EXPECT_TRUE(ZvPreviewPainter::Paint(drawing, bitmap));
    EXPECT_EQ(bitmap.pixels, std::vector<uint32_t>(32, 0xFFFFFF));
}

} // namespace
