#include "arrays/comparison.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace kiv::arrays {
namespace {

std::string numberText(double number, int digits) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof(text), number,
                                 std::chars_format::general, digits);
  return {text, end.ptr};
}

std::string placeOf(std::uint64_t index, const Shape& shape) {
  std::string place = "]";
  for (std::size_t i = shape.size(); i-- > 0;) {
    place = std::to_string(index % shape[i]) + place;
    if (i != 0) place = ", " + place;
    index /= shape[i];
  }
  return "[" + place;
}

// Integers beyond 2^53 that differ may be the same double.
double differenceAt(const ArrayView& a, const ArrayView& b, std::uint64_t index,
                    double first, double second) {
  const double difference = std::abs(first - second);
  const bool isWide =
      a.element == b.element && a.element.size == 8 && a.element.kind != 'f';
  if (!isWide || difference != 0) return difference;
  const auto x = elementAt<std::uint64_t>(a, index);
  const auto y = elementAt<std::uint64_t>(b, index);
  return static_cast<double>(x - y < y - x ? x - y : y - x);
}

void count(double value, Specials& specials) {
  if (std::isnan(value)) ++specials.nans;
  if (std::isinf(value)) ++specials.infinities;
}

// Adds up what is needed of each pair of elements.
class Sum {
 public:
  Sum(const ArrayView& actual, const ArrayView& expected,
      const Tolerance& tolerance, Figures& figures)
      : actual_(actual),
        expected_(expected),
        tolerance_(tolerance),
        figures_(figures) {}

  void add(std::uint64_t index) {
    const double x = valueAt(actual_, index);
    const double y = valueAt(expected_, index);
    count(x, figures_.actual);
    count(y, figures_.expected);
    if (std::isfinite(x) && std::isfinite(y)) return addFinite(index, x, y);
    const bool isSame = (std::isnan(x) && std::isnan(y)) || x == y;
    if (!isSame) note(index);
  }

  void finish() {
    if (finite_ != 0) figures_.mean = sum_ / static_cast<double>(finite_);
    const double lengths = std::sqrt(squaresX_) * std::sqrt(squaresY_);
    if (lengths > 0)
      figures_.cosine = std::clamp(products_ / lengths, -1.0, 1.0);
    else
      figures_.cosine = squaresX_ == squaresY_ ? 1 : 0;
  }

 private:
  void addFinite(std::uint64_t index, double x, double y) {
    const double difference = differenceAt(actual_, expected_, index, x, y);
    ++finite_;
    sum_ += difference;
    products_ += x * y;
    squaresX_ += x * x;
    squaresY_ += y * y;
    figures_.largest = std::max(figures_.largest, difference);
    if (difference != 0 && y != 0)
      figures_.largestRelative =
          std::max(figures_.largestRelative, difference / std::abs(y));
    if (difference > tolerance_.atol + tolerance_.rtol * std::abs(y))
      note(index);
  }

  void note(std::uint64_t index) {
    if (figures_.over++ != 0) return;
    figures_.firstOver = {index, placeOf(index, actual_.shape),
                          textAt(actual_, index), textAt(expected_, index)};
  }

  const ArrayView& actual_;
  const ArrayView& expected_;
  const Tolerance& tolerance_;
  Figures& figures_;
  std::uint64_t finite_ = 0;
  double sum_ = 0;
  double products_ = 0;
  double squaresX_ = 0;
  double squaresY_ = 0;
};

void appendSpecials(std::string& text, std::string_view what, std::uint64_t a,
                    std::uint64_t b) {
  if (a == 0 && b == 0) return;
  text.append(", ").append(what).append(" ").append(std::to_string(a));
  if (a != b) text.append(" and ").append(std::to_string(b));
}

}  // namespace

Figures compare(const ArrayView& actual, const ArrayView& expected,
                const Tolerance& tolerance) {
  Figures figures;
  if (actual.shape != expected.shape)
    figures.shapes =
        toString(actual.shape) + " and " + toString(expected.shape);
  if (actual.element != expected.element)
    figures.elements =
        toString(actual.element) + " and " + toString(expected.element);
  if (actual.count() != expected.count()) return figures;
  figures.count = actual.count();
  Sum sum(actual, expected, tolerance, figures);
  for (std::uint64_t i = 0; i < figures.count; ++i) sum.add(i);
  sum.finish();
  return figures;
}

std::string toString(const Figures& figures) {
  std::string text;
  if (figures.count != 0 || figures.shapes.empty())
    text = "max " + numberText(figures.largest, 3) + ", mean " +
           numberText(figures.mean, 3) + ", relative " +
           numberText(figures.largestRelative, 3) + ", cosine " +
           numberText(figures.cosine, 9);
  const auto append = [&text](const std::string& part) {
    text.append(text.empty() ? "" : ", ").append(part);
  };
  appendSpecials(text, "NaN", figures.actual.nans, figures.expected.nans);
  appendSpecials(text, "infinities", figures.actual.infinities,
                 figures.expected.infinities);
  if (!figures.elements.empty()) append("types " + figures.elements);
  if (!figures.shapes.empty()) append("shapes differ: " + figures.shapes);
  if (figures.firstOver)
    append(std::to_string(figures.over) + " of " +
           std::to_string(figures.count) + " over, first at " +
           figures.firstOver->place + ": " + figures.firstOver->actual +
           " instead of " + figures.firstOver->expected);
  return text;
}

}  // namespace kiv::arrays
