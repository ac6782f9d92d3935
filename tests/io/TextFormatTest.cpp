// The number formatting and parsing under every reader and writer: formatting must
// give the default stream's text exactly, parsing must behave like atof/atoi in the C
// locale, and lines must be split as the readers expect.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
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

// A locale whose decimal point is a comma and which groups thousands, as a host in a
// German locale would set globally.
struct CommaPunct : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(TextFormat, RealIsWrittenWithSixSignificantDigits) {
    EXPECT_EQ(Formatted(0.1234567), "0.123457");
    EXPECT_EQ(Formatted(1234567.0), "1.23457e+06");
}

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

TEST(TextFormat, NumbersIgnoreTheGlobalLocale) {
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new CommaPunct));
    char text[kNumberTextMax];
    const std::string real(text, FormatReal(text, 1234.5));
    const std::string integer(text, FormatInt(text, 1234567));
    const double parsed = ParseDouble("1.5");
    std::locale::global(previous);
    EXPECT_EQ(real, "1234.5");
    EXPECT_EQ(integer, "1234567");
    EXPECT_EQ(parsed, 1.5);
}

TEST(TextScan, DoubleParsesLikeAtof) {
    const struct {
        const char* text;
        double value;
        bool isNumber;
    } cases[] = {
        {"1.5", 1.5, true},
        {"-2", -2.0, true},
        {"+3.25", 3.25, true},
        {".5", 0.5, true},
        {"5.", 5.0, true},
        {"1e3", 1000.0, true},
        {"1E-2", 0.01, true},
        {"7abc", 7.0, true},
        {"1e", 1.0, true},
        {"2/3/4", 2.0, true},
        {"abc", 0.0, false},
        {"", 0.0, false},
        {"-", 0.0, false},
        {"+-1", 0.0, false},
        {"1e999", HUGE_VAL, true},
        {"-1e999", -HUGE_VAL, true},
        {"1e-999", 0.0, true},
        {"0.0000e99999", 0.0, true},
        {"123456789012345678901234567890e300", HUGE_VAL, true},
        {"0.000000000000000000000000000001e-300", 0.0, true},
        {"inf", HUGE_VAL, true},
        {"-Infinity", -HUGE_VAL, true},
    };
    for (const auto& c : cases) {
        double value = -99;
        EXPECT_EQ(ParseDoublePrefix(c.text, value), c.isNumber) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
    double value = 0;
    EXPECT_TRUE(ParseDoublePrefix("nan", value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(TextScan, FloatIsRoundedOnceFromTheText) {
    float value = 0;
    ASSERT_TRUE(ParseFloatPrefix("0.1", value));
    EXPECT_EQ(value, 0.1f);
    ASSERT_TRUE(ParseFloatPrefix("-1e39", value));
    EXPECT_EQ(value, -std::numeric_limits<float>::infinity());
    EXPECT_FALSE(ParseFloatPrefix("endloop", value));
}

TEST(TextScan, IntegerParsesLikeAtoiButClamps) {
    EXPECT_EQ(ParseInt("42"), 42);
    EXPECT_EQ(ParseInt("-7"), -7);
    EXPECT_EQ(ParseInt("+7"), 7);
    EXPECT_EQ(ParseInt("3.9"), 3);
    EXPECT_EQ(ParseInt("12//5"), 12);
    EXPECT_EQ(ParseInt(""), 0);
    EXPECT_EQ(ParseInt("x1"), 0);
    EXPECT_EQ(ParseInt("99999999999"), std::numeric_limits<int>::max());
    EXPECT_EQ(ParseInt("-99999999999"), std::numeric_limits<int>::min());
    EXPECT_EQ(ParseInt("-2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(ParseInt64("99999999999999999999999"), std::numeric_limits<std::int64_t>::max());
}

TEST(TextScan, LinesDropLineEndsAndAreCutAtTheLimit) {
    const std::string text = "a b\r\n\nc\n" + std::string(600, 'x') + "\ntail";
    LineCursor lines(text, 511);
    std::vector<std::string> got;
    std::string_view line;
    while (lines.Next(line)) got.emplace_back(line);
    EXPECT_EQ(got, (std::vector<std::string>{"a b", "", "c", std::string(511, 'x'), "tail"}));
    EXPECT_TRUE(lines.AtEnd());

    LineCursor empty("");
    EXPECT_FALSE(empty.Next(line));
}

TEST(TextScan, TokensAreSeparatedByBlanksTabsAndLineEnds) {
    TokenCursor tokens(" v\t1.0  2.0\r\n3 ");
    std::vector<std::string> got;
    std::string_view token;
    while (tokens.Next(token)) got.emplace_back(token);
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

TEST(TextScan, StrictNumbersMustFillTheWholeToken) {
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
    EXPECT_TRUE(std::isnan(values[2]));
    EXPECT_EQ(ParseNumbers("1 2 3 4", values, 3), -1);  // more than asked for
    EXPECT_EQ(ParseNumbers("1 two", values, 3), -1);
    EXPECT_EQ(ParseNumbers("  ", values, 3), 0);
}

TEST(TextScan, LinesAreNumberedAsTheyAreHandedOut) {
    LineCursor lines("a\r\n\nb");
    std::string_view line;
    EXPECT_EQ(lines.LineNumber(), 0);
    while (lines.Next(line)) {
    }
    EXPECT_EQ(lines.LineNumber(), 3);
}
