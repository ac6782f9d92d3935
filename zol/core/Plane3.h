// Plane a x + b y + c z + d = 0 with (a, b, c) its normal; whether the normal is unit
// length depends on the constructor used.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Plane3 {
public:
    /// All four coefficients 0.
    Plane3();
    /// Copies a, b, c, d from \p params (4 doubles).
    explicit Plane3(const double* params);
    /// Plane through \p point with normal \p normal as given (not normalised).
    Plane3(const Vector3& point, const Vector3& normal);
    /// Plane through three points; the normal (p1 - p0) x (p2 - p0) is normalised unless the
    /// points are degenerate, in which case it is kept as it is.
    Plane3(const Vector3& p0, const Vector3& p1, const Vector3& p2);

    /// Writes a, b, c, d to \p out (4 doubles).
    void GetParameters(double* out) const;
    /// \return (a, b, c).
    Vector3 GetNormal() const;
    /// \return d.
    double GetDistance() const;

    /// \return a px + b py + c pz + d (not divided by the normal's length).
    double SignedDistance(const Vector3& p) const;
    /// \return p - (p . n + d) n; the orthogonal projection when the normal is unit.
    Vector3 ProjectPoint(const Vector3& p) const;
    /// \return the unit direction of \p v projected into the plane; when the projection is
    ///         shorter than REAL_TOL, a log line and the unnormalised projection.
    Vector3 ProjectVector(const Vector3& v) const;
    /// Intersects the line through \p a and \p b with the plane. A line parallel to the
    /// plane gives a far point rather than a failure (the denominator is kept at least
    /// REAL_TOL in magnitude).
    /// \param[out] t  when not null, the parameter with result = t a + (1 - t) b.
    /// \return the intersection point.
    Vector3 Intersection(const Vector3& a, const Vector3& b, double* t) const;

private:
    double mA;
    double mB;
    double mC;
    double mD;
};

}  // namespace ZOL
