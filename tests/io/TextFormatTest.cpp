// The number formatting and parsing under every reader and writer: formatting must
// give the default stream's text exactly, parsing must agree with strtod in the C
// locale, and lines must be split as the readers expect.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

#include <zol/io/TextScanInternal.h>
#include <zol/io/TextWriterInternal.h>

using namespace ZOL;

namespace {

std::string Formatted(double value) {
    char text[kNumberTextMax];
    return std::string(text, FormatReal(text, value));
}

std::string Streamed(double value) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    return out.str();
}

// Parses \p text both ways and compares result and success.
void ExpectParsedLikeStrtod(const std::string& text) {
    char* end = nullptr;
    const double expected = std::strtod(text.c_str(), &end);
    double value = -99;
    EXPECT_EQ(ParseDoublePrefix(text, value), end != text.c_str()) << text;
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(value)) << text;
    } else {
        EXPECT_EQ(value, expected) << text;
    }
}

}  // namespace

TEST(TextFormat, RealMatchesDefaultStreamText) {
    const double inf = std::numeric_limits<double>::infinity();
    const double special[] = {0.0,   -0.0,     1.0,      -1.0,  0.5,           1e-5,
                              1e-4,  123456.0, 999999.5, 1e6,   1e100,         -1e-300,
                              1e300, 4.9e-324, 2.5,      0.15,  1.0000005,     999999.4,
                              inf,   -inf,     1.0 / 3,  100.0, 665187.123456, 5648349.75};
    for (const double v : special) EXPECT_EQ(Formatted(v), Streamed(v)) << v;
    EXPECT_EQ(Formatted(std::nan("")), Streamed(std::nan("")));
    EXPECT_EQ(Formatted(-std::nan("")), Streamed(-std::nan("")));

    std::mt19937_64 random(17);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-40, 40);
    std::uniform_int_distribution<std::uint64_t> bits;
    for (int i = 0; i < 20000; ++i) {
        const double scaled = mantissa(random) * std::pow(10.0, exponent(random));
        ASSERT_EQ(Formatted(scaled), Streamed(scaled)) << scaled;
        double raw;
        const std::uint64_t pattern = bits(random);
        std::memcpy(&raw, &pattern, sizeof raw);
        ASSERT_EQ(Formatted(raw), Streamed(raw));
    }
}

TEST(TextScan, DoubleParsesLikeStrtod) {
    const char* const texts[] = {"1.5",  "-2",     "+3.25",    ".5",          "5.",  "1e3",
                                 "1E-2", "7abc",   "1e",       "2/3/4",       "abc", "",
                                 "-",    "+-1",    "1e999",    "-1e999",      "inf", "-Infinity",
                                 "nan",  "1e-999", "4.9e-324", "0.0000e99999"};
    for (const char* text : texts) ExpectParsedLikeStrtod(text);
    ExpectParsedLikeStrtod("123456789012345678901234567890e300");
    ExpectParsedLikeStrtod("0.000000000000000000000000000001e-300");
    // Random values at full and at written precision are rounded exactly once.
    std::mt19937_64 random(3);
    std::uniform_int_distribution<std::uint64_t> bits;
    char text[64];
    for (int i = 0; i < 2000; ++i) {
        double raw;
        const std::uint64_t pattern = bits(random);
        std::memcpy(&raw, &pattern, sizeof raw);
        std::snprintf(text, sizeof text, i % 2 ? "%.17g" : "%.6g", raw);
        ExpectParsedLikeStrtod(text);
    }
    float single = 0;
    ASSERT_TRUE(ParseFloatPrefix("0.1", single));
    EXPECT_EQ(single, 0.1f);
    ASSERT_TRUE(ParseFloatPrefix("-1e39", single));
    EXPECT_EQ(single, -std::numeric_limits<float>::infinity());
    EXPECT_FALSE(ParseFloatPrefix("endloop", single));
}

TEST(TextScan, IntegersClampAndStrictTokensMustBeWhole) {
    const int max = std::numeric_limits<int>::max(), min = std::numeric_limits<int>::min();
    const struct {
        const char* text;
        int value;
    } ints[] = {{"42", 42},          {"-7", -7},           {"+7", 7},
                {"3.9", 3},          {"12//5", 12},        {"", 0},
                {"x1", 0},           {"99999999999", max}, {"-99999999999", min},
                {"-2147483648", min}};
    for (const auto& c : ints) EXPECT_EQ(ParseInt(c.text), c.value) << c.text;
    EXPECT_EQ(ParseInt64("99999999999999999999999"), std::numeric_limits<std::int64_t>::max());

    const struct {
        const char* text;
        bool isNumber;
        double value;
    } reals[] = {
        {"1.5", true, 1.5},    {"+2", true, 2.0},  {"-1e999", true, -HUGE_VAL},
        {"1e-999", true, 0.0}, {"1.5x", false, 0}, {"+-1", false, 0},
        {"", false, 0},        {"1 2", false, 0},  {"0.0000e99999", true, 0.0},
    };
    for (const auto& c : reals) {
        double value = -99;
        EXPECT_EQ(ParseDoubleToken(c.text, value), c.isNumber) << c.text;
        if (c.isNumber) {
            EXPECT_EQ(value, c.value) << c.text;
        }
    }
    std::int64_t integer = 0;
    EXPECT_TRUE(ParseInt64Token("-9223372036854775808", integer));
    EXPECT_EQ(integer, std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(ParseInt64Token("9223372036854775808", integer));  // out of range
    EXPECT_FALSE(ParseInt64Token("12.0", integer));
    double values[3];
    EXPECT_EQ(ParseNumbers(" 1\t2 nan ", values, 3), 3);
    EXPECT_EQ(ParseNumbers("1 2 3 4", values, 3), -1);  // more than asked for
}

TEST(TextScan, LinesDropLineEndsAreNumberedAndCutAtTheLimit) {
    const std::string text = "a b\r\n\nc\n" + std::string(600, 'x') + "\ntail";
    LineCursor lines(text, 511);
    std::vector<std::string> got;
    std::string_view line;
    EXPECT_EQ(lines.LineNumber(), 0);
    while (lines.Next(line)) got.emplace_back(line);
    EXPECT_EQ(got, (std::vector<std::string>{"a b", "", "c", std::string(511, 'x'), "tail"}));
    EXPECT_EQ(lines.LineNumber(), 5);
    EXPECT_TRUE(lines.AtEnd());
    EXPECT_FALSE(LineCursor("").Next(line));

    TokenCursor tokens(" v\t1.0  2.0\r\n3 ");
    got.clear();
    while (tokens.Next(line)) got.emplace_back(line);
    EXPECT_EQ(got, (std::vector<std::string>{"v", "1.0", "2.0", "3"}));
}

TEST(TextScan, WholeFileIsReadAndMissingFileOrDirectoryIsNot) {
    FileContent content;
    ASSERT_TRUE(content.Read(ZOL_TEST_DATA "/formats/off/2triangles.off"));
    EXPECT_EQ(content.size(), 98u);
    EXPECT_EQ(content.View().substr(0, 4), "OFF\n");
    EXPECT_FALSE(content.Read("no_such_dir/no_such_file.obj"));
    EXPECT_EQ(content.size(), 0u);
    EXPECT_FALSE(content.Read("."));
}
