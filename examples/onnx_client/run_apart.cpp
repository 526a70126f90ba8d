#include "run_apart.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <exception>

#include "errors.h"

namespace onnx_client {
namespace {

constexpr unsigned kMostSeconds = 60;

bool writeAll(int file, const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(file, &bytes[done], bytes.size() - done);
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

std::string readAll(int file) {
  std::string bytes;
  std::array<char, 1 << 16> block;
  ssize_t count = 0;
  while ((count = read(file, block.data(), block.size())) > 0)
    bytes.append(block.data(), static_cast<std::size_t>(count));
  return bytes;
}

// Runs in the child, where a crash is to be quick and silent.
[[noreturn]] void makeAndExit(const std::function<std::string()>& make,
                              int result) {
  const rlimit noCore{};
  setrlimit(RLIMIT_CORE, &noCore);
  alarm(kMostSeconds);
  dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
  bool made = false;
  try {
    made = writeAll(result, make());
  } catch (const std::exception&) {
    // The exit status reports it.
  }
  _exit(made ? 0 : 1);
}

}  // namespace

std::optional<std::string> runApart(const std::function<std::string()>& make) {
  int ends[2];
  if (pipe(ends) != 0) throw ClientError("cannot make a pipe");
  const pid_t child = fork();
  if (child == 0) makeAndExit(make, ends[1]);
  close(ends[1]);
  std::string bytes = readAll(ends[0]);
  close(ends[0]);
  int status = -1;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
    return std::nullopt;
  return bytes;
}

}  // namespace onnx_client
