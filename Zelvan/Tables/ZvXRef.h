#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "ZvCore/Mat4T.h"
#include "ZvCore/Vec.h"

/// An external reference: another file that is shown in this drawing, at a place, without becoming part of
/// it.
class ZV_API ZvXRef : public ZvTableRecord {
public:
    uint16_t GetRecordCode() const override { return ZvTableCode::XRef; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    /// As the user gave it: absolute, or relative to the drawing's folder. UTF-16, '/' or '\' between
    /// folders.
    const XStringW& GetPath() const { return m_path; }
    void SetPath(const XStringW& path);
    const Vec3d& GetOrigin() const { return m_origin; }
    void SetOrigin(const Vec3d& origin);
    double GetScale() const { return m_scale; }
    void SetScale(double scale);
    /// Radians, counter-clockwise.
    double GetAngle() const { return m_angle; }
    void SetAngle(double radians);
    /// Coordinates of the file to those of this drawing.
    Mat4d GetTransform() const;
    bool IsVisible() const { return m_visible; }
    void SetVisible(bool on);
    /// Loaded when the drawing is opened.
    bool IsAutoLoad() const { return m_autoLoad; }
    void SetAutoLoad(bool on);
    /// Put before the names of layers and other records that come from the file.
    const XStringW& GetPrefix() const { return m_prefix; }
    void SetPrefix(const XStringW& prefix);
    /// Guid and time stamp of the file when it was last read (zero: never).
    const Guid& GetDrawingGuid() const { return m_drawingGuid; }
    int64_t GetFileTime() const { return m_fileTime; }
    void SetSource(const Guid& drawing, int64_t fileTime);

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    XStringW m_path;
    Vec3d m_origin;
    double m_scale = 1;
    double m_angle = 0;
    bool m_visible = true;
    bool m_autoLoad = true;
    XStringW m_prefix;
    Guid m_drawingGuid;
    int64_t m_fileTime = 0;
};
