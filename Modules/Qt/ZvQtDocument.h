#pragma once
#include "Zelvan/Ports/IZvSurface.h"
#include <filesystem>
#include <memory>
#include <string>

class ZvPixelBuffer;

/// A page that is being drawn into a file (PDF or SVG), or an overlay on a picture in memory. Needs no display: the first use starts
/// Qt's "offscreen" platform when the program has no QGuiApplication yet.
class ZvQtDocument {
public:
    struct Page {
        double widthMm = 297, heightMm = 210;
        /// Resolution of the surface's pixels; curves and widths are not limited by it.
        int dotsPerInch = 300;
        std::string title;
    };
    /// Null with `why` set when the file cannot be made. The file is complete only after Finish.
    static std::unique_ptr<ZvQtDocument> CreatePdf(const std::filesystem::path& path, const Page& page,
                                                   std::string& why);
    static std::unique_ptr<ZvQtDocument> CreateSvg(const std::filesystem::path& path, const Page& page,
                                                   std::string& why);
    /// Paints over `picture`, which must outlive the document.
    static std::unique_ptr<ZvQtDocument> Over(ZvPixelBuffer& picture);
    ~ZvQtDocument();

    IZvSurface& Surface();
    /// Writes the rest. False with `why` set when the file could not be written (a full disk).
    bool Finish(std::string& why);

private:
    struct Impl;
    explicit ZvQtDocument(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_impl;
};
