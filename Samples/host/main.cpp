// A host of the engine in forty lines: makes a drawing, saves it, loads it again and draws a picture of it.
#include <Zelvan/Entities/ZvXLine.h>
#include <Zelvan/RenC/ZvFrameRenderer.h>
#include <Zelvan/RenC/ZvPngWriter.h>
#include <Zelvan/RenC/ZvRasterSurface.h>
#include <Zelvan/View/ZvViewXForm.h>
#include <Zelvan/ZvDrawing.h>
#include <Zelvan/ZvDrawingIO.h>
#include <ZvCore/DiskFile.h>
#include <ZvCore/Version.h>
#include <cstdio>

int main() {
    ZvDrawing drawing;
    for (int i = 0; i < 8; ++i) {
        auto square = std::make_unique<ZvXLine>();
        const double r = 10.0 + 5 * i;
        square->SetPolygon(std::vector<Vec2d>{{-r, -r}, {r, -r}, {r, r}, {-r, r}}, &drawing);
        square->SetColor(ZvColor(uint8_t(30 * i), 80, 160));
        drawing.Insert(std::move(square), u"Squares");
    }
    std::string why;
    if (!Zv::Ok(drawing.DrawingIO()->SaveFile("host.zvd")))
        return 1;
    ZvDrawing again;
    if (!Zv::Ok(again.DrawingIO()->LoadSimple("host.zvd", &why)))
        return std::printf("%s\n", why.c_str()), 1;

    ZvRasterSurface surface(400, 400);
    Zelvan::ZvViewXForm* view = Zelvan::ZvViewXForm::New(&again);
    view->SetPlan(again.Bounds().Center(), 100);
    view->SetWindowRect(Rect2I{0, 0, 400, 400}, true);
    ZvRenderContext context(ZvRenderMode::Raster, surface, *view, &again);
    ZvFrameRenderer(again, context, {}).Draw();
    view->Delete();
    const auto file = ZvCore::DiskFile::Open("host.png", ZvCore::DiskFile::Mode::Create, why);
    if (!file || !ZvPngWriter::Write(surface.Picture(), *file, why) || !file->Flush())
        return std::printf("%s\n", why.c_str()), 1;
    std::printf("Zelvan %s: %d entities saved to host.zvd, drawn in host.png\n", ZvCore::Version::Text(),
                int(again.NameTable().Count()));
    return 0;
}
