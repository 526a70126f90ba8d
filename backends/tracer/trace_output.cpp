#include "trace_output.h"

#include <cerrno>
#include <cstring>

namespace kiv::tracer {
namespace {

std::FILE* openOrStandardError(const std::string& path) {
  if (path.empty()) return stderr;
  // Binary, so that a line ends alike on all systems.
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file != nullptr) return file;
  std::fprintf(stderr,
               "KIV_TRACER: cannot open %s (%s); printing to standard error\n",
               path.c_str(), std::strerror(errno));
  return stderr;
}

}  // namespace

TraceOutput::TraceOutput(const std::string& path)
    : file_(openOrStandardError(path)) {}

TraceOutput::~TraceOutput() {
  if (file_ != stderr) std::fclose(file_);
}

void TraceOutput::write(std::string line) {
  line += '\n';
  const std::lock_guard lock(mutex_);
  const bool written =
      std::fwrite(line.data(), 1, line.size(), file_) == line.size() &&
      std::fflush(file_) == 0;
  if (written || hasFailed_) return;
  hasFailed_ = true;
  std::fputs("KIV_TRACER: cannot write; the trace is incomplete\n", stderr);
}

}  // namespace kiv::tracer
