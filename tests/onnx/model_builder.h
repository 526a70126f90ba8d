#ifndef ONNX_TEST_MODEL_BUILDER_H
#define ONNX_TEST_MODEL_BUILDER_H

// Small networks and parts of them for the tests.

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <string>
#include <vector>

#include "errors.h"
#include "network.h"

namespace onnx_client {

// A size below zero stands for one that is left open.
onnx::ValueInfoProto value(const std::string& name,
                           const std::vector<int64_t>& sizes,
                           int32_t elementType = onnx::TensorProto::FLOAT);

onnx::TensorProto tensorProto(int32_t elementType,
                              const std::vector<int64_t>& sizes);

onnx::TensorProto floatTensor(const std::string& name,
                              const std::vector<float>& values);

// Adds a node; an attribute may be added to what it returns.
onnx::NodeProto& addNode(onnx::GraphProto& graph, const std::string& type,
                         const std::vector<std::string>& inputs,
                         const std::vector<std::string>& outputs);

// A model with an empty graph of the name "net".
onnx::ModelProto emptyModel();

// x [2, 3] -> Relu -> y
onnx::ModelProto reluModel();

const Tensor& findTensor(const Network& network, const std::string& name);

// The text of the error that a function throws; empty if it throws none.
template <typename Function>
std::string errorOf(Function function) {
  try {
    function();
  } catch (const ClientError& error) {
    return error.what();
  }
  return "";
}

}  // namespace onnx_client

#endif
