#include "models.h"

#include "page.h"

namespace reading_client {
namespace {

std::uint32_t size(std::size_t number) {
  return static_cast<std::uint32_t>(number);
}

// For each digit 1 for ink and -1 for none, so that the digit itself gives the
// largest sum.
Floats templates() {
  Floats weights;
  for (int digit = 0; digit < 10; ++digit)
    for (const float pixel : glyph(digit).pixels)
      weights.push_back(2 * pixel - 1);
  return weights;
}

Floats transitions() {
  constexpr float kStrength = 9;
  Floats weights(kWords * kWords);
  for (std::size_t digit = 0; digit < kEnd; ++digit)
    weights[digit * kWords + (digit == 0 ? kEnd : digit - 1)] = kStrength;
  return weights;
}

}  // namespace

Network makeDetector(const Session& session, std::size_t width,
                     std::size_t height) {
  constexpr std::int64_t kX = kReachX;
  constexpr std::int64_t kY = kReachY;
  constexpr std::uint32_t kKernelX = 2 * kReachX + 1;
  constexpr std::uint32_t kKernelY = 2 * kReachY + 1;
  constexpr float kSteepness = 4;
  const Sizes sizes = {1, 1, size(height), size(width)};
  Network network(session, "detector");
  const Value page = network.input("page", sizes);
  const Value kernel =
      network.weight("kernel", {1, 1, kKernelY, kKernelX},
                     Floats(std::size_t{kKernelY} * kKernelX, kSteepness));
  const Value bias = network.weight("bias", {1}, {-kSteepness / 2});
  const Value near =
      network.node("Conv", {page, kernel, bias}, "near", sizes,
                   {{"pads", std::vector<std::int64_t>{kY, kX, kY, kX}}});
  network.outputNode("Sigmoid", {near}, "map", sizes);
  network.finalize();
  return network;
}

Network makeRecogniser(const Session& session, std::size_t digits) {
  const std::string name = "recogniser of " + std::to_string(digits);
  const std::uint32_t width = size(digits * kAdvance - 1);
  const Sizes scores = {1, 10, 1, size(digits)};
  Network network(session, name.c_str());
  const Value line = network.input("line", {1, 1, kGlyphHeight, width});
  const Value kernels = network.weight(
      "templates", {10, 1, kGlyphHeight, kGlyphWidth}, templates());
  const Value scale = network.weight("scale", {1}, {0.5F});
  const Value matches = network.node(
      "Conv", {line, kernels}, "matches", scores,
      {{"strides", std::vector<std::int64_t>{kGlyphHeight, kAdvance}}});
  const Value logits = network.node("Mul", {matches, scale}, "logits", scores);
  network.outputNode("Softmax", {logits}, "digits", scores, {{"axis", 1}});
  network.finalize();
  return network;
}

// A word that the cache holds is less likely to come again.
Network makeDecoder(const Session& session) {
  const Sizes word = {1, kWords};
  const Sizes cacheSizes = {kCacheLength, kWords};
  Network network(session, "decoder");
  const Value last = network.input("last", word);
  const Value cache = network.input("cache", cacheSizes);
  const Value weights =
      network.weight("transitions", {kWords, kWords}, transitions());
  const Value penalty = network.weight("penalty", {1}, {0.5F});
  const Value one = network.weight("one", {1});
  const Value zero = network.weight("zero", {0});
  const Value end =
      network.weight("length", std::vector<std::int64_t>{kCacheLength});
  const Value kept = network.node("Slice", {cache, one, end, zero}, "kept",
                                  {kCacheLength - 1, kWords});
  const Value seen =
      network.node("ReduceSum", {cache, zero}, "seen", word, {{"keepdims", 1}});
  const Value moved = network.node("MatMul", {last, weights}, "moved", word);
  const Value costs = network.node("Mul", {seen, penalty}, "costs", word);
  const Value logits = network.node("Sub", {moved, costs}, "logits", word);
  network.outputNode("Softmax", {logits}, "next", word, {{"axis", 1}});
  network.outputNode("Concat", {kept, last}, "next_cache", cacheSizes,
                     {{"axis", 0}});
  network.finalize();
  return network;
}

}  // namespace reading_client
