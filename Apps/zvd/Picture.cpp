#include "Apps/zvd/Picture.h"
#include "Apps/zvd/DrawingUnits.h"
#include "Zelvan/RenC/ZvFrameRenderer.h"
#include "Zelvan/RenC/ZvPngWriter.h"
#include "Zelvan/RenC/ZvRasterSurface.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/View/ZvViewXForm.h"
#include "Zelvan/ZvDrawing.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Platform/Platform.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#ifdef ZELVAN_HAVE_QT
#include "Modules/Qt/ZvQtDocument.h"
#endif

namespace fs = std::filesystem;

namespace {

constexpr int kLargestSide = 30000;
constexpr double kMargin = 0.02;
constexpr int kPaperDpi = 300;

using Units = ZvUnits;

bool LayerWanted(const PictureOptions& options, const ZvLayer& layer) {
    if (options.layers.empty())
        return layer.IsVisible() && !layer.IsInternal();
    return std::any_of(options.layers.begin(), options.layers.end(), [&](const std::string& name) {
        return layer.GetName().EqualsNoCase(XStringW::FromUtf8(name));
    });
}

/// The first of the layers asked for that is not there; empty when all are.
std::string MissingLayer(const ZvDrawing& drawing, const PictureOptions& options) {
    for (const std::string& name : options.layers)
        if (!drawing.LayerTable()->GetByName(XStringW::FromUtf8(name)))
            return name;
    return {};
}

ZvBounds2D ChooseExtent(const ZvDrawing& drawing, const PictureOptions& options) {
    if (!options.extent.IsNull())
        return options.extent;
    ZvBounds2D box = drawing.Bounds(true).ToBounds2D();
    if (box.IsNull())
        box.Set(0, 0, 1, 1);
    for (double* side : {&box.minX, &box.minY, &box.maxX, &box.maxY}) // widths stay finite
        *side = std::clamp(*side, -kZvBoundsLimit, kZvBoundsLimit);
    const double side = std::max({box.Width(), box.Height(), 1e-9});
    box.Grow(std::max(box.Width(), side * 0.01) * kMargin, std::max(box.Height(), side * 0.01) * kMargin);
    return box;
}

/// The page in pixels and the world width that it shows.
struct Frame {
    int width = 0, height = 0;
    Vec3d center;
    double worldWidth = 1;
};

Frame FitFrame(const ZvBounds2D& extent, int width, int height) {
    Frame frame;
    const double shape = extent.Height() > 0 && extent.Width() > 0 ? extent.Height() / extent.Width() : 1;
    frame.width = std::clamp(width, 1, kLargestSide);
    frame.height = height > 0 ? std::min(height, kLargestSide)
                              : int(std::clamp(std::round(frame.width * shape), 1.0, double(kLargestSide)));
    frame.center = {(extent.minX + extent.maxX) / 2, (extent.minY + extent.maxY) / 2, 0};
    frame.worldWidth = std::max(extent.Width(), extent.Height() * frame.width / frame.height);
    if (!(frame.worldWidth > 0))
        frame.worldWidth = 1;
    return frame;
}

ZvFrameRenderer::State DrawFrame(const Console& console, ZvDrawing& drawing, IZvSurface& surface,
                                 const Frame& frame, const PictureOptions& options, double dpi,
                                 ZvRenderMode mode, PictureReport& report) {
    Zelvan::ZvViewXForm* view = Zelvan::ZvViewXForm::New(&drawing);
    view->SetPlan(frame.center, frame.worldWidth);
    view->SetWindowRect(Rect2I{0, 0, frame.width, frame.height}, true);
    ConsoleProgress progress(console);
    ZvFrameRenderer::Options how;
    how.layerFilter = [&options](const ZvLayer& layer) { return LayerWanted(options, layer); };
    how.progress = &progress;
    ZvFrameRenderer::State state;
    {
        ZvRenderContext context(mode, surface, *view, &drawing);
        context.SetBackground(options.background);
        context.SetDotsPerInch(dpi);
        const double start = IZvClock::System().MonotonicSeconds();
        state = ZvFrameRenderer(drawing, context, how).Draw();
        context.Flush();
        report.seconds = IZvClock::System().MonotonicSeconds() - start;
        report.stats = context.stats;
    }
    report.width = frame.width;
    report.height = frame.height;
    view->Delete();
    return state;
}

bool WritePng(const ZvPixelBuffer& picture, const fs::path& file, std::string& why) {
    const auto out = ZvCore::DiskFile::Open(file, ZvCore::DiskFile::Mode::Create, why);
    if (!out || !ZvPngWriter::Write(picture, *out, why))
        return false;
    if (out->Flush())
        return true;
    why = out->ErrorText();
    return false;
}

ExitCode DrawPng(const Console& console, ZvDrawing& drawing, const fs::path& file,
                 const PictureOptions& options, PictureReport& report, std::string& why) {
    const Frame frame = FitFrame(ChooseExtent(drawing, options), options.width, options.height);
    ZvRasterSurface surface(frame.width, frame.height, options.background);
    surface.SetAntialias(options.antialias);
#ifdef ZELVAN_HAVE_QT
    const auto texts = ZvQtDocument::Over(surface.Picture());
    if (texts)
        surface.SetCompanion(&texts->Surface());
#endif
    if (DrawFrame(console, drawing, surface, frame, options, 96, ZvRenderMode::Raster, report) ==
        ZvFrameRenderer::State::Cancelled)
        return ExitCode::Interrupted;
#ifdef ZELVAN_HAVE_QT
    if (texts && !texts->Finish(why))
        return ExitCode::NoOutput;
#endif
    return WritePng(surface.Picture(), file, why) ? ExitCode::Ok : ExitCode::NoOutput;
}

#ifdef ZELVAN_HAVE_QT
ExitCode DrawPage(const Console& console, ZvDrawing& drawing, const fs::path& file,
                  const PictureOptions& options, bool pdf, PictureReport& report, std::string& why) {
    const ZvBounds2D extent = ChooseExtent(drawing, options);
    ZvQtDocument::Page page;
    page.title = "Zelvan";
    page.dotsPerInch = pdf ? kPaperDpi : 96;
    if (pdf) {
        const bool upright = extent.Height() > extent.Width();
        page.widthMm = options.paperWidthMm > 0 ? options.paperWidthMm : upright ? 210 : 297;
        page.heightMm = options.paperHeightMm > 0 ? options.paperHeightMm : upright ? 297 : 210;
    } else {
        const Frame frame = FitFrame(extent, options.width, options.height);
        page.widthMm = frame.width * 25.4 / 96;
        page.heightMm = frame.height * 25.4 / 96;
    }
    const double perMm = page.dotsPerInch / 25.4;
    Frame frame =
        FitFrame(extent, int(std::lround(page.widthMm * perMm)), int(std::lround(page.heightMm * perMm)));
    if (pdf && options.scale > 0)
        frame.worldWidth = DrawingUnits(drawing).FromMeters(
            options.scale *
            Units::ConvertDistance(Units::Preset::Millimeters, Units::Preset::Meters, page.widthMm));
    const auto document =
        pdf ? ZvQtDocument::CreatePdf(file, page, why) : ZvQtDocument::CreateSvg(file, page, why);
    if (!document)
        return ExitCode::NoOutput;
    IZvSurface& surface = document->Surface();
    if (options.background >> 24) {
        const Vec2f corners[4] = {{0, 0},
                                  {float(frame.width), 0},
                                  {float(frame.width), float(frame.height)},
                                  {0, float(frame.height)}};
        const ZvSurfaceRing ring{corners, 4};
        surface.SetFill({ZvFill::Kind::Solid, options.background});
        surface.Polygon(&ring, 1, false);
    }
    if (DrawFrame(console, drawing, surface, frame, options, page.dotsPerInch, ZvRenderMode::Pdf, report) ==
        ZvFrameRenderer::State::Cancelled)
        return ExitCode::Interrupted;
    return document->Finish(why) ? ExitCode::Ok : ExitCode::NoOutput;
}
#endif

ExitCode DrawFile(const Console& console, ZvDrawing& drawing, const fs::path& file, const std::string& kind,
                  const PictureOptions& options, PictureReport& report, std::string& why) {
    if (kind == ".png")
        return DrawPng(console, drawing, file, options, report, why);
#ifdef ZELVAN_HAVE_QT
    return DrawPage(console, drawing, file, options, kind == ".pdf", report, why);
#else
    why = "this program was built without PDF and SVG; draw a .png";
    return ExitCode::NoOutput;
#endif
}

} // namespace

ExitCode RenderPicture(const Console& console, ZvDrawing& drawing, const fs::path& target,
                       const PictureOptions& options, PictureReport& report) {
    const std::string name = "'" + ZvPlatform::PathToUtf8(target) + "'";
    std::string kind = ZvPlatform::PathToUtf8(target.extension());
    std::transform(kind.begin(), kind.end(), kind.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    if (kind != ".png" && kind != ".svg" && kind != ".pdf")
        return console.Fail(ExitCode::Usage, name + ": pictures are .png, .svg or .pdf");
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::error_code failed;
    if (!fs::is_directory(folder, failed))
        return console.Fail(ExitCode::NoOutput,
                            "folder '" + ZvPlatform::PathToUtf8(folder) + "' does not exist; make it first");
    if (fs::is_directory(target, failed))
        return console.Fail(ExitCode::NoOutput, name + " is a folder; give the name of a file in it");
    if (const std::string missing = MissingLayer(drawing, options); !missing.empty())
        return console.Fail(ExitCode::Usage,
                            "the drawing has no layer '" + missing + "'; 'zvd info' lists its layers");
    const fs::path temporary = folder / (".zvd-" + Guid::New().ToString().ToUtf8().substr(0, 8) + kind);
    std::string why;
    ExitCode code = DrawFile(console, drawing, temporary, kind, options, report, why);
    if (code == ExitCode::Ok) {
        why = ZvPlatform::RenameReplace(temporary, target);
        code = why.empty() ? ExitCode::Ok : ExitCode::NoOutput;
    }
    if (code == ExitCode::Ok)
        return code;
    fs::remove(temporary, failed);
    return console.Fail(code, code == ExitCode::Interrupted ? "interrupted; " + name + " is as it was before"
                                                            : "cannot write " + name + ": " + why);
}

bool ParsePaper(const std::string& text, double& widthMm, double& heightMm) {
    static constexpr struct {
        const char* name;
        double width, height;
    } kPapers[] = {{"A0", 1189, 841}, {"A1", 841, 594}, {"A2", 594, 420},         {"A3", 420, 297},
                   {"A4", 297, 210},  {"A5", 210, 148}, {"LETTER", 279.4, 215.9}, {"TABLOID", 431.8, 279.4}};
    std::string upper = text;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return char(std::toupper(c)); });
    const bool upright = upper.size() > 2 && upper.ends_with('P');
    for (const auto& paper : kPapers)
        if (upper == paper.name || upper == std::string(paper.name) + "L" ||
            upper == std::string(paper.name) + "P") {
            widthMm = upright ? paper.height : paper.width;
            heightMm = upright ? paper.width : paper.height;
            return true;
        }
    char rest = 0;
    return std::sscanf(text.c_str(), "%lfx%lf%c", &widthMm, &heightMm, &rest) == 2 && widthMm >= 10 &&
           heightMm >= 10 && widthMm <= 5000 && heightMm <= 5000;
}

bool ParseBackground(const std::string& text, uint32_t& argb) {
    if (text == "white" || text == "black" || text == "transparent") {
        argb = text == "white" ? 0xFFFFFFFF : text == "black" ? 0xFF000000 : 0;
        return true;
    }
    unsigned value = 0;
    char rest = 0;
    if (text.empty() || text[0] != '#' || std::sscanf(text.c_str() + 1, "%x%c", &value, &rest) != 1)
        return false;
    argb = text.size() == 7 ? 0xFF000000u | value : value;
    return text.size() == 7 || text.size() == 9;
}
