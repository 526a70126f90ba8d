#pragma once

// Tensors that networks come with in files of ONNX, and outputs beside them:
//
//   const auto stored = readStored("test_data_set_0", "output");
//   const onnx::TensorProto* expected = findStored(stored, "y", 0);
//   isEqual({"y", numbersOf(onnxType, bytes)}, *expected, largest);
//
// Shares nothing with the library that it helps to judge. One thread at a time.

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <string>
#include <vector>

namespace kiv::test {

struct Output {
  std::string name;
  std::vector<double> numbers;
};

// The elements of a tensor's data, which is ONNX's for the type.
std::vector<double> numbersOf(int onnxType, const std::string& bytes);

// NAME_0.pb, NAME_1.pb and so on.
std::vector<onnx::TensorProto> readStored(const std::string& directory,
                                          const std::string& name);

// The tensor of that name, else the one with that number; null without any.
const onnx::TensorProto* findStored(
    const std::vector<onnx::TensorProto>& tensors, const std::string& name,
    std::size_t index);

// Whether the elements differ by 1e-3 at most, relative and absolute. Prints
// the first that does not, and takes the largest difference.
bool isEqual(const Output& output, const onnx::TensorProto& stored,
             double& largest);

}  // namespace kiv::test
