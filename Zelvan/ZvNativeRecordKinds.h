#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include <cstdint>
#include <memory>
#include <span>

/// Records of tables by the code of their table, without a drawing.
namespace ZvNativeRecordKinds {

/// An empty one; null for a table that the engine does not have.
std::unique_ptr<ZvTableRecord> Make(uint32_t fullCode);
/// Whether the bytes behind a record's name are the fields of that kind, neither more nor less.
bool HasExactly(uint32_t fullCode, std::span<const uint8_t> fields);

} // namespace ZvNativeRecordKinds
