#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/Vec.h"
#include <algorithm>
#include <cmath>

/// Value that lies beyond every coordinate: minima of the empty box, maxima of the one that holds everything.
inline constexpr double kZvBoundsLimit = 9e90;

/// Axis-aligned box in the plane; closed (its border belongs to it). Empty ("null"): minima at +9e90, maxima
/// at -9e90. The width, height and area of an empty box are 0 and its centre is the origin.
struct ZV_API ZvBounds2D {
    double minX = kZvBoundsLimit, minY = kZvBoundsLimit, maxX = -kZvBoundsLimit, maxY = -kZvBoundsLimit;

    constexpr ZvBounds2D() = default;
    constexpr ZvBounds2D(double x0, double y0, double x1, double y1)
        : minX(x0), minY(y0), maxX(x1), maxY(y1) {}
    constexpr explicit ZvBounds2D(const Bounds2T<double>& b)
        : minX(b.minX), minY(b.minY), maxX(b.maxX), maxY(b.maxY) {}
    /// Holds everything; minima at -9e90.
    static constexpr ZvBounds2D SuperBounds() {
        return {-kZvBoundsLimit, -kZvBoundsLimit, kZvBoundsLimit, kZvBoundsLimit};
    }

    constexpr void Set(double x0, double y0, double x1, double y1) { *this = {x0, y0, x1, y1}; }
    constexpr void Set(const Vec2d& p) { *this = {p.x, p.y, p.x, p.y}; }
    constexpr void Reset() { *this = {}; }
    constexpr void ExpandToFit(double x, double y) {
        minX = std::min(minX, x), minY = std::min(minY, y), maxX = std::max(maxX, x),
        maxY = std::max(maxY, y);
    }
    constexpr void ExpandToFit(const Vec2d& p) { ExpandToFit(p.x, p.y); }
    constexpr void ExpandToFit(const ZvBounds2D& b) {
        minX = std::min(minX, b.minX), minY = std::min(minY, b.minY);
        maxX = std::max(maxX, b.maxX), maxY = std::max(maxY, b.maxY);
    }
    /// True when the box changed.
    constexpr bool ExpandToFitTest(const ZvBounds2D& b) {
        const ZvBounds2D old = *this;
        ExpandToFit(b);
        return *this != old;
    }
    constexpr bool ExpandToFitTest(const Vec2d& p) { return ExpandToFitTest(ZvBounds2D(p.x, p.y, p.x, p.y)); }

    /// True when a minimum exceeds its maximum.
    constexpr bool IsNull() const { return minX > maxX || minY > maxY; }
    /// Whether the argument lies in this box. An empty box lies in any that has a point.
    constexpr bool IsInsideMe(double x, double y) const {
        return x >= minX && x <= maxX && y >= minY && y <= maxY;
    }
    constexpr bool IsInsideMe(const Vec2d& p) const { return IsInsideMe(p.x, p.y); }
    constexpr bool IsInsideMe(const ZvBounds2D& b) const {
        return b.minX >= minX && b.minY >= minY && b.maxX <= maxX && b.maxY <= maxY;
    }
    constexpr bool IsInsideOf(const ZvBounds2D& b) const { return b.IsInsideMe(*this); }
    /// True when the boxes overlap or touch.
    constexpr bool PositiveUnion(const ZvBounds2D& b) const {
        return minX <= b.maxX && maxX >= b.minX && minY <= b.maxY && maxY >= b.minY;
    }

    constexpr Vec2d Center() const {
        return IsNull() ? Vec2d{} : Vec2d{(minX + maxX) / 2, (minY + maxY) / 2};
    }
    constexpr double Width() const { return std::max(0.0, maxX - minX); }
    constexpr double Height() const { return std::max(0.0, maxY - minY); }
    constexpr double Area() const { return Width() * Height(); }
    /// The larger absolute extent, also of a box whose minima exceed its maxima.
    double MaxDimension() const { return std::max(std::abs(maxX - minX), std::abs(maxY - minY)); }
    /// Moves minima out by dx, dy and maxima out by dx, dy; negative shrinks.
    constexpr void Grow(double dx, double dy) { minX -= dx, minY -= dy, maxX += dx, maxY += dy; }
    constexpr void Grow(double d) { Grow(d, d); }
    constexpr ZvBounds2D& operator+=(const Vec2d& by) {
        minX += by.x, maxX += by.x, minY += by.y, maxY += by.y;
        return *this;
    }
    /// Each coordinate rounded to the nearest integer (halves away from 0), kept within 32 bits.
    Rect2I ToRect() const;
    constexpr Bounds2T<double> ToBounds2T() const { return {minX, minY, maxX, maxY}; }

    friend constexpr bool operator==(const ZvBounds2D&, const ZvBounds2D&) = default;
};

/// Axis-aligned box in space; otherwise as ZvBounds2D.
struct ZV_API ZvBounds3D {
    double minX = kZvBoundsLimit, minY = kZvBoundsLimit, minZ = kZvBoundsLimit;
    double maxX = -kZvBoundsLimit, maxY = -kZvBoundsLimit, maxZ = -kZvBoundsLimit;

    constexpr ZvBounds3D() = default;
    constexpr ZvBounds3D(double x0, double y0, double z0, double x1, double y1, double z1)
        : minX(x0), minY(y0), minZ(z0), maxX(x1), maxY(y1), maxZ(z1) {}
    /// Flat at that height.
    constexpr explicit ZvBounds3D(const ZvBounds2D& b, double z0 = 0, double z1 = 0)
        : ZvBounds3D(b.minX, b.minY, z0, b.maxX, b.maxY, z1) {}
    static constexpr ZvBounds3D SuperBounds() {
        constexpr double k = kZvBoundsLimit;
        return {-k, -k, -k, k, k, k};
    }

    constexpr void Set(double x0, double y0, double z0, double x1, double y1, double z1) {
        *this = {x0, y0, z0, x1, y1, z1};
    }
    constexpr void Set(const Vec3d& p) { *this = {p.x, p.y, p.z, p.x, p.y, p.z}; }
    constexpr void Reset() { *this = {}; }
    constexpr void ExpandToFit(double x, double y, double z) {
        minX = std::min(minX, x), minY = std::min(minY, y), minZ = std::min(minZ, z);
        maxX = std::max(maxX, x), maxY = std::max(maxY, y), maxZ = std::max(maxZ, z);
    }
    constexpr void ExpandToFit(const Vec3d& p) { ExpandToFit(p.x, p.y, p.z); }
    constexpr void ExpandToFit(const ZvBounds3D& b) {
        minX = std::min(minX, b.minX), minY = std::min(minY, b.minY), minZ = std::min(minZ, b.minZ);
        maxX = std::max(maxX, b.maxX), maxY = std::max(maxY, b.maxY), maxZ = std::max(maxZ, b.maxZ);
    }
    /// X and Y only.
    constexpr void ExpandToFit2D(const ZvBounds2D& b) {
        minX = std::min(minX, b.minX), minY = std::min(minY, b.minY);
        maxX = std::max(maxX, b.maxX), maxY = std::max(maxY, b.maxY);
    }
    constexpr void ExpandToFit2D(const Vec2d& p) { ExpandToFit2D(ZvBounds2D(p.x, p.y, p.x, p.y)); }
    /// True when the box changed.
    constexpr bool ExpandToFitTest(const ZvBounds3D& b) {
        const ZvBounds3D old = *this;
        ExpandToFit(b);
        return *this != old;
    }

    constexpr bool IsNull() const { return minX > maxX || minY > maxY || minZ > maxZ; }
    /// Whether the argument lies in this box. An empty box lies in any that has a point.
    constexpr bool IsInsideMe(const Vec3d& p) const {
        return IsInsideMe2D(p.XY()) && p.z >= minZ && p.z <= maxZ;
    }
    constexpr bool IsInsideMe(const ZvBounds3D& b) const {
        return IsInsideMe2D(b) && b.minZ >= minZ && b.maxZ <= maxZ;
    }
    constexpr bool IsInsideOf(const ZvBounds3D& b) const { return b.IsInsideMe(*this); }
    /// Without regard to Z.
    constexpr bool IsInsideMe2D(const Vec2d& p) const {
        return p.x >= minX && p.x <= maxX && p.y >= minY && p.y <= maxY;
    }
    constexpr bool IsInsideMe2D(const ZvBounds3D& b) const { return IsInsideMe2D(b.ToBounds2D()); }
    constexpr bool IsInsideMe2D(const ZvBounds2D& b) const { return ToBounds2D().IsInsideMe(b); }
    constexpr bool IsInsideOf2D(const ZvBounds3D& b) const { return b.IsInsideMe2D(*this); }
    constexpr bool IsInsideOf2D(const ZvBounds2D& b) const { return b.IsInsideMe(ToBounds2D()); }
    /// True when the boxes overlap or touch.
    constexpr bool PositiveUnion(const ZvBounds3D& b) const {
        return PositiveUnion2D(b.ToBounds2D()) && minZ <= b.maxZ && maxZ >= b.minZ;
    }
    constexpr bool PositiveUnion2D(const ZvBounds2D& b) const { return ToBounds2D().PositiveUnion(b); }

    constexpr Vec3d Center() const {
        return IsNull() ? Vec3d{} : Vec3d{(minX + maxX) / 2, (minY + maxY) / 2, (minZ + maxZ) / 2};
    }
    constexpr double Width() const { return std::max(0.0, maxX - minX); }
    constexpr double Height() const { return std::max(0.0, maxY - minY); }
    /// Extent along Z.
    constexpr double Depth() const { return std::max(0.0, maxZ - minZ); }
    /// In the XY plane.
    constexpr double Area() const { return Width() * Height(); }
    /// The largest absolute extent, also of a box whose minima exceed its maxima.
    double MaxDimension() const { return std::max(MaxDimensionXY(), std::abs(maxZ - minZ)); }
    double MaxDimensionXY() const { return std::max(std::abs(maxX - minX), std::abs(maxY - minY)); }
    /// Negative shrinks.
    constexpr void Grow(double dx, double dy, double dz) {
        minX -= dx, minY -= dy, minZ -= dz, maxX += dx, maxY += dy, maxZ += dz;
    }
    /// X and Y only.
    constexpr void Grow(double dx, double dy) { Grow(dx, dy, 0); }
    constexpr ZvBounds3D& operator+=(const Vec3d& by) {
        minX += by.x, maxX += by.x, minY += by.y, maxY += by.y, minZ += by.z, maxZ += by.z;
        return *this;
    }
    constexpr ZvBounds2D ToBounds2D() const { return {minX, minY, maxX, maxY}; }

    friend constexpr bool operator==(const ZvBounds3D&, const ZvBounds3D&) = default;
};
