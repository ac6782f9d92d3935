// The whole public API of zolc2017.
#pragma once

// Runtime frame: export macro, constants and status codes, progress, threads, log, timing
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/Export.h>
#include <zol/runtime/LogSystem.h>
#include <zol/runtime/Profiler.h>
#include <zol/runtime/ThreadCount.h>

// Runtime frame: thread pool and nearest-neighbour index
#include <zol/runtime/Ann.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/runtime/ThreadPool.h>

// Core data model: value types
#include <zol/core/Color4.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Obb.h>
#include <zol/core/Plane3.h>
#include <zol/core/PointOnEdge.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>

// Core data model: triangle meshes
#include <zol/core/ITriMesh.h>
#include <zol/core/ITriangleList.h>
#include <zol/core/MeshType.h>
#include <zol/core/MeshUtility.h>
#include <zol/core/RecordPool.h>
#include <zol/core/SubTriMesh.h>
#include <zol/core/TriMesh.h>
#include <zol/core/TriMeshInfo.h>
#include <zol/core/TriangleList.h>

// Core data model: point clouds and point lists
#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>

// File exchange: mesh and point-cloud files, POV-Ray scene fragments
#include <zol/io/Parser.h>

// Dump and replay: recording of one API call to a file, loading and running it again
#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpField.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/dump/DumpRecord.h>
#include <zol/dump/DumpRecordTable.h>
#include <zol/dump/DumpRegistrationRecords.h>

// Mesh processing: measurement and triangle queries
#include <zol/mesh/MeasureMesh.h>
#include <zol/mesh/MeshQueryTool.h>

// Point-cloud processing: normals, smoothing, density, sampling, utilities, fusion, colour
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/pointcloud/SamplePointCloud.h>

// Mesh processing without an implementation in this library (each answers -8): repair,
// holes, filters, unfolding, subdivision, simplification, splitting, textures, offsets,
// sampling, triangulation, remeshing, deformation, geodesics, curves, mappings, reliefs
#include <zol/mesh/ConsolidateMesh.h>
#include <zol/mesh/DeformCage.h>
#include <zol/mesh/DeformMesh.h>
#include <zol/mesh/DigitalRelief.h>
#include <zol/mesh/FillMeshHole.h>
#include <zol/mesh/FilterMesh.h>
#include <zol/mesh/MeshGeodesic.h>
#include <zol/mesh/OffsetMesh.h>
#include <zol/mesh/OptimiseCurve.h>
#include <zol/mesh/OptimiseMapping.h>
#include <zol/mesh/Remesh.h>
#include <zol/mesh/SampleMesh.h>
#include <zol/mesh/SimplifyMesh.h>
#include <zol/mesh/SplitMesh.h>
#include <zol/mesh/SubdivideMesh.h>
#include <zol/mesh/TextureImage.h>
#include <zol/mesh/Triangulation.h>
#include <zol/mesh/UnfoldMesh.h>

// Point-cloud processing without an implementation in this library (each answers -8):
// reconstruction, fitting, distance, sum map, signed distance, grid cleaning, depth video,
// deformation
#include <zol/pointcloud/ConsolidateGrid.h>
#include <zol/pointcloud/DeformPointList.h>
#include <zol/pointcloud/FitPointCloud.h>
#include <zol/pointcloud/FuseDepthVideo.h>
#include <zol/pointcloud/MeasurePointCloud.h>
#include <zol/pointcloud/ReconstructMesh.h>
#include <zol/pointcloud/SignedDistanceFunction.h>
#include <zol/pointcloud/SumPointCloud.h>

// Registration: point-pair fit, ICP and coarse alignment of point clouds
#include <zol/registration/RegistratePointCloud.h>

// Shape detection: primitive fits and tangent-face selection
#include <zol/shape/DetectShape.h>
