#include "execution.h"

#include <algorithm>

#include "errors.h"
#include "files.h"
#include "random_data.h"
#include "tensor_data.h"
#include "tensor_records.h"

namespace onnx_client {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{2} << 30;

std::uint32_t sizeOf(const Tensor& tensor) {
  return byteSize(tensor.dataType, tensor.shape.dimensions, tensor.name);
}

std::vector<std::uint8_t> readProtobuf(const std::string& path,
                                       const Tensor& tensor) {
  onnx::TensorProto proto;
  if (!proto.ParseFromString(readFile(path)))
    throw ClientError(path + " is not an ONNX tensor");
  Tensor read = readTensor(proto, path);
  if (read.dataType != tensor.dataType)
    throw ClientError(path + " has not the element type of " + tensor.name);
  return std::move(read.data);
}

std::vector<std::uint8_t> readInputFile(const std::string& path,
                                        const Tensor& tensor) {
  if (path.ends_with(".pb")) return readProtobuf(path, tensor);
  const std::string bytes = readFile(path);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

Execution::Execution(Network& network, const std::vector<std::string>& files,
                     std::uint64_t seed)
    : generator_(seed) {
  checkSize(network);
  for (const TensorIndex index : network.graph.inputs) {
    inputs_.push_back({&network.tensors[index], true, {}});
  }
  for (const TensorIndex index : network.graph.outputs) {
    outputs_.push_back({&network.tensors[index], false, {}});
  }
  if (files.size() > inputs_.size()) {
    throw ClientError("the network has only " + std::to_string(inputs_.size()) +
                      " inputs");
  }
  for (std::size_t i = 0; i < files.size(); ++i)
    readInput(files[i], inputs_[i]);
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

void Execution::readInput(const std::string& path, Buffer& buffer) {
  const std::uint32_t wanted = sizeOf(*buffer.tensor);
  buffer.random = false;
  buffer.data = readInputFile(path, *buffer.tensor);
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
