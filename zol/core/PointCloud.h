// The library's point cloud: flat arrays of coordinates, normals and colours, plus the
// cell maps that make it an organised (grid) cloud when it comes from a range scanner.
#pragma once

#include <vector>

#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Point cloud with optional normals, colours and grid topology. Coordinates, normals
/// and colours are contiguous arrays of Vector3 (GetPointCoordData), so hot loops may
/// read them without a virtual call per point.
///
/// With grid topology every point belongs to at most one cell: the cell-to-point map
/// holds, per cell y * width + x, the index of its point or -1; the point-to-cell map
/// holds, per point, its cell or -1 (a point added by InsertPoint has no cell).
class ZOL_API PointCloud : public IPointCloud, public IGridPointCloud {
public:
    /// Empty cloud without normals, colours or grid.
    PointCloud();
    /// Empty cloud with the given flags.
    /// \param[in] hasNormal keep one normal per point.
    /// \param[in] hasColor keep one colour per point (components in [0, 1]).
    /// \param[in] hasGridTopology mark the cloud as organised; the grid itself is sized
    ///            by InitGrid.
    PointCloud(bool hasNormal, bool hasColor, bool hasGridTopology);
    /// Deep copy.
    PointCloud(const PointCloud& other);
    /// Deep copy.
    PointCloud& operator=(const PointCloud& other);
    ~PointCloud() override;

    // IPointCloud
    int GetPointCount() const override;
    Vector3 GetPointCoord(int pointId) override;
    void SetPointCoord(int pointId, const Vector3& coord) override;
    /// \return the normal, or zero while normals are off.
    Vector3 GetPointNormal(int pointId) override;
    /// Ignored while normals are off.
    void SetPointNormal(int pointId, const Vector3& normal) override;
    bool HasNormal() const override;
    /// Turning normals on sizes the normal array to the point count (new entries zero);
    /// turning them off only clears the flag.
    void SetHasNormal(bool hasNormal) override;
    /// Appends a point; its colour, when colours are on, is zero. With grid topology the
    /// point belongs to no cell.
    int InsertPoint(const Vector3& coord, const Vector3& normal) override;
    int InsertPoint(const Vector3& coord) override;
    /// Exchanges coordinates, normals, colours and, with grid topology, the two points'
    /// cells in both maps.
    void SwapPoint(int pointId0, int pointId1) override;
    /// Removes the last \p count points (clamped to the point count); their cells become
    /// empty.
    void PopbackPoints(int count) override;
    /// Removes every point. Flags and grid size stay; every cell becomes empty.
    void Clear() override;

    // IGridPointCloud
    /// Stores the size, turns grid topology on, makes every cell empty and removes every
    /// point.
    void InitGrid(int width, int height) override;
    int GetWidth() const override;
    int GetHeight() const override;
    /// \return the point count (every point occupies one cell).
    int GetValidGridCount() const override;
    /// \return false when y * width + x is negative or beyond the map, else whether the
    ///         cell holds a point.
    bool IsGridValid(int x, int y) const override;
    /// Removes the cell's point: the last point moves into its place (SwapPoint, then
    /// PopbackPoints(1)).
    void InvalidateGrid(int x, int y) override;
    /// Overwrites the cell's point, or appends a point that the cell then holds (its
    /// normal and colour zero). Ignored for a cell index outside the map.
    void SetGridCoord(int x, int y, const Vector3& coord) override;
    /// \return the coordinate of the cell's point, or zero for an empty cell.
    Vector3 GetGridCoord(int x, int y) override;
    bool HasGridNormal() const override;
    void SetHasGridNormal(bool hasNormal) override;
    void SetGridNormal(int x, int y, const Vector3& normal) override;
    /// \return the normal of the cell's point, or zero for an empty cell.
    Vector3 GetGridNormal(int x, int y) override;

    // Colours
    bool HasColor() const;
    /// Turning colours on sizes the colour array to the point count (new entries zero);
    /// turning them off only clears the flag.
    void SetHasColor(bool hasColor);
    /// \return the colour (components in [0, 1]), or zero while colours are off.
    Vector3 GetPointColor(int pointId) const;
    /// Ignored while colours are off.
    void SetPointColor(int pointId, const Vector3& color);
    /// Gives every point the colour \p color and turns colours on.
    void SetDefaultColor(const Vector3& color);

    /// Reserves room for \p count points in every array in use.
    void ReservePoint(int count);
    /// Sets the number of points to \p count (0 when negative): points from \p count on
    /// are removed and their grid cells emptied; new points sit at the origin with zero
    /// normal and colour and no cell.
    void ResizePoint(int count);

    // Grid topology
    bool HasGridTopology() const;
    /// Drops the grid: flag off, both maps emptied, size 0 x 0. The points stay.
    void ClearGridTopologyInfo();
    /// \return the index of the cell's point, or -1 for an empty cell or a cell outside
    ///         the grid.
    int GetGridPointId(int x, int y) const;
    /// \return the cell of \p pointId (y * width + x), or -1 when it has none.
    int GetPointGridId(int pointId) const;

    // Normalisation
    /// Moves the bounding-box centre to the origin and scales so that the largest
    /// half-extent of the box becomes \p bboxSize.
    /// \param[in] bboxSize target half-extent of the largest box side; must be > 0.
    /// \param[out] scaleValue the scale applied (1 for an empty or single-point cloud);
    ///             may be null.
    /// \param[out] objCenCoord the box centre that was moved to the origin; may be null.
    void UnifyCoords(double bboxSize, double* scaleValue, Vector3* objCenCoord);
    /// Applies p' = (p - objCenCoord) * scaleValue to every coordinate: with the values
    /// reported by the first form it repeats that normalisation on another cloud.
    void UnifyCoords(double scaleValue, const Vector3& objCenCoord);

    // Flat access for hot loops; valid until the next insertion or removal.
    /// \return the coordinates as GetPointCount() consecutive Vector3 (x, y, z doubles).
    const Vector3* GetPointCoordData() const;
    /// \return the normals, or null while normals are off.
    const Vector3* GetPointNormalData() const;

private:
    bool mHasNormal;
    bool mHasColor;
    bool mHasGridTopology;
    std::vector<Vector3> mCoords;
    std::vector<Vector3> mNormals;
    std::vector<Vector3> mColors;
    std::vector<int> mGridToPoint;
    std::vector<int> mPointToGrid;
    int mWidth;
    int mHeight;

    int CellIndex(int x, int y) const;
};

}  // namespace ZOL
