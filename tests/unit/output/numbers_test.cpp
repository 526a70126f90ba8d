#include "output/numbers.h"

#include <gtest/gtest.h>

#include <limits>

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

TEST(LiteralsTest, QuotesByteForByte) {
  EXPECT_EQ(quoted("a\"b\\n"), "\"a\"b\\n\"");
  EXPECT_EQ(quotedOrNull(""), "\"\"");
  EXPECT_EQ(quotedOrNull(nullptr), "NULL");
  for (const char* text : {"a\"", "\\", "a\nb", "\r"})
    EXPECT_TRUE(isUnsafeInLiteral(text)) << text;
  for (const char* text : {"", "a b/c?%d'", "\xC3\xA4"})
    EXPECT_FALSE(isUnsafeInLiteral(text)) << text;
}

// Three octal digits always, and nothing that could begin a trigraph.
TEST(LiteralsTest, EscapesWhatWouldNotReadBack) {
  EXPECT_EQ(escapedLiteral("a\"b\\ ?\?= \x01"
                           "7\x7F\n\xC3"),
            "\"a\\\"b\\\\ ?\\?= \\0017\\177\\012\xC3\"");
}

}  // namespace
}  // namespace kiv::output::test
