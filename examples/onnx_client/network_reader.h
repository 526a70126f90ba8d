#pragma once

// Turns ONNX networks into Network.
//
//   Network network = readNetwork("model.onnx", {{"x", {1, 3, 48, 192}}});
//
// Sizes of inputs that the file leaves open are given or taken as 1, and the
// shapes behind them inferred. A file that is no network, or damaged, is a
// ClientError; a network that the Kiv API cannot express is NotAccepted.

#include <onnx/onnx_pb.h>

#include <string>

#include "network.h"
#include "shapes.h"

namespace onnx_client {

Network readNetwork(const std::string& path, const GivenShapes& shapes = {});

// The same for a network in memory; changes the model's shapes.
Network readNetwork(onnx::ModelProto& model, const GivenShapes& shapes = {});

}  // namespace onnx_client
