#pragma once
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/Api.h"
#include "ZvCore/IFile.h"
#include <string>

/// Writes a pixel buffer as a PNG (ISO/IEC 15948): 8-bit RGB when every pixel is opaque, else RGBA, one zlib stream.
class ZV_API ZvPngWriter {
public:
    /// False with `why` set after an I/O or compression failure.
    static bool Write(const ZvPixelBuffer& picture, ZvCore::IFile& file, std::string& why);
};
