// The whole public API of zolc2017.
#pragma once

// Runtime frame: export macro, constants and status codes, progress, threads, log, timing
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/Export.h>
#include <zol/runtime/LogSystem.h>
#include <zol/runtime/Profiler.h>
#include <zol/runtime/ThreadCount.h>

// Core data model: value types, mesh and point-cloud containers, point lists
#include <zol/core/Color4.h>
#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
