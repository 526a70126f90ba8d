// A backend that passes all calls on to another one and compares the outputs of
// each execution with stored ones:
//
//   KIV_CHECKED_BACKEND=libKivOnnxRuntime.so KIV_EXPECTED=test_data_set_0
//
// The directory holds output_0.pb and so on, ONNX tensors. Prints "checked N
// outputs" and the largest difference; an execution whose outputs differ by
// more than 1e-3, relative and absolute, fails.

#include <dlfcn.h>
#include <onnx/onnx_pb.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "KivInterface.h"

namespace {

constexpr double kTolerance = 1e-3;
constexpr Kiv_ErrorHandle_t kDiffers = KIV_COMMON_ERROR_GENERAL;

using Numbers = std::vector<double>;

double fromHalf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const double fraction = bits & 1023;
  const double sign = (bits & 0x8000) != 0 ? -1 : 1;
  if (exponent == 31) return fraction == 0 ? sign * INFINITY : NAN;
  if (exponent == 0) return sign * std::ldexp(fraction, -24);
  return sign * std::ldexp(fraction + 1024, exponent - 25);
}

template <typename Element>
Numbers convert(const std::string& bytes) {
  Numbers numbers;
  for (std::size_t at = 0; at + sizeof(Element) <= bytes.size();
       at += sizeof(Element)) {
    Element element;
    std::memcpy(&element, bytes.data() + at, sizeof element);
    numbers.push_back(static_cast<double>(element));
  }
  return numbers;
}

Numbers convertHalves(const std::string& bytes) {
  Numbers numbers;
  for (const double bits : convert<std::uint16_t>(bytes))
    numbers.push_back(fromHalf(static_cast<std::uint16_t>(bits)));
  return numbers;
}

Numbers numbersOf(const Kiv_TensorV1_t& tensor) {
  const std::string bytes(static_cast<const char*>(tensor.clientBuf.data),
                          tensor.clientBuf.dataSize);
  switch (tensor.dataType) {
    case KIV_DATA_TYPE_FLOAT_32:
      return convert<float>(bytes);
    case KIV_DATA_TYPE_FLOAT_64:
      return convert<double>(bytes);
    case KIV_DATA_TYPE_FLOAT_16:
      return convertHalves(bytes);
    case KIV_DATA_TYPE_INT_8:
      return convert<std::int8_t>(bytes);
    case KIV_DATA_TYPE_INT_16:
      return convert<std::int16_t>(bytes);
    case KIV_DATA_TYPE_INT_32:
      return convert<std::int32_t>(bytes);
    case KIV_DATA_TYPE_INT_64:
      return convert<std::int64_t>(bytes);
    case KIV_DATA_TYPE_UINT_16:
      return convert<std::uint16_t>(bytes);
    case KIV_DATA_TYPE_UINT_32:
      return convert<std::uint32_t>(bytes);
    case KIV_DATA_TYPE_UINT_64:
      return convert<std::uint64_t>(bytes);
    default:
      return convert<std::uint8_t>(bytes);
  }
}

template <typename List>
Numbers listed(const List& list) {
  return {list.begin(), list.end()};
}

Numbers numbersOf(const onnx::TensorProto& tensor) {
  const std::string& raw = tensor.raw_data();
  switch (tensor.data_type()) {
    case onnx::TensorProto::FLOAT:
      return raw.empty() ? listed(tensor.float_data()) : convert<float>(raw);
    case onnx::TensorProto::DOUBLE:
      return raw.empty() ? listed(tensor.double_data()) : convert<double>(raw);
    case onnx::TensorProto::INT64:
      return raw.empty() ? listed(tensor.int64_data())
                         : convert<std::int64_t>(raw);
    case onnx::TensorProto::UINT32:
      return raw.empty() ? listed(tensor.uint64_data())
                         : convert<std::uint32_t>(raw);
    case onnx::TensorProto::UINT64:
      return raw.empty() ? listed(tensor.uint64_data())
                         : convert<std::uint64_t>(raw);
    case onnx::TensorProto::FLOAT16: {
      if (!raw.empty()) return convertHalves(raw);
      Numbers numbers;
      for (const int bits : tensor.int32_data())
        numbers.push_back(fromHalf(static_cast<std::uint16_t>(bits)));
      return numbers;
    }
    default:
      break;
  }
  if (raw.empty()) return listed(tensor.int32_data());
  switch (tensor.data_type()) {
    case onnx::TensorProto::INT8:
      return convert<std::int8_t>(raw);
    case onnx::TensorProto::INT16:
      return convert<std::int16_t>(raw);
    case onnx::TensorProto::UINT16:
      return convert<std::uint16_t>(raw);
    case onnx::TensorProto::INT32:
      return convert<std::int32_t>(raw);
    default:
      return convert<std::uint8_t>(raw);
  }
}

std::vector<onnx::TensorProto> readExpected() {
  std::vector<onnx::TensorProto> tensors;
  const char* directory = std::getenv("KIV_EXPECTED");
  if (directory == nullptr) return tensors;
  for (;;) {
    std::ifstream file(std::string(directory) + "/output_" +
                       std::to_string(tensors.size()) + ".pb");
    onnx::TensorProto tensor;
    if (!file || !tensor.ParseFromIstream(&file)) return tensors;
    tensors.push_back(tensor);
  }
}

// Stored tensors have the names of the network's outputs or none.
const onnx::TensorProto* find(const std::vector<onnx::TensorProto>& tensors,
                              const Kiv_TensorV1_t& output, std::size_t index) {
  for (const onnx::TensorProto& tensor : tensors)
    if (!tensor.name().empty() && tensor.name() == output.name) return &tensor;
  if (index < tensors.size()) return &tensors[index];
  return nullptr;
}

bool isClose(double actual, double expected) {
  if (std::isnan(actual) || std::isnan(expected))
    return std::isnan(actual) && std::isnan(expected);
  if (actual == expected) return true;
  return std::abs(actual - expected) <=
         kTolerance + kTolerance * std::abs(expected);
}

bool isEqual(const Kiv_TensorV1_t& output, const onnx::TensorProto& stored,
             double& largest) {
  const Numbers actual = numbersOf(output);
  const Numbers expected = numbersOf(stored);
  std::string why;
  if (actual.size() != expected.size()) {
    why = std::to_string(actual.size()) + " elements for " +
          std::to_string(expected.size());
  }
  for (std::size_t i = 0; why.empty() && i < actual.size(); ++i) {
    if (!isClose(actual[i], expected[i])) {
      why = "element " + std::to_string(i) + " is " +
            std::to_string(actual[i]) + " for " + std::to_string(expected[i]);
    } else if (std::isfinite(expected[i])) {
      largest = std::max(largest, std::abs(actual[i] - expected[i]));
    }
  }
  if (!why.empty())
    std::fprintf(stderr, "output %s differs: %s\n", output.name, why.c_str());
  return why.empty();
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
    const onnx::TensorProto* stored = find(expected, outputs[i].v1, i);
    if (stored == nullptr) continue;
    if (!isEqual(outputs[i].v1, *stored, largest)) return kDiffers;
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
