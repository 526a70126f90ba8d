#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <system_error>
#include <vector>

#include "kiv_recording/output_keeper.h"
#include "kiv_recording/progress.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/relay_answers.h"
#include "kiv_recording/times.h"
#include "kiv_recording/verbs.h"
#include "recording/replayer.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Backend;
using recording::CallResult;
using recording::Replayer;
using recording::ReplayResult;

constexpr const char* kReplayDescription = "Make the calls again on a backend";

constexpr const char* kReplayDetails =
    R"(Makes the calls of a recording again on a backend, in their order and with
their arguments, as the compiled recording does: nothing is called behind the
first error, and a call that the backend does not support is no error. The
exit status is that of the compiled recording: 0, or the error's code; 1 when
outputs that are compared are over.

Example: run a session on a backend, its log turned on
  kiv-recording replay saver_output --backend ./libBackend.so -l verbose

Example: how long does an execution take?
  kiv-recording replay saver_output --backend ./libBackend.so --repeat 100

Example: does another backend give the same outputs?
  kiv-recording replay saver_output -b ./libA.so --save-outputs a
  kiv-recording replay saver_output -b ./libB.so --compare a --rtol 1e-3

Of a session that was recorded beside its real backend, calls that it refused may
be refused again, and --compare without a directory compares with the outputs
that were kept.

Example: what does each layer compute?
  kiv-recording replay saver_output -b ./libA.so --outputs all --save-outputs a

Outputs are saved as DIR/GRAPH/EXECUTION/TENSOR.npy, with a list of them in
DIR/outputs.txt.)";

struct ReplayOptions {
  RecordingOptions recording;
  std::string backend;
  std::string logLevel;
  std::uint32_t repeat = 1;
  std::uint32_t warmup = 0;
  bool continueOnError = false;
  std::string outputDirectory;
  std::string saveOutputs;
  std::string compare;
  bool comparesKept = false;
  arrays::Tolerance tolerance;
  std::vector<std::string> outputs;
  std::string timeFile;

  bool keepsOutputs() const {
    return !saveOutputs.empty() || !compare.empty() || comparesKept;
  }
};

KivLog_Level_t levelOf(const std::string& word) {
  if (word == "warn") return KIV_LOG_LEVEL_WARN;
  if (word == "info") return KIV_LOG_LEVEL_INFO;
  if (word == "verbose") return KIV_LOG_LEVEL_VERBOSE;
  if (word == "debug") return KIV_LOG_LEVEL_DEBUG;
  return KIV_LOG_LEVEL_ERROR;
}

recording::ReplayOptions replayOptions(
    const ReplayOptions& options, const std::optional<RelayAnswers>& answers) {
  recording::ReplayOptions replay;
  if (answers) replay.expectedCodes = answers->codesByIndex();
  if (!options.logLevel.empty()) replay.logLevel = levelOf(options.logLevel);
  replay.continueOnError = options.continueOnError;
  replay.repeat = options.repeat;
  replay.warmup = options.warmup;
  if (!options.outputDirectory.empty())
    replay.outputDirectory = pathOf(options.outputDirectory);
  return replay;
}

// Shows how far the replay is, and keeps times and outputs.
class Watcher final : public recording::ReplayObserver {
 public:
  // `keeper` may be null.
  Watcher(std::size_t calls, OutputKeeper* keeper, bool keepsTimes)
      : progress_("calls", calls), keeper_(keeper), keepsTimes_(keepsTimes) {}

  void prepareCall(std::size_t call, Arguments& arguments) override {
    if (keeper_ != nullptr) keeper_->prepare(call, arguments);
  }
  bool beforeCall(std::size_t call, const Arguments&) override {
    progress_.reach(call);
    return true;
  }
  void afterCall(const CallResult& result) override {
    if (keepsTimes_) times_.add(result);
    if (keeper_ != nullptr) keeper_->afterCall(result);
  }
  void saved(const std::filesystem::path& path) override {
    fmt::print(stderr, "saved {}\n", textOf(path));
  }

  const Times& times() const { return times_; }

 private:
  Progress progress_;
  OutputKeeper* keeper_;
  bool keepsTimes_;
  Times times_;
};

void showProblems(const ReplayResult& result) {
  std::fflush(stdout);
  for (const recording::CallFailure& failure : result.failures)
    fmt::print(stderr, "{}\n", toString(failure.problem));
  if (result.callsFailed > result.failures.size())
    fmt::print(stderr, "{} more calls failed\n",
               result.callsFailed - result.failures.size());
  if (result.callsFailedAgain != 0)
    fmt::print(stderr, "{} calls failed as they did when they were recorded\n",
               result.callsFailedAgain);
  if (result.refusal) fmt::print(stderr, "{}\n", toString(*result.refusal));
  if (result.fault) fmt::print(stderr, "{}\n", toString(*result.fault));
}

bool makeOutputDirectory(const ReplayOptions& options) {
  if (options.outputDirectory.empty()) return true;
  std::error_code error;
  std::filesystem::create_directories(pathOf(options.outputDirectory), error);
  if (error)
    fmt::print(stderr, "{}: {}\n", options.outputDirectory, error.message());
  return !error;
}

// Begins the comparison with outputs that were saved or kept.
bool beginComparison(const ReplayOptions& options,
                     const recording::Recording& recording,
                     const std::optional<RelayAnswers>& answers,
                     OutputKeeper& keeper, std::string& why) {
  if (!options.comparesKept)
    return options.compare.empty() ||
           keeper.compareWith(pathOf(options.compare), options.tolerance, why);
  if (!answers || !answers->keepsOutputs) {
    why =
        "--compare: the recording has no outputs of its own; name a directory, "
        "or record beside the backend with KIV_RELAY_KEEP_OUTPUTS=1";
    return false;
  }
  if (answers->dropped) keeper.expectPart();
  return keeper.compareWith(keptOutputsOf(recording), options.tolerance, why);
}

// Nothing is called where a tensor that was asked for cannot be an output.
bool prepareOutputs(const ReplayOptions& options,
                    const recording::Recording& recording,
                    const std::optional<RelayAnswers>& answers,
                    std::span<std::byte> data, OutputPlan& plan,
                    OutputKeeper& keeper) {
  if (!options.keepsOutputs()) {
    if (options.outputs.empty()) return true;
    fmt::print(stderr, "--outputs needs --save-outputs or --compare\n");
    return false;
  }
  OutputChoice choice;
  choice.isAll =
      std::ranges::find(options.outputs, "all") != options.outputs.end();
  if (!choice.isAll) choice.names = options.outputs;
  std::vector<std::string> notes;
  const auto problems = plan.make(recording, data, choice, notes);
  for (const std::string& problem : problems)
    fmt::print(stderr, "{}\n", problem);
  for (const std::string& note : notes) fmt::print(stderr, "{}\n", note);
  if (!problems.empty()) return false;
  std::string why;
  if ((options.saveOutputs.empty() ||
       keeper.saveTo(pathOf(options.saveOutputs), why)) &&
      beginComparison(options, recording, answers, keeper, why))
    return true;
  fmt::print(stderr, "{}\n", why);
  return false;
}

int replay(const ReplayOptions& options) {
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

  const auto answers = readRelayAnswers(*recording);
  OutputPlan plan;
  OutputKeeper keeper(plan);
  if (!makeOutputDirectory(options) ||
      !prepareOutputs(options, *recording, answers, data->bytes(), plan,
                      keeper))
    return kUnreadable;
  bool isTimeWritten = true;
  ReplayResult result;
  {
    Watcher watcher(recording->calls().size(),
                    options.keepsOutputs() ? &keeper : nullptr,
                    options.repeat > 1 || !options.timeFile.empty());
    result = replayer.run(replayOptions(options, answers), &watcher);
    if (options.repeat > 1 && !watcher.times().summary().empty())
      fmt::print(stderr, "{}\n", watcher.times().summary());
    if (!options.timeFile.empty())
      isTimeWritten =
          writeFile(pathOf(options.timeFile), watcher.times().json(*recording));
  }
  showProblems(result);
  const bool isWithin = !options.keepsOutputs() || keeper.finish();
  const int status = result.exitStatus();
  return status == 0 && (!isWithin || !isTimeWritten) ? kDiffers : status;
}

void addOutputOptions(CLI::App& verb, ReplayOptions& options) {
  verb.add_option("--save-outputs", options.saveOutputs,
                  "Save each execution's outputs there, as .npy")
      ->type_name("DIR");
  verb.add_option_function<std::vector<std::string>>(
          "--compare",
          [&options](const std::vector<std::string>& given) {
            options.comparesKept = given.empty() || given[0].empty();
            if (!options.comparesKept) options.compare = given[0];
          },
          "Compare the outputs with those that were saved there; without DIR "
          "with those that were kept beside the recording")
      ->expected(0, 1)
      ->type_name("[DIR]");
  addTolerance(verb, options.tolerance);
  verb.add_option("--outputs", options.outputs,
                  "Make intermediate tensors outputs: all, or names")
      ->type_name("all|NAME...");
  verb.add_option("--time", options.timeFile,
                  "Write how long calls and executions took, as JSON")
      ->type_name("FILE");
  verb.add_option("--warmup", options.warmup,
                  "Make each execution N times before it counts")
      ->check(CLI::Range(0u, 0x7fffffffu))
      ->type_name("N");
}

}  // namespace

Verb addReplay(CLI::App& program) {
  const auto options = std::make_shared<ReplayOptions>();
  CLI::App* verb = program.add_subcommand("replay", kReplayDescription);
  verb->footer(kReplayDetails);
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
                   "Make each execution N times, and show how long they took; "
                   "outputs are those of the first time")
      ->check(CLI::Range(1u, 0x7fffffffu))
      ->type_name("N");
  verb->add_flag("--continue-on-error", options->continueOnError,
                 "Go on behind calls that fail");
  verb->add_option("--output-dir", options->outputDirectory,
                   "Where binaries of contexts are saved; they are dropped "
                   "without it")
      ->type_name("DIR");
  addOutputOptions(*verb, *options);
  return {verb, [options] { return replay(*options); }};
}

}  // namespace kiv::tool
