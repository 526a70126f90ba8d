#include "page.h"

#include <algorithm>
#include <utility>

namespace reading_client {
namespace {

constexpr std::array<std::array<std::string_view, kGlyphHeight>, 10> kDigits = {
    {
        {".###.", "#...#", "#..##", "#.#.#", "##..#", "#...#", ".###."},
        {"..#..", ".##..", "#.#..", "..#..", "..#..", "..#..", "#####"},
        {".###.", "#...#", "....#", "...#.", "..#..", ".#...", "#####"},
        {"#####", "...#.", "..#..", "...#.", "....#", "#...#", ".###."},
        {"...#.", "..##.", ".#.#.", "#..#.", "#####", "...#.", "...#."},
        {"#####", "#....", "####.", "....#", "....#", "#...#", ".###."},
        {"..##.", ".#...", "#....", "####.", "#...#", "#...#", ".###."},
        {"#####", "....#", "...#.", "..#..", ".#...", ".#...", "#...."},
        {".###.", "#...#", "#...#", ".###.", "#...#", "#...#", ".###."},
        {".###.", "#...#", "#...#", ".####", "....#", "...#.", ".##.."},
    }};

void draw(std::string_view number, std::size_t left, std::size_t top,
          Picture& page) {
  for (const char digit : number) {
    const Picture cell = glyph(digit - '0');
    for (std::size_t y = 0; y < cell.height; ++y)
      for (std::size_t x = 0; x < cell.width; ++x)
        page.at(left + x, top + y) = cell.at(x, y);
    left += kAdvance;
  }
}

// Takes the pixels that are connected with one out of the map.
class Filling {
 public:
  Filling(Picture& map, float threshold) : map_(map), threshold_(threshold) {}

  Box fill(std::size_t x, std::size_t y);

 private:
  void visit(std::size_t x, std::size_t y);

  Picture& map_;
  const float threshold_;
  std::vector<std::pair<std::size_t, std::size_t>> waiting_;
};

void Filling::visit(std::size_t x, std::size_t y) {
  if (x >= map_.width || y >= map_.height || map_.at(x, y) <= threshold_)
    return;
  map_.at(x, y) = threshold_;
  waiting_.emplace_back(x, y);
}

Box Filling::fill(std::size_t x, std::size_t y) {
  std::size_t left = x;
  std::size_t right = x;
  std::size_t bottom = y;
  const std::size_t top = y;
  visit(x, y);
  while (!waiting_.empty()) {
    const auto [atX, atY] = waiting_.back();
    waiting_.pop_back();
    left = std::min(left, atX);
    right = std::max(right, atX);
    bottom = std::max(bottom, atY);
    visit(atX + 1, atY);
    visit(atX - 1, atY);
    visit(atX, atY + 1);
    visit(atX, atY - 1);
  }
  return {left, top, right - left + 1, bottom - top + 1};
}

}  // namespace

Picture glyph(int digit) {
  Picture picture{kGlyphWidth, kGlyphHeight, {}};
  for (const std::string_view row : kDigits.at(static_cast<std::size_t>(digit)))
    for (const char pixel : row)
      picture.pixels.push_back(pixel == '#' ? 1.0F : 0.0F);
  return picture;
}

Picture drawPage() {
  constexpr std::size_t kWidth = 60;
  constexpr std::size_t kHeight = 28;
  Picture page{kWidth, kHeight, std::vector<float>(kWidth * kHeight)};
  draw("2026", 4, 3, page);
  draw("71", 40, 5, page);
  draw("9358", 14, 17, page);
  return page;
}

std::vector<Box> findBoxes(const Picture& map, float threshold) {
  Picture rest = map;
  Filling filling(rest, threshold);
  std::vector<Box> boxes;
  for (std::size_t y = 0; y < rest.height; ++y)
    for (std::size_t x = 0; x < rest.width; ++x)
      if (rest.at(x, y) > threshold) boxes.push_back(filling.fill(x, y));
  return boxes;
}

Picture cut(const Picture& page, const Box& box) {
  Picture part{box.width, box.height, {}};
  for (std::size_t y = 0; y < box.height; ++y)
    for (std::size_t x = 0; x < box.width; ++x)
      part.pixels.push_back(page.at(box.left + x, box.top + y));
  return part;
}

}  // namespace reading_client
