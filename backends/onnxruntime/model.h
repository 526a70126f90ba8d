#pragma once

// The ONNX model of a graph and the subgraphs of its nodes:
//
//   Model model = buildModel(graph);
//
// Large data of static tensors is not copied: it stays in the context's data
// file, to which the model refers.

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "objects.h"

namespace kiv::ort {

struct Model {
  // The documentation of an input or output is the client's name for it.
  onnx::ModelProto proto;
  // The ids of inputs and outputs by their names in the model.
  std::map<std::string, std::uint32_t> ids;
  // Where its external data is; null without any.
  std::shared_ptr<const DataFile> dataFile;
};

// The caller holds the context's lock.
Model buildModel(const Graph& graph);

}  // namespace kiv::ort
