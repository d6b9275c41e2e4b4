#pragma once
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/Api.h"
#include <memory>

class ZvDrawing;
class ZvEntity;
namespace ZvCore {
class MemFile;
}

/// Entities as file records of the current version in memory: flat copies for swapping and the clipboard. Records stand one after
/// another at the stream's position; numbers in them (table indices, names) are the drawing's own.
class ZV_API ZvEntityRecords {
public:
    /// Both must outlive this.
    ZvEntityRecords(ZvDrawing& drawing, ZvCore::MemFile& stream);
    /// Appends the entity's record. False, and the stream as before, for a kind that cannot be written.
    bool Write(const ZvEntity& entity);
    /// The entity of the next record, without an owner, under the name that it had. Null at the end, and for bytes that are no
    /// record of a registered kind.
    std::unique_ptr<ZvEntity> Read();

private:
    ZvNativeFile m_file;
    ZvCore::MemFile& m_stream;
};
