// Makes calls for callgrind, which counts the instructions inside of
// measuredCalls:
//
//   valgrind --tool=callgrind --toggle-collect=measuredCalls
//       count_calls LIBRARY KIND CALLS DIRECTORY
//
// CALLS calls warm the library up, as many are counted, so that tables that
// double now and then double once. Prints "KIND BYTES", the text of one call.

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "calls.h"

using kiv::benchmarks::Call;

// By its plain name for callgrind.
extern "C" [[gnu::noinline]] void measuredCalls(Call& call, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) call.make(i);
}

namespace {

void run(const char* library, const char* kind, std::size_t count,
         const char* directory) {
  const kiv::benchmarks::Recorder recorder(library, directory);
  const auto call =
      kiv::benchmarks::makeCall(kind, recorder.api(), recorder.objects());
  call->prepare(count);
  for (std::size_t i = 0; i < count; ++i) call->make(i);
  call->prepare(count);
  const auto before = std::filesystem::file_size(recorder.modelPath());
  measuredCalls(*call, count);
  const auto bytes = std::filesystem::file_size(recorder.modelPath()) - before;
  std::printf("%s %zu\n", kind, static_cast<std::size_t>(bytes) / count);
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = argc == 5 ? std::strtoul(argv[3], nullptr, 10) : 0;
  if (count == 0) {
    std::fprintf(stderr, "usage: %s LIBRARY KIND CALLS DIRECTORY\n", argv[0]);
    return 2;
  }
  try {
    run(argv[1], argv[2], count, argv[4]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
