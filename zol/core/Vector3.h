// 3D vector of doubles: the coordinate, normal and colour type of the whole library.
// Arithmetic is inline because it sits in every hot loop.
#pragma once

#include <cmath>

#include <zol/runtime/Constants.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Vector3 {
public:
    Vector3() : x(0.0), y(0.0), z(0.0) {}
    Vector3(double vx, double vy, double vz) : x(vx), y(vy), z(vz) {}

    void SetValue(double vx, double vy, double vz) {
        x = vx;
        y = vy;
        z = vz;
    }
    /// 0, 1, 2 are x, y, z; no range check.
    double& operator[](int i) { return (&x)[i]; }
    double operator[](int i) const { return (&x)[i]; }

    Vector3 operator+(const Vector3& o) const { return Vector3(x + o.x, y + o.y, z + o.z); }
    Vector3 operator-(const Vector3& o) const { return Vector3(x - o.x, y - o.y, z - o.z); }
    Vector3 operator-() const { return Vector3(-x, -y, -z); }
    Vector3 operator*(double s) const { return Vector3(x * s, y * s, z * s); }
    /// Plain division; no guard against 0.
    Vector3 operator/(double s) const { return Vector3(x / s, y / s, z / s); }
    Vector3& operator+=(const Vector3& o) {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    Vector3& operator-=(const Vector3& o) {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    Vector3& operator*=(double s) {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    Vector3& operator/=(double s) {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }

    /// Dot product.
    double operator*(const Vector3& o) const { return x * o.x + y * o.y + z * o.z; }
    Vector3 CrossProduct(const Vector3& o) const {
        return Vector3(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x);
    }

    double Length() const { return std::sqrt(x * x + y * y + z * z); }
    double LengthSquared() const { return x * x + y * y + z * z; }
    double Distance(const Vector3& o) const { return (*this - o).Length(); }
    double DistanceSquared(const Vector3& o) const { return (*this - o).LengthSquared(); }

    /// Divides by the length when it exceeds REAL_TOL (strictly).
    /// \return the length before normalisation, also when the vector was left unchanged.
    double Normalise() {
        const double length = Length();
        if (length > REAL_TOL) {
            x /= length;
            y /= length;
            z /= length;
        }
        return length;
    }

    /// Tolerant equality: the distance is below REAL_TOL.
    bool operator==(const Vector3& o) const { return Distance(o) < REAL_TOL; }
    bool operator!=(const Vector3& o) const { return !(*this == o); }
    /// Strict order for sorted containers: never true for tolerantly equal vectors,
    /// otherwise lexicographic on x, y, z.
    bool operator<(const Vector3& o) const {
        if (x == o.x && y == o.y && z == o.z) return false;
        if (*this == o) return false;
        if (x != o.x) return x < o.x;
        if (y != o.y) return y < o.y;
        return z < o.z;
    }

    double x;
    double y;
    double z;
};

inline Vector3 operator*(double s, const Vector3& v) { return v * s; }

}  // namespace ZOL
