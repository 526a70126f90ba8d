// A backend that adds: nodes of the type Add with two inputs of floats. It is
// strict about tensors' types, and KIV_ADDER_WRONG names a tensor whose second
// element comes out wrong.

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "KivInterface.h"

namespace {

struct Tensor {
  std::string name;
  Kiv_TensorType_t type = KIV_TENSOR_TYPE_UNDEFINED;
  std::vector<float> values;
};

struct Node {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::uint32_t result = 0;
};

struct Graph {
  std::map<std::uint32_t, Tensor> tensors;
  std::vector<Node> nodes;
};

std::vector<std::unique_ptr<Graph>>& graphs() {
  static std::vector<std::unique_ptr<Graph>> all;
  return all;
}

std::vector<float> valuesOf(const Kiv_TensorV1_t& tensor) {
  std::vector<float> values(tensor.clientBuf.dataSize / sizeof(float));
  if (!values.empty())
    std::memcpy(values.data(), tensor.clientBuf.data,
                values.size() * sizeof(float));
  return values;
}

bool isKnown(const Graph& graph, const Kiv_TensorV1_t& tensor) {
  const auto found = graph.tensors.find(tensor.id);
  return found != graph.tensors.end() && found->second.type == tensor.type;
}

Kiv_ErrorHandle_t create(void** handle) {
  static char object = 0;
  *handle = &object;
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t graphCreate(Kiv_ContextHandle_t, const char*,
                              const KivGraph_Config_t**,
                              Kiv_GraphHandle_t* handle) {
  *handle = graphs().emplace_back(std::make_unique<Graph>()).get();
  return KIV_SUCCESS;
}

// Ids do not begin with the ones that the recording was made with.
Kiv_ErrorHandle_t tensorCreate(Kiv_GraphHandle_t handle, Kiv_Tensor_t* tensor) {
  auto& graph = *static_cast<Graph*>(handle);
  tensor->v1.id = static_cast<std::uint32_t>(100 + graph.tensors.size());
  graph.tensors[tensor->v1.id] = {tensor->v1.name, tensor->v1.type,
                                  valuesOf(tensor->v1)};
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t addNode(Kiv_GraphHandle_t handle, Kiv_OpConfig_t config) {
  auto& graph = *static_cast<Graph*>(handle);
  const Kiv_OpConfigV1_t& node = config.v1;
  if (std::strcmp(node.typeName, "Add") != 0 || node.numInputs != 2 ||
      !isKnown(graph, node.inputTensors[0].v1) ||
      !isKnown(graph, node.inputTensors[1].v1) ||
      !isKnown(graph, node.outputTensors[0].v1))
    return KIV_GRAPH_ERROR_INVALID_TENSOR;
  graph.nodes.push_back({node.inputTensors[0].v1.id, node.inputTensors[1].v1.id,
                         node.outputTensors[0].v1.id});
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t finalize(Kiv_GraphHandle_t, Kiv_ProfileHandle_t,
                           Kiv_SignalHandle_t) {
  return std::getenv("KIV_ADDER_REFUSES") == nullptr
             ? KIV_SUCCESS
             : KIV_GRAPH_ERROR_INVALID_TENSOR;
}

void compute(Graph& graph) {
  const char* const wrong = std::getenv("KIV_ADDER_WRONG");
  for (const Node& node : graph.nodes) {
    Tensor& result = graph.tensors[node.result];
    result.values = graph.tensors[node.first].values;
    const std::vector<float>& second = graph.tensors[node.second].values;
    for (std::size_t i = 0; i < result.values.size(); ++i)
      result.values[i] += second.at(i);
    if (wrong != nullptr && result.name == wrong) result.values[1] += 0.5F;
  }
}

Kiv_ErrorHandle_t execute(Kiv_GraphHandle_t handle, const Kiv_Tensor_t* inputs,
                          uint32_t numInputs, Kiv_Tensor_t* outputs,
                          uint32_t numOutputs, Kiv_ProfileHandle_t,
                          Kiv_SignalHandle_t) {
  auto& graph = *static_cast<Graph*>(handle);
  for (std::uint32_t i = 0; i < numInputs; ++i)
    graph.tensors[inputs[i].v1.id].values = valuesOf(inputs[i].v1);
  compute(graph);
  for (std::uint32_t i = 0; i < numOutputs; ++i) {
    const Tensor& tensor = graph.tensors[outputs[i].v1.id];
    const Kiv_ClientBuffer_t& buffer = outputs[i].v1.clientBuf;
    const std::size_t size = tensor.values.size() * sizeof(float);
    if (tensor.type != KIV_TENSOR_TYPE_OUTPUT || buffer.dataSize != size)
      return KIV_GRAPH_ERROR_INVALID_TENSOR;
    std::memcpy(buffer.data, tensor.values.data(), size);
  }
  return KIV_SUCCESS;
}

KivInterface_t makeProvider() {
  KivInterface_t provider{};
  provider.providerName = "KIV_ADDER";
  provider.apiVersion.coreApiVersion.majorVersion = KIV_CORE_API_VERSION_MAJOR;
  auto& table = provider.KIV_INTERFACE_VER_NAME;
  table.backendCreate = [](Kiv_LogHandle_t, const KivBackend_Config_t**,
                           Kiv_BackendHandle_t* handle) {
    return create(handle);
  };
  table.backendFree = [](Kiv_BackendHandle_t) -> Kiv_ErrorHandle_t {
    return KIV_SUCCESS;
  };
  table.contextCreate =
      [](Kiv_BackendHandle_t, Kiv_DeviceHandle_t, const KivContext_Config_t**,
         Kiv_ContextHandle_t* handle) { return create(handle); };
  table.contextFree = [](Kiv_ContextHandle_t,
                         Kiv_ProfileHandle_t) -> Kiv_ErrorHandle_t {
    return KIV_SUCCESS;
  };
  table.graphCreate = graphCreate;
  table.tensorCreateGraphTensor = tensorCreate;
  table.graphAddNode = addNode;
  table.graphFinalize = finalize;
  table.graphExecute = execute;
  return provider;
}

}  // namespace

KIV_EXTERN_C_BEGIN

KIV_API Kiv_ErrorHandle_t
KivInterface_getProviders(const KivInterface_t*** list, uint32_t* count) {
  static const KivInterface_t kProvider = makeProvider();
  static const KivInterface_t* providers[] = {&kProvider};
  *list = providers;
  *count = 1;
  return KIV_SUCCESS;
}

KIV_EXTERN_C_END
