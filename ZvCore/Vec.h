#pragma once
#include <cmath>
#include <cstddef>

/// Small vectors over float or double. Plain aggregates: no constructors beyond the obvious, no hidden state.
template <class T>
struct Vec2T {
    T x = 0, y = 0;

    friend constexpr bool operator==(const Vec2T&, const Vec2T&) = default;
    constexpr Vec2T operator+(const Vec2T& o) const { return {x + o.x, y + o.y}; }
    constexpr Vec2T operator-(const Vec2T& o) const { return {x - o.x, y - o.y}; }
    constexpr Vec2T operator*(T s) const { return {x * s, y * s}; }
    constexpr Vec2T operator-() const { return {-x, -y}; }
    constexpr T Dot(const Vec2T& o) const { return x * o.x + y * o.y; }
    /// Z of the cross product: positive when `o` lies counter-clockwise of this.
    constexpr T Cross(const Vec2T& o) const { return x * o.y - y * o.x; }
    constexpr T LengthSq() const { return Dot(*this); }
    T Length() const { return std::sqrt(LengthSq()); }
};

template <class T>
struct Vec3T {
    T x = 0, y = 0, z = 0;

    friend constexpr bool operator==(const Vec3T&, const Vec3T&) = default;
    constexpr Vec3T operator+(const Vec3T& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vec3T operator-(const Vec3T& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vec3T operator*(T s) const { return {x * s, y * s, z * s}; }
    constexpr Vec3T operator-() const { return {-x, -y, -z}; }
    constexpr T Dot(const Vec3T& o) const { return x * o.x + y * o.y + z * o.z; }
    constexpr Vec3T Cross(const Vec3T& o) const {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    constexpr T LengthSq() const { return Dot(*this); }
    T Length() const { return std::sqrt(LengthSq()); }
    /// The zero vector stays zero.
    Vec3T Normalized() const {
        const T len = Length();
        return len > 0 ? *this * (1 / len) : *this;
    }
    constexpr Vec2T<T> XY() const { return {x, y}; }
};

/// As a polyline vertex: x, y, z and measure (w).
template <class T>
struct Vec4T {
    T x = 0, y = 0, z = 0, w = 0;

    friend constexpr bool operator==(const Vec4T&, const Vec4T&) = default;
    constexpr Vec4T operator+(const Vec4T& o) const { return {x + o.x, y + o.y, z + o.z, w + o.w}; }
    constexpr Vec4T operator-(const Vec4T& o) const { return {x - o.x, y - o.y, z - o.z, w - o.w}; }
    constexpr Vec4T operator*(T s) const { return {x * s, y * s, z * s, w * s}; }
    constexpr Vec3T<T> XYZ() const { return {x, y, z}; }
    constexpr Vec2T<T> XY() const { return {x, y}; }
};

using Vec2d = Vec2T<double>;
using Vec3d = Vec3T<double>;
using Vec4d = Vec4T<double>;
using Vec2f = Vec2T<float>;
using Vec3f = Vec3T<float>;
using Vec4f = Vec4T<float>;

/// A half line used for picking: origin and direction (not necessarily of unit length).
struct Ray3d {
    Vec3d origin;
    Vec3d direction{0, 0, -1};
};

/// Axis-aligned box over any component type; empty when a minimum exceeds its maximum.
template <class T>
struct Bounds2T {
    T minX, minY, maxX, maxY;
    constexpr T Width() const { return maxX - minX; }
    constexpr T Height() const { return maxY - minY; }
    friend constexpr bool operator==(const Bounds2T&, const Bounds2T&) = default;
};

/// Integer pixel rectangle; right and bottom are exclusive.
struct Rect2I {
    int left = 0, top = 0, right = 0, bottom = 0;
    constexpr int Width() const { return right - left; }
    constexpr int Height() const { return bottom - top; }
    constexpr bool IsEmpty() const { return right <= left || bottom <= top; }
    friend constexpr bool operator==(const Rect2I&, const Rect2I&) = default;
};

/// Window pixel position (where no MFC type of that name exists).
struct CPoint {
    int x = 0, y = 0;
    friend constexpr bool operator==(const CPoint&, const CPoint&) = default;
};
