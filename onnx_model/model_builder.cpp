#include "onnx_model/model_builder.h"

#include <algorithm>
#include <utility>

#include "onnx_model/nodes.h"

namespace kiv::onnx_model {
namespace {

// The first version in which initialisers need not be inputs, and newer than
// every operator that the library knows needs.
constexpr std::int64_t kIrVersion = 8;

bool isInput(Kiv_TensorType_t type) {
  return type == KIV_TENSOR_TYPE_INPUT || type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

bool isOutput(Kiv_TensorType_t type) {
  return type == KIV_TENSOR_TYPE_OUTPUT || type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

}  // namespace

// ---- graphs, tensors and nodes ----

GraphIndex ModelBuilder::addGraph(std::string name) {
  graphs_.push_back({std::move(name), std::nullopt, {}});
  return graphs_.size() - 1;
}

GraphIndex ModelBuilder::addSubgraph(GraphIndex parent, std::string name) {
  graphs_.push_back({std::move(name), parent, {}});
  return graphs_.size() - 1;
}

std::optional<Fault> ModelBuilder::addTensor(GraphIndex graph,
                                             const Kiv_Tensor_t& tensor) {
  return add(tensor, graph, false);
}

std::optional<Fault> ModelBuilder::addContextTensor(
    const Kiv_Tensor_t& tensor) {
  const std::optional<GraphIndex> last =
      graphs_.empty() ? std::nullopt : std::optional(graphs_.size() - 1);
  return add(tensor, last, true);
}

std::string ModelBuilder::uniqueName(const Kiv_TensorV1_t& tensor) const {
  const std::string id = std::to_string(tensor.id);
  std::string name = tensor.name == nullptr || *tensor.name == '\0'
                         ? "tensor_" + id
                         : tensor.name;
  while (idsByName_.contains(name)) name += "_" + id;
  return name;
}

std::optional<Fault> ModelBuilder::add(const Kiv_Tensor_t& tensor,
                                       std::optional<GraphIndex> graph,
                                       bool isOfContext) {
  if (auto fault = checkRecord(tensor)) return fault;
  const Kiv_TensorV1_t& record = fieldsOf(tensor);
  if (valuesById_.contains(record.id))
    return Fault{KIV_TENSOR_ERROR_ALREADY_EXISTS,
                 describe(tensor) + " has the id of an earlier one"};
  auto value = std::make_unique<Value>();
  value->name = uniqueName(record);
  value->type = record.type;
  value->graph = graph;
  value->isOfContext = isOfContext;
  if (record.type == KIV_TENSOR_TYPE_STATIC) {
    value->initializer = std::make_unique<onnx::TensorProto>();
    if (auto fault =
            tensorProtoOf(tensor, value->name, *value->initializer, sink_))
      return fault;
  } else {
    value->info.set_name(value->name);
    if (record.name != nullptr) value->info.set_doc_string(record.name);
    copyType(tensor, value->info);
  }
  valuesById_[record.id] = value.get();
  idsByName_[value->name] = record.id;
  values_.push_back(std::move(value));
  return std::nullopt;
}

std::string_view ModelBuilder::nameOf(std::uint32_t id) const {
  const auto found = valuesById_.find(id);
  return found == valuesById_.end() ? std::string_view{} : found->second->name;
}

std::optional<std::uint32_t> ModelBuilder::idOf(std::string_view name) const {
  const auto found = idsByName_.find(name);
  if (found == idsByName_.end()) return std::nullopt;
  return found->second;
}

std::int64_t ModelBuilder::versionOf(const std::string& domain) {
  const std::int64_t version = opsets_.versionOf(domain);
  if (opsets_.find(domain)) return version;
  warnings_.push_back(
      "no platform option onnx.opset" + (domain.empty() ? "" : "." + domain) +
      " names an operator set, so " + std::to_string(version) + " is taken");
  opsets_.set(domain, version);
  return version;
}

// A null pointer stands for an input or output that is left out.
std::optional<Fault> ModelBuilder::findValues(
    GraphIndex graph, std::span<const Kiv_Tensor_t> tensors,
    std::vector<Value*>& values) const {
  for (const Kiv_Tensor_t& tensor : tensors) {
    if (auto fault = checkVersion(tensor)) return fault;
    const Kiv_TensorV1_t& record = fieldsOf(tensor);
    if (record.type == KIV_TENSOR_TYPE_NULL) {
      values.push_back(nullptr);
      continue;
    }
    const auto found = valuesById_.find(record.id);
    if (found == valuesById_.end() ||
        (!found->second->isOfContext && found->second->graph != graph))
      return Fault{KIV_GRAPH_ERROR_INVALID_TENSOR,
                   describe(tensor) + " with the id " +
                       std::to_string(record.id) +
                       " was created neither in the graph nor in its context"};
    values.push_back(found->second);
  }
  return std::nullopt;
}

std::optional<Fault> ModelBuilder::addNode(GraphIndex graph,
                                           const Kiv_OpConfig_t& config) {
  onnx::NodeProto node;
  if (auto fault = startNode(config, node)) return fault;
  const Kiv_OpConfigV1_t& record = config.v1;
  std::vector<Value*> inputs;
  std::vector<Value*> outputs;
  auto fault = addAttributes(
      record, versionOf(node.domain()),
      [&](const std::string& name) { return childOf(graph, name).has_value(); },
      sink_, node);
  if (!fault)
    fault = findValues(graph, {record.inputTensors, record.numInputs}, inputs);
  if (!fault)
    fault =
        findValues(graph, {record.outputTensors, record.numOutputs}, outputs);
  if (fault) {
    fault->message =
        "node " + node.name() + " (" + node.op_type() + "): " + fault->message;
    return fault;
  }
  for (Value* value : inputs) {
    node.add_input(value == nullptr ? "" : value->name);
    if (value != nullptr) value->readers.insert(graph);
  }
  for (Value* value : outputs) {
    node.add_output(value == nullptr ? "" : value->name);
    if (value != nullptr) value->writers.insert(graph);
  }
  graphs_[graph].nodes.push_back(std::move(node));
  return std::nullopt;
}

// ---- the model ----

GraphIndex ModelBuilder::rootOf(GraphIndex graph) const {
  while (graphs_[graph].parent) graph = *graphs_[graph].parent;
  return graph;
}

// The graph among `root` and its subgraphs in which a value is declared. The
// context's values are declared where they are used, its inputs in the subgraph
// that was created last before them, if there is one.
std::optional<GraphIndex> ModelBuilder::homeOf(const Value& value,
                                               GraphIndex root) const {
  const auto isBelow = [&](GraphIndex graph) { return rootOf(graph) == root; };
  if (!value.isOfContext)
    return isBelow(*value.graph) ? value.graph : std::nullopt;
  const auto writer = std::ranges::find_if(value.writers, isBelow);
  if (writer != value.writers.end()) return *writer;
  const bool isUsed = std::ranges::any_of(value.readers, isBelow);
  if (isInput(value.type) && value.graph && isBelow(*value.graph) &&
      (graphs_[*value.graph].parent || value.readers.empty()))
    return value.graph;
  if (value.type == KIV_TENSOR_TYPE_OUTPUT) return std::nullopt;
  return isUsed ? std::optional(root) : std::nullopt;
}

std::optional<GraphIndex> ModelBuilder::childOf(GraphIndex graph,
                                                std::string_view name) const {
  for (GraphIndex i = 0; i < graphs_.size(); ++i)
    if (graphs_[i].parent == graph && graphs_[i].name == name) return i;
  return std::nullopt;
}

// In a subgraph a shape that is not known looks like that of a single value.
void ModelBuilder::fillGraph(GraphIndex index, const ValuesByHome& values,
                             onnx::GraphProto& proto) const {
  proto.set_name(graphs_[index].name);
  const bool isMain = !graphs_[index].parent;
  const auto add = [isMain](const Value& value, onnx::ValueInfoProto& info) {
    info = value.info;
    auto& type = *info.mutable_type()->mutable_tensor_type();
    if (!isMain && type.shape().dim_size() == 0) type.clear_shape();
  };
  if (const auto own = values.find(index); own != values.end()) {
    for (const Value* value : own->second) {
      if (value->initializer) *proto.add_initializer() = *value->initializer;
      if (isInput(value->type)) add(*value, *proto.add_input());
      if (isOutput(value->type)) add(*value, *proto.add_output());
    }
  }
  for (const onnx::NodeProto& node : graphs_[index].nodes) {
    onnx::NodeProto& copy = *proto.add_node() = node;
    fillSubgraphs(index, values, copy);
  }
}

void ModelBuilder::fillSubgraphs(GraphIndex index, const ValuesByHome& values,
                                 onnx::NodeProto& node) const {
  const auto fill = [&](onnx::GraphProto& graph) {
    if (const auto child = childOf(index, graph.name()))
      fillGraph(*child, values, graph);
  };
  for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
    for (onnx::GraphProto& graph : *attribute.mutable_graphs()) fill(graph);
    if (!attribute.has_g()) continue;
    fill(*attribute.mutable_g());
    if (node.op_type() == "Loop") shapeLoopInputs(*attribute.mutable_g());
  }
}

// The number of a loop's round and its condition are scalars where no dimension
// is recorded, which programs that run models want to know.
void ModelBuilder::shapeLoopInputs(onnx::GraphProto& body) {
  constexpr int kCount = 2;
  for (int i = 0; i < std::min(kCount, body.input_size()); ++i)
    body.mutable_input(i)
        ->mutable_type()
        ->mutable_tensor_type()
        ->mutable_shape();
}

std::vector<onnx::ValueInfoProto> ModelBuilder::intermediatesOf(
    GraphIndex graph) const {
  std::vector<onnx::ValueInfoProto> infos;
  for (const auto& value : values_)
    if (!value->isOfContext && value->graph == graph &&
        value->type == KIV_TENSOR_TYPE_NATIVE)
      infos.push_back(value->info);
  return infos;
}

onnx::ModelProto ModelBuilder::build(GraphIndex graph) const {
  ValuesByHome values;
  for (const auto& value : values_)
    if (const auto home = homeOf(*value, graph))
      values[*home].push_back(value.get());
  onnx::ModelProto model;
  model.set_ir_version(kIrVersion);
  for (const auto& [domain, version] : opsets_.versions()) {
    auto& opset = *model.add_opset_import();
    opset.set_domain(domain);
    opset.set_version(version);
  }
  fillGraph(graph, values, *model.mutable_graph());
  return model;
}

}  // namespace kiv::onnx_model
