#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvColor.h"
#include "ZvCore/Vec.h"
#include <functional>
#include <span>

class ZvBitmapRec;

/// A fill pattern of textured brushes: families of parallel dashed lines, or a bitmap laid out as tiles.
class ZV_API ZvTexture : public ZvTableRecord {
public:
    enum class Kind : int32_t { Hatch, Bitmap };
    enum class Units : int32_t { World, Points };
    /// Parallel lines. Line k starts its dashes at origin + k x (shift along the line, spacing across it).
    struct Family {
        double angle = 0;           ///< radians, counter-clockwise from +X
        Vec2d origin;               ///< a point of line 0, where its first dash starts
        double spacing = 1;         ///< between neighbouring lines, > 0
        double shift = 0;           ///< along the line, from each line to the next
        std::vector<double> dashes; ///< dash, gap, dash, gap ...; empty: a full line; 0: a dot
        friend bool operator==(const Family&, const Family&) = default;
    };
    /// One piece of a hatch line; a dot when both ends are the same.
    using SegmentSink = std::function<void(const Vec2d& a, const Vec2d& b)>;
    static constexpr size_t kMaxFamilies = 64;
    static constexpr size_t kMaxDashes = 64;

    uint16_t GetRecordCode() const override { return ZvTableCode::Texture; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    Kind GetKind() const { return m_kind; }
    /// Makes the record a hatch. False, unchanged, for more than kMaxFamilies, a spacing that is not above 0,
    /// or lengths that are negative or not finite.
    bool SetFamilies(const std::vector<Family>& families);
    const std::vector<Family>& Families() const { return m_families; }
    /// Makes the record a bitmap texture of the record at that index of the bitmap table.
    void SetBitmap(int bitmapIndex);
    int GetBitmap() const { return m_bitmap; }
    ZvBitmapRec* GetBitmapRecord() const;
    /// Factor on all lengths of the pattern; for bitmaps the width of a tile in pattern units.
    double GetScale() const { return m_scale; }
    void SetScale(double scale);
    /// Turns the whole pattern, radians.
    double GetAngle() const { return m_angle; }
    void SetAngle(double radians);
    Units GetUnits() const { return m_units; }
    void SetUnits(Units units);
    /// 0 transparent .. 1 opaque.
    double GetOpacity() const { return m_opacity; }
    void SetOpacity(double opacity);
    /// Hatch lines in the brush's colour over a ground of this colour index; null colour: no ground.
    ZvColor GetGround() const { return m_ground; }
    void SetGround(const ZvColor& color);

    /// The hatch lines inside the area of `rings` (closed, even-odd), clipped to `window`, in world
    /// coordinates. `unitToWorld`: world units of one pattern unit. Families that would need more than
    /// `maxLines` lines give none; false then, and the caller fills with the colour instead.
    bool GenerateHatch(std::span<const std::span<const Vec2d>> rings, const ZvBounds2D& window,
                       double unitToWorld, size_t maxLines, const SegmentSink& sink) const;

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;
    void TableUsage(ZvUsageTable& usage) const override;
    void TableUpdate(ZvNativeDesc& desc) override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    Kind m_kind = Kind::Hatch;
    std::vector<Family> m_families;
    int32_t m_bitmap = -1;
    double m_scale = 1;
    double m_angle = 0;
    Units m_units = Units::World;
    double m_opacity = 1;
    ZvColor m_ground;
};
