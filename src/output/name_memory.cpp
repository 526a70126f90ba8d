#include "output/name_memory.h"

#include <algorithm>

namespace kiv::output {

void NameMemory::addBlock(std::size_t size) {
  const std::size_t wanted = std::max(kBlockSize, size);
  auto block = std::make_unique_for_overwrite<char[]>(wanted);
  fullBlocks_.push_back(std::move(block_));
  block_ = std::move(block);
  next_ = block_.get();
  limit_ = next_ + wanted;
}

// The first block has the usual size.
void NameMemory::clear() {
  if (!fullBlocks_.empty()) {
    block_ = std::move(fullBlocks_.front());
    limit_ = block_.get() + kBlockSize;
    fullBlocks_.clear();
  }
  next_ = block_.get();
}

}  // namespace kiv::output
