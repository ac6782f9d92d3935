// 2D vector of doubles, used for texture and image-plane coordinates.
#pragma once

#include <cmath>

#include <zol/runtime/Constants.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Vector2 {
public:
    Vector2() : x(0.0), y(0.0) {}
    Vector2(double vx, double vy) : x(vx), y(vy) {}

    void SetValue(double vx, double vy) {
        x = vx;
        y = vy;
    }
    /// 0, 1 are x, y; no range check.
    double& operator[](int i) { return (&x)[i]; }
    double operator[](int i) const { return (&x)[i]; }

    Vector2 operator+(const Vector2& o) const { return Vector2(x + o.x, y + o.y); }
    Vector2 operator-(const Vector2& o) const { return Vector2(x - o.x, y - o.y); }
    Vector2 operator-() const { return Vector2(-x, -y); }
    Vector2 operator*(double s) const { return Vector2(x * s, y * s); }
    /// Plain division; no guard against 0.
    Vector2 operator/(double s) const { return Vector2(x / s, y / s); }
    Vector2& operator+=(const Vector2& o) {
        x += o.x;
        y += o.y;
        return *this;
    }
    Vector2& operator-=(const Vector2& o) {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    Vector2& operator*=(double s) {
        x *= s;
        y *= s;
        return *this;
    }
    Vector2& operator/=(double s) {
        x /= s;
        y /= s;
        return *this;
    }

    /// Dot product.
    double operator*(const Vector2& o) const { return x * o.x + y * o.y; }
    /// The z of the 3D cross product: x * o.y - y * o.x.
    double CrossProduct(const Vector2& o) const { return x * o.y - y * o.x; }

    double Length() const { return std::sqrt(x * x + y * y); }
    double LengthSquared() const { return x * x + y * y; }
    double Distance(const Vector2& o) const { return (*this - o).Length(); }
    double DistanceSquared(const Vector2& o) const { return (*this - o).LengthSquared(); }

    /// Divides by the length when it is at least REAL_TOL (unlike Vector3, which needs
    /// it strictly above). \return the length before normalisation.
    double Normalise() {
        const double length = Length();
        if (length >= REAL_TOL) {
            x /= length;
            y /= length;
        }
        return length;
    }

    /// Rotates by \p angle radians clockwise.
    void Rotate(double angle) {
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        const double nx = x * c + y * s;
        const double ny = y * c - x * s;
        x = nx;
        y = ny;
    }

    /// Tolerant equality: the distance is below REAL_TOL.
    bool operator==(const Vector2& o) const { return Distance(o) < REAL_TOL; }
    bool operator!=(const Vector2& o) const { return !(*this == o); }
    /// Strict order for sorted containers: false for tolerantly equal vectors, otherwise
    /// lexicographic on x, y.
    bool operator<(const Vector2& o) const {
        if (*this == o) return false;
        if (x != o.x) return x < o.x;
        return y < o.y;
    }

    double x;
    double y;
};

inline Vector2 operator*(double s, const Vector2& v) { return v * s; }

}  // namespace ZOL
