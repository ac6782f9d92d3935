// The demo's range scanner: ray-casts an object through a grid of cells, with noise along
// the rays and the dropouts of grazing surfaces, into a grid cloud in the scanner's own
// coordinates; and the random poses the scans are delivered in.
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <zol/runtime/Constants.h>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

namespace {
// Signed area test of pixel centre (x, y) against the projected edge a -> b.
double Edge(const double* a, const double* b, double x, double y) {
    return (b[0] - a[0]) * (y - a[1]) - (b[1] - a[1]) * (x - a[0]);
}
}  // namespace

Matrix4x4 LookFrom(double azimuth, double elevation, double distance, const Vector3& target) {
    const double a = azimuth * ONE_RADIAN, e = elevation * ONE_RADIAN;
    const Vector3 back(std::cos(e) * std::sin(a), std::sin(e), std::cos(e) * std::cos(a));
    const Vector3 eye = target + back * distance;
    Vector3 right = Vector3(0, 1, 0).CrossProduct(back);
    right.Normalise();
    const Vector3 up = back.CrossProduct(right);
    Matrix4x4 pose;
    pose.InitIdentityTransform();
    for (int r = 0; r < 3; ++r) {
        pose.SetValue(r, 0, right[r]);
        pose.SetValue(r, 1, up[r]);
        pose.SetValue(r, 2, back[r]);
        pose.SetValue(r, 3, eye[r]);
    }
    return pose;
}

std::unique_ptr<PointCloud> ScanObject(const TriMesh& object,
                                       const ScannerView& view,
                                       unsigned seed) {
    TriMesh& mesh = const_cast<TriMesh&>(object);  // the getters are not const
    const Matrix4x4 toCamera = view.cameraToWorld.AffineInverse();
    const int w = view.width, h = view.height;
    // Camera-space ray of a cell: ((x + 0.5 - w/2) * s, (y + 0.5 - h/2) * s, -1).
    const double s = std::tan(0.5 * view.fieldOfView * ONE_RADIAN) / (0.5 * w);

    std::vector<Vector3> camera(mesh.GetVertexCount());
    std::vector<std::array<double, 2>> pixel(camera.size());
    for (int v = 0; v < mesh.GetVertexCount(); ++v) {
        camera[v] = toCamera.TransformPoint(mesh.GetVertexCoord(v));
        const double depth = std::max(-camera[v].z, 1e-9);
        pixel[v] = {camera[v].x / depth / s + 0.5 * w, camera[v].y / depth / s + 0.5 * h};
    }
    // Nearest hit per cell: ray parameter and the triangle's unit normal.
    std::vector<double> hitT(static_cast<size_t>(w) * h, std::numeric_limits<double>::infinity());
    std::vector<Vector3> hitNormal(hitT.size());
    int ids[3];
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        mesh.GetTriangleVertexIds(t, ids);
        const Vector3 &a = camera[ids[0]], &b = camera[ids[1]], &c = camera[ids[2]];
        if (a.z >= 0 || b.z >= 0 || c.z >= 0) continue;  // behind the scanner
        const double* pa = pixel[ids[0]].data();
        const double* pb = pixel[ids[1]].data();
        const double* pc = pixel[ids[2]].data();
        const int x0 = std::max(0, static_cast<int>(std::floor(std::min({pa[0], pb[0], pc[0]}))));
        const int x1 =
            std::min(w - 1, static_cast<int>(std::ceil(std::max({pa[0], pb[0], pc[0]}))));
        const int y0 = std::max(0, static_cast<int>(std::floor(std::min({pa[1], pb[1], pc[1]}))));
        const int y1 =
            std::min(h - 1, static_cast<int>(std::ceil(std::max({pa[1], pb[1], pc[1]}))));
        Vector3 normal = (b - a).CrossProduct(c - a);
        if (normal.Normalise() == 0.0) continue;
        for (int y = y0; y <= y1; ++y) {
            for (int x = x0; x <= x1; ++x) {
                const double px = x + 0.5, py = y + 0.5;
                const double e0 = Edge(pa, pb, px, py), e1 = Edge(pb, pc, px, py),
                             e2 = Edge(pc, pa, px, py);
                if (!((e0 >= 0 && e1 >= 0 && e2 >= 0) || (e0 <= 0 && e1 <= 0 && e2 <= 0))) continue;
                const Vector3 ray((px - 0.5 * w) * s, (py - 0.5 * h) * s, -1.0);
                const double along = normal * ray;
                if (along == 0.0) continue;
                const double hit = (normal * a) / along;
                const size_t cell = static_cast<size_t>(y) * w + x;
                if (hit > 0.0 && hit < hitT[cell]) {
                    hitT[cell] = hit;
                    hitNormal[cell] = normal;
                }
            }
        }
    }

    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0.0, view.depthNoise);
    const double grazing = std::cos(75.0 * ONE_RADIAN);
    auto scan = std::make_unique<PointCloud>(false, false, true);
    scan->InitGrid(w, h);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const size_t cell = static_cast<size_t>(y) * w + x;
            if (!std::isfinite(hitT[cell])) continue;
            Vector3 ray((x + 0.5 - 0.5 * w) * s, (y + 0.5 - 0.5 * h) * s, -1.0);
            const double length = ray.Normalise();
            if (std::abs(hitNormal[cell] * ray) < grazing) continue;
            scan->SetGridCoord(x, y, ray * (hitT[cell] * length + noise(random)));
        }
    }
    return scan;
}

Matrix4x4 RandomPose(unsigned seed, double maxShift) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double u1 = unit(random), u2 = 2.0 * ZOL_PI * unit(random),
                 u3 = 2.0 * ZOL_PI * unit(random);
    const double qx = std::sqrt(1 - u1) * std::sin(u2), qy = std::sqrt(1 - u1) * std::cos(u2);
    const double qz = std::sqrt(u1) * std::sin(u3), qw = std::sqrt(u1) * std::cos(u3);
    const double r[3][3] = {
        {1 - 2 * (qy * qy + qz * qz), 2 * (qx * qy - qz * qw), 2 * (qx * qz + qy * qw)},
        {2 * (qx * qy + qz * qw), 1 - 2 * (qx * qx + qz * qz), 2 * (qy * qz - qx * qw)},
        {2 * (qx * qz - qy * qw), 2 * (qy * qz + qx * qw), 1 - 2 * (qx * qx + qy * qy)}};
    Matrix4x4 pose;
    pose.InitIdentityTransform();
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) pose.SetValue(i, j, r[i][j]);
        pose.SetValue(i, 3, maxShift * (2.0 * unit(random) - 1.0));
    }
    return pose;
}

}  // namespace zoldemo
