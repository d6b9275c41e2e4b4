#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "ZvCore/Mat4T.h"
#include "ZvCore/Vec.h"

/// A coordinate system on the earth or of a site, as text that the coordinate system service understands.
struct ZV_API ZvCoordSystem {
    enum class Kind : int32_t { None, Local, Projected, Geographic };
    Kind kind = Kind::None;
    XStringW wkt;       ///< definition (WKT)
    XStringW authority; ///< "EPSG:25832", empty when not known
    XStringW name;
    double metersPerUnit =
        1; ///< metres of one coordinate unit; for geographic systems of one degree along the equator
    bool IsSet() const { return kind != Kind::None; }
    /// As fields of a record or table, "id.Kind" and so on.
    void Visit(ZvRecordFields& visit, const char* id);
    friend bool operator==(const ZvCoordSystem&, const ZvCoordSystem&) = default;
};

/// A user coordinate system: the user's unit, origin and axes, and optionally the coordinate system in which
/// the user reads positions.
class ZV_API ZvUcs : public ZvTableRecord {
public:
    uint16_t GetRecordCode() const override { return ZvTableCode::Ucs; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// The user's units per metre of the world, > 0.
    double GetScale() const { return m_scale; }
    void SetScale(double unitsPerMeter);
    const Vec3d& GetOrigin() const { return m_origin; }
    void SetOrigin(const Vec3d& origin);
    /// Unit vectors at right angles. False, unchanged, for axes of no length or along each other; `y` is made
    /// square to `x`.
    bool SetAxes(const Vec3d& x, const Vec3d& y);
    const Vec3d& GetXAxis() const { return m_xAxis; }
    const Vec3d& GetYAxis() const { return m_yAxis; }
    Vec3d GetZAxis() const { return m_xAxis.Cross(m_yAxis); }
    const ZvCoordSystem& GetCoordSystem() const { return m_coordSystem; }
    void SetCoordSystem(const ZvCoordSystem& system);
    const XStringW& GetUnitName() const { return m_unitName; }
    const XStringW& GetUnitAbbr() const { return m_unitAbbr; }
    void SetUnitNames(const XStringW& name, const XStringW& abbreviation);

    Vec3d WorldToUser(const Vec3d& world) const;
    Vec3d UserToWorld(const Vec3d& user) const;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    double m_scale = 1;
    Vec3d m_origin;
    Vec3d m_xAxis{1, 0, 0};
    Vec3d m_yAxis{0, 1, 0};
    ZvCoordSystem m_coordSystem;
    XStringW m_unitName;
    XStringW m_unitAbbr;
};
