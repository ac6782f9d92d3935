// Saving and restoring a fusion as text, so that a long fusion can be resumed later: the
// grid, then one line per cell in extraction order with numbers that read back exactly.
// Loading parses into a separate tree and swaps it in only when the whole state is good.
#include <zol/pointcloud/FusePointCloud.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <zol/io/TextScanInternal.h>
#include <zol/pointcloud/FuseTreeInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

const char* const kFirstLine = "FusePointCloud 1";
const char* const kEndLine = "end FusePointCloud";
// More values per point than any caller fuses; a larger count marks a damaged file.
const std::int64_t kMaxAttributeCount = 1 << 16;
// Lines are gathered in memory and written in blocks of about this size.
const std::size_t kBlockSize = 1 << 16;

// Appends numbers to a text buffer, doubles as the shortest text that reads back exactly.
class LineBuilder {
public:
    explicit LineBuilder(std::string& text) : mText(text) {}
    LineBuilder& Int(std::int64_t value) { return Put(value); }
    LineBuilder& Real(double value) { return Put(value); }
    LineBuilder& Reals(const Vector3& v) { return Real(v.x).Real(v.y).Real(v.z); }
    LineBuilder& Word(const char* word) {
        Separate();
        mText += word;
        return *this;
    }
    void End() {
        mText += '\n';
        mFirst = true;
    }

private:
    template <typename T>
    LineBuilder& Put(T value) {
        Separate();
        char buffer[32];
        mText.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
        return *this;
    }
    void Separate() {
        if (!mFirst) mText += ' ';
        mFirst = false;
    }

    std::string& mText;
    bool mFirst = true;
};

// The numbers of one line after an optional leading keyword; false when the keyword or
// a number is missing or there are more tokens than asked for.
class LineReader {
public:
    explicit LineReader(std::string_view line) : mTokens(line) {}
    bool Word(std::string_view word) {
        std::string_view token;
        return mTokens.Next(token) && token == word;
    }
    bool Int(std::int64_t& value, std::int64_t low, std::int64_t high) {
        std::string_view token;
        return mTokens.Next(token) && ParseInt64Token(token, value) && value >= low &&
               value <= high;
    }
    bool Real(double& value) {
        std::string_view token;
        return mTokens.Next(token) && ParseDoubleToken(token, value) && std::isfinite(value);
    }
    bool Reals(Vector3& v) { return Real(v.x) && Real(v.y) && Real(v.z); }
    bool AtEnd() { return !mTokens.HasNext(); }

private:
    TokenCursor mTokens;
};

bool ReadLine(std::istream& in, std::string& line) {
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

}  // namespace

int FusePointCloud::DumpInfo(std::ostream& out) const {
    SetProgress(0.0);
    if (mpFuseTree == nullptr) {
        return LogFailure(RESULT_STEP_FAIL, "FusePointCloud::DumpInfo: FuseTree is NULL");
    }
    const FuseTree& tree = *mpFuseTree;
    const FuseCellOrder sorted = tree.SortedCells();
    const int m = tree.AttributeCount();
    std::string text;
    LineBuilder line(text);
    text += kFirstLine;
    text += '\n';
    line.Word("resolution").Int(mResolutionX).Int(mResolutionY).Int(mResolutionZ).End();
    line.Word("bbox").Reals(mBBoxMin).Reals(mBBoxMax).End();
    line.Word("fuseNormal").Int(mFuseNormal ? 1 : 0).End();
    line.Word("attributes").Int(m).End();
    line.Word("cells").Int(static_cast<std::int64_t>(sorted.size())).End();
    for (const std::uint64_t code : sorted) {
        const FuseCellRef r = FuseTree::RefOf(code);
        const FuseShard& shard = tree.shards[r.shard];
        const FuseCell& cell = *shard.cells.At(r.cell);
        line.Int(cell.key.ix).Int(cell.key.iy).Int(cell.key.iz);
        // Without fused normals every cell's normal is the zero vector.
        const Vector3 normal =
            shard.cells.HasNormals() ? FuseCellStore::NormalOf(&cell) : Vector3(0.0, 0.0, 0.0);
        line.Reals(cell.position).Reals(normal).Int(cell.weight);
        for (int k = 0; k < m; ++k) line.Real(shard.attributes.At(r.cell)[k]);
        line.End();
        if (text.size() >= kBlockSize) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            text.clear();
        }
    }
    text += kEndLine;
    text += '\n';
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.flush();
    if (!out) return LogFailure(RESULT_FAIL, "FusePointCloud::DumpInfo: stream write failed");
    return RESULT_OK;
}

int FusePointCloud::LoadInfo(std::istream& in) {
    SetProgress(0.0);
    std::string text;
    if (!ReadLine(in, text) || text != kFirstLine) {
        return LogFailure(RESULT_INVALID_INPUT, "FusePointCloud::LoadInfo: not a saved fuse state");
    }
    std::int64_t resolution[3] = {0, 0, 0}, fuseNormal = 0, attributeCount = 0, cellCount = 0;
    Vector3 bboxMin, bboxMax;
    bool good = ReadLine(in, text);
    if (good) {
        LineReader r(text);
        good = r.Word("resolution") && r.Int(resolution[0], 1, INT_MAX) &&
               r.Int(resolution[1], 1, INT_MAX) && r.Int(resolution[2], 1, INT_MAX) && r.AtEnd();
    }
    if (good && (good = ReadLine(in, text))) {
        LineReader r(text);
        good = r.Word("bbox") && r.Reals(bboxMin) && r.Reals(bboxMax) && r.AtEnd();
        for (int a = 0; a < 3 && good; ++a) good = bboxMin[a] < bboxMax[a];
    }
    if (good && (good = ReadLine(in, text))) {
        LineReader r(text);
        good = r.Word("fuseNormal") && r.Int(fuseNormal, 0, 1) && r.AtEnd();
    }
    if (good && (good = ReadLine(in, text))) {
        LineReader r(text);
        good = r.Word("attributes") && r.Int(attributeCount, 0, kMaxAttributeCount) && r.AtEnd();
    }
    if (good && (good = ReadLine(in, text))) {
        LineReader r(text);
        good = r.Word("cells") && r.Int(cellCount, 0, INT_MAX) && r.AtEnd();
    }
    if (!good)
        return LogFailure(RESULT_INVALID_INPUT, "FusePointCloud::LoadInfo: damaged grid header");

    const int m = static_cast<int>(attributeCount);
    std::unique_ptr<FuseTree> tree(new FuseTree(m, fuseNormal != 0));
    std::vector<double> values(m);
    for (std::int64_t record = 0; record < cellCount; ++record) {
        std::int64_t index[3], weight = 0;
        Vector3 position, normal;
        bool cellGood = ReadLine(in, text);
        if (cellGood) {
            LineReader r(text);
            cellGood = r.Int(index[0], 0, INT_MAX) && r.Int(index[1], 0, INT_MAX) &&
                       r.Int(index[2], 0, INT_MAX) && r.Reals(position) && r.Reals(normal) &&
                       r.Int(weight, 1, UINT32_MAX);
            for (int k = 0; k < m && cellGood; ++k) cellGood = r.Real(values[k]);
            cellGood = cellGood && r.AtEnd();
        }
        if (!cellGood) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "FusePointCloud::LoadInfo: damaged cell at record ", record);
        }
        const FuseCellKey key{static_cast<int>(index[0]), static_cast<int>(index[1]),
                              static_cast<int>(index[2])};
        const std::uint64_t hash = FuseTree::Hash(key);
        FuseShard& shard = tree->shards[FuseTree::ShardOf(hash)];
        bool inserted = false;
        const int id = shard.FindOrInsert(key, hash, inserted);
        if (!inserted) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "FusePointCloud::LoadInfo: duplicate cell at record ", record);
        }
        FuseCell* cell = shard.cells.At(id);
        cell->position = position;
        cell->weight = static_cast<std::uint32_t>(weight);
        if (shard.cells.HasNormals()) FuseCellStore::NormalOf(cell) = normal;
        if (m > 0) std::copy(values.begin(), values.end(), shard.attributes.At(id));
    }
    if (!ReadLine(in, text) || text != kEndLine) {
        return LogFailure(RESULT_INVALID_INPUT, "FusePointCloud::LoadInfo: missing end line");
    }
    Clear();
    mpFuseTree = tree.release();
    mResolutionX = static_cast<int>(resolution[0]);
    mResolutionY = static_cast<int>(resolution[1]);
    mResolutionZ = static_cast<int>(resolution[2]);
    mBBoxMin = bboxMin;
    mBBoxMax = bboxMax;
    mFuseNormal = fuseNormal != 0;
    return RESULT_OK;
}

}  // namespace ZOL
