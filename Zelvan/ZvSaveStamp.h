#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Guid.h"
#include <cstdint>

namespace ZvCore {
class BinXmlNode;
class IFile;
} // namespace ZvCore

/// What a native file tells of where it comes from, so that the order of a drawing, its backups and its unfinished saves does not hang
/// on clocks. A file is known by its digest; each save and each periodic backup notes the digest of the file that the drawing was last
/// read from or saved to. Who notes the digest of the drawing's file was therefore made from it, and is newer.
struct ZV_API ZvSaveStamp {
    Guid drawing; ///< its identity
    Guid digest;  ///< of the file itself, from its header; null: it has none, or is no native file
    Guid basedOn; ///< digest of the file that it follows; null: none is known
    int64_t revision =
        0; ///< grows with each save and backup of a drawing; 0: written by a program that did not count

    bool Follows(const ZvSaveStamp& file) const {
        return !file.digest.IsNull() && basedOn == file.digest && drawing == file.drawing;
    }
    /// Of the header and the settings alone. What cannot be read stays null.
    static ZvSaveStamp Read(ZvCore::IFile& file);
    static Guid ReadDigest(ZvCore::IFile& file);
    /// Everything but the digest and the drawing, which the file has anyway.
    void Store(ZvCore::BinXmlNode& settings) const;
};
