#pragma once

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "onnx_model/tensors.h"

// Operations as nodes but for their inputs and outputs:
//
//   onnx::NodeProto node;
//   auto fault = startNode(config, node);
//   if (!fault) fault = addAttributes(config.v1, 13, hasSubgraph, sink, node);
//
// Any thread may call the functions.
namespace kiv::onnx_model {

// Whether the node's graph has a subgraph of that name.
using HasSubgraph = std::function<bool(const std::string& name)>;

// Sets the node's name, operator and domain, which is the package. Finds fault
// with a record of an unknown version, without an operator, or with null lists
// that have a count.
std::optional<Fault> startNode(const Kiv_OpConfig_t& config,
                               onnx::NodeProto& node);

// Adds the attributes to the node. The operator's schema of that version says
// of what kind each is:
//
//   scalar, number     int or float
//   scalar, text       string; the name of a subgraph: graph
//   tensor of int64    ints, int or tensor
//   tensor of float32  floats or tensor
//   tensor of uint8    string (one that holds NUL) or tensor
//   other tensor       tensor
//   NAME_0, NAME_1     strings, tensors or graphs NAME
//
// Where the schema has no such attribute, a one-dimensional tensor of int64 or
// float32 is a list, and a text is a graph if there is a subgraph of that name.
// The graph of an attribute is empty but for its name. Only the value of a
// Constant goes to the sink, since programs that run models take it for an
// initialiser; other tensors are in the model.
std::optional<Fault> addAttributes(const Kiv_OpConfigV1_t& config,
                                   std::int64_t version,
                                   const HasSubgraph& hasSubgraph,
                                   const DataSink& sink, onnx::NodeProto& node);

}  // namespace kiv::onnx_model
