#include "output/numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "c_program.h"
#include "output/literals.h"

namespace kiv::output::test {
namespace {

using Limits = std::numeric_limits<float>;

TEST(FloatTextTest, HasNineSignificantDigits) {
  const std::pair<float, const char*> cases[] = {
      {0.1F, "0.100000001"},
      {1.0F, "1"},
      {1e-10F, "1.00000001e-10"},
      {1.0F / 3, "0.333333343"},
      {-128.25F, "-128.25"},
      {0.0F, "0"},
      {1e9F, "1e+09"},
      {123456789.0F, "123456792"},
      {Limits::max(), "3.40282347e+38"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(floatText(value), text);
}

// All kinds of bit patterns, compiled as C as they stand in a recording.
TEST(FloatTextTest, ReadsBackTheSameBitsInAProgram) {
  std::vector<float> values;
  for (const float value :
       {0.0F, Limits::max(), Limits::min(), Limits::denorm_min(),
        Limits::infinity(), 16777216.0F, 2147483648.0F, 999999984.0F})
    values.insert(values.end(), {value, -value});
  std::mt19937 random(1);
  while (values.size() < 500) {
    const auto value =
        std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isnan(value)) values.push_back(value);
  }
  std::string program = "float nan = " + floatText(Limits::quiet_NaN()) +
                        ";\nif (nan == nan) return 1;\nfloat values[] = {";
  for (const float value : values) program += floatText(value) + ", ";
  program += R"(};
    for (unsigned i = 0; i < sizeof(values) / sizeof(values[0]); ++i) {
      unsigned bits;
      memcpy(&bits, &values[i], 4);
      printf("%u ", bits);
    })";
  bool succeeded = false;
  std::istringstream printed(kiv::test::runC(program, succeeded));
  ASSERT_TRUE(succeeded);
  for (const float value : values) {
    std::uint32_t bits = 0;
    printed >> bits;
    EXPECT_EQ(bits, std::bit_cast<std::uint32_t>(value)) << floatText(value);
  }
}

TEST(LiteralsTest, QuotesByteForByte) {
  EXPECT_EQ(quoted(""), "\"\"");
  EXPECT_EQ(quoted("a\"b\\n"), "\"a\"b\\n\"");
  EXPECT_EQ(quotedOrNull("abc"), "\"abc\"");
  EXPECT_EQ(quotedOrNull(""), "\"\"");
  EXPECT_EQ(quotedOrNull(nullptr), "NULL");
  for (const char* text : {"a\"", "\\", "a\nb", "\r"})
    EXPECT_TRUE(isUnsafeInLiteral(text)) << text;
  for (const char* text : {"", "a b/c?%d'", "\xC3\xA4"})
    EXPECT_FALSE(isUnsafeInLiteral(text)) << text;
}

TEST(LiteralsTest, EscapedLiteralReadsBackInAProgram) {
  std::string text =
      "?\?= ?\?/ \x01"
      "7 \n0 \"\\";
  for (int c = 1; c < 256; ++c) text += static_cast<char>(c);
  bool succeeded = false;
  const std::string printed = kiv::test::runC(
      "fputs(" + escapedLiteral(text) + ", stdout);\n", succeeded);
  EXPECT_TRUE(succeeded);
  EXPECT_EQ(printed, text);
}

}  // namespace
}  // namespace kiv::output::test
