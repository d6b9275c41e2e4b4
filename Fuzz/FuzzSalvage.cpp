#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeSalvage.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

// The search through damaged files. An input is eight bytes that say what is done to a file, and the file. Whatever comes of it, the
// search neither crashes nor hangs, its report is that of the drawing, and the drawing goes into a sound file.

namespace {

using Bytes = std::vector<uint8_t>;

/// u8 what, u8 with which byte, u16 length, u32 place (of 2^32 parts of the file).
Bytes Damaged(const uint8_t* orders, const uint8_t* data, size_t size) {
    Bytes bytes(data, data + size);
    uint16_t length = 0;
    uint32_t place = 0;
    std::memcpy(&length, orders + 2, 2);
    std::memcpy(&place, orders + 4, 4);
    const auto at = ptrdiff_t(uint64_t(place) * size >> 32);
    const auto end = std::min(ptrdiff_t(size), at + length);
    switch (orders[0] % 6) {
    case 1:
        std::fill(bytes.begin() + at, bytes.begin() + end, orders[1]);
        break;
    case 2:
        for (ptrdiff_t i = at; i < end; ++i)
            bytes[size_t(i)] = uint8_t(bytes[size_t(i)] * 151 + orders[1] + i);
        break;
    case 3:
        bytes.erase(bytes.begin() + at, bytes.begin() + end);
        break;
    case 4:
        bytes.insert(bytes.begin() + at, length, orders[1]);
        break;
    case 5:
        bytes.resize(size_t(at));
        break;
    default:
        break;
    }
    return bytes;
}

void MustHoldTogether(ZvDrawing& drawing, const ZvNativeSalvage::Result& result) {
    uint64_t saved = 0;
    for (const ZvNativeSalvage::Layer& layer : result.layers)
        saved += layer.saved;
    if (saved != result.saved)
        std::abort();
    ZvNativeOptions options;
    options.threads = false;
    options.compressionLevel = 0;
    ZvCore::MemFile file;
    ZvNativeFile writer(options);
    if (!Zv::Ok(writer.WriteFile(&drawing, &file)) || !ZvNativeCheck::Run(file).IsSound())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 8)
        return 0;
    const Bytes bytes = Damaged(data, data + 8, size - 8);
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvDrawing drawing;
    const ZvNativeSalvage::Result result = ZvNativeSalvage::Run(*file, drawing);
    if (Zv::Ok(result.status))
        MustHoldTogether(drawing, result);
    return 0;
}
