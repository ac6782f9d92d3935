// Reading side of every file format, mesh and point cloud: one read of the whole file
// into memory, a line cursor and a tokenizer over it, locale-independent number parsing
// in two flavours (forgiving like atof/atoi, where a malformed number reads as 0, and
// strict, where only a whole number is one) and little-endian binary fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace ZOL {

/// The bytes of a whole file, read with one call and without line-end translation.
/// The buffer is not zero-filled first: for large meshes that pass costs as much as
/// the read. Large files go into memory mapped for them (AllocateBulk).
class FileContent {
public:
    FileContent() = default;
    ~FileContent();
    FileContent(const FileContent&) = delete;
    FileContent& operator=(const FileContent&) = delete;

    /// Reads \p fileName. \return false when it cannot be opened or read (content empty).
    bool Read(const std::string& fileName);
    std::string_view View() const { return std::string_view(mData, mSize); }
    operator std::string_view() const { return View(); }
    std::size_t size() const { return mSize; }

private:
    void Release();

    char* mData = nullptr;
    std::size_t mSize = 0;
    std::size_t mCapacity = 0;  ///< bytes of the buffer at mData
};

/// True for the blank characters that separate tokens on a line.
inline bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

/// Hands out the lines of a text buffer without their line ends ("\n" or "\r\n").
/// A line longer than the limit is cut to it and the rest of that line is dropped,
/// so a stray long comment never turns its tail into a line of its own.
class LineCursor {
public:
    /// \param[in] maxLength longest line handed out, in characters.
    LineCursor(std::string_view text, std::size_t maxLength = std::string_view::npos)
        : mPos(text.data()), mEnd(text.data() + text.size()), mMaxLength(maxLength) {}

    /// \return false at the end of the text; a last line without "\n" is still a line.
    bool Next(std::string_view& line);
    /// True when every line has been handed out.
    bool AtEnd() const { return mPos == mEnd; }
    /// The text not yet handed out.
    std::string_view Rest() const { return std::string_view(mPos, mEnd - mPos); }
    /// 1-based number of the line last handed out (0 before the first).
    int LineNumber() const { return mLine; }

private:
    const char* mPos;
    const char* mEnd;
    std::size_t mMaxLength;
    int mLine = 0;
};

/// Splits one line (or any text) into tokens separated by blanks, tabs or line ends.
class TokenCursor {
public:
    explicit TokenCursor(std::string_view text)
        : mPos(text.data()), mEnd(text.data() + text.size()) {}

    /// \return false when no token is left.
    bool Next(std::string_view& token) {
        while (mPos != mEnd && (IsBlank(*mPos) || *mPos == '\n')) ++mPos;
        if (mPos == mEnd) return false;
        const char* start = mPos;
        while (mPos != mEnd && !IsBlank(*mPos) && *mPos != '\n') ++mPos;
        token = std::string_view(start, mPos - start);
        return true;
    }
    /// Skips one token. \return false when none was left.
    bool Skip() {
        std::string_view ignored;
        return Next(ignored);
    }
    /// True when another token follows (the separators before it are skipped).
    bool HasNext() {
        while (mPos != mEnd && (IsBlank(*mPos) || *mPos == '\n')) ++mPos;
        return mPos != mEnd;
    }
    /// The text not yet tokenised.
    std::string_view Rest() const { return std::string_view(mPos, mEnd - mPos); }

private:
    const char* mPos;
    const char* mEnd;
};

/// Parses the longest number at the start of \p text, in the C locale whatever the
/// host's locale, accepting a leading "+" or "-", "inf" and "nan". Magnitudes beyond
/// the type's range give an infinity, below it a zero, as strtod does.
/// \return false (and \p value 0) when \p text does not start with a number.
bool ParseDoublePrefix(std::string_view text, double& value);
/// The same for single precision, rounded once from the decimal text.
bool ParseFloatPrefix(std::string_view text, float& value);
/// Like atof: the leading number of \p text, 0 when there is none.
inline double ParseDouble(std::string_view text) {
    double value;
    ParseDoublePrefix(text, value);
    return value;
}
/// Like atoi: the leading integer of \p text, 0 when there is none; values beyond the
/// range of int are clamped to it instead of overflowing.
int ParseInt(std::string_view text);
/// ParseInt with a fast path for the common case, an unsigned number of up to nine
/// digits (indices and counts), which cannot overflow.
inline int ParseIndex(std::string_view text) {
    const std::size_t n = text.size() < 9 ? text.size() : 9;
    unsigned value = 0;
    std::size_t i = 0;
    for (; i < n; ++i) {
        const unsigned digit = static_cast<unsigned>(text[i] - '0');
        if (digit > 9) break;
        value = value * 10 + digit;
    }
    if (i > 0 && (i == text.size() || static_cast<unsigned>(text[i] - '0') > 9)) {
        return static_cast<int>(value);
    }
    return ParseInt(text);
}
/// The same for a 64-bit result, clamped to its range.
std::int64_t ParseInt64(std::string_view text);

/// Strict parsing: the whole \p token must be one number (a leading "+" or "-", "inf"
/// and "nan" allowed); magnitudes beyond the range give an infinity or zero as above.
/// \return false when it is not.
bool ParseDoubleToken(std::string_view token, double& value);
/// Strict parsing of a whole token as a 64-bit integer. \return false when it is not
/// one or is out of range.
bool ParseInt64Token(std::string_view token, std::int64_t& value);
/// Strictly parses the blank-separated numbers of \p line into \p out.
/// \return how many there were, or -1 when a token is not a number or there are more
///         than \p max.
int ParseNumbers(std::string_view line, double* out, int max);

/// Little-endian fields of the binary formats, read from at least as many bytes.
inline std::uint32_t GetU32LE(const char* p) {
    const unsigned char* b = reinterpret_cast<const unsigned char*>(p);
    return std::uint32_t(b[0]) | std::uint32_t(b[1]) << 8 | std::uint32_t(b[2]) << 16 |
           std::uint32_t(b[3]) << 24;
}
inline std::uint64_t GetU64LE(const char* p) {
    return std::uint64_t(GetU32LE(p)) | std::uint64_t(GetU32LE(p + 4)) << 32;
}
inline float GetF32LE(const char* p) {
    const std::uint32_t bits = GetU32LE(p);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}
inline double GetF64LE(const char* p) {
    const std::uint64_t bits = GetU64LE(p);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace ZOL
