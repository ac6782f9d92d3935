// Plane3: construction, distances, projections and line intersection.
#include <zol/core/Plane3.h>

#include <cmath>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

Plane3::Plane3() : mA(0.0), mB(0.0), mC(0.0), mD(0.0) {}

Plane3::Plane3(const double* params) : mA(params[0]), mB(params[1]), mC(params[2]), mD(params[3]) {}

Plane3::Plane3(const Vector3& point, const Vector3& normal)
    : mA(normal.x), mB(normal.y), mC(normal.z), mD(-(point * normal)) {}

Plane3::Plane3(const Vector3& p0, const Vector3& p1, const Vector3& p2) {
    Vector3 normal = (p1 - p0).CrossProduct(p2 - p0);
    normal.Normalise();
    mA = normal.x;
    mB = normal.y;
    mC = normal.z;
    mD = -(p0 * normal);
}

void Plane3::GetParameters(double* out) const {
    out[0] = mA;
    out[1] = mB;
    out[2] = mC;
    out[3] = mD;
}

Vector3 Plane3::GetNormal() const { return Vector3(mA, mB, mC); }

double Plane3::GetDistance() const { return mD; }

double Plane3::SignedDistance(const Vector3& p) const {
    return mA * p.x + mB * p.y + mC * p.z + mD;
}

Vector3 Plane3::ProjectPoint(const Vector3& p) const {
    const Vector3 n = GetNormal();
    return p - n * (p * n + mD);
}

Vector3 Plane3::ProjectVector(const Vector3& v) const {
    Vector3 projected = ProjectPoint(v) - ProjectPoint(Vector3());
    if (projected.Length() < REAL_TOL) {
        LogLine("Plane3::ProjectVector: warning: vec3.Length < REAL_TOL");
        return projected;
    }
    projected.Normalise();
    return projected;
}

Vector3 Plane3::Intersection(const Vector3& a, const Vector3& b, double* t) const {
    const Vector3 n = GetNormal();
    double denom = (a - b) * n;
    if (std::abs(denom) < REAL_TOL) denom = (denom < 0.0) ? -REAL_TOL : REAL_TOL;
    const double param = -(b * n + mD) / denom;
    if (t != nullptr) *t = param;
    return a * param + b * (1.0 - param);
}

}  // namespace ZOL
