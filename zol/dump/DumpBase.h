// The base of every dump record: the shared text layout of meshes, point clouds and vectors
// in a ".dump" file, the one-shot DumpOnce switch and the file counter. A host that meets a
// failing call arms DumpOnce(), repeats the call and sends the file that the call wrote.
#pragma once

#include <fstream>
#include <istream>
#include <string>
#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpRecordTable.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Arms one-shot recording: the next exported operation that has a record writes its
/// arguments to a ".dump" file in the working directory and disarms it. Arming twice
/// before that call still gives one file.
ZOL_API void DumpOnce();

/// What a loading helper found.
enum DumpLoad : int {
    DUMP_LOAD_OK = 0,       ///< the item was read and stored
    DUMP_LOAD_NULL = 1,     ///< the file holds the null marker "-1"; nothing was stored
    DUMP_LOAD_DAMAGED = -1  ///< missing, non-numeric or impossible data; stop reading
};

/// One recorded API call: writes its inputs to a dump file, loads them back and runs the
/// API again. The writers set 20 significant digits, so doubles read back exactly; the
/// loaders never trust a count beyond what the rest of the file could hold.
class ZOL_API DumpBase {
public:
    virtual ~DumpBase();

    /// \return the record's ApiName value (the first line of its files).
    virtual ApiName GetApiName() const = 0;
    /// Reads a dump file into the record's members. On damaged data every member is reset
    /// to its empty default, so that Run hands the API nothing half-loaded.
    /// \param[in] fileName path of the ".dump" file.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the file cannot be opened or its
    ///         first line is not this record's value; RESULT_FAIL (-1) for damaged data
    ///         (each logged with the record name and the file).
    virtual int LoadDumpFile(const std::string& fileName) = 0;
    /// Calls the recorded API with the loaded members, then logs "<Record>::Run success"
    /// or "<Record>::Run failed: " and the status.
    /// \return the API's status.
    virtual int Run() = 0;
    /// \return mesh \p index of the record (results first, then inputs), owned by the
    ///         record; null when there is none (the base has none).
    virtual TriMesh* GetTriMesh(int index);
    /// \return point cloud \p index of the record (results first, then inputs), owned by
    ///         the record; null when there is none (the base has none).
    virtual PointCloud* GetPointCloud(int index);

    /// Writes "-1" for a null mesh, else the vertex count, one "x y z" line per vertex,
    /// the triangle count and one line of three 0-based vertex indices per triangle.
    virtual void DumpTriMesh(const ITriMesh* triMesh, std::ofstream& out);
    /// Reads what DumpTriMesh wrote into \p triMesh (appending). A triangle naming a
    /// vertex outside the mesh is damaged data.
    /// \return DUMP_LOAD_OK; DUMP_LOAD_NULL for "-1"; DUMP_LOAD_DAMAGED otherwise.
    virtual DumpLoad LoadTriMesh(ITriMesh* triMesh, std::ifstream& in);
    /// Writes "-1" for a null cloud, else "count withNormal" and one line per point of
    /// x y z, or x y z nx ny nz when \p withNormal is set.
    virtual void DumpPointCloud(const IPointCloud* pointCloud, bool withNormal, std::ofstream& out);
    /// Reads what DumpPointCloud wrote into \p pointCloud (appending; normals turned on
    /// when the file has them).
    /// \return DUMP_LOAD_OK; DUMP_LOAD_NULL for "-1"; DUMP_LOAD_DAMAGED otherwise.
    virtual DumpLoad LoadPointCloud(IPointCloud* pointCloud, std::ifstream& in);
    /// Writes "-1" for a null list, else the count and one line per point as
    /// DumpPointCloud does.
    virtual void DumpPointList(const IPointList* pointList, bool withNormal, std::ofstream& out);
    /// Reads a count line, then all elements from one line.
    /// \return DUMP_LOAD_OK or DUMP_LOAD_DAMAGED.
    virtual DumpLoad LoadStlIntVector(std::vector<int>& values, std::ifstream& in);
    /// Writes the count on a line, then every element followed by one blank, then a newline.
    virtual void DumpStlIntVector(const std::vector<int>& values, std::ofstream& out);
    virtual DumpLoad LoadStlRealVector(std::vector<double>& values, std::ifstream& in);
    virtual void DumpStlRealVector(const std::vector<double>& values, std::ofstream& out);
    virtual DumpLoad LoadStlVector3Vector(std::vector<Vector3>& values, std::ifstream& in);
    /// As DumpStlIntVector with "x y z " per element.
    virtual void DumpStlVector3Vector(const std::vector<Vector3>& values, std::ofstream& out);
    virtual DumpLoad LoadStlColor4Vector(std::vector<Color4>& values, std::ifstream& in);
    /// As DumpStlIntVector with each colour as its packed Color4::Color4ToInt value.
    virtual void DumpStlColor4Vector(const std::vector<Color4>& values, std::ofstream& out);

    /// Reads what DumpPointList wrote into \p pointCloud; the caller says whether the
    /// lines carry normals, because the layout does not.
    /// \return DUMP_LOAD_OK; DUMP_LOAD_NULL for "-1"; DUMP_LOAD_DAMAGED otherwise.
    DumpLoad LoadPointList(PointCloud* pointCloud, bool withNormal, std::ifstream& in);

    /// Number of dump files written by this process; the last part of each file name.
    static int APICalledTime;

    /// The name of the next dump file: the local time in the ctime layout with blanks
    /// turned into "_", ":" into "-" and the newline dropped, then \p tag, APICalledTime
    /// and ".dump", e.g. "Sat_Nov_14_19-43-00_2026_Mesh_FillHole_0.dump".
    static std::string MakeDumpFileName(const char* tag);

    /// Reads one whitespace-separated token as an int (decimal, the whole token).
    static bool ReadInt(std::istream& in, int& value);
    /// Reads one token as a double; "nan" and "inf" are accepted, as a recorded call may
    /// have been given them.
    static bool ReadReal(std::istream& in, double& value);
    /// After a count line of 0, tells an empty vector from a null one: consumes the rest
    /// of the count line and, when the next line is empty (the element line of an empty
    /// vector), that line too.
    /// \return whether an empty element line followed.
    static bool SkipEmptyElementLine(std::istream& in);
    /// Reads a count and checks that \p tokensPerItem tokens per item fit in the rest of
    /// the file, so that no hostile count can make a loader reserve more than the file
    /// describes.
    static bool ReadCount(std::istream& in, int tokensPerItem, int& count);

protected:
    /// Opens the next dump file and writes the first line (\p apiName). The stream
    /// writes doubles with 20 significant digits. A file that cannot be opened is left in
    /// a failed state: writing then does nothing, as dumping never disturbs the API.
    static void OpenDumpFile(const char* tag, int apiName, std::ofstream& out);
    /// Closes the file and counts it in APICalledTime.
    static void CloseDumpFile(std::ofstream& out);
    /// Logs "<recordName>::Run success" for status 0, else "<recordName>::Run failed: "
    /// and the status. \return \p status.
    static int LogRunResult(const char* recordName, int status);
    /// Opens \p fileName and checks its first line against the record.
    /// \return RESULT_OK with \p in positioned after the first line, or
    ///         RESULT_INVALID_INPUT (logged with \p recordName).
    static int OpenForLoad(const std::string& fileName,
                           const char* recordName,
                           bool (*accepts)(int),
                           std::ifstream& in);
    /// Logs "<recordName>::LoadDumpFile: damaged data in " and the file name.
    /// \return RESULT_FAIL (-1).
    static int LogLoadDamaged(const char* recordName, const std::string& fileName);
};

}  // namespace ZOL
