#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace kiv::tool {

// How far a long work is, on standard error if that is a terminal. Work of less
// than a second shows nothing.
//
//   Progress progress("calls", recording->calls().size());
//   for (...) progress.reach(i);
//
// From one thread.
class Progress {
 public:
  Progress(std::string_view what, std::uint64_t total);
  // Clears the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void reach(std::uint64_t count);

 private:
  using Clock = std::chrono::steady_clock;

  std::string_view what_;
  std::uint64_t total_;
  bool isShown_;
  bool hasLine_ = false;
  Clock::time_point next_;
};

}  // namespace kiv::tool
