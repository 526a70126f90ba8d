#include "kiv_recording/network_export.h"

#include <algorithm>

namespace kiv::tool {
namespace {

using onnx_model::Fault;
using onnx_model::ModelBuilder;
using recording::Arguments;
using recording::Value;
namespace calls = format::calls;

// Shapes are inferred from small tensors, which must be in the model for that.
constexpr std::size_t kLargestInModel = 1024;

std::uint64_t bitsOf(const Arguments& arguments, std::string_view name) {
  const Value* const value = arguments.find(name);
  return value == nullptr ? 0 : value->bits;
}

// The handle that an out-argument received.
std::uint64_t created(const Arguments& arguments, std::string_view name) {
  const Value* const value = arguments.find(name);
  return value == nullptr || value->bits == 0
             ? 0
             : *value->pointer<const std::uint64_t>();
}

std::string nameOf(const Arguments& arguments) {
  const char* const name = arguments.find("name")->pointer<const char>();
  return name == nullptr ? "" : name;
}

// An array of tensors, which the next argument counts.
std::span<const Kiv_Tensor_t> tensorsOf(const Arguments& arguments,
                                        std::string_view name) {
  const Value* const value = arguments.find(name);
  const auto* const tensors = value->pointer<const Kiv_Tensor_t>();
  if (tensors == nullptr) return {};
  return {tensors, static_cast<std::size_t>((value + 1)->bits)};
}

// In the order of the names; what they do not name comes last.
void sortByNames(
    const std::vector<std::string>& names,
    google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>& values) {
  std::stable_sort(values.pointer_begin(), values.pointer_end(),
                   [&names](const auto* a, const auto* b) {
                     return std::ranges::find(names, a->name()) <
                            std::ranges::find(names, b->name());
                   });
}

void addExternal(onnx::TensorProto& proto, const char* key,
                 const std::string& value) {
  auto& entry = *proto.add_external_data();
  entry.set_key(key);
  entry.set_value(value);
}

}  // namespace

bool NetworkExport::read(const recording::Recording& recording,
                         std::span<std::byte> data,
                         const std::string& graphName) {
  recording::Program program(recording, data);
  Arguments arguments;
  for (std::size_t call = 0; call < recording.calls().size(); ++call) {
    call_ = &recording.calls()[call];
    if (const auto problem = program.begin(call, arguments)) {
      problem_ = toString(*problem);
      return false;
    }
    answers_.answer(arguments);
    if (const auto fault = visit(arguments)) {
      recording::Problem problem =
          recording.problemAt(call_->span.begin, fault->message);
      problem.line = call_->line;
      problem.column = 0;
      problem_ = toString(problem);
      return false;
    }
    program.end(call);
  }
  return finish(graphName);
}

std::optional<Fault> NetworkExport::visit(const Arguments& arguments) {
  const format::Function* const function = arguments.function;
  if (function == &calls::kBackendCreate ||
      function == &calls::kBackendSetConfig)
    readOptions(arguments);
  else if (function == &calls::kContextCreate)
    addContext(created(arguments, "context"));
  else if (function == &calls::kGraphCreate)
    addGraph(arguments);
  else if (function == &calls::kGraphCreateSubgraph)
    addSubgraph(arguments);
  else if (function == &calls::kTensorCreateGraphTensor ||
           function == &calls::kTensorCreateContextTensor)
    return addTensor(arguments);
  else if (function == &calls::kGraphAddNode)
    return addNode(arguments);
  else if (function == &calls::kGraphExecute)
    return execute(arguments);
  return std::nullopt;
}

void NetworkExport::readOptions(const Arguments& arguments) {
  const auto* list =
      arguments.find("config")->pointer<const KivBackend_Config_t* const>();
  for (; list != nullptr && *list != nullptr; ++list)
    if ((*list)->option == KIV_BACKEND_CONFIG_OPTION_PLATFORM &&
        (*list)->platformOption != nullptr)
      options_.emplace_back((*list)->platformOption);
}

void NetworkExport::addContext(std::uint64_t handle) {
  auto& builder = contexts_[handle].builder;
  builder = std::make_unique<ModelBuilder>(
      [this](std::span<const std::byte> data, onnx::TensorProto& proto) {
        store(data, proto);
      });
  for (const std::string& option : options_)
    builder->opsets().readOption(option);
}

// A call with one run has it where the call's data begins. A run of 16-bit
// floats may lack the last one.
void NetworkExport::store(std::span<const std::byte> data,
                          onnx::TensorProto& proto) {
  if (call_->dataSize < data.size())
    notes_.push_back("tensor \"" + proto.name() +
                     "\": the recording lacks its last element, zero stands "
                     "there");
  if (data.size() <= kLargestInModel || call_->dataSize != data.size())
    return onnx_model::storeInline(data, proto);
  usesDataFile_ = true;
  proto.set_data_location(onnx::TensorProto::EXTERNAL);
  addExternal(proto, "location", dataFile_);
  addExternal(proto, "offset", std::to_string(call_->dataOffset));
  addExternal(proto, "length", std::to_string(data.size()));
}

void NetworkExport::addGraph(const Arguments& arguments) {
  Graph graph;
  graph.name = nameOf(arguments);
  graph.context = bitsOf(arguments, "context");
  // A context that a binary holds.
  if (!contexts_.contains(graph.context)) addContext(graph.context);
  graph.index = contexts_[graph.context].builder->addGraph(graph.name);
  graphs_[created(arguments, "graph")] = std::move(graph);
}

void NetworkExport::addSubgraph(const Arguments& arguments) {
  const auto parent = graphs_.find(bitsOf(arguments, "graph"));
  if (parent == graphs_.end()) return;
  Graph graph;
  graph.name = nameOf(arguments);
  graph.context = parent->second.context;
  graph.isSubgraph = true;
  graph.index = contexts_[graph.context].builder->addSubgraph(
      parent->second.index, graph.name);
  graphs_[created(arguments, "subgraph")] = std::move(graph);
}

std::optional<Fault> NetworkExport::addTensor(const Arguments& arguments) {
  const auto* const tensor =
      arguments.find("tensor")->pointer<const Kiv_Tensor_t>();
  if (tensor == nullptr) return std::nullopt;
  if (arguments.find("context") != nullptr) {
    const std::uint64_t context = bitsOf(arguments, "context");
    if (!contexts_.contains(context)) addContext(context);
    return contexts_[context].builder->addContextTensor(*tensor);
  }
  const auto graph = graphs_.find(bitsOf(arguments, "graph"));
  if (graph == graphs_.end()) return std::nullopt;
  return contexts_[graph->second.context].builder->addTensor(
      graph->second.index, *tensor);
}

std::optional<Fault> NetworkExport::addNode(const Arguments& arguments) {
  const auto graph = graphs_.find(bitsOf(arguments, "graph"));
  if (graph == graphs_.end()) return std::nullopt;
  return contexts_[graph->second.context].builder->addNode(
      graph->second.index,
      *arguments.find("opConfig")->pointer<const Kiv_OpConfig_t>());
}

std::optional<Fault> NetworkExport::execute(const Arguments& arguments) {
  const auto found = graphs_.find(bitsOf(arguments, "graph"));
  if (found == graphs_.end() || found->second.executions++ != 0)
    return std::nullopt;
  Graph& graph = found->second;
  const ModelBuilder& builder = *contexts_[graph.context].builder;
  for (const Kiv_Tensor_t& output : tensorsOf(arguments, "outputs"))
    graph.outputOrder.emplace_back(builder.nameOf(output.v1.id));
  for (const Kiv_Tensor_t& input : tensorsOf(arguments, "inputs")) {
    const std::string name(builder.nameOf(input.v1.id));
    graph.inputOrder.push_back(name);
    if (auto fault = onnx_model::tensorProtoOf(input, name, graph.inputs[name]))
      return fault;
  }
  return std::nullopt;
}

bool NetworkExport::finish(const std::string& graphName) {
  const Graph* chosen = nullptr;
  std::string names;
  int count = 0;
  for (const auto& [handle, graph] : graphs_) {
    if (graph.isSubgraph) continue;
    if (!graphName.empty() && graph.name != graphName) continue;
    chosen = &graph;
    ++count;
    names.append(names.empty() ? "" : ", ").append(graph.name);
  }
  if (count != 1) {
    problem_ =
        count == 0
            ? "the recording builds no graph" +
                  (graphName.empty() ? "" : " \"" + graphName + "\"") +
                  "; one that comes from a context binary cannot be exported"
            : "the recording has the graphs " + names +
                  ": name one with --graph";
    return false;
  }
  const ModelBuilder& builder = *contexts_[chosen->context].builder;
  model_ = builder.build(chosen->index);
  model_.set_producer_name("kiv-recording");
  sortByNames(chosen->inputOrder, *model_.mutable_graph()->mutable_input());
  sortByNames(chosen->outputOrder, *model_.mutable_graph()->mutable_output());
  for (const std::string& warning : builder.warnings())
    notes_.push_back(warning);
  takeInputs(*chosen);
  return true;
}

void NetworkExport::takeInputs(const Graph& graph) {
  for (const onnx::ValueInfoProto& input : model_.graph().input()) {
    const auto found = graph.inputs.find(input.name());
    if (found != graph.inputs.end()) inputs_.push_back(found->second);
  }
}

}  // namespace kiv::tool
