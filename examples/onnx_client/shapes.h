#ifndef ONNX_CLIENT_SHAPES_H
#define ONNX_CLIENT_SHAPES_H

// Types and shapes of a network's values, with sizes that the file leaves open.

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "network.h"

namespace onnx_client {

// By name of a main input or output: one flag a dimension, 1 where the file
// leaves the size open. Those without such a dimension are left out.
using OpenShapes = std::map<std::string, std::vector<uint8_t>>;

// Takes the open sizes of the main inputs as 1, carries named ones on to the
// other values, and infers what the file doesn't tell. Notes say what was done.
OpenShapes settleShapes(onnx::ModelProto& model,
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

#endif
