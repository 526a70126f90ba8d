#include "output/numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "output/literals.h"

namespace kiv::output::test {
namespace {

using Limits = std::numeric_limits<float>;

TEST(DecimalTest, WritesNumbersAtTheirBorders) {
  EXPECT_EQ(decimal(std::uint8_t{255}), "255");
  EXPECT_EQ(decimal(std::numeric_limits<std::int64_t>::min()),
            "-9223372036854775808");
}

TEST(FloatTextTest, HasNineSignificantDigits) {
  const std::pair<float, const char*> cases[] = {
      {0.1F, "0.100000001"},
      {1.0F, "1"},
      {1e-10F, "1.00000001e-10"},
      {-128.25F, "-128.25"},
      {0.0F, "0"},
      {1e9F, "1e+09"},
      {123456789.0F, "123456792"},
      {Limits::max(), "3.40282347e+38"},
      // What has no digits, and an integer that would lose its sign.
      {-0.0F, "-0.0"},
      {Limits::infinity(), "(1.0f/0.0f)"},
      {-Limits::infinity(), "(-1.0f/0.0f)"},
      {Limits::quiet_NaN(), "(0.0f/0.0f)"},
      {-Limits::quiet_NaN(), "(0.0f/0.0f)"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(floatText(value), text);
}

// As a compiler reads a constant without suffix: as a double, then narrowed.
TEST(FloatTextTest, ReadsBackTheSameBits) {
  const auto expectSameBits = [](float value) {
    const std::string text = floatText(value);
    char* end = nullptr;
    const auto read = static_cast<float>(std::strtod(text.c_str(), &end));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(read),
              std::bit_cast<std::uint32_t>(value))
        << text;
    EXPECT_EQ(*end, '\0') << text;
  };
  for (const float value :
       {0.0F, Limits::max(), Limits::min(), Limits::denorm_min(), 16777216.0F,
        2147483648.0F, 999999984.0F}) {
    expectSameBits(value);
    expectSameBits(-value);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto value =
        std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (std::isfinite(value)) expectSameBits(value);
  }
}

TEST(LiteralsTest, QuotesByteForByte) {
  EXPECT_EQ(quoted("a\"b\\n"), "\"a\"b\\n\"");
  EXPECT_EQ(quotedOrNull(""), "\"\"");
  EXPECT_EQ(quotedOrNull(nullptr), "NULL");
  for (const char* text : {"a\"", "\\", "a\nb", "\r"})
    EXPECT_TRUE(isUnsafeInLiteral(text)) << text;
  for (const char* text : {"", "a b/c?%d'", "\xC3\xA4"})
    EXPECT_FALSE(isUnsafeInLiteral(text)) << text;
}

// The text that a C compiler reads from between the quotes of a literal.
std::string readLiteral(std::string_view literal) {
  std::string text;
  while (!literal.empty()) {
    char c = literal[0];
    literal.remove_prefix(1);
    EXPECT_TRUE(c < 0 || (c >= ' ' && c != '\x7f' && c != '"'));
    if (c == '\\' && literal.find_first_of("01234567") != 0) {
      c = literal[0];
      EXPECT_TRUE(c == '"' || c == '\\' || c == '?') << c;
      literal.remove_prefix(1);
    } else if (c == '\\') {
      // As many octal digits as there are, three at most.
      const std::string digits(literal.substr(
          0, std::min<std::size_t>(literal.find_first_not_of("01234567"), 3)));
      c = static_cast<char>(std::stoi(digits, nullptr, 8));
      literal.remove_prefix(digits.size());
    }
    text += c;
  }
  return text;
}

TEST(LiteralsTest, EscapedLiteralsReadBack) {
  std::string text =
      "?\?= ?\?/ ?\?? \x01"
      "7 \n0 \"\\";
  for (int c = 1; c < 256; ++c) text += static_cast<char>(c);
  const std::string literal = escapedLiteral(text);
  EXPECT_EQ(literal.find("?\?"), std::string::npos) << "a trigraph";
  ASSERT_TRUE(literal.starts_with('"') && literal.ends_with('"'));
  EXPECT_EQ(readLiteral(literal.substr(1, literal.size() - 2)), text);
}

}  // namespace
}  // namespace kiv::output::test
