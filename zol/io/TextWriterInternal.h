// Writing side of every file format, mesh and point cloud: one buffered file writer
// whose numbers come out either exactly as a default-formatted C++ stream would print
// them (six significant digits, "1e-05", "-0", "inf") or as the shortest text that reads
// back as the same double, without the stream's per-number cost and whatever locale the
// host has set; and little-endian binary fields.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include <zol/core/Vector3.h>

namespace ZOL {

/// Room a formatted number needs, with margin.
inline constexpr std::size_t kNumberTextMax = 32;

/// Writes \p value as the default stream formatting does ("%.6g" in the C locale).
/// \param[out] first at least kNumberTextMax characters.
/// \return one past the last character written.
char* FormatReal(char* first, double value);
/// Writes the shortest text that reads back as exactly \p value.
/// \param[out] first at least kNumberTextMax characters.
/// \return one past the last character written.
inline char* FormatShortest(char* first, double value) {
    return std::to_chars(first, first + kNumberTextMax, value).ptr;
}
/// Writes \p value in decimal. \return one past the last character written.
inline char* FormatInt(char* first, std::int64_t value) {
    return std::to_chars(first, first + kNumberTextMax, value).ptr;
}

/// Stores little-endian fields. \return one past the last byte written.
inline char* StoreU32LE(char* p, std::uint32_t value) {
    p[0] = static_cast<char>(value & 0xff);
    p[1] = static_cast<char>((value >> 8) & 0xff);
    p[2] = static_cast<char>((value >> 16) & 0xff);
    p[3] = static_cast<char>((value >> 24) & 0xff);
    return p + 4;
}
inline char* StoreU64LE(char* p, std::uint64_t value) {
    return StoreU32LE(StoreU32LE(p, static_cast<std::uint32_t>(value)),
                      static_cast<std::uint32_t>(value >> 32));
}
inline char* StoreF32LE(char* p, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return StoreU32LE(p, bits);
}
inline char* StoreF64LE(char* p, double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return StoreU64LE(p, bits);
}

/// Buffered writer of one file, opened for writing in binary mode so that "\n" stays
/// one byte on every platform.
class FileWriter {
public:
    /// Opens (and truncates) \p fileName.
    explicit FileWriter(const std::string& fileName);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// True when the file was opened.
    bool IsOpen() const { return mpFile != nullptr; }

    void Put(char c) {
        if (mUsed == kCapacity) Flush();
        mpBuffer[mUsed++] = c;
    }
    void Put(std::string_view text) { PutBytes(text.data(), text.size()); }
    void PutReal(double value) {
        Reserve(kNumberTextMax);
        mUsed = FormatReal(mpBuffer.get() + mUsed, value) - mpBuffer.get();
    }
    /// The shortest text that reads back as exactly \p value.
    void PutExact(double value) {
        Reserve(kNumberTextMax);
        mUsed = FormatShortest(mpBuffer.get() + mUsed, value) - mpBuffer.get();
    }
    void PutInt(std::int64_t value) {
        Reserve(kNumberTextMax);
        mUsed = FormatInt(mpBuffer.get() + mUsed, value) - mpBuffer.get();
    }
    void PutBytes(const void* data, std::size_t size);
    /// Room for \p size bytes (at most 64 KiB) to be filled in place; Commit() then
    /// takes them into the file.
    char* Claim(std::size_t size) {
        Reserve(size);
        return mpBuffer.get() + mUsed;
    }
    void Commit(std::size_t size) { mUsed += size; }
    void PutU32LE(std::uint32_t value) { mUsed = StoreU32LE(Claim(4), value) - mpBuffer.get(); }
    void PutU64LE(std::uint64_t value) { mUsed = StoreU64LE(Claim(8), value) - mpBuffer.get(); }
    void PutF64LE(double value) { mUsed = StoreF64LE(Claim(8), value) - mpBuffer.get(); }
    /// Three numbers separated by \p separator.
    void PutReals(double a, double b, double c, std::string_view separator) {
        PutReal(a);
        Put(separator);
        PutReal(b);
        Put(separator);
        PutReal(c);
    }

    /// Three numbers, each the shortest text that reads back as itself, separated by
    /// one blank.
    void PutExacts(const Vector3& v) {
        PutExact(v.x);
        Put(' ');
        PutExact(v.y);
        Put(' ');
        PutExact(v.z);
    }

    /// Flushes and closes. \return false when any write failed or the file was not open.
    bool Close();

private:
    static constexpr std::size_t kCapacity = 1 << 18;

    void Reserve(std::size_t size) {
        if (kCapacity - mUsed < size) Flush();
    }
    void Flush();

    std::FILE* mpFile;
    std::unique_ptr<char[]> mpBuffer;
    std::size_t mUsed = 0;
    bool mFailed = false;
};

}  // namespace ZOL
