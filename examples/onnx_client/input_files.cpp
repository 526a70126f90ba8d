#include "input_files.h"

#include <utility>

#include "arrays/npy.h"
#include "errors.h"
#include "files.h"
#include "tensor_data.h"

namespace onnx_client {
namespace {

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

std::vector<std::uint8_t> readArray(const std::string& path,
                                    const Tensor& tensor) {
  namespace arrays = kiv::arrays;
  std::string why;
  const auto array = arrays::readNpy(path, why);
  if (!array) throw ClientError(path + " cannot be read: " + why);
  if (!arrays::fits(array->element, tensor.dataType))
    throw ClientError(path + " has elements of type " +
                      arrays::toString(array->element) + ", input " +
                      tensor.name + " takes another one");
  const arrays::Shape wanted(tensor.shape.dimensions.begin(),
                             tensor.shape.dimensions.end());
  if (array->shape != wanted)
    throw ClientError(path + " is of shape " + arrays::toString(array->shape) +
                      ", input " + tensor.name + " takes " +
                      arrays::toString(wanted) + " (--shape)");
  std::vector<std::uint8_t> bytes;
  bytes.reserve(array->data.size());
  for (const std::byte byte : array->data)
    bytes.push_back(std::to_integer<std::uint8_t>(byte));
  return bytes;
}

// Splits NAME=FILE at the name of an input.
std::pair<std::size_t, std::string> named(
    const std::string& argument, const std::vector<std::string>& inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (argument.starts_with(inputs[i] + "="))
      return {i, argument.substr(inputs[i].size() + 1)};
  return {inputs.size(), argument};
}

}  // namespace

std::map<std::size_t, std::string> assignFiles(
    const std::vector<std::string>& arguments,
    const std::vector<std::string>& inputs) {
  std::map<std::size_t, std::string> files;
  std::vector<std::string> others;
  for (const std::string& argument : arguments) {
    auto [index, file] = named(argument, inputs);
    if (index == inputs.size())
      others.push_back(std::move(file));
    else if (!files.emplace(index, std::move(file)).second)
      throw ClientError("input " + inputs[index] + " has two files");
  }
  std::size_t next = 0;
  for (std::string& file : others) {
    while (files.contains(next)) ++next;
    if (next >= inputs.size())
      throw ClientError("the network has only " +
                        std::to_string(inputs.size()) + " inputs");
    files.emplace(next, std::move(file));
  }
  return files;
}

std::vector<std::uint8_t> readInputFile(const std::string& path,
                                        const Tensor& tensor,
                                        const ImageOptions& options) {
  if (path.ends_with(".pb")) return readProtobuf(path, tensor);
  if (path.ends_with(".npy")) return readArray(path, tensor);
  if (isImageName(path)) return imageData(readImage(path), tensor, options);
  const std::string bytes = readFile(path);
  return {bytes.begin(), bytes.end()};
}

}  // namespace onnx_client
