#include "format/numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "format/literals.h"

namespace kiv::format::test {
namespace {

using Limits = std::numeric_limits<float>;

template <typename Number>
std::string textOf(Number number) {
  std::array<char, kMostNumberCharacters> text{};
  return {text.data(), formatNumber(text.data(), number)};
}

TEST(NumberTest, IsWrittenAtItsBordersAndReadBack) {
  EXPECT_EQ(textOf(std::uint8_t{255}), "255");
  EXPECT_EQ(textOf(std::numeric_limits<std::int64_t>::min()),
            "-9223372036854775808");
  EXPECT_EQ(parseNumber<std::uint8_t>("255"), 255);
  for (const char* text : {"256", "-1", "", "1 ", "0x1"})
    EXPECT_FALSE(parseNumber<std::uint8_t>(text)) << text;
}

TEST(FloatTest, HasNineSignificantDigits) {
  const std::pair<float, const char*> cases[] = {
      {0.1F, "0.100000001"},
      {1.0F, "1"},
      {1e-10F, "1.00000001e-10"},
      {-128.25F, "-128.25"},
      {0.0F, "0"},
      {1e9F, "1e+09"},
      {123456789.0F, "123456792"},
      {Limits::max(), "3.40282347e+38"},
      // Values without digits, and an integer that would lose its sign.
      {-0.0F, "-0.0"},
      {Limits::infinity(), "(1.0f/0.0f)"},
      {-Limits::infinity(), "(-1.0f/0.0f)"},
      {Limits::quiet_NaN(), "(0.0f/0.0f)"},
      {-Limits::quiet_NaN(), "(0.0f/0.0f)"}};
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(textOf(value), text);
    const auto back = parseFloat(text);
    ASSERT_TRUE(back) << text;
    EXPECT_TRUE(std::isnan(value) ? std::isnan(*back)
                                  : std::bit_cast<std::uint32_t>(*back) ==
                                        std::bit_cast<std::uint32_t>(value))
        << text;
  }
  for (const char* text : {"", "nan", "inf", "1.0.0", "0x1p3", "1 "})
    EXPECT_FALSE(parseFloat(text)) << text;
}

// The digits of most floats are made by other arithmetic than those of the
// rest; both are the C library's, most of all around powers of ten.
TEST(FloatTest, HasTheDigitsOfTheCLibrary) {
  const auto expectSame = [](float value) {
    if (!std::isfinite(value) || value == 0) return;
    std::array<char, 64> expected{};
    std::snprintf(expected.data(), expected.size(), "%.9g", value);
    ASSERT_EQ(textOf(value), expected.data());
  };
  std::mt19937 random(7);
  for (int i = 0; i < 100'000 && !testing::Test::HasFailure(); ++i) {
    expectSame(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
    expectSame(static_cast<float>(random() % 100'000) / 1000);
  }
  for (int exponent = -8; exponent < 12; ++exponent) {
    float value = std::pow(10.0F, static_cast<float>(exponent)) * 0.9999F;
    for (int i = 0; i < 4000 && !testing::Test::HasFailure(); ++i) {
      expectSame(value);
      value = std::nextafter(value, Limits::max());
    }
  }
}

// Three octal digits always, and nothing that could begin a trigraph.
TEST(LiteralsTest, EscapesWhatWouldNotReadBack) {
  const std::string text =
      "a\"b\\ ?\?= \x01"
      "7\x7F\n\xC3";
  const std::string literal = escapedLiteral(text);
  EXPECT_EQ(literal, "\"a\\\"b\\\\ ?\\?= \\0017\\177\\012\xC3\"");
  EXPECT_EQ(unescaped(literal.substr(1, literal.size() - 2)), text);
  for (const char* broken : {"\\", "\\n", "\\12", "\\999"})
    EXPECT_FALSE(unescaped(broken)) << broken;
}

}  // namespace
}  // namespace kiv::format::test
