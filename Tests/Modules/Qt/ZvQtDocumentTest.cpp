#include "Modules/Qt/ZvQtDocument.h"
#include "ScratchFolder.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/ZlibCodec.h"
#include <gtest/gtest.h>

namespace {

void Draw(IZvSurface& surface) {
    ZvPen pen;
    pen.argb = 0xFFFF0000;
    surface.SetPen(pen);
    const Vec2f line[3] = {{100, 100}, {300, 100}, {300, 250}};
    surface.Polyline(line, 3, false);
    ZvFill fill;
    fill.kind = ZvFill::Kind::Solid;
    fill.argb = 0xFF0000FF;
    surface.SetFill(fill);
    const Vec2f area[3] = {{400, 400}, {500, 400}, {450, 480}};
    const ZvSurfaceRing ring{area, 3};
    surface.Polygon(&ring, 1, false);
    ZvTextRun text;
    text.text = u"Ring road";
    text.baselineStart = {100, 500};
    text.heightPx = 40;
    surface.Text(text);
}

// A zlib stream whose size is not known, by bisection.
std::string Inflated(const std::string& stream) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(stream.data());
    std::string why;
    for (size_t low = 0, high = 1 << 20; low < high;) {
        const size_t guess = (low + high) / 2;
        std::vector<uint8_t> out(guess);
        if (ZvCore::ZlibCodec::Inflate(bytes, stream.size(), out.data(), guess, why))
            return {out.begin(), out.end()};
        if (why == ZvCore::ZlibCodec::kTooLong)
            low = guess + 1;
        else if (why == ZvCore::ZlibCodec::kTooShort)
            high = guess;
        else
            break;
    }
    return {};
}

std::string Contents(const std::string& pdf) {
    std::string all;
    for (size_t at = pdf.find("\nstream\n"); at != pdf.npos; at = pdf.find("\nstream\n", at + 1))
        all += Inflated(pdf.substr(at + 8, pdf.find("\nendstream", at) - at - 8)) + '\n';
    return all;
}

bool Has(const std::string& text, std::string_view part) {
    return text.find(part) != text.npos;
}

TEST(ZvQtDocument, PdfPagesHoldLinesAreasAndTextWithTheirSizes) {
    ScratchFolder folder;
    ZvQtDocument::Page page;
    page.title = "Map of \xC3\x85land";
    std::string why;
    {
        const auto document = ZvQtDocument::CreatePdf(folder / "map.pdf", page, why);
        ASSERT_NE(document, nullptr) << why;
        EXPECT_EQ(document->Surface().Width(), 3508); // 297 mm at 300 to the inch
        EXPECT_EQ(document->Surface().Height(), 2480);
        Draw(document->Surface());
        ASSERT_TRUE(document->Finish(why)) << why;
    }
    const std::string pdf = folder.Get("map.pdf");
    EXPECT_TRUE(pdf.starts_with("%PDF-1."));
    EXPECT_TRUE(Has(pdf, "%%EOF"));
    EXPECT_TRUE(Has(pdf, "/Count 1"));
    EXPECT_TRUE(Has(pdf, "/MediaBox [0 0 842")) << "points";
    EXPECT_TRUE(Has(pdf, "/FontFile2")) << "the font comes with the page";
    const std::string drawn = Contents(pdf);
    EXPECT_TRUE(Has(drawn, "1 0 0 SCN") || Has(drawn, "1 0 0 RG")) << drawn;
    EXPECT_TRUE(Has(drawn, "100 100 m\n300 100 l\n300 250 l")) << drawn;
    EXPECT_TRUE(Has(drawn, "400 400 m\n500 400 l\n450 480 l")) << drawn;
}

TEST(ZvQtDocument, SvgPagesHoldLinesAreasAndTextAsText) {
    ScratchFolder folder;
    ZvQtDocument::Page page;
    page.widthMm = 254;
    page.heightMm = 127;
    page.dotsPerInch = 96;
    std::string why;
    const auto document = ZvQtDocument::CreateSvg(folder / "map.svg", page, why);
    ASSERT_NE(document, nullptr) << why;
    Draw(document->Surface());
    ASSERT_TRUE(document->Finish(why)) << why;
    const std::string svg = folder.Get("map.svg");
    EXPECT_TRUE(Has(svg, "width=\"254mm\" height=\"127mm\"")) << svg;
    EXPECT_TRUE(Has(svg, "viewBox=\"0 0 960 480\""));
    EXPECT_TRUE(Has(svg, "points=\"100,100 300,100 300,250 \"")) << svg;
    EXPECT_TRUE(Has(svg, "M400,400 L500,400 L450,480")) << svg;
    EXPECT_TRUE(Has(svg, "Ring road"));
    EXPECT_TRUE(Has(svg, "</svg>"));
}

TEST(ZvQtDocument, WhatCannotBeWrittenIsTold) {
    ScratchFolder folder;
    std::string why;
    EXPECT_EQ(ZvQtDocument::CreatePdf(folder / "missing" / "map.pdf", {}, why), nullptr);
    EXPECT_TRUE(Has(why, "map.pdf")) << why;
    why.clear();
    EXPECT_EQ(ZvQtDocument::CreateSvg(folder.Path(), {}, why), nullptr) << "a folder";
    EXPECT_FALSE(why.empty());
    ZvPixelBuffer none;
    EXPECT_EQ(ZvQtDocument::Over(none), nullptr);
#ifdef __linux__
    if (std::filesystem::exists("/dev/full")) {
        const auto document = ZvQtDocument::CreatePdf("/dev/full", {}, why);
        ASSERT_NE(document, nullptr);
        Draw(document->Surface());
        why.clear();
        EXPECT_FALSE(document->Finish(why)) << "a full disk";
        EXPECT_FALSE(why.empty());
    }
#endif
}

} // namespace
