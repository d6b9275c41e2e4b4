#pragma once
#include "Zelvan/ZvNativeFile.h"
#include "ZvCore/IOErrorSet.h"
#include "ZvCore/Status.h"
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class ZvDrawing;
class ZvEntity;

/// Native files in memory for tests: made, taken apart, damaged.
namespace NativeFiles {

using Bytes = std::vector<uint8_t>;

/// Layers, polylines of every form, a block, a line type, data records, a compound. Made with fixed guids and dates.
std::unique_ptr<ZvDrawing> Sample();
/// Numbered guids for all records of tables, those of layouts' drawings included.
void FixGuids(ZvDrawing& drawing);
/// `count` two-dimensional polylines of `vertices` vertices on the current layer.
void AddPolylines(ZvDrawing& drawing, int count, int vertices);

Bytes Save(ZvDrawing& drawing, ZvNativeOptions options = {});
struct Loaded {
    std::unique_ptr<ZvDrawing> drawing;
    Zv::Status status = Zv::Status::Failure;
    IOErrorSet errors;
    bool Ok() const { return Zv::Ok(status); }
};
Loaded Load(const Bytes& bytes, ZvNativeOptions options = {});
/// Name, kind, appearance and geometry of an object, and of those inside of it.
std::string Describe(const ZvEntity& entity);
/// One line an object, sorted: layer or block, name, kind, appearance, geometry. Equal for drawings that hold the same.
std::string Census(ZvDrawing& drawing);

template <class T>
T Get(const Bytes& bytes, size_t at) {
    T value{};
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}
template <class T>
void Put(Bytes& bytes, size_t at, T value) {
    std::memcpy(bytes.data() + at, &value, sizeof value);
}
template <class T>
void Append(Bytes& bytes, T value) {
    bytes.resize(bytes.size() + sizeof value);
    Put(bytes, bytes.size() - sizeof value, value);
}
/// Header field 20 and the digest made right again.
void Seal(Bytes& bytes);
/// The digest of the block whose head is at `at` made right again.
void SealBlock(Bytes& bytes, size_t at);
/// A block, stored as it is.
Bytes Block(const Bytes& content);
/// Position of the n-th occurrence of the bytes, or npos.
size_t Find(const Bytes& bytes, const Bytes& what, size_t from = 0);

/// Positions of the block heads that lie in the file itself, in order (found by the records of an examination).
std::vector<size_t> OuterBlocks(const Bytes& bytes);

} // namespace NativeFiles
