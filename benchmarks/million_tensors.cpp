#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>

#include "timing.h"

namespace kiv::benchmarks {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTensors = 1'000'000;
// The first and the last ones whose time is taken.
constexpr std::size_t kTimed = 10'000;
constexpr std::size_t kBlock = 100;

// The process's memory that is not on disk or in other processes.
std::uint64_t residentBytes() {
  std::ifstream statistics("/proc/self/statm");
  std::uint64_t all = 0;
  std::uint64_t resident = 0;
  std::uint64_t shared = 0;
  statistics >> all >> resident >> shared;
  return (resident - shared) * static_cast<std::uint64_t>(getpagesize());
}

// The tensors of one graph.
class Tensors {
 public:
  Tensors(const std::string& library, const fs::path& directory)
      : recorder_(library, directory),
        call_(makeCall("tensor", recorder_.api(), recorder_.objects())) {
    call_->prepare(kBlock);
  }

  // Makes the next block, in microseconds for each.
  double makeBlock() {
    call_->prepare(kBlock);
    return timeCalls(*call_, kBlock);
  }
  void makeMany(std::size_t count) {
    for (std::size_t i = 0; i < count; i += kBlock) {
      makeBlock();
      if (i % kTimed == 0) dropBlocks();
    }
  }
  // The length of one call's text, by that of a block.
  std::uintmax_t textBytes() {
    const auto before = fs::file_size(recorder_.modelPath());
    makeBlock();
    return (fs::file_size(recorder_.modelPath()) - before) / kBlock;
  }
  void dropBlocks() const { benchmarks::dropBlocks(recorder_.modelPath()); }

 private:
  const Recorder recorder_;
  std::unique_ptr<Call> call_;
};

}  // namespace

// The first calls of a second copy of the library run in turn with the last
// ones of the first copy, so that both see the same noise.
void printMillionTensors(const Settings& settings) {
  const fs::path copy = settings.directory / "second_library.so";
  fs::copy_file(settings.library, copy, fs::copy_options::overwrite_existing);
  Tensors many(settings.library, settings.directory / "many");
  const std::uint64_t before = residentBytes();
  many.makeMany(kTensors - kTimed);
  const std::uint64_t memory = residentBytes() - before;

  Tensors few(copy.string(), settings.directory / "few");
  fs::remove(copy);
  std::vector<double> first;
  std::vector<double> last;
  for (std::size_t i = 0; i < kTimed; i += kBlock) {
    first.push_back(few.makeBlock());
    last.push_back(many.makeBlock());
    few.dropBlocks();
    many.dropBlocks();
  }
  std::printf(
      "%zu tensors\n"
      "first %zu: %.2f us for %ju bytes of text\n"
      "last %zu:  %.2f us for %ju bytes of text, ratio %.3f\n"
      "memory: %.0f bytes a tensor\n",
      kTensors, kTimed, median(first), few.textBytes(), kTimed, median(last),
      many.textBytes(), median(last) / median(first),
      static_cast<double>(memory) / static_cast<double>(kTensors - kTimed));
}

}  // namespace kiv::benchmarks
