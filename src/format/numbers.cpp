#include "format/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace kiv::format {
namespace {

constexpr std::string_view kNaN = "(0.0f/0.0f)";
constexpr std::string_view kInfinity = "(1.0f/0.0f)";
constexpr std::string_view kMinusInfinity = "(-1.0f/0.0f)";
constexpr std::string_view kMinusZero = "-0.0";

// "00", "01" and so on up to "99".
constexpr auto kPairs = [] {
  std::array<char, 200> digits{};
  for (std::size_t i = 0; i < digits.size() / 2; ++i) {
    digits[2 * i] = static_cast<char>('0' + i / 10);
    digits[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return digits;
}();

constexpr int kSignificantDigits = 9;

// Powers of ten that a double holds exactly.
constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3,  1e4,  1e5,  1e6,
                              1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13};

// The exponent of a value's first digit, from -4 to 8.
int exponentOf(double value) {
  int exponent = -4;
  while (exponent < -1 && value * kPowers[-exponent - 1] >= 1) ++exponent;
  while (exponent < kSignificantDigits - 1 && exponent >= -1 &&
         value >= kPowers[exponent + 1])
    ++exponent;
  return exponent;
}

// The digits of most values by plain arithmetic, which takes a tenth of
// std::to_chars's time; null where the last digit's rounding is not beyond
// doubt, or the form is not that of "0.000123" or "123.5".
char* formatOrdinary(char* text, double value) {
  constexpr double kSmallest = 1e-4;
  constexpr double kDoubt = 1e-5;
  constexpr std::uint32_t kOneTooMany = 1'000'000'000;
  if (value < kSmallest || value >= kOneTooMany) return nullptr;
  const int exponent = exponentOf(value);
  const double scaled = value * kPowers[kSignificantDigits - 1 - exponent];
  auto digits = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - digits;
  if (std::abs(rest - 0.5) < kDoubt) return nullptr;
  if (rest > 0.5) ++digits;
  if (digits < kOneTooMany / 10 || digits >= kOneTooMany) return nullptr;
  std::array<char, kMostNumberCharacters> all{};
  formatNumber(all.data(), digits);
  std::ptrdiff_t count = kSignificantDigits;
  const std::ptrdiff_t whole = std::max(exponent + 1, 0);
  while (count > whole && all[static_cast<std::size_t>(count) - 1] == '0')
    --count;
  // More is copied than is shown, since copies of a fixed size cost less.
  if (exponent < 0) {
    constexpr std::string_view kZeros = "0.000";
    std::memcpy(text, kZeros.data(), kZeros.size());
    text += 1 - exponent;
    std::memcpy(text, all.data(), kSignificantDigits);
    return text + count;
  }
  std::memcpy(text, all.data(), kSignificantDigits);
  if (count == whole) return text + count;
  text[whole] = '.';
  std::memcpy(text + whole + 1, all.data() + whole, kSignificantDigits - 1);
  return text + count + 1;
}

}  // namespace

// Most numbers are sizes of tensors.
char* formatUnsigned(char* text, std::uint64_t number) {
  constexpr std::uint64_t kFourDigits = 1000;
  if (number >= kFourDigits)
    return std::to_chars(text, text + kMostNumberCharacters, number).ptr;
  const std::uint64_t hundreds = number / 100;
  if (hundreds != 0) *text++ = static_cast<char>('0' + hundreds);
  const char* pair = &kPairs[2 * (number - 100 * hundreds)];
  if (number < 10) {
    *text = pair[1];
    return text + 1;
  }
  std::memcpy(text, pair, 2);
  return text + 2;
}

char* formatNumber(char* text, float value) {
  const auto word = [text](std::string_view fixed) {
    return std::ranges::copy(fixed, text).out;
  };
  if (std::isnan(value)) return word(kNaN);
  if (std::isinf(value)) return word(value > 0 ? kInfinity : kMinusInfinity);
  if (value == 0.0F && std::signbit(value)) return word(kMinusZero);
  // Whole numbers of that many digits are written as such, and often.
  constexpr float kTooLong = 1e9F;
  if (std::abs(value) < kTooLong && value == std::trunc(value))
    return formatNumber(text, static_cast<std::int32_t>(value));
  char* const digits = value < 0 ? text + 1 : text;
  if (char* end = formatOrdinary(digits, std::abs(value)); end != nullptr) {
    if (value < 0) *text = '-';
    return end;
  }
  return std::to_chars(text, text + kMostNumberCharacters, value,
                       std::chars_format::general, kSignificantDigits)
      .ptr;
}

std::optional<float> parseFloat(std::string_view text) {
  constexpr auto kLimits = std::numeric_limits<float>();
  if (text == kNaN) return kLimits.quiet_NaN();
  if (text == kInfinity) return kLimits.infinity();
  if (text == kMinusInfinity) return -kLimits.infinity();
  if (text.ends_with('f') || text.ends_with('F')) text.remove_suffix(1);
  // from_chars takes words for numbers: "inf", "nan".
  if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos)
    return std::nullopt;
  float number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
  return number;
}

}  // namespace kiv::format
