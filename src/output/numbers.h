#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <string>

namespace kiv::output {

// The one door through which numbers enter the generated text: plain decimal,
// the same in every locale.
template <std::integral Number>
std::string decimal(Number number) {
  std::array<char, 24> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), number);
  return {text.data(), end.ptr};
}

// A float as a C constant that reads back as the same value: nine significant
// digits in the shorter of fixed and scientific notation (0.1f is
// "0.100000001", 1.0f "1", 1e-10f "1.00000001e-10"). Minus zero is "-0.0",
// since "-0" would be an integer; values that have no digits are constant
// expressions, "(0.0f/0.0f)" for every NaN and "(1.0f/0.0f)" for infinity.
std::string floatText(float value);

}  // namespace kiv::output
