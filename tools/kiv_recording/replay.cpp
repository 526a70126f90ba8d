#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <system_error>
#include <vector>

#include "kiv_recording/progress.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"
#include "recording/replayer.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Backend;
using recording::CallResult;
using recording::Replayer;
using recording::ReplayResult;

constexpr const char* kDescription = "Make the calls again on a backend";

constexpr const char* kDetails =
    R"(Makes the calls of a recording again on a backend, in their order and with
their arguments, as the compiled recording does: nothing is called behind the
first error, and a call that the backend does not support is no error. The
exit status is that of the compiled recording: 0, or the error's code.

Example: run a session on a backend, its log turned on
  kiv-recording replay saver_output --backend ./libBackend.so -l verbose

Example: how long does an execution take?
  kiv-recording replay saver_output --backend ./libBackend.so --repeat 100)";

struct Options {
  RecordingOptions recording;
  std::string backend;
  std::string logLevel;
  std::uint32_t repeat = 1;
  bool continueOnError = false;
  std::string outputDirectory;
};

KivLog_Level_t levelOf(const std::string& word) {
  if (word == "warn") return KIV_LOG_LEVEL_WARN;
  if (word == "info") return KIV_LOG_LEVEL_INFO;
  if (word == "verbose") return KIV_LOG_LEVEL_VERBOSE;
  if (word == "debug") return KIV_LOG_LEVEL_DEBUG;
  return KIV_LOG_LEVEL_ERROR;
}

recording::ReplayOptions replayOptions(const Options& options) {
  recording::ReplayOptions replay;
  if (!options.logLevel.empty()) replay.logLevel = levelOf(options.logLevel);
  replay.continueOnError = options.continueOnError;
  replay.repeat = options.repeat;
  if (!options.outputDirectory.empty())
    replay.outputDirectory = pathOf(options.outputDirectory);
  return replay;
}

// Shows how far the replay is, and keeps how long executions took.
class Watcher final : public recording::ReplayObserver {
 public:
  explicit Watcher(std::size_t calls) : progress_("calls", calls) {}

  bool beforeCall(std::size_t call, const Arguments&) override {
    progress_.reach(call);
    return true;
  }
  void afterCall(const CallResult& result) override {
    if (result.arguments.function == &format::calls::kGraphExecute)
      executions_.push_back(result.duration);
  }
  void saved(const std::filesystem::path& path) override {
    fmt::print(stderr, "saved {}\n", textOf(path));
  }

  void showExecutions() {
    if (executions_.empty()) return;
    std::ranges::sort(executions_);
    const auto milliseconds = [](std::chrono::nanoseconds time) {
      return std::chrono::duration<double, std::milli>(time).count();
    };
    fmt::print(stderr,
               "{} executions: fastest {:.3f} ms, median {:.3f} ms, slowest "
               "{:.3f} ms\n",
               executions_.size(), milliseconds(executions_.front()),
               milliseconds(executions_[executions_.size() / 2]),
               milliseconds(executions_.back()));
  }

 private:
  Progress progress_;
  std::vector<std::chrono::nanoseconds> executions_;
};

void showProblems(const ReplayResult& result) {
  std::fflush(stdout);
  for (const recording::CallFailure& failure : result.failures)
    fmt::print(stderr, "{}\n", toString(failure.problem));
  if (result.callsFailed > result.failures.size())
    fmt::print(stderr, "{} more calls failed\n",
               result.callsFailed - result.failures.size());
  if (result.refusal) fmt::print(stderr, "{}\n", toString(*result.refusal));
  if (result.fault) fmt::print(stderr, "{}\n", toString(*result.fault));
}

bool makeOutputDirectory(const Options& options) {
  if (options.outputDirectory.empty()) return true;
  std::error_code error;
  std::filesystem::create_directories(pathOf(options.outputDirectory), error);
  if (error)
    fmt::print(stderr, "{}: {}\n", options.outputDirectory, error.message());
  return !error;
}

int replay(const Options& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const auto data = DataFile::open(*recording);
  if (!data) return kUnreadable;
  std::string why;
  const auto backend = Backend::load(pathOf(options.backend), why);
  if (!backend) {
    fmt::print(stderr, "{}: {}\n", options.backend, why);
    return kDiffers;
  }
  Replayer replayer(*recording, data->bytes(), *backend);
  const std::vector<recording::Problem> obstacles = replayer.check();
  for (const recording::Problem& obstacle : obstacles)
    fmt::print(stderr, "{}\n", toString(obstacle));
  if (!obstacles.empty())
    return obstacles.size() == backend->missingFunctions(*recording).size()
               ? kDiffers
               : kUnreadable;

  if (!makeOutputDirectory(options)) return kUnreadable;
  ReplayResult result;
  {
    Watcher watcher(recording->calls().size());
    result = replayer.run(replayOptions(options), &watcher);
    if (options.repeat > 1) watcher.showExecutions();
  }
  showProblems(result);
  return result.exitStatus();
}

}  // namespace

Verb addReplay(CLI::App& program) {
  const auto options = std::make_shared<Options>();
  CLI::App* verb = program.add_subcommand("replay", kDescription);
  verb->footer(kDetails);
  addRecording(*verb, options->recording);
  verb->add_option("-b,--backend", options->backend, "The backend's library")
      ->required()
      ->type_name("LIB");
  verb->add_option("-l,--logging", options->logLevel,
                   "Turn on the backend's log: error, warn, info, verbose or "
                   "debug")
      ->check(CLI::IsMember({"error", "warn", "info", "verbose", "debug"}))
      ->type_name("LEVEL");
  verb->add_option("--repeat", options->repeat,
                   "Make each execution N times, and show how long they took")
      ->check(CLI::Range(1u, 0x7fffffffu))
      ->type_name("N");
  verb->add_flag("--continue-on-error", options->continueOnError,
                 "Go on behind calls that fail");
  verb->add_option("--output-dir", options->outputDirectory,
                   "Where binaries of contexts are saved; they are dropped "
                   "without it")
      ->type_name("DIR");
  return {verb, [options] { return replay(*options); }};
}

}  // namespace kiv::tool
