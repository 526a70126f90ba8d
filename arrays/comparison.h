#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "arrays/array.h"

// How far two arrays are apart.
//
//   const Figures figures = compare(actual, expected, {.rtol = 1e-3});
//   if (figures.isOver()) std::cout << toString(figures);
//
// From any thread.
namespace kiv::arrays {

// An element is within when |actual - expected| <= atol + rtol * |expected|.
struct Tolerance {
  double rtol = 1e-3;
  double atol = 1e-5;
};

// Not a number and infinity, how often in one array.
struct Specials {
  std::uint64_t nans = 0;
  std::uint64_t infinities = 0;
};

struct FirstOver {
  std::uint64_t index = 0;
  // An index for each dimension: "[0, 2, 1]".
  std::string place;
  std::string actual;
  std::string expected;
};

struct Figures {
  // Set where shapes differ. With as many elements in each, the figures below
  // still say how far these are apart.
  std::string shapes;
  // Set where the types of elements differ, which alone is no difference.
  std::string elements;
  std::uint64_t count = 0;
  // Over the elements that are finite in both.
  double largest = 0;
  double mean = 0;
  double largestRelative = 0;
  // 1 for two vectors of zeros, 0 for one.
  double cosine = 1;
  Specials actual;
  Specials expected;
  // How many elements are not within, and the first one.
  std::uint64_t over = 0;
  std::optional<FirstOver> firstOver;

  bool isOver() const { return over != 0 || !shapes.empty(); }
};

// Two that are not a number are within, and so are two infinities with the same
// sign.
Figures compare(const ArrayView& actual, const ArrayView& expected,
                const Tolerance& tolerance);

// One line: "max 1.2e-05, mean 3.1e-07, relative 2e-05, cosine 0.999999".
std::string toString(const Figures& figures);

}  // namespace kiv::arrays
