#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "format/calls.h"
#include "format/element_types.h"
#include "format/enum_value.h"
#include "kiv_recording/program_text.h"
#include "kiv_recording/progress.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/relay_answers.h"
#include "kiv_recording/relay_report.h"
#include "kiv_recording/verbs.h"
#include "recording/program.h"
#include "recording/statuses.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
namespace calls = format::calls;
using Json = nlohmann::ordered_json;
using recording::Arguments;
using recording::Program;
using recording::Recording;
using recording::Value;

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

std::string elementTypeName(std::uint32_t type) {
  switch (type) {
    case KIV_DATA_TYPE_INT_8:
      return "int 8";
    case KIV_DATA_TYPE_INT_16:
      return "int 16";
    case KIV_DATA_TYPE_INT_32:
      return "int 32";
    case KIV_DATA_TYPE_INT_64:
      return "int 64";
    case KIV_DATA_TYPE_UINT_8:
      return "uint 8";
    case KIV_DATA_TYPE_UINT_16:
      return "uint 16";
    case KIV_DATA_TYPE_UINT_32:
      return "uint 32";
    case KIV_DATA_TYPE_UINT_64:
      return "uint 64";
    case KIV_DATA_TYPE_FLOAT_16:
      return "float 16";
    case KIV_DATA_TYPE_FLOAT_32:
      return "float 32";
    case KIV_DATA_TYPE_FLOAT_64:
      return "float 64";
    case KIV_DATA_TYPE_SFIXED_POINT_4:
      return "sfixed point 4";
    case KIV_DATA_TYPE_SFIXED_POINT_8:
      return "sfixed point 8";
    case KIV_DATA_TYPE_SFIXED_POINT_16:
      return "sfixed point 16";
    case KIV_DATA_TYPE_SFIXED_POINT_32:
      return "sfixed point 32";
    case KIV_DATA_TYPE_UFIXED_POINT_4:
      return "ufixed point 4";
    case KIV_DATA_TYPE_UFIXED_POINT_8:
      return "ufixed point 8";
    case KIV_DATA_TYPE_UFIXED_POINT_16:
      return "ufixed point 16";
    case KIV_DATA_TYPE_UFIXED_POINT_32:
      return "ufixed point 32";
    case KIV_DATA_TYPE_BOOL_8:
      return "bool 8";
    default:
      return fmt::format("type {:#x}", type);
  }
}

// One tensor of a session.
struct Tensor {
  std::string name;
  std::string owner;
  std::string elementType;
  std::uint32_t type = 0;
  std::vector<std::uint32_t> dimensions;
  std::uint64_t bytes = 0;
};

struct Graph {
  std::string name;
  std::uint64_t nodes = 0;
  std::uint64_t tensors = 0;
  std::uint64_t executions = 0;
};

struct Group {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
};

struct Facts {
  std::map<std::string_view, std::uint64_t> functions;
  std::uint64_t contexts = 0;
  std::vector<Graph> graphs;
  std::map<std::string, std::uint64_t> operators;
  std::map<std::string, Group> elementTypes;
  std::vector<Tensor> largest;
  std::vector<Tensor> inputs;
  std::vector<Tensor> outputs;
  std::uint64_t executions = 0;
  std::set<std::string> opPackages;
  std::uint64_t binaries = 0;
  // Calls that could not be read.
  std::uint64_t unread = 0;
  std::uint64_t unknownStatements = 0;
};

const char* textArgument(const Arguments& arguments, std::string_view name) {
  const Value* value = arguments.find(name);
  return value == nullptr ? nullptr : value->pointer<const char>();
}

template <typename Fields>
Tensor tensorOf(const Fields& fields) {
  Tensor tensor;
  tensor.name = orEmpty(fields.name);
  tensor.elementType = elementTypeName(format::enumValue(fields.dataType));
  tensor.type = format::enumValue(fields.type);
  if (fields.dimensions != nullptr)
    tensor.dimensions.assign(fields.dimensions,
                             fields.dimensions + fields.rank);
  if (format::enumValue(fields.memType) == KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER &&
      fields.clientBuf.data != nullptr)
    tensor.bytes = fields.clientBuf.dataSize;
  return tensor;
}

// Goes through the calls once.
class Collector {
 public:
  Facts collect(const Recording& recording) {
    const DataFile data = DataFile::openOrZeros(recording);
    Program program(recording, data.bytes());
    Arguments arguments;
    Progress progress("calls", recording.calls().size());
    for (std::size_t i = 0; i < recording.calls().size(); ++i) {
      progress.reach(i);
      ++facts_.functions[recording.functionName(i)];
      facts_.unknownStatements += recording.calls()[i].unknownStatements;
      if (program.begin(i, arguments)) {
        ++facts_.unread;
        continue;
      }
      add(arguments);
      program.end(i);
    }
    return std::move(facts_);
  }

 private:
  static constexpr std::size_t kLargest = 5;

  void add(const Arguments& arguments) {
    const format::Function* function = arguments.function;
    if (function == &calls::kGraphAddNode) {
      addNode(arguments);
    } else if (function == &calls::kTensorCreateGraphTensor ||
               function == &calls::kTensorCreateContextTensor) {
      addTensor(arguments);
    } else if (function == &calls::kGraphExecute) {
      ++facts_.executions;
      ++graphOf(arguments).executions;
    } else if (function == &calls::kGraphCreate ||
               function == &calls::kGraphCreateSubgraph ||
               function == &calls::kGraphRetrieve) {
      addGraph(arguments);
    } else if (function == &calls::kContextCreate) {
      ++facts_.contexts;
    } else if (function == &calls::kContextCreateFromBinary ||
               function == &calls::kContextCreateFromBinaryWithSignal) {
      ++facts_.contexts;
      ++facts_.binaries;
    } else if (function == &calls::kBackendRegisterOpPackage) {
      facts_.opPackages.insert(orEmpty(textArgument(arguments, "packagePath")));
    }
  }

  void addGraph(const Arguments& arguments) {
    const std::string_view parameter =
        arguments.function == &calls::kGraphCreateSubgraph ? "subgraph"
                                                           : "graph";
    std::string name = orEmpty(textArgument(arguments, "name"));
    std::size_t index = facts_.graphs.size();
    // A graph that is retrieved may have been created before.
    if (arguments.function == &calls::kGraphRetrieve)
      index = static_cast<std::size_t>(
          std::ranges::find(facts_.graphs, name, &Graph::name) -
          facts_.graphs.begin());
    graphs_[std::string(arguments.find(parameter)->variable)] = index;
    if (index == facts_.graphs.size()) facts_.graphs.push_back({name});
  }

  // One for all calls on graphs that nothing creates.
  Graph& graphOf(const Arguments& arguments) {
    const Value* value = arguments.find("graph");
    const auto found = value == nullptr
                           ? graphs_.end()
                           : graphs_.find(std::string(value->variable));
    return found == graphs_.end() ? noGraph_ : facts_.graphs[found->second];
  }

  void addNode(const Arguments& arguments) {
    const auto* config =
        arguments.find("opConfig")->pointer<const Kiv_OpConfig_t>();
    ++graphOf(arguments).nodes;
    if (config != nullptr &&
        format::enumValue(config->version) == KIV_OP_CONFIG_VERSION_1)
      ++facts_.operators[orEmpty(config->v1.typeName)];
  }

  void addTensor(const Arguments& arguments) {
    const auto* record =
        arguments.find("tensor")->pointer<const Kiv_Tensor_t>();
    if (record == nullptr) return;
    Tensor tensor = format::enumValue(record->version) == KIV_TENSOR_VERSION_2
                        ? tensorOf(record->v2)
                        : tensorOf(record->v1);
    if (arguments.find("graph") != nullptr) {
      Graph& graph = graphOf(arguments);
      ++graph.tensors;
      tensor.owner = graph.name;
    }
    Group& group = facts_.elementTypes[tensor.elementType];
    ++group.count;
    group.bytes += tensor.bytes;
    const bool isBoth = tensor.type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
    if (isBoth || tensor.type == KIV_TENSOR_TYPE_INPUT)
      facts_.inputs.push_back(tensor);
    if (isBoth || tensor.type == KIV_TENSOR_TYPE_OUTPUT)
      facts_.outputs.push_back(tensor);
    keepIfLarge(std::move(tensor));
  }

  void keepIfLarge(Tensor tensor) {
    std::vector<Tensor>& largest = facts_.largest;
    if (tensor.bytes == 0 ||
        (largest.size() == kLargest && largest.back().bytes >= tensor.bytes))
      return;
    const auto place = std::ranges::upper_bound(
        largest, tensor.bytes, std::ranges::greater(), &Tensor::bytes);
    largest.insert(place, std::move(tensor));
    if (largest.size() > kLargest) largest.pop_back();
  }

  Facts facts_;
  Graph noGraph_;
  // By their variables.
  std::map<std::string, std::size_t> graphs_;
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
                                 const Facts& facts) {
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

std::string dimensionsOf(const Tensor& tensor) {
  return fmt::format("{}", fmt::join(tensor.dimensions, " x "));
}

Json jsonOf(const std::vector<Tensor>& tensors) {
  Json json = Json::array();
  for (const Tensor& tensor : tensors)
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

Json jsonOf(const Recording& recording, const Facts& facts) {
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
  for (const Graph& graph : facts.graphs)
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

void showTensors(std::string_view title, const std::vector<Tensor>& tensors) {
  if (tensors.empty()) return;
  fmt::print("\n{}\n", title);
  for (const Tensor& tensor : tensors)
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

void showText(const Recording& recording, const Facts& facts) {
  showFiles(recording);
  fmt::print("calls       {}\n", recording.calls().size());
  fmt::print("contexts    {}\n", facts.contexts);
  fmt::print("executions  {}\n", facts.executions);
  showCounts("calls by function", facts.functions);
  if (!facts.graphs.empty()) fmt::print("\ngraphs\n");
  for (const Graph& graph : facts.graphs)
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
  const Facts facts = Collector().collect(*recording);
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
