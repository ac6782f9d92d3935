// Tag carried by a TriMesh to tell the host where the mesh came from. The library
// stores and copies it but never interprets it.
#pragma once

namespace ZOL {

/// Origin or role of a mesh, for the host's own bookkeeping.
enum MeshType : int {
    MESH_TYPE_UNKNOWN = 0,  ///< not set (the default of a new mesh)
    MESH_TYPE_SCAN = 1,     ///< reconstructed from measured points
    MESH_TYPE_MODEL = 2,    ///< designed or edited geometry
    MESH_TYPE_SOUP = 3      ///< triangles not yet welded (three vertices per triangle)
};

}  // namespace ZOL
