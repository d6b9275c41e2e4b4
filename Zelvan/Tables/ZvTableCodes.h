#pragma once
#include <cstdint>

/// Codes of the fifteen built-in tables and of the records that they hold (client code 1). They stand in
/// files and never change. Index translation (ZvNativeDesc) and usage counts (ZvUsageTable) go by full codes.
namespace ZvTableCode {
enum Code : uint16_t {
    Bitmap = 1,
    LineType = 2,
    Block = 3,
    TextStyle = 4,
    Program = 5,
    Texture = 6,
    DimStyle = 7,
    Layer = 8,
    Paper = 9,
    Ucs = 10,
    XRef = 11,
    Data = 12,
    Layout = 13,
    View = 14,
    SelectionVolume = 15,
};
inline constexpr uint16_t kBuiltInClient = 1;
/// Tables 1..7 are those that a child layout drawing can borrow from its parent.
inline constexpr uint16_t kLastBorrowable = DimStyle;
/// Client code shifted left 16 OR table code.
constexpr uint32_t Full(uint16_t code, uint16_t client = kBuiltInClient) {
    return uint32_t(client) << 16 | code;
}
} // namespace ZvTableCode
