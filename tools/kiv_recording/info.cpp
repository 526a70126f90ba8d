#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "kiv_recording/program_text.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/relay_answers.h"
#include "kiv_recording/relay_report.h"
#include "kiv_recording/session_facts.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using recording::Recording;

constexpr const char* kInfoDescription =
    "Show what the recording holds and what a replay needs";

constexpr const char* kInfoDetails =
    R"(Shows what a recording holds: its files, the calls by function, graphs, nodes
by operator, tensors by element type with the largest ones, inputs and
outputs, and what a replay will need.

Example:
  kiv-recording info saver_output
  kiv-recording info saver_output --json | jq .graphs)";

struct InfoOptions {
  RecordingOptions recording;
  bool isJson = false;
};

// The backend that the session was made for, as far as the program says it.
std::string backendOf(const Recording& recording) {
  const bool isGpu = std::ranges::any_of(
      recording.header().includes,
      [](std::string_view include) { return include.starts_with("GPU/"); });
  return isGpu ? fmt::format("GPU ({})", KIV_BACKEND_ID_GPU) : "any";
}

// What a replay needs beside a backend, and what keeps it from being one.
std::vector<std::string> needsOf(const Recording& recording,
                                 const SessionFacts& facts) {
  std::vector<std::string> needs;
  needs.push_back(
      fmt::format("a backend with {} functions", facts.functions.size()));
  for (const std::string& package : facts.opPackages)
    needs.push_back(fmt::format("the op package {}", package));
  if (facts.binaries != 0)
    needs.push_back(fmt::format(
        "a backend that takes the {} context binaries in the data file",
        facts.binaries));
  const auto path = recording.dataPath();
  std::error_code error;
  const std::uintmax_t size = path ? fs::file_size(*path, error) : 0;
  if (!path || error || size != recording.dataSize())
    needs.push_back(fmt::format(
        "CANNOT: a data file of {} bytes, which is {}", recording.dataSize(),
        !path || error ? std::string("missing")
                       : fmt::format("one of {} bytes", size)));
  if (facts.unknownStatements != 0)
    needs.push_back(fmt::format("CANNOT: {} statements are unknown",
                                facts.unknownStatements));
  if (facts.unread != 0)
    needs.push_back(fmt::format(
        "CANNOT: {} calls cannot be made; kiv-recording check lists why",
        facts.unread));
  return needs;
}

std::string dimensionsOf(const SessionFacts::Tensor& tensor) {
  return fmt::format("{}", fmt::join(tensor.dimensions, " x "));
}

Json jsonOf(const std::vector<SessionFacts::Tensor>& tensors) {
  Json json = Json::array();
  for (const SessionFacts::Tensor& tensor : tensors)
    json.push_back({{"name", tensor.name},
                    {"graph", tensor.owner},
                    {"elementType", tensor.elementType},
                    {"dimensions", tensor.dimensions},
                    {"bytes", tensor.bytes}});
  return json;
}

std::uint64_t sizeOf(const std::optional<fs::path>& path) {
  std::error_code error;
  const std::uintmax_t size = path ? fs::file_size(*path, error) : 0;
  return error ? 0 : size;
}

Json jsonOf(const Recording& recording, const SessionFacts& facts) {
  Json json;
  json["modelFile"] = {{"path", textOf(recording.modelPath())},
                       {"bytes", recording.text().size()}};
  json["dataFile"] = {{"path", textOf(recording.dataPath().value_or(""))},
                      {"bytes", sizeOf(recording.dataPath())},
                      {"read", recording.dataSize()}};
  json["recorder"] = recording.header().recorderVersion;
  json["time"] = recording.header().timeStamp;
  json["complete"] = !missingEnd(recording).has_value();
  json["backend"] = backendOf(recording);
  json["calls"] = recording.calls().size();
  for (const auto& [name, count] : facts.functions)
    json["functions"][std::string(name)] = count;
  json["contexts"] = facts.contexts;
  json["executions"] = facts.executions;
  json["graphs"] = Json::array();
  for (const SessionFacts::Graph& graph : facts.graphs)
    json["graphs"].push_back({{"name", graph.name},
                              {"nodes", graph.nodes},
                              {"tensors", graph.tensors},
                              {"executions", graph.executions}});
  json["operators"] = facts.operators;
  json["elementTypes"] = Json::object();
  for (const auto& [name, group] : facts.elementTypes)
    json["elementTypes"][name] = {{"tensors", group.count},
                                  {"bytes", group.bytes}};
  json["largest"] = jsonOf(facts.largest);
  json["inputs"] = jsonOf(facts.inputs);
  json["outputs"] = jsonOf(facts.outputs);
  json["needs"] = needsOf(recording, facts);
  return json;
}

void showFiles(const Recording& recording) {
  fmt::print("program     {}, {} bytes\n", textOf(recording.modelPath()),
             recording.text().size());
  if (const auto path = recording.dataPath())
    fmt::print("data        {}, {} bytes\n", textOf(*path), sizeOf(path));
  if (!recording.header().recorderVersion.empty())
    fmt::print("recorder    {}{}{}\n", recording.header().recorderVersion,
               recording.header().timeStamp.empty() ? "" : ", ",
               recording.header().timeStamp);
  fmt::print("backend     {}\n", backendOf(recording));
  if (missingEnd(recording))
    fmt::print("end         none: it was cut off behind its whole calls\n");
}

void showTensors(std::string_view title,
                 const std::vector<SessionFacts::Tensor>& tensors) {
  if (tensors.empty()) return;
  fmt::print("\n{}\n", title);
  for (const SessionFacts::Tensor& tensor : tensors)
    fmt::print("  {:<40} {} [{}]{}\n", recording::shortened(tensor.name),
               tensor.elementType, dimensionsOf(tensor),
               tensor.bytes == 0 ? std::string()
                                 : fmt::format(", {} bytes", tensor.bytes));
}

template <typename Counts>
void showCounts(std::string_view title, const Counts& counts) {
  if (counts.empty()) return;
  fmt::print("\n{}\n", title);
  for (const auto& [name, count] : counts)
    fmt::print("  {:<40} {:>10}\n",
               name.empty() ? std::string("(no name)") : std::string(name),
               count);
}

void showText(const Recording& recording, const SessionFacts& facts) {
  showFiles(recording);
  fmt::print("calls       {}\n", recording.calls().size());
  fmt::print("contexts    {}\n", facts.contexts);
  fmt::print("executions  {}\n", facts.executions);
  showCounts("calls by function", facts.functions);
  if (!facts.graphs.empty()) fmt::print("\ngraphs\n");
  for (const SessionFacts::Graph& graph : facts.graphs)
    fmt::print("  {:<40} {} nodes, {} tensors, {} executions\n",
               recording::shortened(graph.name), graph.nodes, graph.tensors,
               graph.executions);
  showCounts("nodes by operator", facts.operators);
  if (!facts.elementTypes.empty()) fmt::print("\ntensors by element type\n");
  for (const auto& [name, group] : facts.elementTypes)
    fmt::print("  {:<40} {:>10}, {} bytes\n", name, group.count, group.bytes);
  showTensors("largest tensors", facts.largest);
  showTensors("inputs", facts.inputs);
  showTensors("outputs", facts.outputs);
  fmt::print("\na replay needs\n");
  for (const std::string& need : needsOf(recording, facts))
    fmt::print("  {}\n", need);
}

int info(const InfoOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const SessionFacts facts = collectFacts(*recording);
  const auto answers = readRelayAnswers(*recording);
  if (options.isJson) {
    Json json = jsonOf(*recording, facts);
    if (answers) json["answers"] = jsonOf(*recording, *answers);
    fmt::print("{}\n",
               json.dump(2, ' ', false, Json::error_handler_t::replace));
  } else {
    showText(*recording, facts);
    if (answers) showAnswers(*recording, *answers);
  }
  return kDone;
}

}  // namespace

Verb addInfo(CLI::App& program) {
  const auto options = std::make_shared<InfoOptions>();
  CLI::App* verb = program.add_subcommand("info", kInfoDescription);
  verb->footer(kInfoDetails);
  addRecording(*verb, options->recording);
  verb->add_flag("--json", options->isJson, "Print all of it as JSON");
  return {verb, [options] { return info(*options); }};
}

}  // namespace kiv::tool
