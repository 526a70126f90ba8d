#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#include "timing.h"

namespace kiv::benchmarks {
namespace {

namespace fs = std::filesystem;

// Bytes that go into the two files.
struct Sizes {
  std::size_t text = 0;
  std::size_t data = 0;
};

// The least that recording could cost: for each call and file one fwrite,
// without a buffer, and one fflush.
class Floor {
 public:
  explicit Floor(fs::path directory) : directory_(std::move(directory)) {
    fs::create_directory(directory_);
    model_ = std::fopen((directory_ / "model").c_str(), "wb");
    data_ = std::fopen((directory_ / "data").c_str(), "wb");
    if (model_ == nullptr || data_ == nullptr)
      throw std::runtime_error("No file can be opened in " +
                               directory_.string());
    // With a buffer fwrite copies small texts, and writes large data twice.
    std::setvbuf(model_, nullptr, _IONBF, 0);
    std::setvbuf(data_, nullptr, _IONBF, 0);
  }
  ~Floor() {
    std::fclose(model_);
    std::fclose(data_);
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  // As timeCalls.
  double time(std::size_t count, std::string_view text, std::string_view data) {
    const double time = microseconds([&] {
      for (std::size_t i = 0; i < count; ++i) {
        if (!data.empty()) write(data_, data);
        write(model_, text);
      }
    });
    dropBlocks(directory_ / "model");
    dropBlocks(directory_ / "data");
    return time / static_cast<double>(count);
  }

 private:
  static void write(std::FILE* file, std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() ||
        std::fflush(file) != 0)
      throw std::runtime_error("The floor could not be written");
  }

  fs::path directory_;
  std::FILE* model_ = nullptr;
  std::FILE* data_ = nullptr;
};

struct Row {
  std::size_t text = 0;
  double ours = 0;
  double floor = 0;
  // The median of each round: both sides of a round see the same noise.
  double ratio = 0;
};

// Runs two things in turn, each as often first as the other, after a round that
// does not count.
Row alternate(std::size_t rounds, const std::function<double()>& ours,
              const std::function<double()>& floor) {
  std::vector<double> oursTimes;
  std::vector<double> floorTimes;
  std::vector<double> ratios;
  for (std::size_t round = 0; round <= rounds; ++round) {
    const bool oursFirst = round % 2 == 0;
    const double first = oursFirst ? ours() : floor();
    const double second = oursFirst ? floor() : ours();
    if (round == 0) continue;
    oursTimes.push_back(oursFirst ? first : second);
    floorTimes.push_back(oursFirst ? second : first);
    ratios.push_back(oursTimes.back() / floorTimes.back());
  }
  return {0, median(oursTimes), median(floorTimes), median(ratios)};
}

double timeRecorded(const Recorder& recorder, Call& call, std::size_t count) {
  call.prepare(count);
  const double time = timeCalls(call, count);
  dropBlocks(recorder.modelPath());
  dropBlocks(recorder.dataPath());
  return time;
}

// The rounds take `count` calls each.
Row measure(const Settings& settings, const Recorder& recorder, Call& call,
            std::size_t count, std::size_t rounds) {
  Floor floor(settings.directory / "floor");
  const auto before = fs::file_size(recorder.modelPath());
  timeRecorded(recorder, call, count);
  const auto bytes = fs::file_size(recorder.modelPath()) - before;
  const std::string text(static_cast<std::size_t>(bytes) / count, 't');
  Row row = alternate(
      rounds, [&] { return timeRecorded(recorder, call, count); },
      [&] { return floor.time(count, text, call.data()); });
  row.text = text.size();
  return row;
}

void printRow(const char* name, const Row& row) {
  std::printf("| %-45s | %7zu | %10.2f | %10.2f | %5.2f |\n", name, row.text,
              row.ours, row.floor, row.ratio);
  std::fflush(stdout);
}

void printSmallCall(const Settings& settings, const char* kind,
                    const char* name) {
  constexpr std::size_t kCalls = 50;
  constexpr std::size_t kRounds = 1200;
  const Recorder recorder(settings.library, settings.directory / "ours");
  const auto call = makeCall(kind, recorder.api(), recorder.objects());
  printRow(name, measure(settings, recorder, *call, kCalls, kRounds));
}

// The last column is the throughput beside fwrite's.
void printDataCall(const Settings& settings, std::size_t dataSize,
                   const char* name, std::size_t count, std::size_t rounds) {
  const Recorder recorder(settings.library, settings.directory / "ours");
  const auto call = makeDataCall(dataSize, recorder.api(), recorder.objects());
  const Row row = measure(settings, recorder, *call, count, rounds);
  std::printf("| %-20s | %11.2f | %11.2f | %7.3f |\n", name, row.ours,
              row.floor, 1 / row.ratio);
  std::fflush(stdout);
}

// The calls of two graphs, made by two threads.
class Pair {
 public:
  Pair(const Recorder& recorder, const char* kind)
      : recorder_(recorder),
        first_(makeCall(kind, recorder.api(), recorder.objects())),
        second_(makeCall(kind, recorder.api(), withGraph("second_net"))) {}

  // Microseconds for each call of both, from when both threads run.
  double timeTogether() {
    std::atomic<bool> isRunning = false;
    std::atomic<bool> isStarted = false;
    std::thread other([&] {
      isRunning = true;
      waitFor(isStarted);
      timeCalls(*second_, kCalls);
    });
    waitFor(isRunning);
    return time([&] {
      isStarted = true;
      timeCalls(*first_, kCalls);
      other.join();
    });
  }
  double timeInTurn() {
    return time([&] {
      timeCalls(*first_, kCalls);
      timeCalls(*second_, kCalls);
    });
  }

 private:
  static constexpr std::size_t kCalls = 500;

  // Without sleep, from which a thread wakes late.
  static void waitFor(const std::atomic<bool>& flag) {
    while (!flag) {
    }
  }
  test::Objects withGraph(const char* name) const {
    test::Objects objects = recorder_.objects();
    objects.graph = recorder_.newGraph(name);
    return objects;
  }
  double time(const std::function<void()>& calls) {
    first_->prepare(kCalls);
    second_->prepare(kCalls);
    const double time = microseconds(calls);
    dropBlocks(recorder_.modelPath());
    return time / (2 * kCalls);
  }

  const Recorder& recorder_;
  std::unique_ptr<Call> first_;
  std::unique_ptr<Call> second_;
};

void printThreads(const Settings& settings, const char* kind,
                  const char* name) {
  constexpr std::size_t kRounds = 200;
  const Recorder recorder(settings.library, settings.directory / "ours");
  Pair pair(recorder, kind);
  const Row row = alternate(
      kRounds, [&] { return pair.timeTogether(); },
      [&] { return pair.timeInTurn(); });
  std::printf("| %-30s | %11.2f | %10.2f | %5.2f |\n", name, row.ours,
              row.floor, row.ratio);
  std::fflush(stdout);
}

}  // namespace

void printTable(const Settings& settings) {
  std::puts(
      "| call                                          |  text B |    ours us "
      "|   floor us | ratio |\n|---|---|---|---|---|");
  printSmallCall(settings, "node",
                 "graphAddNode, 2 inputs, 1 output, 3 scalars");
  printSmallCall(settings, "tensor",
                 "tensorCreateGraphTensor, rank 4, no data");
  printSmallCall(settings, "operations", "backendGetSupportedOperations");
  printSmallCall(settings, "property", "propertyHasCapability");
  std::puts(
      "\n| tensor with          |     ours us |    floor us | bytes/s |\n"
      "|---|---|---|---|");
  printDataCall(settings, 1 << 20, "1 MiB", 1, 600);
  printDataCall(settings, 64 << 20, "64 MiB", 1, 50);
  std::puts(
      "\n| two threads                    | together us | in turn us | ratio "
      "|\n|---|---|---|---|");
  printThreads(settings, "node", "graphAddNode");
  printThreads(settings, "tensor", "tensorCreateGraphTensor");
}

}  // namespace kiv::benchmarks
