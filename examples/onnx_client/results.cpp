#include "results.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <utility>

#include "errors.h"

namespace onnx_client {
namespace {

namespace arrays = kiv::arrays;

constexpr std::uint64_t kFirst = 8;
constexpr std::size_t kTop = 5;

std::string nameOf(const Kiv_Tensor_t& tensor) {
  return tensor.v1.name == nullptr ? "" : tensor.v1.name;
}

// All sizes but one are 1, and there are more values than are shown anyway.
bool isList(const arrays::ArrayView& view) {
  return view.count() > kFirst &&
         std::ranges::find(view.shape, view.count()) != view.shape.end();
}

void showTop(const arrays::ArrayView& view) {
  std::vector<std::uint64_t> indexes(view.count());
  std::iota(indexes.begin(), indexes.end(), std::uint64_t{0});
  std::partial_sort(indexes.begin(), indexes.begin() + kTop, indexes.end(),
                    [&](std::uint64_t a, std::uint64_t b) {
                      return arrays::valueAt(view, a) >
                             arrays::valueAt(view, b);
                    });
  std::cout << ", largest";
  for (std::size_t i = 0; i < kTop; ++i)
    std::cout << (i == 0 ? " [" : ", [") << indexes[i]
              << "]=" << arrays::textAt(view, indexes[i]);
}

}  // namespace

Results::Results(const ResultOptions& options, std::string graph)
    : graph_(std::move(graph)) {
  std::string why;
  if (!options.saveDirectory.empty() &&
      !writer_.emplace().open(options.saveDirectory, why))
    throw ClientError(why);
  if (!options.compareDirectory.empty() &&
      !comparison_.emplace(options.tolerance)
           .open(options.compareDirectory, why))
    throw ClientError(why);
}

void Results::take(std::uint64_t execution,
                   const std::vector<Kiv_Tensor_t>& outputs) {
  if (!writer_ && !comparison_) return;
  for (const Kiv_Tensor_t& output : outputs) {
    std::string why;
    const auto view = arrays::viewOf(output, why);
    if (!view) throw ClientError("output " + nameOf(output) + ": " + why);
    const arrays::OutputName name = {graph_, execution, nameOf(output)};
    if (writer_ && !writer_->save(name, *view, why)) throw ClientError(why);
    if (!comparison_) continue;
    const auto difference = comparison_->compare(name, *view);
    isOver_ = isOver_ || difference.isOver();
    std::cout << (difference.isOver() ? "!  " : "   ") << toString(difference)
              << '\n';
  }
}

void Results::show(const std::vector<Kiv_Tensor_t>& outputs) {
  for (const Kiv_Tensor_t& output : outputs) {
    std::string why;
    const auto view = arrays::viewOf(output, why);
    if (!view) continue;
    std::cout << nameOf(output) << ": " << arrays::toString(view->element)
              << " [" << arrays::toString(view->shape) << "]:";
    const std::uint64_t shown = std::min(view->count(), kFirst);
    for (std::uint64_t i = 0; i < shown; ++i)
      std::cout << ' ' << arrays::textAt(*view, i);
    if (view->count() > shown) std::cout << " ...";
    if (isList(*view)) showTop(*view);
    std::cout << '\n';
  }
}

bool Results::areWithin() {
  if (!comparison_) return true;
  for (const auto& difference : comparison_->missing()) {
    std::cout << "!  " << toString(difference) << '\n';
    isOver_ = true;
  }
  return !isOver_;
}

}  // namespace onnx_client
