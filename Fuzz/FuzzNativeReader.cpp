#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeDump.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "ZvCore/MD5.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

// The reader of native files. An input is one byte of options and a file. Whatever the bytes are, reading and examining them
// neither crashes nor hangs, and a drawing that came out of a file goes into a sound one.

namespace {

using Bytes = std::vector<uint8_t>;

enum Option : uint8_t { kChecksum = 1, kDigests = 2, kExamine = 4 };

ZvNativeOptions OptionsOf(uint8_t bits) {
    ZvNativeOptions options;
    options.verifyChecksum = bits & kChecksum;
    options.blockDigests = bits & kDigests;
    options.threads = false;
    options.compressionLevel = 0;
    return options;
}

/// The objects that a save writes.
size_t CountOf(const ZvDrawing& drawing) {
    std::vector<ZvEntity*> entities;
    drawing.NameTable().GetAllNonErased(entities);
    return entities.size();
}

void MustHoldTogether(ZvDrawing& drawing) {
    ZvCore::MemFile saved;
    ZvNativeFile writer(OptionsOf(kDigests));
    if (!Zv::Ok(writer.WriteFile(&drawing, &saved)) || !ZvNativeCheck::Run(saved).IsSound())
        std::abort();
    saved.Seek(0);
    ZvDrawing again;
    ZvNativeFile reader(OptionsOf(kChecksum | kDigests));
    if (!Zv::Ok(reader.ReadFile(&again, &saved)) || CountOf(again) != CountOf(drawing))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    const auto file = ZvCore::MemFile::OverView(data + 1, size - 1);
    if (data[0] & kExamine) {
        (void)ZvNativeCheck::Run(*file);
        ZvNativeDump::Run(*file, {}, [](const ZvNativeDumpItem&) { return true; });
    }
    ZvDrawing drawing;
    ZvNativeFile reader(OptionsOf(data[0]));
    if (Zv::Ok(reader.ReadFile(&drawing, file.get())))
        MustHoldTogether(drawing);
    return 0;
}

#if defined(__clang__)

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

/// A piece of the file that the format has a name for, its place in the file and not in the block that holds it.
struct Piece {
    size_t at = 0;
    size_t length = 0;
    enum Kind { Field, Framed, Block } kind = Field; ///< framed: begins with its own length as u64
};

/// What a dump tells of the file, as far as it is not compressed.
std::vector<Piece> PiecesOf(const Bytes& bytes) {
    static constexpr std::string_view framed[] = {
        "table",        "contents",          "record",      "object", "list length",
        "group length", "attributes length", "frame length"};
    std::vector<Piece> pieces;
    std::vector<size_t> bases = {0};
    size_t lastBlock = 0;
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvNativeDump::Run(*file, {20}, [&](const ZvNativeDumpItem& item) {
        if (item.isProblem)
            return true;
        while (bases.size() <= size_t(item.stream))
            bases.push_back(lastBlock + ZvNativeBlockHead::kSize);
        Piece piece{bases[size_t(item.stream)] + size_t(item.offset), size_t(item.length), Piece::Field};
        if (item.value.starts_with("method 0")) {
            piece.kind = Piece::Block;
            lastBlock = piece.at;
        } else if (std::find(std::begin(framed), std::end(framed), item.label) != std::end(framed)) {
            piece.kind = Piece::Framed;
            if (piece.length == 8 && piece.at + 8 <= bytes.size())
                std::memcpy(&piece.length, bytes.data() + piece.at, 8);
        }
        if (piece.at < bytes.size() && piece.length <= bytes.size() - piece.at)
            pieces.push_back(piece);
        return pieces.size() < 20000;
    });
    return pieces;
}

template <class T>
void Bump(Bytes& bytes, size_t at, int64_t by) {
    T value{};
    if (at + sizeof value > bytes.size())
        return;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    value = T(value + T(by));
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

/// Lengths and positions that a change of size at `at` makes wrong; the bytes are those from before the change.
void Shift(Bytes& bytes, const std::vector<Piece>& pieces, size_t at, int64_t by) {
    for (const Piece& piece : pieces)
        if (piece.at < at && at < piece.at + piece.length) {
            if (piece.kind == Piece::Framed)
                Bump<uint64_t>(bytes, piece.at, by);
            if (piece.kind == Piece::Block) {
                Bump<uint64_t>(bytes, piece.at + 4, by);
                Bump<uint64_t>(bytes, piece.at + 12, by);
            }
        }
    for (size_t field : {36, 44, 52}) {
        uint64_t position = 0;
        if (bytes.size() >= field + 8)
            std::memcpy(&position, bytes.data() + field, 8);
        if (position > at)
            Bump<uint64_t>(bytes, field, by);
    }
}

void Reseal(Bytes& bytes) {
    for (const Piece& piece : PiecesOf(bytes))
        if (piece.kind == Piece::Block && piece.length >= ZvNativeBlockHead::kSize) {
            const uint8_t* digest = bytes.data() + piece.at + 20;
            if (std::any_of(digest, digest + 16, [](uint8_t b) { return b != 0; })) {
                const ZvCore::Digest right =
                    ZvCore::MD5::Of(bytes.data() + piece.at + ZvNativeBlockHead::kSize,
                                    piece.length - ZvNativeBlockHead::kSize);
                std::memcpy(bytes.data() + piece.at + 20, right.data(), right.size());
            }
        }
    if (bytes.size() < ZvNativeHeader::kSize)
        return;
    const uint64_t length = bytes.size();
    std::memcpy(bytes.data() + 20, &length, 8);
    std::memset(bytes.data() + ZvNativeHeader::kDigestOffset, 0, 16);
    const ZvCore::Digest digest = ZvCore::MD5::Of(bytes.data(), bytes.size());
    std::memcpy(bytes.data() + ZvNativeHeader::kDigestOffset, digest.data(), digest.size());
}

/// Interesting numbers into a field; a record left out, or there twice.
void ChangePiece(Bytes& bytes, const std::vector<Piece>& pieces, uint32_t random) {
    const Piece& piece = pieces[random % pieces.size()];
    random /= uint32_t(pieces.size());
    static constexpr uint64_t numbers[] = {0,
                                           1,
                                           2,
                                           29,
                                           0x7F,
                                           0x80,
                                           0xFF,
                                           0x7FFF,
                                           0xFFFF,
                                           0x7FFFFFFF,
                                           0xFFFFFFFF,
                                           uint64_t(1) << 40,
                                           ~uint64_t(0),
                                           0x7FF0000000000000};
    if (piece.kind == Piece::Field || random % 4 == 0) {
        const size_t count = std::min<size_t>(piece.length, 8);
        std::memcpy(bytes.data() + piece.at, &numbers[random / 4 % std::size(numbers)], count);
        return;
    }
    const Bytes copy(bytes.begin() + ptrdiff_t(piece.at), bytes.begin() + ptrdiff_t(piece.at + piece.length));
    if (random % 2) {
        Shift(bytes, pieces, piece.at, -int64_t(piece.length));
        bytes.erase(bytes.begin() + ptrdiff_t(piece.at), bytes.begin() + ptrdiff_t(piece.at + piece.length));
    } else {
        Shift(bytes, pieces, piece.at, int64_t(piece.length));
        bytes.insert(bytes.begin() + ptrdiff_t(piece.at), copy.begin(), copy.end());
    }
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
    if (size < 2 || seed % 8 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    Bytes bytes(data + 1, data + size);
    const std::vector<Piece> pieces = PiecesOf(bytes);
    if (pieces.empty())
        return LLVMFuzzerMutate(data, size, maxSize);
    const uint32_t random = seed * 2654435761u >> 3;
    if (seed % 8 < 3) { // raw bytes of one piece
        const Piece& piece = pieces[random % pieces.size()];
        if (piece.length)
            LLVMFuzzerMutate(bytes.data() + piece.at, piece.length, piece.length);
    } else {
        ChangePiece(bytes, pieces, random);
    }
    if (seed % 4)
        Reseal(bytes);
    if (seed % 64 == 1)
        data[0] = uint8_t(random);
    if (bytes.size() + 1 > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data + 1, bytes.data(), bytes.size());
    return bytes.size() + 1;
}

#endif
