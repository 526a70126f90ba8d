#pragma once

// Turns attributes of an ONNX node into parameters of an operation:
//
//   float                   scalar, 32-bit float
//   int                     scalar, 32 bits; a static tensor of one 64-bit
//                           element if the value needs it
//   string                  scalar; a static tensor of bytes if it holds NUL
//   floats, ints, tensor    static tensor
//   strings, tensors,       one parameter an element, named <attribute>_<i>
//   graphs
//   graph                   subgraph, whose name is a string scalar
//
// Sparse tensors, types and attributes that refer to a function's are
// NotAccepted.

#include <onnx/onnx_pb.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "network.h"

namespace onnx_client {

// Reads a graph of an attribute; the name is that of its parameter.
using SubgraphReader = std::function<std::unique_ptr<Graph>(
    const onnx::GraphProto& proto, const std::string& parameter)>;

// A name as it is; a ClientError if it holds a NUL character, since it could
// not be handed on.
const std::string& checkedName(const std::string& name);

// The node's name starts the names of tensors among the parameters.
std::vector<Parameter> readAttributes(const onnx::NodeProto& node,
                                      const std::string& nodeName,
                                      const SubgraphReader& readSubgraph);

}  // namespace onnx_client
