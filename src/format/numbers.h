#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>

// Numbers in the text of the generated program, both ways: plain decimal, the
// same in every locale. From any thread.
//
//   char text[kMostNumberCharacters];
//   const std::string_view shown(text, formatNumber(text, 0.5F) - text);
//   const std::optional<float> value = parseFloat(shown);
namespace kiv::format {

// The longest text that formatNumber writes.
inline constexpr std::size_t kMostNumberCharacters = 24;

// Writes a number where kMostNumberCharacters are free and returns the end of
// its text, which has no zero behind it.
char* formatUnsigned(char* text, std::uint64_t number);
template <std::integral Number>
char* formatNumber(char* text, Number number) {
  if constexpr (std::signed_integral<Number>) {
    if (number < 0) {
      *text = '-';
      const auto bits = static_cast<std::uint64_t>(std::int64_t{number});
      return formatUnsigned(text + 1, 0 - bits);
    }
  }
  return formatUnsigned(text,
                        static_cast<std::make_unsigned_t<Number>>(number));
}

// A float is a C constant that reads back as the same value: nine significant
// digits in the shorter of fixed and scientific notation (0.1f is
// "0.100000001", 1.0f "1", 1e-10f "1.00000001e-10"). Minus zero is "-0.0",
// since "-0" would be an integer; values that have no digits are constant
// expressions, "(0.0f/0.0f)" for every NaN and "(1.0f/0.0f)" for infinity.
char* formatNumber(char* text, float value);

// The number that a text holds and nothing else; nothing for a text that is no
// number or whose number does not fit.
template <std::integral Number>
std::optional<Number> parseNumber(std::string_view text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
  return number;
}

// The same for each form that formatNumber gives a float, and for the forms
// that people write ("0.0", "1e3", "0.5f").
std::optional<float> parseFloat(std::string_view text);

}  // namespace kiv::format
