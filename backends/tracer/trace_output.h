#pragma once

#include <cstdio>
#include <mutex>
#include <string>

namespace kiv::tracer {

// The file that the lines go to. Each line is written in one piece and flushed,
// so a program that crashes has left all lines before the crash. May be used
// from any thread.
class TraceOutput {
 public:
  // Starts the file at `path` afresh. An empty path stands for standard error,
  // which also takes the lines, after a message, if the file cannot be opened.
  explicit TraceOutput(const std::string& path);
  ~TraceOutput();

  TraceOutput(const TraceOutput&) = delete;
  TraceOutput& operator=(const TraceOutput&) = delete;

  // `line` without its end.
  void write(std::string line);

 private:
  std::mutex mutex_;
  std::FILE* file_;
  bool hasFailed_ = false;
};

}  // namespace kiv::tracer
