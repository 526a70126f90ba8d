#include "graph_builder.h"

#include "api_call.h"
#include "tensor_records.h"

namespace onnx_client {
namespace {

Kiv_Scalar_t scalar(float value) {
  Kiv_Scalar_t record{};
  record.dataType = KIV_DATA_TYPE_FLOAT_32;
  record.floatValue = value;
  return record;
}

Kiv_Scalar_t scalar(std::int32_t value) {
  Kiv_Scalar_t record{};
  record.dataType = KIV_DATA_TYPE_INT_32;
  record.int32Value = value;
  return record;
}

Kiv_Scalar_t scalar(const std::string& value) {
  Kiv_Scalar_t record{};
  record.dataType = KIV_DATA_TYPE_STRING;
  record.stringValue = value.c_str();
  return record;
}

Kiv_Scalar_t scalar(const std::unique_ptr<Graph>& graph) {
  return scalar(graph->name);
}

struct ParamWriter {
  Kiv_Param_t& record;

  void operator()(Tensor& tensor) const {
    record.paramType = KIV_PARAM_TYPE_TENSOR;
    record.tensorParam = tensorRecord(tensor, tensor.data);
  }

  template <typename Value>
  void operator()(const Value& value) const {
    record.paramType = KIV_PARAM_TYPE_SCALAR;
    record.scalarParam = scalar(value);
  }
};

}  // namespace

void GraphBuilder::build(Graph& graph, Kiv_GraphHandle_t handle) {
  for (const TensorIndex index : graph.tensors)
    createTensor(network_.tensors[index], handle);
  for (Node& node : graph.nodes) addNode(node, handle);
}

void GraphBuilder::createTensor(Tensor& tensor, Kiv_GraphHandle_t graph) {
  Kiv_Tensor_t record = tensorRecord(tensor, tensor.data);
  if (tensor.shared) {
    call("tensorCreateContextTensor", api_.tensorCreateContextTensor, context_,
         &record);
  } else {
    call("tensorCreateGraphTensor", api_.tensorCreateGraphTensor, graph,
         &record);
  }
  tensor.id = tensorId(record);
  ++totals_.tensors;
  totals_.bytes += tensor.data.size();
  progress_.report("tensors created", totals_.tensors);
}

void GraphBuilder::addNode(Node& node, Kiv_GraphHandle_t graph) {
  buildSubgraphs(node, graph);
  std::vector<Kiv_Param_t> params = paramRecords(node.parameters);
  std::vector<Kiv_Tensor_t> inputs = tensorRecords(node.inputs);
  std::vector<Kiv_Tensor_t> outputs = tensorRecords(node.outputs);
  Kiv_OpConfig_t config{};
  config.version = KIV_OP_CONFIG_VERSION_1;
  config.v1.name = node.name.c_str();
  config.v1.packageName = node.package.c_str();
  config.v1.typeName = node.type.c_str();
  config.v1.numParams = static_cast<std::uint32_t>(params.size());
  config.v1.params = params.data();
  config.v1.numInputs = static_cast<std::uint32_t>(inputs.size());
  config.v1.inputTensors = inputs.data();
  config.v1.numOutputs = static_cast<std::uint32_t>(outputs.size());
  config.v1.outputTensors = outputs.data();
  call("graphAddNode", api_.graphAddNode, graph, config);
  ++totals_.nodes;
  progress_.report("nodes added", totals_.nodes);
}

void GraphBuilder::buildSubgraphs(Node& node, Kiv_GraphHandle_t graph) {
  for (Parameter& parameter : node.parameters) {
    auto* subgraph = std::get_if<std::unique_ptr<Graph>>(&parameter.value);
    if (subgraph == nullptr) continue;
    Kiv_GraphHandle_t handle = nullptr;
    call("graphCreateSubgraph", api_.graphCreateSubgraph, graph,
         (*subgraph)->name.c_str(), &handle);
    build(**subgraph, handle);
  }
}

std::vector<Kiv_Tensor_t> GraphBuilder::tensorRecords(
    const std::vector<TensorIndex>& indices) {
  std::vector<Kiv_Tensor_t> records;
  records.reserve(indices.size());
  for (const TensorIndex index : indices) {
    records.push_back(index == kAbsent ? absentRecord()
                                       : tensorRecord(network_.tensors[index]));
  }
  return records;
}

std::vector<Kiv_Param_t> GraphBuilder::paramRecords(
    std::vector<Parameter>& parameters) {
  std::vector<Kiv_Param_t> records;
  for (Parameter& parameter : parameters) {
    Kiv_Param_t record{};
    record.name = parameter.name.c_str();
    std::visit(ParamWriter{record}, parameter.value);
    if (const Tensor* tensor = std::get_if<Tensor>(&parameter.value))
      totals_.bytes += tensor->data.size();
    records.push_back(record);
  }
  return records;
}

}  // namespace onnx_client
