// FusePointCloud: merges many registered point clouds into one even cloud with at most
// one point per cell of a regular grid, by running means per cell; the state can be saved
// and resumed.
#pragma once

#include <iosfwd>
#include <vector>

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class FuseTree;
class IPointCloud;
class IPointList;
class Matrix4x4;

/// Volumetric fusion of point clouds over a grid of resolutionX x resolutionY x
/// resolutionZ cells dividing the box [bboxMin, bboxMax].
///
/// Each update drops every point into its cell, (ix, iy, iz) = integer parts of
/// (p - bboxMin) / h with h = (bboxMax - bboxMin) / resolution per axis. A cell keeps the
/// running mean of its points' positions and attribute values and its weight (points
/// fused, each of weight 1). With normals fused, a normal pointing away from the cell's
/// normal is flipped before it is added, the cell's normal is weighted by the weight
/// after the increment, and the sum is renormalised; normals therefore depend on the
/// order of the clouds, positions and attributes do not.
///
/// The range rule is one-sided: a point below bboxMin on any axis is dropped, a point
/// beyond bboxMax opens a cell outside the nominal grid (index >= resolution) like any
/// other. A point whose cell index does not fit an int is dropped too.
///
/// Only occupied cells are stored; extraction visits them in ascending ix, then iy, then
/// iz. The object is not safe to update from two threads at once; one update uses
/// GetThreadCount() workers and gives the same result for any thread count.
class ZOL_API FusePointCloud {
public:
    /// An object without a grid: Init or LoadInfo before the first update.
    FusePointCloud();
    /// Starts an empty fusion; see Init (a bad grid is logged and leaves no grid).
    FusePointCloud(int resolutionX,
                   int resolutionY,
                   int resolutionZ,
                   const Vector3& bboxMin,
                   const Vector3& bboxMax,
                   bool fuseNormal);
    ~FusePointCloud();
    FusePointCloud(const FusePointCloud&) = delete;
    FusePointCloud& operator=(const FusePointCloud&) = delete;

    /// Discards the fused cells and starts an empty fusion over a new grid.
    /// \param[in] resolutionX cells along x (likewise Y and Z); at least 1.
    /// \param[in] bboxMin, bboxMax the box the grid divides, in coordinate units; every
    ///            component finite, bboxMin strictly below bboxMax on each axis.
    /// \param[in] fuseNormal fuse normals too; clouds must then carry normals.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when a resolution is below 1
    ///         ("FusePointCloud::Init: resolutionX < 1 || resolutionY < 1 || resolutionZ
    ///         < 1") or the box is empty, inverted or not finite ("FusePointCloud::Init:
    ///         bboxMin >= bboxMax"). A refused Init leaves the object as it was; a
    ///         constructor given a bad grid makes an object without a grid, whose updates
    ///         answer RESULT_STEP_FAIL until a good Init or LoadInfo.
    int Init(int resolutionX,
             int resolutionY,
             int resolutionZ,
             const Vector3& bboxMin,
             const Vector3& bboxMax,
             bool fuseNormal);

    /// Fuses one cloud, each point moved by \p transform.
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] transform rigid transform into the fusion frame (points by
    ///            TransformPoint, normals by RotateVector); null for none.
    /// \param[in] pointAttributes m values per point, point after point, m = size / point
    ///            count rounded down (the values past m per point are not read); null (or
    ///            empty) for none.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when pointCloud is null
    ///         ("FusePointCloud::UpdateFuseFunction: input pointCloud is NULL"), when
    ///         normals are fused and the cloud has none ("FusePointCloud::
    ///         UpdateFuseFunction: input pointCloud should have normal information"), or
    ///         as _UpdateFuseFunction; its other codes likewise.
    int UpdateFuseFunction(const IPointCloud* pointCloud,
                           const Matrix4x4* transform,
                           const std::vector<double>* pointAttributes);

    /// Fuses the points of a list; the step under UpdateFuseFunction.
    ///
    /// The whole call is checked before any cell changes: a refused call leaves the
    /// fusion as it was. Attributes keep one count per fusion: once cells exist, every
    /// update must bring that many values per point (none when the first brought none).
    /// \param[in] pointList the points (and normals when fused); only read.
    /// \param[in] transform, pointAttributes as for UpdateFuseFunction.
    /// \return RESULT_OK, also for an empty list ("FusePointCloud::UpdateFuseFunction:
    ///         input pointCloud pointCount == 0", nothing fused);
    ///         RESULT_INVALID_INPUT (-2) when pointList is null ("FusePointCloud::
    ///         UpdateFuseFunction: input pointList is NULL"), the transform is an empty
    ///         matrix ("FusePointCloud::UpdateFuseFunction: transform is empty"), the
    ///         attribute count differs from the fused cells' ("FusePointCloud::
    ///         UpdateFuseFunction: attribute count " m " differs from fused " m'), or a
    ///         moved coordinate, or a fused normal, is NaN or infinite ("FusePointCloud::
    ///         UpdateFuseFunction: non-finite coordinate at pointId = " i, or "...
    ///         non-finite normal at pointId = " i, the first such point);
    ///         RESULT_STEP_FAIL (-3) without a grid ("FusePointCloud::UpdateFuseFunction:
    ///         FuseTree is NULL") or when the workers cannot run.
    int _UpdateFuseFunction(const IPointList* pointList,
                            const Matrix4x4* transform,
                            const std::vector<double>* pointAttributes);

    /// Writes one point per occupied cell, in ascending ix, then iy, then iz.
    /// \param[out] pointCloud an empty cloud; gets the fused positions, and the fused
    ///             normals (its has-normal flag set) when normals are fused.
    /// \param[out] pointAttributes when not null, each cell's fused attribute values are
    ///             appended in the same order.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when pointCloud is null
    ///         ("FusePointCloud::ExtractPointCloud: input pointCloud is NULL") or holds
    ///         points ("FusePointCloud::ExtractPointCloud: input pointCloud is not
    ///         blank"); RESULT_STEP_FAIL (-3) without a grid ("FusePointCloud::
    ///         ExtractPointCloud: FuseTree is NULL").
    int ExtractPointCloud(IPointCloud* pointCloud, std::vector<double>* pointAttributes) const;

    /// Releases the fused cells and the grid; Init or LoadInfo starts over.
    void Clear();

    /// Saves the grid and every cell as text (numbers that read back exactly, cells in
    /// extraction order), ending with a line of its own, so that the state may sit
    /// inside a larger stream.
    /// \return RESULT_OK; RESULT_STEP_FAIL (-3) without a grid ("FusePointCloud::
    ///         DumpInfo: FuseTree is NULL"); RESULT_FAIL (-1) when the stream fails
    ///         ("FusePointCloud::DumpInfo: stream write failed").
    int DumpInfo(std::ostream& out) const;
    /// Restores a state saved by DumpInfo, replacing the grid and the cells; reads up to
    /// and including its end line. A damaged state is refused whole and this object
    /// stays as it was.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) with "FusePointCloud::LoadInfo: "
    ///         followed by "not a saved fuse state" (first line), "damaged grid
    ///         header", "damaged cell at record " k, "duplicate cell at record " k, or
    ///         "missing end line".
    int LoadInfo(std::istream& in);

    /// \return the number of occupied cells (0 without a grid).
    int GetCellCount() const;
    /// \return whether a grid exists (after a good Init or LoadInfo).
    bool HasGrid() const;

private:
    FuseTree* mpFuseTree;
    int mResolutionX;
    int mResolutionY;
    int mResolutionZ;
    Vector3 mBBoxMin;
    Vector3 mBBoxMax;
    bool mFuseNormal;
};

}  // namespace ZOL
