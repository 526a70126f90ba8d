#pragma once

// Types and shapes of a network's values, with sizes that the file leaves open.

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "network.h"

namespace onnx_client {

// The open sizes of the main inputs and outputs by name: one flag a dimension,
// 1 where the file leaves the size open. Values without open sizes are left
// out.
using OpenShapes = std::map<std::string, std::vector<std::uint8_t>>;

// Sizes of main inputs by name, as the user gives them.
using GivenShapes = std::map<std::string, std::vector<std::uint32_t>>;

// "x=1x3x48x192"; a ClientError for another text.
void parseShape(const std::string& text, GivenShapes& shapes);

// Gives open sizes of the main inputs, takes the others as 1, carries named
// ones on to the other values, and infers sizes that the file does not have.
// Given sizes are no longer open. Notes say what was done. A ClientError for a
// given shape that does not fit.
OpenShapes settleShapes(onnx::ModelProto& model, const GivenShapes& given,
                        std::vector<std::string>& notes);

// The declared types of one graph's values by name.
class ValueTypes {
 public:
  explicit ValueTypes(const onnx::GraphProto& graph);

  // Fills in type and shape of a tensor from the value of that ONNX name.
  // NotAccepted for what is no plain tensor.
  void describe(const std::string& value, Tensor& tensor) const;

 private:
  std::unordered_map<std::string, const onnx::TypeProto*> types_;
};

}  // namespace onnx_client
