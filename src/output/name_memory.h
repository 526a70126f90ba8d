#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "format/parts.h"

// Names of the generated program's variables. One thread at a time.
namespace kiv::output {

// A variable of the generated program. Its text lives until the call's end.
struct Name {
  std::string_view text = {};

  bool isEmpty() const { return text.empty(); }
};

// The same with the family that says which parts it may have.
template <format::Family kFamily>
struct NameOf : Name {};

// Memory for the texts of names, which stay where they are.
class NameMemory {
 public:
  NameMemory()
      : block_(std::make_unique<char[]>(kBlockSize)),
        next_(block_.get()),
        limit_(next_ + kBlockSize) {}
  // Where `size` characters are free, until takeTo() takes those up to an end.
  char* room(std::size_t size) {
    if (static_cast<std::size_t>(limit_ - next_) < size) addBlock(size);
    return next_;
  }
  std::string_view takeTo(char* end) {
    const char* const text = std::exchange(next_, end);
    return {text, static_cast<std::size_t>(end - text)};
  }
  void clear();

 private:
  void addBlock(std::size_t size);

  static constexpr std::size_t kBlockSize = std::size_t{1} << 14;
  std::unique_ptr<char[]> block_;
  char* next_;
  char* limit_;
  std::vector<std::unique_ptr<char[]>> fullBlocks_;
};

}  // namespace kiv::output
