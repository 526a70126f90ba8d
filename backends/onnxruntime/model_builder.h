#pragma once

// Builds the ONNX model of a graph and the subgraphs of its nodes:
//
//   Model model = buildModel(graph, DataPlace::kInMemory);
//
// Data of static tensors is not copied: the model names its address, and
// ONNX Runtime reads it there. Where it cannot, the data is put into the model,
// which then must stay below 2 GiB.

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "objects.h"

namespace kiv::ort {

enum class DataPlace : std::uint8_t { kInMemory, kInModel };

// What ONNX Runtime calls data at an address of its own process; the offset is
// the address then.
inline constexpr const char* kAddressLocation = "*/_ORT_MEM_ADDR_/*";

struct Model {
  // The documentation of an input or output is the client's name for it.
  onnx::ModelProto proto;
  // The ids of inputs and outputs by their names in the model.
  std::map<std::string, std::uint32_t> ids;
  // Owners of the data that lies outside.
  std::vector<std::shared_ptr<const void>> data;
};

// The caller holds the context's lock.
Model buildModel(const Graph& graph, DataPlace place);

// An initializer whose data is at an address.
void setAddress(onnx::TensorProto& tensor, const void* data,
                std::uint64_t size);

}  // namespace kiv::ort
