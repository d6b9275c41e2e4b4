#include "ZvCore/IFile.h"
#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

static_assert(std::endian::native == std::endian::little, "files are little-endian and are read as they lie");

namespace ZvCore {

const uint8_t* IFile::View(uint64_t, size_t) const {
    return nullptr;
}

bool IFile::ReadPad(void* buffer, size_t wanted, uint64_t stored) {
    const auto taken = size_t(std::min<uint64_t>(wanted, stored));
    const size_t got = Read(buffer, taken);
    std::memset(static_cast<char*>(buffer) + got, 0, wanted - got);
    if (got < taken)
        return false;
    const uint64_t excess = stored - taken;
    if (excess == 0)
        return true;
    if (excess > Remaining()) {
        char beyond = 0; // fails as a read past the end does, with the stream's own text
        return Seek(Length()) && Read(&beyond, 1) == 1;
    }
    return Seek(Position() + excess);
}

bool IFile::ReadChunked(void* buffer, uint64_t length, size_t chunk) {
    auto* at = static_cast<uint8_t*>(buffer);
    chunk = std::max<size_t>(chunk, 1);
    while (length > 0) {
        const auto n = size_t(std::min<uint64_t>(length, chunk));
        if (Read(at, n) != n)
            return false;
        at += n;
        length -= n;
    }
    return true;
}

bool IFile::Write(IFile& from, uint64_t count) {
    constexpr uint64_t most = uint64_t(1) << 20;
    std::vector<uint8_t> buffer;
    while (count > 0) {
        const auto n = size_t(std::min(count, most));
        const uint8_t* bytes = &from != this ? from.View(from.Position(), n) : nullptr;
        if (bytes) {
            if (!from.Seek(from.Position() + n))
                return false;
        } else {
            buffer.resize(n);
            if (from.Read(buffer.data(), n) != n)
                return false;
            bytes = buffer.data();
        }
        if (Write(bytes, n) != n)
            return false;
        count -= n;
    }
    return true;
}

} // namespace ZvCore
