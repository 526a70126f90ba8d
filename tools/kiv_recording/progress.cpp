#include "kiv_recording/progress.h"

#include <fmt/format.h>

#include <cstdio>

#include "kiv_recording/system.h"

namespace kiv::tool {

Progress::Progress(std::string_view what, std::uint64_t total)
    : what_(what),
      total_(total),
      isShown_(isErrorTerminal()),
      next_(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
  if (hasLine_) fmt::print(stderr, "\r\033[K");
}

void Progress::reach(std::uint64_t count) {
  if (!isShown_ || Clock::now() < next_) return;
  fmt::print(stderr, "\r{} of {} {}", count, total_, what_);
  std::fflush(stderr);
  hasLine_ = true;
  next_ = Clock::now() + std::chrono::milliseconds(200);
}

}  // namespace kiv::tool
