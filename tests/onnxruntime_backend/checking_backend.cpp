// A backend that passes all calls on to another one and compares the outputs of
// each execution with stored ones:
//
//   KIV_CHECKED_BACKEND=libKivOnnxRuntime.so KIV_EXPECTED=test_data_set_0
//
// The directory holds output_0.pb and so on, ONNX tensors. Prints "checked N
// outputs" and the largest difference; an execution whose outputs differ by
// more than 1e-3, relative and absolute, fails.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "stored_tensors.h"

namespace {

constexpr Kiv_ErrorHandle_t kDiffers = KIV_COMMON_ERROR_GENERAL;

int onnxTypeOf(Kiv_DataType_t type) {
  using onnx::TensorProto;
  switch (type) {
    case KIV_DATA_TYPE_FLOAT_32:
      return TensorProto::FLOAT;
    case KIV_DATA_TYPE_FLOAT_64:
      return TensorProto::DOUBLE;
    case KIV_DATA_TYPE_FLOAT_16:
      return TensorProto::FLOAT16;
    case KIV_DATA_TYPE_INT_8:
      return TensorProto::INT8;
    case KIV_DATA_TYPE_INT_16:
      return TensorProto::INT16;
    case KIV_DATA_TYPE_INT_32:
      return TensorProto::INT32;
    case KIV_DATA_TYPE_INT_64:
      return TensorProto::INT64;
    case KIV_DATA_TYPE_UINT_16:
      return TensorProto::UINT16;
    case KIV_DATA_TYPE_UINT_32:
      return TensorProto::UINT32;
    case KIV_DATA_TYPE_UINT_64:
      return TensorProto::UINT64;
    default:
      return TensorProto::UINT8;
  }
}

kiv::test::Output outputOf(const Kiv_TensorV1_t& tensor) {
  const std::string bytes(static_cast<const char*>(tensor.clientBuf.data),
                          tensor.clientBuf.dataSize);
  return {tensor.name,
          kiv::test::numbersOf(onnxTypeOf(tensor.dataType), bytes)};
}

std::vector<onnx::TensorProto> readExpected() {
  const char* directory = std::getenv("KIV_EXPECTED");
  if (directory == nullptr) return {};
  return kiv::test::readStored(directory, "output");
}

KivInterface_Implementation_t& checked() {
  static KivInterface_Implementation_t table;
  return table;
}

Kiv_ErrorHandle_t executeAndCheck(Kiv_GraphHandle_t graph,
                                  const Kiv_Tensor_t* inputs,
                                  uint32_t numInputs, Kiv_Tensor_t* outputs,
                                  uint32_t numOutputs,
                                  Kiv_ProfileHandle_t profile,
                                  Kiv_SignalHandle_t signal) {
  const Kiv_ErrorHandle_t status = checked().graphExecute(
      graph, inputs, numInputs, outputs, numOutputs, profile, signal);
  if (status != KIV_SUCCESS) return status;
  const std::vector<onnx::TensorProto> expected = readExpected();
  unsigned count = 0;
  double largest = 0;
  // The records of both versions begin alike.
  for (std::size_t i = 0; i < numOutputs; ++i) {
    const kiv::test::Output output = outputOf(outputs[i].v1);
    const onnx::TensorProto* stored =
        kiv::test::findStored(expected, output.name, i);
    if (stored == nullptr) continue;
    if (!kiv::test::isEqual(output, *stored, largest)) return kDiffers;
    ++count;
  }
  std::printf("checked %u outputs, largest difference %g\n", count, largest);
  return KIV_SUCCESS;
}

}  // namespace

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  const char* path = std::getenv("KIV_CHECKED_BACKEND");
  void* library = path == nullptr ? nullptr : dlopen(path, RTLD_NOW);
  if (library == nullptr) {
    std::fprintf(stderr, "KIV_CHECKED_BACKEND cannot be loaded: %s\n",
                 dlerror());
    return KIV_COMMON_ERROR_GENERAL;
  }
  const auto getProviders = reinterpret_cast<KivInterface_GetProvidersFn_t>(
      dlsym(library, "KivInterface_getProviders"));
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  getProviders(&providers, &count);
  static KivInterface_t provider = *providers[0];
  static const KivInterface_t* list[] = {&provider};
  checked() = provider.KIV_INTERFACE_VER_NAME;
  provider.KIV_INTERFACE_VER_NAME.graphExecute = executeAndCheck;
  *providerList = list;
  *numProviders = 1;
  return KIV_SUCCESS;
}
