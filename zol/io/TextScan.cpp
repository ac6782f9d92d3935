// Whole-file reading, line splitting and number parsing shared by every text reader.
#include <zol/io/TextScanInternal.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>

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

template <typename Real>
bool ParseRealPrefix(std::string_view text, Real& value) {
    value = 0;
    bool negative = false;
    std::size_t start = 0;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        start = 1;
    }
    // from_chars takes no "+" and we apply the sign ourselves, so a second sign fails.
    if (start < text.size() && (text[start] == '+' || text[start] == '-')) return false;
    const char* first = text.data() + start;
    const char* last = text.data() + text.size();
    Real parsed = 0;
    const std::from_chars_result result =
        std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ec == std::errc::invalid_argument) return false;
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view consumed(first, result.ptr - first);
        parsed = DecimalMagnitude(consumed) >= 0 ? std::numeric_limits<Real>::infinity() : Real(0);
    }
    value = negative ? -parsed : parsed;
    return true;
}

template <typename Int>
Int ParseIntegerPrefix(std::string_view text) {
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
    if (result.ec == std::errc::invalid_argument) return 0;
    const bool overflow = result.ec == std::errc::result_out_of_range;
    constexpr unsigned long long maxValue = std::numeric_limits<Int>::max();
    if (negative) {
        if (overflow || magnitude > maxValue) return std::numeric_limits<Int>::min();
        return static_cast<Int>(-static_cast<long long>(magnitude));
    }
    if (overflow || magnitude > maxValue) return std::numeric_limits<Int>::max();
    return static_cast<Int>(magnitude);
}

}  // namespace

bool ReadWholeFile(const std::string& fileName, std::string& content) {
    content.clear();
    std::FILE* file = std::fopen(fileName.c_str(), "rb");
    if (file == nullptr) return false;
    // The size is only a hint for one allocation; the loop reads to the real end, so
    // files that change size or do not seek are read correctly too.
    std::size_t hint = 0;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        const long size = std::ftell(file);
        if (size > 0) hint = static_cast<std::size_t>(size);
        std::fseek(file, 0, SEEK_SET);
    }
    bool ok = true;
    try {
        content.resize(hint + 1);
        std::size_t used = 0;
        for (;;) {
            if (used == content.size()) content.resize(content.size() * 2);
            const std::size_t got = std::fread(&content[used], 1, content.size() - used, file);
            used += got;
            if (got == 0) break;
        }
        ok = std::ferror(file) == 0;
        content.resize(ok ? used : 0);
    } catch (const std::exception&) {
        // Out of memory, or a size hint that is no size (a directory reports one).
        ok = false;
        content = std::string();
    }
    std::fclose(file);
    return ok;
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
    return true;
}

bool ParseDoublePrefix(std::string_view text, double& value) {
    return ParseRealPrefix(text, value);
}

bool ParseFloatPrefix(std::string_view text, float& value) { return ParseRealPrefix(text, value); }

int ParseInt(std::string_view text) { return ParseIntegerPrefix<int>(text); }

std::int64_t ParseInt64(std::string_view text) { return ParseIntegerPrefix<std::int64_t>(text); }

}  // namespace ZOL
