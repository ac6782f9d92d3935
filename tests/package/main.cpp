// Host program built against the installed package: includes the umbrella header,
// calls a few exported functions and checks their answers. Returns 0 when all hold.
#include <zol/zol.h>

#include <cstdio>

namespace {
int gFailures = 0;

void Check(bool ok, const char* what) {
    if (!ok) {
        std::printf("FAILED: %s\n", what);
        ++gFailures;
    }
}
}  // namespace

int main() {
    using namespace ZOL;
    ZOL::LogSystem::SetLogFileName("host_log.txt");

    Vector3 v(3, 4, 0);
    Check(v.Normalise() == 5.0, "Vector3::Normalise returns the prior length");
    Check(Color4::Color4ToInt(Color4(1, 2, 3, 4)) == 0x04030201, "Color4ToInt packs red low");

    Matrix4x4 m;
    m.GenerateTranslation(Vector3(1, 2, 3));
    const Matrix4x4 inv = m.AffineInverse();
    Check(inv.TransformPoint(Vector3(1, 2, 3)).Length() == 0.0, "AffineInverse undoes it");

    const Plane3 plane(Vector3(0, 0, 1), Vector3(0, 0, 1));
    Check(plane.SignedDistance(Vector3(0, 0, 3)) == 2.0, "Plane3::SignedDistance");

    SetProgress(0.5);
    Check(GetApiProgress() == 0.5, "progress is readable");
    ResetApiProgress();
    SetThreadCount(3);
    Check(GetThreadCount() == 3, "thread count is taken as given");
    Check(Profiler::GetTime() == 0.0, "first profiler call is 0");
    Check(REAL_TOL == 1e-15 && RESULT_INVALID_INPUT == -2, "constants");

    std::printf("%s\n", gFailures == 0 ? "package host: all checks passed" : "package host failed");
    return gFailures == 0 ? 0 : 1;
}
