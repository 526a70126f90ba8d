#include "kiv_recording/session_facts.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "format/calls.h"
#include "format/enum_value.h"
#include "kiv_recording/program_text.h"
#include "kiv_recording/progress.h"
#include "kiv_recording/recordings.h"
#include "recording/program.h"

namespace kiv::tool {
namespace {

namespace calls = format::calls;
using recording::Arguments;
using recording::Program;
using recording::Recording;
using recording::Value;
using Graph = SessionFacts::Graph;
using Group = SessionFacts::Group;
using Tensor = SessionFacts::Tensor;

struct ElementTypeName {
  std::uint32_t type;
  std::string_view name;
};

constexpr ElementTypeName kElementTypeNames[] = {
    {KIV_DATA_TYPE_INT_8, "int 8"},
    {KIV_DATA_TYPE_INT_16, "int 16"},
    {KIV_DATA_TYPE_INT_32, "int 32"},
    {KIV_DATA_TYPE_INT_64, "int 64"},
    {KIV_DATA_TYPE_UINT_8, "uint 8"},
    {KIV_DATA_TYPE_UINT_16, "uint 16"},
    {KIV_DATA_TYPE_UINT_32, "uint 32"},
    {KIV_DATA_TYPE_UINT_64, "uint 64"},
    {KIV_DATA_TYPE_FLOAT_16, "float 16"},
    {KIV_DATA_TYPE_FLOAT_32, "float 32"},
    {KIV_DATA_TYPE_FLOAT_64, "float 64"},
    {KIV_DATA_TYPE_SFIXED_POINT_4, "sfixed point 4"},
    {KIV_DATA_TYPE_SFIXED_POINT_8, "sfixed point 8"},
    {KIV_DATA_TYPE_SFIXED_POINT_16, "sfixed point 16"},
    {KIV_DATA_TYPE_SFIXED_POINT_32, "sfixed point 32"},
    {KIV_DATA_TYPE_UFIXED_POINT_4, "ufixed point 4"},
    {KIV_DATA_TYPE_UFIXED_POINT_8, "ufixed point 8"},
    {KIV_DATA_TYPE_UFIXED_POINT_16, "ufixed point 16"},
    {KIV_DATA_TYPE_UFIXED_POINT_32, "ufixed point 32"},
    {KIV_DATA_TYPE_BOOL_8, "bool 8"},
};

std::string elementTypeName(std::uint32_t type) {
  const auto* const found =
      std::ranges::find(kElementTypeNames, type, &ElementTypeName::type);
  return found != std::end(kElementTypeNames) ? std::string(found->name)
                                              : fmt::format("type {:#x}", type);
}

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

class Collector {
 public:
  SessionFacts collect(const Recording& recording) {
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

  SessionFacts facts_;
  Graph noGraph_;
  // By their variables.
  std::map<std::string, std::size_t> graphs_;
};

}  // namespace

SessionFacts collectFacts(const recording::Recording& recording) {
  return Collector().collect(recording);
}

}  // namespace kiv::tool
