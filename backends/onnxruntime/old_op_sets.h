#pragma once

// Networks of operator sets before version 7, for most of whose operators
// ONNX Runtime has no implementation, are rewritten by libonnx:
//
//   if (isOfOldOpSet(model)) model = buildRewrittenModel(graph);

#include "model.h"

namespace kiv::ort {

bool isOfOldOpSet(const onnx::ModelProto& model);

// The graph's model in version 7 of the default operator set, with all data in
// it. Throws where libonnx cannot rewrite a node. The caller holds the
// context's lock.
Model buildRewrittenModel(const Graph& graph);

}  // namespace kiv::ort
