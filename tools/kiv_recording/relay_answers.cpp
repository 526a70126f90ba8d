#include "kiv_recording/relay_answers.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "kiv_recording/recordings.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::Recording;

fs::path besideModelOf(const Recording& recording, const char* name) {
  return recording.modelPath().parent_path() / name;
}

// Members of an object; empty or 0 where they are missing or something else.
std::string textMember(const nlohmann::json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>()
                                                     : std::string();
}

std::uint64_t numberOf(const nlohmann::json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number_unsigned()
             ? found->get<std::uint64_t>()
             : 0;
}

const nlohmann::json* objectOf(const nlohmann::json& line, const char* name) {
  const auto found = line.find(name);
  return found != line.end() && found->is_object() ? &*found : nullptr;
}

RelayAnswers::Call callOf(const nlohmann::json& object, const char* number) {
  return {numberOf(object, number), textMember(object, "function"),
          numberOf(object, "code")};
}

// Reads the lines; those of other programs in the same directory are passed
// over.
class Reader {
 public:
  explicit Reader(std::string program) : program_(std::move(program)) {}

  void read(const std::string& text) {
    const nlohmann::json line = nlohmann::json::parse(text, nullptr, false);
    if (line.is_object() && begin(line)) return;
    if (isOurs_ && !(line.is_object() && add(line))) ++answers_->unreadLines;
  }

  std::optional<RelayAnswers> take() { return std::move(answers_); }

 private:
  bool begin(const nlohmann::json& line) {
    const nlohmann::json* const backend = objectOf(line, "backend");
    if (backend == nullptr) return false;
    isOurs_ = textMember(line, "recording") == program_;
    if (!isOurs_) return true;
    RelayAnswers& answers = answers_.emplace();
    answers.library = textMember(*backend, "library");
    answers.provider = textMember(*backend, "provider");
    answers.backendId = numberOf(*backend, "id");
    answers.apiVersion = textMember(*backend, "api_version");
    answers.backendVersion = textMember(*backend, "backend_version");
    answers.keepsOutputs =
        line.value("keeps_outputs", nlohmann::json()) == true;
    return true;
  }

  bool add(const nlohmann::json& line) {
    if (const nlohmann::json* const other = objectOf(line, "not_recorded"))
      answers_->notRecorded.push_back(callOf(*other, "after_call"));
    else if (const nlohmann::json* const as = objectOf(line, "recorded_as"))
      answers_->recordedAs.push_back(callOf(*as, "call"));
    else if (const nlohmann::json* const dropped =
                 objectOf(line, "outputs_dropped"))
      answers_->dropped = {numberOf(*dropped, "call"),
                           textMember(*dropped, "reason")};
    else if (line.contains("call"))
      answers_->refused.push_back(callOf(line, "call"));
    else
      return false;
    return true;
  }

  std::string program_;
  bool isOurs_ = false;
  std::optional<RelayAnswers> answers_;
};

bool isCallOf(const Recording& recording, const RelayAnswers::Call& call) {
  if (call.number == 0 || call.number > recording.calls().size()) return false;
  const std::string_view name =
      recording.calls()[call.number - 1].function->name;
  return name == call.function ||
         (name == "graphExecute" && call.function == "graphExecuteAsync");
}

bool agree(const RelayAnswers& answers, const Recording& recording) {
  const auto isOurs = [&](const RelayAnswers::Call& call) {
    return isCallOf(recording, call);
  };
  return std::ranges::all_of(answers.refused, isOurs) &&
         std::ranges::all_of(answers.recordedAs, isOurs);
}

}  // namespace

std::map<std::size_t, std::uint64_t> RelayAnswers::codesByIndex() const {
  std::map<std::size_t, std::uint64_t> codes;
  for (const Call& call : refused) codes[call.number - 1] = call.code;
  return codes;
}

std::optional<RelayAnswers> readRelayAnswers(const Recording& recording) {
  const fs::path path = besideModelOf(recording, "answers.json");
  std::ifstream file(path, std::ios::binary);
  Reader reader(textOf(recording.modelPath().filename()));
  for (std::string line; std::getline(file, line);) reader.read(line);
  auto answers = reader.take();
  if (!answers || agree(*answers, recording)) return answers;
  fmt::print(stderr, "{}: it belongs to another recording and is passed over\n",
             textOf(path));
  return std::nullopt;
}

fs::path keptOutputsOf(const Recording& recording) {
  return besideModelOf(recording, "outputs");
}

}  // namespace kiv::tool
