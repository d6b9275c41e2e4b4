#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/ZvBounds.h"
#include "ZvCore/Vec.h"

/// A prism that limits selecting: a closed outline in XY and a range of Z.
class ZV_API ZvSelectionVolume : public ZvTableRecord {
public:
    enum class Mode : int32_t { Inside, Crossing, Outside };

    uint16_t GetRecordCode() const override { return ZvTableCode::SelectionVolume; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// At least three finite points, the first not repeated; false, unchanged, otherwise.
    bool SetOutline(const std::vector<Vec2d>& points);
    std::vector<Vec2d> GetOutline() const;
    void SetZRange(double minimum, double maximum);
    double GetMinZ() const { return m_minZ; }
    double GetMaxZ() const { return m_maxZ; }
    Mode GetMode() const { return m_mode; }
    void SetMode(Mode mode);
    bool IsActive() const { return m_active; }
    void SetActive(bool on);
    ZvBounds3D Bounds() const;
    /// Points on the outline are inside; a volume without an outline contains nothing.
    bool Contains(const Vec3d& point) const;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    std::vector<double> m_outline; // x, y, x, y ...
    double m_minZ = -9e90;
    double m_maxZ = 9e90;
    Mode m_mode = Mode::Inside;
    bool m_active = true;
};
