#pragma once

#include <onnx/onnx_pb.h>

#include <optional>
#include <string>

#include "onnx_model/model_builder.h"

// The attributes of a node, from the parameters of an operation. From any
// thread.
namespace kiv::onnx_model {

// Adds the attributes to the node. The operator's schema of that version says
// of what kind each is; where there is none, a list of 64-bit integers or of
// floats is one, and a text is a text. The graph of an attribute is empty but
// for its name.
std::optional<Fault> addAttributes(const Kiv_OpConfigV1_t& config,
                                   const std::string& domain,
                                   std::int64_t version, onnx::NodeProto& node);

}  // namespace kiv::onnx_model
