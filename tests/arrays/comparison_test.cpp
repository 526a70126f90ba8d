#include "arrays/comparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "arrays/arrays.h"

namespace kiv::test {
namespace {

using namespace arrays;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Figures figuresOf(const Array& actual, const Array& expected,
                  const Tolerance& tolerance = {}) {
  return compare(actual.view(), expected.view(), tolerance);
}

TEST(Comparison, FiguresAreThoseOfThePair) {
  const Figures figures =
      figuresOf(floats({1, 2, 3}), floats({1, 4, 3.5}), {0, 0});
  EXPECT_EQ(figures.largest, 2);
  EXPECT_NEAR(figures.mean, 2.5 / 3, 1e-12);
  EXPECT_EQ(figures.largestRelative, 0.5);
  EXPECT_NEAR(figures.cosine, 19.5 / std::sqrt(14 * 29.25), 1e-12);
  EXPECT_EQ(figures.over, 2U);
  EXPECT_EQ(figures.firstOver->index, 1U);
  EXPECT_EQ(toString(figures),
            "max 2, mean 0.833, relative 0.5, cosine 0.963624112, 2 of 3 over, "
            "first at [1]: 2 instead of 4");
}

TEST(Comparison, TheExpectedValueScalesTheTolerance) {
  EXPECT_FALSE(figuresOf(floats({110}), floats({100}), {0.1, 0}).isOver());
  EXPECT_TRUE(figuresOf(floats({100}), floats({90.5}), {0.1, 0}).isOver());
  EXPECT_FALSE(figuresOf(floats({0.5}), floats({0}), {0.1, 0.5}).isOver());
}

TEST(Comparison, SpecialNumbersAreWithinWhenBothAreTheSame) {
  const auto same = floats({kNan, kInfinity, -kInfinity, 1});
  const Figures equal = figuresOf(same, same);
  EXPECT_FALSE(equal.isOver());
  EXPECT_EQ(equal.largest, 0);
  EXPECT_EQ(equal.actual.nans, 1U);
  EXPECT_EQ(equal.expected.infinities, 2U);
  const Figures other =
      figuresOf(floats({0, -kInfinity, 1e30F}), floats({kNan, kInfinity, 0}));
  EXPECT_EQ(other.over, 3U);
  EXPECT_EQ(other.actual.nans, 0U);
  EXPECT_EQ(other.expected.nans, 1U);
  EXPECT_EQ(figuresOf(floats({0, 0}), floats({0, 0})).cosine, 1);
  EXPECT_EQ(figuresOf(floats({0, 0}), floats({0, 1})).cosine, 0);
}

TEST(Comparison, OtherShapesAreOverAndOtherTypesAreNot) {
  const auto flat = floats({1, 2, 3, 4});
  auto square = flat;
  square.shape = {2, 2};
  const Figures shapes = figuresOf(square, flat);
  EXPECT_TRUE(shapes.isOver());
  EXPECT_EQ(shapes.count, 4U);
  EXPECT_EQ(figuresOf(flat, floats({1})).count, 0U);
  const auto integers = arrayOf<std::uint8_t>({'u', 1}, {4}, {1, 2, 3, 4});
  EXPECT_FALSE(figuresOf(integers, flat).isOver());
  EXPECT_EQ(figuresOf(integers, flat).elements, "uint8 and float32");
  square.data[12] = std::byte{1};
  EXPECT_EQ(figuresOf(square, flat, {0, 0}).firstOver->place, "[1, 1]");
}

TEST(Comparison, WideIntegersDoNotLoseTheirLastBits) {
  const std::int64_t large = std::int64_t{1} << 60;
  const auto a = arrayOf<std::int64_t>({'i', 8}, {1}, {large});
  const auto b = arrayOf<std::int64_t>({'i', 8}, {1}, {large + 1});
  EXPECT_EQ(figuresOf(a, b).largest, 1);
  EXPECT_EQ(figuresOf(b, a).largest, 1);
}

TEST(Comparison, SmallFloatsHaveTheirValues) {
  const auto halves = arrayOf<std::uint16_t>(
      {'f', 2}, {6}, {0x3c00, 0xc000, 0x0001, 0x7bff, 0xfc00, 0x7e00});
  EXPECT_EQ(valueAt(halves.view(), 0), 1);
  EXPECT_EQ(valueAt(halves.view(), 1), -2);
  EXPECT_EQ(valueAt(halves.view(), 2), std::ldexp(1, -24));
  EXPECT_EQ(valueAt(halves.view(), 3), 65504);
  EXPECT_EQ(valueAt(halves.view(), 4), -kInfinity);
  EXPECT_TRUE(std::isnan(valueAt(halves.view(), 5)));
  const auto bfloats = arrayOf<std::uint16_t>({'V', 2}, {1}, {0xc040});
  EXPECT_EQ(valueAt(bfloats.view(), 0), -3);
  EXPECT_EQ(textAt(bfloats.view(), 0), "-3");
}

}  // namespace
}  // namespace kiv::test
