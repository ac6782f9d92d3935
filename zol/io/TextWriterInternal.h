// Writing side of the file formats: a buffered file writer whose numbers come out
// exactly as a default-formatted C++ stream would print them (six significant digits,
// "1e-05", "-0", "inf"), but without the stream's per-number cost and whatever locale
// the host has set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace ZOL {

/// Room a formatted number needs, with margin.
inline constexpr std::size_t kNumberTextMax = 32;

/// Writes \p value as the default stream formatting does ("%.6g" in the C locale).
/// \param[out] first at least kNumberTextMax characters.
/// \return one past the last character written.
char* FormatReal(char* first, double value);
/// Writes \p value in decimal. \return one past the last character written.
char* FormatInt(char* first, std::int64_t value);

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
    void PutInt(std::int64_t value) {
        Reserve(kNumberTextMax);
        mUsed = FormatInt(mpBuffer.get() + mUsed, value) - mpBuffer.get();
    }
    void PutBytes(const void* data, std::size_t size);
    /// Three numbers separated by \p separator.
    void PutReals(double a, double b, double c, std::string_view separator) {
        PutReal(a);
        Put(separator);
        PutReal(b);
        Put(separator);
        PutReal(c);
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
