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

// Mesh processing: measurement and triangle queries
#include <zol/mesh/MeasureMesh.h>
#include <zol/mesh/MeshQueryTool.h>

// Point-cloud processing: normals, smoothing, density, sampling and utilities
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/pointcloud/SamplePointCloud.h>

// Registration: point-pair fit, ICP and coarse alignment of point clouds
#include <zol/registration/RegistratePointCloud.h>

// Shape detection: primitive fits and tangent-face selection
#include <zol/shape/DetectShape.h>
