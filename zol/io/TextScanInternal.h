// Reading side of the file formats: one read of the whole file into memory, a line
// cursor with the readers' line semantics and locale-independent number parsing with
// the forgiving behaviour of atof/atoi (a malformed number reads as 0).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZOL {

/// Reads the whole file \p fileName (binary, no line-end translation) into \p content.
/// \return false when the file cannot be opened or read; \p content is then empty.
bool ReadWholeFile(const std::string& fileName, std::string& content);

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

private:
    const char* mPos;
    const char* mEnd;
    std::size_t mMaxLength;
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
/// The same for a 64-bit result, clamped to its range.
std::int64_t ParseInt64(std::string_view text);

}  // namespace ZOL
