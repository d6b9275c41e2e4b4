#pragma once
#include "Apps/zvd/Console.h"
#include "Zelvan/RenC/ZvRenderContext.h"
#include "Zelvan/ZvBounds.h"
#include <filesystem>
#include <string>
#include <vector>

class ZvDrawing;

/// What a picture shows and how big it is.
struct PictureOptions {
    int width = 1920, height = 0;     ///< pixels; height 0 follows the extent's shape
    ZvBounds2D extent;                ///< world; null: everything visible with a margin
    std::vector<std::string> layers;  ///< empty: all that are visible
    uint32_t background = 0xFFFFFFFF; ///< ARGB
    bool antialias = true;
    double scale = 0;                           ///< 1:scale on paper (PDF); 0: fit the page
    double paperWidthMm = 0, paperHeightMm = 0; ///< 0: A4, turned as the extent needs it
};

/// What drawing a picture took.
struct PictureReport {
    int width = 0, height = 0;
    double seconds = 0;
    ZvRenderStats stats;
};

/// Draws into a .png, .svg or .pdf file. The target appears when it is complete, not before.
ExitCode RenderPicture(const Console& console, ZvDrawing& drawing, const std::filesystem::path& target,
                       const PictureOptions& options, PictureReport& report);

/// "A4", "A3L", "420x297" (millimetres). False for anything else.
bool ParsePaper(const std::string& text, double& widthMm, double& heightMm);
/// "white", "transparent", "#RRGGBB", "#AARRGGBB".
bool ParseBackground(const std::string& text, uint32_t& argb);
