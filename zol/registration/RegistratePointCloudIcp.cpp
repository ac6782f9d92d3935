// Point-to-plane ICP with optional landmark marks: the public entry, the preparation of
// samples, normals, tolerance and marks, and the tries of linearised six-unknown steps.
#include <zol/registration/RegistratePointCloud.h>

#include <algorithm>
#include <cmath>

#include <zol/core/IPointList.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpRegistrationRecords.h>
#include <zol/registration/RegistrationInternal.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/GeneralMatrixInternal.h>
#include <zol/runtime/LeastSquareSolverInternal.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/runtime/Profiler.h>

namespace ZOL {

namespace {

constexpr int kInitialIterationLimit = 15;
constexpr int kMaxIterationLimit = 30;
constexpr int kAutoSampleMinimum = 1024;

/// A rigid transform as a plain 3 x 4 block, for the per-sample loops.
struct Rigid {
    double m[12];

    explicit Rigid(const Matrix4x4& t) {
        for (int i = 0; i < 12; ++i) m[i] = t.GetValue(i);
    }
    void Apply(const double* p, double* out) const {
        for (int r = 0; r < 3; ++r) {
            out[r] = m[4 * r] * p[0] + m[4 * r + 1] * p[1] + m[4 * r + 2] * p[2] + m[4 * r + 3];
        }
    }
    void Rotate(const double* v, double* out) const {
        for (int r = 0; r < 3; ++r) {
            out[r] = m[4 * r] * v[0] + m[4 * r + 1] * v[1] + m[4 * r + 2] * v[2];
        }
    }
};

bool AllFinite(const std::vector<double>& values) {
    for (double v : values) {
        if (!std::isfinite(v)) return false;
    }
    return true;
}

/// The small rotation (a, b, c) about x, y, z followed by the translation, as
/// Rz(c) * Ry(b) * Rx(a) written out.
Matrix4x4 DeltaTransform(const std::vector<double>& x) {
    const double sa = std::sin(x[0]), ca = std::cos(x[0]);
    const double sb = std::sin(x[1]), cb = std::cos(x[1]);
    const double sc = std::sin(x[2]), cc = std::cos(x[2]);
    const double values[16] = {cc * cb,
                               cc * sb * sa - sc * ca,
                               sc * sa + cc * sb * ca,
                               x[3],
                               sc * cb,
                               sc * sb * sa + cc * ca,
                               sc * sb * ca - cc * sa,
                               x[4],
                               -sb,
                               cb * sa,
                               cb * ca,
                               x[5],
                               0.0,
                               0.0,
                               0.0,
                               1.0};
    Matrix4x4 delta(0.0);
    for (int i = 0; i < 16; ++i) delta.SetValue(i, values[i]);
    return delta;
}

/// Everything one ICP run works on, prepared once.
struct IcpWork {
    int sampleCount = 0;
    std::vector<double> fromXyz;      ///< sample coordinates, 3 per sample
    std::vector<double> fromNormals;  ///< sample normals, 3 per sample
    std::vector<double> refXyz;       ///< every ref point
    std::vector<double> refNormals;   ///< every ref normal (with hasNormal)
    std::vector<Vector3> markRef;     ///< matched marks, pairwise aligned
    std::vector<Vector3> markFrom;
    double tol = 0.0;
    bool hasNormal = false;
};

/// Fills the matched mark lists: every pair closer (raw) than the mark tolerance.
void MatchMarks(const std::vector<Vector3>* refMarks,
                const std::vector<Vector3>* fromMarks,
                IcpWork& work) {
    if (!refMarks || !fromMarks || refMarks->size() < 2 || fromMarks->size() < 2) return;
    const double markDistanceTol =
        (CalculateMarkSpacing(*refMarks) + CalculateMarkSpacing(*fromMarks)) / 100.0;
    LogAt(LOG_TRACE, " markDistanceTol = ", markDistanceTol);
    for (const Vector3& r : *refMarks) {
        for (const Vector3& f : *fromMarks) {
            if (r.Distance(f) < markDistanceTol) {
                work.markRef.push_back(r);
                work.markFrom.push_back(f);
            }
        }
    }
    LogAt(LOG_TRACE, "ICPRegistrateWithNormal: valid mark count = ", work.markRef.size());
}

/// The iteration state that lives across tries.
struct IcpState {
    Matrix4x4 current;  ///< init composed with every accepted delta
    int iterationLimit = kInitialIterationLimit;
    bool stop = false;
};

/// One try: iterations until the limit or an early stop. Writes the accumulated
/// correction into \p result.
void RunTry(const IcpWork& work, Ann& refAnn, IcpState& state, Matrix4x4& result) {
    const int n = work.sampleCount;
    const int markPairs = static_cast<int>(work.markRef.size());
    const double tol2 = work.tol * work.tol;
    const double tinyStep = std::max(work.tol * 1e-10, 1e-15);
    const double smallStep = work.tol * 1e-5;
    std::vector<double> moved(3 * static_cast<size_t>(n));
    std::vector<int> nearest(n);
    std::vector<double> nearestDistance(n);
    std::vector<int> accepted;
    accepted.reserve(n);
    std::vector<double> rhs;
    int relax = 0;
    for (int it = 0; it < state.iterationLimit; ++it) {
        const bool wide = it < state.iterationLimit / 2 || state.iterationLimit > 20;
        const double limit2 = (relax + (wide ? 5 : 1)) * tol2;
        const double cosLimit = std::cos((wide ? 30.0 : 10.0) * ONE_RADIAN);
        const Rigid pose(state.current);
        for (int s = 0; s < n; ++s) pose.Apply(&work.fromXyz[3 * s], &moved[3 * s]);
        if (refAnn.FindNearestNeighbors(moved.data(), n, 1, nearest.data(),
                                        nearestDistance.data()) != RESULT_OK) {
            LogAt(LOG_FAILURE,
                  "ICPRegistrateWithNormal Ann::FindNearestNeighbors failed, itrId=", it);
            continue;
        }
        accepted.clear();
        for (int s = 0; s < n; ++s) {
            if (nearestDistance[s] > limit2) continue;
            if (work.hasNormal) {
                double turned[3];
                pose.Rotate(&work.fromNormals[3 * s], turned);
                const double* refNormal = &work.refNormals[3 * static_cast<size_t>(nearest[s])];
                const double dot =
                    refNormal[0] * turned[0] + refNormal[1] * turned[1] + refNormal[2] * turned[2];
                if (dot < cosLimit) continue;
            }
            accepted.push_back(s);
        }
        const int count = static_cast<int>(accepted.size());
        if (count * 100 < 2 * n && markPairs < 3) {
            LogLine("ICPRegistrateWithNormal correspondCount size is small: ", count, " continue");
            relax = 2 * relax + 1;
            state.iterationLimit = std::min(state.iterationLimit + 1, kMaxIterationLimit);
            continue;
        }
        relax /= 2;

        const int rows = count + 3 * markPairs;
        GeneralMatrix a(rows, 6);
        double* column = a.GetData();  // column-major: column c starts at c * rows
        rhs.assign(rows, 0.0);
        for (int r = 0; r < count; ++r) {
            const int s = accepted[r];
            const double* p = &moved[3 * s];
            double nv[3];
            pose.Rotate(&work.fromNormals[3 * s], nv);
            const double* q = &work.refXyz[3 * static_cast<size_t>(nearest[s])];
            column[r] = p[1] * nv[2] - p[2] * nv[1];
            column[rows + r] = p[2] * nv[0] - p[0] * nv[2];
            column[2 * rows + r] = p[0] * nv[1] - p[1] * nv[0];
            column[3 * rows + r] = nv[0];
            column[4 * rows + r] = nv[1];
            column[5 * rows + r] = nv[2];
            rhs[r] = (q[0] - p[0]) * nv[0] + (q[1] - p[1]) * nv[1] + (q[2] - p[2]) * nv[2];
        }
        const double w = (static_cast<double>(count) / (markPairs + 1)) / 10.0 + 1.0;
        for (int m = 0; m < markPairs; ++m) {
            const Vector3 p = state.current.TransformPoint(work.markFrom[m]);
            const Vector3& r = work.markRef[m];
            const int rx = count + 3 * m, ry = rx + 1, rz = rx + 2;
            column[rows + rx] = w * p.z;  // x row: b, c, tx
            column[2 * rows + rx] = -w * p.y;
            column[3 * rows + rx] = w;
            rhs[rx] = w * (r.x - p.x);
            column[ry] = -w * p.z;  // y row: a, c, ty
            column[2 * rows + ry] = w * p.x;
            column[4 * rows + ry] = w;
            rhs[ry] = w * (r.y - p.y);
            column[rz] = w * p.y;  // z row: a, b, tz
            column[rows + rz] = -w * p.x;
            column[5 * rows + rz] = w;
            rhs[rz] = w * (r.z - p.z);
        }
        LeastSquareGeneralLDLSolver solver;
        if (solver.Factorize(a) != RESULT_OK) {
            LogAt(
                LOG_FAILURE,
                "ICPRegistrateWithNormal LeastSquareGeneralLDLSolver Factorize failed, itrId=", it);
            continue;
        }
        std::vector<double> x;
        if (solver.Solve(rhs, x) != RESULT_OK) {
            LogAt(LOG_FAILURE,
                  "ICPRegistrateWithNormal LeastSquareGeneralLDLSolver Solve failed, itrId=", it);
            continue;
        }
        const Matrix4x4 delta = DeltaTransform(x);
        LogAt(LOG_TRACE, "ICPRegistrateWithNormal deltaTransform itrId=", it,
              " tol=", std::sqrt(limit2),
              " angle: ", std::sqrt(x[0] * x[0] + x[1] * x[1] + x[2] * x[2]) / ONE_RADIAN);
        result = delta * result;
        state.current = delta * state.current;
        const double tx = std::abs(x[3]), ty = std::abs(x[4]), tz = std::abs(x[5]);
        if (tx < tinyStep && ty < tinyStep && tz < tinyStep) {
            LogLine("ICPRegistrateWithNormal early stop itrId=", it);
            state.stop = true;
            return;
        }
        state.stop = tx < smallStep && ty < smallStep && tz < smallStep;
    }
}

/// Steps 3 to 8: index, samples, normals, tolerance and marks. On success \p work is
/// ready for the tries.
int PrepareIcp(const IPointCloud* pointCloudRef,
               PointCloudInfo& refInfo,
               const IPointCloud* pointCloudFrom,
               PointCloudInfo& fromInfo,
               int fromSampleCount,
               const int* fromSampleIds,
               const double* distanceTol,
               IcpWork& work) {
    double time = Profiler::GetTime();
    int status = refInfo.InitAnn(pointCloudRef, 3);
    if (status != RESULT_OK)
        return LogFailure(status, "ICPRegistrateWithNormal Ann initialize failed");
    LogAt(LOG_TRACE, "ICPRegistrateWithNormal ann init time: ", Profiler::GetTime() - time);
    SetProgress(0.2);

    time = Profiler::GetTime();
    if (fromSampleCount < 0) {
        return LogFailure(RESULT_INVALID_INPUT, "invalid fromSampleCount: ", fromSampleCount);
    }
    const int fromCount = pointCloudFrom->GetPointCount();
    int count = fromSampleCount;
    if (count == 0) count = std::max(fromCount / 1000, kAutoSampleMinimum);
    count = std::min(count, fromCount);
    if (fromSampleIds && fromSampleCount == 0) {
        // The list's length is the count; an automatic count could read past its end.
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrateWithNormal fromSampleIds given with fromSampleCount 0");
    }
    std::vector<int> ids;
    if (fromSampleIds) {
        ids.assign(fromSampleIds, fromSampleIds + count);
        for (int id : ids) {
            if (id < 0 || id >= fromCount) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "ICPRegistrateWithNormal invalid fromSampleIds: ", id);
            }
        }
    } else {
        status = work.hasNormal ? FastGeometrySample(pointCloudFrom, count, &ids, 200, 0.3, 9, 1)
                                : FastUniformSample(pointCloudFrom, count, &ids, 200);
        if (status != RESULT_OK) {
            return LogFailure(RESULT_STEP_FAIL, "ICPRegistrate sample pointCloudFrom failed");
        }
    }
    LogAt(LOG_TRACE, "ICPRegistrateWithNormal sample time: ", Profiler::GetTime() - time);
    SetProgress(0.4);

    work.sampleCount = count;
    PointCloudPointList fromList(pointCloudFrom);
    SampledPointList sampleList(&fromList, ids);
    CopyPointListCoords(&sampleList, &work.fromXyz);
    if (work.hasNormal) {
        CopyPointListNormals(&sampleList, &work.fromNormals);
    } else {
        std::vector<Vector3> normals;
        status = ComputeSamplePointNormal(pointCloudFrom, fromInfo, count, ids.data(), &normals);
        if (status != RESULT_OK) return status;
        work.fromNormals.resize(3 * static_cast<size_t>(count));
        for (int s = 0; s < count; ++s) {
            for (int a = 0; a < 3; ++a) work.fromNormals[3 * s + a] = normals[s][a];
        }
    }

    time = Profiler::GetTime();
    double tol = 0.0;
    if (distanceTol) {
        tol = *distanceTol;
    } else {
        status = FastCalculateDistanceTol(pointCloudRef, refInfo, 3, &tol);
        if (status != RESULT_OK) return status;
    }
    work.tol = std::max(tol, 1e-15);
    LogAt(LOG_TRACE,
          "ICPRegistrateWithNormal CalculateDistanceTol time: ", Profiler::GetTime() - time);
    SetProgress(0.6);
    return RESULT_OK;
}

}  // namespace

int RegistratePointCloud::ICPRegistrate(const IPointCloud* pointCloudRef,
                                        const std::vector<Vector3>* refMarks,
                                        const IPointCloud* pointCloudFrom,
                                        const std::vector<Vector3>* fromMarks,
                                        Matrix4x4* resultTransform,
                                        const Matrix4x4* initTransform,
                                        bool hasNormal) {
    PointCloudInfo refInfo;
    PointCloudInfo fromInfo;
    return _ICPRegistrate(pointCloudRef, refInfo, refMarks, pointCloudFrom, fromInfo, fromMarks,
                          resultTransform, initTransform, hasNormal, 0, nullptr, nullptr, 10);
}

int RegistratePointCloud::_ICPRegistrate(const IPointCloud* pointCloudRef,
                                         PointCloudInfo& refInfo,
                                         const std::vector<Vector3>* refMarks,
                                         const IPointCloud* pointCloudFrom,
                                         PointCloudInfo& fromInfo,
                                         const std::vector<Vector3>* fromMarks,
                                         Matrix4x4* resultTransform,
                                         const Matrix4x4* initTransform,
                                         bool hasNormal,
                                         int fromSampleCount,
                                         const int* fromSampleIds,
                                         const double* distanceTol,
                                         int tryCount) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudRegistrationICP>(
        pointCloudRef, refMarks, pointCloudFrom, fromMarks, resultTransform, initTransform,
        hasNormal, fromSampleCount, dumpfield::IdArray::Arg{fromSampleIds, fromSampleCount},
        distanceTol, tryCount);  // dump hook
    if (pointCloudRef == nullptr || pointCloudFrom == nullptr || resultTransform == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrate: pointCloudRef == NULL || pointCloudFrom == NULL || "
                          "resultTransform == NULL");
    }
    const double startTime = Profiler::GetTime();
    if (pointCloudFrom->GetPointCount() < 3 || pointCloudRef->GetPointCount() < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrateWithNormal fromPointCount < 3 || refPointCount < 3");
    }
    if (hasNormal && (!pointCloudRef->HasNormal() || !pointCloudFrom->HasNormal())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrateWithNormal hasNormal == true but a cloud has no normal");
    }
    // A tolerance below 1e-15 (negative ones too) is raised to 1e-15 further down; only
    // NaN, which no comparison can order, is refused.
    if (distanceTol && std::isnan(*distanceTol)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrateWithNormal invalid distanceTol: ", *distanceTol);
    }
    IcpWork work;
    work.hasNormal = hasNormal;
    PointCloudPointList refList(pointCloudRef);
    CopyPointListCoords(&refList, &work.refXyz);
    if (!AllFinite(work.refXyz)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ICPRegistrateWithNormal pointCloudRef has a non-finite coordinate");
    }
    {
        std::vector<double> fromXyz;
        PointCloudPointList fromList(pointCloudFrom);
        CopyPointListCoords(&fromList, &fromXyz);
        if (!AllFinite(fromXyz)) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "ICPRegistrateWithNormal pointCloudFrom has a non-finite coordinate");
        }
    }
    if (hasNormal) CopyPointListNormals(&refList, &work.refNormals);

    int status = PrepareIcp(pointCloudRef, refInfo, pointCloudFrom, fromInfo, fromSampleCount,
                            fromSampleIds, distanceTol, work);
    if (status != RESULT_OK) return status;
    MatchMarks(refMarks, fromMarks, work);

    resultTransform->InitIdentityTransform();
    IcpState state;
    state.current.InitIdentityTransform();
    if (initTransform) state.current = *initTransform;
    LogAt(LOG_TRACE, "ICPRegistrateWithNormal prepare time: ", Profiler::GetTime() - startTime);

    const int tries = std::max(tryCount, 1);
    Ann& refAnn = *refInfo.GetAnn();
    for (int t = 0; t < tries; ++t) {
        SetProgress(0.6 + 0.4 * t / (tries + 0.1));
        if (state.stop) break;
        LogAt(LOG_TRACE, "-------------------------------------- ICPRegistrate try id = ", t,
              " --------------------------------------");
        RunTry(work, refAnn, state, *resultTransform);
        if (state.stop) {
            LogLine("ICPRegistrateWithNormal: stop try");
            break;
        }
    }
    SetProgress(1.0);
    LogAt(LOG_TRACE, "ICPRegistrateWithNormal total time: ", Profiler::GetTime() - startTime);
    return RESULT_OK;
}

}  // namespace ZOL
