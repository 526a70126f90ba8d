#include "timing.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kiv::benchmarks {

double timeCalls(Call& call, std::size_t count) {
  const double time = microseconds([&] {
    for (std::size_t i = 0; i < count; ++i) call.make(i);
  });
  return time / static_cast<double>(count);
}

double median(std::vector<double> values) {
  const auto middle =
      values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void dropBlocks(const std::filesystem::path& file) {
  const auto size = static_cast<off_t>(std::filesystem::file_size(file));
  if (size == 0) return;
  const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC);
  const bool dropped =
      descriptor >= 0 &&
      fallocate(descriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0,
                size) == 0;
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  if (!dropped)
    throw std::system_error(error, std::generic_category(), file.string());
}

}  // namespace kiv::benchmarks
