#pragma once

// Tensors as clients describe them and as contexts keep them:
//
//   const TensorFields fields = readFields(record, "input 0");
//   Tensor tensor = makeTensor(fields);
//
// Any thread may call the functions.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KivTypes.h"
#include "data_file.h"
#include "element_types.h"

namespace kiv::ort {

using Bytes = std::vector<std::uint8_t>;

// What the versions of the record share; points into the client's memory.
struct TensorFields {
  std::uint32_t id = 0;
  std::string name;
  Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
  Kiv_DataType_t dataType = KIV_DATA_TYPE_UNDEFINED;
  std::vector<std::int64_t> dimensions;
  // A flag for each size that may change; empty if none may.
  std::vector<bool> open;
  Kiv_ClientBuffer_t buffer{};
};

// A Failure for a record of an unknown version, in a memory handle, or without
// the sizes that its rank promises; `what` names the tensor if it has no name.
TensorFields readFields(const Kiv_Tensor_t& record, const std::string& what);

// The tensor's name in quotes, or its id.
std::string describe(const TensorFields& fields);

struct Graph;

struct Tensor {
  std::uint32_t id = 0;
  // The client's name and the one in the model, which is unique there.
  std::string name;
  std::string value;
  Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
  const ElementType* elements = nullptr;
  std::vector<std::int64_t> dimensions;
  std::vector<bool> open;
  // The data of a static tensor, which the client may free after the call: its
  // bytes if they are few, else where they are in the context's data file.
  Bytes data;
  std::optional<DataPlace> place;
  // The graph that the tensor was created in; null for the context.
  const Graph* owner = nullptr;
  // The graph that was created last before the tensor, or null. A context
  // tensor that is an input or output of a subgraph is that graph's.
  const Graph* home = nullptr;
};

// The data of a static tensor stays with the client. A Failure for an element
// type without a match, and for a static tensor whose data is not as large as
// its sizes say.
Tensor makeTensor(const TensorFields& fields);

// A Failure unless the buffer has the bytes that the sizes say.
void checkBuffer(const TensorFields& fields, const ElementType& elements);

}  // namespace kiv::ort
