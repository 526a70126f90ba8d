#pragma once

// Networks and parts of them from texts, and what was read of them as texts.

#include <google/protobuf/text_format.h>
#include <onnx/onnx_pb.h>

#include <stdexcept>
#include <string>

#include "errors.h"
#include "network.h"

namespace onnx_client {

// Adds what protobuf's text form says to a message.
template <typename Message>
void merge(const std::string& text, Message& message) {
  if (!google::protobuf::TextFormat::MergeFromString(text, &message)) {
    throw std::invalid_argument(text);
  }
}

// A network from ONNX's text form: "net (float[2] x) => (float[2] y) { ... }".
onnx::ModelProto modelOf(const std::string& graph);

// "name type[dimensions] bytes", the type as the API's number and each byte as
// two digits. An open dimension is marked with "?", a shared tensor with "*".
std::string textOf(const Tensor& tensor);

// "name=value"; a graph's value is its name.
std::string textOf(const Parameter& parameter);

// A line for the graph, for each tensor, with its kind in front, and for each
// node; those of graphs below a node stand before it.
std::string textOf(const Network& network, const Graph& graph);

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
