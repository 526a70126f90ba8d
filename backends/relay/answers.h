#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

#include "KivInterface.h"
#include "session/session.h"

namespace kiv::relay {

// The file answers.json beside a recording: what the real backend answered
// where that is not plain from the recording. A line is an object, written at
// once:
//
//   {"backend": {"library": "/opt/npu/libNpu.so", "provider": "NPU", "id": 6,
//    "api_version": "2.29.0", "backend_version": "1.0.0"},
//    "recording": "saver_output.c", "keeps_outputs": false}
//   {"call": 17, "function": "graphFinalize", "code": 6001}
//   {"recorded_as": {"call": 18, "function": "graphExecuteAsync",
//    "as": "graphExecute"}}
//   {"not_recorded": {"after_call": 18, "function": "memRegister",
//    "code": 1000}}
//   {"outputs_dropped": {"call": 19, "reason": "..."}}
//
// Calls count from 1. Without the file, which is then reported once, the client
// goes on. From any thread.
class Answers {
 public:
  struct Place {
    std::uint32_t program = 0;
    // 0 if the call was not recorded.
    std::uint64_t call = 0;
  };

  Answers(std::string library, const KivInterface_t& provider,
          bool keepsOutputs);
  ~Answers();
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

  // Has the file open that belongs to the program at hand; true if it was
  // opened by this call.
  bool reach(session::Session& session, const Place& place);

  void refused(const Place& place, const char* function,
               Kiv_ErrorHandle_t code);
  void recordedAs(const Place& place, const char* function, const char* as);
  void notRecorded(const char* function, Kiv_ErrorHandle_t code);
  void outputsDropped(const Place& place, std::string_view reason);

  // The directory of the recording whose list is open.
  std::string directory() const;

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  void open(const output::OutputSettings& settings);
  void close();
  void write(const std::string& line);
  // Lines of calls in an earlier program than the open one's are left out: the
  // numbers would be taken for this one's.
  bool isOpenFor(const Place& place) const { return place.program == program_; }
  std::string firstLine(const output::OutputSettings& settings) const;

  const std::string library_;
  const KivInterface_t& provider_;
  const bool keepsOutputs_;
  std::atomic<std::uint32_t> program_ = kNone;
  std::atomic<std::uint64_t> lastCall_ = 0;
  mutable std::mutex mutex_;
  std::string directory_;
  std::FILE* file_ = nullptr;
};

}  // namespace kiv::relay
