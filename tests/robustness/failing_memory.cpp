#include "robustness/failing_memory.h"

#include <cerrno>

// glibc's own names of what is replaced here. What they give is freed by its
// free(), which stays in place.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

// Without a constructor, in the program's own thread-local memory: reading it
// allocates nothing.
struct Watch {
  bool isOn;
  std::size_t first;
  std::size_t count;
  std::size_t asked;
};
thread_local constinit Watch watch = {};

bool fails() {
  if (!watch.isOn) return false;
  ++watch.asked;
  if (watch.asked < watch.first || watch.asked - watch.first >= watch.count)
    return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return fails() ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"

namespace kiv::test {

FailingMemory::FailingMemory(std::size_t first, std::size_t count) {
  watch = {true, first, count, 0};
}
FailingMemory::~FailingMemory() { watch.isOn = false; }

std::size_t FailingMemory::asked() { return watch.asked; }
bool FailingMemory::hasFailed() { return watch.asked >= watch.first; }

}  // namespace kiv::test
