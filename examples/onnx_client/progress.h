#pragma once

#include <chrono>
#include <cstdint>
#include <iostream>

namespace onnx_client {

// Reports the progress of long work on standard error, a line every few
// seconds; short work passes silently.
class Progress {
 public:
  void report(const char* what, std::uint64_t count) {
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    std::cerr << "onnx_client: " << count << ' ' << what << '\n';
    next_ = now + kInterval;
  }

 private:
  static constexpr std::chrono::seconds kInterval{3};

  std::chrono::steady_clock::time_point next_ =
      std::chrono::steady_clock::now() + kInterval;
};

}  // namespace onnx_client
