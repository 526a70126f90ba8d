#pragma once

#include <onnx/onnx_pb.h>

#include <optional>
#include <string>

#include "onnx_model/model_builder.h"

// The attributes of a node, from the parameters of an operation. From any
// thread.
namespace kiv::onnx_model {

// Whether the node's graph has a subgraph of that name.
using HasSubgraph = std::function<bool(const std::string& name)>;

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
                                   const std::string& domain,
                                   std::int64_t version,
                                   const HasSubgraph& hasSubgraph,
                                   const DataSink& sink, onnx::NodeProto& node);

}  // namespace kiv::onnx_model
