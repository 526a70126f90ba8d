#pragma once

// Turns operations into the nodes of graphs:
//
//   graph.nodes.push_back(makeNode(graph, config));
//
// The caller holds the context's lock.

#include <onnx/onnx_pb.h>

#include "KivTypes.h"
#include "objects.h"

namespace kiv::ort {

// A Failure for a record that is not valid, for tensors that are neither the
// graph's nor its context's, and for subgraphs that the graph does not have.
onnx::NodeProto makeNode(const Graph& graph, const Kiv_OpConfig_t& config);

// A Failure if an operation is not one that a node could be made of: its record
// is not valid, its operator is unknown or takes other numbers of inputs and
// outputs.
void validateOperation(const OpSets& opSets, int newestOpset,
                       const Kiv_OpConfig_t& config);

}  // namespace kiv::ort
