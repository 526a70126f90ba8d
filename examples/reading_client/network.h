#pragma once

// A graph of a session, built node by node:
//
//   Network network(session, "add");
//   const Value x = network.input("x", {1, 3});
//   const Value w = network.weight("w", {1, 3}, std::vector<float>{1, 2, 3});
//   network.output(network.node("Add", {x, w}, "y", {1, 3}));
//   network.finalize();
//   const std::vector<Floats> outputs = network.execute({{4, 5, 6}});
//
// One thread at a time.

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "library.h"

namespace reading_client {

using Floats = std::vector<float>;
using Sizes = std::vector<std::uint32_t>;
// An operator's attribute: a number, or a list of numbers.
struct Attribute {
  const char* name;
  std::variant<std::int32_t, std::vector<std::int64_t>> value;
};

// A tensor of the network.
struct Value {
  std::uint32_t id = 0;
  std::string name;
  Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
  Kiv_DataType_t dataType = KIV_DATA_TYPE_FLOAT_32;
  Sizes sizes;
};

class Network {
 public:
  Network(const Session& session, const char* name);

  Value input(std::string name, Sizes sizes);
  Value weight(std::string name, Sizes sizes, Floats data);
  Value weight(std::string name, std::vector<std::int64_t> data);
  // The result of an operator with one output.
  Value node(const char* type, const std::vector<Value>& inputs,
             std::string name, Sizes sizes,
             const std::vector<Attribute>& attributes = {});
  // The same for a result that the network gives.
  Value outputNode(const char* type, const std::vector<Value>& inputs,
                   std::string name, Sizes sizes,
                   const std::vector<Attribute>& attributes = {});
  void finalize();

  // Takes inputs and gives outputs in the order of their creation. Outputs that
  // the library does not write are zeros.
  std::vector<Floats> execute(std::vector<Floats> inputs) const;

 private:
  Value create(Value value, void* data, std::size_t size);
  void add(const char* type, const std::vector<Value>& inputs,
           const Value& output, const std::vector<Attribute>& attributes);

  const Api& api_;
  Kiv_GraphHandle_t graph_ = nullptr;
  std::vector<Value> inputs_;
  std::vector<Value> outputs_;
};

}  // namespace reading_client
