// large_session LIBRARY NODES
//
// A session of a graph of that many nodes, each with a weight of its own of a
// KiB, an input that is the output of the node before, and an output:
//
//   large_session libKivSaver.so 10000    # saver_output here, 48 MB of text

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/dynamic_library.h"
#include "support/provider.h"
#include "support/records.h"

namespace {

using Api = KivInterface_Implementation_t;

bool failed = false;

void check(Kiv_ErrorHandle_t status) {
  if (status != KIV_SUCCESS) failed = true;
}

class Session {
 public:
  explicit Session(const Api& api)
      : api_(api), objects_(kiv::test::createObjects(api)) {}

  void addNode(std::size_t index) {
    const std::string number = std::to_string(index);
    const std::string weightName = "model/block_" + number + "/conv2d/weights";
    const std::string outputName = "model/block_" + number + "/conv2d/output";
    const std::string nodeName = "model/block_" + number + "/conv2d";
    Kiv_Tensor_t weight = tensor(weightName, KIV_TENSOR_TYPE_STATIC);
    weight.v1.clientBuf = {data_.data(), 4u * kElements};
    check(api_.tensorCreateGraphTensor(objects_.graph, &weight));
    Kiv_Tensor_t output = tensor(outputName, KIV_TENSOR_TYPE_NATIVE);
    check(api_.tensorCreateGraphTensor(objects_.graph, &output));
    weight.v1.clientBuf = {nullptr, 0};
    std::array<Kiv_Tensor_t, 2> inputs = {input_, weight};
    Kiv_OpConfig_t node = kiv::test::emptyOpConfig(nodeName.c_str());
    node.v1.packageName = "package";
    node.v1.typeName = "Conv2d";
    node.v1.numInputs = index == 0 ? 1 : 2;
    node.v1.inputTensors = inputs.data() + (index == 0 ? 1 : 0);
    node.v1.numOutputs = 1;
    node.v1.outputTensors = &output;
    check(api_.graphAddNode(objects_.graph, node));
    input_ = output;
    inputName_ = outputName;
    input_.v1.name = inputName_.c_str();
  }

  void execute() {
    check(api_.graphFinalize(objects_.graph, nullptr, nullptr));
    Kiv_Tensor_t output = input_;
    output.v1.clientBuf = {data_.data(), 4u * kElements};
    check(api_.graphExecute(objects_.graph, nullptr, 0, &output, 1, nullptr,
                            nullptr));
    check(api_.contextFree(objects_.context, nullptr));
    check(api_.backendFree(objects_.backend));
  }

 private:
  static constexpr uint32_t kElements = 256;

  Kiv_Tensor_t tensor(const std::string& name, Kiv_TensorType_t type) {
    Kiv_Tensor_t made = kiv::test::emptyTensor();
    made.v1.name = name.c_str();
    made.v1.type = type;
    made.v1.rank = static_cast<uint32_t>(dimensions_.size());
    made.v1.dimensions = dimensions_.data();
    return made;
  }

  const Api& api_;
  const kiv::test::Objects objects_;
  std::array<uint32_t, 4> dimensions_ = {1, 4, 8, 8};
  std::vector<float> data_ = std::vector<float>(kElements, 0.5F);
  Kiv_Tensor_t input_ = kiv::test::emptyTensor();
  std::string inputName_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "Usage: %s LIBRARY NODES\n", argv[0]);
    return 2;
  }
  const kiv::test::DynamicLibrary library(argv[1]);
  Session session(kiv::test::interfaceOf(library));
  const std::size_t nodes = std::strtoul(argv[2], nullptr, 10);
  for (std::size_t i = 0; i < nodes; ++i) session.addNode(i);
  session.execute();
  return failed ? 1 : 0;
}
