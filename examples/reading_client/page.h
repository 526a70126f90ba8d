#pragma once

// Pictures of numbers, of 1 where there is ink and of 0 elsewhere:
//
//   const Picture page = drawPage();
//   for (const Box& box : findBoxes(map, 0.5F)) cut(page, box);
//
// Any thread may call the functions.

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace reading_client {

inline constexpr std::size_t kGlyphWidth = 5;
inline constexpr std::size_t kGlyphHeight = 7;
// From the left edge of a digit to that of the next.
inline constexpr std::size_t kAdvance = kGlyphWidth + 1;

struct Picture {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<float> pixels;

  float& at(std::size_t x, std::size_t y) { return pixels[y * width + x]; }
  float at(std::size_t x, std::size_t y) const { return pixels[y * width + x]; }
};

struct Box {
  std::size_t left = 0;
  std::size_t top = 0;
  std::size_t width = 0;
  std::size_t height = 0;
};

// Each digit touches all sides of its cell.
Picture glyph(int digit);

// A page with three numbers.
Picture drawPage();

// The boxes around connected pixels above the threshold, in order of reading.
std::vector<Box> findBoxes(const Picture& map, float threshold);

Picture cut(const Picture& page, const Box& box);

}  // namespace reading_client
