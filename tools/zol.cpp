// The zol command-line tool. `zol demo` runs the library over data it makes itself and
// prints what each step found; each step is one function so that it can grow.
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <zol/zol.h>

namespace {
using namespace ZOL;

void PrintVector(const char* label, const Vector3& v) {
    std::printf("  %-28s (%.6g, %.6g, %.6g)\n", label, v.x, v.y, v.z);
}

void DemoVectors() {
    std::printf("[vectors]\n");
    Vector3 v(3, 4, 12);
    const double length = v.Normalise();
    std::printf("  |(3, 4, 12)| = %g\n", length);
    PrintVector("unit vector", v);
    PrintVector("(1,0,0) x (0,1,0)", Vector3(1, 0, 0).CrossProduct(Vector3(0, 1, 0)));
    Vector2 w(1, 0);
    w.Rotate(ZOL_PI / 2);
    std::printf("  (1, 0) rotated 90 degrees clockwise = (%.3f, %.3f)\n", std::abs(w.x), w.y);
}

void DemoColors() {
    std::printf("[colours]\n");
    const Color4 c = Color4::Vector3ToColor4(Vector3(1.0, 0.5, 0.25));
    std::printf("  (1, 0.5, 0.25) -> rgba(%d, %d, %d, %d), packed 0x%08X\n", c.red, c.green, c.blue,
                c.alpha, static_cast<unsigned>(Color4::Color4ToInt(c)));
}

void DemoTransforms() {
    std::printf("[transforms]\n");
    Matrix4x4 rotation;
    rotation.GenerateVectorToVectorRotation(Vector3(1, 0, 0), Vector3(0, 0, 1));
    Matrix4x4 translation;
    translation.GenerateTranslation(Vector3(10, 20, 30));
    const Matrix4x4 pose = translation * rotation;
    const Vector3 p(1, 2, 3);
    const Vector3 moved = pose.TransformPoint(p);
    PrintVector("pose applied to (1, 2, 3)", moved);
    PrintVector("inverse pose brings it back", pose.AffineInverse().TransformPoint(moved));
}

void DemoPlaneAndBox() {
    std::printf("[plane and box]\n");
    const Plane3 plane(Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0));
    std::printf("  distance of (2, 3, 5) to the plane z = 0: %g\n",
                plane.SignedDistance(Vector3(2, 3, 5)));
    double t = 0;
    PrintVector("segment (0,0,1)-(0,0,-3) meets it at",
                plane.Intersection(Vector3(0, 0, 1), Vector3(0, 0, -3), &t));
    const Vector3 axes[3] = {Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(0, 0, 1)};
    const double half[3] = {1, 2, 3};
    const Obb box(Vector3(0, 0, 0), axes, half);
    std::vector<Vector3> corners;
    box.Get8CornerPoints(corners);
    PrintVector("box corner 7", corners[7]);
    std::printf("  (1, 2, 3) inside the box (on its corner): %s\n",
                box.IsPointInside(Vector3(1, 2, 3)) ? "yes" : "no");
}

void DemoProgress() {
    std::printf("[progress]\n");
    ResetApiProgress();
    PushProgressRange(0.2, 0.6);
    SetProgress(0.5);
    std::printf("  0.5 of the range [0.2, 0.6] is reported as %g\n", GetApiProgress());
    {
        ProgressSuspendScope nested;
        SetProgress(0.9);
    }
    std::printf("  a suspended nested write leaves it at %g\n", GetApiProgress());
    PopProgressRange();
    ResetApiProgress();
    std::printf("  threads used by parallel steps: %d\n", GetThreadCount());
}

void DemoLog() {
    std::printf("[log]\n");
    const std::string logName = "zol_demo_log.txt";
    LogSystem::SetLogFileName(logName);
    Matrix4x4 m;
    m.InitIdentityTransform();
    m.Print();
    Matrix4x4 target;
    target = Matrix4x4();  // empty right side: logged, target unchanged
    std::ifstream in(logName);
    std::string line;
    while (std::getline(in, line)) std::printf("  log: %s\n", line.c_str());
    LogSystem::SetLogFileName("tracklog.txt");
}

int RunDemo() {
    const double start = Profiler::GetTime();
    std::printf("zolc2017 demo\n");
    DemoVectors();
    DemoColors();
    DemoTransforms();
    DemoPlaneAndBox();
    DemoProgress();
    DemoLog();
    std::printf("done in %.3f s\n", Profiler::GetTime() - start);
    return 0;
}
}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zol: geometry processing with zolc2017"};
    app.require_subcommand(1);
    CLI::App* demo = app.add_subcommand("demo", "run the library on data it makes itself");
    CLI11_PARSE(app, argc, argv);
    if (demo->parsed()) return RunDemo();
    return 0;
}
