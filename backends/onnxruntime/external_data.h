#pragma once

// Tensors of a model whose data lies in the model's data file:
//
//   forEachTensor(graph, [](onnx::TensorProto& tensor, bool isInitializer) {
//     if (isExternal(tensor)) ... placeOf(tensor) ...
//   });

#include <onnx/onnx_pb.h>

#include <functional>
#include <string>

#include "data_file.h"

namespace kiv::ort {

// All tensors of a graph and of the graphs below its nodes, those among the
// attributes included.
void forEachTensor(onnx::GraphProto& graph,
                   const std::function<void(onnx::TensorProto& tensor,
                                            bool isInitializer)>& function);

bool isExternal(const onnx::TensorProto& tensor);

// Whether all external data is in the data file.
bool isInDataFile(const onnx::TensorProto& tensor);

// A Failure if the place is no pair of numbers.
DataPlace placeOf(const onnx::TensorProto& tensor);

// Makes the tensor's data external. Numbers always have as many digits, so that
// another place leaves the model's size as it is.
void setPlace(onnx::TensorProto& tensor, const DataPlace& place);

// Puts all external data into the graph.
void takeIn(onnx::GraphProto& graph, const DataFile& file);

}  // namespace kiv::ort
