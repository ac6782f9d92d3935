// Demo steps over the value types, the progress value and the log.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <vector>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

namespace {
void PrintVector(const char* label, const Vector3& v) {
    std::printf("  %-34s (%.6g, %.6g, %.6g)\n", label, v.x, v.y, v.z);
}

bool ShowVectorsAndColours() {
    Vector3 v(3, 4, 12);
    const double length = v.Normalise();
    std::printf("  |(3, 4, 12)| = %g\n", length);
    PrintVector("(1,0,0) x (0,1,0)", Vector3(1, 0, 0).CrossProduct(Vector3(0, 1, 0)));
    Vector2 w(1, 0);
    w.Rotate(ZOL_PI / 2);
    std::printf("  %-34s (%.3f, %.3f)\n", "(1, 0) turned 90 degrees clockwise", std::abs(w.x), w.y);
    const Color4 c = Color4::Vector3ToColor4(Vector3(1.0, 0.5, 0.25));
    std::printf("  colour (1, 0.5, 0.25) -> rgba(%d, %d, %d, %d), packed 0x%08X\n", c.red, c.green,
                c.blue, c.alpha, static_cast<unsigned>(Color4::Color4ToInt(c)));
    return length == 13.0 && Color4::Color4ToInt(c) == static_cast<int>(0xFF3F7FFFu);
}

bool ShowTransforms() {
    Matrix4x4 rotation;
    rotation.GenerateVectorToVectorRotation(Vector3(1, 0, 0), Vector3(0, 0, 1));
    Matrix4x4 translation;
    translation.GenerateTranslation(Vector3(10, 20, 30));
    const Matrix4x4 pose = translation * rotation;
    const Vector3 p(1, 2, 3);
    const Vector3 moved = pose.TransformPoint(p);
    const Vector3 back = pose.AffineInverse().TransformPoint(moved);
    PrintVector("pose applied to (1, 2, 3)", moved);
    PrintVector("the inverse pose brings it back", back);
    return back.Distance(p) < 1e-12;
}

bool ShowPlaneAndBox() {
    const Plane3 plane(Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0));
    std::printf("  (2, 3, 5) lies %g above the plane z = 0\n",
                plane.SignedDistance(Vector3(2, 3, 5)));
    double t = 0;
    PrintVector("segment z = 1 .. -3 meets it at",
                plane.Intersection(Vector3(0, 0, 1), Vector3(0, 0, -3), &t));
    const Vector3 axes[3] = {Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(0, 0, 1)};
    const double half[3] = {1, 2, 3};
    const Obb box(Vector3(0, 0, 0), axes, half);
    std::vector<Vector3> corners;
    box.Get8CornerPoints(corners);
    PrintVector("corner 7 of the box 2 x 4 x 6", corners[7]);
    return box.IsPointInside(corners[7]) && t == 0.75;
}
}  // namespace

StepResult DemoValueTypes(DemoContext&) {
    const bool ok = ShowVectorsAndColours() && ShowTransforms() && ShowPlaneAndBox();
    return {ok, "vectors, colours, transforms, plane and box"};
}

StepResult DemoProgress(DemoContext&) {
    ResetApiProgress();
    PushProgressRange(0.2, 0.6);
    SetProgress(0.5);
    const double mapped = GetApiProgress();
    {
        ProgressSuspendScope nested;  // a nested operation's writes do not show
        SetProgress(0.9);
    }
    const double kept = GetApiProgress();
    PopProgressRange();
    ResetApiProgress();
    std::printf("  0.5 of the range [0.2, 0.6] is reported as %g; a suspended write keeps %g\n",
                mapped, kept);
    std::printf("  parallel steps use %d threads (processor count)\n", GetThreadCount());
    return {std::abs(mapped - 0.4) < 1e-15 && kept == mapped,
            Format("range mapping %g, %d threads", mapped, GetThreadCount())};
}

StepResult DemoLog(DemoContext& context) {
    const std::string logName = (context.workDir / "matrix_log.txt").string();
    LogSystem::SetLogFileName(logName);
    Matrix4x4 m;
    m.InitIdentityTransform();
    m.Print();
    Matrix4x4 target;
    target = Matrix4x4();  // an empty right side is logged and leaves the target as it was
    LogSystem::SetLogFileName((context.workDir / "tracklog.txt").string());
    std::ifstream in(logName);
    std::string line;
    int count = 0;
    while (std::getline(in, line)) {
        std::printf("  log: %s\n", line.c_str());
        ++count;
    }
    return {count == 6, Format("%d log lines", count)};
}

}  // namespace zoldemo
