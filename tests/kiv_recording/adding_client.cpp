// A client of a network that adds, with an intermediate tensor whose name is no
// file's and one whose size is open:
//
//   h/1 = x + w;  open = h/1 + h/1;  y = h/1 + open
//
// It is executed twice.

#include <vector>

#include "support/client_main.h"
#include "support/records.h"

namespace kiv::test {
namespace {

class AddingNetwork {
 public:
  explicit AddingNetwork(const KivInterface_Implementation_t& api)
      : api_(api) {}

  bool run() {
    KivBackend_Config_t opset{};
    opset.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
    opset.platformOption = "onnx.opset:13";
    const KivBackend_Config_t* configs[] = {&opset, nullptr};
    note(api_.backendCreate(nullptr, configs, &backend_));
    note(api_.contextCreate(backend_, nullptr, nullptr, &context_));
    note(api_.graphCreate(context_, "main graph", nullptr, &graph_));
    build();
    execute({1, 2, 3, 4, 5, 6});
    execute({-1, 0, 0.25, 1e-3F, 1e6F, 7});
    note(api_.contextFree(context_, nullptr));
    note(api_.backendFree(backend_));
    return isGood_;
  }

 private:
  void note(Kiv_ErrorHandle_t status) {
    isGood_ = isGood_ && status == KIV_SUCCESS;
  }

  Kiv_Tensor_t make(const char* name, Kiv_TensorType_t type,
                    std::vector<float> data = {}) {
    Kiv_Tensor_t tensor = emptyTensor();
    tensor.v1.name = name;
    tensor.v1.type = type;
    tensor.v1.rank = 2;
    tensor.v1.dimensions = dimensions_;
    if (name == std::string("open")) {
      tensor.version = KIV_TENSOR_VERSION_2;
      tensor.v2.isDynamicDimensions = flags_;
    }
    if (!data.empty()) tensor.v1.clientBuf = {data.data(), sizeof(float) * 6};
    note(api_.tensorCreateGraphTensor(graph_, &tensor));
    tensor.v1.clientBuf = {};
    return tensor;
  }

  void add(const char* name, const Kiv_Tensor_t& a, const Kiv_Tensor_t& b,
           Kiv_Tensor_t& result) {
    Kiv_Tensor_t inputs[] = {a, b};
    Kiv_OpConfig_t node = emptyOpConfig(name);
    node.v1.packageName = "ai.onnx";
    node.v1.typeName = "Add";
    node.v1.numInputs = 2;
    node.v1.inputTensors = inputs;
    node.v1.numOutputs = 1;
    node.v1.outputTensors = &result;
    note(api_.graphAddNode(graph_, node));
  }

  void build() {
    x_ = make("x", KIV_TENSOR_TYPE_INPUT);
    const Kiv_Tensor_t w =
        make("w", KIV_TENSOR_TYPE_STATIC, {1, 0.5, 0.25, -1, -2, -3});
    Kiv_Tensor_t h = make("h/1", KIV_TENSOR_TYPE_NATIVE);
    Kiv_Tensor_t open = make("open", KIV_TENSOR_TYPE_NATIVE);
    y_ = make("y", KIV_TENSOR_TYPE_OUTPUT);
    add("first", x_, w, h);
    add("second", h, h, open);
    add("third", h, open, y_);
    note(api_.graphFinalize(graph_, nullptr, nullptr));
  }

  void execute(std::vector<float> data) {
    std::vector<float> results(data.size());
    x_.v1.clientBuf = {data.data(), sizeof(float) * 6};
    y_.v1.clientBuf = {results.data(), sizeof(float) * 6};
    note(api_.graphExecute(graph_, &x_, 1, &y_, 1, nullptr, nullptr));
  }

  const KivInterface_Implementation_t& api_;
  std::uint32_t dimensions_[2] = {2, 3};
  std::uint8_t flags_[2] = {1, 0};
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
  Kiv_GraphHandle_t graph_ = nullptr;
  Kiv_Tensor_t x_{};
  Kiv_Tensor_t y_{};
  bool isGood_ = true;
};

}  // namespace
}  // namespace kiv::test

int main(int argc, char** argv) {
  return kiv::test::clientMain(
      argc, argv,
      [](const KivInterface_Implementation_t& api, const std::string&) {
        return kiv::test::AddingNetwork(api).run();
      });
}
