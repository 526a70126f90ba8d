#pragma once

#include <sys/resource.h>

#include <csignal>

namespace kiv::test {

// Lets no file of the process grow beyond a size, while it lives: a write stops
// there, in the middle if need be, like one to a disk that is full.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(std::size_t bytes)
      : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*signal_)(int);
};

}  // namespace kiv::test
