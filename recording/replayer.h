#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "recording/backend.h"
#include "recording/problem.h"
#include "recording/program.h"
#include "recording/recording.h"

namespace kiv::recording {

struct ReplayOptions {
  // Creates a logger at this level before the first call, and frees it behind
  // the last one.
  std::optional<KivLog_Level_t> logLevel;
  // Goes on behind errors of calls, as the compiled program does not.
  bool continueOnError = false;
  // Codes with which calls failed when they were recorded, by their indices: a
  // call that fails with its code again is no error.
  std::map<std::size_t, Kiv_ErrorHandle_t> expectedCodes;
  // How often each graphExecute is made, and how often before that.
  std::uint32_t repeat = 1;
  std::uint32_t warmup = 0;
  // Where contextGetBinary's output goes; nothing is saved without.
  std::optional<std::filesystem::path> outputDirectory;
  // Receives what the compiled program prints, a line without its end; standard
  // output when empty.
  std::function<void(const std::string& line)> print;
};

// What a call came to.
struct CallResult {
  std::size_t call = 0;
  const Arguments& arguments;
  // From 0, for repeated executions; those before that are warm-ups.
  std::uint32_t repetition = 0;
  bool isWarmup = false;
  Kiv_ErrorHandle_t status = 0;
  std::chrono::nanoseconds duration{};
};

// Watches the calls, for progress, times, and saving of outputs. The calling
// thread is the replayer's.
class ReplayObserver {
 public:
  virtual ~ReplayObserver() = default;
  // Once for each call, before its first repetition. The arguments and what
  // they point to may be changed until the next call is prepared.
  virtual void prepareCall(std::size_t /*call*/, Arguments&) {}
  // False ends the replay before the call.
  virtual bool beforeCall(std::size_t /*call*/, const Arguments&) {
    return true;
  }
  virtual void afterCall(const CallResult&) {}
  // A file of contextGetBinary that was saved.
  virtual void saved(const std::filesystem::path& /*path*/) {}
};

// An error of a call, in words that a person can act on.
struct CallFailure {
  std::size_t call = 0;
  Kiv_ErrorHandle_t status = 0;
  // "graphAddNode of "conv1" in graph "main" failed with 6004
  // (KIV_GRAPH_ERROR_INVALID_TENSOR: ...)", with tensor names where there are
  // any.
  Problem problem;
};

struct ReplayResult {
  // Set where no call was made: the recording or the backend do not do.
  std::optional<Problem> refusal;
  // What `error` is at the program's end.
  Kiv_ErrorHandle_t error = 0;
  std::uint64_t callsMade = 0;
  std::uint64_t callsFailed = 0;
  // Calls that the backend does not support.
  std::uint64_t callsNotSupported = 0;
  // Calls that failed as they did when they were recorded.
  std::uint64_t callsFailedAgain = 0;
  // At most 100.
  std::vector<CallFailure> failures;
  // Faults of the recording that came up on the way, or files that could not be
  // saved; they end the replay.
  std::optional<Problem> fault;

  // As the compiled program has it: 0 when all went well or was not supported,
  // else the code, or 1 where a process has no room for it; 1 for a refusal.
  int exitStatus() const;
};

// Makes the calls of a recording again through a backend.
//
//   Replayer replayer(*recording, data.bytes(), *backend);
//   const ReplayResult result = replayer.run({.logLevel = KIV_LOG_LEVEL_INFO});
//   return result.exitStatus();
//
// As in the compiled program, nothing is called behind the first error, except
// that a call that is not supported is no error. One thread at a time.
class Replayer {
 public:
  Replayer(const Recording& recording, std::span<std::byte> data,
           const Backend& backend)
      : recording_(recording), data_(data), backend_(backend) {}

  // What keeps the recording from being replayed with this backend at all, in
  // one list: unknown statements, a data file of another size, functions that
  // the backend lacks. run() refuses on the first one.
  std::vector<Problem> check() const;

  ReplayResult run(const ReplayOptions& options,
                   ReplayObserver* observer = nullptr);

 private:
  const Recording& recording_;
  std::span<std::byte> data_;
  const Backend& backend_;
};

}  // namespace kiv::recording
