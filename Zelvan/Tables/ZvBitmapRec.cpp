#include "Zelvan/Tables/ZvBitmapRec.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/Tables/ZvTable.h"
#include "ZvCore/DiskFile.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>

namespace {

constexpr int32_t kLargestSide = 1 << 24;

struct Head {
    ZvBitmapRec::Format format = ZvBitmapRec::Format::Other;
    int width = 0;
    int height = 0;
};

uint32_t BigEndian(const uint8_t* p, int count) {
    uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | p[i];
    return value;
}

int32_t LittleEndian32(const uint8_t* p) {
    return int32_t(uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24);
}

/// Size from the start-of-frame segment (ITU-T T.81, B.2.2).
Head ReadJpegHead(std::span<const uint8_t> bytes) {
    Head head{ZvBitmapRec::Format::Jpeg, 0, 0};
    size_t at = 2;
    while (at + 9 <= bytes.size() && bytes[at] == 0xFF) {
        const uint8_t marker = bytes[at + 1];
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) {
            head.height = int(BigEndian(&bytes[at + 5], 2));
            head.width = int(BigEndian(&bytes[at + 7], 2));
            break;
        }
        at += 2 + BigEndian(&bytes[at + 2], 2);
    }
    return head;
}

Head ReadHead(std::span<const uint8_t> bytes) {
    const auto startsWith = [&](const char* magic, size_t count) {
        return bytes.size() >= count && std::memcmp(bytes.data(), magic, count) == 0;
    };
    if (startsWith("\x89PNG\r\n\x1A\n", 8) && bytes.size() >= 24)
        return {ZvBitmapRec::Format::Png, int(BigEndian(&bytes[16], 4) & 0x7FFFFFFF),
                int(BigEndian(&bytes[20], 4) & 0x7FFFFFFF)};
    if (startsWith("\xFF\xD8", 2))
        return ReadJpegHead(bytes);
    if (startsWith("BM", 2) && bytes.size() >= 26)
        return {ZvBitmapRec::Format::Bmp, LittleEndian32(&bytes[18]),
                int(std::abs(int64_t(LittleEndian32(&bytes[22]))) & 0x7FFFFFFF)};
    if (startsWith("II*\0", 4) || startsWith("MM\0*", 4))
        return {ZvBitmapRec::Format::Tiff, 0, 0};
    return {};
}

} // namespace

std::unique_ptr<ZvTableRecord> ZvBitmapRec::NewOfKind() const {
    return std::make_unique<ZvBitmapRec>();
}

bool ZvBitmapRec::SetEncoded(std::vector<uint8_t> bytes, int width, int height) {
    if (bytes.empty())
        return false;
    const Head head = ReadHead(bytes);
    m_format = head.format;
    m_width = head.width > 0 ? head.width : width;
    m_height = head.height > 0 ? head.height : height;
    m_bytes = std::move(bytes);
    FieldsChanged();
    IncModified();
    return true;
}

bool ZvBitmapRec::SetPixels(int width, int height, std::vector<uint8_t> bgra) {
    if (width <= 0 || height <= 0 || bgra.size() != size_t(width) * size_t(height) * 4)
        return false;
    m_format = Format::Bgra;
    m_width = width;
    m_height = height;
    m_bytes = std::move(bgra);
    IncModified();
    return true;
}

const uint8_t* ZvBitmapRec::GetPixels() const {
    return m_format == Format::Bgra ? m_bytes.data() : nullptr;
}

void ZvBitmapRec::SetLinked(const XStringW& path, bool embedOnSave) {
    m_path = path;
    m_embedOnSave = embedOnSave;
    IncModified();
}

bool ZvBitmapRec::LoadLinked(const std::string& folder) {
    if (!IsLinked())
        return false;
    const std::filesystem::path base(XStringW::FromUtf8(folder).Str());
    std::string why;
    const auto file = ZvCore::DiskFile::Open(base / m_path.Str(), ZvCore::DiskFile::Mode::Read, why,
                                             ZvCore::DiskFile::Access::Buffered);
    if (!file)
        return false;
    std::vector<uint8_t> bytes(size_t(file->Length()));
    return file->Read(bytes.data(), bytes.size()) == bytes.size() && SetEncoded(std::move(bytes));
}

void ZvBitmapRec::SetPlacement(const Affine& affine, const ZvCoordSystem& system) {
    m_hasPlacement = true;
    m_placement = affine;
    m_coordSystem = system;
    FieldsChanged();
    IncModified();
}

void ZvBitmapRec::ClearPlacement() {
    m_hasPlacement = false;
    m_coordSystem = {};
    IncModified();
}

void ZvBitmapRec::Fields(ZvRecordFields& visit) {
    // A linked image that is not embedded leaves its bytes in its own file.
    std::vector<uint8_t> none;
    visit.Enum("Format", m_format, Format::Other, ZvRecordFields::kReadOnly);
    visit.Field("PixelWidth", m_width, ZvRecordFields::kReadOnly);
    visit.Field("PixelHeight", m_height, ZvRecordFields::kReadOnly);
    visit.Field("Path", m_path);
    visit.Field("EmbedOnSave", m_embedOnSave);
    visit.Field("Bytes", IsLinked() && !m_embedOnSave ? none : m_bytes);
    visit.Field("HasPlacement", m_hasPlacement, ZvRecordFields::kReadOnly);
    std::vector<double> affine(m_placement.begin(), m_placement.end());
    visit.Field("Placement", affine);
    if (affine.size() == m_placement.size())
        std::copy(affine.begin(), affine.end(), m_placement.begin());
    m_coordSystem.Visit(visit, "CoordSystem");
}

void ZvBitmapRec::FieldsChanged() {
    m_width = std::clamp(m_width, 0, kLargestSide);
    m_height = std::clamp(m_height, 0, kLargestSide);
    if (m_format == Format::Bgra && m_bytes.size() != size_t(m_width) * size_t(m_height) * 4) {
        m_format = Format::None;
        m_bytes.clear();
    }
    for (const double value : m_placement)
        m_hasPlacement = m_hasPlacement && std::isfinite(value);
}

void ZvBitmapRec::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    const uint8_t* pixels = GetPixels();
    if (!pixels || box.IsEmpty()) {
        ZvTableRecord::DrawUI(surface, box);
        return;
    }
    std::vector<uint32_t> argb(m_bytes.size() / 4);
    std::memcpy(argb.data(), pixels, m_bytes.size());
    std::transform(argb.begin(), argb.end(), argb.begin(), ZvPixelBuffer::Premultiply);
    const double scale = std::min(double(box.Width()) / m_width, double(box.Height()) / m_height);
    surface.Image(argb.data(), m_width, m_height, {float(box.left), float(box.top)},
                  {float(m_width * scale), 0}, {0, float(m_height * scale)});
}

size_t ZvBitmapRec::MemUsage() const {
    return ZvTableRecord::MemUsage() + m_bytes.capacity();
}
