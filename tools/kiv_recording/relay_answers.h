#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recording/recording.h"

// What a relay put beside a recording: answers.json, which says what the real
// backend answered, and the outputs that it computed.
//
//   if (const auto answers = readRelayAnswers(*recording))
//     fmt::print("{}\n", answers->provider);
//
// From any thread.
namespace kiv::tool {

struct RelayAnswers {
  // A call by its number, from 1.
  struct Call {
    std::uint64_t number = 0;
    std::string function;
    std::uint64_t code = 0;
  };
  struct Dropped {
    std::uint64_t call = 0;
    std::string reason;
  };

  std::string library;
  std::string provider;
  std::uint64_t backendId = 0;
  std::string apiVersion;
  std::string backendVersion;
  bool keepsOutputs = false;
  // Recorded, and not accepted by the real backend.
  std::vector<Call> refused;
  // Recorded as another function; the code is 0.
  std::vector<Call> recordedAs;
  // Not recorded; the number is that of the call before.
  std::vector<Call> notRecorded;
  std::optional<Dropped> dropped;
  // Lines that hold none of these.
  std::uint64_t unreadLines = 0;

  // The codes of refused calls by their indices, for a replay.
  std::map<std::size_t, std::uint64_t> codesByIndex() const;
};

// Nothing where there is no such file, or it says nothing of this recording.
// One that contradicts the recording is another's; that is said on standard
// error.
std::optional<RelayAnswers> readRelayAnswers(
    const recording::Recording& recording);

// Where the outputs are.
std::filesystem::path keptOutputsOf(const recording::Recording& recording);

}  // namespace kiv::tool
