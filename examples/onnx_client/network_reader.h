#pragma once

// Turns ONNX networks into Network.
//
//   Network network = readNetwork("model.onnx");
//
// Sizes of inputs that the file leaves open are taken as 1 and the shapes
// behind them inferred. A file that is no network, or damaged, is a
// ClientError; a network that the Kiv API cannot express is NotAccepted.

#include <onnx/onnx_pb.h>

#include <string>

#include "network.h"

namespace onnx_client {

Network readNetwork(const std::string& path);

// The same for a network in memory; changes the model's shapes.
Network readNetwork(onnx::ModelProto& model);

}  // namespace onnx_client
