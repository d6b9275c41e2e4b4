#include "Zelvan/Tables/ZvTexture.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Ports/IZvSurface.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/Tables/ZvHatchLines.h"
#include "Zelvan/Tables/ZvRecordFields.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeDesc.h"
#include <algorithm>
#include <cmath>

namespace {

/// Numbers of a family in front of its dashes, in the stored form.
constexpr size_t kFamilyNumbers = 6;
constexpr size_t kSwatchLines = 2000;

bool IsFamily(const ZvTexture::Family& family) {
    const double numbers[] = {family.angle, family.origin.x, family.origin.y, family.spacing, family.shift};
    double period = 0;
    for (const double dash : family.dashes) {
        if (!std::isfinite(dash) || dash < 0)
            return false;
        period += dash;
    }
    return std::all_of(std::begin(numbers), std::end(numbers), [](double v) { return std::isfinite(v); }) &&
           family.spacing > 0 && family.dashes.size() <= ZvTexture::kMaxDashes &&
           (family.dashes.empty() || period > 0);
}

bool AreFamilies(const std::vector<ZvTexture::Family>& families) {
    return families.size() <= ZvTexture::kMaxFamilies &&
           std::all_of(families.begin(), families.end(), IsFamily);
}

std::vector<double> Encode(const std::vector<ZvTexture::Family>& families) {
    std::vector<double> numbers;
    for (const ZvTexture::Family& f : families) {
        numbers.insert(numbers.end(),
                       {f.angle, f.origin.x, f.origin.y, f.spacing, f.shift, double(f.dashes.size())});
        numbers.insert(numbers.end(), f.dashes.begin(), f.dashes.end());
    }
    return numbers;
}

std::vector<ZvTexture::Family> Decode(const std::vector<double>& numbers) {
    std::vector<ZvTexture::Family> families;
    for (size_t at = 0; at + kFamilyNumbers <= numbers.size();) {
        const double* n = &numbers[at];
        at += kFamilyNumbers;
        if (!(n[5] >= 0) || n[5] > double(numbers.size() - at))
            break;
        const double* dashes = numbers.data() + at;
        families.push_back({n[0], {n[1], n[2]}, n[3], n[4], {dashes, dashes + size_t(n[5])}});
        at += families.back().dashes.size();
    }
    return families;
}

} // namespace

std::unique_ptr<ZvTableRecord> ZvTexture::NewOfKind() const {
    return std::make_unique<ZvTexture>();
}

bool ZvTexture::SetFamilies(const std::vector<Family>& families) {
    if (!AreFamilies(families))
        return false;
    m_kind = Kind::Hatch;
    m_families = families;
    m_bitmap = -1;
    IncModified();
    return true;
}

void ZvTexture::SetBitmap(int bitmapIndex) {
    m_kind = Kind::Bitmap;
    m_families.clear();
    m_bitmap = bitmapIndex;
    IncModified();
}

ZvBitmapRec* ZvTexture::GetBitmapRecord() const {
    const ZvDrawing* drawing = GetParentDrawing();
    const bool isBitmap = m_kind == Kind::Bitmap && drawing && drawing->BitmapTable();
    return isBitmap ? drawing->BitmapTable()->Get(m_bitmap) : nullptr;
}

void ZvTexture::SetScale(double scale) {
    m_scale = scale;
    FieldsChanged();
    IncModified();
}

void ZvTexture::SetAngle(double radians) {
    m_angle = radians;
    FieldsChanged();
    IncModified();
}

void ZvTexture::SetUnits(Units units) {
    m_units = units;
    IncModified();
}

void ZvTexture::SetOpacity(double opacity) {
    m_opacity = opacity;
    FieldsChanged();
    IncModified();
}

void ZvTexture::SetGround(const ZvColor& color) {
    m_ground = color;
    IncModified();
}

void ZvTexture::Fields(ZvRecordFields& visit) {
    visit.Enum("TextureKind", m_kind, Kind::Bitmap, ZvRecordFields::kReadOnly);
    std::vector<double> families = Encode(m_families);
    visit.Field("Families", families);
    m_families = Decode(families);
    visit.Field("Bitmap", m_bitmap);
    visit.Field("Scale", m_scale);
    visit.Field("Angle", m_angle);
    visit.Enum("Units", m_units, Units::Points);
    visit.Field("Opacity", m_opacity);
    visit.Field("Ground", m_ground);
}

void ZvTexture::FieldsChanged() {
    if (!AreFamilies(m_families))
        m_families.clear();
    if (!(m_scale > 0) || !std::isfinite(m_scale))
        m_scale = 1;
    if (!std::isfinite(m_angle))
        m_angle = 0;
    m_opacity = std::isfinite(m_opacity) ? std::clamp(m_opacity, 0.0, 1.0) : 1;
}

void ZvTexture::TableUsage(ZvUsageTable& usage) const {
    if (m_bitmap >= 0)
        usage.Use(ZvTableCode::Full(ZvTableCode::Bitmap), m_bitmap);
}

void ZvTexture::TableUpdate(ZvNativeDesc& desc) {
    if (m_bitmap >= 0)
        m_bitmap = desc.TranslateIndex(ZvTableCode::Full(ZvTableCode::Bitmap), m_bitmap, true);
}

bool ZvTexture::GenerateHatch(std::span<const std::span<const Vec2d>> rings, const ZvBounds2D& window,
                              double unitToWorld, size_t maxLines, const SegmentSink& sink) const {
    bool all = true;
    for (const Family& family : m_families) {
        const ZvHatchLines lines(family, m_angle, m_scale * unitToWorld);
        all = lines.Generate(rings, window, maxLines, sink) && all;
    }
    return all;
}

/// A square of the pattern, 8 pattern units wide.
void ZvTexture::DrawUI(IZvSurface& surface, const Rect2I& box) const {
    if (const ZvBitmapRec* bitmap = GetBitmapRecord()) {
        bitmap->DrawUI(surface, box);
        return;
    }
    const ZvBounds2D window(box.left, box.top, box.right, box.bottom);
    const Vec2d corners[] = {{window.minX, window.minY},
                             {window.maxX, window.minY},
                             {window.maxX, window.maxY},
                             {window.minX, window.maxY}};
    const std::span<const Vec2d> ring(corners);
    surface.PushClip(box);
    surface.SetPen({});
    GenerateHatch({&ring, 1}, window, std::max(1, box.Width()) / (8 * m_scale), kSwatchLines,
                  [&](const Vec2d& a, const Vec2d& b) {
                      const Vec2f ends[] = {{float(a.x), float(a.y)}, {float(b.x), float(b.y)}};
                      surface.Polyline(ends, 2, false);
                  });
    surface.PopClip();
}
