// Run of the dump records of volumetric fusion and single-light colour tuning. A fusion
// record restores the fused state saved with the call, so that the update or extraction
// meets the object as the call did.
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// A fusion without a grid, as the recorded object was when no state was saved; it keeps
// the object's normal flag, which decides whether a cloud without normals is refused
// before the missing grid is.
std::unique_ptr<FusePointCloud> FusionWithoutGrid(bool fuseNormal) {
    auto fuse = std::make_unique<FusePointCloud>();
    if (fuseNormal) {
        fuse->Init(1, 1, 1, Vector3(0, 0, 0), Vector3(1, 1, 1), true);
        fuse->Clear();
    }
    return fuse;
}

}  // namespace

int DumpFusePointCloudUpdate::Run() {
    FusePointCloud* fuse = Field<6>().get();
    if (fuse == nullptr) {
        LogLine("DumpFusePointCloudUpdate::Run: fuse is NULL");
        mFuse = FusionWithoutGrid(Field<5>());
        fuse = mFuse.get();
    }
    const Matrix4x4* transform = Field<8>().IsEmpty() ? nullptr : &Field<8>();
    const int status = fuse->UpdateFuseFunction(Field<7>().get(), transform, OptionalField<9>());
    mAttributes.clear();
    if (status == RESULT_OK) fuse->ExtractPointCloud(AddResultCloud(), &mAttributes);
    return Finish(status);
}

const FusePointCloud* DumpFusePointCloudUpdate::GetFusePointCloud() const {
    return Field<6>() ? Field<6>().get() : mFuse.get();
}

int DumpFusePointCloudExtract::Run() {
    const FusePointCloud* fuse = Field<6>().get();
    std::unique_ptr<FusePointCloud> bare;
    if (fuse == nullptr) {
        LogLine("DumpFusePointCloudExtract::Run: fuse is NULL");
        bare = FusionWithoutGrid(Field<5>());
        fuse = bare.get();
    }
    mAttributes.clear();
    return Finish(fuse->ExtractPointCloud(Field<7>().get(), Field<8>() ? &mAttributes : nullptr));
}

int DumpTuneColorFromSingleLight::Run() {
    std::vector<IPointCloud*> clouds;
    for (const auto& cloud : Field<0>()) clouds.push_back(cloud.get());
    mColorGains.clear();
    mOverlapErrors.clear();
    const int status = IntrinsicColor::TuneColorFromSingleLight(
        clouds, Field<1>(), Field<2>(), OptionalField<3>(), Field<4>() ? &mColorGains : nullptr,
        Field<5>() ? &mOverlapErrors : nullptr);
    // Each scan again with its tuned colours, so that a replay can be looked at (a single
    // scan passes unchecked, so the lists are checked here before they are read).
    bool fits = status == RESULT_OK;
    for (std::size_t c = 0; fits && c < clouds.size(); ++c) {
        fits = clouds[c] != nullptr &&
               Field<1>()[c].size() == static_cast<std::size_t>(clouds[c]->GetPointCount());
    }
    if (fits) {
        for (std::size_t c = 0; c < clouds.size(); ++c) {
            PointCloud* tuned = AddResultCloud();
            *tuned = *Field<0>()[c];
            tuned->SetHasColor(true);
            for (int i = 0; i < tuned->GetPointCount(); ++i)
                tuned->SetPointColor(i, Field<1>()[c][static_cast<std::size_t>(i)]);
        }
    }
    return Finish(status);
}

}  // namespace ZOL
