// Ann: the k-nearest-neighbour index of the library, a kd-tree over a fixed set of points,
// queried by single points, by radius, or by whole point lists in parallel.
#pragma once

#include <memory>
#include <vector>

#include <zol/runtime/Export.h>

namespace ZOL {

class AnnImpl;
class IPointList;
class Matrix4x4;

/// k-nearest-neighbour index (exact search; squared Euclidean distances).
///
/// Build it once with one of the Init forms, then query it from any number of threads:
/// queries only read the index. The index keeps one kd-tree per worker (up to the
/// processor count), so queries from several threads, and the workers of a list query,
/// search at the same time; answers never depend on which tree serves them (with
/// ZOL_ANN_SHARED=1 in the environment, or where private copies of the kd-tree library
/// cannot be loaded, an index keeps one tree and searches take turns). Init and Clear must not
/// overlap queries on the same object. Copies of an Ann share one index.
class ZOL_API Ann {
public:
    /// An empty index; every query returns RESULT_NOT_READY (-5) until an Init succeeds.
    Ann();
    ~Ann();
    Ann(const Ann& other);
    Ann& operator=(const Ann& other);

    /// Releases the index (the object is empty again).
    void Clear();

    /// Indexes \p refCount points of \p refDim coordinates each (row-major), copied.
    /// Builds one tree per worker of GetThreadCount(), in parallel.
    /// \param[in] refData refCount * refDim doubles.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for null data, refCount < 1 or
    ///         refDim < 1 ("Ann Init: refData == NULL || refCount < 1 || refDim < 1:
    ///         refCount=" then the count, " refDim=" and the dimension);
    ///         RESULT_NOT_READY (-5) when the tree cannot be built, e.g. for a non-finite
    ///         coordinate ("Ann Init: Tree init failed"); the index is empty then.
    int Init(double* refData, int refCount, int refDim);
    /// Indexes the coordinates of a point list in 3-D.
    /// \param[in] pointList the points; read once, not kept.
    /// \param[in] transform applied to every coordinate (TransformPoint); null for none.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null or empty list ("Ann
    ///         Init: pointList == NULL || pointList->GetPointCount() < 1");
    ///         RESULT_NOT_READY (-5) as above.
    int Init(const IPointList* pointList, const Matrix4x4* transform);
    /// Indexes coordinates and normals in 6-D: rows (x, y, z, w*nx, w*ny, w*nz) with
    /// w = \p normalWeight, so that the distance mixes position and orientation. List
    /// queries against this index use the same rows for their queries.
    /// \param[in] transform moves coordinates (TransformPoint) and turns normals
    ///            (RotateVector); null for none.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null or empty list ("Ann
    ///         InitWithNormal: pointList == NULL || pointList->GetPointCount() < 1");
    ///         RESULT_NOT_READY (-5) as above.
    int InitWithNormal(const IPointList* pointList,
                       double normalWeight,
                       const Matrix4x4* transform);

    /// The \p k nearest indexed points of each query row, nearest first, answered on the
    /// calling thread. k above the point count is served with every point; the remaining
    /// columns of each row get index -1 and distance REAL_LARGE.
    /// \param[in] queryData queryCount rows of GetDimension() doubles.
    /// \param[out] indexRes queryCount * k indices, row by row; may be null.
    /// \param[out] distanceRes queryCount * k squared distances; may be null.
    /// \return RESULT_OK (0); RESULT_NOT_READY (-5) before Init ("AnnImpl::
    ///         FindNearestNeighbors not initialized", with ": invalid input" appended when
    ///         the query arguments are bad too); RESULT_INVALID_INPUT (-2) when both
    ///         outputs are null ("Invalid input: indexRes == NULL && distanceRes ==
    ///         NULL"), and for null queryData with queryCount > 0, queryCount < 0 or k < 1
    ///         ("Ann::FindNearestNeighbors: queryData == NULL || queryCount < 0 || k < 1").
    int FindNearestNeighbors(
        double* queryData, int queryCount, int k, int* indexRes, double* distanceRes);
    /// As above for every point of a list, in parallel on GetThreadCount() workers, each
    /// answering one contiguous slice of the list. Results do not depend on the thread
    /// count. Queries are the list's coordinates, followed by its normals times the
    /// normal weight when the index was built by InitWithNormal.
    /// \return RESULT_OK (0); RESULT_NOT_READY (-5) and the no-output
    ///         RESULT_INVALID_INPUT (-2) as above; RESULT_INVALID_INPUT (-2) for a null
    ///         list or k < 1 ("Ann::FindNearestNeighbors: queryList == NULL || k < 1") and
    ///         for an index whose dimension is not that of a point list ("Ann::
    ///         FindNearestNeighbors: index dimension does not fit a point list: " and the
    ///         dimension); RESULT_STEP_FAIL (-3) when the pool starts fewer workers than
    ///         requested ("FindNearestNeighbors: invalid thread count = " and the count
    ///         started) or a task cannot be queued ("FindNearestNeighbors: ThreadPool
    ///         InsertTask FindNearestByPointListMT Failed").
    int FindNearestNeighbors(const IPointList* queryList,
                             int k,
                             int* indexRes,
                             double* distanceRes);
    /// Every indexed point within \p radius of one query point, nearest first.
    /// \param[in] query GetDimension() doubles.
    /// \param[out] indexRes replaced by the indices; may be null.
    /// \param[out] distanceRes replaced by the squared distances; may be null.
    /// \return RESULT_OK (0); RESULT_NOT_READY (-5) and the no-output
    ///         RESULT_INVALID_INPUT (-2) as above; RESULT_INVALID_INPUT (-2) for a null
    ///         query or a negative or NaN radius ("Ann::FindNearestNeighbors: query ==
    ///         NULL || radius < 0").
    int FindNearestNeighbors(double* query,
                             double radius,
                             std::vector<int>* indexRes,
                             std::vector<double>* distanceRes);

    /// \return the number of indexed points (0 before Init).
    int GetPointCount() const;
    /// \return the dimension of the indexed rows (0 before Init).
    int GetDimension() const;

private:
    friend class PointCloudInfo;
    std::shared_ptr<AnnImpl> mpImpl;
};

}  // namespace ZOL
