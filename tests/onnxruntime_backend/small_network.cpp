#include "small_network.h"

#include <cstdlib>
#include <filesystem>
#include <numeric>

#include "support/provider.h"
#include "support/records.h"

// ONNX Runtime leaves some bytes of its own behind, which the leak sanitizer is
// to pass over.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libonnxruntime.so";
}

namespace kiv::test {

Kiv_Tensor_t vectorTensor(const char* name, Kiv_TensorType_t type,
                          std::uint32_t& size, Floats* data) {
  Kiv_Tensor_t tensor = emptyTensor();
  tensor.v1.name = name;
  tensor.v1.type = type;
  tensor.v1.rank = 1;
  tensor.v1.dimensions = &size;
  if (data != nullptr) {
    tensor.v1.clientBuf = {
        data->data(), static_cast<std::uint32_t>(data->size() * sizeof(float))};
  }
  return tensor;
}

SmallNetwork::SmallNetwork(const Api& api, Kiv_ContextHandle_t context,
                           const char* name, std::uint32_t size,
                           const char* type)
    : api_(api) {
  Floats weights(size);
  std::iota(weights.begin(), weights.end(), 1.0F);
  Kiv_Tensor_t inputs[] = {
      vectorTensor("x", KIV_TENSOR_TYPE_INPUT, size),
      vectorTensor("w", KIV_TENSOR_TYPE_STATIC, size, &weights)};
  Kiv_Tensor_t output = vectorTensor("z", KIV_TENSOR_TYPE_OUTPUT, size);
  EXPECT_EQ(api.graphCreate(context, name, nullptr, &graph_), KIV_SUCCESS);
  for (Kiv_Tensor_t* tensor : {&inputs[0], &inputs[1], &output})
    EXPECT_EQ(api.tensorCreateGraphTensor(graph_, tensor), KIV_SUCCESS);
  // The backend has its own copy.
  weights.assign(size, 0);
  x_ = inputs[0].v1.id;
  z_ = output.v1.id;
  Kiv_OpConfig_t config = emptyOpConfig("node");
  config.v1.packageName = "ai.onnx";
  config.v1.typeName = type;
  config.v1.numInputs = 2;
  config.v1.inputTensors = inputs;
  config.v1.numOutputs = 1;
  config.v1.outputTensors = &output;
  EXPECT_EQ(api.graphAddNode(graph_, config), KIV_SUCCESS);
}

Kiv_Tensor_t SmallNetwork::input(std::uint32_t& size, Floats& x) const {
  Kiv_Tensor_t tensor = vectorTensor("x", KIV_TENSOR_TYPE_INPUT, size, &x);
  tensor.v1.id = x_;
  return tensor;
}

Kiv_Tensor_t SmallNetwork::output(std::uint32_t& size, Floats& z) const {
  Kiv_Tensor_t tensor = vectorTensor("z", KIV_TENSOR_TYPE_OUTPUT, size, &z);
  tensor.v1.id = z_;
  return tensor;
}

Kiv_ErrorHandle_t SmallNetwork::execute(Kiv_GraphHandle_t graph, Floats& x,
                                        Floats& z,
                                        Kiv_ProfileHandle_t profile) const {
  auto xSize = static_cast<std::uint32_t>(x.size());
  auto zSize = static_cast<std::uint32_t>(z.size());
  const Kiv_Tensor_t in = input(xSize, x);
  Kiv_Tensor_t out = output(zSize, z);
  return api_.graphExecute(graph, &in, 1, &out, 1, profile, nullptr);
}

Floats SmallNetwork::sum(const Floats& x) {
  Floats sum = x;
  for (std::size_t i = 0; i < sum.size(); ++i)
    sum[i] += static_cast<float>(i + 1);
  return sum;
}

void OnnxRuntimeTest::SetUp() {
  const char* path = std::getenv("KIV_ONNXRUNTIME");
  if (path == nullptr || !std::filesystem::exists(path))
    GTEST_SKIP() << "there is no ONNX Runtime";
  library_ = std::make_unique<DynamicLibrary>(KIV_BACKEND_LIBRARY);
  api_ = &interfaceOf(*library_);
  log_ = std::make_unique<LogCapture>(*api_, KIV_LOG_LEVEL_WARN);
  KivBackend_Config_t config{};
  config.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
  config.platformOption = "onnx.opset:13";
  const KivBackend_Config_t* configs[] = {&config, nullptr};
  ASSERT_EQ(api_->backendCreate(nullptr, configs, &backend_), KIV_SUCCESS);
}

void OnnxRuntimeTest::TearDown() {
  if (backend_ == nullptr) return;
  for (Kiv_ContextHandle_t context : contexts_)
    api_->contextFree(context, nullptr);
  EXPECT_EQ(api_->backendFree(backend_), KIV_SUCCESS);
}

Kiv_ContextHandle_t OnnxRuntimeTest::createContext() {
  Kiv_ContextHandle_t context = nullptr;
  EXPECT_EQ(api_->contextCreate(backend_, nullptr, nullptr, &context),
            KIV_SUCCESS);
  contexts_.push_back(context);
  return context;
}

std::string OnnxRuntimeTest::messages() {
  std::string text;
  for (const std::string& message : log_->take()) text += message + "\n";
  return text;
}

}  // namespace kiv::test
