#pragma once

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "recording/replayer.h"

// How long the calls of a replay take, as JSON:
//
//   Times times;
//   times.add(result);                       // in a ReplayObserver
//   writeFile("times.json", times.json(*recording));
//
// Times are nanoseconds of a clock that only goes forward. One thread at a
// time.
namespace kiv::tool {

class Times {
 public:
  // Warm-ups are left out.
  void add(const recording::CallResult& result);

  // One line on how long all executions took; empty without any.
  std::string summary() const;

  // Least, median, 90 % and 99 % of each function's calls and of each
  // execution's repetitions, and every other call.
  std::string json(const recording::Recording& recording) const;

 private:
  using Duration = std::chrono::nanoseconds;

  struct Execution {
    std::size_t call;
    std::string variable;
    std::vector<Duration> times;
  };

  std::map<std::string_view, std::vector<Duration>> functions_;
  std::vector<Execution> executions_;
  std::vector<std::pair<std::size_t, Duration>> calls_;
};

}  // namespace kiv::tool
