#include "execution.h"

#include <algorithm>

#include "errors.h"
#include "random_data.h"
#include "tensor_data.h"
#include "tensor_records.h"

namespace onnx_client {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{2} << 30;

std::uint32_t sizeOf(const Tensor& tensor) {
  return byteSize(tensor.dataType, tensor.shape.dimensions, tensor.name);
}

}  // namespace

Execution::Execution(Network& network, const InputOptions& options,
                     std::uint64_t seed)
    : generator_(seed) {
  checkSize(network);
  std::vector<std::string> names;
  for (const TensorIndex index : network.graph.inputs) {
    inputs_.push_back({&network.tensors[index], true, {}});
    names.push_back(network.tensors[index].name);
  }
  for (const TensorIndex index : network.graph.outputs) {
    outputs_.push_back({&network.tensors[index], false, {}});
  }
  for (const auto& [index, path] : assignFiles(options.files, names))
    readInput(path, options.images, inputs_[index]);
}

void Execution::prepare() {
  for (Buffer& buffer : inputs_) {
    if (!buffer.random) continue;
    buffer.data.resize(sizeOf(*buffer.tensor));
    fillRandom(generator_, buffer.tensor->dataType, buffer.data);
  }
  for (Buffer& buffer : outputs_) buffer.data.assign(sizeOf(*buffer.tensor), 0);
}

std::uint64_t Execution::bytes() const {
  std::uint64_t bytes = 0;
  for (const Buffer& buffer : inputs_) bytes += buffer.data.size();
  for (const Buffer& buffer : outputs_) bytes += buffer.data.size();
  return bytes;
}

void Execution::checkSize(const Network& network) const {
  std::uint64_t bytes = 0;
  for (const auto* list : {&network.graph.inputs, &network.graph.outputs}) {
    for (const TensorIndex index : *list)
      bytes += sizeOf(network.tensors[index]);
  }
  if (bytes > kMostBytes) {
    throw NotAccepted("inputs and outputs take " + std::to_string(bytes) +
                      " bytes");
  }
}

void Execution::readInput(const std::string& path, const ImageOptions& options,
                          Buffer& buffer) {
  const std::uint32_t wanted = sizeOf(*buffer.tensor);
  buffer.random = false;
  buffer.data = readInputFile(path, *buffer.tensor, options);
  if (buffer.data.size() != wanted) {
    throw ClientError(path + " has " + std::to_string(buffer.data.size()) +
                      " bytes of data, input " + buffer.tensor->name +
                      " takes " + std::to_string(wanted));
  }
}

std::vector<Kiv_Tensor_t> Execution::records(std::vector<Buffer>& buffers) {
  std::vector<Kiv_Tensor_t> records;
  records.reserve(buffers.size());
  for (Buffer& buffer : buffers)
    records.push_back(tensorRecord(*buffer.tensor, buffer.data));
  return records;
}

}  // namespace onnx_client
