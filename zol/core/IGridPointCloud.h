// The abstract organised point cloud: a scanner-style cloud whose points sit in the cells
// of a width x height grid, each cell holding at most one point.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Grid view of a point cloud. Cell (x, y) has the index y * width + x.
class ZOL_API IGridPointCloud {
public:
    /// Sets the grid size and empties the cloud: every cell becomes empty.
    virtual void InitGrid(int width, int height) = 0;
    virtual int GetWidth() const = 0;
    virtual int GetHeight() const = 0;
    /// \return the number of cells that hold a point.
    virtual int GetValidGridCount() const = 0;
    /// \return true when the cell (x, y) holds a point; false for a cell index outside
    ///         the grid.
    virtual bool IsGridValid(int x, int y) const = 0;
    /// Removes the point of the cell (x, y), if any.
    virtual void InvalidateGrid(int x, int y) = 0;
    /// Overwrites the coordinate of the cell's point, or adds a point to an empty cell.
    virtual void SetGridCoord(int x, int y, const Vector3& coord) = 0;
    /// \return the coordinate of the cell's point; the cell must be valid.
    virtual Vector3 GetGridCoord(int x, int y) = 0;
    virtual bool HasGridNormal() const = 0;
    virtual void SetHasGridNormal(bool hasNormal) = 0;
    /// Sets the normal of the cell's point; ignored for an empty cell.
    virtual void SetGridNormal(int x, int y, const Vector3& normal) = 0;
    /// \return the normal of the cell's point; the cell must be valid.
    virtual Vector3 GetGridNormal(int x, int y) = 0;
    virtual ~IGridPointCloud() = default;
};

}  // namespace ZOL
