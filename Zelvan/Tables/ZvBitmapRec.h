#pragma once
#include "Zelvan/Tables/ZvTableRecord.h"
#include "Zelvan/Tables/ZvUcs.h"
#include <array>

/// A raster image: its file's bytes kept as they were given, or the path of the file, and where it lies on
/// the earth.
class ZV_API ZvBitmapRec : public ZvTableRecord {
public:
    /// Form of the bytes.
    enum class Format : int32_t { None, Bgra, Png, Jpeg, Tiff, Bmp, Other };
    /// World = (t0 + t1 x + t2 y, t3 + t4 x + t5 y) for pixel corner (x, y), y down.
    using Affine = std::array<double, 6>;

    uint16_t GetRecordCode() const override { return ZvTableCode::Bitmap; }
    std::unique_ptr<ZvTableRecord> NewOfKind() const override;

    Format GetFormat() const { return m_format; }
    const std::vector<uint8_t>& GetBytes() const { return m_bytes; }
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    /// Keeps encoded bytes as they are; format and size are read from their head when it is PNG, JPEG or BMP,
    /// else `width` and `height` are taken. False, unchanged, for no bytes.
    bool SetEncoded(std::vector<uint8_t> bytes, int width = 0, int height = 0);
    /// Plain pixels, 4 bytes each (blue, green, red, alpha), rows from the top. False when the size does not
    /// fit the bytes.
    bool SetPixels(int width, int height, std::vector<uint8_t> bgra);
    /// The pixels of a record of format Bgra; null for encoded ones, which the surface decodes.
    const uint8_t* GetPixels() const;
    /// The image lies in a file of its own; its bytes are read when needed (LoadLinked) and saved only with
    /// `embedOnSave`.
    void SetLinked(const XStringW& path, bool embedOnSave = false);
    const XStringW& GetPath() const { return m_path; }
    bool IsLinked() const { return !m_path.IsEmpty(); }
    bool IsEmbedOnSave() const { return m_embedOnSave; }
    /// Reads the linked file; relative paths from `folder` (UTF-8). False when it cannot be read.
    bool LoadLinked(const std::string& folder = {});
    bool HasGeoPlacement() const { return m_hasPlacement; }
    const Affine& GetPlacement() const { return m_placement; }
    void SetPlacement(const Affine& affine, const ZvCoordSystem& system);
    void ClearPlacement();
    const ZvCoordSystem& GetCoordSystem() const { return m_coordSystem; }

    void DrawUI(IZvSurface& surface, const Rect2I& box) const override;
    size_t MemUsage() const override;

protected:
    void Fields(ZvRecordFields& visit) override;
    void FieldsChanged() override;

private:
    friend class ZvBitmapTable;
    Format m_format = Format::None;
    int32_t m_width = 0;
    int32_t m_height = 0;
    std::vector<uint8_t> m_bytes;
    XStringW m_path;
    bool m_embedOnSave = false;
    bool m_hasPlacement = false;
    Affine m_placement{0, 1, 0, 0, 0, -1};
    ZvCoordSystem m_coordSystem;
};
