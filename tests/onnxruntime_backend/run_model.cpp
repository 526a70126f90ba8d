// Runs a model by ONNX Runtime alone and compares its outputs with stored ones:
//
//   KIV_ONNXRUNTIME=libonnxruntime.so run_model MODEL INPUTS EXPECTED
//
// INPUTS is a directory of input_0.pb and so on, which name their inputs and
// hold raw data, EXPECTED one of output_0.pb and so on. Prints "checked N
// outputs" and the largest difference. The exit status is 1 for a model that
// ONNX Runtime does not run, and for outputs that differ.

#include <dlfcn.h>
#include <onnx/onnx_pb.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ort_functions.h"
#include "stored_tensors.h"

namespace {

using kiv::ort::OrtFunctions;
using kiv::test::Output;

[[noreturn]] void fail(const std::string& why) {
  throw std::runtime_error(why);
}

class Runtime {
 public:
  explicit Runtime(const char* path);

  const OrtFunctions& functions() const { return functions_; }
  const kiv::ort::OrtEnv* env() const { return env_; }
  void check(kiv::ort::OrtStatus* status) const {
    if (status != nullptr) fail(functions_.getErrorMessage(status));
  }

 private:
  OrtFunctions functions_{};
  kiv::ort::OrtEnv* env_ = nullptr;
};

void passOver(void*, int, const char*, const char*, const char*, const char*) {}

Runtime::Runtime(const char* path) {
  void* library = path == nullptr ? nullptr : dlopen(path, RTLD_NOW);
  if (library == nullptr) fail("KIV_ONNXRUNTIME names no library");
  const auto getBase = reinterpret_cast<kiv::ort::OrtGetBase>(
      dlsym(library, kiv::ort::kOrtGetBaseName));
  functions_ = kiv::ort::readTable(getBase()->getApi(kiv::ort::kOrtApiVersion));
  constexpr int kError = 3;
  check(
      functions_.createEnvWithLogger(passOver, nullptr, kError, "test", &env_));
}

class Model {
 public:
  Model(const Runtime& runtime, const std::string& path);

  std::vector<Output> run(std::vector<onnx::TensorProto> inputs);

 private:
  kiv::ort::OrtValue* valueOf(onnx::TensorProto& tensor) const;
  Output read(const std::string& name, kiv::ort::OrtValue* value) const;

  const Runtime& runtime_;
  const OrtFunctions& functions_;
  kiv::ort::OrtSession* session_ = nullptr;
  std::vector<std::string> outputs_;
};

Model::Model(const Runtime& runtime, const std::string& path)
    : runtime_(runtime), functions_(runtime.functions()) {
  onnx::ModelProto model;
  std::ifstream file(path, std::ios::binary);
  if (!model.ParseFromIstream(&file)) fail(path + " is no model");
  for (const auto& output : model.graph().output())
    outputs_.push_back(output.name());
  kiv::ort::OrtSessionOptions* options = nullptr;
  runtime_.check(functions_.createSessionOptions(&options));
  runtime_.check(functions_.createSession(runtime_.env(), path.c_str(), options,
                                          &session_));
}

std::size_t sizeOf(int onnxType) {
  switch (onnxType) {
    case onnx::TensorProto::DOUBLE:
    case onnx::TensorProto::INT64:
    case onnx::TensorProto::UINT64:
      return 8;
    case onnx::TensorProto::FLOAT:
    case onnx::TensorProto::INT32:
    case onnx::TensorProto::UINT32:
      return 4;
    case onnx::TensorProto::FLOAT16:
    case onnx::TensorProto::INT16:
    case onnx::TensorProto::UINT16:
      return 2;
    default:
      return 1;
  }
}

kiv::ort::OrtValue* Model::valueOf(onnx::TensorProto& tensor) const {
  constexpr int kArenaAllocator = 1;
  constexpr int kDefaultMemory = 0;
  kiv::ort::OrtMemoryInfo* memory = nullptr;
  runtime_.check(
      functions_.createCpuMemoryInfo(kArenaAllocator, kDefaultMemory, &memory));
  const std::vector<std::int64_t> dimensions(tensor.dims().begin(),
                                             tensor.dims().end());
  kiv::ort::OrtValue* value = nullptr;
  runtime_.check(functions_.createTensorWithData(
      memory, tensor.mutable_raw_data()->data(), tensor.raw_data().size(),
      dimensions.data(), dimensions.size(), tensor.data_type(), &value));
  return value;
}

Output Model::read(const std::string& name, kiv::ort::OrtValue* value) const {
  kiv::ort::OrtTensorInfo* info = nullptr;
  runtime_.check(functions_.getTensorInfo(value, &info));
  int onnxType = 0;
  std::size_t count = 0;
  void* data = nullptr;
  runtime_.check(functions_.getElementType(info, &onnxType));
  runtime_.check(functions_.getElementCount(info, &count));
  runtime_.check(functions_.getTensorData(value, &data));
  const std::string bytes(static_cast<const char*>(data),
                          count * sizeOf(onnxType));
  return {name, kiv::test::numbersOf(onnxType, bytes)};
}

std::vector<Output> Model::run(std::vector<onnx::TensorProto> inputs) {
  std::vector<const char*> inputNames;
  std::vector<const char*> outputNames;
  std::vector<const kiv::ort::OrtValue*> values;
  for (onnx::TensorProto& input : inputs) {
    inputNames.push_back(input.name().c_str());
    values.push_back(valueOf(input));
  }
  for (const std::string& name : outputs_) outputNames.push_back(name.c_str());
  std::vector<kiv::ort::OrtValue*> results(outputs_.size());
  runtime_.check(functions_.run(
      session_, nullptr, inputNames.data(), values.data(), values.size(),
      outputNames.data(), outputNames.size(), results.data()));
  std::vector<Output> outputs;
  for (std::size_t i = 0; i < results.size(); ++i)
    outputs.push_back(read(outputs_[i], results[i]));
  return outputs;
}

bool check(const std::vector<Output>& outputs, const std::string& directory) {
  const auto expected = kiv::test::readStored(directory, "output");
  double largest = 0;
  unsigned count = 0;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const onnx::TensorProto* stored =
        kiv::test::findStored(expected, outputs[i].name, i);
    if (stored == nullptr) continue;
    if (!kiv::test::isEqual(outputs[i], *stored, largest)) return false;
    ++count;
  }
  std::printf("checked %u outputs, largest difference %g\n", count, largest);
  return true;
}

}  // namespace

// Values of ONNX Runtime live until the process ends.
int main(int argc, char** argv) {
  if (argc != 4) return 2;
  try {
    const Runtime runtime(std::getenv("KIV_ONNXRUNTIME"));
    Model model(runtime, argv[1]);
    const auto outputs = model.run(kiv::test::readStored(argv[2], "input"));
    const bool isGood = check(outputs, argv[3]);
    std::fflush(stdout);
    std::_Exit(isGood ? 0 : 1);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
