#pragma once

// A network in the terms of the Kiv API, free of the format it was read from.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "KivInterface.h"

namespace onnx_client {

struct Graph;

struct Shape {
  bool known = false;
  std::vector<std::uint32_t> dimensions;
  // One flag a dimension, 1 where the size was not given and is taken as 1;
  // empty if all sizes were given.
  std::vector<std::uint8_t> dynamic;
};

struct Tensor {
  std::string name;
  Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
  Kiv_DataType_t dataType = KIV_DATA_TYPE_UNDEFINED;
  Shape shape;
  // The values of a static tensor or a tensor parameter; else empty.
  std::vector<std::uint8_t> data;
  // Whether a graph below the tensor's own one uses it, too.
  bool shared = false;
  // Written by the library when the tensor is created.
  std::uint32_t id = 0;
};

// Index of a tensor in Network::tensors.
using TensorIndex = std::size_t;

// The package of the default domain's operators.
inline constexpr const char* kDefaultPackage = "ai.onnx";

// An optional input or output that a node leaves out.
inline constexpr TensorIndex kAbsent = std::numeric_limits<TensorIndex>::max();

struct Parameter {
  std::string name;
  // A graph is passed on as the name of a subgraph.
  std::variant<float, std::int32_t, std::string, Tensor, std::unique_ptr<Graph>>
      value;
};

struct Node {
  std::string name;
  std::string package;
  std::string type;
  std::vector<Parameter> parameters;
  std::vector<TensorIndex> inputs;
  std::vector<TensorIndex> outputs;
};

struct Graph {
  std::string name;
  // The graph's tensors in order of creation, which is the order of inputs and
  // outputs, too, in a subgraph.
  std::vector<TensorIndex> tensors;
  std::vector<TensorIndex> inputs;
  std::vector<TensorIndex> outputs;
  std::vector<Node> nodes;
};

// The version of an operator set that nodes follow.
struct OpSet {
  // The package of its operators.
  std::string package;
  std::int64_t version = 0;
};

struct Network {
  // The tensors of all graphs; their names are unique.
  std::vector<Tensor> tensors;
  Graph graph;
  std::vector<OpSet> opSets;
  // Remarks for the user, a line each.
  std::vector<std::string> notes;
};

}  // namespace onnx_client
