// The file form, after the record head:
//   0 u16 header length (12), 2 u16 flags: bit 0 has Z, bit 1 has measures, 4 u16 point type, 6 u16 0, 8 u32 count of locations
// and count times 3 doubles (x, y, z), or 4 with measures.
#include "Zelvan/Entities/ZvMultiPoint.h"
#include "Zelvan/ZvNativeDesc.h"
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/ZvcDumbHeap.h"
#include <cstring>

namespace {

constexpr uint16_t kHeaderLength = 12;

} // namespace

bool ZvMultiPoint::NativeOut(ZvNativeDesc& desc) const {
    const uint64_t start = desc.Native().StoreRecordStart();
    if (NativeOutBase(desc, 0))
        return true;
    const uint16_t head[4] = {kHeaderLength, uint16_t(m_bits & (kHasZ | kHasM)), m_type, 0};
    if (!desc.Write(head, sizeof head) || !desc.WriteValue(m_count))
        return true;
    if (m_count && !desc.Write(m_block + kBoundsBytes, m_count * Stride()))
        return true;
    desc.Native().WriteRecordLength64(start);
    return false;
}

bool ZvMultiPoint::NativeIn(ZvNativeDesc& desc) {
    uint16_t length = 0, flags = 0;
    uint8_t fields[kHeaderLength - 2];
    if (NativeInBase(desc) || !desc.ReadValue(length) || length < 2 ||
        !desc.ReadPad(fields, sizeof fields, length - 2u))
        return true;
    uint32_t count = 0;
    std::memcpy(&flags, fields, 2);
    std::memcpy(&m_type, fields + 2, 2);
    std::memcpy(&count, fields + 6, 4);
    const uint64_t stride = (flags & kHasM ? 4 : 3) * sizeof(double);
    if (count > desc.RecordRemaining() / stride || !Allocate(count, uint8_t(flags), desc.heap))
        return true;
    if (count && !desc.Read(m_block + kBoundsBytes, size_t(count * stride)))
        return true;
    StoreBounds();
    return !OkForInsertion(nullptr);
}
