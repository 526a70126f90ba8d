#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

namespace kiv::recording {

// Memory for one call's records. What is taken lies there until reset(), which
// keeps the first block for the next call. One thread at a time.
class Arena {
 public:
  // Zeroed, aligned for anything of the API; at least one byte is there. Null
  // when memory runs out.
  std::byte* take(std::size_t size) {
    std::byte* const memory = takeRaw(size);
    if (memory != nullptr) std::memset(memory, 0, size);
    return memory;
  }

  // The same with whatever the memory holds.
  std::byte* takeRaw(std::size_t size) {
    size = std::max<std::size_t>(size, 1);
    used_ = (used_ + kAlignment - 1) / kAlignment * kAlignment;
    if (size > size_ - std::min(used_, size_)) return addBlock(size);
    std::byte* const memory = current_ + used_;
    used_ += size;
    return memory;
  }

  // With a zero behind it.
  const char* takeText(std::string_view text) {
    std::byte* const memory = takeRaw(text.size() + 1);
    if (memory == nullptr) return nullptr;
    std::memcpy(memory, text.data(), text.size());
    memory[text.size()] = std::byte{0};
    return reinterpret_cast<const char*>(memory);
  }

  void reset() {
    if (blocks_.size() > 1) blocks_.resize(1);
    if (!blocks_.empty()) {
      current_ = blocks_.front().get();
      size_ = kBlock;
    }
    used_ = 0;
  }

 private:
  static constexpr std::size_t kAlignment = 16;
  static constexpr std::size_t kBlock = std::size_t{1} << 18;

  // A block that is asked for whole serves that request alone.
  std::byte* addBlock(std::size_t size) {
    if (blocks_.empty()) {
      if (!push(kBlock)) return nullptr;
      current_ = blocks_.front().get();
      size_ = kBlock;
      used_ = 0;
      return takeRaw(size);
    }
    const bool isLarge = size > kBlock / 4;
    if (!push(isLarge ? size : kBlock)) return nullptr;
    std::byte* const block = blocks_.back().get();
    if (isLarge) return block;
    current_ = block;
    size_ = kBlock;
    used_ = size;
    return block;
  }

  bool push(std::size_t size) {
    std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[size]);
    if (block == nullptr) return false;
    blocks_.push_back(std::move(block));
    return true;
  }

  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  std::byte* current_ = nullptr;
  std::size_t size_ = 0;
  std::size_t used_ = 0;
};

}  // namespace kiv::recording
