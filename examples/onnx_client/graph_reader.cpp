#include "graph_reader.h"

#include <algorithm>
#include <utility>

#include "attributes.h"
#include "errors.h"
#include "tensor_data.h"

namespace onnx_client {
namespace {

std::string orElse(const std::string& text, const std::string& otherwise) {
  return text.empty() ? otherwise : text;
}

}  // namespace

std::string UniqueNames::make(const std::string& base) {
  std::string name = checkedName(base);
  while (!taken_.insert(name).second)
    name = base + "_" + std::to_string(++next_[base]);
  return name;
}

void GraphReader::readMain(const onnx::GraphProto& proto) {
  Graph& graph = network_.graph;
  graph.name = graphNames_.make(orElse(proto.name(), "graph"));
  read(proto, nullptr, graph);
  for (const TensorIndex index : graph.inputs) settleMainTensor(index);
  for (const TensorIndex index : graph.outputs) settleMainTensor(index);
}

void GraphReader::read(const onnx::GraphProto& proto, const Scope* outer,
                       Graph& graph) {
  Scope scope{proto, outer, graph, ValueTypes(proto), {}, {}};
  for (const auto& output : proto.output()) scope.outputs.insert(output.name());
  readInitializers(scope);
  readInputs(scope);
  readNodes(scope);
  if (outer == nullptr) {
    readOutputs(scope);
  } else {
    readSubgraphOutputs(scope);
  }
}

void GraphReader::readInitializers(Scope& scope) {
  if (scope.proto.sparse_initializer_size() > 0)
    throw NotAccepted("the network has sparse initializers");
  for (const onnx::TensorProto& initializer : scope.proto.initializer()) {
    const std::string& name = initializer.name();
    declare(scope, name, readTensor(initializer, name));
  }
}

// Inputs that have an initializer are optional, and are left out.
void GraphReader::readInputs(Scope& scope) {
  const auto isInitializer = [&](const std::string& name) {
    const auto found = scope.values.find(name);
    return found != scope.values.end() &&
           network_.tensors[found->second].type == KIV_TENSOR_TYPE_STATIC;
  };
  for (const onnx::ValueInfoProto& input : scope.proto.input()) {
    if (isInitializer(input.name())) continue;
    scope.graph.inputs.push_back(
        declareValue(scope, input.name(), KIV_TENSOR_TYPE_INPUT));
  }
}

void GraphReader::readNodes(Scope& scope) {
  for (const onnx::NodeProto& node : scope.proto.node())
    scope.graph.nodes.push_back(readNode(node, scope));
}

// An output that is an initializer is known without an execution.
void GraphReader::readOutputs(Scope& scope) {
  std::vector<TensorIndex>& outputs = scope.graph.outputs;
  for (const onnx::ValueInfoProto& output : scope.proto.output()) {
    const TensorIndex index = lookUp(scope, output.name());
    Tensor& tensor = network_.tensors[index];
    if (tensor.type == KIV_TENSOR_TYPE_STATIC) continue;
    if (tensor.type == KIV_TENSOR_TYPE_INPUT)
      tensor.type = KIV_TENSOR_TYPE_INPUT_OUTPUT;
    if (std::count(outputs.begin(), outputs.end(), index) == 0)
      outputs.push_back(index);
  }
}

// Calls tell a subgraph's outputs by the type of its tensors and their order by
// the order of creation, so each output is a tensor of its own, behind those
// that come first.
void GraphReader::readSubgraphOutputs(Scope& scope) {
  Graph& graph = scope.graph;
  for (const onnx::ValueInfoProto& output : scope.proto.output()) {
    TensorIndex index = lookUp(scope, output.name());
    const bool isOwn = scope.values.contains(output.name());
    const bool isTaken =
        std::count(graph.outputs.begin(), graph.outputs.end(), index) > 0;
    if (!isOwn || isTaken ||
        network_.tensors[index].type != KIV_TENSOR_TYPE_OUTPUT)
      index = addCopy(graph, index);
    graph.outputs.push_back(index);
  }
  std::erase_if(graph.tensors, [&](TensorIndex index) {
    return network_.tensors[index].type == KIV_TENSOR_TYPE_OUTPUT;
  });
  const auto first = std::find_if(
      graph.tensors.begin(), graph.tensors.end(), [&](TensorIndex index) {
        return network_.tensors[index].type == KIV_TENSOR_TYPE_NATIVE;
      });
  graph.tensors.insert(first, graph.outputs.begin(), graph.outputs.end());
}

// Adds a node that copies a value into an output.
TensorIndex GraphReader::addCopy(Graph& graph, TensorIndex source) {
  Tensor copy;
  const Tensor& tensor = network_.tensors[source];
  copy.name = tensorNames_.make(tensor.name + "_output");
  copy.type = KIV_TENSOR_TYPE_OUTPUT;
  copy.dataType = tensor.dataType;
  copy.shape = tensor.shape;
  const TensorIndex index = network_.tensors.size();
  network_.tensors.push_back(std::move(copy));
  Node node;
  node.type = "Identity";
  node.package = kDefaultPackage;
  node.name = nodeNames_.make(network_.tensors[index].name);
  node.inputs = {source};
  node.outputs = {index};
  graph.nodes.push_back(std::move(node));
  graph.tensors.push_back(index);
  return index;
}

Node GraphReader::readNode(const onnx::NodeProto& proto, Scope& scope) {
  Node node;
  node.type = checkedName(proto.op_type());
  if (node.type.empty()) throw ClientError("a node has no operation");
  node.package = checkedName(orElse(proto.domain(), kDefaultPackage));
  node.name = nodeNames_.make(
      orElse(proto.name(),
             node.type + "_" + std::to_string(scope.graph.nodes.size())));
  for (const std::string& input : proto.input())
    node.inputs.push_back(input.empty() ? kAbsent : lookUp(scope, input));
  node.parameters = readAttributes(
      proto, node.name,
      [&](const onnx::GraphProto& graph, const std::string& name) {
        return readSubgraph(graph, node.name + "_" + name, scope);
      });
  for (const std::string& output : proto.output()) {
    const auto type = scope.outputs.contains(output) ? KIV_TENSOR_TYPE_OUTPUT
                                                     : KIV_TENSOR_TYPE_NATIVE;
    node.outputs.push_back(output.empty() ? kAbsent
                                          : declareValue(scope, output, type));
  }
  return node;
}

std::unique_ptr<Graph> GraphReader::readSubgraph(const onnx::GraphProto& proto,
                                                 const std::string& name,
                                                 const Scope& outer) {
  auto graph = std::make_unique<Graph>();
  graph->name = graphNames_.make(name);
  read(proto, &outer, *graph);
  return graph;
}

TensorIndex GraphReader::declare(Scope& scope, const std::string& value,
                                 Tensor tensor) {
  const TensorIndex index = network_.tensors.size();
  if (value.empty()) throw ClientError("a tensor of the network has no name");
  if (!scope.values.emplace(value, index).second)
    throw ClientError("tensor " + value + " is defined twice");
  tensor.name = tensorNames_.make(value);
  network_.tensors.push_back(std::move(tensor));
  scope.graph.tensors.push_back(index);
  return index;
}

TensorIndex GraphReader::declareValue(Scope& scope, const std::string& value,
                                      Kiv_TensorType_t type) {
  Tensor tensor;
  tensor.type = type;
  scope.types.describe(value, tensor);
  return declare(scope, value, std::move(tensor));
}

// A value of an outer graph belongs to both graphs from then on.
TensorIndex GraphReader::lookUp(const Scope& scope, const std::string& value) {
  for (const Scope* at = &scope; at != nullptr; at = at->outer) {
    const auto found = at->values.find(value);
    if (found == at->values.end()) continue;
    if (at != &scope) network_.tensors[found->second].shared = true;
    return found->second;
  }
  throw ClientError("tensor " + value + " is used before it is defined");
}

void GraphReader::settleMainTensor(TensorIndex index) {
  Tensor& tensor = network_.tensors[index];
  const std::string what = "tensor " + tensor.name;
  if (!tensor.shape.known)
    throw NotAccepted("the shape of " + what + " is not known");
  if (!tensor.shape.dynamic.empty()) {
    network_.notes.push_back("sizes of " + what +
                             " that are not known are taken as 1");
  }
  const auto open = openShapes_.find(tensor.name);
  if (open != openShapes_.end() &&
      open->second.size() == tensor.shape.dimensions.size())
    tensor.shape.dynamic = open->second;
  byteSize(tensor.dataType, tensor.shape.dimensions, what);
}

}  // namespace onnx_client
