#include "Tests/Support/NativeFiles.h"
#include "Zelvan/DrawingAux/ZvDrawingAuxData.h"
#include "Zelvan/Entities/ZvRawCompound.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/ZvBNode.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDump.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvTableTable.h"
#include "ZvCore/MD5.h"
#include <algorithm>
#include <array>

namespace NativeFiles {

namespace {

class FixedClock final : public IZvClock {
public:
    DateTime Now() const override { return DateTime::FromUtc(2020, 2, 29, 12, 0, 0); }
    double MonotonicSeconds() const override { return 1000; }
};

Guid NumberedGuid(uint32_t number) {
    Guid guid;
    guid.bytes[0] = 0x5A;
    std::memcpy(guid.bytes.data() + 12, &number, 4);
    return guid;
}

} // namespace

void FixGuids(ZvDrawing& drawing) {
    uint32_t number = 1;
    for (int t = 0; t < drawing.TableTable()->Count(); ++t) {
        ZvTable* table = drawing.TableTable()->Get(t);
        for (int i = 0; i < table->Count(); ++i)
            table->Get(i)->SetGuid(NumberedGuid(++number));
    }
    for (int i = 0; i < drawing.LayoutTable()->Count(); ++i)
        FixGuids(*drawing.LayoutTable()->Get(i)->Drawing());
}

namespace {

std::unique_ptr<ZvXLine> Lines(bool z, bool m, bool polygon, int force64, int count, double offset) {
    std::vector<Vec4d> vertices;
    for (int i = 0; i < count; ++i)
        vertices.push_back({offset + i * 1.25, offset + (i % 3) * 2.5, z ? i * 0.5 : 0, m ? i * 10.0 : 0});
    const uint32_t table[] = {polygon ? ZvXLine::kClosedBit : 0u, 4u | (polygon ? ZvXLine::kClosedBit : 0u)};
    auto line = std::make_unique<ZvXLine>();
    line->Set(count >= 8 ? 2 : 1, table, vertices, polygon, z, m, force64);
    return line;
}

void FillLayers(ZvDrawing& drawing) {
    const char16_t* const names[] = {u"Roads", u"Gew\u00E4sser"};
    for (const char16_t* name : names)
        drawing.LayerTable()->InsertNew(XStringW(name))->SetColor(ZvColor(200, 100, 50));
    for (int i = 0; i < 16; ++i) {
        auto line = Lines(i & 1, i & 2, i & 4, i & 8 ? 1 : 0, 5 + i, i * 7.0);
        line->SetColor(i % 2 ? ZvColor(int(i)) : ZvColor(i * 10, 20, 30));
        line->SetLineWidth(ZvLineWidth::FromRaw(float(i)));
        drawing.Insert(std::move(line), i % 3 == 0 ? XStringW() : XStringW(names[i % 2]));
    }
}

} // namespace

std::unique_ptr<ZvDrawing> Sample() {
    static const FixedClock clock;
    ZvDrawingSetup setup;
    setup.clock = &clock;
    setup.guid = NumberedGuid(1);
    auto drawing = std::make_unique<ZvDrawing>(setup);
    drawing->AuxData()->SetAuthor(XStringW(u"A. Surveyor"));
    FillLayers(*drawing);
    drawing->LineTypeTable()->InsertNew(XStringW(u"Dashes"))->SetDashes({4, 2, 1, 2});
    ZvBlock* block = drawing->BlockTable()->InsertNew(XStringW(u"Tree"));
    block->Adopt(Lines(false, false, true, 0, 6, 0));
    auto compound = std::make_unique<ZvRawCompound>();
    compound->InsertEntity(Lines(true, false, false, 0, 3, 1));
    compound->InsertEntity(Lines(false, false, true, 1, 4, 2));
    drawing->Insert(std::move(compound));
    drawing->DataTable()->GetOrMake(XStringW(u"Note")).SetString(XStringW(u"surveyed in spring"));
    drawing->Settings().Set("WheelZoomFactor", 2.0);
    FixGuids(*drawing);
    return drawing;
}

void AddPolylines(ZvDrawing& drawing, int count, int vertices) {
    std::vector<Vec2d> points;
    points.resize(size_t(vertices));
    for (int i = 0; i < count; ++i) {
        const double x = i % 1000 * 10.0, y = i / 1000 * 10.0;
        for (int v = 0; v < vertices; ++v)
            points[size_t(v)] = {x + v, y + (v * 7 + i) % 10};
        auto line = std::make_unique<ZvXLine>();
        line->SetPolyline(std::span<const Vec2d>(points));
        drawing.Insert(std::move(line));
    }
}

Bytes Save(ZvDrawing& drawing, ZvNativeOptions options) {
    ZvCore::MemFile file;
    ZvNativeFile native(std::move(options));
    if (!Zv::Ok(native.WriteFile(&drawing, &file)))
        return {};
    return file.Take();
}

Loaded Load(const Bytes& bytes, ZvNativeOptions options) {
    Loaded loaded;
    loaded.drawing = std::make_unique<ZvDrawing>();
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvNativeFile native(std::move(options));
    loaded.status = native.ReadFile(loaded.drawing.get(), file.get());
    native.GetErrors(loaded.errors);
    return loaded;
}

// --- comparing ---------------------------------------------------------------------------------------------------------------

std::string Describe(const ZvEntity& entity) {
    std::string text = std::to_string(entity.Name32()) + " " + std::to_string(entity.GetFullCode()) + " " +
                       entity.GetColor().ToString().ToUtf8() + " " + std::to_string(entity.GetFlags());
    dvect<Vec4d> vertices;
    bool closed = false;
    for (int part = 0; part < entity.MLVGetPartCount(); ++part) {
        entity.MLVGetPart(part, vertices, &closed);
        text += closed ? " closed" : " open";
        for (const Vec4d& v : vertices)
            text += XStringA::Format(" %.17g,%.17g,%.17g,%.17g", v.x, v.y, v.z, v.w).Str();
    }
    if (const auto* compound = dynamic_cast<const ZvRawCompound*>(&entity))
        for (const auto& child : compound->GetEntityVect())
            text += " [" + Describe(*child) + "]";
    return text;
}

namespace {

void DescribeTree(const std::string& where, const ZvBNode& tree, std::vector<std::string>& lines) {
    tree.ForEach([&](ZvEntity* entity) {
        if (!entity->IsErased())
            lines.push_back(where + ": " + Describe(*entity));
    });
}

} // namespace

std::string Census(ZvDrawing& drawing) {
    std::vector<std::string> lines;
    for (int i = 0; i < drawing.LayerTable()->Count(); ++i) {
        const ZvLayer* layer = drawing.LayerTable()->Get(i);
        lines.push_back("layer " + layer->GetName().ToUtf8() + " " + layer->GetColor().ToString().ToUtf8());
        DescribeTree(layer->GetName().ToUtf8(), layer->Tree(), lines);
    }
    for (int i = 0; i < drawing.BlockTable()->Count(); ++i)
        DescribeTree("block " + drawing.BlockTable()->Get(i)->GetName().ToUtf8(),
                     drawing.BlockTable()->Get(i)->Tree(), lines);
    for (int t = 0; t < drawing.TableTable()->Count(); ++t) {
        const ZvTable* table = drawing.TableTable()->Get(t);
        for (int i = 0; i < table->Count(); ++i)
            lines.push_back("record " + std::to_string(table->GetTableCode()) + " " +
                            table->Get(i)->GetName().ToUtf8() + " " +
                            table->Get(i)->GetGuid().ToString().ToUtf8());
    }
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

// --- bytes -------------------------------------------------------------------------------------------------------------------

void Seal(Bytes& bytes) {
    Put<uint64_t>(bytes, 20, bytes.size());
    std::memset(bytes.data() + ZvNativeHeader::kDigestOffset, 0, 16);
    const ZvCore::Digest digest = ZvCore::MD5::Of(bytes.data(), bytes.size());
    std::memcpy(bytes.data() + ZvNativeHeader::kDigestOffset, digest.data(), digest.size());
}

void SealBlock(Bytes& bytes, size_t at) {
    const size_t stored = size_t(Get<uint64_t>(bytes, at + 12));
    const ZvCore::Digest digest = ZvCore::MD5::Of(bytes.data() + at + ZvNativeBlockHead::kSize, stored);
    std::memcpy(bytes.data() + at + 20, digest.data(), digest.size());
}

Bytes Block(const Bytes& content) {
    Bytes block(ZvNativeBlockHead::kSize);
    ZvNativeBlockHead head;
    head.length = head.stored = content.size();
    head.Store(block.data());
    block.insert(block.end(), content.begin(), content.end());
    return block;
}

size_t Find(const Bytes& bytes, const Bytes& what, size_t from) {
    const auto found = std::search(bytes.begin() + ptrdiff_t(from), bytes.end(), what.begin(), what.end());
    return found == bytes.end() ? std::string::npos : size_t(found - bytes.begin());
}

std::vector<size_t> OuterBlocks(const Bytes& bytes) {
    std::vector<size_t> blocks;
    const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
    ZvNativeDump::Run(*file, {}, [&](const ZvNativeDumpItem& item) {
        if (item.stream == 0 && item.value.starts_with("method "))
            blocks.push_back(size_t(item.offset));
        return true;
    });
    return blocks;
}

} // namespace NativeFiles
