#include "output/numbers.h"

#include <cmath>

namespace kiv::output {

std::string floatText(float value) {
  constexpr int kSignificantDigits = 9;
  if (std::isnan(value)) return "(0.0f/0.0f)";
  if (std::isinf(value)) return value > 0 ? "(1.0f/0.0f)" : "(-1.0f/0.0f)";
  if (value == 0.0F && std::signbit(value)) return "-0.0";
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value,
                    std::chars_format::general, kSignificantDigits);
  return {text.data(), end.ptr};
}

}  // namespace kiv::output
