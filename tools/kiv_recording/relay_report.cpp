#include "kiv_recording/relay_report.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "arrays/outputs.h"
#include "kiv_recording/recordings.h"
#include "recording/statuses.h"

namespace kiv::tool {

using recording::Recording;

namespace {

using Json = nlohmann::ordered_json;

// How many outputs were kept; nothing where none were to be.
std::optional<std::size_t> keptOutputs(const Recording& recording,
                                       const RelayAnswers& answers) {
  std::string why;
  if (!answers.keepsOutputs) return std::nullopt;
  const auto list = arrays::readOutputList(keptOutputsOf(recording), why);
  return list ? list->size() : 0;
}

void showCalls(std::string_view title, std::string_view word,
               const std::vector<RelayAnswers::Call>& calls) {
  constexpr std::size_t kMost = 20;
  if (calls.empty()) return;
  fmt::print("\n{}\n", title);
  for (std::size_t i = 0; i < calls.size() && i < kMost; ++i) {
    const RelayAnswers::Call& call = calls[i];
    fmt::print(
        "  {} {:<6} {:<30} {}\n", word, call.number, call.function,
        call.code == 0 ? std::string() : recording::describeStatus(call.code));
  }
  if (calls.size() > kMost) fmt::print("  and {} more\n", calls.size() - kMost);
}

Json jsonOf(const std::vector<RelayAnswers::Call>& calls) {
  Json json = Json::array();
  for (const RelayAnswers::Call& call : calls)
    json.push_back({{"call", call.number},
                    {"function", call.function},
                    {"code", call.code}});
  return json;
}

}  // namespace

void showAnswers(const Recording& recording, const RelayAnswers& answers) {
  fmt::print("\nrecorded beside a backend\n");
  fmt::print("  {} ({}), API {}, its own {}\n", answers.provider,
             answers.backendId, answers.apiVersion, answers.backendVersion);
  fmt::print("  {}\n", answers.library);
  if (const auto kept = keptOutputs(recording, answers))
    fmt::print("  {} outputs were kept in {}\n", *kept,
               textOf(keptOutputsOf(recording)));
  if (answers.dropped)
    fmt::print("  from call {} on, outputs were dropped: {}\n",
               answers.dropped->call, answers.dropped->reason);
  if (answers.unreadLines != 0)
    fmt::print("  {} lines of answers.json cannot be read\n",
               answers.unreadLines);
  showCalls("calls that the backend did not accept", "call", answers.refused);
  showCalls("calls that were not recorded", "after call", answers.notRecorded);
  showCalls("asynchronous calls, recorded as ones that are waited for", "call",
            answers.recordedAs);
}

nlohmann::ordered_json jsonOf(const Recording& recording,
                              const RelayAnswers& answers) {
  Json json = {{"library", answers.library},
               {"provider", answers.provider},
               {"id", answers.backendId},
               {"apiVersion", answers.apiVersion},
               {"backendVersion", answers.backendVersion},
               {"refused", jsonOf(answers.refused)},
               {"notRecorded", jsonOf(answers.notRecorded)},
               {"recordedAs", jsonOf(answers.recordedAs)}};
  if (const auto kept = keptOutputs(recording, answers))
    json["outputsKept"] = *kept;
  if (answers.dropped)
    json["outputsDropped"] = {{"call", answers.dropped->call},
                              {"reason", answers.dropped->reason}};
  return json;
}

}  // namespace kiv::tool
