#include "execution.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <utility>

#include "failure.h"
#include "log.h"
#include "owned.h"

namespace kiv::ort {
namespace {

using Clock = std::chrono::steady_clock;

std::uint64_t microseconds(Clock::duration duration) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
}

[[noreturn]] void refuseTensor(const std::string& why) {
  throw Failure(KIV_GRAPH_ERROR_INVALID_TENSOR, why);
}

[[noreturn]] void refuseList(const std::string& why) {
  throw Failure(KIV_GRAPH_ERROR_INVALID_ARGUMENT, why);
}

std::string textOf(std::span<const std::int64_t> dimensions) {
  std::string text = "[";
  for (const std::int64_t size : dimensions) {
    if (text.size() > 1) text += ',';
    text += std::to_string(size);
  }
  return text + "]";
}

}  // namespace

Execution::Execution(std::shared_ptr<const Session> session,
                     std::span<const Kiv_Tensor_t> inputs,
                     std::span<const Kiv_Tensor_t> outputs)
    : session_(std::move(session)),
      functions_(session_->library().functions()),
      inputs_(functions_),
      outputs_(functions_) {
  for (const Kiv_Tensor_t& input : inputs) addInput(input);
  checkInputs();
  for (const Kiv_Tensor_t& output : outputs) addOutput(readFields(output));
}

void Execution::check(const char* what, OrtStatus* status) const {
  session_->library().check(what, status);
}

void Execution::addInput(const Kiv_Tensor_t& record) {
  static std::uint8_t noData = 0;
  const TensorFields fields = readFields(record);
  const Port* port = findPort(session_->inputs(), fields);
  if (port == nullptr)
    refuseList(fields.description + " is no input of the graph");
  throwIf(onnx_model::checkData(record));
  const bool isEmpty = fields.buffer.data == nullptr;
  check(
      "CreateTensor",
      functions_.createTensorWithData(
          session_->library().memory(), isEmpty ? &noData : fields.buffer.data,
          isEmpty ? 0 : fields.buffer.dataSize, fields.dimensions.data(),
          fields.dimensions.size(), fields.onnxType, inputs_.add()));
  inputNames_.push_back(port->value.c_str());
}

void Execution::checkInputs() const {
  for (const Port& port : session_->inputs()) {
    if (std::count(inputNames_.begin(), inputNames_.end(),
                   port.value.c_str()) == 0)
      refuseList("the graph's input \"" + port.name + "\" is not given");
  }
}

void Execution::addOutput(const TensorFields& fields) {
  const Port* port = findPort(session_->outputs(), fields);
  if (port == nullptr)
    refuseList(fields.description + " is no output of the graph");
  outputNames_.push_back(port->value.c_str());
  outputFields_.push_back(fields);
  outputs_.add();
}

RunTimes Execution::run() {
  const auto start = Clock::now();
  compute();
  const auto computed = Clock::now();
  for (std::size_t i = 0; i < outputs_.size(); ++i)
    copyResult(outputFields_[i], outputs_[i]);
  const auto end = Clock::now();
  return {microseconds(end - start), microseconds(computed - start),
          microseconds(end - computed)};
}

void Execution::compute() {
  check("Run",
        functions_.run(session_->handle(), nullptr, inputNames_.data(),
                       inputs_.data(), inputs_.size(), outputNames_.data(),
                       outputNames_.size(), outputs_.data()));
}

Execution::Result Execution::readResult(OrtValue* value,
                                        const std::string& what) const {
  int isTensor = 0;
  check("IsTensor", functions_.isTensor(value, &isTensor));
  if (isTensor == 0) refuseTensor(what + " is computed as something else");
  Owned<OrtTensorInfo> info(functions_.releaseTensorInfo);
  check("GetTensorTypeAndShape",
        functions_.getTensorInfo(value, info.receive()));
  Result result{};
  std::size_t rank = 0;
  check("GetTensorElementType",
        functions_.getElementType(info.get(), &result.onnxType));
  check("GetDimensionsCount", functions_.getRank(info.get(), &rank));
  result.dimensions.resize(rank);
  check("GetDimensions",
        functions_.getDimensions(info.get(), result.dimensions.data(), rank));
  void* data = nullptr;
  check("GetTensorMutableData", functions_.getTensorData(value, &data));
  result.data = data;
  return result;
}

void Execution::copyResult(const TensorFields& fields, OrtValue* value) const {
  const std::string& what = fields.description;
  const Result result = readResult(value, what);
  if (result.onnxType != fields.onnxType) {
    refuseTensor(what + " is computed with elements of ONNX's type " +
                 std::to_string(result.onnxType) +
                 ", its record names another one");
  }
  // The result is in memory, so its size is known.
  const std::uint64_t size =
      *onnx_model::sizeOfData(result.onnxType, result.dimensions);
  const std::uint64_t room =
      fields.buffer.data == nullptr ? 0 : fields.buffer.dataSize;
  if (size != room) {
    refuseTensor(what + " is computed with the shape " +
                 textOf(result.dimensions) + ", " + std::to_string(size) +
                 " bytes; its buffer has " + std::to_string(room));
  }
  if (size > 0) std::memcpy(fields.buffer.data, result.data, size);
  logResult(what, result, size);
}

// For replays of compiled recordings, which show no outputs themselves: the
// shape, and of single floats the first values.
void Execution::logResult(const std::string& what, const Result& result,
                          std::uint64_t size) {
  if (logLevel() < KIV_LOG_LEVEL_VERBOSE) return;
  std::string text = what + " " + textOf(result.dimensions);
  if (result.onnxType == onnx::TensorProto::FLOAT) {
    constexpr std::uint64_t kMostValues = 6;
    const std::span values(static_cast<const float*>(result.data),
                           std::min(size / sizeof(float), kMostValues));
    text += ":";
    for (const float value : values) {
      std::array<char, 32> digits{};
      std::snprintf(digits.data(), digits.size(), " %g",
                    static_cast<double>(value));
      text += digits.data();
    }
    if (size / sizeof(float) > kMostValues) text += " ...";
  }
  log(KIV_LOG_LEVEL_VERBOSE, text);
}

}  // namespace kiv::ort
