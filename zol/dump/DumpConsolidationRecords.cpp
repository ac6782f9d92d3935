// Run of the dump records of point-cloud consolidation (normals and smoothing) and of
// sampling: each repeats the call on the loaded cloud; sampling records keep the indices
// they produce and give the sampled points as a result cloud.
#include <algorithm>

#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

// The points of \p source at \p ids (with their normals), skipping ids outside the cloud:
// the quality-1 path of uniform sampling answers positions of a subset, which the replay
// shows as the call gave them.
void CopySampledPoints(PointCloud* source, const std::vector<int>& ids, PointCloud* sampled) {
    if (source == nullptr) return;
    sampled->SetHasNormal(source->HasNormal());
    const int n = source->GetPointCount();
    for (int id : ids) {
        if (id < 0 || id >= n) continue;
        if (source->HasNormal()) {
            sampled->InsertPoint(source->GetPointCoord(id), source->GetPointNormal(id));
        } else {
            sampled->InsertPoint(source->GetPointCoord(id));
        }
    }
}

// An output array for a sampling call: large enough for any count the operation accepts
// (it refuses counts above the point count before writing), never sized by the file alone.
std::vector<int> SampleBuffer(const PointCloud* cloud, int sampleCount) {
    const int n = cloud ? cloud->GetPointCount() : 0;
    return std::vector<int>(static_cast<std::size_t>(std::max(1, std::min(sampleCount, n))), -1);
}

}  // namespace

int DumpPointCloudConsolidationNormalSmoothing::Run() {
    return Finish(ConsolidatePointCloud::SmoothNormal(Field<0>().get(), Field<1>(), Field<2>(),
                                                      OptionalField<3>()));
}

int DumpPointCloudConsolidationNormalCalculation::Run() {
    return Finish(ConsolidatePointCloud::CalculatePointCloudNormal(Field<0>().get(), Field<1>(),
                                                                   OptionalField<2>()));
}

int DumpPointCloudConsolidationSmoothByNormal::Run() {
    PointCloudInfo info;
    return Finish(ConsolidatePointCloud::_SmoothGeometryByNormal(
        Field<0>().get(), info, Field<1>(), Field<2>(), Field<3>(), OptionalField<4>()));
}

int DumpPointCloudConsolidationNormalReversing::Run() {
    return Finish(ConsolidatePointCloud::ReversePointCloudNormal(Field<0>().get()));
}

int DumpPointCloudConsolidationGeometrySmoothing::Run() {
    return Finish(ConsolidatePointCloud::SmoothGeometry(Field<0>().get(), Field<1>(), Field<2>(),
                                                        OptionalField<3>()));
}

int DumpPointCloudConsolidationNormalOrient::Run() {
    return Finish(ConsolidatePointCloud::OrientPointCloudNormal(Field<0>().get(), Field<1>(),
                                                                OptionalField<2>()));
}

int DumpPointCloudSamplingUniform::Run() {
    PointCloud* cloud = Field<0>().get();
    const int sampleCount = Field<1>();
    std::vector<int> buffer = SampleBuffer(cloud, sampleCount);
    const int status =
        SamplePointCloud::UniformSample(cloud, sampleCount, Field<2>() ? buffer.data() : nullptr,
                                        Field<3>(), static_cast<SampleQuality>(Field<4>()));
    mSampleIndex.clear();
    if (status == RESULT_OK) {
        mSampleIndex.assign(buffer.begin(), buffer.begin() + sampleCount);
        CopySampledPoints(cloud, mSampleIndex, AddResultCloud());
    }
    return Finish(status);
}

int DumpPointCloudSamplingGeometry::Run() {
    PointCloud* cloud = Field<0>().get();
    const int sampleCount = Field<1>();
    std::vector<int> buffer = SampleBuffer(cloud, sampleCount);
    const int status = SamplePointCloud::GeometrySample(
        cloud, sampleCount, Field<2>() ? buffer.data() : nullptr, Field<3>(), Field<4>(),
        Field<5>(), static_cast<SampleQuality>(Field<6>()));
    mSampleIndex.clear();
    if (status == RESULT_OK) {
        mSampleIndex.assign(buffer.begin(), buffer.begin() + sampleCount);
        CopySampledPoints(cloud, mSampleIndex, AddResultCloud());
    }
    return Finish(status);
}

int DumpPointCloudSamplingGrid::Run() {
    PointCloud* cloud = Field<0>().get();
    const int status = SamplePointCloud::GridSample(cloud, Field<1>(), mSampleIndex);
    if (status == RESULT_OK) CopySampledPoints(cloud, mSampleIndex, AddResultCloud());
    return Finish(status);
}

}  // namespace ZOL
