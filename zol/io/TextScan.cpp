// Whole-file reading, line splitting and number parsing shared by every text reader.
#include <zol/io/TextScanInternal.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <system_error>

#include <zol/runtime/BulkMemoryInternal.h>

namespace ZOL {

namespace {

// Decimal exponent of the leading significant digit of a number written as
// [digits][.digits][(e|E)[sign]digits]; only its sign matters to the caller.
long long DecimalMagnitude(std::string_view text) {
    std::size_t i = 0;
    long long magnitude = 0;
    bool seenDigit = false;
    bool seenPoint = false;
    long long leadingFractionZeros = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.') {
            seenPoint = true;
        } else if (c >= '0' && c <= '9') {
            if (!seenPoint) {
                if (seenDigit || c != '0') {
                    if (seenDigit) ++magnitude;
                    seenDigit = true;
                }
            } else if (!seenDigit) {
                if (c == '0') {
                    ++leadingFractionZeros;
                } else {
                    seenDigit = true;
                    magnitude = -1 - leadingFractionZeros;
                }
            }
        } else {
            break;
        }
    }
    if (!seenDigit) return std::numeric_limits<long long>::min();  // the number is zero
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        bool negative = false;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
        long long exponent = 0;
        for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
            exponent = std::min<long long>(exponent * 10 + (text[i] - '0'), 1000000000LL);
        }
        magnitude += negative ? -exponent : exponent;
    }
    return magnitude;
}

// Parses the longest number at the start of \p text into \p value (0 when there is
// none). \return one past its last character, or null when there is no number.
template <typename Real>
const char* ScanReal(std::string_view text, Real& value) {
    value = 0;
    bool negative = false;
    std::size_t start = 0;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        start = 1;
    }
    // from_chars takes no "+" and we apply the sign ourselves, so a second sign fails.
    if (start < text.size() && (text[start] == '+' || text[start] == '-')) return nullptr;
    const char* first = text.data() + start;
    const char* last = text.data() + text.size();
    Real parsed = 0;
    const std::from_chars_result result =
        std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ec == std::errc::invalid_argument) return nullptr;
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view consumed(first, result.ptr - first);
        parsed = DecimalMagnitude(consumed) >= 0 ? std::numeric_limits<Real>::infinity() : Real(0);
    }
    value = negative ? -parsed : parsed;
    return result.ptr;
}

// Parses the leading integer of \p text into \p value, clamped to the range of Int
// (\p overflow tells). \return one past its last digit, or null when there is none.
template <typename Int>
const char* ScanInteger(std::string_view text, Int& value, bool& overflow) {
    value = 0;
    overflow = false;
    bool negative = false;
    std::size_t start = 0;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        start = 1;
    }
    const char* first = text.data() + start;
    const char* last = text.data() + text.size();
    // Parse the magnitude unsigned so that the most negative value is reachable.
    unsigned long long magnitude = 0;
    const std::from_chars_result result = std::from_chars(first, last, magnitude);
    if (result.ec == std::errc::invalid_argument) return nullptr;
    constexpr unsigned long long maxValue = std::numeric_limits<Int>::max();
    overflow = result.ec == std::errc::result_out_of_range;
    if (negative) {
        overflow = overflow || magnitude > maxValue + 1;
        value = overflow || magnitude == maxValue + 1
                    ? std::numeric_limits<Int>::min()
                    : static_cast<Int>(-static_cast<long long>(magnitude));
    } else {
        overflow = overflow || magnitude > maxValue;
        value = overflow ? std::numeric_limits<Int>::max() : static_cast<Int>(magnitude);
    }
    return result.ptr;
}

template <typename Int>
Int ParseIntegerPrefix(std::string_view text) {
    Int value;
    bool overflow;
    ScanInteger(text, value, overflow);
    return value;
}

bool IsWhole(std::string_view text, const char* end) {
    return end != nullptr && end == text.data() + text.size();
}

}  // namespace

FileContent::~FileContent() { Release(); }

void FileContent::Release() {
    FreeBulk(mData, mCapacity);
    mData = nullptr;
    mSize = mCapacity = 0;
}

bool FileContent::Read(const std::string& fileName) {
    Release();
    std::FILE* file = std::fopen(fileName.c_str(), "rb");
    if (file == nullptr) return false;
    // The size is only a hint for one allocation; the loop reads to the real end, so
    // files that change size, pipes and the like are read correctly too. Directories
    // and other things without a size get no hint (and then fail to read).
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(fileName, error);
    std::size_t capacity = error ? 0 : static_cast<std::size_t>(size);
    char* data = nullptr;
    std::size_t used = 0;
    bool ok = true;
    try {
        capacity += 1;  // one more byte so that the end of file is seen without regrowing
        data = AllocateBulk(capacity);
        for (;;) {
            if (used == capacity) {
                char* larger = AllocateBulk(2 * capacity);
                std::memcpy(larger, data, used);
                FreeBulk(data, capacity);
                data = larger;
                capacity *= 2;
            }
            const std::size_t got = std::fread(data + used, 1, capacity - used, file);
            used += got;
            if (got == 0) break;
        }
        ok = std::ferror(file) == 0;
    } catch (const std::exception&) {
        // Out of memory, or a size hint that is no size (a directory reports one).
        ok = false;
    }
    std::fclose(file);
    if (!ok) {
        FreeBulk(data, capacity);
        return false;
    }
    mData = data;
    mSize = used;
    mCapacity = capacity;
    return true;
}

bool LineCursor::Next(std::string_view& line) {
    if (mPos == mEnd) return false;
    const char* start = mPos;
    const char* stop = static_cast<const char*>(std::memchr(mPos, '\n', mEnd - mPos));
    if (stop == nullptr) {
        stop = mEnd;
        mPos = mEnd;
    } else {
        mPos = stop + 1;
    }
    if (stop != start && stop[-1] == '\r') --stop;
    std::size_t length = stop - start;
    if (length > mMaxLength) length = mMaxLength;
    line = std::string_view(start, length);
    ++mLine;
    return true;
}

bool ParseDoublePrefix(std::string_view text, double& value) {
    return ScanReal(text, value) != nullptr;
}

bool ParseFloatPrefix(std::string_view text, float& value) {
    return ScanReal(text, value) != nullptr;
}

int ParseInt(std::string_view text) { return ParseIntegerPrefix<int>(text); }

std::int64_t ParseInt64(std::string_view text) { return ParseIntegerPrefix<std::int64_t>(text); }

bool ParseDoubleToken(std::string_view token, double& value) {
    return IsWhole(token, ScanReal(token, value));
}

bool ParseInt64Token(std::string_view token, std::int64_t& value) {
    bool overflow;
    return IsWhole(token, ScanInteger(token, value, overflow)) && !overflow;
}

int ParseNumbers(std::string_view line, double* out, int max) {
    TokenCursor tokens(line);
    std::string_view token;
    int count = 0;
    while (tokens.Next(token)) {
        if (count == max || !ParseDoubleToken(token, out[count])) return -1;
        ++count;
    }
    return count;
}

}  // namespace ZOL
